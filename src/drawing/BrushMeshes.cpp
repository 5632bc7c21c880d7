#include "drawing/BrushMeshes.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "drawing/LineColors.h"
#include "drawing/WireDrawing.h"
#include "render/Frame.h"
#include "render/StateCache.h"

namespace {

struct WireVertex {
    D3DVECTOR place;
    uint32_t color;
};
struct SolidVertex {
    D3DVECTOR place;
    uint32_t color;
    UVVector uv, lightmap_uv;
};
constexpr uint32_t WIRE_FORMAT = VT_XYZ | VT_DIFFUSE, SOLID_FORMAT = VT_XYZ | VT_DIFFUSE | VT_TEX2;
static_assert(sizeof(WireVertex) == 16 && sizeof(SolidVertex) == 32);

template <class Vertex>
uint32_t VertexCount(const MeshData& data) {
    return static_cast<uint32_t>(data.vertices.size() / sizeof(Vertex));
}

template <class Vertex>
void AddVertex(MeshData& data, const Vertex& vertex) {
    const auto* const bytes = reinterpret_cast<const uint8_t*>(&vertex);
    data.vertices.insert(data.vertices.end(), bytes, bytes + sizeof(vertex));
}

// The corners of a brush's wire, those that several surfaces share but once.
class WireCorners {
public:
    WireCorners(MeshData& to, uint32_t wire_color) : data(to), color(wire_color), first(VertexCount<WireVertex>(to)) {}

    uint32_t Add(const D3DVECTOR& place) {
        const size_t looked_at = std::min(places.size(), COMPARED);
        for (size_t i = 0; i < looked_at; ++i)
            if (std::memcmp(&places[i], &place, sizeof(place)) == 0)
                return first + static_cast<uint32_t>(i);
        places.push_back(place);
        AddVertex(data, WireVertex{place, color});
        return first + static_cast<uint32_t>(places.size() - 1);
    }

private:
    static constexpr size_t COMPARED = 16; // more are not worth the search
    MeshData& data;
    uint32_t color, first;
    std::vector<D3DVECTOR> places;
};

MeshPart StartPart(const MeshData& data, uint32_t vertices) {
    return {static_cast<uint32_t>(data.indices.size()), 0, vertices, 0};
}

void EndPart(const MeshData& data, uint32_t vertices, MeshPart& part) {
    part.index_count = static_cast<uint32_t>(data.indices.size()) - part.first_index;
    part.vertex_count = vertices - part.first_vertex;
}

constexpr size_t REACH = 65536; // of the indices of a surface

void AddWire(const Brush& brush, uint32_t color, MeshData& data, BrushPart& part) {
    WireCorners corners(data, color);
    constexpr float FAR = std::numeric_limits<float>::max();
    D3DVECTOR min{FAR, FAR, FAR}, max = -min;
    std::vector<uint32_t> places;
    brush.ForEachSurface([&](const Surface& surface, int, bool) {
        const size_t count = std::min(surface.vertices.size(), REACH);
        places.clear();
        for (size_t i = 0; i < count; ++i) {
            const D3DVECTOR& v = surface.vertices[i];
            places.push_back(corners.Add(v));
            min = {std::min(min.x, v.x), std::min(min.y, v.y), std::min(min.z, v.z)};
            max = {std::max(max.x, v.x), std::max(max.y, v.y), std::max(max.z, v.z)};
        }
        for (const EDGE& edge : surface.edge_indices)
            if (edge.i[0] < count && edge.i[1] < count)
                data.indices.insert(data.indices.end(), {places[edge.i[0]], places[edge.i[1]]});
    });
    part.min = min, part.max = max;
}

void AddSolid(const SolidSurface& drawn, MeshData& data) {
    const Surface& surface = *drawn.surface;
    const uint32_t first = VertexCount<SolidVertex>(data);
    for (size_t i = 0; i < std::min(surface.vertices.size(), REACH); ++i)
        AddVertex(data, SolidVertex{surface.vertices[i], drawn.ColorAt(i), drawn.UVAt(i), drawn.LightmapUVAt(i)});
    for (const TRIANGLE& t : surface.tri_indices)
        if (surface.HasCorners(t))
            data.indices.insert(data.indices.end(), {first + t.i[0], first + t.i[1], first + t.i[2]});
}

struct Drawing {
    uint32_t brush;
    bool in_order;
    SolidSurface surface;
};

// By their states, if the device wants it so; those that must be in order come last.
void SortByState(std::vector<Drawing>& drawings) {
    std::stable_sort(drawings.begin(), drawings.end(), [](const Drawing& a, const Drawing& b) {
        if (a.in_order != b.in_order)
            return b.in_order;
        return !a.in_order && a.surface.key < b.surface.key;
    });
}

void BuildWire(const World& world, const std::vector<BrushMesh::Member>& members, MeshData& data,
               std::vector<BrushPart>& parts) {
    data.prim = PT_LINE_LIST;
    data.fvf = WIRE_FORMAT;
    for (const BrushMesh::Member& member : members) {
        const Brush& brush = *world.brush[member.index];
        BrushPart part;
        part.brush = member.index;
        part.range = StartPart(data, VertexCount<WireVertex>(data));
        AddWire(brush, static_cast<uint32_t>(member.look), data, part);
        EndPart(data, VertexCount<WireVertex>(data), part.range);
        parts.push_back(part);
    }
}

void BuildSolid(const World& world, const SolidOptions& options, const std::vector<BrushMesh::Member>& members,
                MeshData& data, std::vector<BrushPart>& parts) {
    data.prim = PT_TRI_LIST;
    data.fvf = SOLID_FORMAT;
    std::vector<Drawing> drawings;
    std::vector<SolidSurface> found;
    for (const BrushMesh::Member& member : members) {
        FindSolidSurfaces(*world.brush[member.index], options, found);
        for (const SolidSurface& surface : found)
            drawings.push_back({member.index, member.in_order, surface});
    }
    if (criTextureDevice().WantsSortedStates())
        SortByState(drawings);
    for (const Drawing& drawing : drawings) {
        const bool goes_on =
            !parts.empty() && parts.back().brush == drawing.brush && parts.back().key == drawing.surface.key;
        if (!goes_on)
            parts.push_back(
                {drawing.brush, drawing.surface.key, StartPart(data, VertexCount<SolidVertex>(data)), {}, {}});
        AddSolid(drawing.surface, data);
        EndPart(data, VertexCount<SolidVertex>(data), parts.back().range);
    }
}

} // namespace

