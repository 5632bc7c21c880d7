// The compile command over a whole data root: loading, the safety copy, the written world, and what goes wrong.
#include <gtest/gtest.h>

#include <cstring>

#include "editor/Interface.h"
#include "editor/LightPreview.h"
#include "files/ChunkFile.h"
#include "foundation/Desktop.h"
#include "foundation/Random.h"
#include "persistence/ProjectData.h"
#include "persistence/WorldFile.h"

class CompileCommandTest : public testing::Test {
protected:
    CompileCommandTest() {
        setenv("MARROWSTEAD_CONFIG", (data.folder / "config").c_str(), 1);
        SetDesktop(&desktop);
        std::unique_ptr<World> world = data.NewWorld();
        const int stone = world->GetNewMaterial("wall", "stone");
        AddTestBrush(*world, BT_BOX, 0, stone)->name = "crate";
        AddTestBrush(*world, BT_CONE, 100, stone);
        AddTestBrush(*world, BT_PORTAL, 300, 0);
        data.Place(*world, "light", {32, 100, 24});
        world->map_file = "small";
        EXPECT_TRUE(SaveProject("small.msp", *world, {}, false, data.error));
        world.reset();
        interface.Init();
        interface.InitEditor();
        std::filesystem::create_directory("Maps");
    }
    ~CompileCommandTest() override { SetDesktop(nullptr); }

    ProjectData data;
    HeadlessDesktop desktop;
    CInterface interface;
};

TEST_F(CompileCommandTest, WritesTheWorldAndTheSafetyCopy) {
    ASSERT_TRUE(interface.LoadProject(nullptr, "small.msp", data.error)) << data.error;
    EXPECT_FALSE(interface.project_file_has_name) << "a project of the command line has no name to save under";
    CProgressText progress;
    EXPECT_EQ(interface.Compile(progress), CompileOutcome::Written);
    EXPECT_TRUE(desktop.boxes.empty());
    EXPECT_EQ(progress.GetText().find("Map compilation started...\r\n\r\nEntry data:\r\n2 Brushes\r\n6 Surfaces\r\n16 "
                                      "Curved Surfaces\r\n1 Portals\r\n"
                                      "0 Occluders\r\n1 Entities\r\n2 Materials\r\n\r\nBuilding Octal Tree...\r\n"),
              0u)
        << progress.GetText();
    EXPECT_NE(progress.GetText().find("\r\nMap compilation finished\r\nTotal compilation time: "), std::string::npos);
    EXPECT_TRUE(std::filesystem::exists("Marrowstead/Projects/__autosave__.msp"));
    WorldFile world;
    ASSERT_TRUE(ReadWorldFile("Maps\\small.few", world, data.error)) << data.error;
    ASSERT_EQ(world.brushes.size(), 3u);
    EXPECT_EQ(world.brushes[0].name, "crate");
    EXPECT_EQ(world.entities.size(), 1u);
    EXPECT_EQ(world.cells.size(), 1u);
    EXPECT_EQ(world.cells[0].objects, (std::vector<int32_t>{0, 1})) << "the portal is in no cell";
}

// The box stands before the camera, the cone beside it: dark at first, then lit, where they are.
TEST_F(CompileCommandTest, LightIsShownAsItIsComputed) {
    constexpr int SIDE = 64;
    WriteBytes("Textures/wall/stone.tga", TargaBytes(16, 16, 24, 0xFFFFFF));
    ASSERT_TRUE(interface.LoadProject(nullptr, "small.msp", data.error)) << data.error;
    interface.settings.lighting_method = LIGHTING_NONE; // white everywhere
    VIEWINFO& view = interface.View(VIEW_PERSPECTIVE);
    view.camera_position = {32, 16, -100};
    view.camera_rotation = {};
    LightPreview preview(interface, SIDE, SIDE);
    const std::vector<uint8_t> empty = preview.Rgb();
    EXPECT_TRUE(preview.Draw());
    const std::vector<uint8_t> dark = preview.Rgb();
    EXPECT_FALSE(preview.Draw()) << "the level in the dark, once";
    interface.light_observer = [&preview](const Brush& lit) { preview.Take(lit); };
    CProgressText progress;
    ASSERT_EQ(interface.Compile(progress), CompileOutcome::Written);
    EXPECT_TRUE(preview.Draw());
    const std::vector<uint8_t> lit = preview.Rgb();
    const auto brightness = [](const std::vector<uint8_t>& picture, int x, int y) {
        const auto at = static_cast<size_t>((y * SIDE + x) * 3);
        return picture[at] + picture[at + 1] + picture[at + 2];
    };
    EXPECT_NE(brightness(dark, SIDE / 2, SIDE / 2), brightness(empty, SIDE / 2, SIDE / 2)) << "the box";
    EXPECT_GT(brightness(lit, SIDE / 2, SIDE / 2), brightness(dark, SIDE / 2, SIDE / 2));
    for (const int x : {SIDE / 2, 4}) { // above it, and left of it
        const int y = x == 4 ? SIDE / 2 : 2;
        EXPECT_EQ(brightness(lit, x, y), brightness(empty, x, y));
        EXPECT_EQ(brightness(dark, x, y), brightness(empty, x, y));
    }
    EXPECT_FALSE(preview.Draw()) << "each brush is drawn once";
}

