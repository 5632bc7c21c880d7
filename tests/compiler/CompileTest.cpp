#include "compiler/Compile.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>

#include "compiler/Levels.h"
#include "compiler/TwoRooms.h"
#include "files/ChunkFile.h"
#include "foundation/Desktop.h"
#include "foundation/Strings.h"
#include "foundation/TempFolder.h"
#include "persistence/WorldFile.h"

namespace {

constexpr const char* TARGET = "Maps\\Test.few";

class Recorder : public CompileProgress {
public:
    void AddText(const std::string& text) override {
        all += text;
        ++texts;
    }
    bool CompilationCancelled() override { return texts >= stop_at; }

    std::string all;
    int texts = 0, stop_at = 1000000;
};

// A room with pillars and curves, lights of every kind, coloured glass, a moving box, a trigger and a sky.
struct Level {
    TestMaterials library;
    World world{&library};
    CompileOptions options;
    Recorder progress;
    std::string message;

    Level() {
        library.by_name["glass"].transparent = true;
        library.by_name["lamp"].light_illumination = true;
        const int wall = AddMaterialRow(world, "wall"),
                  glass = AddMaterialRow(world, "glass", MakeGlass(0x40FF8000, 0x4000FF80));
        const int lamp = AddMaterialRow(world, "lamp");
        AddMaterialRow(world, "unused");
        AddShape(world, BT_BOX, {-300, -20, -300}, {300, 0, 300}, wall);
        AddShape(world, BT_BOX, {-40, 0, -40}, {-20, 120, -20}, wall);
        AddShape(world, BT_CYLINDER, {50, 0, 50}, {90, 120, 90}, wall, 2);
        AddShape(world, BT_PATCH, {-200, 40, 100}, {-100, 48, 200}, wall, 1);
        AddShape(world, BT_RECTANGLE, {-100, 80, -100}, {100, 80, 100}, glass);
        Brush& bulb = AddShape(world, BT_BOX, {100, 100, 100}, {110, 110, 110}, lamp);
        Brush& crate = AddShape(world, BT_BOX, {150, 0, -150}, {200, 50, -100}, wall);
        crate.properties = BP_DYNAMIC;
        crate.mass = 12;
        crate.name = "crate";
        crate.surfaces[3].texture.index = 0; // the bottom is not kept
        crate.surfaces[0].texture.shift = {1, 2};
        crate.surfaces[0].texture.flip_v = true;
        AddShape(world, BT_BOX, {-900, -900, -900}, {900, 900, 900}, wall).properties = BP_ENVIRONMENT;
        Brush& trigger = AddShape(world, BT_BOX, {0, 0, 200}, {50, 50, 250}, 0);
        trigger.AddLinkedObjectID(AddEntityOf(world, "BOX_TRIGGER", {25, 25, 225}).GetObjectID());
        Brush& mesh = AddShape(world, BT_RECTANGLE, {-250, 10, -250}, {-200, 10, -200}, wall);
        mesh.type = BT_CUSTOM;
        mesh.curved_surfaces.swap(mesh.surfaces);
        mesh.curved_surfaces[0].cp_count = CURVE_MESH;
        Entity& red = AddLight(world, {0, 200, 0}, 500, 1.5f);
        SetColor(red, 1, 0.5f, 0.25f);
        bulb.AddLinkedObjectID(red.GetObjectID());
        Entity& spot = AddLight(world, {-250, 250, 0}, 600);
        SetBool(spot, "spotlight_enable", true);
        SetFloat(spot, "spotlight_angle", 60);
        spot.AddLinkedObjectID(AddEntityOf(world, "TARGET_POSITION", {0, 0, 0}).GetObjectID());
        Entity& flicker = AddLight(world, {200, 100, -200}, 300);
        SetBool(flicker, "dynamic", true);
        SetBool(flicker, "dynamic_lightmap", true);
        Entity& ambient = AddEntityOf(world, "AMBIENT_LIGHT", {0, 10, 0});
        SetColor(ambient, 0.1f, 0.1f, 0.2f);
        SetFloat(ambient, "intensity", 1);
        world.map_name = "A test";
        world.mp_games = {"duel"};
        options.lighting_method = LIGHTING_RAYTRACED;
        options.lightmap_detail = 1;
        options.create_render_groups = true;
        options.threads = 2;
        std::filesystem::create_directories("Maps");
    }
    CompileResult Compile() { return CompileWorld(world, options, TARGET, progress, message); }
};

class Compile : public ::testing::Test {
protected:
    TempFolder folder;
    CurrentFolder current{folder.Path()};
};

template <class T>
T ValueAt(const std::vector<uint8_t>& bytes, size_t offset) {
    T value{};
    EXPECT_LE(offset + sizeof(T), bytes.size());
    std::memcpy(&value, bytes.data() + offset, sizeof(T));
    return value;
}

} // namespace

