#include "commands/MovieFrames.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <optional>

#include "commands/ScriptApplication.h"
#include "drawing/ViewDrawing.h"
#include "editor/Interface.h"
#include "editor/WorldPicture.h"
#include "files/Png.h"
#include "foundation/Paths.h"
#include "foundation/Strings.h"
#include "render/Frame.h"

namespace fs = std::filesystem;

namespace {

constexpr float RADIANS_A_DEGREE = PI / 180;
constexpr int MOST_FRAMES = 1000000;

int Fail(const std::string& sentence) {
    std::fprintf(stderr, "%s\n", sentence.c_str());
    return EXIT_BAD_INPUT;
}

// The first entity of that name with a path.
int FindCamera(const World& world) {
    for (int e = 0; e < world.GetEntityCount(); ++e)
        if (const Entity& entity = *world.entity[static_cast<size_t>(e)];
            entity.name == "camera" && entity.path.GetCount() > 0)
            return e;
    return -1;
}

// The compiled world of the level, when there is one that is not older than the project.
std::optional<WorldFile> ReadLitWorld(const CInterface& interface, const fs::path& project) {
    const fs::path compiled = RealPath(interface.TargetFile());
    std::error_code failure;
    if (!fs::exists(compiled, failure) ||
        fs::last_write_time(compiled, failure) < fs::last_write_time(project, failure) || failure)
        return std::nullopt;
    WorldFile world;
    std::string error;
    if (ReadWorldFile(interface.TargetFile(), world, error) && !world.lightmap_pages.empty())
        return world;
    if (!error.empty())
        std::fprintf(stderr, "%s; the pictures are not lit\n", error.c_str());
    return std::nullopt;
}

class FrameWriter {
public:
    FrameWriter(CInterface& editor, const MovieFramesOptions& movie, std::optional<WorldFile> compiled)
        : interface(editor), options(movie), lit(std::move(compiled)) {
        if (lit) {
            textures = LoadTextures(*lit);
            decals = DecalsOf(*interface.world);
        }
        interface.SetViewRect(VIEW_PERSPECTIVE, {0, 0, options.width, options.height});
        interface.active_view = VIEW_TOP;
        DisplayFilters& filters = interface.filters;
        filters.show_entities = filters.show_portals = filters.show_occluders = false;
    }

    // False when there is nothing to look through, or the picture cannot be drawn.
    bool Draw(std::vector<uint8_t>& rgb) const {
        if (!lit) {
            if (!interface.DrawScene(VIEW_PERSPECTIVE))
                return false;
            rgb = ReadBackBuffer(interface.View(VIEW_PERSPECTIVE).window_rect);
            return true;
        }
        CInterface::MovieCamera camera;
        if (!interface.FindMovieCamera(camera))
            return false;
        const D3DVECTOR direction = NormalizeOrZero(camera.target - camera.position);
        WorldPicture picture(
            options.width, options.height,
            {camera.position, direction, camera.roll * RADIANS_A_DEGREE, camera.fov * RADIANS_A_DEGREE});
        picture.Draw(*lit, textures, decals);
        rgb = picture.Rgb();
        return true;
    }

private:
    CInterface& interface;
    const MovieFramesOptions& options;
    std::optional<WorldFile> lit;
    std::vector<Texels> textures;
    PictureDecals decals;
};

int WriteFrames(CInterface& interface, const MovieFramesOptions& options, const FrameWriter& writer,
                const fs::path& folder, float seconds) {
    const int count = static_cast<int>(std::floor(seconds * options.fps)) + 1;
    std::vector<uint8_t> rgb;
    for (int frame = 0; frame < count; ++frame) {
        if (options.stop_signal && *options.stop_signal) {
            std::fprintf(stderr, "stopped after %d of %d pictures\n", frame, count);
            return EXIT_STOPPED;
        }
        interface.anim_time = static_cast<float>(frame) / options.fps;
        const std::string file = (folder / Format("frame_%05d.png", frame)).string();
        if (!writer.Draw(rgb))
            return Fail("the camera of the movie cannot be drawn");
        std::string failure;
        if (!WritePng(file, options.width, options.height, rgb, failure)) {
            std::fprintf(stderr, "%s\n", failure.c_str());
            return EXIT_NOT_WRITTEN;
        }
        std::printf("picture %d of %d, %.2f s\n", frame + 1, count, static_cast<double>(interface.anim_time));
        std::fflush(stdout);
    }
    return EXIT_WRITTEN;
}

int RenderWithRenderer(const MovieFramesOptions& options, const fs::path& project, const fs::path& movie,
                       const fs::path& folder) {
    CInterface interface;
    std::string error;
    if (!StartInterface(interface, options.overrides, error))
        return Fail(error);
    if (!interface.LoadProject(project.parent_path().string().c_str(), project.filename().string(), error) ||
        interface.LoadMovie(movie.string(), error) != MOVIE_OK)
        return Fail(error);
    World& world = *interface.world;
    const int camera = FindCamera(world);
    if (camera == -1)
        return Fail(Format("\"%s\" holds no path of a camera that this level has", options.movie.c_str()));
    world.ClearSelection();
    world.entity_selection.AddItem(camera);
    interface.selection_box_active = false;
    interface.movie_editing = true;
    const float seconds = world.ComputePathTimeForSelection();
    if (!(seconds >= 0 && seconds * options.fps < static_cast<float>(MOST_FRAMES)))
        return Fail(Format("\"%s\" lasts too long for this many pictures a second", options.movie.c_str()));
    std::error_code failure;
    fs::create_directories(folder, failure);
    if (failure) {
        Fail(Format("\"%s\" cannot be made: %s", options.frame_folder.c_str(), failure.message().c_str()));
        return EXIT_NOT_WRITTEN;
    }
    const FrameWriter writer(interface, options, ReadLitWorld(interface, project));
    return WriteFrames(interface, options, writer, folder, seconds);
}

} // namespace

ExitStatus RenderMovie(const MovieFramesOptions& options) {
    std::error_code failure;
    const fs::path start = fs::current_path(failure), folder = start / options.frame_folder;
    if (!options.data_folder.empty()) {
        fs::current_path(options.data_folder, failure);
        if (failure)
            return static_cast<ExitStatus>(Fail(Format("the data folder \"%s\" cannot be opened: %s",
                                                       options.data_folder.c_str(), failure.message().c_str())));
    }
    // As seen from the start, else a data path.
    const auto file_of = [&start](const std::string& name) {
        return fs::exists(start / name) ? start / name : fs::absolute(RealPath(name));
    };
    int status = EXIT_BAD_INPUT;
    if (OpenRenderer(static_cast<uint32_t>(options.width), static_cast<uint32_t>(options.height)))
        status = RenderWithRenderer(options, file_of(options.project), file_of(options.movie), folder);
    crRelease();
    return static_cast<ExitStatus>(status);
}
