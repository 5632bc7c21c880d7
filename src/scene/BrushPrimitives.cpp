// The primitives with flat surfaces. c0 to c7 are the corners of the box in the view frame, P the pivot.
#include <algorithm>

#include "scene/BrushParts.h"
#include "scene/ViewFrame.h"

namespace {

constexpr uint32_t MIN_RING = 3;

// The ellipse through the sides of the box about the pivot, at height y.
std::vector<D3DVECTOR> Ring(const Box& c, const D3DVECTOR& pivot, float y, uint32_t n) {
    const float ra = std::fabs(pivot.x - c[0].x), rb = std::fabs(pivot.z - c[3].z);
    const float step = TWO_PI / static_cast<float>(n);
    std::vector<D3DVECTOR> ring(n);
    float angle = 0; // summed up: this is how the points always were
    for (D3DVECTOR& p : ring) {
        p = {std::cos(angle) * ra + pivot.x, y, std::sin(angle) * rb + pivot.z};
        angle += step;
    }
    return ring;
}

// A ring about its centre, vertex 0; the outline is the ring alone.
Surface RingFan(const D3DVECTOR& center, const std::vector<D3DVECTOR>& ring, bool reversed) {
    const int n = static_cast<int>(ring.size());
    Surface s;
    s.Allocate(n + 1, n, n);
    s.vertices[0] = center;
    std::copy(ring.begin(), ring.end(), s.vertices.begin() + 1);
    for (int i = 0; i < n; ++i) {
        const auto k = static_cast<size_t>(i);
        const int next = i + 1 < n ? i + 2 : 1;
        s.tri_indices[k] = reversed ? MakeTriangle(next, i + 1, 0) : MakeTriangle(0, i + 1, next);
        s.edge_indices[k] = MakeEdge(i + 1, next);
    }
    return s;
}

} // namespace

Surface MakeQuad(const D3DVECTOR& v0, const D3DVECTOR& v1, const D3DVECTOR& v2, const D3DVECTOR& v3) {
    Surface s;
    s.Allocate(4, 2, 4);
    s.vertices = {v0, v1, v2, v3};
    s.tri_indices = {{{0, 1, 2}}, {{0, 2, 3}}};
    s.edge_indices = {{{0, 1}}, {{1, 2}}, {{2, 3}}, {{3, 0}}};
    return s;
}

void Brush::FinishFlatPrimitive() {
    RecalcBBox();
    ComputeNormals();
    GenerateTextureSpaces();
    SurfaceLight();
}

void Brush::CreateRect(uint32_t view) {
    static constexpr size_t CORNERS[3][4] = {{0, 1, 2, 3}, {3, 2, 6, 7}, {2, 1, 5, 6}};
    const size_t(&corner)[4] = CORNERS[std::min(view, 2u)];
    surfaces.push_back(MakeQuad(bbox[corner[0]], bbox[corner[1]], bbox[corner[2]], bbox[corner[3]]));
    ComputeNormals();
    GenerateTextureSpaces();
    SurfaceLight();
}

void Brush::CreateBox() {
    // Projects store this order.
    static constexpr size_t FACES[6][4] = {{0, 1, 2, 3}, {3, 2, 6, 7}, {2, 1, 5, 6},
                                           {7, 6, 5, 4}, {4, 5, 1, 0}, {7, 4, 0, 3}};
    for (const auto& face : FACES)
        surfaces.push_back(MakeQuad(bbox[face[0]], bbox[face[1]], bbox[face[2]], bbox[face[3]]));
    ComputeNormals();
    GenerateTextureSpaces();
    SurfaceLight();
}

void Brush::CreatePyramid(uint32_t view, uint32_t segment_count) {
    if (segment_count < MIN_RING)
        return;
    ViewFrame frame(*this, view);
    const D3DVECTOR apex{pivot.x, bbox[0].y, pivot.z}, base{pivot.x, bbox[4].y, pivot.z};
    const std::vector<D3DVECTOR> ring = Ring(bbox, pivot, base.y, segment_count);
    surfaces.push_back(RingFan(base, ring, false));
    for (size_t i = 0; i < ring.size(); ++i) {
        Surface& side = surfaces.emplace_back();
        side.Allocate(3, 1, 3);
        side.vertices = {apex, ring[i], ring[(i + 1) % ring.size()]};
        side.tri_indices = {{{2, 1, 0}}};
        side.edge_indices = {{{0, 1}}, {{1, 2}}, {{2, 0}}};
    }
    frame.Leave();
    FinishFlatPrimitive();
}

void Brush::CreatePrism(uint32_t view, uint32_t segment_count) {
    if (segment_count < MIN_RING)
        return;
    ViewFrame frame(*this, view);
    const float bottom_y = bbox[4].y, top_y = bbox[0].y;
    const std::vector<D3DVECTOR> bottom = Ring(bbox, pivot, bottom_y, segment_count);
    const std::vector<D3DVECTOR> top = Ring(bbox, pivot, top_y, segment_count);
    surfaces.push_back(RingFan({pivot.x, bottom_y, pivot.z}, bottom, false));
    surfaces.push_back(RingFan({pivot.x, top_y, pivot.z}, top, true));
    for (size_t i = 0; i < top.size(); ++i) {
        const size_t next = (i + 1) % top.size();
        surfaces.push_back(MakeQuad(top[i], top[next], bottom[next], bottom[i]));
    }
    frame.Leave();
    FinishFlatPrimitive();
}
