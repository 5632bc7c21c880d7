#include <gtest/gtest.h>
#include <mutex>
#include <set>

#include "compiler/CellSight.h"
#include "compiler/Compile.h"
#include "compiler/TwoRooms.h"
#include "foundation/TempFolder.h"
#include "persistence/WorldFile.h"
#include "render/ItemBuffer.h"

namespace {

using Ints = std::vector<int32_t>;

class Recorder : public CompileProgress {
public:
    void AddText(const std::string& text) override { all += text; }
    void IncrementProgress(int) override { ++steps; }
    bool CompilationCancelled() override { return stop_at >= 0 && asked++ >= stop_at; }
    std::string all;
    int steps = 0, asked = 0, stop_at = -1;
};

std::string IdText(const char* format, const BaseObject& object) {
    char text[64];
    std::snprintf(text, sizeof text, format, static_cast<int>(object.GetObjectID()));
    return text;
}

} // namespace

TEST(Cells, HoldWhatTheirEyesSee) {
    TwoRooms level;
    const WorldSubdivide& ws = level.Divide();
    ASSERT_EQ(ws.cell.size(), 2u);
    EXPECT_EQ(Sorted(ws.cell[0].objects), (Ints{0, 1, 2, 3, 4, 10, 11, 12, 14}));
    EXPECT_EQ(Sorted(ws.cell[1].objects), (Ints{5, 6, 7, 8, 9, 10, 11, 12, 15}));
    EXPECT_EQ(ws.cell[0].portals, Ints{0});
    EXPECT_EQ(ws.cell[0].portalside, Ints{1}) << "the portal's first normal points to room B";
    EXPECT_EQ(ws.cell[1].portals, Ints{0});
    EXPECT_EQ(ws.cell[1].portalside, Ints{0});
    EXPECT_EQ(ws.cell[0].entities, Ints{level.IndexOf(*level.lamp_a)});
    EXPECT_EQ(ws.cell[1].entities, Ints{level.IndexOf(*level.lamp_b)}) << "not through the portal";
    EXPECT_FALSE(ws.cell[0].can_see_outside);
    EXPECT_EQ(level.lamp_a->cell, 0);
    EXPECT_EQ(level.lamp_b->cell, 1);
    ASSERT_EQ(ws.portal.size(), 1u);
    EXPECT_EQ(ws.portal[0].cell, (std::array<int32_t, 2>{1, 0}));
    EXPECT_TRUE(ws.portal[0].PVP[0].empty());
    EXPECT_EQ(ws.GetBrushCell(TwoRooms::LINTEL), 0);
    EXPECT_EQ(ws.GetBrushCell(TwoRooms::CRATE_B), 1);
    EXPECT_EQ(ws.GetBrushCell(TwoRooms::DOORWAY), -1);
    EXPECT_FALSE(ws.IsWrongPortal(0));
    EXPECT_EQ(level.Problems(), "");
}

