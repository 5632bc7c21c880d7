// Moving, resizing, shearing, rotating, copying and deleting the selection, and the cordon and clip boxes.
#include "editor/EditorFixture.h"

class EditingTest : public EditorTest {
protected:
    // A selected box: right and up 0 to 64 in every view.
    void SetUp() override { StartAnew(); }
    void StartAnew() {
        Level().ClearSelection();
        Level().brush.clear();
        AddBox({0, 0, 0}, {64, 64, 64});
        SelectBrushes({0});
    }
    void ExpectSelectionBox(const D3DVECTOR& min, const D3DVECTOR& max, const std::string& what = {}) {
        ExpectBox(Ed().selection_box, min, max, what);
        ExpectBox(BrushAt(0).bbox, min, max, what + " brush");
        ExpectVector(Ed().selection_pivot, (min + max) * 0.5f, what + " pivot");
    }
    static D3DVECTOR InView(int view, float right, float up) {
        return view == VIEW_TOP     ? D3DVECTOR{right, 0, up}
               : view == VIEW_FRONT ? D3DVECTOR{right, up, 0}
                                    : D3DVECTOR{0, up, right};
    }
};

TEST_F(EditingTest, AMoveInEachViewHasOneUndoStep) {
    for (const int view : {VIEW_TOP, VIEW_FRONT, VIEW_LEFT}) {
        const D3DVECTOR move = InView(view, -40, 24);
        Drag(view, At(32, 32), At(-8, 56));
        EXPECT_EQ(Ed().editor_state, ES_SELECTED);
        ExpectSelectionBox(move, move + D3DVECTOR{64, 64, 64}, "moved");
        EXPECT_EQ(UndoTexts().back(), "Move objects.");
        ASSERT_TRUE(Undo());
        ExpectSelectionBox({0, 0, 0}, {64, 64, 64}, "undone");
        ASSERT_TRUE(Redo());
        ExpectSelectionBox(move, move + D3DVECTOR{64, 64, 64}, "redone");
        ASSERT_TRUE(Undo());
    }
}

TEST_F(EditingTest, ZoomedMoves) {
    Ed().View(VIEW_FRONT).zoom_in = 4;
    Drag(VIEW_FRONT, At(100, 100), At(164, 36));
    ExpectSelectionBox({16, -16, 0}, {80, 48, 64}, "a unit is four pixels");
    Ed().View(VIEW_TOP).zoom_out = 8;
    Drag(VIEW_TOP, At(5, 4), At(9, 4));
    ExpectSelectionBox({48, -16, 0}, {112, 48, 64}, "a pixel is eight units");
}

TEST_F(EditingTest, ACornerOffTheGridJumpsToItFirst) {
    const struct {
        int from, first; // the mouse
        float corner;    // the low x of the brush
        float moved;     // where the low x comes to lie
    } cases[] = {{24, 32, 3, 8}, {24, 16, 3, 0}, {24, 32, -3, 0}, {24, 16, -3, -8}};
    for (const auto& c : cases) {
        Ed().Cancel();
        Level().SetBrushSelection(0, true);
        Level().MoveBrush({c.corner - BrushAt(0).bbox[7].x, 0, 0});
        Ed().UpdateSelectionBox();
        LeftDown(VIEW_FRONT, At(c.from, 24));
        Move(VIEW_FRONT, At(c.first, 24));
        EXPECT_EQ(BrushAt(0).bbox[7].x, c.moved) << c.corner << " toward " << c.first;
        const int next = c.first + (c.first > c.from ? 8 : -8);
        Move(VIEW_FRONT, At(next, 24));
        EXPECT_EQ(BrushAt(0).bbox[7].x, c.moved + static_cast<float>(c.first > c.from ? 8 : -8))
            << "then with the grid";
        LeftUp(At(next, 24));
        Undo();
        EXPECT_EQ(BrushAt(0).bbox[7].x, c.corner) << "undone";
    }
}

TEST_F(EditingTest, AlignToGridByItself) {
    const auto align = [this](float reference, float delta) {
        return Ed().AlignToGrid({reference, 0, 0}, {delta, 0, 0}).x;
    };
    EXPECT_EQ(align(16, 8), 8);
    EXPECT_EQ(align(3, 8), 5);
    EXPECT_EQ(align(3, -8), -3);
    EXPECT_EQ(align(-3, 8), 3);
    EXPECT_EQ(align(-3, -8), -5);
    EXPECT_EQ(align(3, 0), 0);
    EXPECT_EQ(align(7.5f, 8), 8.5f) << "half a unit is no step, so the mouse's own comes on top";
}

