#include "scene/Undo.h"

#include <algorithm>
#include <unordered_set>

#include "foundation/Strings.h"
#include "scene/FrontEnd.h"
#include "scene/ObjectCopy.h"

namespace {

std::string CountSentence(const char* verb, size_t count) { return Format("%s %zu object(s).", verb, count); }

// A member picked alone is no selected group; a group of which all members are selected is one.
void FollowGroups(World& world, const Selection& brushes, const Selection& entities) {
    if (world.group.empty())
        return;
    const std::vector<int> of_brush = world.NewestGroups(true), of_entity = world.NewestGroups(false);
    Selection touched;
    for (const int b : brushes)
        touched.AddItem(of_brush[static_cast<size_t>(b)]);
    for (const int e : entities)
        touched.AddItem(of_entity[static_cast<size_t>(e)]);
    for (const int g : touched) {
        if (g == -1)
            continue;
        const ObjectGroupLists& members = world.group[static_cast<size_t>(g)];
        const bool whole = std::all_of(members.brushes.begin(), members.brushes.end(),
                                       [&](int b) { return world.brush_selection.TestItem(b) != -1; }) &&
                           std::all_of(members.entities.begin(), members.entities.end(),
                                       [&](int e) { return world.entity_selection.TestItem(e) != -1; });
        if (whole)
            world.group_selection.AddItem(g);
        else
            world.group_selection.RemoveItem(g);
    }
}

// All at once: taken one by one, each would move those behind it.
void AddOrRemove(Selection& selection, const Selection& items, bool state) {
    if (state) {
        for (const int item : items)
            selection.AddItem(item);
        return;
    }
    Selection left;
    for (const int item : selection)
        if (items.TestItem(item) == -1)
            left.AddItemMulti(item);
    selection = std::move(left);
}

void SetSelected(World& world, const std::vector<uint32_t>& ids, bool state) {
    Selection brushes, entities;
    for (const uint32_t id : ids) {
        const int b = world.GetBrushIndex(world.GetBrushFromID(id));
        const int e = b == -1 ? world.GetEntityIndex(world.GetEntityFromID(id)) : -1;
        if (b != -1) {
            world.brush[static_cast<size_t>(b)]->is_selected = state;
            brushes.AddItem(b);
        } else if (e != -1)
            entities.AddItem(e);
    }
    AddOrRemove(world.brush_selection, brushes, state);
    AddOrRemove(world.entity_selection, entities, state);
    FollowGroups(world, brushes, entities);
    world.RefreshFirstSelected();
    GetFrontEnd().SelectionChanged();
}

void MarkVertices(World& world, const std::vector<uint32_t>& indices, bool state) {
    for (const uint32_t i : indices)
        if (i < world.so_vertex.size())
            world.so_vertex[i].selected = state;
}

void TellOfObjects(World& world) {
    GetFrontEnd().EntityTypesChanged();
    GetFrontEnd().CountsChanged();
    GetFrontEnd().SelectionChanged();
    GetFrontEnd().SelectionRestored(world.IsSomethingSelected());
}

} // namespace

CUndoActionDelete::CUndoActionDelete() : CUndoAction(UA_DELETE) {}

CUndoActionDelete::~CUndoActionDelete() = default;

std::string CUndoActionDelete::GetActionDescription() const { return CountSentence("Delete", objects.size()); }

std::string CUndoActionDelete::DescribeUndoing() const { return CountSentence("Create", objects.size()); }

void CUndoActionDelete::Undo(World& world) {
    world.ClearSelection();
    std::unordered_set<uint32_t> returned;
    for (const auto& copy : objects) {
        const BaseObject* created = copy->Create(world);
        if (!created) {
            copy->id = NO_OBJECT_ID;
            continue;
        }
        returned.insert(copy->id);
        if (copy->IsBrush())
            world.SetBrushSelection(world.GetBrushCount() - 1, true);
        else
            world.entity_selection.AddItem(world.GetEntityCount() - 1);
    }
    if (relations)
        relations->Restore(world, returned);
    world.RefreshFirstSelected();
    TellOfObjects(world);
}

std::unique_ptr<CUndoAction> CUndoActionDelete::MakeInverse() const { return std::make_unique<CUndoActionCreate>(); }

void CUndoActionDelete::CreateRedo(CUndoAction& redo, World& world) {
    for (const auto& copy : objects)
        redo.AddID(copy->id, world);
}

