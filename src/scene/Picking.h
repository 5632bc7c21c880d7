// A click or a rectangle in a view, as the world's picking takes it. The view's matrices and viewport are set before.
#pragma once

#include "foundation/SpecialMath.h"
#include "foundation/Vector.h"
#include "scene/ViewInfo.h"

struct PickRequest {
    POINT point;                    // client pixels of the view
    int view = VIEW_TOP;            // ViewNumber
    bool additive = false;          // adds to the selection, or takes out of it, instead of replacing it
    bool ignore_groups = false;     // a click takes a single member, not its group
    D3DVECTOR camera_position;      // of the perspective view
    D3DVECTOR world_position;       // of the mouse, not snapped; 0 in the axis that the view does not cover
    DisplayFilters filters;         // what is shown
    bool multiple_entities = false; // a click takes every entity under it
    bool movie_editing = false;
};
