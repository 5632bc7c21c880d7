// Moving, resizing, shearing and rotating the selection, and what ends or repeats such steps.
#include <algorithm>
#include <cmath>

#include "editor/Interface.h"
#include "foundation/Strings.h"
#include "render/Device.h"
#include "render/Matrix.h"

namespace {

constexpr float NO_MOVE = 0.00001f; // a smaller component counts as none
constexpr float LEAST_STEP = 1.0f;  // a smaller aligned step gets the mouse's own added
constexpr int MOST_COPIES = 30000;

struct ScreenBox {
    float left = 0, top = 0, right = 0, bottom = 0; // client pixels
};

// The corners of a box whose pixels are its sides, by view.
constexpr size_t SIDE_CORNERS[3][4] = {{3, 0, 2, 3}, {3, 3, 2, 4}, {3, 3, 0, 4}};

ScreenBox ProjectBox(const Box& box, int view) {
    D3DMATRIX to_clip;
    crMMultiply(crvMatrices[CRM_VIEW], crvMatrices[CRM_PROJ], to_clip);
    const auto project = [&](size_t corner, float& x, float& y) {
        VECTOR4 p;
        crMTransform4(to_clip, {box[corner].x, box[corner].y, box[corner].z, 1}, p);
        x = (p.x + 1) * static_cast<float>(crvViewportW) * 0.5f / p.w;
        y = static_cast<float>(crvViewportH) - (p.y + 1) * static_cast<float>(crvViewportH) * 0.5f / p.w;
    };
    ScreenBox screen;
    float ignored;
    const size_t* corners = SIDE_CORNERS[view];
    project(corners[0], screen.left, ignored);
    project(corners[1], ignored, screen.top);
    project(corners[2], screen.right, ignored);
    project(corners[3], ignored, screen.bottom);
    return screen;
}

// The corner that goes ahead of a move, by the signs of the view's two axes: both up, a up, b up, none.
const D3DVECTOR& LeadingCorner(const Box& box, int view, const D3DVECTOR& delta) {
    constexpr size_t CORNERS[3][4] = {{1, 2, 0, 3}, {2, 6, 3, 7}, {1, 5, 6, 2}};
    const float a = view == VIEW_LEFT ? delta.z : delta.x, b = view == VIEW_TOP ? delta.z : delta.y;
    return box[CORNERS[view][(a >= 0 ? 0 : 2) + (b >= 0 ? 0 : 1)]];
}

void MoveBox(Box& box, const D3DVECTOR& move) {
    for (D3DVECTOR& corner : box)
        corner += move;
}

} // namespace

uint32_t CInterface::GrabbedSides(const Box& box, POINT point) {
    SetMatrices(active_view);
    if (active_view == VIEW_PERSPECTIVE)
        return 0;
    const ScreenBox screen = ProjectBox(box, active_view);
    const float x = static_cast<float>(point.x), y = static_cast<float>(point.y);
    return (x < screen.left ? EDGE_LEFT : 0u) | (y < screen.top ? EDGE_TOP : 0u) |
           (x > screen.right ? EDGE_RIGHT : 0u) | (y > screen.bottom ? EDGE_BOTTOM : 0u);
}

void CInterface::StartEdit(POINT point) {
    edit_state = 0;
    editor_state = ES_EDIT;
    last_world_position = world_position;
    tmp_move = {};
    if (world->entity_selection.GetItemCount() > 0)
        return; // a selection that holds entities is moved whole
    edit_state = GrabbedSides(selection_box, point);
}

void CInterface::BeginDragRecord(const char* description) {
    if (settings.full_undo && !drag_record)
        drag_record = std::make_unique<ChangeRecord>(*world, description);
}

void CInterface::EndDragRecord() {
    drag_record.reset();
    if (!settings.full_undo)
        return;
    tmp_move = {}; // what follows of the drag is another step
    tmp_rotate = 0;
}

D3DVECTOR CInterface::AlignToGrid(const D3DVECTOR& reference, const D3DVECTOR& delta) const {
    const float grid = static_cast<float>(grid_size);
    D3DVECTOR aligned = delta;
    for (int axis = 0; axis < 3; ++axis) {
        const float d = Component(delta, axis);
        float& result = Component(aligned, axis);
        if (std::fabs(d) > NO_MOVE) {
            const float r = std::fmod(Component(reference, axis), grid);
            if (std::fabs(r) > NO_MOVE)
                result = d >= 0 ? (r < 0 ? -r : grid - r) : (r >= 0 ? -r : -(grid + r));
        }
        if (std::fabs(result) < LEAST_STEP)
            result += d;
    }
    return aligned;
}

