// A height map, and a terrain made from it.
#include "fuzz/FuzzTarget.h"
#include "scene/Terrain.h"
#include "scene/World.h"

FUZZ_TARGET(heightmap, bytes) {
    static FuzzFolder folder;
    folder.NextInput("in.tga", bytes);
    std::string error;
    HeightMap map;
    if (!LoadHeightMap("in.tga", map, error)) {
        Require(!error.empty(), "a refusal has a reason");
        return;
    }
    Require(map.sample.size() == size_t(map.width) * size_t(map.height), "a sample for each pixel");
    TerrainShape shape{"in.tga", 512, 300, 768, 2, 2, 64};
    World level;
    Require(level.GenerateTerrain(shape, error), "a terrain can be made from what was read");
    for (const auto& segment : level.brush)
        for (const D3DVECTOR& v : segment->surfaces.at(0).vertices)
            Require(v.y >= 0 && v.y <= static_cast<float>(shape.size_y) + 0.01f, "no height is beyond the whole");
}
