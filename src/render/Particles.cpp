#include "render/Particles.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "render/Frame.h"
#include "render/TransparentFaces.h"

namespace {

constexpr float START_FOG_END = 16384;

struct ClearFog {
    ClearFog() { std::fill(std::begin(crvFogTable), std::end(crvFogTable), uint8_t{255}); }
} const clear_fog; // no fog until a table is made

// Colour after the fog; false when nothing is left to see.
bool ApplyFog(const D3DVECTOR& pos, BlendMode bm_src, uint32_t& color) {
    const float distance = Magnitude(pos - crvViewFrom);
    uint32_t factor = 0;
    if (distance <= crvFogEnd)
        factor = crvFogTable[std::min(static_cast<uint32_t>(distance * crvFogTabInv), FOG_STEPS - 1)];
    if (bm_src == BM_SRCALPHA) {
        const uint32_t alpha = std::min(color >> 24, factor);
        color = (color & 0xFFFFFF) | alpha << 24;
        return alpha != 0;
    }
    uint32_t faded = color & 0xFF000000;
    for (const uint32_t shift : {16u, 8u, 0u})
        faded |= ((color >> shift & 255) * factor / 256) << shift;
    color = faded;
    return (color & 0xFFFFFF) != 0;
}

void SetWorld(const D3DMATRIX& m) {
    const uint32_t current = crMCurrent(CRM_WORLD);
    crMSet(m);
    crMCurrent(current);
}

// right and up: half the sides.
void DrawQuad(const D3DVECTOR& right, const D3DVECTOR& up, uint32_t tex, uint32_t color, BlendMode bm_src,
              BlendMode bm_dst) {
    const auto corner = [color](const D3DVECTOR& p, float u, float v) {
        crDiffuse(color);
        crUV(u, v);
        crXYZ(p.x, p.y, p.z);
    };
    crBeginAlpha(bm_src, bm_dst, PT_TRI_FAN, VT_XYZ | VT_DIFFUSE | VT_TEX1, tex, CULL_CCW);
    corner(up - right, 0, 0);
    corner(up + right, 1, 0);
    corner(right - up, 1, 1);
    corner(-right - up, 0, 1);
    crEnd();
}

// Perpendicular to an axis and to the line of sight, of unit length; 0 when they are the same.
D3DVECTOR Across(const D3DVECTOR& axis, const D3DVECTOR& pos) {
    return NormalizeOrZero(CrossProduct(axis, pos - crvViewFrom));
}

void DrawAlong(const D3DVECTOR& axis, const D3DVECTOR& pos, float width, float height, uint32_t tex, uint32_t color,
               BlendMode bm_src, BlendMode bm_dst) {
    if (!ApplyFog(pos, bm_src, color))
        return;
    SetWorld(crTranslation(pos));
    DrawQuad(Across(axis, pos) * (width * 0.5f), axis * (height * 0.5f), tex, color, bm_src, bm_dst);
}

} // namespace

uint8_t crvFogTable[FOG_STEPS];
float crvFogEnd = START_FOG_END, crvFogTabInv = (FOG_STEPS - 1) / START_FOG_END;

void crFogTablePow(float end, float power) {
    if (!(end > 0))
        return;
    constexpr float LAST = FOG_STEPS - 1;
    crvFogEnd = end;
    crvFogTabInv = LAST / end;
    for (uint32_t i = 0; i < FOG_STEPS; ++i) {
        const float hidden = std::pow(static_cast<float>(i) / LAST, power);
        crvFogTable[i] = static_cast<uint8_t>(255.0f * (1.0f - std::clamp(hidden, 0.0f, 1.0f)) + 0.5f);
    }
}

void crDrawParticle(const D3DVECTOR& pos, float width, float height, uint32_t tex, uint32_t color, uint32_t rot,
                    BlendMode bm_src, BlendMode bm_dst) {
    if (!ApplyFog(pos, bm_src, color))
        return;
    constexpr uint32_t QUARTER_TURN = TRIG_STEPS / 4;
    const uint32_t half = rot % TRIG_STEPS / 2; // a quaternion holds half the angle
    const Quaternion turn =
        Quaternion::from_rotation(crvVFront, crvTrigTable[half], crvTrigTable[(half + QUARTER_TURN) % TRIG_STEPS]);
    D3DMATRIX world;
    crMMultiply(turn.to_matrix(), crTranslation(pos), world);
    SetWorld(world);
    DrawQuad(crvVRight * (width * 0.5f), crvVUp * (height * 0.5f), tex, color, bm_src, bm_dst);
}

void crDrawDirParticle(const D3DVECTOR& pos, float width, float height, uint32_t tex, uint32_t color,
                       const D3DVECTOR& p_dir, BlendMode bm_src, BlendMode bm_dst) {
    DrawAlong(NormalizeOrZero(p_dir), pos, width, height, tex, color, bm_src, bm_dst);
}

void crDrawVertParticle(const D3DVECTOR& pos, float width, float height, uint32_t tex, uint32_t color, BlendMode bm_src,
                        BlendMode bm_dst) {
    DrawAlong({0, 1, 0}, pos, width, height, tex, color, bm_src, bm_dst);
}
