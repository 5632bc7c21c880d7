// The corners of one triangle of a surface, for the stages that walk through triangles.
#pragma once

#include "scene/Surface.h"

struct SurfaceTriangle {
    D3DVECTOR v[3];
    int index[3];

    // False for indices beyond the vertices: such a triangle is passed over.
    bool Take(const Surface& surface, const TRIANGLE& triangle) {
        if (!surface.HasCorners(triangle))
            return false;
        for (size_t k = 0; k < 3; ++k) {
            index[k] = triangle.i[k];
            v[k] = surface.vertices[triangle.i[k]];
        }
        return true;
    }
    // Not a number for a triangle without area.
    D3DVECTOR UnitNormal() const { return Normalize(CrossProduct(v[1] - v[0], v[2] - v[0])); }
};
