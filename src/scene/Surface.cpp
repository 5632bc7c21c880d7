#include "scene/Surface.h"

void Surface::Allocate(int n, int t, int e) {
    const auto vertex_count = static_cast<size_t>(n);
    vertices.assign(vertex_count, {});
    normal.assign(vertex_count, {});
    uv.assign(vertex_count, {});
    lightmap_uv.assign(vertex_count, {});
    diffuse.assign(vertex_count, 0);
    tri_indices.assign(static_cast<size_t>(t), {});
    edge_indices.assign(static_cast<size_t>(e), {});
}

void Surface::CopyShape(const Surface& src) {
    vertices = src.vertices;
    normal = src.normal;
    uv = src.uv;
    lightmap_uv.resize(src.vertices.size());
    diffuse = src.diffuse;
    extra_diffuse = src.extra_diffuse;
    tri_indices = src.tri_indices;
    edge_indices = src.edge_indices;
    cp = src.cp;
    cp_count = src.cp_count;
    texture = src.texture;
    texture_space = src.texture_space;
}
