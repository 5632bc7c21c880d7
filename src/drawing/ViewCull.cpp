#include "drawing/ViewCull.h"

#include <algorithm>

#include "render/Device.h"
#include "render/Matrix.h"

ViewCull::ViewCull(const DrawContext& context) : orthographic(context.view != VIEW_PERSPECTIVE) {
    constexpr float MARGIN_PIXELS = 4; // for rounding
    crMMultiply(crvMatrices[CRM_VIEW], crvMatrices[CRM_PROJ], to_screen);
    limit_x = 1 + MARGIN_PIXELS / static_cast<float>(std::max(crvViewportW, 1u));
    limit_y = 1 + MARGIN_PIXELS / static_cast<float>(std::max(crvViewportH, 1u));
}

bool ViewCull::Hides(const D3DVECTOR& min, const D3DVECTOR& max) const {
    if (!orthographic)
        return false;
    D3DVECTOR a, b;
    crMTransform(to_screen, min, a);
    crMTransform(to_screen, max, b);
    return std::max(a.x, b.x) < -limit_x || std::min(a.x, b.x) > limit_x || std::max(a.y, b.y) < -limit_y ||
           std::min(a.y, b.y) > limit_y;
}
