#include "desktop/GlPipeline.h"

#include <algorithm>
#include <cstring>

#include <QThread>

#include "desktop/GlMesh.h"

namespace {

constexpr size_t MOST_BATCH_BYTES = size_t{2} << 20; // of vertices; a larger single call is drawn at once

GLenum CompareFunction(uint32_t func) {
    switch (func) {
    case CMP_NEVER:
        return GL_NEVER;
    case CMP_LESS:
        return GL_LESS;
    case CMP_EQUAL:
        return GL_EQUAL;
    case CMP_LESSEQUAL:
        return GL_LEQUAL;
    case CMP_GREATER:
        return GL_GREATER;
    case CMP_NOTEQUAL:
        return GL_NOTEQUAL;
    case CMP_GREATEREQUAL:
        return GL_GEQUAL;
    default:
        return GL_ALWAYS;
    }
}

GLenum BlendFactor(uint32_t mode) {
    constexpr GLenum FACTORS[] = {GL_ZERO,
                                  GL_ZERO,
                                  GL_ONE,
                                  GL_SRC_COLOR,
                                  GL_ONE_MINUS_SRC_COLOR,
                                  GL_SRC_ALPHA,
                                  GL_ONE_MINUS_SRC_ALPHA,
                                  GL_DST_ALPHA,
                                  GL_ONE_MINUS_DST_ALPHA,
                                  GL_DST_COLOR,
                                  GL_ONE_MINUS_DST_COLOR,
                                  GL_SRC_ALPHA_SATURATE};
    return mode < std::size(FACTORS) ? FACTORS[mode] : GL_ZERO;
}

GLint AddressMode(uint32_t mode) {
    return mode == TA_CLAMP ? GL_CLAMP_TO_EDGE : mode == TA_MIRROR ? GL_MIRRORED_REPEAT : GL_REPEAT;
}

GLint MinFilter(const GlFilter& filter) {
    const bool smooth = filter.min >= TF_LINEAR;
    if (filter.mip == MF_POINT)
        return smooth ? GL_LINEAR_MIPMAP_NEAREST : GL_NEAREST_MIPMAP_NEAREST;
    if (filter.mip >= MF_LINEAR)
        return smooth ? GL_LINEAR_MIPMAP_LINEAR : GL_NEAREST_MIPMAP_LINEAR;
    return smooth ? GL_LINEAR : GL_NEAREST;
}

GLenum ModeOf(GlShape shape) {
    return shape == GlShape::Points ? GL_POINTS : shape == GlShape::Lines ? GL_LINES : GL_TRIANGLES;
}

} // namespace

GlPipeline::GlPipeline(QOpenGLContext& owner, GlFunctions& functions)
    : gl(functions), context(&owner), shaders(functions), stream(functions) {}

GlPipeline::~GlPipeline() {
    if (!EnsureCurrent()) // all of it goes with the context
        return;
    shaders.Release();
    stream.Release();
    for (const auto& [filter, name] : samplers)
        gl.glDeleteSamplers(1, &name);
}

bool GlPipeline::TakeContext() {
    return QThread::currentThread() == context->thread() && context->makeCurrent(surface);
}

void GlPipeline::Enter(GLuint framebuffer) {
    gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    Forget();
}

void GlPipeline::Forget() {
    any_sent = false;
    sent_program = nullptr;
    bound_textures = bound_samplers = {};
}

void GlPipeline::Leave() {
    Flush();
    Forget();
    for (const GLenum capability : {GL_BLEND, GL_DEPTH_TEST, GL_CULL_FACE, GL_SCISSOR_TEST, GL_DEPTH_CLAMP})
        gl.glDisable(capability);
    for (uint32_t i = 0; i < CLIP_PLANES; ++i)
        gl.glDisable(GL_CLIP_DISTANCE0 + i);
    for (uint32_t stage = 0; stage < TEXTURE_STAGES; ++stage)
        gl.glBindSampler(stage, 0);
    gl.glActiveTexture(GL_TEXTURE0);
    gl.glDepthMask(GL_TRUE);
    gl.glProvokingVertex(GL_LAST_VERTEX_CONVENTION);
    gl.glBindVertexArray(0);
    gl.glBindBuffer(GL_ARRAY_BUFFER, 0);
    gl.glUseProgram(0);
}

GLuint GlPipeline::Sampler(const GlFilter& filter) {
    if (const auto known = samplers.find(filter); known != samplers.end())
        return known->second;
    GLuint& name = samplers[filter];
    gl.glGenSamplers(1, &name);
    gl.glSamplerParameteri(name, GL_TEXTURE_WRAP_S, AddressMode(filter.address_u));
    gl.glSamplerParameteri(name, GL_TEXTURE_WRAP_T, AddressMode(filter.address_v));
    gl.glSamplerParameteri(name, GL_TEXTURE_MAG_FILTER, filter.mag >= TF_LINEAR ? GL_LINEAR : GL_NEAREST);
    gl.glSamplerParameteri(name, GL_TEXTURE_MIN_FILTER, MinFilter(filter));
    return name;
}

