#include "drawing/LineColors.h"
#include "drawing/SolidPass.h"
#include "drawing/WireDrawing.h"
#include "render/Matrix.h"
#include "scene/Brush.h"

void AddWire(LineBatch& lines, const Brush& brush, uint32_t color) {
    brush.ForEachSurface([&](const Surface& surface, int, bool) { lines.Edges(surface, color); });
}

uint32_t WireColor(const Brush& brush) { return brush.is_selected ? ColorOf(LineColor::Selected) : brush.color; }

void Brush::RenderWire() const {
    LineBatch lines;
    AddWire(lines, *this, WireColor(*this));
}

void Brush::RenderSolid(const World& world, const DrawContext& context) const {
    SolidPass pass(world, context);
    pass.Draw(*this);
}

float Brush::DistanceFromCamera() const {
    D3DVECTOR in_view;
    crMTransform(crvMatrices[CRM_VIEW], pivot, in_view);
    return in_view.z;
}
