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

} // namespace

void World::UnlinkFromAll(const std::unordered_set<uint32_t>& ids) {
    const auto unlink = [&ids](BaseObject& object) {
        for (int i = object.GetLinkedObjectsCount() - 1; i >= 0; --i)
            if (ids.count(object.GetLinkedObjectID(i)))
                object.RemoveLinkedObjectIDAtIndex(i);
    };
    for (const auto& b : brush)
        unlink(*b);
    for (const auto& e : entity)
        unlink(*e);
}

void World::DeleteBrush(int i) {
    if (i < 0 || i >= GetBrushCount())
        return;
    UnlinkFromAll({brush[static_cast<size_t>(i)]->GetObjectID()});
    brush.erase(brush.begin() + i);
    if (selected_surface_brush == i)
        selected_surface_brush = -1;
    else if (selected_surface_brush > i)
        --selected_surface_brush;
}

void World::DeleteEntity(int i) {
    if (i < 0 || i >= GetEntityCount())
        return;
    UnlinkFromAll({entity[static_cast<size_t>(i)]->GetObjectID()});
    entity.erase(entity.begin() + i);
}

void World::DeleteEntityByID(uint32_t id) { DeleteEntity(GetEntityIndex(GetEntityFromID(id))); }

void World::DeleteSelection() {
    if (selected_surface_brush != -1) {
        RemoveTextureFromSurface(nullptr, nullptr);
        return;
    }
    DeleteSelectedBrushes();
    if (entity_selection.GetItemCount() > 0)
        DeleteSelectedEntities();
    if (!BaseObject::GetObjectFromID(first_selected_id))
        first_selected_id = NO_OBJECT_ID;
    GetFrontEnd().SelectionChanged();
}

void World::DeleteSelectedBrushes() {
    std::vector<bool> gone(brush.size());
    std::unordered_set<uint32_t> ids;
    for (const int b : brush_selection) {
        gone[static_cast<size_t>(b)] = true;
        ids.insert(brush[static_cast<size_t>(b)]->GetObjectID());
    }
    if (!ids.empty()) {
        UnlinkFromAll(ids);
        EraseMarked(brush, gone);
        RemoveFromGroups(gone, true);
    }
    DestroySmallGroups();
    brush_selection.ClearList();
}

void World::DeleteSelectedEntities() {
    std::vector<bool> gone(entity.size());
    std::unordered_set<uint32_t> ids, noted;
    std::vector<uint32_t> parents; // owners of the paths that lose a point
    for (const int e : entity_selection) {
        const Entity& deleted = *entity[static_cast<size_t>(e)];
        gone[static_cast<size_t>(e)] = true;
        ids.insert(deleted.GetObjectID());
        if (deleted.path_parent_id != NO_OBJECT_ID && BaseObject::GetObjectFromID(deleted.path_parent_id) &&
            noted.insert(deleted.path_parent_id).second)
            parents.push_back(deleted.path_parent_id);
    }
    UnlinkFromAll(ids);
    EraseMarked(entity, gone);
    RemoveFromGroups(gone, false);
    DestroySmallGroups();
    entity_selection.ClearList();
    first_selected_id = NO_OBJECT_ID;

    for (const uint32_t id : parents) {
        SetBrushSelection(GetBrushIndex(GetBrushFromID(id)), true);
        const int e = GetEntityIndex(GetEntityFromID(id));
        if (e != -1)
            entity_selection.AddItem(e);
    }
}
