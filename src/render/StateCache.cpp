#include "render/StateCache.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <memory>

namespace {

void FillUnknown() {
    std::fill(std::begin(crvLastStateValues), std::end(crvLastStateValues), UNKNOWN_STATE);
    for (auto& stage : crvLastStageValues)
        std::fill(std::begin(stage), std::end(stage), UNKNOWN_STATE);
}

struct UnknownAtStart {
    UnknownAtStart() { FillUnknown(); }
} const unknown_at_start;

bool texture_known[TEXTURE_STAGES] = {};
uint32_t texture_handles[TEXTURE_STAGES] = {}; // of the textures that are known

struct StateBlock {
    uint32_t states[RENDER_STATES];
    uint32_t stages[TEXTURE_STAGES][STAGE_STATES];
    bool texture_set[TEXTURE_STAGES];
    uint32_t textures[TEXTURE_STAGES];
};
std::array<std::unique_ptr<StateBlock>, CR_MAX_STATE_BLOCKS> crvStateBlockTable;

void BindSurface(DeviceSurface* surface, uint32_t stage) {
    if (texture_known[stage] && crvLastTextures[stage] == surface)
        return;
    texture_known[stage] = true;
    crvLastTextures[stage] = surface;
    criTextureDevice().SetTexture(stage, surface);
}

} // namespace

uint32_t crvLastStateValues[RENDER_STATES];
uint32_t crvLastStageValues[TEXTURE_STAGES][STAGE_STATES];
DeviceSurface* crvLastTextures[TEXTURE_STAGES] = {};

void criForgetStates() {
    FillUnknown();
    std::fill(std::begin(texture_known), std::end(texture_known), false);
    std::fill(std::begin(crvLastTextures), std::end(crvLastTextures), nullptr);
}

void criForgetTexture(const DeviceSurface* surface) {
    for (uint32_t stage = 0; surface && stage < TEXTURE_STAGES; ++stage)
        if (crvLastTextures[stage] == surface) {
            BindSurface(nullptr, stage);
            texture_handles[stage] = CR_NO_TEXTURE;
        }
}

void criSetStateValue(uint32_t state, uint32_t value) {
    if (state >= RENDER_STATES || crvLastStateValues[state] == value)
        return;
    crvLastStateValues[state] = value;
    criTextureDevice().SetRenderState(state, value);
}

void criSetStageValue(uint32_t stage, uint32_t type, uint32_t value) {
    if (stage >= TEXTURE_STAGES || type >= STAGE_STATES || crvLastStageValues[stage][type] == value)
        return;
    crvLastStageValues[stage][type] = value;
    criTextureDevice().SetTextureStageState(stage, type, value);
}

void crTexture(uint32_t handle, uint32_t stage) {
    if (stage >= TEXTURE_STAGES)
        return;
    const CRTexture* texture = crTRecord(handle);
    texture_handles[stage] = texture ? handle : CR_NO_TEXTURE;
    BindSurface(texture ? texture->surface.get() : nullptr, stage);
}

void crPresetMode(RenderMode mode) {
    const auto off = [](uint32_t stage) {
        criSetStageValue(stage, TSS_COLOROP, OP_DISABLE);
        criSetStageValue(stage, TSS_ALPHAOP, OP_DISABLE);
    };
    const bool blended = mode == RM_ALPHA || mode == RM_LIGHTMAP || mode == RM_TEXT;
    if (blended)
        crAlphaBlend(mode == RM_LIGHTMAP ? BM_ZERO : BM_SRCALPHA);
    else
        crAlphaBlend(BM_NONE);
    crAlphaTest(blended ? CMP_GREATER : CMP_OFF);

    crColorOp(mode == RM_TEX1_MODULATE_TEX2 ? OP_SELECTARG1 : OP_MODULATE, ARG_TEXTURE, ARG_DIFFUSE, 0);
    if (blended)
        crAlphaOp(mode == RM_LIGHTMAP ? OP_SELECTARG1 : OP_MODULATE, ARG_TEXTURE, ARG_DIFFUSE, 0);
    else
        criSetStageValue(0, TSS_ALPHAOP, OP_DISABLE);

    if (mode == RM_TEX1_MODULATE_TEX2) {
        crColorOp(OP_MODULATE, ARG_TEXTURE, ARG_CURRENT, 1);
        criSetStageValue(1, TSS_ALPHAOP, OP_DISABLE);
        off(2);
    } else {
        off(1);
    }
    if (mode == RM_NORMAL || mode == RM_TEXT)
        criSetStageValue(0, TSS_TEXCOORDINDEX, 0);
    if (mode == RM_TEXT) {
        criSetStateValue(RS_CULLMODE, CULL_NONE);
        criSetStateValue(RS_ZWRITEENABLE, 0);
        criSetStateValue(RS_ZENABLE, 0);
        crTextureAddress(TA_CLAMP, TA_CLAMP, 0);
    }
}