TEST(Cells, WhatIsDrawnAndWhatIsFoundByRays) {
    struct Case {
        const char* name;
        void (*change)(TwoRooms&);
        TwoRooms::Part part;
        bool in_a, in_b;
        bool behind_in_b; // the crate of room B behind the changed brush
    };
    // A screen before the crate of room B hides it from eye B.
    static constexpr auto SCREEN = static_cast<TwoRooms::Part>(TwoRooms::CRATE_B + 1);
    const Case cases[] = {
        {"a screen", [](TwoRooms&) {}, SCREEN, false, true, false},
        {"see-through", [](TwoRooms& l) { l.At(SCREEN).properties = BP_SEE_THROUGH; }, SCREEN, false, true, true},
        {"a door",
         [](TwoRooms& l) {
             l.At(SCREEN).AddLinkedObjectID(AddEntityOf(l.world, "BASIC_DOOR", {120, 50, 50}).GetObjectID());
         },
         SCREEN, false, true, true},
        {"a trigger",
         [](TwoRooms& l) {
             l.At(SCREEN).AddLinkedObjectID(AddEntityOf(l.world, "BOX_TRIGGER", {120, 50, 50}).GetObjectID());
         },
         SCREEN, false, false, true},
        {"clip", [](TwoRooms& l) { l.At(SCREEN).properties = BP_PLAYER_CLIP; }, SCREEN, false, false, true},
        {"bot clip", [](TwoRooms& l) { l.At(SCREEN).properties = BP_BOT_CLIP; }, SCREEN, false, false, true},
        {"environment", [](TwoRooms& l) { l.At(SCREEN).properties = BP_ENVIRONMENT; }, SCREEN, false, false, true},
        {"an occluder", [](TwoRooms& l) { l.At(SCREEN).type = BT_OCCLUDER; }, SCREEN, false, false, true},
        {"see-through without a texture",
         [](TwoRooms& l) {
             l.At(SCREEN).properties = BP_SEE_THROUGH;
             for (Surface& surface : l.At(SCREEN).surfaces)
                 surface.texture.index = 0;
         },
         SCREEN, false, false, true},
        {"without the doorway's portal the rooms see each other",
         [](TwoRooms& l) { l.At(TwoRooms::DOORWAY).properties = BP_PLAYER_CLIP; }, TwoRooms::END_B, true, true, false},
        {"a wall turned inside out", // from eye B its far faces stand out, from outside the near ones do not hide
         [](TwoRooms& l) {
             for (Surface& surface : l.At(TwoRooms::END_B).surfaces)
                 for (TRIANGLE& triangle : surface.tri_indices)
                     std::swap(triangle.i[1], triangle.i[2]);
         },
         TwoRooms::END_B, false, true, false},
    };
    for (const Case& c : cases) {
        TwoRooms level;
        AddShape(level.world, BT_BOX, {118, 0, 0}, {120, 100, 100});
        c.change(level);
        const WorldSubdivide& ws = level.Divide();
        ASSERT_EQ(ws.cell.size(), 2u);
        const auto holds = [&](int cell, int brush) {
            const Ints& list = ws.cell[static_cast<size_t>(cell)].objects;
            return std::count(list.begin(), list.end(), brush);
        };
        EXPECT_EQ(holds(0, c.part), c.in_a) << c.name;
        EXPECT_EQ(holds(1, c.part), c.in_b) << c.name;
        EXPECT_EQ(holds(1, TwoRooms::CRATE_B), c.behind_in_b) << c.name;
    }
}

TEST(Cells, DoubleSidedSurfacesAreSeenFromTheirBacks) {
    for (const bool double_sided : {false, true}) {
        TwoRooms level;
        level.library.by_name["cloth"].doublesided = double_sided;
        const int cloth = AddMaterialRow(level.world, "cloth");
        Brush& curtain = AddShape(level.world, BT_BOX, {-120, 40, -10}, {-119, 60, 10}, cloth);
        curtain.surfaces.erase(curtain.surfaces.begin(), curtain.surfaces.end() - 1);
        curtain.surfaces[0].texture.index = cloth; // the side to -x, away from the eye
        const WorldSubdivide& ws = level.Divide();
        const int index = level.world.GetBrushIndex(&curtain);
        EXPECT_EQ(std::count(ws.cell[0].objects.begin(), ws.cell[0].objects.end(), index), double_sided);
    }
}

