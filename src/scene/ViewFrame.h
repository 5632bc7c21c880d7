// The frame in which the primitives are written: their axis is y and the box face c0 to c3 is their top. So a primitive
// points at the viewer who drew it, in whichever orthographic view.
#pragma once

#include <cstdint>

#include "foundation/Vector.h"

class Brush;

class ViewFrame {
public:
    // Relabels the brush's box and pivot into the frame of the view: 0 top, 1 front, 2 left.
    ViewFrame(Brush& owner, uint32_t view_number);
    // Carries all vertices and control points back to the world and restores box and pivot.
    void Leave();

private:
    Brush& brush;
    uint32_t view;
    D3DVECTOR saved_box[8], saved_pivot;
};
