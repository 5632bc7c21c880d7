#include <algorithm>
#include <cmath>

#include "drawing/GeometryBatch.h"
#include "drawing/LineColors.h"
#include "drawing/ViewDrawing.h"
#include "render/StateCache.h"

namespace {

constexpr int LINES = 32;        // to either side
constexpr float LEAST_STEP = 64; // world units
constexpr float STEPS_HIGH = 8;  // of the eye over the ground, at most, before the step grows
constexpr float FARTHEST = 1e6f; // from here on a step is lost in the eye's coordinates
constexpr uint32_t AXIS_X = 0xFFC04040, AXIS_Y = 0xFF40C040, AXIS_Z = 0xFF4060E0;

} // namespace

void DrawGroundGrid(const D3DVECTOR& eye) {
    if (!(std::fabs(eye.x) < FARTHEST && std::fabs(eye.y) < FARTHEST && std::fabs(eye.z) < FARTHEST))
        return;
    float step = LEAST_STEP;
    while (std::fabs(eye.y) > STEPS_HIGH * step)
        step *= 2;
    const float reach = LINES * step;
    const float x = std::round(eye.x / step) * step, z = std::round(eye.z / step) * step;
    criSetStateValue(RS_ZENABLE, 0); // it leaves no depth: whatever follows hides it, a floor on the ground too
    LineBatch lines;
    for (int i = -LINES; i <= LINES; ++i) {
        const float a = x + static_cast<float>(i) * step, b = z + static_cast<float>(i) * step;
        if (a != 0)
            lines.Line({a, 0, z - reach}, {a, 0, z + reach}, ColorOf(LineColor::GridMinor));
        if (b != 0)
            lines.Line({x - reach, 0, b}, {x + reach, 0, b}, ColorOf(LineColor::GridMinor));
    }
    const float axis = std::max({reach, std::fabs(x) + reach, std::fabs(z) + reach});
    lines.Line({-axis, 0, 0}, {axis, 0, 0}, AXIS_X);
    lines.Line({0, 0, -axis}, {0, 0, axis}, AXIS_Z);
    lines.Line({0, 0, 0}, {0, LEAST_STEP, 0}, AXIS_Y);
    lines.Flush();
    criSetStateValue(RS_ZENABLE, 1);
}
