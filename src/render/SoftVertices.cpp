#include "render/SoftVertices.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

// How far beyond its edges the picture is computed: in pixels for positions on the screen, else in fields of view.
constexpr float SCREEN_GUARD = 32768.0f, VIEW_GUARD = 4.0f;
constexpr float SMALLEST_W = 1e-6f;

template <class Value>
Value ReadField(const uint8_t* at) {
    Value value;
    std::memcpy(&value, at, sizeof(value));
    return value;
}

} // namespace

SoftVertices::SoftVertices(const SoftState& device_state, const SoftTarget& target)
    : state(device_state), raster(device_state, target) {
    const D3DMATRIX* const m = state.transforms;
    crMMultiply(m[CRM_WORLD], m[CRM_VIEW], to_clip_space);
    crMMultiply(to_clip_space, m[CRM_PROJ], to_clip_space);
}

bool SoftVertices::Read(uint32_t fvf, const uint8_t* data, uint32_t vertex_count) {
    if ((fvf & (VT_XYZ | VT_XYZRHW)) == 0 || !data)
        return false;
    transformed = (fvf & VT_XYZ) == 0;
    MakeCuts();
    const FvfLayout layout = MakeFvfLayout(fvf);
    vertices.resize(vertex_count);
    usable.resize(vertex_count);
    for (uint32_t i = 0; i < vertex_count; ++i) {
        ReadVertex(layout, fvf, data + static_cast<size_t>(i) * layout.size, vertices[i]);
        bool finite = true;
        for (const float value : vertices[i].v)
            finite = finite && std::isfinite(value);
        usable[i] = finite;
    }
    return true;
}

void SoftVertices::ReadVertex(const FvfLayout& layout, uint32_t fvf, const uint8_t* at, SoftVertex& vertex) const {
    float* const v = vertex.v;
    const auto position = ReadField<D3DVECTOR>(at + layout.offsets[CRO_XYZ]);
    const VECTOR4 point{position.x, position.y, position.z, 1};
    VECTOR4 placed = point;
    if (transformed) {
        const auto rhw = ReadField<float>(at + layout.offsets[CRO_RHW]);
        placed.w = rhw > 0 ? rhw : 1.0f;
    } else {
        crMTransform4(to_clip_space, point, placed);
    }
    v[SoftVertex::X] = placed.x, v[SoftVertex::Y] = placed.y, v[SoftVertex::Z] = placed.z, v[SoftVertex::W] = placed.w;

    const uint32_t diffuse = (fvf & VT_DIFFUSE) != 0 ? ReadField<uint32_t>(at + layout.offsets[CRO_DIFF]) : 0xFFFFFFFF;
    constexpr int ARGB_SHIFT[4] = {16, 8, 0, 24};
    for (int c = 0; c < 4; ++c)
        v[SoftVertex::RED + c] = static_cast<float>(diffuse >> ARGB_SHIFT[c] & 255);
    for (uint32_t set = 0; set < SoftVertex::COORDINATE_SETS; ++set) {
        UVVector uv;
        if (set < layout.coordinate_sets)
            uv = ReadField<UVVector>(at + layout.offsets[CRO_TEX1 + set]);
        v[SoftVertex::UV + 2 * set] = uv.u;
        v[SoftVertex::UV + 2 * set + 1] = uv.v;
    }
    const uint32_t plane_mask = transformed ? 0 : state.states[RS_CLIPPLANEENABLE];
    for (uint32_t i = 0; i < CLIP_PLANES; ++i) {
        v[SoftVertex::CUT + i] = 0;
        if ((plane_mask >> i & 1) == 0)
            continue;
        D3DVECTOR in_world;
        crMTransform(state.transforms[CRM_WORLD], position, in_world);
        v[SoftVertex::CUT + i] = state.planes[i].get_cos(in_world);
    }
    if (transformed) // what follows the picture linearly, as ToScreen makes it
        for (int k = SoftVertex::RED; k < SoftVertex::CUT; ++k)
            v[k] *= placed.w;
}

void SoftVertices::MakeCuts() {
    if (transformed) {
        cuts = {{1, 0, 0, 0, SCREEN_GUARD},
                {-1, 0, 0, 0, SCREEN_GUARD},
                {0, 1, 0, 0, SCREEN_GUARD},
                {0, -1, 0, 0, SCREEN_GUARD}};
        return;
    }
    cuts = {{0, 0, 0, 1, -SMALLEST_W}, {0, 0, 1, 0, 0},          {0, 0, -1, 1, 0},         {1, 0, 0, VIEW_GUARD, 0},
            {-1, 0, 0, VIEW_GUARD, 0}, {0, 1, 0, VIEW_GUARD, 0}, {0, -1, 0, VIEW_GUARD, 0}};
    for (uint32_t i = 0; i < CLIP_PLANES; ++i)
        if ((state.states[RS_CLIPPLANEENABLE] >> i & 1) != 0)
            cuts.push_back({0, 0, 0, 0, 0, static_cast<int>(i)});
}

// In 64 bits, as corners may lie a million pictures away.
double SoftVertices::Distance(const Cut& cut, const SoftVertex& vertex) {
    const float* const v = vertex.v;
    if (cut.plane >= 0)
        return v[SoftVertex::CUT + cut.plane];
    return double{cut.x} * v[SoftVertex::X] + double{cut.y} * v[SoftVertex::Y] + double{cut.z} * v[SoftVertex::Z] +
           double{cut.w} * v[SoftVertex::W] + cut.add;
}

