// The vertices of one call of the software device: read by their format, transformed, cut, and joined to primitives.
#pragma once

#include <vector>

#include "render/SoftRaster.h"

// Memory that one call leaves to the next.
struct SoftScratch {
    std::vector<SoftVertex> in_clip_space, on_screen; // on_screen: of the vertices that no plane cuts off
    std::vector<uint32_t> outside;                    // bit i: outside cut i; or NOT_USABLE
};

class SoftVertices {
public:
    SoftVertices(const SoftState& device_state, const SoftTarget& target, SoftScratch& memory);

    bool Read(uint32_t fvf, const uint8_t* data, uint32_t count);            // false for a format without a position
    bool Draw(PrimType prim, const uint16_t* indices, uint32_t index_count); // without indices: in their order

private:
    static constexpr uint32_t NOT_USABLE = 0x80000000; // not made of finite numbers
    struct Polygon {
        SoftVertex corners[SoftRaster::MOST_CORNERS];
        int count = 0;
    };
    struct Cut { // inside where the sum of the factors times the first four values, plus add, is not negative
        float x, y, z, w, add;
        int plane = -1; // or where the distance from this clip plane is not negative
    };

    void ReadVertex(const FvfLayout& layout, uint32_t fvf, const uint8_t* at, SoftVertex& vertex) const;
    bool IsFinite(const SoftVertex& vertex) const;
    uint32_t Outside(const SoftVertex& vertex) const;
    void MakeCuts();
    static double Distance(const Cut& cut, const SoftVertex& vertex);
    static SoftVertex Between(const SoftVertex& in, const SoftVertex& out, double from_in, double from_out);
    static void CutPolygon(Polygon& polygon, const Cut& cut);
    void ToScreen(const SoftVertex& vertex, SoftVertex& placed) const;
    void DrawTriangle(uint32_t a, uint32_t b, uint32_t c);
    void DrawCutTriangle(const SoftVertex& a, const SoftVertex& b, const SoftVertex& c);
    void DrawLine(uint32_t a, uint32_t b);
    void DrawCutLine(const SoftVertex& a, const SoftVertex& b);
    void DrawPoint(uint32_t a);

    const SoftState& state;
    SoftScratch& scratch;
    SoftRaster raster;
    uint32_t vertex_count = 0, plane_mask = 0;
    int uv_end = SoftVertex::UV; // behind the coordinates that the vertices have or the pixels need
    bool transformed = false;    // positions are on the screen already
    D3DMATRIX to_clip_space;
    std::vector<Cut> cuts;
};
