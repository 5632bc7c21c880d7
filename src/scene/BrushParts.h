// Small pieces that several primitives are made of.
#pragma once

#include "scene/Brush.h"

inline TRIANGLE MakeTriangle(int a, int b, int c) {
    return {{static_cast<uint16_t>(a), static_cast<uint16_t>(b), static_cast<uint16_t>(c)}};
}
inline EDGE MakeEdge(int a, int b) { return {{static_cast<uint16_t>(a), static_cast<uint16_t>(b)}}; }

// Four vertices, the triangles (0, 1, 2) and (0, 2, 3), and the outline.
Surface MakeQuad(const D3DVECTOR& v0, const D3DVECTOR& v1, const D3DVECTOR& v2, const D3DVECTOR& v3);
