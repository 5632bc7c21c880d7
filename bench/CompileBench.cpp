// Compiles of many boxes without light, and the stages whose cost must not grow faster than their work.
#include <benchmark/benchmark.h>
#include <filesystem>

#include "compiler/Compile.h"
#include "compiler/LightmapPages.h"
#include "compiler/WorldSubdivide.h"

namespace {

// Boxes on a loose lattice of fixed density: four times the boxes fill four times the space.
struct Boxes {
    World world;
    CompileOptions options;
    CompileProgress progress;

    explicit Boxes(int count) {
        world.material.resize(2);
        world.material[1].material_class = world.material[1].material_name = "wall";
        const int row = static_cast<int>(std::sqrt(static_cast<double>(count) / 4));
        for (int k = 0; k < count; ++k) {
            const float x = static_cast<float>(k / 4 % row) * 96, z = static_cast<float>(k / 4 / row) * 96,
                        y = static_cast<float>(k % 4) * 96;
            BrushShape shape;
            shape.bb = MakeBox({x, y, z}, {x + 64, y + 48, z + 40});
            shape.pivot = {x + 32, y + 24, z + 20};
            Brush& brush = *world.AddBrush(std::make_unique<Brush>(shape));
            brush.GenerateNewObjectID();
            brush.ForEachSurface([](Surface& surface, int, bool) { surface.texture.index = 1; });
        }
        options.lighting_method = LIGHTING_NONE;
        options.save_finalmap = true;
        options.create_render_groups = true;
        options.threads = 1;
    }
};

void BM_CompileWithoutLight(benchmark::State& bench) {
    Boxes boxes(static_cast<int>(bench.range(0)));
    const std::string target = (std::filesystem::temp_directory_path() / "marrowstead-bench.few").string();
    std::string message;
    for (auto _ : bench)
        if (CompileWorld(boxes.world, boxes.options, target, boxes.progress, message) != CompileResult::Written)
            bench.SkipWithError(message.c_str());
    bench.SetItemsProcessed(static_cast<int64_t>(bench.iterations()) * bench.range(0));
    std::filesystem::remove(target);
}
BENCHMARK(BM_CompileWithoutLight)->Arg(5000)->Arg(20000)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_TreeBuild(benchmark::State& bench) {
    Boxes boxes(static_cast<int>(bench.range(0)));
    OctalTree tree;
    for (auto _ : bench)
        tree.BuildOctalTree(boxes.world, {});
    bench.SetItemsProcessed(static_cast<int64_t>(bench.iterations()) * bench.range(0));
    bench.counters["leaves"] = tree.GetLeafCount();
}
BENCHMARK(BM_TreeBuild)->Arg(5000)->Arg(20000)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_Physics(benchmark::State& bench) {
    Boxes boxes(static_cast<int>(bench.range(0)));
    for (auto _ : bench)
        boxes.world.CalculatePhysicsData(true, 1, boxes.progress);
    bench.SetItemsProcessed(static_cast<int64_t>(bench.iterations()) * bench.range(0));
}
BENCHMARK(BM_Physics)->Arg(5000)->Arg(20000)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_Paging(benchmark::State& bench) {
    Boxes boxes(static_cast<int>(bench.range(0)));
    WorldSubdivide ws(boxes.world, boxes.options);
    ws.PrepareBrushes();
    ws.CreateWorldCell();
    ws.GroupBrushes();
    std::string message;
    int step = 0;
    for (auto _ : bench) {
        bench.PauseTiming();
        for (const auto& brush : boxes.world.brush)
            brush->ForEachSurface([&step](Surface& surface, int, bool) { // sizes from 4 to 16 texels, in no order
                const int w = 4 * (1 + step * 7 % 4), h = 4 * (1 + step * 5 % 3);
                ++step;
                surface.lightmap_info = {0, 0, 0, static_cast<float>(w), static_cast<float>(h), -1};
                surface.lightmap_block.assign(static_cast<size_t>(w * h), static_cast<uint32_t>(step));
            });
        bench.ResumeTiming();
        if (BatchLightmaps(ws, boxes.progress, message) != CompileResult::Written)
            bench.SkipWithError(message.c_str());
    }
    bench.SetItemsProcessed(static_cast<int64_t>(bench.iterations()) * bench.range(0) * 6);
}
BENCHMARK(BM_Paging)->Arg(5000)->Arg(20000)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace
