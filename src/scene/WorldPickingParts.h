// What the picking of brushes and of entities, and the tools that aim at brushes, share.
#pragma once

#include "scene/Picking.h"

struct BrushHit {
    int brush = -1; // index; -1: none
    D3DVECTOR ray;  // unit direction
    float distance = 0;
    bool Found() const { return brush != -1; }
};
// The nearest brush under a pixel of the perspective view.
BrushHit NearestBrush(const World& world, const PickRequest& request);

Box WidenAlongView(Box box, int view); // without bounds in the depth of an orthographic view
