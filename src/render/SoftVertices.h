// The vertices of one call of the software device: read by their format, transformed, cut, and joined to primitives.
#pragma once

#include <vector>

#include "render/SoftRaster.h"

// Memory that one call leaves to the next.
struct SoftScratch {
    std::vector<SoftVertex> on_screen; // of the vertices that no plane cuts off
    std::vector<uint32_t> outside;     // bit i: outside cut i; or NOT_USABLE
};

class SoftVertices {
public:
    // coordinate_sets: that the pixels need. What is drawn goes to the sink.
    SoftVertices(const SoftState& device_state, uint32_t coordinate_sets, SoftSink& to, SoftScratch& memory);

    // False for a format without a position. The data must outlive the drawing. The vertices come to the screen from
    // this place of the memory on.
    bool Read(uint32_t fvf, const uint8_t* data, uint32_t count, size_t place = 0);
    bool Draw(PrimType prim, const uint16_t* indices, uint32_t index_count); // without indices: in their order
    // A list of lines or triangles, whose indices count from a first vertex.
    void DrawList(PrimType prim, const uint32_t* indices, uint32_t index_count, uint32_t first);

private:
    static constexpr uint32_t NOT_USABLE = 0x80000000; // not made of finite numbers
    struct Polygon {
        SoftVertex corners[SoftSink::MOST_CORNERS];
        int count = 0;
    };
    struct Cut { // inside where the sum of the factors times the first four values, plus add, is not negative
        float x, y, z, w, add;
        int plane = -1; // or where the distance from this clip plane is not negative
    };

    void ReadVertex(uint32_t i, SoftVertex& vertex) const; // to clip space
    bool IsFinite(const SoftVertex& vertex) const;
    uint32_t Outside(const SoftVertex& vertex) const;
    void MakeCuts();
    static double Distance(const Cut& cut, const SoftVertex& vertex);
    static SoftVertex Between(const SoftVertex& in, const SoftVertex& out, double from_in, double from_out);
    static void CutPolygon(Polygon& polygon, const Cut& cut);
    void ToScreen(const SoftVertex& vertex, SoftVertex& placed) const;
    void DrawTriangle(uint32_t a, uint32_t b, uint32_t c);
    void DrawCutTriangle(uint32_t a, uint32_t b, uint32_t c);
    void DrawLine(uint32_t a, uint32_t b);
    void DrawCutLine(uint32_t a, uint32_t b);
    void PlaceLine(const SoftVertex& from, const SoftVertex& to); // as wide as a dot
    void DrawPoint(uint32_t a);

    const SoftState& state;
    SoftScratch& scratch;
    SoftSink& sink;
    uint32_t needed_sets; // of coordinates
    const uint8_t* vertices = nullptr;
    uint32_t format = 0;
    FvfLayout layout;
    SoftVertex* on_screen = nullptr; // in the memory, as the next
    uint32_t* outside_of = nullptr;
    uint32_t vertex_count = 0, plane_mask = 0;
    int uv_end = SoftVertex::UV; // behind the coordinates that the vertices have or the pixels need
    bool transformed = false;    // positions are on the screen already
    D3DMATRIX to_clip_space;
    std::vector<Cut> cuts;
};
