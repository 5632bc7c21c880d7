#include "commands/Views.h"

namespace {

constexpr float RADIANS_A_DEGREE = 0.017453294f;
constexpr int QUARTER_TURN = 90; // degrees

bool IsAlone(const World& level) {
    return level.brush_selection.GetItemCount() > 0 && level.entity_selection.GetItemCount() == 0;
}

} // namespace

void CEditorView::Activate() {
    const int old_view = interface.active_view;
    if (old_view == view)
        return;
    interface.SetActiveView(view);
    interface.RedrawView(old_view);
    interface.RedrawView(view);
}

void COrthographicView::OnMouseMove(uint32_t flags, POINT point) {
    Activate();
    interface.MouseMove(flags, point);
}

void COrthographicView::OnMouseWheel(uint32_t flags, int delta) {
    Activate();
    if (flags & MOUSE_CONTROL) {
        const int degrees = flags & MOUSE_SHIFT ? QUARTER_TURN : interface.settings.rotation_angle;
        const float angle = static_cast<float>(degrees) * RADIANS_A_DEGREE;
        interface.RotateBrush(delta < 0 ? -angle : angle);
    } else if (flags & MOUSE_SHIFT)
        interface.GridSize(delta);
    else
        interface.ZoomView(delta);
}

void COrthographicView::OnLButtonDown(uint32_t flags, POINT point) {
    Activate();
    CaptureMouse();
    interface.MouseLeftButtonDown(flags, point);
    interface.ChangeCursor();
}

void COrthographicView::OnLButtonUp(uint32_t flags, POINT point) {
    if (interface.MouseRelease())
        ReleaseMouse();
    interface.MouseLeftButtonUp(flags, point);
    interface.ChangeCursor();
}

void COrthographicView::OnMButtonDown(uint32_t flags, POINT point) {
    Activate();
    if (flags & MOUSE_CONTROL) {
        interface.FlipHorizontally();
        return;
    }
    if (flags & MOUSE_SHIFT) {
        if (!IsAlone(*interface.world))
            return;
        interface.FinishDrag();
        interface.SetEditorState(ES_EDIT);
        interface.edit_state = 0;
        interface.tmp_move = {};
        interface.SetPositionText(point);
        interface.original_world_position = interface.last_world_position = interface.world_position;
    } else
        interface.SetEditorState(ES_PAN);
    middle_pushed = true;
    interface.ChangeCursor();
    CaptureMouse();
    interface.last_position = point;
}

// Ctrl counts when the button goes down: one that is pressed on the way leaves nobody scrolling without a button.
void COrthographicView::OnMButtonUp(uint32_t, POINT point) {
    if (!middle_pushed)
        return;
    middle_pushed = false;
    if (interface.editor_state == ES_EDIT) {
        interface.EndDragRecord();
        interface.ResetEditorState();
        interface.editor_state = ES_SELECTED;
        interface.RedrawAllViews();
    } else if (interface.editor_state == ES_PAN)
        interface.ResetEditorState();
    interface.ChangeCursor();
    ReleaseMouse();
    interface.last_position = point;
}

void COrthographicView::OnRButtonDown(uint32_t flags, POINT point) {
    Activate();
    interface.MouseRightButtonDown(flags, point);
}

void COrthographicView::OnRButtonUp(uint32_t flags, POINT point) { interface.MouseRightButtonUp(flags, point); }
