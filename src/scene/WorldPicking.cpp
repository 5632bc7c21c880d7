// Picking of brushes by a click or a rectangle, and what all picking shares.

#include "render/Matrix.h"
#include "scene/FrontEnd.h"
#include "scene/Undo.h"
#include "scene/World.h"
#include "scene/WorldPickingParts.h"

namespace {

constexpr float FARTHEST_HIT = 1000000.0f;

// The last brush whose wire passes the pixel. What is shown is not asked.
int WireBrush(const World& world, const PickRequest& request) {
    int i = world.GetBrushCount() - 1;
    while (i >= 0 && (world.brush[static_cast<size_t>(i)]->is_hidden ||
                      !world.brush[static_cast<size_t>(i)]->TestWireSelection(request.point)))
        --i;
    return i;
}

// Adds the objects of `to` that are not in `from`.
template <class T>
void AddDifference(CUndoAction& action, const Selection& from, const Selection& to,
                   const std::vector<std::unique_ptr<T>>& list, World& world) {
    for (const int i : to)
        if (from.TestItem(i) == -1)
            action.AddObject(*list[static_cast<size_t>(i)], world);
}

} // namespace

BrushHit NearestBrush(const World& world, const PickRequest& request) {
    PLANE planes[6];
    crMUpdate();
    crGetClipPlanes(planes);
    BrushHit hit;
    hit.ray = s_math.GetSelectionRay(request.point, request.camera_position);
    hit.distance = FARTHEST_HIT;
    for (int i = 0; i < world.GetBrushCount(); ++i) {
        const Brush& b = *world.brush[static_cast<size_t>(i)];
        if (b.is_hidden || !request.filters.ShowsBrush(b))
            continue;
        float distance = hit.distance;
        // The ray leaves out nearly all of them, so it comes before the clip planes.
        if (b.TestSolidSelection(request.camera_position, hit.ray, distance) && b.Visible(planes)) {
            hit.distance = distance;
            hit.brush = i;
        }
    }
    return hit;
}

Box WidenAlongView(Box box, int view) {
    constexpr float FAR_AWAY = 10000000000.0f;
    D3DVECTOR min = BoxMin(box), max = BoxMax(box);
    if (view == VIEW_PERSPECTIVE)
        return box;
    const int axis = view == VIEW_TOP ? 1 : view == VIEW_FRONT ? 2 : 0;
    Component(min, axis) = -FAR_AWAY;
    Component(max, axis) = FAR_AWAY;
    return MakeBox(min, max);
}

void World::DeselectForPick(bool additive) {
    if (additive)
        return;
    auto deselection = std::make_unique<CUndoActionDeselect>(false);
    AddSelectionToUndo(*deselection);
    AddUndoAction(std::move(deselection));
    ClearSelection();
}

void World::PickGroup(int group_index, bool select) {
    const ObjectGroupLists& members = group[static_cast<size_t>(group_index)];
    if (select)
        group_selection.AddItem(group_index);
    else
        group_selection.RemoveItem(group_index);
    for (const int b : members.brushes)
        SetBrushSelection(b, select);
    for (const int e : members.entities) {
        if (e < 0 || e >= GetEntityCount())
            continue;
        if (select)
            entity_selection.AddItem(e);
        else
            entity_selection.RemoveItem(e);
    }
}

void World::PickBrush(int i, int group_index, bool select) {
    if (group_index == -1)
        SetBrushSelection(i, select);
    else
        PickGroup(group_index, select);
}

void World::EndPick(const Selection& brushes_before, const Selection& entities_before) {
    if (GetFrontEnd().IsFullUndo()) {
        auto deselection = std::make_unique<CUndoActionDeselect>(false);
        AddDifference(*deselection, brush_selection, brushes_before, brush, *this);
        AddDifference(*deselection, entity_selection, entities_before, entity, *this);
        AddUndoAction(std::move(deselection));
    }
    auto selection = std::make_unique<CUndoActionSelect>(false);
    AddDifference(*selection, brushes_before, brush_selection, brush, *this);
    AddDifference(*selection, entities_before, entity_selection, entity, *this);
    AddUndoAction(std::move(selection));
    if (!IsObjectSelected(first_selected_id))
        first_selected_id = NO_OBJECT_ID;
}

bool World::EndBrushPick(const Selection& brushes_before, const Selection& entities_before) {
    EndPick(brushes_before, entities_before);
    const bool any = brush_selection.GetItemCount() > 0;
    if (any && first_selected_id == NO_OBJECT_ID)
        first_selected_id = brush[static_cast<size_t>(brush_selection.GetItem(0))]->GetObjectID();
    GetFrontEnd().SelectionChanged();
    return any;
}

bool World::PointSelection(const PickRequest& request) {
    DeselectForPick(request.additive);
    const Selection brushes_before = brush_selection, entities_before = entity_selection;
    const int hit = request.view == VIEW_PERSPECTIVE ? NearestBrush(*this, request).brush : WireBrush(*this, request);
    if (hit != -1) {
        const bool was_selected = brush_selection.TestItem(hit) != -1;
        if (!was_selected || request.additive)
            PickBrush(hit, request.ignore_groups ? -1 : CheckGroups(hit, -1), !was_selected);
    }
    return EndBrushPick(brushes_before, entities_before);
}

bool World::DragBoxSelection(const Box& box, const PickRequest& request) {
    DeselectForPick(request.additive);
    const Selection brushes_before = brush_selection, entities_before = entity_selection;
    const Box reach = WidenAlongView(box, request.view);
    const std::vector<int> newest = request.ignore_groups ? std::vector<int>(brush.size(), -1) : NewestGroups(true);
    for (int i = 0; i < GetBrushCount(); ++i) {
        const Brush& b = *brush[static_cast<size_t>(i)];
        if (!b.is_hidden && brush_selection.TestItem(i) == -1 && b.IsInVoxel(BoxMin(reach), BoxMax(reach)))
            PickBrush(i, newest[static_cast<size_t>(i)], true);
    }
    return EndBrushPick(brushes_before, entities_before);
}
