#include "compiler/ShadowKernels.h"

#include <algorithm>

#include "compiler/ShadowTrace.h"
#include "foundation/SpecialMath.h"

#if defined(__x86_64__)
#include <immintrin.h>
#define MARROWSTEAD_AVX2 1
#endif

namespace {

constexpr float FACING_TOLERANCE = 0.00001f; // as PlaneIntersectSegment

D3DVECTOR Lane(const float (&values)[3][SHADOW_LANES], int lane) {
    return {values[0][lane], values[1][lane], values[2][lane]};
}

bool OutOfReach(const BoxGroup& group, int lane, const ShadowRay& ray) {
    const D3DVECTOR apart = ray.middle - Lane(group.reach_center, lane), reach = Lane(group.reach, lane);
    return std::fabs(apart.x) > reach.x + ray.half.x || std::fabs(apart.y) > reach.y + ray.half.y ||
           std::fabs(apart.z) > reach.z + ray.half.z;
}

uint32_t PlainBoxes(const BoxGroup& group, const ShadowRay& ray) {
    uint32_t mask = 0;
    for (int lane = 0; lane < SHADOW_LANES; ++lane)
        if (!OutOfReach(group, lane, ray) &&
            s_math.BoxRayIntersectInner(ray.from, ray.direction, Lane(group.center, lane), Lane(group.radius, lane)))
            mask |= 1u << lane;
    return mask & group.used;
}

uint32_t PlainTriangles(const TriangleGroup& group, const ShadowRay& ray) {
    uint32_t mask = 0;
    for (int lane = 0; lane < SHADOW_LANES; ++lane) {
        const D3DVECTOR n = Lane(group.normal, lane), a = Lane(group.corner[0], lane);
        D3DVECTOR hit;
        float param;
        if (s_math.PlaneIntersectSegment(ray.from, ray.direction, a, n, hit, param) &&
            !(SquareMagnitude(hit - ray.sample) < SHADOW_BIAS_SQUARED) &&
            s_math.PointInTriangle(a, Lane(group.corner[1], lane), Lane(group.corner[2], lane), n, hit))
            mask |= 1u << lane;
    }
    return mask & group.used;
}

bool PlainAnyTriangle(const TriangleGroup* groups, int count, const ShadowRay& ray) {
    return std::any_of(groups, groups + count,
                       [&](const TriangleGroup& group) { return PlainTriangles(group, ray) != 0; });
}

#ifdef MARROWSTEAD_AVX2

#define AVX2_FUNCTION __attribute__((target("avx2")))
#define AVX2_INLINE __attribute__((target("avx2"), always_inline)) inline

struct Wide3 {
    __m256 x, y, z;
};

AVX2_INLINE Wide3 Load(const float (&values)[3][SHADOW_LANES]) {
    return {_mm256_load_ps(values[0]), _mm256_load_ps(values[1]), _mm256_load_ps(values[2])};
}
AVX2_INLINE Wide3 Broadcast(const D3DVECTOR& v) {
    return {_mm256_set1_ps(v.x), _mm256_set1_ps(v.y), _mm256_set1_ps(v.z)};
}
AVX2_INLINE Wide3 Minus(const Wide3& a, const Wide3& b) {
    return {_mm256_sub_ps(a.x, b.x), _mm256_sub_ps(a.y, b.y), _mm256_sub_ps(a.z, b.z)};
}
AVX2_INLINE __m256 Dot(const Wide3& a, const Wide3& b) {
    return _mm256_add_ps(_mm256_add_ps(_mm256_mul_ps(a.x, b.x), _mm256_mul_ps(a.y, b.y)), _mm256_mul_ps(a.z, b.z));
}
// a * b - c * d
AVX2_INLINE __m256 Minor(__m256 a, __m256 b, __m256 c, __m256 d) {
    return _mm256_sub_ps(_mm256_mul_ps(a, b), _mm256_mul_ps(c, d));
}
AVX2_INLINE Wide3 Cross(const Wide3& a, const Wide3& b) {
    return {Minor(a.y, b.z, a.z, b.y), Minor(a.z, b.x, a.x, b.z), Minor(a.x, b.y, a.y, b.x)};
}

// Lanes where the line is off the box on one pair of axes: |p * qv - q * pv| > u * v + w * x
AVX2_INLINE __m256 Separated(__m256 minor, __m256 u, __m256 v, __m256 w, __m256 x) {
    const __m256 absolute = _mm256_andnot_ps(_mm256_set1_ps(-0.0f), minor);
    return _mm256_cmp_ps(absolute, _mm256_add_ps(_mm256_mul_ps(u, v), _mm256_mul_ps(w, x)), _CMP_GT_OQ);
}

AVX2_INLINE __m256 Beyond(__m256 apart, __m256 reach, __m256 half) {
    return _mm256_cmp_ps(_mm256_andnot_ps(_mm256_set1_ps(-0.0f), apart), _mm256_add_ps(reach, half), _CMP_GT_OQ);
}

AVX2_FUNCTION uint32_t Avx2Boxes(const BoxGroup& group, const ShadowRay& ray) {
    const Wide3 apart = Minus(Broadcast(ray.middle), Load(group.reach_center)), reach = Load(group.reach),
                half = Broadcast(ray.half);
    const __m256 out = _mm256_or_ps(Beyond(apart.x, reach.x, half.x),
                                    _mm256_or_ps(Beyond(apart.y, reach.y, half.y), Beyond(apart.z, reach.z, half.z)));
    const uint32_t near = ~static_cast<uint32_t>(_mm256_movemask_ps(out)) & group.used;
    if (near == 0)
        return 0;
    const Wide3 d = Minus(Broadcast(ray.from), Load(group.center)), r = Load(group.radius);
    const Wide3 q = Broadcast(ray.direction), a = Broadcast(ray.abs_direction);
    const __m256 off_x = Separated(Minor(d.z, q.y, d.y, q.z), a.z, r.y, a.y, r.z);
    const __m256 off_y = Separated(Minor(d.x, q.z, d.z, q.x), a.x, r.z, a.z, r.x);
    const __m256 off_z = Separated(Minor(d.y, q.x, d.x, q.y), a.x, r.y, a.y, r.x);
    return ~static_cast<uint32_t>(_mm256_movemask_ps(_mm256_or_ps(off_x, _mm256_or_ps(off_y, off_z)))) & near;
}

AVX2_INLINE uint32_t TriangleLanes(const TriangleGroup& group, const ShadowRay& ray) {
    const Wide3 n = Load(group.normal), direction = Broadcast(ray.direction), from = Broadcast(ray.from);
    const Wide3 a = Load(group.corner[0]);
    const __m256 along = Dot(direction, n), offset = Dot(Minus(a, from), n), zero = _mm256_setzero_ps();
    const __m256 beside =
        _mm256_or_ps(_mm256_cmp_ps(along, _mm256_set1_ps(FACING_TOLERANCE), _CMP_GT_OQ),
                     _mm256_or_ps(_mm256_cmp_ps(offset, zero, _CMP_GT_OQ), _mm256_cmp_ps(offset, along, _CMP_LT_OQ)));
    const uint32_t meet = ~static_cast<uint32_t>(_mm256_movemask_ps(beside)) & group.used;
    if (meet == 0)
        return 0;
    const __m256 param = _mm256_div_ps(offset, along);
    const Wide3 hit{_mm256_add_ps(from.x, _mm256_mul_ps(direction.x, param)),
                    _mm256_add_ps(from.y, _mm256_mul_ps(direction.y, param)),
                    _mm256_add_ps(from.z, _mm256_mul_ps(direction.z, param))};
    const Wide3 apart = Minus(hit, Broadcast(ray.sample));
    const __m256 near_sample = _mm256_cmp_ps(Dot(apart, apart), _mm256_set1_ps(SHADOW_BIAS_SQUARED), _CMP_LT_OQ);
    const Wide3 b = Load(group.corner[1]), c = Load(group.corner[2]);
    const __m256 ab = Dot(Cross(Minus(hit, a), Minus(b, a)), n);
    const __m256 bc = Dot(Cross(Minus(hit, b), Minus(c, b)), n);
    const __m256 ca = Dot(Cross(Minus(hit, c), Minus(a, c)), n);
    const __m256 all_low =
        _mm256_and_ps(_mm256_cmp_ps(ab, zero, _CMP_LE_OQ),
                      _mm256_and_ps(_mm256_cmp_ps(bc, zero, _CMP_LE_OQ), _mm256_cmp_ps(ca, zero, _CMP_LE_OQ)));
    const __m256 all_high =
        _mm256_and_ps(_mm256_cmp_ps(ab, zero, _CMP_GE_OQ),
                      _mm256_and_ps(_mm256_cmp_ps(bc, zero, _CMP_GE_OQ), _mm256_cmp_ps(ca, zero, _CMP_GE_OQ)));
    const __m256 inside = _mm256_andnot_ps(near_sample, _mm256_or_ps(all_low, all_high));
    return static_cast<uint32_t>(_mm256_movemask_ps(inside)) & meet;
}

AVX2_FUNCTION uint32_t Avx2Triangles(const TriangleGroup& group, const ShadowRay& ray) {
    return TriangleLanes(group, ray);
}

AVX2_FUNCTION bool Avx2AnyTriangle(const TriangleGroup* groups, int count, const ShadowRay& ray) {
    for (int k = 0; k < count; ++k)
        if (TriangleLanes(groups[k], ray) != 0)
            return true;
    return false;
}

#endif

} // namespace

