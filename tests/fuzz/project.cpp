// A project: what opens is saved, opens again, and is saved to the same bytes.
#include "fuzz/FuzzTarget.h"
#include "persistence/ProjectData.h"

FUZZ_TARGET(project, bytes) {
    static FuzzDesktop desktop;
    static ProjectData data;
    desktop.Forget();
    WriteBytes("in.msp", bytes);
    ProjectViews views{};
    std::unique_ptr<World> world = data.Load("in.msp", views);
    if (!world)
        return;
    Require(SaveProject("first.msp", *world, views, false, data.error), "what opens can be saved");
    world.reset();
    ProjectViews views_again{};
    world = data.Load("first.msp", views_again);
    Require(world != nullptr, "what was saved opens");
    Require(SaveProject("second.msp", *world, views_again, false, data.error), "and can be saved");
    Require(ReadBytes("first.msp") == ReadBytes("second.msp"), "a second save has the bytes of the first");
}
