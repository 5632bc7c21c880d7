// The four views: their coordinates, cameras, grid, zoom and scrolling, and the texts of the status bar.
#include <algorithm>
#include <cmath>

#include "editor/Interface.h"
#include "foundation/Quaternion.h"
#include "foundation/Strings.h"
#include "foundation/WholeNumber.h"
#include "render/Device.h"
#include "render/Matrix.h"

namespace {

constexpr int LEAST_GRID = 1, MOST_GRID = 512;
constexpr float METRES_A_UNIT = 0.015625f;
constexpr float FIELD_OF_VIEW = 90.0f; // degrees
constexpr float DEGREE = 0.017453292f; // radians
constexpr float NEAR_PLANE = 10.0f, FAR_PLANE = 10000.0f;

// A point of an orthographic view: right and down along the screen, world units.
struct PlanePoint {
    int64_t a = 0, b = 0;
};

// A pixel of the view, from the world's origin.
int64_t Scrolled(const VIEWINFO& vi, int axis, int pixel) { return int64_t{vi.view_position[axis]} + pixel; }

PlanePoint SnappedPlanePoint(const VIEWINFO& vi, int grid_size, int x, int y) {
    const auto snap = [&](int64_t pixel) {
        if (vi.zoom_out == 1) {
            const int step = vi.zoom_in * grid_size;
            return pixel / step * step / vi.zoom_in;
        }
        const int step = std::max(grid_size / vi.zoom_out, 1);
        return pixel / step * vi.zoom_out * step;
    };
    return {snap(Scrolled(vi, 0, x)), snap(Scrolled(vi, 1, y))};
}

// right and up along the screen of an orthographic view.
D3DVECTOR FromPlane(int view, float right, float up) {
    switch (view) {
    case VIEW_TOP:
        return {right, 0, up};
    case VIEW_FRONT:
        return {right, up, 0};
    case VIEW_LEFT:
        return {0, up, right};
    default:
        return {};
    }
}

D3DMATRIX ViewFromVectors(const D3DVECTOR& position, const D3DVECTOR& right, const D3DVECTOR& normal,
                          const D3DVECTOR& direction) {
    D3DMATRIX m = crIdentity();
    const D3DVECTOR columns[3] = {right, normal, direction};
    for (int k = 0; k < 3; ++k) {
        m.m[0][k] = columns[k].x;
        m.m[1][k] = columns[k].y;
        m.m[2][k] = columns[k].z;
        m.m[3][k] = -DotProduct(position, columns[k]);
    }
    return m;
}

// A direction straight up or down has no right of its own: the fallback stands in.
D3DVECTOR RightOf(const D3DVECTOR& direction, const D3DVECTOR& fallback) {
    const D3DVECTOR right = NormalizeOrZero({direction.z, 0, -direction.x});
    return right == D3DVECTOR{} ? fallback : right;
}

D3DMATRIX OrthographicView(int view, float s) {
    D3DMATRIX m = crIdentity();
    switch (view) {
    case VIEW_TOP:
        m.m[0][0] = s, m.m[1][1] = 0, m.m[1][2] = 1, m.m[2][1] = s;
        break;
    case VIEW_FRONT:
        m.m[0][0] = s, m.m[1][1] = s;
        break;
    default:
        m.m[0][0] = 0, m.m[0][2] = 1, m.m[1][1] = s, m.m[2][0] = s, m.m[2][2] = 0;
        break;
    }
    return m;
}

} // namespace

void CInterface::SetViewRect(int view, const RECT& window_rect) {
    VIEWINFO& vi = View(view);
    vi.window_rect = window_rect;
    vi.client_rect = {0, 0, window_rect.Width(), window_rect.Height()};
}

void CInterface::SetActiveView(int view) {
    active_view = view;
    SetInfoText();
    Tell(&EditorListener::LayoutChanged);
}

void CInterface::PanView(POINT point, VIEWINFO& vi) {
    vi.ScrollTo(Scrolled(vi, 0, last_position.x) - point.x, Scrolled(vi, 1, last_position.y) - point.y);
    RedrawView(active_view);
    SetPositionText(last_position);
}

void CInterface::ZoomView(int delta) {
    VIEWINFO& vi = ActiveView();
    const int x = vi.client_rect.right / 2, y = vi.client_rect.bottom / 2;
    const PlanePoint before = SnappedPlanePoint(vi, grid_size, x, y);
    if (delta < 1) {
        if (vi.zoom_out == MOST_ZOOM)
            return;
        if (vi.zoom_in == 1)
            vi.zoom_out *= 2;
        else
            vi.zoom_in /= 2;
    } else {
        if (vi.zoom_in == MOST_ZOOM)
            return;
        if (vi.zoom_out != 1)
            vi.zoom_out /= 2;
        else
            vi.zoom_in *= 2;
    }
    const PlanePoint after = SnappedPlanePoint(vi, grid_size, x, y);
    const auto pixels = [&vi](int64_t units) { return vi.zoom_out == 1 ? units * vi.zoom_in : units / vi.zoom_out; };
    vi.ScrollTo(vi.view_position[0] + pixels(before.a - after.a), vi.view_position[1] + pixels(before.b - after.b));
    RedrawView(active_view);
    SetInfoText();
    SetPositionText(last_position);
}

