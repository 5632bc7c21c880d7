// Cutting a rectangle out of the triangles of a surface.
#include "scene/Decal.h"

#include <cmath>

#include "foundation/Quaternion.h"
#include "foundation/SpecialMath.h"
#include "render/Matrix.h"
#include "render/Textures.h"
#include "scene/Brush.h"

namespace {

constexpr float LEAST_FACING = 0.5f; // cosine between a triangle and the decal: 60 degrees
constexpr float REACH = 4.0f;        // world units from the centre of the decal to the plane of a triangle
constexpr uint32_t FAILED_CUT_COLOR = 0xFF00FF00;
constexpr int NONE = -1;

struct Axes {
    D3DVECTOR x, y;
};

// Unit axes of the plane of a unit normal. The corners run around the normal as the corners of a triangle that faces
// it.
Axes PlaneAxes(const D3DVECTOR& n, float degrees) {
    const float ax = std::fabs(n.x), ay = std::fabs(n.y), az = std::fabs(n.z);
    Axes axes;
    if (ax > ay && ax > az) {
        axes.y = NormalizeOrZero(n.x >= 0 ? D3DVECTOR{-n.y, n.x, 0} : D3DVECTOR{n.y, -n.x, 0});
        axes.x = CrossProduct(n, axes.y);
    } else if (ay > ax && ay > az) {
        axes.y = NormalizeOrZero({0, -n.z, n.y});
        axes.x = CrossProduct(n, axes.y);
    } else {
        axes.x = NormalizeOrZero({-n.z, 0, n.x});
        axes.y = CrossProduct(axes.x, n);
    }
    const float angle = degrees * DEGREE_TO_TURN * TWO_PI;
    const D3DMATRIX turn = Quaternion::from_rotation(n, -angle).to_matrix();
    for (D3DVECTOR* axis : {&axes.x, &axes.y}) {
        crMTransform3(turn, *axis, *axis);
        *axis = NormalizeOrZero(*axis);
    }
    return axes;
}

struct Rectangle {
    D3DVECTOR position, normal;
    std::array<D3DVECTOR, 4> bounds; // the corner at low x and high y, then on toward high x
};

struct Corners {
    D3DVECTOR v[3];
    D3DVECTOR normal; // unit length, 0 for a triangle without area

    Corners(const Surface& s, const TRIANGLE& t) : v{s.vertices[t.i[0]], s.vertices[t.i[1]], s.vertices[t.i[2]]} {
        normal = NormalizeOrZero(CrossProduct(v[1] - v[0], v[2] - v[0]));
    }
    bool Faces(const D3DVECTOR& n) const { return DotProduct(normal, n) >= LEAST_FACING; }
    float Distance(const D3DVECTOR& p) const { return DotProduct(p - v[0], normal); }
};

bool Qualifies(const Surface& s, const Rectangle& rectangle) {
    for (const TRIANGLE& t : s.tri_indices) {
        if (!s.HasCorners(t))
            continue;
        const Corners corners(s, t);
        if (corners.Faces(rectangle.normal) && std::fabs(corners.Distance(rectangle.position)) <= REACH)
            return true;
    }
    return false;
}

// A corner of the polygon that the rectangle and a triangle share: a corner of the rectangle (no edge), a corner of the
// triangle (no plane), or where an edge crosses a side.
struct ClipPoint {
    D3DVECTOR place;
    int cp_plane, cp_edge;

    bool IsRectangleCorner() const { return cp_edge == NONE; }
    bool IsTriangleCorner() const { return cp_plane == NONE; }
};

int NextSide(int plane) { return (plane + 1) & 3; }
int NextEdge(int edge) { return (edge + 1) % 3; }

// True if the outline of the polygon may run from one point to the other, in the sense in which both outlines turn.
bool Follows(const ClipPoint& from, const ClipPoint& to) {
    const bool along_edge =
        to.cp_edge == from.cp_edge || (to.IsTriangleCorner() && to.cp_edge == NextEdge(from.cp_edge));
    const bool along_side =
        to.cp_plane == from.cp_plane || (to.IsRectangleCorner() && to.cp_plane == NextSide(from.cp_plane));
    return from.IsRectangleCorner() ? along_side : from.IsTriangleCorner() ? along_edge : along_edge || along_side;
}

class Clipper {
public:
    Clipper(const std::array<PLANE, 4>& planes, const Rectangle& cut_rectangle)
        : cp(planes), rectangle(cut_rectangle) {}

