// Projects of many boxes: loaded, saved, and their unused materials flushed. A stage's cost may not grow faster than
// its work.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>

#include "persistence/Project.h"

namespace {

constexpr int MATERIALS = 40;

// A data root with small materials in a fresh folder, made the current one; it goes away at the end.
class DataRoot {
public:
    DataRoot()
        : before(std::filesystem::current_path()),
          folder(std::filesystem::temp_directory_path() / "marrowstead-bench") {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder / "Scripts/Materials/box");
        std::filesystem::create_directories(folder / "Textures/box");
        std::filesystem::current_path(folder);
        for (int m = 0; m < MATERIALS; ++m) {
            const std::string name = "m" + std::to_string(m);
            std::ofstream("Scripts/Materials/box/" + name + ".mtl")
                << "#Basic Material Properties\n{\nDIFFUSE_MAP = box\\" << name << ";\n}\n";
            std::string targa(18 + 4 * 4 * 3, '\x40');
            std::fill(targa.begin(), targa.begin() + 18, '\0');
            targa[2] = 2, targa[12] = 4, targa[14] = 4, targa[16] = 24;
            std::ofstream("Textures/box/" + name + ".tga", std::ios::binary) << targa;
        }
        materials.ParseTextures();
    }
    ~DataRoot() {
        std::filesystem::current_path(before);
        std::filesystem::remove_all(folder);
    }

    // Boxes in a grid, painted in turn.
    std::unique_ptr<World> MakeWorld(int boxes) {
        auto world = std::make_unique<World>(&materials);
        for (int m = 0; m < MATERIALS; ++m)
            world->GetNewMaterial("box", "m" + std::to_string(m));
        for (int b = 0; b < boxes; ++b) {
            BrushShape shape;
            const D3DVECTOR at{static_cast<float>(b % 150) * 64, 0, static_cast<float>(b / 150) * 64};
            shape.bb = MakeBox(at, at + D3DVECTOR{48, 48, 48});
            shape.pivot = at + D3DVECTOR{24, 24, 24};
            Brush* brush = world->AddBrush(std::make_unique<Brush>(shape));
            brush->GenerateNewObjectID();
            brush->ForEachSurface(
                [&](Surface& surface, int s, bool) { surface.texture.index = 1 + (b + s) % MATERIALS; });
        }
        return world;
    }

    std::filesystem::path before, folder;
    MaterialLibrary materials;
    EntityParser parser{"Marrowstead\\entities.def"};
};

void BM_ProjectSave(benchmark::State& state) {
    DataRoot root;
    const std::unique_ptr<World> world = root.MakeWorld(static_cast<int>(state.range(0)));
    std::string error;
    for (auto _ : state)
        if (!SaveProject("bench.msp", *world, {}, false, error))
            state.SkipWithError(error.c_str());
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(std::filesystem::file_size("bench.msp")));
}

void BM_ProjectLoad(benchmark::State& state) {
    DataRoot root;
    std::string error;
    SaveProject("bench.msp", *root.MakeWorld(static_cast<int>(state.range(0))), {}, false, error);
    for (auto _ : state) {
        World world(&root.materials);
        ProjectViews views;
        if (!LoadProject("bench.msp", world, views, root.materials, root.parser, error))
            state.SkipWithError(error.c_str());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(std::filesystem::file_size("bench.msp")));
}

// Every second material has lost its surfaces.
void BM_FlushUnusedMaterials(benchmark::State& state) {
    DataRoot root;
    for (auto _ : state) {
        state.PauseTiming();
        std::unique_ptr<World> world = root.MakeWorld(static_cast<int>(state.range(0)));
        for (const auto& brush : world->brush)
            brush->ForEachSurface([](Surface& surface, int, bool) { surface.texture.index &= ~1; });
        state.ResumeTiming();
        world->FlushUnusedMaterials();
        state.PauseTiming();
        world.reset();
        state.ResumeTiming();
    }
}

} // namespace

BENCHMARK(BM_ProjectSave)->Arg(5000)->Arg(20000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ProjectLoad)->Arg(5000)->Arg(20000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_FlushUnusedMaterials)->Arg(5000)->Arg(20000)->Unit(benchmark::kMillisecond)->UseRealTime();
