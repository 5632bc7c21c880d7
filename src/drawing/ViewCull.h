// What an orthographic view cannot show anything of, by the matrices as they are.
#pragma once

#include "drawing/DrawContext.h"
#include "foundation/Vector.h"

class ViewCull {
public:
    explicit ViewCull(const DrawContext& context);
    bool Hides(const D3DVECTOR& min, const D3DVECTOR& max) const; // of all vertices

private:
    bool orthographic;
    D3DMATRIX to_screen;
    float limit_x, limit_y;
};
