// Any sequence of events leaves a level that holds together: valid indices, no numbers that are none.
#include <cmath>

#include "editor/EditorFixture.h"
#include "foundation/Random.h"
#include "scene/SceneState.h"

namespace {

bool IsFinite(float f) { return std::isfinite(f); }
bool IsFinite(const D3DVECTOR& v) { return IsFinite(v.x) && IsFinite(v.y) && IsFinite(v.z); }
bool IsFinite(const Box& box) {
    return std::all_of(box.begin(), box.end(), [](const D3DVECTOR& v) { return IsFinite(v); });
}
template <class T>
bool AreFinite(const std::vector<T>& list) {
    return std::all_of(list.begin(), list.end(), [](const T& v) { return IsFinite(v); });
}

bool IsFinite(const Brush& b) {
    bool finite = IsFinite(b.pivot) && IsFinite(b.bound_sphere);
    for (const D3DVECTOR& corner : b.bbox)
        finite = finite && IsFinite(corner);
    b.ForEachSurface([&finite](const Surface& s, int, bool) {
        const TEX_INFO& t = s.texture;
        finite = finite && AreFinite(s.vertices) && AreFinite(s.normal) && AreFinite(s.cp);
        for (const UVVector& uv : s.uv)
            finite = finite && IsFinite(uv.u) && IsFinite(uv.v);
        for (const float f : {t.shift.u, t.shift.v, t.scale.u, t.scale.v, t.rotation})
            finite = finite && IsFinite(f);
        for (const D3DVECTOR& v : {s.texture_space.ts_s, s.texture_space.ts_x, s.texture_space.ts_y})
            finite = finite && IsFinite(v);
    });
    return finite;
}

class RandomWalkTest : public EditorTest {
protected:
    int Below(int n) { return static_cast<int>(random.randomMT() % static_cast<uint32_t>(n)); }
    bool OneIn(int n) { return Below(n) == 0; }

