#include <gtest/gtest.h>

#include "scene/Scenes.h"

namespace {

// A segment of cells by cells from the corner (x, z) of least x and greatest z, at heights by a function of the place.
template <class Fn>
std::unique_ptr<Brush> Segment(int cells, float size, float x0, float z0, Fn height) {
    auto brush = std::make_unique<Brush>();
    brush->type = BT_TERRAIN;
    const int side = cells + 1;
    brush->terrain_vertex_size = {side, side};
    Surface& s = brush->surfaces.emplace_back();
    s.Allocate(side * side, 0, 0);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            const float px = x0 + size * static_cast<float>(x), pz = z0 - size * static_cast<float>(y);
            s.vertices[static_cast<size_t>(y * side + x)] = {px, height(px, pz), pz};
        }
    for (uint16_t y = 0; y < cells; ++y)
        for (uint16_t x = 0; x < cells; ++x) {
            const auto r0 = static_cast<uint16_t>(y * side), r1 = static_cast<uint16_t>(r0 + side);
            const auto at = [](int i) { return static_cast<uint16_t>(i); };
            s.tri_indices.push_back({{at(r1 + x + 1), at(r1 + x), at(r0 + x)}});
            s.tri_indices.push_back({{at(r0 + x + 1), at(r1 + x + 1), at(r0 + x)}});
        }
    brush->color_vector = {1, 1, 1, 1};
    brush->RecalcBBox();
    brush->ComputeNormals();
    brush->SurfaceLight();
    return brush;
}

TEST(Terrain, BorderNormalsOfNeighboursBecomeOne) {
    const auto ridge = [](float x, float z) { return x < 64 ? 0 : (x - 64) * 0.5f + (z > 0 ? z : 0); };
    World world;
    world.AddBrush(Segment(4, 16, 0, 0, ridge));
    world.AddBrush(Segment(4, 16, 64, 0, ridge));
    world.AddBrush(Segment(4, 16, 0, 64, ridge));
    world.AddBrush(Segment(4, 16, 64, 64, ridge));
    world.AddBrush(BoxBrush({0, 0, 0}, {64, 64, 64})); // no terrain
    world.AddBrush(Segment(4, 16, 500, 0, ridge));     // far away
    const std::vector<D3DVECTOR> before = world.brush[0]->surfaces[0].normal,
                                 far_before = world.brush[5]->surfaces[0].normal;
    const D3DVECTOR left = before[9], right = world.brush[1]->surfaces[0].normal[5]; // (64, -16) in the two
    const uint32_t shade = world.brush[1]->surfaces[0].diffuse[5];
    world.SmoothTerrainEdgeNormals();
    const auto& a = world.brush[0]->surfaces[0];
    const auto& b = world.brush[1]->surfaces[0];
    EXPECT_EQ(a.normal[9], b.normal[5]);
    ExpectNear(a.normal[9], Normalize(left + right), 1e-6f);
    EXPECT_NE(b.diffuse[5], shade); // shades follow
    // All four at the middle point (64, 0).
    const D3DVECTOR middle = a.normal[4];
    EXPECT_EQ(world.brush[1]->surfaces[0].normal[0], middle);
    EXPECT_EQ(world.brush[2]->surfaces[0].normal[24], middle);
    EXPECT_EQ(world.brush[3]->surfaces[0].normal[20], middle);
    EXPECT_EQ(a.normal[12], before[12]); // inner vertices stay
    for (size_t i = 0; i < far_before.size(); ++i)
        ExpectNear(world.brush[5]->surfaces[0].normal[i], far_before[i], 1e-6f);
    EXPECT_EQ(Items(world.brush[0]->tn_list), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(Items(world.brush[3]->tn_list), (std::vector<int>{0, 1, 2}));
    EXPECT_TRUE(Items(world.brush[5]->tn_list).empty());
    EXPECT_EQ(world.brush[4]->tn_list.GetItemCount(), 0);
    world.SmoothTerrainEdgeNormals(); // again: the lists do not grow
    EXPECT_EQ(world.brush[0]->tn_list.GetItemCount(), 3);
}

TEST(Terrain, ManySegmentsFindAllTheirNeighbours) {
    const auto flat = [](float, float) { return 0.0f; };
    World world;
    for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 12; ++x)
            world.AddBrush(Segment(2, 32, static_cast<float>(x * 64), static_cast<float>(-y * 64), flat));
    world.SmoothTerrainEdgeNormals();
    for (int i = 0; i < world.GetBrushCount(); ++i) {
        std::vector<int> expected;
        for (int k = 0; k < world.GetBrushCount(); ++k)
            if (k != i && std::abs(k % 12 - i % 12) <= 1 && std::abs(k / 12 - i / 12) <= 1)
                expected.push_back(k);
        EXPECT_EQ(Items(world.brush[static_cast<size_t>(i)]->tn_list), expected) << i;
    }
}

TEST(Terrain, FalseGridSizesAreLeftAlone) {
    const auto flat = [](float, float) { return 0.0f; };
    for (const SIZE& size :
         {SIZE{3, 4}, SIZE{-1, -9}, SIZE{0, 0}, SIZE{0x10000, 0x10000}, SIZE{0x7FFFFFFF, 0x7FFFFFFF}, SIZE{1, 9}}) {
        World world;
        world.AddBrush(Segment(2, 32, 0, 0, flat))->terrain_vertex_size = size;
        world.AddBrush(Segment(2, 32, 64, 0, flat));
        world.AddBrush(std::make_unique<Brush>())->type = BT_TERRAIN; // without any surface
        world.SmoothTerrainEdgeNormals();
        for (const D3DVECTOR& n : world.brush[1]->surfaces[0].normal)
            ExpectNear(n, {0, 1, 0}, 1e-6f);
    }
}

} // namespace
