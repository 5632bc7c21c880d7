#include "editor/LevelPlan.h"

#include <algorithm>
#include <cmath>

#include "foundation/Strings.h"
#include "foundation/WholeNumber.h"
#include "scene/Brush.h"

namespace {

constexpr float MARGIN = 12;        // pixels
constexpr float GOLDEN = 0.618034f; // steps of the hue: neighbours stand far apart
constexpr float FLAT = 40;          // world units: a brush no higher than this is drawn as a floor
constexpr uint32_t WHITE = 0xFFFFFF, EYE_RING = 0x101010, NO_CELL = 0x606060;

struct Extent {
    float x0 = 1e30f, z0 = 1e30f, x1 = -1e30f, z1 = -1e30f, y0 = 1e30f, y1 = -1e30f;

    void Add(const D3DVECTOR& p) {
        x0 = std::min(x0, p.x), x1 = std::max(x1, p.x);
        y0 = std::min(y0, p.y), y1 = std::max(y1, p.y);
        z0 = std::min(z0, p.z), z1 = std::max(z1, p.z);
    }
    bool IsEmpty() const { return x0 > x1; }
};

Extent ExtentOf(const WorldBrush& brush) {
    Extent extent;
    for (const WorldSurface& surface : brush.surfaces) {
        for (const D3DVECTOR& p : surface.vertices)
            extent.Add(p);
        for (const D3DVECTOR& p : surface.cp)
            extent.Add(p);
    }
    return extent;
}

class Plan {
public:
    Plan(const Extent& level, int longest_side) : area(level) {
        const float width = level.x1 - level.x0, height = level.z1 - level.z0;
        scale = (static_cast<float>(longest_side) - 2 * MARGIN) / std::max({width, height, 1.0f});
        picture.width = WholeNumber(width * scale + 2 * MARGIN) + 1;
        picture.height = WholeNumber(height * scale + 2 * MARGIN) + 1;
        picture.rgb.assign(static_cast<size_t>(picture.width) * static_cast<size_t>(picture.height) * 3, 24);
    }
    int X(float x) const { return WholeNumber((x - area.x0) * scale + MARGIN); }
    int Y(float z) const { return WholeNumber((area.z1 - z) * scale + MARGIN); }

    void Blend(int x, int y, uint32_t color, float share) {
        if (x < 0 || y < 0 || x >= picture.width || y >= picture.height)
            return;
        uint8_t* pixel =
            &picture.rgb[(static_cast<size_t>(y) * static_cast<size_t>(picture.width) + static_cast<size_t>(x)) * 3];
        for (int k = 0; k < 3; ++k) {
            const auto channel = static_cast<float>(color >> (16 - 8 * k) & 255);
            pixel[k] = static_cast<uint8_t>(static_cast<float>(pixel[k]) * (1 - share) + channel * share);
        }
    }
    void Fill(const Extent& e, uint32_t color, float share) {
        for (int y = Y(e.z1); y <= Y(e.z0); ++y)
            for (int x = X(e.x0); x <= X(e.x1); ++x)
                Blend(x, y, color, share);
    }
    void Outline(const Extent& e, uint32_t color) {
        for (int x = X(e.x0); x <= X(e.x1); ++x)
            Blend(x, Y(e.z0), color, 1), Blend(x, Y(e.z1), color, 1);
        for (int y = Y(e.z1); y <= Y(e.z0); ++y)
            Blend(X(e.x0), y, color, 1), Blend(X(e.x1), y, color, 1);
    }
    void Dot(const D3DVECTOR& p, int radius, uint32_t color) {
        for (int dy = -radius; dy <= radius; ++dy)
            for (int dx = -radius; dx <= radius; ++dx) {
                const int square = dx * dx + dy * dy;
                if (square <= radius * radius)
                    Blend(X(p.x) + dx, Y(p.z) + dy, square > (radius - 2) * (radius - 2) ? EYE_RING : color, 1);
            }
    }

    PlanPicture picture;

private:
    Extent area;
    float scale;
};

} // namespace

uint32_t DistinctColor(int number) {
    const float hue = (static_cast<float>(number) * GOLDEN - std::floor(static_cast<float>(number) * GOLDEN)) * 6;
    const float wave[3] = {std::fabs(hue - 3) - 1, 2 - std::fabs(hue - 2), 2 - std::fabs(hue - 4)};
    uint32_t color = 0;
    for (const float channel : wave)
        color = color << 8 | static_cast<uint32_t>(80 + 175 * std::clamp(channel, 0.0f, 1.0f));
    return color;
}

PlanPicture DrawLevelPlan(const WorldFile& world, int longest_side) {
    std::vector<Extent> extents;
    std::vector<int> cell_of_brush(world.brushes.size(), -1);
    Extent level;
    for (const WorldBrush& brush : world.brushes) {
        extents.push_back(ExtentOf(brush));
        if (!extents.back().IsEmpty() && !(brush.properties & BP_ENVIRONMENT)) {
            level.Add({extents.back().x0, extents.back().y0, extents.back().z0});
            level.Add({extents.back().x1, extents.back().y1, extents.back().z1});
        }
    }
    if (level.IsEmpty())
        return {};
    for (size_t c = world.cells.size(); c-- > 0;)
        for (const int32_t b : world.cells[c].objects)
            cell_of_brush[static_cast<size_t>(b)] = static_cast<int>(c);
    Plan plan(level, longest_side);
    const auto color_of = [&](size_t b) { return cell_of_brush[b] < 0 ? NO_CELL : DistinctColor(cell_of_brush[b]); };
    for (size_t b = 0; b < world.brushes.size(); ++b)
        if (!extents[b].IsEmpty() && extents[b].y1 - extents[b].y0 <= FLAT)
            plan.Fill(extents[b], color_of(b), 0.25f);
    for (size_t b = 0; b < world.brushes.size(); ++b)
        if (!extents[b].IsEmpty() && world.brushes[b].type != BT_PORTAL && world.brushes[b].type != BT_OCCLUDER)
            plan.Outline(extents[b], color_of(b));
    for (const WorldPortal& portal : world.portals)
        if (const Extent& opening = extents[static_cast<size_t>(portal.portalowner)]; !opening.IsEmpty()) {
            plan.Fill(opening, WHITE, 0.6f);
            plan.Outline(opening, WHITE);
        }
    for (const WorldEntity& entity : world.entities)
        if (EqualNoCase(entity.type, "VISIBILITY_EYE"))
            plan.Dot(entity.position, 6, WHITE);
    return std::move(plan.picture);
}
