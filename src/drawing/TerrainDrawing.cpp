// The tool of the perspective view that reshapes terrains, laid on the ground.
#include "drawing/DrawContext.h"
#include "drawing/GeometryBatch.h"
#include "drawing/LineColors.h"
#include "scene/TerrainParts.h"
#include "scene/World.h"

namespace {

// Where a stroke still changes the ground by this part of what it does in the middle.
struct FalloffRing {
    float part_of_radius; // 2 / pi times the arc cosine of the part
    uint32_t color;
};
constexpr FalloffRing FALLOFF_RINGS[] = {{0.53544f, 0xFF00B000}, {0.78365f, 0xFF007000}}; // two thirds, one third

void DrawRing(LineBatch& lines, const World& world, const D3DVECTOR& center, float radius, uint32_t color) {
    constexpr int POINTS = 64;
    constexpr float ABOVE_GROUND = 1.0f;
    D3DVECTOR first, before;
    for (int i = 0; i < POINTS; ++i) {
        const float a = TWO_PI * static_cast<float>(i) / static_cast<float>(POINTS);
        D3DVECTOR p{center.x + std::cos(a) * radius, center.y, center.z + std::sin(a) * radius};
        float depth = TERRAIN_REACH;
        bool on_ground = false;
        for (const int b : world.b_list)
            on_ground |= FindGround(*world.brush[static_cast<size_t>(b)], p.x, p.z, depth);
        if (on_ground)
            p.y = TERRAIN_SKY - depth;
        p.y += ABOVE_GROUND;
        if (i == 0)
            first = p;
        else
            lines.Line(before, p, color);
        before = p;
    }
    lines.Line(before, first, color);
}

} // namespace

void World::RenderTerrainBrush(const DrawContext& context, const TERRAIN_MODIFIER& tm, POINT point) {
    D3DVECTOR center;
    if (!AimTerrainTool(tm, point, context.camera_position, center))
        return;
    LineBatch lines;
    if (tm.type == TERRAIN_RAISE)
        for (const FalloffRing& ring : FALLOFF_RINGS)
            DrawRing(lines, *this, center, tm.radius * ring.part_of_radius, ring.color);
    DrawRing(lines, *this, center, tm.radius, ColorOf(LineColor::TerrainTool));
}
