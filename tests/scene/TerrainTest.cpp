#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "foundation/TempFolder.h"
#include "render/TestPictures.h"
#include "scene/SceneState.h"
#include "scene/Terrains.h"

namespace {

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

// 2 by 2 pixels on 4 by 4 units: two units a pixel.
constexpr int SMALL_SIDE = 4;
HeightMap SmallMap() { return {2, 2, {0, 255, 51, 102}}; }
TerrainSegment SmallSegment() {
    TerrainSegment segment;
    segment.map_unit_x = segment.map_unit_y = 2;
    segment.terrain_origin = segment.start = {-2, 0, 2};
    segment.size_x = segment.size_y = SMALL_SIDE;
    segment.height = 255; // a unit a step of the map
    segment.detail = 1;
    return segment;
}

TEST(Terrain, HeightsLieBetweenPixelsAndEndAtTheEdges) {
    Brush brush;
    brush.GenerateTerrainSegment(SmallMap(), SmallSegment());
    ASSERT_TRUE(brush.IsTerrainGrid());
    EXPECT_EQ(brush.type, BT_TERRAIN);
    EXPECT_EQ(brush.color, 0xFFFFFFFFu);
    EXPECT_EQ(brush.terrain_vertex_size, (SIZE{5, 5}));
    const float heights[5][5] = {{0, 127.5f, 255, 255, 255},
                                 {25.5f, 102, 178.5f, 178.5f, 178.5f},
                                 {51, 76.5f, 102, 102, 102},
                                 {51, 76.5f, 102, 102, 102},
                                 {51, 76.5f, 102, 102, 102}};
    const Surface& s = brush.surfaces[0];
    for (size_t y = 0; y < 5; ++y)
        for (size_t x = 0; x < 5; ++x)
            ExpectNear(s.vertices[y * 5 + x], {static_cast<float>(x) - 2, heights[y][x], 2 - static_cast<float>(y)},
                       1e-4f, Format("%zu %zu", x, y));
    ASSERT_EQ(s.tri_indices.size(), 32u);
    EXPECT_EQ(s.tri_indices[0], (TRIANGLE{{6, 5, 0}}));
    EXPECT_EQ(s.tri_indices[1], (TRIANGLE{{1, 6, 0}}));
    EXPECT_EQ(s.tri_indices[31], (TRIANGLE{{19, 24, 18}}));
    ASSERT_EQ(s.edge_indices.size(), 40u);
    EXPECT_EQ(s.edge_indices[19], (EDGE{{23, 24}})); // the last along a row
    EXPECT_EQ(s.edge_indices[20], (EDGE{{0, 5}}));
    EXPECT_EQ(s.edge_indices[21], (EDGE{{5, 10}}));
    EXPECT_EQ(s.edge_indices[39], (EDGE{{19, 24}}));
    EXPECT_NEAR(BoxMin(brush.bbox).y, 0, 1e-4);
    EXPECT_NEAR(BoxMax(brush.bbox).y, 255, 1e-4);
    ExpectNear(brush.pivot, {0, 127.5f, 0}, 1e-4f);
    for (const D3DVECTOR& n : s.normal)
        EXPECT_GT(n.y, 0);
    EXPECT_EQ(s.texture_space.ts_z, (D3DVECTOR{0, 1, 0}));
}

TEST(Terrain, CellsFillASegmentThatTheDetailDoesNotDivide) {
    TerrainSegment segment = SmallSegment();
    segment.size_x = 3.5f;
    segment.size_y = 2.9f;
    segment.detail = 2;
    Brush brush;
    brush.GenerateTerrainSegment(SmallMap(), segment);
    EXPECT_EQ(brush.terrain_vertex_size, (SIZE{2, 2}));
    EXPECT_FLOAT_EQ(brush.surfaces[0].vertices[3].x, 1.5f);
    EXPECT_FLOAT_EQ(brush.surfaces[0].vertices[3].z, -0.9f);
    segment.detail = 3; // no cell along z
    brush.GenerateTerrainSegment(SmallMap(), segment);
    EXPECT_TRUE(brush.surfaces.empty());
    EXPECT_FALSE(brush.IsTerrainGrid());
    HeightMap torn = SmallMap();
    torn.sample.pop_back();
    brush.GenerateTerrainSegment(torn, SmallSegment());
    EXPECT_TRUE(brush.surfaces.empty());
}

class TerrainFiles : public testing::Test {
protected:
    TerrainFiles() : current(folder.Path()) {
        std::vector<uint32_t> pixels(64);
        for (uint32_t i = 0; i < pixels.size(); ++i)
            pixels[i] = i * 4;
        WriteBytes("Textures/hills.tga", TargaBytes(8, 8, 8, pixels));
    }
    TerrainShape Shape() const {
        TerrainShape shape;
        shape.heightmap = "Textures\\hills.tga";
        shape.size_x = shape.size_z = 300;
        shape.seg_x = 3;
        shape.seg_y = 2;
        shape.detail = 25;
        return shape;
    }
    TempFolder folder;
    CurrentFolder current;
    UndoFrontEnd front_end;
    World world;
    std::string error;
};

TEST_F(TerrainFiles, TheWholeTerrainIsCentredGroupedAndOneStep) {
    front_end.full_undo = true;
    AddSelected(world, BoxBrush());
    const SceneState before = StateOf(world);
    ASSERT_TRUE(world.GenerateTerrain(Shape(), error)) << error;
    ASSERT_EQ(world.GetBrushCount(), 7);
    EXPECT_FALSE(world.IsSomethingSelected());
    EXPECT_EQ(front_end.restored, (std::vector<bool>{false}));
    ASSERT_EQ(world.GetGroupCount(), 1);
    EXPECT_EQ(Items(world.group[0].brushes), (std::vector<int>{1, 2, 3, 4, 5, 6}));
    const Brush &first = *world.brush[1], &last = *world.brush[6];
    EXPECT_EQ(first.terrain_vertex_size, (SIZE{5, 7})); // 100 and 150 units by 25
    EXPECT_EQ(first.surfaces[0].vertices[0].x, -150);
    EXPECT_EQ(first.surfaces[0].vertices[0].z, 150);
    EXPECT_EQ(last.surfaces[0].vertices.back().x, 150);
    EXPECT_EQ(last.surfaces[0].vertices.back().z, -150);
    EXPECT_EQ(world.brush[2]->surfaces[0].vertices[0].x, -50); // along x first
    EXPECT_EQ(world.brush[2]->surfaces[0].vertices[0].z, 150);
    EXPECT_EQ(world.brush[2]->index, 2);
    EXPECT_EQ(first.surfaces[0].normal[9], world.brush[2]->surfaces[0].normal[5]); // welded
    EXPECT_NE(first.GetObjectID(), NO_OBJECT_ID);
    const SceneState after = StateOf(world);
    ASSERT_EQ(world.undo_buffer.GetActionCount(), 1);
    EXPECT_EQ(world.undo_buffer.GetActionDescription(0), "Generate terrain.");
    world.undo_buffer.UndoLastAction(world, world.redo_buffer);
    EXPECT_EQ(StateOf(world), before);
    world.redo_buffer.UndoLastAction(world, world.undo_buffer);
    EXPECT_EQ(StateOf(world), after);
}

TEST_F(TerrainFiles, NumbersThatMakeNoTerrainAreRefused) {
    const struct {
        int TerrainShape::*field;
        int value;
        const char* word; // of the sentence
    } cases[] = {{&TerrainShape::size_x, 0, "size X"},
                 {&TerrainShape::size_x, -300, "size X"},
                 {&TerrainShape::size_y, 0, "size Y"},
                 {&TerrainShape::size_z, 2000000, "size Z"},
                 {&TerrainShape::seg_x, 0, "segment count X"},
                 {&TerrainShape::seg_y, -1, "segment count Y"},
                 {&TerrainShape::detail, 0, "detail"},
                 {&TerrainShape::detail, 101, "less than the detail"}, // wider than a segment
                 {&TerrainShape::seg_x, 20000, "40000 segments"},
                 {&TerrainShape::seg_y, 400, "less than the detail"}};
    for (const auto& c : cases) {
        TerrainShape shape = Shape();
        shape.*c.field = c.value;
        EXPECT_FALSE(world.GenerateTerrain(shape, error)) << c.word;
        EXPECT_NE(error.find(c.word), std::string::npos) << error;
        EXPECT_EQ(world.GetBrushCount(), 0);
    }
    TerrainShape shape = Shape();
    shape.size_x = shape.size_z = 255 * 100;
    shape.seg_x = shape.seg_y = 1;
    shape.detail = 100; // 256 by 256 vertices
    EXPECT_EQ(CheckTerrainShape(shape, 1), "");
    EXPECT_NE(CheckTerrainShape(shape, 0), "");
    shape.size_z += 100; // 256 by 257
    EXPECT_NE(CheckTerrainShape(shape, 1).find("65792 vertices"), std::string::npos);
}

TEST_F(TerrainFiles, HeightMapsThatAreNone) {
    HeightMap map;
    ASSERT_TRUE(LoadHeightMap("textures\\HILLS.tga", map, error)) << error;
    EXPECT_EQ(map.width, 8);
    EXPECT_EQ(map.sample[9], 36); // row by row from the top
    const std::string good = TargaBytes(8, 8, 8);
    std::string wide = good;
    wide[13] = '\x7F'; // 32,520 pixels
    WriteBytes("wide.tga", wide);
    WriteBytes("colour.tga", TargaBytes(4, 4, 24));
    WriteBytes("none.tga", TargaBytes(0, 8, 8));
    WriteBytes("short.tga", good.substr(0, good.size() - 1));
    WriteBytes("header.tga", good.substr(0, 10));
    WriteBytes("empty.tga", "");
    WriteBytes("text.txt", good);
    const std::vector<uint8_t> samples = map.sample;
    for (const char* name : {"wide.tga", "colour.tga", "none.tga", "short.tga", "header.tga", "empty.tga", "text.txt",
                             "missing.tga", ""}) {
        error.clear();
        EXPECT_FALSE(LoadHeightMap(name, map, error)) << name;
        EXPECT_NE(error.find(name), std::string::npos) << error;
        EXPECT_EQ(map.sample, samples) << name;
        TerrainShape shape = Shape();
        shape.heightmap = name;
        EXPECT_FALSE(world.GenerateTerrain(shape, error)) << name;
        EXPECT_EQ(world.GetBrushCount(), 0);
    }
}

// The same triangles, each a surface of its own.
Brush Apart(const Brush& whole) {
    Brush apart;
    for (const TRIANGLE& t : whole.surfaces[0].tri_indices) {
        Surface& s = apart.surfaces.emplace_back();
        s.Allocate(3, 1, 0);
        for (size_t k = 0; k < 3; ++k)
            s.vertices[k] = whole.surfaces[0].vertices[t.i[k]];
        s.tri_indices[0] = {{0, 1, 2}};
    }
    apart.RecalcBBox();
    return apart;
}

TEST(Terrain, RaysMeetTheSameTrianglesAsOneByOne) {
    std::mt19937 random(7);
    const auto between = [&random](float least, float most) {
        return least + (most - least) * static_cast<float>(random() % 100001) / 100000.0f;
    };
    for (const float roughness : {0.0f, 30.0f, 3000.0f}) {
        const auto terrain = Segment(12, 25, -150, 150, [&](float, float) { return between(-roughness, roughness); });
        const Brush apart = Apart(*terrain);
        int hits = 0;
        for (int i = 0; i < 3000; ++i) {
            const D3DVECTOR target{between(-170, 170), between(-roughness, roughness), between(-170, 170)};
            D3DVECTOR from{between(-900, 900), between(0, 900), between(-900, 900)}, ray{0, -1, 0};
            if (i % 3 == 0)
                from = {target.x, 1000000, target.z};
            else if (i % 3 == 1 && i % 2) // along the grid's lines
                from = {-150 + 25.0f * static_cast<float>(random() % 13), 1000000, between(-150, 150)};
            else
                ray = Normalize(target - from);
            float one = 10000000, many = one;
            D3DVECTOR place_one, place_many, normal_one, normal_many;
            const bool hit = terrain->TestSolidSelection(from, ray, one, &place_one, &normal_one);
            ASSERT_EQ(hit, apart.TestSolidSelection(from, ray, many, &place_many, &normal_many)) << i;
            ASSERT_EQ(one, many) << i;
            ASSERT_EQ(place_one, place_many) << i;
            ASSERT_EQ(normal_one, normal_many) << i;
            hits += hit;
        }
        EXPECT_GT(hits, 1000);
    }
}

} // namespace
