#include "drawing/GeometryBatch.h"

#include <cmath>

#include "render/StateCache.h"

namespace {

// Enough that a draw call costs nothing beside its vertices, and few enough that these stay in the caches.
constexpr size_t GATHERED_VERTICES = 4096;
constexpr size_t INDEX_REACH = 65536; // of 16 bits

} // namespace

GeometryBatch::GeometryBatch(PrimType primitive, uint32_t vertex_format)
    : prim(primitive), fvf(vertex_format),
      most_vertices(std::min<size_t>(DRAW_BUFFER_BYTES / MakeFvfLayout(vertex_format).size, INDEX_REACH)) {}

uint32_t GeometryBatch::Reserve(size_t vertices, size_t indices) {
    if (open && (vertex_count + vertices > GATHERED_VERTICES || index_count + indices > INDEX_BUFFER_PLACES))
        Flush();
    if (!open) {
        crBeginIndexed(fvf, prim);
        open = true;
    }
    const size_t first = vertex_count;
    vertex_count += vertices;
    index_count += indices;
    return static_cast<uint32_t>(first);
}

void GeometryBatch::Flush() {
    if (open)
        crEnd();
    open = false;
    vertex_count = index_count = 0;
}

void SetPlainState() {
    criSetStageValue(0, TSS_COLOROP, OP_DISABLE);
    crAlphaBlend(BM_NONE);
}

uint32_t LineBatch::Reserve(size_t vertices, size_t indices) {
    SetPlainState();
    return batch.Reserve(vertices, indices);
}

void LineBatch::Line(const D3DVECTOR& from, const D3DVECTOR& to, uint32_t color1, uint32_t color2) {
    const uint32_t first = Reserve(2, 2);
    crDiffuse(color1);
    crXYZ(from.x, from.y, from.z);
    crDiffuse(color2);
    crXYZ(to.x, to.y, to.z);
    crIndex(first);
    crIndex(first + 1);
}

void LineBatch::Arrow(const D3DVECTOR& from, const D3DVECTOR& to, uint32_t color) {
    constexpr float HEAD_BEFORE_MIDDLE = 20, HEAD_SIZE = 10;
    const float length = Magnitude(to - from);
    if (!(length > 0))
        return;
    const D3DVECTOR d = (to - from) / length;
    const float x = std::fabs(d.x), y = std::fabs(d.y), z = std::fabs(d.z);
    const D3DVECTOR helper = x >= y && x >= z ? D3DVECTOR{0, 1, 0} : y >= z ? D3DVECTOR{0, 0, 1} : D3DVECTOR{1, 0, 0};
    const D3DVECTOR u = CrossProduct(d, helper), w = CrossProduct(u, d);
    const D3DVECTOR tip = from + d * (length / 2 - HEAD_BEFORE_MIDDLE);
    for (const D3DVECTOR& side : {u, -u, w, -w})
        Line(tip, tip + d * HEAD_SIZE + side * HEAD_SIZE, color);
    Line(to, from, color);
}

void LineBatch::Edges(const Surface& surface, uint32_t color) {
    constexpr size_t MOST_EDGES = INDEX_BUFFER_PLACES / 2; // of one batch
    const size_t vertices = std::min(surface.vertices.size(), batch.MostVertices());
    for (size_t done = 0; done < surface.edge_indices.size(); done += MOST_EDGES) {
        const size_t end = std::min(surface.edge_indices.size(), done + MOST_EDGES);
        const uint32_t first = Reserve(vertices, 2 * (end - done));
        for (size_t i = 0; i < vertices; ++i) {
            crDiffuse(color);
            crXYZ(surface.vertices[i].x, surface.vertices[i].y, surface.vertices[i].z);
        }
        for (size_t e = done; e < end; ++e) {
            const EDGE& edge = surface.edge_indices[e];
            if (edge.i[0] >= vertices || edge.i[1] >= vertices)
                continue;
            crIndex(first + edge.i[0]);
            crIndex(first + edge.i[1]);
        }
    }
}
