// What undo keeps of the scene: copies of objects apart from the world, and how objects refer to each other.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_set>
#include <utility>
#include <vector>

#include "scene/BaseObject.h"
#include "scene/DecalCutting.h"
#include "scene/UndoBuffer.h"
#include "scene/World.h"

// An object as it was, and its id. It has no id of its own. It names its materials, as the world's table of materials
// may be renumbered meanwhile. Whether it is selected, and what the compile made of it, are no part of it.
class ObjectCopy {
public:
    ObjectCopy(const BaseObject& src, const World& world);

    // A new object at the end of its table, under the id, or under a new one where the id is taken by now. Null if the
    // table is full.
    BaseObject* Create(World& world);
    bool Restore(BaseObject& live, World& world) const; // in place; false if it is of another kind
    bool Equals(const BaseObject& live, const World& world) const;
    void RenameIDs(const IdRenaming& renamed);
    bool IsBrush() const { return object->GetGroupID() == OBJECT_BRUSH; }

    uint32_t id;

private:
    struct UsedMaterial {
        int32_t index;
        MaterialRow row;
    };
    void NoteMaterials(const Brush& src, const World& world);
    void RestoreDecals(Brush& restored, World& world) const;
    void FindMaterials(Brush& restored, World& world) const;
    const MaterialRow* MaterialOf(int32_t index) const; // null: none
    bool SameSurface(const Surface& copy, const Surface& live, const World& world) const;

    std::unique_ptr<BaseObject> object;
    std::vector<UsedMaterial> materials;
    std::unordered_set<uint32_t> decals; // that it bears: a clone bears none though it lies where they are
    int curve_detail;                    // these two of the world when the copy was taken
    uint32_t last_decal_id;
};

// Members of a group, or the selection, by id in their order.
struct ObjectIds {
    std::vector<uint32_t> brushes, entities;
    bool operator==(const ObjectIds&) const = default;

    ObjectIds() = default;
    ObjectIds(const World& world, const Selection& brush_indices, const Selection& entity_indices);
    // As indices; ids that name nothing are left out.
    ObjectGroupLists Find(const World& world) const;
    void RenameIDs(const IdRenaming& renamed);
    int MemberCount() const { return static_cast<int>(brushes.size() + entities.size()); }
};

using GroupIds = std::vector<ObjectIds>;
GroupIds GroupsByIds(const World& world);
void SetGroups(World& world, const GroupIds& groups); // groups without members are left out

// Links, groups and decals of the whole level, so that objects which come back get back their place in them.
class SceneRelations {
public:
    explicit SceneRelations(const World& world);
    // Links, memberships and decals of these objects that a deletion has taken, and only those, come back.
    void Restore(World& world, const std::unordered_set<uint32_t>& returned) const;
    void RenameIDs(const IdRenaming& renamed);

private:
    void RestoreLinks(const std::unordered_set<uint32_t>& returned) const;

    std::vector<std::pair<uint32_t, std::vector<uint32_t>>> links; // of each object that has some
    GroupIds groups;
    DecalState decals;
};
