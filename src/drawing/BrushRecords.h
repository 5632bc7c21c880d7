// What drawing must know of every brush of a level, a cache line each. A brush itself is large, and what is asked of it
// in every view lies far apart.
#pragma once

#include <cstdint>
#include <iterator>
#include <vector>

#include "foundation/Plane.h"
#include "foundation/Vector.h"
#include "scene/ViewInfo.h"

class World;

struct alignas(64) BrushRecord {
    uint64_t version = 0; // Brush::drawn_version
    D3DVECTOR min, max;   // of the bounding box, if it is upright
    uint32_t color = 0, type = 0;
    int32_t selected_surface = -1;
    bool selected_surface_curved = false;
    bool hidden = false, selected = false;
    bool transparent = false, portal_or_occluder = false;
    bool has_paths = false, has_decals = false;
    bool upright = false; // min and max tell all of the box

    bool IsDeferred() const { return transparent || portal_or_occluder; } // drawn after the other solid brushes
    // As DisplayFilters::ShowsBrush.
    bool IsShown(const DisplayFilters& filters) const {
        return type == BT_PORTAL     ? filters.show_portals
               : type == BT_OCCLUDER ? filters.show_occluders
                                     : filters.show_brushes;
    }
};
static_assert(sizeof(BrushRecord) == 64);

class BrushRecords {
public:
    // Takes them as the brushes are now, in the order of the table; within a DrawingScope only for the first who asks.
    const std::vector<BrushRecord>& Of(const World& world);
    const std::vector<BrushRecord>& Last() const { return records; }
    uint32_t LastTake() const { return last_take; } // its number, from 1 on
    static uint32_t Takes() { return takes; }       // since the program started

private:
    void Take(const World& world);

    std::vector<BrushRecord> records;
    std::vector<bool> transparent_rows; // of the material table, by which `transparent` was found
    uint64_t scope = 0;                 // in which they were taken
    uint32_t last_take = 0;
    static inline uint32_t takes = 0;
};

// What of the view's pyramid upright boxes lie in. Answers as Brush::Visible does.
class BoxCull {
public:
    explicit BoxCull(const PLANE* clip_planes); // six
    bool Hides(const D3DVECTOR& min, const D3DVECTOR& max) const;

private:
    static constexpr unsigned TESTED[] = {0, 2, 3, 4, 5};
    PLANE planes[std::size(TESTED)];
};