TEST(Cells, MarginsOfPixels) {
    TwoRooms level;
    const WorldSubdivide& ws = level.Divide();
    const uint32_t portal_front = ITEM_PORTAL, portal_back = ITEM_PORTAL | ITEM_SIDE_1;
    const auto face = [](std::vector<std::pair<uint32_t, int>> runs) {
        std::vector<uint32_t> pixels;
        for (const auto& [word, count] : runs)
            pixels.insert(pixels.end(), static_cast<size_t>(count), word);
        return pixels;
    };
    struct Case {
        const char* name;
        std::vector<std::vector<std::vector<uint32_t>>> eyes; // faces, pixels
        Ints objects, portals, sides;
        bool outside;
        size_t findings;
    };
    const Case cases[] = {
        {"one pixel", {{face({{3, 1}})}}, {}, {}, {}, false, 0},
        {"two pixels", {{face({{3, 2}})}}, {3}, {}, {}, false, 0},
        {"one pixel on each of two faces", {{face({{3, 1}}), face({{3, 1}})}}, {3}, {}, {}, false, 0},
        {"one pixel from each of two eyes", {{face({{3, 1}})}, {face({{3, 1}})}}, {}, {}, {}, false, 0},
        {"in the order of the second pixel", {{face({{5, 1}, {3, 2}, {5, 1}, {4, 2}})}}, {3, 5, 4}, {}, {}, false, 0},
        {"a word that is no brush", {{face({{16, 9}, {0x7FFFFF, 9}, {ITEM_PORTAL + 1, 9}})}}, {}, {}, {}, false, 0},
        {"1024 of the background", {{face({{ITEM_BACKGROUND, 1024}})}}, {}, {}, {}, false, 0},
        {"1025 of it", {{face({{ITEM_BACKGROUND, 1025}})}}, {}, {}, {}, true, 0},
        {"1024 of it on each face",
         {{face({{ITEM_BACKGROUND, 1024}}), face({{ITEM_BACKGROUND, 1024}})}},
         {},
         {},
         {},
         false,
         0},
        {"one pixel of a portal", {{face({{portal_back, 1}})}}, {}, {}, {}, false, 0},
        {"two of them", {{face({{portal_back, 2}})}}, {}, {0}, {1}, false, 1},
        {"on two faces: noted for each",
         {{face({{portal_front, 2}}), face({{portal_front, 2}})}},
         {},
         {0},
         {0},
         false,
         2},
        {"either side by an eye: one more side",
         {{face({{portal_front, 2}, {2, 2}})}, {face({{portal_back, 2}})}},
         {2},
         {0},
         {0, 1},
         false,
         2},
    };
    for (const Case& c : cases) {
        CellSight sight(ws);
        sight.BeginCell();
        std::vector<PortalFinding> found;
        for (size_t eye = 0; eye < c.eyes.size(); ++eye) {
            sight.BeginEye(static_cast<uint32_t>(100 + eye));
            for (const auto& pixels : c.eyes[eye])
                sight.ReadFace(pixels, found);
        }
        CELL cell;
        sight.Finish(cell);
        EXPECT_EQ(cell.objects, c.objects) << c.name;
        EXPECT_EQ(cell.portals, c.portals) << c.name;
        EXPECT_EQ(cell.portalside, c.sides) << c.name;
        EXPECT_EQ(cell.can_see_outside, c.outside) << c.name;
        EXPECT_EQ(found.size(), c.findings) << c.name;
        for (const PortalFinding& finding : found)
            EXPECT_EQ(finding.portal_id, level.At(TwoRooms::DOORWAY).GetObjectID());
    }
}

// A plate across the view of an eye of a buffer of 8 by 8 pixels, as wide as so many pixels at its distance.
TEST(Cells, ABrushOfTwoPixelsIsSeen) {
    for (const int width : {1, 2}) {
        World world;
        CompileOptions options;
        options.subdivide_world = true;
        options.voxel_size = 8;
        options.threads = 1;
        const auto x = static_cast<float>(width) * 10.0f;
        AddShape(world, BT_BOX, {0, 0, 40}, {x, 10, 41}, 0);
        AddEntityOf(world, "VISIBILITY_EYE", {0, 0, 0});
        WorldSubdivide ws(world, options);
        ws.PrepareBrushes();
        ws.tree.BuildOctalTree(world, {});
        std::string message;
        CellTimes times;
        CompileProgress progress;
        ASSERT_EQ(ws.CreatePortalsAndEyes(message), SubdivideResult::Done);
        ASSERT_EQ(ws.CreateCells(progress, times), SubdivideResult::Done);
        EXPECT_EQ(ws.cell[0].objects, width == 2 ? Ints{0} : Ints{}) << width;
        EXPECT_FALSE(ws.cell[0].can_see_outside) << "64 pixels a face cannot tell";
    }
}

