#include "render/Shapes.h"

#include "render/Batches.h"
#include "render/StateCache.h"

namespace {

struct Place {
    float x, y;
};

void Quad(uint32_t color, const Place (&corners)[4]) {
    crBegin(PT_TRI_FAN, VT_XYZRHW | VT_DIFFUSE);
    for (const Place& corner : corners) {
        crDiffuse(color);
        crXY(corner.x, corner.y);
    }
    crEnd();
}

void WorldPoint(const D3DVECTOR& p, uint32_t color) {
    crDiffuse(color);
    crXYZ(p.x, p.y, p.z);
}

} // namespace

void crRect(float x1, float x2, float y1, float y2, uint32_t color) {
    Quad(color, {{x1, y1}, {x2, y1}, {x2, y2}, {x1, y2}});
}

void crWireRect(float x1, float x2, float y1, float y2, uint32_t color, float tspace) {
    const float repeat = tspace < 0 ? (x2 - x1) * 0.5f : tspace;
    const Place corners[] = {{x1, y1}, {x2, y1}, {x2, y2}, {x1, y2}, {x1, y1}};
    float u = 0;
    crBegin(PT_LINE_STRIP, VT_XYZRHW | VT_DIFFUSE | VT_TEX1);
    for (const Place& corner : corners) {
        crDiffuse(color);
        crUV(u, 0);
        crXY(corner.x, corner.y);
        u += repeat;
    }
    crEnd();
}

void cr3DRect(float x1, float x2, float y1, float y2, float b, uint32_t col_top, uint32_t col_sh, uint32_t col_hi) {
    crRect(x1 + b, x2 - b, y1 + b, y2 - b, col_top);
    Quad(col_hi, {{x1, y1}, {x2, y1}, {x2 - b, y1 + b}, {x1 + b, y1 + b}});
    Quad(col_hi, {{x1, y1}, {x1 + b, y1 + b}, {x1 + b, y2 - b}, {x1, y2}});
    Quad(col_sh, {{x1, y2}, {x1 + b, y2 - b}, {x2 - b, y2 - b}, {x2, y2}});
    Quad(col_sh, {{x2, y1}, {x2, y2}, {x2 - b, y2 - b}, {x2 - b, y1 + b}});
}

void crAxis(const D3DVECTOR& pt, float s) {
    struct Axis {
        D3DVECTOR direction;
        uint32_t plus, minus; // colours of the ends
    };
    constexpr Axis AXES[] = {
        {{1, 0, 0}, 0xFFFF0000, 0xFF800000}, {{0, 1, 0}, 0xFF00FF00, 0xFF008000}, {{0, 0, 1}, 0xFF0000FF, 0xFF000080}};
    crTexture(CR_NO_TEXTURE, 0);
    crBegin(PT_LINE_LIST, VT_XYZ | VT_DIFFUSE);
    for (const Axis& axis : AXES) {
        WorldPoint(pt + axis.direction * (s * 0.5f), axis.plus);
        WorldPoint(pt - axis.direction * (s * 0.5f), axis.minus);
    }
    crEnd();
}

void crBox(const D3DVECTOR& pt, const D3DVECTOR& size) {
    constexpr uint32_t WHITE = 0xFFFFFFFF;
    crTexture(CR_NO_TEXTURE, 0);
    crBeginIndexed(VT_XYZ | VT_DIFFUSE, PT_LINE_LIST);
    for (uint32_t corner = 0; corner < 8; ++corner) { // bit k: on the plus side of axis k
        D3DVECTOR p = pt;
        for (int k = 0; k < 3; ++k) {
            const float half = Component(size, k) * 0.5f;
            Component(p, k) += (corner >> k & 1) != 0 ? half : -half;
        }
        WorldPoint(p, WHITE);
        for (uint32_t axis = 1; axis < 8; axis *= 2)
            if ((corner & axis) == 0) {
                crIndex(corner);
                crIndex(corner | axis);
            }
    }
    crEnd();
}
