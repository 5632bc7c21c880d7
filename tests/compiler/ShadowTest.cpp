#include "compiler/FastShadow.h"

#include <cstring>
#include <gtest/gtest.h>

#include "compiler/Levels.h"

namespace {

struct Scene {
    TestMaterials library;
    World world{&library};
    int wall, glass, holed;

    Scene() {
        library.by_name["glass"].transparent = library.by_name["holed"].transparent =
            library.by_name["unread"].transparent = true;
        wall = AddMaterialRow(world, "wall");
        glass = AddMaterialRow(world, "glass", MakeGlass(0x40FF8000, 0x40FF8000));
        holed = AddMaterialRow(world, "holed", MakeGlass(0xFF101010, 0x8000FF20));
    }
};

// Boxes, curves, slivers and flat triangles of every material, in a space that the tree divides several times.
void Scatter(Scene& scene, Dice& dice, int count) {
    for (int k = 0; k < count; ++k) {
        const D3DVECTOR corner = dice.Point(700);
        const D3DVECTOR size{dice.Between(1, 90), dice.Between(1, 90), dice.Between(1, 90)};
        const int kind = dice.Below(10);
        const BrushType type = kind < 6 ? BT_BOX : kind < 8 ? BT_CYLINDER : kind < 9 ? BT_RECTANGLE : BT_PATCH;
        Brush& brush = AddShape(scene.world, type, corner, corner + size, 1 + dice.Below(3));
        brush.ForEachSurface([](Surface& surface, int, bool) { // textures of any size and turn
            for (UVVector& uv : surface.uv)
                uv = {uv.u * 3 - 1.3f, -uv.v * 2};
        });
        if (dice.Below(12) == 0)
            brush.properties |= BP_NO_SHADOWS;
        if (dice.Below(8) == 0) // broken triangles: two corners in one, all in a line
            brush.ForEachSurface([&](Surface& surface, int s, bool) {
                if (s % 2 == 0 && surface.vertices.size() > 2)
                    surface.vertices[2] =
                        dice.Below(2) ? surface.vertices[1] : (surface.vertices[0] + surface.vertices[1]) * 0.5f;
            });
    }
}

struct Walker {
    explicit Walker(Scene& scene)
        : prepared(scene.world), materials(scene.world), plain(scene.world, prepared.ws.tree, materials),
          wide(scene.world, prepared.ws.tree, materials),
          narrow(scene.world, prepared.ws.tree, materials, PlainShadowKernels()) {}

    // All paths agree in everything that the caller sees; the number of translucent hits, or -1 when blocked.
    int Compare(const D3DVECTOR& light, const D3DVECTOR& sample) {
        const D3DVECTOR ray = sample - light;
        const bool blocked = plain.RayTraceFast(sample, light, ray, selection, expected);
        for (const FastShadow* fast : {&wide, &narrow}) {
            EXPECT_EQ(fast->RayTraceFast(sample, light, ray, scratch, actual), blocked);
            if (blocked)
                continue;
            EXPECT_EQ(actual.rt_count, expected.rt_count);
            const auto stored = static_cast<size_t>(std::min(expected.rt_count, MAX_TRANSLUCENT_HITS));
            EXPECT_EQ(std::memcmp(actual.rt_color.data(), expected.rt_color.data(), stored * sizeof(uint32_t)), 0);
            EXPECT_EQ(std::memcmp(actual.rt_param.data(), expected.rt_param.data(), stored * sizeof(float)), 0);
        }
        return blocked ? -1 : expected.rt_count;
    }

    Prepared prepared;
    LightMaterials materials;
    ShadowTrace plain;
    FastShadow wide, narrow;
    LeafSelection selection;
    ShadowScratch scratch;
    TranslucentHits expected, actual;
};

} // namespace

TEST(Shadow, TheFastPathEqualsThePlainWalk) {
    int blocked = 0, clear = 0, tinted = 0;
    for (uint32_t seed = 1; seed <= 6; ++seed) {
        Scene scene;
        Dice dice(seed);
        Scatter(scene, dice, seed == 1 ? 20 : 500);
        AddEntityOf(scene.world, "INFO", {900, 900, 900});
        Walker walker(scene);
        for (int k = 0; k < 1500 && !::testing::Test::HasFailure(); ++k) {
            const D3DVECTOR light = dice.Point(k % 10 == 0 ? 1500 : 760); // some start outside the tree
            D3DVECTOR sample = dice.Point(760);
            if (k % 4 == 1) // along an axis, and in a plane of two
                sample.x = light.x;
            if (k % 8 == 1)
                sample.z = light.z;
            if (k % 50 == 0)
                sample = light;
            const int hits = walker.Compare(light, sample);
            (hits < 0 ? blocked : hits == 0 ? clear : tinted)++;
        }
    }
    EXPECT_GT(blocked, 500);
    EXPECT_GT(clear, 1000);
    EXPECT_GT(tinted, 300);
}

