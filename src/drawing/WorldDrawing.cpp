#include "scene/World.h"

#include <algorithm>

#include "drawing/SolidPass.h"
#include "drawing/WireDrawing.h"
#include "render/Matrix.h"

namespace {

// Which boxes an orthographic view cannot show anything of.
class ViewCull {
public:
    explicit ViewCull(const DrawContext& context) : orthographic(context.view != VIEW_PERSPECTIVE) {
        constexpr float MARGIN_PIXELS = 4; // for rounding
        crMMultiply(crvMatrices[CRM_VIEW], crvMatrices[CRM_PROJ], to_screen);
        limit_x = 1 + MARGIN_PIXELS / static_cast<float>(std::max(crvViewportW, 1u));
        limit_y = 1 + MARGIN_PIXELS / static_cast<float>(std::max(crvViewportH, 1u));
    }
    bool Hides(const Box& box) const {
        if (!orthographic)
            return false;
        constexpr float LOOSE = 1; // whole coordinates may lie this far outside the box of a brush
        const D3DVECTOR loose{LOOSE, LOOSE, LOOSE};
        D3DVECTOR a, b;
        crMTransform(to_screen, BoxMin(box) - loose, a);
        crMTransform(to_screen, BoxMax(box) + loose, b);
        return std::max(a.x, b.x) < -limit_x || std::min(a.x, b.x) > limit_x || std::max(a.y, b.y) < -limit_y ||
               std::min(a.y, b.y) > limit_y;
    }

private:
    bool orthographic;
    D3DMATRIX to_screen;
    float limit_x, limit_y;
};

void DrawSolidBrushes(const World& world, const DrawContext& context) {
    PLANE planes[6];
    crGetClipPlanes(planes);
    struct Deferred {
        const Brush* brush;
        float distance;
    };
    std::vector<Deferred> deferred;
    SolidPass pass(world, context);
    for (const auto& b : world.brush) {
        if (b->is_hidden || !context.filters.ShowsBrush(*b) || !b->Visible(planes))
            continue;
        if (b->IsPortalOrOccluder() || b->IsTransparent(world))
            deferred.push_back({b.get(), b->DistanceFromCamera()});
        else
            pass.Draw(*b);
    }
    std::stable_sort(deferred.begin(), deferred.end(),
                     [](const Deferred& a, const Deferred& b) { return a.distance > b.distance; });
    for (const Deferred& d : deferred)
        pass.Draw(*d.brush);
}

void DrawWireBrushes(const World& world, const DrawContext& context) {
    const ViewCull cull(context);
    std::vector<const Brush*> deferred, selected;
    LineBatch lines;
    for (const auto& b : world.brush) {
        if (b->is_hidden || cull.Hides(b->bbox))
            continue;
        if (b->is_selected) {
            if (context.filters.show_brushes)
                selected.push_back(b.get());
        } else if (context.filters.ShowsBrush(*b)) {
            if (b->IsPortalOrOccluder())
                deferred.push_back(b.get());
            else
                AddWire(lines, *b, WireColor(*b));
        }
    }
    for (const auto* list : {&deferred, &selected})
        for (const Brush* b : *list)
            AddWire(lines, *b, WireColor(*b));
}

} // namespace

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

void World::RenderCurveEdges(const DrawContext& context) {
    const ViewCull cull(context);
    LineBatch lines;
    for (const int b : brush_selection) {
        const Brush& selected = *brush[static_cast<size_t>(b)];
        if (!selected.IsCustom() && !cull.Hides(selected.bbox))
            AddWire(lines, selected, selected.color);
    }
}

void World::RenderCameraPosition(const DrawContext& context) {
    if (context.view == VIEW_PERSPECTIVE || !context.filters.show_entities)
        return;
    constexpr uint32_t CAMERA_COLOR = 0xFFFF4040;
    constexpr float H = 32;
    constexpr D3DVECTOR diagonals[] = {{-H, H, H}, {-H, -H, -H}, {-H, -H, H}}; // each to its opposite
    LineBatch lines;
    for (const D3DVECTOR& d : diagonals)
        lines.Line(context.camera_position + d, context.camera_position - d, CAMERA_COLOR);
}
