// The common base of brushes and entities: an identity that is stable across saves, links, and path points.
// Objects refer to each other by id wherever the reference has to survive saving, undo and reindexing.
#pragma once

#include <cstdint>
#include <memory>

#include "foundation/HashTable.h"
#include "foundation/SimpleList.h"

class Brush;
class Entity;

inline constexpr uint32_t NO_OBJECT_ID = 0xFFFFFFFF;

enum ObjectGroup : uint32_t { OBJECT_BARE = 0, OBJECT_BRUSH = 1, OBJECT_ENTITY = 2 };

class BaseObject {
public:
    BaseObject() = default;
    BaseObject(const BaseObject& src); // the copy has no id
    virtual ~BaseObject();             // removes the table entry under its id
    BaseObject& operator=(const BaseObject&) = delete;

    virtual Brush* GetBrush() { return nullptr; }
    virtual Entity* GetEntity() { return nullptr; }
    virtual void InitFromCopy(const BaseObject& src); // takes over the id too, unless the source has none
    std::unique_ptr<BaseObject> CreateFromCopy(uint32_t id) const;
    virtual std::unique_ptr<BaseObject> GetCopy() const; // same class, no id

    void SetObjectID(uint32_t id); // enters the table; ids from 0x80000000 to 0xFFFFFFFE are stored only
    uint32_t GetObjectID() const { return object_id; }
    void GenerateNewObjectID();
    static uint32_t FindFreeObjectID(); // advances last_object_id, registers nothing
    static BaseObject* GetObjectFromID(uint32_t id);
    static void ResetObjectIDs() { last_object_id = 0; }
    static void SetLastObjectID(uint32_t id) { last_object_id = id; }

    uint32_t GetGroupID() const { return group_id; }

    bool AddLinkedObjectID(uint32_t object); // false if it is linked already
    bool RemoveLinkedObjectID(uint32_t object);
    bool HasLinkedObjectID(uint32_t object) const { return linked_objects.GetIndex(object) != -1; }
    int GetLinkedObjectsCount() const { return linked_objects.GetCount(); }
    uint32_t GetLinkedObjectID(int index) const { return linked_objects.Get(index); }
    void SetLinkedObjectID(int index, uint32_t id) { linked_objects.Set(index, id); }
    void RemoveLinkedObjectIDAtIndex(int index) { linked_objects.Remove(index); }
    void RemoveAllLinkedObjectsID() { linked_objects.Reset(); }
    // The first linked entity of this type word (any case), null if there is none.
    Entity* FindLinkedEntity(const char* type_word) const;

    float ComputePathTime(bool target) const; // seconds of path or target_path (scene/MoviePath.cpp)

    uint32_t class_id = 0;
    SimpleList<uint32_t> linked_objects;
    SimpleList<uint32_t> path;        // key-point entities of the object's own path
    SimpleList<uint32_t> target_path; // and of its look-at target's

protected:
    void CopyBase(const BaseObject& src); // all but the id

    uint32_t group_id = OBJECT_BARE;

private:
    uint32_t object_id = NO_OBJECT_ID;
    uint32_t entered_id = NO_OBJECT_ID; // the last key in the table: InitFromCopy changes the id but not the table

    static UHashTable<8192, BaseObject*> objects;
    static uint32_t last_object_id;
};
