#include <gtest/gtest.h>

#include "compiler/Levels.h"

namespace {

std::vector<int> Groups(const World& world) {
    std::vector<int> groups;
    for (const auto& brush : world.brush)
        groups.push_back(brush->render_group);
    return groups;
}

CompileOptions Merging() {
    CompileOptions options;
    options.create_render_groups = true;
    return options;
}

} // namespace

TEST(RenderGroups, WithoutMergingEachBrushIsAGroup) {
    World world;
    for (int k = 0; k < 3; ++k)
        AddShape(world, BT_BOX, {0, 0, 0}, {8, 8, 8});
    AddShape(world, BT_PORTAL, {0, 0, 0}, {8, 8, 8});
    world.brush[1]->properties = BP_ENVIRONMENT;
    Prepared prepared(world);
    EXPECT_EQ(Groups(world), (std::vector<int>{0, 2, 1, -1})) << "the sky's group comes last, and no cell lists it";
    ASSERT_EQ(prepared.ws.cell.size(), 1u);
    EXPECT_EQ(prepared.ws.cell[0].objects, (std::vector<int32_t>{0, 2}));
    EXPECT_EQ(prepared.ws.cell[0].render_group_list, (std::vector<int32_t>{0, 1}));
}

TEST(RenderGroups, SmallBrushesMergeByVoxel) {
    World world;
    // The cell spans 1000 by 100 by 100: its grid has trunc(1732 / 256) = 6 voxels of 288.7 along x, one on the others.
    AddShape(world, BT_BOX, {900, 0, 0}, {1000, 100, 100}); // voxel 3: 866 to 1154
    AddShape(world, BT_BOX, {0, 0, 0}, {10, 10, 10});       // voxel 0
    AddShape(world, BT_BOX, {280, 0, 0}, {300, 10, 10});    // touches 0 and 1: the first
    AddShape(world, BT_BOX, {290, 0, 0}, {300, 10, 10});    // voxel 1
    AddShape(world, BT_BOX, {0, 0, 0}, {295, 10, 10});      // small enough: voxel 0
    AddShape(world, BT_BOX, {0, 0, 0}, {296, 10, 10});      // too long
    AddShape(world, BT_BOX, {0, 0, 0}, {10, 10, 10}).properties = BP_DESTROYABLE;
    AddShape(world, BT_BOX, {0, 0, 0}, {10, 10, 10}).properties = BP_ALWAYS_VISIBLE;
    AddShape(world, BT_BOX, {0, 0, 0}, {10, 10, 10}).properties = BP_CROSS_PORTALS;
    Prepared prepared(world, Merging());
    EXPECT_EQ(Groups(world), (std::vector<int>{2, 0, 0, 1, 0, 3, 4, 5, 6}));
    EXPECT_EQ(prepared.ws.render_group.size(), 7u);
    EXPECT_FALSE(world.brush[0]->separated);
    EXPECT_TRUE(world.brush[5]->separated);
}

TEST(RenderGroups, ABrushWithoutFacesInTheGridStaysAlone) {
    World world;
    AddShape(world, BT_BOX, {0, 0, 0}, {100, 100, 100});
    AddShape(world, BT_BOX, {10, 10, 10}, {20, 20, 20}).surfaces.clear();
    world.brush[1]->curved_surfaces.clear();
    Prepared prepared(world, Merging());
    EXPECT_EQ(world.brush[1]->render_group, -1);
}

TEST(Cells, TheClipBoxDropsWhatLiesOutside) {
    World world;
    AddShape(world, BT_BOX, {0, 0, 0}, {8, 8, 8});
    AddShape(world, BT_BOX, {100, 0, 0}, {108, 8, 8}); // touches the clip box
    AddShape(world, BT_BOX, {101, 0, 0}, {108, 8, 8});
    AddShape(world, BT_BOX, {101, 0, 0}, {108, 8, 8}).properties = BP_LADDER; // would be in no cell anyway
    AddEntityOf(world, "INFO", {100, 0, 0});
    AddEntityOf(world, "INFO", {100.5f, 0, 0});
    AddEntityOf(world, "visibility_eye", {0, 0, 0});
    CompileOptions options;
    options.clip_box_compilation = true;
    options.clip_box = MakeBox({-100, -100, -100}, {100, 100, 100});
    Prepared prepared(world, options);
    prepared.ws.AddRemovedCells();
    ASSERT_EQ(prepared.ws.cell.size(), 3u);
    EXPECT_EQ(prepared.ws.cell[0].objects, (std::vector<int32_t>{0, 1}));
    EXPECT_EQ(prepared.ws.cell[0].entities, (std::vector<int32_t>{0}));
    EXPECT_TRUE(prepared.ws.cell[0].can_see_outside);
    EXPECT_EQ(prepared.ws.cell[1].objects, (std::vector<int32_t>{2}));
    EXPECT_EQ(prepared.ws.cell[1].entities, (std::vector<int32_t>{1}));
    EXPECT_TRUE(prepared.ws.cell[2].objects.empty());
    EXPECT_EQ(prepared.ws.GetBrushCell(1), 0);
    EXPECT_EQ(prepared.ws.GetBrushCell(2), -1);
    EXPECT_EQ(world.entity[2]->cell, -1);
}
