// Vertices and indices on their way to OpenGL: two buffers that are filled round and round.
#pragma once

#include <map>
#include <vector>

#include "desktop/GlShaders.h"

// Says to the vertex array in use how the vertices of the bound buffer are laid out.
void SetGlLayout(GlFunctions& gl, uint32_t fvf);

class GlStream {
public:
    explicit GlStream(GlFunctions& functions) : gl(functions) {}

    // mode: GL_POINTS, GL_LINES or GL_TRIANGLES. The indices count from the first vertex. False when OpenGL is out of
    // memory.
    bool Draw(GLenum mode, uint32_t fvf, const std::vector<uint8_t>& vertices, const std::vector<uint32_t>& indices);
    void Release();

private:
    struct Ring {
        GLenum target;
        GLuint name = 0;
        size_t size = 0, used = 0; // bytes
    };
    void BindLayout(uint32_t fvf);
    // Where the bytes lie, a multiple of the alignment; -1 on failure.
    ptrdiff_t Put(Ring& ring, const void* bytes, size_t count, size_t alignment);

    GlFunctions& gl;
    Ring vertex_ring{GL_ARRAY_BUFFER}, index_ring{GL_ELEMENT_ARRAY_BUFFER};
    std::map<uint32_t, GLuint> layouts; // vertex arrays by format
};
