// The compiled world file that the game loads.
#pragma once

#include <cstdint>
#include <string>

#include "compiler/StageRunner.h"
#include "compiler/WorldSubdivide.h"

// The words of the physics record of a brush that is not dynamic: this mass, whatever the object holds.
inline constexpr float STATIC_MASS_IN_FILE = 99999997952.0f;

enum class SaveResult { Written, Stopped, Failed };

// A surface without a texture is left out, unless the brush has to stay whole.
bool KeepsAllSurfaces(const Brush& brush, const World& world);

// Writes all chunks. Physics meshes and the tree are used up. A failure shows its box, and error says file and reason;
// what stood in the file's place stays.
SaveResult SaveFinalMap(WorldSubdivide& ws, const std::string& target, CompileProgress& progress, std::string& error);
