#include "Checks.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>
#include <tuple>

#include "foundation/Strings.h"
#include "persistence/BrushReader.h"
#include "scene/Brush.h"
#include "scene/Entity.h"
#include "scene/World.h"

namespace {

constexpr uint32_t STATIC_MASS_BITS = 0x51BA43B7; // of a brush that never moves
constexpr float ON_PAGE = 1.0001f;                // rounding of a rectangle that ends at the page's edge

class Checker {
public:
    Checker(const WorldFile& file, size_t most) : world(file), limit(most) {}

    std::vector<std::string> Run() {
        CheckCounts();
        for (size_t b = 0; b < world.brushes.size(); ++b)
            CheckBrush(world.brushes[b], static_cast<int>(b));
        CheckOverlaps();
        CheckEntities();
        CheckPortals();
        CheckCells();
        CheckRenderGroups();
        CheckTree();
        CheckRest();
        return std::move(findings);
    }

private:
    template <class... Args>
    void Expect(bool holds, const char* format, Args... args) {
        if (!holds && findings.size() < limit)
            findings.push_back(Format(format, args...));
    }
    static bool Below(int64_t index, size_t count) { return index >= 0 && static_cast<uint64_t>(index) < count; }
    template <class T>
    bool AllBelow(const std::vector<T>& indices, size_t count) {
        for (const T& index : indices)
            if (!Below(index, count))
                return false;
        return true;
    }

    void CheckCounts() {
        int64_t surfaces = 0, control_points = 0;
        for (const WorldBrush& brush : world.brushes) {
            surfaces += brush.surface_count;
            for (const WorldSurface& surface : brush.surfaces)
                control_points += surface.cp_count;
        }
        Expect(surfaces == world.initial_surfaces, "BrushInitialCount tells %d surfaces, the brushes have %lld",
               world.initial_surfaces, static_cast<long long>(surfaces));
        Expect(control_points == world.initial_control_points,
               "BrushInitialCount tells %d control points, the brushes have %lld", world.initial_control_points,
               static_cast<long long>(control_points));
        Expect(world.lightmap_pages.size() <= MAX_LIGHTMAP_PAGES, "there are %zu lightmap pages",
               world.lightmap_pages.size());
        Expect(!world.cells.empty(), "there is no cell%s", "");
        Expect(!world.leaves.empty(), "there is no octal tree%s", "");
    }

    void CheckBrush(const WorldBrush& brush, int b) {
        Expect(brush.chunk_id == static_cast<uint32_t>(b), "BrushInfo %d has the id %u", b, brush.chunk_id);
        Expect(brush.type <= BT_TERRAIN, "brush %d has the type %u", b, brush.type);
        Expect(PackColor(brush.color_vector) == brush.color,
               "brush %d has the colour word %08x, which is not that of its floats", b, brush.color);
        for (size_t s = 0; s < brush.surfaces.size(); ++s)
            CheckSurface(brush, brush.surfaces[s], b, static_cast<int>(s));
        CheckPhysics(brush, b);
    }

    void CheckSurface(const WorldBrush& brush, const WorldSurface& surface, int b, int s) {
        static const std::pair<int32_t, int32_t> control_points[] = {
            {WS_FAN, 4}, {WS_STRIP, 6}, {WS_PATCH, 9}, {WS_MESH, 0}, {WS_TERRAIN, 0}};
        bool kind_fits = surface.type == 0; // a kind that the format has no word for
        for (const auto& [type, count] : control_points)
            kind_fits = kind_fits || (surface.type == type && surface.cp_count == count);
        Expect(kind_fits, "surface %d of brush %d has the type %d with %d control points", s, b, surface.type,
               surface.cp_count);
        Expect((surface.type == WS_TERRAIN) == (brush.type == BT_TERRAIN) || surface.cp_count > 0,
               "surface %d of brush %d is terrain in one place only", s, b);
        for (const TRIANGLE& triangle : surface.triangles)
            for (uint16_t index : triangle.i)
                Expect(index < surface.vertices.size(), "a triangle of surface %d of brush %d names vertex %d of %zu",
                       s, b, index, surface.vertices.size());
        for (const D3DVECTOR& v : surface.vertices)
            Expect(std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z),
                   "surface %d of brush %d has a vertex that is no number", s, b);
        for (const UVVector& uv : surface.uv)
            Expect(std::fabs(uv.u) <= MAX_COORDINATE && std::fabs(uv.v) <= MAX_COORDINATE,
                   "surface %d of brush %d has a texture coordinate that is no number or too large", s, b);
        CheckMapping(surface, b, s);
        for (const UVVector& uv : surface.lightmap_uv)
            Expect(std::isfinite(uv.u) && std::isfinite(uv.v),
                   "surface %d of brush %d has a lightmap coordinate that is no number", s, b);
        Expect(surface.texture.index >= 0 && surface.texture.index <= static_cast<int>(world.materials.size()),
               "surface %d of brush %d has the material %d of %zu", s, b, surface.texture.index,
               world.materials.size());
        if (brush.type == BT_PORTAL || brush.type == BT_OCCLUDER || brush.type == BT_CUSTOM)
            return;
        Expect(surface.lightmap.light_index == -1, "the lightmap of surface %d of brush %d names the light %d", s, b,
               surface.lightmap.light_index);
        CheckRectangle(surface.lightmap, surface.texture.index != 0, b, s);
        for (const LIGHTMAP_INFO& info : surface.dynamic_lightmaps) {
            // A light that bakes apart and yet is not dynamic has no place on the pages.
            CheckRectangle(info, info.u_size <= 1, b, s);
            Expect(Below(info.light_index, world.entities.size()) &&
                       EqualNoCase(world.entities[static_cast<size_t>(info.light_index)].type, "POINT_LIGHT"),
                   "a dynamic lightmap of surface %d of brush %d names the entity %d, which is no light", s, b,
                   info.light_index);
        }
    }

