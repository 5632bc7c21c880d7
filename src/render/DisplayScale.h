// How fine the screen is. What a view draws by its size on the screen, and the reach of the mouse, are told in pixels
// of the desktop, which takes more than one pixel of the device for each on a fine screen. Everything else counts
// pixels of the device.
#pragma once

#include <cstdint>

extern float crvDisplayScale; // device pixels to a desktop pixel, from 1 on
extern uint32_t crvDotSize;   // the same as a whole number: the width of a line, the side of a letter's dot

void crSetDisplayScale(float scale); // out of range: as near as can be
