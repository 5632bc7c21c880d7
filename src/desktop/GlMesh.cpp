#include "desktop/GlMesh.h"

#include <cmath>
#include <cstring>

namespace {

bool IsFinite(const uint8_t* at, uint32_t floats) {
    for (uint32_t k = 0; k < floats; ++k) {
        float value;
        std::memcpy(&value, at + k * sizeof(value), sizeof(value));
        if (!std::isfinite(value))
            return false;
    }
    return true;
}

void DropUnusable(MeshData& data) {
    const FvfLayout layout = MakeFvfLayout(data.fvf);
    const uint32_t corners = data.prim == PT_LINE_LIST ? 2 : 3;
    const auto usable = [&](uint32_t i) {
        const uint8_t* const vertex = data.vertices.data() + size_t{i} * layout.size;
        return IsFinite(vertex, 3) && IsFinite(vertex + layout.offsets[CRO_TEX1], 2 * layout.coordinate_sets);
    };
    for (size_t i = 0; i + corners <= data.indices.size(); i += corners) {
        bool whole = true;
        for (uint32_t k = 0; k < corners; ++k)
            whole = whole && usable(data.indices[i + k]);
        for (uint32_t k = 0; k < corners && !whole; ++k)
            data.indices[i + k] = data.indices[i];
    }
}

} // namespace

GlMesh::GlMesh(std::shared_ptr<GlPipeline> owner, MeshData data)
    : pipeline(std::move(owner)), shape(data.prim == PT_LINE_LIST ? GlShape::Lines : GlShape::Triangles),
      fvf(data.fvf) {
    if (data.vertices.empty() || data.indices.empty())
        return;
    DropUnusable(data);
    GlFunctions& gl = pipeline->gl;
    gl.glGenVertexArrays(1, &layout);
    gl.glGenBuffers(1, &vertex_buffer);
    gl.glGenBuffers(1, &index_buffer);
    gl.glBindVertexArray(layout);
    gl.glBindBuffer(GL_ARRAY_BUFFER, vertex_buffer);
    gl.glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(data.vertices.size()), data.vertices.data(),
                    GL_STATIC_DRAW);
    gl.glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, index_buffer);
    gl.glBufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(data.indices.size() * sizeof(uint32_t)),
                    data.indices.data(), GL_STATIC_DRAW);
    SetGlLayout(gl, fvf);
    gl.glBindVertexArray(0);
}

GlMesh::~GlMesh() {
    if (index_buffer == 0 || !pipeline->EnsureCurrent()) // goes with the context
        return;
    GlFunctions& gl = pipeline->gl;
    gl.glBindVertexArray(0);
    gl.glDeleteVertexArrays(1, &layout);
    gl.glDeleteBuffers(1, &vertex_buffer);
    gl.glDeleteBuffers(1, &index_buffer);
}

void GlMesh::Bind() { pipeline->gl.glBindVertexArray(layout); }
