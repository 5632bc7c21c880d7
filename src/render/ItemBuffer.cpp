#include "render/ItemBuffer.h"

#include <algorithm>
#include <cmath>

#include "render/Matrix.h"

namespace {

constexpr int SUBPIXELS = 256;
constexpr int CENTRE = SUBPIXELS / 2; // of a pixel
constexpr double GUARD = 4;           // how many times the field of view may be reached without a cut

// View space. Doubles, so that a cut of a triangle that reaches far stays on its edge.
struct Point {
    double x, y, z;
};

// Signed distances from the planes of a cut; points at 0 and above are inside.
double FromNear(const Point& p, double zn) { return p.z - zn; }
double FromRight(const Point& p, double) { return GUARD * p.z - p.x; }
double FromLeft(const Point& p, double) { return GUARD * p.z + p.x; }
double FromTop(const Point& p, double) { return GUARD * p.z - p.y; }
double FromBottom(const Point& p, double) { return GUARD * p.z + p.y; }

bool IsFinite(const D3DVECTOR& p) { return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z); }

// 1/256 pixels, halves up. The shift makes the number positive, so that the conversion rounds down.
int64_t ToSubpixels(double pixels) {
    constexpr int64_t SHIFT = int64_t{1} << 32;
    return static_cast<int64_t>(pixels * SUBPIXELS + 0.5 + static_cast<double>(SHIFT)) - SHIFT;
}

// Rounded up; divisor above 0.
int64_t CeilDivide(int64_t dividend, int64_t divisor) {
    const int64_t quotient = dividend / divisor;
    return quotient + (dividend % divisor > 0 ? 1 : 0);
}

// The first pixel whose centre is at or beyond a position.
int64_t FirstCentre(int64_t position) { return CeilDivide(position - CENTRE, SUBPIXELS); }

struct ScreenPoint {
    int64_t x, y;
};

// An edge that goes down the picture. Every row whose centre is at its upper end or below, and above its lower end,
// crosses it: so a row that meets a corner crosses exactly one of the two edges there.
struct ScreenEdge {
    int64_t x, top, bottom, dx, dy;
    int turn; // +1: the inside begins here

    ScreenEdge() = default;
    ScreenEdge(const ScreenPoint& upper, const ScreenPoint& lower, int edge_turn)
        : x(upper.x), top(upper.y), bottom(lower.y), dx(lower.x - upper.x), dy(lower.y - upper.y), turn(edge_turn) {}
    // The first pixel of a row whose centre is on the edge or to its right.
    int64_t FirstPixel(int64_t row_centre) const {
        return CeilDivide((x - CENTRE) * dy + (row_centre - top) * dx, SUBPIXELS * dy);
    }
};

} // namespace

struct ItemBuffer::Polygon {
    static constexpr int MOST = 3 + 5; // every plane of a cut adds one corner at most
    Point corners[MOST];
    int count = 0;

    using Distance = double (*)(const Point&, double);
    void CutAt(Distance distance, double near_distance) {
        Point source[MOST];
        double from[MOST];
        bool cut = false;
        for (int k = 0; k < count; ++k) {
            source[k] = corners[k];
            from[k] = distance(source[k], near_distance);
            cut = cut || from[k] < 0;
        }
        if (!cut)
            return;
        const int source_count = count;
        count = 0;
        for (int k = 0; k < source_count; ++k) {
            const int next = k + 1 < source_count ? k + 1 : 0;
            if (from[k] >= 0)
                corners[count++] = source[k];
            if ((from[k] < 0) != (from[next] < 0) && count < MOST) {
                const int in = from[k] < 0 ? next : k, out = from[k] < 0 ? k : next;
                const double t = from[in] / (from[in] - from[out]);
                const Point &a = source[in], &b = source[out];
                corners[count++] = {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t};
            }
        }
    }
};

