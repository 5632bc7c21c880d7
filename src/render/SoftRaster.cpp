#include "render/SoftRaster.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int64_t SUBPIXELS = 256, CENTRE = SUBPIXELS / 2; // of a pixel
constexpr int MOST_VALUES = SoftVertex::CUT - SoftVertex::Z;
// Places among the values of a pixel
enum : int { V_DEPTH, V_RHW, V_COLOR, V_UV = V_COLOR + 4 };

int64_t ToSubpixels(float pixels) {
    return static_cast<int64_t>(std::floor(static_cast<double>(pixels) * SUBPIXELS + 0.5)); // halves up
}

int64_t FloorDivide(int64_t dividend, int64_t divisor) { // divisor above 0
    return dividend / divisor - (dividend % divisor < 0 ? 1 : 0);
}

int64_t CeilDivide(int64_t dividend, int64_t divisor) { return -FloorDivide(-dividend, divisor); }

// The first pixel whose centre is at or beyond a position.
int64_t FirstCentre(int64_t position) { return CeilDivide(position - CENTRE, SUBPIXELS); }

// The first pixel of a row whose centre is on the edge from upper to lower, or to its right.
template <class Corner>
int64_t FirstPixel(const Corner& upper, const Corner& lower, int64_t row_centre) {
    const int64_t dy = lower.y - upper.y;
    return CeilDivide((upper.x - CENTRE) * dy + (row_centre - upper.y) * (lower.x - upper.x), SUBPIXELS * dy);
}

} // namespace

SoftRaster::SoftRaster(const SoftState& device_state, const SoftTarget& picture)
    : target(picture), pixel(device_state, picture), cull(device_state.states[RS_CULLMODE]), first_value(SoftVertex::Z),
      value_count(V_UV + 2 * static_cast<int>(pixel.CoordinateSets())) {}

SoftRaster::Corner SoftRaster::ToCorner(const SoftVertex& vertex) {
    return {ToSubpixels(vertex.v[SoftVertex::X]), ToSubpixels(vertex.v[SoftVertex::Y]), &vertex};
}

void SoftRaster::Polygon(const SoftVertex* corners, int count) {
    const auto area_of = [](const Corner& a, const Corner& b, const Corner& c) {
        return (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y);
    };
    const Corner first = ToCorner(corners[0]);
    int64_t whole = 0; // above 0: the corners turn clockwise on the screen
    for (int k = 1; k + 1 < count; ++k)
        whole += area_of(first, ToCorner(corners[k]), ToCorner(corners[k + 1]));
    if (whole == 0 || (whole > 0 && cull == CULL_CW) || (whole < 0 && cull == CULL_CCW))
        return;
    for (int k = 1; k + 1 < count; ++k) {
        const Corner b = ToCorner(corners[k]), c = ToCorner(corners[k + 1]);
        const int64_t area = area_of(first, b, c);
        if (area != 0 && (area > 0) == (whole > 0)) // rounding may turn a sliver over
            Triangle({first, b, c}, area);
    }
}

void SoftRaster::Triangle(const Corner (&corners)[3], int64_t area) {
    const Corner &a = corners[0], &b = corners[1], &c = corners[2];
    Plane planes[MOST_VALUES];
    const auto bx = static_cast<double>(b.x - a.x), by = static_cast<double>(b.y - a.y);
    const auto cx = static_cast<double>(c.x - a.x), cy = static_cast<double>(c.y - a.y);
    for (int k = 0; k < value_count; ++k) {
        const double value = a.vertex->v[first_value + k];
        const double to_b = b.vertex->v[first_value + k] - value, to_c = c.vertex->v[first_value + k] - value;
        planes[k] = {value, (to_b * cy - to_c * by) / static_cast<double>(area),
                     (to_c * bx - to_b * cx) / static_cast<double>(area)};
    }
    const Corner* upper[3] = {&a, &b, &c};
    std::sort(upper, upper + 3, [](const Corner* p, const Corner* q) { return p->y < q->y; });
    const Corner &top = *upper[0], &middle = *upper[1], &bottom = *upper[2];
    const int64_t first_row = std::max<int64_t>(FirstCentre(top.y), target.top);
    const int64_t end_row = std::min<int64_t>(FirstCentre(bottom.y), target.bottom);
    for (int64_t row = first_row; row < end_row; ++row) {
        const int64_t centre = row * SUBPIXELS + CENTRE;
        const int64_t on_long_edge = FirstPixel(top, bottom, centre);
        const int64_t on_short_edge =
            centre < middle.y ? FirstPixel(top, middle, centre) : FirstPixel(middle, bottom, centre);
        Span(static_cast<int>(row), std::min(on_long_edge, on_short_edge), std::max(on_long_edge, on_short_edge), a,
             planes);
    }
}

