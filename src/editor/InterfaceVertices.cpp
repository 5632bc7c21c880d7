// Vertex mode: marking and dragging the vertices and edges of the selected brushes. All picking works in pixels.
#include <algorithm>
#include <cmath>

#include "editor/Interface.h"
#include "render/Device.h"
#include "render/DisplayScale.h"
#include "render/Matrix.h"

namespace {

constexpr float POINT_RADIUS = 5.0f;         // desktop pixels
constexpr float EDGE_DISTANCE = 3.0f;        // desktop pixels
constexpr float SHORTEST_EDGE_SQUARE = 1.0f; // pixels
constexpr float CROSS_ARM = 32.0f;           // half length, world units
constexpr float RECTANGLE_DEPTH = 1e10f;     // along the view's missing axis

struct ScreenPoint {
    float x = 0, y = 0;
    bool in_front = false;
};

// From the world to client pixels of the current view.
class ScreenMatrix {
public:
    ScreenMatrix() { crMMultiply(crvMatrices[CRM_VIEW], crvMatrices[CRM_PROJ], to_clip); }
    ScreenPoint Project(const D3DVECTOR& v) const {
        VECTOR4 p;
        crMTransform4(to_clip, {v.x, v.y, v.z, 1}, p);
        if (!(p.w > 0))
            return {};
        const float half_width = static_cast<float>(crvViewportW) / 2,
                    half_height = static_cast<float>(crvViewportH) / 2;
        return {std::trunc(p.x / p.w * half_width + half_width + 0.5f),
                std::trunc(half_height - p.y / p.w * half_height + 0.5f), true};
    }

private:
    D3DMATRIX to_clip;
};

bool IsNearPoint(const ScreenPoint& p, POINT mouse) {
    const float x = p.x - static_cast<float>(mouse.x), y = p.y - static_cast<float>(mouse.y);
    const float reach = POINT_RADIUS * crvDisplayScale;
    return p.in_front && x * x + y * y < reach * reach;
}

bool IsNearSegment(const ScreenPoint& a, const ScreenPoint& b, POINT mouse) {
    if (!a.in_front || !b.in_front)
        return false;
    const float dx = b.x - a.x, dy = b.y - a.y, square = dx * dx + dy * dy;
    if (square < SHORTEST_EDGE_SQUARE)
        return false;
    const float mx = static_cast<float>(mouse.x) - a.x, my = static_cast<float>(mouse.y) - a.y;
    const float t = (mx * dx + my * dy) / square;
    return t >= 0 && t <= 1 && std::fabs(mx * dy - my * dx) <= EDGE_DISTANCE * crvDisplayScale * std::sqrt(square);
}

D3DVECTOR ArmEnd(const D3DVECTOR& v, int arm, float reach) {
    D3DVECTOR end = v;
    Component(end, arm) += reach;
    return end;
}

} // namespace

void CInterface::UnmarkVertices() {
    auto unmarked = std::make_unique<CUndoActionDeselect>(true);
    for (size_t v = 0; v < world->so_vertex.size(); ++v)
        if (world->so_vertex[v].selected) {
            unmarked->AddID(static_cast<uint32_t>(v), *world);
            world->so_vertex[v].selected = false;
        }
    world->AddUndoAction(std::move(unmarked));
}

void CInterface::UnmarkEdges() {
    for (SO_EDGE& edge : world->so_edge)
        edge.selected = false;
}

template <class IsHit>
bool CInterface::MarkVertices(IsHit&& is_hit) {
    auto marked = std::make_unique<CUndoActionSelect>(true);
    bool any = false;
    for (size_t v = 0; v < world->so_vertex.size(); ++v)
        if (is_hit(world->so_vertex[v].v)) {
            if (!world->so_vertex[v].selected)
                marked->AddID(static_cast<uint32_t>(v), *world);
            world->so_vertex[v].selected = any = true;
        }
    world->AddUndoAction(std::move(marked));
    return any;
}

void CInterface::SelectSOVertex(POINT point) {
    SetMatrices(active_view);
    const ScreenMatrix screen;
    if (!make_multi_selection)
        UnmarkVertices();
    UnmarkEdges();
    if (!MarkVertices([&](const D3DVECTOR& v) { return IsNearPoint(screen.Project(v), point); }))
        MarkEdges([&](const D3DVECTOR& a, const D3DVECTOR& b) {
            return IsNearSegment(screen.Project(a), screen.Project(b), point);
        });
    RedrawAllViews();
}

template <class IsHit>
void CInterface::MarkEdges(IsHit&& is_hit) {
    bool any = false;
    for (SO_EDGE& edge : world->so_edge)
        if (!edge.curved && is_hit(world->so_vertex[edge.e.i[0]].v, world->so_vertex[edge.e.i[1]].v))
            edge.selected = any = true;
    if (any)
        for (SO_VERTEX& vertex : world->so_vertex)
            vertex.selected = false;
}

