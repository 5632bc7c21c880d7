// Random edits with every tool and command that works on objects, undone from whatever mode is in the hand.
#include "editor/EditorFixture.h"
#include "foundation/Random.h"
#include "render/TestPictures.h"
#include "scene/ObjectCopy.h"
#include "scene/SceneState.h"

class RandomUndoTest : public EditorTest {
protected:
    void SetUp() override {
        WriteBytes("Textures/wall/sign.tga", TargaBytes(32, 32, 24, 0xFF808080));
        Ed().settings.full_undo = true;
        Ed().settings.undo_states = 100000;
        AddBox({-16, 0, 0}, {0, 16, 16}).AddLinkedObjectID(AddEntity("POINT_LIGHT", {8, 8, 8}).GetObjectID());
        SelectBrushes({0});
        Level().entity_selection.AddItem(0);
        Level().CreateGroup();
        std::string error;
        std::filesystem::create_directories("Marrowstead/Prefabs/set");
        ASSERT_TRUE(Level().SavePrefab("Marrowstead\\Prefabs\\set\\lamp.mpf", "", error)) << error;
        Ed().prefab_choice = {false, "set", "lamp"};
    }
    void Fresh(uint32_t seed) {
        Ed().InitEditor();
        Ed().editor_state = Ed().old_editor_state = Ed().older_editor_state = ES_IDLE;
        Ed().movie_editing = Ed().shearing = false;
        Ed().active_brush_template = BT_BOX;
        Ed().texture_choice = {"wall", "sign"};
        AddBox({0, 0, 0}, {64, 64, 64});
        AddBox({-160, -64, 0}, {-96, 64, 64});
        AddBox({96, 0, 0}, {131, 64, 32}, BT_CYLINDER);
        AddBox({-64, -160, 0}, {32, -96, 64}, BT_PATCH);
        AddEntity("POINT_LIGHT", {-64, 16, 0});
        TerrainSegment segment;
        segment.map_unit_x = segment.map_unit_y = 128;
        segment.terrain_origin = segment.start = {-64, -40, 64};
        segment.size_x = segment.size_y = 128;
        segment.detail = 16;
        auto ground = std::make_unique<Brush>();
        ground->GenerateTerrainSegment({1, 1, {0}}, segment);
        ground->GenerateNewObjectID();
        Level().AddBrush(std::move(ground));
        Level().undo_buffer.Empty();
        random.seedMT(seed * 2 + 1);
    }
    int Below(uint32_t n) { return static_cast<int>(random.randomMT() % n); }
    POINT Pixel() { return {MIDDLE - 160 + Below(320), MIDDLE - 100 + Below(200)}; }
    void Rest() {
        Ed().FinishDrag();
        Ed().movie_editing = false;
        while (Ed().editor_state == ES_TERRAIN || Ed().editor_state == ES_DECAL || Ed().editor_state == ES_VERTEX)
            Ed().Cancel();
        Ed().SettleState();
    }
    void Look(bool down) {
        VIEWINFO& eye = Ed().View(VIEW_PERSPECTIVE);
        eye.camera_position = down ? D3DVECTOR{3, 200, -20} : D3DVECTOR{0, 0, -256};
        eye.camera_rotation = down ? D3DVECTOR{-1.47f, 0, 0} : D3DVECTOR{};
    }
    // At its middle or a side: moved, sized or turned, and at times let go by a command.
    void DragSelection(int view) {
        if (!Level().IsSomethingSelected())
            return;
        Ed().SetActiveView(view);
        if (Below(4) == 0 && Ed().editor_state == ES_SELECTED)
            Ed().SetEditorState(ES_ROTATE_ARMED);
        const D3DVECTOR p = Ed().selection_pivot;
        POINT from = view == VIEW_TOP     ? At(static_cast<int>(p.x), static_cast<int>(p.z))
                     : view == VIEW_FRONT ? At(static_cast<int>(p.x), static_cast<int>(p.y))
                                          : At(static_cast<int>(p.z), static_cast<int>(p.y));
        if (Below(3) == 0)
            from.x += 100;
        const POINT to{from.x + Below(80) - 40, from.y + Below(80) - 40};
        LeftDown(view, from);
        MoveSteps(view, from, to);
        if (Below(4) == 0)
            Below(2) ? Ed().HideSelected() : Ed().Cancel();
        LeftUp(to);
        if (Ed().editor_state == ES_ROTATE_ARMED)
            Ed().Cancel();
    }
    const char* DragVertices(int view) {
        Rest();
        if (Level().brush_selection.GetItemCount() == 0)
            return "";
        Ed().SetEditorState(ES_VERTEX);
        Ed().RebuildSelectionNet();
        Drag(view, {MIDDLE - 250, MIDDLE - 250}, {MIDDLE - 40 + Below(80), MIDDLE + 250}, MOUSE_SHIFT);
        const POINT from = Pixel();
        Drag(view, from, {from.x + Below(3) * 8, from.y - 16});
        return "vertices"; // which stays the mode
    }
    // Returns what was done, for the message of a failure.
    const char* OneEdit() {
        const int view = Below(3);
        switch (Below(20)) {
        case 0:
            Drag(view, Pixel(), Pixel());
            return "drag";
        case 1:
        case 2:
            Drag(view, Pixel(), Pixel(), MOUSE_SHIFT | (Below(2) ? MOUSE_CONTROL : 0u));
            return "rectangle";
        case 3:
            Ed().SetEditorState(ES_DECAL);
            Look(false);
            Click(VIEW_PERSPECTIVE, Pixel(), Below(3) ? MOUSE_CONTROL : MOUSE_SHIFT);
            return "decal";
        case 4:
            if (Ed().editor_state != ES_DECAL)
                return "";
            if (Below(3) == 0)
                Ed().DeleteSelection();
            else
                Ed().SetDecalColor(static_cast<uint32_t>(Below(0xFFFFFF)));
            return "decal changed";
        case 5:
            Rest();
            Ed().EnableTerrainModifier(true);
            Ed().SetTerrainModifier({TERRAIN_RAISE, 40, 6, 32, true});
            Look(true);
            Drag(VIEW_PERSPECTIVE, Pixel(), Pixel(), MOUSE_SHIFT);
            return "terrain";
        case 6: {
            const ChangeRecord record(Level(), "Texture.");
            for (const int b : Brushes()) {
                BrushAt(b).ForEachSurface([&](Surface& s, int, bool) {
                    s.texture.rotation = static_cast<float>(Below(360)) * 0.3f;
                    s.texture.flip_u = Below(2) != 0;
                });
                BrushAt(b).RemapAll();
            }
            return "texture";
        }
        case 7: {
            Rest();
            const ChangeRecord record(Level(), "Collapse brushes.", ChangeScope::AllObjects);
            Level().Collapse();
            return "collapse";
        }
        case 8:
            Rest();
            Ed().movie_editing = true;
            for (int i = 0; i < 2; ++i)
                Click(view, Pixel(), MOUSE_CONTROL);
            Ed().movie_editing = false;
            return "path";
        case 9:
            Rest();
            Level().ReindexObjectIDs();
            return "reindex";
        case 10:
            Rest();
            Ed().Clone();
            return "clone";
        case 11:
            Rest();
            if (Below(4) == 0)
                Ed().DeleteSelection();
            return "delete";
        case 12:
            Rest();
            Below(2) ? Ed().CreateGroup() : Ed().SelectAll();
            return "group or all";
        case 13: {
            Rest();
            const ChangeRecord record(Level(), "Links.");
            switch (Below(4)) {
            case 0:
                Level().Unlink();
                return "unlink";
            case 1:
                Level().Changelink();
                return "change links";
            default:
                Level().Link(Below(2) != 0, Below(2) != 0);
                return "link";
            }
        }
        case 14:
            Rest();
            DragSelection(view);
            return "drag of the selection";
        case 15:
        case 16:
            return DragVertices(view);
        case 17:
            Rest();
            while (Ed().editor_state != ES_IDLE)
                Ed().Cancel();
            Ed().active_brush_template = static_cast<BrushType>(Below(BT_TERRAIN));
            if (Ed().active_brush_template == BT_EXTRUDABLE)
                Ed().active_brush_template = BT_CUSTOM;
            Ed().ignore_groups = Below(2) != 0;
            Drag(view, Pixel(), Pixel());
            Ed().active_brush_template = BT_BOX;
            return "create";
        case 18: {
            Rest();
            const ChangeRecord record(Level(), "Detail of curves.", ChangeScope::AllObjects);
            Level().ChangeCurveDetail(Below(2) != 0);
            return "detail";
        }
        default:
            Rest();
            Ed().texture_lock = !Ed().texture_lock;
            Activate(view), Ed().FlipHorizontally();
            return "flip";
        }
    }

