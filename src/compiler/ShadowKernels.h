// The two inner tests of a shadow ray on eight boxes or eight triangles at once. Each lane does the float operations of
// SpecialMath in their order, so the answers are those of the scalar tests bit for bit.
#pragma once

#include <cmath>
#include <cstdint>

#include "foundation/Vector.h"

inline constexpr int SHADOW_LANES = 8;

// One segment from a light to a sample.
struct ShadowRay {
    D3DVECTOR from, direction, sample;
    D3DVECTOR abs_direction;
    D3DVECTOR middle, half; // the box of the segment, with room for the rounding of hits

    ShadowRay(const D3DVECTOR& a, const D3DVECTOR& ray, const D3DVECTOR& b)
        : from(a), direction(ray), sample(b), abs_direction{std::fabs(ray.x), std::fabs(ray.y), std::fabs(ray.z)} {
        constexpr float ROUNDING = 1e-5f; // of the largest number in a hit: a hundred times what a float loses
        const float room =
            (std::fabs(a.x) + std::fabs(a.y) + std::fabs(a.z) + abs_direction.x + abs_direction.y + abs_direction.z) *
            ROUNDING;
        middle = a + ray * 0.5f;
        half = abs_direction * 0.5f + D3DVECTOR{room, room, room};
    }
};

// The space in which triangles can be hit: their box, with room for the rounding of the inside test. A hit of a
// triangle that is not thin lies within that room: the signs of its edge functions are wrong only where their values
// are below their rounding, a few units of the last place of the coordinates, and the least angle bounds the way from
// there to the triangle. Around a thin triangle nothing is ruled out.
struct ShadowReach {
    D3DVECTOR center, reach;
};
ShadowReach ReachOf(const D3DVECTOR& min, const D3DVECTOR& max, bool has_thin_triangles);
bool IsThinTriangle(const D3DVECTOR (&v)[3]);

// Boxes by centre and half sizes, and the space in which their triangles can be hit.
struct alignas(32) BoxGroup {
    float center[3][SHADOW_LANES] = {}, radius[3][SHADOW_LANES] = {};
    float reach_center[3][SHADOW_LANES] = {}, reach[3][SHADOW_LANES] = {};
    uint32_t used = 0; // lanes

    void Set(int lane, const D3DVECTOR& box_center, const D3DVECTOR& box_radius, const ShadowReach& shadow_reach);
};

// Triangles by unit normal and corners.
struct alignas(32) TriangleGroup {
    float normal[3][SHADOW_LANES], corner[3][3][SHADOW_LANES];
    uint32_t used = 0;        // lanes
    uint32_t glass = 0;       // lanes of transparent materials
    uint32_t first_glass = 0; // number of the first of them

    TriangleGroup();
    void Set(int lane, const D3DVECTOR& n, const D3DVECTOR (&v)[3]);
};

struct ShadowKernels {
    // Lanes whose box the line meets (SpecialMath::BoxRayIntersectInner) and whose triangles the segment may hit.
    uint32_t (*boxes)(const BoxGroup& group, const ShadowRay& ray);
    // Lanes whose triangle the segment hits far enough from the sample.
    uint32_t (*triangles)(const TriangleGroup& group, const ShadowRay& ray);
    // True if there is any such lane in count groups.
    bool (*any_triangle)(const TriangleGroup* groups, int count, const ShadowRay& ray);
};

const ShadowKernels& PlainShadowKernels();
const ShadowKernels& BestShadowKernels(); // the widest that this machine runs
