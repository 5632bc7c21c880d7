#include <algorithm>
#include <set>

#include <gtest/gtest.h>

#include "foundation/Desktop.h"
#include "foundation/Random.h"
#include "scene/EditingFrontEnd.h"
#include "scene/Scenes.h"

namespace {

class VertexNet : public testing::Test {
protected:
    Brush& Add(BrushType type, const D3DVECTOR& min = {0, 0, 0}, const D3DVECTOR& max = {64, 64, 64}) {
        return AddSelected(world, std::make_unique<Brush>(ShapeOf(type, min, max, 1)));
    }
    // Marks the first edge of a brush between two corners, in either direction.
    void MarkEdge(int object, const D3DVECTOR& a, const D3DVECTOR& b) {
        for (SO_EDGE& edge : world.so_edge) {
            const D3DVECTOR &p = world.so_vertex[edge.e.i[0]].v, &q = world.so_vertex[edge.e.i[1]].v;
            if (!edge.curved && edge.object == object && ((p == a && q == b) || (p == b && q == a))) {
                edge.selected = true;
                return;
            }
        }
        FAIL() << "no such edge";
    }
    // How often each corner occurs among the flat vertices of a brush.
    static size_t Count(const Brush& b, const D3DVECTOR& corner) {
        size_t n = 0;
        for (const Surface& s : b.surfaces)
            n += static_cast<size_t>(std::count(s.vertices.begin(), s.vertices.end(), corner));
        return n;
    }
    EditingFrontEnd front_end;
    World world;
};

TEST_F(VertexNet, UnpacksSurfacesInTheOrderOfTheSelection) {
    Add(BT_BOX);
    Brush& second = Add(BT_RECTANGLE, {100, 0, 0}, {164, 0, 64});
    world.brush_selection.ClearList();
    world.brush_selection.AddItem(1);
    world.brush_selection.AddItem(0);
    world.so_vertex.resize(5); // an old net goes
    world.InitSOVertices();
    ASSERT_EQ(world.so_vertex.size(), 4u + 24u);
    ASSERT_EQ(world.so_edge.size(), 4u + 24u);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(world.so_vertex[i].object, 1);
        EXPECT_EQ(world.so_vertex[i].v, second.surfaces[0].vertices[i]);
        EXPECT_EQ(world.so_vertex[i].vertex, static_cast<int>(i));
    }
    for (size_t i = 0; i < world.so_edge.size(); ++i) {
        const SO_EDGE& edge = world.so_edge[i];
        const Surface& s = world.brush[static_cast<size_t>(edge.object)]->surfaces[static_cast<size_t>(edge.surface)];
        const EDGE& source = s.edge_indices[static_cast<size_t>(edge.edge)];
        for (size_t k = 0; k < 2; ++k) {
            const SO_VERTEX& end = world.so_vertex[edge.e.i[k]];
            EXPECT_EQ(end.vertex, source.i[k]);
            EXPECT_EQ(end.surface, edge.surface);
            EXPECT_EQ(end.object, edge.object);
        }
        EXPECT_FALSE(edge.selected || edge.curved);
    }
    world.DestroySOVertices();
    EXPECT_TRUE(world.so_vertex.empty() && world.so_edge.empty());
}

