// Selecting by click and rectangle, placing entities and path points, and growing a selection along its links.
#include <algorithm>
#include <unordered_map>

#include "editor/Interface.h"
#include "foundation/Strings.h"

namespace {

constexpr float SMALLEST_RECTANGLE = 1.0f; // world units; a smaller one is a click

} // namespace

PickRequest CInterface::MakePickRequest(POINT point) const {
    PickRequest request;
    request.point = point;
    request.view = active_view;
    request.additive = make_multi_selection;
    request.ignore_groups = ignore_groups;
    request.camera_position = EyePosition();
    request.world_position = GetWorldPositionAtPoint(active_view, point.x, point.y);
    request.filters = filters;
    request.multiple_entities = settings.multiple_entity_selection;
    request.movie_editing = movie_editing;
    return request;
}

void CInterface::UpdateSelectionBox() {
    const bool selected = world->IsSomethingSelected();
    if (selected)
        RefreshSelectionBox();
    selection_box_active = selected;
    editor_state = selected ? ES_SELECTED : ES_IDLE;
    SetSizeText();
    SettleState(); // a mode may have ended
}

void CInterface::Select(POINT point, bool brush_selection) {
    EndDragRecord();
    SetMatrices(active_view);
    if (world->PointSelection(MakePickRequest(point))) {
        UpdateSelectionBox();
        shearing = false;
    } else if (!brush_selection)
        editor_state = ES_SELECTED;
    else
        UpdateSelectionBox();
    RedrawAllViews();
}

void CInterface::StartMultiSelection() {
    if (editor_state != ES_VERTEX) {
        EndDragRecord();
        editor_state = ES_DRAG_SELECT;
    }
    drag_box_active = true;
    CollapseBox(drag_box);
}

void CInterface::DragSelectionBox() {
    if (!drag_box_active)
        return;
    DragBox(drag_box);
    RedrawView(active_view);
}

bool CInterface::IsClick(const Box& box) const {
    const D3DVECTOR extent = BoxMax(box) - BoxMin(box);
    for (int axis = 0; axis < 3; ++axis)
        if (axis != MissingAxis(active_view) && Component(extent, axis) < SMALLEST_RECTANGLE)
            return true;
    return false;
}

void CInterface::MultiSelect(POINT point, bool brush_selection, bool select_all) {
    ValidateBBox(drag_box);
    drag_box_active = false;
    SetMatrices(active_view);
    PickRequest request = MakePickRequest(point);
    if (IsClick(drag_box)) {
        if (brush_selection) {
            Select(point, true);
            return;
        }
        world->EntityPointSelection(request);
    } else if (!brush_selection)
        world->EntityDragBoxSelection(drag_box, request, select_all);
    else {
        world->DragBoxSelection(drag_box, request);
        if (select_all) {
            request.additive = true;
            world->EntityDragBoxSelection(drag_box, request, true);
        }
    }
    UpdateSelectionBox();
    RedrawAllViews();
}

void CInterface::SelectSurface(POINT point) {
    EndDragRecord();
    SetMatrices(VIEW_PERSPECTIVE);
    {
        ChangeRecord record(*world, "Select a surface.");
        if (!world->IsSomethingSelected())
            record.Discard(); // a surface alone is no step
        world->SurfaceSelection(point, EyePosition());
    }
    editor_state = ES_IDLE;
    shearing = false;
    selection_box_active = drag_box_active = false;
    mouse_release = true;
    RedrawAllViews();
}

// Placing entities ----------------------------------------------------------------------------------------------------

std::unique_ptr<Entity> CInterface::NewEntityFromTemplate(const char* name) {
    const Entity* kind = entity_parser->GetTemplate(name, true);
    return kind ? std::make_unique<Entity>(*kind) : nullptr;
}

// The view's two coordinates come from the mouse, the third stays from the last placement.
void CInterface::TakeEntityPosition() {
    const int missing = MissingAxis(active_view);
    for (int axis = 0; axis < 3; ++axis)
        if (axis != missing)
            Component(last_entity_position, axis) = Component(world_position, axis);
}

