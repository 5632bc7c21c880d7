// The steps of full undo: the touched objects as they were, with the groups and the selection.
#include <algorithm>
#include <optional>
#include <unordered_set>
#include <utility>

#include "scene/FrontEnd.h"
#include "scene/ObjectCopy.h"
#include "scene/Undo.h"

namespace {

// The selection by ids.
struct SelectionIds {
    ObjectIds objects;
    std::vector<int> groups;
    uint32_t first_selected_id = NO_OBJECT_ID, surface_brush = NO_OBJECT_ID;
    int surface = -1;
    bool surface_curved = false;
    bool operator==(const SelectionIds&) const = default;

    SelectionIds() = default;
    explicit SelectionIds(const World& world);
    void Restore(World& world) const;
};

SelectionIds::SelectionIds(const World& world)
    : objects(world, world.brush_selection, world.entity_selection),
      groups(world.group_selection.begin(), world.group_selection.end()), first_selected_id(world.first_selected_id) {
    const int b = world.selected_surface_brush;
    if (b < 0 || b >= world.GetBrushCount())
        return;
    const Brush& brush = *world.brush[static_cast<size_t>(b)];
    surface_brush = brush.GetObjectID();
    surface = brush.selected_surface;
    surface_curved = brush.selected_surface_curved;
}

void SelectionIds::Restore(World& world) const {
    for (const auto& b : world.brush) {
        b->is_selected = false;
        b->selected_surface = -1;
        b->selected_surface_curved = false;
    }
    ObjectGroupLists found = objects.Find(world);
    for (const int b : found.brushes)
        world.brush[static_cast<size_t>(b)]->is_selected = true;
    world.brush_selection = std::move(found.brushes);
    world.entity_selection = std::move(found.entities);
    world.group_selection.ClearList();
    for (const int g : groups)
        if (g < world.GetGroupCount())
            world.group_selection.AddItem(g);
    world.first_selected_id = first_selected_id;
    world.RefreshFirstSelected();
    Brush* brush = surface_brush == NO_OBJECT_ID ? nullptr : world.GetBrushFromID(surface_brush);
    world.selected_surface_brush = world.GetBrushIndex(brush);
    if (!brush)
        return;
    brush->selected_surface = surface;
    brush->selected_surface_curved = surface_curved;
    if (!brush->GetSelectedSurfaceTexInfo())
        world.DeselectSurface();
}

BaseObject* Existing(uint32_t id) { return id == NO_OBJECT_ID ? nullptr : BaseObject::GetObjectFromID(id); }

class CUndoActionChange : public CUndoAction {
public:
    explicit CUndoActionChange(std::string what) : CUndoAction(UA_CHANGE), description(std::move(what)) {}
    bool IsEmpty() const override { return false; }
    std::string GetActionDescription() const override { return description; }
    ESelecting Selects() const override;
    void Undo(World& world) override;
    std::unique_ptr<CUndoAction> MakeInverse() const override {
        return std::make_unique<CUndoActionChange>(description);
    }
    void CreateRedo(CUndoAction& redo, World& world) override;
    void AddID(uint32_t id, World& world) override;
    void RenameIDs(const IdRenaming& renamed) override;

    std::vector<std::unique_ptr<ObjectCopy>> objects; // as they were
    std::vector<uint32_t> absent;                     // did not exist
    std::optional<GroupIds> groups;                   // when they differ
    std::optional<DecalState> decals;                 // when they differ
    std::optional<int> curve_detail;                  // when it differs
    SelectionIds selection;

private:
    std::string description;
};

CUndoAction::ESelecting CUndoActionChange::Selects() const {
    const bool nothing_else = objects.empty() && absent.empty() && !groups && !decals && !curve_detail;
    return nothing_else ? SELECTS_OBJECTS : SELECTS_NOTHING;
}

void CUndoActionChange::AddID(uint32_t id, World& world) {
    if (const BaseObject* object = Existing(id))
        objects.push_back(std::make_unique<ObjectCopy>(*object, world));
    else
        absent.push_back(id);
}

void CUndoActionChange::CreateRedo(CUndoAction& redo, World& world) {
    auto& inverse = static_cast<CUndoActionChange&>(redo);
    for (const auto& copy : objects)
        inverse.AddID(copy->id, world);
    for (const uint32_t id : absent)
        inverse.AddID(id, world);
    if (groups)
        inverse.groups = GroupsByIds(world);
    if (decals)
        inverse.decals = DecalState(world);
    if (curve_detail)
        inverse.curve_detail = world.curve_detail;
    inverse.selection = SelectionIds(world);
}

void CUndoActionChange::Undo(World& world) {
    const int brushes = world.GetBrushCount(), entities = world.GetEntityCount();
    const SelectionIds selection_before(world);
    const DecalState decals_before(world); // those of an object that goes may lie on one that comes, too
    world.DeleteObjects({absent.begin(), absent.end()});
    while (curve_detail && *curve_detail != world.curve_detail)
        world.ChangeCurveDetail(*curve_detail < world.curve_detail);
    for (const auto& copy : objects)
        if (BaseObject* live = Existing(copy->id))
            copy->Restore(*live, world);
        else
            copy->Create(world);
    if (groups)
        SetGroups(world, *groups);
    if (decals)
        decals->Restore(world);
    else if (!absent.empty()) {
        decals_before.RestoreMissing(world);
        world.FlushDecalTemplates();
    }
    const bool selection_changed = selection != selection_before;
    selection.Restore(world);
    if (!absent.empty() || brushes != world.GetBrushCount() || entities != world.GetEntityCount()) {
        GetFrontEnd().EntityTypesChanged();
        GetFrontEnd().CountsChanged();
    }
    GetFrontEnd().SelectionChanged();
    GetFrontEnd().SurfaceSelectionChanged();
    if (selection_changed) // else a mode that works on it goes on
        GetFrontEnd().SelectionRestored(world.IsSomethingSelected());
}

void CUndoActionChange::RenameIDs(const IdRenaming& renamed) {
    for (const auto& copy : objects)
        copy->RenameIDs(renamed);
    for (uint32_t& id : absent)
        id = renamed(id);
    if (groups)
        for (ObjectIds& ids : *groups)
            ids.RenameIDs(renamed);
    selection.objects.RenameIDs(renamed);
    selection.first_selected_id = renamed(selection.first_selected_id);
    selection.surface_brush = renamed(selection.surface_brush);
}

template <class Fn>
void ForEachObject(const World& world, Fn&& fn) {
    for (const auto& b : world.brush)
        fn(*b);
    for (const auto& e : world.entity)
        fn(*e);
}

} // namespace

