// A run without a window: a script drives the editor from the first line to the last.
#pragma once

#include <string>
#include <vector>

#include "editor/Application.h"

struct ScriptOptions {
    std::string script;                 // a file; "-": standard input
    std::string data_folder;            // the game data root; empty: the current folder
    std::string project;                // opened first; empty: a new level
    int width = 512, height = 512;      // of each view, client pixels
    std::vector<std::string> overrides; // NAME=VALUE
    int threads = 0;                    // of a compile; 0: all cores
    const volatile std::sig_atomic_t* stop_signal = nullptr;
};

// Settings are read, and never written.
ExitStatus RunScript(const ScriptOptions& options);

class CInterface;
class Device;

// An interface for a run without a window: it reads settings, with NAME=VALUE overrides, and never writes them; the
// libraries are mounted and a new level is open. False with a sentence.
bool StartInterface(CInterface& interface, const std::vector<std::string>& overrides, std::string& error);

// Lists the devices, the software device when none is given, chooses the best one and sets a windowed mode of that
// size. False when there is none.
bool OpenRenderer(uint32_t width, uint32_t height, const std::vector<Device*>& devices = {});
