#include "drawing/GeometryBatch.h"
#include "scene/CableComputer.h"

void CCableComputer::Render() {
    constexpr uint32_t CABLE_COLOR = 0xFFFFFFFF;
    LineBatch lines;
    rend_flag = true;
    for (size_t i = 0; i + 1 < positions.size(); ++i)
        lines.Line(positions[i], positions[i + 1], CABLE_COLOR);
}
