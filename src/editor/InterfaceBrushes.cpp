// New brushes: their box dragged out in a view, or an outline entered point by point.
#include <algorithm>
#include <cmath>

#include "editor/Interface.h"
#include "foundation/SpecialMath.h"

namespace {

constexpr float BOX_SEARCH_START = 1000000.0f;
constexpr float THINNEST = 1.0f; // an extent below it is that of a click
constexpr float THICKNESS_OF_CLICK = 32.0f;

// Which corners of a box lie on the high side of an axis.
bool IsHighCorner(size_t corner, int axis) {
    switch (axis) {
    case 0:
        return corner == 1 || corner == 2 || corner == 5 || corner == 6;
    case 1:
        return corner < 4;
    default:
        return corner == 0 || corner == 1 || corner == 4 || corner == 5;
    }
}

// The outline in the plane of its view, as LineIntersect2d and the brush want it.
D3DVECTOR OnPlane(int view, const D3DVECTOR& p) {
    return view == VIEW_TOP ? D3DVECTOR{p.x, p.z, 0} : view == VIEW_LEFT ? D3DVECTOR{p.z, p.y, 0} : p;
}

} // namespace

D3DVECTOR CInterface::CreatePivot(const Box& box) {
    return {box[0].x + std::fabs(box[1].x - box[0].x) / 2, box[0].y - std::fabs(box[4].y - box[0].y) / 2,
            box[0].z - std::fabs(box[3].z - box[0].z) / 2};
}

int CInterface::MissingAxis(int view) { return view == VIEW_TOP ? 1 : view == VIEW_FRONT ? 2 : 0; }

void CInterface::CollapseBox(Box& box) const {
    if (active_view == VIEW_PERSPECTIVE)
        return;
    for (int axis = 0; axis < 3; ++axis)
        if (axis != MissingAxis(active_view))
            for (D3DVECTOR& corner : box)
                Component(corner, axis) = Component(world_position, axis);
}

// The far side follows the mouse: right of and below where the drag began, before the box is sorted.
void CInterface::DragBox(Box& box) const {
    if (active_view == VIEW_PERSPECTIVE)
        return;
    const int missing = MissingAxis(active_view);
    for (size_t corner = 0; corner < box.size(); ++corner) {
        if (missing != 0 && IsHighCorner(corner, 0))
            box[corner].x = world_position.x;
        if (missing != 1 && !IsHighCorner(corner, 1))
            box[corner].y = world_position.y;
        // In the top view z runs up the screen, in the left view to the right.
        if (missing != 2 && IsHighCorner(corner, 2) == (active_view == VIEW_LEFT))
            box[corner].z = world_position.z;
    }
}

void CInterface::StartBrushCreation() {
    editor_state = ES_CREATE_BRUSH;
    selection_box_active = true;
    CollapseBox(selection_box);
}

void CInterface::DragCreationBox() {
    DragBox(selection_box);
    RedrawView(active_view);
    SetSizeText();
}

void CInterface::ValidateBBox(Box& box) {
    D3DVECTOR min{BOX_SEARCH_START, BOX_SEARCH_START, BOX_SEARCH_START}, max = -min;
    for (const D3DVECTOR& corner : box)
        for (int axis = 0; axis < 3; ++axis) {
            Component(min, axis) = std::min(Component(min, axis), Component(corner, axis));
            Component(max, axis) = std::max(Component(max, axis), Component(corner, axis));
        }
    box = MakeBox(min, max);
}

void CInterface::ChooseCustomBrush() {
    active_custom_brush = (prefab_choice.brushes_selected ? "Marrowstead\\Brushes\\" : "Marrowstead\\Prefabs\\") +
                          prefab_choice.directory + "\\" + prefab_choice.file +
                          (prefab_choice.brushes_selected ? ".msh" : ".mpf");
}

void CInterface::CreateBrush() {
    ValidateBBox(selection_box);
    D3DVECTOR max = BoxMax(selection_box);
    for (int axis = 0; axis < 3; ++axis)
        if (Component(max, axis) - Component(BoxMin(selection_box), axis) < THINNEST)
            Component(max, axis) += THICKNESS_OF_CLICK;
    selection_box = MakeBox(BoxMin(selection_box), max);
    selection_pivot = CreatePivot(selection_box);
    editor_state = ES_SELECTED;
    DeselectWithUndo();
    if (active_brush_template == BT_CUSTOM) {
        if (!prefab_choice.IsChosen())
            return;
        ChooseCustomBrush();
    }
    if (active_brush_template == BT_EXTRUDABLE) // chosen during the drag: it needs an outline
        UpdateSelectionBox();
    else if (active_brush_template == BT_CUSTOM && !prefab_choice.brushes_selected)
        PlacePrefab();
    else
        AddBrushToWorld(NewShape(active_brush_segments, selection_box));
}

