// A brush from a mesh file: a chunk file in which every chunk but those named "system" is one part.
#include <algorithm>
#include <unordered_set>

#include "files/ChunkFile.h"
#include "foundation/Desktop.h"
#include "foundation/Strings.h"
#include "scene/BrushParts.h"

namespace {

constexpr const char* IGNORED_CHUNK = "system";
constexpr size_t MAX_VERTICES = 65536; // of a surface: indices have 16 bits
constexpr uint32_t NAME_LENGTH = 260;

// Each edge once, in the order of the triangles.
std::vector<EDGE> OutlineOf(const std::vector<TRIANGLE>& triangles) {
    std::vector<EDGE> edges;
    std::unordered_set<uint32_t> seen;
    for (const TRIANGLE& t : triangles)
        for (size_t k = 0; k < 3; ++k) {
            const EDGE edge{{t.i[k], t.i[(k + 1) % 3]}};
            const auto [low, high] = std::minmax(edge.i[0], edge.i[1]);
            if (seen.insert(static_cast<uint32_t>(low) << 16 | high).second)
                edges.push_back(edge);
        }
    return edges;
}

bool AllFinite(const std::vector<D3DVECTOR>& vectors) {
    return std::all_of(vectors.begin(), vectors.end(), [](const D3DVECTOR& v) {
        return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
    });
}

// The open chunk as a surface. A text says what is wrong with it, empty if nothing is.
std::string ReadPart(UChunkFile& file, Surface& s, std::string& material) {
    struct {
        int32_t unused, vertex_count, triangle_count, unused_too;
    } info;
    if (!file.GetNextValue(info))
        return "a part has no valid header";
    if (file.GetCurrentArrayLength() != NAME_LENGTH || !file.GetNextString(material))
        return "a part has no valid material name";
    if (info.vertex_count < 0 || info.triangle_count < 0)
        return "a part has a negative count";
    const auto vertex_count = static_cast<size_t>(info.vertex_count),
               triangle_count = static_cast<size_t>(info.triangle_count);
    if (vertex_count > MAX_VERTICES)
        return "a part has more than 65536 vertices";
    if (!file.GetNextValues(s.vertices, vertex_count) || !file.GetNextValues(s.uv, vertex_count) ||
        !file.GetNextValues(s.normal, vertex_count) || !file.GetNextValues(s.tri_indices, triangle_count))
        return "an array does not have the length that its part announces";
    if (!AllFinite(s.vertices) || !std::all_of(s.uv.begin(), s.uv.end(), [](const UVVector& uv) {
            return std::isfinite(uv.u) && std::isfinite(uv.v);
        }))
        return "a coordinate is not a number";
    if (!std::all_of(s.tri_indices.begin(), s.tri_indices.end(), [&s](const TRIANGLE& t) { return s.HasCorners(t); }))
        return "a triangle names a vertex that is not there";
    s.lightmap_uv.resize(vertex_count);
    s.diffuse.resize(vertex_count);
    s.extra_diffuse.resize(vertex_count);
    s.edge_indices = OutlineOf(s.tri_indices);
    s.cp_count = CURVE_MESH;
    s.texture.locked = true; // the coordinates stay those of the file
    return {};
}

std::string ReadMesh(const std::string& name, std::vector<Surface>& parts, std::vector<std::string>& materials) {
    UChunkFile file(name, CFM_Open);
    if (!file.IsValid())
        return file.GetError().empty() ? "cannot open \"" + name + "\"" : file.GetError();
    bool open = file.OpenChunk(nullptr, ANY_CHUNK_ID, COT_Any);
    for (; open; open = file.OpenNextChunk()) {
        if (std::string_view(file.GetChunkName()) == IGNORED_CHUNK)
            continue;
        const std::string reason = ReadPart(file, parts.emplace_back(), materials.emplace_back());
        if (!reason.empty())
            return Format("cannot read mesh \"%s\": %s", name.c_str(), reason.c_str());
    }
    return {};
}

D3DVECTOR Turned(uint32_t view, const D3DVECTOR& v) {
    return view == 0 ? D3DVECTOR{v.x, -v.z, v.y} : view == 2 ? D3DVECTOR{-v.z, v.y, v.x} : v;
}

} // namespace

void Brush::CreateCustomBrush(uint32_t view, const std::string& file) {
    const std::string error = ReadMesh(file, curved_surfaces, custom_material_names);
    if (!error.empty()) {
        NoticeOnce(error);
        curved_surfaces.clear();
        custom_material_names.clear();
    }
    if (curved_surfaces.empty())
        return;
    ForEachSurface([view](Surface& s, int, bool) {
        for (D3DVECTOR& v : s.vertices)
            v = Turned(view, v);
    });
    Box mesh_box;
    D3DVECTOR center;
    BBoxFromVertices(mesh_box);
    PivotFromBBox(mesh_box, center);
    const D3DVECTOR move = pivot - center;
    ForEachSurface([&move](Surface& s, int, bool) {
        for (D3DVECTOR& v : s.vertices)
            v += move;
    });
    RecalcBBox();
    ComputeNormals();
    SurfaceLight();
}
