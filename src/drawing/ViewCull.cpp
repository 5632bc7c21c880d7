#include "drawing/ViewCull.h"

#include <algorithm>

#include "render/Device.h"
#include "render/Matrix.h"

ViewCull::ViewCull(const DrawContext& context) : orthographic(context.view != VIEW_PERSPECTIVE) {
    constexpr float MARGIN_PIXELS = 4; // for rounding
    D3DMATRIX to_screen;
    crMMultiply(crvMatrices[CRM_VIEW], crvMatrices[CRM_PROJ], to_screen);
    for (size_t axis = 0; axis < 2; ++axis)
        axes[axis] = {crMGetCol(to_screen, static_cast<int>(axis)), to_screen.m[3][axis]};
    axes[0].limit = 1 + MARGIN_PIXELS / static_cast<float>(std::max(crvViewportW, 1u));
    axes[1].limit = 1 + MARGIN_PIXELS / static_cast<float>(std::max(crvViewportH, 1u));
}
