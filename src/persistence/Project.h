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

// What a project names and the library or the definitions lack.
struct ProjectLeftOut {
    int entities = 0, materials = 0, decal_textures = 0;
    // Sums it up for a user; empty when nothing was left out.
    std::string Sentence(std::string_view file_name) const;
};

// Into a new world. False with a sentence that names the file and the reason; the views then are as they were, and a
// world that was touched is thrown away by the caller. What was left out is told once each by a notice.
bool LoadProject(std::string_view full_name, World& world, ProjectViews& views, MaterialLibrary& materials,
                 EntityParser& parser, std::string& error, ProjectLeftOut* left_out = nullptr);

// The decals of a project in place of the world's. False with a sentence; the world then is as it was.
bool LoadDecals(std::string_view full_name, World& world, MaterialLibrary& materials, EntityParser& parser,
                std::string& error);
