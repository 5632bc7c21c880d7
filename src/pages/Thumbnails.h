// Small pictures of materials and of custom brushes. A material's picture is kept in a cache file that carries the time
// of its image, and is made anew when the image has another time.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "scene/Surface.h"

inline constexpr int THUMBNAIL_SIDE = 64; // pixels, on a screen of scale 1

struct Thumbnail {
    explicit Thumbnail(int screen_scale = 1);
    int Side() const { return THUMBNAIL_SIDE * scale; }
    void DrawFrame(bool used); // one pixel of scale 1 wide; red for what the project uses

    int scale;                    // of the screen
    std::vector<uint32_t> pixels; // 0xFFRRGGBB, Side() a row, rows from the top
    SIZE texture_size;            // of the image, pixels; 0 by 0 when it cannot be read
};

// The thumbnail of a material by its texture at the scale that it has; false, and an empty field, when the image cannot
// be read. Cache files are of scale 1. Any thread may call it.
bool MakeThumbnail(std::string_view texture_class, std::string_view texture_name, Thumbnail& thumbnail);
std::string ThumbnailPath(std::string_view texture_class, std::string_view texture_name);

// A picture of THUMBNAIL_SIDE pixels as it stands, which is of scale 1, its alpha as a blend toward grey. False when it
// cannot be read or is smaller.
bool LoadThumbnailPicture(std::string_view path, Thumbnail& thumbnail);