TEST(Shadow, AWallBlocksFromItsFront) {
    Scene scene;
    AddShape(scene.world, BT_BOX, {-100, 100, -100}, {100, 110, 100});
    AddEntityOf(scene.world, "INFO", {0, 400, 0});
    AddEntityOf(scene.world, "INFO", {0, -400, 0});
    Walker walker(scene);
    EXPECT_EQ(walker.Compare({0, 300, 0}, {0, 0, 0}), -1);
    EXPECT_EQ(walker.Compare({0, 300, 0}, {250, 0, 0}), 0) << "beside it";
    EXPECT_EQ(walker.Compare({0, 300, 0}, {0, 120, 0}), 0) << "in front of it";
    EXPECT_EQ(walker.Compare({0, 300, 0}, {0, 103, 0}), 0) << "within 8 units behind the face that blocks";
    EXPECT_EQ(walker.Compare({0, 300, 0}, {0, 101, 0}), -1) << "beyond them";
    EXPECT_EQ(walker.Compare({0, 105, 0}, {0, 105, 90}), 0) << "inside, where all faces look away";
    scene.world.brush[0]->properties |= BP_NO_SHADOWS;
    Walker without(scene);
    EXPECT_EQ(without.Compare({0, 300, 0}, {0, 0, 0}), 0);
}

TEST(Shadow, GlassTintsFromTheLightOutward) {
    Scene scene;
    // 255 - alpha of the glass is 0xBF: a = 191 / 255, colour 1, 128 / 255, 0.
    const auto pane = [&](float y) {
        Brush& brush = AddShape(scene.world, BT_RECTANGLE, {-64, y, -64}, {64, y, 64}, scene.glass);
        brush.ForEachSurface([](Surface& surface, int, bool) { surface.uv.assign(surface.uv.size(), {0.3f, 0.3f}); });
    };
    pane(100);
    pane(200);
    AddEntityOf(scene.world, "INFO", {0, 400, 0});
    AddEntityOf(scene.world, "INFO", {0, -400, 0});
    Walker walker(scene);
    EXPECT_EQ(walker.Compare({10, 300, 20}, {10, 0, 20}), 2);
    float r = 0.5f, g = 0.5f, b = 0.5f;
    CalculateFilteredColor(walker.expected, r, g, b);
    const double a = 191.0 / 255, green = 128.0 / 255;
    const auto twice = [&](double c) { return c * (1 - a) + a * (c * (1 - a) + a * 0.5); };
    EXPECT_NEAR(r, twice(1), 1e-5);
    EXPECT_NEAR(g, twice(green), 1e-5);
    EXPECT_NEAR(b, twice(0), 1e-5);
}

TEST(Shadow, TheFilterSortsByDistanceAndGivesUpAboveItsTable) {
    TranslucentHits hits;
    hits.Add(0x00FF0000, 0.75f); // a = 0: takes on its own colour, red
    hits.Add(0x000000FF, 0.25f); // blue, nearer to the light
    float r = 1, g = 1, b = 1;
    CalculateFilteredColor(hits, r, g, b);
    EXPECT_EQ((D3DVECTOR{r, g, b}), (D3DVECTOR{1, 0, 0})) << "the last pane before the sample decides";
    hits.Add(0xFF123456, 0.9f); // a = 1: passes unchanged
    CalculateFilteredColor(hits, r, g, b);
    EXPECT_EQ((D3DVECTOR{r, g, b}), (D3DVECTOR{1, 0, 0}));
    while (hits.rt_count <= MAX_TRANSLUCENT_HITS)
        hits.Add(0, 0.5f);
    r = g = b = 0.5f;
    CalculateFilteredColor(hits, r, g, b);
    EXPECT_EQ((D3DVECTOR{r, g, b}), (D3DVECTOR{0.5f, 0.5f, 0.5f}));
}

TEST(Shadow, OpaqueTexelsAndUnreadableTexturesBlock) {
    Scene scene;
    Brush& pane = AddShape(scene.world, BT_RECTANGLE, {-64, 100, -64}, {64, 100, 64}, scene.holed);
    AddEntityOf(scene.world, "INFO", {0, 400, 0});
    AddEntityOf(scene.world, "INFO", {0, -400, 0});
    const auto texel_column = [&](float u) {
        pane.surfaces[0].uv.assign(4, {u, 0.1f});
        return Walker(scene).Compare({10, 300, 20}, {10, 0, 20});
    };
    // Columns 0 and 2 are opaque. The column is the fraction times 4 plus a half, at most 3.
    EXPECT_EQ(texel_column(0.05f), -1);
    EXPECT_EQ(texel_column(0.2f), 1);
    EXPECT_EQ(texel_column(-0.8f), 1) << "a negative fraction gets 1 added";
    EXPECT_EQ(texel_column(5.5f), -1);
    EXPECT_EQ(texel_column(0.99f), 1) << "clamped to the last column";
    pane.surfaces[0].texture.index = AddMaterialRow(scene.world, "unread");
    EXPECT_EQ(texel_column(0.2f), -1);
}
