#include "Canvas.h"

#include <array>
#include <filesystem>

#include "files/AtomicFile.h"
#include "files/Picture.h"
#include "foundation/Paths.h"
#include "foundation/Vector.h"

void Canvas::Paint(const std::function<Pixel(float, float)>& paint) {
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            At(x, y) = paint((static_cast<float>(x) + 0.5f) / static_cast<float>(width),
                             (static_cast<float>(y) + 0.5f) / static_cast<float>(height));
}

static uint8_t Byte(float value) { return static_cast<uint8_t>(ChannelToByte(value)); }

bool Canvas::SaveTarga(const std::string& path, int bits) const {
    TGAHeaderStruct header;
    header.imageType = bits == 8 ? 3 : 2;
    header.width = static_cast<uint16_t>(width);
    header.height = static_cast<uint16_t>(height);
    header.pixel_size = static_cast<uint8_t>(bits);
    header.image_desc = static_cast<uint8_t>(0x20 | (bits == 32 ? 8 : 0));
    TGAClass picture;
    if (picture.CreateNewImage(header) != PICTURE_OK)
        return false;
    std::vector<uint8_t> bytes;
    for (const Pixel& p : pixels) {
        if (bits == 8) {
            bytes.push_back(Byte(p.a));
            continue;
        }
        bytes.insert(bytes.end(), {Byte(p.b), Byte(p.g), Byte(p.r)});
        if (bits == 32)
            bytes.push_back(Byte(p.a));
    }
    picture.SetNewImgPtr(std::move(bytes));
    MakeFolders(std::filesystem::path(RealPath(path)).parent_path().string());
    return picture.SaveImage(path) == PICTURE_OK;
}

static uint16_t Pack565(const Pixel& p) {
    return static_cast<uint16_t>(Byte(p.r) >> 3 << 11 | Byte(p.g) >> 2 << 5 | Byte(p.b) >> 3);
}
static float Luma(const Pixel& p) { return 0.3f * p.r + 0.59f * p.g + 0.11f * p.b; }

template <class T>
static void Put(std::vector<uint8_t>& bytes, T value) {
    for (size_t k = 0; k < sizeof(T); ++k)
        bytes.push_back(static_cast<uint8_t>(static_cast<uint64_t>(value) >> (8 * k)));
}

// End colours are the darkest and the brightest pixel of the block; the others take the nearest of the four steps.
static void PutColorBlock(std::vector<uint8_t>& bytes, const std::array<Pixel, 16>& block) {
    const auto [dark, bright] = std::minmax_element(block.begin(), block.end(),
                                                    [](const Pixel& p, const Pixel& q) { return Luma(p) < Luma(q); });
    uint16_t first = Pack565(*bright), second = Pack565(*dark);
    const float low = Luma(*dark), span = Luma(*bright) - low;
    uint32_t indices = 0;
    const bool swapped = first < second;
    if (swapped)
        std::swap(first, second);
    for (size_t k = 0; k < block.size(); ++k) {
        float t = span > 0 ? (Luma(block[k]) - low) / span : 1.0f; // 1: the bright end
        if (swapped)
            t = 1 - t;
        const uint32_t index = first == second ? 0u : t > 0.8333f ? 0u : t > 0.5f ? 2u : t > 0.1667f ? 3u : 1u;
        indices |= index << (2 * k);
    }
    Put(bytes, first);
    Put(bytes, second);
    Put(bytes, indices);
}

static void PutAlphaBlock4(std::vector<uint8_t>& bytes, const std::array<Pixel, 16>& block) {
    uint64_t alpha = 0;
    for (size_t k = 0; k < block.size(); ++k)
        alpha |= static_cast<uint64_t>(Byte(block[k].a) >> 4) << (4 * k);
    Put(bytes, alpha);
}

// Ends 255 and 0: index 0 is opaque, 1 clear, 2 to 7 the six steps between.
static void PutAlphaBlock3(std::vector<uint8_t>& bytes, const std::array<Pixel, 16>& block) {
    uint64_t indices = 0;
    for (size_t k = 0; k < block.size(); ++k) {
        const int step = (Byte(block[k].a) * 7 + 127) / 255; // 7: opaque
        const uint64_t index = step == 7 ? 0u : step == 0 ? 1u : static_cast<uint64_t>(8 - step);
        indices |= index << (3 * k);
    }
    Put<uint8_t>(bytes, 255);
    Put<uint8_t>(bytes, 0);
    for (int k = 0; k < 6; ++k)
        bytes.push_back(static_cast<uint8_t>(indices >> (8 * k)));
}

bool Canvas::SaveDds(const std::string& path, DdsKind kind) const {
    std::vector<uint8_t> bytes;
    const char* magic = "DDS ";
    bytes.insert(bytes.end(), magic, magic + 4);
    std::array<uint32_t, 31> description{};
    description[0] = 124;
    description[1] = 0x1007; // caps, height, width, pixel format
    description[2] = static_cast<uint32_t>(height);
    description[3] = static_cast<uint32_t>(width);
    description[18] = 32;  // size of the pixel format
    description[19] = 0x4; // a four-character code follows
    description[20] = kind == DdsKind::DXT1 ? 0x31545844u : kind == DdsKind::DXT3 ? 0x33545844u : 0x35545844u;
    description[26] = 0x1000; // texture
    for (uint32_t word : description)
        Put(bytes, word);
    for (int y = 0; y < height; y += 4)
        for (int x = 0; x < width; x += 4) {
            std::array<Pixel, 16> block;
            for (int k = 0; k < 16; ++k)
                block[static_cast<size_t>(k)] = At(x + k % 4, y + k / 4);
            if (kind == DdsKind::DXT3)
                PutAlphaBlock4(bytes, block);
            else if (kind == DdsKind::DXT5)
                PutAlphaBlock3(bytes, block);
            PutColorBlock(bytes, block);
        }
    MakeFolders(std::filesystem::path(RealPath(path)).parent_path().string());
    AtomicFile file(path, false);
    return file.Write(bytes.data(), bytes.size()) && file.Commit();
}

float CellValue(int x, int y, uint32_t seed) {
    uint32_t h = static_cast<uint32_t>(x) * 374761393u + static_cast<uint32_t>(y) * 668265263u + seed * 2246822519u;
    h = (h ^ (h >> 13)) * 1274126177u;
    h ^= h >> 16;
    return static_cast<float>(h & 0xFFFF) / 65535.0f;
}

float TilingNoise(float x, float y, int period, uint32_t seed) {
    const int x0 = static_cast<int>(std::floor(x)), y0 = static_cast<int>(std::floor(y));
    const float fx = x - static_cast<float>(x0), fy = y - static_cast<float>(y0);
    const float sx = fx * fx * (3 - 2 * fx), sy = fy * fy * (3 - 2 * fy);
    const auto value = [&](int cx, int cy) {
        return CellValue((cx % period + period) % period, (cy % period + period) % period, seed);
    };
    const float top = value(x0, y0) + (value(x0 + 1, y0) - value(x0, y0)) * sx;
    const float bottom = value(x0, y0 + 1) + (value(x0 + 1, y0 + 1) - value(x0, y0 + 1)) * sx;
    return top + (bottom - top) * sy;
}

float Turbulence(float u, float v, int period, int octaves, uint32_t seed) {
    float sum = 0, weight = 0.5f;
    for (int k = 0; k < octaves; ++k, period *= 2, weight *= 0.5f)
        sum += weight * TilingNoise(u * static_cast<float>(period), v * static_cast<float>(period), period,
                                    seed + static_cast<uint32_t>(k));
    return sum;
}
