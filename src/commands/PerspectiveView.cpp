// The camera of the perspective view: turned and flown by the mouse, or on an orbit about a centre.
#include <algorithm>
#include <cmath>

#include "commands/Views.h"
#include "foundation/Quaternion.h"
#include "foundation/Strings.h"
#include "pages/LibraryPages.h"
#include "render/DisplayScale.h"
#include "render/Matrix.h"

namespace {

constexpr float UNITS_A_PIXEL = 1.5f;     // of the desktop, in a flight
constexpr float RADIANS_A_PIXEL = 0.005f; // in a turn
constexpr float STEEPEST = 1.553343f;     // 89 degrees: elevation of the free camera
constexpr float HALF_PI = PI / 2;         // elevation of the orbit
constexpr float ORBIT_STEP = 0.03490659f; // 2 degrees
constexpr float WHEEL_STEP = 64.0f;       // world units
constexpr float DECAL_TURN = 5.0f;        // degrees, of a wheel notch
constexpr float WIDE_STEP = 2.0f, FINE_STEP = 0.25f;
constexpr float CENTER_AHEAD = 512.0f; // of an orbit with nothing to turn about

float WrappedAngle(float angle) { return angle > PI ? angle - TWO_PI : angle < -PI ? angle + TWO_PI : angle; }

// Elevation and azimuth of a unit vector against +Z.
void AnglesOf(const D3DVECTOR& n, float& elevation, float& azimuth) {
    azimuth = std::atan2(n.x, n.z);
    elevation = std::atan2(n.y, std::sqrt(n.x * n.x + n.z * n.z));
}

} // namespace

void CPerspectiveView::OnLButtonDown(uint32_t flags, POINT point) {
    Activate();
    const bool control = flags & MOUSE_CONTROL;
    const bool decal_drag = interface.editor_state == ES_DECAL && (control || GetDesktop().IsKeyDown(HeldKey::Alt));
    if (!(flags & MOUSE_SHIFT) && interface.editor_state != ES_PICK_TEXTURE &&
        (!control || interface.editor_state == ES_VERTEX) && interface.selected_cross_vertex == -1 && !decal_drag) {
        camera_rotating = true;
        oldmouse = point;
    } else
        interface.MouseLeftButtonDown(flags, point);
    CaptureMouse();
}

void CPerspectiveView::OnLButtonUp(uint32_t flags, POINT point) {
    if (interface.selected_cross_vertex != -1) {
        if (interface.MouseRelease())
            ReleaseMouse();
        interface.MouseLeftButtonUp(flags, point);
        return;
    }
    interface.MouseLeftButtonUp(flags, point);
    camera_rotating = false;
    ReleaseMouse();
}

void CPerspectiveView::OnLButtonDblClk(uint32_t flags, POINT point) {
    Activate();
    const bool plain_mode = interface.editor_state != ES_VERTEX && interface.editor_state != ES_DECAL;
    if (!(flags & MOUSE_CONTROL) || (flags & MOUSE_SHIFT) || !plain_mode)
        return;
    interface.SelectSurface(point);
    pages.texture.RemapSurface(true, true);
    interface.shearing = false;
    interface.RedrawOrthoViews();
}

void CPerspectiveView::OnRButtonDown(uint32_t flags, POINT point) {
    Activate();
    if (interface.editor_state == ES_DECAL && GetDesktop().IsKeyDown(HeldKey::Alt)) {
        scaling_decals = true;
        oldmouse = point;
        CaptureMouse();
    } else if (flags & MOUSE_SHIFT) {
        interface.MouseRightButtonDown(flags, point);
        if (interface.editor_state == ES_TERRAIN)
            CaptureMouse(); // for the stroke
    } else if (flags & MOUSE_CONTROL) {
        const ChangeRecord record(*interface.world, "Copy a texture.", ChangeScope::AllObjects);
        interface.SetMatrices(VIEW_PERSPECTIVE);
        interface.world->CopySurfaceTexture(point, interface.EyePosition());
    } else {
        camera_moving = true;
        oldmouse = point;
        CaptureMouse();
    }
}

void CPerspectiveView::OnRButtonUp(uint32_t flags, POINT point) {
    interface.MouseRightButtonUp(flags, point);
    if (scaling_decals)
        interface.EndDragRecord();
    camera_moving = scaling_decals = false;
    ReleaseMouse();
}

void CPerspectiveView::OnMouseMove(uint32_t flags, POINT point) {
    if (scaling_decals) {
        interface.ScaleDecal(point.x - oldmouse.x, point.y - oldmouse.y);
        oldmouse = point;
        return;
    }
    Activate();
    if ((!camera_moving && !camera_rotating) || interface.selected_cross_vertex != -1) {
        interface.MouseMove(flags, point);
        return;
    }
    const int dx = point.x - oldmouse.x, dy = point.y - oldmouse.y;
    if (camera_moving && !interface.special_camera_rotation)
        FlyCamera(dx, dy);
    if (camera_rotating)
        TurnCamera(-dx, dy);
    oldmouse = point;
    interface.SetPositionText(point);
}

