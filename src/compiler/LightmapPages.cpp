#include "compiler/LightmapPages.h"

#include <algorithm>
#include <bit>
#include <tuple>

#include "compiler/StageRunner.h"
#include "foundation/Desktop.h"
#include "foundation/Strings.h"
#include "render/Textures.h"

namespace {

constexpr float PAGE_TEXEL = 1.0f / LIGHTMAP_PAGE_SIDE;
constexpr float NO_LIGHTMAP_SIZE = 4.0f; // of the info of a surface without a lightmap, and of a block of one colour
constexpr int UNIFORM_TEXELS = 4;        // a side
constexpr int PAGES_IN_ONE = 4;
constexpr int BLOCK_SIZES = 32; // in sectors a side: blocks have at most 128 texels
constexpr float MEGABYTES_A_PAGE = 0.25f;
constexpr uint32_t LIGHTMAP_STAGE = 1; // texture stage

struct SURFACE_SORT {
    int brush, surface;
    bool curved;
    int cell, render_group, material, lightmap_id;

    auto Key() const { return std::tie(cell, render_group, material); }
};

// By cell, then render group, then material; ties keep the order of listing.
void SortSurfaces(std::vector<SURFACE_SORT>& list) {
    std::stable_sort(list.begin(), list.end(),
                     [](const SURFACE_SORT& a, const SURFACE_SORT& b) { return a.Key() < b.Key(); });
}

// Fills pages first fit. Pages only fill up, so a size that did not fit somewhere never fits there later: each size
// goes on from the page and the row of its last success.
class PageFiller {
public:
    explicit PageFiller(World& paged_world) : world(paged_world) { AddPage(); }

    // False when there would be too many pages.
    bool Place(LIGHTMAP_INFO& info, std::vector<uint32_t>& block, bool curved);

private:
    void AddPage() {
        sectors.emplace_back();
        world.lightmaps.emplace_back(static_cast<size_t>(LIGHTMAP_PAGE_SIDE) * LIGHTMAP_PAGE_SIDE, 0u);
    }
    bool FindPlace(int w, int h, size_t& page, int& sector);

