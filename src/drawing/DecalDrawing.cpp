// Decals lie on the surfaces they were cut from: drawn a little nearer, without a trace in the depth buffer.
#include "drawing/GeometryBatch.h"
#include "render/Matrix.h"
#include "render/StateCache.h"
#include "scene/Decal.h"

namespace {

constexpr float NEARER = 0.01f; // world units

void SetProjection(const D3DMATRIX& projection) {
    const uint32_t current = crMCurrent(CRM_PROJ);
    crMSet(projection);
    crMCurrent(current);
}

// While it lives what is drawn lies in front of equal depths and leaves the depth buffer alone.
class OnTop {
public:
    OnTop() {
        crZProjBias(NEARER, &projection);
        criSetStateValue(RS_ZWRITEENABLE, 0);
    }
    ~OnTop() {
        criSetStateValue(RS_ZWRITEENABLE, 1);
        SetProjection(projection);
    }
    OnTop(const OnTop&) = delete;
    OnTop& operator=(const OnTop&) = delete;

private:
    D3DMATRIX projection;
};

void DrawMesh(const Decal& decal, uint32_t color, bool textured) {
    const CRTexture* const record = textured ? crTRecord(decal.texture) : nullptr;
    crTexture(record ? decal.texture : CR_NO_TEXTURE, 0);
    crColorOp(record ? OP_MODULATE : OP_SELECTARG2, ARG_TEXTURE, ARG_DIFFUSE, 0);
    crAlphaOp(record ? OP_SELECTARG1 : OP_SELECTARG2, ARG_TEXTURE, ARG_DIFFUSE, 0);
    criSetStageValue(0, TSS_TEXCOORDINDEX, 0);
    criSetStageValue(1, TSS_COLOROP, OP_DISABLE);
    criSetStageValue(1, TSS_ALPHAOP, OP_DISABLE);
    const OnTop on_top;
    GeometryBatch batch(PT_TRI_LIST, VT_XYZ | VT_DIFFUSE | VT_TEX1);
    AddTriangles(batch, decal.tris, decal.xyz.size(), [&](size_t i) {
        crDiffuse(color);
        crUV(decal.uv[i].u, decal.uv[i].v);
        crXYZ(decal.xyz[i].x, decal.xyz[i].y, decal.xyz[i].z);
    });
}

} // namespace

void Decal::Render() const {
    if (alpha_decal)
        crAlphaBlend(BM_SRCALPHA, BM_INVSRCALPHA);
    else
        crAlphaBlend(BM_DESTCOLOR, BM_ZERO);
    DrawMesh(*this, color.dw_color, true);
}

void Decal::RenderSelectionMask(uint32_t mask_color) const {
    crAlphaBlend(BM_SRCALPHA, BM_INVSRCALPHA);
    DrawMesh(*this, mask_color, false);
}