TEST(Cells, OpenLevelsSeeOutside) {
    TwoRooms level;
    level.world.DeleteBrush(TwoRooms::CEILING_B);
    const WorldSubdivide& ws = level.Divide();
    EXPECT_FALSE(ws.cell[0].can_see_outside);
    EXPECT_TRUE(ws.cell[1].can_see_outside);
}

TEST(Cells, VerdictsOfPortals) {
    TwoRooms several;
    Entity& third = several.AddEye({150, 50, -50});
    third.one_cell_only = false;
    EXPECT_EQ(several.Problems(), IdText("Portal #%d - [M]\n  Side 1\n    Cell #1\n", several.At(TwoRooms::DOORWAY)) +
                                      IdText("      Eye #%d\n    Cell #2\n", *several.eye_b) +
                                      IdText("      Eye #%d\n  Side 2\n    Cell #0\n", third) +
                                      IdText("      Eye #%d\nWrong one cell entities\n", *several.eye_a) +
                                      IdText("  Entity #%d (point light)\n    Cell #1\n", *several.lamp_b) +
                                      IdText("      Eye #%d\n    Cell #2\n", *several.eye_b) +
                                      IdText("      Eye #%d\n", third));
    EXPECT_TRUE(several.ws->IsWrongPortal(0));
    EXPECT_EQ(several.lamp_b->cell, 2) << "the last that took it";

    third.AddLinkedObjectID(several.eye_b->GetObjectID());
    EXPECT_EQ(several.Problems(), "") << "linked eyes are one cell";
    EXPECT_EQ(several.ws->cell.size(), 2u);

    TwoRooms none;
    none.world.DeleteEntity(none.IndexOf(*none.eye_b));
    const std::string text = none.Problems();
    EXPECT_NE(text.find("[N]"), std::string::npos) << text;
    EXPECT_NE(text.find(IdText("Wrong entities\n  Entity #%d (point light at 50.00,30.00,0.00)\n", *none.lamp_b)),
              std::string::npos)
        << text;

    TwoRooms same;
    same.eye_a->AddLinkedObjectID(same.eye_b->GetObjectID());
    EXPECT_NE(same.Problems().find("[S]"), std::string::npos);
    EXPECT_EQ(same.ws->cell[0].portals, Ints{0});
    EXPECT_EQ(Sorted(same.ws->cell[0].portalside), (Ints{0, 1})) << "one more side";
    EXPECT_EQ(same.ws->cell[0].entities.size(), 2u);
}

TEST(Cells, LinksOfEyes) {
    TwoRooms level;
    Entity& between = AddEntityOf(level.world, "SCRIPT", {-50, 50, 0});
    level.eye_a->AddLinkedObjectID(between.GetObjectID());
    between.AddLinkedObjectID(level.eye_b->GetObjectID());
    EXPECT_EQ(level.Divide().cell.size(), 2u) << "only eyes are followed";

    // A chain with links in both directions, its first eye last in the table.
    Entity& c = level.AddEye({100, 50, 50});
    Entity& d = level.AddEye({100, 50, -50});
    d.AddLinkedObjectID(c.GetObjectID());
    d.AddLinkedObjectID(level.eye_b->GetObjectID());
    const WorldSubdivide& ws = level.Divide();
    ASSERT_EQ(ws.cell_eye.size(), 2u);
    EXPECT_EQ(std::vector<int>(ws.cell_eye[1].begin(), ws.cell_eye[1].end()),
              (std::vector<int>{level.IndexOf(*level.eye_b), level.IndexOf(d), level.IndexOf(c)}));

    World empty;
    AddEntityOf(empty, "POINT_LIGHT", {0, 0, 0});
    WorldSubdivide none(empty, level.options);
    none.PrepareBrushes();
    std::string message;
    CellTimes times;
    ASSERT_EQ(none.CreatePortalsAndEyes(message), SubdivideResult::Done);
    EXPECT_EQ(none.CreateCells(level.silent, times), SubdivideResult::Done);
    none.FindWrongEntities();
    EXPECT_TRUE(none.cell.empty());
    EXPECT_EQ(none.problem_solver.wrong_entity_ids.size(), 1u);
}

