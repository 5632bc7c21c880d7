// The stage of every compile that builds the octal tree, with its lines and sentences.
#pragma once

#include <string>

#include "compiler/CompileOptions.h"
#include "compiler/OctalTree.h"

// Anything but Built leaves a sentence in message, a stop none; a tree beyond its limit is also told by a box.
OctalTree::BuildResult BuildTreeStage(OctalTree& tree, const World& world, CompileProgress& progress,
                                      std::string& message);
