// Curved surfaces: from control points to meshes at the brush's curve detail.
#include <algorithm>
#include <cstdint>
#include <iterator>

#include "foundation/Log.h"
#include "scene/BrushParts.h"
#include "scene/PlaneMapping.h"

namespace {

struct CurveDetail {
    uint32_t segments;
    float delta;
};
constexpr CurveDetail CURVE_DETAILS[] = {{16, 0.0625f}, {8, 0.125f}, {4, 0.25f}, {2, 0.5f}};

void ResizeVertices(Surface& s, size_t n) {
    s.vertices.resize(n);
    s.normal.resize(n);
    s.uv.resize(n);
    s.lightmap_uv.resize(n);
    s.diffuse.resize(n);
}

// Texture coordinates from the curve parameters: at scale 1 the surface spans the texture once.
class ParametricMapping {
public:
    explicit ParametricMapping(const TEX_INFO& tex_info) : info(tex_info) {
        const float angle = info.rotation * DEGREE_TO_TURN * TWO_PI;
        sine = std::sin(angle);
        cosine = std::cos(angle);
        const UVVector size = info.MappingSize();
        offset = {info.shift.u / size.u, info.shift.v / size.v};
    }
    UVVector At(float s, float t) const {
        const float a = s + offset.u, b = t + offset.v;
        const float u = a * cosine - b * sine, v = a * sine + b * cosine;
        return {(info.flip_u ? -u : u) * info.scale.u, (info.flip_v ? -v : v) * info.scale.v};
    }

private:
    const TEX_INFO& info;
    float sine, cosine;
    UVVector offset;
};

// Coordinates of the points of a lightmap's axis: the outer texels lie outside the surface. All 0 before it has a size.
struct LightmapAxis {
    float first = 0, step = 0;

    LightmapAxis(int32_t texels, int points) {
        if (texels <= 0)
            return;
        const auto size = static_cast<float>(texels);
        first = 1 / size;
        step = (1 - 2 / size) / static_cast<float>(points - 1);
    }
};

// rows by n points, row after row, at rising t.
void MapParametric(Surface& s, int rows, int n, float t_step, float s_step) {
    const ParametricMapping mapping(s.texture);
    const LightmapAxis along(s.lightmap_size.cx, n), across(s.lightmap_size.cy, rows);
    float t = 0, lightmap_v = across.first;
    size_t i = 0;
    for (int row = 0; row < rows; ++row, t += t_step, lightmap_v += across.step) {
        float lightmap_u = along.first;
        for (int k = 0; k < n; ++k, ++i, lightmap_u += along.step) {
            s.uv[i] = mapping.At(static_cast<float>(k) * s_step, t);
            s.lightmap_uv[i] = {lightmap_u, lightmap_v};
        }
    }
}

void TesselateFan(Surface& s, int n, int detail) {
    ResizeVertices(s, static_cast<size_t>(n) + 1);
    s.vertices[0] = s.cp[3];
    s_math.GetVerticesAlongBezierCurve3CP(s.cp.data(), s.vertices.data() + 1, detail, n);
    s.tri_indices.clear();
    s.edge_indices.clear();
    for (int i = 1; i < n; ++i) {
        s.tri_indices.push_back(MakeTriangle(0, i, i + 1));
        s.edge_indices.push_back(MakeEdge(i, i + 1));
    }
}

void TesselateStrip(Surface& s, int n, int detail, float delta) {
    ResizeVertices(s, 2 * static_cast<size_t>(n));
    s_math.GetVerticesAlongBezierCurve3CP(s.cp.data(), s.vertices.data(), detail, n);
    s_math.GetVerticesAlongBezierCurve3CP(s.cp.data() + 3, s.vertices.data() + n, detail, n);
    s.tri_indices.clear();
    s.edge_indices.clear();
    for (int i = 0; i + 1 < n; ++i) {
        s.tri_indices.push_back(MakeTriangle(i, n + i, n + i + 1));
        s.tri_indices.push_back(MakeTriangle(i, n + i + 1, i + 1));
    }
    for (int row = 0; row < 2; ++row)
        for (int i = 0; i + 1 < n; ++i)
            s.edge_indices.push_back(MakeEdge(row * n + i, row * n + i + 1));
    for (int i = 0; i < n; ++i)
        s.edge_indices.push_back(MakeEdge(i, n + i));
    MapParametric(s, 2, n, 1.0f, delta);
}

void TesselatePatch(Surface& s, int n, int detail, float delta) {
    ResizeVertices(s, static_cast<size_t>(n) * static_cast<size_t>(n));
    s_math.GetVerticesAlongBezierPatch3CP(s.cp.data(), s.vertices.data(), detail, n);
    s.tri_indices.clear();
    s.edge_indices.clear();
    for (int row = 0; row + 1 < n; ++row)
        for (int col = 0; col + 1 < n; ++col) {
            const int a = row * n + col, b = a + n, c = b + 1, d = a + 1;
            s.tri_indices.push_back(MakeTriangle(a, b, c));
            s.tri_indices.push_back(MakeTriangle(a, c, d));
            for (const EDGE edge : {MakeEdge(a, b), MakeEdge(c, b), MakeEdge(c, d), MakeEdge(a, d)})
                s.edge_indices.push_back(edge);
        }
    MapParametric(s, n, n, delta, delta);
}

} // namespace

