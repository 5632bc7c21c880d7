#include "editor/Application.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "editor/CompileReport.h"
#include "editor/ConsoleProgress.h"
#include "editor/Interface.h"
#include "editor/LevelPlan.h"
#include "files/AtomicFile.h"
#include "files/FileFind.h"
#include "files/FileLibrary.h"
#include "files/FileObject.h"
#include "files/Png.h"
#include "foundation/Desktop.h"
#include "foundation/Paths.h"
#include "foundation/StringList.h"
#include "foundation/Strings.h"
#include "persistence/WorldFile.h"
#include "render/ItemBuffer.h"

static void MountFolder(const std::string& folder) {
    StringListClass names;
    FileFindObject libraries(folder, "*.fs", FFO_FileFind, false);
    while (const FFOInfo* found = libraries.FindNext())
        names.AddString(folder + "\\" + found->name);
    names.SortList();
    for (int k = 0; k < names.GetStringCount(); ++k)
        switch (FileObject::AddFileLibrary(names.GetString(k), 0)) {
        case FL_OK:
            break;
        case FL_WRONG_VERSION:
            NoticeOnce(Format("the library \"%s\" has another version than %d", names.GetString(k), FL_VERSION));
            break;
        default:
            NoticeOnce(Format("the library \"%s\" cannot be read", names.GetString(k)));
            break;
        }
}

void CMarrowstead2App::MountLibraries() {
    FileObject::ResetFileLibrary();
    MountFolder("Data");
    MountFolder("Addons");
    for (const char* folder : {"Maps", "Textures", "Scripts", "Scripts\\Materials"})
        MakeFolders(folder);
}

// The project as it is found from the folder where the program was started; else as a path inside the data root.
static std::string FindProject(const std::string& project) {
    std::error_code ignored;
    const std::filesystem::path absolute = std::filesystem::absolute(project, ignored);
    return std::filesystem::exists(absolute, ignored) ? absolute.string() : project;
}

static ExitStatus Fail(const std::string& sentence) {
    GetDesktop().Notice(sentence);
    return EXIT_BAD_INPUT;
}

static bool WriteText(const std::string& path, const std::string& text) {
    AtomicFile file(path);
    if (file.IsOpen() && file.Write(text.data(), text.size()) && file.Commit())
        return true;
    GetDesktop().Notice(Format("\"%s\" cannot be written: %s", path.c_str(), file.GetError().c_str()));
    return false;
}

// Each face of an item buffer as a picture: brushes in colours of their own, portals bright, the background dark.
static FaceObserver FaceWriter(const std::string& folder) {
    return [folder](int cell, int eye, int face, const ItemBuffer& buffer) {
        std::vector<uint8_t> rgb;
        for (const uint32_t item : buffer.Pixels()) {
            const uint32_t color = item == ITEM_BACKGROUND     ? 0x101018
                                   : (item & ITEM_PORTAL) != 0 ? 0xFFFFFF
                                                               : DistinctColor(static_cast<int>(item));
            for (const int shift : {16, 8, 0})
                rgb.push_back(static_cast<uint8_t>(color >> shift));
        }
        std::string failure;
        if (!WritePng(folder + "/" + Format("cell%03d-eye%05d-face%d.png", cell, eye, face), buffer.Side(),
                      buffer.Side(), rgb, failure))
            NoticeOnce(failure);
    };
}

static const char* OutcomeWord(CompileOutcome outcome) {
    switch (outcome) {
    case CompileOutcome::Written:
        return "written";
    case CompileOutcome::Problems:
        return "problems";
    case CompileOutcome::Stopped:
        return "stopped";
    case CompileOutcome::NotWritten:
        return "not written";
    case CompileOutcome::BadInput:
        break;
    }
    return "bad input";
}

