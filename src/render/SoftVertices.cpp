#include "render/SoftVertices.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "render/DisplayScale.h"

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

SoftVertices::SoftVertices(const SoftState& device_state, uint32_t coordinate_sets, SoftSink& to, SoftScratch& memory)
    : state(device_state), scratch(memory), sink(to), needed_sets(coordinate_sets) {
    const D3DMATRIX* const m = state.transforms;
    crMMultiply(m[CRM_WORLD], m[CRM_VIEW], to_clip_space);
    crMMultiply(to_clip_space, m[CRM_PROJ], to_clip_space);
}

bool SoftVertices::Read(uint32_t fvf, const uint8_t* data, uint32_t count, size_t place) {
    if ((fvf & (VT_XYZ | VT_XYZRHW)) == 0 || !data)
        return false;
    if (fvf != format) {
        format = fvf;
        layout = MakeFvfLayout(fvf);
        transformed = (fvf & VT_XYZ) == 0;
        plane_mask = transformed ? 0 : state.states[RS_CLIPPLANEENABLE];
        MakeCuts();
        uv_end = SoftVertex::UV + 2 * static_cast<int>(std::max(layout.coordinate_sets, needed_sets));
        uv_end = std::min<int>(uv_end, SoftVertex::CUT);
    }
    vertices = data;
    vertex_count = count;
    if (scratch.outside.size() < place + count) {
        scratch.on_screen.resize(place + count);
        scratch.outside.resize(place + count);
    }
    on_screen = scratch.on_screen.data() + place;
    outside_of = scratch.outside.data() + place;
    SoftVertex vertex;
    for (uint32_t i = 0; i < count; ++i) {
        ReadVertex(i, vertex);
        const uint32_t outside = IsFinite(vertex) ? Outside(vertex) : NOT_USABLE;
        outside_of[i] = outside;
        if (outside == 0)
            ToScreen(vertex, on_screen[i]);
    }
    return true;
}

void SoftVertices::ReadVertex(uint32_t i, SoftVertex& vertex) const {
    const uint8_t* const at = vertices + static_cast<size_t>(i) * layout.size;
    float* const v = vertex.v;
    const auto position = ReadField<D3DVECTOR>(at + layout.offsets[CRO_XYZ]);
    if (transformed) {
        const auto rhw = ReadField<float>(at + layout.offsets[CRO_RHW]);
        v[SoftVertex::X] = position.x, v[SoftVertex::Y] = position.y, v[SoftVertex::Z] = position.z;
        v[SoftVertex::W] = rhw > 0 ? rhw : 1.0f;
    } else {
        using Floats = float __attribute__((vector_size(16)));
        Floats rows[4];
        static_assert(sizeof(rows) == sizeof(to_clip_space.m));
        std::memcpy(rows, to_clip_space.m, sizeof(rows));
        const Floats placed = position.x * rows[0] + position.y * rows[1] + position.z * rows[2] + rows[3];
        std::memcpy(v + SoftVertex::X, &placed, sizeof(placed));
    }
    vertex.argb = (format & VT_DIFFUSE) != 0 ? ReadField<uint32_t>(at + layout.offsets[CRO_DIFF]) : 0xFFFFFFFF;
    vertex.mixed = false;
    constexpr int ARGB_SHIFT[4] = {16, 8, 0, 24};
    for (int c = 0; c < 4; ++c)
        v[SoftVertex::RED + c] = static_cast<float>(vertex.argb >> ARGB_SHIFT[c] & 255);
    for (uint32_t set = 0; SoftVertex::UV + 2 * static_cast<int>(set) < uv_end; ++set) {
        UVVector uv;
        if (set < layout.coordinate_sets)
            uv = ReadField<UVVector>(at + layout.offsets[CRO_TEX1 + set]);
        v[SoftVertex::UV + 2 * set] = uv.u;
        v[SoftVertex::UV + 2 * set + 1] = uv.v;
    }
    for (uint32_t p = 0; plane_mask != 0 && p < CLIP_PLANES; ++p) {
        v[SoftVertex::CUT + p] = 0;
        if ((plane_mask >> p & 1) == 0)
            continue;
        D3DVECTOR in_world;
        crMTransform(state.transforms[CRM_WORLD], position, in_world);
        v[SoftVertex::CUT + p] = state.planes[p].get_cos(in_world);
    }
    if (transformed) // what follows the picture linearly, as ToScreen makes it
        for (int k = SoftVertex::RED; k < uv_end; ++k)
            v[k] *= v[SoftVertex::W];
}

