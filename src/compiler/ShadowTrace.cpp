#include "compiler/ShadowTrace.h"

#include <algorithm>

#include "compiler/SurfaceTriangle.h"
#include "foundation/Log.h"
#include "scene/World.h"

bool CastsShadow(const Brush& brush) {
    return !brush.IsPortalOrOccluder() && !brush.HasProperty(BP_NO_SHADOWS) && !brush.FindLinkedEntity("BOX_TRIGGER") &&
           !brush.FindLinkedEntity("ENVIRONMENT");
}

uint32_t GlassTriangle::ColorAt(const D3DVECTOR& hit) const {
    float third, second;
    s_math.GetBarycentricCoordinates(v[0], v[1], v[2], hit, normal, third, second);
    const float first = 1.0f - third - second;
    return material->TranslucentColor(
        {uv[0].u * first + uv[1].u * second + uv[2].u * third, uv[0].v * first + uv[1].v * second + uv[2].v * third});
}

void CalculateFilteredColor(const TranslucentHits& hits, float& fr, float& fg, float& fb) {
    if (hits.rt_count > MAX_TRANSLUCENT_HITS || hits.rt_count < 0) {
        LOG("bad rt_count: %d", hits.rt_count);
        return;
    }
    std::array<uint16_t, MAX_TRANSLUCENT_HITS> order;
    for (int k = 0; k < hits.rt_count; ++k) { // an insertion keeps the order of equal parameters and needs no memory
        int place = k;
        for (;
             place > 0 && hits.rt_param[order[static_cast<size_t>(place - 1)]] > hits.rt_param[static_cast<size_t>(k)];
             --place)
            order[static_cast<size_t>(place)] = order[static_cast<size_t>(place - 1)];
        order[static_cast<size_t>(place)] = static_cast<uint16_t>(k);
    }
    for (int k = 0; k < hits.rt_count; ++k) {
        const uint32_t color = hits.rt_color[order[static_cast<size_t>(k)]];
        const auto channel = [color](int shift) { return static_cast<float>(color >> shift & 0xFF) / 255.0f; };
        const float a = channel(24);
        fr = channel(16) * (1.0f - a) + a * fr;
        fg = channel(8) * (1.0f - a) + a * fg;
        fb = channel(0) * (1.0f - a) + a * fb;
    }
}

bool ShadowTrace::RayTraceFast(const D3DVECTOR& b, const D3DVECTOR& a, const D3DVECTOR& ray,
                               LeafSelection& node_selection, TranslucentHits& hits) const {
    hits.rt_count = 0;
    tree.TraceOctalTree(a, b, node_selection);
    for (const int leaf : node_selection.Leaves())
        for (const int index : tree.GetOctalLeaf(leaf).brush_list) {
            const Brush& brush = *world.brush[static_cast<size_t>(index)];
            if (CastsShadow(brush) && IntersectFast(brush, b, a, ray, hits))
                return true;
        }
    return false;
}

bool ShadowTrace::IntersectFast(const Brush& brush, const D3DVECTOR& b, const D3DVECTOR& position,
                                const D3DVECTOR& direction, TranslucentHits& hits) const {
    const D3DVECTOR center = (BoxMin(brush.bbox) + BoxMax(brush.bbox)) * 0.5f;
    const D3DVECTOR radius = (BoxMax(brush.bbox) - BoxMin(brush.bbox)) * 0.5f;
    if (!s_math.BoxRayIntersectInner(position, direction, center, radius))
        return false;
    bool blocked = false;
    brush.ForEachSurface([&](const Surface& surface, int, bool) {
        const LightMaterial& material = materials[surface.texture.index];
        for (size_t t = 0; t < surface.tri_indices.size() && !blocked; ++t) {
            SurfaceTriangle corners;
            if (!corners.Take(surface, surface.tri_indices[t]))
                continue;
            const D3DVECTOR normal = corners.UnitNormal();
            D3DVECTOR hit;
            float param;
            if (!s_math.PlaneIntersectSegment(position, direction, corners.v[0], normal, hit, param) ||
                SquareMagnitude(hit - b) < SHADOW_BIAS_SQUARED ||
                !s_math.PointInTriangle(corners.v[0], corners.v[1], corners.v[2], normal, hit))
                continue;
            if (!material.transparent) {
                blocked = true;
                continue;
            }
            GlassTriangle glass{&material, {corners.v[0], corners.v[1], corners.v[2]}, normal, {}};
            for (size_t k = 0; k < 3; ++k)
                if (static_cast<size_t>(corners.index[k]) < surface.uv.size())
                    glass.uv[k] = surface.uv[static_cast<size_t>(corners.index[k])];
            const uint32_t color = glass.ColorAt(hit);
            if (color >> 24 == 0)
                blocked = true;
            else
                hits.Add(color, param);
        }
    });
    return blocked;
}
