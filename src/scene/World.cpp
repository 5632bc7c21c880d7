#include "scene/World.h"

#include <algorithm>
#include <mutex>
#include <shared_mutex>

#include "foundation/Desktop.h"
#include "foundation/Strings.h"
#include "render/Textures.h"
#include "scene/FrontEnd.h"
#include "scene/TerrainStroke.h"
#include "scene/Undo.h"

namespace {

std::shared_mutex places_mutex; // of World::places

const MaterialSource NO_MATERIALS;
constexpr uint32_t DARKMAP_SIDE = 4;

std::string LimitSentence(const char* what, int limit) {
    return Format("The level cannot hold more than %d %s", limit, what);
}

// For what the user does: each refusal is told.
void RefuseWithBox(const char* what, int limit) { GetDesktop().MessageBox(LimitSentence(what, limit), "Warning"); }

} // namespace

World::World(const MaterialSource* source) : material(1), material_source(source ? source : &NO_MATERIALS) {
    decal_color = MakeColor(255, 255, 255, 255);
    darkmap = crTCreate(DARKMAP_SIDE, DARKMAP_SIDE, 32, TL_DARKMAP, TEX_NORMAL, 0, false);
    const std::vector<uint32_t> black(DARKMAP_SIDE * DARKMAP_SIDE, 0);
    crTFillTexture(darkmap, black.data(), 0, 0);
    AddDefaultGroups();
}

World::~World() {
    brush.clear();
    entity.clear();
    // The icons of entities belong to their definitions, which outlive a world.
    crTDestroy(darkmap);
    crTDestroyAll(TL_MATERIAL | TL_LIGHTMAP);
}

// The places are learned together, but for a newcomer at the end. The threads of a compile ask for them too.
template <class T>
int World::PlaceOf(const std::vector<std::unique_ptr<T>>& list, const T* object) const {
    const auto stands_at = [&](int place) {
        return static_cast<size_t>(place) < list.size() && list[static_cast<size_t>(place)].get() == object;
    };
    if (!object || list.empty())
        return -1;
    {
        const std::shared_lock lock(places_mutex);
        const auto known = places.find(object);
        if (known != places.end() && stands_at(known->second))
            return known->second;
    }
    const std::unique_lock lock(places_mutex);
    const int last = static_cast<int>(list.size()) - 1;
    if (stands_at(last))
        return places[object] = last;
    const auto found = std::find_if(list.begin(), list.end(), [object](const auto& p) { return p.get() == object; });
    if (found == list.end())
        return -1;
    places.clear();
    for (size_t b = 0; b < brush.size(); ++b)
        places[brush[b].get()] = static_cast<int>(b);
    for (size_t e = 0; e < entity.size(); ++e)
        places[entity[e].get()] = static_cast<int>(e);
    return static_cast<int>(found - list.begin());
}

int World::GetBrushIndex(const Brush* b) const { return PlaceOf(brush, b); }

int World::GetEntityIndex(const Entity* e) const { return PlaceOf(entity, e); }

Brush* World::GetBrushFromID(uint32_t id) const {
    BaseObject* object = BaseObject::GetObjectFromID(id);
    return object && object->GetGroupID() == OBJECT_BRUSH ? object->GetBrush() : nullptr;
}

Entity* World::GetEntityFromID(uint32_t id) const {
    BaseObject* object = BaseObject::GetObjectFromID(id);
    return object && object->GetGroupID() == OBJECT_ENTITY ? object->GetEntity() : nullptr;
}

Entity* World::GetEntityFromName(std::string_view variable_name) const {
    for (const auto& e : entity)
        if (e->variable_name == variable_name)
            return e.get();
    return nullptr;
}

Brush* World::CreateBrush(const BrushShape& shape) {
    if (GetBrushCount() >= MAX_BRUSHES) {
        RefuseWithBox("brushes", MAX_BRUSHES);
        return nullptr;
    }
    BrushShape detailed = shape;
    detailed.curve_detail = curve_detail;
    Brush* b = AddBrush(std::make_unique<Brush>(detailed));
    for (size_t c = 0; c < b->custom_material_names.size(); ++c) {
        TEX_INFO& info = b->curved_surfaces[c].texture;
        info.index = std::max(GetNewMaterial("brushes", b->custom_material_names[c]), 0);
        const SIZE size = TextureSize(info.index);
        info.size = {static_cast<float>(size.cx), static_cast<float>(size.cy)};
    }
    b->custom_material_names.clear();
    brush_selection.AddItem(b->index);
    b->GenerateNewObjectID();
    first_selected_id = b->GetObjectID();
    auto creation = std::make_unique<CUndoActionCreate>();
    creation->AddObject(*b, *this);
    AddUndoAction(std::move(creation));
    GetFrontEnd().CountsChanged();
    GetFrontEnd().SelectionChanged();
    return b;
}