ItemBuffer::ItemBuffer(int side_pixels)
    : side(std::clamp(side_pixels, 1, MAX_SIDE)), view(crIdentity()),
      pixels(static_cast<size_t>(side) * static_cast<size_t>(side)), depth(pixels.size()) {}

void ItemBuffer::Clear(uint32_t background) {
    std::fill(pixels.begin(), pixels.end(), background);
    std::fill(depth.begin(), depth.end(), 0.0f);
}

void ItemBuffer::SetView(const D3DMATRIX& view_matrix, float near_distance, float far_distance) {
    view = view_matrix;
    zn = near_distance;
    zf = far_distance;
}

D3DVECTOR ItemBuffer::ToView(const D3DVECTOR& p) const {
    const auto& m = view.m;
    return {p.x * m[0][0] + p.y * m[1][0] + p.z * m[2][0] + m[3][0],
            p.x * m[0][1] + p.y * m[1][1] + p.z * m[2][1] + m[3][1],
            p.x * m[0][2] + p.y * m[1][2] + p.z * m[2][2] + m[3][2]};
}

bool ItemBuffer::IsOutside(const D3DVECTOR (&corners)[3]) const {
    const auto all = [&corners](auto&& test) { return test(corners[0]) && test(corners[1]) && test(corners[2]); };
    return all([this](const D3DVECTOR& p) { return p.z < zn; }) ||
           all([this](const D3DVECTOR& p) { return p.z > zf; }) || all([](const D3DVECTOR& p) { return p.x > p.z; }) ||
           all([](const D3DVECTOR& p) { return p.x < -p.z; }) || all([](const D3DVECTOR& p) { return p.y > p.z; }) ||
           all([](const D3DVECTOR& p) { return p.y < -p.z; });
}

void ItemBuffer::Cut(Polygon& polygon) const {
    polygon.CutAt(FromNear, zn);
    for (int k = 0; k < polygon.count; ++k) // rounding must not bring a corner nearer
        polygon.corners[k].z = std::max(polygon.corners[k].z, static_cast<double>(zn));
    for (const Polygon::Distance distance : {FromRight, FromLeft, FromTop, FromBottom})
        polygon.CutAt(distance, zn);
}

void ItemBuffer::DrawTriangle(const D3DVECTOR& p0, const D3DVECTOR& p1, const D3DVECTOR& p2, uint32_t color,
                              bool double_sided) {
    const D3DVECTOR corners[3] = {ToView(p0), ToView(p1), ToView(p2)};
    if (!IsFinite(corners[0]) || !IsFinite(corners[1]) || !IsFinite(corners[2]) || IsOutside(corners))
        return;
    Polygon polygon;
    for (const D3DVECTOR& p : corners)
        polygon.corners[polygon.count++] = {p.x, p.y, p.z};
    Cut(polygon);
    if (polygon.count >= 3)
        Fill(polygon, MakeDepthPlane(corners, polygon), color, double_sided);
}

// The plane n . p = d of the corners, divided by z: 1 / z is linear in the picture.
ItemBuffer::DepthPlane ItemBuffer::MakeDepthPlane(const D3DVECTOR (&corners)[3], const Polygon& polygon) const {
    const double x = corners[0].x, y = corners[0].y, z = corners[0].z;
    const double ax = corners[1].x - x, ay = corners[1].y - y, az = corners[1].z - z;
    const double bx = corners[2].x - x, by = corners[2].y - y, bz = corners[2].z - z;
    const double nx = ay * bz - az * by, ny = az * bx - ax * bz, nz = ax * by - ay * bx;
    const double d = nx * x + ny * y + nz * z;
    const double half = side * 0.5, first = (0.5 - half) / half; // of the first pixel's centre
    DepthPlane plane;
    plane.right = nx / (d * half);
    plane.down = -ny / (d * half);
    plane.start = (nx * first - ny * first + nz) / d;
    double nearest = polygon.corners[0].z, farthest = nearest;
    for (int k = 1; k < polygon.count; ++k) {
        nearest = std::min(nearest, polygon.corners[k].z);
        farthest = std::max(farthest, polygon.corners[k].z);
    }
    plane.low = 1.0 / farthest;
    plane.high = 1.0 / nearest;
    return plane;
}

