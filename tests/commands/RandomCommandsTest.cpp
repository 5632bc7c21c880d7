// Random keys, commands and gestures of the mouse, undone from whatever mode is in the hand.
#include "commands/ScriptData.h"
#include "foundation/Random.h"
#include "render/TestPictures.h"
#include "scene/DecalCutting.h"
#include "scene/SceneState.h"

class RandomCommands : public ScriptData {
protected:
    void Fresh(uint32_t seed) {
        interface->InitEditor();
        interface->CenterWorld(true);
        interface->editor_state = interface->old_editor_state = interface->older_editor_state = ES_IDLE;
        interface->movie_editing = interface->shearing = interface->edit_cordon_bounds = false;
        interface->clip_active = interface->cordon_active = false;
        interface->settings.full_undo = true;
        interface->settings.undo_states = 100000;
        interface->active_brush_segments = 3;
        ASSERT_EQ(Run("terrain heights.tga 512 64 512 2 2 16\nkey Esc\ndecal wall stone\nmaterial wall brick\n"
                      "set selection_box -64 40 -64 64 104 64\ncommand OnBrushBox\n"
                      "drag top 200 200 264 264\napply\nkey Esc\ndrag top 300 200 364 264\nkey Esc\n"
                      "command OnBrushCylinder\ndrag top 200 300 264 364\napply\nkey Esc\ncommand OnBrushBox\n"
                      "entity light\nmouse top right_down 150 150 ctrl\nmouse top right_up 150 150\n"
                      "mouse top right_down 170 150 ctrl\nmouse top right_up 170 150\nkey Esc\n"),
                  "");
        Level().undo_buffer.Empty();
        random.seedMT(seed * 2 + 1);
    }
    int Below(uint32_t n) { return static_cast<int>(random.randomMT() % n); }
    const char* OneOf(std::initializer_list<const char*> words) {
        return words.begin()[Below(static_cast<uint32_t>(words.size()))];
    }
    std::string Pixel() { return Format("%d %d", 140 + Below(232), 140 + Below(232)); }
    std::string Key() {
        return OneOf({"key V\n",       "key R\n",           "key D\n",          "key I\n",       "key S\n",
                      "key Shift+T\n", "key L\n",           "key Esc\n",        "key G\n",       "key Ctrl+G\n",
                      "key Shift+G\n", "key Alt+C\n",       "key Alt+N\n",      "key Alt+H\n",   "key Alt+V\n",
                      "key [\n",       "key ]\n",           "key Ctrl+A\n",     "key Ctrl+1\n",  "key Ctrl+2\n",
                      "key Shift+1\n", "key Shift+2\n",     "key Shift+3\n",    "key Shift+R\n", "key Alt+E\n",
                      "key Ctrl+E\n",  "key Shift+Alt+E\n", "key Ctrl+Alt+E\n", "key Alt+S\n",   "key F5\n",
                      "key F6\n",      "key Alt+R\n",       "key Ins\n",        "key Home\n",    "key End\n",
                      "key PgUp\n",    "key Num6\n",        "key Num9\n",       "key Num+\n",    "key Num/\n",
                      "key Ctrl+M\n",  "key Space\n",       "key Backspace\n",  "key Alt+W\n",   "key K\n",
                      "key Alt+3\n",   "key CapsLock\n"});
    }
    std::string Command() {
        return OneOf({"command OnToolsReindexallobjectids\n",
                      "command OnSelwrongobj\n",
                      "command OnCordonstate\n",
                      "command OnEditCopypath\ncommand OnEditPastepath\n",
                      "command OnMovieAligntimeofpoints\n",
                      "command OnFileNewmovie\n",
                      "command OnToolsValidate\n",
                      "command OnBrushCreatepivot\n",
                      "answer 5\ncommand OnSelectId\n",
                      "answer 10,200,30\ncommand OnBrushColor\n",
                      "command OnMultiselect\n",
                      "apply\n",
                      "shift 3 5\n",
                      "scale 0.5 0.25\n",
                      "rotate 30\n",
                      "fit 2 1\n",
                      "flip u\n",
                      "lock 1\n",
                      "lock 0\n",
                      "material wall stone\n",
                      "material wall brick\n",
                      "terrain_tool RAISE 40 6 8 1\n",
                      "terrain_tool SMOOTH 60 2 8 1\n",
                      "terrain_tool DECORATE 60 2 3 1\n",
                      "command OnToolsConvertoldscripts\n",
                      "command OnBrushBox\n",
                      "command OnBrushCone\n",
                      "command OnBrushExtrudable\n",
                      "command OnBrushPatch\n",
                      "entity light\n",
                      "parameter range 99\n",
                      "answer Segments=5\ncommand OnBrushSegments\n",
                      "answer \"Name=crate;Weight=7\"\ncommand OnBrushProperties\n",
                      "command OnEscape\n",
                      "command OnSelectionMultiplepointselection\n",
                      "command OnBrushCustom\n",
                      "entity object_point\n",
                      "camera 0 300 0 -1.5 0\n",
                      "camera 0 80 -400 0 0\n"});
    }
    // A button pressed, moved and released; at times a key or a command comes between.
    std::string Gesture() {
        const char* view = OneOf({"top", "top", "front", "left", "perspective", "perspective"});
        const char* button = OneOf({"left", "left", "left", "right", "middle"});
        const char* held = OneOf({"", "", "", " shift", " shift", " ctrl", " shift ctrl", " alt"});
        const auto event = [&](const std::string& what) {
            return std::string("mouse ") + view + " " + what + " " + Pixel() + held + "\n";
        };
        std::string lines = event(std::string(button) + "_down") + event("move") + event("move");
        if (Below(4) == 0)
            lines += Below(3) ? Key() : Command();
        return lines + event("move") + event(std::string(button) + "_up");
    }
    std::string Step() {
        switch (Below(5)) {
        case 0:
            return Key();
        case 1:
            return Command();
        default:
            return Gesture();
        }
    }