TEST_F(Compile, AWholeLevelReadsBack) {
    Level level;
    ASSERT_EQ(level.Compile(), CompileResult::Written) << level.message;
    for (const char* text :
         {"Map compilation started...\r\n\r\nEntry data:\r\n10 Brushes\r\n",
          "6 Entities\r\n5 Materials\r\n\r\nBuilding Octal Tree...\r\n", "Calculating Physics...  \t-> [",
          "Creating Cells...\t\t-> [", "1 Cell(s) created\r\n\r\nCreating Render Groups...\r\n",
          "Calculating Light Range...\t-> [", "Raytracing Lightmaps... \t-> [", "Paging Lightmaps...\t\t-> [",
          " MB Lightmaps in 1 page(s)\r\n\r\n", "Saving map Maps\\Test.few\r\n\r\n"})
        EXPECT_NE(level.progress.all.find(text), std::string::npos) << text;

    WorldFile file;
    std::string error;
    ASSERT_TRUE(ReadWorldFile(TARGET, file, error)) << error;
    ASSERT_EQ(file.brushes.size(), 10u);
    EXPECT_EQ(file.entities.size(), 6u);
    EXPECT_EQ(file.materials.size(), 3u) << "the unused one is gone";
    EXPECT_EQ(file.lightmap_pages.size(), 1u);
    EXPECT_EQ(file.map_name, "A test");
    EXPECT_EQ(file.mp_games, std::vector<std::string>{"duel"});
    ASSERT_EQ(file.cells.size(), 1u);
    EXPECT_TRUE(file.cells[0].can_see_outside);
    EXPECT_EQ(file.cells[0].objects.size(), 9u) << "all but the sky";
    EXPECT_EQ(file.actor_groups.size(), level.world.actor_groups.size());
    EXPECT_EQ(file.brushes[0].surfaces.size(), 6u);
    EXPECT_EQ(file.brushes[6].name, "crate");
    EXPECT_EQ(file.brushes[6].surfaces.size(), 5u) << "without its bare bottom";
    EXPECT_EQ(file.brushes[8].surfaces.size(), 6u) << "a trigger stays whole";
    EXPECT_EQ(file.brushes[9].surfaces[0].colors.size(), 4u);
    EXPECT_EQ(file.brushes[3].surfaces[0].type, WS_PATCH);
    EXPECT_EQ(file.brushes[3].surfaces[0].cp.size(), 9u);
    EXPECT_EQ(file.brushes[6].physics.faces.size(), 10u);
    EXPECT_EQ(file.brushes[0].physics.faces.size(), 0u) << "static, without Calculate Physics";
    int32_t surfaces = 0, control_points = 0;
    for (const WorldBrush& brush : file.brushes)
        for (const WorldSurface& surface : brush.surfaces) {
            ++surfaces;
            control_points += surface.cp_count;
            EXPECT_GE(surface.lightmap.lightmap, 0);
            if (brush.type != BT_CUSTOM && surface.texture.index != 0) {
                EXPECT_LE(surface.lightmap.u_start + surface.lightmap.u_size, 1);
            }
        }
    EXPECT_EQ(file.initial_surfaces, surfaces);
    EXPECT_EQ(file.initial_control_points, control_points);
    EXPECT_EQ(level.world.render_mode, 2);
    EXPECT_EQ(level.world.brush[3]->CURVE_DETAIL, static_cast<uint32_t>(level.world.curve_detail));

    // Where light falls: the floor is lit from above, and darker behind the pillar's foot than far from it.
    const LIGHTMAP_INFO floor = file.brushes[0].surfaces[0].lightmap;
    EXPECT_GT(floor.u_size, 0.05f) << "not one colour";
    EXPECT_FALSE(file.brushes[6].surfaces[0].dynamic_lightmaps.empty()) << "the flickering light above the crate";
}

