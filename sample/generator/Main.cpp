// make_sample OUT_DIR TEXT_DIR: the complete game data of the sample in OUT_DIR, from the committed texts of TEXT_DIR.
#include <csignal>
#include <cstdio>
#include <filesystem>

#include "Sample.h"
#include "files/FileObject.h"
#include "foundation/Desktop.h"

static int Fail(const std::string& what) {
    std::fprintf(stderr, "make_sample: %s\n", what.c_str());
    return 1;
}

int main(int argc, char** argv) {
    if (argc != 3)
        return Fail("two folders are needed: the one to make and the one with the texts");
    std::signal(SIGXFSZ, SIG_IGN); // a file that may not grow any more is a write that fails
    HeadlessDesktop desktop(stderr);
    SetDesktop(&desktop);
    std::error_code failure;
    std::filesystem::create_directories(argv[1], failure);
    std::filesystem::copy(argv[2], argv[1],
                          std::filesystem::copy_options::recursive | std::filesystem::copy_options::overwrite_existing,
                          failure);
    if (!failure)
        std::filesystem::current_path(argv[1], failure);
    if (failure)
        return Fail(std::string("\"") + argv[1] + "\" cannot be made: " + failure.message());
    for (const char* folder :
         {"Data", "Addons", "Maps", "Marrowstead/Projects", "Marrowstead/Brushes", "Marrowstead/Prefabs", "Anim"})
        std::filesystem::create_directories(folder, failure);
    std::string error;
    if (!MakeTextures() || !MakeDownsPictures() || !MakeMeshes())
        return Fail("a picture or mesh cannot be written");
    if (!MakeLibraries(error))
        return Fail(error);
    for (const char* library : {"Data\\base.fs", "Addons\\restored.fs"})
        FileObject::AddFileLibrary(library, 0);
    if (!MakeLevel(error) || !MakePriory(error) || !MakeDowns(error))
        return Fail(error);
    SetDesktop(nullptr);
    return 0;
}
