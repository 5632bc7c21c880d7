// The quick update of entities in a compiled world.
#include <cerrno>
#include <gtest/gtest.h>

#include <limits>

#include "compiler/Compile.h"
#include "compiler/EntityUpdate.h"
#include "compiler/Levels.h"
#include "compiler/TwoRooms.h"
#include "foundation/AtomicFile.h"
#include "foundation/Desktop.h"
#include "foundation/TempFolder.h"
#include "persistence/WorldFile.h"

class EntityUpdateTest : public testing::Test {
protected:
    EntityUpdateTest() : current(folder.Path()) {
        SetDesktop(&desktop);
        std::filesystem::create_directory("Maps");
        AddMaterialRow(world, "stone");
        AddShape(world, BT_BOX, {0, 0, 0}, {64, 64, 64}).name = "crate";
        AddShape(world, BT_BOX, {100, 0, 0}, {164, 64, 64});
        AddLight(world, {80, 100, 0}, 300);
        options.save_finalmap = true;
        std::string message;
        EXPECT_EQ(CompileWorld(world, options, TARGET, progress, message), CompileResult::Written) << message;
    }
    ~EntityUpdateTest() override { SetDesktop(nullptr); }

    EntityUpdateResult Update(bool visibility) {
        return CompileEntities(world, options, TARGET, visibility, progress, problems);
    }
    WorldFile Read() {
        WorldFile file;
        std::string error;
        EXPECT_TRUE(ReadWorldFile(TARGET, file, error)) << error;
        return file;
    }

    static constexpr const char* TARGET = "Maps\\small.few";
    TempFolder folder;
    CurrentFolder current;
    HeadlessDesktop desktop;
    TestMaterials materials;
    World world{&materials};
    CompileOptions options;
    CompileProgress progress;
    ProblemSolver problems;
};

TEST_F(EntityUpdateTest, EntitiesAndConstantsFollowTheRestStays) {
    const WorldFile before = Read();
    AddEntityOf(world, "CORONA", {9, 8, 7});
    Brush& crate = *world.brush[0];
    crate.name = "barrel";
    crate.elasticity = 0.75f;
    crate.AddLinkedObjectID(world.entity[0]->GetObjectID());
    world.map_name = "Renamed";
    ASSERT_EQ(Update(false), EntityUpdateResult::Written);
    const WorldFile after = Read();
    ASSERT_EQ(after.entities.size(), 2u);
    EXPECT_EQ(after.entities[1].type, "CORONA");
    EXPECT_EQ(after.map_name, "Renamed");
    EXPECT_EQ(after.brushes[0].name, "barrel");
    EXPECT_EQ(after.brushes[0].links, std::vector<uint32_t>{world.entity[0]->GetObjectID()});
    EXPECT_EQ(after.brushes[0].surface_count, 6);
    EXPECT_EQ(after.brushes[0].surfaces[0].vertices, before.brushes[0].surfaces[0].vertices);
    EXPECT_EQ(after.brushes[0].physics.elasticity, 0.75f);
    EXPECT_EQ(after.brushes[0].physics.points, before.brushes[0].physics.points);
    EXPECT_EQ(after.brushes[0].physics.I, before.brushes[0].physics.I);
    EXPECT_EQ(after.lightmap_pages, before.lightmap_pages);
    EXPECT_EQ(after.cells[0].entities, before.cells[0].entities) << "without visibility the cells stay";
    EXPECT_TRUE(std::filesystem::exists("Maps/small.bkp"));
}

TEST_F(EntityUpdateTest, WithVisibilityTheCellsFollow) {
    AddEntityOf(world, "CORONA", {9, 8, 7});
    ASSERT_EQ(Update(true), EntityUpdateResult::Written);
    const WorldFile after = Read();
    ASSERT_EQ(after.cells.size(), 1u);
    EXPECT_EQ(after.cells[0].entities, (std::vector<int32_t>{0, 1}));
    EXPECT_EQ(after.cells[0].objects, (std::vector<int32_t>{0, 1}));
    EXPECT_EQ(after.cells[0].render_groups.size(), 2u);
}

TEST_F(EntityUpdateTest, ADeletedBrushAsksForAFullCompile) {
    const std::string before = ReadBytes("Maps/small.few");
    world.DeleteBrush(1);
    EXPECT_EQ(Update(false), EntityUpdateResult::BrushesDeleted);
    ASSERT_EQ(desktop.boxes.size(), 1u);
    EXPECT_EQ(desktop.boxes[0].text,
              "Critical error! Some brushes which are in saved map were deleted.\nPlease, recompile whole project.");
    EXPECT_TRUE(ReadBytes("Maps/small.few") == before);
}