void CInterface::GridSize(int delta) {
    if (delta < 0) {
        if (grid_size != MOST_GRID)
            grid_size *= 2;
    } else if (grid_size != LEAST_GRID)
        grid_size >>= 1;
    for (const int view : {VIEW_FRONT, VIEW_TOP, VIEW_LEFT})
        RedrawView(view);
    SetInfoText();
    SetPositionText(last_position);
}

void CInterface::CenterWorld(bool all) {
    const auto center = [this](int view) {
        VIEWINFO& vi = View(view);
        vi.view_position[0] = -vi.client_rect.right / 2;
        vi.view_position[1] = -vi.client_rect.bottom / 2;
        RedrawView(view);
    };
    if (all)
        for (int view = 0; view < VIEW_COUNT; ++view)
            center(view);
    else
        center(active_view);
    SetPositionText(last_position);
}

void CInterface::CenterViewToPoint(const D3DVECTOR& point, int view) {
    VIEWINFO& vi = View(view);
    const int x = vi.window_rect.Width() / 2, y = vi.window_rect.Height() / 2;
    if (view == VIEW_PERSPECTIVE || x == 0 || y == 0)
        return;
    const D3DVECTOR corner = GetWorldPositionAtPoint(view, 0, 0), center = GetWorldPositionAtPoint(view, x, y);
    const int across = view == VIEW_LEFT ? 2 : 0, up = view == VIEW_TOP ? 2 : 1;
    const auto pixels = [&](int axis, int pixel) {
        const float scale = static_cast<float>(pixel) / (Component(center, axis) - Component(corner, axis));
        return int64_t{WholeNumber((Component(point, axis) - Component(center, axis)) * scale)};
    };
    vi.ScrollTo(vi.view_position[0] + pixels(across, x), vi.view_position[1] + pixels(up, y));
}

void CInterface::CenterToSelection() {
    if (!world->IsSomethingSelected())
        return;
    Box box = selection_box;
    world->ComputeSelectionBox(box);
    const D3DVECTOR middle = (BoxMax(box) + BoxMin(box)) * 0.5f;
    for (const int view : {VIEW_TOP, VIEW_LEFT, VIEW_FRONT})
        CenterViewToPoint(middle, view);
    RedrawAllViews();
}

D3DVECTOR CInterface::GetWorldPositionAtPoint(int view, int x, int y) const {
    const VIEWINFO& vi = views.View(view);
    const auto unsnapped = [&vi](int64_t pixel) {
        return vi.zoom_out == 1 ? static_cast<float>(pixel) / static_cast<float>(vi.zoom_in)
                                : static_cast<float>(pixel) * static_cast<float>(vi.zoom_out);
    };
    return FromPlane(view, unsnapped(Scrolled(vi, 0, x)), -unsnapped(Scrolled(vi, 1, y)));
}

void CInterface::ComputeCameraVectors(const D3DVECTOR& rotation, D3DVECTOR& direction, D3DVECTOR& normal,
                                      D3DVECTOR& right) {
    const Quaternion qx = Quaternion::from_rotation({1, 0, 0}, rotation.x);
    const Quaternion qy = Quaternion::from_rotation({0, 1, 0}, rotation.y);
    crMTransform3((qx * qy).to_matrix(), {0, 0, 1}, direction);
    direction = Normalize(direction);
    D3DVECTOR level;
    crMTransform3(qy.to_matrix(), {1, 0, 0}, level);
    right = RightOf(direction, level);
    normal = Normalize(CrossProduct(direction, right));
}

D3DMATRIX CInterface::CameraMatrix(const D3DVECTOR& position, const D3DVECTOR& rotation) {
    D3DVECTOR direction, normal, right;
    ComputeCameraVectors(rotation, direction, normal, right);
    return ViewFromVectors(position, right, normal, direction);
}

D3DMATRIX CInterface::CameraMatrix(const D3DVECTOR& position, const D3DVECTOR& target, float roll) {
    D3DVECTOR direction = NormalizeOrZero(target - position);
    if (direction == D3DVECTOR{})
        direction = {0, 0, 1};
    const D3DVECTOR right = RightOf(direction, {1, 0, 0});
    D3DMATRIX matrix = ViewFromVectors(position, right, Normalize(CrossProduct(direction, right)), direction);
    crMMultiply(matrix, Quaternion::from_rotation({0, 0, 1}, roll).to_matrix(), matrix);
    return matrix;
}

