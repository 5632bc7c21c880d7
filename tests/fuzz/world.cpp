// A compiled world: read, drawn, and its entities updated.
#include "compiler/EntityUpdate.h"
#include "compiler/Levels.h"
#include "editor/WorldPicture.h"
#include "fuzz/FuzzTarget.h"

FUZZ_TARGET(world, bytes) {
    static FuzzFolder folder;
    folder.NextInput("Maps/in.few", bytes);
    WorldFile file;
    std::string error;
    const bool readable = ReadWorldFile("Maps\\in.few", file, error);
    if (readable) {
        const std::vector<Texels> textures(file.materials.size(),
                                           Texels{2, 2, {0xFFFFFFFF, 0xFF000000, 0xFF808080, 0xFFFFFFFF}});
        WorldPicture picture(24, 16, {{0, 50, 0}, {0, 0, 1}, 0, 1.5f});
        picture.Draw(file, textures, {});
    } else
        Require(!error.empty(), "a refusal has a reason");
    World level;
    AddShape(level, BT_BOX, {0, 0, 0}, {64, 64, 64});
    AddShape(level, BT_BOX, {100, 0, 0}, {164, 64, 64});
    AddLight(level, {80, 100, 0}, 300);
    CompileProgress progress;
    ProblemSolver problems;
    CompileOptions options;
    options.threads = 1;
    if (CompileEntities(level, options, "Maps\\in.few", bytes.size() % 2 == 0, progress, problems) ==
        EntityUpdateResult::Written)
        Require(!readable || ReadWorldFile("Maps\\in.few", file, error), "what could be read can be read when updated");
    else
        Require(ReadBytes("Maps/in.few") == bytes, "an update that is refused leaves the file");
}
