// The colours of runs of pixels of the software device. Textures as the views use them are read in whole words; the
// sums are of whole numbers, so that their order does not show.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "render/SoftFill.h"
#include "render/SoftPixel.h"

namespace {

constexpr double SUBPIXELS = 256; // of a pixel
constexpr uint32_t WHOLE = 255;
constexpr int BLOCK = 8; // pixels of a row that share a level of a texture
constexpr double BLOCK_SUBPIXELS = BLOCK * SUBPIXELS;

int ToByte(double value) { return static_cast<int>(std::clamp(value, 0.0, 255.0) + 0.5); }

uint32_t ToWord(const int (&rgb)[4]) { return static_cast<uint32_t>(rgb[0] << 16 | rgb[1] << 8 | rgb[2]); }

// a times b of 0 to 255 each in parts of 255, rounded to the nearest.
uint32_t Times(uint32_t a, uint32_t b) {
    const uint32_t product = a * b + WHOLE / 2;
    return (product + 1 + (product >> 8)) >> 8; // product / 255, up to 65534
}

bool IsPowerOfTwo(uint32_t side) { return (side & (side - 1)) == 0; }

// The place of a texel of an axis that repeats, its side a power of two, or ends at its edges.
uint32_t PlaceOf(int64_t at, uint32_t side, bool repeats) {
    const int64_t last = int64_t{side} - 1;
    return static_cast<uint32_t>(repeats ? at & last : std::clamp<int64_t>(at, 0, last));
}

uint32_t WordAt(const uint8_t* row, uint32_t x) {
    uint32_t word;
    std::memcpy(&word, row + size_t{x} * sizeof(word), sizeof(word));
    return word;
}

// Red and blue, each with room for 32 bits.
uint64_t RedAndBlue(uint32_t word) { return uint64_t{word & 0xFF0000} << 16 | (word & 0xFF); }

// The sum of texels by weights that come to 65536, rounded to the nearest, without alpha.
class Mix {
public:
    void Add(uint32_t word, uint32_t weight) {
        red_blue += RedAndBlue(word) * weight;
        green += (word >> 8 & 255) * weight;
    }
    uint32_t Word() const {
        return static_cast<uint32_t>(red_blue >> 48) << 16 | (green >> 16) << 8 |
               static_cast<uint32_t>(red_blue >> 16 & 255);
    }

private:
    uint64_t red_blue = 0x0000800000008000; // as RedAndBlue
    uint32_t green = 0x8000;
};

// Four texels by how far, in parts of 256, a place lies from the upper left one's centre.
inline uint32_t MixOf(const uint8_t* upper, const uint8_t* lower, uint32_t x0, uint32_t x1, uint32_t right,
                      uint32_t down) {
    Mix mix;
    mix.Add(WordAt(upper, x0), (256 - right) * (256 - down));
    mix.Add(WordAt(upper, x1), right * (256 - down));
    mix.Add(WordAt(lower, x0), (256 - right) * down);
    mix.Add(WordAt(lower, x1), right * down);
    return mix.Word();
}

} // namespace

bool SoftPixel::HasWordStages() const {
    for (uint32_t i = 0; i < stage_count; ++i) {
        const Stage& stage = stages[i];
        const bool selects = stage.color_op == OP_SELECTARG1 && stage.color_arg[0] == ARG_TEXTURE;
        const bool modulates = stage.color_op == OP_MODULATE && stage.color_arg[0] == ARG_TEXTURE &&
                               (stage.color_arg[1] == ARG_DIFFUSE || stage.color_arg[1] == ARG_CURRENT);
        if ((!selects && !modulates) || !stage.texture || !stage.texture->IsWholeBytes())
            return false;
        const uint32_t sides[2] = {stage.texture->Width(), stage.texture->Height()};
        for (int axis = 0; axis < 2; ++axis)
            if (stage.address[axis] != TA_CLAMP && (stage.address[axis] != TA_WRAP || !IsPowerOfTwo(sides[axis])))
                return false;
    }
    return stage_count > 0;
}

bool SoftPixel::RepeatsOneTexture() const {
    return stage_count == 1 && stages[0].address[0] == TA_WRAP && stages[0].address[1] == TA_WRAP;
}

