#include "compiler/Lighting.h"

#include <gtest/gtest.h>

#include "compiler/Levels.h"
#include "compiler/LightingStage.h"

namespace {

void ExpectNear(const D3DVECTOR& actual, const D3DVECTOR& expected, float tolerance = 1e-3f) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}

// One worker over a prepared world.
struct Worker {
    explicit Worker(World& world, const CompileOptions& options = {})
        : prepared(world, options), input(Input(world)), lighting(input, state) {}
    LightingInput Input(World& world) {
        CompileProgress progress;
        CreateLightBrushList(world, progress);
        return {prepared.ws, prepared.options};
    }
    Prepared prepared;
    StageState state;
    LightingInput input;
    Lighting lighting;
};

CompileOptions Detail(int detail, bool smooth = false) {
    CompileOptions options;
    options.lightmap_detail = detail;
    options.smooth_shadows = smooth;
    options.threads = 1;
    return options;
}

} // namespace

TEST(LightmapLayout, SidesAreMultiplesOfFour) {
    struct Case {
        float length;
        int detail, side;
    };
    for (const Case& c : {Case{8, 0, 4}, Case{0, 2, 4}, Case{192, 0, 8}, Case{191, 0, 4}, Case{192, 1, 12},
                          Case{192, 2, 24}, Case{4096, 0, 128}, Case{10000, 2, 128}, Case{-5, 0, 4}, Case{NAN, 0, 4}})
        EXPECT_EQ(LightmapSide(c.length, c.detail), c.side) << c.length << " at " << c.detail;
}

TEST(LightmapLayout, ASmallFloorByHand) {
    World world;
    AddMaterialRow(world, "wall");
    Brush& floor = AddShape(world, BT_RECTANGLE, {100, 20, 200}, {108, 20, 208});
    for (const bool smooth : {false, true}) {
        Worker worker(world, Detail(0, smooth));
        Surface& surface = floor.surfaces[0]; // corners (low x, high z), (high, high), (high, low), (low, low)
        worker.lighting.CalculateLightmapUV(floor, surface, false);
        EXPECT_EQ(surface.lightmap_size, (SIZE{4, 4}));
        // A texel has 8 / 2 units, the border one texel: the floor spans 1/4 to 3/4.
        const UVVector uvs[4] = {{0.25f, 0.75f}, {0.75f, 0.75f}, {0.75f, 0.25f}, {0.25f, 0.25f}};
        for (size_t k = 0; k < 4; ++k) {
            EXPECT_NEAR(surface.lightmap_uv[k].u, uvs[k].u, 1e-5);
            EXPECT_NEAR(surface.lightmap_uv[k].v, uvs[k].v, 1e-5);
        }
        ExpectNear(surface.lightmap_vector.s, {100, 20, 200});
        ExpectNear(surface.lightmap_vector.u, {8, 0, 0});
        ExpectNear(surface.lightmap_vector.v, {0, 0, 8});
        const std::vector<float> along =
            smooth ? std::vector<float>{1, 3, 1, 3, 5, 7, 5, 7} : std::vector<float>{2, 2, 6, 6};
        ASSERT_EQ(worker.lighting.texelpoints.size(), along.size() * along.size());
        for (size_t y = 0; y < along.size(); ++y)
            for (size_t x = 0; x < along.size(); ++x)
                ExpectNear(worker.lighting.texelpoints[y * along.size() + x], {100 + along[x], 20, 200 + along[y]});
    }
}

TEST(LightmapLayout, ALargeSurfaceGrowsItsTexels) {
    World world;
    AddMaterialRow(world, "wall");
    Brush& floor = AddShape(world, BT_RECTANGLE, {0, 0, 0}, {10000, 0, 100});
    Worker worker(world, Detail(2));
    Surface& surface = floor.surfaces[0];
    worker.lighting.CalculateLightmapUV(floor, surface, false);
    EXPECT_EQ(surface.lightmap_size, (SIZE{128, 12}));
    const float texel = 10000.0f / 126;
    EXPECT_NEAR(surface.lightmap_uv[1].u, 127.0f / 128, 1e-5);
    EXPECT_NEAR(surface.lightmap_uv[1].v, (texel + 100) / texel / 12, 1e-5) << "the same texel size on the other axis";
}