TEST_F(EditingTest, ResizeOfEachSideAndCorner) {
    const struct {
        const char* what;
        int right, up;                      // the press, outside the box
        float low_a, low_b, high_a, high_b; // after a drag by 16, 8
    } cases[] = {
        {"left", -16, 32, 16, 0, 64, 64},
        {"right", 80, 32, 0, 0, 80, 64},
        {"top", 32, 80, 0, 0, 64, 72},
        {"bottom", 32, -16, 0, 8, 64, 64},
        {"left and top", -16, 80, 16, 0, 64, 72},
        {"right and bottom", 80, -16, 0, 8, 80, 64},
    };
    for (const int view : {VIEW_TOP, VIEW_FRONT, VIEW_LEFT})
        for (const auto& c : cases) {
            StartAnew();
            Drag(view, At(c.right, c.up), At(c.right + 16, c.up + 8));
            const D3DVECTOR missing = D3DVECTOR{1, 1, 1} - InView(view, 1, 1);
            ExpectSelectionBox(InView(view, c.low_a, c.low_b), InView(view, c.high_a, c.high_b) + missing * 64.0f,
                               std::string(c.what) + " in view " + std::to_string(view));
        }
    EXPECT_EQ(Ed().edit_state, static_cast<uint32_t>(EDGE_RIGHT | EDGE_BOTTOM));
}

TEST_F(EditingTest, AResizeStopsShortOfTheOppositeSide) {
    Drag(VIEW_FRONT, At(-8, 32), At(200, 32));
    ExpectSelectionBox({56, 0, 0}, {64, 64, 64}, "left side");
    Drag(VIEW_FRONT, At(60, 72), At(60, -100));
    ExpectSelectionBox({56, 0, 0}, {64, 8, 64}, "top side");
    EXPECT_TRUE(UndoTexts().empty()) << "a resize has no step of its own";
}

TEST_F(EditingTest, ControlFreezesAResize) {
    LeftDown(VIEW_FRONT, At(72, 32));
    Move(VIEW_FRONT, At(88, 32));
    desktop.held.insert(HeldKey::Control);
    Move(VIEW_FRONT, At(120, 32), MOUSE_CONTROL);
    ExpectSelectionBox({0, 0, 0}, {80, 64, 64}, "frozen");
    desktop.held.clear();
    Move(VIEW_FRONT, At(128, 32));
    ExpectSelectionBox({0, 0, 0}, {88, 64, 64}, "goes on from there");
    LeftUp(At(128, 32));
}

TEST_F(EditingTest, ASelectionWithAnEntityMovesWhole) {
    AddEntity("POINT_LIGHT", {32, 32, 32});
    Level().entity_selection.AddItem(0);
    Ed().UpdateSelectionBox();
    Drag(VIEW_FRONT, At(100, 32), At(116, 32));
    ExpectSelectionBox({16, 0, 0}, {80, 64, 64});
    ExpectVector(EntityAt(0).position, {48, 32, 32});
    Undo();
    ExpectVector(EntityAt(0).position, {32, 32, 32});
}

TEST_F(EditingTest, ShearInEachView) {
    const struct {
        int view;
        POINT press, release;
        D3DVECTOR min, max;
    } cases[] = {
        // The top side goes right by 16: so does the upper half, and the box grows.
        {VIEW_FRONT, At(32, 80), At(48, 80), {0, 0, 0}, {80, 64, 64}},
        {VIEW_TOP, At(32, 80), At(48, 80), {0, 0, 0}, {80, 64, 64}},
        {VIEW_LEFT, At(32, 80), At(48, 80), {0, 0, 0}, {64, 64, 80}},
        // The right side goes up by 16.
        {VIEW_FRONT, At(80, 32), At(80, 48), {0, 0, 0}, {64, 80, 64}},
        {VIEW_TOP, At(80, 32), At(80, 48), {0, 0, 0}, {64, 64, 80}},
        {VIEW_LEFT, At(80, 32), At(80, 48), {0, 0, 0}, {64, 80, 64}},
    };
    for (const auto& c : cases) {
        StartAnew();
        Ed().ToggleShearing();
        EXPECT_EQ(Ed().GetCursor(), CursorRole::Shear);
        Move(c.view, c.press);
        Ed().MouseLeftButtonDown(0, c.press);
        Move(c.view, c.release);
        LeftUp(c.release);
        ExpectSelectionBox(c.min, c.max, "shear in view " + std::to_string(c.view));
        EXPECT_EQ(Level().undo_buffer.GetActionCount(), 0) << "a shear has no step of its own";
        Ed().ToggleShearing();
        EXPECT_FALSE(Ed().shearing);
    }
}

