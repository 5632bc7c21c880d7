// What the buttons and the moves of the mouse mean, by the state of the editor.
#include "editor/Interface.h"

namespace {

bool Held(uint32_t held_keys, MouseFlag flag) { return (held_keys & flag) != 0; }

bool IsAltDown() { return GetDesktop().IsKeyDown(HeldKey::Alt); }

// Of the left button; that of a rectangle may be the right one's, too.
bool IsDrag(EditorState state) {
    return state == ES_CREATE_BRUSH || state == ES_EDIT || state == ES_ROTATE || state == ES_VERTEX_MOVE ||
           state == ES_DRAG_SELECT;
}

} // namespace

// A button that is released while another one pans ends the drag that goes on below.
template <class Fn>
void CInterface::BelowPan(Fn&& release) {
    if (editor_state != ES_PAN) {
        release();
        return;
    }
    editor_state = old_editor_state;
    release();
    old_editor_state = editor_state;
    editor_state = ES_PAN;
}

// Left button ---------------------------------------------------------------------------------------------------------

void CInterface::TakeButtonPress(POINT point) {
    SetPositionText(point);
    starting_mouse_point = world_position;
}

// A drag of objects that is under way keeps the sides it has grabbed.
bool CInterface::CanEditBounds() const {
    return edit_cordon_bounds && active_view != VIEW_PERSPECTIVE && editor_state != ES_EDIT;
}

void CInterface::MouseLeftButtonDown(uint32_t held_keys, POINT point) {
    left_button_pressed = true;
    TakeButtonPress(point);
    LeftButtonDown(held_keys, point);
    SettleState();
}

void CInterface::LeftButtonDown(uint32_t held_keys, POINT point) {
    const bool shift = Held(held_keys, MOUSE_SHIFT), control = Held(held_keys, MOUSE_CONTROL);
    const bool perspective = active_view == VIEW_PERSPECTIVE;
    if (editing_cordon_box)
        return;
    if (perspective && editor_state == ES_TERRAIN && shift) {
        ModifyTerrain(point, true);
    } else if (perspective && editor_state == ES_DECAL) {
        DecalLeftButton(shift, control, IsAltDown(), point);
    } else if (CanEditBounds() && clip_active) {
        editing_clip_box = true;
        StartEditCordon(point);
    } else if (perspective && editor_state == ES_PICK_TEXTURE) {
        SetMatrices(VIEW_PERSPECTIVE);
        world->PickTexture(point, EyePosition());
        editor_state = old_editor_state;
    } else if (!perspective && IsAltDown() && !GetDesktop().IsShiftDown()) {
        MoveCameraToMouse(point);
    } else if (shift && perspective) {
        make_multi_selection = control || multi_selection;
        if (editor_state == ES_VERTEX)
            SelectSOVertex(point);
        else
            Select(point, true);
    } else if (movie_editing && control && !shift) {
        if (PlacePathPoint(NewEntityFromTemplate("object_point"), true))
            MarkDirty();
    } else if (!control && perspective && editor_state == ES_VERTEX) {
        if (selected_cross_vertex == -1)
            return;
        last_world_position = GetCrossPlaneIntersection(point);
        StartVertexMove();
    } else if (control && perspective) {
        SelectSurface(point);
    } else
        LeftButtonDownByState(shift, control, point);
}

void CInterface::LeftButtonDownByState(bool shift, bool control, POINT point) {
    const bool can_drag_select = editor_state == ES_IDLE || editor_state == ES_SELECTED || editor_state == ES_VERTEX;
    if (shift && can_drag_select) {
        make_multi_selection = control || multi_selection;
        StartMultiSelection();
        return;
    }
    switch (editor_state) {
    case ES_IDLE:
        if (active_brush_template == BT_EXTRUDABLE)
            StartExtrudableCreation();
        else
            StartBrushCreation();
        break;
    case ES_SELECTED:
        original_world_position = world_position;
        StartEdit(point);
        break;
    case ES_EXTRUDABLE:
        NextExtrudableSegment();
        break;
    case ES_ROTATE_ARMED:
        tmp_rotate = 0;
        editor_state = ES_ROTATE;
        selection_box_active = false;
        break;
    case ES_VERTEX:
        if (active_view != VIEW_PERSPECTIVE) {
            original_world_position = last_world_position = world_position;
            StartVertexMove();
        }
        break;
    default:
        break;
    }
}

