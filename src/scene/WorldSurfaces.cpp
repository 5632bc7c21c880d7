// The selected surface, and the materials and mappings of the surfaces of the selection.
#include <algorithm>

#include "foundation/Desktop.h"
#include "foundation/Strings.h"
#include "scene/FrontEnd.h"
#include "scene/World.h"

namespace {

constexpr const char* TITLE = "Marrowstead 2000";

bool Confirmed(const char* question) {
    return GetDesktop().MessageBox(question, TITLE, MessageButtons::YesNo) == MessageAnswer::Yes;
}

// All of the mapping but what belongs to the material.
void TakeMapping(TEX_INFO& info, const TEX_INFO& src) {
    const UVVector size = info.size;
    const int32_t index = info.index;
    info = src;
    info.size = size;
    info.index = index;
}

void SetMaterial(TEX_INFO& info, int index, const SIZE& size) {
    info.index = index;
    info.size = {static_cast<float>(size.cx), static_cast<float>(size.cy)};
}

} // namespace

Surface* World::SelectedSurface() {
    if (selected_surface_brush < 0 || selected_surface_brush >= GetBrushCount())
        return nullptr;
    Brush& b = *brush[static_cast<size_t>(selected_surface_brush)];
    if (!b.GetSelectedSurfaceTexInfo())
        return nullptr;
    return &(b.selected_surface_curved ? b.curved_surfaces : b.surfaces)[static_cast<size_t>(b.selected_surface)];
}

void World::DeselectSurface() {
    if (selected_surface_brush >= 0 && selected_surface_brush < GetBrushCount()) {
        Brush& b = *brush[static_cast<size_t>(selected_surface_brush)];
        b.selected_surface = -1;
        b.selected_surface_curved = false;
    }
    selected_surface_brush = -1;
    GetFrontEnd().SurfaceSelectionChanged();
}

void World::CycleSurfaces() {
    if (!SelectedSurface())
        return;
    brush[static_cast<size_t>(selected_surface_brush)]->SelectNextSurface();
    GetFrontEnd().SurfaceSelectionChanged();
}

bool World::HasSurfaceTexture() const {
    const Surface* s = const_cast<World*>(this)->SelectedSurface();
    return s && s->HasMaterial();
}

void World::RemapSurface(const TEX_INFO& ti) {
    if (Surface* s = SelectedSurface()) {
        TakeMapping(s->texture, ti);
        brush[static_cast<size_t>(selected_surface_brush)]->Remap();
        GetFrontEnd().SurfaceSelectionChanged();
    } else
        ForEachSelectedSurface([&ti](Surface& selected) { selected.texture.locked = ti.locked; });
    GetFrontEnd().MarkFileAsDirty(true);
}

void World::RemapSurfaceToAll(const TEX_INFO& ti) {
    ForEachSelectedSurface([&ti](Surface& s) {
        TakeMapping(s.texture, ti);
        s.texture.fitted = false;
    });
    for (const int b : brush_selection)
        brush[static_cast<size_t>(b)]->RemapAll();
}

void World::ChangeTexture(std::string_view mc, std::string_view mn, std::string_view tc, std::string_view tn) {
    Surface* s = SelectedSurface();
    if (!s)
        return;
    const int index = std::max(AddMaterial(mc, mn, tc, tn), 0);
    SetMaterial(s->texture, index, TextureSize(index));
    brush[static_cast<size_t>(selected_surface_brush)]->MarkDrawnChanged();
    GetFrontEnd().SurfaceSelectionChanged();
    GetFrontEnd().MarkFileAsDirty(true);
}

void World::ChangeTextureToAll(std::string_view mc, std::string_view mn, std::string_view tc, std::string_view tn) {
    const int index = std::max(AddMaterial(mc, mn, tc, tn), 0);
    const SIZE size = TextureSize(index);
    ForEachSelectedSurface([&](Surface& s) { SetMaterial(s.texture, index, size); });
    GetFrontEnd().MarkFileAsDirty(true);
}

void World::RemoveTextureFromSurface(const char* mc, const char* mn) {
    if (Surface* s = SelectedSurface()) {
        s->texture.index = 0;
        brush[static_cast<size_t>(selected_surface_brush)]->MarkDrawnChanged();
        GetFrontEnd().SurfaceSelectionChanged();
    } else if (brush_selection.GetItemCount() > 0)
        ForEachSelectedSurface([](Surface& selected) { selected.texture.index = 0; });
    else {
        if (!Confirmed("Do you really want to remove this material?"))
            return;
        const int row = FindMaterialRow(mc ? mc : "", mn ? mn : "");
        if (row == -1)
            return;
        for (const auto& b : brush)
            ForEachSurfaceOf(*b, [row](Surface& carrier) {
                if (carrier.texture.index == row)
                    carrier.texture.index = 0;
            });
        FlushUnusedMaterials();
    }
    GetFrontEnd().MarkFileAsDirty(true);
}

void World::ReplaceTextureOnSurface(std::string_view mc, std::string_view mn, std::string_view tc, std::string_view tn,
                                    bool only_selected) {
    if (!HasSurfaceTexture())
        return;
    if (Confirmed("Do you really want to replace this material?")) {
        const int old_index = SelectedSurface()->texture.index;
        const int new_index = AddMaterial(mc, mn, tc, tn);
        if (new_index == -1)
            return; // no material: the old one stays
        const auto replace = [old_index, new_index](Surface& s) {
            if (s.texture.index == old_index)
                s.texture.index = new_index;
        };
        if (only_selected)
            ForEachSelectedSurface(replace);
        else
            for (const auto& b : brush)
                ForEachSurfaceOf(*b, replace);
        FlushUnusedMaterials();
        GetFrontEnd().SurfaceSelectionChanged();
    }
    GetFrontEnd().MarkFileAsDirty(true);
}

void World::FitTextureOnSurface(float u, float v) {
    if (SelectedSurface()) {
        brush[static_cast<size_t>(selected_surface_brush)]->FitTexture(u, v);
        GetFrontEnd().SurfaceSelectionChanged();
    }
    GetFrontEnd().MarkFileAsDirty(true);
}
