// What the renderer asks of a graphics device, and the state of the screen that goes with it.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "render/DeviceStates.h"
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

struct PixelRectangle {
    uint32_t x = 0, y = 0, w = 0, h = 0;
};

class DeviceSurface {
public:
    virtual ~DeviceSurface() = default;

    virtual uint32_t Width() const = 0; // of level 0
    virtual uint32_t Height() const = 0;
    virtual uint32_t Levels() const = 0;
    virtual uint32_t Faces() const = 0;
    virtual const PixelFormat& Format() const = 0;
    // The first row of a level; rows are pitch bytes apart. Null when there is no such level or face. Several threads
    // may lock a level to read it.
    virtual uint8_t* Lock(uint32_t level, uint32_t face, uint32_t& pitch) = 0;
    virtual bool Unlock(uint32_t level, uint32_t face) = 0;
    // As Lock, of level 0 of the first face, of which only a part inside it is read or written: the first row of the
    // part. Cheaper where the pixels lie with a graphics card. Unlock(0, 0) ends it.
    virtual uint8_t* LockPart(const PixelRectangle& part, uint32_t& pitch) {
        uint8_t* const first = Lock(0, 0, pitch);
        return first ? first + static_cast<size_t>(part.y) * pitch + static_cast<size_t>(part.x) * (Format().bits / 8)
                     : nullptr;
    }
};

// The size of a side at a mip level.
inline uint32_t LevelSide(uint32_t side, uint32_t level) {
    return level < 32 && (side >> level) > 0 ? side >> level : 1;
}

// Vertices and the lines or triangles between them that a device keeps, for what is drawn again and again. May outlive
// the device.
class DeviceMesh {
public:
    virtual ~DeviceMesh() = default;
};

struct MeshData {
    PrimType prim = PT_TRI_LIST; // or PT_LINE_LIST
    uint32_t fvf = 0;            // with VT_XYZ
    std::vector<uint8_t> vertices;
    std::vector<uint32_t> indices; // all of them name vertices that are there
};

// A part of a mesh; its indices name no vertex outside its own.
struct MeshPart {
    uint32_t first_index = 0, index_count = 0, first_vertex = 0, vertex_count = 0;
};

struct DepthFormat {
    uint32_t depth_bits = 0, stencil_bits = 0;
};

struct VideoMode {
    uint32_t w = 0, h = 0;
    uint32_t bpp = 0;     // bits of a pixel
    uint32_t refresh = 0; // a second
};

// How much the textures of a device cost. Sizes are bytes.
struct TextureStatistics {
    uint32_t evictions = 0, video_creations = 0, used = 0, used_in_video = 0, working_set = 0, working_set_bytes = 0,
             managed = 0, managed_bytes = 0;
    uint32_t loads = 0, loaded_bytes = 0, preloads = 0, sets = 0, creations = 0, destructions = 0, locks = 0;
};

// What returns bool is false on failure.
class Device {
public:
    virtual ~Device() = default;

    // Capabilities
    virtual std::string DriverName() const = 0; // devices of one driver share it
    virtual std::string Name() const = 0;
    virtual std::string Description() const = 0;
    virtual std::vector<VideoMode> VideoModes() const = 0;
    virtual std::vector<DepthFormat> DepthFormats() const = 0;
    virtual const std::vector<PixelFormat>& TextureFormats() const = 0;
    virtual uint32_t MaxTextureSize() const = 0; // the longest side of a texture
    virtual bool SupportsCubeMaps() const = 0;

    // The screen, in this order. Opening forgets all state that was set before.
    virtual bool TakeScreen(bool windowed) = 0;
    virtual bool SetVideoMode(const VideoMode& mode) = 0;          // full-screen only
    virtual bool CreateBackBuffer(uint32_t w, uint32_t h) = 0;     // and the front buffer
    virtual bool CreateDepthBuffer(const DepthFormat& format) = 0; // as large as the back buffer
    virtual bool Open() = 0;
    virtual void Close() = 0;                // gives the screen back and releases its surfaces
    virtual DeviceSurface* BackBuffer() = 0; // null without a mode
    virtual DeviceSurface* FrontBuffer() = 0;
    virtual bool RestoreSurfaces() = 0; // after they were lost

    // A frame
    virtual bool Clear(uint32_t clear_flags, uint32_t color, float depth, uint32_t stencil) = 0; // within the viewport
    virtual bool BeginScene() = 0;
    virtual bool EndScene() = 0;
    virtual bool Present(const PixelRectangle& part) = 0; // shows a part of the back buffer at its place in the window

    // State
    virtual bool SetRenderState(uint32_t state, uint32_t value) = 0;
    virtual bool SetTextureStageState(uint32_t stage, uint32_t type, uint32_t value) = 0;
    virtual bool SetTexture(uint32_t stage, DeviceSurface* texture) = 0; // null: none. It must outlive its use
    virtual void SetTransform(TrType, const D3DMATRIX&) {}
    virtual void SetViewport(const PixelRectangle& viewport) = 0;      // depth range 0 to 1
    virtual bool SetClipPlane(uint32_t index, const PLANE& plane) = 0; // in the world; inside is positive

    // Drawing, within a scene. An index of vertex_count or more leaves its primitive out.
    virtual bool DrawPrimitive(PrimType prim, uint32_t fvf, const uint8_t* vertices, uint32_t vertex_count) = 0;
    virtual bool DrawIndexedPrimitive(PrimType prim, uint32_t fvf, const uint8_t* vertices, uint32_t vertex_count,
                                      const uint16_t* indices, uint32_t index_count) = 0;

    // Meshes. Null when the data are none or the device is out of memory.
    virtual std::unique_ptr<DeviceMesh> CreateMesh(MeshData data) = 0;
    virtual bool DrawMesh(DeviceMesh& mesh, std::span<const MeshPart> parts) = 0; // a mesh of this device
    // What is drawn between these two may be kept back until the second, and is seen as if drawn in its order. Until
    // then no texture changes or goes, no mesh goes and no surface is locked.
    virtual void BeginGroup() {}
    virtual void EndGroup() {}
    // True where changes of state cost more than the order of drawing helps.
    virtual bool WantsSortedStates() const { return false; }

    // Textures
    virtual std::unique_ptr<DeviceSurface> CreateTexture(const TextureDescription& description) = 0; // null on failure
    virtual void PreloadTexture(DeviceSurface&) {}
    virtual TextureStatistics GetTextureStatistics() const { return {}; }
};

// The back buffer and the rectangle of it that is drawn to, pixels.
extern uint32_t crvScrWidth, crvScrHeight;
extern uint32_t crvViewportX, crvViewportY, crvViewportW, crvViewportH;
void crSetViewport(int x, int y, int w, int h); // x of -1: the whole buffer
void crGetViewport(int& x, int& y, int& w, int& h);