    // The game maps a curved surface itself, by these numbers.
    void CheckMapping(const WorldSurface& surface, int b, int s) {
        const TEX_INFO& map = surface.texture;
        for (const float value : {map.shift.u, map.shift.v, map.scale.u, map.scale.v, map.size.u, map.size.v, map.rotation})
            Expect(std::fabs(value) <= MAX_COORDINATE,
                   "surface %d of brush %d has a mapping that is no number or too large", s, b);
    }

    void CheckRectangle(const LIGHTMAP_INFO& info, bool lit, int b, int s) {
        Expect(info.lightmap == 0 || Below(info.lightmap, world.lightmap_pages.size()),
               "surface %d of brush %d lies on page %d of %zu", s, b, info.lightmap, world.lightmap_pages.size());
        if (!lit) {
            Expect(info.u_start == 0 && info.v_start == 0,
                   "surface %d of brush %d has no texture and yet a place on a page", s, b);
            return;
        }
        const bool inside = info.u_start >= 0 && info.v_start >= 0 && info.u_size > 0 && info.v_size > 0 &&
                            info.u_start + info.u_size <= ON_PAGE && info.v_start + info.v_size <= ON_PAGE;
        Expect(inside, "the lightmap of surface %d of brush %d leaves its page", s, b);
        if (inside && Below(info.lightmap, world.lightmap_pages.size()))
            rectangles.push_back({info, b, s});
    }

    // No two lightmaps share a texel: sorted by page and row, each is held against those that begin before it ends.
    void CheckOverlaps() {
        std::sort(rectangles.begin(), rectangles.end(), [](const Rectangle& a, const Rectangle& b) {
            return std::tie(a.info.lightmap, a.info.v_start) < std::tie(b.info.lightmap, b.info.v_start);
        });
        for (size_t k = 0; k < rectangles.size(); ++k) {
            const LIGHTMAP_INFO& a = rectangles[k].info;
            for (size_t n = k + 1; n < rectangles.size(); ++n) {
                const LIGHTMAP_INFO& b = rectangles[n].info;
                if (b.lightmap != a.lightmap || b.v_start >= a.v_start + a.v_size)
                    break;
                Expect(b.u_start >= a.u_start + a.u_size || a.u_start >= b.u_start + b.u_size,
                       "the lightmaps of surface %d of brush %d and surface %d of brush %d overlap",
                       rectangles[k].surface, rectangles[k].brush, rectangles[n].surface, rectangles[n].brush);
            }
        }
    }

