// What a designer waits for, through the editor itself: a mouse move of a drag, a click, a rectangle, undo, in a level
// of 10,000 brushes.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <stdlib.h>

#include "editor/Interface.h"

namespace {

constexpr int BRUSHES = 10000, ROW = 100, SELECTED = 1000;
constexpr float STEP = 96, SIDE = 64;
constexpr RECT WINDOW{0, 0, 960, 540};

// An editor without data over a square of textured boxes.
class Editor {
public:
    explicit Editor(int brushes = BRUSHES) {
        setenv("MARROWSTEAD_CONFIG", (std::filesystem::temp_directory_path() / "marrowstead-bench").c_str(), 1);
        interface = std::make_unique<CInterface>();
        interface->store_settings = false;
        interface->settings = {};
        interface->InitEditor();
        for (int view = 0; view < VIEW_COUNT; ++view)
            interface->SetViewRect(view, WINDOW);
        for (int i = 0; i < brushes; ++i) {
            const D3DVECTOR min{static_cast<float>(i % ROW) * STEP, 0, static_cast<float>(i / ROW) * STEP};
            BrushShape shape;
            shape.bb = MakeBox(min, min + D3DVECTOR{SIDE, SIDE, SIDE});
            shape.pivot = min + D3DVECTOR{SIDE / 2, SIDE / 2, SIDE / 2};
            Brush& brush = *interface->world->AddBrush(std::make_unique<Brush>(shape));
            brush.GenerateNewObjectID();
            brush.ForEachSurface([](Surface& s, int, bool) { s.texture.size = {256, 256}; });
        }
        interface->active_view = VIEW_TOP;
        VIEWINFO& top = interface->View(VIEW_TOP);
        top.zoom_out = 8;
        top.view_position[1] = -500;
    }
    void SelectMany() {
        for (int i = 0; i < SELECTED; ++i)
            interface->world->SetBrushSelection(i, true);
        interface->UpdateSelectionBox();
    }
    // The pixel of the top view over a world position.
    POINT Pixel(float x, float z) const {
        const VIEWINFO& top = interface->View(VIEW_TOP);
        return {static_cast<int>(x * top.Scale()) - top.view_position[0],
                static_cast<int>(-z * top.Scale()) - top.view_position[1]};
    }

    std::unique_ptr<CInterface> interface;
};

// A press inside the selection moves it, one beside it grabs its side.
void BM_MouseMoveOfADrag(benchmark::State& bench) {
    Editor editor;
    editor.SelectMany();
    const bool resize = bench.range(0) != 0;
    editor.interface->settings.full_undo = bench.range(1) != 0;
    POINT point = editor.Pixel(resize ? -STEP : SIDE, SIDE);
    editor.interface->MouseMove(0, point);
    editor.interface->MouseLeftButtonDown(0, point);
    int step = 8;
    for (auto _ : bench) {
        point.x += step;
        editor.interface->MouseMove(0, point);
        step = -step;
    }
}
BENCHMARK(BM_MouseMoveOfADrag)
    ->ArgNames({"resize", "full"})
    ->ArgsProduct({{0, 1}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

void BM_ClickInTheTopView(benchmark::State& bench) {
    Editor editor;
    const POINT point = editor.Pixel(50 * STEP, 30 * STEP + SIDE / 2);
    for (auto _ : bench)
        editor.interface->Select(point, true);
}
BENCHMARK(BM_ClickInTheTopView)->Unit(benchmark::kMillisecond);

void BM_ClickInThePerspectiveView(benchmark::State& bench) {
    Editor editor;
    editor.interface->active_view = VIEW_PERSPECTIVE;
    VIEWINFO& view = editor.interface->View(VIEW_PERSPECTIVE);
    view.camera_position = {50 * STEP, 400, -200};
    view.camera_rotation = {-0.2f, 0, 0};
    for (auto _ : bench)
        editor.interface->Select({480, 300}, true);
}
BENCHMARK(BM_ClickInThePerspectiveView)->Unit(benchmark::kMillisecond);

void BM_DeleteThousandAndUndo(benchmark::State& bench) {
    Editor editor;
    editor.SelectMany();
    World& world = *editor.interface->world;
    for (auto _ : bench) {
        editor.interface->DeleteSelection();
        world.undo_buffer.UndoLastAction(world, world.redo_buffer);
    }
}
BENCHMARK(BM_DeleteThousandAndUndo)->Unit(benchmark::kMillisecond);

// A rectangle over the whole level; the undo of it, to a selection of nothing. Both times grow as the level does.
void BM_UndoOfARectangle(benchmark::State& bench) {
    Editor editor(static_cast<int>(bench.range(0)));
    editor.interface->settings.full_undo = bench.range(1) != 0;
    World& world = *editor.interface->world;
    constexpr POINT CORNER{-4000, 4000}, OPPOSITE{4000, -4000};
    for (auto _ : bench) {
        bench.PauseTiming();
        world.ClearSelection();
        world.undo_buffer.Empty();
        editor.interface->MouseMove(MOUSE_SHIFT, CORNER);
        editor.interface->MouseLeftButtonDown(MOUSE_SHIFT, CORNER);
        editor.interface->MouseMove(MOUSE_SHIFT, OPPOSITE);
        editor.interface->MouseLeftButtonUp(MOUSE_SHIFT, OPPOSITE);
        if (world.brush_selection.GetItemCount() != bench.range(0))
            return bench.SkipWithError("the rectangle has not taken all brushes");
        bench.ResumeTiming();
        world.undo_buffer.UndoLastAction(world, world.redo_buffer);
    }
}
BENCHMARK(BM_UndoOfARectangle)
    ->ArgNames({"brushes", "full"})
    ->ArgsProduct({{16384, 32768}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

// The press, the first move and the release of a drag of a thousand brushes, which with full undo keeps them.
void BM_ShortDrag(benchmark::State& bench) {
    Editor editor;
    editor.SelectMany();
    editor.interface->settings.full_undo = bench.range(0) != 0;
    POINT point = editor.Pixel(SIDE, SIDE);
    editor.interface->MouseMove(0, point);
    int step = 8;
    for (auto _ : bench) {
        editor.interface->MouseLeftButtonDown(0, point);
        point.x += step;
        editor.interface->MouseMove(0, point);
        editor.interface->MouseLeftButtonUp(0, point);
        step = -step;
    }
}
BENCHMARK(BM_ShortDrag)->ArgName("full")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace
