#include "foundation/Quaternion.h"

namespace {
constexpr float LEAST_LENGTH = 0.00001f;
constexpr float NEARLY_EQUAL = 0.00001f; // 1 - cosine below which slerp blends linearly
} // namespace

Quaternion Quaternion::operator*(const Quaternion& q) const {
    return {w * q.x + x * q.w + y * q.z - z * q.y, w * q.y - x * q.z + y * q.w + z * q.x,
            w * q.z + x * q.y - y * q.x + z * q.w, w * q.w - x * q.x - y * q.y - z * q.z};
}

Quaternion Quaternion::normalize() const {
    const float length = std::sqrt(x * x + y * y + z * z + w * w);
    if (length < LEAST_LENGTH)
        return {0, 0, 0, 1};
    const float scale = 1.0f / length;
    return {x * scale, y * scale, z * scale, w * scale};
}

Quaternion Quaternion::slerp(const Quaternion& q, float t) const {
    float c = x * q.x + y * q.y + z * q.z + w * q.w;
    const bool opposite = c < 0;
    if (opposite)
        c = -c;
    float w0 = 1.0f - t, w1 = t;
    if (1.0f - c >= NEARLY_EQUAL) {
        const float theta = std::acos(c);
        const float sine = std::sin(theta);
        w0 = std::sin(theta - t * theta) / sine;
        w1 = std::sin(t * theta) / sine;
    }
    if (opposite)
        w1 = -w1;
    return {w0 * x + w1 * q.x, w0 * y + w1 * q.y, w0 * z + w1 * q.z, w0 * w + w1 * q.w};
}

D3DMATRIX Quaternion::to_matrix() const {
    return {{{1 - 2 * (y * y + z * z), 2 * (x * y - w * z), 2 * (x * z + w * y), 0},
             {2 * (x * y + w * z), 1 - 2 * (x * x + z * z), 2 * (y * z - w * x), 0},
             {2 * (x * z - w * y), 2 * (y * z + w * x), 1 - 2 * (x * x + y * y), 0},
             {0, 0, 0, 1}}};
}

Quaternion Quaternion::from_rotation(const D3DVECTOR& unit_axis, float ang) {
    return from_rotation(unit_axis, std::sin(ang / 2), std::cos(ang / 2));
}

Quaternion Quaternion::from_rotation(const D3DVECTOR& unit_axis, float half_ang_sin, float half_ang_cos) {
    return {unit_axis.x * half_ang_sin, unit_axis.y * half_ang_sin, unit_axis.z * half_ang_sin, half_ang_cos};
}

void Quaternion::to_rotation(D3DVECTOR& v, float& ang) const {
    ang = 2 * std::acos(w);
    v = D3DVECTOR{x, y, z} / std::sin(ang / 2);
}

Quaternion Quaternion::from_euler(const D3DVECTOR& r) {
    const float sX = std::sin(r.x / 2), cX = std::cos(r.x / 2);
    const float sY = std::sin(r.y / 2), cY = std::cos(r.y / 2);
    const float sZ = std::sin(r.z / 2), cZ = std::cos(r.z / 2);
    return {cX * cY * sZ - sX * sY * cZ, sX * cY * cZ + cX * sY * sZ, cX * sY * cZ - sX * cY * sZ,
            cX * cY * cZ + sX * sY * sZ};
}
