// What the buttons and the wheel of the mouse do: by the view under the pointer, the mode and the keys held.
#pragma once

#include <string>

#include "editor/Interface.h"

struct HeldModifiers {
    bool shift = false, control = false, alt = false;
    bool operator==(const HeldModifiers&) const = default;
};

// Empty: nothing.
struct MouseHint {
    std::string left, middle, right, wheel;
    bool operator==(const MouseHint&) const = default;
};

const char* ModeName(const CInterface& interface);
MouseHint HintFor(const CInterface& interface, const HeldModifiers& held);
// How far a drag has gone; empty: none goes on. before: the selection's box when it began.
std::string DragText(const CInterface& interface, const Box& before);
std::string HintText(const MouseHint& hint); // "Left: ...   Right: ..."
