#include "foundation/Vector.h"

COLOR MakeColor(uint32_t r, uint32_t g, uint32_t b, uint32_t a) {
    r &= 0xFF, g &= 0xFF, b &= 0xFF, a &= 0xFF;
    return {a << 24 | r << 16 | g << 8 | b, static_cast<float>(r) * BYTE_TO_UNIT, static_cast<float>(g) * BYTE_TO_UNIT,
            static_cast<float>(b) * BYTE_TO_UNIT, static_cast<float>(a) * BYTE_TO_UNIT};
}
