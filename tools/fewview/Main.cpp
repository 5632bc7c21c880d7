// fewview [--data DIR] [--camera X Y Z RX RY] [--size W H] FILE.few OUT.png: a picture of a compiled world.
#include <cstdio>
#include <filesystem>

#include "Picture3D.h"
#include "definitions/MaterialLibrary.h"
#include "editor/Application.h"
#include "files/Png.h"
#include "foundation/Options.h"
#include "foundation/Strings.h"
#include "render/Textures.h"

static constexpr int EXIT_BAD_FILE = 1, EXIT_NOT_SAVED = 4;

static std::vector<Texels> LoadTextures(const WorldFile& world) {
    std::vector<Texels> textures;
    for (const WorldMaterial& material : world.materials) {
        Texels& texels = textures.emplace_back();
        MaterialProperties properties;
        if (!ParseMaterialScript(material.material_class, material.material_name, properties))
            continue;
        const uint32_t handle = crTGet("Textures\\" + properties.texture_class, properties.texture_name, TL_MATERIAL);
        uint32_t width = 0, height = 0;
        if (crTReadPixels(handle, texels.argb, width, height)) {
            texels.width = static_cast<int>(width);
            texels.height = static_cast<int>(height);
        }
    }
    return textures;
}

int main(int argc, char** argv) {
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
    Picture3D picture(size[0], size[1],
                      {{camera_values[0], camera_values[1], camera_values[2]}, camera_values[3], camera_values[4]});
    picture.Draw(world, LoadTextures(world));
    if (!WritePng(picture_file, size[0], size[1], picture.Rgb())) {
        std::fprintf(stderr, "\"%s\" cannot be written\n", picture_file.c_str());
        return EXIT_NOT_SAVED;
    }
    return 0;
}
