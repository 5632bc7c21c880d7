// What runs at each mouse move of a stroke on a terrain of 64 segments of 65 by 65 vertices, all of them touched
// before, and how long a cable takes to settle.
#include <benchmark/benchmark.h>

#include <cmath>

#include "drawing/DrawContext.h"
#include "render/Device.h"
#include "render/Frame.h"
#include "render/Matrix.h"
#include "render/SoftDevice.h"
#include "scene/World.h"

namespace {

constexpr int SEGMENTS = 8, CELLS = 64, VIEW_SIDE = 600;
constexpr float SIDE = 1024; // of a segment
constexpr D3DVECTOR CAMERA = {37, 1500, -3500}, TARGET = {0, 0, 500};
constexpr POINT AIM = {VIEW_SIDE / 2, VIEW_SIDE / 2};

struct Ground {
    World world;

    Ground() {
        HeightMap map{256, 256, std::vector<uint8_t>(256 * 256)};
        for (size_t i = 0; i < map.sample.size(); ++i)
            map.sample[i] = static_cast<uint8_t>(100 + 60 * std::sin(static_cast<float>(i % 256) * 0.1f) *
                                                           std::sin(static_cast<float>(i / 256) * 0.1f));
        TerrainSegment segment;
        segment.map_unit_x = segment.map_unit_y = SEGMENTS * SIDE / 256;
        segment.terrain_origin = {-SEGMENTS * SIDE / 2, 0, SEGMENTS * SIDE / 2};
        segment.size_x = segment.size_y = SIDE;
        segment.height = 1024;
        segment.detail = static_cast<int>(SIDE) / CELLS;
        for (int i = 0; i < SEGMENTS * SEGMENTS; ++i) {
            segment.start = segment.terrain_origin + D3DVECTOR{static_cast<float>(i % SEGMENTS) * SIDE, 0,
                                                               static_cast<float>(i / SEGMENTS) * -SIDE};
            auto made = std::make_unique<Brush>();
            made->GenerateTerrainSegment(map, segment);
            world.AddBrush(std::move(made));
            world.b_list.AddItem(i);
        }
        world.SmoothTerrainEdgeNormals();
    }
};

void SetEye() {
    crSetViewport(0, 0, VIEW_SIDE, VIEW_SIDE);
    crMCurrent(CRM_VIEW);
    crMViewTo(CAMERA, TARGET, {0, 1, 0}, 0);
    crMCurrent(CRM_PROJ);
    crMSetIdentity();
    crMProj(PI / 2, 1, 10, 100000);
    crMCurrent(CRM_WORLD);
    crMSetIdentity();
}

// The strokes of types 0 to 3, each with the ring of the tool drawn once, as a move does.
void BM_TerrainStroke(benchmark::State& bench) {
    SoftDevice device;
    crInit({&device});
    criSetRenderer(crGetRootDevice(), &crGetRootDevice()->devices.front());
    crSetMode(VIEW_SIDE, VIEW_SIDE, 32, 32, 0, 0, true);
    crvRenderEnabled = true;
    {
        Ground ground;
        SetEye();
        TERRAIN_MODIFIER tool;
        tool.type = static_cast<int>(bench.range(0));
        tool.radius = static_cast<float>(bench.range(1));
        DrawContext context;
        context.view = VIEW_PERSPECTIVE;
        context.camera_position = CAMERA;
        bool up = true;
        crBeginFrame();
        D3DVECTOR center;
        if (!ground.world.AimTerrainTool(tool, AIM, CAMERA, center))
            bench.SkipWithError("the tool misses the ground");
        for (auto _ : bench) {
            ground.world.ModifyTerrain(tool, AIM, CAMERA, up);
            ground.world.RenderTerrainBrush(context, tool, AIM);
            up = !up;
        }
        device.EndScene();
    }
    crRelease();
}
BENCHMARK(BM_TerrainStroke)
    ->ArgNames({"type", "radius"})
    ->ArgsProduct({{TERRAIN_RAISE, TERRAIN_NOISE, TERRAIN_SMOOTH, TERRAIN_FLATTEN}, {256, 1024}})
    ->Unit(benchmark::kMillisecond);

void BM_SettleCable(benchmark::State& bench) {
    CableProperties properties;
    properties.bits = static_cast<int>(bench.range(0));
    properties.begin = {0, 0, 0};
    properties.end = {500, 100, 0};
    for (auto _ : bench)
        benchmark::DoNotOptimize(CCableComputer(properties).positions.data());
}
BENCHMARK(BM_SettleCable)->ArgName("bits")->Arg(5)->Arg(8)->Unit(benchmark::kMillisecond);

} // namespace
