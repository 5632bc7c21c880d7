// Deletion, of one object or of the selection, with all that refers to it.
#include <algorithm>

#include "scene/FrontEnd.h"
#include "scene/World.h"

namespace {

// Erases the marked elements; the others keep their order.
template <class T>
void EraseMarked(std::vector<std::unique_ptr<T>>& list, const std::vector<bool>& gone) {
    size_t kept = 0;
    for (size_t i = 0; i < list.size(); ++i)
        if (!gone[i])
            list[kept++] = std::move(list[i]);
    list.resize(kept);
}

// How many marked elements stand before each place.
std::vector<int> CountBefore(const std::vector<bool>& gone) {
    std::vector<int> before(gone.size() + 1);
    for (size_t i = 0; i < gone.size(); ++i)
        before[i + 1] = before[i] + gone[i];
    return before;
}

// Takes the marked indices out of a list and moves those behind them down.
void Renumber(Selection& selection, const std::vector<bool>& gone, const std::vector<int>& gone_before) {
    if (selection.GetItemCount() == 0)
        return;
    Selection kept;
    for (const int item : selection) {
        const size_t place = item < 0 ? 0 : std::min(static_cast<size_t>(item), gone.size());
        if (item < 0 || place == gone.size() || !gone[place])
            kept.AddItemMulti(item - gone_before[place]);
    }
    selection = std::move(kept);
}

template <class T>
void CollectIds(const std::vector<std::unique_ptr<T>>& list, const std::vector<bool>& gone,
                std::unordered_set<uint32_t>& ids) {
    for (size_t i = 0; i < gone.size(); ++i)
        if (gone[i] && list[i]->GetObjectID() != NO_OBJECT_ID)
            ids.insert(list[i]->GetObjectID());
}

std::vector<bool> Marked(const Selection& selection, size_t count) {
    std::vector<bool> marked(count);
    for (const int i : selection)
        marked[static_cast<size_t>(i)] = true;
    return marked;
}

} // namespace

void World::UnlinkObjects(const std::vector<BaseObject*>& objects, const std::unordered_set<uint32_t>& ids) {
    for (BaseObject* object : objects)
        for (int i = object->GetLinkedObjectsCount() - 1; i >= 0; --i)
            if (ids.count(object->GetLinkedObjectID(i)))
                object->RemoveLinkedObjectIDAtIndex(i);
}

void World::UnlinkFromAll(const std::unordered_set<uint32_t>& ids) {
    std::vector<BaseObject*> objects;
    for (const auto& b : brush)
        objects.push_back(b.get());
    for (const auto& e : entity)
        objects.push_back(e.get());
    UnlinkObjects(objects, ids);
}

void World::EraseObjects(const std::vector<bool>& gone_brushes, const std::vector<bool>& gone_entities) {
    std::unordered_set<uint32_t> ids;
    CollectIds(brush, gone_brushes, ids);
    CollectIds(entity, gone_entities, ids);
    if (!ids.empty())
        UnlinkFromAll(ids);
    bool bore_decals = false;
    for (size_t b = 0; b < gone_brushes.size(); ++b)
        bore_decals = bore_decals || (gone_brushes[b] && !brush[b]->decal_list.empty());
    if (!gone_brushes.empty()) {
        EraseMarked(brush, gone_brushes);
        RenumberBrushes(gone_brushes);
    }
    if (!gone_entities.empty()) {
        EraseMarked(entity, gone_entities);
        const std::vector<int> gone_before = CountBefore(gone_entities);
        for (ObjectGroupLists& lists : group)
            Renumber(lists.entities, gone_entities, gone_before);
        Renumber(entity_selection, gone_entities, gone_before);
        GetFrontEnd().EntityTypesChanged();
    }
    if (bore_decals)
        FlushDecalTemplates();
    GetFrontEnd().CountsChanged();
}

