// What the renderer asks of a graphics device, and the state of the screen that goes with it.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "render/Matrix.h"

// A pixel format: what it holds, its size and where the channels lie in the little-endian pixel.
struct PixelFormat {
    bool rgb = false, alpha = false, bump_dudv = false, bump_luminance = false;
    uint32_t bits = 0;     // a pixel: 8, 16, 24 or 32
    uint32_t mask[4] = {}; // red (du), green (dv), blue (luminance), alpha
};

struct TextureDescription {
    uint32_t width = 0, height = 0; // of level 0, of one face; at least 1
    uint32_t levels = 1;            // each half as wide and high as the one before, no side below 1
    uint32_t faces = 1;             // 6 for a cube map: +X, -X, +Y, -Y, +Z, -Z
    PixelFormat format;
    uint32_t stage = 0; // the texture stage it is meant for
    bool render_target = false;
    bool dynamic = false; // filled again and again
};

class DeviceSurface {
public:
    virtual ~DeviceSurface() = default;

    virtual uint32_t Width() const = 0; // of level 0
    virtual uint32_t Height() const = 0;
    virtual uint32_t Levels() const = 0;
    virtual uint32_t Faces() const = 0;
    // The first row of a level; rows are pitch bytes apart. Null when there is no such level or face. Several threads
    // may lock a level to read it.
    virtual uint8_t* Lock(uint32_t level, uint32_t face, uint32_t& pitch) = 0;
    virtual bool Unlock(uint32_t level, uint32_t face) = 0;
};

// The size of a side at a mip level.
inline uint32_t LevelSide(uint32_t side, uint32_t level) {
    return level < 32 && (side >> level) > 0 ? side >> level : 1;
}

class Device {
public:
    virtual ~Device() = default;

    virtual const std::vector<PixelFormat>& TextureFormats() const = 0;
    virtual uint32_t MaxTextureSize() const = 0; // the longest side of a texture
    virtual bool SupportsCubeMaps() const = 0;
    virtual std::unique_ptr<DeviceSurface> CreateTexture(const TextureDescription& description) = 0; // null on failure
    virtual void PreloadTexture(DeviceSurface&) {}
    virtual void SetTransform(TrType, const D3DMATRIX&) {}
};

// The back buffer and the rectangle of it that is drawn to, pixels.
extern uint32_t crvScrWidth, crvScrHeight;
extern uint32_t crvViewportX, crvViewportY, crvViewportW, crvViewportH;
void crSetViewport(int x, int y, int w, int h); // x of -1: the whole buffer
void crGetViewport(int& x, int& y, int& w, int& h);
