// One segment of a terrain: made from a height map, and reshaped by the tool.
#include <algorithm>

#include "foundation/WholeNumber.h"
#include "scene/TerrainParts.h"
#include "scene/World.h"

namespace {

constexpr D3DCOLORVALUE WHITE = {1, 1, 1, 1};
constexpr size_t MOST_VERTICES = 65536; // of 16-bit indices

// The heights of the map between its pixels; beyond its edges they go on as they end.
class MapHeights {
public:
    MapHeights(const HeightMap& height_map, const TerrainSegment& terrain_segment)
        : map(height_map), segment(terrain_segment) {}

    float At(float x, float z) const {
        const float u = (x - segment.terrain_origin.x) / segment.map_unit_x,
                    v = (segment.terrain_origin.z - z) / segment.map_unit_y;
        const int column = Clamped(u, map.width), row = Clamped(v, map.height);
        const int next_column = std::min(column + 1, map.width - 1), next_row = std::min(row + 1, map.height - 1);
        const float fu = u - static_cast<float>(column), fv = v - static_cast<float>(row);
        const float near_row = Sample(column, row) * (1 - fu) + Sample(next_column, row) * fu,
                    far_row = Sample(column, next_row) * (1 - fu) + Sample(next_column, next_row) * fu;
        return near_row * (1 - fv) + far_row * fv;
    }

private:
    static int Clamped(float place, int count) {
        return static_cast<int>(std::clamp(place, 0.0f, static_cast<float>(count - 1)));
    }
    float Sample(int column, int row) const {
        const size_t place = static_cast<size_t>(row) * static_cast<size_t>(map.width) + static_cast<size_t>(column);
        return static_cast<float>(map.sample[place]) * BYTE_TO_UNIT * segment.height;
    }

    const HeightMap& map;
    const TerrainSegment& segment;
};

void FillTriangles(Surface& s, int cells_x, int cells_y) {
    const int stride = cells_x + 1;
    const auto at = [](int i) { return static_cast<uint16_t>(i); };
    size_t t = 0;
    for (int y = 0; y < cells_y; ++y)
        for (int x = 0; x < cells_x; ++x) {
            const int r0 = y * stride, r1 = r0 + stride;
            s.tri_indices[t++].i = {at(r1 + x + 1), at(r1 + x), at(r0 + x)};
            s.tri_indices[t++].i = {at(r0 + x + 1), at(r1 + x + 1), at(r0 + x)};
        }
}

void FillEdges(Surface& s, int cells_x, int cells_y) {
    const int stride = cells_x + 1;
    const auto at = [](int i) { return static_cast<uint16_t>(i); };
    size_t e = 0;
    for (int y = 0; y <= cells_y; ++y)
        for (int x = 0; x < cells_x; ++x)
            s.edge_indices[e++].i = {at(y * stride + x), at(y * stride + x + 1)};
    for (int x = 0; x <= cells_x; ++x)
        for (int y = 0; y < cells_y; ++y)
            s.edge_indices[e++].i = {at(y * stride + x), at((y + 1) * stride + x)};
}

void RebuildTerrain(Brush& b) {
    b.RecalcBBox();
    b.ComputeNormals();
    b.GenerateTextureSpaces();
    b.SurfaceLight();
    b.MarkDrawnChanged();
}

// Calls fn(vertex, its number, distance from the centre on the ground) for those in the radius.
template <class Fn>
void ForEachInReach(Surface& s, const D3DVECTOR& center, float radius, Fn&& fn) {
    for (size_t i = 0; i < s.vertices.size(); ++i) {
        const float dx = s.vertices[i].x - center.x, dz = s.vertices[i].z - center.z;
        const float d = std::sqrt(dx * dx + dz * dz);
        if (d <= radius)
            fn(s.vertices[i], i, d);
    }
}

// The column or row of the noise for an offset from the centre.
size_t NoiseCell(float offset, float radius) {
    constexpr int HALF = NOISE_FIELD_SIDE / 2;
    const int cell = WholeNumber(static_cast<float>(HALF) * (offset / radius + 1));
    return static_cast<size_t>(std::clamp(cell, 0, NOISE_FIELD_SIDE - 1));
}

// Into temporary_terrain_height: the neighbours are still to be read as they were.
void SmoothHeights(Brush& b, const D3DVECTOR& center, float radius, const World& world) {
    constexpr float SIXTH = 0.16666667f;
    Surface& s = b.surfaces[0];
    b.temporary_terrain_height.resize(s.vertices.size());
    for (size_t i = 0; i < s.vertices.size(); ++i)
        b.temporary_terrain_height[i] = s.vertices[i].y;
    const int cx = b.terrain_vertex_size.cx, cy = b.terrain_vertex_size.cy;
    ForEachInReach(s, center, radius, [&](const D3DVECTOR& vertex, size_t i, float) {
        const int column = static_cast<int>(i) % cx, row = static_cast<int>(i) / cx;
        const auto height = [&](int sx, int sy) {
            const int x = column + sx, y = row + sy;
            return x >= 0 && x < cx && y >= 0 && y < cy ? s.vertices[static_cast<size_t>(y * cx + x)].y
                                                        : world.GetNeighbourTerrainVertex(vertex, &b, sx, sy).y;
        };
        const float up = height(0, -1), down = height(0, 1), left = height(-1, 0), right = height(1, 0);
        b.temporary_terrain_height[i] = (2 * vertex.y + up + down + left + right) * SIXTH;
    });
}

} // namespace

