// The round tool of the perspective view that reshapes terrains and strews objects over them.
#include <algorithm>

#include "foundation/Random.h"
#include "render/Matrix.h"
#include "scene/FrontEnd.h"
#include "scene/TerrainParts.h"
#include "scene/TerrainStroke.h"
#include "scene/WorldPickingParts.h"

namespace {

uint32_t RandomBelow(uint32_t count) { return random_mt.randomMT() % count; }

// 0 to 0.99
float RandomPart() {
    constexpr uint32_t PARTS = 100;
    return static_cast<float>(RandomBelow(PARTS)) * 0.01f;
}

// Segments that have gone, or are none any more, leave the list.
void KeepSegments(Selection& list, const World& world) {
    const auto is_segment = [&world](int b) {
        return b >= 0 && b < world.GetBrushCount() && IsTerrain(*world.brush[static_cast<size_t>(b)]);
    };
    if (std::all_of(list.begin(), list.end(), is_segment))
        return;
    Selection kept;
    for (const int b : list)
        if (is_segment(b))
            kept.AddItem(b);
    list = std::move(kept);
}

// On the ground, the square about the tool's circle.
bool IsInReach(const Box& box, const D3DVECTOR& center, float radius) {
    return BoxMin(box).x <= center.x + radius && BoxMax(box).x >= center.x - radius &&
           BoxMin(box).z <= center.z + radius && BoxMax(box).z >= center.z - radius;
}

// A place in the circle, found by trial. False if there was none.
bool FindPlace(const D3DVECTOR& center, float radius, float& x, float& z) {
    constexpr int TRIES = 128;
    for (int i = 0; i < TRIES; ++i) {
        x = center.x - radius + 2 * radius * RandomPart();
        z = center.z + radius - 2 * radius * RandomPart();
        const float dx = x - center.x, dz = z - center.z;
        if (std::sqrt(dx * dx + dz * dz) <= radius)
            return true;
    }
    return false;
}

// What is strewn: copies of the selection, each turned about its middle, which comes to a place on the ground.
class Strewing {
public:
    explicit Strewing(World& changed) : world(changed) {
        for (const int b : world.brush_selection)
            brushes.push_back(world.brush[static_cast<size_t>(b)].get());
        for (const int e : world.entity_selection)
            entities.push_back(world.entity[static_cast<size_t>(e)].get());
        for (const Brush* b : brushes)
            middle += b->pivot;
        for (const Entity* e : entities)
            if (brushes.empty())
                middle += e->position;
        if (const size_t count = brushes.empty() ? entities.size() : brushes.size())
            middle = middle / static_cast<float>(count);
    }
    bool IsEmpty() const { return brushes.empty() && entities.empty(); }
    bool HasEntities() const { return !entities.empty(); }

    // The copies join the selection's lists. False when a table is full, which has been said.
    bool Place(const D3DVECTOR& place) {
        constexpr uint32_t TURN = 360;
        const float angle = static_cast<float>(RandomBelow(TURN)) * TWO_PI * DEGREE_TO_TURN;
        D3DMATRIX m;
        crMMultiply(crTranslation({-middle.x, 0, -middle.z}), Quaternion::from_rotation({0, 1, 0}, angle).to_matrix(),
                    m);
        crMMultiply(m, crTranslation(place), m);
        for (const Brush* source : brushes) {
            Brush* const copy = world.AddBrush(std::make_unique<Brush>(*source));
            if (!copy)
                return false;
            copy->GenerateNewObjectID();
            copy->is_selected = false;
            copy->Transform(m, false);
            world.brush_selection.AddItem(copy->index);
        }
        for (const Entity* source : entities) {
            Entity* const copy = world.AddEntity(std::make_unique<Entity>(*source));
            if (!copy)
                return false;
            copy->GenerateNewObjectID();
            D3DVECTOR moved;
            crMTransform(m, copy->position, moved);
            copy->SetPosition(moved);
            world.entity_selection.AddItem(world.GetEntityCount() - 1);
        }
        return true;
    }

private:
    World& world;
    std::vector<const Brush*> brushes;
    std::vector<const Entity*> entities;
    D3DVECTOR middle;
};

} // namespace

bool World::AimTerrainTool(const TERRAIN_MODIFIER& tm, POINT point, const D3DVECTOR& camera_position,
                           D3DVECTOR& center) {
    KeepSegments(b_list, *this);
    PickRequest request;
    request.point = point;
    request.view = VIEW_PERSPECTIVE;
    request.camera_position = camera_position;
    const BrushHit hit = NearestBrush(*this, request);
    if (!hit.Found() || !IsTerrain(*brush[static_cast<size_t>(hit.brush)]) || !(tm.radius > 0))
        return false;
    center = camera_position + hit.ray * hit.distance;
    const D3DVECTOR reach{tm.radius, tm.radius, tm.radius};
    const Box around = MakeBox(center - reach, center + reach);
    for (int b = 0; b < GetBrushCount(); ++b) {
        const Brush& segment = *brush[static_cast<size_t>(b)];
        if (IsTerrain(segment) && BoxesOverlap(segment.bbox, around))
            b_list.AddItem(b);
    }
    return true;
}

