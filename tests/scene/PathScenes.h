// Paths for tests: points that belong to an object.
#pragma once

#include <initializer_list>
#include <memory>
#include <utility>

#include "scene/MoviePath.h"
#include "scene/World.h"

using PointValues = std::initializer_list<std::pair<const char*, float>>;

// At the end of the owner's path, or of its target path.
inline Entity& AddPoint(World& world, BaseObject& owner, bool target, const D3DVECTOR& position,
                        PointValues values = {}) {
    auto point = std::make_unique<Entity>();
    point->name = target ? "target_point" : "object_point";
    point->str_type = target ? "PATH_POINT_TGT" : "PATH_POINT_POS";
    point->position = position;
    point->model_size = {2, 2, 2};
    point->path_parent_id = owner.GetObjectID();
    for (const auto& [name, value] : values)
        SetPointParameter(*point, name, value);
    point->GenerateNewObjectID();
    (target ? owner.target_path : owner.path).Add(point->GetObjectID());
    return *world.AddEntity(std::move(point));
}

inline Entity& AddOwner(World& world, const char* name = "camera") {
    auto owner = std::make_unique<Entity>();
    owner->name = name;
    owner->str_type = "CAMERA";
    owner->model_size = {2, 2, 2};
    owner->GenerateNewObjectID();
    return *world.AddEntity(std::move(owner));
}

inline void SelectEntity(World& world, const Entity& entity) {
    world.entity_selection.AddItem(world.GetEntityIndex(&entity));
}
