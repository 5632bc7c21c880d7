#include "desktop/GlStream.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr size_t RING_BYTES = size_t{8} << 20;

const void* AtOffset(size_t bytes) { return reinterpret_cast<const void*>(bytes); }

} // namespace

void SetGlLayout(GlFunctions& gl, uint32_t fvf) {
    const FvfLayout layout = MakeFvfLayout(fvf);
    const auto stride = static_cast<GLsizei>(layout.size);
    const auto field = [&](GLuint place, GLint size, GLenum type, bool normalized, CrOffsets from) {
        gl.glEnableVertexAttribArray(place);
        gl.glVertexAttribPointer(place, size, type, normalized ? GL_TRUE : GL_FALSE, stride,
                                 AtOffset(layout.offsets[from]));
    };
    field(GL_AT_POSITION, (fvf & VT_XYZ) != 0 ? 3 : 4, GL_FLOAT, false, CRO_XYZ);
    if ((fvf & VT_DIFFUSE) != 0)
        field(GL_AT_COLOR, GL_BGRA, GL_UNSIGNED_BYTE, true, CRO_DIFF);
    for (uint32_t set = 0; set < layout.coordinate_sets; ++set)
        field(GL_AT_UV + set, 2, GL_FLOAT, false, static_cast<CrOffsets>(CRO_TEX1 + set));
}

void GlStream::BindLayout(uint32_t fvf) {
    if (const auto known = layouts.find(fvf); known != layouts.end()) {
        gl.glBindVertexArray(known->second);
        gl.glBindBuffer(GL_ARRAY_BUFFER, vertex_ring.name);
        return;
    }
    GLuint& layout_name = layouts[fvf];
    gl.glGenVertexArrays(1, &layout_name);
    gl.glBindVertexArray(layout_name);
    gl.glBindBuffer(GL_ARRAY_BUFFER, vertex_ring.name);
    gl.glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, index_ring.name);
    SetGlLayout(gl, fvf);
}

ptrdiff_t GlStream::Put(Ring& ring, const void* bytes, size_t count, size_t alignment) {
    size_t offset = (ring.used + alignment - 1) / alignment * alignment;
    if (offset + count > ring.size) { // fresh memory, while the old one is still drawn from
        const size_t size = std::max({ring.size, RING_BYTES, count});
        gl.glBufferData(ring.target, static_cast<GLsizeiptr>(size), nullptr, GL_STREAM_DRAW);
        ring.size = size;
        offset = 0;
    }
    void* const room = gl.glMapBufferRange(ring.target, static_cast<GLintptr>(offset), static_cast<GLsizeiptr>(count),
                                           GL_MAP_WRITE_BIT | GL_MAP_INVALIDATE_RANGE_BIT | GL_MAP_UNSYNCHRONIZED_BIT);
    if (!room) {
        ring.size = ring.used = 0;
        return -1;
    }
    std::memcpy(room, bytes, count);
    ring.used = offset + count;
    return gl.glUnmapBuffer(ring.target) == GL_TRUE ? static_cast<ptrdiff_t>(offset) : -1;
}

bool GlStream::Draw(GLenum mode, uint32_t fvf, const std::vector<uint8_t>& vertices,
                    const std::vector<uint32_t>& indices) {
    for (Ring* const ring : {&vertex_ring, &index_ring})
        if (ring->name == 0)
            gl.glGenBuffers(1, &ring->name);
    BindLayout(fvf);
    const size_t vertex_size = MakeFvfLayout(fvf).size;
    const ptrdiff_t vertex_place = Put(vertex_ring, vertices.data(), vertices.size(), vertex_size);
    const ptrdiff_t index_place = Put(index_ring, indices.data(), indices.size() * sizeof(uint32_t), sizeof(uint32_t));
    if (vertex_place < 0 || index_place < 0)
        return false;
    gl.glDrawElementsBaseVertex(mode, static_cast<GLsizei>(indices.size()), GL_UNSIGNED_INT,
                                AtOffset(static_cast<size_t>(index_place)),
                                static_cast<GLint>(static_cast<size_t>(vertex_place) / vertex_size));
    return true;
}

void GlStream::Release() {
    for (const auto& [fvf, name] : layouts)
        gl.glDeleteVertexArrays(1, &name);
    layouts.clear();
    for (Ring* const ring : {&vertex_ring, &index_ring}) {
        if (ring->name != 0)
            gl.glDeleteBuffers(1, &ring->name);
        ring->name = 0;
        ring->size = ring->used = 0;
    }
}