void ItemBuffer::Fill(const Polygon& polygon, const DepthPlane& plane, uint32_t color, bool double_sided) {
    ScreenPoint points[Polygon::MOST];
    const double half = side * 0.5;
    for (int k = 0; k < polygon.count; ++k) {
        const Point& p = polygon.corners[k];
        points[k] = {ToSubpixels(p.x / p.z * half + half), ToSubpixels(half - p.y / p.z * half)};
    }
    int64_t area = 0, top = points[0].y, bottom = top;
    for (int k = 0; k < polygon.count; ++k) {
        const ScreenPoint &a = points[k], &b = points[k + 1 < polygon.count ? k + 1 : 0];
        area += a.x * b.y - a.y * b.x;
        top = std::min(top, a.y);
        bottom = std::max(bottom, a.y);
    }
    if (area == 0 || (area < 0 && !double_sided))
        return;
    ScreenEdge edges[Polygon::MOST];
    int edge_count = 0;
    for (int k = 0; k < polygon.count; ++k) {
        const ScreenPoint &a = points[k], &b = points[k + 1 < polygon.count ? k + 1 : 0];
        if (a.y > b.y) // a front runs up on its left side
            edges[edge_count++] = ScreenEdge(b, a, area > 0 ? 1 : -1);
        else if (a.y < b.y)
            edges[edge_count++] = ScreenEdge(a, b, area > 0 ? -1 : 1);
    }
    const int64_t first_row = std::max<int64_t>(0, FirstCentre(top));
    const int64_t end_row = std::min<int64_t>(side, FirstCentre(bottom));
    for (int64_t row = first_row; row < end_row; ++row) {
        const int64_t centre = row * SUBPIXELS + CENTRE;
        struct Crossing {
            int64_t pixel;
            int turn;
        } crossings[Polygon::MOST];
        int crossing_count = 0;
        for (int e = 0; e < edge_count; ++e) {
            if (centre < edges[e].top || centre >= edges[e].bottom)
                continue;
            const Crossing crossing{edges[e].FirstPixel(centre), edges[e].turn};
            int place = crossing_count++;
            for (; place > 0 && crossings[place - 1].pixel > crossing.pixel; --place)
                crossings[place] = crossings[place - 1];
            crossings[place] = crossing;
        }
        // Two crossings nearly always; a cut polygon that rounding has dented can have more.
        for (int k = 0, winding = 0; k + 1 < crossing_count; ++k) {
            winding += crossings[k].turn;
            if (winding > 0)
                FillSpan(static_cast<int>(row), crossings[k].pixel, crossings[k + 1].pixel, plane, color);
        }
    }
}

void ItemBuffer::FillSpan(int row, int64_t first, int64_t end, const DepthPlane& plane, uint32_t color) {
    const int left = static_cast<int>(std::max<int64_t>(first, 0));
    const int right = static_cast<int>(std::min<int64_t>(end, side));
    const double row_start = plane.start + plane.down * row;
    const float farthest = 1.0f / zf;
    uint32_t* const row_pixels = pixels.data() + static_cast<size_t>(row) * static_cast<size_t>(side);
    float* const row_depth = depth.data() + static_cast<size_t>(row) * static_cast<size_t>(side);
    for (int x = left; x < right; ++x) {
        const double w = row_start + plane.right * x;
        // A plane seen from its edge gives no number: then the farthest corner counts.
        const auto pixel_depth = static_cast<float>(w > plane.low ? (w < plane.high ? w : plane.high) : plane.low);
        if (pixel_depth > row_depth[x] && pixel_depth >= farthest) {
            row_depth[x] = pixel_depth;
            row_pixels[x] = color;
        }
    }
}