void CInterface::StartVertexMove() {
    editor_state = ES_VERTEX_MOVE;
    tmp_move = {};
}

// Takes the two coordinates of the perspective camera that the view covers from the mouse.
void CInterface::MoveCameraToMouse(POINT point) {
    last_position = point;
    const D3DVECTOR mouse = GetWorldMousePosition();
    D3DVECTOR& camera = views.perspective.camera_position;
    const D3DVECTOR before = camera;
    camera = mouse;
    Component(camera, MissingAxis(active_view)) = Component(before, MissingAxis(active_view));
    RedrawAllViews();
}

void CInterface::MouseLeftButtonUp(uint32_t held_keys, POINT point) {
    left_button_pressed = false;
    if (!right_button_pressed)
        EndTerrainStroke();
    BelowPan([&] { LeftButtonUp(held_keys, point); });
    SettleState();
}

void CInterface::LeftButtonUp(uint32_t held_keys, POINT point) {
    if (editing_clip_box) {
        editing_clip_box = false;
        const ChangeRecord record(*world, "Hide objects.", ChangeScope::AllObjects);
        world->BoxHide(views.clip_box);
        UpdateSelectionBox();
        RedrawAllViews();
        return;
    }
    switch (editor_state) {
    case ES_CREATE_BRUSH:
        CreateBrush();
        if (settings.show_sel_wire)
            RebuildSelectionNet();
        RedrawAllViews();
        break;
    case ES_EDIT:
        if (edit_state == 0 && !settings.full_undo)
            world->AddUndoAction(std::make_unique<CUndoActionMove>(tmp_move, false));
        tmp_move = {};
        EndDragRecord();
        editor_state = ES_SELECTED;
        RedrawAllViews();
        break;
    case ES_ROTATE:
        editor_state = ES_ROTATE_ARMED;
        if (!settings.full_undo)
            world->AddUndoAction(std::make_unique<CUndoActionRotate>(tmp_rotate, active_view));
        tmp_rotate = 0;
        EndDragRecord();
        if (world->entity_selection.GetItemCount() > 0)
            SelectionChanged(); // the page of entities shows the orientation
        selection_box_active = true;
        RedrawAllViews();
        break;
    case ES_DRAG_SELECT:
        MultiSelect(point, true, IsAltDown());
        break;
    case ES_VERTEX:
        if (drag_box_active && Held(held_keys, MOUSE_SHIFT))
            SOVertexMultiSelect(point);
        else
            DropDragBox();
        break;
    case ES_VERTEX_MOVE:
        editor_state = ES_VERTEX;
        if (!settings.full_undo)
            world->AddUndoAction(std::make_unique<CUndoActionMove>(tmp_move, true));
        tmp_move = {};
        EndDragRecord();
        break;
    default:
        break;
    }
}

void CInterface::DropDragBox() {
    if (!drag_box_active)
        return;
    drag_box_active = false;
    RedrawView(active_view);
}

void CInterface::FinishDrag() {
    EndTerrainStroke();
    if (editor_state == ES_PAN)
        ResetEditorState();
    if (editor_state == ES_DRAG_SELECT)
        MultiSelect(last_position, left_button_pressed, IsAltDown());
    else if (IsDrag(editor_state))
        LeftButtonUp(0, last_position);
    else
        DropDragBox();
    EndDragRecord(); // of decals
}

// Right button --------------------------------------------------------------------------------------------------------