TEST_F(Compile, RecordsStandAtTheirOffsets) {
    Level level;
    ASSERT_EQ(level.Compile(), CompileResult::Written);
    UChunkFile file(TARGET, CFM_Open);
    ASSERT_TRUE(file.OpenChunk("FileID"));
    EXPECT_EQ(file.GetChunkID(), 0xFFFFFFFFu);
    EXPECT_EQ(file.GetArrayLength(0), 23u);
    ASSERT_TRUE(file.OpenChunk("BrushInfo", 6));
    const std::vector<uint8_t> info = file.GetArrayAlloc(0);
    ASSERT_EQ(info.size(), 73u);
    EXPECT_EQ(ValueAt<uint32_t>(info, 0), BT_BOX);
    EXPECT_EQ(ValueAt<uint32_t>(info, 4), BP_DYNAMIC);
    EXPECT_EQ(ValueAt<int32_t>(info, 28), 5);
    EXPECT_EQ(ValueAt<uint32_t>(info, 36), level.world.brush[6]->GetObjectID());
    EXPECT_EQ(ValueAt<float>(info, 44), 12);
    EXPECT_EQ(ValueAt<int32_t>(info, 64), 5);
    ASSERT_TRUE(file.OpenChunk("BrushData", 6));
    EXPECT_EQ(file.GetArrayLength(0), 48u) << "four vertices";
    const std::vector<uint8_t> texture = file.GetArrayAlloc(4);
    ASSERT_EQ(texture.size(), 36u);
    EXPECT_EQ(ValueAt<float>(texture, 4), 2) << "shift.v";
    EXPECT_EQ(texture[29], 1) << "flip_v";
    EXPECT_EQ(ValueAt<int32_t>(texture, 31), 1) << "index";
    const std::vector<uint8_t> lightmap = file.GetArrayAlloc(5);
    ASSERT_EQ(lightmap.size(), 24u);
    EXPECT_EQ(ValueAt<int32_t>(lightmap, 20), -1);
    const std::vector<uint8_t> moving = file.GetArrayAlloc(file.GetArraysCountInChunk() - 4);
    ASSERT_EQ(moving.size(), 108u);
    EXPECT_EQ(ValueAt<float>(moving, 0), 12);
    EXPECT_EQ(ValueAt<int32_t>(moving, 104), 10);
    ASSERT_TRUE(file.OpenChunk("BrushData", 0));
    const uint32_t arrays = file.GetArraysCountInChunk();
    const std::vector<uint8_t> still = file.GetArrayAlloc(arrays - 4);
    ASSERT_EQ(still.size(), 108u);
    EXPECT_EQ(ValueAt<uint32_t>(still, 0), 0x51BA43B7u);
    EXPECT_EQ(ValueAt<float>(still, 16), level.world.brush[0]->static_friction);
    EXPECT_EQ(ValueAt<float>(still, 32), 1e9f) << "the first entry of I";
    for (uint32_t k = 96; k < 108; ++k)
        EXPECT_EQ(still[k], 0);
    for (uint32_t k = arrays - 3; k < arrays; ++k)
        EXPECT_EQ(file.GetArrayLength(k), 0u);
    ASSERT_TRUE(file.OpenChunk("CellData", 0));
    EXPECT_EQ(file.GetArrayLength(0), 45u);
    EXPECT_EQ(file.GetArraysCountInChunk(), 7u);
    ASSERT_TRUE(file.OpenChunk("OctalTree"));
    EXPECT_EQ(file.GetArrayLength(1), 88u);
    ASSERT_TRUE(file.OpenChunk("SoundTraceData"));
    EXPECT_EQ(file.GetArraysCountInChunk(), 1u);
}

