#include "render/SoftPixel.h"

#include <algorithm>

#include "render/SoftFill.h"

namespace {

constexpr int WHOLE = 255, ALPHA = 3;
constexpr int ARGB_SHIFT[4] = {16, 8, 0, 24}; // of red, green, blue, alpha

template <class Value>
bool Passes(uint32_t func, Value value, Value reference) {
    switch (func) {
    case CMP_NEVER:
        return false;
    case CMP_LESS:
        return value < reference;
    case CMP_EQUAL:
        return value == reference;
    case CMP_LESSEQUAL:
        return value <= reference;
    case CMP_GREATER:
        return value > reference;
    case CMP_NOTEQUAL:
        return value != reference;
    case CMP_GREATEREQUAL:
        return value >= reference;
    default:
        return true;
    }
}

int Times(int a, int b) { return (a * b + WHOLE / 2) / WHOLE; } // 0 to 255 each, rounded to the nearest

int Operate(uint32_t op, int a, int b) {
    switch (op) {
    case OP_SELECTARG2:
        return b;
    case OP_MODULATE:
        return Times(a, b);
    case OP_MODULATE2X:
        return std::min(2 * Times(a, b), WHOLE);
    case OP_MODULATE4X:
        return std::min(4 * Times(a, b), WHOLE);
    case OP_ADD:
        return std::min(a + b, WHOLE);
    default:
        return a;
    }
}

int BlendFactor(uint32_t mode, int channel, const int (&src)[4], const int (&dst)[4]) {
    switch (mode) {
    case BM_ONE:
        return WHOLE;
    case BM_SRCCOLOR:
        return src[channel];
    case BM_INVSRCCOLOR:
        return WHOLE - src[channel];
    case BM_SRCALPHA:
        return src[ALPHA];
    case BM_INVSRCALPHA:
        return WHOLE - src[ALPHA];
    case BM_DESTALPHA:
        return dst[ALPHA];
    case BM_INVDESTALPHA:
        return WHOLE - dst[ALPHA];
    case BM_DESTCOLOR:
        return dst[channel];
    case BM_INVDESTCOLOR:
        return WHOLE - dst[channel];
    case BM_SRCALPHASAT:
        return std::min(src[ALPHA], WHOLE - dst[ALPHA]);
    default:
        return 0;
    }
}

// A texel's place as the address mode has it.
uint32_t Addressed(int64_t at, uint32_t side, uint32_t address) {
    const auto size = static_cast<int64_t>(side);
    if (address == TA_WRAP && (size & (size - 1)) == 0)
        return static_cast<uint32_t>(at & (size - 1));
    if (address == TA_CLAMP)
        return static_cast<uint32_t>(std::clamp<int64_t>(at, 0, size - 1));
    const int64_t period = address == TA_MIRROR ? 2 * size : size;
    int64_t place = at % period;
    place += place < 0 ? period : 0;
    return static_cast<uint32_t>(place < size ? place : period - 1 - place);
}

} // namespace

SoftPixel::SoftPixel(const SoftState& device_state, const SoftTarget& picture)
    : target(picture), depth_test(device_state.states[RS_ZENABLE] != 0),
      depth_write(depth_test && device_state.states[RS_ZWRITEENABLE] != 0),
      alpha_test(device_state.states[RS_ALPHATESTENABLE] != 0), blend(device_state.states[RS_ALPHABLENDENABLE] != 0),
      depth_func(device_state.states[RS_ZFUNC]), alpha_func(device_state.states[RS_ALPHAFUNC]),
      src_blend(device_state.states[RS_SRCBLEND]), dst_blend(device_state.states[RS_DESTBLEND]),
      alpha_ref(static_cast<int>(device_state.states[RS_ALPHAREF] & 255)) {
    for (int c = 0; c < 4; ++c)
        factor_color[c] = static_cast<int>(device_state.states[RS_TEXTUREFACTOR] >> ARGB_SHIFT[c] & 255);
    for (; stage_count < TEXTURE_STAGES; ++stage_count) {
        const uint32_t* const values = device_state.stages[stage_count];
        if (values[TSS_COLOROP] == OP_DISABLE)
            break;
        Stage& stage = stages[stage_count];
        stage.texture = device_state.textures[stage_count];
        const uint32_t set = std::min<uint32_t>(values[TSS_TEXCOORDINDEX], SoftVertex::COORDINATE_SETS - 1);
        stage.coordinates = 2 * set;
        stage.address[0] = values[TSS_ADDRESSU];
        stage.address[1] = values[TSS_ADDRESSV];
        stage.smooth = values[TSS_MAGFILTER] >= TF_LINEAR;
        if (stage.texture && values[TSS_MIPFILTER] != MF_NONE)
            stage.last_level = stage.texture->Levels() - 1;
        has_levels = has_levels || stage.last_level > 0;
        stage.color_op = values[TSS_COLOROP];
        stage.color_arg[0] = values[TSS_COLORARG1], stage.color_arg[1] = values[TSS_COLORARG2];
        stage.alpha_op = values[TSS_ALPHAOP];
        stage.alpha_arg[0] = values[TSS_ALPHAARG1], stage.alpha_arg[1] = values[TSS_ALPHAARG2];
        stage.modulates =
            stage.color_op == OP_MODULATE && stage.color_arg[0] == ARG_TEXTURE &&
            (stage.color_arg[1] == ARG_DIFFUSE || (stage_count == 0 && stage.color_arg[1] == ARG_CURRENT));
        if (stage.texture)
            coordinate_sets = std::max(coordinate_sets, set + 1);
    }
    word_stages = HasWordStages();
    repeats_texture = word_stages && RepeatsOneTexture();
}