void CInterface::SetMatrices(int view) {
    const VIEWINFO& vi = views.View(view);
    const RECT& r = vi.window_rect;
    crSetViewport(r.left, r.top, r.Width(), r.Height());
    crMCurrent(CRM_WORLD);
    crMSetIdentity();
    if (view == VIEW_PERSPECTIVE) {
        MovieCamera filming;
        const bool films = FindMovieCamera(filming);
        crMCurrent(CRM_VIEW);
        crMSet(films ? CameraMatrix(filming.position, filming.target, filming.roll * DEGREE)
                     : CameraMatrix(vi.camera_position, vi.camera_rotation));
        crMCurrent(CRM_PROJ);
        crMSetIdentity();
        const RECT& c = vi.client_rect;
        const float aspect = c.right > 0 ? static_cast<float>(c.bottom) / static_cast<float>(c.right) : 1.0f;
        crMProj((films ? filming.fov : FIELD_OF_VIEW) * DEGREE_TO_TURN * TWO_PI, aspect, NEAR_PLANE, FAR_PLANE);
    } else {
        crMCurrent(CRM_VIEW);
        crMSet(OrthographicView(view, vi.Scale()));
        const float width = static_cast<float>(std::max(r.Width(), 1)),
                    height = static_cast<float>(std::max(r.Height(), 1));
        D3DMATRIX projection = crIdentity();
        projection.m[0][0] = 2.0f / width;
        projection.m[1][1] = 2.0f / height;
        projection.m[2][2] = 0;
        projection.m[3][0] = -1.0f - 2.0f * static_cast<float>(vi.view_position[0]) / width;
        projection.m[3][1] = 1.0f + 2.0f * static_cast<float>(vi.view_position[1]) / height;
        crMCurrent(CRM_PROJ);
        crMSet(projection);
    }
    crMCurrent(CRM_VIEW);
    if (view == VIEW_PERSPECTIVE)
        crMUpdate();
}

void CInterface::SetStatus(int pane, const std::string& text) {
    std::string& shown = status[static_cast<size_t>(pane)];
    if (shown == text)
        return;
    shown = text;
    Tell(&EditorListener::StatusChanged, pane);
}

static std::string LengthText(float units, bool metric) {
    return metric ? Format(" %.2fm", static_cast<double>(units * METRES_A_UNIT)) : Format("%d", WholeNumber(units));
}

static std::string VectorText(const char* heading, const D3DVECTOR& v, bool metric) {
    return Format("%s: X: %s,  Y: %s,  Z: %s", heading, LengthText(v.x, metric).c_str(),
                  LengthText(v.y, metric).c_str(), LengthText(v.z, metric).c_str());
}

void CInterface::SetPositionText(POINT point) {
    const VIEWINFO& vi = ActiveView();
    if (active_view == VIEW_PERSPECTIVE)
        world_position = {std::trunc(vi.camera_position.x), std::trunc(vi.camera_position.y),
                          std::trunc(vi.camera_position.z)};
    else {
        const PlanePoint p = SnappedPlanePoint(vi, grid_size, point.x, point.y);
        world_position = FromPlane(active_view, static_cast<float>(p.a), static_cast<float>(-p.b));
    }
    SetStatus(PANE_POSITION, VectorText("Position", world_position, settings.use_metric_units));
}

void CInterface::SetSizeText() {
    if (selection_box_active) {
        const D3DVECTOR e = BoxMax(selection_box) - BoxMin(selection_box); // not sorted while it is dragged out
        const D3DVECTOR extent{std::fabs(e.x), std::fabs(e.y), std::fabs(e.z)};
        SetStatus(PANE_SIZE, VectorText("Size", extent, settings.use_metric_units));
    } else if (left_button_pressed || right_button_pressed)
        SetStatus(PANE_SIZE, VectorText("Delta", mouse_point - starting_mouse_point, settings.use_metric_units));
    else
        SetStatus(PANE_SIZE, "---");
}

void CInterface::SetCountText() {
    if (world)
        SetStatus(PANE_COUNTS, Format("Brushes: %d   Entities: %d", world->GetBrushCount(), world->GetEntityCount()));
}

void CInterface::SetInfoText() {
    const VIEWINFO& vi = ActiveView();
    const int zoom = vi.zoom_in == 1 && vi.zoom_out > 1 ? -vi.zoom_out : vi.zoom_in;
    SetStatus(PANE_GRID, Format("G: %d  Z: %d  R: %d", grid_size, zoom, rotation_grid_size));
    SetStatus(PANE_LOCK, selection_locked ? "LOCK" : "");
}

void CInterface::SelectionLock() {
    selection_locked = !selection_locked;
    SetInfoText();
}
