#include <algorithm>
#include <cmath>

#include "compiler/Lighting.h"
#include "compiler/SurfaceTriangle.h"
#include "render/Matrix.h"
#include "scene/PlaneMapping.h"

namespace {

constexpr float TEXEL_SIZE[3] = {32.0f, 16.0f, 8.0f}; // world units, by lightmap detail
constexpr float TERRAIN_RAY_RISE = 1000000.0f;
constexpr float TERRAIN_TOLERANCE = 0.01f; // of barycentric coordinates
constexpr float TERRAIN_ENLARGEMENT = 0.5f;

// Positions along one axis of the sample grid, with the border pulled inside.
std::vector<float> SampleCoordinates(int texels, int ts, float texelsize) {
    const int count = texels * ts;
    std::vector<float> coordinates(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        coordinates[static_cast<size_t>(i)] =
            texelsize * (-1.0f + 1.0f / static_cast<float>(2 * ts) + static_cast<float>(i) / static_cast<float>(ts));
    for (int i = 0; i < ts; ++i) {
        coordinates[static_cast<size_t>(i)] = coordinates[static_cast<size_t>(i + ts)];
        coordinates[static_cast<size_t>(count - ts + i)] = coordinates[static_cast<size_t>(count - 2 * ts + i)];
    }
    return coordinates;
}

struct TerrainTriangle {
    D3DVECTOR v[3], normal, vertex_normal[3];
};

// Where the vertical line through the sample meets the triangle: moves the sample there and blends the normal.
bool MeetTerrain(const TerrainTriangle& triangle, const D3DVECTOR (&v)[3], D3DVECTOR& sample,
                 D3DVECTOR& sample_normal) {
    const D3DVECTOR from = sample + D3DVECTOR{0, TERRAIN_RAY_RISE, 0};
    D3DVECTOR hit;
    float t;
    if (!s_math.PlaneIntersect2Sided(from, {0, -1, 0}, v[0], triangle.normal, hit, t))
        return false;
    float third, second;
    s_math.GetBarycentricCoordinates(v[0], v[1], v[2], hit, triangle.normal, third, second);
    const float first = 1.0f - third - second;
    for (const float weight : {first, second, third})
        if (!(weight >= -TERRAIN_TOLERANCE && weight <= 1.0f + TERRAIN_TOLERANCE))
            return false;
    sample = hit;
    sample_normal = NormalizeOrZero(triangle.vertex_normal[0] * first + triangle.vertex_normal[1] * second +
                                    triangle.vertex_normal[2] * third);
    return true;
}

void Enlarge(D3DVECTOR (&v)[3]) {
    const D3DVECTOR c = (v[0] + v[1] + v[2]) * 0.3334f;
    for (D3DVECTOR& corner : v)
        corner = corner + (corner - c) * TERRAIN_ENLARGEMENT;
}

} // namespace

int LightmapSide(float length, int detail) {
    const float fours = std::trunc(length / TEXEL_SIZE[std::clamp(detail, 0, 2)] / 4.0f + 0.5f);
    return fours >= MAX_LIGHTMAP_SIDE / 4 ? MAX_LIGHTMAP_SIDE : fours >= 1 ? 4 * static_cast<int>(fours) : UNIFORM_SIDE;
}

void Lighting::SetGridSize(Surface& surface, int width, int height) {
    surface.lightmap_size = {width, height};
    const auto samples = static_cast<size_t>(width * Subdivision()) * static_cast<size_t>(height * Subdivision());
    texelpoints.assign(samples, {});
    texelnormals.assign(samples, {});
}

void Lighting::CalculateLightmapUV(const Brush& brush, Surface& surface, bool curved) {
    const bool terrain = brush.type == BT_TERRAIN && !curved;
    if (surface.vertices.empty() || surface.normal.empty()) {
        SetGridSize(surface, UNIFORM_SIDE, UNIFORM_SIDE);
        return;
    }
    const D3DVECTOR n = surface.normal[0];
    const PlaneMapping mapping = MapToPlane(terrain ? D3DVECTOR{0, 1, 0} : n, surface.vertices);
    const int width = LightmapSide(mapping.size.x, input.options.lightmap_detail);
    const int height = LightmapSide(mapping.size.y, input.options.lightmap_detail);
    SetGridSize(surface, width, height);
    float texelsize =
        std::max(mapping.size.x / static_cast<float>(width - 2), mapping.size.y / static_cast<float>(height - 2));
    if (!(texelsize > 0)) // a surface without extent
        texelsize = 1;

    surface.lightmap_uv.resize(surface.vertices.size());
    for (size_t k = 0; k < surface.vertices.size(); ++k) {
        const D3DVECTOR& p = mapping.points[k];
        surface.lightmap_uv[k] = {(texelsize + p.x) / texelsize / static_cast<float>(width),
                                  (texelsize + p.y) / texelsize / static_cast<float>(height)};
    }

    const std::vector<float> xs = SampleCoordinates(width, Subdivision(), texelsize);
    const std::vector<float> ys = SampleCoordinates(height, Subdivision(), texelsize);
    size_t sample = 0;
    for (const float y : ys)
        for (const float x : xs)
            crMTransform(mapping.to_world, {x, y, 0}, texelpoints[sample++]);
    std::fill(texelnormals.begin(), texelnormals.end(), n);

    const auto to_world = [&](float x, float y) {
        D3DVECTOR p;
        crMTransform(mapping.to_world, {x, y, 0}, p);
        return p;
    };
    const D3DVECTOR s = to_world(0, 0);
    surface.lightmap_vector = {s, to_world(mapping.size.x, 0) - s, to_world(0, mapping.size.y) - s};
    if (terrain)
        FitTerrain(brush, surface);
}

// Gives every sample the height and the normal of the terrain under it.
void Lighting::FitTerrain(const Brush& brush, const Surface& surface) {
    std::vector<TerrainTriangle> triangles;
    for (const TRIANGLE& triangle : surface.tri_indices) {
        SurfaceTriangle corners;
        if (!corners.Take(surface, triangle))
            continue;
        TerrainTriangle& t = triangles.emplace_back();
        t.normal = corners.UnitNormal();
        for (size_t k = 0; k < 3; ++k) {
            const auto index = static_cast<size_t>(corners.index[k]);
            t.v[k] = corners.v[k];
            t.vertex_normal[k] = index < surface.normal.size() ? surface.normal[index] : t.normal;
        }
    }
    const auto find = [&](size_t sample, bool enlarged) {
        for (const TerrainTriangle& triangle : triangles) {
            D3DVECTOR v[3] = {triangle.v[0], triangle.v[1], triangle.v[2]};
            if (enlarged)
                Enlarge(v);
            if (MeetTerrain(triangle, v, texelpoints[sample], texelnormals[sample]))
                return true;
        }
        return false;
    };
    for (size_t sample = 0; sample < texelpoints.size() && !state.Stopped(); ++sample)
        if (!find(sample, false) && !find(sample, true)) {
            texelpoints[sample].y = (BoxMin(brush.bbox).y + BoxMax(brush.bbox).y) * 0.5f;
            texelnormals[sample] = {0, 1, 0};
        }
}
