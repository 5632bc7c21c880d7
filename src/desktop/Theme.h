// The colours of the windows: those of the desktop, or the user's choice of light or dark ones. Where the toolkit does
// not see that the desktop is dark, the desktop is asked.
#pragma once

#include <QDBusVariant>
#include <QObject>
#include <QPalette>
#include <QString>

enum class ColorTheme { Desktop, Light, Dark };

class Theme : public QObject {
    Q_OBJECT
public:
    // What desktops say of the scheme they want.
    enum DesktopScheme : uint { NO_SCHEME, PREFERS_DARK, PREFERS_LIGHT };

    // Takes the stored choice, and the colours and style that the application has by then for those of the toolkit.
    Theme();
    ~Theme() override;
    static Theme* Current(); // null without one

    void AskDesktop(); // and hears of changes from then on; does not wait
    ColorTheme Wanted() const { return wanted; }
    bool Choose(ColorTheme theme); // false when the choice could not be stored
    void TakeDesktopScheme(uint scheme);

private slots:
    void TakeChange(const QString& space, const QString& key, const QDBusVariant& value);

private:
    void Apply();

    QString toolkit_style;
    ColorTheme wanted = ColorTheme::Desktop;
    uint desktop_scheme = NO_SCHEME;
};

bool IsDark(const QPalette& palette);
QPalette OwnPalette(bool dark); // where the desktop offers none
