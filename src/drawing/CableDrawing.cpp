#include "drawing/GeometryBatch.h"
#include "drawing/LineColors.h"
#include "scene/CableComputer.h"

void CCableComputer::Render() {
    LineBatch lines;
    rend_flag = true;
    for (size_t i = 0; i + 1 < positions.size(); ++i)
        lines.Line(positions[i], positions[i + 1], ColorOf(LineColor::Cable));
}