TEST(Cells, AreTheSameOnAnyNumberOfThreads) {
    TwoRooms level;
    level.AddEye({150, 50, -50}); // problems, too
    level.AddEye({-150, 50, 20});
    level.AddEye({-150, 50, -20});
    AddEntityOf(level.world, "ENVIRONMENT", {-20, 90, 90}).variable_name = "World";
    std::string problems;
    std::vector<CELL> cells;
    for (const int threads : {1, 2, 3, 5}) {
        level.options.threads = threads;
        WorldSubdivide& ws = level.Divide();
        ws.problem_solver.ShowProblems(level.world);
        const std::string json = ws.problem_solver.TreeJson(level.world);
        if (threads == 1) {
            problems = json;
            cells = ws.cell;
            EXPECT_GT(json.size(), 500u);
        }
        EXPECT_EQ(json, problems) << threads;
        ASSERT_EQ(ws.cell.size(), cells.size());
        for (size_t c = 0; c < cells.size(); ++c) {
            EXPECT_EQ(ws.cell[c].objects, cells[c].objects);
            EXPECT_EQ(ws.cell[c].entities, cells[c].entities);
            EXPECT_EQ(ws.cell[c].portalside, cells[c].portalside);
        }
    }
}

TEST(Cells, ObserversSeeEveryFaceOfEveryEye) {
    TwoRooms level;
    level.options.threads = 2;
    std::mutex mutex;
    std::set<std::array<int, 3>> faces;
    bool right = true;
    level.options.face_observer = [&](int cell, int eye, int face, const ItemBuffer& buffer) {
        const std::lock_guard lock(mutex);
        faces.insert({cell, eye, face});
        right = right && buffer.Side() == level.options.voxel_size;
    };
    level.Divide();
    EXPECT_EQ(faces.size(), 12u);
    EXPECT_EQ(*faces.begin(), (std::array<int, 3>{0, level.IndexOf(*level.eye_a), 0}));
    EXPECT_TRUE(right);
}

TEST(Cells, TheClipBoxDropsWhatACellCouldHaveHeld) {
    TwoRooms level;
    level.options.clip_box_compilation = true;
    level.options.clip_box = MakeBox({-300, -50, -200}, {-10, 150, 200}); // room A
    AddShape(level.world, BT_BOX, {50, 0, 0}, {60, 10, 10}).properties = BP_PLAYER_CLIP;
    AddShape(level.world, BT_OCCLUDER, {50, 0, 0}, {60, 10, 10});
    Entity& untraced = AddEntityOf(level.world, "POINT_LIGHT", {20, 50, 50});
    untraced.trace_entity = false;
    level.eye_b->AddLinkedObjectID(level.eye_a->GetObjectID()); // outside: not entered
    const WorldSubdivide& ws = level.Divide();
    ASSERT_EQ(ws.cell.size(), 1u);
    EXPECT_EQ(ws.cell_eye[0].GetItemCount(), 1);
    EXPECT_EQ(ws.removed_brush_list, (Ints{5, 6, 7, 8, 9, 10, 11, 12, 15})) << "room B and the middle";
    EXPECT_EQ(ws.removed_entity_list, Ints{level.IndexOf(*level.lamp_b)});
    EXPECT_EQ(level.lamp_b->cell, 0);
    EXPECT_EQ(untraced.cell, -1);
}