TEST_F(Compile, TheSameBytesOnAnyNumberOfThreads) {
    // Ids are part of the file, so one level is compiled again and again in its own process.
    for (const bool smooth : {false, true}) {
        Level level;
        level.options.smooth_shadows = smooth;
        level.options.save_finalmap = smooth;
        std::string first;
        for (const int threads : {1, 2, 5, 1}) {
            level.options.threads = threads;
            ASSERT_EQ(level.Compile(), CompileResult::Written) << level.message;
            const std::string bytes = ReadBytes("Maps/Test.few");
            ASSERT_GT(bytes.size(), 100000u);
            if (first.empty())
                first = bytes;
            EXPECT_TRUE(bytes == first) << threads;
        }
    }
}

TEST_F(Compile, AStopAtAnyStageLeavesTheOldFile) {
    Level level;
    WriteBytes("Maps/Test.few", "old");
    int stopped = 0;
    for (level.progress.stop_at = 0;; ++level.progress.stop_at) {
        level.progress.texts = 0;
        const CompileResult result = level.Compile();
        if (result == CompileResult::Written)
            break;
        ASSERT_EQ(result, CompileResult::Stopped) << level.progress.stop_at;
        ++stopped;
        EXPECT_EQ(ReadBytes("Maps/Test.few"), "old");
        EXPECT_EQ(EntriesIn("Maps"), 1u) << "nothing half-written";
        for (const auto& brush : level.world.brush) {
            ASSERT_EQ(brush->CURVE_DETAIL, static_cast<uint32_t>(level.world.curve_detail));
            EXPECT_TRUE(brush->physics_data.points.empty());
            brush->ForEachSurface(
                [](const Surface& surface, int, bool) { EXPECT_TRUE(surface.lightmap_block.empty()); });
        }
        ASSERT_LT(stopped, 100);
    }
    EXPECT_GT(stopped, 20);
    EXPECT_NE(ReadBytes("Maps/Test.few"), "old");
}

TEST_F(Compile, SaysWhatItCannotDo) {
    HeadlessDesktop desktop;
    SetDesktop(&desktop);
    Level level;
    level.options.lighting_method = LIGHTING_NONE;
    EXPECT_EQ(CompileWorld(level.world, level.options, "Nowhere\\At\\All.few", level.progress, level.message),
              CompileResult::WriteFailed);
    EXPECT_NE(level.message.find("All.few"), std::string::npos) << level.message;
    EXPECT_FALSE(std::filesystem::exists("Maps/Test.few"));

    Brush& crate = *level.world.brush[0];
    for (const float odd : {std::nanf(""), 1.0e30f}) {
        crate.surfaces[0].uv[1].v = odd;
        EXPECT_EQ(CompileWorld(level.world, level.options, TARGET, level.progress, level.message),
                  CompileResult::LimitExceeded);
        EXPECT_NE(level.message.find(Format("the id %u has texture coordinates", crate.GetObjectID())),
                  std::string::npos)
            << level.message;
    }
    EXPECT_FALSE(std::filesystem::exists("Maps/Test.few"));

    World dense;
    for (int k = 0; k < 17; ++k)
        AddShape(dense, BT_BOX, {-13000, -13000, -13000}, {13000, 13000, 13000}, 0);
    CompileOptions options;
    EXPECT_EQ(CompileWorld(dense, options, TARGET, level.progress, level.message), CompileResult::LimitExceeded);
    ASSERT_FALSE(desktop.boxes.empty());
    EXPECT_EQ(desktop.boxes.back().title, "Catastrophic failure");
    EXPECT_EQ(desktop.boxes.back().text, "Octall tree size has exceeded!!!!");
    SetDesktop(nullptr);
}