void World::RenumberBrushes(const std::vector<bool>& gone) {
    const std::vector<int> gone_before = CountBefore(gone);
    for (ObjectGroupLists& lists : group)
        Renumber(lists.brushes, gone, gone_before);
    for (const auto& b : brush)
        Renumber(b->tn_list, gone, gone_before);
    Renumber(brush_selection, gone, gone_before);
    Renumber(b_list, gone, gone_before);
    if (selected_surface_brush < 0)
        return;
    const auto place = static_cast<size_t>(selected_surface_brush);
    if (place >= gone.size() || gone[place])
        DeselectSurface();
    else
        selected_surface_brush -= gone_before[place];
}

void World::DeleteBrush(int i) {
    if (i < 0 || i >= GetBrushCount())
        return;
    std::vector<bool> gone(brush.size());
    gone[static_cast<size_t>(i)] = true;
    EraseObjects(gone, {});
    DestroySmallGroups();
    RefreshFirstSelected();
    GetFrontEnd().SelectionChanged();
}

void World::DeleteEntity(int i) {
    if (i < 0 || i >= GetEntityCount())
        return;
    std::vector<bool> gone(entity.size());
    gone[static_cast<size_t>(i)] = true;
    EraseObjects({}, gone);
    DestroySmallGroups();
    RefreshFirstSelected();
    GetFrontEnd().SelectionChanged();
}

void World::DeleteEntityByID(uint32_t id) { DeleteEntity(GetEntityIndex(GetEntityFromID(id))); }

void World::DeleteObjects(const std::unordered_set<uint32_t>& ids) {
    const auto mark = [&ids](const auto& list) {
        std::vector<bool> gone;
        for (size_t i = 0; i < list.size(); ++i)
            if (list[i]->GetObjectID() != NO_OBJECT_ID && ids.count(list[i]->GetObjectID())) {
                gone.resize(list.size());
                gone[i] = true;
            }
        return gone;
    };
    if (ids.empty())
        return;
    const std::vector<bool> gone_brushes = mark(brush), gone_entities = mark(entity);
    if (gone_brushes.empty() && gone_entities.empty())
        return;
    const auto members = [this] {
        int count = 0;
        for (const ObjectGroupLists& lists : group)
            count += lists.MemberCount();
        return count;
    };
    const int members_before = members();
    EraseObjects(gone_brushes, gone_entities);
    if (members() != members_before) // else a group of one was so before, too
        DestroySmallGroups();
    RefreshFirstSelected();
    GetFrontEnd().SelectionChanged();
}

void World::DeleteSelection() {
    if (selected_surface_brush != -1) {
        RemoveTextureFromSurface(nullptr, nullptr);
        return;
    }
    std::vector<uint32_t> owners; // of the paths that lose a point
    for (const int e : entity_selection)
        owners.push_back(entity[static_cast<size_t>(e)]->path_parent_id);
    std::vector<bool> gone_brushes, gone_entities;
    if (brush_selection.GetItemCount() > 0)
        gone_brushes = Marked(brush_selection, brush.size());
    if (entity_selection.GetItemCount() > 0)
        gone_entities = Marked(entity_selection, entity.size());
    EraseObjects(gone_brushes, gone_entities);
    group_selection.ClearList();
    DestroySmallGroups();
    if (!owners.empty() || !BaseObject::GetObjectFromID(first_selected_id))
        first_selected_id = NO_OBJECT_ID;
    SelectPathOwners(owners);
    FlushDecalTemplates();
    GetFrontEnd().SelectionChanged();
}

void World::SelectPathOwners(const std::vector<uint32_t>& ids) {
    for (const uint32_t id : ids) {
        if (id == NO_OBJECT_ID)
            continue;
        SetBrushSelection(GetBrushIndex(GetBrushFromID(id)), true);
        const int e = GetEntityIndex(GetEntityFromID(id));
        if (e != -1)
            entity_selection.AddItem(e);
    }
}
