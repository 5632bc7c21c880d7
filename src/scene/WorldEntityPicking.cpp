// Picking of entities by a click or a rectangle.
#include <algorithm>

#include "render/Matrix.h"
#include "scene/FrontEnd.h"
#include "scene/World.h"
#include "scene/WorldPickingParts.h"

namespace {

constexpr float RAY_START = 100000.0f; // along the axis of an orthographic view

struct PickRay {
    D3DVECTOR from, direction;
};

PickRay MakeRay(const PickRequest& request) {
    const D3DVECTOR& p = request.world_position;
    switch (request.view) {
    case VIEW_TOP:
        return {{p.x, RAY_START, p.z}, {0, -1, 0}};
    case VIEW_FRONT:
        return {{p.x, p.y, -RAY_START}, {0, 0, 1}};
    case VIEW_LEFT:
        return {{RAY_START, p.y, p.z}, {-1, 0, 0}};
    default:
        crMUpdate();
        return {request.camera_position, s_math.GetSelectionRay(request.point, request.camera_position)};
    }
}

bool Shown(const Entity& e, const DisplayFilters& filters) {
    return filters.show_entities && filters.ShowsEntityType(e);
}

bool IsHit(const Entity& e, const PickRay& ray, const PickRequest& request) {
    return !e.IsHidden() && Shown(e, request.filters) &&
           s_math.BoxRayIntersectInner(ray.from, ray.direction, e.position + e.offset, e.model_size);
}

// The entity nearest to the camera by its position, in front of it; -1 if there is none.
int NearestEntity(const World& world, const PickRay& ray, const PickRequest& request) {
    int nearest = -1;
    float best = 0;
    for (int i = 0; i < world.GetEntityCount(); ++i) {
        const Entity& e = *world.entity[static_cast<size_t>(i)];
        const D3DVECTOR way = e.position - ray.from;
        if (!IsHit(e, ray, request) || !(DotProduct(way, ray.direction) >= 0))
            continue;
        const float distance = SquareMagnitude(way);
        if (nearest == -1 || distance < best) {
            nearest = i;
            best = distance;
        }
    }
    return nearest;
}

} // namespace

void World::PickEntity(int i, int group_index, bool select) {
    if (group_index != -1)
        PickGroup(group_index, select);
    if (select) {
        entity_selection.AddItem(i);
        return;
    }
    entity_selection.RemoveItem(i);
    GetFrontEnd().SetLastEntityPosition(entity[static_cast<size_t>(i)]->position);
}

bool World::EntityPointSelection(const PickRequest& request) {
    DeselectForPick(request.additive);
    const Selection brushes_before = brush_selection, entities_before = entity_selection;
    const PickRay ray = MakeRay(request);
    // Selected or not is asked of the selection before the click: a group under the pointer is not taken in by one
    // member and put out by the next.
    const auto take = [&](int i) {
        PickEntity(i, request.ignore_groups ? -1 : CheckGroups(-1, i), entities_before.TestItem(i) == -1);
    };
    if (request.view == VIEW_PERSPECTIVE) {
        const int nearest = NearestEntity(*this, ray, request);
        if (nearest != -1)
            take(nearest);
    } else
        for (int i = 0; i < GetEntityCount(); ++i) {
            if (!IsHit(*entity[static_cast<size_t>(i)], ray, request))
                continue;
            take(i);
            if (!request.multiple_entities)
                break;
        }
    if (request.movie_editing && entity_selection.GetItemCount() == 0)
        entity_selection = entities_before;
    return EndEntityPick(brushes_before, entities_before);
}

bool World::EndEntityPick(const Selection& brushes_before, const Selection& entities_before) {
    EndPick(brushes_before, entities_before);
    const bool any = entity_selection.GetItemCount() > 0;
    if (any && first_selected_id == NO_OBJECT_ID)
        first_selected_id = entity[static_cast<size_t>(entity_selection.GetItem(0))]->GetObjectID();
    GetFrontEnd().SelectionChanged();
    return any;
}

bool World::EntityDragBoxSelection(const Box& box, const PickRequest& request, bool all_entities) {
    DeselectForPick(request.additive);
    const Selection brushes_before = brush_selection, entities_before = entity_selection;
    const Box reach = WidenAlongView(box, request.view);
    const std::vector<int> newest = request.ignore_groups ? std::vector<int>(entity.size(), -1) : NewestGroups(false);
    const auto qualifies = [&](const Entity& e) {
        const D3DVECTOR center = e.position + e.offset;
        const bool of_kind = all_entities || entity_selection.GetItemCount() == 0 ||
                             e.IsType(entity[static_cast<size_t>(entity_selection.GetItem(0))]->str_type);
        return !e.IsHidden() && of_kind && (all_entities || Shown(e, request.filters)) &&
               (!request.movie_editing || IsMovieModeEntity(e.str_type)) && (e.model == EM_BOX || e.model == EM_MESH) &&
               s_math.BoxBoxIntersect(center - e.model_size, center + e.model_size, BoxMin(reach), BoxMax(reach));
    };
    for (int i = 0; i < GetEntityCount(); ++i)
        if (entity_selection.TestItem(i) == -1 && qualifies(*entity[static_cast<size_t>(i)]))
            PickEntity(i, newest[static_cast<size_t>(i)], true);
    return EndEntityPick(brushes_before, entities_before);
}
