// A material script, and the cache of materials.
#include "definitions/MaterialCache.h"
#include "definitions/MaterialLibrary.h"
#include "fuzz/FuzzTarget.h"

FUZZ_TARGET(materials, bytes) {
    static FuzzFolder folder;
    std::filesystem::create_directories("Scripts/Materials/wall");
    folder.NextInput("Scripts/Materials/wall/brick.mtl", bytes);
    MaterialProperties properties;
    ParseMaterialScript("wall", "brick", properties);
    folder.NextInput("in.cache", bytes);
    MaterialCache cache("in.cache");
    cache.GetFileData("wall", "brick.mtl", properties);
    cache.AddFileData("wall", "brick.mtl", properties);
    Require(cache.Save("out.cache"), "a cache can be written");
}
