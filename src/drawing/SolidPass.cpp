#include "drawing/SolidPass.h"

#include "scene/World.h"

namespace {

constexpr uint32_t SELECTED_COLOR = 0xFFFF0000, SELECTED_SURFACE_COLOR = 0xFF00FFFF;
constexpr uint32_t PORTAL_COLOR = 0x4000FF00, OCCLUDER_COLOR = 0x40FFFF00, SELECTED_PORTAL_COLOR = 0x40FF0000;

template <class Value>
Value ValueAt(const std::vector<Value>& values, size_t i) { // a damaged surface may hold fewer than vertices
    return i < values.size() ? values[i] : Value{};
}

void WritePosition(const Surface& surface, size_t i) {
    crXYZ(surface.vertices[i].x, surface.vertices[i].y, surface.vertices[i].z);
}

void WriteUV(const Surface& surface, size_t i) {
    const UVVector uv = ValueAt(surface.uv, i);
    crUV(uv.u, uv.v);
}

} // namespace

SolidPass::SolidPass(const World& scene, const DrawContext& draw_context) : world(scene), context(draw_context) {
    criSetStateValue(RS_ZENABLE, 1);
    criSetStateValue(RS_CULLMODE, CULL_CCW);
}

GeometryBatch& SolidPass::Batch(const Look& look) {
    if (batch && look == current)
        return *batch;
    batch.reset();
    SetState(look);
    current = look;
    const uint32_t fields = look.kind == MARKED                             ? VT_DIFFUSE
                            : look.kind == DARK || look.kind == LIGHTMAPPED ? VT_DIFFUSE | VT_TEX2
                            : look.kind == BORDER                           ? uint32_t{VT_TEX1}
                                                                            : VT_DIFFUSE | VT_TEX1;
    batch = std::make_unique<GeometryBatch>(PT_TRI_LIST, VT_XYZ | fields);
    return *batch;
}

void SolidPass::SetState(const Look& look) {
    crAlphaBlend(look.blended ? BM_SRCALPHA : BM_NONE);
    crTexture(look.texture, 0);
    if (look.kind == BARE) {
        criSetStageValue(0, TSS_COLOROP, OP_DISABLE);
        return;
    }
    const OpType op = look.kind == MARKED ? OP_SELECTARG2 : look.kind == TEXTURED ? OP_MODULATE : OP_SELECTARG1;
    crColorOp(op, ARG_TEXTURE, ARG_DIFFUSE, 0);
    crAlphaOp(look.kind == MARKED ? OP_SELECTARG2 : OP_SELECTARG1, ARG_TEXTURE, ARG_DIFFUSE, 0);
    criSetStageValue(0, TSS_TEXCOORDINDEX, 0);
    criSetStageValue(1, TSS_ALPHAOP, OP_DISABLE);
    if (look.kind != LIGHTMAPPED) {
        criSetStageValue(1, TSS_COLOROP, OP_DISABLE);
        return;
    }
    crTexture(look.lightmap, 1);
    crColorOp(OP_MODULATE, ARG_TEXTURE, ARG_CURRENT, 1);
    criSetStageValue(1, TSS_TEXCOORDINDEX, 1);
    criSetStageValue(2, TSS_COLOROP, OP_DISABLE);
}

SolidPass::Look SolidPass::PlainLook(const Surface& surface) const {
    const auto row = static_cast<size_t>(surface.texture.index);
    if (!surface.HasMaterial() || row >= world.material.size())
        return {};
    return {TEXTURED, world.material[row].transparent, world.material[row].texture_index, NO_TEXTURE_HANDLE};
}

void SolidPass::Draw(const Brush& brush) {
    if (brush.IsPortalOrOccluder()) {
        DrawMarked(brush);
        return;
    }
    constexpr int SHOW_LIGHTMAPS = 2;
    brush.ForEachSurface([&](const Surface& surface, int s, bool curved) {
        const bool lit = surface.lightmap != 0 && surface.lightmap != -1 && world.render_mode == SHOW_LIGHTMAPS;
        const Look look = PlainLook(surface);
        if (lit && curved && brush.IsCustom()) {
            DrawPlain(surface, look, nullptr, surface.extra_diffuse);
        } else if (lit) {
            DrawLightmapped(surface);
        } else {
            const bool marked =
                context.mask_enabled && s == brush.selected_surface && curved == brush.selected_surface_curved;
            const uint32_t* const fixed_color = brush.is_selected ? &SELECTED_COLOR
                                                : marked          ? &SELECTED_SURFACE_COLOR
                                                                  : nullptr;
            DrawPlain(surface, look, fixed_color, surface.diffuse);
        }
    });
    if (context.show_texture_border)
        brush.ForEachSurface([this](const Surface& surface, int, bool) {
            if (surface.HasMaterial())
                DrawBorder(surface);
        });
}

void SolidPass::DrawMarked(const Brush& brush) {
    const uint32_t color = brush.is_selected         ? SELECTED_PORTAL_COLOR
                           : brush.type == BT_PORTAL ? PORTAL_COLOR
                                                     : OCCLUDER_COLOR;
    Look look;
    look.kind = MARKED;
    look.blended = true;
    for (const Surface& surface : brush.surfaces)
        AddTriangles(Batch(look), surface.tri_indices, surface.vertices.size(), [&](size_t i) {
            crDiffuse(color);
            WritePosition(surface, i);
        });
}

void SolidPass::DrawPlain(const Surface& surface, const Look& look, const uint32_t* fixed_color,
                          const std::vector<uint32_t>& colors) {
    AddTriangles(Batch(look), surface.tri_indices, surface.vertices.size(), [&](size_t i) {
        crDiffuse(fixed_color ? *fixed_color : ValueAt(colors, i));
        WriteUV(surface, i);
        WritePosition(surface, i);
    });
}

void SolidPass::DrawLightmapped(const Surface& surface) {
    Look look = PlainLook(surface);
    if (look.kind == BARE) {
        look.kind = DARK;
        look.texture = world.darkmap;
    } else {
        const auto page = static_cast<size_t>(surface.lightmap_info.lightmap);
        look.kind = LIGHTMAPPED;
        look.lightmap = page < world.lightmap_index.size() ? world.lightmap_index[page] : world.darkmap;
    }
    const LIGHTMAP_INFO& place = surface.lightmap_info;
    AddTriangles(Batch(look), surface.tri_indices, surface.vertices.size(), [&](size_t i) {
        const UVVector uv = ValueAt(surface.lightmap_uv, i);
        crDiffuse(ValueAt(surface.diffuse, i));
        WriteUV(surface, i);
        crUV2(uv.u * place.u_size + place.u_start, uv.v * place.v_size + place.v_start);
        WritePosition(surface, i);
    });
}

void SolidPass::DrawBorder(const Surface& surface) {
    const Look look{BORDER, true, context.border_texture, NO_TEXTURE_HANDLE};
    AddTriangles(Batch(look), surface.tri_indices, surface.vertices.size(), [&](size_t i) {
        WriteUV(surface, i);
        WritePosition(surface, i);
    });
}
