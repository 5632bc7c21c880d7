// The quick path: new entities in an existing compiled world, without a full compile.
#pragma once

#include <string>

#include "compiler/CompileOptions.h"
#include "compiler/ProblemSolver.h"
#include "scene/World.h"

enum class EntityUpdateResult { Written, Problems, Stopped, NoOldWorld, BrushesDeleted, CellsDiffer, WriteFailed, LimitExceeded };

// Rewrites the entities of the world file `target`, and with update_ent_visibility also the entities and occluders of
// its cells. The old world is kept beside it, as ".bkp". Anything but Written leaves the target as it was; what the
// user must know is told by a box and by the progress text. problems takes the findings.
EntityUpdateResult CompileEntities(World& world, const CompileOptions& options, const std::string& target,
                                   bool update_ent_visibility, CompileProgress& progress, ProblemSolver& problems);