void CInterface::AddCreationToUndo(Entity& created) {
    auto creation = std::make_unique<CUndoActionCreate>();
    creation->AddObject(created, *world);
    world->AddUndoAction(std::move(creation));
}

// A cancelled shear, or a state without one, may leave a selection, which the new entity replaces in part.
void CInterface::CancelBeforePlacing() {
    if (editor_state != ES_IDLE)
        Cancel();
    if (settings.full_undo && world->IsSomethingSelected())
        DeselectWithUndo();
}

void CInterface::PlaceEntity() {
    if (active_view == VIEW_PERSPECTIVE)
        return;
    EndDragRecord();
    TakeEntityPosition();
    const Entity* kind = entity_parser->GetTemplate(selected_entity, true);
    if (!kind)
        return;
    MarkDirty();
    auto placed = std::make_unique<Entity>(*kind);
    Entity* created = nullptr;
    if (placed->IsPathPoint())
        created = PlacePathPoint(std::move(placed), false);
    else {
        const D3DVECTOR position = last_entity_position;
        CancelBeforePlacing();
        placed->SetPosition(position);
        created = world->NewEntityCreated(std::move(placed), 1);
    }
    if (created && !(settings.full_undo && created->IsPathPoint())) // which has a step with its owner
        AddCreationToUndo(*created);
    UpdateSelectionBox();
    SetCountText();
    RedrawAllViews();
}

// The first in table order of a selection, -1 for none.
static int FirstInTable(const Selection& selection) {
    const auto first = std::min_element(selection.begin(), selection.end());
    return first == selection.end() ? -1 : *first;
}

BaseObject* CInterface::FindPathOwner() const {
    const int b = FirstInTable(world->brush_selection);
    if (b != -1)
        return world->brush[static_cast<size_t>(b)].get();
    const int e = FirstInTable(world->entity_selection);
    if (e == -1)
        return nullptr;
    Entity* selected = world->entity[static_cast<size_t>(e)].get();
    BaseObject* parent = BaseObject::GetObjectFromID(selected->path_parent_id);
    return parent ? parent : selected;
}

Entity* CInterface::PlacePathPoint(std::unique_ptr<Entity> point, bool from_movie_click) {
    BaseObject* owner = FindPathOwner();
    if (active_view == VIEW_PERSPECTIVE || !point || !owner)
        return nullptr;
    EndDragRecord();
    const uint32_t owner_id = owner->GetObjectID();
    const bool target = point->name == "target_point";
    if (from_movie_click && owner->path.GetCount() == 0) {
        const ChangeRecord record(*world, "Clear the other paths.", ChangeScope::AllObjects);
        ClearAnimation(owner_id);
        owner = BaseObject::GetObjectFromID(owner_id);
        if (!owner) // it stood in another object's path
            return nullptr;
    }
    const int e = FirstInTable(world->entity_selection);
    const uint32_t selected_id = e == -1 ? owner_id : world->entity[static_cast<size_t>(e)]->GetObjectID();
    point->path_parent_id = owner_id;
    TakeEntityPosition();
    const D3DVECTOR position = last_entity_position;
    CancelBeforePlacing();
    point->SetPosition(position);
    ChangeRecord record(*world, "Create a path point.", ChangeScope::Added);
    record.AddObject(*owner);
    Entity* created = world->NewEntityCreated(std::move(point), 1);
    if (!created)
        return nullptr;
    SimpleList<uint32_t>& list = target ? owner->target_path : owner->path;
    std::vector<uint32_t> ids(list.begin(), list.end());
    auto place = ids.begin();
    if (selected_id != owner_id) {
        place = std::find(ids.begin(), ids.end(), selected_id);
        if (place != ids.end())
            ++place;
    }
    ids.insert(place, created->GetObjectID());
    list.Reset();
    for (const uint32_t id : ids)
        list.Add(id);
    UpdateSelectionBox();
    SetCountText();
    RedrawAllViews();
    return created;
}

// Growing a selection -------------------------------------------------------------------------------------------------

