// Vertices and indices that lie with the graphics card.
#pragma once

#include <memory>

#include "desktop/GlPipeline.h"

class GlMesh : public DeviceMesh {
public:
    // Primitives that name vertices which are not made of finite numbers are left out: their indices become those of
    // one point.
    GlMesh(std::shared_ptr<GlPipeline> owner, MeshData data);
    ~GlMesh() override;
    GlMesh(const GlMesh&) = delete;
    GlMesh& operator=(const GlMesh&) = delete;

    bool IsUsable() const { return index_buffer != 0; }
    GlShape Shape() const { return shape; }
    uint32_t Format() const { return fvf; }
    void Bind();

private:
    std::shared_ptr<GlPipeline> pipeline;
    GlShape shape;
    uint32_t fvf;
    GLuint layout = 0, vertex_buffer = 0, index_buffer = 0;
};