TEST_F(Compile, MethodsAndTheClipBoxChooseWhiteBlocks) {
    Level level;
    level.options.clip_box_compilation = true;
    level.options.clip_box = MakeBox({-60, -60, -60}, {20, 200, 20});
    ASSERT_EQ(level.Compile(), CompileResult::Written) << level.message;
    WorldFile file;
    std::string error;
    ASSERT_TRUE(ReadWorldFile(TARGET, file, error)) << error;
    EXPECT_EQ(file.cells.size(), 3u) << "one, what was removed, and an empty one";
    EXPECT_FALSE(file.cells[1].objects.empty());
    EXPECT_EQ(file.brushes[6].surfaces[0].lightmap.u_size, 1 / 256.0f) << "outside: one white block, narrowed";
    EXPECT_EQ(file.brushes[6].surfaces[0].lightmap_uv[0], (UVVector{0, 0}));
    EXPECT_GT(file.brushes[1].surfaces[0].lightmap_uv[1].u, 0) << "inside";
}

TEST_F(Compile, AnEmptyLevelIsAValidWorld) {
    World world;
    Recorder progress;
    std::string message;
    std::filesystem::create_directories("Maps");
    for (const int method : {LIGHTING_NONE, LIGHTING_QUICK, LIGHTING_RAYTRACED}) {
        CompileOptions options;
        options.lighting_method = method;
        ASSERT_EQ(CompileWorld(world, options, TARGET, progress, message), CompileResult::Written) << message;
        WorldFile file;
        std::string error;
        ASSERT_TRUE(ReadWorldFile(TARGET, file, error)) << error;
        EXPECT_EQ(file.lightmap_pages.size(), 1u);
        EXPECT_EQ(file.leaves.size(), 9u);
    }
}

TEST_F(Compile, CellsWithoutEyesAreRefusedByName) {
    std::filesystem::create_directory("Maps");
    HeadlessDesktop desktop;
    SetDesktop(&desktop);
    for (const bool has_light : {false, true}) {
        TestMaterials library;
        World world(&library);
        AddMaterialRow(world, "wall");
        AddShape(world, BT_BOX, {0, 0, 0}, {64, 64, 64});
        if (has_light)
            AddLight(world, {80, 100, 0}, 300);
        CompileOptions options;
        options.subdivide_world = true;
        Recorder progress;
        std::string message;
        ProblemSolver problems;
        const CompileResult result = CompileWorld(world, options, TARGET, progress, message, &problems);
        EXPECT_EQ(result, has_light ? CompileResult::Problems : CompileResult::LimitExceeded);
        EXPECT_EQ(message.find("No visibility eye: "), has_light ? std::string::npos : 0u) << message;
        const size_t sentence = progress.all.find("No visibility eye: ");
        ASSERT_NE(sentence, std::string::npos);
        EXPECT_EQ(problems.wrong_entity_ids.size(), has_light ? 1u : 0u);
        if (has_light) {
            EXPECT_LT(sentence, progress.all.find("!!!! Compilation problems found !!!!"));
        }
        EXPECT_FALSE(std::filesystem::exists("Maps/Test.few"));
    }
    SetDesktop(nullptr);
}

// A clip box leaves out what closes the cells: that is no problem, and none is handed on.
TEST_F(Compile, AClipBoxHandsOnNoProblems) {
    std::filesystem::create_directory("Maps");
    TwoRooms rooms;
    rooms.options.clip_box_compilation = true;
    rooms.options.clip_box = MakeBox({-300, -50, -200}, {-50, 200, 200});
    Recorder progress;
    std::string message;
    ProblemSolver problems;
    ASSERT_EQ(CompileWorld(rooms.world, rooms.options, TARGET, progress, message, &problems), CompileResult::Written)
        << message;
    EXPECT_TRUE(problems.portals.empty());
    EXPECT_TRUE(problems.wrong_entity_ids.empty());
    EXPECT_TRUE(problems.one_cell_entities.empty());
}
