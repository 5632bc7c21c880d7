// A material script.
#include "definitions/MaterialLibrary.h"
#include "fuzz/FuzzTarget.h"

FUZZ_TARGET(materials, bytes) {
    static FuzzFolder folder;
    std::filesystem::create_directories("Scripts/Materials/wall");
    folder.NextInput("Scripts/Materials/wall/brick.mtl", bytes);
    MaterialProperties properties;
    ParseMaterialScript("wall", "brick", properties);
}
