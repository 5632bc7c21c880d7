// Height maps, and what a terrain may be made from.
#include <utility>

#include "files/Picture.h"
#include "foundation/Strings.h"
#include "scene/TerrainParts.h"
#include "scene/World.h"

namespace {

constexpr int GREY_BITS = 8;
constexpr int MOST_MAP_SIDE = 16384;             // pixels
constexpr int MOST_TERRAIN_SIZE = 1000000;       // beyond it the boxes of brushes end
constexpr int64_t MOST_SEGMENT_VERTICES = 65536; // of 16-bit indices
constexpr int64_t MOST_TERRAIN_VERTICES = 1 << 24;

} // namespace

bool LoadHeightMap(const std::string& path, HeightMap& map, std::string& error) {
    const auto refuse = [&](const std::string& reason) {
        error = "The height map " + path + " " + reason;
        return false;
    };
    TGAInfoStruct info;
    switch (TGAClass::GetImageInfo(path, info)) {
    case PICTURE_OK:
        break;
    case PICTURE_UNSUPPORTED:
        return refuse("is no picture");
    default:
        return refuse("cannot be read");
    }
    if (info.pixel_size != GREY_BITS)
        return refuse(Format("is not grey: it has %d bits per pixel, not %d", info.pixel_size, GREY_BITS));
    if (info.width > MOST_MAP_SIDE || info.height > MOST_MAP_SIDE)
        return refuse(Format("has more than %d by %d pixels", MOST_MAP_SIDE, MOST_MAP_SIDE));
    TGAClass picture;
    // What was loaded counts: another program may have written the file since.
    if (picture.LoadImage(path) != PICTURE_OK || picture.GetImageInfo(info) != PICTURE_OK ||
        info.pixel_size != GREY_BITS)
        return refuse("is damaged");
    map.width = info.width;
    map.height = info.height;
    map.sample = picture.PixelData();
    return true;
}

int TerrainCells(float side, int detail) {
    const float cells = side / static_cast<float>(detail);
    return cells >= 0 && cells <= static_cast<float>(MOST_TERRAIN_SIZE) ? static_cast<int>(cells) : 0;
}

std::string CheckTerrainShape(const TerrainShape& shape, int free_brushes) {
    const struct {
        const char* name;
        int value, most;
    } numbers[] = {{"size X", shape.size_x, MOST_TERRAIN_SIZE},   {"size Y", shape.size_y, MOST_TERRAIN_SIZE},
                   {"size Z", shape.size_z, MOST_TERRAIN_SIZE},   {"segment count X", shape.seg_x, MAX_BRUSHES},
                   {"segment count Y", shape.seg_y, MAX_BRUSHES}, {"detail", shape.detail, MOST_TERRAIN_SIZE}};
    for (const auto& number : numbers)
        if (number.value < 1 || number.value > number.most)
            return Format("The terrain's %s is %d: it must be 1 to %d", number.name, number.value, number.most);
    const int64_t segments = int64_t{shape.seg_x} * shape.seg_y;
    if (segments > free_brushes)
        return Format("The terrain has %lld segments, and the level has room for %d more brushes",
                      static_cast<long long>(segments), free_brushes);
    int64_t vertices = 1;
    for (const auto& [size, count] : {std::pair{shape.size_x, shape.seg_x}, {shape.size_z, shape.seg_y}}) {
        const float side = static_cast<float>(size) / static_cast<float>(count);
        const int cells = TerrainCells(side, shape.detail);
        if (cells < 1)
            return Format("A segment of the terrain would be %g units wide, less than the detail of %d units",
                          static_cast<double>(side), shape.detail);
        vertices *= cells + 1;
    }
    if (vertices > MOST_SEGMENT_VERTICES)
        return Format("A segment of the terrain would have %lld vertices, more than %lld",
                      static_cast<long long>(vertices), static_cast<long long>(MOST_SEGMENT_VERTICES));
    if (vertices * segments > MOST_TERRAIN_VERTICES)
        return Format("The terrain would have %lld vertices, more than %lld",
                      static_cast<long long>(vertices * segments), static_cast<long long>(MOST_TERRAIN_VERTICES));
    return {};
}
