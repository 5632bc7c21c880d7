// What the software device holds: its surfaces, and the state that its drawing goes by. For the sources of the devices
// only.
#pragma once

#include <cstdint>
#include <vector>

#include "render/Device.h"

inline constexpr uint32_t LONGEST_SCREEN_SIDE = 8192; // of the back buffer
inline constexpr PixelFormat SCREEN_FORMAT{.rgb = true, .bits = 32, .mask = {0xFF0000, 0xFF00, 0xFF, 0}};

class SoftSurface : public DeviceSurface {
public:
    explicit SoftSurface(const TextureDescription& description); // zeroed pixels

    uint32_t Width() const override { return width; }
    uint32_t Height() const override { return height; }
    uint32_t Levels() const override { return levels; }
    uint32_t Faces() const override { return faces; }
    const PixelFormat& Format() const override { return format; }
    uint8_t* Lock(uint32_t level, uint32_t face, uint32_t& pitch) override;
    bool Unlock(uint32_t level, uint32_t face) override { return level < levels && face < faces; }

    bool IsWholeBytes() const { return whole_bytes; }       // 0xAARRGGBB, with or without alpha
    void Widen(const uint8_t* pixel, int (&rgba)[4]) const; // as ReadTexel, of a pixel of any format and level

    struct Level { // of the first face
        const uint8_t* texels;
        uint32_t width, height;

        const uint8_t* WordRow(uint32_t y) const { return texels + static_cast<size_t>(y) * width * sizeof(uint32_t); }
    };
    Level LevelAt(uint32_t level) const {
        return {pixels.data() + offsets[level], LevelSide(width, level), LevelSide(height, level)};
    }

    // A pixel with every channel widened to 0 to 255: red, green, blue, alpha. A channel that the format lacks is 255.
    void ReadTexel(const Level& level, uint32_t x, uint32_t y, int (&rgba)[4]) const {
        const uint8_t* const texel = level.texels + (static_cast<size_t>(y) * level.width + x) * pixel_size;
        if (!whole_bytes) {
            Widen(texel, rgba);
            return;
        }
        rgba[0] = texel[2], rgba[1] = texel[1], rgba[2] = texel[0];
        rgba[3] = largest[3] != 0 ? texel[3] : 255;
    }

private:
    uint32_t Pitch(uint32_t level) const { return LevelSide(width, level) * pixel_size; }

    uint32_t width, height, levels, faces, pixel_size;
    PixelFormat format;
    bool whole_bytes;
    int shift[4];                // to the lowest bit of a channel
    uint32_t largest[4];         // value of a channel, 0 without one
    std::vector<size_t> offsets; // of each level of each face
    std::vector<uint8_t> pixels;
};

struct SoftState {
    SoftState(); // as a device opens
    bool IsSame(const SoftState& other) const;

    uint32_t states[RENDER_STATES] = {};
    uint32_t stages[TEXTURE_STAGES][STAGE_STATES] = {};
    const SoftSurface* textures[TEXTURE_STAGES] = {};
    D3DMATRIX transforms[CRM_COUNT];
    PLANE planes[CLIP_PLANES];
    PixelRectangle viewport;
};

// For each square of pixels a depth behind which none of them lies, so that what is hidden is found in a few looks.
class CoarseDepth {
public:
    void Resize(int picture_width, int picture_height);
    void Forget();                    // depths may have grown
    void Forget(int top, int bottom); // in these rows
    // Depths in this area may have become smaller. Right and bottom are outside.
    void Touch(int left, int top, int right, int bottom);
    // True if every pixel of the area is nearer than this depth.
    bool IsNearer(const float* depths, int left, int top, int right, int bottom, float depth);

private:
    static constexpr int SIDE = 16; // of a square
    struct Square {
        float farthest; // at least the largest depth
        bool touched;
    };
    void Look(const float* depths, int column, int row);
    Square& At(int column, int row) { return squares[static_cast<size_t>(row * columns + column)]; }

    int width = 0, height = 0, columns = 0;
    std::vector<Square> squares;
};

// The picture that is drawn to, and the part of it that may be touched. Pixels are 0x00RRGGBB.
struct SoftTarget {
    int width = 0, height = 0;
    int left = 0, top = 0, right = 0, bottom = 0; // right and bottom are outside
    uint32_t* pixels = nullptr;
    float* depth = nullptr; // 0 near to 1 far
    CoarseDepth* coarse = nullptr;

    size_t At(int x, int y) const {
        return static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x);
    }
};