TEST(LightmapLayout, TerrainSamplesTakeHeightAndBlendedNormal) {
    World world;
    AddMaterialRow(world, "grass");
    Brush& slope = AddShape(world, BT_RECTANGLE, {0, 0, 0}, {64, 0, 64});
    slope.type = BT_TERRAIN;
    Surface& surface = slope.surfaces[0];
    for (D3DVECTOR& v : surface.vertices)
        v.y = v.x * 0.5f;
    for (size_t k = 0; k < 4; ++k) // normals that differ from the plane's, level at x 0
        surface.normal[k] = surface.vertices[k].x > 0 ? D3DVECTOR{-0.6f, 0.8f, 0} : D3DVECTOR{0, 1, 0};
    slope.RecalcBBox();
    Worker worker(world, Detail(0));
    worker.lighting.CalculateLightmapUV(slope, surface, false);
    ASSERT_EQ(surface.lightmap_size, (SIZE{4, 4}));
    const D3DVECTOR p = worker.lighting.texelpoints[5], q = worker.lighting.texelpoints[6]; // x 16 and 48 of 64
    ExpectNear(p, {16, 8, 16}, 0.1f); // a ray from a million units up has steps of a sixteenth
    ExpectNear(q, {48, 24, 16}, 0.1f);
    ExpectNear(worker.lighting.texelnormals[5],
               Normalize(D3DVECTOR{0, 1, 0} * 0.75f + D3DVECTOR{-0.6f, 0.8f, 0} * 0.25f), 0.01f);
    ExpectNear(worker.lighting.texelnormals[6],
               Normalize(D3DVECTOR{0, 1, 0} * 0.25f + D3DVECTOR{-0.6f, 0.8f, 0} * 0.75f), 0.01f);
}

TEST(LightmapLayout, CurvesFollowTheirParameters) {
    World world;
    AddMaterialRow(world, "wall");
    Brush& brush = AddShape(world, BT_BOX, {0, 0, 0}, {8, 8, 8});
    const D3DVECTOR row[3] = {{0, 0, 0}, {100, 0, 0}, {200, 0, 0}}, up{0, 0, -100};
    struct Case {
        int kind;
        std::vector<D3DVECTOR> cp;
    };
    const Case cases[] = {{CURVE_SWEEP, {row[0], row[1], row[2], {7, 7, 7}, D3DVECTOR{7, 7, 7} + up}},
                          {CURVE_STRIP, {row[0], row[1], row[2], row[0] + up, row[1] + up, row[2] + up}},
                          {CURVE_PATCH,
                           {row[0], row[1], row[2], row[0] + up * 0.5f, row[1] + up * 0.5f, row[2] + up * 0.5f,
                            row[0] + up, row[1] + up, row[2] + up}}};
    for (const Case& c : cases) {
        Surface& surface = brush.curved_surfaces.emplace_back();
        surface.cp = c.cp;
        surface.cp_count = c.kind;
        Worker worker(world, Detail(1)); // 200 by 100 units: 3.125 and 1.5625 fours, and a half
        worker.lighting.CalculateLightmapUV4Curves(surface);
        ASSERT_EQ(surface.lightmap_size, (SIZE{12, 8})) << c.kind;
        // A straight sheet: column i is at (i - 1/2) / 10 of 200, row j at (j - 1/2) / 6 of 100; the border copies.
        const auto at = [&](size_t j, size_t i) { return worker.lighting.texelpoints[j * 12 + i]; };
        ExpectNear(at(1, 1), {200 * 0.05f, 0, -100 / 12.0f});
        ExpectNear(at(6, 10), {200 * 0.95f, 0, -100 * 5.5f / 6});
        ExpectNear(at(0, 0), at(1, 1));
        ExpectNear(at(7, 11), at(6, 10));
        ExpectNear(worker.lighting.texelnormals[3 * 12 + 4], {0, -1, 0}); // (down the rows) x (along the columns)
        ExpectNear(worker.lighting.texelnormals[0], {0, -1, 0});
        brush.curved_surfaces.clear();
    }
}

