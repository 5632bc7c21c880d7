// Commands that come while a button drags, an outline is entered or a tool is in the hand.
#include "commands/CommandTable.h"
#include "commands/ScriptData.h"
#include "render/TestPictures.h"
#include "scene/SceneState.h"

namespace {

bool NeedsAButton(EditorState state) {
    return state == ES_PAN || state == ES_CREATE_BRUSH || state == ES_EDIT || state == ES_ROTATE ||
           state == ES_DRAG_SELECT || state == ES_VERTEX_MOVE;
}

class CapturingDesktop : public HeadlessDesktop {
public:
    void CaptureMouse(bool is_captured) override { captured = is_captured; }
    bool captured = false;
};

class ToolNews : public EditorListener {
public:
    void TerrainToolChanged() override { ++told; }
    int told = 0;
};

} // namespace

class DragCommands : public ScriptData {
protected:
    // A box of 64 by 64, selected, and a smaller one beside it.
    void Fresh(bool full_undo) {
        interface->InitEditor();
        interface->CenterWorld(true);
        interface->editor_state = interface->old_editor_state = interface->older_editor_state = ES_IDLE;
        interface->settings.full_undo = full_undo;
        interface->settings.undo_states = 1000;
        interface->SetActiveBrushTemplate(BT_BOX);
        ASSERT_EQ(Run("drag top 400 400 432 384\nkey Esc\ndrag top 256 256 320 192\n"), "");
        Level().undo_buffer.Empty();
    }
};

TEST_F(DragCommands, AKeyInADragLeavesNoDragBehind) {
    const struct {
        const char *what, *before, *press, *release;
    } drags[] = {
        {"move", "", "left_down 288 224", "left_up 320 224"},
        {"resize", "", "left_down 330 224", "left_up 370 224"},
        {"rotation", "key R\n", "left_down 288 224", "left_up 320 264"},
        {"vertices", "key V\nmouse top left_down 256 256 shift\nmouse top left_up 256 256 shift\n", "left_down 300 200",
         "left_up 320 230"},
        {"new brush", "key Esc\n", "left_down 100 100", "left_up 200 150"},
        {"rectangle", "", "left_down 200 150 shift", "left_up 440 420 shift"},
        {"rectangle of entities", "", "right_down 200 150 shift", "right_up 440 420 shift"},
        {"pan", "", "middle_down 100 100", "middle_up 120 120"},
        {"move by the middle button", "", "middle_down 100 100 shift", "middle_up 140 120"},
    };
    for (const bool full_undo : {false, true})
        for (const auto& drag : drags)
            for (const char* key : {"V", "I", "D", "Shift+T", "R", "F7", "Ctrl+F7", "Alt+C", "Shift+1", "Ctrl+1"}) {
                const std::string what = std::string(drag.what) + ", " + key + (full_undo ? ", full undo" : "");
                Fresh(full_undo);
                const SceneState first = StateOf(Level());
                ASSERT_EQ(Run(std::string(drag.before) + "mouse top " + drag.press + "\nmouse top move 304 232\nkey " +
                              key + "\nmouse top move 312 240\nmouse top " + drag.release + "\n"),
                          "")
                    << what;
                EXPECT_FALSE(NeedsAButton(interface->editor_state)) << what;
                for (const char* next : {key, "I", "I", "V", "V", "Esc", "Esc", "Esc"}) {
                    ASSERT_EQ(Run(std::string("key ") + next + "\n"), "") << what;
                    ASSERT_FALSE(NeedsAButton(interface->editor_state)) << what << ", then " << next;
                    const SceneState rested = StateOf(Level());
                    ASSERT_EQ(Run("mouse top move 340 260\n"), "");
                    ASSERT_TRUE(StateOf(Level()) == rested) << what << ": follows the bare mouse";
                }
                while (full_undo && Level().undo_buffer.GetActionCount() > 0)
                    ASSERT_EQ(Run("key Ctrl+Z\n"), "");
                EXPECT_TRUE(!full_undo || StateOf(Level()).objects == first.objects) << what << ", undone";
            }
}

TEST_F(DragCommands, AMoveThatAKeyEndsHasItsStep) {
    for (const bool full_undo : {false, true})
        for (const char* key : {"V", "I", "D", "Shift+T"}) {
            Fresh(full_undo);
            ASSERT_EQ(Run(std::string("mouse top left_down 288 224\nmouse top move 304 224\nkey ") + key +
                          "\nmouse top left_up 304 224\n"),
                      "");
            EXPECT_EQ(LevelBrush(1).bbox[7].x, 16) << key;
            ASSERT_EQ(Level().undo_buffer.GetActionCount(), 1) << key;
            EXPECT_EQ(Level().undo_buffer.GetActionDescription(0), "Move objects.");
            ASSERT_EQ(Run("key Ctrl+Z\n"), "");
            EXPECT_EQ(LevelBrush(1).bbox[7].x, 0) << key;
        }
}