uint32_t BrushMesh::DeviceChanges() { return crvDeviceChanges; }

void BrushMesh::Create(MeshData data) {
    ++rebuilds;
    mesh.reset(); // first, so that its memory is free
    if (!data.vertices.empty() && !data.indices.empty())
        mesh = criTextureDevice().CreateMesh(std::move(data));
}

BrushMeshes& BrushMeshes::Of(World& world) {
    auto* kept = dynamic_cast<BrushMeshes*>(world.kept_drawing.get());
    if (!kept) {
        auto made = std::make_unique<BrushMeshes>();
        kept = made.get();
        world.kept_drawing = std::move(made);
    }
    return *kept;
}

// look(record, member) adds what the mesh of a brush depends on beside its version; options are what that of all does.
template <class Look, class Build>
void BrushMeshes::Update(Kept& kept, const World& world, uint64_t options, const Look& look, const Build& build) {
    const std::vector<BrushRecord>& brushes = records.Of(world);
    const Made now{records.LastTake(), BrushMesh::DeviceChanges(), options};
    if (now == kept.made)
        return;
    kept.made = now;
    kept.chunks.resize((brushes.size() + CHUNK_BRUSHES - 1) / CHUNK_BRUSHES);
    std::vector<BrushMesh::Member> plain, selected;
    for (size_t c = 0; c < kept.chunks.size(); ++c) {
        plain.clear();
        selected.clear();
        const size_t end = std::min((c + 1) * CHUNK_BRUSHES, brushes.size());
        for (size_t i = c * CHUNK_BRUSHES; i < end; ++i) {
            const BrushRecord& brush = brushes[i];
            BrushMesh::Member& member = (brush.selected ? selected : plain).emplace_back();
            member.index = static_cast<uint32_t>(i);
            member.version = brush.version;
            look(brush, member);
        }
        kept.chunks[c].plain.Update(plain, build);
        kept.chunks[c].selected.Update(selected, build);
    }
}

const std::vector<BrushMeshes::Chunk>& BrushMeshes::Wire(const World& world) {
    const uint32_t selected_color = ColorOf(LineColor::Selected);
    const auto look = [selected_color](const BrushRecord& brush, BrushMesh::Member& member) {
        member.look = brush.selected ? selected_color : brush.color;
    };
    const auto build = [&world](const auto& members, MeshData& data, std::vector<BrushPart>& parts) {
        BuildWire(world, members, data, parts);
    };
    Update(wire, world, selected_color, look, build);
    return wire.chunks;
}

const std::vector<BrushMeshes::Chunk>& BrushMeshes::Solid(const World& world, const SolidOptions& options) {
    const uint64_t option_bits = (options.lightmaps ? 1u : 0u) | (options.mask ? 2u : 0u) | (options.border ? 4u : 0u) |
                                 (options.outline ? 8u : 0u) | (options.shade_bare ? 16u : 0u);
    const auto look = [&](const BrushRecord& brush, BrushMesh::Member& member) {
        member.in_order = brush.IsDeferred();
        member.look = option_bits | uint64_t{brush.type} << 8;
        if (options.mask || options.outline)
            member.look |= uint64_t{static_cast<uint32_t>(brush.selected_surface)} << 32 |
                           (brush.selected_surface_curved ? 32u : 0u);
    };
    const auto build = [&](const auto& members, MeshData& data, std::vector<BrushPart>& parts) {
        BuildSolid(world, options, members, data, parts);
    };
    Update(solid, world, option_bits, look, build);
    return solid.chunks;
}