TEST_F(EditingTest, ARotationTurnsAboutThePivotAndIsUndone) {
    Level().ScaleBrush(MakeBox({0, 0, 0}, {64, 32, 64}), Ed().selection_box);
    Ed().UpdateSelectionBox();
    Ed().SetEditorState(ES_ROTATE_ARMED);
    LeftDown(VIEW_FRONT, At(0, 0));
    EXPECT_EQ(Ed().editor_state, ES_ROTATE);
    EXPECT_FALSE(Ed().selection_box_active);
    MoveSteps(VIEW_FRONT, At(0, 0), At(5, 90)); // a degree a pixel
    LeftUp(At(5, 90));
    EXPECT_EQ(Ed().editor_state, ES_ROTATE_ARMED);
    EXPECT_TRUE(Ed().selection_box_active);
    const Box& box = BrushAt(0).bbox; // 64 by 32 about 32, 16
    EXPECT_NEAR(box[7].x, 16, 0.01);
    EXPECT_NEAR(box[1].x, 48, 0.01);
    EXPECT_NEAR(box[7].y, -16, 0.01);
    EXPECT_NEAR(box[1].y, 48, 0.01);
    EXPECT_EQ(UndoTexts().back(), "Rotate objects in view 1.");
    Undo();
    EXPECT_NEAR(box[7].x, 0, 0.01);
    EXPECT_NEAR(box[1].y, 32, 0.01);
    Ed().Cancel();
    EXPECT_EQ(Ed().editor_state, ES_SELECTED);
}

TEST_F(EditingTest, TheWheelTurnsInOrthographicViewsOnly) {
    Activate(VIEW_PERSPECTIVE);
    Ed().RotateBrush(PI / 2);
    ExpectSelectionBox({0, 0, 0}, {64, 64, 64});
    Level().ScaleBrush(MakeBox({0, 0, 0}, {64, 64, 16}), Ed().selection_box);
    Ed().UpdateSelectionBox();
    Activate(VIEW_TOP);
    Ed().RotateBrush(PI / 2);
    EXPECT_NEAR(Ed().selection_box[1].z - Ed().selection_box[7].z, 64, 0.01);
    EXPECT_NEAR(Ed().selection_box[1].x - Ed().selection_box[7].x, 16, 0.01);
}

TEST_F(EditingTest, SpaceClonesByOneGridStep) {
    const struct {
        int view;
        D3DVECTOR step;
    } cases[] = {
        {VIEW_TOP, {8, 0, -8}}, {VIEW_FRONT, {8, -8, 0}}, {VIEW_LEFT, {0, -8, 8}}, {VIEW_PERSPECTIVE, {8, 0, -8}}};
    D3DVECTOR low;
    for (const auto& c : cases) {
        Activate(c.view);
        Ed().Clone();
        const int last = Level().GetBrushCount() - 1;
        EXPECT_EQ(Brushes(), ints{last});
        low += c.step;
        ExpectBox(Ed().selection_box, low, low + D3DVECTOR{64, 64, 64});
        ExpectBox(BrushAt(last).bbox, low, low + D3DVECTOR{64, 64, 64});
    }
    EXPECT_EQ(Ed().status[PANE_COUNTS], "Brushes: 5   Entities: 0");
    Ed().ToggleShearing();
    Ed().Clone();
    EXPECT_EQ(Level().GetBrushCount(), 5) << "not while shearing";
}

