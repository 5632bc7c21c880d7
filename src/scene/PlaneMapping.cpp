#include "scene/PlaneMapping.h"

#include <algorithm>

#include "foundation/Quaternion.h"
#include "render/Matrix.h"

namespace {

constexpr float FAR_OUTSIDE = 10000000.0f; // where the search for a box starts

struct Extent {
    D3DVECTOR min{FAR_OUTSIDE, FAR_OUTSIDE, FAR_OUTSIDE}, max{-FAR_OUTSIDE, -FAR_OUTSIDE, -FAR_OUTSIDE};

    explicit Extent(const std::vector<D3DVECTOR>& points) {
        for (const D3DVECTOR& p : points) {
            min = {std::min(min.x, p.x), std::min(min.y, p.y), std::min(min.z, p.z)};
            max = {std::max(max.x, p.x), std::max(max.y, p.y), std::max(max.z, p.z)};
        }
        if (points.empty())
            min = max = {};
    }
};

// Turns the dominant axis of the normal onto -z, in steps of a right angle.
D3DMATRIX DominantAxisTurn(const D3DVECTOR& n) {
    const float ax = std::fabs(n.x), ay = std::fabs(n.y), az = std::fabs(n.z);
    D3DMATRIX a = crIdentity();
    if (ax > ay && ax > az) {
        a.m[0][0] = a.m[2][2] = 0;
        a.m[2][0] = n.x > 0 ? 1.0f : -1.0f;
        a.m[0][2] = -a.m[2][0];
    } else if (ay > ax && ay > az) {
        a.m[1][1] = a.m[2][2] = 0;
        a.m[2][1] = n.y > 0 ? 1.0f : -1.0f;
        a.m[1][2] = -a.m[2][1];
    } else if (az > ax && az > ay && n.z > 0)
        a.m[0][0] = a.m[2][2] = -1;
    return a;
}

// The angle from -z to the direction (side, forward), positive toward side; 0 for no direction. Divided, not multiplied
// by the reciprocal: a direction along an axis must give exactly 0, as acos is steep there.
float AngleFromBack(float side, float forward) {
    const float length = std::sqrt(side * side + forward * forward);
    if (!(length > 0))
        return 0;
    const float angle = std::acos(std::clamp(-(forward / length), -1.0f, 1.0f));
    return side < 0 ? -angle : angle;
}

// The inverse of a rotation.
D3DMATRIX Transposed(const D3DMATRIX& m) {
    D3DMATRIX out;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            out.m[i][j] = m.m[j][i];
    return out;
}

D3DMATRIX operator*(const D3DMATRIX& a, const D3DMATRIX& b) {
    D3DMATRIX out;
    crMMultiply(a, b, out);
    return out;
}

D3DVECTOR operator*(const D3DVECTOR& v, const D3DMATRIX& m) {
    D3DVECTOR out;
    crMTransform(m, v, out);
    return out;
}

} // namespace

PlaneMapping MapToPlane(const D3DVECTOR& normal, const std::vector<D3DVECTOR>& vertices) {
    const D3DMATRIX pre = DominantAxisTurn(normal);
    D3DVECTOR n = normal * pre;
    const D3DMATRIX turn_y = Quaternion::from_rotation({0, 1, 0}, -AngleFromBack(n.x, n.z)).to_matrix();
    n = n * turn_y;
    const D3DMATRIX turn_x = Quaternion::from_rotation({1, 0, 0}, AngleFromBack(n.y, n.z)).to_matrix();

    PlaneMapping mapping;
    mapping.points = vertices;
    for (D3DVECTOR& p : mapping.points)
        p = p * pre;
    const Extent turned(mapping.points);
    const D3DVECTOR center = (turned.min + turned.max) * 0.5f;
    for (D3DVECTOR& p : mapping.points)
        p = (p - center) * turn_y * turn_x;
    const Extent flat(mapping.points);
    for (D3DVECTOR& p : mapping.points)
        p -= flat.min;
    mapping.size = flat.max - flat.min;

    mapping.to_plane = pre * crTranslation(-center) * turn_y * turn_x * crTranslation(-flat.min);
    // From the inverses of the single steps, which are exact, and not by cofactors of the product.
    mapping.to_world =
        crTranslation(flat.min) * Transposed(turn_x) * Transposed(turn_y) * crTranslation(center) * Transposed(pre);
    return mapping;
}
