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
};

class SoftRaster {
public:
    SoftRaster(const SoftState& device_state, const SoftTarget& picture);

    // Corners on the screen, no farther out than 65536 pixels.
    void Polygon(const SoftVertex* corners, int count); // convex and flat
    void Line(const SoftVertex& from, const SoftVertex& to);
    void Point(const SoftVertex& at);

private:
    struct Corner {
        int64_t x, y; // 1/256 pixels
        const SoftVertex* vertex;
    };
    struct Plane {                 // of one value over the picture
        double start, right, down; // at the first corner, and its growth by 1/256 pixels
    };

    static Corner ToCorner(const SoftVertex& vertex);
    void Triangle(const Corner (&corners)[3], int64_t area);
    void Span(int row, int64_t first, int64_t end, const Corner& origin, const Plane* planes);
    void Pixel(int x, int y, const double* values);

    SoftTarget target;
    SoftPixel pixel;
    uint32_t cull;
    int first_value, value_count; // of the values that the pixels need, from Z on
};