namespace {

// Every object with the ids that link to it, so that links are followed in both directions without a scan.
class LinkMap {
public:
    explicit LinkMap(const World& level) {
        for (int e = 0; e < level.GetEntityCount(); ++e)
            Enter(*level.entity[static_cast<size_t>(e)], {false, e});
        for (int b = 0; b < level.GetBrushCount(); ++b)
            Enter(*level.brush[static_cast<size_t>(b)], {true, b});
    }
    struct Place {
        bool is_brush = false;
        int index = 0;
    };
    // What the object links to, in its order; then what links to it: entities, then brushes.
    template <class Fn>
    void ForEachNeighbour(const BaseObject& object, Fn&& fn) const {
        for (const uint32_t id : object.linked_objects) {
            const auto found = places.find(id);
            if (found != places.end())
                fn(found->second);
        }
        const auto found = linkers.find(object.GetObjectID());
        if (found != linkers.end())
            for (const Place& linker : found->second)
                fn(linker);
    }

private:
    void Enter(const BaseObject& object, Place place) {
        places.emplace(object.GetObjectID(), place);
        for (const uint32_t id : object.linked_objects)
            linkers[id].push_back(place);
    }
    std::unordered_map<uint32_t, Place> places;
    std::unordered_map<uint32_t, std::vector<Place>> linkers;
};

bool IsTrigger(const Entity& e) {
    return e.str_type == "BOX_TRIGGER" || e.str_type == "RADIAL_TRIGGER" || e.str_type == "KEY_TRIGGER";
}

bool IsEye(const Entity& e) { return EqualNoCase(e.str_type, "VISIBILITY_EYE"); }

} // namespace

void CInterface::SelectWholePath(const Entity& point) {
    BaseObject* owner = BaseObject::GetObjectFromID(point.path_parent_id);
    if (!owner)
        return;
    const uint32_t id = point.GetObjectID();
    const SimpleList<uint32_t>* list = owner->path.GetIndex(id) != -1          ? &owner->path
                                       : owner->target_path.GetIndex(id) != -1 ? &owner->target_path
                                                                               : nullptr;
    if (!list)
        return;
    for (const uint32_t key : *list) {
        const int index = world->GetEntityIndex(world->GetEntityFromID(key));
        if (index != -1)
            world->entity_selection.AddItem(index);
    }
}

void CInterface::SelectRelevant(bool ignore_triggers) {
    EndDragRecord();
    const ChangeRecord record(*world, "Select linked objects.");
    World& level = *world;
    const bool eyes_only = level.brush_selection.GetItemCount() == 0 &&
                           std::all_of(level.entity_selection.begin(), level.entity_selection.end(),
                                       [&](int e) { return IsEye(*level.entity[static_cast<size_t>(e)]); });
    const std::vector<int> first_entities(level.entity_selection.begin(), level.entity_selection.end());
    const LinkMap links(level);
    const auto add = [&](const LinkMap::Place& place) {
        if (place.is_brush) {
            if (!eyes_only)
                level.SetBrushSelection(place.index, true);
            return;
        }
        const Entity& linked = *level.entity[static_cast<size_t>(place.index)];
        if (IsEye(linked) == eyes_only && !(ignore_triggers && IsTrigger(linked)))
            level.entity_selection.AddItem(place.index);
    };
    // The lists grow while they are walked: what is added is followed in its turn.
    int brushes = 0, entities = 0;
    while (brushes < level.brush_selection.GetItemCount() || entities < level.entity_selection.GetItemCount()) {
        while (entities < level.entity_selection.GetItemCount())
            links.ForEachNeighbour(*level.entity[static_cast<size_t>(level.entity_selection.GetItem(entities++))], add);
        while (brushes < level.brush_selection.GetItemCount())
            links.ForEachNeighbour(*level.brush[static_cast<size_t>(level.brush_selection.GetItem(brushes++))], add);
    }
    if (!eyes_only)
        for (const int e : first_entities)
            SelectWholePath(*level.entity[static_cast<size_t>(e)]);
    RefreshSelectionBox();
    SelectionChanged();
    RedrawAllViews();
}
