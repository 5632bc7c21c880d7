// The terrain tool in the hand: states, buttons, wheel, undo.
#include "editor/EditorFixture.h"

class TerrainToolTest : public EditorTest {
protected:
    static constexpr POINT AIM{MIDDLE, MIDDLE};

    // Flat ground of 128 by 128 units about the origin, seen from above.
    void SetUp() override {
        TerrainSegment segment;
        segment.map_unit_x = segment.map_unit_y = 128;
        segment.terrain_origin = segment.start = {-64, 0, 64};
        segment.size_x = segment.size_y = 128;
        segment.detail = 16;
        auto made = std::make_unique<Brush>();
        made->GenerateTerrainSegment({1, 1, {0}}, segment);
        made->GenerateNewObjectID();
        Level().AddBrush(std::move(made));
        VIEWINFO& eye = Ed().View(VIEW_PERSPECTIVE);
        eye.camera_position = {3, 200, -20};
        eye.camera_rotation = {-1.47f, 0, 0};
        Ed().EnableTerrainModifier(true);
        Ed().SetTerrainModifier({TERRAIN_RAISE, 40, 6, 32, true});
        news.views.clear();
    }
    float Highest() { return BoxMax(BrushAt(0).bbox).y; }
    float Lowest() { return BoxMin(BrushAt(0).bbox).y; }
};

TEST_F(TerrainToolTest, ComesAndGoes) {
    class ToolNews : public EditorListener {
    public:
        void TerrainToolChanged() override { ++told; }
        int told = 0;
    } tool_news;
    Ed().AddListener(tool_news);
    EXPECT_EQ(Ed().editor_state, ES_TERRAIN);
    EXPECT_EQ(Ed().old_editor_state, ES_IDLE);
    EXPECT_EQ(desktop.cursor, CursorRole::Terrain);
    Ed().EnableTerrainModifier(true); // no second one
    EXPECT_EQ(tool_news.told, 0);
    Ed().Cancel();
    EXPECT_EQ(Ed().editor_state, ES_IDLE);
    EXPECT_EQ(tool_news.told, 1);
    Ed().EnableTerrainModifier(false);
    EXPECT_EQ(tool_news.told, 1);
    SelectBrushes({0});
    Ed().EnableTerrainModifier(true);
    Ed().EnableTerrainModifier(false);
    EXPECT_EQ(Ed().editor_state, ES_SELECTED);
    EXPECT_EQ(desktop.cursor, CursorRole::Arrow);
    EXPECT_EQ(tool_news.told, 3);
    Ed().RemoveListener(tool_news);
}

TEST_F(TerrainToolTest, TheButtonsRaiseAndLower) {
    Move(VIEW_PERSPECTIVE, AIM); // nothing pressed: only the ring moves
    EXPECT_EQ(news.views, (ints{VIEW_PERSPECTIVE}));
    EXPECT_EQ(Highest(), 0);
    LeftDown(VIEW_PERSPECTIVE, AIM); // without Shift
    LeftUp(AIM);
    EXPECT_EQ(Highest(), 0);
    LeftDown(VIEW_PERSPECTIVE, AIM, MOUSE_SHIFT);
    const float once = Highest();
    EXPECT_GT(once, 4);
    Move(VIEW_PERSPECTIVE, AIM); // Shift need not be held on
    EXPECT_NEAR(Highest(), 2 * once, 0.5f);
    LeftUp(AIM);
    Move(VIEW_PERSPECTIVE, AIM);
    EXPECT_NEAR(Highest(), 2 * once, 0.5f);
    RightDown(VIEW_PERSPECTIVE, AIM, MOUSE_SHIFT);
    Move(VIEW_PERSPECTIVE, AIM);
    RightUp(AIM);
    EXPECT_NEAR(Highest(), 0, 0.5f);
    EXPECT_EQ(Ed().editor_state, ES_TERRAIN);
    EXPECT_TRUE(Ed().project_file_need_save);
    Drag(VIEW_FRONT, At(0, 0), At(40, 40), MOUSE_SHIFT); // another view
    EXPECT_NEAR(Highest(), 0, 0.5f);
}

TEST_F(TerrainToolTest, AStrokeIsOneUndoStepAndTheToolStays) {
    Ed().settings.full_undo = true;
    LeftDown(VIEW_PERSPECTIVE, AIM, MOUSE_SHIFT);
    MoveSteps(VIEW_PERSPECTIVE, AIM, {MIDDLE + 60, MIDDLE});
    LeftUp(AIM);
    RightDown(VIEW_PERSPECTIVE, AIM, MOUSE_SHIFT);
    RightUp(AIM);
    EXPECT_EQ(UndoTexts(), (std::vector<std::string>{"Terrain stroke.", "Terrain stroke."}));
    const float lowered = Highest();
    ASSERT_TRUE(Undo());
    EXPECT_GT(Highest(), lowered);
    ASSERT_TRUE(Undo());
    EXPECT_EQ(Highest(), 0);
    EXPECT_EQ(Ed().editor_state, ES_TERRAIN);
    EXPECT_EQ(Ed().old_editor_state, ES_IDLE);
    ASSERT_TRUE(Redo());
    ASSERT_TRUE(Redo());
    EXPECT_EQ(Highest(), lowered);
    // Undo while the button is down: what has been done so far is the step.
    LeftDown(VIEW_PERSPECTIVE, AIM, MOUSE_SHIFT);
    ASSERT_TRUE(Undo());
    EXPECT_EQ(Highest(), lowered);
    Move(VIEW_PERSPECTIVE, AIM);
    Ed().Cancel();
    EXPECT_EQ(UndoTexts().size(), 3u);
    LeftUp(AIM);
}

TEST_F(TerrainToolTest, NumbersAreHeldToWhatIsPossible) {
    Ed().TurnTerrainWheel(true, false);
    EXPECT_EQ(Ed().terrain_modifier.radius, 48);
    Ed().TurnTerrainWheel(true, true);
    EXPECT_EQ(Ed().terrain_modifier.intensity, 7);
    for (int i = 0; i < 10; ++i) {
        Ed().TurnTerrainWheel(false, false);
        Ed().TurnTerrainWheel(false, true);
    }
    EXPECT_EQ(Ed().terrain_modifier.radius, 8);
    EXPECT_EQ(Ed().terrain_modifier.intensity, 1);
    Ed().SetTerrainModifier({99, std::nanf(""), std::nanf(""), -4, false});
    EXPECT_EQ(Ed().terrain_modifier.type, TERRAIN_DECORATE);
    EXPECT_EQ(Ed().terrain_modifier.radius, 8);
    EXPECT_EQ(Ed().terrain_modifier.intensity, 1);
    EXPECT_EQ(Ed().terrain_modifier.density, 0);
    Ed().SetTerrainModifier({-1, 0, 0.25f, 2000000, true});
    EXPECT_EQ(Ed().terrain_modifier.type, TERRAIN_RAISE);
    EXPECT_EQ(Ed().terrain_modifier.radius, 8);
    EXPECT_EQ(Ed().terrain_modifier.intensity, 0.25f);
}
