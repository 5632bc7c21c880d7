// A movie as numbered pictures: the flight of its camera through the level, lit where the compiled world is there.
#pragma once

#include <csignal>
#include <string>
#include <vector>

#include "editor/Application.h"

struct MovieFramesOptions {
    std::string project, movie;          // files
    std::string frame_folder = "frames"; // made if it is not there; frame_00000.png and so on
    std::string data_folder;             // the game data root; empty: the current folder
    float fps = 25;
    int width = 640, height = 360;      // pixels
    std::vector<std::string> overrides; // NAME=VALUE
    const volatile std::sig_atomic_t* stop_signal = nullptr;
};

// Settings are read, and never written. The compiled world is taken when it is not older than the project.
ExitStatus RenderMovie(const MovieFramesOptions& options);
