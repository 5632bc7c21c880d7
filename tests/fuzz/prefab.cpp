// A prefab, placed into a level, which is then saved.
#include "fuzz/FuzzTarget.h"
#include "persistence/ProjectData.h"

FUZZ_TARGET(prefab, bytes) {
    static FuzzDesktop desktop;
    static ProjectData data;
    desktop.Forget();
    WriteBytes("in.mpf", bytes);
    std::unique_ptr<World> world = data.NewWorld();
    if (!world->PlacePrefab("in.mpf", {10, 20, 30}, data.materials, *data.parser, data.error))
        return;
    Require(SaveProject("out.msp", *world, {}, false, data.error), "a level with the prefab can be saved");
    Require(data.Load("out.msp") != nullptr, "and opened");
}