void CPerspectiveView::FlyCamera(int dx, int dy) {
    D3DVECTOR direction, normal, right;
    CInterface::ComputeCameraVectors(Info().camera_rotation, direction, normal, right);
    Info().camera_position -= normal * (static_cast<float>(dy) * UNITS_A_PIXEL / crvDisplayScale);
    Info().camera_position += right * (static_cast<float>(dx) * UNITS_A_PIXEL / crvDisplayScale);
    interface.RedrawView(view);
}

// dx: to the left
void CPerspectiveView::TurnCamera(int dx, int dy) {
    const float elevation = static_cast<float>(dy) * RADIANS_A_PIXEL / crvDisplayScale,
                azimuth = static_cast<float>(dx) * RADIANS_A_PIXEL / crvDisplayScale;
    if (interface.special_camera_rotation) {
        special_elevation = std::clamp(special_elevation + elevation, -HALF_PI, HALF_PI);
        special_azimuth = WrappedAngle(special_azimuth - azimuth);
        RotateCamera();
        return;
    }
    D3DVECTOR& rotation = Info().camera_rotation;
    rotation.x = std::clamp(rotation.x - elevation, -STEEPEST, STEEPEST);
    rotation.y += azimuth;
    interface.RedrawView(view);
}

void CPerspectiveView::OnMouseWheel(uint32_t flags, int delta) {
    Activate();
    if (interface.editor_state == ES_DECAL && GetDesktop().IsKeyDown(HeldKey::Alt)) {
        interface.RotateDecal(delta < 0 ? DECAL_TURN : -DECAL_TURN);
        return;
    }
    if (interface.editor_state == ES_TERRAIN && GetDesktop().IsKeyDown(HeldKey::Alt)) {
        interface.TurnTerrainWheel(delta > 0, flags & MOUSE_CONTROL);
        return;
    }
    const float k = flags & MOUSE_CONTROL ? FINE_STEP : flags & MOUSE_SHIFT ? WIDE_STEP : 1.0f;
    D3DVECTOR direction, normal, right;
    CInterface::ComputeCameraVectors(Info().camera_rotation, direction, normal, right);
    Info().camera_position += direction * (delta < 0 ? -WHEEL_STEP * k : WHEEL_STEP * k);
    if (interface.special_camera_rotation)
        PrepareSpecialRotation();
    interface.RedrawView(view);
    interface.SetPositionText(interface.last_position);
}

void CPerspectiveView::OnCameraRotation() {
    if (CenterCameraToEntity()) {
        interface.RedrawView(view);
        return;
    }
    interface.special_camera_rotation = !interface.special_camera_rotation;
    if (interface.special_camera_rotation) {
        PrepareSpecialRotation();
        RotateCamera();
    } else
        interface.RedrawView(view);
}

// The camera goes to a single selected camera or path point.
bool CPerspectiveView::CenterCameraToEntity() {
    const World& level = *interface.world;
    if (level.brush_selection.GetItemCount() != 0 || level.entity_selection.GetItemCount() != 1)
        return false;
    const Entity& e = *level.entity[static_cast<size_t>(level.entity_selection.GetItem(0))];
    if (!e.IsType("CAMERA") && !e.IsPathPoint())
        return false;
    Info().camera_position = e.position;
    return true;
}

// The middle of the selection, else the nearest surface ahead, else a point ahead.
D3DVECTOR CPerspectiveView::GetSpecialRotationCenter() {
    const World& level = *interface.world;
    if (level.IsSomethingSelected()) {
        Box box = interface.selection_box;
        level.ComputeSelectionBox(box);
        return CInterface::CreatePivot(box);
    }
    D3DVECTOR direction, normal, right, hit;
    CInterface::ComputeCameraVectors(Info().camera_rotation, direction, normal, right);
    return level.NearestHit(Info().camera_position, direction, hit) ? hit
                                                                    : Info().camera_position + direction * CENTER_AHEAD;
}

void CPerspectiveView::PrepareSpecialRotation() {
    rotation_center = GetSpecialRotationCenter();
    const D3DVECTOR d = Info().camera_position - rotation_center;
    rotation_vector = {0, 0, Magnitude(d)};
    AnglesOf(NormalizeOrZero(d), special_elevation, special_azimuth);
}

void CPerspectiveView::RotateCamera() {
    // Up is against the turn about x: the elevation is that of the camera above its centre.
    const Quaternion turn = Quaternion::from_rotation({1, 0, 0}, special_elevation) *
                            Quaternion::from_rotation({0, -1, 0}, special_azimuth);
    D3DVECTOR arm;
    crMTransform3(turn.to_matrix(), rotation_vector, arm);
    Info().camera_position = rotation_center + arm;
    // From the camera to the centre.
    Info().camera_rotation = {-special_elevation, WrappedAngle(PI - special_azimuth), 0};
    interface.RedrawView(view);
}

void CPerspectiveView::StepOrbit(int azimuth_steps, int elevation_steps) {
    if (!interface.special_camera_rotation)
        return;
    special_azimuth = WrappedAngle(special_azimuth + static_cast<float>(azimuth_steps) * ORBIT_STEP);
    special_elevation =
        std::clamp(special_elevation + static_cast<float>(elevation_steps) * ORBIT_STEP, -HALF_PI, HALF_PI);
    RotateCamera();
}