    RandomMT random;
};

TEST_F(RandomUndoTest, ComesBackToTheByte) {
    constexpr uint32_t SEEDS = 4;
    for (uint32_t seed = 1; seed <= SEEDS; ++seed) {
        Fresh(seed);
        std::vector<SceneState> states;
        std::vector<std::unique_ptr<DecalState>> decals;
        std::vector<std::string> edits;
        std::vector<int> steps;
        const auto note = [&](const char* what) {
            Ed().FinishDrag();
            states.push_back(StateOf(Level()));
            decals.push_back(std::make_unique<DecalState>(Level()));
            edits.emplace_back(what);
            steps.push_back(Level().undo_buffer.GetActionCount());
        };
        note("first");
        for (int edit = 0; edit < 60; ++edit) {
            const char* what = OneEdit();
            ASSERT_EQ(BrokenRule(Level()), "") << "seed " << seed << " edit " << edit << " " << what;
            note(what);
            if (Level().GetBrushCount() > 40)
                break;
        }
        const auto expect = [&](size_t i, const char* where) {
            const std::string what = "seed " + std::to_string(seed) + where + std::to_string(i) + " (" + edits[i] +
                                     (i + 1 < edits.size() ? ") before " + edits[i + 1] : ")");
            ASSERT_EQ(BrokenRule(Level()), "") << what;
            SceneState found = StateOf(Level());
            found.selection = states[i].selection; // folded steps of selecting bring back that of the first of them
            ASSERT_EQ(Difference(states[i], found), "") << what;
            ASSERT_TRUE(decals[i]->HasSameTemplates(Level())) << what;
        };
        for (size_t i = states.size() - 1; i-- > 0;) {
            if (Below(3) == 0)
                Rest();
            while (Level().undo_buffer.GetActionCount() > steps[i])
                ASSERT_TRUE(Undo());
            expect(i, " undone to ");
            if (HasFatalFailure())
                return;
        }
        while (Redo()) {
        }
        expect(states.size() - 1, " redone to ");
        if (HasFatalFailure())
            return;
    }
}
