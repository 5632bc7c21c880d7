#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "compiler/Levels.h"

namespace {

using Face = std::array<int, 3>;

std::vector<Face> FacePoints(const CPhysicsData& mesh) {
    std::vector<Face> faces;
    for (const CPhyFace& face : mesh.faces)
        faces.push_back({face.p0_index, face.p1_index, face.p2_index});
    return faces;
}

// Points welded as it is told: the nearest so far, the first on a tie, nearer than epsilon.
std::vector<D3DVECTOR> WeldBySearch(const std::vector<D3DVECTOR>& input, float epsilon) {
    std::vector<D3DVECTOR> points;
    for (const D3DVECTOR& p : input) {
        float best = 1e19f;
        for (const D3DVECTOR& q : points)
            best = std::min(best, SquareMagnitude(q - p));
        if (!(best < epsilon * epsilon))
            points.push_back(p);
    }
    return points;
}

} // namespace

TEST(Physics, QuadsShareAnEdge) {
    CPhysicsData mesh;
    mesh.tainted = false;
    const std::vector<TRIANGLE> two{{{0, 1, 2}}, {{0, 2, 3}}};
    mesh.InsertSurface(0.01f, 0, {{0, 0, 0}, {0, 0, 8}, {8, 0, 8}, {8, 0, 0}}, two);
    mesh.InsertSurface(0.01f, 1, {{0, 0, 8}, {0, 0, 0}, {-8, 0, 0}, {-8, 0, 8}}, two);
    EXPECT_TRUE(mesh.CheckConsistency());
    ASSERT_EQ(mesh.points.size(), 6u);
    EXPECT_EQ(mesh.points[0].indexes.Size(), 2);
    ASSERT_EQ(mesh.edges.size(), 9u);
    // Edges in the order e0, e1, e2 of each triangle: (1, 2), (2, 0), (0, 1); then of the other half (2, 3), (3, 0).
    const std::pair<int, int> first_edges[5] = {{1, 2}, {2, 0}, {0, 1}, {2, 3}, {3, 0}};
    for (size_t e = 0; e < 5; ++e)
        EXPECT_EQ(std::make_pair(mesh.edges[e].beg_index, mesh.edges[e].end_index), first_edges[e]) << e;
    EXPECT_EQ(mesh.edges[2].left_index, 0);
    EXPECT_EQ(mesh.edges[2].right_index, 2) << "the second quad took the other side";
    EXPECT_EQ(mesh.edges[0].right_index, -1);
    EXPECT_EQ(FacePoints(mesh), (std::vector<Face>{{0, 1, 2}, {0, 2, 3}, {1, 0, 4}, {1, 4, 5}}));
    EXPECT_EQ(mesh.faces[2].e2_index, 2);

    mesh.InsertSurface(0.01f, 2, {{0, 0, 0}, {0, 0, 8}, {0, 8, 8}, {0, 8, 0}}, two); // a wall on the same edge
    EXPECT_FALSE(mesh.CheckConsistency());
    EXPECT_EQ(mesh.faces.size(), 5u) << "the triangle on the edge is missing, the other half is there";
    EXPECT_EQ(mesh.edges.size(), 13u) << "its two new edges stay";
}

TEST(Physics, BrokenAndCollapsedTriangles) {
    CPhysicsData mesh;
    mesh.tainted = false;
    mesh.InsertSurface(0.01f, 0, {{0, 0, 0}, {0.005f, 0, 0}, {8, 0, 0}, {0, 8, 0}}, {{{0, 1, 2}}});
    EXPECT_TRUE(mesh.CheckConsistency()) << "a sliver is dropped without a mark";
    EXPECT_TRUE(mesh.faces.empty());
    EXPECT_EQ(mesh.points.size(), 3u);
    mesh.InsertSurface(0.01f, 0, {{0, 0, 0}, {8, 0, 0}}, {{{0, 1, 2}}});
    EXPECT_FALSE(mesh.CheckConsistency()) << "an index beyond the points";
}

TEST(Physics, WeldingEqualsTheSearchForTheNearest) {
    CPhysicsData exact;
    exact.InsertSurface(0.01f, 0, {{0, 0, 0}, {0.01f, 0, 0}, {0.0195f, 0, 0}}, {});
    EXPECT_EQ(exact.points.size(), 2u) << "at exactly 0.01 a new point; the third welds to the second";

    Dice dice(5);
    std::vector<D3DVECTOR> input{{NAN, 0, 0}, {NAN, 0, 0}, {INFINITY, 1, 1}, {3e30f, 1, 1}};
    for (int k = 0; k < 3000; ++k) { // crowded, and on a lattice of ties
        D3DVECTOR p = dice.Point(0.06f);
        if (k % 2)
            p = {std::round(p.x * 200) / 200, std::round(p.y * 200) / 200, std::round(p.z * 200) / 200};
        input.push_back(k % 3 ? p : p + D3DVECTOR{4000, -70, 0});
    }
    for (const float epsilon : {0.01f, 0.004f}) {
        CPhysicsData mesh;
        mesh.InsertSurface(epsilon, 0, input, {});
        const std::vector<D3DVECTOR> expected = WeldBySearch(input, epsilon);
        ASSERT_EQ(mesh.points.size(), expected.size());
        for (size_t k = 4; k < expected.size(); ++k)
            ASSERT_EQ(mesh.points[k].pos, expected[k]) << k;
    }
}