// Always from the inside to the outside, so that two triangles that share an edge get the same cut.
SoftVertex SoftVertices::Between(const SoftVertex& in, const SoftVertex& out, double from_in, double from_out) {
    const double t = from_in / (from_in - from_out);
    SoftVertex between;
    for (int k = 0; k < SoftVertex::COUNT; ++k)
        between.v[k] = static_cast<float>(in.v[k] + (double{out.v[k]} - in.v[k]) * t);
    return between;
}

void SoftVertices::CutPolygon(Polygon& polygon, const Cut& cut) {
    double from[MOST_CORNERS];
    bool any_outside = false;
    for (int k = 0; k < polygon.count; ++k) {
        from[k] = Distance(cut, polygon.corners[k]);
        any_outside = any_outside || from[k] < 0;
    }
    if (!any_outside)
        return;
    Polygon kept;
    for (int k = 0; k < polygon.count; ++k) {
        const int next = k + 1 < polygon.count ? k + 1 : 0;
        if (from[k] >= 0 && kept.count < MOST_CORNERS)
            kept.corners[kept.count++] = polygon.corners[k];
        if ((from[k] < 0) != (from[next] < 0) && kept.count < MOST_CORNERS) {
            const int in = from[k] < 0 ? next : k, out = from[k] < 0 ? k : next;
            kept.corners[kept.count++] = Between(polygon.corners[in], polygon.corners[out], from[in], from[out]);
        }
    }
    polygon = kept;
}

SoftVertex SoftVertices::ToScreen(const SoftVertex& vertex) const {
    if (transformed)
        return vertex;
    SoftVertex placed = vertex;
    float* const v = placed.v;
    const float w = std::max(v[SoftVertex::W], SMALLEST_W); // a cut may round below it
    const float half_width = static_cast<float>(state.viewport.w) * 0.5f;
    const float half_height = static_cast<float>(state.viewport.h) * 0.5f;
    v[SoftVertex::X] = static_cast<float>(state.viewport.x) + half_width + v[SoftVertex::X] / w * half_width;
    v[SoftVertex::Y] = static_cast<float>(state.viewport.y) + half_height - v[SoftVertex::Y] / w * half_height;
    v[SoftVertex::Z] = v[SoftVertex::Z] / w;
    const float rhw = 1.0f / w;
    v[SoftVertex::W] = rhw;
    for (int k = SoftVertex::RED; k < SoftVertex::CUT; ++k)
        v[k] *= rhw;
    return placed;
}

void SoftVertices::DrawTriangle(uint32_t a, uint32_t b, uint32_t c) {
    if (!IsUsable(a) || !IsUsable(b) || !IsUsable(c))
        return;
    Polygon polygon;
    polygon.corners[0] = vertices[a], polygon.corners[1] = vertices[b], polygon.corners[2] = vertices[c];
    polygon.count = 3;
    if (state.states[RS_SHADEMODE] == SHADE_FLAT)
        for (int k = 1; k < 3; ++k) {
            const float scale = transformed ? polygon.corners[k].v[SoftVertex::W] / vertices[a].v[SoftVertex::W] : 1;
            for (int channel = SoftVertex::RED; channel < SoftVertex::UV; ++channel)
                polygon.corners[k].v[channel] = vertices[a].v[channel] * scale;
        }
    for (const Cut& cut : cuts)
        CutPolygon(polygon, cut);
    if (polygon.count < 3)
        return;
    for (int k = 0; k < polygon.count; ++k)
        polygon.corners[k] = ToScreen(polygon.corners[k]);
    raster.Polygon(polygon.corners, polygon.count);
}

void SoftVertices::DrawLine(uint32_t a, uint32_t b) {
    if (!IsUsable(a) || !IsUsable(b))
        return;
    SoftVertex ends[2] = {vertices[a], vertices[b]};
    for (const Cut& cut : cuts) {
        const double from[2] = {Distance(cut, ends[0]), Distance(cut, ends[1])};
        if (from[0] < 0 && from[1] < 0)
            return;
        for (int k = 0; k < 2; ++k)
            if (from[k] < 0)
                ends[k] = Between(ends[1 - k], ends[k], from[1 - k], from[k]);
    }
    raster.Line(ToScreen(ends[0]), ToScreen(ends[1]));
}

void SoftVertices::DrawPoint(uint32_t a) {
    if (!IsUsable(a))
        return;
    for (const Cut& cut : cuts)
        if (Distance(cut, vertices[a]) < 0)
            return;
    raster.Point(ToScreen(vertices[a]));
}

bool SoftVertices::Draw(PrimType prim, const uint16_t* indices, uint32_t n) {
    const auto at = [indices](uint32_t i) -> uint32_t { return indices ? indices[i] : i; };
    switch (prim) {
    case PT_POINT_LIST:
        for (uint32_t i = 0; i < n; ++i)
            DrawPoint(at(i));
        return true;
    case PT_LINE_LIST:
        for (uint32_t i = 0; i + 1 < n; i += 2)
            DrawLine(at(i), at(i + 1));
        return true;
    case PT_LINE_STRIP:
        for (uint32_t i = 0; i + 1 < n; ++i)
            DrawLine(at(i), at(i + 1));
        return true;
    case PT_TRI_LIST:
        for (uint32_t i = 0; i + 2 < n; i += 3)
            DrawTriangle(at(i), at(i + 1), at(i + 2));
        return true;
    case PT_TRI_STRIP:
        for (uint32_t i = 0; i + 2 < n; ++i)
            DrawTriangle(at(i), at(i + 1 + i % 2), at(i + 2 - i % 2)); // every second one turns the other way
        return true;
    case PT_TRI_FAN:
        for (uint32_t i = 1; i + 1 < n; ++i)
            DrawTriangle(at(0), at(i), at(i + 1));
        return true;
    }
    return false;
}