TEST_F(DragCommands, WhatOnlyShowsLetsTheDragGoOn) {
    for (const char* key : {"Alt+0", "Alt+4", "L", "Ctrl+W", "Left"}) {
        Fresh(true);
        ASSERT_EQ(Run(std::string("mouse top left_down 288 224\nmouse top move 304 224\nkey ") + key +
                      "\nmouse top move 320 224\nmouse top left_up 320 224\n"),
                  "");
        EXPECT_EQ(LevelBrush(1).bbox[7].x, 32) << key;
        EXPECT_EQ(Level().undo_buffer.GetActionCount(), 1) << key;
    }
}

TEST_F(DragCommands, AButtonReleasedWhileAnotherPansEndsItsDrag) {
    Fresh(false);
    ASSERT_EQ(Run("mouse top left_down 288 224\nmouse top move 304 224\nmouse top middle_down 304 224\n"
                  "mouse top left_up 304 224\nmouse top middle_up 304 224\n"),
              "");
    EXPECT_EQ(interface->editor_state, ES_SELECTED);
    EXPECT_EQ(Level().undo_buffer.GetActionCount(), 1);
}

TEST_F(DragCommands, OnlyAnOutlineHoldsTheMouse) {
    CapturingDesktop mouse;
    SetDesktop(&mouse);
    for (const char* command : {"OnHideselected", "OnHideunselected", "OnSelectall", "OnInvertselection", "OnCompile",
                                "OnClipbox", "OnCollapse", "OnEditUndo", "OnDecals", "OnToolsTerrainmodifier"}) {
        Fresh(false);
        frame->Run(*FindCommand("OnBrushExtrudable"));
        ASSERT_EQ(Run("key Esc\nmouse top left_down 100 100\nmouse top left_up 100 100\n"), "");
        ASSERT_EQ(interface->editor_state, ES_EXTRUDABLE);
        mouse.captured = true; // by the view, at the press
        ASSERT_FALSE(interface->mouse_release);
        frame->Run(*FindCommand(command));
        const bool outline = interface->editor_state == ES_EXTRUDABLE;
        EXPECT_EQ(mouse.captured, outline) << command;
        EXPECT_EQ(interface->mouse_release, !outline) << command;
    }
    // The picker lets the mouse go to the perspective view; back at the outline, it is held from the next press on.
    Fresh(false);
    frame->Run(*FindCommand("OnBrushExtrudable"));
    ASSERT_EQ(Run("key Esc\nmouse top left_down 100 100\nmouse top left_up 100 100\n"), "");
    mouse.captured = true;
    frame->Run(*FindCommand("OnPickTexture"));
    EXPECT_FALSE(mouse.captured);
    frame->Run(*FindCommand("OnPickTexture"));
    EXPECT_EQ(interface->editor_state, ES_EXTRUDABLE);
    EXPECT_FALSE(interface->mouse_release);
    SetDesktop(&desktop);
}

TEST_F(DragCommands, AModeThatACommandEndsIsOverForAll) {
    for (const char* key : {"F7", "Ctrl+F7", "Shift+1", "Shift+2", "Ctrl+1"}) {
        Fresh(false);
        ToolNews news;
        interface->AddListener(news);
        ASSERT_EQ(Run("key Shift+T\n"), "");
        ASSERT_EQ(interface->editor_state, ES_TERRAIN);
        news.told = 0;
        ASSERT_EQ(Run(std::string("key ") + key + "\n"), "");
        EXPECT_NE(interface->editor_state, ES_TERRAIN) << key;
        EXPECT_GT(news.told, 0) << key;
        interface->RemoveListener(news);

        Fresh(false);
        ASSERT_EQ(Run("key V\n"), "");
        ASSERT_FALSE(Level().so_vertex.empty());
        ASSERT_EQ(Run(std::string("key ") + key + "\n"), "");
        EXPECT_TRUE(interface->editor_state == ES_VERTEX || Level().so_vertex.empty()) << key;
    }
}

