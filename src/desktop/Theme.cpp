#include "desktop/Theme.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFileInfo>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleOption>
#include <algorithm>

#include "foundation/Settings.h"

namespace {

constexpr const char* STORED_CHOICE = "ColorTheme";
constexpr const char *PORTAL = "org.freedesktop.portal.Desktop", *PORTAL_PATH = "/org/freedesktop/portal/desktop",
                     *PORTAL_SETTINGS = "org.freedesktop.portal.Settings";
constexpr const char *APPEARANCE = "org.freedesktop.appearance", *COLOR_SCHEME = "color-scheme";

Theme* current = nullptr;

// A bus that would have to be started first knows of no desktop.
bool IsBusThere() {
    return qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
           QFileInfo::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + "/bus");
}

QVariant Unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

// Fusion, which draws everything by the palette. It frames boxes to tick in a tone darker than the window's, which on a
// dark one cannot be seen.
class FramedStyle : public QProxyStyle {
public:
    FramedStyle() : QProxyStyle("Fusion") {}
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        if (element != PE_IndicatorCheckBox && element != PE_IndicatorItemViewItemCheck)
            return;
        const bool enabled = option->state.testFlag(State_Enabled);
        painter->save();
        painter->setBrush(Qt::NoBrush);
        painter->setPen(option->palette.color(enabled ? QPalette::Active : QPalette::Disabled,
                                              enabled ? QPalette::PlaceholderText : QPalette::Text));
        painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
        painter->restore();
    }
};

struct Tones {
    QRgb window, base, alternate, button, text, faint, disabled, link, visited;
};
constexpr Tones DARK{0xFF2B2D31, 0xFF1E2023, 0xFF26282C, 0xFF3A3D42, 0xFFE4E6EA,
                     0xFF9DA1A8, 0xFF777B82, 0xFF7AB4F5, 0xFFA98BD8};
constexpr Tones LIGHT{0xFFEFEFEF, 0xFFFFFFFF, 0xFFF5F5F5, 0xFFEFEFEF, 0xFF151515,
                      0xFF666666, 0xFF9A9A9A, 0xFF1C5FB8, 0xFF7347A8};
constexpr QRgb HIGHLIGHT = 0xFF2F6FC4, DISABLED_HIGHLIGHT = 0xFF6F7680;

QPalette PaletteOf(const Tones& tones) {
    QPalette palette{QColor(tones.button), QColor(tones.window)}; // bevels go by these
    const auto set = [&palette](QPalette::ColorRole role, QRgb color) { palette.setColor(role, QColor(color)); };
    set(QPalette::Base, tones.base);
    set(QPalette::AlternateBase, tones.alternate);
    set(QPalette::ToolTipBase, tones.button);
    set(QPalette::Highlight, HIGHLIGHT);
    set(QPalette::HighlightedText, 0xFFFFFFFF);
    set(QPalette::PlaceholderText, tones.faint);
    set(QPalette::Link, tones.link);
    set(QPalette::LinkVisited, tones.visited);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        set(role, tones.text);
        palette.setColor(QPalette::Disabled, role, QColor(tones.disabled));
    }
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(DISABLED_HIGHLIGHT));
    return palette;
}

} // namespace

bool IsDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

QPalette OwnPalette(bool dark) { return PaletteOf(dark ? DARK : LIGHT); }

Theme* Theme::Current() { return current; }

Theme::Theme() : toolkit_style(QApplication::style()->objectName()) {
    current = this;
    RegistryClass store;
    if (store.OpenKeyDirectory(SETTINGS_KEY))
        wanted = static_cast<ColorTheme>(std::clamp(store.GetInteger(STORED_CHOICE, 0), 0, 2));
    Apply();
}

Theme::~Theme() { current = nullptr; }

void Theme::AskDesktop() {
    if (!IsBusThere())
        return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    qRegisterMetaType<QDBusVariant>("QDBusVariant"); // by which the slot is found
    bus.connect(PORTAL, PORTAL_PATH, PORTAL_SETTINGS, "SettingChanged", this,
                SLOT(TakeChange(QString, QString, QDBusVariant)));
    QDBusMessage question = QDBusMessage::createMethodCall(PORTAL, PORTAL_PATH, PORTAL_SETTINGS, "Read");
    question << APPEARANCE << COLOR_SCHEME;
    auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        if (!reply.isError())
            TakeDesktopScheme(Unwrapped(reply.value().variant()).toUInt());
        answer->deleteLater();
    });
}

void Theme::TakeChange(const QString& space, const QString& key, const QDBusVariant& value) {
    if (space == APPEARANCE && key == COLOR_SCHEME)
        TakeDesktopScheme(Unwrapped(value.variant()).toUInt());
}

void Theme::TakeDesktopScheme(uint scheme) {
    desktop_scheme = scheme;
    Apply();
}

bool Theme::Choose(ColorTheme theme) {
    wanted = theme;
    Apply();
    RegistryClass store;
    const int value = static_cast<int>(theme);
    return store.OpenKeyDirectory(SETTINGS_KEY) && store.SetKeyValue(STORED_CHOICE, &value);
}

// The toolkit's own colours where they are as they should be: a desktop may have tuned them.
void Theme::Apply() {
    if (QApplication::style()->objectName() != toolkit_style)
        QApplication::setStyle(toolkit_style);
    QApplication::setPalette(QPalette()); // the toolkit's
    const bool is_dark = IsDark(QApplication::palette());
    const bool want_dark =
        wanted == ColorTheme::Dark || (wanted == ColorTheme::Desktop && (is_dark || desktop_scheme == PREFERS_DARK));
    if (is_dark == want_dark)
        return;
    QApplication::setStyle(new FramedStyle);
    QApplication::setPalette(OwnPalette(want_dark));
}
