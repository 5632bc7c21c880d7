// The coordinates of the views, zoom, grid, centring, cameras and the texts of the status bar.
#include "editor/EditorFixture.h"
#include "render/Device.h"
#include "render/Matrix.h"

class ViewsTest : public EditorTest {
protected:
    void SetZoom(int view, int zoom_in, int zoom_out) {
        Ed().View(view).zoom_in = zoom_in;
        Ed().View(view).zoom_out = zoom_out;
    }
    D3DVECTOR SnappedAt(int view, POINT p) {
        Activate(view);
        Ed().SetPositionText(p);
        return Ed().world_position;
    }
    void ExpectScroll(int view, int x, int y, const std::string& what = {}) {
        EXPECT_EQ(Ed().View(view).view_position[0], x) << what;
        EXPECT_EQ(Ed().View(view).view_position[1], y) << what;
    }
};

TEST_F(ViewsTest, PixelsSnapTowardZeroAtEveryZoom) {
    const struct {
        int zoom_in, zoom_out, grid, pixel, world;
    } cases[] = {
        {1, 1, 8, -5, 0},    {1, 1, 8, -9, -8},   {1, 1, 8, 15, 8},       {1, 1, 8, 16, 16},
        {4, 1, 8, 31, 0},    {4, 1, 8, 32, 8},    {4, 1, 8, 100, 24},     {4, 1, 8, -33, -8},
        {1, 8, 4, 100, 800}, {1, 8, 4, -1, -8},   {1, 2, 16, 17, 32},     {1, 2, 16, -17, -32},
        {128, 1, 1, 127, 0}, {128, 1, 1, 300, 2}, {1, 128, 512, 9, 1024}, {1, 128, 1, 3, 384},
    };
    for (const auto& c : cases) {
        SetZoom(VIEW_TOP, c.zoom_in, c.zoom_out);
        Ed().grid_size = c.grid;
        const auto world = static_cast<float>(c.world);
        ExpectVector(SnappedAt(VIEW_TOP, At(c.pixel, -c.pixel)), {world, 0, -world},
                     "pixel " + std::to_string(c.pixel) + " in " + std::to_string(c.zoom_in) + " out " +
                         std::to_string(c.zoom_out));
    }
}

TEST_F(ViewsTest, EachViewCoversItsTwoAxes) {
    ExpectVector(SnappedAt(VIEW_TOP, At(24, 40)), {24, 0, 40}, "top");
    ExpectVector(SnappedAt(VIEW_FRONT, At(24, 40)), {24, 40, 0}, "front");
    ExpectVector(SnappedAt(VIEW_LEFT, At(24, 40)), {0, 40, 24}, "left");
    Ed().View(VIEW_PERSPECTIVE).camera_position = {1.9f, -2.9f, 3};
    ExpectVector(SnappedAt(VIEW_PERSPECTIVE, At(24, 40)), {1, -2, 3}, "camera, truncated");

    SetZoom(VIEW_TOP, 4, 1);
    ExpectVector(Ed().GetWorldPositionAtPoint(VIEW_TOP, MIDDLE + 10, MIDDLE + 6), {2.5f, 0, -1.5f}, "in");
    SetZoom(VIEW_LEFT, 1, 8);
    ExpectVector(Ed().GetWorldPositionAtPoint(VIEW_LEFT, MIDDLE + 10, MIDDLE - 3), {0, 24, 80}, "out");
    ExpectVector(Ed().GetWorldPositionAtPoint(VIEW_PERSPECTIVE, 10, 10), {0, 0, 0}, "perspective");
}

TEST_F(ViewsTest, MatricesShowAPointWhereItsPixelIs) {
    const D3DVECTOR point{24, 40, -16};
    const struct {
        int view, zoom_in, zoom_out, right, up;
    } cases[] = {{VIEW_TOP, 1, 1, 24, -16}, {VIEW_FRONT, 1, 1, 24, 40}, {VIEW_LEFT, 1, 1, -16, 40},
                 {VIEW_TOP, 4, 1, 96, -64}, {VIEW_LEFT, 2, 1, -32, 80}, {VIEW_FRONT, 1, 8, 3, 5}};
    for (const auto& c : cases) {
        SetZoom(c.view, c.zoom_in, c.zoom_out);
        Ed().SetMatrices(c.view);
        D3DMATRIX to_clip;
        crMMultiply(crvMatrices[CRM_VIEW], crvMatrices[CRM_PROJ], to_clip);
        VECTOR4 p;
        crMTransform4(to_clip, {point.x, point.y, point.z, 1}, p);
        EXPECT_NEAR((p.x / p.w + 1) * MIDDLE, MIDDLE + c.right, 0.001) << c.view;
        EXPECT_NEAR((1 - p.y / p.w) * MIDDLE, MIDDLE - c.up, 0.001) << c.view;
        EXPECT_EQ(crvViewportX, static_cast<int>(c.view % 2 * SIDE)) << c.view;
        EXPECT_EQ(crvViewportW, SIDE) << c.view;
    }
}