TEST_F(CompileCommandTest, AnOpenedProjectTakesTheLightOfACompiledWorldThatIsNotOlder) {
    namespace fs = std::filesystem;
    struct Lit {
        int32_t lit, page;
        std::vector<UVVector> uv; // on the page
    };
    const auto light = [&] {
        std::vector<Lit> found;
        for (const auto& brush : interface.world->brush)
            brush->ForEachSurface([&](const Surface& s, int, bool) {
                Lit& lit = found.emplace_back(Lit{s.lightmap, s.lightmap_info.lightmap, {}});
                for (const UVVector& uv : s.lightmap_uv)
                    lit.uv.push_back({uv.u * s.lightmap_info.u_size + s.lightmap_info.u_start,
                                      uv.v * s.lightmap_info.v_size + s.lightmap_info.v_start});
            });
        return found;
    };
    const auto open = [&] {
        interface.InitEditor();
        ASSERT_TRUE(interface.LoadProject(nullptr, "small.msp", data.error)) << data.error;
    };
    open();
    interface.settings.lighting_method = LIGHTING_QUICK;
    CProgressText progress;
    ASSERT_EQ(interface.Compile(progress), CompileOutcome::Written);
    const std::vector<Lit> compiled = light();
    const std::vector<LightmapPage> pages = interface.world->lightmaps;
    ASSERT_FALSE(pages.empty());
    const fs::file_time_type saved = fs::last_write_time("small.msp");
    struct Case {
        bool wanted;
        int minutes; // from the save to the compile
        bool lit;
    };
    for (const Case& c : {Case{true, -1, false}, Case{true, 0, true}, Case{true, 1, true}, Case{false, 1, false}}) {
        SCOPED_TRACE(c.minutes);
        interface.settings.open_light = c.wanted;
        fs::last_write_time("Maps/small.few", saved + std::chrono::minutes(c.minutes));
        open();
        EXPECT_EQ(interface.world->lightmaps == pages, c.lit);
        EXPECT_EQ(interface.world->lightmap_index.size(), c.lit ? pages.size() : 0);
        EXPECT_EQ(interface.world->render_mode, c.lit ? 2 : 1);
        const std::vector<Lit> opened = light();
        ASSERT_EQ(opened.size(), compiled.size());
        for (size_t s = 0; s < opened.size(); ++s) {
            EXPECT_EQ(opened[s].lit == 1, c.lit && compiled[s].lit == 1);
            if (opened[s].lit != 1)
                continue;
            EXPECT_EQ(opened[s].page, compiled[s].page);
            ASSERT_EQ(opened[s].uv.size(), compiled[s].uv.size());
            for (size_t v = 0; v < opened[s].uv.size(); ++v) {
                EXPECT_NEAR(opened[s].uv[v].u, compiled[s].uv[v].u, 1e-5);
                EXPECT_NEAR(opened[s].uv[v].v, compiled[s].uv[v].v, 1e-5);
            }
        }
    }
    // What is no longer as it was compiled has no light.
    interface.settings.open_light = true;
    interface.world->brush[0]->Move({8, 0, 0}, true);
    ASSERT_TRUE(SaveProject("small.msp", *interface.world, {}, false, data.error));
    fs::last_write_time("Maps/small.few", fs::last_write_time("small.msp"));
    open();
    interface.world->brush[0]->ForEachSurface([](const Surface& s, int, bool) { EXPECT_NE(s.lightmap, 1); });
    interface.world->brush[1]->ForEachSurface([](const Surface& s, int, bool) { EXPECT_EQ(s.lightmap, 1); });
    interface.world->DeleteBrush(2);
    ASSERT_TRUE(SaveProject("small.msp", *interface.world, {}, false, data.error));
    fs::last_write_time("Maps/small.few", fs::last_write_time("small.msp"));
    open();
    EXPECT_TRUE(interface.world->lightmaps.empty()) << "another number of brushes";
}

TEST_F(CompileCommandTest, UnreadableProjectsOpenAFreshWorld) {
    ASSERT_TRUE(interface.LoadProject(nullptr, "small.msp", data.error));
    EXPECT_FALSE(interface.LoadProject(nullptr, "other.msp", data.error));
    EXPECT_NE(data.error.find("other.msp"), std::string::npos);
    EXPECT_EQ(interface.world->GetBrushCount(), 0);
}

