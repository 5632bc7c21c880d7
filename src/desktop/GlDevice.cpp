#include "desktop/GlDevice.h"

#include <algorithm>

#include <QOpenGLVersionFunctionsFactory>

#include "desktop/GlMesh.h"

GlDevice::GlDevice(QOpenGLContext* context) {
    auto* const functions =
        context ? QOpenGLVersionFunctionsFactory::get<GlFunctions>(context) : nullptr; // owned by the context
    if (!functions || QOpenGLContext::currentContext() != context || !functions->initializeOpenGLFunctions())
        return;
    const auto limit = [functions](GLenum name) {
        GLint value = 0;
        functions->glGetIntegerv(name, &value);
        return static_cast<uint32_t>(std::max(value, 0));
    };
    if (limit(GL_MAX_TEXTURE_IMAGE_UNITS) < GlPipeline::TEXTURE_UNITS)
        return;
    longest_texture_side = std::min(limit(GL_MAX_TEXTURE_SIZE), software.MaxTextureSize());
    longest_screen_side = std::min({limit(GL_MAX_TEXTURE_SIZE), limit(GL_MAX_RENDERBUFFER_SIZE), LONGEST_SCREEN_SIDE});
    if (const auto* const renderer = reinterpret_cast<const char*>(functions->glGetString(GL_RENDERER)))
        description = renderer;
    pipeline = std::make_shared<GlPipeline>(*context, *functions);
}

GlDevice::~GlDevice() { Close(); }

void GlDevice::UseSurface(QSurface* offscreen) {
    if (pipeline)
        pipeline->UseSurface(offscreen);
}

bool GlDevice::CreateBackBuffer(uint32_t w, uint32_t h) {
    Close();
    if (!IsUsable() || !pipeline->EnsureCurrent() || w == 0 || h == 0 || w > longest_screen_side ||
        h > longest_screen_side)
        return false;
    back = std::make_unique<GlScreen>(*pipeline, w, h);
    front = std::make_unique<GlScreen>(*pipeline, w, h);
    if (back->IsComplete() && front->IsComplete())
        return true;
    Close();
    return false;
}

bool GlDevice::CreateDepthBuffer(const DepthFormat& format) {
    has_depth = back && (format.stencil_bits == 0 || format.stencil_bits == 8) && back->AddDepth();
    stencil_bits = format.stencil_bits;
    return has_depth;
}

bool GlDevice::Open() {
    opened = back && has_depth;
    values = SoftState();
    std::fill(std::begin(textures), std::end(textures), nullptr);
    values_changed = true;
    if (opened)
        values.viewport = {0, 0, back->Width(), back->Height()};
    return opened;
}

void GlDevice::Close() {
    if (pipeline && pipeline->EnsureCurrent())
        pipeline->Leave();
    opened = in_scene = has_depth = false;
    back.reset();
    front.reset();
}

bool GlDevice::Clear(uint32_t clear_flags, uint32_t color, float depth, uint32_t stencil) {
    if (!IsReady() || ((clear_flags & CLEAR_STENCIL) != 0 && stencil_bits == 0))
        return false;
    const PixelRectangle part = back->Inside(values.viewport);
    if (part.w == 0 || part.h == 0)
        return true;
    pipeline->Flush();
    pipeline->Enter(back->Framebuffer());
    GlFunctions& gl = pipeline->gl;
    gl.glEnable(GL_SCISSOR_TEST);
    gl.glScissor(static_cast<GLint>(part.x), static_cast<GLint>(part.y), static_cast<GLsizei>(part.w),
                 static_cast<GLsizei>(part.h));
    gl.glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    gl.glDepthMask(GL_TRUE);
    gl.glStencilMask(~GLuint{0});
    const auto channel = [color](int shift) { return static_cast<GLfloat>(color >> shift & 255) / 255.0f; };
    gl.glClearColor(channel(16), channel(8), channel(0), 1);
    gl.glClearDepth(depth);
    gl.glClearStencil(static_cast<GLint>(stencil));
    gl.glClear(((clear_flags & CLEAR_TARGET) != 0 ? GL_COLOR_BUFFER_BIT : 0) |
               ((clear_flags & CLEAR_ZBUFFER) != 0 ? GL_DEPTH_BUFFER_BIT : 0) |
               ((clear_flags & CLEAR_STENCIL) != 0 ? GL_STENCIL_BUFFER_BIT : 0));
    gl.glDisable(GL_SCISSOR_TEST);
    if ((clear_flags & CLEAR_TARGET) != 0)
        back->MarkDrawn(part);
    return true;
}

bool GlDevice::BeginScene() {
    if (!IsReady() || in_scene)
        return false;
    pipeline->Enter(back->Framebuffer());
    in_scene = true;
    return true;
}

bool GlDevice::EndScene() {
    const bool ended = in_scene;
    if (in_scene && pipeline->EnsureCurrent())
        pipeline->Leave();
    in_scene = false;
    return ended;
}

bool GlDevice::Present(const PixelRectangle& wanted) {
    if (!IsReady() || in_scene)
        return false;
    const PixelRectangle part = back->Inside(wanted);
    if (part.w == 0 || part.h == 0)
        return true;
    GlFunctions& gl = pipeline->gl;
    gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, back->Framebuffer());
    gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, front->Framebuffer());
    gl.glDisable(GL_SCISSOR_TEST);
    const auto left = static_cast<GLint>(part.x), top = static_cast<GLint>(part.y);
    const auto right = static_cast<GLint>(part.x + part.w), bottom = static_cast<GLint>(part.y + part.h);
    gl.glBlitFramebuffer(left, top, right, bottom, left, top, right, bottom, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    front->MarkDrawn(part);
    return true;
}

