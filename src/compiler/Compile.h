// The compile: from a world to the file that the game loads.
#pragma once

#include <string>

#include "compiler/CompileOptions.h"
#include "compiler/ProblemSolver.h"
#include "scene/World.h"

enum class CompileResult { Written, Problems, Stopped, WriteFailed, LimitExceeded };

// Runs all stages, from the entry statistics to the written file `target` (a data path, such as "Maps\Default.few").
// Anything but Written leaves the target as it was. message says why in one sentence; it is empty after Written,
// Stopped and Problems. problems, unless null, receives what was found wrong with the cells.
CompileResult CompileWorld(World& world, const CompileOptions& options, const std::string& target,
                           CompileProgress& progress, std::string& message, ProblemSolver* problems = nullptr);

// "[%02dh %02dm %02ds]" and the like: whole seconds of milliseconds, split.
void ConvertTime(uint32_t tickcount, int& hours, int& minutes, int& seconds);
