// The states, their cursors, and what cancelling does in each.
#include "editor/EditorFixture.h"

class StatesTest : public EditorTest {
protected:
    void SelectOne() {
        AddBox({0, 0, 0}, {64, 64, 64});
        SelectBrushes({0});
    }
};

TEST_F(StatesTest, CursorOfEachState) {
    const std::pair<EditorState, CursorRole> roles[] = {
        {ES_IDLE, CursorRole::Arrow},          {ES_PAN, CursorRole::Pan},
        {ES_CREATE_BRUSH, CursorRole::Arrow},  {ES_SELECTED, CursorRole::Arrow},
        {ES_EDIT, CursorRole::Arrow},          {ES_EXTRUDABLE, CursorRole::Extrudable},
        {ES_ROTATE_ARMED, CursorRole::Rotate}, {ES_ROTATE, CursorRole::Rotate},
        {ES_PICK_TEXTURE, CursorRole::Pick},   {ES_DRAG_SELECT, CursorRole::Arrow},
        {ES_VERTEX, CursorRole::Arrow},        {ES_VERTEX_MOVE, CursorRole::Arrow},
        {ES_DECAL, CursorRole::Decal},         {ES_TERRAIN, CursorRole::Terrain}};
    for (const auto& [state, role] : roles) {
        Ed().editor_state = state;
        EXPECT_EQ(Ed().GetCursor(), role) << state;
    }
    Ed().shearing = true;
    for (const EditorState state : {ES_SELECTED, ES_EDIT}) {
        Ed().editor_state = state;
        EXPECT_EQ(Ed().GetCursor(), CursorRole::Shear) << state;
    }
}

TEST_F(StatesTest, TwoStatesCanBePopped) {
    Ed().SetEditorState(ES_SELECTED);
    Ed().SetEditorState(ES_PICK_TEXTURE);
    Ed().SetEditorState(ES_PAN);
    Ed().ResetEditorState();
    EXPECT_EQ(Ed().editor_state, ES_PICK_TEXTURE);
    Ed().ResetEditorState();
    EXPECT_EQ(Ed().editor_state, ES_SELECTED);
}

TEST_F(StatesTest, ShearIsToggledWithASelectionOnly) {
    Ed().ToggleShearing();
    EXPECT_FALSE(Ed().shearing);
    Ed().editor_state = ES_ROTATE_ARMED;
    Ed().ToggleShearing();
    EXPECT_TRUE(Ed().shearing);
    EXPECT_EQ(Ed().editor_state, ES_SELECTED);
    EXPECT_EQ(desktop.cursor, CursorRole::Shear);
}

TEST_F(StatesTest, CancelInEachState) {
    const struct {
        EditorState state;
        bool shearing;
        EditorState after;
        bool box_after;
    } cases[] = {
        {ES_IDLE, false, ES_IDLE, true},
        {ES_PAN, false, ES_PAN, true},
        {ES_CREATE_BRUSH, false, ES_IDLE, false},
        {ES_SELECTED, false, ES_IDLE, false},
        {ES_SELECTED, true, ES_SELECTED, true},
        {ES_EDIT, false, ES_IDLE, false},
        {ES_EDIT, true, ES_EDIT, true},
        {ES_EXTRUDABLE, false, ES_EXTRUDABLE, true},
        {ES_ROTATE_ARMED, false, ES_SELECTED, true},
        {ES_ROTATE, false, ES_SELECTED, true},
        {ES_PICK_TEXTURE, false, ES_DECAL, true}, // as old_editor_state says
        {ES_DRAG_SELECT, false, ES_IDLE, true},
        {ES_VERTEX, false, ES_SELECTED, true},
        {ES_VERTEX_MOVE, false, ES_VERTEX_MOVE, true},
        {ES_TERRAIN, false, ES_DECAL, true},
    };
    for (const auto& c : cases) {
        Ed().InitEditor();
        SelectOne();
        Ed().older_editor_state = ES_PAN;
        Ed().old_editor_state = ES_DECAL;
        Ed().editor_state = c.state;
        Ed().shearing = c.shearing;
        Ed().drag_box_active = c.state == ES_DRAG_SELECT;
        desktop.captured = true;
        Ed().Cancel();
        const std::string what = "state " + std::to_string(c.state);
        EXPECT_EQ(Ed().editor_state, c.after) << what;
        EXPECT_EQ(Ed().selection_box_active, c.box_after) << what;
        EXPECT_FALSE(desktop.captured) << what;
        EXPECT_FALSE(Ed().drag_box_active) << what;
        EXPECT_EQ(Ed().shearing, c.shearing && c.state == ES_EDIT) << what;
        EXPECT_EQ(Ed().old_editor_state, c.state == ES_TERRAIN ? ES_PAN : ES_DECAL) << what;
        const bool deselects = !c.box_after && c.state != ES_CREATE_BRUSH;
        EXPECT_EQ(Brushes().empty(), deselects) << what;
        EXPECT_EQ(UndoTexts().size(), deselects ? 1u : 0u) << what;
    }
}

