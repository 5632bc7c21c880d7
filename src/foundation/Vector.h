// Small plain records of the geometry: vectors, texture coordinates, colours, matrices.
// World coordinates, Y up, 32-bit floats. File formats write these records byte for byte.
#pragma once

#include <cmath>
#include <cstdint>

struct D3DVECTOR {
    float x = 0, y = 0, z = 0;

    D3DVECTOR& operator+=(const D3DVECTOR& v) {
        x += v.x, y += v.y, z += v.z;
        return *this;
    }
    D3DVECTOR& operator-=(const D3DVECTOR& v) {
        x -= v.x, y -= v.y, z -= v.z;
        return *this;
    }
    D3DVECTOR& operator*=(float s) {
        x *= s, y *= s, z *= s;
        return *this;
    }
    bool operator==(const D3DVECTOR&) const = default;
};
static_assert(sizeof(D3DVECTOR) == 12);

inline D3DVECTOR operator+(const D3DVECTOR& a, const D3DVECTOR& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline D3DVECTOR operator-(const D3DVECTOR& a, const D3DVECTOR& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline D3DVECTOR operator-(const D3DVECTOR& a) { return {-a.x, -a.y, -a.z}; }
inline D3DVECTOR operator*(const D3DVECTOR& v, float s) { return {v.x * s, v.y * s, v.z * s}; }
inline D3DVECTOR operator*(float s, const D3DVECTOR& v) { return v * s; }
inline D3DVECTOR operator/(const D3DVECTOR& v, float s) { return {v.x / s, v.y / s, v.z / s}; }

inline float DotProduct(const D3DVECTOR& a, const D3DVECTOR& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline D3DVECTOR CrossProduct(const D3DVECTOR& a, const D3DVECTOR& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline float SquareMagnitude(const D3DVECTOR& v) { return DotProduct(v, v); }
inline float Magnitude(const D3DVECTOR& v) { return std::sqrt(SquareMagnitude(v)); }

// Multiplies by 1 / length. A vector of length 0 gives components that are not numbers.
inline D3DVECTOR Normalize(const D3DVECTOR& v) { return v * (1.0f / std::sqrt(SquareMagnitude(v))); }

// As Normalize, but a vector of length 0 stays 0.
inline D3DVECTOR NormalizeOrZero(const D3DVECTOR& v) {
    const float square = SquareMagnitude(v);
    return square > 0 ? v * (1.0f / std::sqrt(square)) : D3DVECTOR{};
}

// Component k of a vector: 0 x, 1 y, 2 z.
inline float Component(const D3DVECTOR& v, int k) { return k == 0 ? v.x : k == 1 ? v.y : v.z; }
inline float& Component(D3DVECTOR& v, int k) { return k == 0 ? v.x : k == 1 ? v.y : v.z; }

struct UVVector {
    float u = 0, v = 0;
    bool operator==(const UVVector&) const = default;
    static UVVector interpolate(const UVVector& a, const UVVector& b, float t) {
        return {a.u + (b.u - a.u) * t, a.v + (b.v - a.v) * t};
    }
};
static_assert(sizeof(UVVector) == 8);

// Row-major, used with row vectors: a point goes to p * M, the translation stands in row 3.
struct D3DMATRIX {
    float m[4][4] = {};
    bool operator==(const D3DMATRIX&) const = default;
};
static_assert(sizeof(D3DMATRIX) == 64);

// Four floats, 0 to 1 for colours of the scene.
struct D3DCOLORVALUE {
    float r = 0, g = 0, b = 0, a = 0;
    bool operator==(const D3DCOLORVALUE&) const = default;
};
static_assert(sizeof(D3DCOLORVALUE) == 16);

// A packed 0xAARRGGBB word and the same colour as floats. Written to files as 20 bytes.
struct COLOR {
    uint32_t dw_color = 0;
    float r = 0, g = 0, b = 0, a = 0;
    bool operator==(const COLOR&) const = default;
};
static_assert(sizeof(COLOR) == 20);

constexpr float BYTE_TO_UNIT = 0.003921569f;    // 1 / 255
constexpr float DEGREE_TO_TURN = 0.0027777778f; // 1 / 360
constexpr float TWO_PI = 6.2831855f;
constexpr float PI = 3.1415927f;

// A channel times 255, cut to a whole number, as one byte. Values outside 0 to 1 are clamped.
inline uint32_t ChannelToByte(float value) {
    const float scaled = value * 255.0f;
    return scaled >= 255.0f ? 255u : scaled > 0.0f ? static_cast<uint32_t>(scaled) : 0u; // not-a-number gives 0
}
// 0xAARRGGBB from four floats.
inline uint32_t PackColor(const D3DCOLORVALUE& c) {
    return ChannelToByte(c.a) << 24 | ChannelToByte(c.r) << 16 | ChannelToByte(c.g) << 8 | ChannelToByte(c.b);
}
// COLOR from four bytes: the floats are the byte times BYTE_TO_UNIT.
COLOR MakeColor(uint32_t r, uint32_t g, uint32_t b, uint32_t a);
