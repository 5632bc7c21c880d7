// New brushes by a drag or a click, and outlines of extrudable ones.
#include "editor/EditorFixture.h"

class BrushCreationTest : public EditorTest {
protected:
    // Left clicks of an outline, each with the move before it; the first press starts it.
    void Outline(int view, std::initializer_list<POINT> points) {
        for (const POINT& p : points)
            Click(view, p);
    }
    size_t PointCount() { return Ed().ex_point.size(); }
};

TEST_F(BrushCreationTest, ADragMakesABoxInAnyViewAndDirection) {
    const struct {
        int view;
        POINT from, to;
        D3DVECTOR min, max;
    } cases[] = {
        {VIEW_TOP, At(16, 64), At(80, -32), {16, -32, -32}, {80, 32, 64}},
        {VIEW_TOP, At(80, -32), At(16, 64), {16, -32, -32}, {80, 32, 64}},
        {VIEW_FRONT, At(-64, 8), At(8, 48), {-64, 8, -32}, {8, 48, 32}},
        {VIEW_LEFT, At(40, 8), At(-48, -16), {-32, -16, -48}, {32, 8, 40}},
        {VIEW_TOP, At(-13, 20), At(-37, -25), {-32, -32, -24}, {-8, 32, 16}}, // snapped toward zero
    };
    for (const auto& c : cases) {
        Ed().selection_box = MakeBox({-32, -32, -32}, {32, 32, 32});
        Drag(c.view, c.from, c.to);
        ASSERT_EQ(Ed().editor_state, ES_SELECTED);
        EXPECT_TRUE(Ed().selection_box_active);
        ExpectBox(BrushAt(Level().GetBrushCount() - 1).bbox, c.min, c.max, "brush");
        ExpectBox(Ed().selection_box, c.min, c.max, "selection box");
        ExpectVector(Ed().selection_pivot, (c.min + c.max) * 0.5f, "pivot");
        EXPECT_EQ(Brushes(), ints{Level().GetBrushCount() - 1});
        RightClick(c.view, At(200, 200));
        EXPECT_EQ(Ed().editor_state, ES_IDLE);
    }
    EXPECT_TRUE(Ed().project_file_need_save);
    EXPECT_EQ(Ed().status[PANE_COUNTS], "Brushes: 5   Entities: 0");
}

TEST_F(BrushCreationTest, ZoomedViews) {
    Ed().View(VIEW_FRONT).zoom_in = 4;
    Drag(VIEW_FRONT, At(32, 32), At(160, 100)); // 8 to 40, 8 to 24
    ExpectBox(BrushAt(0).bbox, {8, 8, -32}, {40, 24, 32});
    RightClick(VIEW_FRONT, At(200, 200));
    Ed().View(VIEW_LEFT).zoom_out = 8;
    Ed().grid_size = 4;
    Drag(VIEW_LEFT, At(-10, 3), At(5, -7)); // a pixel is 8 units
    ExpectBox(BrushAt(1).bbox, {8, -56, -80}, {40, 24, 40}, "as deep as the last box");
}

TEST_F(BrushCreationTest, AClickMakes32UnitsOfTheLastDepth) {
    Drag(VIEW_TOP, At(0, 0), At(64, 64));
    Drag(VIEW_FRONT, At(100, 100), At(100, 100)); // outside: it grabs a corner, and moves nothing
    ExpectBox(Ed().selection_box, {0, -32, 0}, {64, 32, 64});
    RightClick(VIEW_TOP, At(-50, -50));
    Click(VIEW_LEFT, At(16, 40));
    ExpectBox(BrushAt(1).bbox, {0, 40, 16}, {64, 72, 48});
    RightClick(VIEW_TOP, At(-50, -50));
    Click(VIEW_PERSPECTIVE, {10, 10});
    ExpectBox(BrushAt(2).bbox, {0, 40, 16}, {64, 72, 48}, "in the perspective view the last box again");
}