    void CheckPhysics(const WorldBrush& brush, int b) {
        const WorldPhysics& physics = brush.physics;
        uint32_t bits = 0;
        std::memcpy(&bits, &physics.mass, sizeof bits);
        Expect((brush.properties & BP_DYNAMIC) || bits == STATIC_MASS_BITS,
               "brush %d does not move and yet has the mass %g", b, static_cast<double>(physics.mass));
        std::vector<int> faces_of_edge(physics.edges.size(), 0);
        for (const WorldPhysics::Edge& edge : physics.edges)
            Expect(Below(edge.beg, physics.points.size()) && Below(edge.end, physics.points.size()) &&
                       edge.beg != edge.end,
                   "an edge of the physics of brush %d joins points %d and %d", b, edge.beg, edge.end);
        for (const WorldPhysics::Face& face : physics.faces)
            for (int k = 0; k < 3; ++k) {
                if (!Below(face.e[k], physics.edges.size()) || !Below(face.p[k], physics.points.size())) {
                    Expect(false, "a face of the physics of brush %d names edge %d and point %d", b, face.e[k],
                           face.p[k]);
                    continue;
                }
                const WorldPhysics::Edge& edge = physics.edges[static_cast<size_t>(face.e[k])];
                const std::set<int32_t> ends{edge.beg, edge.end}, corners{face.p[(k + 1) % 3], face.p[(k + 2) % 3]};
                Expect(ends == corners, "edge %d of a face of the physics of brush %d does not join its corners", k, b);
                Expect(++faces_of_edge[static_cast<size_t>(face.e[k])] <= 2,
                       "an edge of the physics of brush %d has more than two faces", b);
            }
        bool numbers =
            std::isfinite(physics.center.x) && std::isfinite(physics.center.y) && std::isfinite(physics.center.z);
        for (const auto& row : physics.I.m)
            for (float value : row)
                numbers = numbers && std::isfinite(value);
        Expect(numbers, "the centre or tensor of brush %d is no number", b);
    }

    void CheckEntities() {
        std::set<uint32_t> ids;
        const auto take = [&](uint32_t id, const char* kind, size_t n) {
            Expect(ids.insert(id).second, "the id %u of %s %zu is taken already", id, kind, n);
        };
        for (size_t b = 0; b < world.brushes.size(); ++b)
            take(world.brushes[b].id, "brush", b);
        for (size_t e = 0; e < world.entities.size(); ++e) {
            const WorldEntity& entity = world.entities[e];
            take(entity.id, "entity", e);
            for (const WorldParameter& parameter : entity.parameters)
                Expect(parameter.checksum == EntityParameter::NameChecksum(parameter.name),
                       "the parameter \"%s\" of entity %zu has a wrong checksum", parameter.name.c_str(), e);
        }
    }

    void CheckPortals() {
        for (size_t p = 0; p < world.portals.size(); ++p) {
            const WorldPortal& portal = world.portals[p];
            Expect(Below(portal.portalowner, world.brushes.size()) &&
                       world.brushes[static_cast<size_t>(portal.portalowner)].type == BT_PORTAL,
                   "portal %zu belongs to brush %d, which is no portal", p, portal.portalowner);
            for (int side = 0; side < 2; ++side) {
                Expect(Below(portal.cell[side], world.cells.size()), "side %d of portal %zu opens to cell %d of %zu",
                       side, p, portal.cell[side], world.cells.size());
                Expect(AllBelow(portal.reachable[side], world.portals.size()),
                       "side %d of portal %zu reaches a portal that is not there", side, p);
                for (const auto& indices : portal.partindices[side])
                    Expect(indices < 4, "portal %zu has a triangle outside its four corners", p);
                CheckReachable(static_cast<int32_t>(p), side);
            }
        }
        for (size_t o = 0; o < world.occluders.size(); ++o)
            Expect(Below(world.occluders[o].owner, world.brushes.size()) &&
                       world.brushes[static_cast<size_t>(world.occluders[o].owner)].type == BT_OCCLUDER,
                   "occluder %zu belongs to brush %d, which is none", o, world.occluders[o].owner);
    }

    // A side reaches all other portals that its cell lists, in their order.
    void CheckReachable(int32_t p, int side) {
        const WorldPortal& portal = world.portals[static_cast<size_t>(p)];
        std::vector<int32_t> expected;
        if (Below(portal.cell[side], world.cells.size()))
            expected = world.cells[static_cast<size_t>(portal.cell[side])].portals;
        std::erase(expected, p);
        std::sort(expected.begin(), expected.end());
        Expect(portal.reachable[side] == expected, "side %d of portal %d does not reach the portals of its cell", side,
               p);
    }

    void CheckCells() {
        for (size_t c = 0; c < world.cells.size(); ++c) {
            const WorldCell& cell = world.cells[c];
            Expect(AllBelow(cell.objects, world.brushes.size()), "cell %zu lists a brush that is not there", c);
            Expect(AllBelow(cell.entities, world.entities.size()), "cell %zu lists an entity that is not there", c);
            Expect(AllBelow(cell.portals, world.portals.size()), "cell %zu lists a portal that is not there", c);
            Expect(AllBelow(cell.portalside, 2), "cell %zu has a portal side other than 0 and 1", c);
            Expect(AllBelow(cell.occluders, world.occluders.size()), "cell %zu lists an occluder that is not there", c);
            Expect(AllBelow(cell.render_groups, world.render_groups.size()),
                   "cell %zu lists a render group that is not there", c);
            CheckCellGroups(cell, c);
        }
    }