    World& world;
    std::vector<LightmapSectors> sectors;
    struct Progress {
        size_t page = 0;
        int row = 0;
    };
    Progress reached[BLOCK_SIZES][BLOCK_SIZES];
};

bool PageFiller::FindPlace(int w, int h, size_t& page, int& sector) {
    Progress& from = reached[std::clamp(h / LIGHTMAP_SECTOR, 1, BLOCK_SIZES) - 1]
                            [std::clamp(w / LIGHTMAP_SECTOR, 1, BLOCK_SIZES) - 1];
    for (page = from.page;; ++page) {
        if (page == sectors.size()) {
            if (sectors.size() >= static_cast<size_t>(MAX_LIGHTMAP_PAGES))
                return false;
            AddPage();
        }
        if (FindFreeLightmapSector(sectors[page], w, h, sector, page == from.page ? from.row : 0))
            break;
    }
    from = {page, sector / PAGE_SECTORS};
    return true;
}

bool PageFiller::Place(LIGHTMAP_INFO& info, std::vector<uint32_t>& block, bool curved) {
    const int w = static_cast<int>(info.u_size), h = static_cast<int>(info.v_size);
    size_t page;
    int sector;
    if (!FindPlace(w, h, page, sector))
        return false;
    const int x = LIGHTMAP_SECTOR * (sector % PAGE_SECTORS), y = LIGHTMAP_SECTOR * (sector / PAGE_SECTORS);
    info.lightmap = static_cast<int32_t>(page);
    info.u_start = static_cast<float>(x) * PAGE_TEXEL;
    info.v_start = static_cast<float>(y) * PAGE_TEXEL;
    info.u_size = static_cast<float>(w) * PAGE_TEXEL;
    info.v_size = static_cast<float>(h) * PAGE_TEXEL;
    for (int row = 0; row < h; ++row)
        std::copy_n(block.begin() + static_cast<std::ptrdiff_t>(row) * w, w,
                    world.lightmaps[page].begin() + static_cast<std::ptrdiff_t>(y + row) * LIGHTMAP_PAGE_SIDE + x);
    const bool uniform = w == UNIFORM_TEXELS && h == UNIFORM_TEXELS &&
                         std::all_of(block.begin(), block.end(), [&](uint32_t texel) { return texel == block[0]; });
    if (uniform) { // narrowed to the block's inside, off its neighbours
        const float inset = curved ? PAGE_TEXEL / 4 : PAGE_TEXEL, size = curved ? 3 * PAGE_TEXEL : 2 * PAGE_TEXEL;
        info.u_start += inset;
        info.v_start += inset;
        info.u_size = info.v_size = size;
    }
    block = {};
    return true;
}

void MarkWithoutLightmap(LIGHTMAP_INFO& info) {
    info.u_start = info.v_start = 0;
    info.u_size = info.v_size = NO_LIGHTMAP_SIZE;
}

Surface& SurfaceOf(World& world, const SURFACE_SORT& sort) {
    Brush& brush = *world.brush[static_cast<size_t>(sort.brush)];
    return (sort.curved ? brush.curved_surfaces : brush.surfaces)[static_cast<size_t>(sort.surface)];
}

// All surfaces that may have a lightmap, with one record for each lightmap that pick(surface) counts.
template <class Count>
std::vector<SURFACE_SORT> ListSurfaces(const WorldSubdivide& ws, Count&& count) {
    std::vector<SURFACE_SORT> list;
    for (int b = 0; b < ws.world.GetBrushCount(); ++b) {
        const Brush& brush = *ws.world.brush[static_cast<size_t>(b)];
        if (!TakesPartInPaging(brush))
            continue;
        const int cell = ws.GetBrushCell(b);
        brush.ForEachSurface([&](const Surface& surface, int s, bool curved) {
            for (int id = 0; id < count(surface); ++id)
                list.push_back({b, s, curved, cell, brush.render_group, surface.texture.index, id});
        });
    }
    return list;
}

// The dynamic lightmaps by their lights. A lightmap whose light is not dynamic has no place.
std::vector<std::vector<SURFACE_SORT>> DynamicLightmapsByLight(const WorldSubdivide& ws) {
    std::vector<std::vector<SURFACE_SORT>> by_light(ws.world.entity.size());
    for (const SURFACE_SORT& sort :
         ListSurfaces(ws, [](const Surface& s) { return static_cast<int>(s.dynamic_lightmaps.size()); })) {
        const auto light = static_cast<size_t>(
            SurfaceOf(ws.world, sort).dynamic_lightmaps[static_cast<size_t>(sort.lightmap_id)].info.light_index);
        const Entity& entity = *ws.world.entity[light];
        if (entity.IsType("POINT_LIGHT") && entity.BoolParameter("dynamic") && entity.BoolParameter("dynamic_lightmap"))
            by_light[light].push_back(sort);
    }
    for (auto& list : by_light)
        SortSurfaces(list);
    return by_light;
}

bool FillPages(WorldSubdivide& ws) {
    World& world = ws.world;
    PageFiller pages(world);
    std::vector<SURFACE_SORT> list = ListSurfaces(ws, [](const Surface&) { return 1; });
    SortSurfaces(list);
    for (const SURFACE_SORT& sort : list) {
        Surface& surface = SurfaceOf(world, sort);
        if (surface.lightmap_info.lightmap == -1)
            MarkWithoutLightmap(surface.lightmap_info);
        else if (!pages.Place(surface.lightmap_info, surface.lightmap_block, sort.curved))
            return false;
    }
    for (const std::vector<SURFACE_SORT>& lightmaps : DynamicLightmapsByLight(ws))
        for (const SURFACE_SORT& sort : lightmaps) {
            DynamicLightmap& lightmap = SurfaceOf(world, sort).dynamic_lightmaps[static_cast<size_t>(sort.lightmap_id)];
            if (!pages.Place(lightmap.info, lightmap.block, sort.curved))
                return false;
        }
    return true;
}

// Blocks that no page took: of surfaces that have none, and of lights that are not dynamic.
void DropLeftBlocks(World& world) {
    for (const auto& brush : world.brush)
        brush->ForEachSurface([](Surface& surface, int, bool) {
            surface.lightmap_block = {};
            for (DynamicLightmap& lightmap : surface.dynamic_lightmaps)
                if (!lightmap.block.empty()) {
                    lightmap.block = {};
                    lightmap.info.lightmap = -1;
                    MarkWithoutLightmap(lightmap.info);
                }
        });
}

uint32_t AverageTexel(const LightmapPage& page, int x, int y) {
    const auto at = [&](int column, int row) {
        return page[static_cast<size_t>(row) * LIGHTMAP_PAGE_SIDE + static_cast<size_t>(column)];
    };
    const uint32_t texels[4] = {at(2 * x, 2 * y), at(2 * x + 1, 2 * y), at(2 * x, 2 * y + 1), at(2 * x + 1, 2 * y + 1)};
    uint32_t average = 0;
    for (const int shift : {0, 8, 16}) {
        uint32_t sum = 0;
        for (const uint32_t texel : texels)
            sum += texel >> shift & 0xFF;
        average |= sum / 4 << shift;
    }
    return average;
}

void RescaleInfo(LIGHTMAP_INFO& info) {
    const int page = info.lightmap, quadrant = page % PAGES_IN_ONE;
    info.lightmap = page / PAGES_IN_ONE;
    for (float* value : {&info.u_start, &info.v_start, &info.u_size, &info.v_size})
        *value *= 0.5f;
    if (quadrant == 1 || quadrant == 3)
        info.u_start += 0.5f;
    if (quadrant == 2 || quadrant == 3)
        info.v_start += 0.5f;
}

} // namespace