TEST_F(EntityUpdateTest, AFullDiskLeavesTheWorldAndItsCopyAndIsTold) {
    ASSERT_EQ(Update(false), EntityUpdateResult::Written);
    AddEntityOf(world, "CORONA", {9, 8, 7});
    const std::string target = ReadBytes("Maps/small.few"), copy = ReadBytes("Maps/small.bkp");
    for (int fails = 0;; ++fails) {
        int step = 0;
        desktop.notices.clear();
        SetDiskFaults([&](DiskStep) { return step++ == fails ? ENOSPC : 0; });
        const EntityUpdateResult result = Update(false);
        SetDiskFaults(nullptr);
        if (step <= fails) {
            EXPECT_EQ(result, EntityUpdateResult::Written);
            break;
        }
        ASSERT_EQ(result, EntityUpdateResult::WriteFailed) << "step " << fails;
        EXPECT_EQ(ReadBytes("Maps/small.few"), target) << "step " << fails;
        const std::string now = ReadBytes("Maps/small.bkp");
        EXPECT_TRUE(now == copy || now == target) << "step " << fails;
        ASSERT_FALSE(desktop.notices.empty());
        EXPECT_NE(desktop.notices[0].find("No space left on device"), std::string::npos) << desktop.notices[0];
    }
    EXPECT_NE(ReadBytes("Maps/small.few"), target);
}

TEST_F(EntityUpdateTest, WithoutAnOldWorldThereIsNothingToUpdate) {
    std::filesystem::remove("Maps/small.few");
    WriteBytes("Maps/small.bkp", "an older copy");
    EXPECT_EQ(Update(false), EntityUpdateResult::NoOldWorld);
    ASSERT_EQ(desktop.boxes.size(), 1u);
    EXPECT_EQ(desktop.boxes[0].title, "Compile entity error");
    EXPECT_FALSE(std::filesystem::exists("Maps/small.few"));
    EXPECT_EQ(ReadBytes("Maps/small.bkp"), "an older copy");
}

// A file's cells are known by their places alone: where the level has others, nothing may be written into them.
TEST(EntityUpdate, CellsThatNoLongerFitAskForAFullCompile) {
    class Text : public CompileProgress {
    public:
        void AddText(const std::string& text) override { all += text; }
        std::string all;
    };
    struct Case {
        const char* name;
        bool visibility;
        void (*change)(TwoRooms& rooms);
        EntityUpdateResult expected;
    };
    const Case cases[] = {
        {"nothing changed", true, [](TwoRooms&) {}, EntityUpdateResult::Written},
        {"a light moved", true, [](TwoRooms& rooms) { rooms.lamp_a->position.y -= 5; }, EntityUpdateResult::Written},
        {"subdivision switched off", true, [](TwoRooms& rooms) { rooms.options.subdivide_world = false; },
         EntityUpdateResult::CellsDiffer},
        {"subdivision off, cells stay", false, [](TwoRooms& rooms) { rooms.options.subdivide_world = false; },
         EntityUpdateResult::Written},
        {"eyes linked since", true,
         [](TwoRooms& rooms) { rooms.eye_a->AddLinkedObjectID(rooms.eye_b->GetObjectID()); },
         EntityUpdateResult::CellsDiffer},
        {"a further portal", true,
         [](TwoRooms& rooms) { AddShape(rooms.world, BT_PORTAL, {-4, 200, -22}, {4, 262, 22}, 0); },
         EntityUpdateResult::CellsDiffer},
        {"a wall became an occluder", true,
         [](TwoRooms& rooms) { rooms.world.brush[TwoRooms::CRATE_A]->type = BT_OCCLUDER; },
         EntityUpdateResult::CellsDiffer},
        {"entities deleted, cells stay", false, [](TwoRooms& rooms) { rooms.world.entity.resize(2); },
         EntityUpdateResult::CellsDiffer},
    };
    for (const Case& c : cases) {
        const TempFolder folder;
        const CurrentFolder current(folder.Path());
        HeadlessDesktop desktop;
        SetDesktop(&desktop);
        std::filesystem::create_directory("Maps");
        TwoRooms rooms;
        Text progress;
        ProblemSolver problems;
        std::string message;
        ASSERT_EQ(CompileWorld(rooms.world, rooms.options, "Maps\\two.few", rooms.silent, message),
                  CompileResult::Written)
            << message;
        const std::string before = ReadBytes("Maps/two.few");
        c.change(rooms);
        EXPECT_EQ(CompileEntities(rooms.world, rooms.options, "Maps\\two.few", c.visibility, progress, problems),
                  c.expected)
            << c.name;
        EXPECT_NE(progress.all.find(" Nodes\r\n"), std::string::npos) << c.name;
        if (c.expected == EntityUpdateResult::CellsDiffer) {
            EXPECT_TRUE(ReadBytes("Maps/two.few") == before) << c.name;
            ASSERT_EQ(desktop.boxes.size(), 1u) << c.name;
            EXPECT_NE(desktop.boxes[0].text.find("recompile whole project"), std::string::npos) << c.name;
        }
        SetDesktop(nullptr);
    }
}

TEST_F(EntityUpdateTest, ALevelWithoutEndIsNotToldAsATreeTooLarge) {
    AddEntityOf(world, "CORONA", {std::numeric_limits<float>::infinity(), 0, 0});
    EXPECT_EQ(Update(false), EntityUpdateResult::LimitExceeded);
    ASSERT_EQ(desktop.boxes.size(), 1u);
    EXPECT_EQ(desktop.boxes[0].text, "A brush or an entity lies too far out: the extent of the level is no number.");
}
