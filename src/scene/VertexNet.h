// The vertices and edges of the selected brushes, unpacked for direct editing. They hold brush indices, so they are
// built anew when the selection or the table of brushes changes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/Vector.h"
#include "scene/Surface.h"

inline constexpr size_t MAX_SO_VERTICES = 65536; // the reach of the 16-bit indices of an edge

struct SO_VERTEX {
    D3DVECTOR v;         // kept in step with the brush
    int32_t vertex = 0;  // in the surface's vertices, or in its control points if curved
    int32_t object = 0;  // brush index
    int32_t surface = 0; // in the brush's flat or curved surfaces
    bool curved = false;
    bool selected = false; // marked by the user
};

struct SO_EDGE {
    EDGE e;           // two vertices of the net
    int32_t edge = 0; // in the surface's edges; flat surfaces only, as the next two
    int32_t object = 0;
    int32_t surface = 0;
    bool curved = false; // a line of a control net: it only shows, and cannot be marked
    bool selected = false;
};
