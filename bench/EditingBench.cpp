// What runs at each mouse move of a drag and at each click, in a level of 10,000 brushes.
#include <benchmark/benchmark.h>

#include "render/Device.h"
#include "render/Matrix.h"
#include "scene/World.h"

namespace {

constexpr int BRUSHES = 10000, ROW = 100, SELECTED = 1000;
constexpr float STEP = 96, SIDE = 64;

// Textured boxes, or round blocks, on a square grid; the first ones are selected.
struct Level {
    World world;

    explicit Level(BrushType type) {
        for (int i = 0; i < BRUSHES; ++i) {
            const D3DVECTOR min{static_cast<float>(i % ROW) * STEP, 0, static_cast<float>(i / ROW) * STEP};
            BrushShape shape;
            shape.type = type;
            shape.bb = MakeBox(min, min + D3DVECTOR{SIDE, SIDE, SIDE});
            shape.pivot = min + D3DVECTOR{SIDE / 2, SIDE / 2, SIDE / 2};
            Brush& brush = *world.AddBrush(std::make_unique<Brush>(shape));
            brush.ForEachSurface([](Surface& s, int, bool) {
                s.texture.index = 1;
                s.texture.size = {256, 256};
            });
            brush.RemapAll();
        }
        for (int i = 0; i < SELECTED; ++i)
            world.SetBrushSelection(i, true);
    }
};

void BM_MoveThousandBrushes(benchmark::State& bench) {
    Level level(static_cast<BrushType>(bench.range(0)));
    float step = 8; // to and fro
    for (auto _ : bench) {
        level.world.MoveBrush({step, 0, step});
        step = -step;
    }
}
BENCHMARK(BM_MoveThousandBrushes)->ArgName("type")->Arg(BT_BOX)->Arg(BT_Q_BLOCK)->Unit(benchmark::kMillisecond);

void BM_RotateThousandBrushes(benchmark::State& bench) {
    Level level(static_cast<BrushType>(bench.range(0)));
    for (auto _ : bench)
        level.world.RotateBrush(0.0174533f, 0);
}
BENCHMARK(BM_RotateThousandBrushes)->ArgName("type")->Arg(BT_BOX)->Arg(BT_Q_BLOCK)->Unit(benchmark::kMillisecond);

void BM_MoveMarkedEdges(benchmark::State& bench) {
    Level level(BT_BOX);
    level.world.InitSOVertices();
    for (SO_EDGE& edge : level.world.so_edge)
        edge.selected = true;
    float step = 8;
    for (auto _ : bench) {
        level.world.SOVertexMove({step, 0, step});
        step = -step;
    }
}
BENCHMARK(BM_MoveMarkedEdges)->Unit(benchmark::kMillisecond);

// All brushes are asked, as a click takes the last one that it hits. At scale 1/16 the level fills the view.
void BM_ClickOnWires(benchmark::State& bench) {
    constexpr int VIEW_SIDE = 600;
    constexpr float SCALE = 1.0f / 16;
    Level level(static_cast<BrushType>(bench.range(0)));
    crSetViewport(0, 0, VIEW_SIDE, VIEW_SIDE);
    D3DMATRIX view = crIdentity(), proj = crIdentity();
    view.m[0][0] = view.m[2][1] = SCALE; // from above
    view.m[1][1] = 0;
    view.m[1][2] = 1;
    proj.m[0][0] = proj.m[1][1] = 2.0f / VIEW_SIDE;
    proj.m[2][2] = 0;
    proj.m[3][0] = -1;
    proj.m[3][1] = -1;
    crMCurrent(CRM_VIEW);
    crMSet(view);
    crMCurrent(CRM_PROJ);
    crMSet(proj);
    for (auto _ : bench) {
        int hits = 0;
        for (const auto& brush : level.world.brush)
            hits += brush->TestWireSelection({VIEW_SIDE / 2, VIEW_SIDE / 2});
        benchmark::DoNotOptimize(hits);
    }
}
BENCHMARK(BM_ClickOnWires)->ArgName("type")->Arg(BT_BOX)->Arg(BT_Q_BLOCK)->Unit(benchmark::kMillisecond);

} // namespace
