// With full undo on, each step can be undone and redone, down to equal scenes.
#include <functional>

#include "editor/EditorFixture.h"
#include "foundation/Random.h"
#include "scene/SceneState.h"

class FullUndoTest : public EditorTest {
protected:
    void SetUp() override {
        Ed().settings.full_undo = true;
        Ed().settings.undo_states = 100000;
        AddBox({0, 0, 0}, {64, 64, 64});
        AddBox({96, 0, 0}, {128, 64, 32}, BT_CYLINDER);
        AddEntity("POINT_LIGHT", {-64, 16, 0});
        SelectBrushes({0});
    }
    SceneState State() { return StateOf(Level()); }
    // Into the vertex mode and out of it, as the command does.
    void ToggleVertexMode() {
        if (Ed().editor_state == ES_VERTEX) {
            Ed().ResetEditorState();
            Ed().SettleState();
        } else if (Level().brush_selection.GetItemCount() > 0) {
            Ed().FinishDrag();
            Ed().SetEditorState(ES_VERTEX);
            Ed().RebuildSelectionNet();
        }
    }
};

TEST_F(FullUndoTest, EveryStepIsUndoneAndRedone) {
    const struct {
        const char* description;
        std::function<void()> step;
    } steps[] = {
        {"Scale objects.", [this] { Drag(VIEW_FRONT, At(72, 32), At(96, 32)); }},
        {"Shear objects.",
         [this] {
             Ed().shearing = true;
             Drag(VIEW_FRONT, At(32, 72), At(48, 72));
             Ed().shearing = false;
         }},
        {"Move objects.", [this] { Drag(VIEW_TOP, At(32, 32), At(8, 64)); }},
        {"Move objects.", // broken off
         [this] {
             LeftDown(VIEW_TOP, At(32, 32));
             Move(VIEW_TOP, At(48, 32));
             Ed().HideSelected();
             LeftUp(At(48, 32));
             Undo(); // the hide
         }},
        {"Rotate objects.", [this] { Activate(VIEW_LEFT), Ed().RotateBrush(PI / 2); }},
        {"Clone objects.", [this] { Activate(VIEW_FRONT), Ed().Clone(); }},
        {"Clone objects.",
         [this] {
             desktop.form_answer = "2";
             LeftDown(VIEW_FRONT, At(32, 32));
             MoveSteps(VIEW_FRONT, At(32, 32), At(72, 32));
             Ed().Clone();
             LeftUp(At(72, 32));
         }},
        {"Create a group.", [this] { Ed().SelectAll(), Ed().CreateGroup(); }},
        {"Flip objects.", [this] { Activate(VIEW_FRONT), Ed().FlipHorizontally(); }},
        {"Flip objects.", [this] { Activate(VIEW_LEFT), Ed().FlipVertically(); }},
        {"Change colors.",
         [this] {
             Ed().ChangeBrushColor({0.25f, 0.5f, 1, 0});
         }},
        {"Select all.", [this] { Ed().SelectAll(); }},
        {"Invert the selection.", [this] { Ed().InvertSelection(); }},
        {"Hide objects.", [this] { Ed().HideSelected(); }},
        {"Hide objects.", [this] { Ed().HideUnselected(); }},
        {"Select a surface.",
         [this] {
             Ed().View(VIEW_PERSPECTIVE).camera_position = {32, 32, -200};
             Click(VIEW_PERSPECTIVE, {MIDDLE, MIDDLE}, MOUSE_CONTROL);
         }},
        {"Delete 1 object(s).", [this] { Ed().DeleteSelection(); }},
    };
    const SceneState first = State();
    for (const auto& s : steps) {
        s.step();
        const SceneState after = State();
        ASSERT_FALSE(UndoTexts().empty()) << s.description;
        EXPECT_EQ(UndoTexts().back(), s.description);
        int undone = 0;
        while (Undo())
            ++undone;
        EXPECT_TRUE(State() == first) << s.description << " undone";
        EXPECT_EQ(BrokenRule(Level()), "") << s.description;
        while (undone-- > 0)
            ASSERT_TRUE(Redo());
        EXPECT_TRUE(State() == after) << s.description << " redone";
        while (Undo()) {
        }
        Ed().UpdateSelectionBox();
    }
}

