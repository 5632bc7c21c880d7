// Chunk files beside a plain copy of the same bytes, and the unpacking of library blocks. The files lie in the folder
// for temporary files; the plain copy goes the same safe way to its place, so that both wait for the disk or neither
// does.
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <stdlib.h>
#include <string>
#include <vector>

#include "files/ChunkFile.h"
#include "files/FileLibrary.h"
#include "files/LZSS.h"

namespace {

constexpr size_t COPY_PIECE = 64 * 1024;

// What the arrays of the file are like.
struct Shape {
    const char* name;
    uint32_t chunks, arrays;        // arrays of each chunk
    size_t array_bytes, array_step; // array i has array_bytes + (i % 7) * array_step bytes
};
constexpr Shape SHAPES[] = {
    {"large arrays", 16, 4, 1 << 20, 0},
    {"brushes", 20000, 60, 48, 4},      // a project of many brushes
    {"tiny arrays", 40, 100000, 12, 1}, // thousands of small arrays in a chunk
};

// A folder of this run, gone at its end.
struct BenchFolder {
    std::string path = (std::filesystem::temp_directory_path() / "marrowstead-bench-XXXXXX").string();

    BenchFolder() {
        if (!mkdtemp(path.data()))
            std::abort();
    }
    ~BenchFolder() {
        std::error_code error;
        std::filesystem::remove_all(path, error);
    }
};

const std::string& FolderOfThisRun() {
    static const BenchFolder folder;
    return folder.path;
}

std::string PathOf(const Shape& shape) { return FolderOfThisRun() + "/" + shape.name; }

size_t ArrayBytes(const Shape& shape, uint32_t index) { return shape.array_bytes + index % 7 * shape.array_step; }

bool WriteShape(const Shape& shape, const std::string& path) {
    const std::vector<uint8_t> data(ArrayBytes(shape, 6), 0x5A);
    UChunkFile file(path, CFM_Create);
    for (uint32_t chunk = 0; chunk < shape.chunks; ++chunk) {
        file.CreateChunk("BrushData", chunk);
        for (uint32_t i = 0; i < shape.arrays; ++i)
            file.WriteArray(data.data(), ArrayBytes(shape, i));
    }
    return file.CloseChunkFile();
}

bool ReadShape(const Shape& shape, const std::string& path) {
    std::vector<uint8_t> data(ArrayBytes(shape, 6));
    UChunkFile file(path, CFM_Open);
    for (bool more = file.OpenChunk("BrushData", ANY_CHUNK_ID, COT_SameName); more; more = file.OpenNextChunk())
        while (file.GetNextArray(data.data()))
            benchmark::DoNotOptimize(data.data());
    return file.IsValid() && !file.SizeMismatch();
}

void SetFigures(benchmark::State& state, const Shape& shape) {
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(std::filesystem::file_size(PathOf(shape))));
    state.SetLabel(shape.name);
}

void ChunkFileWrite(benchmark::State& state) {
    const Shape& shape = SHAPES[state.range(0)];
    for (auto _ : state)
        if (!WriteShape(shape, PathOf(shape)))
            state.SkipWithError("the file could not be written");
    SetFigures(state, shape);
}

void ChunkFileRead(benchmark::State& state) {
    const Shape& shape = SHAPES[state.range(0)];
    WriteShape(shape, PathOf(shape));
    for (auto _ : state)
        if (!ReadShape(shape, PathOf(shape)))
            state.SkipWithError("the file could not be read");
    SetFigures(state, shape);
}

void PlainWrite(benchmark::State& state) {
    const Shape& shape = SHAPES[state.range(0)];
    WriteShape(shape, PathOf(shape));
    const size_t size = std::filesystem::file_size(PathOf(shape));
    const std::vector<uint8_t> piece(COPY_PIECE, 0x5A);
    for (auto _ : state) {
        AtomicFile file(PathOf(shape) + " copy");
        for (size_t done = 0; done < size; done += COPY_PIECE)
            file.Write(piece.data(), std::min(COPY_PIECE, size - done));
        file.Commit();
    }
    SetFigures(state, shape);
}

void PlainRead(benchmark::State& state) {
    const Shape& shape = SHAPES[state.range(0)];
    WriteShape(shape, PathOf(shape));
    std::vector<uint8_t> piece(COPY_PIECE);
    for (auto _ : state) {
        FileObject file(PathOf(shape), FO_Open);
        while (file.Read(piece.data(), COPY_PIECE) > 0)
            benchmark::DoNotOptimize(piece.data());
    }
    SetFigures(state, shape);
}

// A block of script-like text.
std::vector<uint8_t> ScriptBlock() {
    static constexpr const char* WORDS[] = {"DIFFUSE_MAP ", "Textures\\Brick\\", "wall", "\n", "    ", "{ ", "128",
                                            "255"};
    std::vector<uint8_t> block;
    for (uint32_t random = 1; block.size() < FL_BLOCK_SIZE;) {
        random = random * 1664525 + 1013904223;
        const std::string word = WORDS[random >> 29];
        block.insert(block.end(), word.begin(), word.end());
    }
    block.resize(FL_BLOCK_SIZE);
    return block;
}

void LZSSDecode(benchmark::State& state) {
    LZSSClass packer;
    std::vector<uint8_t> packed, out(FL_BLOCK_SIZE);
    packer.Encode(packed, ScriptBlock());
    for (auto _ : state)
        benchmark::DoNotOptimize(LZSSClass::Decode(out, packed));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * FL_BLOCK_SIZE);
    state.counters["ratio"] = static_cast<double>(FL_BLOCK_SIZE) / static_cast<double>(packed.size());
}

void LZSSEncode(benchmark::State& state) {
    LZSSClass packer;
    const std::vector<uint8_t> block = ScriptBlock();
    for (auto _ : state) {
        std::vector<uint8_t> packed;
        benchmark::DoNotOptimize(packer.Encode(packed, block));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * FL_BLOCK_SIZE);
}

constexpr int LAST_SHAPE = static_cast<int>(std::size(SHAPES)) - 1;
BENCHMARK(PlainWrite)->DenseRange(0, LAST_SHAPE)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ChunkFileWrite)->DenseRange(0, LAST_SHAPE)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(PlainRead)->DenseRange(0, LAST_SHAPE)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ChunkFileRead)->DenseRange(0, LAST_SHAPE)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(LZSSDecode);
BENCHMARK(LZSSEncode);

} // namespace