TEST_F(EditingTest, SpaceDuringAMoveMakesAnArray) {
    desktop.form_answer = "3";
    LeftDown(VIEW_FRONT, At(24, 24));
    MoveSteps(VIEW_FRONT, At(24, 24), At(104, 24));
    Ed().Clone();
    EXPECT_EQ(desktop.forms, 1);
    ASSERT_EQ(Level().GetBrushCount(), 4);
    for (int i = 0; i < 4; ++i)
        ExpectVector(BrushAt(i).bbox[7], {80.0f * static_cast<float>(i), 0, 0}, "brush " + std::to_string(i));
    EXPECT_EQ(Brushes(), ints{3});
    EXPECT_EQ(Ed().editor_state, ES_SELECTED) << "the drag is over";
    LeftUp(At(104, 24));
    ExpectVector(BrushAt(3).bbox[7], {240, 0, 0});
    EXPECT_TRUE(UndoTexts().empty());
}

TEST_F(EditingTest, CancellingTheArrayLeavesTheSelectionAtItsStart) {
    for (const float off_grid : {0.0f, 3.0f}) {
        Level().MoveBrush({off_grid, 0, 0});
        Ed().UpdateSelectionBox();
        LeftDown(VIEW_FRONT, At(24, 24));
        MoveSteps(VIEW_FRONT, At(24, 24), At(104, -16));
        Ed().Clone();
        EXPECT_EQ(Level().GetBrushCount(), 1);
        ExpectSelectionBox({off_grid, 0, 0}, {64 + off_grid, 64, 64}, "at its start");
        LeftUp(At(104, -16));
    }
}

TEST_F(EditingTest, SpaceDuringAResizeDoesNothing) {
    LeftDown(VIEW_FRONT, At(80, 24));
    Ed().Clone();
    EXPECT_EQ(desktop.forms, 0);
    EXPECT_EQ(Level().GetBrushCount(), 1);
}

TEST_F(EditingTest, DeleteAndItsUndo) {
    Ed().DeleteSelection();
    EXPECT_EQ(Level().GetBrushCount(), 0);
    EXPECT_EQ(Ed().editor_state, ES_IDLE);
    EXPECT_FALSE(Ed().selection_box_active);
    EXPECT_EQ(UndoTexts(), std::vector<std::string>{"Delete 1 object(s)."});
    ExpectBox(Ed().selection_box, {0, 0, 0}, {64, 64, 64}, "the box keeps its extents");
    Undo();
    ASSERT_EQ(Level().GetBrushCount(), 1);
    EXPECT_EQ(Ed().editor_state, ES_SELECTED);
    ExpectSelectionBox({0, 0, 0}, {64, 64, 64});
    Ed().settings.undo_states = 0;
    Ed().DeleteSelection();
    EXPECT_EQ(Level().undo_buffer.GetActionCount(), 0) << "switched off";
}

TEST_F(EditingTest, TheBoundsAreDraggedInPlaceOfTheSelection) {
    Ed().edit_cordon_bounds = true;
    Ed().cordon_active = Ed().clip_active = true;
    const uint32_t changes = Ed().changes;
    RightDrag(VIEW_TOP, At(0, 0), At(16, -24));
    ExpectBox(Ed().views.cordon_box, {-112, -128, -152}, {144, 128, 104}, "cordon moved");
    RightDrag(VIEW_FRONT, At(200, 0), At(216, 0));
    ExpectBox(Ed().views.cordon_box, {-112, -128, -152}, {160, 128, 104}, "its right side");
    RightDrag(VIEW_FRONT, At(-200, 0), At(250, 0)); // 450 right
    ExpectBox(Ed().views.cordon_box, {152, -128, -152}, {160, 128, 104}, "and its stop");
    EXPECT_EQ(Ed().changes, changes) << "nothing in the level has changed";
    ExpectSelectionBox({0, 0, 0}, {64, 64, 64});

    AddEntity("POINT_LIGHT", {300, 0, 0});
    Drag(VIEW_TOP, At(32, 0), At(-48, 0)); // the clip box moves left by 80
    ExpectBox(Ed().views.clip_box, {-336, -256, -256}, {176, 256, 256}, "clip");
    EXPECT_FALSE(BrushAt(0).is_hidden);
    EXPECT_TRUE(EntityAt(0).is_hidden_by_clipbox);
    EXPECT_TRUE(Brushes().empty());
    EXPECT_EQ(Ed().editor_state, ES_IDLE) << "the clip box has taken the selection away";
    EXPECT_FALSE(Ed().selection_box_active);
}
