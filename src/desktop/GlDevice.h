// A device on OpenGL 3.3 core, in a context of Qt. Its pictures are those of the software device to a small tolerance;
// beyond it, textures are read by all three filters and from all their levels.
//
// The context is current in every call, unless UseSurface lets the device see to that. It outlives the device or takes
// what belongs to OpenGL with it. Between BeginScene and EndScene nobody else uses the context. Textures may be locked
// by any thread, the back and front buffer by the context's thread only.
#pragma once

#include <memory>

#include "desktop/GlSurfaces.h"
#include "render/SoftDevice.h"

class QOpenGLContext;
class QSurface;

class GlDevice : public Device {
public:
    explicit GlDevice(QOpenGLContext* context);
    ~GlDevice() override;

    // From then on the device makes its context current where it is not, on this surface, which lives as long.
    void UseSurface(QSurface* offscreen);
    bool IsUsable() const { return pipeline != nullptr; } // else the context is not good enough, and all calls fail

    std::string DriverName() const override { return "OpenGL"; }
    std::string Name() const override { return "Direct3D T&L HAL"; } // what is looked for first
    std::string Description() const override { return description; } // of the graphics card
    std::vector<VideoMode> VideoModes() const override { return software.VideoModes(); }
    std::vector<DepthFormat> DepthFormats() const override { return {{16, 0}, {24, 8}, {24, 0}}; } // kept in 24 bits
    const std::vector<PixelFormat>& TextureFormats() const override { return software.TextureFormats(); }
    uint32_t MaxTextureSize() const override { return longest_texture_side; }
    bool SupportsCubeMaps() const override { return true; } // held, but only the first face is drawn

    bool TakeScreen(bool) override { return IsUsable(); }
    bool SetVideoMode(const VideoMode& mode) override { return IsUsable() && software.SetVideoMode(mode); }
    bool CreateBackBuffer(uint32_t w, uint32_t h) override;
    bool CreateDepthBuffer(const DepthFormat& format) override;
    bool Open() override;
    void Close() override;
    DeviceSurface* BackBuffer() override { return back.get(); }
    DeviceSurface* FrontBuffer() override { return front.get(); }
    bool RestoreSurfaces() override { return IsReady(); }

    bool Clear(uint32_t clear_flags, uint32_t color, float depth, uint32_t stencil) override;
    bool BeginScene() override;
    bool EndScene() override;
    bool Present(const PixelRectangle& part) override;
    // Shows the front buffer in a framebuffer of this size in pixels and of one sample a pixel, which stays bound.
    // Scaled if the sizes differ.
    void BlitTo(GLuint framebuffer, int width, int height);

    bool SetRenderState(uint32_t index, uint32_t value) override;
    bool SetTextureStageState(uint32_t stage, uint32_t type, uint32_t value) override;
    bool SetTexture(uint32_t stage, DeviceSurface* texture) override;
    void SetTransform(TrType type, const D3DMATRIX& m) override;
    void SetViewport(const PixelRectangle& viewport) override;
    bool SetClipPlane(uint32_t index, const PLANE& plane) override;

    bool DrawPrimitive(PrimType prim, uint32_t fvf, const uint8_t* vertices, uint32_t vertex_count) override;
    bool DrawIndexedPrimitive(PrimType prim, uint32_t fvf, const uint8_t* vertices, uint32_t vertex_count,
                              const uint16_t* indices, uint32_t index_count) override;

    std::unique_ptr<DeviceMesh> CreateMesh(MeshData data) override;
    bool DrawMesh(DeviceMesh& mesh, std::span<const MeshPart> parts) override;
    bool WantsSortedStates() const override { return true; }

    std::unique_ptr<DeviceSurface> CreateTexture(const TextureDescription& description) override;
    void PreloadTexture(DeviceSurface& texture) override;

private:
    bool IsReady() const { return opened && pipeline->EnsureCurrent(); }
    bool Draw(PrimType prim, uint32_t fvf, const uint8_t* vertices, uint32_t vertex_count, const uint16_t* indices,
              uint32_t index_count);
    // Before something is drawn; false when it cannot be.
    bool Prepare(GlShape shape, uint32_t fvf);
    bool UploadTextures(); // of the stages in use; false when none has changed
    uint32_t StageCount() const;
    GlDrawState Resolve(GlShape shape, uint32_t fvf) const;
    void ResolveStage(GlDrawState& state, uint32_t stage) const;
    void ResolveTests(GlDrawState& state) const;
    void ResolvePlanes(GlDrawState& state) const;

    SoftDevice software;                  // tells what is common to the devices
    std::shared_ptr<GlPipeline> pipeline; // null without a context that will do
    std::string description;
    uint32_t longest_texture_side = 0, longest_screen_side = 0, stencil_bits = 0;
    std::unique_ptr<GlScreen> back, front;
    bool opened = false, in_scene = false, has_depth = false;

    SoftState values; // but for its textures
    GlTexture* textures[TEXTURE_STAGES] = {};
    bool values_changed = true; // since the last drawing, of this shape and format
    GlShape last_shape = GlShape::Triangles;
    uint32_t last_fvf = 0;
};