TEST(Physics, ABoxByHand) {
    World world;
    AddMaterialRow(world, "wall");
    Brush& box = AddShape(world, BT_BOX, {99, 199, -1}, {101, 201, 1});
    box.properties = BP_DYNAMIC;
    box.mass = 5;
    box.rotation_factor = 2;
    box.static_friction = 0.25f;
    EXPECT_TRUE(box.CheckPhysics());
    box.ComputePhysicsData(true);
    const CPhysicsData& physics = box.physics_data;
    EXPECT_TRUE(physics.CheckConsistency());
    EXPECT_EQ(physics.points.size(), 8u);
    EXPECT_EQ(physics.edges.size(), 18u) << "12 and a diagonal a side";
    EXPECT_EQ(physics.faces.size(), 12u);
    EXPECT_TRUE(std::all_of(physics.edges.begin(), physics.edges.end(),
                            [](const CPhyEdge& e) { return e.left_index >= 0 && e.right_index >= 0; }));
    EXPECT_EQ(physics.mass, 5);
    EXPECT_EQ(physics.static_friction_coef, 0.25f);
    EXPECT_NEAR(physics.center.x, 100, 1e-4);
    EXPECT_NEAR(physics.center.y, 200, 1e-4);
    EXPECT_NEAR(physics.center.z, 0, 1e-4);
    for (const CPhyPoint& point : physics.points)
        EXPECT_NEAR(SquareMagnitude(point.pos), 3, 1e-3) << "relative to the centre";
    // 12 triangles of area 2 with centroids (1, 1/3, -1/3) and the like: 4 with y^2 + z^2 = 2/9, 8 with 10/9; area 24.
    const double expected = 2 * (4 * 2.0 / 9 + 8 * 10.0 / 9) * 2 * 5 * 0.5 / 24;
    for (int k = 0; k < 3; ++k) {
        EXPECT_NEAR(physics.I.m[k][k], expected, 1e-3);
        EXPECT_EQ(physics.I.m[3][k], 0);
        EXPECT_EQ(physics.I.m[k][3], 0);
        for (int j = 0; j < k; ++j)
            EXPECT_EQ(physics.I.m[k][j], physics.I.m[j][k]);
    }
    EXPECT_EQ(physics.I.m[3][3], 0);
    const CPhysicsData once = physics;
    box.ComputePhysicsData(true);
    EXPECT_EQ(box.physics_data.I, once.I) << "nothing of the first run is left";
}

TEST(Physics, BodiesWithoutAMesh) {
    World world;
    AddMaterialRow(world, "wall");
    Brush& still = AddShape(world, BT_BOX, {0, 0, 0}, {8, 8, 8});
    still.ComputePhysicsData(false);
    EXPECT_TRUE(still.physics_data.points.empty());
    EXPECT_EQ(still.physics_data.mass, 1e9f);
    EXPECT_EQ(still.physics_data.I.m[1][1], 1e9f);

    Brush& bare = AddShape(world, BT_BOX, {0, 0, 0}, {8, 8, 8}, 0);
    Brush& flat = AddShape(world, BT_RECTANGLE, {0, 0, 0}, {8, 0, 8});
    flat.surfaces[0].vertices[0] = {0, 0, 0};
    flat.surfaces[0].vertices[1] = {8, 0, 8};
    flat.surfaces[0].vertices[2] = {4, 0, 4}; // three points of a line
    flat.surfaces[0].tri_indices = {{{0, 1, 2}}};
    for (Brush* brush : {&bare, &flat}) {
        brush->ComputePhysicsData(true);
        EXPECT_EQ(brush->physics_data.points.size() + brush->physics_data.edges.size() +
                      brush->physics_data.faces.size(),
                  0u);
        EXPECT_TRUE(std::isfinite(brush->physics_data.center.x));
        EXPECT_TRUE(std::isfinite(brush->physics_data.I.m[0][0]));
    }
    Brush& portal = AddShape(world, BT_PORTAL, {0, 0, 0}, {8, 8, 8});
    portal.ComputePhysicsData(true);
    EXPECT_TRUE(portal.physics_data.points.empty());
    EXPECT_TRUE(portal.CheckPhysics());
}

TEST(Physics, TheStageUsesCoarseCurves) {
    World world;
    AddMaterialRow(world, "wall");
    Brush& column = AddShape(world, BT_PATCH, {0, 0, 0}, {64, 8, 64}, 1, 1);
    AddShape(world, BT_BOX, {0, 0, 0}, {8, 8, 8});
    CompileProgress progress;
    ASSERT_TRUE(world.CalculatePhysicsData(true, 2, progress));
    EXPECT_EQ(column.CURVE_DETAIL, 3u);
    EXPECT_EQ(column.physics_data.faces.size(), 8u) << "3 by 3 points";
    ASSERT_TRUE(world.CalculatePhysicsData(false, 2, progress));
    EXPECT_TRUE(column.physics_data.faces.empty());
}
