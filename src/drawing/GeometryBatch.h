// Joins primitives that share one state into few batches. The state is set before the first of them; Flush, at the
// latest at the end of the object, draws what has been gathered. While one gathers no other batch may be open.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "render/Batches.h"
#include "scene/Surface.h"

class GeometryBatch {
public:
    GeometryBatch(PrimType primitive, uint32_t vertex_format); // a list of lines or triangles
    ~GeometryBatch() { Flush(); }
    GeometryBatch(const GeometryBatch&) = delete;
    GeometryBatch& operator=(const GeometryBatch&) = delete;

    // Makes room for vertices that are written next, then as many indices; the number of the first vertex.
    uint32_t Reserve(size_t vertices, size_t indices);
    void Flush();
    size_t MostVertices() const { return most_vertices; } // that one Reserve may ask for

private:
    PrimType prim;
    uint32_t fvf;
    size_t most_vertices;
    size_t vertex_count = 0, index_count = 0;
    bool open = false;
};

// write(i) writes vertex i of the vertex_count. Triangles that name others are left out.
template <class Write>
void AddTriangles(GeometryBatch& batch, const std::vector<TRIANGLE>& triangles, size_t vertex_count,
                  const Write& write) {
    const auto has_corners = [vertex_count](const TRIANGLE& t) {
        return t.i[0] < vertex_count && t.i[1] < vertex_count && t.i[2] < vertex_count;
    };
    if (vertex_count > batch.MostVertices() || 3 * triangles.size() > INDEX_BUFFER_PLACES) {
        for (const TRIANGLE& t : triangles) {
            if (!has_corners(t))
                continue;
            const uint32_t first = batch.Reserve(3, 3);
            for (const uint16_t i : t.i)
                write(i);
            crIndexFace(first, first + 1, first + 2);
        }
        return;
    }
    const uint32_t first = batch.Reserve(vertex_count, 3 * triangles.size());
    for (size_t i = 0; i < vertex_count; ++i)
        write(i);
    for (const TRIANGLE& t : triangles)
        if (has_corners(t))
            crIndexFace(first + t.i[0], first + t.i[1], first + t.i[2]);
}

// No texture and no blending: the colours of the vertices.
void SetPlainState();

// Plain lines of the world.
class LineBatch {
public:
    LineBatch() : batch(PT_LINE_LIST, VT_XYZ | VT_DIFFUSE) {}

    void Line(const D3DVECTOR& from, const D3DVECTOR& to, uint32_t color1, uint32_t color2);
    void Line(const D3DVECTOR& from, const D3DVECTOR& to, uint32_t color) { Line(from, to, color, color); }
    void Arrow(const D3DVECTOR& from, const D3DVECTOR& to, uint32_t color); // the head points at from
    void Edges(const Surface& surface, uint32_t color);
    void Flush() { batch.Flush(); }

private:
    uint32_t Reserve(size_t vertices, size_t indices);

    GeometryBatch batch;
};
