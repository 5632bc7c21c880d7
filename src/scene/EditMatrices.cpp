#include "scene/EditMatrices.h"

#include "foundation/Quaternion.h"
#include "render/Matrix.h"

namespace {

constexpr int VIEWS = 3;
constexpr int SHEAR_POINTS = 4;

constexpr D3DVECTOR VIEW_AXIS[VIEWS] = {{0, 1, 0}, {0, 0, -1}, {1, 0, 0}};

struct CornerPair {
    size_t a, b;
};

// The two axes of a view, and the corners between which the old box is measured along each.
struct ViewAxes {
    int across, down;
    CornerPair width, depth;
};
constexpr ViewAxes VIEW_AXES[VIEWS] = {{0, 2, {1, 0}, {0, 3}}, {0, 1, {2, 3}, {3, 7}}, {2, 1, {1, 2}, {2, 6}}};

// The dragged side, from a corner of the new box to one of the old box, and the corner that stays.
struct ShearPoint {
    size_t new_corner, old_corner, fixed_corner;
    bool fixed_is_old;
};
constexpr ShearPoint SHEAR[VIEWS][SHEAR_POINTS] = {
    {{1, 0, 3, false}, {1, 2, 3, false}, {2, 3, 1, true}, {0, 3, 1, false}},
    {{2, 3, 7, false}, {2, 6, 7, false}, {6, 7, 2, true}, {3, 7, 2, false}},
    {{1, 2, 6, false}, {1, 5, 6, false}, {5, 6, 1, true}, {2, 6, 1, false}},
};

float Distance(const D3DVECTOR& a, const D3DVECTOR& b, int axis) {
    return std::fabs(Component(a, axis) - Component(b, axis));
}

D3DVECTOR Extents(const Box& box) {
    return {Distance(box[1], box[0], 0), Distance(box[4], box[0], 1), Distance(box[3], box[0], 2)};
}

D3DVECTOR Center(const Box& box) {
    D3DVECTOR center;
    Brush::PivotFromBBox(box, center);
    return center;
}

} // namespace

D3DMATRIX AboutPoint(const D3DMATRIX& m, const D3DVECTOR& from, const D3DVECTOR& to) {
    D3DMATRIX product;
    crMMultiply(m, crTranslation(to), product);
    crMMultiply(crTranslation(-from), product, product);
    return product;
}

D3DMATRIX ScaleMatrix(const Box& new_box, const Box& old_box) {
    const D3DVECTOR new_size = Extents(new_box), old_size = Extents(old_box);
    D3DMATRIX scale = crIdentity();
    for (int axis = 0; axis < 3; ++axis) {
        const float factor = Component(new_size, axis) / Component(old_size, axis);
        if (std::isfinite(factor))
            scale.m[axis][axis] = factor;
    }
    return AboutPoint(scale, Center(old_box), Center(new_box));
}

D3DMATRIX RotationMatrix(float angle, int view, const D3DVECTOR& center) {
    if (view < 0 || view >= VIEWS)
        return crIdentity();
    return AboutPoint(Quaternion::from_rotation(VIEW_AXIS[view], angle).to_matrix(), center, center);
}

D3DMATRIX MirrorMatrix(int axis, const D3DVECTOR& pivot) {
    D3DMATRIX mirror = crIdentity();
    mirror.m[axis][axis] = -1;
    return AboutPoint(mirror, pivot, pivot);
}

D3DMATRIX ShearMatrix(const Box& new_box, const Box& old_box, int view, int active_shear_point) {
    if (view < 0 || view >= VIEWS || active_shear_point < 0 || active_shear_point >= SHEAR_POINTS)
        return crIdentity();
    const ViewAxes& axes = VIEW_AXES[view];
    const ShearPoint& point = SHEAR[view][active_shear_point];
    const bool across = active_shear_point % 2 == 0, negative = active_shear_point >= 2;
    const float w = Distance(old_box[axes.width.a], old_box[axes.width.b], axes.across);
    const float d = Distance(old_box[axes.depth.a], old_box[axes.depth.b], axes.down);
    const float f = w / d;
    const float side = Distance(new_box[point.new_corner], old_box[point.old_corner], across ? axes.across : axes.down);
    const float stretch = negative ? -(side / (across ? w : d) - 1) : side / (across ? w : d) - 1;
    const float value = across ? stretch * f : stretch / f;
    if (!std::isfinite(value))
        return crIdentity();

    D3DMATRIX shear = crIdentity();
    (across ? shear.m[axes.down][axes.across] : shear.m[axes.across][axes.down]) = value;
    const D3DVECTOR& corner = (point.fixed_is_old ? old_box : new_box)[point.fixed_corner];
    D3DVECTOR fixed; // only in the two axes of the view
    Component(fixed, axes.across) = Component(corner, axes.across);
    Component(fixed, axes.down) = Component(corner, axes.down);
    return AboutPoint(shear, fixed, fixed);
}