// The delta of a drag, aligned to the grid at a corner; 0 in the axis that the view does not cover.
D3DVECTOR CInterface::AlignedDelta(const D3DVECTOR& reference, const D3DVECTOR& delta) const {
    D3DVECTOR aligned = AlignToGrid(reference, delta);
    if (active_view != VIEW_PERSPECTIVE)
        Component(aligned, MissingAxis(active_view)) = 0;
    return aligned;
}

// Moves the grabbed sides; none may reach the opposite one.
Box CInterface::ResizedBox(const Box& box, const D3DVECTOR& delta) const {
    const float grid = static_cast<float>(grid_size);
    D3DVECTOR min = BoxMin(box), max = BoxMax(box);
    const D3DVECTOR low_step = AlignedDelta(box[7], delta), high_step = AlignedDelta(box[1], delta);
    const auto move_low = [&](int axis) {
        float& side = Component(min, axis);
        side += Component(low_step, axis);
        if (side >= Component(max, axis))
            side = Component(max, axis) - grid;
    };
    const auto move_high = [&](int axis) {
        float& side = Component(max, axis);
        side += Component(high_step, axis);
        if (side <= Component(min, axis))
            side = Component(min, axis) + grid;
    };
    // By view, the axis that runs across the screen and the one that runs up.
    const int across = active_view == VIEW_LEFT ? 2 : 0, up = active_view == VIEW_TOP ? 2 : 1;
    if (edit_state & EDGE_LEFT)
        move_low(across);
    if (edit_state & EDGE_TOP)
        move_high(up);
    if (edit_state & EDGE_RIGHT)
        move_high(across);
    if (edit_state & EDGE_BOTTOM)
        move_low(up);
    return MakeBox(min, max);
}

void CInterface::Edit() {
    const D3DVECTOR delta = world_position - last_world_position;
    if (delta == D3DVECTOR{} || active_view == VIEW_PERSPECTIVE)
        return;
    if (edit_state == 0)
        MoveSelection(AlignedDelta(LeadingCorner(selection_box, active_view, delta), delta));
    else if (shearing)
        ShearSelection(delta);
    else if (!GetDesktop().IsKeyDown(HeldKey::Control))
        ResizeSelection(ResizedBox(selection_box, delta));
    selection_pivot = CreatePivot(selection_box);
    RedrawView(active_view);
    SetSizeText();
    MarkDirty();
}

void CInterface::ResizeSelection(const Box& resized) {
    BeginDragRecord("Scale objects.");
    world->ScaleBrush(resized, selection_box);
    selection_box = resized;
}

void CInterface::MoveSelection(D3DVECTOR move) {
    BeginDragRecord("Move objects.");
    MoveBox(selection_box, move);
    tmp_move -= move;
    world->MoveEntity(move);
    world->MoveBrush(move);
}

void CInterface::ShearSelection(const D3DVECTOR& delta) {
    BeginDragRecord("Shear objects.");
    Box sheared = selection_box;
    const D3DVECTOR step = AlignToGrid(sheared[1], delta);
    const auto move_corners = [&](std::initializer_list<size_t> corners, int axis) {
        for (const size_t corner : corners)
            Component(sheared[corner], axis) += Component(step, axis);
    };
    int edge = 0;
    if (edit_state & (EDGE_TOP | EDGE_BOTTOM)) {
        if (active_view == VIEW_LEFT)
            move_corners({0, 1, 4, 5}, 2);
        else
            move_corners({1, 2, 5, 6}, 0);
        edge = edit_state & EDGE_BOTTOM ? 2 : 0;
    } else {
        if (active_view == VIEW_TOP)
            move_corners({0, 1, 4, 5}, 2);
        else
            move_corners({0, 1, 2, 3}, 1);
        edge = edit_state & EDGE_RIGHT ? 1 : 3;
    }
    world->ShearBrush(sheared, selection_box, active_view, edge);
    world->ComputeSelectionBox(selection_box);
}

