// Small pieces that several files of the brush share.
#pragma once

#include "scene/Brush.h"

inline TRIANGLE MakeTriangle(int a, int b, int c) {
    return {{static_cast<uint16_t>(a), static_cast<uint16_t>(b), static_cast<uint16_t>(c)}};
}
inline EDGE MakeEdge(int a, int b) { return {{static_cast<uint16_t>(a), static_cast<uint16_t>(b)}}; }

// Four vertices, the triangles (0, 1, 2) and (0, 2, 3), and the outline.
Surface MakeQuad(const D3DVECTOR& v0, const D3DVECTOR& v1, const D3DVECTOR& v2, const D3DVECTOR& v3);

// Copies as a new brush begins with them: geometry and mapping, without lightmaps and lights. Derived data are left to
// be rebuilt. A curved surface of a custom brush is a stored mesh, the others are their control points.
Surface CopyFlatSurface(const Surface& s);
Surface CopyCurvedSurface(const Surface& s, bool custom);

// Texel coordinates of a world point.
inline UVVector TexelAt(const TEXTURE_SPACE& ts, const D3DVECTOR& p) {
    return {DotProduct(p, ts.ts_x) + ts.ts_s.x, -DotProduct(p, ts.ts_y) + ts.ts_s.y};
}