bool Brush::IsTerrainGrid() const {
    const SIZE& size = terrain_vertex_size;
    return surfaces.size() == 1 && curved_surfaces.empty() && size.cx > 0 && size.cy > 0 &&
           surfaces[0].normal.size() == surfaces[0].vertices.size() &&
           static_cast<uint64_t>(size.cx) * static_cast<uint64_t>(size.cy) == surfaces[0].vertices.size();
}

void Brush::GenerateTerrainSegment(const HeightMap& map, const TerrainSegment& segment) {
    type = BT_TERRAIN;
    SetColor(WHITE);
    surfaces.clear();
    curved_surfaces.clear();
    terrain_vertex_size = {};
    const int cells_x = TerrainCells(segment.size_x, segment.detail),
              cells_y = TerrainCells(segment.size_y, segment.detail);
    const size_t vertices = (static_cast<size_t>(cells_x) + 1) * (static_cast<size_t>(cells_y) + 1);
    if (cells_x < 1 || cells_y < 1 || vertices > MOST_VERTICES || map.width < 1 || map.height < 1 ||
        map.sample.size() < static_cast<size_t>(map.width) * static_cast<size_t>(map.height))
        return;
    Surface& s = surfaces.emplace_back();
    s.Allocate(static_cast<int>(vertices), cells_x * cells_y * 2, (cells_x + 1) * cells_y + (cells_y + 1) * cells_x);
    const float cell_x = segment.size_x / static_cast<float>(cells_x),
                cell_y = segment.size_y / static_cast<float>(cells_y);
    const MapHeights heights(map, segment);
    size_t vertex = 0;
    for (int y = 0; y <= cells_y; ++y)
        for (int x = 0; x <= cells_x; ++x) {
            D3DVECTOR& v = s.vertices[vertex++];
            v.x = static_cast<float>(x) * cell_x + segment.start.x;
            v.z = segment.start.z - static_cast<float>(y) * cell_y;
            v.y = heights.At(v.x, v.z);
        }
    FillTriangles(s, cells_x, cells_y);
    FillEdges(s, cells_x, cells_y);
    terrain_vertex_size = {cells_x + 1, cells_y + 1};
    RebuildTerrain(*this);
}

void Brush::ModifyTerrain(const D3DVECTOR& center, const TERRAIN_MODIFIER& tm, bool up, const NoiseField& random_field,
                          const World& world) {
    constexpr float QUARTER_TURN = 1.5707964f;
    const bool has_noise = random_field.size() >= size_t{NOISE_FIELD_SIDE} * NOISE_FIELD_SIDE;
    if (!IsTerrainGrid() || !(tm.radius > 0))
        return;
    if (tm.type == TERRAIN_SMOOTH) {
        SmoothHeights(*this, center, tm.radius, world);
        return;
    }
    bool changed = false;
    ForEachInReach(surfaces[0], center, tm.radius, [&](D3DVECTOR& v, size_t, float d) {
        const float before = v.y;
        if (tm.type == TERRAIN_RAISE && d < tm.radius) { // at the rim the change is nothing
            const float change = std::cos(d / tm.radius * QUARTER_TURN) * tm.intensity;
            v.y += up ? change : -change;
        } else if (tm.type == TERRAIN_NOISE && has_noise) {
            const size_t ix = NoiseCell(v.x - center.x, tm.radius), iz = NoiseCell(v.z - center.z, tm.radius);
            v.y += (random_field[ix + NOISE_FIELD_SIDE * iz] - 0.5f) * tm.intensity;
        } else if (tm.type == TERRAIN_FLATTEN)
            v.y = center.y;
        changed = changed || v.y != before;
    });
    if (changed)
        RebuildTerrain(*this);
}

void Brush::UpdateTerrainHeights() {
    const std::vector<float> heights = std::move(temporary_terrain_height);
    temporary_terrain_height.clear();
    if (!IsTerrainGrid() || heights.size() != surfaces[0].vertices.size())
        return;
    bool changed = false;
    for (size_t i = 0; i < heights.size(); ++i) {
        float& y = surfaces[0].vertices[i].y;
        changed = changed || y != heights[i];
        y = heights[i];
    }
    if (changed)
        RebuildTerrain(*this);
}