void GlDevice::BlitTo(GLuint framebuffer, int width, int height) {
    if (!IsReady() || in_scene)
        return;
    GlFunctions& gl = pipeline->gl;
    const auto w = static_cast<GLint>(front->Width()), h = static_cast<GLint>(front->Height());
    gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, front->Framebuffer());
    gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer);
    gl.glDisable(GL_SCISSOR_TEST);
    // Row 0 is the top row here, the bottom one there.
    gl.glBlitFramebuffer(0, 0, w, h, 0, height, width, 0, GL_COLOR_BUFFER_BIT,
                         w == width && h == height ? GL_NEAREST : GL_LINEAR);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
}

bool GlDevice::SetRenderState(uint32_t index, uint32_t value) {
    if (index >= RENDER_STATES)
        return false;
    values.states[index] = value;
    values_changed = true;
    return true;
}

bool GlDevice::SetTextureStageState(uint32_t stage, uint32_t type, uint32_t value) {
    if (stage >= TEXTURE_STAGES || type >= STAGE_STATES)
        return false;
    values.stages[stage][type] = value;
    values_changed = true;
    return true;
}

bool GlDevice::SetTexture(uint32_t stage, DeviceSurface* texture) {
    if (stage >= TEXTURE_STAGES)
        return false;
    textures[stage] = dynamic_cast<GlTexture*>(texture); // of another device: none
    values_changed = true;
    return !texture || textures[stage];
}

void GlDevice::SetTransform(TrType type, const D3DMATRIX& m) {
    if (type < CRM_COUNT)
        values.transforms[type] = m;
    values_changed = true;
}

void GlDevice::SetViewport(const PixelRectangle& viewport) {
    values.viewport = viewport;
    values_changed = true;
}

bool GlDevice::SetClipPlane(uint32_t index, const PLANE& plane) {
    if (index >= CLIP_PLANES)
        return false;
    values.planes[index] = plane;
    values_changed = true;
    return true;
}

bool GlDevice::Draw(PrimType prim, uint32_t fvf, const uint8_t* vertices, uint32_t vertex_count,
                    const uint16_t* indices, uint32_t index_count) {
    if (!opened || !in_scene || (fvf & (VT_XYZ | VT_XYZRHW)) == 0 || !vertices || prim < PT_POINT_LIST ||
        prim > PT_TRI_FAN)
        return false;
    const GlShape shape = prim == PT_POINT_LIST                           ? GlShape::Points
                          : prim == PT_LINE_LIST || prim == PT_LINE_STRIP ? GlShape::Lines
                                                                          : GlShape::Triangles;
    return Prepare(shape, fvf) && pipeline->Add(prim, vertices, vertex_count, indices, index_count);
}

bool GlDevice::Prepare(GlShape shape, uint32_t fvf) {
    if (UploadTextures() || values_changed || shape != last_shape || fvf != last_fvf) {
        if (!pipeline->Start(Resolve(shape, fvf), fvf))
            return false;
        values_changed = false;
        last_shape = shape;
        last_fvf = fvf;
    }
    if (const PixelRectangle part = back->Inside(values.viewport); part.w > 0 && part.h > 0)
        back->MarkDrawn(part);
    return true;
}

std::unique_ptr<DeviceMesh> GlDevice::CreateMesh(MeshData data) {
    if (!IsUsable() || !pipeline->EnsureCurrent())
        return nullptr;
    pipeline->Flush();
    auto mesh = std::make_unique<GlMesh>(pipeline, std::move(data));
    return mesh->IsUsable() ? std::move(mesh) : nullptr;
}

bool GlDevice::DrawMesh(DeviceMesh& mesh, std::span<const MeshPart> parts) {
    auto* const ours = dynamic_cast<GlMesh*>(&mesh);
    if (!opened || !in_scene || !ours)
        return false;
    return Prepare(ours->Shape(), ours->Format()) && pipeline->DrawMesh(*ours, parts);
}

bool GlDevice::DrawPrimitive(PrimType prim, uint32_t fvf, const uint8_t* vertices, uint32_t vertex_count) {
    return Draw(prim, fvf, vertices, vertex_count, nullptr, vertex_count);
}

bool GlDevice::DrawIndexedPrimitive(PrimType prim, uint32_t fvf, const uint8_t* vertices, uint32_t vertex_count,
                                    const uint16_t* indices, uint32_t index_count) {
    return indices && Draw(prim, fvf, vertices, vertex_count, indices, index_count);
}

std::unique_ptr<DeviceSurface> GlDevice::CreateTexture(const TextureDescription& d) {
    const uint32_t limit = MaxTextureSize();
    if (d.width == 0 || d.height == 0 || d.width > limit || d.height > limit || d.levels == 0 || d.faces == 0)
        return nullptr;
    return std::make_unique<GlTexture>(pipeline, d);
}

void GlDevice::PreloadTexture(DeviceSurface& texture) {
    if (auto* const ours = dynamic_cast<GlTexture*>(&texture); ours && pipeline && pipeline->EnsureCurrent()) {
        pipeline->Flush();
        ours->Upload();
    }
}
