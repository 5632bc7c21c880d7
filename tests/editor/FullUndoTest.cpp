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
    // Where everything is, by ids: moves of coordinates with fractions are not undone to the last bit.
    std::map<uint32_t, std::vector<float>> Places() {
        std::map<uint32_t, std::vector<float>> places;
        for (const auto& b : Level().brush) {
            std::vector<float>& of = places[b->GetObjectID()];
            of.push_back(b->is_hidden);
            b->ForEachSurface([&of](const Surface& s, int, bool) {
                for (const D3DVECTOR& v : s.vertices)
                    of.insert(of.end(), {v.x, v.y, v.z});
            });
        }
        for (const auto& e : Level().entity)
            places[e->GetObjectID()] = {static_cast<float>(e->is_hidden), e->position.x, e->position.y, e->position.z};
        return places;
    }
    void ExpectPlaces(const std::map<uint32_t, std::vector<float>>& expected, const std::string& what) {
        constexpr float ROUNDING = 0.05f;
        const auto actual = Places();
        ASSERT_EQ(actual.size(), expected.size()) << what;
        for (const auto& [id, place] : expected) {
            ASSERT_EQ(actual.count(id), 1u) << what;
            ASSERT_EQ(actual.at(id).size(), place.size()) << what;
            for (size_t i = 0; i < place.size(); ++i)
                ASSERT_NEAR(actual.at(id)[i], place[i], ROUNDING) << what << ", object " << id;
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
        AddBox({96, 0, 0}, {128, 64, 32});
        AddEntity("POINT_LIGHT", {-64, 16, 0});
        Ed().selected_entity = 0;
        desktop.form_answer = "2";
        RandomMT random;
        random.seedMT(seed * 2 + 1);
        const auto below = [&random](uint32_t n) { return static_cast<int>(random.randomMT() % n); };
        const auto pixel = [&] { return POINT{MIDDLE - 160 + below(320), MIDDLE - 100 + below(200)}; };
        const SceneState first = State();
        const auto first_places = Places();
        for (int step = 0; step < 150; ++step) {
            const int view = below(3);
            const auto flags = static_cast<uint32_t>(below(4));
            switch (below(14)) {
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
        const auto last_places = Places();
        int undone = 0;
        while (Undo()) {
            ++undone;
            ASSERT_EQ(BrokenRule(Level()), "") << "seed " << seed << " undo " << undone;
        }
        const std::string what = "seed " + std::to_string(seed);
        ExpectPlaces(first_places, what + " undone");
        EXPECT_TRUE(State().groups == first.groups && State().selection == first.selection) << what;
        while (undone-- > 0)
            ASSERT_TRUE(Redo());
        ExpectPlaces(last_places, what + " redone");
        EXPECT_TRUE(State().groups == last.groups && State().selection == last.selection) << what << " redone";
    }
}
