#include "drawing/PathDrawing.h"

#include <algorithm>
#include <cmath>

#include "drawing/LineColors.h"
#include "scene/MoviePath.h"
#include "scene/World.h"

namespace {

constexpr float MARK = 20;           // world units from the path
constexpr float DRAWN_EASING = 0.1f; // of the easing that moves the camera
constexpr float SPANS_A_UNIT = 0.1f;
constexpr float MOST_SPANS = 4096; // of a segment

// The two axes that an orthographic view covers, 0 x, 1 y, 2 z.
struct PlaneAxes {
    int right, up;
};
PlaneAxes AxesOf(int view) { return {view == VIEW_LEFT ? 2 : 0, view == VIEW_TOP ? 2 : 1}; }

D3DVECTOR Axis(int axis) {
    D3DVECTOR v;
    Component(v, axis) = 1;
    return v;
}

// Wild shape values lead farther than can be drawn: the segment's start stands in.
D3DVECTOR PlaceOn(const PathSegment& s, float u) {
    constexpr float FARTHEST = 1e7f;
    const D3DVECTOR place = HermitePoint(s.a.position, s.b.position, s.tangent_a, s.tangent_b, u);
    const auto is_near = [](float f) { return std::fabs(f) <= FARTHEST; };
    return is_near(place.x) && is_near(place.y) && is_near(place.z) ? place : s.a.position;
}

// The direction of the path at a place, in the plane of an orthographic view, turned there by a quarter.
D3DVECTOR Across(const PathSegment& s, float u, PlaneAxes axes) {
    constexpr float STEP = 0.01f;
    D3DVECTOR along = PlaceOn(s, std::min(u + STEP, 1.0f)) - PlaceOn(s, std::max(u - STEP, 0.0f));
    D3DVECTOR across;
    Component(across, axes.right) = -Component(along, axes.up);
    Component(across, axes.up) = Component(along, axes.right);
    across = NormalizeOrZero(across);
    return across == D3DVECTOR{} ? Axis(axes.right) : across; // it leads straight into the view
}

class PathLines {
public:
    PathLines(LineBatch& batch, const DrawContext& draw_context) : lines(batch), context(draw_context) {}

    void Segment(const PathSegment& s, uint32_t color) {
        DrawHermitSegment(s, color);
        Diamond(s, color);
    }
    void Mark(const PathSegment& s, float u) {
        if (context.view == VIEW_PERSPECTIVE)
            return;
        const D3DVECTOR place = PlaceOn(s, u), side = Across(s, u, AxesOf(context.view)) * MARK;
        lines.Line(place - side, place + side, ColorOf(LineColor::PathNow));
    }

private:
    void DrawHermitSegment(const PathSegment& s, uint32_t color) {
        const float spans = Magnitude(s.b.position - s.a.position) * SPANS_A_UNIT;
        const int n = static_cast<int>(std::min(spans, MOST_SPANS));
        D3DVECTOR from = s.a.position;
        for (int i = 1; i <= n; ++i) {
            const D3DVECTOR to = PlaceOn(s, static_cast<float>(i) / static_cast<float>(n));
            lines.Line(from, to, color);
            from = to;
        }
    }
    void Diamond(const PathSegment& s, uint32_t color) {
        D3DVECTOR side, up;
        if (context.view == VIEW_PERSPECTIVE) {
            const D3DVECTOR direction = NormalizeOrZero(s.b.position - s.a.position);
            side = NormalizeOrZero(CrossProduct({0, 1, 0}, direction));
            if (side == D3DVECTOR{}) // straight up or down, or nowhere
                side = {1, 0, 0};
            up = direction == D3DVECTOR{} ? D3DVECTOR{0, 1, 0} : CrossProduct(direction, side);
        } else {
            const PlaneAxes axes = AxesOf(context.view);
            side = Axis(axes.right);
            up = Axis(axes.up);
        }
        const D3DVECTOR corners[4] = {side * MARK, up * MARK, side * -MARK, up * -MARK};
        for (size_t k = 0; k < 4; ++k)
            lines.Line(s.b.position + corners[k], s.b.position + corners[(k + 1) % 4], color);
    }

    LineBatch& lines;
    const DrawContext& context;
};

std::vector<bool> HiddenPoints(const SimpleList<uint32_t>& path) {
    std::vector<bool> hidden;
    for (const uint32_t id : path)
        hidden.push_back(BaseObject::GetObjectFromID(id)->GetEntity()->IsHidden());
    return hidden;
}

} // namespace

D3DVECTOR AddPath(LineBatch& lines, const DrawContext& context, SimpleList<uint32_t>& path, uint32_t color) {
    const std::vector<PathPoint> points = PathPoints(path); // from here on all ids are of entities
    if (points.empty())
        return {};
    const std::vector<PathSegment> segments = PathSegments(points);
    const PathPlace place = FindPathPlace(context.anim_time, points, segments, DRAWN_EASING);
    const std::vector<bool> hidden = HiddenPoints(path);
    PathLines path_lines(lines, context);
    D3DVECTOR current = points.front().position;
    for (size_t i = 0; i < segments.size(); ++i) {
        const bool holds_time = static_cast<int>(i) == place.segment;
        if (holds_time)
            current = PlaceOn(segments[i], place.u);
        if (hidden[i] || hidden[i + 1])
            continue;
        path_lines.Segment(segments[i], holds_time ? ColorOf(LineColor::PathNow) : color);
        if (holds_time)
            path_lines.Mark(segments[i], place.u);
    }
    return current;
}

void AddObjectPaths(LineBatch& lines, const DrawContext& context, BaseObject& object) {
    const D3DVECTOR place = AddPath(lines, context, object.path, ColorOf(LineColor::Path));
    const D3DVECTOR target = AddPath(lines, context, object.target_path, ColorOf(LineColor::TargetPath));
    if (object.path.GetCount() > 0 && object.target_path.GetCount() > 0)
        lines.Line(place, target, ColorOf(LineColor::PathNow));
}

D3DVECTOR World::RenderPath(const DrawContext& context, SimpleList<uint32_t>& path, uint32_t color) {
    LineBatch lines;
    return AddPath(lines, context, path, color);
}

void World::RenderObjectPaths(const DrawContext& context, BaseObject& object) {
    LineBatch lines;
    AddObjectPaths(lines, context, object);
}
