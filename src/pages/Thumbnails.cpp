#include "pages/Thumbnails.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <vector>

#include "definitions/MaterialScript.h"
#include "files/AtomicFile.h"
#include "files/FileObject.h"
#include "files/Picture.h"
#include "foundation/Paths.h"
#include "foundation/Strings.h"

namespace {

constexpr int GREY = 64; // of the field, and what alpha blends toward
constexpr uint32_t FIELD = 0xFF404040, USED_FRAME = 0xFFFF0000;
constexpr uint64_t TICKS_A_SECOND = 10000000;             // of a FileTime
constexpr uint64_t SAME_TIME = 3 * TICKS_A_SECOND;        // file systems round times
constexpr uint64_t TICKS_TO_UNIX = 116444736000000000ULL; // from 1601 to 1970

uint64_t Ticks(const FileTime& time) { return static_cast<uint64_t>(time.high) << 32 | time.low; }

// The time of a file. A library gives none: what comes from one has the time 0 of the system.
bool FileTicks(const std::string& path, uint64_t& ticks) {
    FileObject file(path, FO_Open);
    FileTime time;
    if (!file.IsValid() || !file.GetFileTime(time))
        return false;
    ticks = file.IsInLibrary() ? TICKS_TO_UNIX : Ticks(time);
    return true;
}

void SetFileTicks(const std::string& path, uint64_t ticks) {
    const uint64_t since_1970 = ticks > TICKS_TO_UNIX ? ticks - TICKS_TO_UNIX : 0;
    timespec time;
    time.tv_sec = static_cast<time_t>(since_1970 / TICKS_A_SECOND);
    time.tv_nsec = static_cast<long>(since_1970 % TICKS_A_SECOND * 100);
    const timespec both[2] = {time, time};
    utimensat(AT_FDCWD, RealPath(path).c_str(), both, 0);
}

int BlendTowardGrey(int channel, int alpha) { return std::min(GREY + (channel - GREY) * alpha / 255, 255); }

// The pixels of a loaded picture as 0xFFRRGGBB.
std::vector<uint32_t> OpaquePixels(const TGAInfoStruct& info) {
    const size_t step = info.pixel_size / 8u;
    std::vector<uint32_t> pixels(size_t{info.width} * info.height);
    const uint8_t* from = info.imgPtr;
    for (uint32_t& pixel : pixels) {
        int channel[3] = {from[0], from[step > 1 ? 1 : 0], from[step > 1 ? 2 : 0]}; // blue, green, red
        if (step == 4)
            for (int& c : channel)
                c = BlendTowardGrey(c, from[3]);
        pixel = 0xFF000000 | static_cast<uint32_t>(channel[2] << 16 | channel[1] << 8 | channel[0]);
        from += step;
    }
    return pixels;
}

bool Load(const std::string& path, TGAClass& picture, TGAInfoStruct& info) {
    return picture.LoadImage(path) == PICTURE_OK && picture.GetImageInfo(info) == PICTURE_OK && info.imgPtr &&
           info.width > 0 && info.height > 0;
}

// The mean of a rectangle of a picture.
uint32_t Mean(const std::vector<uint32_t>& pixels, int width, int x0, int y0, int x1, int y1) {
    uint64_t sum[3] = {};
    for (int y = y0; y < y1; ++y)
        for (int x = x0; x < x1; ++x) {
            const uint32_t pixel = pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
            for (int c = 0; c < 3; ++c)
                sum[c] += pixel >> 8 * c & 255;
        }
    const uint64_t count = static_cast<uint64_t>(x1 - x0) * static_cast<uint64_t>(y1 - y0);
    return 0xFF000000 | static_cast<uint32_t>(sum[2] / count << 16 | sum[1] / count << 8 | sum[0] / count);
}

// Centred on the field, shrunk where it is larger than the field.
void DrawScaled(const std::vector<uint32_t>& pixels, int width, int height, Thumbnail& thumbnail) {
    const int side = thumbnail.Side(), longest = std::max({width, height, THUMBNAIL_SIDE});
    const int w = std::max(width * side / longest, 1), h = std::max(height * side / longest, 1);
    const int left = (side - w) / 2, top = (side - h) / 2;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const int x0 = x * width / w, y0 = y * height / h;
            const int x1 = std::max((x + 1) * width / w, x0 + 1), y1 = std::max((y + 1) * height / h, y0 + 1);
            thumbnail.pixels[static_cast<size_t>((top + y) * side + left + x)] = Mean(pixels, width, x0, y0, x1, y1);
        }
}

