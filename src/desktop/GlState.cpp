// What the states of the OpenGL device come to when something is drawn.
#include <algorithm>

#include "desktop/GlDevice.h"
#include "render/DisplayScale.h"

namespace {

constexpr int ARGB_SHIFT[4] = {16, 8, 0, 24}; // of red, green, blue, alpha

uint8_t ArgumentBits(uint32_t arg) {
    return static_cast<uint8_t>(arg & (ARG_SELECT | ARG_COMPLEMENT | ARG_ALPHAREPLICATE));
}

uint8_t OperationBits(uint32_t op) { // an unknown one selects its first argument
    return static_cast<uint8_t>(op >= OP_DISABLE && op <= OP_ADD ? op : uint32_t{OP_SELECTARG1});
}

} // namespace

uint32_t GlDevice::StageCount() const {
    uint32_t count = 0;
    while (count < TEXTURE_STAGES && values.stages[count][TSS_COLOROP] != OP_DISABLE)
        ++count;
    return count;
}

bool GlDevice::UploadTextures() {
    bool any = false;
    for (uint32_t stage = 0, end = StageCount(); stage < end; ++stage)
        if (textures[stage] && textures[stage]->IsChanged()) {
            if (!any)
                pipeline->Flush(); // with what it held
            any = true;
            textures[stage]->Upload();
        }
    return any;
}

void GlDevice::ResolveStage(GlDrawState& state, uint32_t i) const {
    const uint32_t* const from = values.stages[i];
    GlStage& stage = state.key.stages[i];
    stage.color_op = OperationBits(from[TSS_COLOROP]);
    stage.color_arg[0] = ArgumentBits(from[TSS_COLORARG1]), stage.color_arg[1] = ArgumentBits(from[TSS_COLORARG2]);
    stage.alpha_op = OperationBits(from[TSS_ALPHAOP]);
    stage.alpha_arg[0] = ArgumentBits(from[TSS_ALPHAARG1]), stage.alpha_arg[1] = ArgumentBits(from[TSS_ALPHAARG2]);
    state.textures[i] = textures[i] ? textures[i]->Upload() : 0;
    stage.textured = state.textures[i] != 0;
    if (!stage.textured)
        return;
    stage.coordinates = static_cast<uint8_t>(std::min<uint32_t>(from[TSS_TEXCOORDINDEX], GL_COORDINATE_SETS - 1));
    state.filters[i] = {from[TSS_ADDRESSU], from[TSS_ADDRESSV], from[TSS_MAGFILTER], from[TSS_MINFILTER],
                        from[TSS_MIPFILTER]};
}

void GlDevice::ResolveTests(GlDrawState& state) const {
    const uint32_t* const s = values.states;
    if (s[RS_ALPHATESTENABLE] != 0 && s[RS_ALPHAFUNC] >= CMP_NEVER && s[RS_ALPHAFUNC] < CMP_ALWAYS) {
        state.key.alpha_func = static_cast<uint8_t>(s[RS_ALPHAFUNC]);
        state.uniforms.alpha_ref = static_cast<float>(s[RS_ALPHAREF] & 255);
    }
    state.blend = s[RS_ALPHABLENDENABLE] != 0;
    if (state.blend) {
        state.src_blend = s[RS_SRCBLEND];
        state.dst_blend = s[RS_DESTBLEND];
    }
    state.depth_test = s[RS_ZENABLE] != 0;
    if (state.depth_test) {
        state.depth_write = s[RS_ZWRITEENABLE] != 0;
        state.depth_func = s[RS_ZFUNC];
    }
    const uint32_t cull = s[RS_CULLMODE];
    if (state.key.shape == GlShape::Triangles && (cull == CULL_CW || cull == CULL_CCW))
        state.cull = cull;
}

void GlDevice::ResolvePlanes(GlDrawState& state) const {
    state.plane_mask = state.key.transformed ? 0 : values.states[RS_CLIPPLANEENABLE] & ((1u << CLIP_PLANES) - 1);
    state.key.planes = state.plane_mask != 0;
    if (!state.key.planes)
        return;
    state.uniforms.world = values.transforms[CRM_WORLD];
    for (uint32_t i = 0; i < CLIP_PLANES; ++i) {
        const PLANE& plane = values.planes[i];
        const float parts[4] = {plane.normal.x, plane.normal.y, plane.normal.z, plane.D};
        std::copy(std::begin(parts), std::end(parts), state.uniforms.planes.begin() + 4 * i);
    }
}

GlDrawState GlDevice::Resolve(GlShape shape, uint32_t fvf) const {
    GlDrawState state;
    state.key.shape = shape;
    if (shape == GlShape::Lines)
        state.key.line_width = static_cast<uint8_t>(crvDotSize);
    const bool transformed = state.key.transformed = (fvf & VT_XYZ) == 0;
    state.key.colored = (fvf & VT_DIFFUSE) != 0;
    state.key.given_sets = static_cast<uint8_t>(MakeFvfLayout(fvf).coordinate_sets);
    state.key.flat = shape == GlShape::Triangles && values.states[RS_SHADEMODE] == SHADE_FLAT;
    state.key.stage_count = static_cast<uint8_t>(StageCount());
    for (uint32_t i = 0; i < state.key.stage_count; ++i)
        ResolveStage(state, i);
    ResolveTests(state);
    ResolvePlanes(state);
    if (!transformed) {
        const D3DMATRIX* const m = values.transforms;
        crMMultiply(m[CRM_WORLD], m[CRM_VIEW], state.uniforms.to_clip);
        crMMultiply(state.uniforms.to_clip, m[CRM_PROJ], state.uniforms.to_clip);
    }
    for (size_t c = 0; c < state.uniforms.factor.size(); ++c)
        state.uniforms.factor[c] = static_cast<float>(values.states[RS_TEXTUREFACTOR] >> ARGB_SHIFT[c] & 255);
    const PixelRectangle &whole = values.viewport, part = back->Inside(whole);
    state.viewport = {static_cast<GLint>(whole.x), static_cast<GLint>(whole.y), static_cast<GLint>(whole.w),
                      static_cast<GLint>(whole.h)};
    state.visible = {static_cast<GLint>(part.x), static_cast<GLint>(part.y), static_cast<GLint>(part.w),
                     static_cast<GLint>(part.h)};
    std::transform(state.viewport.begin(), state.viewport.end(), state.uniforms.viewport.begin(),
                   [](GLint side) { return static_cast<float>(side); });
    return state;
}
