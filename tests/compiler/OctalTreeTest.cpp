#include "compiler/OctalTree.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>

#include "compiler/Levels.h"

namespace {

OctalTree Build(const World& world) {
    OctalTree tree;
    EXPECT_EQ(tree.BuildOctalTree(world, {}), OctalTree::BuildResult::Built);
    return tree;
}

// Entities that make the root the cube of half side 512 about the origin.
void MakeRootOf1024(World& world) {
    AddEntityOf(world, "INFO", {-480, -480, -480});
    AddEntityOf(world, "INFO", {480, 480, 480});
}

} // namespace

TEST(OctalTree, OneEntityGivesEightEmptyChildrenInTheirNumbering) {
    World world;
    AddEntityOf(world, "INFO", {100, 200, 300});
    const OctalTree tree = Build(world);
    ASSERT_EQ(tree.GetLeafCount(), 9);
    const OCTAL_LEAF& root = tree.GetOctalLeaf(0);
    EXPECT_EQ(root.size, 64);
    EXPECT_EQ(root.half, (D3DVECTOR{100, 200, 300}));
    EXPECT_EQ(root.parent, -1);
    const D3DVECTOR mins[8] = {{68, 200, 300}, {100, 200, 300}, {100, 200, 268}, {68, 200, 268},
                               {68, 168, 300}, {100, 168, 300}, {100, 168, 268}, {68, 168, 268}};
    for (int k = 0; k < 8; ++k) {
        const OCTAL_LEAF& child = tree.GetOctalLeaf(root.child[static_cast<size_t>(k)]);
        EXPECT_EQ(child.min, mins[k]) << k;
        EXPECT_EQ(child.max, (mins[k] + D3DVECTOR{32, 32, 32})) << k;
        EXPECT_EQ(child.type, OCTAL_EMPTY);
        EXPECT_EQ(child.parent, 0);
        EXPECT_EQ(tree.FindLeafRecursive(child.half, 0), root.child[static_cast<size_t>(k)]) << k;
    }
    EXPECT_EQ(Build(World()).GetOctalLeaf(0).size, 64) << "a world of nothing";
}

TEST(OctalTree, TheLongestSideMakesTheCube) {
    World world;
    AddEntityOf(world, "INFO", {0, 0, 0});
    AddEntityOf(world, "INFO", {36, 936, 136});
    const OCTAL_LEAF root = Build(world).GetOctalLeaf(0); // y is longest: 1000
    EXPECT_EQ(root.size, 1000);
    EXPECT_EQ(root.min, (D3DVECTOR{18 - 500, -32, 68 - 500}));
    EXPECT_EQ(root.max, (D3DVECTOR{18 + 500, 968, 68 + 500}));
}

TEST(OctalTree, LeavesSplitByCountAndSize) {
    for (const int count : {16, 17}) {
        World world;
        MakeRootOf1024(world);
        for (int k = 0; k < count; ++k)
            AddShape(world, BT_BOX, {300, 300, 300}, {308, 308, 308});
        const OctalTree tree = Build(world);
        const OCTAL_LEAF& leaf = tree.GetOctalLeaf(tree.FindLeafRecursive({304, 304, 304}, 0));
        EXPECT_EQ(leaf.type, OCTAL_TERMINAL);
        EXPECT_EQ(leaf.brush_list.size(), static_cast<size_t>(count));
        EXPECT_EQ(leaf.size, count == 16 ? 512 : 128) << "17 split down to the smallest leaf, which takes any number";
        EXPECT_EQ(tree.CountType(OCTAL_TERMINAL), 1);
    }
}

TEST(OctalTree, TakesOnlyFacesThatReachTheLeaf) {
    World world;
    MakeRootOf1024(world);
    for (int k = 0; k < 17; ++k)
        AddShape(world, BT_BOX, {-400, -400, -400}, {400, 400, 400});
    const OctalTree tree = Build(world);
    EXPECT_EQ(tree.GetOctalLeaf(tree.FindLeafRecursive({10, 10, 10}, 0)).type, OCTAL_EMPTY)
        << "the hollow of the boxes";
    EXPECT_EQ(tree.GetOctalLeaf(tree.FindLeafRecursive({10, 10, 399}, 0)).brush_list.size(), 17u);
}

TEST(OctalTree, SomeKindsStayOut) {
    World world;
    Brush& portal = AddShape(world, BT_PORTAL, {0, 0, 0}, {8, 8, 8});
    AddShape(world, BT_OCCLUDER, {0, 0, 0}, {8, 8, 8});
    Brush& sky = AddShape(world, BT_BOX, {-4000, 0, 0}, {8, 8, 8});
    sky.properties = BP_ENVIRONMENT;
    Brush& trigger = AddShape(world, BT_BOX, {0, 0, 0}, {8, 8, 8});
    trigger.AddLinkedObjectID(AddEntityOf(world, "box_trigger", {0, 0, 0}).GetObjectID());
    const OctalTree tree = Build(world);
    EXPECT_EQ(tree.CountType(OCTAL_TERMINAL), 0);
    EXPECT_EQ(tree.GetOctalLeaf(0).size, 72) << "the sky takes no part in the extent";
    EXPECT_EQ(portal.GetBrush(), &portal);
}

