// Keys that fly the camera of the perspective view while the right button is held there. From the first of them on the
// mouse looks around until the button is let go.
#pragma once

#include <cstdint>

#include "commands/MainFrame.h"

class FlyKeys {
public:
    // False: no key of these, or the camera does not fly now. An arrow is as a letter: Up is W.
    bool Press(CMainFrame& frame, int key);
    void Release(CMainFrame& frame, int key);
    void Stop(CMainFrame& frame); // the button is up
    bool IsLooking() const { return looking; }
    void Step(CMainFrame& frame, uint32_t now); // milliseconds
    // Faster or slower by a notch of the wheel.
    static void ChangeSpeed(CInterface& interface, bool faster);

private:
    unsigned held = 0; // a bit a direction
    uint32_t last = 0; // when the camera moved
    bool looking = false;
};