// A 24-bit Targa. A cache that cannot be written is made again the next time.
void Store(const Thumbnail& thumbnail, const std::string& path, uint64_t ticks) {
    constexpr uint8_t TRUE_COLOUR = 2, TOP_ROW_FIRST = 0x20;
    TGAHeaderStruct header;
    header.imageType = TRUE_COLOUR;
    header.width = header.height = THUMBNAIL_SIDE;
    header.pixel_size = 24;
    header.image_desc = TOP_ROW_FIRST;
    std::vector<uint8_t> bytes;
    for (const uint32_t pixel : thumbnail.pixels)
        for (int shift = 0; shift < 24; shift += 8)
            bytes.push_back(static_cast<uint8_t>(pixel >> shift));
    MakeFolders(DirectoryPart(path));
    AtomicFile file(path, false);
    if (file.IsOpen() && file.Write(&header, sizeof header) && file.Write(bytes.data(), bytes.size()) && file.Commit())
        SetFileTicks(path, ticks);
}

bool LoadCached(const std::string& path, uint64_t image_ticks, Thumbnail& thumbnail) {
    uint64_t ticks = 0;
    if (!FileTicks(path, ticks) || std::max(ticks, image_ticks) - std::min(ticks, image_ticks) >= SAME_TIME)
        return false;
    return LoadThumbnailPicture(path, thumbnail);
}

} // namespace

Thumbnail::Thumbnail(int screen_scale)
    : scale(std::max(screen_scale, 1)), pixels(static_cast<size_t>(Side()) * static_cast<size_t>(Side()), FIELD) {}

void Thumbnail::DrawFrame(bool used) {
    const uint32_t color = used ? USED_FRAME : FIELD;
    const int side = Side();
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            if (std::min({x, y, side - 1 - x, side - 1 - y}) < scale)
                pixels[static_cast<size_t>(y * side + x)] = color;
}

std::string ThumbnailPath(std::string_view texture_class, std::string_view texture_name) {
    return std::string("Marrowstead\\Cache\\").append(texture_class).append("\\").append(texture_name).append(".tga");
}

bool MakeThumbnail(std::string_view texture_class, std::string_view texture_name, Thumbnail& thumbnail) {
    thumbnail = Thumbnail(thumbnail.scale);
    const std::string image = TexturePath(texture_class, texture_name);
    const std::string cached = ThumbnailPath(texture_class, texture_name);
    uint64_t image_ticks = 0;
    TGAInfoStruct info;
    if (!FileTicks(image, image_ticks))
        return false;
    const bool is_kept = thumbnail.scale == 1;
    if (is_kept && TGAClass::GetImageInfo(image, info) == PICTURE_OK && LoadCached(cached, image_ticks, thumbnail)) {
        thumbnail.texture_size = {info.width, info.height};
        return true;
    }
    TGAClass picture;
    if (!Load(image, picture, info))
        return false;
    thumbnail.texture_size = {info.width, info.height};
    DrawScaled(OpaquePixels(info), info.width, info.height, thumbnail);
    if (is_kept)
        Store(thumbnail, cached, image_ticks);
    return true;
}

bool LoadThumbnailPicture(std::string_view path, Thumbnail& thumbnail) {
    TGAClass picture;
    TGAInfoStruct info;
    if (!Load(std::string(path), picture, info) || info.width < THUMBNAIL_SIDE || info.height < THUMBNAIL_SIDE)
        return false;
    thumbnail = Thumbnail();
    const std::vector<uint32_t> pixels = OpaquePixels(info);
    for (size_t y = 0; y < THUMBNAIL_SIDE; ++y)
        std::copy_n(pixels.begin() + static_cast<std::ptrdiff_t>(y * info.width), THUMBNAIL_SIDE,
                    thumbnail.pixels.begin() + static_cast<std::ptrdiff_t>(y * THUMBNAIL_SIDE));
    return true;
}
