#include "render/DisplayScale.h"

#include <algorithm>
#include <cmath>

float crvDisplayScale = 1;
uint32_t crvDotSize = 1;

void crSetDisplayScale(float scale) {
    constexpr float MOST = 8;
    crvDisplayScale = scale > 1 ? std::min(scale, MOST) : 1;
    crvDotSize = static_cast<uint32_t>(std::lround(crvDisplayScale));
}
