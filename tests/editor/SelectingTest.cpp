// Selecting by click and rectangle, with groups, added clicks and the keys that change what they take.
#include "editor/EditorFixture.h"

class SelectingTest : public EditorTest {
protected:
    // Three boxes in a row along x, at 0, 100 and 200, and an entity over the second.
    void SetUp() override {
        for (const float x : {0.0f, 100.0f, 200.0f})
            AddBox({x, 0, 0}, {x + 64, 64, 64});
        AddEntity("POINT_LIGHT", {132, 100, 32});
        AddEntity("SOUND", {32, 100, 32});
        Ed().View(VIEW_TOP).ScrollTo(100 - MIDDLE, -MIDDLE); // so that all can be seen
        Ed().View(VIEW_FRONT).ScrollTo(100 - MIDDLE, -MIDDLE);
    }
    static POINT On(int x, int up) { return At(x - 100, up); }
};

TEST_F(SelectingTest, AClickOnAWireTakesTheBrush) {
    Click(VIEW_FRONT, On(100, 20), MOUSE_SHIFT);
    EXPECT_EQ(Brushes(), ints{1});
    EXPECT_EQ(Ed().editor_state, ES_SELECTED);
    ExpectBox(Ed().selection_box, {100, 0, 0}, {164, 64, 64});
    EXPECT_TRUE(BrushAt(1).is_selected);
    Click(VIEW_FRONT, On(200, 20), MOUSE_SHIFT);
    EXPECT_EQ(Brushes(), ints{2}) << "another takes its place";
    Click(VIEW_FRONT, On(180, 20), MOUSE_SHIFT);
    EXPECT_TRUE(Brushes().empty()) << "nothing there";
    EXPECT_EQ(Ed().editor_state, ES_IDLE);
    EXPECT_FALSE(Ed().selection_box_active);
    ExpectBox(Ed().selection_box, {200, 0, 0}, {264, 64, 64}, "kept");
}

TEST_F(SelectingTest, AddedClicksAndTheirMode) {
    Click(VIEW_FRONT, On(0, 20), MOUSE_SHIFT);
    Click(VIEW_FRONT, On(200, 20), MOUSE_SHIFT | MOUSE_CONTROL);
    EXPECT_EQ(Brushes(), (ints{0, 2}));
    ExpectBox(Ed().selection_box, {0, 0, 0}, {264, 64, 64});
    Ed().multi_selection = true;
    Click(VIEW_FRONT, On(100, 20), MOUSE_SHIFT);
    EXPECT_EQ(Brushes(), (ints{0, 2, 1}));
    Click(VIEW_FRONT, On(0, 20), MOUSE_SHIFT);
    EXPECT_EQ(Brushes(), (ints{2, 1})) << "a selected one is taken out";
    Ed().multi_selection = false;
    Click(VIEW_FRONT, On(0, 20), MOUSE_SHIFT);
    EXPECT_EQ(Brushes(), ints{0});
}

TEST_F(SelectingTest, GroupsAreTakenWholeUnlessIgnored) {
    SelectBrushes({0, 2});
    Level().entity_selection.AddItem(0);
    Ed().CreateGroup();
    Ed().Cancel();
    EXPECT_EQ(Ed().editor_state, ES_IDLE);
    Click(VIEW_FRONT, On(200, 20), MOUSE_SHIFT);
    EXPECT_EQ(Brushes(), (ints{0, 2}));
    EXPECT_EQ(Entities(), ints{0});
    Ed().ignore_groups = true;
    Click(VIEW_FRONT, On(200, 20), MOUSE_SHIFT);
    EXPECT_EQ(Brushes(), ints{2});
    EXPECT_TRUE(Entities().empty());
}

TEST_F(SelectingTest, Rectangles) {
    Drag(VIEW_FRONT, On(-20, 80), On(170, -20), MOUSE_SHIFT);
    EXPECT_EQ(Brushes(), (ints{0, 1}));
    EXPECT_TRUE(Entities().empty());
    EXPECT_FALSE(Ed().drag_box_active);
    Drag(VIEW_FRONT, On(260, -20), On(190, 80), MOUSE_SHIFT);
    EXPECT_EQ(Brushes(), ints{2}) << "from the lower right";
    Drag(VIEW_FRONT, On(-20, 80), On(170, -20), MOUSE_SHIFT | MOUSE_CONTROL);
    EXPECT_EQ(Brushes(), (ints{2, 0, 1}));
    Drag(VIEW_FRONT, On(0, 200), On(100, 160), MOUSE_SHIFT);
    EXPECT_TRUE(Brushes().empty());
    EXPECT_EQ(Ed().editor_state, ES_IDLE);
}

TEST_F(SelectingTest, AltAtTheReleaseTakesEntitiesToo) {
    LeftDown(VIEW_FRONT, On(90, 120), MOUSE_SHIFT);
    MoveSteps(VIEW_FRONT, On(90, 120), On(170, 32), MOUSE_SHIFT);
    desktop.held = {HeldKey::Alt};
    LeftUp(On(170, 32), MOUSE_SHIFT);
    EXPECT_EQ(Brushes(), ints{1});
    EXPECT_EQ(Entities(), ints{0});
    ExpectBox(Ed().selection_box, {100, 0, 0}, {164, 100, 64}, "both");
}