// The level whose texels come nearest to the size of a pixel: one for a block of pixels of a row.
uint32_t SoftPixel::LevelAt(const SoftFill& fill, const Stage& stage, double across, double down) {
    if (stage.last_level == 0)
        return 0;
    const SoftFill::Plane &rhw = fill.planes[SoftFill::V_RHW], *const uv =
                                                                   fill.planes + SoftFill::V_UV + stage.coordinates;
    const auto origin = static_cast<double>(fill.x);
    const double middle = (std::floor((across + origin) / BLOCK_SUBPIXELS) + 0.5) * BLOCK_SUBPIXELS - origin;
    const double place =
        rhw.At(middle, down) > 0 ? middle : across; // outside of the primitive it may be behind the eye
    const double w = 1.0 / rhw.At(place, down), u = uv[0].At(place, down) * w, v = uv[1].At(place, down) * w;
    const double to_x = w * SUBPIXELS * stage.texture->Width(), to_y = w * SUBPIXELS * stage.texture->Height();
    const auto square = [&](double du, double dv, double dw) { // of the texels that a step of a pixel passes
        const double x = (du - u * dw) * to_x, y = (dv - v * dw) * to_y;
        return x * x + y * y;
    };
    const double texels =
        std::max(square(uv[0].right, uv[1].right, rhw.right), square(uv[0].down, uv[1].down, rhw.down));
    constexpr double LEAST = 2, MOST = 0x1p60; // a level n has squares from 2^(2n - 1) to 2^(2n + 1)
    if (!(texels >= LEAST))
        return 0;
    return std::min(stage.last_level, static_cast<uint32_t>(std::ilogb(std::min(texels, MOST)) + 1) / 2);
}

// The pixels of a run from one on that have the same levels.
int SoftPixel::EndOfBlock(const SoftFill& fill, double across, int from, int count) const {
    if (!has_levels)
        return count;
    const int64_t pixel = (static_cast<int64_t>(across) + fill.x) / static_cast<int64_t>(SUBPIXELS) + from;
    return std::min(count, from + BLOCK - static_cast<int>(pixel % BLOCK));
}

// As Sample, of red, green and blue.
void SoftPixel::SampleWords(const Stage& stage, const SoftSurface::Level& level, float u, float v, uint32_t (&rgb)[3]) {
    constexpr int64_t TEXEL = 256;
    const uint32_t width = level.width, height = level.height;
    const bool repeats_u = stage.address[0] == TA_WRAP, repeats_v = stage.address[1] == TA_WRAP;
    int64_t x = ToSubtexels(u, width), y = ToSubtexels(v, height);
    if (!stage.smooth) {
        const uint32_t word =
            WordAt(level.WordRow(PlaceOf(y >> 8, height, repeats_v)), PlaceOf(x >> 8, width, repeats_u));
        rgb[0] = word >> 16 & 255, rgb[1] = word >> 8 & 255, rgb[2] = word & 255;
        return;
    }
    x -= TEXEL / 2, y -= TEXEL / 2; // from the centres of the texels
    const auto right = static_cast<uint32_t>(x & 255), down = static_cast<uint32_t>(y & 255);
    x >>= 8, y >>= 8;
    const uint8_t* const upper = level.WordRow(PlaceOf(y, height, repeats_v));
    const uint8_t* const lower = level.WordRow(PlaceOf(y + 1, height, repeats_v));
    const uint32_t x0 = PlaceOf(x, width, repeats_u), x1 = PlaceOf(x + 1, width, repeats_u);
    const uint32_t word = MixOf(upper, lower, x0, x1, right, down);
    rgb[0] = word >> 16, rgb[1] = word >> 8 & 255, rgb[2] = word & 255;
}

// As ColorWords, of one repeated texture and one colour.
template <bool SMOOTH>
void SoftPixel::ColorTexture(const SoftFill& fill, double across, double down, uint32_t* pixels, int count) const {
    constexpr int64_t TEXEL = 256;
    const Stage& stage = stages[0];
    const auto red = static_cast<uint32_t>(fill.color[0]), green = static_cast<uint32_t>(fill.color[1]),
               blue = static_cast<uint32_t>(fill.color[2]);
    const bool as_is = stage.color_op == OP_SELECTARG1 || (red & green & blue) == WHOLE;
    const SoftFill::Plane* const uv = fill.planes + SoftFill::V_UV + stage.coordinates;
    for (int first = 0; first < count;) {
        const double start = across + first * SUBPIXELS;
        const SoftSurface::Level level = stage.texture->LevelAt(LevelAt(fill, stage, start, down));
        const uint32_t width = level.width, height = level.height;
        const int64_t last_x = int64_t{width} - 1, last_y = int64_t{height} - 1;
        const auto row_at = [&](int64_t y) { return level.WordRow(static_cast<uint32_t>(y & last_y)); };
        const auto column_at = [&](int64_t x) { return static_cast<uint32_t>(x & last_x); };
        const auto texel_at = [&](int64_t x, int64_t y) {
            if constexpr (!SMOOTH)
                return WordAt(row_at(y >> 8), column_at(x >> 8));
            x -= TEXEL / 2, y -= TEXEL / 2; // from the centres of the texels
            const auto right = static_cast<uint32_t>(x & 255), below = static_cast<uint32_t>(y & 255);
            x >>= 8, y >>= 8;
            const uint8_t *const upper = row_at(y), *const lower = row_at(y + 1);
            return MixOf(upper, lower, column_at(x), column_at(x + 1), right, below);
        };
        SoftFill::Doubles place = {start, start + SUBPIXELS};
        const int end = EndOfBlock(fill, across, first, count);
        for (int i = first; i < end; i += 2, place += 2 * SUBPIXELS) {
            const SoftFill::Doubles w = 1.0 / fill.planes[SoftFill::V_RHW].At(place, down);
            const SoftFill::Doubles u = uv[0].At(place, down) * w, v = uv[1].At(place, down) * w;
            for (int k = 0; k < std::min(2, end - i); ++k) {
                const uint32_t word = texel_at(ToSubtexels(static_cast<float>(u[k]), width),
                                               ToSubtexels(static_cast<float>(v[k]), height));
                pixels[i + k] = as_is ? word & 0xFFFFFF
                                      : Times(word >> 16 & 255, red) << 16 | Times(word >> 8 & 255, green) << 8 |
                                            Times(word & 255, blue);
            }
        }
        first = end;
    }
}