bool SoftVertices::IsFinite(const SoftVertex& vertex) const {
    const auto zero = [&vertex](int begin, int end) { // or not a number, unless all values are finite
        float sum = 0;
        for (int k = begin; k < end; ++k)
            sum += vertex.v[k] * 0.0f;
        return sum;
    };
    if (transformed) // the colours have been multiplied
        return zero(SoftVertex::X, uv_end) == 0;
    const int cut_end = plane_mask != 0 ? SoftVertex::COUNT : SoftVertex::CUT;
    return zero(SoftVertex::X, SoftVertex::RED) + zero(SoftVertex::UV, uv_end) + zero(SoftVertex::CUT, cut_end) == 0;
}

// As Distance, of all cuts.
uint32_t SoftVertices::Outside(const SoftVertex& vertex) const {
    const float* const v = vertex.v;
    const float x = v[SoftVertex::X], y = v[SoftVertex::Y], z = v[SoftVertex::Z], w = v[SoftVertex::W];
    const auto bit = [](bool is_outside, int i) { return static_cast<uint32_t>(is_outside) << i; };
    if (transformed)
        return bit(x < -SCREEN_GUARD, 0) | bit(x > SCREEN_GUARD, 1) | bit(y < -SCREEN_GUARD, 2) |
               bit(y > SCREEN_GUARD, 3);
    const float guard = VIEW_GUARD * w;
    uint32_t outside = bit(w < SMALLEST_W, 0) | bit(z < 0, 1) | bit(z > w, 2) | bit(x < -guard, 3) | bit(x > guard, 4) |
                       bit(y < -guard, 5) | bit(y > guard, 6);
    for (uint32_t i = 0, place = 7; plane_mask != 0 && i < CLIP_PLANES; ++i)
        if ((plane_mask >> i & 1) != 0)
            outside |= bit(v[SoftVertex::CUT + i] < 0, static_cast<int>(place++));
    return outside;
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
        if ((plane_mask >> i & 1) != 0)
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
    between.argb = in.argb;
    between.mixed = in.mixed || out.mixed || in.argb != out.argb;
    return between;
}

void SoftVertices::CutPolygon(Polygon& polygon, const Cut& cut) {
    double from[SoftSink::MOST_CORNERS];
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
        if (from[k] >= 0 && kept.count < SoftSink::MOST_CORNERS)
            kept.corners[kept.count++] = polygon.corners[k];
        if ((from[k] < 0) != (from[next] < 0) && kept.count < SoftSink::MOST_CORNERS) {
            const int in = from[k] < 0 ? next : k, out = from[k] < 0 ? k : next;
            kept.corners[kept.count++] = Between(polygon.corners[in], polygon.corners[out], from[in], from[out]);
        }
    }
    polygon = kept;
}

void SoftVertices::ToScreen(const SoftVertex& vertex, SoftVertex& placed) const {
    placed.argb = vertex.argb;
    placed.mixed = vertex.mixed;
    const float* const from = vertex.v;
    float* const v = placed.v;
    const int end = SoftVertex::UV + 2 * static_cast<int>(needed_sets);
    if (transformed) {
        std::copy_n(from, end, v);
        SoftRaster::Round(placed);
        return;
    }
    const float w = std::max(from[SoftVertex::W], SMALLEST_W); // a cut may round below it
    const float half_width = static_cast<float>(state.viewport.w) * 0.5f;
    const float half_height = static_cast<float>(state.viewport.h) * 0.5f;
    const bool divided = w == 1; // an orthographic view
    const float x = divided ? from[SoftVertex::X] : from[SoftVertex::X] / w;
    const float y = divided ? from[SoftVertex::Y] : from[SoftVertex::Y] / w;
    v[SoftVertex::X] = static_cast<float>(state.viewport.x) + half_width + x * half_width;
    v[SoftVertex::Y] = static_cast<float>(state.viewport.y) + half_height - y * half_height;
    SoftRaster::Round(placed);
    v[SoftVertex::Z] = divided ? from[SoftVertex::Z] : from[SoftVertex::Z] / w;
    const float rhw = divided ? 1.0f : 1.0f / w;
    v[SoftVertex::W] = rhw;
    for (int k = SoftVertex::RED; k < end; ++k)
        v[k] = from[k] * rhw;
}

void SoftVertices::DrawTriangle(uint32_t a, uint32_t b, uint32_t c) {
    if (a >= vertex_count || b >= vertex_count || c >= vertex_count)
        return;
    const uint32_t outside[3] = {outside_of[a], outside_of[b], outside_of[c]};
    const uint32_t any = outside[0] | outside[1] | outside[2];
    if ((any & NOT_USABLE) != 0 || (outside[0] & outside[1] & outside[2]) != 0)
        return;
    if (any == 0 && state.states[RS_SHADEMODE] != SHADE_FLAT) {
        const SoftVertex* const corners[3] = {&on_screen[a], &on_screen[b], &on_screen[c]};
        sink.Polygon(corners, 3);
        return;
    }
    DrawCutTriangle(a, b, c);
}

