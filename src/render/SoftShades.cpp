#include <algorithm>

#include "render/SoftRaster.h"

namespace {

constexpr int64_t SUBPIXELS = 256, CENTRE = SUBPIXELS / 2; // of a pixel

} // namespace

int SoftShades::ColorRun(const SoftTarget& target, size_t at, int x, int y, int most) const {
    const uint32_t word = target.pixels[at];
    int count = 1;
    while (count < most && target.pixels[at + static_cast<size_t>(count)] == word)
        ++count;
    const Shade& shade = shades[word & ~PENDING];
    if (!shade.pixel) {
        std::fill_n(target.pixels + at, count, shade.value);
        return count;
    }
    const SoftFill& fill = fills[shade.value];
    shade.pixel->Color(fill, static_cast<double>(x * SUBPIXELS + CENTRE - fill.x),
                       static_cast<double>(y * SUBPIXELS + CENTRE - fill.y), target.pixels + at, count);
    return count;
}

void SoftShades::ColorPixel(const SoftTarget& target, size_t at) const {
    const auto width = static_cast<size_t>(target.width);
    ColorRun(target, at, static_cast<int>(at % width), static_cast<int>(at / width), 1);
}

void SoftShades::ColorAll(const SoftTarget& target) {
    constexpr int BLOCK = 4;
    for (int y = target.top; y < target.bottom && !shades.empty(); ++y) {
        const size_t row = target.At(0, y);
        const uint32_t* const pixels = target.pixels + row;
        for (int x = target.left; x < target.right;) {
            if (x + BLOCK <= target.right &&
                ((pixels[x] | pixels[x + 1] | pixels[x + 2] | pixels[x + 3]) & PENDING) == 0)
                x += BLOCK;
            else if ((pixels[x] & PENDING) == 0)
                ++x;
            else
                x += ColorRun(target, row + static_cast<size_t>(x), x, y, target.right - x);
        }
    }
    shades.clear();
    fills.clear();
}
