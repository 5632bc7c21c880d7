// The colours of runs of pixels of the software device. Textures as the views use them are read in whole words; the
// sums are of whole numbers, so that their order does not show.
#include <algorithm>
#include <cstring>

#include "render/SoftFill.h"
#include "render/SoftPixel.h"

namespace {

constexpr double SUBPIXELS = 256; // of a pixel
constexpr uint32_t WHOLE = 255;

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

// As Sample, of red, green and blue.
void SoftPixel::SampleWords(const Stage& stage, float u, float v, uint32_t (&rgb)[3]) {
    constexpr int64_t TEXEL = 256;
    const SoftSurface& texture = *stage.texture;
    const uint32_t width = texture.Width(), height = texture.Height();
    const bool repeats_u = stage.address[0] == TA_WRAP, repeats_v = stage.address[1] == TA_WRAP;
    int64_t x = ToSubtexels(u, width), y = ToSubtexels(v, height);
    if (!stage.smooth) {
        const uint32_t word =
            WordAt(texture.Row(PlaceOf(y >> 8, height, repeats_v)), PlaceOf(x >> 8, width, repeats_u));
        rgb[0] = word >> 16 & 255, rgb[1] = word >> 8 & 255, rgb[2] = word & 255;
        return;
    }
    x -= TEXEL / 2, y -= TEXEL / 2; // from the centres of the texels
    const auto right = static_cast<uint32_t>(x & 255), down = static_cast<uint32_t>(y & 255);
    x >>= 8, y >>= 8;
    const uint8_t* const upper = texture.Row(PlaceOf(y, height, repeats_v));
    const uint8_t* const lower = texture.Row(PlaceOf(y + 1, height, repeats_v));
    const uint32_t x0 = PlaceOf(x, width, repeats_u), x1 = PlaceOf(x + 1, width, repeats_u);
    const uint32_t words[4] = {WordAt(upper, x0), WordAt(upper, x1), WordAt(lower, x0), WordAt(lower, x1)};
    const uint32_t weights[4] = {(256 - right) * (256 - down), right * (256 - down), (256 - right) * down,
                                 right * down};
    uint64_t red_blue = 0x0000800000008000;
    uint32_t green = 0x8000;
    for (int k = 0; k < 4; ++k) {
        red_blue += RedAndBlue(words[k]) * weights[k];
        green += (words[k] >> 8 & 255) * weights[k];
    }
    rgb[0] = static_cast<uint32_t>(red_blue >> 48), rgb[1] = green >> 16;
    rgb[2] = static_cast<uint32_t>(red_blue >> 16 & 255);
}

void SoftPixel::ColorWords(const SoftFill& fill, double across, double down, uint32_t* pixels, int count) const {
    uint32_t diffuse[3] = {};
    for (int c = 0; c < 3; ++c)
        diffuse[c] = static_cast<uint32_t>(fill.color[c]);
    for (int i = 0; i < count; ++i, across += SUBPIXELS) {
        const double w = 1.0 / fill.planes[SoftFill::V_RHW].At(across, down);
        for (int c = 0; !fill.one_color && c < 3; ++c)
            diffuse[c] = static_cast<uint32_t>(ToByte(fill.planes[SoftFill::V_COLOR + c].At(across, down) * w));
        uint32_t current[3] = {diffuse[0], diffuse[1], diffuse[2]};
        for (uint32_t s = 0; s < stage_count; ++s) {
            const Stage& stage = stages[s];
            const SoftFill::Plane* const planes = fill.planes + SoftFill::V_UV + stage.coordinates;
            uint32_t texel[3];
            SampleWords(stage, static_cast<float>(planes[0].At(across, down) * w),
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

void SoftPixel::Take(const SoftFill& fill, double across, double down, Input& input) {
    const double w = 1.0 / fill.planes[SoftFill::V_RHW].At(across, down);
    for (int c = 0; !fill.one_color && c < 4; ++c)
        input.color[c] = ToByte(fill.planes[SoftFill::V_COLOR + c].At(across, down) * w);
    for (int k = SoftFill::V_UV; k < fill.value_count; ++k)
        input.uv[k - SoftFill::V_UV] = static_cast<float>(fill.planes[k].At(across, down) * w);
}
