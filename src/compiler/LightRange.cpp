#include <algorithm>
#include <cmath>

#include "compiler/Lighting.h"
#include "compiler/SurfaceTriangle.h"

namespace {

const D3DVECTOR DOWNWARDS{0, -0.999f, 0.001f}; // the axis of a spot light without a target
constexpr float VERTICAL_AXIS = 1e-5f;         // shorter than this, the horizontal across the axis is no direction

struct Extent {
    D3DVECTOR min, max;

    explicit Extent(const D3DVECTOR& p) : min(p), max(p) {}
    void Add(const D3DVECTOR& p) {
        min = {std::min(min.x, p.x), std::min(min.y, p.y), std::min(min.z, p.z)};
        max = {std::max(max.x, p.x), std::max(max.y, p.y), std::max(max.z, p.z)};
    }
};

Extent LightBox(const Entity& light) {
    const float range = light.FloatParameter("range");
    Extent box(light.position);
    if (!light.BoolParameter("spotlight_enable")) {
        box.Add(light.position - D3DVECTOR{range, range, range});
        box.Add(light.position + D3DVECTOR{range, range, range});
        return box;
    }
    const D3DVECTOR d = SpotlightAxis(light), end = light.position + d * range;
    const float h = range * std::tan(light.FloatParameter("spotlight_angle") * PI / 360.0f);
    D3DVECTOR a = CrossProduct(d, {0, 1, 0});
    if (Magnitude(a) > VERTICAL_AXIS) {
        a = Normalize(a);
        const D3DVECTOR b = CrossProduct(d, a);
        for (const D3DVECTOR& across : {a * h, b * h}) {
            box.Add(end + across);
            box.Add(end - across);
        }
    } else {
        box.Add(end - D3DVECTOR{h, 0, h});
        box.Add(end + D3DVECTOR{h, 0, h});
    }
    return box;
}

bool LightReaches(const SurfaceTriangle& triangle, const D3DVECTOR& origin, float range) {
    const D3DVECTOR normal = triangle.UnitNormal();
    const float distance = DotProduct(normal, origin - triangle.v[0]);
    if (!(distance >= 0))
        return false;
    const D3DVECTOR foot = origin - normal * distance;
    if (distance <= range && s_math.PointInTriangle(triangle.v[0], triangle.v[1], triangle.v[2], normal, foot))
        return true;
    return SquareMagnitude(s_math.ClosestPointOnTriangle(triangle.v[0], triangle.v[1], triangle.v[2], origin) -
                           origin) <= range * range;
}

} // namespace

bool IsPointLight(const Entity& entity) { return entity.IsType("POINT_LIGHT"); }

D3DVECTOR SpotlightAxis(const Entity& light) {
    const Entity* target = light.FindLinkedEntity("TARGET_POSITION");
    if (!target || target->position == light.position)
        return DOWNWARDS;
    return Normalize(target->position - light.position);
}

void Brush::InvalidateLightRange() {
    ForEachSurface([](Surface& surface, int, bool) { surface.light.clear(); });
}

void Brush::TestLightRange(const D3DVECTOR& origin, float range, int light) {
    const D3DVECTOR reach{range, range, range};
    if (IsPortalOrOccluder() || !s_math.BoxBoxIntersect(origin - reach, origin + reach, BoxMin(bbox), BoxMax(bbox)))
        return;
    ForEachSurface([&](Surface& surface, int, bool) {
        if (!surface.HasMaterial())
            return;
        const bool reached =
            std::any_of(surface.tri_indices.begin(), surface.tri_indices.end(), [&](const TRIANGLE& indices) {
                SurfaceTriangle triangle;
                return triangle.Take(surface, indices) && LightReaches(triangle, origin, range);
            });
        if (reached)
            surface.light.push_back(light);
    });
}

bool ComputeLightRange(World& world, CompileProgress& progress) {
    StopPoll poll(progress);
    for (const auto& brush : world.brush)
        brush->InvalidateLightRange();
    for (int e = 0; e < world.GetEntityCount(); ++e) {
        const Entity& entity = *world.entity[static_cast<size_t>(e)];
        progress.IncrementProgress(1);
        if (!IsPointLight(entity))
            continue;
        for (const auto& brush : world.brush)
            brush->TestLightRange(entity.position, entity.FloatParameter("range"), e);
        if (poll.Stopped())
            return false;
    }
    return !poll.Stopped();
}

bool CreateLightBrushList(World& world, CompileProgress& progress) {
    StopPoll poll(progress);
    for (const auto& brush : world.brush)
        brush->light_list.ClearList();
    for (int e = 0; e < world.GetEntityCount(); ++e) {
        Entity& entity = *world.entity[static_cast<size_t>(e)];
        if (!IsPointLight(entity) || (entity.BoolParameter("dynamic") && !entity.BoolParameter("dynamic_lightmap")))
            continue;
        entity.brush_list.ClearList();
        const Extent box = LightBox(entity);
        for (int b = 0; b < world.GetBrushCount(); ++b) {
            Brush& brush = *world.brush[static_cast<size_t>(b)];
            if (!s_math.BoxBoxIntersect(box.min, box.max, BoxMin(brush.bbox), BoxMax(brush.bbox)))
                continue;
            entity.brush_list.AddItem(b);
            brush.light_list.AddItem(e);
        }
        if (poll.Stopped())
            return false;
    }
    return true;
}
