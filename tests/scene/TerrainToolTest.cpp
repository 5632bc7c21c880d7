// The strokes of the terrain tool.
#include <gtest/gtest.h>

#include "render/Device.h"
#include "render/Matrix.h"
#include "scene/SceneState.h"
#include "scene/Terrains.h"

namespace {

constexpr float CELL = 16;
const auto FLAT = [](float, float) { return 0.0f; };

float HeightAt(const Brush& b, int column, int row) {
    return b.surfaces[0].vertices[static_cast<size_t>(row * b.terrain_vertex_size.cx + column)].y;
}

// 5 by 5 vertices from (0, 0) to (64, -64); the middle is vertex (2, 2).
constexpr D3DVECTOR MIDDLE{32, 0, -32};

TERRAIN_MODIFIER Tool(TerrainStrokeType type, float radius, float intensity) {
    TERRAIN_MODIFIER tool;
    tool.type = type;
    tool.radius = radius;
    tool.intensity = intensity;
    return tool;
}

TEST(TerrainStrokes, RaiseFadesToNothingAtTheRim) {
    World world;
    for (const bool up : {true, false}) {
        const auto b = Segment(4, CELL, 0, 0, FLAT);
        const uint64_t version = b->drawn_version;
        // 16 units of 32: the cosine of 45 degrees; the diagonal 22.627: of 63.64 degrees
        b->ModifyTerrain(MIDDLE, Tool(TERRAIN_RAISE, 32, 9), up, {}, world);
        const float sign = up ? 1.0f : -1.0f;
        EXPECT_NEAR(HeightAt(*b, 2, 2), sign * 9, 1e-5);
        for (const auto& [x, y] : {std::pair{1, 2}, {3, 2}, {2, 1}, {2, 3}})
            EXPECT_NEAR(HeightAt(*b, x, y), sign * 6.363961f, 1e-5);
        EXPECT_NEAR(HeightAt(*b, 1, 1), sign * 3.996153f, 1e-4);
        EXPECT_EQ(HeightAt(*b, 0, 2), 0); // on the rim
        EXPECT_EQ(HeightAt(*b, 0, 0), 0);
        EXPECT_NEAR(up ? BoxMax(b->bbox).y : BoxMin(b->bbox).y, sign * 9, 1e-5);
        EXPECT_NEAR(b->pivot.y, sign * 4.5f, 1e-5);
        EXPECT_NEAR(b->surfaces[0].normal[12].y, 1, 1e-6);
        EXPECT_LT(b->surfaces[0].normal[11].y, 0.98f);
        EXPECT_NE(b->surfaces[0].diffuse[11], b->surfaces[0].diffuse[12]);
        EXPECT_NE(b->drawn_version, version);
    }
}

TEST(TerrainStrokes, NoiseReadsItsFieldByPlace) {
    World world;
    NoiseField field(NOISE_FIELD_SIDE * NOISE_FIELD_SIDE, 0.5f);
    field[0 + 50 * 25] = 0.9f;  // the west end of the circle
    field[25 + 50 * 49] = 0.1f; // the north end: 50, held to 49
    field[37 + 50 * 12] = 0.7f; // half way to the east and south
    for (const bool up : {true, false}) {
        const auto b = Segment(4, CELL, 0, 0, FLAT);
        b->ModifyTerrain(MIDDLE, Tool(TERRAIN_NOISE, 32, 10), up, field, world);
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < 5; ++x)
                EXPECT_NEAR(HeightAt(*b, x, y),
                            x == 0 && y == 2   ? 4
                            : x == 2 && y == 0 ? -4
                            : x == 3 && y == 3 ? 2
                                               : 0,
                            1e-5)
                    << x << ' ' << y;
    }
}

TEST(TerrainStrokes, FlattenTakesTheHeightOfTheCentre) {
    World world;
    const auto b = Segment(4, CELL, 0, 0, [](float x, float) { return x; });
    b->ModifyTerrain({32, 7, -32}, Tool(TERRAIN_FLATTEN, 16, 1), true, {}, world);
    EXPECT_EQ(HeightAt(*b, 2, 2), 7);
    EXPECT_EQ(HeightAt(*b, 1, 2), 7); // on the rim
    EXPECT_EQ(HeightAt(*b, 1, 1), 16);
    EXPECT_EQ(HeightAt(*b, 0, 2), 0);
    EXPECT_EQ(HeightAt(*b, 4, 2), 64);
}

