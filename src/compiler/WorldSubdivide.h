// All state of one compile: the tree, cells, portals, occluders, render groups and what the clip box dropped. It is
// made afresh for every run, so a run leaves nothing behind for the next.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "compiler/CompileOptions.h"
#include "compiler/OctalTree.h"
#include "compiler/ProblemSolver.h"
#include "scene/World.h"

inline constexpr int MAX_RENDER_GROUPS = 32768;
inline constexpr int MAX_PORTALS = 1024;
inline constexpr int MAX_OCCLUDERS = 1024;
inline constexpr int MAX_CELLS = 512;
inline constexpr int CLIP_BOX_CELLS = 2; // what a clip box adds: the removed things, and nothing

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
    std::vector<int32_t> objects, entities;              // brushes, entities
    std::vector<int32_t> portals, portalside, occluders; // one more side for each portal whose both sides are seen
    bool can_see_outside = false;
    std::vector<int32_t> render_group_list;
};

inline constexpr uint16_t NO_SOUND_PATH = 65535;

struct SoundTraceData {
    uint16_t distance = NO_SOUND_PATH;        // world units, cut; 65535: no path, or longer
    uint8_t portal_start = 0, portal_end = 0; // the first portal of the path and its last
};
static_assert(sizeof(SoundTraceData) == 4);

// How a stage of the subdivision ended. LimitReached leaves a sentence that names the limit and what to do.
enum class SubdivideResult { Done, Stopped, LimitReached };

// Milliseconds that the cells took, summed over all workers.
struct CellTimes {
    uint32_t brushes = 0, entities = 0;
};

struct CellFindings;

class WorldSubdivide {
public:
    WorldSubdivide(World& compiled_world, const CompileOptions& compile_options)
        : world(compiled_world), options(compile_options) {}

    // Boxes and table positions of the brushes, entities in no cell, and an empty subdivision.
    void PrepareBrushes();
    // One cell that holds the world, without portals or occluders.
    void CreateWorldCell();

    // Portals and occluders from their brushes, cells from linked eyes: portal, occluder and cell_eye. The cells
    // themselves are still empty.
    SubdivideResult CreatePortalsAndEyes(std::string& message);
    // What the eyes of every cell see, on all threads, a step of the progress for each cell. What is found is the same
    // for any number of threads.
    SubdivideResult CreateCells(CompileProgress& progress, CellTimes& times);
    // The portals that can be reached from a side, and the cell it opens to.
    void PortalVisibility(int index, int side);
    int GetPortalCell(int index, int side) const; // the first cell that lists it; side -1: either; -1 if none
    bool IsWrongPortal(int index) const;          // more than one cell sees a side
    // Entities and occluders of the cells alone, for an update of an existing world.
    SubdivideResult SubdivideEntities(CompileProgress& progress, std::string& message);
    // Entities that take part in tracing and stand in no cell go to the problems.
    void FindWrongEntities();
    // Brushes of several cells (multi_cell); before GroupBrushes.
    void MarkMultiCellBrushes();
    // Groups of every cell, then one for each brush of several cells and for each Environment brush, then render_group
    // of their brushes. False beyond MAX_RENDER_GROUPS. The progress moves by a step for each cell.
    bool GroupBrushes(CompileProgress* progress = nullptr);
    // What the clip box dropped becomes one more cell, and an empty one follows it.
    void AddRemovedCells();

    // The first cell that lists the brush, -1 if none.
    int GetBrushCell(int index) const;
    // The first AMBIENT_LIGHT in that cell, or null.
    const Entity* GetAmbientFromCell(int index) const;
    // The clip box is on and the box or the point stands wholly outside.
    bool IsClipped(const Brush& brush) const;
    bool IsClipped(const D3DVECTOR& position) const;

    World& world;
    const CompileOptions& options;
    OctalTree tree;
    std::vector<CELL> cell;
    std::vector<PORTAL> portal;
    std::vector<OCCLUDER> occluder;
    std::vector<Selection> render_group; // brush indices
    std::vector<int32_t> removed_brush_list, removed_entity_list;
    std::vector<Selection> cell_eye; // by cell: its eyes, entity indices
    std::vector<SoundTraceData> snd_trace_data;
    ProblemSolver problem_solver;

private:
    void CreateNewPortal(const Brush& brush, int owner);
    void CreateNewOccluder(const Brush& brush, int owner);
    bool PrepareCellEyes(); // false beyond the limit
    // The occluders whose brushes are linked to an eye of the cell.
    std::vector<int32_t> FindCellOccluders(int c) const;
    // Entities and problems of the cells, in cell order, as one thread would have found them.
    void TakeFindings(const std::vector<CellFindings>& findings);
    void IndexCells(); // once the cells hold their brushes and entities
    bool CreateRenderGroups(int c);
    bool GroupByGrid(const CELL& grouped, const D3DVECTOR& cell_min, const D3DVECTOR& cell_max);
    bool GroupMultiCellBrushes();
    bool AddRenderGroup(Selection group);

    std::vector<int32_t> brush_cell;         // by brush: the first cell that lists it
    std::vector<const Entity*> cell_ambient; // by cell
};