void crAlphaBlend(BlendMode src, BlendMode dst) {
    const bool off = src == BM_NONE || (src == BM_ONE && dst == BM_ZERO);
    criSetStateValue(RS_ALPHABLENDENABLE, off ? 0 : 1);
    criSetStateValue(RS_SRCBLEND, off ? BM_ONE : src);
    criSetStateValue(RS_DESTBLEND, off ? BM_ZERO : dst);
}

void crAlphaTest(CmpFunc func, uint32_t ref) {
    criSetStateValue(RS_ALPHATESTENABLE, func == CMP_OFF ? 0 : 1);
    if (func == CMP_OFF)
        return;
    criSetStateValue(RS_ALPHAREF, ref);
    criSetStateValue(RS_ALPHAFUNC, func);
}

void crColorOp(OpType op, uint32_t arg1, uint32_t arg2, uint32_t stage) {
    criSetStageValue(stage, TSS_COLOROP, op);
    criSetStageValue(stage, TSS_COLORARG1, arg1);
    criSetStageValue(stage, TSS_COLORARG2, arg2);
}

void crAlphaOp(OpType op, uint32_t arg1, uint32_t arg2, uint32_t stage) {
    criSetStageValue(stage, TSS_ALPHAOP, op);
    criSetStageValue(stage, TSS_ALPHAARG1, arg1);
    criSetStageValue(stage, TSS_ALPHAARG2, arg2);
}

void crTextureAddress(TAType u, TAType v, uint32_t stage) {
    criSetStageValue(stage, TSS_ADDRESSU, u);
    criSetStageValue(stage, TSS_ADDRESSV, v);
}

void crClipPlaneSet(uint32_t i, const PLANE& plane) {
    if (i < CLIP_PLANES)
        criTextureDevice().SetClipPlane(i, plane);
}

void crClipPlaneEnable(uint32_t mask) { criSetStateValue(RS_CLIPPLANEENABLE, mask); }

int crStateBlockCreate() {
    const auto entry = std::find(crvStateBlockTable.begin(), crvStateBlockTable.end(), nullptr);
    if (entry == crvStateBlockTable.end())
        return -1;
    *entry = std::make_unique<StateBlock>();
    StateBlock& block = **entry;
    std::copy(std::begin(crvLastStateValues), std::end(crvLastStateValues), block.states);
    for (uint32_t stage = 0; stage < TEXTURE_STAGES; ++stage)
        std::copy(std::begin(crvLastStageValues[stage]), std::end(crvLastStageValues[stage]), block.stages[stage]);
    std::copy(std::begin(texture_known), std::end(texture_known), block.texture_set);
    std::copy(std::begin(texture_handles), std::end(texture_handles), block.textures);
    return static_cast<int>(entry - crvStateBlockTable.begin());
}

int crStateBlockApply(uint32_t h) {
    if (h >= CR_MAX_STATE_BLOCKS || !crvStateBlockTable[h])
        return -1;
    const StateBlock& block = *crvStateBlockTable[h];
    for (uint32_t state = 0; state < RENDER_STATES; ++state)
        if (block.states[state] != UNKNOWN_STATE)
            criSetStateValue(state, block.states[state]);
    for (uint32_t stage = 0; stage < TEXTURE_STAGES; ++stage) {
        for (uint32_t type = 0; type < STAGE_STATES; ++type)
            if (block.stages[stage][type] != UNKNOWN_STATE)
                criSetStageValue(stage, type, block.stages[stage][type]);
        if (block.texture_set[stage])
            crTexture(block.textures[stage], stage);
    }
    return 0;
}

int crStateBlockDestroy(uint32_t h) {
    if (h >= CR_MAX_STATE_BLOCKS || !crvStateBlockTable[h])
        return -1;
    crvStateBlockTable[h].reset();
    return 0;
}

void criClearStateBlocks() {
    for (auto& block : crvStateBlockTable)
        block.reset();
}