bool IsThinTriangle(const D3DVECTOR (&v)[3]) {
    constexpr float LEAST_HEIGHT = 0.02f; // of the longest side
    const float longest =
        std::max({SquareMagnitude(v[1] - v[0]), SquareMagnitude(v[2] - v[1]), SquareMagnitude(v[0] - v[2])});
    const float height = Magnitude(CrossProduct(v[1] - v[0], v[2] - v[0])) / longest; // as a share of the longest side
    return !(height >= LEAST_HEIGHT);
}

ShadowReach ReachOf(const D3DVECTOR& min, const D3DVECTOR& max, bool has_thin_triangles) {
    constexpr float EVERYWHERE = 1e30f, LEAST_ROOM = 0.25f, ROUNDING = 2.5e-4f; // of the largest coordinate
    ShadowReach space{(min + max) * 0.5f, (max - min) * 0.5f};
    float largest = 0;
    for (int axis = 0; axis < 3; ++axis)
        largest = std::max({largest, std::fabs(Component(min, axis)), std::fabs(Component(max, axis))});
    const float room = has_thin_triangles ? EVERYWHERE : LEAST_ROOM + largest * ROUNDING;
    space.reach += {room, room, room};
    return space;
}

void BoxGroup::Set(int lane, const D3DVECTOR& box_center, const D3DVECTOR& box_radius,
                   const ShadowReach& shadow_reach) {
    for (int axis = 0; axis < 3; ++axis) {
        reach_center[axis][lane] = Component(shadow_reach.center, axis);
        reach[axis][lane] = Component(shadow_reach.reach, axis);
        center[axis][lane] = Component(box_center, axis);
        radius[axis][lane] = Component(box_radius, axis);
    }
    used |= 1u << lane;
}