void CInterface::StartEditCordon(POINT point) {
    edit_state = GrabbedSides(editing_cordon_box ? views.cordon_box : views.clip_box, point);
    last_world_position = world_position;
}

void CInterface::EditCordon() {
    const D3DVECTOR delta = world_position - last_world_position;
    if (delta == D3DVECTOR{} || active_view == VIEW_PERSPECTIVE)
        return;
    Box& box = editing_cordon_box ? views.cordon_box : views.clip_box;
    if (edit_state == 0)
        MoveBox(box, AlignedDelta(LeadingCorner(box, active_view, delta), delta));
    else
        box = ResizedBox(box, delta);
    RedrawView(active_view);
}

void CInterface::Rotate(POINT point) {
    if (active_view == VIEW_PERSPECTIVE)
        return;
    const float angle = static_cast<float>(rotation_grid_size) * DEGREE_TO_TURN * TWO_PI *
                        static_cast<float>(int64_t{last_position.y} - point.y);
    BeginDragRecord("Rotate objects.");
    tmp_rotate -= angle;
    world->RotateBrush(angle, active_view);
    RefreshSelectionBox();
    RedrawView(active_view);
    SetSizeText();
    MarkDirty();
}

void CInterface::RotateBrush(float angle) {
    if (active_view == VIEW_PERSPECTIVE)
        return;
    EndDragRecord();
    const ChangeRecord record(*world, "Rotate objects.");
    world->RotateBrush(angle, active_view);
    if (world->entity_selection.GetItemCount() > 0)
        SelectionChanged(); // the page of entities shows the range or the orientation
    RefreshSelectionBox();
    if (settings.show_sel_wire)
        RebuildSelectionNet();
    RedrawAllViews();
    SetSizeText();
    MarkDirty();
}

void CInterface::CreatePivotForSelection() {
    RefreshSelectionBox();
    RedrawAllViews();
}

void CInterface::Cancel() {
    if (editor_state != ES_EDIT || !shearing) // which goes on
        EndDragRecord();
    CancelByState();
    GetDesktop().CaptureMouse(false);
    if (settings.show_sel_wire && editor_state != ES_VERTEX && editor_state != ES_VERTEX_MOVE) {
        world->DestroySOVertices();
        selected_cross_vertex = -1;
        RedrawAllViews();
    }
}

void CInterface::CancelByState() {
    switch (editor_state) {
    case ES_IDLE:
        world->DeselectSurface();
        RedrawView(VIEW_PERSPECTIVE);
        break;
    case ES_CREATE_BRUSH:
        selection_box_active = false;
        editor_state = ES_IDLE;
        mouse_release = true;
        RedrawAllViews();
        ChangeCursor();
        break;
    case ES_SELECTED:
    case ES_EDIT:
        CancelSelection();
        break;
    case ES_ROTATE_ARMED:
    case ES_ROTATE:
        editor_state = ES_SELECTED;
        selection_box_active = true;
        ChangeCursor();
        RedrawAllViews();
        break;
    case ES_DECAL:
        if (world->decal_selection.GetItemCount() > 0) {
            world->decal_selection.ClearList();
            RedrawView(VIEW_PERSPECTIVE);
            break;
        }
        [[fallthrough]];
    case ES_PICK_TEXTURE:
        LeaveMode();
        ChangeCursor();
        break;
    case ES_DRAG_SELECT:
        drag_box_active = false;
        editor_state = ES_IDLE;
        mouse_release = true;
        RedrawAllViews();
        ChangeCursor();
        break;
    case ES_VERTEX:
        CancelVertices();
        break;
    case ES_TERRAIN:
        EndTerrainStroke();
        ResetEditorState();
        ChangeCursor();
        RedrawView(VIEW_PERSPECTIVE);
        Tell(&EditorListener::TerrainToolChanged);
        break;
    default:
        break;
    }
}

void CInterface::CancelSelection() {
    if (shearing) {
        if (editor_state == ES_SELECTED) {
            shearing = false;
            ChangeCursor();
        }
        return;
    }
    selection_box_active = false;
    editor_state = ES_IDLE;
    AddDeselection();
    world->ClearSelection();
    mouse_release = true;
    RedrawAllViews();
    SetSizeText();
    ChangeCursor();
}

