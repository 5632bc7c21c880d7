// The project file (.msp): the editable form of a level, a chunk file.
#pragma once

#include <string>
#include <string_view>

#include "definitions/EntityParser.h"
#include "definitions/MaterialLibrary.h"
#include "scene/ViewInfo.h"
#include "scene/World.h"

// Unused materials are flushed first. With backup, the existing file is renamed to the full name plus ".bkp". False
// with a sentence that names the file and the reason; the existing file then is as it was.
bool SaveProject(std::string_view full_name, World& world, const ProjectViews& views, bool backup, std::string& error);

// Into a new world. False with a sentence that names the file and the reason; a world that was touched is then thrown
// away by the caller. What the project names and the library or the definitions lack is told once each by a notice, and
// error then is a sentence that sums it up.
bool LoadProject(std::string_view full_name, World& world, ProjectViews& views, MaterialLibrary& materials,
                 EntityParser& parser, std::string& error);

// The decals of a project in place of the world's. False with a sentence; the world then is as it was.
bool LoadDecals(std::string_view full_name, World& world, MaterialLibrary& materials, EntityParser& parser,
                std::string& error);