TEST(TerrainStrokes, SmoothWeighsTheOldHeights) {
    World world;
    const auto b = Segment(4, CELL, 0, 0, [](float x, float z) { return x == 32 && z == -32 ? 60.0f : 0.0f; });
    b->surfaces[0].vertices[4].y = 12; // a corner
    b->ModifyTerrain(MIDDLE, Tool(TERRAIN_SMOOTH, 100, 1), true, {}, world);
    EXPECT_EQ(HeightAt(*b, 2, 2), 60); // not yet
    ASSERT_EQ(b->temporary_terrain_height.size(), 25u);
    b->UpdateTerrainHeights();
    EXPECT_TRUE(b->temporary_terrain_height.empty());
    EXPECT_NEAR(HeightAt(*b, 2, 2), 20, 1e-5);
    for (const auto& [x, y] : {std::pair{1, 2}, {3, 2}, {2, 1}, {2, 3}})
        EXPECT_NEAR(HeightAt(*b, x, y), 10, 1e-5);
    EXPECT_NEAR(HeightAt(*b, 1, 1), 0, 1e-5);
    EXPECT_NEAR(HeightAt(*b, 4, 0), 8, 1e-5); // two missing neighbours count as itself
    EXPECT_NEAR(HeightAt(*b, 3, 0), 2, 1e-5);
    EXPECT_NEAR(BoxMax(b->bbox).y, 20, 1e-5);
}

TEST(TerrainStrokes, FalseGridsAndEmptyToolsDoNothing) {
    World world;
    const auto b = Segment(2, CELL, 0, 0, FLAT);
    for (const SIZE& size : {SIZE{3, 4}, SIZE{-1, -9}, SIZE{0x10000, 0x10000}, SIZE{0, 0}}) {
        b->terrain_vertex_size = size;
        for (int type = TERRAIN_RAISE; type <= TERRAIN_FLATTEN; ++type) {
            b->ModifyTerrain(MIDDLE, Tool(static_cast<TerrainStrokeType>(type), 500, 9), true, {}, world);
            b->UpdateTerrainHeights();
        }
        for (const D3DVECTOR& v : b->surfaces[0].vertices)
            EXPECT_EQ(v.y, 0);
    }
    b->terrain_vertex_size = {3, 3};
    for (const float radius : {0.0f, -5.0f, std::nanf("")})
        b->ModifyTerrain(b->surfaces[0].vertices[4], Tool(TERRAIN_RAISE, radius, 9), true, {}, world);
    for (const D3DVECTOR& v : b->surfaces[0].vertices)
        EXPECT_EQ(v.y, 0);
    b->temporary_terrain_height.assign(4, 1.0f); // of another mesh
    b->UpdateTerrainHeights();
    EXPECT_EQ(HeightAt(*b, 0, 0), 0);
}

// Four segments that meet at the origin, seen from above; the middle of the view shows the origin.
class TerrainTool : public testing::Test {
protected:
    static constexpr int SIDE = 512;
    static constexpr POINT CENTER{SIDE / 2, SIDE / 2};
    static constexpr D3DVECTOR CAMERA{0, 500, 0};

    void SetUp() override {
        crSetViewport(0, 0, SIDE, SIDE);
        crMCurrent(CRM_VIEW);
        crMViewTo(CAMERA, {0, 0, 0}, {0, 0, 1}, 0);
        crMCurrent(CRM_PROJ);
        crMSetIdentity();
        crMProj(PI / 2, 1, 10, 10000);
        for (int i = 0; i < 4; ++i)
            Add(Segment(4, CELL, i % 2 ? 0.0f : -64.0f, i / 2 ? 0.0f : 64.0f, FLAT));
    }
    void TearDown() override {
        for (const uint32_t matrix : {CRM_VIEW, CRM_PROJ}) {
            crMCurrent(matrix);
            crMSetIdentity();
        }
        crMCurrent(CRM_WORLD);
        crSetViewport(-1, 0, 0, 0);
    }
    Brush& Add(std::unique_ptr<Brush> b) {
        Brush& added = *world.AddBrush(std::move(b));
        added.GenerateNewObjectID();
        added.is_selected = false;
        return added;
    }
    void Apply(const TERRAIN_MODIFIER& tool, bool up = true, POINT point = CENTER) {
        world.ModifyTerrain(tool, point, CAMERA, up);
    }
    const Brush& At(int i) { return *world.brush[static_cast<size_t>(i)]; }
    UndoFrontEnd front_end;
    World world;
};

