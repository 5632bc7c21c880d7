// While it lives, what is drawn in the world stands at the same place of the picture, but nearer to the eye:
// lines on faces are not half hidden by them.
#pragma once

#include "render/Matrix.h"

class DepthShift {
public:
    DepthShift() : old(crMCurrent(CRM_WORLD)) {
        constexpr float share = 0.998f; // of the distance
        const D3DVECTOR eye = EyeOfView();
        D3DMATRIX shift = crTranslation(eye * (1 - share));
        for (int k = 0; k < 3; ++k)
            shift.m[k][k] = share;
        crMSet(shift);
        crMCurrent(old);
    }
    ~DepthShift() {
        crMCurrent(CRM_WORLD);
        crMSetIdentity();
        crMCurrent(old);
    }
    DepthShift(const DepthShift&) = delete;
    DepthShift& operator=(const DepthShift&) = delete;

private:
    static D3DVECTOR EyeOfView() { // of the view matrix, which only turns and moves
        const D3DMATRIX& view = crvMatrices[CRM_VIEW];
        D3DVECTOR eye;
        for (int k = 0; k < 3; ++k)
            eye -= D3DVECTOR{view.m[0][k], view.m[1][k], view.m[2][k]} * view.m[3][k];
        return eye;
    }

    uint32_t old;
};