    // The points of one triangle's polygon, in no order.
    void Collect(const Corners& triangle);
    // Their outline. False if it does not close; it then holds the points that were found to follow each other.
    bool Walk(std::vector<D3DVECTOR>& outline) const;

private:
    void Add(const D3DVECTOR& place, int plane, int edge) {
        if (count < points.size())
            points[count++] = {place, plane, edge};
    }
    void AddCrossings(const Corners& triangle, int plane);
    void AddCorner(const Corners& triangle, int corner);

    const std::array<PLANE, 4>& cp;
    const Rectangle& rectangle;
    unsigned codes[3] = {}; // of the triangle's corners: bit i is set outside of side i
    std::array<ClipPoint, Decal::MAX_CLIP_POINTS> points;
    size_t count = 0;
};

void Clipper::Collect(const Corners& triangle) {
    count = 0;
    for (size_t k = 0; k < 3; ++k) {
        codes[k] = 0;
        for (unsigned side = 0; side < 4; ++side)
            codes[k] |= (cp[side].get_cos(triangle.v[k]) > 0 ? 1u : 0u) << side;
    }
    if (codes[0] & codes[1] & codes[2])
        return;
    for (int side = 0; side < 4; ++side) {
        AddCrossings(triangle, side);
        AddCorner(triangle, side);
    }
    for (int k = 0; k < 3; ++k)
        if (codes[k] == 0)
            Add(triangle.v[k], NONE, k);
}

void Clipper::AddCrossings(const Corners& triangle, int plane) {
    const auto side = static_cast<size_t>(plane), before = (side + 3) & 3, behind = (side + 1) & 3;
    for (int edge = 0; edge < 3; ++edge) {
        const int end = NextEdge(edge);
        if (((codes[edge] ^ codes[end]) >> side & 1) == 0)
            continue;
        D3DVECTOR place;
        float t;
        if (s_math.PlaneIntersect2Sided(triangle.v[edge], triangle.v[end] - triangle.v[edge], rectangle.bounds[side],
                                        cp[side].normal, place, t) &&
            t >= 0 && t <= 1 && cp[behind].get_cos(place) < 0 && cp[before].get_cos(place) < 0)
            Add(place, plane, edge);
    }
}

void Clipper::AddCorner(const Corners& triangle, int corner) {
    D3DVECTOR place;
    float t;
    if (s_math.PlaneIntersect2Sided(rectangle.bounds[static_cast<size_t>(corner)], -rectangle.normal, triangle.v[0],
                                    triangle.normal, place, t) &&
        s_math.PointInTriangle(triangle.v[0], triangle.v[1], triangle.v[2], triangle.normal, place))
        Add(place, corner, NONE);
}

bool Clipper::Walk(std::vector<D3DVECTOR>& outline) const {
    outline.clear();
    if (count == 0)
        return true;
    std::array<bool, Decal::MAX_CLIP_POINTS> used{};
    size_t current = 0;
    for (size_t i = 0; i < count; ++i)
        if (points[i].IsTriangleCorner() || points[i].IsRectangleCorner()) {
            current = i;
            break;
        }
    while (true) {
        used[current] = true;
        outline.push_back(points[current].place);
        if (outline.size() == count)
            return true;
        size_t next = 0;
        while (next < count && (used[next] || !Follows(points[current], points[next])))
            ++next;
        if (next == count)
            return false;
        current = next;
    }
}

// The outline as a fan from its first point, each triangle facing the normal. Without room for it nothing is added.
void AddFan(const std::vector<D3DVECTOR>& outline, const D3DVECTOR& normal, std::vector<D3DVECTOR>& xyz,
            std::vector<TRIANGLE>& tris) {
    if (outline.size() < 3 || xyz.size() + outline.size() > Decal::MAX_VERTICES ||
        tris.size() + outline.size() - 2 > Decal::MAX_TRIANGLES)
        return;
    const size_t first = xyz.size();
    xyz.insert(xyz.end(), outline.begin(), outline.end());
    for (size_t i = 0; i + 2 < outline.size(); ++i) {
        const D3DVECTOR across = CrossProduct(outline[i + 1] - outline[0], outline[i + 2] - outline[0]);
        TRIANGLE t{
            {static_cast<uint16_t>(first), static_cast<uint16_t>(first + i + 1), static_cast<uint16_t>(first + i + 2)}};
        if (DotProduct(across, normal) < 0)
            std::swap(t.i[0], t.i[2]);
        tris.push_back(t);
    }
}

bool IsFinite(const D3DVECTOR& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

bool HasSize(const DecalTemplate& source) {
    return source.x_size > 0 && source.y_size > 0 && std::isfinite(source.x_size) && std::isfinite(source.y_size) &&
           std::isfinite(source.o_rotation) && IsFinite(source.o_position);
}

} // namespace

bool Decal::Create(const Brush& brush, int surface, bool curved, const DecalTemplate& source) {
    texture = source.texture;
    color = source.color;
    x_size = source.x_size, y_size = source.y_size;
    o_position = source.o_position;
    o_normal = NormalizeOrZero(source.o_normal);
    o_rotation = source.o_rotation;
    id = source.id;
    owner = &brush;
    owner_surface = surface;
    const CRTexture* record = crTRecord(texture);
    alpha_decal = record && (record->type == TEX_ALPHA || record->type == TEX_ALPHA_NORMAL);
    if (!HasSize(source) || !(SquareMagnitude(o_normal) > LEAST_FACING))
        return false;

    const Axes axes = PlaneAxes(o_normal, o_rotation);
    const D3DVECTOR across = axes.x * (x_size * 0.5f), up = axes.y * (y_size * 0.5f);
    const Rectangle rectangle{
        o_position,
        o_normal,
        {o_position - across + up, o_position + across + up, o_position + across - up, o_position - across - up}};
    cp = {PLANE(rectangle.bounds[0], axes.y), PLANE(rectangle.bounds[1], axes.x), PLANE(rectangle.bounds[2], -axes.y),
          PLANE(rectangle.bounds[3], -axes.x)};

    const Surface& s = (curved ? brush.curved_surfaces : brush.surfaces)[static_cast<size_t>(surface)];
    if (!Qualifies(s, rectangle))
        return false;
    Clipper clipper(cp, rectangle);
    std::vector<D3DVECTOR> outline;
    for (const TRIANGLE& t : s.tri_indices) {
        if (!s.HasCorners(t))
            continue;
        const Corners corners(s, t);
        if (!corners.Faces(o_normal))
            continue;
        clipper.Collect(corners);
        if (!clipper.Walk(outline))
            color.dw_color = FAILED_CUT_COLOR;
        AddFan(outline, o_normal, xyz, tris);
    }
    uv.clear();
    for (const D3DVECTOR& p : xyz)
        uv.push_back({std::fabs(cp[3].get_cos(p)) / x_size, std::fabs(cp[0].get_cos(p)) / y_size});
    return !tris.empty();
}

bool Decal::TestSelection(const D3DVECTOR& start, const D3DVECTOR& direction) const {
    for (const TRIANGLE& t : tris) {
        const D3DVECTOR &a = xyz[t.i[0]], &b = xyz[t.i[1]], &c = xyz[t.i[2]];
        const D3DVECTOR normal = CrossProduct(b - a, c - a);
        D3DVECTOR place;
        float distance;
        if (s_math.PlaneIntersectEx(start, direction, a, normal, place, distance) &&
            s_math.PointInTriangle(a, b, c, normal, place))
            return true;
    }
    return false;
}