TEST(Light, FallOffByHand) {
    World world;
    const D3DVECTOR up{0, 1, 0};
    const auto point = [&](const D3DVECTOR& position) {
        return LIGHT(AddLight(world, position, 200)).Factor({0, 0, 0}, up);
    };
    EXPECT_FLOAT_EQ(point({0, 100, 0}), 0.5f);
    EXPECT_FLOAT_EQ(point({0, 60, 80}), 0.3f) << "half the range away, cosine 0.6";
    EXPECT_EQ(point({0, 200, 0}), 0) << "at the range";
    EXPECT_EQ(point({0, 201, 0}), 0);
    EXPECT_EQ(point({50, 0, 0}), 0) << "edge-on";
    EXPECT_EQ(point({0, -50, 0}), 0) << "from behind";
    EXPECT_EQ(point({0, 0, 0}), 0) << "at the sample itself";
    EXPECT_FLOAT_EQ(LIGHT(AddLight(world, {0, -60, 80}, 200)).Factor({0, 0, 0}, up, true), 0.5f / 100)
        << "double-sided: 1 / distance";

    const auto spot = [&](float height, float aside, float angle) {
        Entity& light = AddLight(world, {0, height, 0}, 200);
        SetBool(light, "spotlight_enable", true);
        SetFloat(light, "spotlight_angle", angle);
        light.AddLinkedObjectID(AddEntityOf(world, "TARGET_POSITION", {0, height - 10, 0}).GetObjectID());
        return LIGHT(light).Factor({aside, 0, 0}, up);
    };
    EXPECT_FLOAT_EQ(spot(100, 0, 90), 0.875f) << "on the axis, half way: 1 - 1/8";
    const double across = 1 - 0.2 / (1 - std::sqrt(0.5));
    EXPECT_NEAR(spot(80, 60, 90), across * (1 - 0.4 * 0.4 * 0.4) * 0.8, 1e-5);
    EXPECT_EQ(spot(80, 100, 90), 0) << "outside the cone";
    EXPECT_NEAR(spot(100, 0, 180), 0.875, 1e-5);
    EXPECT_EQ(spot(100, 0, 0), 0) << "a cone without width";
}

TEST(Light, RangeListsByHand) {
    World world;
    AddMaterialRow(world, "wall");
    Brush& box = AddShape(world, BT_BOX, {-50, -50, -50}, {50, 50, 50});
    AddShape(world, BT_BOX, {500, 0, 0}, {600, 100, 100});
    AddLight(world, {0, 150, 0}, 120);
    AddLight(world, {0, 150, 0}, 90);
    Entity& spot = AddLight(world, {300, 50, 50}, 200);
    SetBool(spot, "spotlight_enable", true);
    SetFloat(spot, "spotlight_angle", 40);
    spot.AddLinkedObjectID(AddEntityOf(world, "TARGET_POSITION", {400, 50, 50}).GetObjectID());
    Entity& moving = AddLight(world, {0, 0, 0}, 1000);
    SetBool(moving, "dynamic", true);
    CompileProgress progress;
    ASSERT_TRUE(ComputeLightRange(world, progress));
    EXPECT_EQ(box.surfaces[0].light, (std::vector<int32_t>{0}))
        << "the top, in reach of the first alone; the moving one is inside";
    EXPECT_TRUE(box.surfaces[3].light.empty()) << "the bottom looks away";
    ASSERT_TRUE(CreateLightBrushList(world, progress));
    const auto lights = [](const Brush& b) { return std::vector<int>(b.light_list.begin(), b.light_list.end()); };
    EXPECT_EQ(lights(box), (std::vector<int>{0}));
    EXPECT_EQ(lights(*world.brush[1]), (std::vector<int>{2}))
        << "the cone points there; a dynamic light without lightmaps lights nothing";
}

TEST(Illumination, TheFilterTakesTheFourNeighbours) {
    std::vector<D3DCOLORVALUE> samples(16), blur;
    for (size_t k = 0; k < 16; ++k)
        samples[k] = {static_cast<float>(k) / 32, k == 1 ? 9.0f : 0.0f, 0, 0};
    samples[5].r = 100; // its own old value takes no part, and it spills to the right and down
    FilterLightmap(samples, blur, 4, 4);
    EXPECT_FLOAT_EQ(samples[5].r, (4 + 6 + 1 + 9) / 128.0f);
    EXPECT_EQ(samples[6].r, 1) << "at most 1";
    EXPECT_FLOAT_EQ(samples[10].r, (9 + 11 + 6 + 14) / 128.0f) << "old values alone";
    EXPECT_EQ(samples[5].g, 1);
    EXPECT_FLOAT_EQ(samples[0].r, 0);
    EXPECT_FLOAT_EQ(samples[15].r, 15 / 32.0f) << "the edge stays";
}