// Without a texture: white.
void SoftPixel::Sample(const Stage& stage, uint32_t number, const float* uv, int (&rgba)[4]) {
    if (!stage.texture) {
        std::fill_n(rgba, 4, WHOLE);
        return;
    }
    constexpr int64_t TEXEL = 256;
    const SoftSurface::Level level = stage.texture->LevelAt(number);
    const uint32_t width = level.width, height = level.height;
    int64_t u = ToSubtexels(uv[stage.coordinates], width), v = ToSubtexels(uv[stage.coordinates + 1], height);
    const auto read = [&](int64_t x, int64_t y, int(&texel)[4]) {
        stage.texture->ReadTexel(level, Addressed(x, width, stage.address[0]), Addressed(y, height, stage.address[1]),
                                 texel);
    };
    if (!stage.smooth) {
        read(u >> 8, v >> 8, rgba);
        return;
    }
    u -= TEXEL / 2, v -= TEXEL / 2; // from the centres of the texels
    const int64_t x = u >> 8, y = v >> 8;
    const auto right = static_cast<int>(u & 255), down = static_cast<int>(v & 255);
    const int left = TEXEL - right, up = TEXEL - down;
    int corners[4][4];
    read(x, y, corners[0]), read(x + 1, y, corners[1]), read(x, y + 1, corners[2]), read(x + 1, y + 1, corners[3]);
    for (int c = 0; c < 4; ++c)
        rgba[c] = ((corners[0][c] * left + corners[1][c] * right) * up +
                   (corners[2][c] * left + corners[3][c] * right) * down + 32768) >>
                  16;
}

void SoftPixel::RunStages(const Input& input, int (&rgba)[4]) const {
    std::copy_n(input.color, 4, rgba);
    for (uint32_t i = 0; i < stage_count; ++i) {
        const Stage& stage = stages[i];
        int texel[4];
        Sample(stage, input.level[i], input.uv, texel);
        const int current[4] = {rgba[0], rgba[1], rgba[2], rgba[3]};
        const auto argument = [&](uint32_t arg, int channel) {
            const int from = (arg & ARG_ALPHAREPLICATE) != 0 ? ALPHA : channel;
            const uint32_t source = arg & ARG_SELECT;
            const int value = source == ARG_TEXTURE   ? texel[from]
                              : source == ARG_CURRENT ? current[from]
                              : source == ARG_TFACTOR ? factor_color[from]
                                                      : input.color[from];
            return (arg & ARG_COMPLEMENT) != 0 ? WHOLE - value : value;
        };
        for (int c = 0; c < 3; ++c)
            rgba[c] = stage.modulates
                          ? Times(texel[c], input.color[c])
                          : Operate(stage.color_op, argument(stage.color_arg[0], c), argument(stage.color_arg[1], c));
        if (stage.alpha_op != OP_DISABLE)
            rgba[ALPHA] =
                Operate(stage.alpha_op, argument(stage.alpha_arg[0], ALPHA), argument(stage.alpha_arg[1], ALPHA));
    }
}

uint32_t SoftPixel::Blended(uint32_t under, const int (&src)[4]) const {
    const int dst[4] = {static_cast<int>(under >> 16 & 255), static_cast<int>(under >> 8 & 255),
                        static_cast<int>(under & 255), WHOLE};
    int rgb[3];
    for (int c = 0; c < 3; ++c) {
        const int sum = src[c] * BlendFactor(src_blend, c, src, dst) + dst[c] * BlendFactor(dst_blend, c, src, dst);
        rgb[c] = std::min((sum + WHOLE / 2) / WHOLE, WHOLE);
    }
    return static_cast<uint32_t>(rgb[0] << 16 | rgb[1] << 8 | rgb[2]);
}

bool SoftPixel::CompareDepth(float depth, float there) const { return Passes(depth_func, depth, there); }

SoftPixel::FlatColor SoftPixel::Flat(uint32_t argb) const {
    FlatColor flat;
    Input input;
    for (int c = 0; c < 4; ++c)
        input.color[c] = static_cast<int>(argb >> ARGB_SHIFT[c] & 255);
    RunStages(input, flat.rgba);
    flat.drawn = !alpha_test || Passes(alpha_func, flat.rgba[ALPHA], alpha_ref);
    flat.word = static_cast<uint32_t>(flat.rgba[0] << 16 | flat.rgba[1] << 8 | flat.rgba[2]);
    return flat;
}

void SoftPixel::Put(size_t at, float depth, const Input& input) {
    FlatColor color;
    RunStages(input, color.rgba);
    if (alpha_test && !Passes(alpha_func, color.rgba[ALPHA], alpha_ref))
        return;
    color.word = static_cast<uint32_t>(color.rgba[0] << 16 | color.rgba[1] << 8 | color.rgba[2]);
    PutFlat(at, depth, color);
}
