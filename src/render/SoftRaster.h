// Which pixels a primitive of the software device covers, and the values there.
#pragma once

#include <cstdint>

#include "render/SoftPixel.h"

struct SoftVertex {
    static constexpr int COORDINATE_SETS = 3;
    // In clip space; W is 1 / w once on the screen, where the colours and coordinates are multiplied by it. Colours 0
    // to 255. CUT: distances from the clip planes.
    enum : int { X, Y, Z, W, RED, UV = RED + 4, CUT = UV + 2 * COORDINATE_SETS, COUNT = CUT + 6 };
    float v[COUNT] = {};
    uint32_t argb = 0;                      // the colour in one word
    bool mixed = false;                     // the colour lies between two, argb does not hold
    int32_t subpixel_x = 0, subpixel_y = 0; // on the screen, 1/256 pixels
};

// The next whole number at or below, of values that fit 64 bits.
inline int64_t FloorToInteger(double value) {
    const auto whole = static_cast<int64_t>(value);
    return whole - (static_cast<double>(whole) > value ? 1 : 0);
}

class SoftRaster {
public:
    SoftRaster(const SoftState& device_state, const SoftTarget& picture);

    static constexpr int MOST_CORNERS = 3 + 13; // every plane of a cut adds one at most

    // Rounds the position of a vertex that has come to the screen.
    static void Round(SoftVertex& vertex);
    uint32_t CoordinateSets() const { return pixel.CoordinateSets(); }
    int ValuesEnd() const { return SoftVertex::Z + value_count; } // of the values of a vertex that pixels need
    // Corners on the screen, no farther out than 65536 pixels.
    void Polygon(const SoftVertex* const* vertices, int count); // convex and flat
    void Line(const SoftVertex& from, const SoftVertex& to);
    void Point(const SoftVertex& at);

private:
    static constexpr int MOST_VALUES = SoftVertex::CUT - SoftVertex::Z;
    struct Corner {
        int64_t x, y; // 1/256 pixels
        const SoftVertex* vertex;
    };
    struct Plane {                 // of one value over the picture
        double start, right, down; // at the first corner, and its growth by 1/256 pixels
    };
    struct Fill { // of one primitive
        bool one_color = false, flat = false;
        SoftPixel::Input input; // its colour, if it is one
        Plane planes[MOST_VALUES];
    };
    class EdgeRows;

    static Corner ToCorner(const SoftVertex& vertex) { return {vertex.subpixel_x, vertex.subpixel_y, &vertex}; }
    // True when nothing of a polygon can show. Else notes that it will be drawn.
    bool IsHidden(const Corner* corners, int count);
    // False when nothing of it will show.
    bool StartFill(Fill& fill, bool one_color, uint32_t argb);
    void Triangle(const Corner& a, const Corner& b, const Corner& c, int64_t area, bool one_color);
    void Span(int row, int64_t first, int64_t end, const Corner& origin, Fill& fill);
    void FlatSpan(size_t at, size_t end, double across, double down, const Plane& depth);
    void FlatRun(size_t at, size_t stride, int64_t count, float depth);
    void Pixel(size_t at, float depth, const double* values, Fill& fill);

    SoftTarget target;
    SoftPixel pixel;
    uint32_t cull;
    int value_count; // of the values that the pixels need, from Z on
    SoftPixel::FlatColor flat_color;
    uint32_t flat_argb = 0;
    bool flat_known = false;
};
