// The start of the program: data folders, file libraries, the interface, and a compile from the command line.
#pragma once

#include <csignal>
#include <string>
#include <vector>

enum ExitStatus { EXIT_WRITTEN = 0, EXIT_BAD_INPUT = 1, EXIT_PROBLEMS = 2, EXIT_STOPPED = 3, EXIT_NOT_WRITTEN = 4 };

struct CommandLine {
    std::string project;                // to compile
    std::string data_folder;            // the game data root; empty: the current folder
    std::vector<std::string> overrides; // NAME=VALUE, for this run only
    int threads = 0;                    // 0: all cores
    bool progress_bar = false;          // on standard error
    const volatile std::sig_atomic_t* stop_signal = nullptr; // set: the Stop button was pressed
};

class CMarrowstead2App {
public:
    // Mounts "Data\*.fs", then "Addons\*.fs" in the order of their names, and creates the folders that must be there. A
    // library that cannot be read is told by a notice.
    static void MountLibraries();
    // Compiles the project of the command line and says how it went.
    static ExitStatus CompileProject(const CommandLine& command_line);
};
