// New numbers for all objects, and the step that gives the old ones back.
#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "foundation/Desktop.h"
#include "scene/FrontEnd.h"
#include "scene/Undo.h"

namespace {

constexpr uint32_t NO_OBJECT = 0x80000000; // as are all from here on

using NewIds = UHashTable<1023, uint32_t>;

std::vector<BaseObject*> AllObjects(const World& world) {
    std::vector<BaseObject*> objects;
    for (const auto& e : world.entity)
        objects.push_back(e.get());
    for (const auto& b : world.brush)
        objects.push_back(b.get());
    return objects;
}

using Links = std::vector<uint32_t>;

std::vector<Links> LinksOf(const std::vector<BaseObject*>& objects) {
    std::vector<Links> all(objects.size());
    for (size_t i = 0; i < objects.size(); ++i)
        for (int k = 0; k < objects[i]->GetLinkedObjectsCount(); ++k)
            all[i].push_back(objects[i]->GetLinkedObjectID(k));
    return all;
}

// Where the next free number is looked for.
uint32_t LastObjectID() {
    const uint32_t last = BaseObject::FindFreeObjectID() - 1;
    BaseObject::SetLastObjectID(last);
    return last;
}

// Ids that steps name although nothing bears them now: those of what is deleted or not made yet.
std::unordered_set<uint32_t> IdsOfSteps(World& world) {
    std::unordered_set<uint32_t> ids;
    const IdRenaming noted = [&ids](uint32_t id) {
        if (id < NO_OBJECT)
            ids.insert(id);
        return id;
    };
    world.undo_buffer.RenameIDs(noted);
    world.redo_buffer.RenameIDs(noted);
    return ids;
}

struct KeptLinks {
    Links now, former;
};

// Every id of one numbering and what it is in the other. Links may name ids of nothing, so that they are kept, too.
class CUndoActionReindex : public CUndoAction {
public:
    CUndoActionReindex() : CUndoAction(UA_CHANGE) {}
    bool IsEmpty() const override { return former.empty(); }
    std::string GetActionDescription() const override { return "Reindex object IDs."; }
    std::unique_ptr<CUndoAction> MakeInverse() const override { return std::make_unique<CUndoActionReindex>(); }
    void CreateRedo(CUndoAction& redo, World&) override { inverse = static_cast<CUndoActionReindex*>(&redo); }
    void Undo(World& world) override;
    void RenameIDs(const IdRenaming& renamed) override;
    // Of objects that have their new ids and links.
    void KeepLinks(const std::vector<BaseObject*>& objects, std::vector<Links> were);

    std::unordered_map<uint32_t, uint32_t> former; // by the id of now
    uint32_t last_id = 0;                          // of the other numbering

private:
    void GiveIDs(const std::vector<BaseObject*>& objects, const IdRenaming& renamed) const;