TriangleGroup::TriangleGroup() {
    // Unused lanes hold a plane that no segment meets, so that a group of misses ends early.
    for (int lane = 0; lane < SHADOW_LANES; ++lane)
        for (int axis = 0; axis < 3; ++axis) {
            normal[axis][lane] = axis == 0 ? 1.0f : 0.0f;
            for (auto& values : corner)
                values[axis][lane] = axis == 0 ? 1e30f : 0.0f;
        }
}

void TriangleGroup::Set(int lane, const D3DVECTOR& n, const D3DVECTOR (&v)[3]) {
    for (int axis = 0; axis < 3; ++axis) {
        normal[axis][lane] = Component(n, axis);
        for (int k = 0; k < 3; ++k)
            corner[k][axis][lane] = Component(v[k], axis);
    }
    used |= 1u << lane;
}

const ShadowKernels& PlainShadowKernels() {
    static const ShadowKernels kernels{PlainBoxes, PlainTriangles, PlainAnyTriangle};
    return kernels;
}

const ShadowKernels& BestShadowKernels() {
#ifdef MARROWSTEAD_AVX2
    static const ShadowKernels wide{Avx2Boxes, Avx2Triangles, Avx2AnyTriangle};
    static const bool has_wide = __builtin_cpu_supports("avx2");
    if (has_wide)
        return wide;
#endif
    return PlainShadowKernels();
}