void CUndoActionDelete::AddObject(BaseObject& object, World& world) {
    if (GetFrontEnd().IsFullUndo() && !relations)
        relations = std::make_unique<SceneRelations>(world);
    objects.push_back(std::make_unique<ObjectCopy>(object, world));
}

void CUndoActionDelete::AddID(uint32_t id, World& world) {
    BaseObject* object = id == NO_OBJECT_ID ? nullptr : BaseObject::GetObjectFromID(id);
    if (object)
        AddObject(*object, world);
}

void CUndoActionDelete::RenameIDs(const IdRenaming& renamed) {
    for (const auto& copy : objects)
        copy->RenameIDs(renamed);
    if (relations)
        relations->RenameIDs(renamed);
}

std::string CUndoActionMove::GetActionDescription() const { return vertex ? "Move vertices." : "Move objects."; }

void CUndoActionMove::Undo(World& world) {
    if (vertex) {
        world.SOVertexMove(delta);
        return;
    }
    world.MoveBrush(delta);
    world.MoveEntity(delta);
}

std::unique_ptr<CUndoAction> CUndoActionMove::MakeInverse() const {
    return std::make_unique<CUndoActionMove>(-delta, vertex);
}

std::string CUndoActionRotate::GetActionDescription() const { return Format("Rotate objects in view %d.", view); }

void CUndoActionRotate::Undo(World& world) { world.RotateBrush(angle, view); }

std::unique_ptr<CUndoAction> CUndoActionRotate::MakeInverse() const {
    return std::make_unique<CUndoActionRotate>(-angle, view);
}

void CUndoActionCommon::CreateRedo(CUndoAction& redo, World& world) {
    for (const uint32_t id : objects)
        redo.AddID(id, world);
}

void CUndoActionCommon::AddObject(BaseObject& object, World&) { objects.push_back(object.GetObjectID()); }

void CUndoActionCommon::AddID(uint32_t id, World&) { objects.push_back(id); }

void CUndoActionCommon::RenameIDs(const IdRenaming& renamed) {
    for (uint32_t& id : objects)
        id = renamed(id);
}

std::string CUndoActionCreate::GetActionDescription() const { return CountSentence("Create", objects.size()); }

std::string CUndoActionCreate::DescribeUndoing() const { return CountSentence("Delete", objects.size()); }

void CUndoActionCreate::Undo(World& world) {
    world.ClearSelection();
    world.DeleteObjects({objects.begin(), objects.end()});
    GetFrontEnd().SelectionRestored(false);
}

std::unique_ptr<CUndoAction> CUndoActionCreate::MakeInverse() const { return std::make_unique<CUndoActionDelete>(); }

std::string CUndoActionSelect::GetActionDescription() const { return CountSentence("Select", objects.size()); }

std::string CUndoActionSelect::DescribeUndoing() const { return CountSentence("Deselect", objects.size()); }

void CUndoActionSelect::Undo(World& world) {
    if (vertex) {
        MarkVertices(world, objects, false);
        return;
    }
    SetSelected(world, objects, false);
    GetFrontEnd().SelectionRestored(world.IsSomethingSelected());
}

std::unique_ptr<CUndoAction> CUndoActionSelect::MakeInverse() const {
    return std::make_unique<CUndoActionDeselect>(vertex);
}

void CUndoActionSelect::RenameIDs(const IdRenaming& renamed) {
    if (!vertex)
        CUndoActionCommon::RenameIDs(renamed);
}

std::string CUndoActionDeselect::GetActionDescription() const { return CountSentence("Deselect", objects.size()); }

std::string CUndoActionDeselect::DescribeUndoing() const { return CountSentence("Select", objects.size()); }

void CUndoActionDeselect::Undo(World& world) {
    if (vertex) {
        MarkVertices(world, objects, true);
        return;
    }
    SetSelected(world, objects, true);
    GetFrontEnd().SelectionRestored(world.IsSomethingSelected());
}

std::unique_ptr<CUndoAction> CUndoActionDeselect::MakeInverse() const {
    return std::make_unique<CUndoActionSelect>(vertex);
}

void CUndoActionDeselect::RenameIDs(const IdRenaming& renamed) {
    if (!vertex)
        CUndoActionCommon::RenameIDs(renamed);
}
