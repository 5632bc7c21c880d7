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
