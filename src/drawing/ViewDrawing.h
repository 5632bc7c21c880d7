// The parts of a view that are no objects of the scene: grid, boxes, the vertex net, lines and arrows, caption and
// frame. All of it draws between crBeginFrame and crEndFrame.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "drawing/DrawContext.h"

class World;

// Grid lines at least so many pixels apart that they can be told from each other: the step, times eight as often as it
// takes. pixels_a_unit: of the view.
int64_t ThinnedGrid(int grid, float pixels_a_unit);
// Lines a colour: minor, major (every eighth), axes. step: pixels, at least 1. position: the view's scroll position.
void DrawGrid(const RECT& rect, const int32_t position[2], int step, const uint32_t colors[3]);
// Lines on y = 0 about the eye and the axes of the world, in the perspective view.
void DrawGroundGrid(const D3DVECTOR& eye);
void DrawLine2D(const D3DVECTOR& from, const D3DVECTOR& to, uint32_t color); // pixels of the back buffer
void DrawLine3D(const D3DVECTOR& from, const D3DVECTOR& to, uint32_t color1, uint32_t color2);
void DrawArrow(const D3DVECTOR& from, const D3DVECTOR& to,
               uint32_t color); // the head stands near the middle, toward from
// The dashed outline of a box in an orthographic view; nothing in the perspective view.
void RenderDragBox(const DrawContext& context, uint32_t color, const Box& box);
void RenderOutline(const std::vector<D3DVECTOR>& points, uint32_t color); // a line strip in the world
void RenderSOVertices(World& world, const DrawContext& context);
// After the scene has ended, on the back buffer itself: white text and frames two dots wide.
void DrawCaption(const RECT& window_rect, const std::string& text);
void DrawViewFrame(const RECT& window_rect, uint32_t color); // 0x00RRGGBB
// The back buffer's pixels of a rectangle as rows of red, green, blue bytes.
std::vector<uint8_t> ReadBackBuffer(const RECT& rect);
