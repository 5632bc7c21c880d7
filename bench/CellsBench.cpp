// A whole compile of a level of 40 rooms: about 2,000 brushes, 40 cells, 200 lights, ray-traced at High detail.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <map>

#include "compiler/Compile.h"
#include "editor/CompileReport.h"

namespace {

constexpr int COLUMNS = 8, ROWS = 5;
constexpr float ROOM = 512, HEIGHT = 224, WALL = 16, DOOR = 48, LINTEL = 144;

struct Level {
    World world;
    CompileOptions options;

    Level() {
        world.material.resize(2);
        world.material[1].material_class = world.material[1].material_name = "wall";
        for (int r = 0; r < ROWS; ++r)
            for (int c = 0; c < COLUMNS; ++c)
                AddRoom(static_cast<float>(c) * ROOM, static_cast<float>(r) * ROOM, c, r);
        options.lighting_method = LIGHTING_RAYTRACED;
        options.lightmap_detail = 2;
        options.voxel_size = 256;
        options.subdivide_world = options.save_finalmap = options.create_render_groups = true;
    }

    Brush& AddBox(BrushType type, const D3DVECTOR& min, const D3DVECTOR& max) {
        BrushShape shape;
        shape.type = type;
        shape.bb = MakeBox(min, max);
        shape.pivot = (min + max) * 0.5f;
        Brush& brush = *world.AddBrush(std::make_unique<Brush>(shape));
        brush.GenerateNewObjectID();
        if (type != BT_PORTAL)
            brush.ForEachSurface([](Surface& surface, int, bool) { surface.texture.index = 1; });
        return brush;
    }
    void AddEntity(const char* type_word, const D3DVECTOR& position, float range = 0) {
        auto entity = std::make_unique<Entity>();
        entity->str_type = type_word;
        entity->position = position;
        entity->one_cell_only = false;
        entity->trace_entity = range > 0; // eyes stand in no cell
        if (range > 0)
            for (const auto& [name, value] : {std::pair<const char*, float>{"range", range}, {"intensity", 0.7f}}) {
                EntityParameter parameter;
                parameter.name = name;
                parameter.type = EPT_FLOAT;
                parameter.p_float = value;
                entity->AddParameter(parameter);
            }
        EntityParameter color;
        color.name = "color";
        color.type = EPT_COLOR;
        color.p_color = {0, 1, 0.9f, 0.8f, 1};
        entity->AddParameter(color);
        entity->GenerateNewObjectID();
        world.AddEntity(std::move(entity));
    }

    // The walls to the south and the west belong to the room, with a doorway and its portal where a neighbour is.
    void AddRoom(float x, float z, int column, int row) {
        AddBox(BT_BOX, {x, -WALL, z}, {x + ROOM, 0, z + ROOM});
        AddBox(BT_BOX, {x, HEIGHT, z}, {x + ROOM, HEIGHT + WALL, z + ROOM});
        AddWall(x, z, true, row > 0);
        AddWall(x, z, false, column > 0);
        if (row == ROWS - 1)
            AddBox(BT_BOX, {x, 0, z + ROOM}, {x + ROOM, HEIGHT, z + ROOM + WALL});
        if (column == COLUMNS - 1)
            AddBox(BT_BOX, {x + ROOM, 0, z}, {x + ROOM + WALL, HEIGHT, z + ROOM});
        for (int k = 0; k < 40; ++k) { // crates along the walls, low enough to be looked over
            const float cx = x + 40 + static_cast<float>(k % 10) * 44, cz = z + 40 + static_cast<float>(k / 10) * 110;
            AddBox(BT_BOX, {cx, 0, cz}, {cx + 20, 12 + static_cast<float>(k * 7 % 30), cz + 24});
        }
        for (int k = 0; k < 5; ++k)
            AddEntity("POINT_LIGHT",
                      {x + 80 + 88 * static_cast<float>(k), 190, z + 90 + static_cast<float>(k * 173 % 330)}, 380);
        AddEntity("VISIBILITY_EYE", {x + ROOM / 2 + 8, 140, z + ROOM / 2 + 8});
    }
    void AddWall(float x, float z, bool south, bool door) {
        const auto piece = [&](BrushType type, float from, float to, float low, float high, float thin) {
            const float near = (WALL - thin) / 2, far = near + thin;
            if (south)
                return &AddBox(type, {x + from, low, z + near}, {x + to, high, z + far});
            return &AddBox(type, {x + near, low, z + from}, {x + far, high, z + to});
        };
        const float middle = ROOM / 2;
        if (!door) {
            piece(BT_BOX, 0, ROOM, 0, HEIGHT, WALL);
            return;
        }
        piece(BT_BOX, 0, middle - DOOR, 0, HEIGHT, WALL);
        piece(BT_BOX, middle + DOOR, ROOM, 0, HEIGHT, WALL);
        piece(BT_BOX, middle - DOOR, middle + DOOR, LINTEL, HEIGHT, WALL);
        piece(BT_PORTAL, middle - DOOR - 2, middle + DOOR + 2, -2, LINTEL + 2, 6);
    }
};

void BM_CompileFortyCells(benchmark::State& bench) {
    Level level;
    level.options.threads = static_cast<int>(bench.range(0));
    const std::string target = (std::filesystem::temp_directory_path() / "marrowstead-bench.few").string();
    CompileProgress progress;
    std::map<std::string, double> stages;
    for (auto _ : bench) {
        StageTimer timer(progress);
        std::string message;
        ProblemSolver problems;
        if (CompileWorld(level.world, level.options, target, timer, message, &problems) != CompileResult::Written) {
            bench.SkipWithError((message + problems.TreeText()).c_str());
            break;
        }
        for (const StageTime& stage : timer.Finish())
            stages[stage.name] += static_cast<double>(stage.milliseconds);
    }
    bench.counters["brushes"] = level.world.GetBrushCount();
    for (const auto& [name, milliseconds] : stages)
        if (milliseconds > 0)
            bench.counters["ms " + name] = benchmark::Counter(milliseconds, benchmark::Counter::kAvgIterations);
    std::filesystem::remove(target);
}
BENCHMARK(BM_CompileFortyCells)->Arg(1)->Arg(2)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace
