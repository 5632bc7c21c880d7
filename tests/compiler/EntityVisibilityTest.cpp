#include "compiler/EntityVisibility.h"

#include <gtest/gtest.h>

#include "compiler/TwoRooms.h"
#include "foundation/Log.h"
#include "foundation/TempFolder.h"

namespace {

using Ints = std::vector<int32_t>;

bool Holds(const WorldSubdivide& ws, int cell, int entity) {
    const Ints& list = ws.cell[static_cast<size_t>(cell)].entities;
    return std::count(list.begin(), list.end(), entity) == 1;
}

} // namespace

TEST(EntityVisibility, WhoStandsInWhichCell) {
    struct Case {
        const char* name;
        void (*change)(TwoRooms&, Entity& guest); // a light at (-60, 20, 50), seen by eye A
        bool in_a, in_b, wrong, twice;
    };
    const Case cases[] = {
        {"in sight", [](TwoRooms&, Entity&) {}, true, false, false, false},
        {"behind a wall",
         [](TwoRooms&, Entity& e) {
             e.position = {-60, 20, 150};
         },
         false, false, true, false},
        {"a corona behind a wall",
         [](TwoRooms&, Entity& e) {
             e.position = {-60, 20, 150};
             e.str_type = "Corona";
         },
         false, false, false, false},
        {"out of tracing", [](TwoRooms&, Entity& e) { e.trace_entity = false; }, false, false, false, false},
        {"a traced eye is wrong",
         [](TwoRooms& l, Entity& e) {
             e.str_type = "VISIBILITY_EYE";
             e.AddLinkedObjectID(l.eye_a->GetObjectID());
         },
         false, false, true, false},
        {"linked to the other eye", [](TwoRooms& l, Entity& e) { e.AddLinkedObjectID(l.eye_b->GetObjectID()); }, false,
         true, false, false},
        {"the first eye link decides",
         [](TwoRooms& l, Entity& e) {
             e.AddLinkedObjectID(l.lamp_a->GetObjectID());
             e.AddLinkedObjectID(l.eye_b->GetObjectID());
             e.AddLinkedObjectID(l.eye_a->GetObjectID());
         },
         false, true, false, false},
        {"behind a crate",
         [](TwoRooms& l, Entity&) {
             AddShape(l.world, BT_BOX, {-80, 0, 0}, {-70, 90, 60});
         },
         false, false, true, false},
        {"behind a see-through one",
         [](TwoRooms& l, Entity&) {
             AddShape(l.world, BT_BOX, {-80, 0, 0}, {-70, 90, 60}).properties = BP_SEE_THROUGH;
         },
         true, false, false, false},
        {"behind a hidden one",
         [](TwoRooms& l, Entity&) {
             AddShape(l.world, BT_BOX, {-80, 0, 0}, {-70, 90, 60}).properties = BP_HIDDEN;
         },
         true, false, false, false},
        {"behind glass",
         [](TwoRooms& l, Entity&) {
             AddShape(l.world, BT_BOX, {-80, 0, 0}, {-70, 90, 60}, 2);
         },
         true, false, false, false},
        {"behind a portal in the room",
         [](TwoRooms& l, Entity&) {
             AddShape(l.world, BT_PORTAL, {-80, 0, 0}, {-70, 90, 60});
         },
         false, false, true, false},
        {"through the doorway without its portal",
         [](TwoRooms& l, Entity& e) {
             l.At(TwoRooms::DOORWAY).type = BT_OCCLUDER;
             e.position = {-60, 50, 0};
         },
         true, true, false, true},
        {"the same, in any number of cells",
         [](TwoRooms& l, Entity& e) {
             l.At(TwoRooms::DOORWAY).type = BT_OCCLUDER;
             e.position = {-60, 50, 0};
             e.one_cell_only = false;
         },
         true, true, false, false},
    };
    for (const Case& c : cases) {
        TwoRooms level;
        level.lamp_b->one_cell_only = false; // without the portal eye A sees it
        Entity& guest = AddEntityOf(level.world, "POINT_LIGHT", {-60, 20, 50});
        c.change(level, guest);
        WorldSubdivide& ws = level.Divide();
        ASSERT_EQ(ws.cell.size(), 2u);
        const int index = level.IndexOf(guest);
        EXPECT_EQ(Holds(ws, 0, index), c.in_a) << c.name;
        EXPECT_EQ(Holds(ws, 1, index), c.in_b) << c.name;
        EXPECT_EQ(guest.cell, c.in_b ? 1 : c.in_a ? 0 : -1) << c.name;
        const auto& wrong = ws.problem_solver.wrong_entity_ids;
        EXPECT_EQ(std::count(wrong.begin(), wrong.end(), guest.GetObjectID()), c.wrong) << c.name;
        bool twice = false;
        for (const OneCellEntity& entity : ws.problem_solver.one_cell_entities)
            twice = twice || (entity.entity_id == guest.GetObjectID() && entity.cells.size() > 1);
        EXPECT_EQ(twice, c.twice) << c.name;
    }
}

