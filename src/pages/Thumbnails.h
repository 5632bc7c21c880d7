// Small pictures of materials and of custom brushes. A material's picture is kept in a cache file that carries the time
// of its image, and is made anew when the image has another time.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "scene/Surface.h"

inline constexpr int THUMBNAIL_SIDE = 64; // pixels

struct Thumbnail {
    std::array<uint32_t, THUMBNAIL_SIDE * THUMBNAIL_SIDE> pixels; // 0xFFRRGGBB, rows from the top
    SIZE texture_size;                                            // of the image, pixels; 0 by 0 when it cannot be read

    Thumbnail();
    void DrawFrame(bool used); // one pixel wide; red for what the project uses
};

// The thumbnail of a material by its texture; false, and an empty field, when the image cannot be read. Any thread may
// call it.
bool MakeThumbnail(std::string_view texture_class, std::string_view texture_name, Thumbnail& thumbnail);
std::string ThumbnailPath(std::string_view texture_class, std::string_view texture_name);

// A picture of THUMBNAIL_SIDE pixels as it stands, its alpha as a blend toward grey. False when it cannot be read or is
// smaller.
bool LoadThumbnailPicture(std::string_view path, Thumbnail& thumbnail);
