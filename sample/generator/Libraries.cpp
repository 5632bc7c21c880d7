// The packed libraries: the base game data, and an add-on that lays a fresher plaster over it.
#include <filesystem>
#include <vector>

#include "Sample.h"
#include "files/FileObject.h"
#include "files/LibraryWriter.h"
#include "foundation/Paths.h"

// Moves a loose file into a library.
static bool Pack(LibraryWriter& library, const std::string& path) {
    std::vector<uint8_t> data;
    {
        FileObject file(path, FO_Open);
        if (!file.IsValid() || !file.ReadAll(data))
            return false;
    }
    library.Add(path, std::move(data));
    return RemoveFile(path);
}

bool MakeLibraries(std::string& error) {
    static const char* const base_files[] = {"Textures\\concrete\\concrete.dds", "Textures\\metal\\steel.tga",
                                             "Textures\\plaster\\plaster.tga",   "Textures\\water\\still.dds",
                                             "Textures\\water\\waves.dds",       "Models\\actors\\guard.msh",
                                             "entities_meshes\\statue.msh"};
    const std::string plaster = "Textures\\plaster\\plaster.tga";
    LibraryWriter base, restored;
    bool packed = MakePlaster(plaster, false);
    for (const char* path : base_files)
        packed = packed && Pack(base, path);
    packed = packed && MakePlaster(plaster, true) && Pack(restored, plaster);
    if (!packed) {
        error = "a file for the libraries cannot be read";
        return false;
    }
    return base.Write("Data\\base.fs", false, error) && restored.Write("Addons\\restored.fs", false, error);
}
