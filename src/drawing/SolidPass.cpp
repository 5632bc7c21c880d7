#include "drawing/SolidPass.h"

#include "scene/World.h"

SolidPass::SolidPass(const World& scene, const DrawContext& draw_context)
    : world(scene), context(draw_context), options(OptionsOf(scene, draw_context)) {
    SetDepthState();
}

void SolidPass::SetDepthState() {
    criSetStateValue(RS_ZENABLE, 1);
    criSetStateValue(RS_CULLMODE, CULL_CCW);
}

GeometryBatch& SolidPass::Batch(const SolidLook& look) {
    if (batch && look == current)
        return *batch;
    batch.reset();
    SetSolidState(look);
    current = look;
    const bool two_textures = look.kind == SolidKind::Dark || look.kind == SolidKind::Lightmapped;
    const uint32_t fields = HasOwnColor(look.kind)           ? VT_DIFFUSE
                            : two_textures                   ? VT_DIFFUSE | VT_TEX2
                            : look.kind == SolidKind::Border ? uint32_t{VT_TEX1}
                                                             : VT_DIFFUSE | VT_TEX1;
    batch = std::make_unique<GeometryBatch>(PT_TRI_LIST, VT_XYZ | fields);
    return *batch;
}

void SolidPass::Draw(const Brush& brush) {
    FindSolidSurfaces(brush, options, found);
    for (const SolidSurface& drawn : found) {
        const SolidLook look = LookOf(drawn.key, world, context);
        GeometryBatch& to = Batch(look);
        const Surface& surface = *drawn.surface;
        AddTriangles(to, surface.tri_indices, surface.vertices.size(), [&](size_t i) {
            if (look.kind != SolidKind::Border)
                crDiffuse(drawn.ColorAt(i));
            if (!HasOwnColor(look.kind)) {
                const UVVector uv = drawn.UVAt(i);
                crUV(uv.u, uv.v);
            }
            if (look.kind == SolidKind::Dark || look.kind == SolidKind::Lightmapped) {
                const UVVector uv = drawn.LightmapUVAt(i);
                crUV2(uv.u, uv.v);
            }
            crXYZ(surface.vertices[i].x, surface.vertices[i].y, surface.vertices[i].z);
        });
    }
}

void SolidPass::DrawDecals(const Brush& brush) {
    constexpr uint32_t SELECTED_MASK = 0x80FFFF00, OTHER_MASK = 0x80FAFAC8;
    if (brush.decal_list.empty())
        return;
    batch.reset(); // what has been gathered comes first, and the next batch sets its state anew
    for (const auto& decal : brush.decal_list) {
        decal->Render();
        if (world.decal_selection.TestItem(static_cast<int>(decal->id)) != -1)
            decal->RenderSelectionMask(SELECTED_MASK);
        else if (world.decal_selection.GetItemCount() > 0)
            decal->RenderSelectionMask(OTHER_MASK);
    }
}