class CompiledCells : public ::testing::Test {
protected:
    TempFolder folder;
    CurrentFolder current{folder.Path()};
    Recorder progress;
    std::string message;

    void SetUp() override { std::filesystem::create_directories("Maps"); }
    CompileResult Compile(TwoRooms& level, ProblemSolver* problems = nullptr) {
        level.options.lighting_method = LIGHTING_NONE;
        return CompileWorld(level.world, level.options, "Maps\\Test.few", progress, message, problems);
    }
    WorldFile Read() {
        WorldFile file;
        std::string error;
        EXPECT_TRUE(ReadWorldFile("Maps\\Test.few", file, error)) << error;
        return file;
    }
};

TEST_F(CompiledCells, AreWritten) {
    TwoRooms level;
    Brush& shade = AddShape(level.world, BT_OCCLUDER, {50, 40, -60}, {60, 60, -40});
    shade.AddLinkedObjectID(level.eye_b->GetObjectID());
    ProblemSolver problems;
    ASSERT_EQ(Compile(level, &problems), CompileResult::Written) << message << problems.TreeText();
    for (const char* text : {"Creating Cells...\t\t-> [00h 00m ", "s]\r\n....detection of brushes took 00h 00m ",
                             "s\r\n....detection of entities took 00h 00m ", "s\r\nPortal Visibility...\t\t-> [",
                             "]\r\n\r\n2 Cell(s) created\r\nSound tracing...\t\t-> [",
                             "]\r\nCreating Render Groups...\r\nCalculating Light Range..."})
        EXPECT_NE(progress.all.find(text), std::string::npos) << text << "\n" << progress.all;
    EXPECT_EQ(problems.portals.size(), 1u) << "what was seen, all of it right";
    const WorldFile file = Read();
    ASSERT_EQ(file.cells.size(), 2u);
    EXPECT_EQ(file.cells[1].occluders, (Ints{0, 1, 2, 3, 4, 5}));
    EXPECT_TRUE(file.cells[0].occluders.empty());
    EXPECT_EQ(file.occluders.size(), 6u);
    ASSERT_EQ(file.portals.size(), 1u);
    EXPECT_EQ(file.portals[0].portalowner, TwoRooms::DOORWAY);
    EXPECT_EQ(file.portals[0].cell[0], 1);
    EXPECT_EQ(file.portals[0].cell[1], 0);
    EXPECT_TRUE(file.sounds.empty()) << "one portal";
    // Each cell: its own six brushes, a group each, and those of the three parts of the middle wall.
    EXPECT_EQ(file.cells[0].render_groups, (Ints{0, 1, 2, 3, 4, 5, 12, 13, 14}));
    EXPECT_EQ(file.cells[1].render_groups, (Ints{6, 7, 8, 9, 10, 11, 12, 13, 14}));
    EXPECT_EQ(level.At(TwoRooms::LINTEL).render_group, 14);
    EXPECT_TRUE(level.At(TwoRooms::LINTEL).multi_cell);
    EXPECT_FALSE(level.At(TwoRooms::CRATE_A).multi_cell);
}

