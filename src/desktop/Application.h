// The editor as a desktop program.
#pragma once

#include <string>
#include <vector>

#include "editor/Application.h"

struct EditorOptions {
    std::string data_folder;            // the game data root; empty: the current folder
    std::string project;                // opened at the start; empty: none
    std::vector<std::string> overrides; // NAME=VALUE: settings of this run
    bool software_device = false;       // no OpenGL
    int threads = 0;                    // of a compile; 0: all cores
};

// Opens the window and runs until it is closed.
ExitStatus RunEditor(int& argc, char** argv, const EditorOptions& options);
