// The map from a flat piece of geometry to its plane space: the piece lies at x >= 0, y >= 0, near z = 0, and size is
// its extent. Texture fitting and the texel grid of a lightmap stand on it. Pure: any thread may call it.
#pragma once

#include <vector>

#include "foundation/Vector.h"

struct PlaneMapping {
    D3DMATRIX to_plane, to_world; // row vector times matrix; each is the inverse of the other
    D3DVECTOR size;
    std::vector<D3DVECTOR> points; // the vertices in plane space
};

// The normal is that of the piece, of unit length. Without vertices the size is 0.
PlaneMapping MapToPlane(const D3DVECTOR& normal, const std::vector<D3DVECTOR>& vertices);
