// Entities and path points placed with the right button.
#include "editor/EditorFixture.h"

class EntityPlacingTest : public EditorTest {
protected:
    void SetUp() override {
        for (int i = 0; Ed().entity_parser->GetTemplate(i, true); ++i)
            kinds[Ed().entity_parser->GetTemplate(i, true)->name] = i;
    }
    void Choose(const std::string& name) {
        ASSERT_EQ(kinds.count(name), 1u) << name;
        Ed().selected_entity = kinds[name];
    }
    static ints Ids(const SimpleList<uint32_t>& list) { return {list.begin(), list.end()}; }
    int Id(int entity) { return static_cast<int>(EntityAt(entity).GetObjectID()); }

    std::map<std::string, int> kinds;
};

TEST_F(EntityPlacingTest, TwoCoordinatesComeFromTheViewTheThirdStays) {
    RightClick(VIEW_TOP, At(16, 24), MOUSE_CONTROL);
    EXPECT_EQ(Level().GetEntityCount(), 0) << "no template is chosen";
    Choose("light");
    RightClick(VIEW_FRONT, At(-9, 40), MOUSE_CONTROL);
    ASSERT_EQ(Level().GetEntityCount(), 1);
    ExpectVector(EntityAt(0).position, {-8, 40, 24}, "the depth of the click before");
    EXPECT_EQ(Entities(), ints{0});
    EXPECT_EQ(Ed().editor_state, ES_SELECTED);
    EXPECT_TRUE(Ed().selection_box_active);
    ExpectBox(Ed().selection_box, {-8, 40, 24}, {-8, 40, 24});
    EXPECT_EQ(UndoTexts(), std::vector<std::string>{"Create 1 object(s)."});
    RightClick(VIEW_LEFT, At(64, 0), MOUSE_CONTROL);
    ExpectVector(EntityAt(1).position, {-8, 0, 64});
    EXPECT_EQ(Entities(), ints{1}) << "it alone is selected";
    RightClick(VIEW_PERSPECTIVE, At(0, 0), MOUSE_CONTROL);
    EXPECT_EQ(Level().GetEntityCount(), 2) << "not in the perspective view";
    EXPECT_EQ(Ed().status[PANE_COUNTS], "Brushes: 0   Entities: 2");
    EXPECT_EQ(UndoTexts(),
              (std::vector<std::string>{"Create 1 object(s).", "Deselect 1 object(s).", "Create 1 object(s)."}));
    Undo();
    EXPECT_EQ(Level().GetEntityCount(), 1);
    EXPECT_EQ(Ed().editor_state, ES_IDLE);
    Undo();
    EXPECT_EQ(Entities(), ints{0});
    Redo(), Redo();
    ASSERT_EQ(Level().GetEntityCount(), 2);
    ExpectVector(EntityAt(1).position, {-8, 0, 64});
}

TEST_F(EntityPlacingTest, AFullLevelRefusesAndStaysWhole) {
    while (Level().GetEntityCount() < MAX_ENTITIES)
        Level().entity.push_back(std::make_unique<Entity>());
    Choose("light");
    RightClick(VIEW_TOP, At(0, 0), MOUSE_CONTROL);
    EXPECT_EQ(Level().GetEntityCount(), MAX_ENTITIES);
    EXPECT_EQ(desktop.boxes.size(), 1u);
    EXPECT_EQ(Ed().editor_state, ES_IDLE);
    EXPECT_TRUE(UndoTexts().empty());
    Level().entity.clear();
}

TEST_F(EntityPlacingTest, PathPointsStandAfterTheSelectedOne) {
    Choose("object_point");
    RightClick(VIEW_TOP, At(0, 0), MOUSE_CONTROL);
    EXPECT_EQ(Level().GetEntityCount(), 0) << "there is no owner";
    EXPECT_EQ(Ed().editor_state, ES_IDLE);

    Brush& owner = AddBox({0, 0, 0}, {64, 64, 64});
    const uint32_t owner_id = owner.GetObjectID();
    SelectBrushes({0});
    RightClick(VIEW_TOP, At(8, 0), MOUSE_CONTROL); // first
    ASSERT_EQ(Level().GetEntityCount(), 1);
    EXPECT_EQ(EntityAt(0).path_parent_id, owner_id);
    EXPECT_EQ(Entities(), ints{0});
    RightClick(VIEW_TOP, At(16, 0), MOUSE_CONTROL); // after the first, which is selected
    EXPECT_EQ(Ids(owner.path), (ints{Id(0), Id(1)}));
    Level().entity_selection.ClearList();
    Level().entity_selection.AddItem(0);
    RightClick(VIEW_TOP, At(12, 0), MOUSE_CONTROL); // between
    EXPECT_EQ(Ids(owner.path), (ints{Id(0), Id(2), Id(1)}));
    Ed().Cancel();
    SelectBrushes({0});
    RightClick(VIEW_TOP, At(0, 0), MOUSE_CONTROL); // the owner: first again
    EXPECT_EQ(Ids(owner.path), (ints{Id(3), Id(0), Id(2), Id(1)}));
    Choose("target_point");
    RightClick(VIEW_TOP, At(0, 80), MOUSE_CONTROL); // not in this list: at the end
    EXPECT_EQ(Ids(owner.target_path), ints{Id(4)});
    EXPECT_EQ(Ids(owner.path).size(), 4u);
    EXPECT_EQ(EntityAt(4).path_parent_id, owner_id);
    EXPECT_EQ(UndoTexts().back(), "Create 1 object(s).");
}

TEST_F(EntityPlacingTest, MovieClicksPlacePointsOfBothKinds) {
    Brush& owner = AddBox({0, 0, 0}, {64, 64, 64});
    Brush& other = AddBox({0, 0, 0}, {64, 64, 64});
    Entity& old_point = AddEntity("PATH_POINT_POS", {0, 0, 0});
    old_point.path_parent_id = other.GetObjectID();
    other.path.Add(old_point.GetObjectID());
    SelectBrushes({0});
    Ed().movie_editing = true;
    Ed().project_file_need_save = false;
    Ed().settings.full_undo = true;
    Click(VIEW_FRONT, At(24, 40), MOUSE_CONTROL);
    EXPECT_TRUE(Ed().project_file_need_save);
    EXPECT_EQ(UndoTexts(), (std::vector<std::string>{"Clear the other paths.", "Deselect 1 object(s).",
                                                     "Create a path point."}));
    ASSERT_EQ(Level().GetEntityCount(), 1) << "the path of the other object is gone";
    EXPECT_EQ(other.path.GetCount(), 0);
    EXPECT_EQ(EntityAt(0).name, "object_point");
    ExpectVector(EntityAt(0).position, {24, 40, 0});
    EXPECT_EQ(Ids(owner.path), ints{Id(0)});
    RightClick(VIEW_FRONT, At(-24, 40), MOUSE_CONTROL);
    EXPECT_EQ(Ids(owner.target_path), ints{Id(1)});
    EXPECT_EQ(EntityAt(1).name, "target_point");
    RightClick(VIEW_FRONT, At(0, 0));
    EXPECT_EQ(Ed().editor_state, ES_IDLE) << "without Ctrl it cancels";
    while (Undo()) {
    }
    EXPECT_EQ(owner.path.GetCount() + owner.target_path.GetCount(), 0);
    EXPECT_EQ(Ids(other.path), ints{Id(0)}) << "the path of the other object is back";
}