TEST(EntityVisibility, EveryCellHasTheWorldsDefaults) {
    for (const char* type : {"ENVIRONMENT", "AMBIENT_LIGHT", "SOUND_EFFECTOR"}) {
        TwoRooms level;
        Entity& everywhere = AddEntityOf(level.world, type, {0, 500, 0}); // no eye sees it
        everywhere.variable_name = "World";
        Entity& own = AddEntityOf(level.world, type, {-60, 20, 50});
        Entity& other = AddEntityOf(level.world, type, {0, 500, 0});
        other.trace_entity = false;
        const WorldSubdivide& ws = level.Divide();
        EXPECT_FALSE(Holds(ws, 0, level.IndexOf(everywhere))) << type << ": the cell has its own";
        EXPECT_TRUE(Holds(ws, 0, level.IndexOf(own))) << type;
        EXPECT_TRUE(Holds(ws, 1, level.IndexOf(everywhere))) << type;
        EXPECT_FALSE(Holds(ws, 1, level.IndexOf(other))) << type << ": not the world's";
        EXPECT_EQ(everywhere.cell, 1);
        EXPECT_EQ(ws.GetAmbientFromCell(TwoRooms::CRATE_B),
                  std::string(type) == "AMBIENT_LIGHT" ? &everywhere : nullptr);
        EXPECT_TRUE(ws.problem_solver.wrong_entity_ids.empty());
    }
}

TEST(EntityVisibility, RaysAndWhatStopsThem) {
    TwoRooms level;
    WorldSubdivide& ws = level.Divide();
    const VisibilityScene scene(ws);
    const StageState state;
    VisibilityRays rays(scene, state);
    const auto hits = [&](const VisibilityScene::RayBrush& brush, const D3DVECTOR& from, const D3DVECTOR& to) {
        return rays.RayIntersectVisibility(brush, from, to - from);
    };
    const auto& crate = scene.brushes[TwoRooms::CRATE_A]; // -160..-140, 0..20, -60..-40
    EXPECT_TRUE(hits(crate, {-100, 10, -50}, {-150, 10, -50})) << "into it";
    EXPECT_TRUE(hits(crate, {-100, 10, -50}, {-140, 10, -50})) << "up to its side";
    EXPECT_FALSE(hits(crate, {-100, 10, -50}, {-139, 10, -50})) << "ends before it";
    EXPECT_FALSE(hits(crate, {-150, 10, -50}, {-100, 10, -50})) << "out of it: backs do not count";
    EXPECT_FALSE(hits(crate, {-100, 30, -50}, {-190, 30, -50})) << "over it";
    const auto& portal = scene.portals[0];
    EXPECT_TRUE(hits(portal, {-50, 30, 0}, {50, 30, 0}));
    EXPECT_TRUE(hits(portal, {50, 30, 0}, {-50, 30, 0})) << "from either side";
    EXPECT_FALSE(hits(portal, {-50, 30, 0}, {-3, 30, 0})) << "the quad in its middle, not the brush";
    EXPECT_FALSE(hits(portal, {-50, 90, 0}, {50, 90, 0}));

    EXPECT_TRUE(rays.TestEyeVisibility(TwoRooms::CRATE_A, level.eye_a->position));
    EXPECT_FALSE(rays.TestEyeVisibility(TwoRooms::CRATE_B, level.eye_a->position));
    EXPECT_FALSE(rays.TestEyeVisibility(TwoRooms::DOORWAY, level.eye_a->position)) << "portals are not asked";
    const D3DVECTOR seen[3] = {{-140, 0, -60}, {-140, 20, -60}, {-140, 10, -30}};
    EXPECT_FALSE(rays.TriangleVisibility(TwoRooms::CRATE_A, seen, level.eye_a->position));
    EXPECT_TRUE(rays.TriangleVisibility(TwoRooms::CRATE_A, seen, level.eye_b->position)) << "behind wall and portal";
}