    struct Noted {
        SceneState state;
        std::unique_ptr<DecalState> decals;
        int steps;
    };
    Noted Note() {
        return {StateOf(Level()), std::make_unique<DecalState>(Level()), Level().undo_buffer.GetActionCount()};
    }
    std::string DifferenceTo(Noted& was) {
        SceneState found = StateOf(Level());
        found.selection = was.state.selection; // folded steps of selecting bring back that of the first of them
        std::string difference = Difference(was.state, found) + BrokenRule(Level());
        if (!was.decals->HasSameTemplates(Level()))
            difference += "other decals";
        return difference;
    }

    RandomMT random;
};

TEST_F(RandomCommands, AreUndoneToTheByte) {
    constexpr uint32_t SEEDS = 4;
    constexpr int STEPS = 80;
    WriteBytes("heights.tga", TargaBytes(4, 4, 8));
    for (uint32_t seed = 1; seed <= SEEDS; ++seed) {
        Fresh(seed);
        std::vector<Noted> noted;
        noted.push_back(Note());
        std::vector<std::string> lines;
        for (int step = 0; step < STEPS && Level().GetBrushCount() < 60; ++step) {
            lines.push_back(Step());
            const std::string failure = Run(lines.back());
            interface->FinishDrag();
            ASSERT_EQ(BrokenRule(Level()), "") << "seed " << seed << " after " << lines.back() << failure;
            noted.push_back(Note());
        }
        const auto where = [&](size_t i) {
            std::string text = Format("seed %u, step %zu", seed, i);
            for (size_t k = i; k < std::min(i + 3, lines.size()); ++k)
                text += Format("\n%zu %d:\n", k, noted[k + 1].steps) + lines[k];
            return text;
        };
        for (size_t i = noted.size() - 1; i-- > 0;) {
            if (Below(4) == 0)
                Run(OneOf({"key V\n", "key D\n", "key Shift+T\n", "key R\n", "key I\n"}));
            while (Level().undo_buffer.GetActionCount() > noted[i].steps)
                ASSERT_EQ(Run("key Ctrl+Z\n"), "");
            ASSERT_EQ(DifferenceTo(noted[i]), "") << where(i);
        }
        for (size_t i = 1; i < noted.size(); ++i) {
            while (Level().undo_buffer.GetActionCount() < noted[i].steps && Level().redo_buffer.GetActionCount() > 0)
                ASSERT_EQ(Run("key Ctrl+Y\n"), "");
            const bool is_last_of_step = i + 1 == noted.size() || noted[i + 1].steps != noted[i].steps;
            ASSERT_EQ(is_last_of_step ? DifferenceTo(noted[i]) : std::string(), "") << "redone, " << where(i);
        }
    }
}

TEST_F(RandomCommands, LeaveNoModeThatNeedsAButton) {
    constexpr uint32_t SEEDS = 4;
    constexpr int STEPS = 120;
    WriteBytes("heights.tga", TargaBytes(4, 4, 8));
    for (uint32_t seed = 1; seed <= SEEDS; ++seed) {
        Fresh(seed);
        interface->settings.full_undo = seed % 2 == 0;
        std::string before;
        for (int step = 0; step < STEPS && Level().GetBrushCount() < 60; ++step) {
            const std::string lines = Below(12) == 0 ? "key Ctrl+Z\n" : Below(20) == 0 ? "key Ctrl+Y\n" : Step();
            Run(lines);
            const EditorState state = interface->editor_state;
            const std::string where = Format("seed %u step %d state %u after\n", seed, step, state) + before + lines;
            ASSERT_FALSE(state == ES_PAN || state == ES_CREATE_BRUSH || state == ES_EDIT || state == ES_ROTATE ||
                         state == ES_DRAG_SELECT || state == ES_VERTEX_MOVE)
                << where;
            ASSERT_FALSE(interface->drag_box_active) << where;
            ASSERT_TRUE(state == ES_VERTEX || Level().so_vertex.empty() || interface->settings.show_sel_wire) << where;
            ASSERT_TRUE(state == ES_EXTRUDABLE || interface->MouseRelease()) << where;
            ASSERT_EQ(BrokenRule(Level()), "") << where;
            const SceneState rested = StateOf(Level());
            Run("mouse top move " + Pixel() + "\nmouse perspective move " + Pixel() + "\n");
            ASSERT_EQ(Difference(rested, StateOf(Level())), "") << where;
            before = lines;
        }
    }
}