void CInterface::MouseRightButtonDown(uint32_t held_keys, POINT point) {
    right_button_pressed = true;
    TakeButtonPress(point);
    RightButtonDown(held_keys, point);
    SettleState();
}

void CInterface::RightButtonDown(uint32_t held_keys, POINT point) {
    const bool shift = Held(held_keys, MOUSE_SHIFT), control = Held(held_keys, MOUSE_CONTROL);
    const bool perspective = active_view == VIEW_PERSPECTIVE;
    if (perspective && editor_state == ES_TERRAIN && shift) {
        ModifyTerrain(point, false);
        return;
    }
    if (editing_clip_box)
        return;
    if (movie_editing && control && !shift) {
        MarkDirty();
        Entity* const placed = PlacePathPoint(NewEntityFromTemplate("target_point"), true);
        if (placed && !settings.full_undo)
            AddCreationToUndo(*placed);
    } else if (editor_state == ES_EXTRUDABLE) {
        left_button_pressed = false;
        mouse_release = true;
        shearing = false; // else only that would be cancelled
        editor_state = ES_SELECTED;
        Cancel();
        RedrawAllViews();
    } else if (CanEditBounds() && cordon_active) {
        editing_cordon_box = true;
        StartEditCordon(point);
    } else if (shift) {
        make_multi_selection = control || multi_selection;
        if (!perspective) {
            StartMultiSelection();
            return;
        }
        EndDragRecord();
        SetMatrices(VIEW_PERSPECTIVE);
        world->EntityPointSelection(MakePickRequest(point));
        UpdateSelectionBox();
        RedrawAllViews();
    } else if (movie_editing || !control) {
        if (editor_state != ES_IDLE)
            Cancel();
    } else
        PlaceEntity();
}

void CInterface::MouseRightButtonUp(uint32_t, POINT point) {
    right_button_pressed = false;
    if (!left_button_pressed)
        EndTerrainStroke();
    if (editing_cordon_box) {
        editing_cordon_box = false;
        RedrawOrthoViews();
    } else
        BelowPan([&] {
            if (editor_state == ES_DRAG_SELECT)
                MultiSelect(point, false, IsAltDown());
            else if (editor_state == ES_VERTEX)
                DropDragBox(); // entities have no vertices
        });
    SettleState();
}

// Moves ---------------------------------------------------------------------------------------------------------------

void CInterface::MouseMove(uint32_t, POINT point) {
    SetPositionText(point);
    mouse_point = world_position;
    MouseMoveByState(point);
    last_position = point;
    last_world_position = world_position;
}

void CInterface::MouseMoveByState(POINT point) {
    const bool perspective = active_view == VIEW_PERSPECTIVE;
    if (editing_cordon_box || editing_clip_box) {
        EditCordon();
        return;
    }
    if (perspective && editor_state == ES_TERRAIN) {
        if (left_button_pressed || right_button_pressed)
            ModifyTerrain(point, left_button_pressed);
        else
            RedrawView(VIEW_PERSPECTIVE);
        return;
    }
    if (perspective && editor_state == ES_VERTEX) {
        TestCrossEdgeSelection(point);
        return;
    }
    if (perspective && editor_state == ES_VERTEX_MOVE) {
        MoveSOVertexInPerspective(point);
        return;
    }
    switch (editor_state) {
    case ES_PAN:
        PanView(point, ActiveView());
        break;
    case ES_CREATE_BRUSH:
        DragCreationBox();
        break;
    case ES_EDIT:
        Edit();
        if (settings.show_sel_wire)
            RebuildSelectionNet();
        break;
    case ES_EXTRUDABLE:
        DragExtrudableLine();
        RedrawView(active_view);
        break;
    case ES_ROTATE:
        Rotate(point);
        if (settings.show_sel_wire)
            RebuildSelectionNet();
        break;
    case ES_DRAG_SELECT:
    case ES_VERTEX:
        DragSelectionBox();
        break;
    case ES_VERTEX_MOVE:
        SOVertexMove();
        break;
    default:
        break;
    }
}
