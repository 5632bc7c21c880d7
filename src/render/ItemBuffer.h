// An exact square picture of flat colours with a depth buffer: what an eye sees, told by numbers. The same pixels on every
// machine and with either compiler.
//
// The rule. Corners go through view and projection in 32-bit floats and are cut at the near plane (z = near) in view space,
// always from the corner inside to the one outside, so that two triangles that share an edge get the same cut. Screen
// positions are rounded to 1/256 of a pixel. A pixel belongs to a triangle when its centre (x + 0.5, y + 0.5) lies inside by
// whole-number edge functions; a centre on an edge belongs to the triangle when that is a top edge (level, the triangle
// below it) or a left one. So triangles that share an edge leave no gap and no double pixel. Depth is 1 / distance along the
// view axis, a 32-bit float kept per pixel (larger is nearer): it is finest near the eye and still tells far things apart.
// At equal depth the triangle drawn first stays. What lies beyond the far plane by all its corners is not drawn; pixels
// beyond it are passed over.
#pragma once

#include <cstdint>
#include <vector>

#include "foundation/Vector.h"

class ItemBuffer {
public:
    explicit ItemBuffer(int side);

    // Colour of every pixel, depth at infinity.
    void Clear(uint32_t background);
    // Row vectors: view maps the eye to the origin, x right, y up, z ahead. The field of view is pi / 2 in both directions.
    void SetView(const D3DMATRIX& view_matrix, float near_distance, float far_distance);
    // Back faces (clockwise is front as seen from the eye, the winding whose normal (p1 - p0) x (p2 - p0) points at the eye)
    // are left out unless double_sided.
    void DrawTriangle(const D3DVECTOR& p0, const D3DVECTOR& p1, const D3DVECTOR& p2, uint32_t color, bool double_sided);

    int Side() const { return side; }
    uint32_t At(int x, int y) const { return pixels[static_cast<size_t>(y) * static_cast<size_t>(side) + static_cast<size_t>(x)]; }
    const std::vector<uint32_t>& Pixels() const { return pixels; } // rows from the top

private:
    struct Point { // view space
        float x, y, z;
    };
    void DrawFan(const Point* points, int count, uint32_t color, bool double_sided);
    void Rasterise(const Point& a, const Point& b, const Point& c, uint32_t color, bool double_sided);

    int side;
    D3DMATRIX view;
    float zn = 1, zf = 16384;
    std::vector<uint32_t> pixels;
    std::vector<float> depth;
};
