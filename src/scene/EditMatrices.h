// The matrices of the editing operations, in world space. Row vectors: a point goes to p times M. Boxes without an
// extent and values out of range give the identity in what they concern, so that no result is not-a-number.
#pragma once

#include "scene/Brush.h"

// Takes `from` to the origin, applies m, and takes the origin to `to`.
D3DMATRIX AboutPoint(const D3DMATRIX& m, const D3DVECTOR& from, const D3DVECTOR& to);
D3DMATRIX ScaleMatrix(const Box& new_box, const Box& old_box);
D3DMATRIX RotationMatrix(float angle, int view, const D3DVECTOR& center); // radians, about the axis of view 0 to 2
D3DMATRIX MirrorMatrix(int axis, const D3DVECTOR& pivot);                 // 0 x, 1 y, 2 z
// Of a drag of one side of the box, seen in view 0 to 2; points 0 and 2 run across the view, 1 and 3 along its height.
D3DMATRIX ShearMatrix(const Box& new_box, const Box& old_box, int view, int active_shear_point);