TEST_F(BrushCreationTest, SizeIsShownWhileItGrows) {
    LeftDown(VIEW_TOP, At(0, 0));
    Move(VIEW_TOP, At(-24, 40));
    EXPECT_EQ(Ed().status[PANE_SIZE], "Size: X: 24,  Y: 64,  Z: 40");
    Ed().Cancel();
    EXPECT_EQ(Ed().editor_state, ES_IDLE);
    EXPECT_FALSE(Ed().selection_box_active);
    LeftUp(At(-24, 40));
    EXPECT_EQ(Level().GetBrushCount(), 0);
}

TEST_F(BrushCreationTest, TypeSegmentsAndColorOfTheNewBrush) {
    Ed().active_brush_segments = 5;
    Ed().SetActiveBrushTemplate(BT_CYLINDER);
    EXPECT_EQ(Ed().active_brush_segments, 1u) << "curved types have their own count";
    Ed().active_brush_segments = 3;
    Ed().SetActiveBrushTemplate(BT_PRISM);
    EXPECT_EQ(Ed().active_brush_segments, 5u);
    Ed().active_brush_color = {0.5f, 0.25f, 1, 0};
    Drag(VIEW_TOP, At(0, 0), At(64, 64));
    EXPECT_EQ(BrushAt(0).type, BT_PRISM);
    EXPECT_EQ(BrushAt(0).surfaces.size(), 7u) << "five sides and two lids";
    EXPECT_FLOAT_EQ(BrushAt(0).color_vector.g, 0.25f);
    Ed().SetActiveBrushTemplate(BT_ELASTIC_BOX);
    EXPECT_EQ(Ed().active_brush_segments, 3u);
}

TEST_F(BrushCreationTest, ACustomBrushWithoutAChoiceLeavesTheSelectionCleared) {
    Ed().SetActiveBrushTemplate(BT_CUSTOM);
    Drag(VIEW_TOP, At(0, 0), At(64, 64));
    EXPECT_EQ(Level().GetBrushCount(), 0);
    EXPECT_EQ(Ed().editor_state, ES_SELECTED);
    EXPECT_TRUE(Ed().selection_box_active);
}

TEST_F(BrushCreationTest, AFullLevelRefusesAndStaysWhole) {
    auto& list = Level().brush;
    while (Level().GetBrushCount() < MAX_BRUSHES)
        list.push_back(std::make_unique<Brush>());
    Drag(VIEW_TOP, At(0, 0), At(64, 64));
    EXPECT_EQ(Level().GetBrushCount(), MAX_BRUSHES);
    EXPECT_EQ(desktop.boxes.size(), 1u);
    EXPECT_EQ(Ed().editor_state, ES_IDLE);
    EXPECT_FALSE(Ed().project_file_need_save);
    list.clear();
}

// Extrudable outlines ------------------------------------------------------------------------------------------------

TEST_F(BrushCreationTest, AnOutlineClosesOnItsFirstPointInEachView) {
    const struct {
        int view;
        D3DVECTOR min, max; // right 0 to 64, up 0 to 48, as deep as the last box
    } cases[] = {{VIEW_TOP, {0, -32, 0}, {64, 32, 48}},
                 {VIEW_FRONT, {0, 0, -32}, {64, 48, 32}},
                 {VIEW_LEFT, {-32, 0, 0}, {32, 48, 64}}};
    Ed().SetActiveBrushTemplate(BT_EXTRUDABLE);
    for (const auto& c : cases) {
        Ed().selection_box = MakeBox({-32, -32, -32}, {32, 32, 32});
        Click(c.view, At(0, 0));
        EXPECT_EQ(Ed().editor_state, ES_EXTRUDABLE);
        EXPECT_FALSE(Ed().MouseRelease()) << "the capture outlives the clicks";
        EXPECT_EQ(Ed().GetCursor(), CursorRole::Extrudable);
        Outline(c.view, {At(64, 0), At(64, 48), At(0, 0)});
        ASSERT_EQ(Ed().editor_state, ES_SELECTED) << c.view;
        EXPECT_TRUE(Ed().MouseRelease());
        const Brush& b = BrushAt(Level().GetBrushCount() - 1);
        EXPECT_EQ(b.surfaces.size(), 5u) << "two lids and three sides";
        ExpectBox(b.bbox, c.min, c.max, "outline in view " + std::to_string(c.view));
        EXPECT_TRUE(Ed().selection_box_active);
        RightClick(c.view, At(200, 200));
    }
}

