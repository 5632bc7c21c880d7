#include <QApplication>
#include <QComboBox>
#include <QStyle>

#include "desktop/DesktopFixture.h"
#include "desktop/Theme.h"
#include "desktop/ThemeSection.h"

namespace {

class ThemeTest : public DesktopTest {
protected:
    ~ThemeTest() override {
        QApplication::setStyle(style);
        QApplication::setPalette(QPalette());
    }
    static bool IsDarkNow() { return IsDark(QApplication::palette()); }
    const QString style = QApplication::style()->objectName();
};

double Luminance(const QColor& color) {
    const auto linear = [](double c) { return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double Contrast(const QColor& a, const QColor& b) {
    const double first = Luminance(a), second = Luminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

} // namespace

TEST_F(ThemeTest, FollowsTheDesktopUnlessToldOtherwise) {
    ASSERT_FALSE(IsDarkNow()) << "the toolkit's own colours here";
    {
        Theme theme;
        EXPECT_FALSE(IsDarkNow());
        theme.TakeDesktopScheme(Theme::PREFERS_DARK);
        EXPECT_TRUE(IsDarkNow());
        theme.TakeDesktopScheme(Theme::PREFERS_LIGHT);
        EXPECT_FALSE(IsDarkNow());
        EXPECT_TRUE(theme.Choose(ColorTheme::Dark));
        EXPECT_TRUE(IsDarkNow());
        EXPECT_TRUE(theme.Choose(ColorTheme::Light));
        theme.TakeDesktopScheme(Theme::PREFERS_DARK);
        EXPECT_FALSE(IsDarkNow());
        theme.TakeDesktopScheme(77); // no scheme that is known
        EXPECT_TRUE(theme.Choose(ColorTheme::Desktop));
        EXPECT_FALSE(IsDarkNow());
        ThemeSection section;
        auto* choice = section.findChild<QComboBox*>();
        choice->setCurrentIndex(choice->findText("Dark"));
        emit choice->activated(choice->currentIndex());
        EXPECT_TRUE(IsDarkNow());
    }
    QApplication::setPalette(QPalette());
    const Theme next_start;
    EXPECT_EQ(next_start.Wanted(), ColorTheme::Dark);
    EXPECT_TRUE(IsDarkNow());
}

TEST_F(ThemeTest, EveryTextCanBeRead) {
    using P = QPalette;
    constexpr std::pair<P::ColorRole, P::ColorRole> PAIRS[] = {{P::WindowText, P::Window},
                                                               {P::Text, P::Base},
                                                               {P::Text, P::AlternateBase},
                                                               {P::ButtonText, P::Button},
                                                               {P::ToolTipText, P::ToolTipBase},
                                                               {P::HighlightedText, P::Highlight},
                                                               {P::PlaceholderText, P::Base},
                                                               {P::PlaceholderText, P::Window},
                                                               {P::LinkVisited, P::Base},
                                                               {P::Link, P::Base},
                                                               {P::Link, P::Window}};
    for (const bool dark : {false, true}) {
        const QPalette palette = OwnPalette(dark);
        EXPECT_EQ(IsDark(palette), dark);
        for (const auto& [front, back] : PAIRS)
            EXPECT_GE(Contrast(palette.color(front), palette.color(back)), 4.5) << dark << front << " on " << back;
        EXPECT_GE(Contrast(palette.color(P::Disabled, P::ButtonText), palette.color(P::Button)), 2.4) << dark;
    }
}