void CInterface::AddDeselection() {
    auto deselected = std::make_unique<CUndoActionDeselect>(false);
    world->AddSelectionToUndo(*deselected);
    world->AddUndoAction(std::move(deselected));
}

void CInterface::CancelVertices() {
    const auto is_marked = [](const auto& item) { return item.selected; };
    if (std::any_of(world->so_vertex.begin(), world->so_vertex.end(), is_marked) ||
        std::any_of(world->so_edge.begin(), world->so_edge.end(), is_marked)) {
        for (SO_VERTEX& vertex : world->so_vertex)
            vertex.selected = false;
        for (SO_EDGE& edge : world->so_edge)
            edge.selected = false;
        RedrawAllViews();
        return;
    }
    world->DestroySOVertices();
    selected_cross_vertex = -1;
    editor_state = ES_SELECTED;
    selection_box_active = true;
    ChangeCursor();
    RedrawAllViews();
}

int CInterface::AskCopyCount() {
    FormQuestion question{"Copy", {{"Copy count", FormField::Number, "1", 1, MOST_COPIES, 5, {}}}};
    return GetDesktop().AskForm(question) ? std::atoi(question.fields[0].value.c_str()) : 0;
}

// False when a table is full, which has been said.
bool CInterface::PlaceClones(const D3DVECTOR& step) {
    const int before = world->GetBrushCount() + world->GetEntityCount();
    world->Clone(ignore_groups);
    if (world->GetBrushCount() + world->GetEntityCount() == before)
        return false;
    world->MoveBrush(step);
    world->MoveEntity(step);
    return true;
}

void CInterface::Clone() {
    const bool dragging = editor_state == ES_EDIT && edit_state == 0;
    if (shearing || (editor_state != ES_SELECTED && !dragging) || !world->IsSomethingSelected())
        return;
    const float g = static_cast<float>(grid_size);
    D3DVECTOR step = active_view == VIEW_FRONT  ? D3DVECTOR{g, -g, 0}
                     : active_view == VIEW_LEFT ? D3DVECTOR{0, -g, g}
                                                : D3DVECTOR{g, 0, -g};
    int copies = 1;
    if (dragging) { // the selection goes back to its start, and each copy lies one drag further
        step = world_position - original_world_position;
        copies = AskCopyCount();
        MoveSelection(tmp_move);
        tmp_move = {};
        drag_record.reset();
        original_world_position = last_world_position = world_position;
        editor_state = ES_SELECTED; // the dialog took the button's release
        GetDesktop().CaptureMouse(false);
    }
    int placed = 0;
    {
        const ChangeRecord record(*world, "Clone objects.");
        while (placed < copies && PlaceClones(step))
            ++placed;
    }
    RefreshSelectionBox();
    RedrawAllViews();
    if (placed == 0)
        return;
    selection_box_active = true;
    SetSizeText();
    SetCountText();
    MarkDirty();
}

void CInterface::DeleteSelection() {
    if (editor_state == ES_VERTEX || editor_state == ES_VERTEX_MOVE)
        return;
    if (editor_state == ES_DECAL) {
        DeleteDecals();
        return;
    }
    EndDragRecord();
    const bool something = world->IsSomethingSelected() || world->selected_surface_brush != -1;
    if (settings.undo_states != 0 && world->selected_surface_brush == -1) {
        auto deleted = std::make_unique<CUndoActionDelete>();
        world->AddSelectionToUndo(*deleted);
        world->AddUndoAction(std::move(deleted));
    }
    const int groups = world->GetGroupCount();
    {
        const bool of_surface = world->selected_surface_brush != -1;
        ChangeRecord record(*world, of_surface ? "Remove materials." : "Dissolve groups of one.",
                            of_surface ? ChangeScope::AllObjects : ChangeScope::Added);
        if (something && !of_surface)
            record.Discard(); // a deletion has its own step
        world->DeleteSelection();
    }
    selection_box_active = drag_box_active = false;
    mouse_release = true;
    editor_state = ES_IDLE;
    ChangeCursor();
    SetCountText();
    RedrawAllViews();
    Cancel();
    if (something || world->GetGroupCount() != groups)
        MarkDirty();
    if (world->IsSomethingSelected()) // the owner of a deleted path point
        UpdateSelectionBox();
    if (settings.show_sel_wire) {
        world->DestroySOVertices();
        selected_cross_vertex = -1;
    }
}
