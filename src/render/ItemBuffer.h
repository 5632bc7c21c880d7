// An exact square picture of flat colours with a depth buffer: what an eye sees, told by numbers. The same pixels on
// every machine and with either compiler.
//
// The rule. Corners go through the view in 32-bit floats, what follows is 64 bits wide. A triangle is cut at the near
// plane (z = near) and, where it reaches beyond four times the field of view, there too; the cut is always computed
// from the corner inside to the one outside, so that two triangles that share an edge get the same cut. Screen
// positions are rounded to 1/256 of a pixel (halves up). From there on all is whole numbers: a pixel belongs to a
// triangle when its centre (x + 0.5, y + 0.5) lies inside; a centre exactly on an edge belongs to the triangle when
// that is a top edge (level, the triangle below it) or a left one. So triangles that share an edge leave no gap and no
// double pixel. Depth is 1 / distance along the view axis (larger is nearer), taken at the pixel's centre from the
// plane of the triangle as it was before the cut, held between the depths of the corners, and kept as a 32-bit float:
// it is finest near the eye and still tells far things apart. At equal depth the triangle drawn first stays. Pixels
// beyond the far plane are passed over, and so is a triangle with a corner that is no finite number.
#pragma once

#include <cstdint>
#include <vector>

#include "foundation/Vector.h"

class ItemBuffer {
public:
    static constexpr int MAX_SIDE = 4096;

    // Side in pixels, kept within 1 to MAX_SIDE.
    explicit ItemBuffer(int side_pixels);

    // Colour of every pixel, depth at infinity.
    void Clear(uint32_t background);
    // Row vectors: view maps the eye to the origin, x right, y up, z ahead. The field of view is pi / 2 in both
    // directions. near_distance is above 0.
    void SetView(const D3DMATRIX& view_matrix, float near_distance, float far_distance);
    // The front of a triangle is the side that the normal (p1 - p0) x (p2 - p0) points to; backs are left out unless
    // double_sided. Front or back is told by the same whole-number screen positions as the pixels.
    void DrawTriangle(const D3DVECTOR& p0, const D3DVECTOR& p1, const D3DVECTOR& p2, uint32_t color, bool double_sided);

    int Side() const { return side; }
    uint32_t At(int x, int y) const {
        return pixels[static_cast<size_t>(y) * static_cast<size_t>(side) + static_cast<size_t>(x)];
    }
    const std::vector<uint32_t>& Pixels() const { return pixels; } // rows from the top

private:
    struct Polygon;
    struct DepthPlane { // 1 / z of a pixel: start + x * right + y * down, kept within low to high
        double start = 0, right = 0, down = 0, low = 0, high = 0;
    };

    D3DVECTOR ToView(const D3DVECTOR& p) const;
    bool IsOutside(const D3DVECTOR (&corners)[3]) const;
    void Cut(Polygon& polygon) const;
    DepthPlane MakeDepthPlane(const D3DVECTOR (&corners)[3], const Polygon& polygon) const;
    void Fill(const Polygon& polygon, const DepthPlane& plane, uint32_t color, bool double_sided);
    void FillSpan(int row, int64_t first, int64_t end, const DepthPlane& plane, uint32_t color);

    int side;
    D3DMATRIX view;
    float zn = 1, zf = 16384;
    std::vector<uint32_t> pixels;
    std::vector<float> depth;
};