TEST_F(StatesTest, AShownSelectionInWireGoesWithItsNet) {
    Ed().settings.show_sel_wire = true;
    SelectOne();
    Ed().SelectionChanged();
    EXPECT_EQ(Level().so_vertex.size(), 24u) << "six sides of four vertices";
    Drag(VIEW_FRONT, At(24, 24), At(40, 24));
    EXPECT_EQ(Level().so_vertex.size(), 24u);
    EXPECT_EQ(Level().so_vertex[0].v.x, BrushAt(0).surfaces[0].vertices[0].x) << "it follows the drag";
    Ed().Cancel();
    EXPECT_TRUE(Level().so_vertex.empty());
}

TEST_F(StatesTest, ARightClickCancels) {
    SelectOne();
    RightClick(VIEW_TOP, At(0, 0));
    EXPECT_EQ(Ed().editor_state, ES_IDLE);
    EXPECT_EQ(UndoTexts(), std::vector<std::string>{"Deselect 1 object(s)."});
}

TEST_F(StatesTest, AltMovesThePerspectiveCamera) {
    SelectOne();
    Ed().View(VIEW_PERSPECTIVE).camera_position = {1, 2, 3};
    desktop.held = {HeldKey::Alt};
    Click(VIEW_TOP, At(37, -21));
    ExpectVector(Ed().View(VIEW_PERSPECTIVE).camera_position, {37, 2, -21}, "not snapped");
    Click(VIEW_LEFT, At(50, 10));
    ExpectVector(Ed().View(VIEW_PERSPECTIVE).camera_position, {37, 10, 50});
    EXPECT_EQ(Ed().editor_state, ES_SELECTED);
    desktop.held = {HeldKey::Alt, HeldKey::LeftShift};
    Click(VIEW_FRONT, At(20, 20));
    ExpectVector(Ed().View(VIEW_PERSPECTIVE).camera_position, {37, 10, 50}, "Alt is not alone");
}

TEST_F(StatesTest, PickingATextureGoesBackToTheStateBefore) {
    SelectOne();
    Ed().SetEditorState(ES_PICK_TEXTURE);
    Click(VIEW_TOP, At(0, 0));
    EXPECT_EQ(Ed().editor_state, ES_PICK_TEXTURE) << "only in the perspective view";
    EXPECT_EQ(desktop.cursor, CursorRole::Pick);
    Click(VIEW_PERSPECTIVE, {MIDDLE, MIDDLE});
    EXPECT_EQ(Ed().editor_state, ES_SELECTED);
    EXPECT_EQ(desktop.cursor, CursorRole::Arrow);
    EXPECT_EQ(Brushes(), ints{0});
}

TEST_F(StatesTest, LibraryWindow) {
    Ed().ShowLibraryTab(TAB_ENTITY);
    EXPECT_TRUE(Ed().console_onscreen);
    Ed().ShowLibraryTab(TAB_TEXTURE);
    EXPECT_TRUE(Ed().console_onscreen);
    Ed().ShowLibraryTab(TAB_ENTITY);
    Ed().ShowLibraryTab(TAB_ENTITY);
    EXPECT_FALSE(Ed().console_onscreen) << "shown already: it is hidden";
    EXPECT_EQ(Ed().selected_tab, TAB_ENTITY);
}

TEST_F(StatesTest, PortalsAreHiddenTogether) {
    AddBox({0, 0, 0}, {8, 8, 8}, BT_PORTAL);
    AddBox({0, 0, 0}, {8, 8, 8});
    Ed().ShowPortals(false);
    EXPECT_TRUE(BrushAt(0).is_hidden);
    EXPECT_FALSE(BrushAt(1).is_hidden);
    Ed().UnhideAll();
    EXPECT_TRUE(BrushAt(0).is_hidden) << "the filter holds";
    Ed().ShowPortals(true);
    EXPECT_FALSE(BrushAt(0).is_hidden);
}
