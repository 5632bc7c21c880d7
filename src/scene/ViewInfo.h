// The four views of the level: where each looks, and what of the scene the designer wants to see.
#pragma once

#include <algorithm>
#include <cstdint>

#include "foundation/Vector.h"
#include "scene/Brush.h"

enum ViewNumber : int { VIEW_TOP = 0, VIEW_FRONT = 1, VIEW_LEFT = 2, VIEW_PERSPECTIVE = 3, VIEW_COUNT = 4 };

struct RECT {
    int32_t left = 0, top = 0, right = 0, bottom = 0;
    int32_t Width() const { return right - left; }
    int32_t Height() const { return bottom - top; }
};

inline constexpr int32_t MOST_ZOOM = 128;
inline constexpr int32_t MOST_SCROLL = 1 << 26; // zoomed pixels

// The record of one view. Written byte for byte.
struct VIEWINFO {
    int32_t view_position[2] = {};     // zoomed pixels: the offset of the view's top left corner from the world origin
    int32_t zoom_in = 1, zoom_out = 1; // powers of two, 1 to 128; at most one differs from 1
    D3DVECTOR camera_position, camera_rotation; // perspective view; radians
    RECT client_rect, window_rect;              // window_rect: the view's place in the back buffer

    void ScrollTo(int64_t x, int64_t y) { // as far as a view goes
        constexpr int64_t MOST = MOST_SCROLL;
        view_position[0] = static_cast<int32_t>(std::clamp(x, -MOST, MOST));
        view_position[1] = static_cast<int32_t>(std::clamp(y, -MOST, MOST));
    }
    // Pixels a world unit.
    float Scale() const { return zoom_in == 1 ? 1.0f / static_cast<float>(zoom_out) : static_cast<float>(zoom_in); }
};
static_assert(sizeof(VIEWINFO) == 72);

// What a project stores of the front end.
struct ProjectViews {
    VIEWINFO front, top, left, perspective;
    Box cordon_box = MakeBox({-128, -128, -128}, {128, 128, 128});
    Box clip_box = MakeBox({-256, -256, -256}, {256, 256, 256});

    VIEWINFO& View(int view) {
        return view == VIEW_TOP ? top : view == VIEW_FRONT ? front : view == VIEW_LEFT ? left : perspective;
    }
    const VIEWINFO& View(int view) const { return const_cast<ProjectViews*>(this)->View(view); }
};

// What is shown and can be picked.
struct DisplayFilters {
    bool show_brushes = true, show_portals = true, show_occluders = true;
    bool show_entities = true, show_lights = true, show_eyes = true, show_particles = true;
    bool show_nonbox_entities = true;

    bool ShowsBrush(const Brush& b) const {
        return b.type == BT_PORTAL ? show_portals : b.type == BT_OCCLUDER ? show_occluders : show_brushes;
    }
    // By the type word alone; show_entities is asked by the callers.
    bool ShowsEntityType(const class Entity& e) const;
};