    // What a cell draws is what it holds: each brush of its groups is one of its objects.
    void CheckCellGroups(const WorldCell& cell, size_t c) {
        const std::set<int32_t> objects(cell.objects.begin(), cell.objects.end());
        for (int32_t group : cell.render_groups)
            if (Below(group, world.render_groups.size()))
                for (int32_t brush : world.render_groups[static_cast<size_t>(group)])
                    Expect(objects.count(brush) != 0, "cell %zu draws brush %d, which is not in it", c, brush);
    }

    void CheckRenderGroups() {
        std::vector<int> groups_of_brush(world.brushes.size(), 0);
        for (size_t g = 0; g < world.render_groups.size(); ++g)
            for (int32_t brush : world.render_groups[g]) {
                if (!Below(brush, world.brushes.size()))
                    Expect(false, "render group %zu lists brush %d of %zu", g, brush, world.brushes.size());
                else
                    Expect(++groups_of_brush[static_cast<size_t>(brush)] == 1,
                           "brush %d is in more than one render group", brush);
            }
    }

    void CheckTree() {
        for (size_t n = 0; n < world.leaves.size(); ++n) {
            const WorldLeaf& leaf = world.leaves[n];
            Expect(leaf.type <= 2, "leaf %zu has the type %u", n, leaf.type);
            Expect((leaf.type == 2) == !leaf.brushes.empty(), "leaf %zu of type %u lists %zu brushes", n, leaf.type,
                   leaf.brushes.size());
            Expect(AllBelow(leaf.brushes, world.brushes.size()), "leaf %zu lists a brush that is not there", n);
            Expect(n == 0 ? leaf.parent == -1 : Below(leaf.parent, n), "leaf %zu has the parent %d", n, leaf.parent);
            Expect(leaf.size == std::fabs(leaf.max.x - leaf.min.x), "leaf %zu has the size %g", n,
                   static_cast<double>(leaf.size));
            if (leaf.type == 0)
                CheckChildren(leaf, n);
        }
    }

    void CheckChildren(const WorldLeaf& node, size_t n) {
        // Which half of x, y and z child k takes.
        static constexpr int upper[8][3] = {{0, 1, 1}, {1, 1, 1}, {1, 1, 0}, {0, 1, 0},
                                            {0, 0, 1}, {1, 0, 1}, {1, 0, 0}, {0, 0, 0}};
        const float h = node.size * 0.5f;
        for (int k = 0; k < 8; ++k) {
            if (!Below(node.child[k], world.leaves.size()) || static_cast<size_t>(node.child[k]) <= n) {
                Expect(false, "child %d of leaf %zu is %d", k, n, node.child[k]);
                continue;
            }
            const WorldLeaf& child = world.leaves[static_cast<size_t>(node.child[k])];
            Expect(child.parent == static_cast<int32_t>(n), "child %d of leaf %zu has the parent %d", k, n,
                   child.parent);
            for (int axis = 0; axis < 3; ++axis) {
                const float expected = Component(node.min, axis) + (upper[k][axis] ? h : 0);
                const float slack = node.size * 1.0e-5f;
                Expect(std::fabs(Component(child.min, axis) - expected) <= slack &&
                           std::fabs(Component(child.max, axis) - expected - h) <= slack,
                       "child %d of leaf %zu does not take its eighth of the cube", k, n);
            }
        }
    }

    void CheckRest() {
        for (size_t s = 0; s < world.sounds.size(); ++s)
            if (world.sounds[s].distance != 65535)
                Expect(Below(world.sounds[s].portal_start, world.portals.size()) &&
                           Below(world.sounds[s].portal_end, world.portals.size()),
                       "sound path %zu begins or ends at a portal that is not there", s);
        Expect(world.mp_games.size() <= MAX_MP_GAMES, "there are %zu game types", world.mp_games.size());
        for (const WorldActorGroup& group : world.actor_groups)
            for (int32_t relation : group.relation)
                Expect(relation >= 0 && relation <= 2, "the AI group \"%s\" has the stance %d", group.name.c_str(),
                       relation);
    }

    struct Rectangle {
        LIGHTMAP_INFO info;
        int brush, surface;
    };

    const WorldFile& world;
    std::vector<Rectangle> rectangles; // of all lightmaps
    size_t limit;
    std::vector<std::string> findings;
};

} // namespace

std::vector<std::string> CheckWorld(const WorldFile& world, size_t limit) { return Checker(world, limit).Run(); }