void GlPipeline::Toggle(GLenum capability, bool before, bool now) {
    if (any_sent && before == now)
        return;
    if (now)
        gl.glEnable(capability);
    else
        gl.glDisable(capability);
}

void GlPipeline::Apply(const GlDrawState& s) {
    const bool all = !any_sent;
    if (all) {
        for (const GLenum capability : {GL_STENCIL_TEST, GL_DITHER, GL_POLYGON_OFFSET_FILL, GL_SAMPLE_ALPHA_TO_COVERAGE,
                                        GL_COLOR_LOGIC_OP, GL_PRIMITIVE_RESTART, GL_RASTERIZER_DISCARD})
            gl.glDisable(capability);
        gl.glEnable(GL_SCISSOR_TEST);
        gl.glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
        gl.glDepthRange(0, 1);
        gl.glBlendEquation(GL_FUNC_ADD);
        gl.glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
        gl.glFrontFace(GL_CCW); // rows run down: what turns clockwise on the screen
        gl.glPointSize(1);
        gl.glDisable(GL_PROGRAM_POINT_SIZE);
        gl.glProvokingVertex(GL_FIRST_VERTEX_CONVENTION);
    }
    if (sent_program != program)
        gl.glUseProgram(program->name);
    sent_program = program;
    shaders.Send(*program, s.uniforms);
    if (all || sent.viewport != s.viewport)
        gl.glViewport(s.viewport[0], s.viewport[1], s.viewport[2], s.viewport[3]);
    if (all || sent.visible != s.visible)
        gl.glScissor(s.visible[0], s.visible[1], s.visible[2], s.visible[3]);
    Toggle(GL_BLEND, sent.blend, s.blend);
    if (all || sent.src_blend != s.src_blend || sent.dst_blend != s.dst_blend)
        gl.glBlendFunc(BlendFactor(s.src_blend), BlendFactor(s.dst_blend));
    Toggle(GL_DEPTH_TEST, sent.depth_test, s.depth_test);
    if (all || sent.depth_write != s.depth_write)
        gl.glDepthMask(s.depth_write ? GL_TRUE : GL_FALSE);
    if (all || sent.depth_func != s.depth_func)
        gl.glDepthFunc(CompareFunction(s.depth_func));
    Toggle(GL_CULL_FACE, sent.cull != CULL_NONE, s.cull != CULL_NONE);
    if (all || sent.cull != s.cull)
        gl.glCullFace(s.cull == CULL_CW ? GL_FRONT : GL_BACK);
    Toggle(GL_DEPTH_CLAMP, sent.key.transformed, s.key.transformed);
    for (uint32_t i = 0; i < CLIP_PLANES; ++i)
        Toggle(GL_CLIP_DISTANCE0 + i, (sent.plane_mask >> i & 1) != 0, (s.plane_mask >> i & 1) != 0);
    ApplyTextures(s);
    sent = s;
    any_sent = true;
}

void GlPipeline::ApplyTextures(const GlDrawState& s) {
    for (uint32_t stage = 0; stage < TEXTURE_STAGES; ++stage) {
        if (s.textures[stage] == 0) // not read
            continue;
        if (bound_textures[stage] != s.textures[stage]) {
            gl.glActiveTexture(GL_TEXTURE0 + stage);
            gl.glBindTexture(GL_TEXTURE_2D, s.textures[stage]);
            bound_textures[stage] = s.textures[stage];
        }
        const GLuint sampler = Sampler(s.filters[stage]);
        if (bound_samplers[stage] != sampler)
            gl.glBindSampler(stage, sampler);
        bound_samplers[stage] = sampler;
    }
}

void GlPipeline::BindForFilling(GLuint texture) {
    gl.glActiveTexture(GL_TEXTURE0 + TEXTURE_STAGES);
    gl.glBindTexture(GL_TEXTURE_2D, texture);
}

void GlPipeline::ForgetTexture(GLuint texture) {
    if (texture == 0 || !EnsureCurrent())
        return;
    Flush();
    std::replace(bound_textures.begin(), bound_textures.end(), texture, GLuint{0}); // as OpenGL does
    gl.glDeleteTextures(1, &texture);
}

bool GlPipeline::Start(const GlDrawState& wanted, uint32_t format) {
    if (program && fvf == format && state == wanted)
        return true;
    const bool drawn = Flush();
    fvf = format;
    layout = MakeFvfLayout(format);
    state = wanted;
    program = shaders.Find(state.key);
    if (sent_program != program)
        sent_program = nullptr; // making one may have taken the last one out of use
    return drawn && program;
}

