// The vertices of one call of the software device: read by their format, transformed, cut, and joined to primitives.
#pragma once

#include <vector>

#include "render/SoftRaster.h"

class SoftVertices {
public:
    SoftVertices(const SoftState& device_state, const SoftTarget& target);

    bool Read(uint32_t fvf, const uint8_t* vertices, uint32_t vertex_count); // false for a format without a position
    bool Draw(PrimType prim, const uint16_t* indices, uint32_t index_count); // without indices: in their order

private:
    static constexpr int MOST_CORNERS = 3 + 13; // every plane of a cut adds one at most
    struct Polygon {
        SoftVertex corners[MOST_CORNERS];
        int count = 0;
    };
    struct Cut { // inside where the sum of the factors times the first four values, plus add, is not negative
        float x, y, z, w, add;
        int plane = -1; // or where the distance from this clip plane is not negative
    };

    void ReadVertex(const FvfLayout& layout, uint32_t fvf, const uint8_t* at, SoftVertex& vertex) const;
    void MakeCuts();
    static double Distance(const Cut& cut, const SoftVertex& vertex);
    static SoftVertex Between(const SoftVertex& in, const SoftVertex& out, double from_in, double from_out);
    static void CutPolygon(Polygon& polygon, const Cut& cut);
    SoftVertex ToScreen(const SoftVertex& vertex) const;
    void DrawTriangle(uint32_t a, uint32_t b, uint32_t c);
    void DrawLine(uint32_t a, uint32_t b);
    void DrawPoint(uint32_t a);
    bool IsUsable(uint32_t i) const { return i < vertices.size() && usable[i]; }

    const SoftState& state;
    SoftRaster raster;
    bool transformed = false; // positions are on the screen already
    D3DMATRIX to_clip_space;
    std::vector<Cut> cuts;
    std::vector<SoftVertex> vertices;
    std::vector<bool> usable; // made of finite numbers
};
