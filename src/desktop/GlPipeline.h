// What the OpenGL device sends: a batch gathers primitives that are drawn in one state, and no state is sent twice.
#pragma once

#include <QOpenGLContext>
#include <QPointer>

#include "desktop/GlShaders.h"
#include "desktop/GlStream.h"

// How a texture is read, one of its stage.
struct GlFilter {
    uint32_t address_u = TA_WRAP, address_v = TA_WRAP, mag = TF_POINT, min = TF_POINT, mip = MF_NONE;
    auto operator<=>(const GlFilter&) const = default;
};

// All that the drawing of a batch goes by.
struct GlDrawState {
    GlShaderKey key;
    GlUniforms uniforms;
    std::array<GLuint, TEXTURE_STAGES> textures{}; // 0: none
    std::array<GlFilter, TEXTURE_STAGES> filters;
    bool blend = false, depth_test = false, depth_write = false;
    uint32_t src_blend = BM_ONE, dst_blend = BM_ZERO, depth_func = CMP_ALWAYS, cull = CULL_NONE;
    uint32_t plane_mask = 0;
    std::array<GLint, 4> viewport{}, visible{}; // left, row of the top, width, height; visible: what may be touched
    bool operator==(const GlDrawState&) const = default;
};

class GlMesh;

// The context of the device is current in all calls; those that give bool are false when something could not be drawn.
class GlPipeline {
public:
    GlPipeline(QOpenGLContext& context, GlFunctions& functions);
    ~GlPipeline();
    GlPipeline(const GlPipeline&) = delete;
    GlPipeline& operator=(const GlPipeline&) = delete;

    // Makes the context current where it is not, once it has a surface for that and in its own thread.
    bool EnsureCurrent() {
        return context && (QOpenGLContext::currentContext() == context || (surface && TakeContext()));
    }
    void UseSurface(QSurface* offscreen) { surface = offscreen; }
    void Enter(GLuint framebuffer); // to draw into; nothing is known of the state
    void Leave();                   // draws the batch and leaves a state that surprises nobody

    bool Start(const GlDrawState& wanted, uint32_t format); // what is added next; joins the batch where it can
    bool Add(PrimType prim, const uint8_t* data, uint32_t vertex_count, const uint16_t* order, uint32_t index_count);
    bool Flush();
    bool DrawMesh(GlMesh& mesh, std::span<const MeshPart> parts); // in the state of the last Start

    void BindForFilling(GLuint texture); // at a stage of its own; 0: none
    void ForgetTexture(GLuint texture);  // draws what needs it and deletes it
    static constexpr uint32_t TEXTURE_UNITS = TEXTURE_STAGES + 1;

    GlFunctions& gl;

private:
    bool TakeContext();
    void Apply(const GlDrawState& state);
    void ApplyTextures(const GlDrawState& state);
    void Toggle(GLenum capability, bool before, bool now);
    GLuint Sampler(const GlFilter& filter);
    void Forget();
    // Of the vertices from low to before end, which come next.
    void AddIndices(PrimType prim, uint32_t n, const uint16_t* order, uint32_t low, uint32_t end);
    bool MarkUnusable(const uint8_t* data, uint32_t count);

    QPointer<QOpenGLContext> context;
    QSurface* surface = nullptr; // lives as long as the context
    GlShaders shaders;
    GlStream stream;
    std::map<GlFilter, GLuint> samplers;

    GlDrawState state; // of the batch
    GlShaders::Program* program = nullptr;
    uint32_t fvf = 0;
    FvfLayout layout;
    std::vector<uint8_t> vertices, unusable; // unusable: of the last call, empty when all vertices are finite
    std::vector<uint32_t> indices;

    GlDrawState sent;
    const GlShaders::Program* sent_program = nullptr;
    std::array<GLuint, TEXTURE_STAGES> bound_textures{}, bound_samplers{};
    bool any_sent = false; // else nothing is known of the context
    std::vector<GLsizei> part_counts;
    std::vector<const void*> part_places;
};
