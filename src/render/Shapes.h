// Simple shapes. Rectangles stand on the screen, in pixels, at the depth of crSet2DDepth; colours are 0xAARRGGBB.
#pragma once

#include <cstdint>

#include "foundation/Vector.h"

void crRect(float x1, float x2, float y1, float y2, uint32_t color);
// The outline. tspace: how often the texture repeats along an edge; below 0: half the width.
void crWireRect(float x1, float x2, float y1, float y2, uint32_t color, float tspace);
// A rectangle with a bevel of width b: the face, the right and bottom bevels, the left and top ones.
void cr3DRect(float x1, float x2, float y1, float y2, float b, uint32_t col_top, uint32_t col_sh, uint32_t col_hi);

// In the world
void crAxis(const D3DVECTOR& pt, float s);              // three lines of length s through pt: X red, Y green, Z blue
void crBox(const D3DVECTOR& pt, const D3DVECTOR& size); // the edges of a box around pt, in white