TEST_F(TerrainTool, AimsAtTheGroundThatIsSeen) {
    D3DVECTOR center;
    ASSERT_TRUE(world.AimTerrainTool(Tool(TERRAIN_RAISE, 24, 1), CENTER, CAMERA, center));
    ExpectNear(center, {0, 0, 0}, 0.01f);
    EXPECT_EQ(Items(world.b_list), (std::vector<int>{0, 1, 2, 3}));
    world.b_list.ClearList();
    // 128 pixels to the right are 250 units beyond the ground
    EXPECT_FALSE(world.AimTerrainTool(Tool(TERRAIN_RAISE, 24, 1), {CENTER.x + 128, CENTER.y}, CAMERA, center));
    // 16 pixels: 31 units; the two segments on the right
    ASSERT_TRUE(world.AimTerrainTool(Tool(TERRAIN_RAISE, 24, 1), {CENTER.x + 16, CENTER.y}, CAMERA, center));
    ExpectNear(center, {31.25f, 0, 0}, 0.01f);
    EXPECT_EQ(Items(world.b_list), (std::vector<int>{1, 3}));
    Brush& roof = Add(BoxBrush({-8, 100, -8}, {8, 116, 8}));
    EXPECT_FALSE(world.AimTerrainTool(Tool(TERRAIN_RAISE, 24, 1), CENTER, CAMERA, center));
    front_end.redrawn_views.clear();
    Apply(Tool(TERRAIN_RAISE, 24, 5));
    EXPECT_EQ(front_end.redrawn_views, (std::vector<int>{VIEW_PERSPECTIVE}));
    EXPECT_EQ(front_end.dirty, 0);
    EXPECT_EQ(HeightAt(At(0), 4, 4), 0);
    roof.is_hidden = true;
    EXPECT_TRUE(world.AimTerrainTool(Tool(TERRAIN_RAISE, 24, 1), CENTER, CAMERA, center));
}

TEST_F(TerrainTool, AStrokeReachesAllSegmentsThatMeet) {
    Apply(Tool(TERRAIN_RAISE, 32, 9));
    for (const auto& [i, x, y] : {std::tuple{0, 4, 4}, {1, 0, 4}, {2, 4, 0}, {3, 0, 0}})
        EXPECT_NEAR(HeightAt(At(i), x, y), 9, 0.01) << i;
    EXPECT_NEAR(HeightAt(At(0), 3, 4), 6.36f, 0.01);
    EXPECT_GT(front_end.dirty, 0);
    Apply(Tool(TERRAIN_RAISE, 32, 9), false);
    EXPECT_NEAR(HeightAt(At(3), 0, 0), 0, 0.01);
}

TEST_F(TerrainTool, SegmentsOutOfReachKeepTheirWeldedNormals) {
    Apply(Tool(TERRAIN_RAISE, 60, 30));
    world.SmoothTerrainEdgeNormals();
    const std::vector<D3DVECTOR> welded = At(0).surfaces[0].normal;
    Apply(Tool(TERRAIN_FLATTEN, 8, 1), true, {CENTER.x + 16, CENTER.y - 16});
    EXPECT_EQ(At(0).surfaces[0].normal, welded);
    EXPECT_NE(At(1).surfaces[0].normal[20], welded[24]);
}

TEST_F(TerrainTool, SmoothReadsAcrossTheSeams) {
    // A spike of 60 in the corner where all four meet; each counts the neighbours in the others.
    for (const auto& [i, vertex] : {std::pair{0, 24u}, {1, 20u}, {2, 4u}, {3, 0u}}) {
        world.brush[static_cast<size_t>(i)]->surfaces[0].vertices[vertex].y = 60;
        world.brush[static_cast<size_t>(i)]->RecalcBBox();
    }
    Apply(Tool(TERRAIN_SMOOTH, 70, 1));
    for (const auto& [i, x, y] : {std::tuple{0, 4, 4}, {1, 0, 4}, {2, 4, 0}, {3, 0, 0}}) {
        EXPECT_NEAR(HeightAt(At(i), x, y), 20, 0.001) << i;
        EXPECT_NEAR(HeightAt(At(i), x == 0 ? 1 : 3, y), 10, 0.001) << i;
    }
    EXPECT_TRUE(At(0).temporary_terrain_height.empty());
}