TEST_F(VertexNet, ControlNetsOfTheThreeKinds) {
    const auto lines = [](const World& w) {
        std::string text;
        for (const SO_EDGE& e : w.so_edge)
            if (e.curved)
                text += std::to_string(e.e.i[0]) + '-' + std::to_string(e.e.i[1]) + ' ';
        return text;
    };
    Add(BT_PATCH);
    world.InitSOVertices();
    EXPECT_EQ(world.so_vertex.size(), 9u);
    EXPECT_EQ(lines(world), "0-1 1-2 3-4 4-5 0-3 1-4 2-5 6-7 7-8 3-6 4-7 5-8 ");

    world.ClearSelection();
    Brush& block = Add(BT_Q_BLOCK); // two flat walls, two fans, a strip
    block.surfaces.clear();
    world.InitSOVertices();
    EXPECT_EQ(world.so_vertex.size(), 4u + 4u + 6u);
    EXPECT_EQ(lines(world), "0-1 1-2 4-5 5-6 8-9 9-10 11-12 12-13 8-11 9-12 10-13 ");
    EXPECT_TRUE(world.so_vertex[3].curved);
    EXPECT_EQ(world.so_vertex[3].v, block.curved_surfaces[0].cp[3]); // a vertex, though no line shows it

    block.curved_surfaces[0].cp.resize(2); // a damaged record: no lines
    block.curved_surfaces.resize(1);
    world.InitSOVertices();
    EXPECT_EQ(lines(world), "");
}

TEST_F(VertexNet, PortalsOccludersAndStoredMeshesHaveNone) {
    Add(BT_PORTAL);
    Add(BT_OCCLUDER);
    Add(BT_BOX).type = BT_CUSTOM;
    world.InitSOVertices();
    EXPECT_TRUE(world.so_vertex.empty() && world.so_edge.empty());
    world.SOVertexMove({1, 1, 1});
}

TEST_F(VertexNet, StopsAtWholeSurfacesWhenFull) {
    HeadlessDesktop desktop;
    SetDesktop(&desktop);
    ForgetNotices();
    Brush& large = Add(BT_RECTANGLE);
    large.surfaces.resize(3);
    large.surfaces[0].Allocate(40000, 0, 1);
    large.surfaces[0].edge_indices[0] = {{0, 39999}};
    large.surfaces[1].Allocate(25536, 0, 2);
    large.surfaces[1].edge_indices = {{{0, 25535}}, {{0, 25536}}}; // the second names a vertex that is not there
    large.surfaces[2].Allocate(1, 0, 0);
    Add(BT_BOX);
    world.InitSOVertices();
    world.InitSOVertices();
    EXPECT_EQ(world.so_vertex.size(), MAX_SO_VERTICES);
    ASSERT_EQ(world.so_edge.size(), 2u);
    EXPECT_EQ(world.so_edge[1].e, (EDGE{{40000, 65535}}));
    EXPECT_EQ(desktop.notices.size(), 1u);
    // Coincident as they are, all move by one edge; the search does not compare each with each.
    world.so_edge[1].selected = true;
    world.SOVertexMove({1, 2, 3});
    for (const D3DVECTOR& v : large.surfaces[0].vertices)
        ASSERT_EQ(v, (D3DVECTOR{1, 2, 3}));
    EXPECT_EQ(large.surfaces[2].vertices[0], D3DVECTOR{});
    SetDesktop(nullptr);
}

TEST_F(VertexNet, MarkedVerticesMoveAlone) {
    Brush& box = Add(BT_BOX);
    Brush& block = Add(BT_Q_BLOCK, {100, 0, 0}, {164, 64, 64});
    world.InitSOVertices();
    for (SO_VERTEX& v : world.so_vertex)
        if ((v.object == 0 && v.surface == 0 && v.vertex == 0) ||
            (v.object == 1 && v.curved && v.surface == 0 && v.vertex == 1))
            v.selected = true;
    const D3DVECTOR corner = box.surfaces[0].vertices[0], point = block.curved_surfaces[0].cp[1];
    const D3DVECTOR move{0, 16, 0};
    const D3DVECTOR middle = block.curved_surfaces[0].vertices[3];
    world.SOVertexMove(move);
    EXPECT_EQ(box.surfaces[0].vertices[0], corner + move);
    EXPECT_EQ(Count(box, corner), 2u); // its neighbours in two other faces stayed
    EXPECT_EQ(block.curved_surfaces[0].cp[1], point + move);
    ExpectNear(block.curved_surfaces[0].vertices[3], middle + move * 0.5f, 1e-3f); // the curve follows: half its weight
    EXPECT_EQ(world.so_vertex[0].v, corner + move);
    EXPECT_EQ(BoxMax(box.bbox).y, 80.0f);
}