TEST_F(FullUndoTest, ADragWithoutFullUndoHasNoStepOfItsOwn) {
    Ed().settings.full_undo = false;
    LeftDown(VIEW_TOP, At(32, 32));
    Move(VIEW_TOP, At(48, 32));
    RightClick(VIEW_TOP, At(48, 32)); // cancelled: deselected where it is
    EXPECT_EQ(UndoTexts(), std::vector<std::string>{"Deselect 1 object(s)."});
    ExpectVector(BrushAt(0).bbox[7], {16, 0, 0});
    Ed().settings.full_undo = true;
    SelectBrushes({0});
    LeftDown(VIEW_TOP, At(32, 32));
    Move(VIEW_TOP, At(48, 32));
    RightClick(VIEW_TOP, At(48, 32));
    EXPECT_EQ(UndoTexts().size(), 3u) << "the move too";
    Undo(), Undo();
    ExpectVector(BrushAt(0).bbox[7], {16, 0, 0});
}

// Random drags, clicks and commands; then all of it undone.
TEST_F(FullUndoTest, RandomSequencesReturnToTheFirstState) {
    for (uint32_t seed = 1; seed <= 6; ++seed) {
        Ed().InitEditor();
        Ed().editor_state = ES_IDLE;
        Ed().shearing = false;
        AddBox({0, 0, 0}, {64, 64, 64});
        AddBox({96, 0, 0}, {131, 64, 32}, BT_CYLINDER);
        AddEntity("POINT_LIGHT", {-64, 16, 0});
        Ed().selected_entity = 0;
        desktop.form_answer = "2";
        RandomMT random;
        random.seedMT(seed * 2 + 1);
        const auto below = [&random](uint32_t n) { return static_cast<int>(random.randomMT() % n); };
        const auto pixel = [&] { return POINT{MIDDLE - 160 + below(320), MIDDLE - 100 + below(200)}; };
        const SceneState first = State();
        for (int step = 0; step < 150; ++step) {
            const int view = below(3);
            const auto flags = static_cast<uint32_t>(below(4));
            switch (below(18)) {
            case 0:
            case 1:
            case 2:
                Drag(view, pixel(), pixel(), 0);
                break;
            case 3:
            case 4:
                Drag(view, pixel(), pixel(), flags | MOUSE_SHIFT);
                break;
            case 5:
                RightDrag(view, pixel(), pixel(), flags | MOUSE_SHIFT);
                break;
            case 6:
                RightClick(view, pixel(), below(2) ? MOUSE_CONTROL : 0u);
                break;
            case 7: { // a drag that something breaks off
                LeftDown(view, pixel());
                Move(view, pixel());
                switch (below(4)) {
                case 0:
                    Ed().Clone();
                    break;
                case 1:
                    Ed().Cancel();
                    break;
                case 2:
                    RightDrag(view, pixel(), pixel(), MOUSE_SHIFT);
                    break;
                default:
                    Ed().InvertSelection();
                }
                LeftUp(pixel());
                break;
            }
            case 8:
                Ed().Clone();
                break;
            case 9:
                Activate(view), Ed().FlipHorizontally();
                break;
            case 10:
                below(2) ? Ed().CreateGroup() : Ed().DestroyGroup();
                break;
            case 11:
                if (below(3) == 0)
                    Ed().DeleteSelection();
                break;
            case 12:
                below(2) ? Ed().SelectAll() : Ed().InvertSelection();
                break;
            case 13: // a turn by hand, mostly of what has no middle on the grid
                if (Ed().editor_state == ES_SELECTED) {
                    Ed().SetEditorState(ES_ROTATE_ARMED);
                    Drag(view, pixel(), pixel(), 0);
                    Ed().Cancel();
                }
                break;
            case 14:
                Ed().texture_lock = !Ed().texture_lock;
                break;
            case 15:
                ToggleVertexMode();
                break;
            case 16:
                Activate(view), Ed().RotateBrush(0.3f);
                break;
            default:
                Ed().ToggleShearing();
            }
            ASSERT_EQ(BrokenRule(Level()), "") << "seed " << seed << " step " << step;
            if (Level().GetBrushCount() > 40) {
                Ed().SelectAll();
                Ed().DeleteSelection();
            }
        }
        Ed().FinishDrag();
        const SceneState last = State();
        int undone = 0;
        for (;;) { // from whatever mode
            switch (below(6)) {
            case 0:
                ToggleVertexMode();
                break;
            case 1:
                if (Ed().editor_state == ES_SELECTED)
                    Ed().SetEditorState(ES_ROTATE_ARMED);
                break;
            case 2:
                Ed().texture_lock = !Ed().texture_lock;
                break;
            default:;
            }
            if (!Undo())
                break;
            ++undone;
            ASSERT_EQ(BrokenRule(Level()), "") << "seed " << seed << " undo " << undone;
        }
        const std::string what = "seed " + std::to_string(seed);
        EXPECT_TRUE(State() == first) << what << " undone";
        while (undone-- > 0)
            ASSERT_TRUE(Redo());
        EXPECT_TRUE(State() == last) << what << " redone";
    }
}

