// What becomes of one pixel that a primitive of the software device covers: texture stages, alpha test, depth,
// blending.
#pragma once

#include <cstdint>

#include "render/SoftState.h"

class SoftPixel {
public:
    struct Input {
        int x, y; // within the target
        float depth;
        int color[4];     // red, green, blue, alpha, 0 to 255
        float uv[6] = {}; // the coordinate sets
    };

    SoftPixel(const SoftState& device_state, const SoftTarget& picture);

    uint32_t CoordinateSets() const { return coordinate_sets; } // that an input needs
    void Put(const Input& input);

private:
    struct Stage {
        const SoftSurface* texture = nullptr;
        uint32_t coordinates = 0; // of uv
        uint32_t address[2] = {};
        bool smooth = false;
        uint32_t color_op = 0, color_arg[2] = {}, alpha_op = 0, alpha_arg[2] = {};
    };

    static void Sample(const Stage& stage, const float* uv, int (&rgba)[4]);
    void RunStages(const Input& input, int (&rgba)[4]) const;
    void Blend(uint32_t under, int (&rgba)[4]) const;

    SoftTarget target;
    Stage stages[TEXTURE_STAGES];
    uint32_t stage_count = 0, coordinate_sets = 0;
    bool depth_test, depth_write, alpha_test, blend;
    uint32_t depth_func, alpha_func, src_blend, dst_blend;
    int alpha_ref;
    int factor_color[4]; // of ARG_TFACTOR
};
