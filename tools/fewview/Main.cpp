// fewview [--data DIR] [--camera X Y Z RX RY] [--size W H] FILE.few OUT.png: a picture of a compiled world.
#include <cstdio>
#include <filesystem>

#include "editor/Application.h"
#include "editor/WorldPicture.h"
#include "files/Png.h"
#include "foundation/Options.h"

static constexpr int EXIT_BAD_FILE = 1, EXIT_NOT_SAVED = 4;

static int Run(int argc, char** argv) {
    std::string file, picture_file, data_folder;
    std::vector<float> camera_values{0, 128, 0, 0, 0};
    std::vector<int> size{960, 540};
    CLI::App app{"Draws a compiled world (.few) as it is lit."};
    app.add_option("FILE", file, "the compiled world")->required();
    app.add_option("OUT", picture_file, "the PNG file to write")->required();
    app.add_option("--data", data_folder, "the game data root, for the textures (default: the current folder)");
    app.add_option("--camera", camera_values, "X Y Z, elevation and azimuth in radians")->expected(5);
    app.add_option("--size", size, "width and height in pixels")->expected(2)->check(CLI::Range(16, 8192));
    if (const std::optional<int> status = ParseOptions(app, argc, argv, EXIT_BAD_FILE))
        return *status;
    std::error_code failure;
    file = std::filesystem::absolute(file, failure).string();
    picture_file = std::filesystem::absolute(picture_file, failure).string();
    if (!data_folder.empty())
        std::filesystem::current_path(data_folder, failure);
    if (failure) {
        std::fprintf(stderr, "the data folder \"%s\" cannot be opened: %s\n", data_folder.c_str(),
                     failure.message().c_str());
        return EXIT_BAD_FILE;
    }
    WorldFile world;
    std::string error;
    if (!ReadWorldFile(file, world, error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return EXIT_BAD_FILE;
    }
    CMarrowstead2App::MountLibraries();
    WorldPicture picture(
        size[0], size[1],
        {{camera_values[0], camera_values[1], camera_values[2]}, DirectionOf(camera_values[3], camera_values[4])});
    picture.Draw(world, LoadTextures(world));
    if (!WritePng(picture_file, size[0], size[1], picture.Rgb(), error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return EXIT_NOT_SAVED;
    }
    return 0;
}

int main(int argc, char** argv) { return RunProgram(Run, argc, argv); }
