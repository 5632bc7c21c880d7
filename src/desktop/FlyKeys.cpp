#include "desktop/FlyKeys.h"

#include <Qt>
#include <algorithm>

namespace {

constexpr int LEAST_SPEED = 16, MOST_SPEED = 16384; // units a second
constexpr float LONGEST_STEP = 0.1f;                // seconds, after a pause of the program

struct Direction {
    int key, arrow; // Qt::Key
    float right, up, ahead;
};
constexpr Direction DIRECTIONS[] = {{Qt::Key_W, Qt::Key_Up, 0, 0, 1},
                                    {Qt::Key_S, Qt::Key_Down, 0, 0, -1},
                                    {Qt::Key_A, Qt::Key_Left, -1, 0, 0},
                                    {Qt::Key_D, Qt::Key_Right, 1, 0, 0},
                                    {Qt::Key_E, 0, 0, 1, 0},
                                    {Qt::Key_Q, 0, 0, -1, 0}};

unsigned BitOf(int key) {
    for (unsigned i = 0; i < std::size(DIRECTIONS); ++i)
        if (key != 0 && (DIRECTIONS[i].key == key || DIRECTIONS[i].arrow == key))
            return 1u << i;
    return 0;
}

} // namespace

bool FlyKeys::Press(CMainFrame& frame, int key) {
    CPerspectiveView& view = frame.perspective;
    const unsigned bit = BitOf(key);
    if (bit == 0 || (!view.camera_moving && !looking) || frame.interface.special_camera_rotation)
        return false;
    if (held == 0)
        last = GetDesktop().GetTickCount();
    held |= bit;
    looking = true;
    view.camera_moving = false;
    view.camera_rotating = true;
    return true;
}

void FlyKeys::Release(CMainFrame& frame, int key) {
    if (held == 0)
        return;
    held &= ~BitOf(key);
    if (held == 0)
        frame.interface.RedrawAllViews(); // the flat views show where the camera is
}

void FlyKeys::Stop(CMainFrame& frame) {
    if (looking) {
        frame.perspective.camera_rotating = false;
        frame.interface.RedrawAllViews();
    }
    held = 0;
    looking = false;
}

void FlyKeys::Step(CMainFrame& frame, uint32_t now) {
    const float seconds = std::min(static_cast<float>(now - last) / 1000, LONGEST_STEP);
    last = now;
    if (held == 0)
        return;
    CInterface& interface = frame.interface;
    VIEWINFO& view = interface.View(VIEW_PERSPECTIVE);
    D3DVECTOR direction, normal, right, way;
    CInterface::ComputeCameraVectors(view.camera_rotation, direction, normal, right);
    for (unsigned i = 0; i < std::size(DIRECTIONS); ++i)
        if (held & 1u << i)
            way += right * DIRECTIONS[i].right + normal * DIRECTIONS[i].up + direction * DIRECTIONS[i].ahead;
    view.camera_position += NormalizeOrZero(way) * (static_cast<float>(interface.settings.fly_speed) * seconds);
    interface.RedrawView(VIEW_PERSPECTIVE);
    interface.SetPositionText(interface.last_position);
}

void FlyKeys::ChangeSpeed(CInterface& interface, bool faster) {
    int& speed = interface.settings.fly_speed;
    speed = std::clamp(faster ? speed * 5 / 4 : speed * 4 / 5, LEAST_SPEED, MOST_SPEED);
    interface.SetStatus(PANE_SIZE, "Speed: " + std::to_string(speed));
}