TEST_F(TerrainTool, NeighboursAreFoundOnTheSamePlaceOnly) {
    world.b_list.AddItem(0);
    world.b_list.AddItem(1);
    const D3DVECTOR seam{0, 0, 32};
    EXPECT_EQ(world.GetNeighbourTerrainVertex(seam, &At(0), 1, 0), (D3DVECTOR{16, 0, 32}));
    EXPECT_EQ(world.GetNeighbourTerrainVertex(seam, &At(1), -1, 0), (D3DVECTOR{-16, 0, 32}));
    EXPECT_EQ(world.GetNeighbourTerrainVertex(seam, &At(1), 1, 0), seam); // off the grid of segment 0
    EXPECT_EQ(world.GetNeighbourTerrainVertex({0, 0.2f, 32}, &At(0), 1, 0), (D3DVECTOR{0, 0.2f, 32}));
    EXPECT_EQ(world.GetNeighbourTerrainVertex({0, 0.05f, 32}, &At(0), 1, 0), (D3DVECTOR{16, 0, 32}));
    EXPECT_EQ(world.GetNeighbourTerrainVertex({0, 0, 0}, &At(0), 0, 1), (D3DVECTOR{0, 0, 0})); // 2 and 3 are unknown
    world.b_list.AddItem(3);
    EXPECT_EQ(world.GetNeighbourTerrainVertex({0, 0, 0}, &At(0), 0, 1), (D3DVECTOR{0, 0, -16}));
}

TEST_F(TerrainTool, TheListFollowsTheTable) {
    Apply(Tool(TERRAIN_RAISE, 24, 1));
    ASSERT_EQ(Items(world.b_list), (std::vector<int>{0, 1, 2, 3}));
    world.DeleteBrush(1);
    EXPECT_EQ(Items(world.b_list), (std::vector<int>{0, 1, 2}));
    world.brush[0]->type = BT_BOX;
    world.brush[2]->terrain_vertex_size = {7, 7};
    D3DVECTOR center;
    // From the right, where there is nothing now
    EXPECT_FALSE(world.AimTerrainTool(Tool(TERRAIN_RAISE, 24, 1), {CENTER.x + 16, CENTER.y - 16}, CAMERA, center));
    EXPECT_EQ(Items(world.b_list), (std::vector<int>{1}));
}

TEST_F(TerrainTool, AStrokeIsOneStep) {
    const SceneState before = StateOf(world);
    world.BeginTerrainStroke(); // not with full undo off
    Apply(Tool(TERRAIN_RAISE, 32, 9));
    world.EndTerrainStroke();
    EXPECT_EQ(world.undo_buffer.GetActionCount(), 0);
    Apply(Tool(TERRAIN_RAISE, 32, 9), false);

    front_end.full_undo = true;
    const SceneState start = StateOf(world);
    world.BeginTerrainStroke();
    Apply(Tool(TERRAIN_RAISE, 32, 9));
    Apply(Tool(TERRAIN_NOISE, 60, 4));
    Apply(Tool(TERRAIN_SMOOTH, 40, 4), true, {CENTER.x + 16, CENTER.y});
    EXPECT_EQ(world.undo_buffer.GetActionCount(), 0);
    world.EndTerrainStroke();
    world.EndTerrainStroke();
    ASSERT_EQ(world.undo_buffer.GetActionCount(), 1);
    EXPECT_EQ(world.undo_buffer.GetActionDescription(0), "Terrain stroke.");
    const SceneState after = StateOf(world);
    ASSERT_NE(after, start);
    world.undo_buffer.UndoLastAction(world, world.redo_buffer);
    EXPECT_EQ(StateOf(world), start);
    world.redo_buffer.UndoLastAction(world, world.undo_buffer);
    EXPECT_EQ(StateOf(world), after);

    world.BeginTerrainStroke(); // meets nothing
    Apply(Tool(TERRAIN_RAISE, 32, 9), true, {CENTER.x + 200, CENTER.y});
    world.EndTerrainStroke();
    EXPECT_EQ(world.undo_buffer.GetActionCount(), 1);
}

class TerrainDecoration : public TerrainTool {
protected:
    // A post of 4 by 10 by 4 that stands 3 above height 0, far from the terrain, and a lamp beside it.
    void Select(bool post, bool lamp) {
        if (post) {
            Brush& b = Add(BoxBrush({1000, 3, 1000}, {1004, 13, 1004}));
            b.surfaces[0].texture.index = textured ? 1 : 0;
            world.SetBrushSelection(b.index, true);
        }
        if (lamp)
            AddSelectedEntity(world, {1002, 20, 1012});
    }
    TERRAIN_MODIFIER Strew(int density, bool collapse) {
        TERRAIN_MODIFIER tool = Tool(TERRAIN_DECORATE, 24, 1);
        tool.density = density;
        tool.collapse = collapse;
        return tool;
    }
    bool textured = false;
};

