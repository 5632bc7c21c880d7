// Lightmap pages: the blocks of all surfaces on shared pages, four pages shrunk into one, and the textures of the
// pages.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "compiler/Compile.h"
#include "compiler/WorldSubdivide.h"

inline constexpr int LIGHTMAP_SECTOR = 4;                                 // texels a side
inline constexpr int PAGE_SECTORS = LIGHTMAP_PAGE_SIDE / LIGHTMAP_SECTOR; // a side
inline constexpr size_t LIGHTMAP_DATA_SIZE =
    static_cast<size_t>(LIGHTMAP_PAGE_SIDE) * LIGHTMAP_PAGE_SIDE * 3; // bytes of a page in the file

inline constexpr int SOLID_WITH_LIGHTMAPS = 2; // World::render_mode

// Portals, custom brushes and occluders have no place on the pages.
inline bool TakesPartInPaging(const Brush& brush) { return !brush.IsPortalOrOccluder() && !brush.IsCustom(); }

// Which 4 by 4 sectors of a page are taken: a bit each, a word a row.
using LightmapSectors = std::array<uint64_t, PAGE_SECTORS>;
static_assert(PAGE_SECTORS == 64);

// The first free place, row by row, for sx by sy texels, which is then taken: sector is y * 64 + x, or -1. The search
// may start at a row below which this size is known not to fit.
bool FindFreeLightmapSector(LightmapSectors& sectors, int sx, int sy, int& sector, int first_row = 0);

// From the blocks of the surfaces to the pages of the world, their textures and the text of the progress window.
CompileResult BatchLightmaps(WorldSubdivide& ws, CompileProgress& progress, std::string& message);
// Four pages become one, each a quadrant of half the resolution, and all infos follow.
void RescaleLightmapPages(World& world);
// Drops all lightmaps: blocks, infos and pages.
void ResetLightmaps(World& world);
void MakePageTextures(World& world); // lightmap_index, from lightmaps
// Page i as rows of blue, green, red: LIGHTMAP_DATA_SIZE bytes.
std::vector<uint8_t> GetLightmapData(const World& world, int i);