    std::unordered_map<uint32_t, KeptLinks> links; // by the id of now
    CUndoActionReindex* inverse = nullptr;
};

void CUndoActionReindex::RenameIDs(const IdRenaming& renamed) {
    std::unordered_map<uint32_t, uint32_t> ids;
    for (const auto& [id, was] : former)
        ids[renamed(id)] = was;
    former = std::move(ids);
    std::unordered_map<uint32_t, KeptLinks> lists;
    for (auto& [id, kept] : links) {
        for (uint32_t& link : kept.now)
            link = renamed(link);
        lists[renamed(id)] = std::move(kept);
    }
    links = std::move(lists);
}

void CUndoActionReindex::KeepLinks(const std::vector<BaseObject*>& objects, std::vector<Links> were) {
    std::vector<Links> now = LinksOf(objects);
    for (size_t i = 0; i < objects.size(); ++i)
        if (!were[i].empty())
            links[objects[i]->GetObjectID()] = {std::move(now[i]), std::move(were[i])};
}

void CUndoActionReindex::GiveIDs(const std::vector<BaseObject*>& objects, const IdRenaming& renamed) const {
    const std::vector<Links> now = LinksOf(objects);
    std::vector<uint32_t> ids;
    for (size_t i = 0; i < objects.size(); ++i) {
        const auto kept = links.find(objects[i]->GetObjectID());
        const bool untouched = kept != links.end() && kept->second.now == now[i];
        for (size_t k = 0; k < now[i].size(); ++k)
            objects[i]->SetLinkedObjectID(static_cast<int>(k), untouched ? kept->second.former[k] : renamed(now[i][k]));
        ids.push_back(renamed(objects[i]->GetObjectID()));
    }
    for (BaseObject* object : objects)
        object->SetObjectID(NO_OBJECT_ID);
    for (size_t i = 0; i < objects.size(); ++i)
        objects[i]->SetObjectID(ids[i]);
}

void CUndoActionReindex::Undo(World& world) {
    const std::vector<BaseObject*> objects = AllObjects(world);
    std::unordered_set<uint32_t> taken, used = IdsOfSteps(world);
    for (const BaseObject* object : objects)
        used.insert(object->GetObjectID());
    for (const auto& [id, was] : former) {
        taken.insert(was);
        used.insert(id);
    }
    const uint32_t last_of_now = LastObjectID();
    BaseObject::SetLastObjectID(std::max(last_id, last_of_now));
    // What is in neither numbering and has the id of something that returns gives way.
    const IdRenaming renamed = [&](uint32_t id) {
        if (const auto found = former.find(id); found != former.end())
            return found->second;
        if (id >= NO_OBJECT || taken.count(id) == 0)
            return id;
        uint32_t fresh;
        do
            fresh = BaseObject::FindFreeObjectID();
        while (taken.count(fresh) > 0 || used.count(fresh) > 0);
        former[id] = fresh;
        taken.insert(fresh);
        return fresh;
    };
    std::vector<Links> links_of_now = LinksOf(objects);
    GiveIDs(objects, renamed);
    world.first_selected_id = renamed(world.first_selected_id);
    world.undo_buffer.RenameIDs(renamed);
    world.redo_buffer.RenameIDs(renamed);
    if (inverse) {
        for (const auto& [id, was] : former)
            inverse->former[was] = id;
        inverse->last_id = last_of_now;
        inverse->KeepLinks(objects, std::move(links_of_now));
    }
    GetFrontEnd().SelectionChanged();
}

} // namespace

// What is deleted gets a fresh id too, so that no step can reach an object that has taken over its old one.
void World::RenameIDsOfUndo(const UHashTable<1023, uint32_t>& new_ids) {
    std::unordered_map<uint32_t, uint32_t> fresh;
    const IdRenaming renamed = [&](uint32_t old) {
        uint32_t id = old;
        if (old >= NO_OBJECT || new_ids.Get(old, id))
            return id;
        uint32_t& given = fresh[old];
        if (given == 0)
            given = BaseObject::FindFreeObjectID();
        return given;
    };
    undo_buffer.RenameIDs(renamed);
    redo_buffer.RenameIDs(renamed);
}

void World::ReindexObjectIDs() {
    const std::vector<BaseObject*> objects = AllObjects(*this);
    auto step = std::make_unique<CUndoActionReindex>();
    std::vector<Links> links = LinksOf(objects);
    step->last_id = LastObjectID();
    std::vector<uint32_t> old_ids;
    for (BaseObject* object : objects) {
        old_ids.push_back(object->GetObjectID());
        object->SetObjectID(NO_OBJECT_ID);
    }
    BaseObject::ResetObjectIDs();
    NewIds new_ids;
    for (size_t i = 0; i < objects.size(); ++i) {
        objects[i]->GenerateNewObjectID();
        if (old_ids[i] != NO_OBJECT_ID) {
            new_ids.Add(old_ids[i], objects[i]->GetObjectID());
            step->former[objects[i]->GetObjectID()] = old_ids[i];
        }
    }
    for (BaseObject* object : objects)
        for (int i = 0; i < object->GetLinkedObjectsCount(); ++i) {
            uint32_t id;
            if (new_ids.Get(object->GetLinkedObjectID(i), id))
                object->SetLinkedObjectID(i, id);
        }
    new_ids.Get(first_selected_id, first_selected_id);
    const bool full_undo = GetFrontEnd().IsFullUndo();
    for (const uint32_t id : full_undo ? IdsOfSteps(*this) : std::unordered_set<uint32_t>())
        if (!new_ids.KeyExists(id)) {
            const uint32_t fresh = BaseObject::FindFreeObjectID();
            new_ids.Add(id, fresh);
            step->former[fresh] = id;
        }
    RenameIDsOfUndo(new_ids);
    step->KeepLinks(objects, std::move(links));
    if (full_undo)
        AddUndoAction(std::move(step));
    GetDesktop().MessageBox("Reindexing done succesfully. Some external references (e.g. movies) may not function "
                            "properly after reindexing.",
                            "Marrowstead 2000");
}