TEST_F(DragCommands, CommandsThatOnlySelectOrShapeHaveSteps) {
    struct Case {
        const char *command, *step;
    };
    for (const Case& c : {Case{"OnSelectId", "Select by id."}, Case{"OnCurveLower", "Change the detail of curves."},
                          Case{"OnFlipNormals", "Flip normals."}, Case{"OnSelwrongobj", "Select wrong objects."},
                          Case{"OnToolsReindexallobjectids", "Reindex object IDs."}}) {
        Fresh(true);
        LevelBrush(1).SetObjectID(700);
        const SceneState first = StateOf(Level());
        const int detail = Level().curve_detail;
        interface->project_file_need_save = false;
        desktop.answers = {std::to_string(LevelBrush(0).GetObjectID())};
        frame->Run(*FindCommand(c.command));
        const SceneState after = StateOf(Level());
        const int detail_after = Level().curve_detail;
        ASSERT_EQ(Level().undo_buffer.GetActionCount(), 1) << c.command;
        EXPECT_EQ(Level().undo_buffer.GetActionDescription(0), c.step);
        frame->OnEditUndo();
        EXPECT_TRUE(StateOf(Level()) == first) << c.command;
        EXPECT_EQ(Level().curve_detail, detail) << c.command;
        frame->OnEditRedo();
        EXPECT_TRUE(StateOf(Level()) == after) << c.command;
        EXPECT_EQ(Level().curve_detail, detail_after) << c.command;
    }
}

TEST_F(DragCommands, AnEditByAWordOfAScriptEndsTheDrag) {
    Fresh(true);
    const SceneState first = StateOf(Level());
    ASSERT_EQ(Run("mouse top left_down 288 224\nmouse top move 304 224\nlock 1\nmouse top move 340 224\n"
                  "mouse top left_up 340 224\n"),
              "");
    EXPECT_EQ(LevelBrush(1).bbox[7].x, 16);
    while (Level().undo_buffer.GetActionCount() > 0)
        ASSERT_EQ(Run("key Ctrl+Z\n"), "");
    EXPECT_EQ(Difference(first, StateOf(Level())), "");
}

TEST_F(DragCommands, WhatOnlyReadsTheLevelLeavesItAsItIs) {
    WriteBytes("heights.tga", TargaBytes(4, 4, 8));
    Fresh(true);
    ASSERT_EQ(Run("key Esc\nterrain heights.tga 512 64 512 2 2 64\nmaterial wall brick\ncommand OnBrushCylinder\n"
                  "drag top 100 100 164 164\napply\nkey Esc\n"),
              "");
    Brush& cylinder = LevelBrush(6);
    ASSERT_EQ(cylinder.type, BT_CYLINDER);
    cylinder.curved_surfaces[0].normal[0].x += 0.0001f; // as a move leaves it, in its last bits
    LevelBrush(2).surfaces[0].vertices[17].y += 20;     // as a stroke does: the borders have normals of their own
    LevelBrush(2).RecalcBBox();
    LevelBrush(2).ComputeNormals();
    const SceneState first = StateOf(Level());
    for (const char* lines :
         {"command OnSelwrongobj\nkey Esc\n", "command OnToolsValidate\n", "save level.msp\n", "export level.wrl\n",
          "picture all v.png\n", "command OnViewShowlevelsumary\n", "command OnShowSelwire\n"}) {
        ASSERT_EQ(Run(lines), "") << lines;
        EXPECT_EQ(Difference(first, StateOf(Level())), "") << lines;
    }
}

TEST_F(DragCommands, NormalsOfTerrainBordersComeBack) {
    constexpr size_t ON_THE_BORDER = 35; // the last of nine columns, in the fourth row
    WriteBytes("heights.tga", TargaBytes(4, 4, 8));
    const std::string terrain = "terrain heights.tga 512 64 512 2 2 32\n";
    for (const std::string& edit : {std::string("key Alt+S\n"), terrain}) {
        Fresh(true);
        ASSERT_EQ(Run(terrain), "");
        Brush& segment = LevelBrush(2);
        segment.surfaces[0].vertices[ON_THE_BORDER].y += 20;
        segment.ComputeNormals();
        Level().undo_buffer.Empty();
        const SceneState first = StateOf(Level());
        ASSERT_EQ(Run(edit), "");
        ASSERT_NE(StateOf(Level()).objects.at(segment.GetObjectID()), first.objects.at(segment.GetObjectID()));
        ASSERT_EQ(Run("key Ctrl+Z\n"), "");
        EXPECT_EQ(Difference(first, StateOf(Level())), "") << edit;
    }
}

TEST_F(DragCommands, WorkIsWhatChangesTheLevel) {
    Fresh(true);
    const auto is_work = [this](const char* command) {
        const uint32_t before = interface->changes;
        frame->Run(*FindCommand(command));
        return interface->changes != before;
    };
    EXPECT_TRUE(is_work("OnFlipNormals"));
    EXPECT_TRUE(is_work("OnDelete"));
    EXPECT_FALSE(is_work("OnDelete")) << "nothing is selected";
    EXPECT_FALSE(is_work("OnFlipNormals"));
}
