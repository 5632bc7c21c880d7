// One primitive of the software device as its pixels need it.
#pragma once

#include "render/SoftVertex.h"

struct SoftFill {
    using Doubles = double __attribute__((vector_size(16)));
    struct Plane {                 // of one value over the picture
        double start, right, down; // at the origin, and its growth by 1/256 pixels
        template <class Value>     // a double, or Doubles
        Value At(Value across, double below) const {
            return start + right * across + down * below;
        }
    };
    // Places among the values of a pixel
    enum : int { V_DEPTH, V_RHW, V_COLOR, V_UV = V_COLOR + 4, MOST_VALUES = SoftVertex::CUT - SoftVertex::Z };

    bool one_color = false, flat = false;
    int value_count = 0;  // that the pixels need
    int64_t x = 0, y = 0; // the origin, 1/256 pixels
    int color[4] = {};    // red, green, blue, alpha, if it is one
    Plane planes[MOST_VALUES];
};
