#include <gtest/gtest.h>

#include "compiler/Levels.h"
#include "compiler/WorldSubdivide.h"
#include "foundation/Desktop.h"

namespace {

struct Level {
    World world;
    CompileOptions options;
    WorldSubdivide ws{world, options};
    std::string message;

    Level() { options.subdivide_world = true; }
    SubdivideResult Create() { return ws.CreatePortalsAndEyes(message); }
};

void ExpectNear(const D3DVECTOR& a, const D3DVECTOR& b, const char* name) {
    EXPECT_NEAR(Magnitude(a - b), 0, 1e-4f) << name << ": " << a.x << " " << a.y << " " << a.z;
}

} // namespace

TEST(Portals, StandMidwayInTheirBoxes) {
    struct Case {
        const char* name;
        D3DVECTOR max; // the box from 0
        D3DVECTOR normal, centre;
    };
    const Case cases[] = {
        {"thin in x", {8, 60, 40}, {1, 0, 0}, {4, 30, 20}},
        {"thin in y", {60, 8, 40}, {0, 1, 0}, {30, 4, 20}},
        {"thin in z", {60, 40, 8}, {0, 0, -1}, {30, 20, 4}},
        {"a cube: the first of the sides", {40, 40, 40}, {0, 1, 0}, {20, 20, 20}},
    };
    for (const Case& c : cases) {
        Level level;
        AddShape(level.world, BT_BOX, {0, 0, 0}, {1, 1, 1});
        AddShape(level.world, BT_PORTAL, {0, 0, 0}, c.max);
        ASSERT_EQ(level.Create(), SubdivideResult::Done);
        ASSERT_EQ(level.ws.portal.size(), 1u);
        const PORTAL& portal = level.ws.portal[0];
        EXPECT_EQ(portal.portalowner, 1);
        ExpectNear(portal.normal[0], c.normal, c.name);
        ExpectNear(portal.normal[1], -c.normal, c.name);
        D3DVECTOR sum;
        for (const D3DVECTOR& corner : portal.bounds) {
            sum += corner;
            EXPECT_NEAR(DotProduct(corner - c.centre, c.normal), 0, 1e-4f) << c.name;
        }
        ExpectNear(sum * 0.25f, c.centre, c.name);
        ExpectNear(portal.pivot, c.max * 0.5f, c.name);
        EXPECT_EQ(portal.partindices[0], (std::array<uint16_t, 6>{0, 1, 2, 0, 2, 3}));
        EXPECT_EQ(portal.partindices[1], (std::array<uint16_t, 6>{2, 1, 0, 3, 2, 0}));
        EXPECT_EQ(portal.cell, (std::array<int32_t, 2>{-1, -1}));
        const auto turned = [&](size_t side) {
            const auto& i = portal.partindices[side];
            return DotProduct(
                CrossProduct(portal.bounds[i[1]] - portal.bounds[i[0]], portal.bounds[i[2]] - portal.bounds[i[0]]),
                portal.normal[side]);
        };
        EXPECT_GT(turned(0), 0);
        EXPECT_GT(turned(1), 0);
    }
}

TEST(Portals, OccludersAreTheSixSidesOfTheirBoxes) {
    Level level;
    Brush& box = AddShape(level.world, BT_OCCLUDER, {0, 0, 0}, {10, 20, 30});
    ASSERT_EQ(level.Create(), SubdivideResult::Done);
    ASSERT_EQ(level.ws.occluder.size(), 6u);
    for (size_t side = 0; side < 6; ++side) {
        const OCCLUDER& occluder = level.ws.occluder[side];
        EXPECT_EQ(occluder.owner, 0);
        for (size_t k = 0; k < 4; ++k)
            EXPECT_EQ(occluder.bounds[k], box.surfaces[side].vertices[k]);
        EXPECT_NEAR(occluder.plane.get_cos(occluder.bounds[2]), 0, 1e-4f);
        EXPECT_LT(occluder.plane.get_cos({5, 10, 15}), 0) << "the middle lies behind every side";
    }
}