TEST_F(ViewsTest, ZoomKeepsTheCentreAndStopsAt128) {
    Activate(VIEW_TOP);
    Ed().View(VIEW_TOP).ScrollTo(64 - MIDDLE, -32 - MIDDLE); // the centre shows x 64, z 32
    Ed().ZoomView(1);
    ExpectScroll(VIEW_TOP, 128 - MIDDLE, -64 - MIDDLE, "twice as large");
    Ed().ZoomView(-1);
    ExpectScroll(VIEW_TOP, 64 - MIDDLE, -32 - MIDDLE, "back");
    Ed().ZoomView(0);
    ExpectScroll(VIEW_TOP, 32 - MIDDLE, -16 - MIDDLE, "half as large");
    EXPECT_EQ(Ed().View(VIEW_TOP).zoom_out, 2);

    for (int i = 0; i < 20; ++i)
        Ed().ZoomView(1);
    EXPECT_EQ(Ed().View(VIEW_TOP).zoom_in, 128);
    EXPECT_EQ(Ed().View(VIEW_TOP).zoom_out, 1);
    news.views.clear();
    Ed().ZoomView(1);
    EXPECT_TRUE(news.views.empty()) << "the step that would pass the limit does nothing";
    for (int i = 0; i < 20; ++i)
        Ed().ZoomView(-1);
    EXPECT_EQ(Ed().View(VIEW_TOP).zoom_in, 1);
    EXPECT_EQ(Ed().View(VIEW_TOP).zoom_out, 128);
    EXPECT_EQ(Ed().View(VIEW_FRONT).zoom_out, 1) << "only the active view";
}

TEST_F(ViewsTest, GridGoesFrom1To512) {
    for (int i = 0; i < 10; ++i)
        Ed().GridSize(-1);
    EXPECT_EQ(Ed().grid_size, 512);
    news.views.clear();
    Ed().GridSize(-1);
    EXPECT_EQ(Ed().grid_size, 512);
    EXPECT_EQ(news.views, (ints{VIEW_FRONT, VIEW_TOP, VIEW_LEFT})) << "and is still drawn";
    for (int i = 0; i < 12; ++i)
        Ed().GridSize(1);
    EXPECT_EQ(Ed().grid_size, 1);
}

TEST_F(ViewsTest, Centring) {
    Ed().CenterViewToPoint({100, 50, -30}, VIEW_TOP);
    ExpectScroll(VIEW_TOP, 100 - MIDDLE, 30 - MIDDLE);
    SetZoom(VIEW_LEFT, 2, 1);
    Ed().CenterViewToPoint({100, 50, -30}, VIEW_LEFT);
    ExpectScroll(VIEW_LEFT, -60 - MIDDLE, -100 - MIDDLE);
    SetZoom(VIEW_FRONT, 1, 8);
    Ed().CenterViewToPoint({100, -100, 0}, VIEW_FRONT); // 12.5 pixels
    ExpectScroll(VIEW_FRONT, 12 - MIDDLE, 12 - MIDDLE, "truncated");

    Activate(VIEW_TOP);
    Ed().CenterWorld(false);
    ExpectScroll(VIEW_TOP, -MIDDLE, -MIDDLE);
    ExpectScroll(VIEW_FRONT, 12 - MIDDLE, 12 - MIDDLE, "another view stays");
    Ed().CenterWorld(true);
    ExpectScroll(VIEW_FRONT, -MIDDLE, -MIDDLE);

    Ed().CenterToSelection();
    ExpectScroll(VIEW_TOP, -MIDDLE, -MIDDLE, "nothing is selected");
    AddBox({0, 0, 0}, {64, 32, 128});
    SelectBrushes({0});
    Ed().CenterToSelection();
    ExpectScroll(VIEW_TOP, 32 - MIDDLE, -64 - MIDDLE, "the middle of the box");
    SetZoom(VIEW_TOP, 128, 1);
    Ed().CenterViewToPoint({1e30f, 0, -1e30f}, VIEW_TOP);
    ExpectScroll(VIEW_TOP, MOST_SCROLL, MOST_SCROLL, "no view goes further");
}

TEST_F(ViewsTest, PanningFollowsTheMouse) {
    Move(VIEW_FRONT, {100, 100});
    Ed().SetEditorState(ES_PAN);
    Move(VIEW_FRONT, {130, 90});
    ExpectScroll(VIEW_FRONT, -MIDDLE - 30, -MIDDLE + 10);
    Ed().ResetEditorState();
    EXPECT_EQ(Ed().editor_state, ES_IDLE);
}

