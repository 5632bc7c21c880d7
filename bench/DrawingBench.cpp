// Redraws of a level of 10,000 boxes by the software device. The CPU time is that of all threads.
#include "BigLevel.h"
#include "render/SoftDevice.h"

using namespace big_level;

// One wire view of 960 by 540. range(0): 0 the top view, 2 the left one; range(1): pixels a 16th of a unit.
static void WireView(benchmark::State& state) {
    constexpr float W = 960, H = 540;
    SoftDevice device;
    Screen screen(device, 960, 540);
    DrawContext context;
    context.view = static_cast<int>(state.range(0));
    context.scale = static_cast<float>(state.range(1)) / 16;
    SetWireView(context.view, context.scale, W, H);
    screen.Frame(context); // makes what is kept
    for (auto _ : state)
        screen.Frame(context);
}
BENCHMARK(WireView)
    ->ArgsProduct({{VIEW_TOP, VIEW_LEFT}, {1, 4, 8, 16, 64}})
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

// The perspective view of 1920 by 1080. range(0): 0 bare surfaces, 1 textured, 2 smoothly; range(1): the view point.
static void SolidView(benchmark::State& state) {
    SoftDevice device;
    Screen screen(device, 1920, 1080);
    SetTextures(state.range(0) == 2);
    TheLevel().SetMaterial(state.range(0) == 0 ? 0 : 1);
    SetCamera(VIEW_POINTS[state.range(1)], 1920, 1080);
    DrawContext context;
    context.view = VIEW_PERSPECTIVE;
    screen.Frame(context); // makes what is kept
    for (auto _ : state)
        screen.Frame(context);
    TheLevel().SetMaterial(0);
}
BENCHMARK(SolidView)
    ->ArgsProduct({{0, 1, 2}, benchmark::CreateDenseRange(0, std::size(VIEW_POINTS) - 1, 1)})
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

// The four views of a window of 1920 by 1080. range(0): selected boxes that move between two redraws.
static void FourViews(benchmark::State& state) {
    SoftDevice device;
    Screen screen(device, 1920, 1080);
    SetTextures(true);
    TheLevel().SetMaterial(1);
    Moving moving(static_cast<int>(state.range(0)));
    RedrawViews(screen); // makes what is kept
    for (auto _ : state) {
        moving.Step();
        RedrawViews(screen);
    }
    TheLevel().SetMaterial(0);
}
BENCHMARK(FourViews)->Arg(0)->Arg(1)->Arg(1000)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

namespace {

class BlindDevice : public SoftDevice { // takes all that it is given and draws none of it
public:
    bool Clear(uint32_t, uint32_t, float, uint32_t) override { return true; }
    bool DrawMesh(DeviceMesh&, std::span<const MeshPart>) override { return true; }
    bool WantsSortedStates() const override { return true; }
};

// As the drawing itself does it, so that the processor's caches hold nothing of the level.
class CacheFiller {
public:
    void Fill() {
        for (uint8_t& byte : bytes)
            ++byte;
        benchmark::DoNotOptimize(bytes.data());
    }

private:
    static constexpr size_t MEBIBYTE = 1 << 20, LARGEST_CACHE = 64 * MEBIBYTE;
    std::vector<uint8_t> bytes = std::vector<uint8_t>(LARGEST_CACHE);
};

} // namespace

// What the four views take to find out what they draw. range(0): selected boxes that move between two redraws;
// range(1): 1 if the processor has worked on something else since the last.
static void LookAtFourViews(benchmark::State& state) {
    BlindDevice device;
    Screen screen(device, 1920, 1080);
    SetTextures(true);
    TheLevel().SetMaterial(1);
    Moving moving(static_cast<int>(state.range(0)));
    CacheFiller caches;
    RedrawViews(screen); // makes what is kept
    for (auto _ : state) {
        state.PauseTiming();
        moving.Step();
        if (state.range(1) == 1)
            caches.Fill();
        state.ResumeTiming();
        RedrawViews(screen);
    }
    TheLevel().SetMaterial(0);
}
BENCHMARK(LookAtFourViews)
    ->ArgsProduct({{0, 1, 1000}, {0, 1}})
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
