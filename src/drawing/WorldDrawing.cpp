#include "drawing/LineColors.h"
#include "scene/World.h"

#include "drawing/BrushPasses.h"
#include "drawing/WireDrawing.h"
#include "render/Matrix.h"

void World::RenderBrushes(const DrawContext& context) {
    const DisplayFilters& filters = context.filters;
    if (!filters.show_brushes && !filters.show_portals && !filters.show_occluders)
        return;
    crMUpdate();
    if (context.view == VIEW_PERSPECTIVE && render_mode != 0)
        DrawSolidBrushes(*this, context);
    else
        DrawWireBrushes(*this, context);
}

void World::RenderCurveEdges(const DrawContext&) {
    LineBatch lines;
    for (const int b : brush_selection) {
        const Brush& selected = *brush[static_cast<size_t>(b)];
        if (!selected.IsCustom())
            AddWire(lines, selected, selected.color);
    }
}

void World::RenderCameraPosition(const DrawContext& context) {
    if (context.view == VIEW_PERSPECTIVE || !context.filters.show_entities)
        return;
    constexpr float H = 32, LOOK_LENGTH = 128;
    constexpr D3DVECTOR diagonals[] = {{-H, H, H}, {-H, -H, -H}, {-H, -H, H}}; // each to its opposite
    LineBatch lines;
    for (const D3DVECTOR& d : diagonals)
        lines.Line(context.camera_position + d, context.camera_position - d, ColorOf(LineColor::Camera));
    if (context.camera_look != D3DVECTOR{})
        lines.Arrow(context.camera_position + context.camera_look * LOOK_LENGTH, context.camera_position,
                    ColorOf(LineColor::Camera));
}
