#include "drawing/ViewDrawing.h"

#include <algorithm>

#include "drawing/BoxFaces.h"
#include "drawing/DashedLines.h"
#include "drawing/GeometryBatch.h"
#include "render/DisplayScale.h"
#include "render/StateCache.h"

namespace {

constexpr int64_t MAJOR_STEPS = 8; // of the grid, from line to brighter line

constexpr float SCREEN_RHW = 0.5f;

// Lines on the screen, over the whole of a rectangle.
class GridLines {
public:
    GridLines(const RECT& area) : rect(area), batch(PT_LINE_LIST, VT_XYZRHW | VT_DIFFUSE | VT_TEX1) {}

    void Vertical(int64_t x, uint32_t color) {
        const auto at = static_cast<float>(x);
        Line(at, static_cast<float>(rect.top), at, static_cast<float>(rect.bottom), color);
    }
    void Horizontal(int64_t y, uint32_t color) {
        const auto at = static_cast<float>(y);
        Line(static_cast<float>(rect.left), at, static_cast<float>(rect.right), at, color);
    }
    // All lines of one colour; the world's origin stands at minus position.
    void Lines(const int32_t position[2], int64_t step, uint32_t color) {
        for (int64_t x = rect.left + FirstLine(position[0], step); x < rect.right; x += step)
            Vertical(x, color);
        for (int64_t y = rect.top + FirstLine(position[1], step); y < rect.bottom; y += step)
            Horizontal(y, color);
    }

private:
    static int64_t FirstLine(int64_t position, int64_t step) {
        return (position / step + 1) * step - position - (position < 0 ? step : 0);
    }
    void Line(float x1, float y1, float x2, float y2, uint32_t color) {
        const uint32_t first = batch.Reserve(2, 2);
        for (const auto& [x, y] : {UVVector{x1, y1}, UVVector{x2, y2}}) {
            crRHW(SCREEN_RHW);
            crDiffuse(color);
            crUV(0, 0);
            crXYZ(x, y, 0);
        }
        crIndex(first);
        crIndex(first + 1);
    }

    RECT rect;
    GeometryBatch batch;
};

} // namespace

int64_t ThinnedGrid(int grid, float pixels_a_unit) {
    constexpr float LEAST_APART = 4; // pixels of the screen's scale
    int64_t step = std::max(grid, 1);
    while (pixels_a_unit > 0 && static_cast<float>(step) * pixels_a_unit < LEAST_APART * crvDisplayScale)
        step *= MAJOR_STEPS;
    return step;
}

void DrawGrid(const RECT& rect, const int32_t position[2], int step, const uint32_t colors[3]) {
    const int64_t minor = step > 1 ? step : 1;
    SetPlainState();
    GridLines lines(rect);
    lines.Lines(position, minor, colors[0]);
    lines.Lines(position, MAJOR_STEPS * minor, colors[1]);
    const int64_t x = -int64_t{position[0]}, y = -int64_t{position[1]};
    if (x >= 0 && x < rect.Width())
        lines.Vertical(rect.left + x, colors[2]);
    if (y >= 0 && y < rect.Height())
        lines.Horizontal(rect.top + y, colors[2]);
}

void DrawLine2D(const D3DVECTOR& from, const D3DVECTOR& to, uint32_t color) {
    SetPlainState();
    crBegin(PT_LINE_LIST, VT_XYZRHW | VT_DIFFUSE);
    for (const D3DVECTOR& p : {from, to}) {
        crRHW(SCREEN_RHW);
        crDiffuse(color);
        crXYZ(p.x, p.y, p.z);
    }
    crEnd();
}

void DrawLine3D(const D3DVECTOR& from, const D3DVECTOR& to, uint32_t color1, uint32_t color2) {
    LineBatch().Line(from, to, color1, color2);
}

void DrawArrow(const D3DVECTOR& from, const D3DVECTOR& to, uint32_t color) { LineBatch().Arrow(from, to, color); }

void RenderDragBox(const DrawContext& context, uint32_t color, const Box& box) {
    if (context.view < VIEW_TOP || context.view >= VIEW_PERSPECTIVE)
        return;
    const auto& face = BOX_FACES[context.view];
    DashedLines lines(context);
    for (size_t k = 0; k < std::size(face); ++k)
        lines.Line(box[face[k]], box[face[(k + 1) % std::size(face)]], color);
}

void RenderOutline(const std::vector<D3DVECTOR>& points, uint32_t color) {
    LineBatch lines;
    for (size_t i = 0; i + 1 < points.size(); ++i)
        lines.Line(points[i], points[i + 1], color);
}