// As one step, with or without full undo: a wrong prefab is nothing to delete object by object.
void CInterface::PlacePrefab() {
    std::string error;
    if (world->PlacePrefab(active_custom_brush, selection_pivot, materials, *entity_parser, error)) {
        auto creation = std::make_unique<CUndoActionCreate>();
        for (const int b : world->brush_selection)
            creation->AddObject(*world->brush[static_cast<size_t>(b)], *world);
        for (const int e : world->entity_selection)
            creation->AddObject(*world->entity[static_cast<size_t>(e)], *world);
        world->AddUndoAction(std::move(creation));
        MarkDirty();
    } else
        GetDesktop().Notice(error);
    SelectionChanged();
    UpdateSelectionBox();
    SetSizeText();
    RedrawAllViews();
}

void CInterface::DeselectWithUndo() {
    if (settings.full_undo)
        AddDeselection();
    world->ClearSelection();
}

BrushShape CInterface::NewShape(uint32_t segments, const Box& box) const {
    BrushShape shape;
    shape.type = active_brush_template;
    shape.bb = box;
    shape.pivot = CreatePivot(box);
    shape.color = active_brush_color;
    shape.segment_count = segments;
    shape.view = static_cast<uint32_t>(active_view);
    shape.custom = active_custom_brush;
    return shape;
}

void CInterface::AddBrushToWorld(const BrushShape& shape) {
    if (world->CreateBrush(shape))
        MarkDirty();
    UpdateSelectionBox();
    SetCountText();
    RedrawAllViews();
}

D3DVECTOR CInterface::OutlinePoint() const {
    D3DVECTOR point = world_position;
    switch (active_view) {
    case VIEW_TOP:
        point.y = selection_box[0].y;
        break;
    case VIEW_FRONT:
        point.z = selection_box[3].z;
        break;
    case VIEW_LEFT:
        point.x = selection_box[1].x;
        break;
    default:
        break;
    }
    return point;
}

void CInterface::StartExtrudableCreation() {
    if (active_view == VIEW_PERSPECTIVE)
        return; // an outline needs a plane
    editor_state = ES_EXTRUDABLE;
    mouse_release = false;
    ex_point.assign(2, OutlinePoint());
}

void CInterface::DragExtrudableLine() {
    if (!ex_point.empty() && active_view != VIEW_PERSPECTIVE)
        ex_point.back() = OutlinePoint();
}

static bool OutlineCrosses(const std::vector<D3DVECTOR>& plane) {
    for (size_t a = 0; a + 1 < plane.size(); ++a)
        for (size_t b = a + 1; b + 1 < plane.size(); ++b)
            if (s_math.LineIntersect2d(plane[a], plane[b], plane[a + 1] - plane[a], plane[b + 1] - plane[b]))
                return true;
    return false;
}

static float OutlineArea(const std::vector<D3DVECTOR>& plane) {
    float doubled = 0;
    for (size_t a = 0; a + 1 < plane.size(); ++a)
        doubled += plane[a].x * plane[a + 1].y - plane[a + 1].x * plane[a].y;
    return std::fabs(doubled) / 2;
}

void CInterface::NextExtrudableSegment() {
    const D3DVECTOR last = ex_point.back();
    if (std::find(ex_point.begin() + 1, ex_point.end() - 1, last) != ex_point.end() - 1)
        return;
    std::vector<D3DVECTOR> plane;
    for (const D3DVECTOR& p : ex_point)
        plane.push_back(OnPlane(active_view, p));
    if (OutlineCrosses(plane))
        return;
    if (last == ex_point.front()) {
        CloseOutline(std::move(plane));
        return;
    }
    if (ex_point.size() >= MAX_EX_POINTS)
        return;
    ex_point.push_back(last);
    RedrawView(active_view);
}

void CInterface::CloseOutline(std::vector<D3DVECTOR> plane) {
    if (OutlineArea(plane) == 0) // a click on the first point alone, or points in one line
        return;
    plane.pop_back();
    Box box = selection_box;
    MakeBBoxForExtrudable(box);
    BrushShape shape = NewShape(static_cast<uint32_t>(plane.size()), box);
    shape.ex_points = std::move(plane);
    if (Brush(shape).surfaces.empty()) // the outline runs back over itself
        return;
    mouse_release = true;
    ex_point.pop_back();
    selection_box = box;
    selection_pivot = shape.pivot;
    DeselectWithUndo();
    AddBrushToWorld(shape);
}

void CInterface::MakeBBoxForExtrudable(Box& box) const {
    D3DVECTOR min = ex_point.front(), max = min;
    for (const D3DVECTOR& p : ex_point)
        for (int axis = 0; axis < 3; ++axis) {
            Component(min, axis) = std::min(Component(min, axis), Component(p, axis));
            Component(max, axis) = std::max(Component(max, axis), Component(p, axis));
        }
    const int missing = MissingAxis(active_view);
    const float far_side = Component(box[4], missing);
    Component(min, missing) = std::min(Component(min, missing), far_side);
    Component(max, missing) = std::max(Component(max, missing), far_side);
    box = MakeBox(min, max);
}
