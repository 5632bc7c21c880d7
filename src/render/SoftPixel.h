// What becomes of one pixel that a primitive of the software device covers: texture stages, alpha test, depth,
// blending.
#pragma once

#include <cstdint>

#include "render/SoftState.h"
#include "render/SoftVertex.h"

// A coordinate in 1/256 texels; one too large for that counts as 0.
inline int64_t ToSubtexels(float coordinate, uint32_t side) {
    constexpr double FARTHEST = 1e12;
    const double at = static_cast<double>(coordinate) * side * 256.0;
    return at > -FARTHEST && at < FARTHEST ? FloorToInteger(at) : 0;
}

struct SoftFill;

class SoftPixel {
public:
    struct Input {
        int color[4];                       // red, green, blue, alpha, 0 to 255
        float uv[6] = {};                   // the coordinate sets
        uint8_t level[TEXTURE_STAGES] = {}; // of the texture of each stage
    };
    struct FlatColor {      // what the stages make of one colour
        bool drawn = false; // the alpha test lets it through
        int rgba[4] = {};
        uint32_t word = 0; // of the picture
    };

    SoftPixel(const SoftState& device_state, const SoftTarget& picture);

    uint32_t CoordinateSets() const { return coordinate_sets; } // that an input needs
    bool IsFlat() const { return coordinate_sets == 0; }        // no texture: equal colours give equal pixels
    FlatColor Flat(uint32_t argb) const;                        // without a texture
    // Nearer or equal wins, is kept and covers what is there.
    bool IsPlain() const { return depth_test && depth_func == CMP_LESSEQUAL && depth_write && !blend; }
    // What is there does not show through, and no pixel is left out by its alpha.
    bool IsOpaque() const { return !blend && !alpha_test; }
    // The colours of some pixels of a row, of which the first lies at these 1/256 pixels from the fill's origin; for
    // what is opaque.
    void Color(const SoftFill& fill, double across, double down, uint32_t* pixels, int count) const;
    // The values of one pixel; its colour is left as it is when the fill has but one.
    void Take(const SoftFill& fill, double across, double down, Input& input) const;

    // Only pixels no farther than what is there are drawn.
    bool HidesBehind() const {
        return depth_test && (depth_func == CMP_LESS || depth_func == CMP_EQUAL || depth_func == CMP_LESSEQUAL);
    }
    bool WritesDepth() const { return depth_write; }
    // at: the pixel's place in the target
    bool DepthPasses(size_t at, float depth) const {
        return !depth_test ||
               (depth_func == CMP_LESSEQUAL ? depth <= target.depth[at] : CompareDepth(depth, target.depth[at]));
    }
    void Put(size_t at, float depth, const Input& input); // the depth has passed
    void PutFlat(size_t at, float depth, const FlatColor& flat) {
        if (depth_write)
            target.depth[at] = depth;
        target.pixels[at] = blend ? Blended(target.pixels[at], flat.rgba) : flat.word;
    }

private:
    struct Stage {
        const SoftSurface* texture = nullptr;
        uint32_t coordinates = 0; // of uv
        uint32_t address[2] = {};
        bool smooth = false;
        uint32_t last_level = 0; // the smallest that may be drawn
        bool modulates = false;  // colour: the texture times the vertex colour
        uint32_t color_op = 0, color_arg[2] = {}, alpha_op = 0, alpha_arg[2] = {};
    };

    static void Sample(const Stage& stage, uint32_t level, const float* uv, int (&rgba)[4]);
    static void SampleWords(const Stage& stage, const SoftSurface::Level& level, float u, float v, uint32_t (&rgb)[3]);
    static uint32_t LevelAt(const SoftFill& fill, const Stage& stage, double across, double down);
    int EndOfBlock(const SoftFill& fill, double across, int from, int count) const;
    bool HasWordStages() const;
    bool RepeatsOneTexture() const; // of those with word stages
    template <bool SMOOTH>
    void ColorTexture(const SoftFill& fill, double across, double down, uint32_t* pixels, int count) const;
    void ColorWords(const SoftFill& fill, double across, double down, uint32_t* pixels, int count) const;
    void RunStages(const Input& input, int (&rgba)[4]) const;
    uint32_t Blended(uint32_t under, const int (&src)[4]) const;
    bool CompareDepth(float depth, float there) const;

    SoftTarget target;
    Stage stages[TEXTURE_STAGES];
    uint32_t stage_count = 0, coordinate_sets = 0;
    bool has_levels = false;      // of any stage
    bool word_stages = false;     // all of them are simple enough for ColorWords
    bool repeats_texture = false; // and there is but one, simple enough for ColorTexture
    bool depth_test, depth_write, alpha_test, blend;
    uint32_t depth_func, alpha_func, src_blend, dst_blend;
    int alpha_ref;
    int factor_color[4]; // of ARG_TFACTOR
};