TEST(EntityVisibility, ADoorHidesNoFaceButAnEntity) {
    TwoRooms level;
    Brush& door = AddShape(level.world, BT_BOX, {-80, 0, 0}, {-70, 90, 60});
    door.AddLinkedObjectID(AddEntityOf(level.world, "BASIC_DOOR", {-90, 50, 10}).GetObjectID());
    Brush& pane = AddShape(level.world, BT_BOX, {-61, 19, 49}, {-59, 21, 51});
    pane.properties = BP_SEE_THROUGH;
    Entity& guest = AddEntityOf(level.world, "POINT_LIGHT", {-60, 20, 60});
    const WorldSubdivide& ws = level.Divide();
    const Ints& objects = ws.cell[0].objects;
    EXPECT_EQ(std::count(objects.begin(), objects.end(), level.world.GetBrushIndex(&door)), 1);
    EXPECT_EQ(std::count(objects.begin(), objects.end(), level.world.GetBrushIndex(&pane)), 1) << "behind the door";
    EXPECT_FALSE(Holds(ws, 0, level.IndexOf(guest)));
}

TEST(EntityVisibility, OfAnUpdateIsThatOfAFullCompile) {
    TwoRooms level;
    Brush& shade = AddShape(level.world, BT_OCCLUDER, {50, 40, -60}, {60, 60, -40});
    shade.AddLinkedObjectID(level.eye_b->GetObjectID());
    const std::vector<CELL> full = level.Divide().cell;
    for (const int threads : {1, 3}) {
        level.options.threads = threads;
        WorldSubdivide update(level.world, level.options);
        update.PrepareBrushes();
        update.tree.BuildOctalTree(level.world, {});
        std::string message;
        ASSERT_EQ(update.SubdivideEntities(level.silent, message), SubdivideResult::Done);
        ASSERT_EQ(update.cell.size(), full.size());
        for (size_t c = 0; c < full.size(); ++c) {
            EXPECT_EQ(update.cell[c].entities, full[c].entities);
            EXPECT_EQ(update.cell[c].occluders, full[c].occluders);
            EXPECT_TRUE(update.cell[c].objects.empty());
        }
    }
    level.options.subdivide_world = false;
    WorldSubdivide whole(level.world, level.options);
    whole.PrepareBrushes();
    std::string message;
    ASSERT_EQ(whole.SubdivideEntities(level.silent, message), SubdivideResult::Done);
    EXPECT_EQ(whole.cell.size(), 1u);
    EXPECT_EQ(whole.cell[0].entities.size(), 2u);
}

TEST(EntityVisibility, TheTracedEntityIsLogged) {
    TempFolder folder;
    CurrentFolder current{folder.Path()};
    std::filesystem::create_directories("Marrowstead");
    TwoRooms level;
    level.options.traceing_id = level.lamp_b->GetObjectID();
    std::string first;
    for (const int threads : {1, 3}) {
        level.options.threads = threads;
        std::filesystem::remove("Marrowstead/trace.log");
        level.Divide();
        const std::string text = ReadBytes("Marrowstead/trace.log");
        const auto id = [](const Entity& entity) { return std::to_string(entity.GetObjectID()); };
        for (const std::string& line :
             {std::string("\n\n-----------------------------------------------\nStarting traceing entity id = ") +
                  id(*level.lamp_b) + " for cell 0\n..entity is being traced with eye id = " + id(*level.eye_a) + "\n",
              std::string("\n..no obstacle found among normal brushes\n..obstacle FOUND among portals\n"),
              " for cell 1\n..entity is being traced with eye id = " + id(*level.eye_b) + "\n",
              "\n....RayIntersectVisibility - s_math.BoxRayIntersectFast (brush id = " +
                  std::to_string(level.At(TwoRooms::CRATE_B).GetObjectID()) + ") returned false",
              std::string("\n..no obstacle found among portals\n..ENTITY ADDED TO ENTITY LIST")})
            EXPECT_NE(text.find(line), std::string::npos) << line << "\nin\n" << text;
        EXPECT_LT(text.find("for cell 0"), text.find("for cell 1"));
        if (first.empty())
            first = text;
        EXPECT_EQ(text, first);
    }
}
