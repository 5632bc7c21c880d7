// Floats of files and users as integers: any float gives one.
#pragma once

#include <algorithm>
#include <cmath>

// Truncated; what no whole number reaches is cut off, and what is no number gives 0.
inline int WholeNumber(float f) {
    constexpr float MOST = 2147483520.0f; // the greatest float below 2 to the 31
    return std::isnan(f) ? 0 : static_cast<int>(std::clamp(f, -MOST, MOST));
}
