// The decal commands and mouse of the frame, the texture they take, and what goes to and comes from other programs.
#include "commands/CommandTable.h"
#include "commands/ScriptData.h"

TEST_F(ScriptData, TheDecalToolComesAndGoesAndTakesTheChosenMaterial) {
    EXPECT_EQ(interface->texture_choice.texture_name, "");
    ASSERT_TRUE(pages->texture.SetMaterial("WALL", "Brick"));
    EXPECT_EQ(interface->texture_choice.texture_class, "wall");
    EXPECT_EQ(interface->texture_choice.texture_name, "brick");
    EXPECT_FALSE(pages->texture.SetMaterial("wall", "missing"));
    EXPECT_EQ(interface->texture_choice.texture_name, "brick");
    const EditorState before = interface->editor_state;
    frame->OnDecals();
    EXPECT_EQ(interface->editor_state, ES_DECAL);
    frame->OnDecals();
    EXPECT_EQ(interface->editor_state, before);
}

TEST_F(ScriptData, TheRightButtonWithAltScalesAndTheWheelTurns) {
    interface->settings.full_undo = true;
    ASSERT_EQ(Run("drag top 226 286 286 226\nkey Esc\ncamera 0 0 -500 0 0\n"), "");
    ASSERT_EQ(Level().GetBrushCount(), 1);
    ASSERT_TRUE(pages->texture.SetMaterial("wall", "stone"));
    Level().undo_buffer.Empty();
    frame->OnDecals();
    ASSERT_EQ(Run("mouse perspective left_down 250 251 ctrl\nmouse perspective left_up 250 251\n"), "");
    ASSERT_EQ(Level().decal_template.size(), 1u);
    const D3DVECTOR camera = interface->View(VIEW_PERSPECTIVE).camera_position;
    ASSERT_EQ(Run("drag perspective 100 100 120 104 right alt\n"), "");
    EXPECT_EQ(Level().decal_template[0]->x_size, 28); // 8 and 20
    EXPECT_EQ(Level().decal_template[0]->y_size, 12);
    ASSERT_EQ(Run("mouse perspective wheel_up 9 9 alt\nmouse perspective wheel_up 9 9 alt\n"
                  "mouse perspective wheel_down 9 9 alt\n"),
              "");
    EXPECT_EQ(Level().decal_template[0]->o_rotation, -5);
    EXPECT_EQ(interface->View(VIEW_PERSPECTIVE).camera_position, camera);
    EXPECT_EQ(Level().undo_buffer.GetActionCount(), 5); // placed, scaled, turned three times
    desktop.answers = {"16,32,48"};
    frame->OnBrushColor();
    EXPECT_EQ(Level().decal_template[0]->color, MakeColor(16, 32, 48, 255));
    EXPECT_EQ(Level().decal_color, MakeColor(16, 32, 48, 255));
    ASSERT_EQ(Run("drag perspective 100 100 140 120\n"), "");
    EXPECT_NE(interface->View(VIEW_PERSPECTIVE).camera_rotation, (D3DVECTOR{})) << "a plain press turns the camera";
}

TEST_F(ScriptData, DecalsOfAnotherProjectAreOneStep) {
    interface->settings.full_undo = true;
    const auto add = [this](uint32_t id) {
        auto decal = std::make_unique<DecalTemplate>();
        decal->id = id;
        Level().AddNewDecal(std::move(decal));
    };
    add(7);
    ASSERT_EQ(Run("save decals.msp\nnew\n"), "");
    add(8), add(9);
    frame->document.MergeDecals(data.folder / "decals.msp");
    ASSERT_EQ(Level().decal_template.size(), 1u);
    EXPECT_EQ(Level().undo_buffer.GetActionDescription(0), "Load decals.");
    ASSERT_TRUE(Level().undo_buffer.UndoLastAction(Level(), Level().redo_buffer));
    ASSERT_EQ(Level().decal_template.size(), 2u);
    EXPECT_EQ(Level().decal_template[1]->id, 9u);
    EXPECT_EQ(Level().last_decal_id, 9u);
    WriteBytes("broken.msp", ReadBytes("decals.msp").substr(0, 100));
    frame->document.MergeDecals(data.folder / "broken.msp");
    EXPECT_EQ(Level().decal_template.size(), 2u);
    EXPECT_EQ(Level().undo_buffer.GetActionCount(), 0);
}

TEST_F(ScriptData, ExportAsksForAFileAndTellsOfAFailure) {
    ASSERT_EQ(Run("drag top 226 286 286 226\n"), "");
    frame->document.OnFileExport(); // Cancel
    EXPECT_FALSE(std::filesystem::exists("level.wrl"));
    desktop.answers = {data.folder / "level.wrl"};
    frame->document.OnFileExport();
    EXPECT_EQ(ReadBytes("level.wrl").substr(0, 16), "#VRML V2.0 utf8\r");
    desktop.answers = {data.folder / "missing/level.wrl", "ok"};
    frame->document.OnFileExport();
    EXPECT_EQ(desktop.messages.back().title, "Export");
    EXPECT_NE(desktop.messages.back().text.find("level.wrl"), std::string::npos);
}

TEST_F(ScriptData, ImportWritesTheMeshBesideItsSource) {
    const Command* import = FindCommand("OnFileImport");
    ASSERT_NE(import, nullptr);
    if (!import->is_enabled(*frame))
        GTEST_SKIP() << "built without a reader of meshes";
    const std::string obj = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
    WriteBytes("Marrowstead/Brushes/rocks/stone.obj", obj);
    WriteBytes("elsewhere/stone.obj", obj);
    WriteBytes("elsewhere/broken.obj", "nothing");
    desktop.messages.clear();
    desktop.answers = {data.folder / "Marrowstead/Brushes/rocks/stone.obj"};
    frame->document.OnFileImport();
    EXPECT_TRUE(std::filesystem::exists("Marrowstead/Brushes/rocks/stone.msh"));
    const size_t told = desktop.messages.size();
    desktop.answers = {data.folder / "elsewhere/stone.obj", "ok"};
    frame->document.OnFileImport();
    EXPECT_TRUE(std::filesystem::exists("elsewhere/stone.msh"));
    ASSERT_GT(desktop.messages.size(), told);
    EXPECT_NE(desktop.messages.back().text.find("Marrowstead\\Brushes"), std::string::npos);
    desktop.answers = {data.folder / "elsewhere/broken.obj", "ok"};
    frame->document.OnFileImport();
    EXPECT_FALSE(std::filesystem::exists("elsewhere/broken.msh"));
    EXPECT_NE(desktop.messages.back().text.find("broken.obj"), std::string::npos);
}
