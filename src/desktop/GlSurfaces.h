// The surfaces of the OpenGL device. Their pixels lie in plain memory as well, where they are locked.
#pragma once

#include <atomic>
#include <memory>

#include "desktop/GlPipeline.h"
#include "render/SoftState.h"

// OpenGL gets what has been locked when it is next drawn with. Of a cube map the first face is drawn.
class GlTexture : public DeviceSurface {
public:
    GlTexture(const std::shared_ptr<GlPipeline>& owner, const TextureDescription& description);
    ~GlTexture() override;
    GlTexture(const GlTexture&) = delete;
    GlTexture& operator=(const GlTexture&) = delete;

    uint32_t Width() const override { return memory.Width(); }
    uint32_t Height() const override { return memory.Height(); }
    uint32_t Levels() const override { return memory.Levels(); }
    uint32_t Faces() const override { return memory.Faces(); }
    const PixelFormat& Format() const override { return memory.Format(); }
    uint8_t* Lock(uint32_t level, uint32_t face, uint32_t& pitch) override { return memory.Lock(level, face, pitch); }
    bool Unlock(uint32_t level, uint32_t face) override;

    bool IsChanged() const { return changed_levels != 0; } // OpenGL has not got all of it
    GLuint Upload();                                       // the name for OpenGL, of what is there now; 0 on failure

private:
    void Create(GlFunctions& gl);
    void FillLevel(GlFunctions& gl, uint32_t level);

    std::weak_ptr<GlPipeline> pipeline;
    SoftSurface memory;
    uint32_t drawn_levels; // those that OpenGL keeps
    GLuint name = 0;
    std::atomic<uint32_t> changed_levels; // bits
};

// A picture that is drawn to: the back buffer, or the front one that is shown. Row 0 of its framebuffer is the top row.
// What has been drawn is fetched when it is locked, and only what was changed goes back.
class GlScreen : public DeviceSurface {
public:
    GlScreen(GlPipeline& owner, uint32_t w, uint32_t h); // IsComplete tells whether OpenGL could make it
    ~GlScreen() override;
    GlScreen(const GlScreen&) = delete;
    GlScreen& operator=(const GlScreen&) = delete;

    uint32_t Width() const override { return width; }
    uint32_t Height() const override { return height; }
    uint32_t Levels() const override { return 1; }
    uint32_t Faces() const override { return 1; }
    const PixelFormat& Format() const override;
    uint8_t* Lock(uint32_t level, uint32_t face, uint32_t& pitch) override;
    bool Unlock(uint32_t level, uint32_t face) override;
    uint8_t* LockPart(const PixelRectangle& part, uint32_t& pitch) override;

    bool AddDepth(); // 24 bits, and 8 of stencil
    bool IsComplete() const;
    GLuint Framebuffer() const { return framebuffer; }
    PixelRectangle Inside(const PixelRectangle& part) const; // what of it lies in the picture
    void MarkDrawn(const PixelRectangle& part);              // inside; memory no longer holds it

private:
    void Fetch(const PixelRectangle& part);
    void SendChanges();
    void Send(const PixelRectangle& part);

    GlPipeline& pipeline;
    uint32_t width, height;
    GLuint texture = 0, framebuffer = 0, depth = 0;
    std::unique_ptr<SoftSurface> memory; // null before the first lock
    std::vector<uint32_t> known;         // the pixels as OpenGL has them, where memory holds what was drawn
    std::vector<PixelRectangle> drawn;   // since it was fetched
    PixelRectangle locked;               // of no width: not locked
};
