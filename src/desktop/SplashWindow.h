// The picture of the start, with a line that tells what the start is doing: there for one second, or until a key or a
// button is pressed, which does nothing else.
#pragma once

#include <QElapsedTimer>
#include <QSplashScreen>

class SplashWindow : public QSplashScreen {
    Q_OBJECT
public:
    explicit SplashWindow(int milliseconds = 1000);
    ~SplashWindow() override;

    void Tell(const QString& what_is_done, double share_done); // the share: 0 to 1

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void drawContents(QPainter* painter) override;

private:
    QString doing;
    double share = 0;
    const int time_shown; // milliseconds
    QElapsedTimer shown;
};
