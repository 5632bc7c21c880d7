// Vertex mode: the vertices and control points of the selected brushes, unpacked, and moved by hand.
#include <algorithm>
#include <bit>

#include "foundation/Desktop.h"
#include "foundation/Strings.h"
#include "scene/BrushParts.h"
#include "scene/World.h"

namespace {

constexpr float NEAR = 0.1f; // corners closer than this to a moved end stay with it

// The lines of the control nets, in points of the surface.
constexpr EDGE FAN_NET[] = {{{0, 1}}, {{1, 2}}};
constexpr EDGE STRIP_NET[] = {{{0, 1}}, {{1, 2}}, {{3, 4}}, {{4, 5}}, {{0, 3}}, {{1, 4}}, {{2, 5}}};
constexpr EDGE PATCH_NET[] = {{{0, 1}}, {{1, 2}}, {{3, 4}}, {{4, 5}}, {{0, 3}}, {{1, 4}},
                              {{2, 5}}, {{6, 7}}, {{7, 8}}, {{3, 6}}, {{4, 7}}, {{5, 8}}};

struct Net {
    const EDGE* begin = nullptr;
    const EDGE* end = nullptr;
};

Net NetOf(const Surface& s) {
    if (s.cp.size() < static_cast<size_t>(std::max(s.cp_count, 0)))
        return {}; // a damaged record
    switch (s.cp_count) {
    case CURVE_FAN:
        return {std::begin(FAN_NET), std::end(FAN_NET)};
    case CURVE_STRIP:
        return {std::begin(STRIP_NET), std::end(STRIP_NET)};
    case CURVE_PATCH:
        return {std::begin(PATCH_NET), std::end(PATCH_NET)};
    default:
        return {};
    }
}

class NetBuilder {
public:
    NetBuilder(World& world, int brush_index) : vertices(world.so_vertex), edges(world.so_edge), object(brush_index) {}

    // False if the net has no room for the surface.
    bool Add(const Surface& s, int surface, bool curved) {
        const std::vector<D3DVECTOR>& points = curved ? s.cp : s.vertices;
        const size_t first = vertices.size();
        if (first + points.size() > MAX_SO_VERTICES)
            return false;
        for (size_t i = 0; i < points.size(); ++i) {
            SO_VERTEX& entry = vertices.emplace_back();
            entry.v = points[i];
            entry.vertex = static_cast<int32_t>(i);
            entry.object = object;
            entry.surface = surface;
            entry.curved = curved;
        }
        if (curved)
            AddNet(NetOf(s), first);
        else
            AddOutline(s, surface, first);
        return true;
    }

private:
    static EDGE Moved(const EDGE& e, size_t first) {
        const int base = static_cast<int>(first);
        return MakeEdge(base + e.i[0], base + e.i[1]);
    }
    void AddNet(const Net& net, size_t first) {
        for (const EDGE* e = net.begin; e != net.end; ++e) {
            SO_EDGE& line = edges.emplace_back();
            line.e = Moved(*e, first);
            line.curved = true;
        }
    }
    void AddOutline(const Surface& s, int surface, size_t first) {
        for (size_t i = 0; i < s.edge_indices.size(); ++i) {
            const EDGE& e = s.edge_indices[i];
            if (e.i[0] >= s.vertices.size() || e.i[1] >= s.vertices.size())
                continue; // it names a vertex that is not there
            SO_EDGE& edge = edges.emplace_back();
            edge.e = Moved(e, first);
            edge.edge = static_cast<int32_t>(i);
            edge.object = object;
            edge.surface = surface;
        }
    }

    std::vector<SO_VERTEX>& vertices;
    std::vector<SO_EDGE>& edges;
    int object;
};

// The position in the brush that an entry stands for; null if the brush has changed since.
D3DVECTOR* PositionIn(World& world, const SO_VERTEX& entry) {
    Brush& b = *world.brush[static_cast<size_t>(entry.object)];
    std::vector<Surface>& list = entry.curved ? b.curved_surfaces : b.surfaces;
    if (static_cast<size_t>(entry.surface) >= list.size())
        return nullptr;
    Surface& s = list[static_cast<size_t>(entry.surface)];
    std::vector<D3DVECTOR>& points = entry.curved ? s.cp : s.vertices;
    return static_cast<size_t>(entry.vertex) < points.size() ? &points[static_cast<size_t>(entry.vertex)] : nullptr;
}

// Entries of the net by the unit cell of their place after the move.
class EntryGrid {
public:
    EntryGrid(const std::vector<SO_VERTEX>& net, const D3DVECTOR& move) {
        entries.reserve(net.size());
        for (size_t i = 0; i < net.size(); ++i)
            entries.push_back({KeyOf(Cell(net[i].v + move), net[i].object), i, net[i].v + move});
        std::sort(entries.begin(), entries.end(),
                  [](const Entry& a, const Entry& b) { return a.key != b.key ? a.key < b.key : a.index < b.index; });
    }