void Brush::TesselateCurves() {
    if (IsCustom())
        return;
    MarkDrawnChanged();
    const int n = static_cast<int>(CURVE_SEGMENTS) + 1;
    const int detail = static_cast<int>(CURVE_DETAIL);
    bool unknown_kind = false;
    for (size_t c = 0; c < curved_surfaces.size(); ++c) {
        Surface& s = curved_surfaces[c];
        // A record can announce more control points than it holds.
        const int32_t kind = s.cp.size() >= static_cast<size_t>(std::max(s.cp_count, 0)) ? s.cp_count : 0;
        if (kind == CURVE_FAN) {
            TesselateFan(s, n, detail);
            const D3DVECTOR across = CrossProduct(s.vertices[1] - s.vertices[0], s.vertices[2] - s.vertices[0]);
            MapLightmapUV4CurveT1(NormalizeOrZero(across), static_cast<int>(c), s.lightmap_size.cx, s.lightmap_size.cy);
            CalculateUV4CurveT1(static_cast<int>(c));
        } else if (kind == CURVE_STRIP)
            TesselateStrip(s, n, detail, CURVE_DELTA);
        else if (kind == CURVE_PATCH)
            TesselatePatch(s, n, detail, CURVE_DELTA);
        else {
            s.Allocate(0, 0, 0);
            unknown_kind = true;
        }
    }
    if (unknown_kind)
        LOG("BF correcting brush with id = %d (this = 0x%08x)", static_cast<int>(GetObjectID()),
            static_cast<unsigned>(reinterpret_cast<uintptr_t>(this)));
}

void Brush::SetCurveDetail(int detail) {
    if (detail < 0 || static_cast<size_t>(detail) >= std::size(CURVE_DETAILS))
        return;
    CURVE_DETAIL = static_cast<uint32_t>(detail);
    CURVE_SEGMENTS = CURVE_DETAILS[detail].segments;
    CURVE_DELTA = CURVE_DETAILS[detail].delta;
}

void Brush::ChangeCurveDetail(int detail) {
    SetCurveDetail(detail);
    if (!curved_surfaces.empty() && !IsCustom())
        RebuildCurves();
}

void Brush::RebuildCurves() {
    TesselateCurves();
    ComputeNormals();
    SurfaceLight();
}

void Brush::MapLightmapUV4CurveT1(const D3DVECTOR& normal, int surface, int tx, int ty) {
    Surface& s = curved_surfaces[static_cast<size_t>(surface)];
    s.lightmap_uv.assign(s.vertices.size(), {});
    constexpr int BORDER = 2; // texels outside the surface, on both sides together
    if (tx <= BORDER || ty <= BORDER)
        return;
    const PlaneMapping mapping = MapToPlane(normal, s.vertices);
    const auto width = static_cast<float>(tx), height = static_cast<float>(ty);
    const float texel_size = std::max(mapping.size.x / (width - BORDER), mapping.size.y / (height - BORDER));
    if (!(texel_size > 0))
        return;
    for (size_t i = 0; i < s.vertices.size(); ++i) {
        const D3DVECTOR& p = mapping.points[i];
        s.lightmap_uv[i] = {(texel_size + p.x) / texel_size / width, (texel_size + p.y) / texel_size / height};
    }
}
