// marrowstead2000 opens the editor; with PROJECT.msp it compiles that project and ends, with --script it drives the
// editor without a window.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

#include "commands/KeyTablePage.h"
#include "commands/MovieFrames.h"
#include "commands/ScriptApplication.h"
#include "desktop/Application.h"
#include "editor/Application.h"
#include "foundation/Desktop.h"
#include "foundation/Options.h"

static volatile std::sig_atomic_t stop_signal = 0;

// The first Ctrl+C is the Stop button; a second one ends the program at once.
static void OnInterrupt(int signal) {
    stop_signal = 1;
    std::signal(signal, SIG_DFL);
}

static bool IsViewSide(int pixels) {
    constexpr int LEAST = 16, MOST = 4096;
    return pixels >= LEAST && pixels <= MOST;
}

// WxH, as it stands when the text is empty. False with a sentence.
static bool ReadSize(const std::string& text, int& width, int& height) {
    char rest = 0;
    if (text.empty() ||
        (std::sscanf(text.c_str(), "%dx%d%c", &width, &height, &rest) == 2 && IsViewSide(width) && IsViewSide(height)))
        return true;
    std::fprintf(stderr, "\"%s\" is no size of a picture: WxH is needed, from 16 to 4096\n", text.c_str());
    return false;
}

static bool IsDisplayThere() {
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        if (const char* value = std::getenv(name); value && *value != '\0')
            return true;
    return false;
}

static int Run(int argc, char** argv) {
    CommandLine command_line;
    CLI::App app{"Edits the levels of the game, or compiles a project (.msp) into the world file that the game loads "
                 "(Maps/<name>.few)."};
    app.set_version_flag("--version", "marrowstead2000 " MARROWSTEAD_VERSION);
    auto* project = app.add_option("PROJECT", command_line.project, "the project file to compile");
    EditorOptions editor;
    auto* edited = app.add_option("--edit", editor.project, "open the editor, with this project")
                       ->expected(0, 1)
                       ->excludes(project);
    std::string device;
    app.add_option("--device", device, "what draws the views of the editor")
        ->check(CLI::IsMember({"gl", "soft"}))
        ->excludes(project);
    app.add_option("--data", command_line.data_folder, "the game data root (default: the current folder)");
    app.add_option("--set", command_line.overrides, "NAME=VALUE: a setting for this run only, such as LightingMethod=2")
        ->take_all()
        ->allow_extra_args(false);
    bool entities = false, entities_visibility = false;
    auto* quick = app.add_flag("--entities", entities, "only rewrite the entities of the compiled world");
    app.add_flag("--entities-visibility", entities_visibility, "rewrite the entities and which cells they stand in")
        ->excludes(quick);
    app.add_option("--problems", command_line.problems_file, "write the problems of the level to this file, as JSON");
    app.add_option("--report", command_line.report_file, "write a report of the run to this file, as JSON");
    app.add_option("--pictures", command_line.picture_folder,
                   "write a plan of the level and what its eyes see into this folder");
    app.add_option("--threads", command_line.threads, "threads of the compile (default: all cores)")
        ->check(CLI::Range(1, 1024));
    ScriptOptions script;
    std::string view_size;
    auto* scripted = app.add_option("--script", script.script,
                                    "drive the editor by this script, without a window (-: standard input)")
                         ->excludes(edited);
    app.add_option("--size", view_size,
                   "WxH: pixels of each view of a script (default: 512x512), or of the pictures of a movie (640x360)");
    MovieFramesOptions movie;
    auto* filmed = app.add_option("--movie", movie.movie, "render this movie (.mvi) of PROJECT to numbered pictures")
                       ->needs(project)
                       ->excludes(scripted);
    app.add_option("--frames", movie.frame_folder, "the folder for the pictures of a movie (default: frames)")
        ->needs(filmed);
    app.add_option("--fps", movie.fps, "pictures a second of a movie (default: 25)")
        ->check(CLI::Range(0.01, 1000.0))
        ->needs(filmed);
    bool keys = false;
    app.add_flag("--keys", keys, "print all commands with their keys, as a page of the manual")->excludes(project);
    if (const std::optional<int> status = ParseOptions(app, argc, argv, EXIT_BAD_INPUT))
        return *status;
    command_line.kind = entities              ? CompileKind::Entities
                        : entities_visibility ? CompileKind::EntitiesAndVisibility
                                              : CompileKind::World;
    if (keys) {
        std::fputs(KeyTablePage().c_str(), stdout);
        return EXIT_WRITTEN;
    }
    if (scripted->count() > 0) {
        if (!ReadSize(view_size, script.width, script.height))
            return EXIT_BAD_INPUT;
        script.project = command_line.project;
        script.data_folder = command_line.data_folder;
        script.overrides = command_line.overrides;
        script.threads = command_line.threads;
        script.stop_signal = &stop_signal;
        return RunScript(script);
    }
    if (filmed->count() > 0) {
        if (!ReadSize(view_size, movie.width, movie.height))
            return EXIT_BAD_INPUT;
        HeadlessDesktop desktop(stderr);
        SetDesktop(&desktop);
        std::signal(SIGINT, OnInterrupt);
        std::signal(SIGTERM, OnInterrupt);
        movie.project = command_line.project;
        movie.data_folder = command_line.data_folder;
        movie.overrides = command_line.overrides;
        movie.stop_signal = &stop_signal;
        const ExitStatus status = RenderMovie(movie);
        SetDesktop(nullptr);
        return status;
    }
    if (project->count() == 0) {
        if (!IsDisplayThere()) {
            std::fprintf(stderr, "there is no display for the editor; a project file, or --script, needs none\n");
            return EXIT_BAD_INPUT;
        }
        editor.data_folder = command_line.data_folder;
        editor.overrides = command_line.overrides;
        editor.threads = command_line.threads;
        editor.software_device = device == "soft";
        return RunEditor(argc, argv, editor);
    }
    HeadlessDesktop desktop(stderr);
    SetDesktop(&desktop);
    std::signal(SIGINT, OnInterrupt);
    std::signal(SIGTERM, OnInterrupt);
    command_line.progress_bar = isatty(STDERR_FILENO) != 0;
    command_line.stop_signal = &stop_signal;
    const ExitStatus status = CMarrowstead2App::CompileProject(command_line);
    SetDesktop(nullptr);
    return status;
}

int main(int argc, char** argv) { return RunProgram(Run, argc, argv); }
