#pragma once

#include "foundation/Vector.h"

struct Quaternion {
    float x = 0, y = 0, z = 0, w = 0;

    Quaternion() = default;
    Quaternion(float qx, float qy, float qz, float qw) : x(qx), y(qy), z(qz), w(qw) {}

    Quaternion operator*(const Quaternion& q) const;         // Hamilton product
    Quaternion operator-() const { return {-x, -y, -z, w}; } // the conjugate
    Quaternion normalize() const;                            // the identity for a length below 0.00001
    Quaternion slerp(const Quaternion& q, float t) const;    // the short way
    D3DMATRIX to_matrix() const;
    static Quaternion from_rotation(const D3DVECTOR& unit_axis, float ang); // radians
    static Quaternion from_rotation(const D3DVECTOR& unit_axis, float half_ang_sin, float half_ang_cos);
    void to_rotation(D3DVECTOR& v, float& ang) const; // not for the identity, which has no axis
    static Quaternion from_euler(const D3DVECTOR& r); // radians about x, y, z
};