TEST_F(SelectingTest, TheRightButtonTakesEntities) {
    RightDrag(VIEW_FRONT, On(100, 120), On(170, 80), MOUSE_SHIFT);
    EXPECT_EQ(Entities(), ints{0});
    EXPECT_TRUE(Brushes().empty());
    EXPECT_EQ(Ed().editor_state, ES_SELECTED);
    RightClick(VIEW_FRONT, On(32, 100), MOUSE_SHIFT);
    EXPECT_EQ(Entities(), ints{1});
    RightClick(VIEW_FRONT, On(132, 100), MOUSE_SHIFT | MOUSE_CONTROL);
    EXPECT_EQ(Entities(), (ints{1, 0}));
    Click(VIEW_FRONT, On(100, 20), MOUSE_SHIFT | MOUSE_CONTROL);
    RightClick(VIEW_FRONT, On(300, 200), MOUSE_SHIFT | MOUSE_CONTROL);
    EXPECT_EQ(Ed().editor_state, ES_SELECTED) << "a miss, but there is still a selection";
    RightClick(VIEW_FRONT, On(300, 200), MOUSE_SHIFT);
    EXPECT_EQ(Ed().editor_state, ES_IDLE);
    EXPECT_FALSE(Ed().selection_box_active);
}

TEST_F(SelectingTest, ThePerspectiveViewTakesTheNearest) {
    Ed().View(VIEW_PERSPECTIVE).camera_position = {32, 32, -200};
    Click(VIEW_PERSPECTIVE, {MIDDLE, MIDDLE}, MOUSE_SHIFT);
    EXPECT_EQ(Brushes(), ints{0});
    Ed().View(VIEW_PERSPECTIVE).camera_position = {132, 100, -200};
    RightClick(VIEW_PERSPECTIVE, {MIDDLE, MIDDLE}, MOUSE_SHIFT);
    EXPECT_EQ(Entities(), ints{0});
    EXPECT_EQ(Ed().editor_state, ES_SELECTED);
}

TEST_F(SelectingTest, ASurfaceEndsTheSelection) {
    SelectBrushes({1});
    Ed().shearing = true;
    Ed().View(VIEW_PERSPECTIVE).camera_position = {32, 32, -200};
    Click(VIEW_PERSPECTIVE, {MIDDLE, MIDDLE}, MOUSE_CONTROL);
    EXPECT_EQ(Level().selected_surface_brush, 0);
    EXPECT_EQ(Ed().editor_state, ES_IDLE);
    EXPECT_FALSE(Ed().shearing);
    EXPECT_FALSE(Ed().selection_box_active);
    EXPECT_TRUE(Brushes().empty());
    RightClick(VIEW_PERSPECTIVE, {5, 5});
    EXPECT_EQ(Level().selected_surface_brush, 0) << "a right click in the idle state does nothing";
    Ed().Cancel();
    EXPECT_EQ(Level().selected_surface_brush, -1);
}

TEST_F(SelectingTest, SelectionStepsUndoInOrder) {
    Click(VIEW_FRONT, On(0, 20), MOUSE_SHIFT);
    Click(VIEW_FRONT, On(100, 20), MOUSE_SHIFT);
    RightClick(VIEW_FRONT, On(300, 200));
    EXPECT_EQ(UndoTexts(), (std::vector<std::string>{"Select 1 object(s).", "Deselect 1 object(s).",
                                                     "Select 1 object(s).", "Deselect 1 object(s)."}));
    Undo();
    EXPECT_EQ(Brushes(), ints{1});
    EXPECT_EQ(Ed().editor_state, ES_SELECTED);
    ExpectBox(Ed().selection_box, {100, 0, 0}, {164, 64, 64});
    Undo();
    EXPECT_TRUE(Brushes().empty());
    EXPECT_EQ(Ed().editor_state, ES_IDLE);
    Undo();
    EXPECT_EQ(Brushes(), ints{0});
}

TEST_F(SelectingTest, AllInvertedAndHidden) {
    Ed().SelectAll();
    EXPECT_EQ(Brushes().size(), 3u);
    EXPECT_EQ(Entities().size(), 2u);
    EXPECT_EQ(Ed().editor_state, ES_SELECTED);
    ExpectBox(Ed().selection_box, {0, 0, 0}, {264, 100, 64});
    Ed().InvertSelection();
    EXPECT_EQ(Ed().editor_state, ES_IDLE);
    EXPECT_FALSE(Ed().selection_box_active);
    SelectBrushes({1});
    Ed().HideUnselected();
    EXPECT_TRUE(BrushAt(0).is_hidden);
    Ed().HideSelected();
    EXPECT_EQ(Ed().editor_state, ES_IDLE);
    Click(VIEW_FRONT, On(100, 20), MOUSE_SHIFT);
    EXPECT_TRUE(Brushes().empty()) << "hidden ones are not taken";
    Ed().UnhideAll();
    Click(VIEW_FRONT, On(100, 20), MOUSE_SHIFT);
    EXPECT_EQ(Brushes(), ints{1});
}
