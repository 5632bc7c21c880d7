// Links between the selected objects, and the names by which scripts find entities.
#include <unordered_set>
#include <utility>

#include "scene/FrontEnd.h"
#include "scene/World.h"

namespace {

std::unordered_set<uint32_t> IdsOf(const std::vector<BaseObject*>& objects) {
    std::unordered_set<uint32_t> ids;
    for (const BaseObject* object : objects)
        ids.insert(object->GetObjectID());
    return ids;
}

} // namespace

std::vector<BaseObject*> World::SelectedObjects() const {
    std::vector<BaseObject*> objects;
    for (const int b : brush_selection)
        objects.push_back(brush[static_cast<size_t>(b)].get());
    for (const int e : entity_selection)
        objects.push_back(entity[static_cast<size_t>(e)].get());
    return objects;
}

BaseObject* World::FirstSelected() const {
    if (first_selected_id != NO_OBJECT_ID)
        return IsObjectSelected(first_selected_id) ? BaseObject::GetObjectFromID(first_selected_id) : nullptr;
    if (entity_selection.GetItemCount() > 0)
        return entity[static_cast<size_t>(entity_selection.GetItem(0))].get();
    if (brush_selection.GetItemCount() > 0)
        return brush[static_cast<size_t>(brush_selection.GetItem(0))].get();
    return nullptr;
}

void World::Link(bool link_first, bool link_method_2) {
    BaseObject* first = link_first ? FirstSelected() : nullptr;
    const std::vector<BaseObject*> selected = SelectedObjects();
    const int brushes = brush_selection.GetItemCount(), entities = entity_selection.GetItemCount();
    if (first) {
        for (BaseObject* other : selected) {
            if (other == first)
                continue;
            if (link_method_2)
                other->AddLinkedObjectID(first->GetObjectID());
            else
                first->AddLinkedObjectID(other->GetObjectID());
        }
    } else if (entities == 1 && brushes > 0) {
        for (int i = 0; i < brushes; ++i)
            selected[static_cast<size_t>(i)]->AddLinkedObjectID(selected.back()->GetObjectID());
    } else if (brushes == 0)
        for (size_t i = 1; i < selected.size(); ++i)
            selected[i - 1]->AddLinkedObjectID(selected[i]->GetObjectID());
    GetFrontEnd().RedrawAllViews();
}

void World::Unlink() {
    const std::vector<BaseObject*> selected = SelectedObjects();
    UnlinkObjects(selected, IdsOf(selected));
    GetFrontEnd().RedrawAllViews();
}

void World::Changelink() {
    const std::vector<BaseObject*> selected = SelectedObjects();
    const std::unordered_set<uint32_t> ids = IdsOf(selected);
    std::vector<std::pair<BaseObject*, uint32_t>> reversed; // who gets a link to whom
    for (BaseObject* from : selected)
        for (const uint32_t id : from->linked_objects)
            if (ids.count(id))
                reversed.emplace_back(BaseObject::GetObjectFromID(id), from->GetObjectID());
    UnlinkObjects(selected, ids);
    for (const auto& [object, id] : reversed)
        if (object)
            object->AddLinkedObjectID(id);
    GetFrontEnd().RedrawAllViews();
}

void World::ChangeEntityVariableName(std::string_view variable_name) {
    for (const int e : entity_selection)
        entity[static_cast<size_t>(e)]->variable_name = variable_name;
}

const std::string* World::GetEntityVariableName() const {
    return entity_selection.GetItemCount() == 0
               ? nullptr
               : &entity[static_cast<size_t>(entity_selection.GetItem(0))]->variable_name;
}