// What the mouse needs is the window's, whatever a file tells: of one that is refused, and of one that opens.
TEST_F(CompileCommandTest, RectanglesOfAFileAreNotThoseOfTheWindow) {
    const RECT live{3, 4, 203, 104};
    ProjectViews stored;
    stored.left.window_rect = stored.left.client_rect = {-2000000000, 7, 2000000000, 8};
    ASSERT_TRUE(SaveProject("whole.msp", *data.NewWorld(), stored, false, data.error));
    {
        UChunkFile whole("whole.msp", CFM_Open), refused("refused.msp", CFM_Create);
        ASSERT_TRUE(whole.OpenChunk("MapInfo", ANY_CHUNK_ID, COT_SameName));
        refused.CreateChunk("MapInfo", ANY_CHUNK_ID);
        for (uint32_t k = 0; k < whole.GetArraysCountInChunk(); ++k)
            refused.WriteValues(whole.GetArrayAlloc(k));
        refused.CloseChunk();
        refused.CreateChunk("MPGames", ANY_CHUNK_ID);
        refused.WriteValue(1000); // more than there can be
        refused.CloseChunk();
        ASSERT_TRUE(refused.CloseChunkFile());
    }
    for (const bool is_whole : {false, true}) {
        interface.View(VIEW_LEFT).window_rect = interface.View(VIEW_LEFT).client_rect = live;
        EXPECT_EQ(interface.LoadProject(nullptr, is_whole ? "whole.msp" : "refused.msp", data.error), is_whole);
        EXPECT_EQ(std::memcmp(&interface.View(VIEW_LEFT).window_rect, &live, sizeof live), 0);
        EXPECT_EQ(std::memcmp(&interface.View(VIEW_LEFT).client_rect, &live, sizeof live), 0);
    }
}

TEST_F(CompileCommandTest, TheTracedEntityReachesTheCompile) {
    ASSERT_TRUE(interface.LoadProject(nullptr, "small.msp", data.error));
    auto eye = std::make_unique<Entity>();
    eye->str_type = "VISIBILITY_EYE";
    eye->SetPosition(interface.world->entity[0]->position + D3DVECTOR{0, 10, 0});
    interface.world->AddEntity(std::move(eye));
    interface.settings.subdivide_world = true;
    for (const bool traced : {false, true}) {
        interface.traceing_id = traced ? interface.world->entity[0]->GetObjectID() : NO_OBJECT_ID;
        CProgressText progress;
        interface.Compile(progress);
        EXPECT_EQ(std::filesystem::exists("Marrowstead/trace.log"), traced);
    }
    EXPECT_NE(ReadBytes("Marrowstead/trace.log").find("Starting traceing entity id = "), std::string::npos);
}

TEST_F(CompileCommandTest, StoppedAndFailedRunsLeaveTheOldWorld) {
    WriteBytes("Maps/small.few", "the old world");
    ASSERT_TRUE(interface.LoadProject(nullptr, "small.msp", data.error));
    CProgressText stopped;
    stopped.StopCompilation();
    EXPECT_EQ(interface.Compile(stopped), CompileOutcome::Stopped);
    EXPECT_EQ(ReadBytes("Maps/small.few"), "the old world");

    std::filesystem::remove_all("Maps");
    CProgressText progress;
    EXPECT_EQ(interface.Compile(progress), CompileOutcome::NotWritten);
    ASSERT_FALSE(desktop.boxes.empty());
    EXPECT_EQ(desktop.boxes[0].title, "Error");
}

TEST_F(CompileCommandTest, DamagedWorldFilesAreRefusedInOneSentence) {
    ASSERT_TRUE(interface.LoadProject(nullptr, "small.msp", data.error));
    interface.settings.save_finalmap = true;
    CProgressText progress;
    ASSERT_EQ(interface.Compile(progress), CompileOutcome::Written);
    const std::string good = ReadBytes("Maps/small.few");
    RandomMT random;
    for (int round = 0; round < 300; ++round) {
        std::string bytes = good;
        if (round % 3 == 0)
            bytes.resize(random.randomMT() % bytes.size());
        else
            for (int k = 0; k < 3; ++k)
                bytes.replace(random.randomMT() % (bytes.size() - 4), 4,
                              round % 3 == 1 ? "\xff\xff\xff\x7f" : "\xfe\xff\xff\xff");
        WriteBytes("Maps/damaged.few", bytes);
        WorldFile world;
        std::string error;
        if (!ReadWorldFile("Maps\\damaged.few", world, error)) {
            EXPECT_NE(error.find("damaged.few"), std::string::npos) << error;
        }
    }
}
