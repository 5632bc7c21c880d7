#include "scene/BaseObject.h"

#include "foundation/Strings.h"
#include "scene/Entity.h"

UHashTable<8192, BaseObject*> BaseObject::objects;
uint32_t BaseObject::last_object_id = 0;

namespace {

// Ids above this are not entered in the table, all but NO_OBJECT_ID.
constexpr uint32_t MAX_REGISTERED_ID = 0x7FFFFFFF;

} // namespace

BaseObject::BaseObject(const BaseObject& src) { CopyBase(src); }

BaseObject::~BaseObject() {
    objects.Remove(object_id);
    BaseObject* entered = nullptr;
    if (entered_id != object_id && objects.Get(entered_id, entered) && entered == this)
        objects.Remove(entered_id);
}

void BaseObject::CopyBase(const BaseObject& src) {
    class_id = src.class_id;
    group_id = src.group_id;
    linked_objects = src.linked_objects;
    path = src.path;
    target_path = src.target_path;
}

void BaseObject::InitFromCopy(const BaseObject& src) {
    CopyBase(src);
    if (src.object_id != NO_OBJECT_ID)
        object_id = src.object_id;
}

std::unique_ptr<BaseObject> BaseObject::CreateFromCopy(uint32_t id) const {
    std::unique_ptr<BaseObject> copy = GetCopy();
    copy->SetObjectID(id);
    return copy;
}

std::unique_ptr<BaseObject> BaseObject::GetCopy() const { return std::make_unique<BaseObject>(*this); }

void BaseObject::SetObjectID(uint32_t id) {
    objects.Remove(object_id);
    object_id = id;
    if (id <= MAX_REGISTERED_ID || id == NO_OBJECT_ID) {
        objects.Add(id, this);
        entered_id = id;
    }
}

void BaseObject::GenerateNewObjectID() { SetObjectID(FindFreeObjectID()); }

uint32_t BaseObject::FindFreeObjectID() {
    do
        ++last_object_id;
    while (GetObjectFromID(last_object_id));
    return last_object_id;
}

BaseObject* BaseObject::GetObjectFromID(uint32_t id) {
    BaseObject* object = nullptr;
    objects.Get(id, object);
    return object;
}

bool BaseObject::AddLinkedObjectID(uint32_t object) {
    if (HasLinkedObjectID(object))
        return false;
    linked_objects.Add(object);
    return true;
}

bool BaseObject::RemoveLinkedObjectID(uint32_t object) {
    const int index = linked_objects.GetIndex(object);
    linked_objects.Remove(index);
    return index != -1;
}

Entity* BaseObject::FindLinkedEntity(const char* type_word) const {
    for (const uint32_t id : linked_objects) {
        BaseObject* object = id == NO_OBJECT_ID ? nullptr : GetObjectFromID(id);
        Entity* entity = object ? object->GetEntity() : nullptr;
        if (entity && entity->IsType(type_word))
            return entity;
    }
    return nullptr;
}
