#include <gtest/gtest.h>

#include "scene/Scenes.h"

namespace {

TEST(BrushRecord, ThinAxesAreWidenedOnTheirSides) {
    Brush brush;
    Surface& s = brush.surfaces.emplace_back();
    s.Allocate(2, 0, 0);
    s.vertices = {{10, 20, 30}, {10.5f, 20.5f, 30.5f}};
    brush.RecalcBBox();
    EXPECT_EQ(BoxMin(brush.bbox), (D3DVECTOR{10, 12.5f, 22.5f}));
    EXPECT_EQ(BoxMax(brush.bbox), (D3DVECTOR{18, 20.5f, 30.5f}));
    EXPECT_EQ(brush.pivot, (D3DVECTOR{14, 16.5f, 26.5f}));
    EXPECT_EQ(brush.bind_sphere, -4.0f);
    EXPECT_FLOAT_EQ(brush.bound_sphere, -std::sqrt(48.0f));
    Box elsewhere;
    const Box own = brush.bbox;
    s.vertices = {{0, 0, 0}, {100, 1, 50}};
    brush.BBoxFromVertices(elsewhere);
    EXPECT_EQ(brush.bbox, own);
    EXPECT_EQ(BoxMax(elsewhere), (D3DVECTOR{100, 1, 50})); // an extent of exactly 1 is not thin
    EXPECT_EQ(BoxMin(elsewhere), (D3DVECTOR{0, 0, 0}));
}

TEST(BrushRecord, NormalsWeighTrianglesByTheirArea) {
    Brush brush;
    Surface& s = brush.surfaces.emplace_back();
    s.Allocate(5, 2, 0);
    s.vertices = {{0, 0, 0}, {0, 0, 3}, {4, 0, 0}, {0, 5, 0}, {9, 9, 9}};
    s.tri_indices = {{{0, 1, 2}}, {{0, 3, 1}}}; // crosses (0, 12, 0) and (15, 0, 0)
    brush.color_vector = {1, 0.5f, 0, 1};
    brush.ComputeNormals();
    brush.SurfaceLight();
    ExpectNear(s.normal[0], D3DVECTOR{15, 12, 0} / std::sqrt(369.0f), 1e-6f);
    EXPECT_EQ(s.normal[2], (D3DVECTOR{0, 1, 0}));
    EXPECT_EQ(s.normal[4], (D3DVECTOR{0, 0, 0})); // no triangle: no direction, but no garbage
    EXPECT_EQ(s.diffuse[2], 0x7F3F00u);           // half shade, alpha 0
    EXPECT_FALSE(brush.is_selected);
}

TEST(BrushRecord, BrokenIndicesSelectAFlatBrush) {
    Brush brush(ShapeOf(BT_BOX, {0, 0, 0}, {64, 64, 64}));
    brush.is_selected = false;
    brush.ComputeNormals();
    EXPECT_FALSE(brush.is_selected);
    brush.surfaces[2].tri_indices[1].i[2] = 4;
    const Brush copy(brush);
    EXPECT_FALSE(copy.is_selected); // state is the source's
    brush.ComputeNormals();
    EXPECT_TRUE(brush.is_selected);
    float p = 1000000;
    EXPECT_TRUE(brush.TestSolidSelection({32, 100, 32}, {0, -1, 0}, p)); // the rest still works
    EXPECT_TRUE(brush.IsInVoxel({0, 0, 0}, {8, 8, 8}));
}

TEST(BrushRecord, ColoursOfPortalsAndOccluders) {
    BrushShape shape = ShapeOf(BT_PORTAL, {0, 0, 0}, {64, 64, 64});
    shape.color = {0.2f, 0.4f, 0.6f, 0.5f};
    const Brush portal(shape);
    EXPECT_EQ(portal.color, 0x00FF00u);
    EXPECT_EQ(portal.color_vector, (D3DCOLORVALUE{0, 1, 0, 0.5f}));
    shape.type = BT_OCCLUDER;
    EXPECT_EQ(Brush(shape).color, 0xFFFF00u);
    EXPECT_EQ(Brush(portal).color, 0x7F00FF00u); // a copy packs the floats
    shape.type = BT_BOX;
    EXPECT_EQ(Brush(shape).color, 0x7F336699u);
}

TEST(BrushRecord, CopyTakesGeometryAndLeavesCompileResults) {
    BrushShape shape = ShapeOf(BT_Q_BLOCK, {0, 0, 0}, {64, 32, 48});
    shape.name = "gate";
    shape.death_particle = "dust";
    shape.energy = 12;
    shape.curve_detail = 1;
    shape.pivot = {5, 5, 5};
    Brush source(shape);
    source.properties = BP_LADDER;
    source.mass = 3;
    source.elasticity = 0.7f;
    source.link_action = 4;
    source.touch_dmg = 9;
    source.is_hidden = true;
    source.index = 8;
    source.selected_surface = 1;
    source.light_list.AddItem(6);
    source.tn_list.AddItem(7);
    source.SetObjectID(50);
    source.surfaces[0].light = {1, 2};
    source.surfaces[0].lightmap_block = {1};
    source.surfaces[0].lightmap_size = {4, 4};
    source.surfaces[0].uv[2] = {0.5f, 0.25f};
    source.curved_surfaces[2].texture.scale = {2, 2};
    source.physics_data.mass = 44;

    Brush copy;
    copy.SetObjectID(51);
    copy = source;
    EXPECT_EQ(copy.GetObjectID(), 51u);
    EXPECT_EQ(copy.name, "gate");
    EXPECT_EQ(copy.death_particle, "dust");
    EXPECT_EQ(copy.energy, 12);
    EXPECT_EQ(copy.properties, BP_LADDER);
    EXPECT_EQ(copy.mass, 3.0f);
    EXPECT_EQ(copy.elasticity, 0.7f);
    EXPECT_EQ(copy.link_action, 4);
    EXPECT_EQ(copy.touch_dmg, 9.0f);
    EXPECT_TRUE(copy.is_hidden && copy.is_selected);
    EXPECT_EQ(copy.index, 8);
    EXPECT_EQ(copy.CURVE_SEGMENTS, 8u);
    EXPECT_EQ(copy.selected_surface, 1);
    EXPECT_EQ(Items(copy.light_list), std::vector<int>{6});
    EXPECT_EQ(copy.tn_list.GetItemCount(), 0);
    EXPECT_EQ(copy.physics_data.mass, 1.0f);
    EXPECT_EQ(copy.pivot, (D3DVECTOR{32, 16, 24})); // the centre, whatever the source's was
    EXPECT_EQ(copy.surfaces[0].uv, source.surfaces[0].uv);
    EXPECT_TRUE(copy.surfaces[0].light.empty() && copy.surfaces[0].lightmap_block.empty());
    EXPECT_EQ(copy.surfaces[0].lightmap_size, SIZE{});
    EXPECT_EQ(copy.curved_surfaces[2].vertices, source.curved_surfaces[2].vertices);
    EXPECT_EQ(copy.curved_surfaces[2].uv[8].u, 2.0f);
    EXPECT_EQ(copy.surfaces[1].texture_space.ts_z, source.surfaces[1].texture_space.ts_z);
    EXPECT_NEAR(SignedVolume(copy), SignedVolume(source), 1e-3);
    copy = *&copy; // assigning to itself changes nothing
    EXPECT_EQ(copy.surfaces.size(), 2u);
}

TEST(BrushRecord, InitializeRepairsMaterialIndices) {
    Brush brush(ShapeOf(BT_Q_BLOCK, {0, 0, 0}, {64, 64, 64}));
    brush.surfaces[0].texture.index = 4;
    brush.surfaces[1].texture.index = 5;
    brush.curved_surfaces[0].texture.index = -3;
    brush.Initialize(5);
    EXPECT_EQ(brush.surfaces[0].texture.index, 4);
    EXPECT_EQ(brush.surfaces[1].texture.index, 0);
    EXPECT_EQ(brush.curved_surfaces[0].texture.index, 0);
}

TEST(BrushRecord, TransparencyComesFromAnySurfaceButNotOfAPortal) {
    World world;
    world.material.resize(2);
    world.material[1].transparent = true;
    Brush block(ShapeOf(BT_Q_BLOCK, {0, 0, 0}, {64, 64, 64}));
    EXPECT_FALSE(block.IsTransparent(world));
    block.curved_surfaces[2].texture.index = 1;
    EXPECT_TRUE(block.IsTransparent(world));
    block.type = BT_PORTAL;
    EXPECT_FALSE(block.IsTransparent(world));
}

TEST(BrushRecord, VisibleIgnoresPlaneOneAndNeedsOnePlaneForAllCorners) {
    const Brush box(ShapeOf(BT_BOX, {0, 0, 0}, {10, 10, 10}));
    const PLANE everywhere(0, 0, 0, 1), nowhere(0, 0, 0, -1);
    for (int i = 0; i < 6; ++i) {
        std::vector<PLANE> planes(6, everywhere);
        planes[static_cast<size_t>(i)] = nowhere;
        EXPECT_EQ(box.Visible(planes.data()), i == 1) << i;
    }
    std::vector<PLANE> planes(6, everywhere);
    planes[2] = PLANE(1, 0, 0, -10); // touched by a corner
    EXPECT_TRUE(box.Visible(planes.data()));
    planes[2] = PLANE(1, 0, 0, -5);
    planes[3] = PLANE(-1, 0, 0, 5); // each corner is behind one, but no plane has all
    EXPECT_TRUE(box.Visible(planes.data()));
}

TEST(BrushRecord, RaysHitTheNearestFacingTriangle) {
    Brush block(ShapeOf(BT_CYLINDER, {0, 0, 0}, {64, 64, 64}));
    D3DVECTOR place, normal;
    int surface = -1;
    bool curved = false;
    float p = 1000000;
    ASSERT_TRUE(block.TestSolidSelection({32, 164, 33}, {0, -2, 0}, p, &place, &normal, &surface, &curved));
    EXPECT_FLOAT_EQ(p, 50); // in lengths of the direction
    ExpectNear(place, {32, 64, 33}, 1e-3f);
    EXPECT_GT(normal.y, 0);
    EXPECT_TRUE(curved);
    EXPECT_LT(surface, 4);
    p = 49;
    surface = 99;
    EXPECT_FALSE(block.TestSolidSelection({32, 164, 33}, {0, -2, 0}, p, nullptr, nullptr, &surface));
    EXPECT_EQ(surface, 99);
    EXPECT_EQ(p, 49.0f);
    p = 1000000;
    EXPECT_FALSE(block.TestSolidSelection({500, 164, 33}, {0, -2, 0}, p));
    EXPECT_GE(block.TestSurfaceSelection({32, 164, 33}, {0, -2, 0}, p, curved), 0);
    Brush portal(ShapeOf(BT_PORTAL, {0, 0, 0}, {64, 64, 64}));
    p = 1000000;
    EXPECT_EQ(portal.TestSurfaceSelection({32, 164, 33}, {0, -2, 0}, p, curved), -1);
    EXPECT_TRUE(portal.TestSolidSelection({32, 164, 33}, {0, -2, 0}, p));
}

TEST(BrushRecord, OnlyFacesReachAVoxel) {
    const Brush box(ShapeOf(BT_BOX, {0, 0, 0}, {100, 100, 100}));
    EXPECT_FALSE(box.IsInVoxel({40, 40, 40}, {60, 60, 60})); // the empty middle
    EXPECT_TRUE(box.IsInVoxel({40, 90, 40}, {60, 110, 60})); // pierced by the top
    EXPECT_TRUE(box.IsInVoxel({-50, -50, -50}, {150, 150, 150}));
    EXPECT_FALSE(box.IsInVoxel({101, 0, 0}, {110, 100, 100}));
    const Brush cone(ShapeOf(BT_CONE, {0, 0, 0}, {100, 100, 100}));
    EXPECT_FALSE(cone.IsInVoxel({0, 90, 0}, {10, 100, 10})); // in its box, beside its side
}

} // namespace
