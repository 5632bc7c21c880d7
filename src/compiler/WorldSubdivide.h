// All state of one compile: the tree, cells, portals, occluders, render groups and what the clip box dropped. It is
// made afresh for every run, so a run leaves nothing behind for the next.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "compiler/CompileOptions.h"
#include "compiler/OctalTree.h"
#include "scene/World.h"

inline constexpr int MAX_RENDER_GROUPS = 32768;

struct PORTAL {
    std::array<D3DVECTOR, 4> bounds{};
    D3DVECTOR pivot;
    std::array<std::array<uint16_t, 6>, 2> partindices{}; // triangles of either side, into bounds
    std::array<D3DVECTOR, 2> normal{};
    std::array<std::vector<int32_t>, 2> PVP; // portals that can be reached from either side
    int32_t portalowner = -1;                // brush
    std::array<int32_t, 2> cell{-1, -1};
};

struct OCCLUDER {
    std::array<D3DVECTOR, 4> bounds{};
    PLANE plane;
    int32_t owner = -1; // brush
};

struct CELL {
    std::vector<int32_t> objects, entities; // brushes, entities
    std::vector<int32_t> portals, portalside, occluders;
    bool can_see_outside = false;
    std::vector<int32_t> render_group_list;
};

class WorldSubdivide {
public:
    WorldSubdivide(World& compiled_world, const CompileOptions& compile_options)
        : world(compiled_world), options(compile_options) {}

    // Boxes and table positions of the brushes, and an empty subdivision.
    void PrepareBrushes();
    // One cell that holds the world, without portals or occluders.
    void CreateWorldCell();
    // Groups of every cell, then of the Environment brushes, then render_group of their brushes. False beyond
    // MAX_RENDER_GROUPS.
    bool GroupBrushes();
    // What the clip box dropped becomes one more cell, and an empty one follows it.
    void AddRemovedCells();

    // The first cell that lists the brush, -1 if none.
    int GetBrushCell(int index) const;
    // The first AMBIENT_LIGHT in that cell, or null.
    const Entity* GetAmbientFromCell(int index) const;

    World& world;
    const CompileOptions& options;
    OctalTree tree;
    std::vector<CELL> cell;
    std::vector<PORTAL> portal;
    std::vector<OCCLUDER> occluder;
    std::vector<Selection> render_group; // brush indices
    std::vector<int32_t> removed_brush_list, removed_entity_list;

private:
    void IndexCells(); // once the cells hold their brushes and entities
    bool CreateRenderGroups(int c);
    bool GroupByGrid(const CELL& grouped, const D3DVECTOR& cell_min, const D3DVECTOR& cell_max);
    bool AddRenderGroup(Selection group);

    std::vector<int32_t> brush_cell;         // by brush: the first cell that lists it
    std::vector<const Entity*> cell_ambient; // by cell
};