// Whether vertex data are finite numbers; those that are not leave their primitives out.
bool GlPipeline::MarkUnusable(const uint8_t* data, uint32_t count) {
    const uint32_t first_uv = layout.offsets[CRO_TEX1];
    bool any = false;
    const auto sum = [](const uint8_t* at, uint32_t floats) { // 0, or not a number
        float total = 0;
        for (uint32_t k = 0; k < floats; ++k) {
            float value;
            std::memcpy(&value, at + k * sizeof(float), sizeof(value));
            total += value * 0.0f;
        }
        return total;
    };
    for (uint32_t i = 0; i < count; ++i, data += layout.size) {
        const float checked = sum(data, 3) + sum(data + first_uv, 2 * layout.coordinate_sets);
        if (checked == 0)
            continue;
        if (!any)
            unusable.assign(count, 0);
        any = true;
        unusable[i] = 1;
    }
    return any;
}

bool GlPipeline::Add(PrimType prim, const uint8_t* data, uint32_t vertex_count, const uint16_t* order,
                     uint32_t index_count) {
    if (!program)
        return false;
    uint32_t low = 0, end = vertex_count; // of the vertices that are named
    if (order) {
        low = vertex_count, end = 0;
        for (uint32_t i = 0; i < index_count; ++i)
            if (order[i] < vertex_count)
                low = std::min<uint32_t>(low, order[i]), end = std::max<uint32_t>(end, order[i] + 1u);
    }
    if (low >= end)
        return true;
    data += static_cast<size_t>(low) * layout.size;
    const size_t bytes = static_cast<size_t>(end - low) * layout.size;
    if (!vertices.empty() && vertices.size() + bytes > MOST_BATCH_BYTES && !Flush())
        return false;
    if (!MarkUnusable(data, end - low))
        unusable.clear();
    AddIndices(prim, index_count, order, low, end);
    vertices.insert(vertices.end(), data, data + bytes);
    return true;
}

void GlPipeline::AddIndices(PrimType prim, uint32_t n, const uint16_t* order, uint32_t low, uint32_t end) {
    const auto first = static_cast<uint32_t>(vertices.size() / layout.size);
    const auto at = [order, low](uint32_t i) -> uint32_t { return (order ? order[i] : i) - low; };
    const auto usable = [&](uint32_t i) { return i < end - low && (unusable.empty() || unusable[i] == 0); };
    const auto point = [&](uint32_t a) {
        if (usable(a))
            indices.push_back(first + a);
    };
    const auto line = [&](uint32_t a, uint32_t b) {
        if (usable(a) && usable(b))
            indices.insert(indices.end(), {first + a, first + b});
    };
    const auto triangle = [&](uint32_t a, uint32_t b, uint32_t c) {
        if (usable(a) && usable(b) && usable(c))
            indices.insert(indices.end(), {first + a, first + b, first + c});
    };
    switch (prim) {
    case PT_POINT_LIST:
        for (uint32_t i = 0; i < n; ++i)
            point(at(i));
        break;
    case PT_LINE_LIST:
        for (uint32_t i = 0; i + 1 < n; i += 2)
            line(at(i), at(i + 1));
        break;
    case PT_LINE_STRIP:
        for (uint32_t i = 0; i + 1 < n; ++i)
            line(at(i), at(i + 1));
        break;
    case PT_TRI_LIST:
        for (uint32_t i = 0; i + 2 < n; i += 3)
            triangle(at(i), at(i + 1), at(i + 2));
        break;
    case PT_TRI_STRIP:
        for (uint32_t i = 0; i + 2 < n; ++i)
            triangle(at(i), at(i + 1 + i % 2), at(i + 2 - i % 2)); // every second one turns the other way
        break;
    case PT_TRI_FAN:
        for (uint32_t i = 1; i + 1 < n; ++i)
            triangle(at(0), at(i), at(i + 1));
        break;
    }
}

bool GlPipeline::Flush() {
    bool drawn = true;
    if (!indices.empty()) {
        Apply(state);
        drawn = stream.Draw(ModeOf(state.key.shape), fvf, vertices, indices);
    }
    vertices.clear();
    indices.clear();
    return drawn;
}

bool GlPipeline::DrawMesh(GlMesh& mesh, std::span<const MeshPart> parts) {
    if (!Flush() || !program)
        return false;
    Apply(state);
    part_counts.clear();
    part_places.clear();
    for (const MeshPart& part : parts) {
        part_counts.push_back(static_cast<GLsizei>(part.index_count));
        part_places.push_back(reinterpret_cast<const void*>(size_t{part.first_index} * sizeof(uint32_t)));
    }
    mesh.Bind();
    gl.glMultiDrawElements(ModeOf(state.key.shape), part_counts.data(), GL_UNSIGNED_INT, part_places.data(),
                           static_cast<GLsizei>(parts.size()));
    return true;
}
