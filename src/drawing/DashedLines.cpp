#include "drawing/DashedLines.h"

#include "render/DisplayScale.h"
#include "render/StateCache.h"

void DashedLines::SetState() const {
    crTexture(context.brush_texture, 0);
    crColorOp(OP_MODULATE, ARG_TEXTURE, ARG_DIFFUSE, 0);
    crAlphaOp(OP_MODULATE, ARG_TEXTURE, ARG_DIFFUSE, 0);
    criSetStageValue(0, TSS_TEXCOORDINDEX, 0);
    criSetStageValue(1, TSS_COLOROP, OP_DISABLE);
    criSetStageValue(1, TSS_ALPHAOP, OP_DISABLE);
    crAlphaBlend(BM_SRCALPHA);
}

void DashedLines::Line(const D3DVECTOR& from, const D3DVECTOR& to, uint32_t color) {
    constexpr float PATTERNS_IN_DOT = 0.125f, PATTERN_ROW = 0.5625f;
    if (!drawing)
        SetState();
    drawing = true;
    const uint32_t first = batch.Reserve(2, 2);
    crDiffuse(color);
    crUV(0, PATTERN_ROW);
    crXYZ(from.x, from.y, from.z);
    crDiffuse(color);
    crUV(Magnitude(to - from) * PATTERNS_IN_DOT * context.scale / static_cast<float>(crvDotSize), PATTERN_ROW);
    crXYZ(to.x, to.y, to.z);
    crIndex(first);
    crIndex(first + 1);
}

void DashedLines::Flush() {
    batch.Flush();
    if (drawing)
        crAlphaBlend(BM_NONE);
    drawing = false;
}