TEST(Illumination, AmbientLinkedAndWhiteSurfaces) {
    TestMaterials library;
    library.by_name["glow"].self_illumination = {0, 0, 0.25f, 0, 0};
    library.by_name["glow"].ambient_intensity = 0.5f;
    library.by_name["lamp"].light_illumination = true;
    World world(&library);
    const int glow = AddMaterialRow(world, "glow"), lamp = AddMaterialRow(world, "lamp");
    Brush& plain = AddShape(world, BT_RECTANGLE, {0, 0, 0}, {256, 0, 256}, glow);
    Brush& linked = AddShape(world, BT_RECTANGLE, {0, 0, 0}, {256, 0, 256}, lamp);
    Brush& sky = AddShape(world, BT_RECTANGLE, {0, 0, 0}, {256, 0, 256}, glow);
    sky.properties = BP_ENVIRONMENT;
    Entity& ambient = AddEntityOf(world, "AMBIENT_LIGHT", {0, 0, 0});
    SetColor(ambient, 1, 0.5f, 0);
    SetFloat(ambient, "intensity", 0.5f);
    Entity& light = AddLight(world, {5000, 10, 0}, 100);
    SetColor(light, 0, 1, 0.5f);
    linked.AddLinkedObjectID(light.GetObjectID());
    Worker worker(world, Detail(0));
    for (Brush* brush : {&plain, &linked, &sky})
        brush->CalculateLightmap(worker.lighting);
    const auto uniform = [](const Brush& brush) {
        const Surface& s = brush.surfaces[0];
        EXPECT_EQ(s.lightmap_size, (SIZE{4, 4}));
        EXPECT_EQ(s.lightmap_block.size(), 16u);
        return s.lightmap_block.empty() ? 0 : s.lightmap_block[0];
    };
    EXPECT_EQ(uniform(plain), 0x003F5F00u) << "0.25, 0.125 + 0.25, 0 times 255, cut";
    EXPECT_EQ(uniform(linked), 0x0000FF7Fu) << "the colour of its light alone";
    EXPECT_EQ(uniform(sky), 0xFFFFFFFFu);
    EXPECT_EQ(sky.surfaces[0].lightmap_uv[1], (UVVector{0, 0}));
}

TEST(Illumination, DynamicLightsHaveGreyLightmapsOfTheirOwn) {
    World world;
    AddMaterialRow(world, "wall");
    Brush& floor = AddShape(world, BT_RECTANGLE, {-128, 0, -128}, {128, 0, 128});
    Entity& light = AddLight(world, {0, 128, 0}, 500, 7);
    SetColor(light, 1, 0, 0);
    for (const char* flag : {"dynamic", "dynamic_lightmap"})
        SetBool(light, flag, true);
    Entity& behind = AddLight(world, {0, -128, 0}, 500); // reaches nothing: no lightmap
    for (const char* flag : {"dynamic", "dynamic_lightmap"})
        SetBool(behind, flag, true);
    Worker worker(world, Detail(0));
    floor.CalculateLightmap(worker.lighting);
    const Surface& surface = floor.surfaces[0];
    ASSERT_EQ(surface.dynamic_lightmaps.size(), 1u);
    const DynamicLightmap& grey = surface.dynamic_lightmaps[0];
    EXPECT_EQ(grey.info.light_index, 0);
    EXPECT_EQ(grey.info.u_size, 8);
    ASSERT_EQ(grey.block.size(), 64u);
    EXPECT_EQ(grey.block[27] >> 16, grey.block[27] & 0xFF) << "grey";
    EXPECT_GT(grey.block[27] & 0xFF, 150u) << "bright, but without the intensity of 7";
    EXPECT_LT(grey.block[27] & 0xFF, 200u);
    EXPECT_EQ(surface.lightmap_block[0], 0u) << "nothing of it in the static lightmap";
}

TEST(Illumination, CustomBrushesAreLitByVertex) {
    TestMaterials library;
    library.by_name["both"].doublesided = true;
    World world(&library);
    const int wall = AddMaterialRow(world, "wall"), both = AddMaterialRow(world, "both");
    Brush& brush = AddShape(world, BT_RECTANGLE, {-8, 0, -8}, {8, 0, 8}, wall);
    brush.type = BT_CUSTOM;
    brush.curved_surfaces.push_back(brush.surfaces[0]);
    brush.surfaces.clear();
    Surface& surface = brush.curved_surfaces[0];
    surface.cp_count = CURVE_MESH;
    surface.vertices.assign(4, {0, 0, 0});
    surface.normal = {{0, 1, 0}, {0, -1, 0}, {0, 0.6f, 0.8f}, {0, 1, 0}};
    AddLight(world, {0, 100, 0}, 200, 0.5f); // 0.5 falls on a vertex that faces it, times 0.5
    Worker worker(world, Detail(0));
    brush.CalculateLightmap(worker.lighting);
    EXPECT_EQ(surface.extra_diffuse[0], 0x7F3F3F3Fu) << "0.25; alpha twice that";
    EXPECT_EQ(surface.extra_diffuse[1], 0u);
    EXPECT_EQ(surface.extra_diffuse[2], 0x4C262626u) << "0.15";
    EXPECT_EQ(surface.lightmap, 1);
    surface.texture.index = both;
    brush.CalculateLightmap(worker.lighting);
    EXPECT_EQ(surface.extra_diffuse[1], surface.extra_diffuse[0]) << "double-sided: the same from both sides";
    EXPECT_EQ(surface.extra_diffuse[0], 0x01000000u)
        << "0.0025 is below the first step of a colour; its alpha of 0.005 is not";
}
