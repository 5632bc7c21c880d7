// What the drawing of a view must know beside the scene itself.
#pragma once

#include <cstdint>

#include "scene/ViewInfo.h"

inline constexpr uint32_t NO_TEXTURE_HANDLE = 0xFFFFFFFF;

struct DrawContext {
    int view = VIEW_TOP;
    float scale = 1;           // pixels a world unit, of an orthographic view
    D3DVECTOR camera_position; // of the perspective view
    D3DVECTOR camera_look;     // a unit vector: the flat views show it; 0: they do not
    DisplayFilters filters;
    bool show_links = false;
    bool mask_enabled = false;                  // the selected surface shows in the mask colour
    bool outline_selection = false;             // the selection as an outline and a light tint instead of in one colour
    bool shade_bare = false;                    // what has no material is shaded, with edges, in the lit picture too
    bool show_texture_border = false;           // a border on every repetition of a texture
    uint32_t brush_texture = NO_TEXTURE_HANDLE; // the dash pattern of boxes
    uint32_t border_texture = NO_TEXTURE_HANDLE; // the texture border
    bool vertex_mode = false;                    // the marks of the vertex net show, not only its lines
    int selected_cross_vertex = -1;              // so_vertex whose axis cross is picked
    int selected_cross_edge = 0;                 // its arm: 0 x, 1 y, 2 z
    float anim_time = 0;                         // seconds of the movie: where on its path an object is
};
