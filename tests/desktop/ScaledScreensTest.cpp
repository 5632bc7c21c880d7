// The views on screens whose scale is no whole number.
#include "desktop/DesktopFixture.h"
#include "render/DisplayScale.h"

namespace {

class ScaledScreensTest : public DesktopTest, public testing::WithParamInterface<double> {
protected:
    ~ScaledScreensTest() override { crSetDisplayScale(1); }
    // Where a point of the world stands in the widget.
    QPointF PlaceOf(int view, float right, float below) const {
        const VIEWINFO& vi = interface->View(view);
        const QPointF pixel(
            right * vi.Scale() - static_cast<float>(vi.view_position[0]) + static_cast<float>(vi.window_rect.left),
            below * vi.Scale() - static_cast<float>(vi.view_position[1]) + static_cast<float>(vi.window_rect.top));
        return pixel / GetParam();
    }
    int SelectedAt(QPointF place) {
        interface->world->brush_selection.ClearList();
        for (const auto& brush : interface->world->brush)
            brush->is_selected = false;
        Mouse(QEvent::MouseMove, place, Qt::NoButton, Qt::ShiftModifier);
        Mouse(QEvent::MouseButtonPress, place, Qt::LeftButton, Qt::ShiftModifier);
        Mouse(QEvent::MouseButtonRelease, place, Qt::LeftButton, Qt::ShiftModifier);
        const Selection& selection = interface->world->brush_selection;
        return selection.GetItemCount() == 1 ? selection.GetItem(0) : -1;
    }
};
INSTANTIATE_TEST_SUITE_P(Scales, ScaledScreensTest, testing::Values(1.0, 1.25, 1.5, 1.75, 2.0, 3.0));

} // namespace

TEST_P(ScaledScreensTest, AClickSelectsWhatStandsThere) {
    Open(GetParam());
    EXPECT_EQ(crvScrWidth, static_cast<uint32_t>(std::lround(views->width() * GetParam())));
    EXPECT_EQ(crvScrHeight, static_cast<uint32_t>(std::lround(views->height() * GetParam())));
    const int zoom_outs[] = {1, 2};
    for (const float left : {-96.0f, 32.0f}) { // two brushes, each 64 wide and 48 high
        Drag(PlaceOf(VIEW_FRONT, left, -48), PlaceOf(VIEW_FRONT, left + 64, 0));
        interface->world->brush_selection.ClearList();
        interface->editor_state = ES_IDLE;
    }
    ASSERT_EQ(interface->world->GetBrushCount(), 2);
    for (int b = 0; b < 2; ++b) {
        const Box& box = interface->world->brush[static_cast<size_t>(b)]->bbox;
        for (const int zoom_out : zoom_outs) {
            interface->View(VIEW_FRONT).zoom_out = zoom_out;
            const QPointF edge = PlaceOf(VIEW_FRONT, BoxMax(box).x, -(BoxMin(box).y + BoxMax(box).y) / 2);
            EXPECT_EQ(SelectedAt(edge), b) << "on its right edge";
            EXPECT_EQ(SelectedAt(edge + QPointF(2, 0)), b) << "within reach";
            EXPECT_EQ(SelectedAt(edge + QPointF(5, 0)), -1) << "out of reach";
            EXPECT_EQ(SelectedAt(edge - QPointF(5, 0)), -1);
        }
        interface->View(VIEW_FRONT).zoom_out = 1;
    }
}

TEST_P(ScaledScreensTest, TheCameraTurnsAsFarAsTheHandGoes) {
    Open(GetParam());
    const D3DVECTOR before = interface->views.perspective.camera_rotation;
    Drag(Middle(VIEW_PERSPECTIVE), Middle(VIEW_PERSPECTIVE) + QPointF(100, 40));
    const D3DVECTOR turned = interface->views.perspective.camera_rotation - before;
    EXPECT_NEAR(std::fabs(turned.y), 100 * 0.005, 0.005);
    EXPECT_NEAR(std::fabs(turned.x), 40 * 0.005, 0.005);
    const D3DVECTOR from = interface->views.perspective.camera_position;
    Drag(Middle(VIEW_PERSPECTIVE), Middle(VIEW_PERSPECTIVE) + QPointF(0, 60), Qt::RightButton);
    EXPECT_NEAR(Magnitude(interface->views.perspective.camera_position - from), 60 * 1.5, 1.5);
}