TEST(Portals, WhatIsNoBoxIsPassedOver) {
    HeadlessDesktop desktop;
    SetDesktop(&desktop);
    ForgetNotices();
    Level level;
    Brush& open = AddShape(level.world, BT_PORTAL, {0, 0, 0}, {8, 60, 40});
    open.surfaces.pop_back();
    Brush& cut = AddShape(level.world, BT_PORTAL, {0, 0, 0}, {8, 60, 40});
    cut.surfaces[2].vertices.pop_back();
    Brush& bare = AddShape(level.world, BT_OCCLUDER, {0, 0, 0}, {8, 60, 40});
    bare.surfaces.clear();
    AddShape(level.world, BT_PORTAL, {0, 0, 0}, {8, 60, 40});
    for (int round = 0; round < 2; ++round)
        ASSERT_EQ(level.Create(), SubdivideResult::Done);
    ASSERT_EQ(level.ws.portal.size(), 1u);
    EXPECT_EQ(level.ws.portal[0].portalowner, 3);
    EXPECT_TRUE(level.ws.occluder.empty());
    ASSERT_EQ(desktop.notices.size(), 3u) << "once each";
    EXPECT_NE(desktop.notices[1].find("portal #" + std::to_string(cut.GetObjectID())), std::string::npos);
    EXPECT_NE(desktop.notices[2].find("occluder #"), std::string::npos);
    SetDesktop(nullptr);
}

TEST(Portals, LimitsAreNamed) {
    struct Case {
        const char* name;
        int portals, occluders, eyes;
        bool clip_box;
        const char* number; // null: within the limits
    };
    const Case cases[] = {
        {"portals", MAX_PORTALS, 0, 0, false, nullptr},
        {"portals", MAX_PORTALS + 1, 0, 0, false, "1024 portals"},
        {"occluders", 0, MAX_OCCLUDERS / 6, 0, false, nullptr},
        {"occluders", 0, MAX_OCCLUDERS / 6 + 1, 0, false, "1024 occluder"},
        {"cells", 0, 0, MAX_CELLS, false, nullptr},
        {"cells", 0, 0, MAX_CELLS + 1, false, "512 cells"},
        {"cells, two more to come", 0, 0, MAX_CELLS - 2, true, nullptr},
        {"cells, two more to come", 0, 0, MAX_CELLS - 1, true, "510 cells"},
    };
    for (const Case& c : cases) {
        Level level;
        for (int k = 0; k < c.portals; ++k)
            AddShape(level.world, BT_PORTAL, {0, 0, 0}, {8, 60, 40});
        for (int k = 0; k < c.occluders; ++k)
            AddShape(level.world, BT_OCCLUDER, {0, 0, 0}, {8, 60, 40});
        for (int k = 0; k < c.eyes; ++k)
            AddEntityOf(level.world, "VISIBILITY_EYE", {0, 0, 0});
        level.options.clip_box_compilation = c.clip_box;
        EXPECT_EQ(level.Create(), c.number ? SubdivideResult::LimitReached : SubdivideResult::Done) << c.name;
        EXPECT_EQ(level.message.empty(), !c.number);
        if (c.number) {
            EXPECT_NE(level.message.find(c.number), std::string::npos) << level.message;
        }
    }
}

TEST(Portals, SeeTheOthersOfTheirCell) {
    Level level;
    for (int k = 0; k < 4; ++k)
        AddShape(level.world, BT_PORTAL, {0, 0, 0}, {8, 60, 40});
    ASSERT_EQ(level.Create(), SubdivideResult::Done);
    WorldSubdivide& ws = level.ws;
    // Cell 0 lists portals 2, 0, 1; cell 1 lists 0 and 3; cell 2 lists 3 and 1. Portal 2 has nothing behind it.
    ws.cell.resize(3);
    ws.cell[0].portals = {2, 0, 1};
    ws.cell[0].portalside = {0, 0, 1};
    ws.cell[1].portals = {0, 3};
    ws.cell[1].portalside = {1, 0};
    ws.cell[2].portals = {3, 1};
    ws.cell[2].portalside = {0, 0};
    for (int p = 0; p < 4; ++p)
        for (int side = 0; side < 2; ++side)
            ws.PortalVisibility(p, side);
    using Ints = std::vector<int32_t>;
    EXPECT_EQ(ws.portal[0].PVP[0], (Ints{1, 2})) << "in portal order";
    EXPECT_EQ(ws.portal[0].PVP[1], Ints{3});
    EXPECT_EQ(ws.portal[1].PVP[0], Ints{3});
    EXPECT_EQ(ws.portal[2].PVP[1], Ints{});
    EXPECT_EQ(ws.portal[2].cell, (std::array<int32_t, 2>{0, -1}));
    EXPECT_EQ(ws.portal[3].PVP[0], Ints{0}) << "the first of its cells";
    EXPECT_EQ(ws.GetPortalCell(3, -1), 1);
    EXPECT_EQ(ws.GetPortalCell(1, 0), 2);
    EXPECT_EQ(ws.GetPortalCell(3, 1), -1);
    EXPECT_TRUE(ws.IsWrongPortal(3));
    EXPECT_FALSE(ws.IsWrongPortal(0));
}
