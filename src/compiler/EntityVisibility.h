// Rays between eyes, entities and surfaces: which entities stand in a cell, and which of the things that are not drawn
// into the item buffer an eye sees.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "compiler/CellSight.h"
#include "compiler/OctalTree.h"
#include "compiler/StageRunner.h"

// Flat copies of what rays can hit and of what is asked of entities, made once before the threads start.
class VisibilityScene {
public:
    // Of the brushes, entities, portals and eyes as they are now; the subdivision must outlive it.
    explicit VisibilityScene(const WorldSubdivide& subdivision);

    struct RayTriangle {
        D3DVECTOR v[3], normal;
    };
    struct RayBrush {
        D3DVECTOR center, radius; // its box
        int first_triangle = 0, triangle_count = 0;
        uint32_t object_id = NO_OBJECT_ID;
        bool hides_entities = false, hides_triangles = false;
        bool can_be_seen = false; // by TestEyeVisibility
    };
    struct EntityRow {
        bool traced = false, clipped = false, is_eye = false, one_cell_only = false;
        bool has_eye = false;  // linked to an eye
        int eye = -1;          // which: the first one, -1 when it is not in the world
        int default_kind = -1; // one of the types that every cell has
    };
    static constexpr int DEFAULT_KINDS = 3;

    const WorldSubdivide& ws;
    std::vector<RayTriangle> triangles;
    std::vector<RayBrush> brushes;                              // by brush
    std::vector<RayBrush> portals;                              // by portal
    std::vector<EntityRow> entities;                            // by entity
    std::array<std::vector<int>, DEFAULT_KINDS> world_defaults; // by kind: the entities that serve cells without one

private:
    void AddBrush(const Brush& brush);
    void AddPortal(const PORTAL& portal);
    void AddEntities();
};

// The rays of one worker.
class VisibilityRays {
public:
    VisibilityRays(const VisibilityScene& visibility_scene, const StageState& stage_state)
        : scene(visibility_scene), state(stage_state) {}

    // The entities of a cell. Incomplete after a stop.
    void GetEntitiesForCell(CellFindings& found, int c);
    // True if any textured triangle of the brush can be seen from the position.
    bool TestEyeVisibility(int brush, const D3DVECTOR& position);
    // True if the centre of the triangle of a brush is hidden. Which way it faces does not count.
    bool TriangleVisibility(int brush, const D3DVECTOR (&v)[3], const D3DVECTOR& position);
    // True if the segment from position to position + direction hits the front of a triangle. A portal has two fronts.
    bool RayIntersectVisibility(const VisibilityScene::RayBrush& brush, const D3DVECTOR& position,
                                const D3DVECTOR& direction);

private:
    void ProcessEntity(CellFindings& found, int c, int e);
    bool IsSeen(const D3DVECTOR& eye, const D3DVECTOR& entity);
    void AddWorldDefaults(CellFindings& found) const;
    // True if one of the brushes that take part hides target from position.
    template <class TakesPart>
    bool BrushesHide(const D3DVECTOR& position, const D3DVECTOR& target, TakesPart&& takes_part);
    bool PortalsHide(const D3DVECTOR& position, const D3DVECTOR& direction);

    const VisibilityScene& scene;
    const StageState& state;
    LeafSelection node_selection;
    std::vector<uint32_t> tested; // by brush: the last ray that tested it
    uint32_t ray_stamp = 0;
    std::vector<std::string>* log = nullptr; // while the traced entity is being processed
};
