#include <limits>

#include "render/Matrix.h"

D3DVECTOR crvViewFrom, crvVFront, crvVRight, crvVUp;
int crvViewFromInteger[3] = {};
float crvZn = 0, crvZf = 0, crvHVW = 0, crvHVH = 0, crvTBufDelta = 0;
D3DVECTOR crvVBase, crvVU, crvVV;

namespace {

// Cut to a whole number; what no int can hold gives the nearest one, not-a-number gives 0.
int Truncated(float value) {
    constexpr float TOO_LARGE = 2147483648.0f;
    if (value >= TOO_LARGE)
        return std::numeric_limits<int>::max();
    if (value <= -TOO_LARGE)
        return std::numeric_limits<int>::min();
    return value == value ? static_cast<int>(value) : 0;
}

} // namespace

void crMUpdate() {
    const D3DMATRIX& view = crvMatrices[CRM_VIEW];
    crvVFront = crMGetCol(view, 2);
    crvVUp = crMGetCol(view, 1);
    crvVRight = crMGetCol(view, 0);

    const D3DVECTOR translation = crMGetRow(view, 3);
    crvViewFrom = {-DotProduct(translation, crMGetRow(view, 0)), -DotProduct(translation, crMGetRow(view, 1)),
                   -DotProduct(translation, crMGetRow(view, 2))};
    constexpr float INTEGER_STEPS = 32;
    for (int k = 0; k < 3; ++k)
        crvViewFromInteger[k] = Truncated(Component(crvViewFrom, k) * INTEGER_STEPS);

    const D3DMATRIX& proj = crvMatrices[CRM_PROJ];
    crvZn = -proj.m[3][2] / proj.m[2][2];
    crvZf = -(proj.m[2][2] * crvZn) / (1.0f - proj.m[2][2]);
    crvHVW = crvZn / proj.m[0][0];
    crvHVH = crvZn / proj.m[1][1];

    crvVBase = crvViewFrom + crvVFront * crvZn - crvVRight * crvHVW - crvVUp * crvHVH;
    crvVU = crvVRight * crvHVW * 2;
    crvVV = crvVUp * crvHVH * 2;
}

void crGetViewVectors(D3DVECTOR& up, D3DVECTOR& right, D3DVECTOR& front) {
    up = crvVUp;
    right = crvVRight;
    front = crvVFront;
}

void crGetScreenVectors(D3DVECTOR& base, D3DVECTOR& u, D3DVECTOR& v) {
    base = crvVBase;
    u = crvVU;
    v = crvVV;
}

void crGetClipPlanes(PLANE* planes) {
    const D3DVECTOR middle = crvViewFrom + crvVFront * crvZn;
    const D3DVECTOR half_width = crvVRight * crvHVW, half_height = crvVUp * crvHVH;
    planes[0] = PLANE(middle, crvVFront);
    planes[1] = PLANE(crvViewFrom + crvVFront * crvZf, -crvVFront);
    planes[2] = PLANE(middle - half_width, Normalize(crvVFront * crvHVW + crvVRight * crvZn));
    planes[3] = PLANE(middle + half_width, Normalize(crvVFront * crvHVW - crvVRight * crvZn));
    planes[4] = PLANE(middle + half_height, Normalize(crvVFront * crvHVH - crvVUp * crvZn));
    planes[5] = PLANE(middle - half_height, Normalize(crvVFront * crvHVH + crvVUp * crvZn));
}

float crUpdateTBufferDelta(const D3DVECTOR& point, float radius) {
    constexpr float SMALLEST = 0.003f;
    const float delta = (Magnitude(crvViewFrom - point) - radius) * 0.001f + 0.002f;
    crvTBufDelta = delta > SMALLEST ? delta : SMALLEST;
    return crvTBufDelta;
}
