// All brushes of a view, from the meshes that are kept of them.
#pragma once

#include <vector>

#include "drawing/BrushMeshes.h"

void DrawSolidBrushes(World& world, const DrawContext& context);
void DrawWireBrushes(World& world, const DrawContext& context);

// Parts of one mesh that are drawn in one call; neighbours in the mesh become one.
class PartRun {
public:
    void Add(DeviceMesh& of, const MeshPart& part);
    void Flush(); // in the state as it is
    bool IsEmpty() const { return parts.empty(); }

private:
    DeviceMesh* mesh = nullptr;
    std::vector<MeshPart> parts;
};