    // Mostly where the action is, at times far outside.
    POINT Pixel() {
        constexpr int FAR = 1 << 30;
        if (OneIn(200))
            return {Below(FAR) * (OneIn(2) ? 1 : -1), Below(FAR) * (OneIn(2) ? 1 : -1)};
        const int x = Below(SIDE + 40) - 20, y = Below(SIDE + 40) - 20;
        return OneIn(2) ? POINT{x, y} : POINT{x / 16 * 16, y / 16 * 16};
    }
    void HoldKeys() {
        desktop.held.clear();
        for (const HeldKey key : {HeldKey::LeftShift, HeldKey::Control, HeldKey::Alt})
            if (OneIn(8))
                desktop.held.insert(key);
    }
    void MouseEvent() {
        HoldKeys();
        const int view = OneIn(6) ? Below(VIEW_COUNT) : Ed().active_view;
        const auto flags = static_cast<uint32_t>(OneIn(2) ? 0 : Below(4));
        const POINT p = Pixel();
        Move(view, p, flags);
        switch (Below(8)) {
        case 0:
        case 1:
            Ed().MouseLeftButtonDown(flags, p);
            break;
        case 2:
        case 3:
            Ed().MouseLeftButtonUp(flags, p);
            break;
        case 4:
            Ed().MouseRightButtonDown(flags, p);
            break;
        case 5:
            Ed().MouseRightButtonUp(flags, p);
            break;
        default:
            break;
        }
    }
    void Command() {
        desktop.form_answer = OneIn(3) ? std::nullopt : std::optional<std::string>(std::to_string(1 + Below(3)));
        const float angle = static_cast<float>(Below(720) - 360) * 0.0174533f;
        switch (Below(30)) {
        case 0:
            return Ed().Cancel();
        case 1:
            return Ed().Clone();
        case 2:
            return Ed().DeleteSelection();
        case 3:
            return Ed().RotateBrush(angle);
        case 4:
            return Ed().ToggleShearing();
        case 5:
            if (Ed().editor_state == ES_SELECTED)
                Ed().SetEditorState(ES_ROTATE_ARMED);
            return;
        case 6:
        case 7:
            return ToggleVertexMode();
        case 8:
            return Ed().SetEditorState(OneIn(2) ? ES_PAN : ES_PICK_TEXTURE);
        case 9:
            return Ed().ResetEditorState();
        case 10:
            return Ed().GridSize(Below(3) - 1);
        case 11:
            return Ed().ZoomView(Below(3) - 1);
        case 12:
            return OneIn(2) ? Ed().CenterWorld(true) : Ed().CenterToSelection();
        case 13:
            return Ed().SetActiveBrushTemplate(static_cast<BrushType>(Below(BT_TERRAIN)));
        case 14:
            Ed().active_brush_segments = static_cast<uint32_t>(Below(12));
            return;
        case 15:
        case 16:
            Undo();
            return;
        case 17:
            Redo();
            return;
        case 18:
            return OneIn(4) ? Ed().SelectAll() : Ed().InvertSelection();
        case 19:
            return OneIn(2) ? Ed().HideSelected() : Ed().UnhideAll();
        case 20:
            return OneIn(3) ? Ed().DestroyGroup() : Ed().CreateGroup();
        case 21:
            return OneIn(2) ? Ed().FlipHorizontally() : Ed().FlipVertically();
        case 22:
            Ed().edit_cordon_bounds = OneIn(4);
            Ed().cordon_active = OneIn(2);
            Ed().clip_active = OneIn(2);
            return;
        case 23:
            return Ed().SelectRelevant(OneIn(2));
        case 24:
            Ed().selected_entity = Below(5) - 1;
            return;
        case 25:
            Ed().multi_selection = OneIn(3);
            Ed().ignore_groups = OneIn(3);
            Ed().texture_lock = OneIn(2);
            Ed().movie_editing = OneIn(6);
            return;
        case 26:
            Ed().settings.show_sel_wire = OneIn(3);
            return Ed().SelectionChanged();
        case 27:
            Ed().View(VIEW_PERSPECTIVE).camera_rotation = {OneIn(4) ? PI / 2 : angle, angle, 0};
            return;
        case 28:
            Ed().SetViewRect(VIEW_PERSPECTIVE, OneIn(3) ? RECT{} : RECT{0, 0, SIDE, SIDE});
            return;
        default:
            Level().Link(OneIn(2), OneIn(2));
            return;
        }
    }
    void ToggleVertexMode() {
        if (Ed().editor_state == ES_VERTEX)
            Ed().Cancel();
        else if (Ed().editor_state == ES_SELECTED && Level().brush_selection.GetItemCount() > 0) {
            Ed().SetEditorState(ES_VERTEX);
            Ed().RebuildSelectionNet();
        }
    }
    std::string Fault() {
        // Hiding by the clip box empties the selection, but leaves the brushes' marks.
        if (Level().brush_selection.GetItemCount() == 0)
            for (const auto& b : Level().brush)
                b->is_selected = false;
        const std::string broken = BrokenRule(Level());
        if (!broken.empty())
            return broken;
        for (const auto& b : Level().brush)
            if (!IsFinite(*b))
                return Format("brush %d of type %d is not finite", b->index, b->type);
        for (const auto& e : Level().entity)
            if (!IsFinite(e->position))
                return "an entity is not finite";
        for (const SO_VERTEX& v : Level().so_vertex)
            if (!IsFinite(v.v) || v.object < 0 || v.object >= Level().GetBrushCount())
                return "a vertex of the net is wild";
        for (const Box* box : {&Ed().selection_box, &Ed().drag_box, &Ed().views.cordon_box, &Ed().views.clip_box})
            if (!IsFinite(*box))
                return "a box is not finite";
        if (!IsFinite(Ed().selection_pivot) || !IsFinite(Ed().world_position) || !IsFinite(Ed().last_entity_position))
            return "a position is not finite";
        if (Ed().selected_cross_vertex >= static_cast<int>(Level().so_vertex.size()))
            return "the cross belongs to no vertex";
        return {};
    }

    RandomMT random;
};

TEST_F(RandomWalkTest, NothingBreaksTheLevel) {
    constexpr int WALKS = 6, STEPS = 1200, MOST_OBJECTS = 60;
    std::set<int> states;
    for (int walk = 0; walk < WALKS; ++walk) {
        random.seedMT(static_cast<uint32_t>(walk) * 2 + 1);
        Ed().settings.full_undo = walk % 2 == 1;
        Ed().settings.show_sel_wire = false;
        Ed().InitEditor();
        Ed().editor_state = ES_IDLE;
        for (int step = 0; step < STEPS; ++step) {
            if (OneIn(4))
                Command();
            else
                MouseEvent();
            Ed().SyncVertexNet();
            states.insert(Ed().editor_state);
            ASSERT_EQ(Fault(), "") << "walk " << walk << " step " << step << " state " << Ed().editor_state;
            if (Level().GetBrushCount() + Level().GetEntityCount() > MOST_OBJECTS) {
                Ed().Cancel(), Ed().Cancel();
                Ed().SelectAll();
                Ed().DeleteSelection();
            }
        }
    }
    EXPECT_EQ(states,
              (std::set<int>{ES_IDLE, ES_PAN, ES_CREATE_BRUSH, ES_SELECTED, ES_EDIT, ES_EXTRUDABLE, ES_ROTATE_ARMED,
                             ES_ROTATE, ES_PICK_TEXTURE, ES_DRAG_SELECT, ES_VERTEX, ES_VERTEX_MOVE}))
        << "the walks have been everywhere";
}

} // namespace
