// One surface of a brush: an independent little mesh with its own vertices, triangles, outline, mapping and lightmap.
// Flat and curved surfaces are the same record, held in two lists of the brush.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "foundation/Vector.h"

struct SIZE {
    int32_t cx = 0, cy = 0;
    bool operator==(const SIZE&) const = default;
};

// Indices into the vertices of the owning surface: at most 65536 vertices a surface.
struct TRIANGLE {
    std::array<uint16_t, 3> i{};
    bool operator==(const TRIANGLE&) const = default;
};
struct EDGE {
    std::array<uint16_t, 2> i{};
    bool operator==(const EDGE&) const = default;
};
static_assert(sizeof(TRIANGLE) == 6 && sizeof(EDGE) == 4);

// The mapping of a texture on one surface.
struct TEX_INFO {
    UVVector shift;             // texels; u is subtracted, v added
    UVVector scale{1.0f, 1.0f}; // multiplies the texture axes
    UVVector size;              // of the texture, texels
    float rotation = 0;         // degrees about the surface normal
    bool flip_u = false, flip_v = false;
    bool locked = false; // the texture follows the surface through edits
    int32_t index = 0;   // row of the world's material table; 0 is no material
    bool fitted = false;
    bool operator==(const TEX_INFO&) const = default;
    // The size to divide by: 1 where the texture is not loaded.
    UVVector MappingSize() const { return {size.u != 0 ? size.u : 1.0f, size.v != 0 ? size.v : 1.0f}; }
};

// A world point p has the texels X = p . ts_x + ts_s.x and Y = -(p . ts_y) + ts_s.y.
struct TEXTURE_SPACE {
    D3DVECTOR ts_s, ts_x, ts_y, ts_z;
};

// Where a lightmap lies. While lighting, the size counts texels and `lightmap` is -1 without a texture; after paging
// `lightmap` is the page and the rest are fractions of its side.
struct LIGHTMAP_INFO {
    int32_t lightmap = 0;
    float u_start = 0, v_start = 0, u_size = 0, v_size = 0;
    int32_t light_index = -1; // the light entity of a dynamic lightmap, -1 for the static one
};
static_assert(sizeof(LIGHTMAP_INFO) == 24);

// World position of the plane-space origin, and the world vectors of the plane-space extents.
struct LIGHTMAP_VECTOR {
    D3DVECTOR s, u, v;
};

// A lightmap that its own light switches at run time.
struct DynamicLightmap {
    LIGHTMAP_INFO info;
    std::vector<uint32_t> block; // texels until paging, rows of info.u_size
};

// Control points of a curved surface tell its kind.
enum CurveKind { CURVE_MESH = 1, CURVE_FAN = 4, CURVE_SWEEP = 5, CURVE_STRIP = 6, CURVE_PATCH = 9 };

struct Surface {
    std::vector<D3DVECTOR> vertices;
    std::vector<D3DVECTOR> normal;       // one a vertex
    std::vector<UVVector> uv;            // one a vertex
    std::vector<UVVector> lightmap_uv;   // one a vertex
    std::vector<uint32_t> diffuse;       // one a vertex
    std::vector<uint32_t> extra_diffuse; // lit vertex colours 0xAARRGGBB, only in a custom brush
    std::vector<TRIANGLE> tri_indices;
    std::vector<EDGE> edge_indices; // the wire outline
    std::vector<D3DVECTOR> cp;      // control points of a curved surface
    int32_t cp_count = 0;           // CurveKind; 1 for the stored mesh of a custom brush, which has no cp

    TEX_INFO texture;
    TEXTURE_SPACE texture_space;

    LIGHTMAP_INFO lightmap_info;
    LIGHTMAP_VECTOR lightmap_vector;
    SIZE lightmap_size;                   // texels
    int32_t lightmap = 0;                 // 1 when lit, -1 when skipped
    std::vector<int32_t> light;           // lights in range, entity indices
    std::vector<uint32_t> lightmap_block; // texels 0x00RRGGBB until paging, rows of lightmap_info.u_size
    std::vector<DynamicLightmap> dynamic_lightmaps;

    bool HasMaterial() const { return texture.index != 0; }
    // False for a triangle that names a vertex which is not there, as a damaged project can.
    bool HasCorners(const TRIANGLE& t) const {
        return t.i[0] < vertices.size() && t.i[1] < vertices.size() && t.i[2] < vertices.size();
    }
    void CopyShape(const Surface& src); // and the mapping; the lightmap stays out
    // Arrays of n vertices, t triangles, e edges, zeroed.
    void Allocate(int n, int t, int e);
};