TEST_F(TerrainDecoration, CopiesStandOnTheGroundAsHighAsTheirOriginals) {
    for (const auto& b : world.brush)
        b->Move({0, 50, 0}, false);
    Select(true, true);
    const SceneState before = StateOf(world);
    front_end.full_undo = true;
    world.BeginTerrainStroke();
    Apply(Strew(20, false));
    world.EndTerrainStroke();
    const int copies = world.GetBrushCount() - 5;
    EXPECT_GE(copies, 20); // a seam gives two
    ASSERT_EQ(world.GetEntityCount() - 1, copies);
    for (int i = 0; i < copies; ++i) {
        const Brush& post = At(5 + i);
        const Entity& lamp = *world.entity[static_cast<size_t>(1 + i)];
        EXPECT_FALSE(post.is_selected);
        EXPECT_NE(post.GetObjectID(), NO_OBJECT_ID);
        EXPECT_NEAR(BoxMin(post.bbox).y, 53, 0.1);
        EXPECT_NEAR(lamp.position.y, 70, 0.1);
        EXPECT_LE(std::hypot(post.pivot.x, post.pivot.z), 24.5f);
        // turned together: 10 units apart as before
        EXPECT_NEAR(std::hypot(lamp.position.x - post.pivot.x, lamp.position.z - post.pivot.z), 10, 0.01);
    }
    EXPECT_NE(At(5).pivot, At(6).pivot);
    EXPECT_EQ(Items(world.brush_selection), (std::vector<int>{4}));
    EXPECT_EQ(Items(world.entity_selection), (std::vector<int>{0}));
    EXPECT_TRUE(At(4).is_selected);
    ASSERT_EQ(world.undo_buffer.GetActionCount(), 1);
    const SceneState after = StateOf(world);
    world.undo_buffer.UndoLastAction(world, world.redo_buffer);
    EXPECT_EQ(StateOf(world), before);
    world.redo_buffer.UndoLastAction(world, world.undo_buffer);
    EXPECT_EQ(StateOf(world), after);
}

TEST_F(TerrainDecoration, CollapseMeltsThemIntoOneBrush) {
    world.AddMaterial("ground", "sand", "ground", "sand");
    textured = true;
    Select(true, true);
    const SceneState before = StateOf(world);
    front_end.full_undo = true;
    world.BeginTerrainStroke();
    Apply(Strew(6, true));
    Apply(Strew(6, true), true, {CENTER.x + 23, CENTER.y}); // beside the first ones
    world.EndTerrainStroke();
    ASSERT_EQ(world.GetBrushCount(), 7); // four segments, the post, one brush a stroke
    EXPECT_GE(At(5).surfaces.size(), 6u);
    EXPECT_FALSE(At(5).is_selected);
    EXPECT_GE(world.GetEntityCount(), 13);
    EXPECT_EQ(Items(world.brush_selection), (std::vector<int>{4}));
    EXPECT_EQ(Items(world.entity_selection), (std::vector<int>{0}));
    ASSERT_EQ(world.undo_buffer.GetActionCount(), 1);
    world.undo_buffer.UndoLastAction(world, world.redo_buffer);
    EXPECT_EQ(StateOf(world), before);
}

TEST_F(TerrainDecoration, EntitiesAloneGatherAboutTheirOwnMiddle) {
    Select(false, true);
    AddSelectedEntity(world, {1002, 20, 1032});
    Apply(Strew(5, true));
    ASSERT_GE(world.GetEntityCount(), 12);
    for (int i = 2; i + 1 < world.GetEntityCount(); i += 2) {
        const D3DVECTOR &a = world.entity[static_cast<size_t>(i)]->position,
                        &b = world.entity[static_cast<size_t>(i + 1)]->position;
        EXPECT_NEAR(Magnitude(a - b), 20, 0.01);
        EXPECT_LE(std::hypot((a.x + b.x) / 2, (a.z + b.z) / 2), 24.5f);
    }
    EXPECT_EQ(world.GetBrushCount(), 4);
}

TEST_F(TerrainDecoration, OverlappingSegmentsGetASetEach) {
    while (world.GetBrushCount() > 0)
        world.DeleteBrush(0);
    for (const float height : {0.0f, 5.0f, 10.0f}) {
        Brush& b = Add(Segment(4, CELL, -32, 32, FLAT));
        b.Move({0, height, 0}, false);
    }
    Select(true, false);
    Apply(Strew(7, false));
    EXPECT_EQ(world.GetBrushCount(), 4 + 3 * 7);
}

TEST_F(TerrainDecoration, WithNothingSelectedNothingHappens) {
    Apply(Strew(5, true));
    EXPECT_EQ(world.GetBrushCount(), 4);
    EXPECT_EQ(front_end.dirty, 0);
}

} // namespace
