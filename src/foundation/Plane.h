// A plane: a point p lies on it when normal . p + D = 0.
#pragma once

#include "foundation/Vector.h"

struct PLANE {
    D3DVECTOR normal;
    float D = 0;

    PLANE() = default;
    PLANE(float a, float b, float c, float d) : normal{a, b, c}, D(d) {}
    // Through b with the normal n as given.
    PLANE(const D3DVECTOR& b, const D3DVECTOR& n);
    // Through three points; the normal is the unit vector of (c - a) x (b - a).
    PLANE(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& c);

    void normalize();                                                             // the normal to unit length; D stays
    float get_cos(const D3DVECTOR& v) const { return DotProduct(normal, v) + D; } // the unscaled signed value
    bool is_inside(const D3DVECTOR& v) const { return get_cos(v) >= 0; }
    bool is_inside2(const D3DVECTOR& v) const { return get_cos(v) > -0.00001f; }
    // The hit of the line b + dir * t; false when it runs along the plane. t may be negative.
    bool intersect(const D3DVECTOR& b, const D3DVECTOR& dir, D3DVECTOR& isect, float& t) const;
    // (normal . p + D) / (normal . normal), 0 for a plane without a normal.
    float get_dist(const D3DVECTOR& p) const;
};
static_assert(sizeof(PLANE) == 16);
