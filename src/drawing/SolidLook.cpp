#include "drawing/SolidLook.h"

#include "render/StateCache.h"
#include "scene/World.h"

namespace {

constexpr uint32_t SELECTED_COLOR = 0xFFFF0000, SELECTED_SURFACE_COLOR = 0xFF00FFFF;
constexpr uint32_t PORTAL_COLOR = 0x4000FF00, OCCLUDER_COLOR = 0x40FFFF00, SELECTED_PORTAL_COLOR = 0x40FF0000;
constexpr uint32_t SELECTED_TINT = 0x38FF0000, SELECTED_SURFACE_TINT = 0x2800FFFF;
constexpr int SHOW_LIGHTMAPS = 2;

bool IsSelectedSurface(const Brush& brush, int s, bool curved) {
    return s == brush.selected_surface && curved == brush.selected_surface_curved;
}

SolidSurface PlainSurface(const Brush& brush, const SolidOptions& options, const Surface& surface, int s, bool curved) {
    SolidSurface plain;
    plain.surface = &surface;
    if (surface.HasMaterial())
        plain.key = {SolidKind::Textured, surface.texture.index, 0};
    const bool marked = options.mask && IsSelectedSurface(brush, s, curved),
               red = brush.is_selected && !options.outline;
    plain.one_color = red || marked;
    plain.color = red ? SELECTED_COLOR : SELECTED_SURFACE_COLOR;
    plain.colors = &surface.diffuse;
    return plain;
}

SolidSurface LitSurface(const Brush& brush, const Surface& surface, bool curved) {
    SolidSurface lit;
    lit.surface = &surface;
    if (curved && brush.IsCustom()) { // lit by its vertices
        if (surface.HasMaterial())
            lit.key = {SolidKind::Textured, surface.texture.index, 0};
        lit.colors = &surface.extra_diffuse;
        return lit;
    }
    lit.key.kind = SolidKind::Dark;
    if (surface.HasMaterial())
        lit.key = {SolidKind::Lightmapped, surface.texture.index, surface.lightmap_info.lightmap};
    lit.colors = &surface.diffuse;
    return lit;
}

void FindMarkedSurfaces(const Brush& brush, std::vector<SolidSurface>& found) {
    for (const Surface& surface : brush.surfaces) {
        SolidSurface& marked = found.emplace_back();
        marked.surface = &surface;
        marked.key.kind = SolidKind::Marked;
        marked.one_color = true;
        marked.color = brush.is_selected         ? SELECTED_PORTAL_COLOR
                       : brush.type == BT_PORTAL ? PORTAL_COLOR
                                                 : OCCLUDER_COLOR;
    }
}

void FindTintedSurfaces(const Brush& brush, std::vector<SolidSurface>& found) {
    brush.ForEachSurface([&](const Surface& surface, int s, bool curved) {
        const bool marked = IsSelectedSurface(brush, s, curved);
        if (marked || brush.is_selected)
            found.push_back(
                {&surface, {SolidKind::Tint, 0, 0}, true, marked ? SELECTED_SURFACE_TINT : SELECTED_TINT, nullptr});
    });
}

} // namespace

UVVector SolidSurface::LightmapUVAt(size_t i) const {
    if (i >= surface->lightmap_uv.size())
        return {surface->lightmap_info.u_start, surface->lightmap_info.v_start};
    const LIGHTMAP_INFO& place = surface->lightmap_info;
    const UVVector uv = surface->lightmap_uv[i];
    return {uv.u * place.u_size + place.u_start, uv.v * place.v_size + place.v_start};
}

SolidOptions OptionsOf(const World& world, const DrawContext& context) {
    return {world.render_mode == SHOW_LIGHTMAPS, context.mask_enabled, context.show_texture_border,
            context.outline_selection, context.shade_bare};
}

void FindSolidSurfaces(const Brush& brush, const SolidOptions& options, std::vector<SolidSurface>& found) {
    found.clear();
    if (brush.IsPortalOrOccluder()) {
        FindMarkedSurfaces(brush, found);
        return;
    }
    brush.ForEachSurface([&](const Surface& surface, int s, bool curved) {
        const bool lit = options.lightmaps && surface.lightmap != 0 && surface.lightmap != -1 &&
                         (surface.HasMaterial() || !options.shade_bare);
        found.push_back(lit ? LitSurface(brush, surface, curved) : PlainSurface(brush, options, surface, s, curved));
    });
    if (options.border)
        brush.ForEachSurface([&](const Surface& surface, int, bool) {
            if (surface.HasMaterial())
                found.push_back({&surface, {SolidKind::Border, 0, 0}, true, 0xFFFFFFFF, nullptr});
        });
    if (options.outline)
        FindTintedSurfaces(brush, found);
}

SolidLook LookOf(const SolidKey& key, const World& world, const DrawContext& context) {
    const auto row = static_cast<size_t>(key.row), page = static_cast<size_t>(key.page);
    const bool has_row = row < world.material.size();
    switch (key.kind) {
    case SolidKind::Marked:
    case SolidKind::Tint:
        return {key.kind, true, NO_TEXTURE_HANDLE, NO_TEXTURE_HANDLE};
    case SolidKind::Border:
        return {key.kind, true, context.border_texture, NO_TEXTURE_HANDLE};
    case SolidKind::Textured:
        if (has_row)
            return {key.kind, world.material[row].transparent, world.material[row].texture_index, NO_TEXTURE_HANDLE};
        break;
    case SolidKind::Lightmapped:
        if (has_row)
            return {key.kind, world.material[row].transparent, world.material[row].texture_index,
                    page < world.lightmap_index.size() ? world.lightmap_index[page] : world.darkmap};
        [[fallthrough]];
    case SolidKind::Dark:
        return {SolidKind::Dark, false, world.darkmap, NO_TEXTURE_HANDLE};
    case SolidKind::Bare:
        break;
    }
    return {};
}

void SetSolidState(const SolidLook& look) {
    crAlphaBlend(look.blended ? BM_SRCALPHA : BM_NONE);
    crTexture(look.texture, 0);
    if (look.kind == SolidKind::Bare) {
        criSetStageValue(0, TSS_COLOROP, OP_DISABLE);
        return;
    }
    const bool marked = HasOwnColor(look.kind);
    const OpType op = marked ? OP_SELECTARG2 : look.kind == SolidKind::Textured ? OP_MODULATE : OP_SELECTARG1;
    crColorOp(op, ARG_TEXTURE, ARG_DIFFUSE, 0);
    crAlphaOp(marked ? OP_SELECTARG2 : OP_SELECTARG1, ARG_TEXTURE, ARG_DIFFUSE, 0);
    criSetStageValue(0, TSS_TEXCOORDINDEX, 0);
    criSetStageValue(1, TSS_ALPHAOP, OP_DISABLE);
    if (look.kind != SolidKind::Lightmapped) {
        criSetStageValue(1, TSS_COLOROP, OP_DISABLE);
        return;
    }
    crTexture(look.lightmap, 1);
    crColorOp(OP_MODULATE, ARG_TEXTURE, ARG_CURRENT, 1);
    criSetStageValue(1, TSS_TEXCOORDINDEX, 1);
    criSetStageValue(2, TSS_COLOROP, OP_DISABLE);
}