void World::ModifyTerrain(const TERRAIN_MODIFIER& tm, POINT point, const D3DVECTOR& camera_position, bool up) {
    D3DVECTOR center;
    if (!AimTerrainTool(tm, point, camera_position, center)) {
        GetFrontEnd().RedrawView(VIEW_PERSPECTIVE);
        return;
    }
    if (tm.type == TERRAIN_DECORATE) {
        DecorateTerrain(tm, center);
        GetFrontEnd().RedrawView(VIEW_PERSPECTIVE);
        return;
    }
    NoiseField random_field;
    if (tm.type == TERRAIN_NOISE) {
        random_field.resize(size_t{NOISE_FIELD_SIDE} * NOISE_FIELD_SIDE);
        std::generate(random_field.begin(), random_field.end(), RandomPart);
    }
    std::vector<Brush*> segments; // the others are out of reach and stay as they are
    for (const int b : b_list) {
        Brush& segment = *brush[static_cast<size_t>(b)];
        if (IsInReach(segment.bbox, center, tm.radius))
            segments.push_back(&segment);
    }
    bool selection_changed = false;
    for (Brush* segment : segments) {
        if (terrain_stroke)
            terrain_stroke->Touch(*segment);
        segment->ModifyTerrain(center, tm, up, random_field, *this);
        selection_changed |= segment->is_selected;
    }
    for (Brush* segment : segments)
        segment->UpdateTerrainHeights();
    for (Brush* segment : segments)
        if (!segment->decal_list.empty())
            segment->ReplaceDecals();
    if (selection_changed)
        GetFrontEnd().RefreshSelectionBox();
    GetFrontEnd().MarkFileAsDirty(true);
    GetFrontEnd().RedrawView(VIEW_PERSPECTIVE);
}

void World::DecorateTerrain(const TERRAIN_MODIFIER& tm, const D3DVECTOR& center) {
    Strewing strewing(*this);
    if (strewing.IsEmpty())
        return;
    const Selection b_sel = brush_selection, e_sel = entity_selection, g_sel = group_selection;
    const uint32_t first_selected = first_selected_id;
    brush_selection.ClearList();
    entity_selection.ClearList();
    std::vector<const Brush*> ground; // the copies may be terrain too
    for (const int b : b_list)
        ground.push_back(brush[static_cast<size_t>(b)].get());
    bool has_room = true;
    for (int i = 0; i < tm.density && has_room; ++i) {
        float x, z;
        if (!FindPlace(center, tm.radius, x, z))
            continue;
        for (const Brush* segment : ground) {
            float depth = TERRAIN_REACH;
            if (has_room && FindGround(*segment, x, z, depth))
                has_room = strewing.Place({x, TERRAIN_SKY - depth, z});
        }
    }
    if (tm.collapse)
        Collapse();
    for (const int b : brush_selection)
        brush[static_cast<size_t>(b)]->is_selected = false;
    brush_selection = b_sel;
    entity_selection = e_sel;
    group_selection = g_sel;
    first_selected_id = first_selected;
    if (strewing.HasEntities())
        GetFrontEnd().EntityTypesChanged();
    GetFrontEnd().SelectionChanged();
    GetFrontEnd().CountsChanged();
    GetFrontEnd().MarkFileAsDirty(true);
}

D3DVECTOR World::GetNeighbourTerrainVertex(const D3DVECTOR& vertex, const Brush* origin, int sx, int sy) const {
    constexpr float SAME_PLACE = 0.1f; // nearer than this on each axis
    constexpr D3DVECTOR MARGIN = {SAME_PLACE, SAME_PLACE, SAME_PLACE};
    for (const int b : b_list) {
        if (b < 0 || b >= GetBrushCount())
            continue;
        const Brush& segment = *brush[static_cast<size_t>(b)];
        if (&segment == origin || !IsTerrain(segment) ||
            !s_math.PointInBox(BoxMin(segment.bbox) - MARGIN, BoxMax(segment.bbox) + MARGIN, vertex))
            continue;
        const SIZE& size = segment.terrain_vertex_size;
        const auto at = [&](int x, int y) {
            return segment.surfaces[0]
                .vertices[static_cast<size_t>(y) * static_cast<size_t>(size.cx) + static_cast<size_t>(x)];
        };
        D3DVECTOR found;
        if (FindBorderVertex(size, [&](int x, int y) {
                const D3DVECTOR d = at(x, y) - vertex;
                if (!(std::fabs(d.x) < SAME_PLACE && std::fabs(d.y) < SAME_PLACE && std::fabs(d.z) < SAME_PLACE) ||
                    x + sx < 0 || x + sx >= size.cx || y + sy < 0 || y + sy >= size.cy)
                    return false;
                found = at(x + sx, y + sy);
                return true;
            }))
            return found;
    }
    return vertex;
}
