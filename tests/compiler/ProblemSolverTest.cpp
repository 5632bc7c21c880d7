#include <gtest/gtest.h>

#include "compiler/Levels.h"
#include "compiler/ProblemSolver.h"

TEST(ProblemSolver, VerdictsOfPortals) {
    struct Sight {
        int side, cell;
    };
    struct Case {
        std::vector<Sight> sights;
        PortalVerdict verdict;
        const char* what;
    };
    const Case cases[] = {
        {{{0, 1}, {1, 2}}, PORTAL_FINE, "two cells"},
        {{{0, 1}, {0, 1}, {1, 2}}, PORTAL_FINE, "the same cell twice"},
        {{{0, 1}, {0, 3}, {1, 2}}, PORTAL_MULTIPLE_CELLS, "two cells on a side"},
        {{{1, 1}}, PORTAL_NO_CELL, "only side 1"},
        {{{0, 1}, {0, 2}}, PORTAL_NO_CELL, "no cell wins over several"},
        {{{0, 1}, {1, 1}}, PORTAL_SAME_CELL, "one cell on both"},
        {{{0, 1}, {0, 2}, {1, 1}}, PORTAL_SAME_CELL, "it comes first in both"},
        {{{0, 2}, {0, 1}, {1, 1}}, PORTAL_MULTIPLE_CELLS, "it comes second on side 0"},
    };
    World world;
    for (const Case& c : cases) {
        ProblemSolver solver;
        for (const Sight& sight : c.sights)
            solver.AddPortalInfo(40, sight.side, sight.cell, 7);
        EXPECT_EQ(solver.portals[0].Verdict(), c.verdict) << c.what;
        EXPECT_EQ(solver.ShowProblems(world), c.verdict != PORTAL_FINE) << c.what;
    }
}

TEST(ProblemSolver, TheTreeNamesEveryFinding) {
    World world;
    Entity& light = AddEntityOf(world, "POINT_LIGHT", {1.5f, -2, 3.126f});
    Entity& sound = AddEntityOf(world, "SOUND_EFFECTOR", {});
    ProblemSolver solver;
    solver.AddPortalInfo(900, 1, 4, 11);
    solver.AddPortalInfo(900, 1, 4, 12);
    solver.AddPortalInfo(900, 1, 4, 11); // seen again by the same eye
    solver.AddWrongEntity(light.GetObjectID());
    solver.AddWrongEntity(0x7FFFFFFF); // gone meanwhile
    solver.AddOneCellOnlyEntity(light.GetObjectID(), 1, 5);
    solver.AddOneCellOnlyEntity(light.GetObjectID(), 1, 6); // two eyes of one cell are no problem
    solver.AddOneCellOnlyEntity(sound.GetObjectID(), 2, 5);
    solver.AddOneCellOnlyEntity(sound.GetObjectID(), 3, 8);
    EXPECT_TRUE(solver.ShowProblems(world));
    const std::string light_id = std::to_string(light.GetObjectID()), sound_id = std::to_string(sound.GetObjectID());
    EXPECT_EQ(solver.TreeText(), "Portal #900 - [N]\n"
                                 "  Side 1\n"
                                 "  Side 2\n"
                                 "    Cell #4\n"
                                 "      Eye #11\n"
                                 "      Eye #12\n"
                                 "Wrong entities\n"
                                 "  Entity #" +
                                     light_id +
                                     " (point light at 1.50,-2.00,3.13)\n"
                                     "Wrong one cell entities\n"
                                     "  Entity #" +
                                     sound_id +
                                     " (sound effector)\n"
                                     "    Cell #2\n"
                                     "      Eye #5\n"
                                     "    Cell #3\n"
                                     "      Eye #8\n");
    const std::string json = solver.TreeJson(world);
    for (const char* part : {"\"verdict\": \"no cell\"", "\"type\": \"POINT_LIGHT\"", "\"cell\": 3"})
        EXPECT_NE(json.find(part), std::string::npos) << part;
    solver.Reset();
    EXPECT_FALSE(solver.ShowProblems(world));
    EXPECT_EQ(solver.TreeText(), "");
}