Brush* World::AddBrush(std::unique_ptr<Brush> b) {
    if (GetBrushCount() >= MAX_BRUSHES) {
        NoticeOnce(LimitSentence("brushes", MAX_BRUSHES));
        return nullptr;
    }
    b->index = GetBrushCount();
    brush.push_back(std::move(b));
    return brush.back().get();
}

Entity* World::AddEntity(std::unique_ptr<Entity> e) {
    if (GetEntityCount() >= MAX_ENTITIES) {
        NoticeOnce(LimitSentence("entities", MAX_ENTITIES));
        return nullptr;
    }
    entity.push_back(std::move(e));
    return entity.back().get();
}

Entity* World::NewEntityCreated(std::unique_ptr<Entity> e, uint32_t flags) {
    constexpr uint32_t SELECT_ALONE = 1;
    if (GetEntityCount() >= MAX_ENTITIES) {
        RefuseWithBox("entities", MAX_ENTITIES);
        return nullptr;
    }
    Entity* created = AddEntity(std::move(e));
    created->GenerateNewObjectID();
    GetFrontEnd().EntityTypesChanged();
    GetFrontEnd().CountsChanged();
    if (flags & SELECT_ALONE) {
        entity_selection.ClearList();
        entity_selection.AddItem(GetEntityCount() - 1);
        first_selected_id = created->GetObjectID();
        GetFrontEnd().SelectionChanged();
    }
    return created;
}

void World::GenerateIDs() {
    constexpr uint32_t NO_OBJECT_ID_EITHER = 0xFFFFFFFE;
    const auto generate = [](BaseObject& object) {
        if (object.GetObjectID() == NO_OBJECT_ID || object.GetObjectID() == NO_OBJECT_ID_EITHER)
            object.GenerateNewObjectID();
    };
    for (const auto& b : brush)
        generate(*b);
    for (const auto& e : entity)
        generate(*e);
}

bool World::ValidateIDs() {
    bool shared = false;
    const auto validate = [&shared](BaseObject& object) {
        const uint32_t id = object.GetObjectID();
        BaseObject* owner = BaseObject::GetObjectFromID(id);
        if (owner == &object && id != NO_OBJECT_ID)
            return;
        object.GenerateNewObjectID();
        if (owner && id != NO_OBJECT_ID) {
            shared = true;
            owner->SetObjectID(id); // giving up the id took the owner's entry out of the table
        }
    };
    for (const auto& b : brush)
        validate(*b);
    for (const auto& e : entity)
        validate(*e);
    return shared;
}

void World::ChangeBrushColor(const D3DCOLORVALUE& color) {
    for (const int b : brush_selection)
        brush[static_cast<size_t>(b)]->ChangeColor(color);
}

void World::ChangeCurveDetail(bool higher) {
    constexpr int FINEST = 0, COARSEST = 3;
    if (curve_detail == (higher ? FINEST : COARSEST))
        return;
    curve_detail += higher ? -1 : 1;
    for (const auto& b : brush)
        b->ChangeCurveDetail(curve_detail);
    for (const auto& b : brush)
        if (!b->curved_surfaces.empty())
            b->ReplaceDecals();
}

void World::MoveEntity(const D3DVECTOR& v) {
    for (const int e : entity_selection) {
        Entity& moved = *entity[static_cast<size_t>(e)];
        moved.SetPosition(moved.position + v);
    }
}

void World::ConvertSelectedEntities(const Entity& new_kind) {
    for (const int e : entity_selection) {
        Entity& converted = *entity[static_cast<size_t>(e)];
        const Entity old(converted);
        converted = new_kind;
        converted.position = old.position;
        converted.variable_name = old.variable_name;
        for (EntityParameter& parameter : converted.parameter) {
            const EntityParameter* source = old.GetParameterStr(parameter.name);
            if (!source)
                continue;
            const bool is_choice =
                std::any_of(parameter.constant.begin(), parameter.constant.end(),
                            [&](const std::string& choice) { return EqualNoCase(choice, source->p_text); });
            if (parameter.type != EPT_CONSTANT || is_choice)
                parameter.TakeValue(*source);
        }
    }
}

void World::ChangeEntityParameter(const EntityParameter& value, const char* entity_type, bool update_views) {
    for (const int e : entity_selection) {
        Entity& changed = *entity[static_cast<size_t>(e)];
        EntityParameter* parameter = changed.GetParameterStr(value.name);
        if (parameter && (!entity_type || changed.IsType(entity_type)))
            parameter->TakeValue(value);
    }
    if (update_views) {
        GetFrontEnd().RedrawAllViews();
        GetFrontEnd().MarkFileAsDirty(true);
    }
}

void World::AddDefaultGroups() {
    for (int i = 0; i < 2; ++i) {
        auto group_of_actors = std::make_unique<CActorGroup>();
        group_of_actors->name = i == 0 ? "Player" : "Bots";
        group_of_actors->SetType(0, i == 0 ? AGT_Ally : AGT_Enemy);
        group_of_actors->SetType(1, i == 1 ? AGT_Ally : AGT_Enemy);
        actor_groups.push_back(std::move(group_of_actors));
    }
}