TEST_F(CompiledCells, ARingOfPortalsIsLinkedAndTraced) {
    TwoRooms level;
    // A second doorway beside the first: two portals between two cells.
    AddShape(level.world, BT_PORTAL, {-6, 10, 50}, {6, 40, 70}, 0);
    level.At(TwoRooms::MIDDLE_NORTH).properties = BP_PLAYER_CLIP;
    AddShape(level.world, BT_BOX, {-5, 0, 20}, {5, 100, 51});
    AddShape(level.world, BT_BOX, {-5, 0, 69}, {5, 100, 100});
    AddShape(level.world, BT_BOX, {-5, 39, 50}, {5, 100, 70});
    AddShape(level.world, BT_BOX, {-5, 0, 50}, {5, 11, 70});
    ProblemSolver problems;
    ASSERT_EQ(Compile(level, &problems), CompileResult::Written) << problems.TreeText();
    const WorldFile file = Read();
    ASSERT_EQ(file.portals.size(), 2u);
    for (int side = 0; side < 2; ++side) {
        EXPECT_EQ(file.portals[0].reachable[side], Ints{1});
        EXPECT_EQ(file.portals[1].reachable[side], Ints{0});
    }
    ASSERT_EQ(file.sounds.size(), 1u) << "the pair (1, 0)";
    EXPECT_EQ(file.sounds[0].distance, 0);
    EXPECT_EQ(file.sounds[0].portal_start, file.sounds[0].portal_end);
}

TEST_F(CompiledCells, ProblemsLeaveTheOldFile) {
    WriteBytes("Maps/Test.few", "old");
    TwoRooms level;
    level.eye_a->AddLinkedObjectID(level.eye_b->GetObjectID());
    ProblemSolver problems;
    EXPECT_EQ(Compile(level, &problems), CompileResult::Problems);
    EXPECT_EQ(message, "");
    EXPECT_EQ(ReadBytes("Maps/Test.few"), "old");
    EXPECT_EQ(problems.Tree().size(), 1u);
    const std::string end = "1 Cell(s) created\r\n\r\n!!!! Compilation problems found !!!!\r\n\r\n";
    ASSERT_GE(progress.all.size(), end.size());
    EXPECT_EQ(progress.all.substr(progress.all.size() - end.size()), end);
}

TEST_F(CompiledCells, OfAClipBox) {
    TwoRooms level;
    level.options.clip_box_compilation = true;
    level.options.clip_box = MakeBox({-300, -50, -200}, {20, 150, 200}); // room A and the doorway
    ASSERT_EQ(Compile(level), CompileResult::Written) << message;
    EXPECT_EQ(progress.all.find("Sound tracing"), std::string::npos);
    const WorldFile file = Read();
    ASSERT_EQ(file.cells.size(), 3u);
    EXPECT_EQ(file.portals[0].cell[0], 2) << "no cell: the empty one behind the removed things";
    EXPECT_EQ(file.portals[0].cell[1], 0);
    EXPECT_EQ(file.cells[1].objects, (Ints{TwoRooms::END_B, TwoRooms::CRATE_B}));
    EXPECT_EQ(file.cells[1].entities, Ints{level.IndexOf(*level.lamp_b)});
    EXPECT_TRUE(file.cells[2].objects.empty());
}

TEST_F(CompiledCells, TheSameBytesOnAnyNumberOfThreads) {
    TwoRooms level;
    level.options.create_render_groups = true;
    std::string first;
    for (const int threads : {1, 2, 3}) {
        level.options.threads = threads;
        ASSERT_EQ(Compile(level), CompileResult::Written);
        const std::string bytes = ReadBytes("Maps/Test.few");
        if (first.empty())
            first = bytes;
        EXPECT_TRUE(bytes == first) << threads;
    }
}

TEST_F(CompiledCells, StopWhereverTheyAreAsked) {
    WriteBytes("Maps/Test.few", "old");
    TwoRooms level;
    level.options.voxel_size = 8;
    int stops = 0;
    for (progress.stop_at = 0;; ++progress.stop_at, ++stops) {
        progress.asked = 0;
        const CompileResult result = Compile(level);
        if (result == CompileResult::Written)
            break;
        ASSERT_EQ(result, CompileResult::Stopped);
        EXPECT_EQ(ReadBytes("Maps/Test.few"), "old");
        ASSERT_LT(stops, 300);
    }
    EXPECT_GT(stops, 10);
}