void CInterface::SOVertexMultiSelect(POINT point) {
    UnmarkEdges();
    ValidateBBox(drag_box);
    drag_box_active = false;
    if (IsClick(drag_box)) {
        SelectSOVertex(point);
        return;
    }
    D3DVECTOR min = BoxMin(drag_box), max = BoxMax(drag_box);
    if (active_view != VIEW_PERSPECTIVE) {
        Component(min, MissingAxis(active_view)) = -RECTANGLE_DEPTH;
        Component(max, MissingAxis(active_view)) = RECTANGLE_DEPTH;
    }
    if (!make_multi_selection)
        UnmarkVertices();
    MarkVertices([&](const D3DVECTOR& v) { return s_math.PointInBox(min, max, v); });
    RedrawAllViews();
}

void CInterface::TestCrossEdgeSelection(POINT point) {
    SetMatrices(VIEW_PERSPECTIVE);
    const ScreenMatrix screen;
    const bool was_picked = selected_cross_vertex != -1;
    selected_cross_vertex = -1;
    for (size_t v = 0; v < world->so_vertex.size(); ++v) {
        if (!world->so_vertex[v].selected)
            continue;
        for (int arm = 0; arm < 3; ++arm) {
            const D3DVECTOR& center = world->so_vertex[v].v;
            if (IsNearSegment(screen.Project(ArmEnd(center, arm, -CROSS_ARM)),
                              screen.Project(ArmEnd(center, arm, CROSS_ARM)), point)) {
                selected_cross_vertex = static_cast<int>(v);
                selected_cross_edge = arm;
            }
        }
    }
    if (was_picked != (selected_cross_vertex != -1))
        RedrawAllViews();
}

D3DVECTOR CInterface::GetCrossPlaneIntersection(POINT point) {
    constexpr int ARM_Y = 1;
    constexpr float FARTHEST = 1000000.0f; // world units: beyond, the view lies nearly along the plane
    if (selected_cross_vertex < 0 || selected_cross_vertex >= static_cast<int>(world->so_vertex.size()))
        return last_world_position;
    SetMatrices(VIEW_PERSPECTIVE);
    const D3DVECTOR& v = world->so_vertex[static_cast<size_t>(selected_cross_vertex)].v;
    const D3DVECTOR normal = selected_cross_edge == ARM_Y ? D3DVECTOR{1, 0, 0} : D3DVECTOR{0, 1, 0};
    const D3DVECTOR& camera = views.perspective.camera_position;
    const D3DVECTOR direction = s_math.GetSelectionRay(point, camera);
    const float slope = DotProduct(direction, normal);
    if (slope == 0)
        return {};
    D3DVECTOR p = camera + direction * (DotProduct(v - camera, normal) / slope);
    for (int axis = 0; axis < 3; ++axis) {
        const float grid = static_cast<float>(grid_size);
        Component(p, axis) = std::trunc(Component(p, axis) / grid) * grid;
        if (!(std::fabs(Component(p, axis)) <= FARTHEST))
            return last_world_position;
    }
    return p;
}

void CInterface::MoveMarkedVertices(const D3DVECTOR& move) {
    BeginDragRecord("Move vertices.");
    tmp_move -= move;
    world->SOVertexMove(move);
    RefreshSelectionBox();
    SetSizeText();
    RedrawAllViews();
    MarkDirty();
}

void CInterface::MoveSOVertexInPerspective(POINT point) {
    if (selected_cross_vertex < 0 || selected_cross_vertex >= static_cast<int>(world->so_vertex.size()))
        return;
    world_position = GetCrossPlaneIntersection(point);
    const D3DVECTOR aligned = AlignToGrid(world->so_vertex[static_cast<size_t>(selected_cross_vertex)].v,
                                          world_position - last_world_position);
    D3DVECTOR move;
    Component(move, selected_cross_edge) = Component(aligned, selected_cross_edge);
    MoveMarkedVertices(move);
    last_world_position = world_position;
}

void CInterface::SOVertexMove() {
    const D3DVECTOR delta = world_position - last_world_position;
    if (delta == D3DVECTOR{})
        return;
    const auto is_marked = [](const auto& item) { return item.selected; };
    const D3DVECTOR* anchor = nullptr;
    const auto vertex = std::find_if(world->so_vertex.begin(), world->so_vertex.end(), is_marked);
    const auto edge = std::find_if(world->so_edge.begin(), world->so_edge.end(), is_marked);
    if (vertex != world->so_vertex.end())
        anchor = &vertex->v;
    else if (edge != world->so_edge.end())
        anchor = &world->so_vertex[edge->e.i[0]].v;
    if (anchor)
        MoveMarkedVertices(AlignToGrid(*anchor, delta));
}
