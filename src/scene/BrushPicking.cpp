// Rays, boxes, clip planes and the pixels of a view against a brush.
#include "render/Device.h"
#include "render/DisplayScale.h"
#include "render/Matrix.h"
#include "scene/Brush.h"

namespace {

struct SurfaceHit {
    D3DVECTOR position, normal;
    int surface = -1;
    bool curved = false;
};

// Which triangles of a large surface the line of a ray may meet: not those whose corners all lie on one side of it,
// seen along either of the two axes that it runs across most. The margin is more than the test of a triangle can round.
class LineSides {
public:
    LineSides(const Surface& s, const Box& box, const D3DVECTOR& position, const D3DVECTOR& direction) {
        if (s.tri_indices.size() < WORTHWHILE)
            return;
        const float x = std::fabs(direction.x), y = std::fabs(direction.y), z = std::fabs(direction.z);
        const int along = x > y && x > z ? 0 : y > z ? 1 : 2, a = (along + 1) % 3, b = (along + 2) % 3;
        const float step = Component(direction, along), step_a = Component(direction, a),
                    step_b = Component(direction, b);
        const float reach = Extent(BoxMin(box)) + Extent(BoxMax(box)) + Extent(position);
        const float margin = 1 + reach * ROUNDING;
        const float margin_a = margin * (std::fabs(step) + std::fabs(step_a)),
                    margin_b = margin * (std::fabs(step) + std::fabs(step_b));
        sides.resize(s.vertices.size());
        for (size_t i = 0; i < sides.size(); ++i) {
            const D3DVECTOR d = s.vertices[i] - position;
            const float beside_a = Component(d, a) * step - Component(d, along) * step_a,
                        beside_b = Component(d, b) * step - Component(d, along) * step_b;
            sides[i] = static_cast<uint8_t>((beside_a > margin_a) | (beside_a < -margin_a) << 1 |
                                            (beside_b > margin_b) << 2 | (beside_b < -margin_b) << 3);
        }
    }
    bool MayMeet(const TRIANGLE& t) const { // whose corners are there
        return sides.empty() || !(sides[t.i[0]] & sides[t.i[1]] & sides[t.i[2]]);
    }

private:
    static constexpr size_t WORTHWHILE = 32; // triangles
    static constexpr float ROUNDING = 0.000002f;
    static float Extent(const D3DVECTOR& v) { return std::fabs(v.x) + std::fabs(v.y) + std::fabs(v.z); }

    std::vector<uint8_t> sides; // a bit each: beyond the margin on the one and the other side, of the two axes
};

// The nearest hit nearer than p; p follows it. Flat surfaces come first.
bool FindNearestHit(const Brush& brush, const D3DVECTOR& position, const D3DVECTOR& direction, float& p,
                    SurfaceHit& hit) {
    const D3DVECTOR half = (BoxMax(brush.bbox) - BoxMin(brush.bbox)) * 0.5f;
    if (!s_math.BoxRayIntersectInner(position, direction, brush.pivot, half))
        return false;
    bool found = false;
    brush.ForEachSurface([&](const Surface& s, int index, bool curved) {
        const LineSides sides(s, brush.bbox, position, direction);
        for (const TRIANGLE& triangle : s.tri_indices) {
            if (!s.HasCorners(triangle) || !sides.MayMeet(triangle))
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

// From world to client pixels of the current view.
class PixelProjection {
public:
    PixelProjection() {
        crMMultiply(crvMatrices[CRM_VIEW], crvMatrices[CRM_PROJ], m);
        half_width = static_cast<float>(crvViewportW) * 0.5f;
        half_height = static_cast<float>(crvViewportH) * 0.5f;
    }

    // False for a point that is not in front of the eye.
    bool Project(const D3DVECTOR& p, float& x, float& y) const {
        const float w = p.x * m.m[0][3] + p.y * m.m[1][3] + p.z * m.m[2][3] + m.m[3][3];
        if (!(w > 0))
            return false;
        x = ((p.x * m.m[0][0] + p.y * m.m[1][0] + p.z * m.m[2][0] + m.m[3][0]) / w + 1) * half_width;
        y = (1 - (p.x * m.m[0][1] + p.y * m.m[1][1] + p.z * m.m[2][1] + m.m[3][1]) / w) * half_height;
        return true;
    }

    // True if a box, given by its centre and half extents, shows nothing within reach of a pixel. Only a parallel
    // projection is asked; any other gives false.
    bool IsFarFrom(const D3DVECTOR& center, const D3DVECTOR& half, float px, float py, float reach) const {
        float x, y;
        if (m.m[0][3] != 0 || m.m[1][3] != 0 || m.m[2][3] != 0 || m.m[3][3] != 1 || !Project(center, x, y))
            return false;
        return std::fabs(px - x) > Extent(half, 0) * half_width + reach ||
               std::fabs(py - y) > Extent(half, 1) * half_height + reach;
    }

private:
    float Extent(const D3DVECTOR& half, int column) const {
        return half.x * std::fabs(m.m[0][column]) + half.y * std::fabs(m.m[1][column]) +
               half.z * std::fabs(m.m[2][column]);
    }

    D3DMATRIX m;
    float half_width, half_height;
};

// True if a pixel lies beside the segment and within reach of its line.
bool PassesPixel(float ax, float ay, float bx, float by, float px, float py, float reach) {
    constexpr float SHORTEST = 0.00001f; // squared pixels
    const float dx = bx - ax, dy = by - ay, ex = px - ax, ey = py - ay;
    const float square = dx * dx + dy * dy;
    if (!(square >= SHORTEST))
        return false;
    const float along = (ex * dx + ey * dy) / square;
    return along >= 0 && along <= 1 && std::fabs(ex * dy - ey * dx) / std::sqrt(square) < reach;
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

bool Brush::TestWireSelection(POINT mouse) const {
    constexpr float REACH = 3.0f;    // desktop pixels
    constexpr float ROUNDING = 1.0f; // vertices cut to whole numbers can leave the box by less than this
    const PixelProjection projection;
    const float reach = REACH * crvDisplayScale;
    const auto px = static_cast<float>(mouse.x), py = static_cast<float>(mouse.y);
    const D3DVECTOR min = BoxMin(bbox), max = BoxMax(bbox), margin{ROUNDING, ROUNDING, ROUNDING};
    if (projection.IsFarFrom((min + max) * 0.5f, (max - min) * 0.5f + margin, px, py, reach))
        return false;
    for (const std::vector<Surface>* list : {&surfaces, &curved_surfaces})
        for (const Surface& s : *list)
            for (const EDGE& e : s.edge_indices) {
                float ax, ay, bx, by;
                if (e.i[0] < s.vertices.size() && e.i[1] < s.vertices.size() &&
                    projection.Project(s.vertices[e.i[0]], ax, ay) && projection.Project(s.vertices[e.i[1]], bx, by) &&
                    PassesPixel(ax, ay, bx, by, px, py, reach))
                    return true;
            }
    return false;
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
