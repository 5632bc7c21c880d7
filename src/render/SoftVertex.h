// A vertex on its way to the picture of the software device.
#pragma once

#include <cstdint>

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