void SoftRaster::Span(int row, int64_t first, int64_t end, const Corner& origin, const Plane* planes) {
    const int left = static_cast<int>(std::max<int64_t>(first, target.left));
    const int right = static_cast<int>(std::min<int64_t>(end, target.right));
    const auto down = static_cast<double>(row * SUBPIXELS + CENTRE - origin.y);
    for (int x = left; x < right; ++x) {
        const auto across = static_cast<double>(x * SUBPIXELS + CENTRE - origin.x);
        double values[MOST_VALUES];
        for (int k = 0; k < value_count; ++k)
            values[k] = planes[k].start + planes[k].right * across + planes[k].down * down;
        Pixel(x, row, values);
    }
}

void SoftRaster::Pixel(int x, int y, const double* values) {
    SoftPixel::Input input;
    input.x = x;
    input.y = y;
    input.depth = static_cast<float>(std::clamp(values[V_DEPTH], 0.0, 1.0));
    const double w = 1.0 / values[V_RHW];
    for (int c = 0; c < 4; ++c)
        input.color[c] = static_cast<int>(std::clamp(values[V_COLOR + c] * w, 0.0, 255.0) + 0.5);
    for (int k = 0; k < value_count - V_UV; ++k)
        input.uv[k] = static_cast<float>(values[V_UV + k] * w);
    pixel.Put(input);
}

void SoftRaster::Line(const SoftVertex& from, const SoftVertex& to) {
    const Corner a = ToCorner(from), b = ToCorner(to);
    const bool across = std::abs(b.x - a.x) >= std::abs(b.y - a.y);
    const int64_t start = across ? a.x : a.y, end = across ? b.x : b.y;
    if (start == end)
        return;
    const int64_t side_start = across ? a.y : a.x, side_growth = (across ? b.y : b.x) - side_start;
    const int64_t length = end - start, step = length > 0 ? 1 : -1;
    // The first point belongs to the line, the last does not.
    int64_t place = step > 0 ? FirstCentre(start) : FloorDivide(start - CENTRE, SUBPIXELS);
    const int64_t stop = step > 0 ? FirstCentre(end) : FloorDivide(end - CENTRE, SUBPIXELS);
    for (; place != stop; place += step) {
        const int64_t gone = place * SUBPIXELS + CENTRE - start;
        const int64_t side =
            FloorDivide(side_start * step * length + side_growth * step * gone, SUBPIXELS * step * length);
        const int64_t x = across ? place : side, y = across ? side : place;
        if (x < target.left || x >= target.right || y < target.top || y >= target.bottom)
            continue;
        const double t = static_cast<double>(gone) / static_cast<double>(length);
        double values[MOST_VALUES];
        for (int k = 0; k < value_count; ++k) {
            const double value = from.v[first_value + k];
            values[k] = value + (to.v[first_value + k] - value) * t;
        }
        Pixel(static_cast<int>(x), static_cast<int>(y), values);
    }
}

void SoftRaster::Point(const SoftVertex& at) {
    const Corner corner = ToCorner(at);
    const int64_t x = FloorDivide(corner.x, SUBPIXELS), y = FloorDivide(corner.y, SUBPIXELS);
    if (x < target.left || x >= target.right || y < target.top || y >= target.bottom)
        return;
    double values[MOST_VALUES];
    std::copy_n(at.v + first_value, value_count, values);
    Pixel(static_cast<int>(x), static_cast<int>(y), values);
}
