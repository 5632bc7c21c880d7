#include "foundation/SpecialMath.h"

#include <algorithm>

const SpecialMath s_math;

namespace {

constexpr int CURVE_DETAILS = 4;
constexpr float FACING_TOLERANCE = 0.00001f; // a direction this little with the normal still counts as facing the plane

// The three quadratic Bernstein polynomials at x.
void BernsteinWeights(float x, float (&weights)[3]) {
    weights[0] = (1 - x) * (1 - x);
    weights[1] = 2 * x * (1 - x);
    weights[2] = x * x;
}

// Writes the hit of a + direction * t with t = offset / along.
bool TakeHit(const D3DVECTOR& a, const D3DVECTOR& direction, float offset, float along, D3DVECTOR& dest, float& param) {
    param = offset / along;
    dest = a + direction * param;
    return true;
}

enum BoxSide : unsigned { MIN_X = 1, MAX_X = 2, MIN_Y = 4, MAX_Y = 8, MIN_Z = 16, MAX_Z = 32 };

unsigned Outcode(const D3DVECTOR& min, const D3DVECTOR& max, const D3DVECTOR& v) {
    return (v.x < min.x ? MIN_X : 0u) | (v.x > max.x ? MAX_X : 0u) | (v.y < min.y ? MIN_Y : 0u) |
           (v.y > max.y ? MAX_Y : 0u) | (v.z < min.z ? MIN_Z : 0u) | (v.z > max.z ? MAX_Z : 0u);
}

// The line from a through b, not before a, meets a side of the box among those of the mask strictly inside the side.
bool EdgeMeetsSides(const SpecialMath& math, const D3DVECTOR& min, const D3DVECTOR& max, const D3DVECTOR& a,
                    const D3DVECTOR& b, unsigned sides) {
    constexpr D3DVECTOR AXES[3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    for (int side = 0; side < 6; ++side) {
        if (!(sides & 1u << side))
            continue;
        const int axis = side / 2;
        D3DVECTOR hit;
        float t;
        if (!math.PlaneIntersect(a, b, side % 2 ? max : min, AXES[axis], hit, t))
            continue;
        const int u = (axis + 1) % 3, v = (axis + 2) % 3;
        if (Component(hit, u) > Component(min, u) && Component(hit, u) < Component(max, u) &&
            Component(hit, v) > Component(min, v) && Component(hit, v) < Component(max, v))
            return true;
    }
    return false;
}

} // namespace

SpecialMath::SpecialMath() {
    for (int detail = 0; detail < CURVE_DETAILS; ++detail) {
        const int steps = 16 >> detail;
        const float h = 1.0f / static_cast<float>(steps);
        const float first[3] = {(1 - h) * (1 - h) - 1, 2 * h * (1 - h), h * h};
        const float second[3] = {2 * h * h, -4 * h * h, 2 * h * h};
        std::copy_n(first, 3, B[detail][0]);
        std::copy_n(second, 3, B[detail][1]);
        for (int i = 0; i <= steps; ++i)
            for (int j = 0; j <= steps; ++j) {
                float row[3], column[3];
                BernsteinWeights(static_cast<float>(i) * h, row);
                BernsteinWeights(static_cast<float>(j) * h, column);
                for (int k = 0; k < 9; ++k)
                    P[detail][i][j][k] = row[k / 3] * column[k % 3];
            }
    }
}

bool SpecialMath::PlaneIntersect(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& p, const D3DVECTOR& n,
                                 D3DVECTOR& dest, float& param) const {
    const D3DVECTOR direction = b - a;
    const float along = DotProduct(direction, n);
    if (along == 0)
        return false;
    const float offset = DotProduct(p - a, n);
    return !(offset / along < 0) && TakeHit(a, direction, offset, along, dest, param);
}

bool SpecialMath::PlaneIntersect2Sided(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& p, const D3DVECTOR& n,
                                       D3DVECTOR& dest, float& param) const {
    const float along = DotProduct(b, n);
    return along != 0 && TakeHit(a, b, DotProduct(p - a, n), along, dest, param);
}

bool SpecialMath::PlaneIntersectRay(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& p, const D3DVECTOR& n,
                                    D3DVECTOR& dest, float& param) const {
    const float along = DotProduct(b, n);
    if (along > FACING_TOLERANCE)
        return false;
    const float offset = DotProduct(p - a, n);
    return !(offset / along < 0) && TakeHit(a, b, offset, along, dest, param);
}

bool SpecialMath::PlaneIntersectEx(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& p, const D3DVECTOR& n,
                                   D3DVECTOR& dest, float& param) const {
    const float along = DotProduct(b, n);
    const float offset = DotProduct(p - a, n);
    return !(along > FACING_TOLERANCE) && !(offset > 0) && TakeHit(a, b, offset, along, dest, param);
}

bool SpecialMath::PlaneIntersectSegment(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& p, const D3DVECTOR& n,
                                        D3DVECTOR& dest, float& param) const {
    const float along = DotProduct(b, n);
    const float offset = DotProduct(p - a, n);
    if (along > FACING_TOLERANCE || offset > 0 || offset < along)
        return false;
    return TakeHit(a, b, offset, along, dest, param);
}

bool SpecialMath::LineIntersect2d(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& u,
                                  const D3DVECTOR& v) const {
    const float den = v.x * u.y - v.y * u.x;
    if (den == 0)
        return false;
    const float dx = b.x - a.x, dy = b.y - a.y;
    const float s = (v.x * dy - v.y * dx) / den; // along u
    const float t = (u.x * dy - u.y * dx) / den; // along v
    return s > 0 && s < 1 && t > 0 && t < 1;
}

float SpecialMath::CalculateFullAngle(const D3DVECTOR& line1, const D3DVECTOR& line2, const D3DVECTOR& normal) const {
    const D3DVECTOR unit2 = Normalize(line2);
    const float angle = std::acos(std::clamp(DotProduct(Normalize(line1), unit2), -1.0f, 1.0f));
    return DotProduct(Normalize(normal), unit2) < 0 ? TWO_PI - angle : angle;
}

bool SpecialMath::PointInTriangle(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& c, const D3DVECTOR& n,
                                  const D3DVECTOR& pt) const {
    const float ab = DotProduct(CrossProduct(pt - a, b - a), n);
    const float bc = DotProduct(CrossProduct(pt - b, c - b), n);
    const float ca = DotProduct(CrossProduct(pt - c, a - c), n);
    return (ab <= 0 && bc <= 0 && ca <= 0) || (ab >= 0 && bc >= 0 && ca >= 0);
}

void SpecialMath::GetBarycentricCoordinates(const D3DVECTOR& v1, const D3DVECTOR& v2, const D3DVECTOR& v3,
                                            const D3DVECTOR& p, const D3DVECTOR& n, float& u, float& v) const {
    const D3DVECTOR e1 = v2 - v1, e2 = v3 - v1, ep = p - v1;
    const float area = DotProduct(CrossProduct(e1, e2), n);
    u = DotProduct(CrossProduct(e1, ep), n) / area;
    v = DotProduct(CrossProduct(ep, e2), n) / area;
}

bool SpecialMath::BoxRayIntersectInner(const D3DVECTOR& from, const D3DVECTOR& dir, const D3DVECTOR& center,
                                       const D3DVECTOR& radius) const {
    const D3DVECTOR d = from - center;
    const float x = std::fabs(dir.x), y = std::fabs(dir.y), z = std::fabs(dir.z);
    return !(std::fabs(d.z * dir.y - d.y * dir.z) > z * radius.y + y * radius.z) &&
           !(std::fabs(d.x * dir.z - d.z * dir.x) > x * radius.z + z * radius.x) &&
           !(std::fabs(d.y * dir.x - d.x * dir.y) > x * radius.y + y * radius.x);
}

bool SpecialMath::BoxBoxIntersect(const D3DVECTOR& min1, const D3DVECTOR& max1, const D3DVECTOR& min2,
                                  const D3DVECTOR& max2) const {
    return !(min1.x > max2.x || min2.x > max1.x || min1.y > max2.y || min2.y > max1.y || min1.z > max2.z ||
             min2.z > max1.z);
}

bool SpecialMath::BoxPlaneIntersect(const D3DVECTOR& min, const D3DVECTOR& max, const PLANE& p) const {
    const bool first = p.is_inside(min);
    for (int corner = 1; corner < 8; ++corner) {
        const D3DVECTOR v = {corner & 1 ? max.x : min.x, corner & 2 ? max.y : min.y, corner & 4 ? max.z : min.z};
        if (p.is_inside(v) != first)
            return true;
    }
    return false;
}

bool SpecialMath::FaceInBox(const D3DVECTOR& min, const D3DVECTOR& max, const D3DVECTOR& v1, const D3DVECTOR& v2,
                            const D3DVECTOR& v3, const D3DVECTOR& normal) const {
    const D3DVECTOR vertices[3] = {v1, v2, v3};
    unsigned codes[3];
    for (int i = 0; i < 3; ++i) {
        codes[i] = Outcode(min, max, vertices[i]);
        if (codes[i] == 0)
            return true;
    }
    if (codes[0] & codes[1] & codes[2])
        return false;
    for (int i = 0; i < 3; ++i) {
        const int next = (i + 1) % 3;
        if (!(codes[i] & codes[next]) &&
            EdgeMeetsSides(*this, min, max, vertices[i], vertices[next], codes[i] | codes[next]))
            return true;
    }
    // The space diagonals, each from its end of least y.
    for (int corner = 0; corner < 4; ++corner) {
        const bool high_x = corner & 1, high_z = corner & 2;
        const D3DVECTOR from = {high_x ? max.x : min.x, min.y, high_z ? max.z : min.z};
        const D3DVECTOR to = {high_x ? min.x : max.x, max.y, high_z ? min.z : max.z};
        D3DVECTOR hit;
        float t;
        if (PlaneIntersect(from, to, v1, normal, hit, t) && PointInTriangle(v1, v2, v3, normal, hit))
            return true;
    }
    return false;
}

bool SpecialMath::PointInBox(const D3DVECTOR& min, const D3DVECTOR& max, const D3DVECTOR& point) const {
    return min.x <= point.x && point.x <= max.x && min.y <= point.y && point.y <= max.y && min.z <= point.z &&
           point.z <= max.z;
}

float SpecialMath::SquareDistanceLinePoint(const D3DVECTOR& from, const D3DVECTOR& dir, const D3DVECTOR& point) const {
    return SquareMagnitude(CrossProduct(dir, point - from)) / SquareMagnitude(dir);
}

D3DVECTOR SpecialMath::ClosestPointOnLine(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& p) const {
    const D3DVECTOR c = Normalize(b - a);
    const float t = DotProduct(c, p - a);
    if (t < 0)
        return a;
    if (t > Magnitude(b - a))
        return b;
    return a + c * t;
}

D3DVECTOR SpecialMath::ClosestPointOnTriangle(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& c,
                                              const D3DVECTOR& p) const {
    const D3DVECTOR on_ab = ClosestPointOnLine(a, b, p);
    const D3DVECTOR on_bc = ClosestPointOnLine(b, c, p);
    const D3DVECTOR on_ca = ClosestPointOnLine(c, a, p);
    const float ab = SquareMagnitude(p - on_ab), bc = SquareMagnitude(p - on_bc), ca = SquareMagnitude(p - on_ca);
    if (ab < bc && ab < ca)
        return on_ab;
    return bc < ab && bc < ca ? on_bc : on_ca;
}

void SpecialMath::GetVerticesAlongBezierCurve3CP(const D3DVECTOR* cp, D3DVECTOR* dest, int detail, int count) const {
    const float(&first)[3] = B[detail][0];
    const float(&second)[3] = B[detail][1];
    D3DVECTOR d1 = first[0] * cp[0] + first[1] * cp[1] + first[2] * cp[2];
    const D3DVECTOR d2 = second[0] * cp[0] + second[1] * cp[1] + second[2] * cp[2];
    dest[0] = cp[0];
    for (int i = 1; i < count; ++i) {
        dest[i] = dest[i - 1] + d1;
        d1 += d2;
    }
}

void SpecialMath::GetVerticesAlongBezierPatch3CP(const D3DVECTOR* cp, D3DVECTOR* dest, int detail, int count) const {
    for (int i = 0; i < count; ++i)
        for (int j = 0; j < count; ++j) {
            D3DVECTOR sum;
            for (int k = 0; k < 9; ++k)
                sum += P[detail][i][j][k] * cp[k];
            dest[i * count + j] = sum;
        }
}
