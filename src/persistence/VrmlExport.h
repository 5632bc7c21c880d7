// The level as plain shapes in a VRML 2.0 (VRML97) text file: no textures, entities or lights.
#pragma once

#include <string>
#include <string_view>

#include "scene/World.h"

// strict: with the word DEF before the names of the inner nodes, which readers that know the language well ask for. Our
// own files have never had it.
std::string VrmlText(const World& world, bool strict = false);
// Strict for a name that ends in .vrml, as .wrl is the old form's. False with a sentence that names the file and the
// reason; an existing file is then as it was.
bool ExportVrml(std::string_view full_name, const World& world, std::string& error);
