// The start of the program: data folders, file libraries, the interface, and a compile from the command line.
#pragma once

#include <csignal>
#include <string>
#include <vector>

enum ExitStatus { EXIT_WRITTEN = 0, EXIT_BAD_INPUT = 1, EXIT_PROBLEMS = 2, EXIT_STOPPED = 3, EXIT_NOT_WRITTEN = 4 };

enum class CompileKind { World, Entities, EntitiesAndVisibility };

struct CommandLine {
    std::string project; // to compile
    CompileKind kind = CompileKind::World;
    std::string problems_file;                               // JSON of the problems found; empty: none
    std::string report_file;                                 // JSON of the run; empty: none
    std::string picture_folder;                              // for a plan and what the eyes see; empty: none
    std::string data_folder;                                 // the game data root; empty: the current folder
    std::vector<std::string> overrides;                      // NAME=VALUE, for this run only
    int threads = 0;                                         // 0: all cores
    bool progress_bar = false;                               // on standard error
    const volatile std::sig_atomic_t* stop_signal = nullptr; // set: the Stop button was pressed
};

class CMarrowstead2App {
public:
    // Mounts "Data\*.fs", then "Addons\*.fs" in the order of their names, and creates the folders that must be there. A
    // library that cannot be read is told by a notice.
    static void MountLibraries();
    // Compiles the project of the command line and says how it went.
    static ExitStatus CompileProject(CommandLine command_line);
};
