// The shadow test as its rules tell it: the leaves along the segment, their brushes one by one, their triangles one by
// one. The fast path (FastShadow.h) gives the same answers; a test holds the two together.
#pragma once

#include <array>
#include <cstdint>

#include "compiler/LightMaterials.h"
#include "compiler/OctalTree.h"

class Brush;
class World;

inline constexpr int MAX_TRANSLUCENT_HITS = 1024;

// The translucent surfaces that one ray passed, in the order of the walk. A brush in several leaves counts once for
// each.
struct TranslucentHits {
    int rt_count = 0; // may exceed what is stored
    std::array<uint32_t, MAX_TRANSLUCENT_HITS> rt_color;
    std::array<float, MAX_TRANSLUCENT_HITS> rt_param; // along the ray

    void Add(uint32_t color, float param) {
        if (rt_count < MAX_TRANSLUCENT_HITS) {
            rt_color[static_cast<size_t>(rt_count)] = color;
            rt_param[static_cast<size_t>(rt_count)] = param;
        }
        ++rt_count;
    }
};

// A hit nearer to the sample than this does not count, squared: a surface neither shadows itself nor what stands on it.
inline constexpr float SHADOW_BIAS_SQUARED = 64.0f;

bool CastsShadow(const Brush& brush);

// One triangle of a transparent material at a hit point.
struct GlassTriangle {
    const LightMaterial* material = nullptr;
    D3DVECTOR v[3], normal;
    UVVector uv[3];

    uint32_t ColorAt(const D3DVECTOR& hit) const; // as LightMaterial::TranslucentColor
};

// Passes a colour through the hits, from the light towards the sample: in order of rising rt_param.
void CalculateFilteredColor(const TranslucentHits& hits, float& fr, float& fg, float& fb);

class ShadowTrace {
public:
    ShadowTrace(const World& trace_world, const OctalTree& trace_tree, const LightMaterials& trace_materials)
        : world(trace_world), tree(trace_tree), materials(trace_materials) {}

    // True if the segment from light a to sample b is blocked; ray = b - a.
    bool RayTraceFast(const D3DVECTOR& b, const D3DVECTOR& a, const D3DVECTOR& ray, LeafSelection& node_selection,
                      TranslucentHits& hits) const;
    bool IntersectFast(const Brush& brush, const D3DVECTOR& b, const D3DVECTOR& position, const D3DVECTOR& direction,
                       TranslucentHits& hits) const;

private:
    const World& world;
    const OctalTree& tree;
    const LightMaterials& materials;
};
