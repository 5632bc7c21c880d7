#include "commands/ScriptApplication.h"

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <sstream>

#include "commands/ScriptRunner.h"
#include "editor/ConsoleProgress.h"
#include "foundation/Strings.h"
#include "foundation/WholeFile.h"
#include "render/Frame.h"

namespace fs = std::filesystem;

namespace {

// Two by two: perspective and top, below them left and front.
void LayOutViews(CInterface& interface, int w, int h) {
    const std::pair<int, int> places[VIEW_COUNT] = {{w, 0}, {w, h}, {0, h}, {0, 0}};
    for (int view = 0; view < VIEW_COUNT; ++view) {
        const auto [x, y] = places[view];
        interface.SetViewRect(view, {x, y, x + w, y + h});
    }
    interface.CenterWorld(true);
}

CR_D3DDevice* FindDevice(const char* name) {
    for (CR_D3DDevice& device : crGetRootDevice()->devices)
        if (device.name == name)
            return &device;
    return nullptr;
}

int Fail(const std::string& sentence) {
    std::fprintf(stderr, "%s\n", sentence.c_str());
    return EXIT_BAD_INPUT;
}

int RunWithRenderer(const ScriptOptions& options, std::istream& script, const fs::path& start, ScriptDesktop& desktop) {
    CInterface interface;
    interface.threads = options.threads;
    std::string error;
    if (!StartInterface(interface, options.overrides, error))
        return Fail(error);
    LayOutViews(interface, options.width, options.height);
    LibraryPages pages(interface);
    CMainFrame frame(interface, pages);
    frame.SetClientSize(2 * options.width, 2 * options.height);
    frame.run_compile = [&options](const CMainFrame::CompileStep& compile) {
        ConsoleProgress progress(stdout, stderr, false, options.stop_signal);
        return compile(progress);
    };
    if (!options.project.empty()) {
        const fs::path beside = start / options.project;
        const std::string project = fs::exists(beside) ? beside.string() : options.project;
        if (!frame.document.Open(project, error))
            return Fail(error);
    }
    ScriptRunner runner(frame, desktop, start);
    if (!runner.Run(script, error))
        return Fail((options.script == "-" ? std::string("standard input") : "\"" + options.script + "\"") + ", " +
                    error);
    return EXIT_WRITTEN;
}

} // namespace

bool StartInterface(CInterface& interface, const std::vector<std::string>& overrides, std::string& error) {
    interface.store_settings = false;
    for (const std::string& assignment : overrides)
        if (!interface.OverrideSetting(assignment, error))
            return false;
    CMarrowstead2App::MountLibraries();
    interface.Init();
    interface.InitEditor();
    return true;
}

bool OpenRenderer(uint32_t width, uint32_t height, const std::vector<Device*>& devices) {
    crInit(devices);
    CR_D3DDevice* device = nullptr;
    for (const char* name : {"Direct3D T&L HAL", "Direct3D HAL"})
        if (!device)
            device = FindDevice(name);
    if (!device)
        return false;
    criSetRenderer(crGetRootDevice(), device);
    if (crSetMode(width, height, 32, 32, 0, 0, true) != 0 && crSetMode(width, height, 16, 16, 0, 0, true) != 0) {
        GetDesktop().MessageBox("Could not initialize renderer", "Marrowstead2000");
        return false;
    }
    crvTryRestore = true;
    return true;
}

ExitStatus RunScript(const ScriptOptions& options) {
    std::error_code failure;
    const fs::path start = fs::current_path(failure);
    std::istringstream file;
    if (options.script != "-") {
        std::string text, reason;
        if (!ReadWholeFile(options.script, text, reason))
            return static_cast<ExitStatus>(
                Fail(Format("the script \"%s\" cannot be opened: %s", options.script.c_str(), reason.c_str())));
        file.str(text);
    }
    if (!options.data_folder.empty()) {
        fs::current_path(options.data_folder, failure);
        if (failure)
            return static_cast<ExitStatus>(Fail(Format("the data folder \"%s\" cannot be opened: %s",
                                                       options.data_folder.c_str(), failure.message().c_str())));
    }
    ScriptDesktop desktop;
    SetDesktop(&desktop);
    int status = EXIT_BAD_INPUT;
    if (OpenRenderer(static_cast<uint32_t>(2 * options.width), static_cast<uint32_t>(2 * options.height)))
        status = RunWithRenderer(options, options.script == "-" ? std::cin : static_cast<std::istream&>(file), start,
                                 desktop);
    crRelease();
    SetDesktop(nullptr);
    return static_cast<ExitStatus>(status);
}