void SoftVertices::DrawCutTriangle(uint32_t first, uint32_t second, uint32_t third) {
    Polygon polygon;
    for (const uint32_t i : {first, second, third})
        ReadVertex(i, polygon.corners[polygon.count++]);
    const SoftVertex& a = polygon.corners[0];
    if (state.states[RS_SHADEMODE] == SHADE_FLAT)
        for (int k = 1; k < 3; ++k) {
            SoftVertex& corner = polygon.corners[k];
            const float scale = transformed ? corner.v[SoftVertex::W] / a.v[SoftVertex::W] : 1;
            for (int channel = SoftVertex::RED; channel < SoftVertex::UV; ++channel)
                corner.v[channel] = a.v[channel] * scale;
            corner.argb = a.argb;
        }
    for (const Cut& cut : cuts)
        CutPolygon(polygon, cut);
    if (polygon.count < 3)
        return;
    SoftVertex placed[SoftSink::MOST_CORNERS];
    const SoftVertex* corners[SoftSink::MOST_CORNERS];
    for (int k = 0; k < polygon.count; ++k) {
        ToScreen(polygon.corners[k], placed[k]);
        corners[k] = &placed[k];
    }
    sink.Polygon(corners, polygon.count);
}

void SoftVertices::DrawLine(uint32_t a, uint32_t b) {
    if (a >= vertex_count || b >= vertex_count)
        return;
    const uint32_t outside[2] = {outside_of[a], outside_of[b]};
    if (outside[0] == 0 && outside[1] == 0)
        PlaceLine(on_screen[a], on_screen[b]);
    else if (((outside[0] | outside[1]) & NOT_USABLE) == 0 && (outside[0] & outside[1]) == 0)
        DrawCutLine(a, b);
}

void SoftVertices::DrawCutLine(uint32_t a, uint32_t b) {
    SoftVertex ends[2];
    ReadVertex(a, ends[0]);
    ReadVertex(b, ends[1]);
    for (const Cut& cut : cuts) {
        const double from[2] = {Distance(cut, ends[0]), Distance(cut, ends[1])};
        if (from[0] < 0 && from[1] < 0)
            return;
        for (int k = 0; k < 2; ++k)
            if (from[k] < 0)
                ends[k] = Between(ends[1 - k], ends[k], from[1 - k], from[k]);
    }
    SoftVertex placed[2];
    ToScreen(ends[0], placed[0]);
    ToScreen(ends[1], placed[1]);
    PlaceLine(placed[0], placed[1]);
}

// A wide line is as many of them side by side. Its ends reach as far out, so that there is no notch where two meet.
void SoftVertices::PlaceLine(const SoftVertex& from, const SoftVertex& to) {
    if (crvDotSize == 1) {
        sink.Line(from, to);
        return;
    }
    const int32_t width = static_cast<int32_t>(crvDotSize), low = (width - 1) / 2, high = width / 2;
    const int64_t x = int64_t{to.subpixel_x} - from.subpixel_x, y = int64_t{to.subpixel_y} - from.subpixel_y;
    const bool across = std::abs(x) >= std::abs(y);
    const int64_t along = across ? x : y, length = std::abs(along);
    if (along == 0)
        return;
    constexpr int32_t PIXEL = 256;
    const int32_t before = (along > 0 ? low : high) * PIXEL, behind = (along > 0 ? high : low) * PIXEL;
    for (int32_t k = -low; k <= high; ++k) {
        SoftVertex ends[2] = {from, to};
        ends[0].subpixel_x -= static_cast<int32_t>(x * before / length) - (across ? 0 : k * PIXEL);
        ends[0].subpixel_y -= static_cast<int32_t>(y * before / length) - (across ? k * PIXEL : 0);
        ends[1].subpixel_x += static_cast<int32_t>(x * behind / length) + (across ? 0 : k * PIXEL);
        ends[1].subpixel_y += static_cast<int32_t>(y * behind / length) + (across ? k * PIXEL : 0);
        sink.Line(ends[0], ends[1]);
    }
}

void SoftVertices::DrawPoint(uint32_t a) {
    if (a < vertex_count && outside_of[a] == 0)
        sink.Point(on_screen[a]);
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

void SoftVertices::DrawList(PrimType prim, const uint32_t* indices, uint32_t n, uint32_t first) {
    if (prim == PT_LINE_LIST)
        for (uint32_t i = 0; i + 1 < n; i += 2)
            DrawLine(indices[i] - first, indices[i + 1] - first);
    else
        for (uint32_t i = 0; i + 2 < n; i += 3)
            DrawTriangle(indices[i] - first, indices[i + 1] - first, indices[i + 2] - first);
}