TEST_F(BrushCreationTest, TheRubberLineEndsAtTheMouse) {
    Ed().SetActiveBrushTemplate(BT_EXTRUDABLE);
    Ed().selection_box = MakeBox({0, 8, 16}, {64, 48, 80});
    Click(VIEW_TOP, At(0, 0));
    Move(VIEW_TOP, At(40, 24));
    ExpectVector(Ed().ex_point[0], {0, 48, 0}, "on the high side of the box");
    ExpectVector(Ed().ex_point[1], {40, 48, 24});
    RightClick(VIEW_TOP, At(0, 0));
    Click(VIEW_FRONT, At(8, 8));
    ExpectVector(Ed().ex_point[0], {8, 8, 16}, "on the low side");
    RightClick(VIEW_FRONT, At(0, 0));
    Click(VIEW_LEFT, At(8, 16));
    ExpectVector(Ed().ex_point[0], {64, 16, 8}, "on the high side");
}

TEST_F(BrushCreationTest, ClicksThatSpoilAnOutlineAreIgnored) {
    Ed().SetActiveBrushTemplate(BT_EXTRUDABLE);
    Outline(VIEW_FRONT, {At(0, 0), At(0, 0)});
    EXPECT_EQ(PointCount(), 2u) << "the first point alone closes nothing";
    Outline(VIEW_FRONT, {At(64, 0), At(64, 64)});
    EXPECT_EQ(PointCount(), 4u);
    Click(VIEW_FRONT, At(64, 0));
    EXPECT_EQ(PointCount(), 4u) << "an inner point again";
    Click(VIEW_FRONT, At(32, -32));
    EXPECT_EQ(PointCount(), 4u) << "it would cross the first side";
    Outline(VIEW_FRONT, {At(0, 64), At(0, 0)});
    EXPECT_EQ(Ed().editor_state, ES_SELECTED);
    EXPECT_EQ(BrushAt(0).surfaces.size(), 6u);
}

TEST_F(BrushCreationTest, OutlinesWithoutAnAreaMakeNothing) {
    Ed().SetActiveBrushTemplate(BT_EXTRUDABLE);
    Outline(VIEW_TOP, {At(0, 0), At(32, 0), At(64, 0), At(0, 0)});
    EXPECT_EQ(Level().GetBrushCount(), 0);
    EXPECT_EQ(Ed().editor_state, ES_EXTRUDABLE) << "it can be finished with another point";
    Outline(VIEW_TOP, {At(64, 64), At(0, 0)});
    EXPECT_EQ(Level().GetBrushCount(), 1);
}

TEST_F(BrushCreationTest, ARightClickDropsTheOutline) {
    Ed().SetActiveBrushTemplate(BT_EXTRUDABLE);
    for (const bool shearing : {false, true}) {
        Outline(VIEW_TOP, {At(0, 0), At(64, 0)});
        Ed().shearing = shearing;
        Ed().Cancel();
        EXPECT_EQ(Ed().editor_state, ES_EXTRUDABLE) << "Escape does not";
        RightClick(VIEW_TOP, At(0, 64));
        EXPECT_EQ(Ed().editor_state, ES_IDLE);
        EXPECT_TRUE(Ed().MouseRelease());
        EXPECT_EQ(Level().GetBrushCount(), 0);
    }
}

TEST_F(BrushCreationTest, AnOutlineHolds256Points) {
    Ed().SetActiveBrushTemplate(BT_EXTRUDABLE);
    Ed().grid_size = 1;
    Click(VIEW_TOP, At(-200, 0));
    // A curve that bends one way, so that nothing is crossed.
    for (int i = 1; i < 300; ++i)
        Click(VIEW_TOP, At(-200 + i, 0 - i * (300 - i) / 200));
    EXPECT_EQ(PointCount(), 256u);
    Click(VIEW_TOP, At(-200, 0));
    ASSERT_EQ(Level().GetBrushCount(), 1);
    EXPECT_EQ(BrushAt(0).surfaces.size(), 257u) << "255 sides and two lids";
}
