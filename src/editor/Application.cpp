#include "editor/Application.h"

#include <cstdio>
#include <filesystem>

#include "editor/ConsoleProgress.h"
#include "editor/Interface.h"
#include "files/FileFind.h"
#include "files/FileLibrary.h"
#include "files/FileObject.h"
#include "foundation/Desktop.h"
#include "foundation/Paths.h"
#include "foundation/StringList.h"
#include "foundation/Strings.h"

static void MountFolder(const std::string& folder) {
    StringListClass names;
    FileFindObject libraries(folder, "*.fs", FFO_FileFind, false);
    while (const FFOInfo* found = libraries.FindNext())
        names.AddString(folder + "\\" + found->name);
    names.SortList();
    for (int k = 0; k < names.GetStringCount(); ++k)
        switch (FileObject::AddFileLibrary(names.GetString(k), 0)) {
        case FL_OK: break;
        case FL_WRONG_VERSION: NoticeOnce(Format("the library \"%s\" has another version than %d", names.GetString(k), FL_VERSION)); break;
        default: NoticeOnce(Format("the library \"%s\" cannot be read", names.GetString(k))); break;
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

ExitStatus CMarrowstead2App::CompileProject(const CommandLine& command_line) {
    const std::string project = FindProject(command_line.project);
    if (!command_line.data_folder.empty()) {
        std::error_code failure;
        std::filesystem::current_path(command_line.data_folder, failure);
        if (failure)
            return Fail(Format("the data folder \"%s\" cannot be opened: %s", command_line.data_folder.c_str(), failure.message().c_str()));
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
    if (!interface.LoadProject(nullptr, project, error))
        return Fail(error);

    ConsoleProgress progress(stdout, stderr, command_line.progress_bar, command_line.stop_signal);
    const CompileOutcome outcome = interface.Compile(progress);
    std::fputs("\n", stdout);
    switch (outcome) {
    case CompileOutcome::Written: return EXIT_WRITTEN;
    case CompileOutcome::Problems: return EXIT_PROBLEMS;
    case CompileOutcome::Stopped: return EXIT_STOPPED;
    case CompileOutcome::NotWritten: break;
    }
    return EXIT_NOT_WRITTEN;
}