// What the marks behind portals say; empty when the findings have none.
static std::string MarksLegend(const CInterface& interface) {
    const std::vector<ProblemItem>& tree = interface.problem_solver.Tree();
    const bool has_portals = std::any_of(tree.begin(), tree.end(), [](const ProblemItem& item) {
        return item.kind == ProblemItem::Kind::Portal;
    });
    return has_portals ? std::string("\n") + PORTAL_MARKS_LEGEND + "\n" : std::string();
}

// What was asked for beside the world. False when something could not be written.
static bool WriteExtras(const CommandLine& command_line, CInterface& interface, CompileOutcome outcome) {
    bool written = true;
    if (outcome == CompileOutcome::Problems)
        std::fprintf(stderr, "%s%s", interface.problem_solver.TreeText().c_str(), MarksLegend(interface).c_str());
    if (!command_line.problems_file.empty())
        written &= WriteText(command_line.problems_file, interface.problem_solver.TreeJson(*interface.world));
    WorldFile world;
    std::string error;
    const bool wanted = !command_line.report_file.empty() || !command_line.picture_folder.empty();
    const bool readable =
        wanted && outcome == CompileOutcome::Written && ReadWorldFile(interface.TargetFile(), world, error);
    if (!command_line.report_file.empty())
        written &= WriteText(command_line.report_file,
                             ReportJson(OutcomeWord(outcome), interface.stage_times, readable ? &world : nullptr));
    if (!command_line.picture_folder.empty() && readable) {
        const PlanPicture plan = DrawLevelPlan(world);
        if (!WritePng(command_line.picture_folder + "/plan.png", plan.width, plan.height, plan.rgb, error)) {
            GetDesktop().Notice(error);
            written = false;
        }
    }
    return written;
}

// A file named on the command line, before the data folder becomes the current one.
static void MakeAbsolute(std::string& path) {
    std::error_code ignored;
    if (!path.empty())
        path = std::filesystem::absolute(path, ignored).string();
}

static CompileOutcome RunCompile(const CommandLine& command_line, CInterface& interface) {
    ConsoleProgress progress(stdout, stderr, command_line.progress_bar, command_line.stop_signal);
    if (!command_line.picture_folder.empty()) {
        MakeFolders(command_line.picture_folder);
        interface.face_observer = FaceWriter(command_line.picture_folder);
    }
    const CompileOutcome outcome =
        command_line.kind == CompileKind::World
            ? interface.Compile(progress)
            : interface.CompileEntities(progress, command_line.kind == CompileKind::EntitiesAndVisibility);
    std::fputs("\n", stdout);
    std::fflush(stdout);
    return outcome;
}

ExitStatus CMarrowstead2App::CompileProject(CommandLine command_line) {
    command_line.project = FindProject(command_line.project);
    for (std::string* path : {&command_line.problems_file, &command_line.report_file, &command_line.picture_folder})
        MakeAbsolute(*path);
    if (!command_line.data_folder.empty()) {
        std::error_code failure;
        std::filesystem::current_path(command_line.data_folder, failure);
        if (failure)
            return Fail(Format("the data folder \"%s\" cannot be opened: %s", command_line.data_folder.c_str(),
                               failure.message().c_str()));
    }
    CInterface interface;
    interface.threads = command_line.threads;
    std::string error;
    for (const std::string& assignment : command_line.overrides)
        if (!interface.OverrideSetting(assignment, error))
            return Fail(error);

    MountLibraries();
    interface.Init();
    interface.InitEditor();
    if (!interface.LoadProject(nullptr, command_line.project, error))
        return Fail(error);

    const CompileOutcome outcome = RunCompile(command_line, interface);
    const bool extras = WriteExtras(command_line, interface, outcome);
    switch (outcome) {
    case CompileOutcome::Written:
        return extras ? EXIT_WRITTEN : EXIT_NOT_WRITTEN;
    case CompileOutcome::Problems:
        return EXIT_PROBLEMS;
    case CompileOutcome::Stopped:
        return EXIT_STOPPED;
    case CompileOutcome::NotWritten:
        return EXIT_NOT_WRITTEN;
    case CompileOutcome::BadInput:
        break;
    }
    return EXIT_BAD_INPUT;
}
