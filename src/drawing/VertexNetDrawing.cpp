#include "drawing/DashedLines.h"
#include "drawing/GeometryBatch.h"
#include "drawing/LineColors.h"
#include "drawing/ViewDrawing.h"
#include "render/DisplayScale.h"
#include "render/Matrix.h"
#include "render/StateCache.h"
#include "scene/World.h"

namespace {

constexpr uint32_t CROSS_COLOR = 0xFF808080, PICKED_CROSS_COLOR = 0xFFFFFF00;
constexpr uint32_t RIM_COLOR = 0;

class NetPass {
public:
    NetPass(const World& scene, const DrawContext& draw_context) : world(scene), context(draw_context) {
        const float half_width = static_cast<float>(crvViewportW) * 0.5f;
        const float half_height = static_cast<float>(crvViewportH) * 0.5f;
        const D3DMATRIX viewport = {
            {{half_width, 0, 0, 0},
             {0, -half_height, 0, 0},
             {0, 0, 1, 0},
             {static_cast<float>(crvViewportX) + half_width, static_cast<float>(crvViewportY) + half_height, 0, 1}}};
        crMMultiply(crvMatrices[CRM_VIEW], crvMatrices[CRM_PROJ], to_screen);
        crMMultiply(to_screen, viewport, to_screen);
    }

    void DrawEdges() const {
        LineBatch lines;
        DashedLines dashes(context);
        for (const SO_EDGE& edge : world.so_edge) {
            const size_t a = edge.e.i[0], b = edge.e.i[1];
            if (a >= world.so_vertex.size() || b >= world.so_vertex.size())
                continue;
            const D3DVECTOR &from = world.so_vertex[a].v, &to = world.so_vertex[b].v;
            if (edge.curved) {
                lines.Flush();
                dashes.Line(from, to, ColorOf(LineColor::Net));
            } else if (IsPerspective() || edge.selected) {
                dashes.Flush();
                lines.Line(from, to, edge.selected ? ColorOf(LineColor::MarkedNetEdge) : ColorOf(LineColor::NetEdge));
            }
        }
    }

    void DrawCrosses() const {
        if (!IsPerspective())
            return;
        LineBatch lines;
        for (const SO_VERTEX& vertex : world.so_vertex)
            for (int axis = 0; vertex.selected && InFront(vertex) && axis < 3; ++axis)
                DrawCrossLine(lines, vertex, axis, CROSS_COLOR);
        const auto picked = static_cast<size_t>(context.selected_cross_vertex);
        if (picked < world.so_vertex.size())
            DrawCrossLine(lines, world.so_vertex[picked], context.selected_cross_edge, PICKED_CROSS_COLOR);
    }

    void DrawMarks() const {
        const int dot = static_cast<int>(crvDotSize), rim = 3 * dot, mark = 2 * dot; // half sizes
        SetPlainState();
        criSetStateValue(RS_CULLMODE, CULL_CCW);
        GeometryBatch marks(PT_TRI_LIST, VT_XYZRHW | VT_DIFFUSE);
        for (const SO_VERTEX& vertex : world.so_vertex) {
            VECTOR4 p = Project(vertex);
            if (IsPerspective() && !IsInFront(p))
                continue;
            p.x /= p.w, p.y /= p.w;
            constexpr float FAR_AWAY = 16384; // pixels, outside any picture
            if (!(std::fabs(p.x) < FAR_AWAY && std::fabs(p.y) < FAR_AWAY))
                continue;
            const int x = static_cast<int>(p.x), y = static_cast<int>(p.y);
            if (vertex.selected)
                AddMark(marks, x, y, rim, RIM_COLOR);
            AddMark(marks, x, y, mark, vertex.selected ? ColorOf(LineColor::MarkedVertex) : ColorOf(LineColor::Vertex));
        }
    }

private:
    bool IsPerspective() const { return context.view == VIEW_PERSPECTIVE; }
    VECTOR4 Project(const SO_VERTEX& vertex) const {
        VECTOR4 p;
        crMTransform4(to_screen, {vertex.v.x, vertex.v.y, vertex.v.z, 1}, p);
        return p;
    }
    static bool IsInFront(const VECTOR4& p) { return p.z > 0 && p.w > 0; }
    bool InFront(const SO_VERTEX& vertex) const { return IsInFront(Project(vertex)); }

    static void DrawCrossLine(LineBatch& lines, const SO_VERTEX& vertex, int axis, uint32_t color) {
        constexpr float HALF_LENGTH = 32;
        const D3DVECTOR arm = axis == 0   ? D3DVECTOR{HALF_LENGTH, 0, 0}
                              : axis == 1 ? D3DVECTOR{0, HALF_LENGTH, 0}
                                          : D3DVECTOR{0, 0, HALF_LENGTH};
        lines.Line(vertex.v - arm, vertex.v + arm, color);
    }

    static void AddMark(GeometryBatch& marks, int x, int y, int half_size, uint32_t color) {
        constexpr float MARK_RHW = 0.5f, MARK_DEPTH = 0.5f;
        constexpr int corners[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
        const uint32_t first = marks.Reserve(4, 6);
        for (const auto& corner : corners) {
            crRHW(MARK_RHW);
            crDiffuse(color);
            crXYZ(static_cast<float>(x + corner[0] * half_size), static_cast<float>(y + corner[1] * half_size),
                  MARK_DEPTH);
        }
        crIndexFace(first, first + 1, first + 2);
        crIndexFace(first, first + 2, first + 3);
    }

    const World& world;
    const DrawContext& context;
    D3DMATRIX to_screen; // pixels, once divided
};

} // namespace

void RenderSOVertices(World& world, const DrawContext& context) {
    if (context.view == VIEW_PERSPECTIVE && !world.so_vertex.empty())
        world.RenderCurveEdges(context);
    const NetPass pass(world, context);
    pass.DrawEdges();
    if (!context.vertex_mode)
        return;
    pass.DrawCrosses();
    pass.DrawMarks();
}