TEST_F(ViewsTest, CameraVectorsAreAFrameInAnyDirection) {
    for (const D3DVECTOR& rotation : {D3DVECTOR{}, {0.3f, 1, 0}, {-1.2f, -2.5f, 0}, {PI / 2, 0, 0}, {-PI / 2, 1, 0}}) {
        D3DVECTOR direction, normal, right;
        CInterface::ComputeCameraVectors(rotation, direction, normal, right);
        for (const D3DVECTOR& v : {direction, normal, right})
            EXPECT_NEAR(Magnitude(v), 1, 0.0001);
        EXPECT_NEAR(DotProduct(direction, right), 0, 0.0001);
        EXPECT_NEAR(DotProduct(normal, right), 0, 0.0001);
        EXPECT_NEAR(right.y, 0, 0.0001) << "the horizon is level";
    }
    D3DVECTOR direction, normal, right;
    CInterface::ComputeCameraVectors({}, direction, normal, right);
    ExpectVector(direction, {0, 0, 1});
    ExpectVector(right, {1, 0, 0});
    ExpectVector(normal, {0, 1, 0});
    D3DVECTOR eye;
    crMTransform(CInterface::CameraMatrix({10, 20, 30}, {12, 20, 37}, 0), {12, 20, 37}, eye);
    EXPECT_NEAR(eye.x, 0, 0.0001) << "the target stands straight ahead";
    EXPECT_NEAR(eye.z, std::sqrt(53.0f), 0.0001);
}

TEST_F(ViewsTest, StatusTexts) {
    SnappedAt(VIEW_LEFT, At(-16, 64));
    EXPECT_EQ(Ed().status[PANE_POSITION], "Position: X: 0,  Y: 64,  Z: -16");
    Ed().settings.use_metric_units = true;
    SnappedAt(VIEW_LEFT, At(-16, 64));
    EXPECT_EQ(Ed().status[PANE_POSITION], "Position: X:  0.00m,  Y:  1.00m,  Z:  -0.25m");
    AddBox({0, 0, 0}, {64, 32, 96});
    SelectBrushes({0});
    EXPECT_EQ(Ed().status[PANE_SIZE], "Size: X:  1.00m,  Y:  0.50m,  Z:  1.50m");
    Ed().settings.use_metric_units = false;
    Ed().SetSizeText();
    EXPECT_EQ(Ed().status[PANE_SIZE], "Size: X: 64,  Y: 32,  Z: 96");
    Ed().SetCountText();
    EXPECT_EQ(Ed().status[PANE_COUNTS], "Brushes: 1   Entities: 0");

    Ed().selection_box_active = false;
    Ed().SetSizeText();
    EXPECT_EQ(Ed().status[PANE_SIZE], "---");
    LeftDown(VIEW_TOP, At(8, 8), MOUSE_SHIFT);
    Move(VIEW_TOP, At(32, -16), MOUSE_SHIFT);
    Ed().SetSizeText();
    EXPECT_EQ(Ed().status[PANE_SIZE], "Delta: X: 24,  Y: 0,  Z: -24");

    Activate(VIEW_FRONT);
    EXPECT_EQ(Ed().status[PANE_GRID], "G: 8  Z: 1  R: 1");
    Ed().ZoomView(-1);
    EXPECT_EQ(Ed().status[PANE_GRID], "G: 8  Z: -2  R: 1");
    Ed().ZoomView(1), Ed().ZoomView(1), Ed().GridSize(-1);
    EXPECT_EQ(Ed().status[PANE_GRID], "G: 16  Z: 2  R: 1");
    Activate(VIEW_TOP);
    EXPECT_EQ(Ed().status[PANE_GRID], "G: 16  Z: 1  R: 1") << "the zoom of the active view";
    Ed().SelectionLock();
    EXPECT_EQ(Ed().status[PANE_LOCK], "LOCK");
    Ed().SelectionLock();
    EXPECT_EQ(Ed().status[PANE_LOCK], "");
}

TEST_F(ViewsTest, WildNumbersAreShownCutOff) {
    AddBox({0, 0, 0}, {8, 8, 8});
    SelectBrushes({0});
    Ed().selection_box = MakeBox({-3e30f, 0, 0}, {3e30f, 8, 8});
    Ed().SetSizeText();
    EXPECT_EQ(Ed().status[PANE_SIZE], "Size: X: 2147483520,  Y: 8,  Z: 8");
    Ed().View(VIEW_TOP).ScrollTo(int64_t{1} << 40, -(int64_t{1} << 40));
    SetZoom(VIEW_TOP, 1, 128);
    const D3DVECTOR far = SnappedAt(VIEW_TOP, {2000000000, -2000000000});
    EXPECT_GT(far.x, 8e9f);
    EXPECT_GT(far.z, 8e9f);
}
