#include "foundation/Plane.h"

namespace {
constexpr float LEAST_DENOMINATOR = 1e-35f;
}

PLANE::PLANE(const D3DVECTOR& b, const D3DVECTOR& n) : normal(n), D(-DotProduct(n, b)) {}

PLANE::PLANE(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& c)
    : normal(Normalize(CrossProduct(c - a, b - a))), D(-DotProduct(normal, a)) {}

void PLANE::normalize() { normal = Normalize(normal); }

bool PLANE::intersect(const D3DVECTOR& b, const D3DVECTOR& dir, D3DVECTOR& isect, float& t) const {
    const float den = DotProduct(normal, dir);
    if (!(std::fabs(den) > LEAST_DENOMINATOR))
        return false;
    t = (-D - DotProduct(normal, b)) / den;
    isect = b + t * dir;
    return true;
}

float PLANE::get_dist(const D3DVECTOR& p) const {
    const float den = DotProduct(normal, normal);
    if (std::fabs(den) <= LEAST_DENOMINATOR)
        return 0;
    return (DotProduct(normal, p) + D) / den;
}
