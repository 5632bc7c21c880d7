#include "compiler/EntityVisibility.h"

#include <algorithm>
#include <unordered_map>

#include "compiler/SurfaceTriangle.h"
#include "foundation/Strings.h"

namespace {

constexpr float A_THIRD = 1.0f / 3.0f;
constexpr const char* WORLD_NAME = "world";
// Every cell has entities of these types: its own, or those named "world".
constexpr const char* DEFAULT_TYPES[VisibilityScene::DEFAULT_KINDS] = {"ENVIRONMENT", "AMBIENT_LIGHT",
                                                                       "SOUND_EFFECTOR"};

int DefaultKind(const Entity& entity) {
    for (int kind = 0; kind < VisibilityScene::DEFAULT_KINDS; ++kind)
        if (entity.IsType(DEFAULT_TYPES[kind]))
            return kind;
    return -1;
}

VisibilityScene::RayBrush MakeRayBrush(const Brush& brush) {
    VisibilityScene::RayBrush flat;
    flat.center = (BoxMin(brush.bbox) + BoxMax(brush.bbox)) * 0.5f;
    flat.radius = (BoxMax(brush.bbox) - BoxMin(brush.bbox)) * 0.5f;
    flat.object_id = brush.GetObjectID();
    return flat;
}

} // namespace

VisibilityScene::VisibilityScene(const WorldSubdivide& subdivision) : ws(subdivision) {
    for (const auto& brush : ws.world.brush)
        AddBrush(*brush);
    for (const PORTAL& portal : ws.portal)
        AddPortal(portal);
    AddEntities();
}

void VisibilityScene::AddBrush(const Brush& brush) {
    RayBrush flat = MakeRayBrush(brush);
    flat.first_triangle = static_cast<int>(triangles.size());
    flat.hides_entities = !brush.HasProperty(BP_SEE_THROUGH | BP_HIDDEN);
    flat.hides_triangles = !brush.HasProperty(BP_SEE_THROUGH) && !brush.FindLinkedEntity("BASIC_DOOR");
    flat.can_be_seen = !brush.IsPortalOrOccluder() && !brush.FindLinkedEntity("ENVIRONMENT");
    if (!brush.IsPortalOrOccluder())
        brush.ForEachSurface([&](const Surface& surface, int, bool) {
            if (ws.world.IsMaterialTransparent(surface.texture.index))
                return;
            for (const TRIANGLE& triangle : surface.tri_indices)
                if (SurfaceTriangle corners; corners.Take(surface, triangle))
                    triangles.push_back({{corners.v[0], corners.v[1], corners.v[2]}, corners.UnitNormal()});
        });
    flat.triangle_count = static_cast<int>(triangles.size()) - flat.first_triangle;
    brushes.push_back(flat);
}

void VisibilityScene::AddPortal(const PORTAL& portal) {
    RayBrush flat = MakeRayBrush(*ws.world.brush[static_cast<size_t>(portal.portalowner)]);
    flat.first_triangle = static_cast<int>(triangles.size());
    for (const auto& indices : portal.partindices)
        for (size_t k = 0; k < indices.size(); k += 3) {
            const D3DVECTOR &a = portal.bounds[indices[k]], &b = portal.bounds[indices[k + 1]],
                            &c = portal.bounds[indices[k + 2]];
            triangles.push_back({{a, b, c}, Normalize(CrossProduct(b - a, c - a))});
        }
    flat.triangle_count = static_cast<int>(triangles.size()) - flat.first_triangle;
    portals.push_back(flat);
}