TEST_F(VertexNet, CornersMovedByAnEdgeStayTogether) {
    Brush& box = Add(BT_BOX);
    Brush& twin = Add(BT_BOX); // another brush at the same place
    box.ForEachSurface([](Surface& s, int, bool) {
        s.texture.index = 1;
        s.texture.size = {64, 64};
    });
    world.InitSOVertices();
    const D3DVECTOR a{0, 64, 0}, b{0, 64, 64}, move{-16, 0, 0};
    MarkEdge(0, a, b);
    const auto first = std::find_if(world.so_vertex.begin(), world.so_vertex.end(),
                                    [&](const SO_VERTEX& v) { return v.object == 0 && v.v == a; });
    first->selected = true; // marked and an end too: it moves once
    world.SOVertexMove(move);
    for (const D3DVECTOR& corner : {a, b}) {
        EXPECT_EQ(Count(box, corner), 0u);
        EXPECT_EQ(Count(box, corner + move), 3u);
        EXPECT_EQ(Count(twin, corner), 3u);
    }
    EXPECT_NEAR(SignedVolume(box), 64 * 64 * 64 + 16 * 64 * 64 / 2, 1);
    EXPECT_EQ(BoxMin(box.bbox).x, -16.0f);
    for (const Surface& s : box.surfaces) // normals and coordinates follow
        if (s.normal[0].x < -0.5f) {
            ExpectNear(s.normal[0], NormalizeOrZero({-64, -16, 0}), 1e-5f);
        } else if (s.normal[0].y > 0.9f) {
            for (size_t i = 0; i < s.vertices.size(); ++i)
                ExpectNear(s.uv[i], {s.vertices[i].x / 64, -s.vertices[i].z / 64}, 1e-5f);
        }
}

// The same by comparing every entry with every end, over crowds of vertices around cell borders and zero.
TEST_F(VertexNet, NearnessFollowsAPlainSearch) {
    RandomMT random;
    random.seedMT(11);
    const auto coordinate = [&random] { return static_cast<float>(random.randomMT() % 61) * 0.04f - 1.2f; };
    size_t neighbours = 0;
    for (int round = 0; round < 30; ++round) {
        world.ClearSelection();
        Brush& crowd = Add(BT_RECTANGLE);
        Surface& s = crowd.surfaces[0];
        s.Allocate(300, 0, 4);
        for (D3DVECTOR& v : s.vertices)
            v = {coordinate(), coordinate(), round % 2 == 0 ? 0 : coordinate()};
        for (EDGE& e : s.edge_indices)
            e = {{static_cast<uint16_t>(random.randomMT() % 300), static_cast<uint16_t>(random.randomMT() % 300)}};
        const D3DVECTOR move{coordinate() * 3, coordinate(), 0.5f};

        std::vector<D3DVECTOR> expected = s.vertices;
        std::set<size_t> gone, ends;
        for (const EDGE& e : s.edge_indices)
            for (const size_t end : e.i) {
                if (!gone.insert(end).second)
                    continue;
                expected[end] += move;
                for (size_t other = 0; other < expected.size(); ++other)
                    if (!gone.count(other) && Magnitude(expected[other] + move - expected[end]) < 0.1f) {
                        gone.insert(other);
                        expected[other] += move;
                    }
            }
        world.InitSOVertices();
        for (SO_EDGE& edge : world.so_edge)
            edge.selected = true;
        world.SOVertexMove(move);
        ASSERT_EQ(s.vertices, expected) << round;
        for (const EDGE& e : s.edge_indices)
            ends.insert(e.i.begin(), e.i.end());
        neighbours += gone.size() - ends.size();
    }
    EXPECT_GT(neighbours, 50u); // the crowds are dense enough to tell
}

} // namespace