bool FindFreeLightmapSector(LightmapSectors& sectors, int sx, int sy, int& sector, int first_row) {
    const int w = sx / LIGHTMAP_SECTOR, h = sy / LIGHTMAP_SECTOR;
    for (int y = first_row; y <= PAGE_SECTORS - h; ++y) {
        uint64_t free_columns = ~uint64_t{0};
        for (int row = y; row < y + h; ++row)
            free_columns &= ~sectors[static_cast<size_t>(row)];
        // Keeps the columns that begin w free ones, doubling the run that is known. Zeros come in from the right end.
        for (int known = 1; known < w && free_columns != 0;) {
            const int step = std::min(known, w - known);
            free_columns &= free_columns >> step;
            known += step;
        }
        if (free_columns == 0)
            continue;
        const int x = std::countr_zero(free_columns);
        const uint64_t taken = (w >= PAGE_SECTORS ? ~uint64_t{0} : (uint64_t{1} << w) - 1) << x;
        for (int row = y; row < y + h; ++row)
            sectors[static_cast<size_t>(row)] |= taken;
        sector = y * PAGE_SECTORS + x;
        return true;
    }
    sector = -1;
    return false;
}

CompileResult BatchLightmaps(WorldSubdivide& ws, CompileProgress& progress, std::string& message) {
    const uint32_t start = GetDesktop().GetTickCount();
    World& world = ws.world;
    world.lightmaps.clear();
    if (!FillPages(ws)) {
        message = Format("The lightmaps need more than %d pages: lower Lightmap Detail and compile again.",
                         MAX_LIGHTMAP_PAGES);
        return CompileResult::LimitExceeded;
    }
    DropLeftBlocks(world);
    if (progress.CompilationCancelled())
        return CompileResult::Stopped;
    RescaleLightmapPages(world);
    MakePageTextures(world);
    const auto pages = static_cast<int>(world.lightmaps.size());
    progress.AddText("\t\t-> " + TimeSince(start) + "\r\n");
    progress.AddText(Format("\r\n%.2f MB Lightmaps in %d page(s)\r\n\r\n",
                            static_cast<double>(static_cast<float>(pages) * MEGABYTES_A_PAGE), pages));
    return CompileResult::Written;
}

void RescaleLightmapPages(World& world) {
    constexpr int HALF = LIGHTMAP_PAGE_SIDE / 2;
    std::vector<LightmapPage> rescaled((world.lightmaps.size() + PAGES_IN_ONE - 1) / PAGES_IN_ONE);
    for (size_t page = 0; page < world.lightmaps.size(); ++page) {
        LightmapPage& target = rescaled[page / PAGES_IN_ONE];
        target.resize(static_cast<size_t>(LIGHTMAP_PAGE_SIDE) * LIGHTMAP_PAGE_SIDE, 0);
        const size_t quadrant = page % PAGES_IN_ONE;
        const size_t left = quadrant % 2 * HALF, top = quadrant / 2 * HALF;
        for (int y = 0; y < HALF; ++y)
            for (int x = 0; x < HALF; ++x)
                target[(top + static_cast<size_t>(y)) * LIGHTMAP_PAGE_SIDE + left + static_cast<size_t>(x)] =
                    AverageTexel(world.lightmaps[page], x, y);
    }
    world.lightmaps = std::move(rescaled);
    for (const auto& brush : world.brush) {
        if (brush->IsCustom())
            continue;
        brush->ForEachSurface([](Surface& surface, int, bool) {
            RescaleInfo(surface.lightmap_info);
            for (DynamicLightmap& lightmap : surface.dynamic_lightmaps)
                RescaleInfo(lightmap.info);
        });
        brush->MarkDrawnChanged();
    }
}

void ResetLightmaps(World& world) {
    for (const auto& brush : world.brush) {
        if (!TakesPartInPaging(*brush))
            continue;
        brush->ForEachSurface([](Surface& surface, int, bool) {
            surface.lightmap_block = {};
            surface.lightmap_info.lightmap = 0;
            surface.lightmap = 0;
            surface.dynamic_lightmaps.clear();
        });
        brush->MarkDrawnChanged();
    }
    crTDestroyAll(TL_LIGHTMAP);
    world.lightmaps.clear();
    world.lightmap_index.clear();
}

void MakePageTextures(World& world) {
    const int32_t force_mipmap = crvTForceMipmap;
    crvTForceMipmap = 1; // none but the page itself
    world.lightmap_index.clear();
    for (const LightmapPage& page : world.lightmaps) {
        const uint32_t handle =
            crTCreate(LIGHTMAP_PAGE_SIDE, LIGHTMAP_PAGE_SIDE, 32, TL_LIGHTMAP, TEX_NORMAL, LIGHTMAP_STAGE, false);
        if (handle != CR_NO_TEXTURE)
            crTFillTexture(handle, page.data(), 0, 0);
        world.lightmap_index.push_back(handle);
    }
    crvTForceMipmap = force_mipmap;
}

std::vector<uint8_t> GetLightmapData(const World& world, int i) {
    std::vector<uint8_t> bytes;
    bytes.reserve(LIGHTMAP_DATA_SIZE);
    for (const uint32_t texel : world.lightmaps[static_cast<size_t>(i)])
        for (const int shift : {0, 8, 16})
            bytes.push_back(static_cast<uint8_t>(texel >> shift));
    return bytes;
}