void VisibilityScene::AddEntities() {
    const World& world = ws.world;
    std::unordered_map<const Entity*, int> position;
    for (int e = 0; e < world.GetEntityCount(); ++e)
        position.emplace(world.entity[static_cast<size_t>(e)].get(), e);
    for (int e = 0; e < world.GetEntityCount(); ++e) {
        const Entity& entity = *world.entity[static_cast<size_t>(e)];
        EntityRow& row = entities.emplace_back();
        row.traced = entity.trace_entity;
        row.clipped = ws.IsClipped(entity.position);
        row.is_eye = entity.IsType("VISIBILITY_EYE");
        row.one_cell_only = entity.one_cell_only;
        if (const Entity* eye = entity.FindLinkedEntity("VISIBILITY_EYE")) {
            row.has_eye = true;
            const auto found = position.find(eye);
            row.eye = found == position.end() ? -1 : found->second;
        }
        row.default_kind = DefaultKind(entity);
        if (row.default_kind != -1 && EqualNoCase(entity.variable_name, WORLD_NAME))
            world_defaults[static_cast<size_t>(row.default_kind)].push_back(e);
    }
}

void VisibilityRays::GetEntitiesForCell(CellFindings& found, int c) {
    const World& world = scene.ws.world;
    for (int e = 0; e < world.GetEntityCount() && !state.Stopped(); ++e) {
        if (!scene.entities[static_cast<size_t>(e)].traced)
            continue;
        const uint32_t id = world.entity[static_cast<size_t>(e)]->GetObjectID();
        if (id == scene.ws.options.traceing_id && id != NO_OBJECT_ID) {
            log = &found.log;
            log->push_back("\n-----------------------------------------------");
            log->push_back(Format("Starting traceing entity id = %d for cell %d", static_cast<int>(id), c));
        }
        ProcessEntity(found, c, e);
        log = nullptr;
    }
    AddWorldDefaults(found);
}

void VisibilityRays::ProcessEntity(CellFindings& found, int c, int e) {
    const auto trace = [this](const char* line) {
        if (log)
            log->push_back(line);
    };
    const World& world = scene.ws.world;
    const Entity& entity = *world.entity[static_cast<size_t>(e)];
    const VisibilityScene::EntityRow& row = scene.entities[static_cast<size_t>(e)];
    const Selection& eyes = scene.ws.cell_eye[static_cast<size_t>(c)];
    const auto add = [&](int eye) {
        found.entities.push_back(e);
        if (row.one_cell_only)
            found.one_cell_entities.push_back(
                {entity.GetObjectID(), world.entity[static_cast<size_t>(eye)]->GetObjectID()});
    };
    if (row.clipped)
        return trace("..entity removed by clipbox");
    if (row.is_eye)
        return trace("..entity is visibility eye");
    if (row.has_eye) {
        if (row.eye != -1 && eyes.TestItem(row.eye) != -1)
            add(row.eye);
        return trace("..eye was found for the entity");
    }
    for (const int eye : eyes) {
        const Entity& eye_entity = *world.entity[static_cast<size_t>(eye)];
        if (log)
            log->push_back(
                Format("..entity is being traced with eye id = %d", static_cast<int>(eye_entity.GetObjectID())));
        if (IsSeen(eye_entity.position, entity.position)) {
            trace("..ENTITY ADDED TO ENTITY LIST");
            return add(eye);
        }
    }
}

bool VisibilityRays::IsSeen(const D3DVECTOR& eye, const D3DVECTOR& entity) {
    const bool behind_brush =
        BrushesHide(eye, entity, [](int, const VisibilityScene::RayBrush& brush) { return brush.hides_entities; });
    if (log)
        log->push_back(behind_brush ? "..obstacle FOUND among normal brushes"
                                    : "..no obstacle found among normal brushes");
    if (behind_brush)
        return false;
    const bool behind_portal = PortalsHide(eye, entity - eye);
    if (log)
        log->push_back(behind_portal ? "..obstacle FOUND among portals" : "..no obstacle found among portals");
    return !behind_portal;
}

