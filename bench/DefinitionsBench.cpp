// A start with many kinds of entity: the definitions read, and each kind looked up by its name.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>

#include "definitions/EntityParser.h"

namespace {

std::string Name(int i) { return "kind" + std::to_string(i); }

// Each kind is made from the first one.
void BM_ReadDefinitions(benchmark::State& state) {
    const auto count = static_cast<int>(state.range(0));
    std::string text = "#kind0 { #Type <T> #TraceType <T> #EntityLocation <T> #EditorImage { } #Parameters { } }\n";
    for (int i = 1; i < count; ++i)
        text += "#" + Name(i) + " extends kind0 { #Parameters { INT x = 1; } }\n";
    const std::string file = (std::filesystem::temp_directory_path() / "marrowstead-bench.def").string();
    std::ofstream(file, std::ios::binary) << text;
    for (auto _ : state) {
        EntityParser parser(file);
        for (int i = 0; i < count; ++i)
            benchmark::DoNotOptimize(parser.GetTemplate(Name(i), false));
    }
    std::filesystem::remove(file);
}
BENCHMARK(BM_ReadDefinitions)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

} // namespace
