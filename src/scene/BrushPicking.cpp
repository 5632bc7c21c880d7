// Rays, boxes and clip planes against a brush.
#include "scene/Brush.h"

namespace {

struct SurfaceHit {
    D3DVECTOR position, normal;
    int surface = -1;
    bool curved = false;
};

// The nearest hit nearer than p; p follows it. Flat surfaces come first.
bool FindNearestHit(const Brush& brush, const D3DVECTOR& position, const D3DVECTOR& direction, float& p,
                    SurfaceHit& hit) {
    const D3DVECTOR half = (BoxMax(brush.bbox) - BoxMin(brush.bbox)) * 0.5f;
    if (!s_math.BoxRayIntersectInner(position, direction, brush.pivot, half))
        return false;
    bool found = false;
    brush.ForEachSurface([&](const Surface& s, int index, bool curved) {
        for (const TRIANGLE& triangle : s.tri_indices) {
            if (!s.HasCorners(triangle))
                continue;
            const D3DVECTOR &p0 = s.vertices[triangle.i[0]], &p1 = s.vertices[triangle.i[1]],
                            &p2 = s.vertices[triangle.i[2]];
            const D3DVECTOR normal = CrossProduct(p1 - p0, p2 - p0);
            D3DVECTOR place;
            float distance;
            if (!s_math.PlaneIntersectEx(position, direction, p0, normal, place, distance) || !(distance < p) ||
                !s_math.PointInTriangle(p0, p1, p2, normal, place))
                continue;
            p = distance;
            hit = {place, normal, index, curved};
            found = true;
        }
    });
    return found;
}

// True if all three corners lie beyond one side of the box.
bool BeyondOneSide(const D3DVECTOR& min, const D3DVECTOR& max, const D3DVECTOR& a, const D3DVECTOR& b,
                   const D3DVECTOR& c) {
    return (a.x < min.x && b.x < min.x && c.x < min.x) || (a.x > max.x && b.x > max.x && c.x > max.x) ||
           (a.y < min.y && b.y < min.y && c.y < min.y) || (a.y > max.y && b.y > max.y && c.y > max.y) ||
           (a.z < min.z && b.z < min.z && c.z < min.z) || (a.z > max.z && b.z > max.z && c.z > max.z);
}

} // namespace

bool Brush::Visible(const PLANE* planes) const {
    unsigned mask = 0b111101; // not plane 1
    for (const D3DVECTOR& corner : bbox) {
        unsigned behind = 0;
        for (unsigned i = 0; i < 6; ++i)
            if (!planes[i].is_inside(corner))
                behind |= 1u << i;
        mask &= behind;
        if (mask == 0)
            return true;
    }
    return false;
}

bool Brush::TestSolidSelection(const D3DVECTOR& position, const D3DVECTOR& direction, float& p, D3DVECTOR* i_position,
                               D3DVECTOR* i_normal, int* i_surface, bool* i_curved) const {
    SurfaceHit hit;
    if (!FindNearestHit(*this, position, direction, p, hit))
        return false;
    if (i_position)
        *i_position = hit.position;
    if (i_normal)
        *i_normal = hit.normal;
    if (i_surface)
        *i_surface = hit.surface;
    if (i_curved)
        *i_curved = hit.curved;
    return true;
}

int Brush::TestSurfaceSelection(const D3DVECTOR& position, const D3DVECTOR& direction, float& p,
                                bool& is_curved) const {
    SurfaceHit hit;
    if (IsPortalOrOccluder() || IsCustom() || !FindNearestHit(*this, position, direction, p, hit))
        return -1;
    is_curved = hit.curved;
    return hit.surface;
}

bool Brush::IsInVoxel(const D3DVECTOR& min, const D3DVECTOR& max) const {
    if (!s_math.BoxBoxIntersect(BoxMin(bbox), BoxMax(bbox), min, max))
        return false;
    for (const std::vector<Surface>* list : {&surfaces, &curved_surfaces})
        for (const Surface& s : *list)
            for (const TRIANGLE& triangle : s.tri_indices) {
                if (!s.HasCorners(triangle))
                    continue;
                const D3DVECTOR &a = s.vertices[triangle.i[0]], &b = s.vertices[triangle.i[1]],
                                &c = s.vertices[triangle.i[2]];
                if (!BeyondOneSide(min, max, a, b, c) &&
                    s_math.FaceInBox(min, max, a, b, c, Normalize(CrossProduct(b - a, c - a))))
                    return true;
            }
    return false;
}
