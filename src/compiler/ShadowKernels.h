// The two inner tests of a shadow ray on eight boxes or eight triangles at once. Each lane does the float operations of
// SpecialMath in their order, so the answers are those of the scalar tests bit for bit.
#pragma once

#include <cstdint>

#include "foundation/Vector.h"

inline constexpr int SHADOW_LANES = 8;

// One segment from a light to a sample.
struct ShadowRay {
    D3DVECTOR from, direction, sample;
    D3DVECTOR abs_direction;

    ShadowRay(const D3DVECTOR& a, const D3DVECTOR& ray, const D3DVECTOR& b)
        : from(a), direction(ray), sample(b), abs_direction{std::fabs(ray.x), std::fabs(ray.y), std::fabs(ray.z)} {}
};

// Boxes by centre and half sizes.
struct alignas(32) BoxGroup {
    float center[3][SHADOW_LANES] = {}, radius[3][SHADOW_LANES] = {};
    uint32_t used = 0; // lanes

    void Set(int lane, const D3DVECTOR& box_center, const D3DVECTOR& box_radius);
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
    // Lanes whose box the line meets (SpecialMath::BoxRayIntersectInner).
    uint32_t (*boxes)(const BoxGroup& group, const ShadowRay& ray);
    // Lanes whose triangle the segment hits far enough from the sample.
    uint32_t (*triangles)(const TriangleGroup& group, const ShadowRay& ray);
};

const ShadowKernels& PlainShadowKernels();
const ShadowKernels& BestShadowKernels(); // the widest that this machine runs
