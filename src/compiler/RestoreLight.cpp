#include "compiler/RestoreLight.h"

#include <algorithm>
#include <cmath>

#include "compiler/CompiledWorld.h"
#include "compiler/Lighting.h"
#include "compiler/LightmapPages.h"
#include "persistence/WorldFile.h"
#include "render/Textures.h"

namespace {

constexpr int TEXELS_A_PAGE = 2 * LIGHTMAP_PAGE_SIDE; // of the side of a page, before four became one

struct Pair {
    Surface* surface;
    const WorldSurface* compiled;
    bool curved;
};

// The surfaces of a brush that the file keeps, each with what was compiled of it. Empty: they do not fit.
std::vector<Pair> PairsOf(Brush& brush, const WorldBrush& compiled, const World& world) {
    std::vector<Pair> pairs;
    const bool whole = KeepsAllSurfaces(brush, world);
    brush.ForEachSurface([&](Surface& surface, int, bool curved) {
        if (!whole && !surface.HasMaterial())
            return;
        const size_t i = pairs.size();
        pairs.push_back({&surface, i < compiled.surfaces.size() ? &compiled.surfaces[i] : nullptr, curved});
    });
    if (pairs.size() != compiled.surfaces.size())
        pairs.clear();
    return pairs;
}

bool IsAsCompiled(const Pair& pair, bool custom) {
    return pair.curved && !custom ? pair.surface->cp == pair.compiled->cp
                                  : pair.surface->vertices == pair.compiled->vertices;
}

int32_t Texels(float share) {
    return std::clamp(static_cast<int32_t>(std::lround(share * static_cast<float>(TEXELS_A_PAGE))),
                      static_cast<int32_t>(UNIFORM_SIDE), static_cast<int32_t>(LIGHTMAP_PAGE_SIDE));
}

bool IsOnPage(const LIGHTMAP_INFO& info, size_t pages) {
    const auto is_share = [](float value) { return value >= 0 && value <= 1; };
    return info.lightmap >= 0 && static_cast<size_t>(info.lightmap) < pages && is_share(info.u_start) &&
           is_share(info.v_start) && is_share(info.u_size) && is_share(info.v_size);
}

bool TakeLight(const Pair& pair, bool custom, size_t pages) {
    Surface& surface = *pair.surface;
    const WorldSurface& compiled = *pair.compiled;
    if (!surface.HasMaterial() || !IsAsCompiled(pair, custom))
        return false;
    if (pair.curved && custom) {
        surface.extra_diffuse = compiled.colors;
    } else {
        if (!IsOnPage(compiled.lightmap, pages))
            return false;
        surface.lightmap_info = compiled.lightmap;
        if (pair.curved)
            surface.lightmap_size = {Texels(compiled.lightmap.u_size), Texels(compiled.lightmap.v_size)};
        else
            surface.lightmap_uv = compiled.lightmap_uv;
    }
    surface.lightmap = 1;
    return true;
}

LightmapPage PageOf(const std::vector<uint8_t>& bytes) {
    LightmapPage page(static_cast<size_t>(LIGHTMAP_PAGE_SIDE) * LIGHTMAP_PAGE_SIDE);
    for (size_t i = 0; i < page.size(); ++i)
        page[i] = uint32_t{bytes[3 * i]} | uint32_t{bytes[3 * i + 1]} << 8 | uint32_t{bytes[3 * i + 2]} << 16;
    return page;
}

bool Fits(const WorldFile& file, const World& world) {
    if (file.brushes.size() != world.brush.size())
        return false;
    for (size_t b = 0; b < file.brushes.size(); ++b)
        if (file.brushes[b].id != world.brush[b]->GetObjectID() ||
            file.brushes[b].type != static_cast<uint32_t>(world.brush[b]->type))
            return false;
    return std::all_of(file.lightmap_pages.begin(), file.lightmap_pages.end(),
                       [](const std::vector<uint8_t>& bytes) { return bytes.size() == LIGHTMAP_DATA_SIZE; });
}

} // namespace

bool RestoreLight(const WorldFile& file, World& world) {
    if (!Fits(file, world))
        return false;
    bool lit = false;
    for (size_t b = 0; b < world.brush.size(); ++b) {
        Brush& brush = *world.brush[b];
        if (brush.IsPortalOrOccluder())
            continue;
        bool curves_lit = false;
        for (const Pair& pair : PairsOf(brush, file.brushes[b], world))
            if (TakeLight(pair, brush.IsCustom(), file.lightmap_pages.size())) {
                lit = true;
                curves_lit = curves_lit || (pair.curved && !brush.IsCustom());
            }
        if (curves_lit) // their lightmap coordinates follow the sizes
            brush.ChangeCurveDetail(world.curve_detail);
        brush.MarkDrawnChanged();
    }
    if (!lit)
        return false;
    world.lightmaps.clear();
    for (const std::vector<uint8_t>& bytes : file.lightmap_pages)
        world.lightmaps.push_back(PageOf(bytes));
    MakePageTextures(world);
    world.render_mode = SOLID_WITH_LIGHTMAPS;
    return true;
}