    // Calls fn(index) for the entries of a brush that come to lie near a place.
    template <class Fn>
    void ForEachNear(const D3DVECTOR& place, int object, Fn&& fn) const {
        const D3DVECTOR reach{NEAR, NEAR, NEAR};
        const D3DVECTOR bounds[2] = {Cell(place - reach), Cell(place + reach)};
        for (int corner = 0; corner < 8; ++corner) {
            D3DVECTOR cell;
            bool repeated = false; // the reach lies in one cell of this axis
            for (int axis = 0; axis < 3; ++axis) {
                const bool upper = (corner >> axis & 1) != 0;
                Component(cell, axis) = Component(bounds[upper], axis);
                repeated |= upper && Component(bounds[0], axis) == Component(bounds[1], axis);
            }
            if (!repeated)
                ForEachInCell(cell, place, object, fn);
        }
    }

private:
    struct Entry {
        uint64_t key;
        size_t index;
        D3DVECTOR place;
    };
    static D3DVECTOR Cell(const D3DVECTOR& p) { return {std::floor(p.x), std::floor(p.y), std::floor(p.z)}; }
    static uint64_t KeyOf(const D3DVECTOR& cell, int object) {
        constexpr uint64_t MIX = 0x9E3779B97F4A7C15;
        auto key = static_cast<uint64_t>(object);
        for (int axis = 0; axis < 3; ++axis)
            key = (key ^ std::bit_cast<uint32_t>(Component(cell, axis) + 0.0f)) * MIX; // both zeros are one
        return key;
    }
    template <class Fn>
    void ForEachInCell(const D3DVECTOR& cell, const D3DVECTOR& place, int object, Fn& fn) const {
        const uint64_t key = KeyOf(cell, object);
        auto entry = std::lower_bound(entries.begin(), entries.end(), key,
                                      [](const Entry& e, uint64_t wanted) { return e.key < wanted; });
        for (; entry != entries.end() && entry->key == key; ++entry)
            if (Magnitude(entry->place - place) < NEAR)
                fn(entry->index);
    }

    std::vector<Entry> entries;
};

} // namespace

void World::InitSOVertices() {
    DestroySOVertices();
    for (const int i : brush_selection) {
        const Brush& b = *brush[static_cast<size_t>(i)];
        if (b.IsPortalOrOccluder() || b.IsCustom())
            continue;
        NetBuilder builder(*this, i);
        bool room = true;
        b.ForEachSurface(
            [&](const Surface& s, int surface, bool curved) { room = room && builder.Add(s, surface, curved); });
        if (!room) {
            NoticeOnce(Format("Only the first %d vertices of the selection can be shown and edited",
                              static_cast<int>(MAX_SO_VERTICES)));
            return;
        }
    }
}

void World::DestroySOVertices() {
    so_vertex.clear();
    so_edge.clear();
}

void World::SOVertexMove(const D3DVECTOR& move) {
    Selection touched; // brushes
    std::vector<bool> moved(so_vertex.size()), by_edge(so_vertex.size());
    const auto move_entry = [&](size_t i) {
        SO_VERTEX& entry = so_vertex[i];
        moved[i] = true;
        entry.v += move;
        if (entry.object < 0 || entry.object >= GetBrushCount())
            return;
        touched.AddItem(entry.object);
        if (D3DVECTOR* place = PositionIn(*this, entry))
            *place = entry.v;
    };
    for (size_t i = 0; i < so_vertex.size(); ++i)
        if (so_vertex[i].selected)
            move_entry(i);
    const auto is_marked = [](const SO_EDGE& edge) { return edge.selected; };
    if (std::any_of(so_edge.begin(), so_edge.end(), is_marked)) {
        const EntryGrid grid(so_vertex, move);
        for (const SO_EDGE& edge : so_edge)
            for (const size_t end : edge.e.i) {
                if (!edge.selected || end >= so_vertex.size() || by_edge[end])
                    continue;
                by_edge[end] = true;
                if (!moved[end])
                    move_entry(end);
                grid.ForEachNear(so_vertex[end].v, so_vertex[end].object, [&](size_t other) {
                    if (moved[other])
                        return;
                    by_edge[other] = true;
                    move_entry(other);
                });
            }
    }
    for (const int i : touched) {
        Brush& b = *brush[static_cast<size_t>(i)];
        b.TesselateCurves();
        b.RecalcBBox();
        b.ComputeNormals();
        b.SurfaceLight();
        b.RemapAll();
        b.ReplaceDecals();
    }
}
