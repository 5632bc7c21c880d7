// Custom meshes (.msh): parts of triangles, each of which becomes one curved surface of a custom brush. Read by the
// brush itself; made from the files of modelling tools.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "foundation/Vector.h"
#include "scene/Surface.h"

struct CustomMeshPart {
    std::string material; // name, at most 259 characters
    std::vector<D3DVECTOR> vertices, normals;
    std::vector<UVVector> uv;
    std::vector<TRIANGLE> triangles;
};

bool WriteMesh(std::string_view full_name, const std::vector<CustomMeshPart>& parts, std::string& error);

bool CanImportMeshes(); // built with a reader of foreign meshes
// Wavefront OBJ: parts by material, triangulated, normals made where there are none, z turned to our left-handed axes.
// A part beyond 65,536 vertices is split. False with a sentence that names the file and the reason.
bool ReadForeignMesh(std::string_view full_name, std::vector<CustomMeshPart>& parts, std::string& error);