// What was turned has no middle of its own, and what was moved is not selected by its vertices any more.
TEST_F(FullUndoTest, ADragIsUndoneWhateverTheModeIsBy) {
    const struct {
        const char* what;
        std::function<void()> drag, before_undo;
    } cases[] = {
        {"turned about a middle that the turn displaces",
         [this] {
             SelectBrushes({0, 1});
             Ed().SetEditorState(ES_ROTATE_ARMED);
             Drag(VIEW_TOP, At(0, 0), At(0, 37));
             Ed().Cancel();
         },
         [] {}},
        {"moved with the texture lock, undone without", [this] { Drag(VIEW_TOP, At(32, 32), At(72, 40)); },
         [this] { Ed().texture_lock = false; }},
        {"moved without the texture lock, undone with it",
         [this] {
             Ed().texture_lock = false;
             Drag(VIEW_TOP, At(32, 32), At(72, 40));
         },
         [this] { Ed().texture_lock = true; }},
        {"vertices, undone out of their mode",
         [this] {
             ToggleVertexMode();
             Drag(VIEW_FRONT, At(-16, -16), At(72, 16), MOUSE_SHIFT);
             Drag(VIEW_FRONT, At(30, 30), At(46, 54));
         },
         [this] { ToggleVertexMode(); }},
        {"vertices, undone in their mode with other marks",
         [this] {
             ToggleVertexMode();
             Drag(VIEW_FRONT, At(-16, -16), At(72, 16), MOUSE_SHIFT);
             Drag(VIEW_FRONT, At(30, 30), At(46, 54));
         },
         [this] { Drag(VIEW_FRONT, At(-16, 40), At(80, 80), MOUSE_SHIFT); }},
    };
    MaterialRow row;
    row.material_class = "wall", row.material_name = "brick";
    Level().material.resize(1);
    Level().material.push_back(row);
    for (int b = 0; b < 2; ++b) {
        BrushAt(b).ForEachSurface([](Surface& s, int, bool) { s.texture.index = 1; });
        BrushAt(b).RemapAll();
    }
    const SceneState first = State();
    for (const auto& c : cases) {
        Ed().texture_lock = true;
        c.drag();
        ASSERT_FALSE(State().objects == first.objects) << c.what;
        c.before_undo();
        while (Undo()) {
        }
        EXPECT_TRUE(State().objects == first.objects) << c.what;
        Ed().editor_state = ES_IDLE;
        Level().ClearSelection();
        SelectBrushes({0});
    }
}

// A clone of a part of a group is such a group.
TEST_F(FullUndoTest, DeletingNothingDissolvesGroupsOfOneAsAStep) {
    ObjectGroupLists lone;
    lone.brushes.AddItem(1);
    Level().group.push_back(lone);
    Ed().Cancel();
    Level().undo_buffer.Empty();
    Ed().project_file_need_save = false;
    const SceneState first = State();
    Ed().DeleteSelection();
    EXPECT_EQ(Level().GetGroupCount(), 0);
    EXPECT_TRUE(Ed().project_file_need_save);
    EXPECT_EQ(UndoTexts(), std::vector<std::string>{"Dissolve groups of one."});
    ASSERT_TRUE(Undo());
    EXPECT_EQ(Difference(first, State()), "");
    ASSERT_TRUE(Redo());
    Ed().DeleteSelection();
    EXPECT_EQ(Level().undo_buffer.GetActionCount(), 1) << "nothing is left to dissolve";
}

TEST_F(FullUndoTest, AVertexMoveUndoneLeavesTheModeAndTheMarks) {
    ToggleVertexMode();
    Drag(VIEW_FRONT, At(-16, -16), At(16, 16), MOUSE_SHIFT);
    Drag(VIEW_FRONT, At(30, 30), At(14, 22));
    ASSERT_TRUE(Undo());
    EXPECT_EQ(Ed().editor_state, ES_VERTEX);
    ExpectVector(BrushAt(0).bbox[7], {0, 0, 0});
    for (const SO_VERTEX& v : Level().so_vertex)
        EXPECT_EQ(v.selected, v.v.x == 0 && v.v.y == 0);
}