void VisibilityRays::AddWorldDefaults(CellFindings& found) const {
    bool has_kind[VisibilityScene::DEFAULT_KINDS] = {};
    for (const int e : found.entities)
        if (const int kind = scene.entities[static_cast<size_t>(e)].default_kind; kind != -1)
            has_kind[kind] = true;
    for (size_t kind = 0; kind < scene.world_defaults.size(); ++kind)
        if (!has_kind[kind])
            found.entities.insert(found.entities.end(), scene.world_defaults[kind].begin(),
                                  scene.world_defaults[kind].end());
}

bool VisibilityRays::TestEyeVisibility(int brush, const D3DVECTOR& position) {
    if (!scene.brushes[static_cast<size_t>(brush)].can_be_seen)
        return false;
    bool seen = false;
    const Brush& tested_brush = *scene.ws.world.brush[static_cast<size_t>(brush)];
    tested_brush.ForEachSurface([&](const Surface& surface, int, bool) {
        if (!surface.HasMaterial())
            return;
        for (size_t t = 0; t < surface.tri_indices.size() && !seen && !state.Stopped(); ++t)
            if (SurfaceTriangle corners; corners.Take(surface, surface.tri_indices[t]))
                seen = !TriangleVisibility(brush, corners.v, position);
    });
    return seen;
}

bool VisibilityRays::TriangleVisibility(int brush, const D3DVECTOR (&v)[3], const D3DVECTOR& position) {
    const D3DVECTOR target = (v[0] + v[1] + v[2]) * A_THIRD;
    return BrushesHide(position, target,
                       [brush](int index, const VisibilityScene::RayBrush& other) {
                           return index != brush && other.hides_triangles;
                       }) ||
           PortalsHide(position, target - position);
}

template <class TakesPart>
bool VisibilityRays::BrushesHide(const D3DVECTOR& position, const D3DVECTOR& target, TakesPart&& takes_part) {
    if (tested.size() != scene.brushes.size() || ++ray_stamp == 0) {
        tested.assign(scene.brushes.size(), 0);
        ray_stamp = 1;
    }
    const OctalTree& tree = scene.ws.tree;
    const D3DVECTOR direction = target - position;
    tree.TraceOctalTree(position, target, node_selection);
    for (const int leaf : node_selection.Leaves())
        for (const int b : tree.GetOctalLeaf(leaf).brush_list) {
            uint32_t& mark = tested[static_cast<size_t>(b)];
            if (mark == ray_stamp && !log)
                continue;
            mark = ray_stamp;
            const VisibilityScene::RayBrush& brush = scene.brushes[static_cast<size_t>(b)];
            if (takes_part(b, brush) && RayIntersectVisibility(brush, position, direction))
                return true;
        }
    return false;
}

bool VisibilityRays::PortalsHide(const D3DVECTOR& position, const D3DVECTOR& direction) {
    return std::any_of(scene.portals.begin(), scene.portals.end(), [&](const VisibilityScene::RayBrush& portal) {
        return RayIntersectVisibility(portal, position, direction);
    });
}

bool VisibilityRays::RayIntersectVisibility(const VisibilityScene::RayBrush& brush, const D3DVECTOR& position,
                                            const D3DVECTOR& direction) {
    if (!s_math.BoxRayIntersectInner(position, direction, brush.center, brush.radius)) {
        if (log)
            log->push_back(Format("....RayIntersectVisibility - s_math.BoxRayIntersectFast (brush id = %d) returned "
                                  "false",
                                  static_cast<int>(brush.object_id)));
        return false;
    }
    for (int t = brush.first_triangle; t < brush.first_triangle + brush.triangle_count; ++t) {
        const VisibilityScene::RayTriangle& triangle = scene.triangles[static_cast<size_t>(t)];
        D3DVECTOR hit;
        float param;
        if (s_math.PlaneIntersectEx(position, direction, triangle.v[0], triangle.normal, hit, param) && param >= 0 &&
            param <= 1 && s_math.PointInTriangle(triangle.v[0], triangle.v[1], triangle.v[2], triangle.normal, hit))
            return true;
    }
    return false;
}
