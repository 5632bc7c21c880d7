// The undo step of one stroke of the terrain tool: the segments as they were before it, and all that it has made.
#pragma once

#include <cstdint>
#include <unordered_set>

#include "scene/Undo.h"

class TerrainStroke {
public:
    explicit TerrainStroke(World& world);
    ~TerrainStroke(); // without Commit the stroke leaves no step
    TerrainStroke(const TerrainStroke&) = delete;
    TerrainStroke& operator=(const TerrainStroke&) = delete;

    void Touch(const Brush& segment); // before each change of it
    void Commit();

private:
    ChangeRecord record;
    std::unordered_set<uint32_t> touched; // ids
};

void AddTerrains(ChangeRecord& record, const World& world); // before the normals of their borders change
