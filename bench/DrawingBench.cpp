// Redraws of a level of 10,000 boxes by the software device.
#include <benchmark/benchmark.h>

#include "drawing/DrawContext.h"
#include "render/Frame.h"
#include "render/SoftDevice.h"
#include "render/StateCache.h"
#include "scene/World.h"

namespace {

constexpr int COLUMNS = 25, ROWS = 25, STOREYS = 16;
constexpr float SPACING = 64, SIDE = 48;

struct Level {
    World world;

    Level() {
        for (int z = 0; z < ROWS; ++z)
            for (int y = 0; y < STOREYS; ++y)
                for (int x = 0; x < COLUMNS; ++x)
                    AddBox({static_cast<float>(x) * SPACING, static_cast<float>(y) * SPACING,
                            static_cast<float>(z) * SPACING},
                           x + y + z);
    }
    void AddBox(const D3DVECTOR& min, int shade) {
        BrushShape shape;
        shape.bb = MakeBox(min, min + D3DVECTOR{SIDE, SIDE, SIDE});
        shape.pivot = min + D3DVECTOR{SIDE, SIDE, SIDE} * 0.5f;
        shape.color = {static_cast<float>(shade % 3) * 0.5f, static_cast<float>(shade % 5) * 0.25f, 1, 1};
        world.AddBrush(std::make_unique<Brush>(shape));
    }
    void SetMaterial(int row) {
        for (const auto& b : world.brush)
            b->ForEachSurface([row](Surface& s, int, bool) { s.texture.index = row; });
    }
};

Level& TheLevel() {
    static Level level;
    return level;
}

class Screen {
public:
    Screen(uint32_t width, uint32_t height) {
        crInit({&device});
        criSetRenderer(crGetRootDevice(), &crGetRootDevice()->devices.front());
        crSetMode(width, height, 32, 32, 0, 0, true);
        crvRenderEnabled = true;
        Set(CRM_WORLD, crIdentity());
    }
    ~Screen() { crRelease(); }
    static void Set(TrType type, const D3DMATRIX& m) {
        const uint32_t old = crMCurrent(type);
        crMSet(m);
        crMCurrent(old);
    }
    void Frame(const DrawContext& context) {
        crBgColor(0);
        crBeginFrame();
        TheLevel().world.RenderBrushes(context);
        device.EndScene();
        benchmark::DoNotOptimize(device.BackBuffer());
    }

private:
    SoftDevice device;
};

} // namespace

// One wire view of 960 by 540. range(0): 1 the top view, 2 the left one; range(1): pixels a 16th of a unit.
static void WireView(benchmark::State& state) {
    constexpr float W = 960, H = 540;
    const bool top = state.range(0) == 1;
    const float s = static_cast<float>(state.range(1)) / 16;
    Screen screen(960, 540);
    D3DMATRIX view = crIdentity();
    if (top)
        view.m[0][0] = s, view.m[1][1] = 0, view.m[1][2] = 1, view.m[2][1] = s;
    else
        view.m[0][0] = 0, view.m[0][2] = 1, view.m[1][1] = s, view.m[2][0] = s, view.m[2][2] = 0;
    const float across = COLUMNS * SPACING * s / 2, up = (top ? ROWS : STOREYS) * SPACING * s / 2; // of the centre
    Screen::Set(CRM_VIEW, view);
    Screen::Set(CRM_PROJ, {{{2 / W, 0, 0, 0}, {0, 2 / H, 0, 0}, {0, 0, 0, 0}, {-2 * across / W, -2 * up / H, 0, 1}}});
    DrawContext context;
    context.view = top ? VIEW_TOP : VIEW_LEFT;
    context.scale = s;
    for (auto _ : state)
        screen.Frame(context);
}
BENCHMARK(WireView)->ArgsProduct({{1, 2}, {1, 4, 8, 16, 64}})->Unit(benchmark::kMillisecond);

// The perspective view of 1920 by 1080 from outside a corner of the level. range(0): 0 bare surfaces, 1 textured.
static void SolidView(benchmark::State& state) {
    Screen screen(1920, 1080);
    World& world = TheLevel().world;
    constexpr uint32_t TEXTURE_SIDE = 256;
    std::vector<uint32_t> argb(TEXTURE_SIDE * TEXTURE_SIDE);
    for (uint32_t i = 0; i < argb.size(); ++i)
        argb[i] = 0xFF000000 | i * 2654435761u >> 8;
    world.material.resize(2);
    world.material[1].texture_index = crTCreate(TEXTURE_SIDE, TEXTURE_SIDE, 32, TL_MATERIAL, TEX_NORMAL, 0, false);
    crTComputeMipLevels(world.material[1].texture_index, argb.data());
    TheLevel().SetMaterial(static_cast<int>(state.range(0)));
    Screen::Set(CRM_VIEW, crIdentity());
    const uint32_t old = crMCurrent(CRM_VIEW);
    crMViewTo({-200, 1200, -300}, {800, 512, 800}, {0, 1, 0}, 0);
    crMCurrent(CRM_PROJ);
    crMSetIdentity();
    crMProj(PI / 2, 1080.0f / 1920, 10, 10000);
    crMCurrent(old);
    DrawContext context;
    context.view = VIEW_PERSPECTIVE;
    for (auto _ : state)
        screen.Frame(context);
    TheLevel().SetMaterial(0);
}
BENCHMARK(SolidView)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