struct ChangeRecord::State {
    State(const World& world, ChangeScope scope);

    std::vector<std::unique_ptr<ObjectCopy>> objects;
    std::unordered_set<uint32_t> ids; // of all objects
    GroupIds groups;
    DecalState decals;
    SelectionIds selection;
    int curve_detail;
};

// Objects that link to a selected one are touched when that one is deleted.
ChangeRecord::State::State(const World& world, ChangeScope scope)
    : groups(GroupsByIds(world)), decals(world), selection(world), curve_detail(world.curve_detail) {
    std::unordered_set<uint32_t> selected(selection.objects.brushes.begin(), selection.objects.brushes.end());
    selected.insert(selection.objects.entities.begin(), selection.objects.entities.end());
    if (selection.surface_brush != NO_OBJECT_ID)
        selected.insert(selection.surface_brush);
    const auto is_selected = [&selected](uint32_t id) { return selected.count(id) > 0; };
    ForEachObject(world, [&](const BaseObject& object) {
        const uint32_t id = object.GetObjectID();
        ids.insert(id);
        if (scope == ChangeScope::Added)
            return;
        if (scope == ChangeScope::AllObjects || is_selected(id) ||
            std::any_of(object.linked_objects.begin(), object.linked_objects.end(), is_selected))
            objects.push_back(std::make_unique<ObjectCopy>(object, world));
    });
}

ChangeRecord::ChangeRecord(World& changed, std::string what, ChangeScope scope)
    : world(changed), before(GetFrontEnd().IsFullUndo() ? std::make_unique<State>(changed, scope) : nullptr),
      description(std::move(what)) {}

ChangeRecord::~ChangeRecord() { Commit(); }

void ChangeRecord::AddObject(const BaseObject& object) {
    if (before && before->ids.count(object.GetObjectID()))
        before->objects.push_back(std::make_unique<ObjectCopy>(object, world));
}

void ChangeRecord::Discard() { before.reset(); }

void ChangeRecord::Commit() {
    if (!before)
        return;
    const std::unique_ptr<State> was = std::move(before);
    auto action = std::make_unique<CUndoActionChange>(description);
    bool gone = false;
    for (auto& copy : was->objects) {
        const BaseObject* live = Existing(copy->id);
        gone = gone || !live;
        if (!live || !copy->Equals(*live, world))
            action->objects.push_back(std::move(copy));
    }
    ForEachObject(world, [&](const BaseObject& object) {
        if (!was->ids.count(object.GetObjectID()))
            action->absent.push_back(object.GetObjectID());
    });
    const bool groups_differ = was->groups != GroupsByIds(world);
    action->selection = std::move(was->selection);
    const bool decals_differ = !was->decals.HasSameTemplates(world);
    if (was->curve_detail != world.curve_detail)
        action->curve_detail = was->curve_detail;
    if (action->objects.empty() && action->absent.empty() && !groups_differ && !decals_differ &&
        !action->curve_detail && action->selection == SelectionIds(world))
        return;
    if (decals_differ)
        action->decals = std::move(was->decals);
    if (groups_differ || gone || !action->absent.empty())
        action->groups = std::move(was->groups);
    world.AddUndoAction(std::move(action));
}
