// A device in plain memory: always there, the same pixels on every machine.
//
// The rule of its triangles. Screen positions are rounded to 1/256 of a pixel (halves up). A pixel belongs to a
// triangle when its centre (x + 0.5, y + 0.5) lies inside; a centre exactly on an edge belongs to it when that is a top
// edge (level, the triangle below it) or a left one. A line takes one pixel in each column or row of its longer
// direction, from its first point up to its last, which is left out. Colours are whole numbers 0 to 255 from the vertex
// on; each operation rounds to the nearest. Textures are read from level 0, nearest or smooth by the magnification
// filter. Lighting, fog and specular colour are not drawn.
#pragma once

#include "render/Device.h"
#include "render/SoftState.h"

class SoftGroup;
struct SoftScratch;

class SoftDevice : public Device {
public:
    SoftDevice();
    ~SoftDevice() override;

    std::string DriverName() const override { return "Software"; }
    std::string Name() const override { return "Direct3D T&L HAL"; } // what is looked for first
    std::string Description() const override { return "Drawing by the processor"; }
    std::vector<VideoMode> VideoModes() const override;
    std::vector<DepthFormat> DepthFormats() const override; // whichever is chosen, depth is kept as 32-bit floats
    // In this order: X8R8G8B8, R8G8B8, R5G6B5, A8R8G8B8, A4R4G4B4, A8, L6V5U5.
    const std::vector<PixelFormat>& TextureFormats() const override;
    uint32_t MaxTextureSize() const override { return 4096; }
    bool SupportsCubeMaps() const override { return true; }

    bool TakeScreen(bool) override { return true; }
    bool SetVideoMode(const VideoMode& mode) override;
    bool CreateBackBuffer(uint32_t w, uint32_t h) override; // sides up to 8192
    bool CreateDepthBuffer(const DepthFormat& format) override;
    bool Open() override;
    void Close() override;
    DeviceSurface* BackBuffer() override { return back.get(); }
    DeviceSurface* FrontBuffer() override { return front.get(); }
    bool RestoreSurfaces() override { return opened; }

    bool Clear(uint32_t clear_flags, uint32_t color, float depth, uint32_t stencil) override;
    bool BeginScene() override;
    bool EndScene() override;
    bool Present(const PixelRectangle& part) override;

    bool SetRenderState(uint32_t index, uint32_t value) override;
    bool SetTextureStageState(uint32_t stage, uint32_t type, uint32_t value) override;
    bool SetTexture(uint32_t stage, DeviceSurface* texture) override;
    void SetTransform(TrType type, const D3DMATRIX& m) override;
    void SetViewport(const PixelRectangle& viewport) override { state.viewport = viewport; }
    bool SetClipPlane(uint32_t index, const PLANE& plane) override;

    bool DrawPrimitive(PrimType prim, uint32_t fvf, const uint8_t* vertices, uint32_t vertex_count) override;
    bool DrawIndexedPrimitive(PrimType prim, uint32_t fvf, const uint8_t* vertices, uint32_t vertex_count,
                              const uint16_t* indices, uint32_t index_count) override;

    std::unique_ptr<DeviceMesh> CreateMesh(MeshData data) override;
    bool DrawMesh(DeviceMesh& mesh, std::span<const MeshPart> parts) override;
    void BeginGroup() override { grouping = true; }
    void EndGroup() override;

    std::unique_ptr<DeviceSurface> CreateTexture(const TextureDescription& description) override; // zeroed pixels

private:
    bool Draw(PrimType prim, uint32_t fvf, const uint8_t* vertices, uint32_t vertex_count, const uint16_t* indices,
              uint32_t index_count);
    SoftTarget Target(const PixelRectangle& part);
    void DrawGroup(); // what has been kept back
    bool KeepBack(PrimType prim, uint32_t fvf, const uint8_t* vertices, uint32_t vertex_count, const uint16_t* indices,
                  uint32_t index_count);

    SoftState state;
    std::unique_ptr<SoftSurface> back, front;
    std::vector<float> depth_buffer;
    CoarseDepth coarse_depth;
    std::unique_ptr<SoftScratch> scratch; // of one call of Draw
    std::unique_ptr<SoftGroup> group;
    bool grouping = false;
    bool opened = false, in_scene = false;
};