void SoftPixel::ColorWords(const SoftFill& fill, double across, double down, uint32_t* pixels, int count) const {
    uint32_t diffuse[3] = {};
    for (int c = 0; c < 3; ++c)
        diffuse[c] = static_cast<uint32_t>(fill.color[c]);
    SoftSurface::Level levels[TEXTURE_STAGES];
    for (int i = 0, end = 0; i < count; ++i, across += SUBPIXELS) {
        if (i == end) {
            for (uint32_t s = 0; s < stage_count; ++s)
                levels[s] = stages[s].texture->LevelAt(LevelAt(fill, stages[s], across, down));
            end = EndOfBlock(fill, across - i * SUBPIXELS, i, count);
        }
        const double w = 1.0 / fill.planes[SoftFill::V_RHW].At(across, down);
        for (int c = 0; !fill.one_color && c < 3; ++c)
            diffuse[c] = static_cast<uint32_t>(ToByte(fill.planes[SoftFill::V_COLOR + c].At(across, down) * w));
        uint32_t current[3] = {diffuse[0], diffuse[1], diffuse[2]};
        for (uint32_t s = 0; s < stage_count; ++s) {
            const Stage& stage = stages[s];
            const SoftFill::Plane* const planes = fill.planes + SoftFill::V_UV + stage.coordinates;
            uint32_t texel[3];
            SampleWords(stage, levels[s], static_cast<float>(planes[0].At(across, down) * w),
                        static_cast<float>(planes[1].At(across, down) * w), texel);
            const bool selects = stage.color_op == OP_SELECTARG1;
            const uint32_t* const other = stage.color_arg[1] == ARG_DIFFUSE ? diffuse : current;
            for (int c = 0; c < 3; ++c)
                current[c] = selects ? texel[c] : Times(texel[c], other[c]);
        }
        pixels[i] = current[0] << 16 | current[1] << 8 | current[2];
    }
}

void SoftPixel::Color(const SoftFill& fill, double across, double down, uint32_t* pixels, int count) const {
    if (repeats_texture && fill.one_color) {
        stages[0].smooth ? ColorTexture<true>(fill, across, down, pixels, count)
                         : ColorTexture<false>(fill, across, down, pixels, count);
        return;
    }
    if (word_stages) {
        ColorWords(fill, across, down, pixels, count);
        return;
    }
    Input input;
    std::copy_n(fill.color, 4, input.color);
    for (int i = 0; i < count; ++i, across += SUBPIXELS) {
        Take(fill, across, down, input);
        int rgba[4];
        RunStages(input, rgba);
        pixels[i] = ToWord(rgba);
    }
}

void SoftPixel::Take(const SoftFill& fill, double across, double down, Input& input) const {
    const double w = 1.0 / fill.planes[SoftFill::V_RHW].At(across, down);
    for (int c = 0; !fill.one_color && c < 4; ++c)
        input.color[c] = ToByte(fill.planes[SoftFill::V_COLOR + c].At(across, down) * w);
    for (int k = SoftFill::V_UV; k < fill.value_count; ++k)
        input.uv[k - SoftFill::V_UV] = static_cast<float>(fill.planes[k].At(across, down) * w);
    for (uint32_t s = 0; has_levels && s < stage_count; ++s)
        input.level[s] = static_cast<uint8_t>(LevelAt(fill, stages[s], across, down));
}