TEST(OctalTree, ATraceFindsWhatItPasses) {
    World world;
    MakeRootOf1024(world);
    Dice dice(11);
    for (int k = 0; k < 400; ++k) {
        const D3DVECTOR corner = dice.Point(440);
        AddShape(world, BT_BOX, corner, corner + D3DVECTOR{30, 30, 30});
    }
    const OctalTree tree = Build(world);
    LeafSelection selection;
    int checked = 0;
    for (int k = 0; k < 300; ++k) {
        const D3DVECTOR start = dice.Point(500), end = dice.Point(500), dir = end - start, unit = Normalize(dir);
        if (std::min({std::fabs(unit.x), std::fabs(unit.y), std::fabs(unit.z)}) < 0.2f)
            continue; // a step past a face that the ray hardly crosses may pass over whole leaves
        tree.TraceOctalTree(start, end, selection);
        for (int leaf = 0; leaf < tree.GetLeafCount(); ++leaf) {
            const OCTAL_LEAF& cube = tree.GetOctalLeaf(leaf);
            if (cube.type != OCTAL_TERMINAL)
                continue;
            float enter = 0, leave = 1; // the segment inside the cube, slab by slab
            for (int axis = 0; axis < 3; ++axis) {
                const float a = (Component(cube.min, axis) - Component(start, axis)) / Component(dir, axis);
                const float b = (Component(cube.max, axis) - Component(start, axis)) / Component(dir, axis);
                enter = std::max(enter, std::min(a, b));
                leave = std::min(leave, std::max(a, b));
            }
            const float chord = (leave - enter) * Magnitude(dir);
            const bool found = std::count(selection.Leaves().begin(), selection.Leaves().end(), leaf) > 0;
            if (chord > 12) {
                EXPECT_TRUE(found) << "leaf " << leaf;
                ++checked;
            }
            if (chord < -12) {
                EXPECT_FALSE(found) << "leaf " << leaf;
            }
        }
    }
    EXPECT_GT(checked, 500);
}

TEST(OctalTree, ATraceAlongAnAxisKeepsToItsRow) {
    World world;
    MakeRootOf1024(world);
    for (int k = 0; k < 17; ++k) {
        AddShape(world, BT_BOX, {-408, 300, 300}, {-400, 308, 308});
        AddShape(world, BT_BOX, {400, 300, 300}, {408, 308, 308});
        AddShape(world, BT_BOX, {400, -308, 300}, {408, -300, 308});
    }
    const OctalTree tree = Build(world);
    LeafSelection selection;
    tree.TraceOctalTree({-500, 304, 304}, {500, 304, 304}, selection);
    const std::vector<int> expected{tree.FindLeafRecursive({-404, 304, 304}, 0),
                                    tree.FindLeafRecursive({404, 304, 304}, 0)};
    EXPECT_EQ(selection.Leaves(), expected);
    tree.TraceOctalTree({500, 304, 304}, {-500, 304, 304}, selection);
    EXPECT_EQ(selection.Leaves(), (std::vector<int>{expected[1], expected[0]}));
    tree.TraceOctalTree({0, 0, 0}, {513, 0, 0}, selection);
    EXPECT_TRUE(selection.Leaves().empty()) << "an end outside the tree";
}

TEST(OctalTree, EndsCleanlyAtItsLimits) {
    World dense;
    for (int k = 0; k < 17; ++k)
        AddShape(dense, BT_BOX, {-13000, -13000, -13000}, {13000, 13000, 13000});
    OctalTree tree;
    EXPECT_EQ(tree.BuildOctalTree(dense, {}), OctalTree::BuildResult::LimitReached);
    EXPECT_EQ(tree.GetLeafCount(), MAX_OCTAL_TREE_SIZE);
    EXPECT_EQ(tree.BuildOctalTree(dense, [n = 0]() mutable { return ++n > 100; }), OctalTree::BuildResult::Stopped);

    World endless;
    AddEntityOf(endless, "INFO", {std::numeric_limits<float>::infinity(), 0, 0});
    EXPECT_EQ(tree.BuildOctalTree(endless, {}), OctalTree::BuildResult::NotFinite);
}

TEST(OctalTree, LeavesListWhatTheBrushesSay) {
    World world;
    MakeRootOf1024(world);
    Dice dice(21);
    for (int k = 0; k < 300; ++k) {
        const D3DVECTOR corner = dice.Point(400);
        const D3DVECTOR size{dice.Between(0, 90), dice.Between(0, 90), dice.Between(0, 90)};
        AddShape(world, k % 3 ? BT_BOX : BT_CYLINDER, corner, corner + size);
    }
    const OctalTree tree = Build(world);
    for (const OCTAL_LEAF& leaf : tree.octal_tree) {
        std::vector<int> expected;
        for (int b = 0; b < world.GetBrushCount(); ++b) {
            bool reaches = true; // the leaf and all above it
            for (const OCTAL_LEAF* cube = &leaf; cube->parent >= 0 && reaches; cube = &tree.GetOctalLeaf(cube->parent))
                reaches = world.brush[static_cast<size_t>(b)]->IsInVoxel(cube->min, cube->max);
            if (reaches)
                expected.push_back(b);
        }
        if (leaf.type != OCTAL_NODE) {
            ASSERT_EQ(leaf.brush_list, expected);
        }
    }
}
