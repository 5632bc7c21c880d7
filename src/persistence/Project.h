// The project file (.msp): the editable form of a level, a chunk file.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "definitions/EntityParser.h"
#include "definitions/MaterialLibrary.h"
#include "scene/World.h"

struct RECT {
    int32_t left = 0, top = 0, right = 0, bottom = 0;
};

// The record of one view. Written byte for byte.
struct VIEWINFO {
    int32_t view_position[2] = {};     // zoomed pixels: the offset of the view's top left corner from the world origin
    int32_t zoom_in = 1, zoom_out = 1; // powers of two, 1 to 128; at most one differs from 1
    D3DVECTOR camera_position, camera_rotation; // perspective view; radians
    RECT client_rect, window_rect;
};
static_assert(sizeof(VIEWINFO) == 72);

// What a project stores of the front end.
struct ProjectViews {
    VIEWINFO front, top, left, perspective;
    Box cordon_box = MakeBox({-128, -128, -128}, {128, 128, 128});
    Box clip_box = MakeBox({-256, -256, -256}, {256, 256, 256});
};

// Unused materials are flushed first. With backup, the existing file is renamed to the full name plus ".bkp". False
// with a sentence that names the file and the reason; the existing file then is as it was.
bool SaveProject(std::string_view full_name, World& world, const ProjectViews& views, bool backup, std::string& error);

// Into a new world. False with a sentence that names the file and the reason; a world that was touched is then thrown
// away by the caller. What the project names and the library or the definitions lack is told once each by a notice.
bool LoadProject(std::string_view full_name, World& world, ProjectViews& views, MaterialLibrary& materials,
                 EntityParser& parser, std::string& error);
