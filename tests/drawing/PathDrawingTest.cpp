// Paths of movies in the views: lines, diamonds, the mark of the moment, and when they show.
#include <gtest/gtest.h>

#include <cmath>

#include "drawing/ViewSetup.h"
#include "scene/PathScenes.h"

namespace {

constexpr uint32_t PATH = 0xFFF040, TARGET = 0x40FF40, RED = 0xFF0000;

class PathDrawingTest : public ViewTest {
protected:
    PathDrawingTest() { SetView(VIEW_TOP); }

    // In the top view x goes right and z goes up.
    static uint32_t Pixel(Screen& screen, int x, int z) { return screen.At(MIDDLE + x, MIDDLE - z); }
    uint32_t PixelAt(int x, int z) { return Pixel(screen, x, z); }
    D3DVECTOR Draw() {
        screen.NextFrame();
        return world.RenderPath(context, owner.path, 0xFF000000 | PATH);
    }
    Entity& Add(float x, float z, PointValues values = {}) { return AddPoint(world, owner, false, {x, 0, z}, values); }

    Entity& owner = AddOwner(world);
};

} // namespace

TEST_F(PathDrawingTest, AStraightSegmentAndTheDiamondAtItsEnd) {
    EXPECT_EQ(Draw(), D3DVECTOR{}) << "an empty list";
    Add(-40, 10);
    EXPECT_EQ(Draw(), (D3DVECTOR{-40, 0, 10}));
    EXPECT_TRUE(IsEmpty()) << "one point has no segment";
    Add(20, 10);
    context.anim_time = -1; // on no segment: all in the path's colour, the first point given
    EXPECT_EQ(Draw(), (D3DVECTOR{-40, 0, 10}));
    for (int x = -39; x < 19; ++x)
        EXPECT_EQ(PixelAt(x, 10), PATH) << x;
    EXPECT_EQ(PixelAt(-42, 10), 0u);
    EXPECT_EQ(screen.CountOf(RED), 0);
    // The diamond: its corners lie 20 units from the point, its sides halfway between them.
    for (const auto& [x, z] : {std::pair{30, 20}, {10, 20}, {10, 0}, {30, 0}}) {
        int near = 0;
        for (int dx = -1; dx <= 1; ++dx)
            for (int dz = -1; dz <= 1; ++dz)
                near += PixelAt(x + dx, z + dz) == PATH;
        EXPECT_GT(near, 0) << x << ", " << z;
    }
    EXPECT_EQ(PixelAt(34, 24), 0u) << "no square";
    EXPECT_EQ(PixelAt(-40, 25), 0u) << "none at the first point";
}

TEST_F(PathDrawingTest, AShortSegmentHasNoSpan) {
    Add(0, 0);
    Add(9, 0);
    context.anim_time = -1;
    Draw();
    EXPECT_EQ(PixelAt(4, 0), 0u);
    EXPECT_GT(screen.CountOf(PATH), 0) << "its diamond";
}

TEST_F(PathDrawingTest, TheMomentIsRedWithAMarkAcross) {
    Add(-50, 0);
    Add(0, 0, {{"tension", 1}, {"speed", 50}}); // straight up to there
    Add(0, -50, {{"speed", 50}});
    context.anim_time = 0.5f; // of one second
    const D3DVECTOR place = Draw();
    EXPECT_NEAR(place.z, 0, 5);
    EXPECT_NEAR(place.x, -25, 5);
    EXPECT_EQ(PixelAt(-45, 0), RED);
    EXPECT_EQ(PixelAt(0, -45), PATH) << "the other segment";
    int mark = 0; // pixels well above the path, near the place
    for (int x = -30; x <= -20; ++x)
        for (int z = 8; z <= 20; ++z)
            mark += PixelAt(x, z) == RED;
    EXPECT_GE(mark, 8);
    for (int x = -30; x <= -20; ++x)
        EXPECT_EQ(PixelAt(x, 24), 0u) << "it ends at 20 units";
    context.anim_time = 1.5f;
    EXPECT_NEAR(Draw().x, 0, 5);
    EXPECT_EQ(PixelAt(0, -45), RED);
}

TEST_F(PathDrawingTest, EasingMovesTheMarkByATenth) {
    Add(-50, 0, {{"ease_from", 1}});
    Add(50, 0);
    context.anim_time = 0.25f; // of a second: u is 0.25 - 0.1
    // Half of the way is the tangent at both ends: the cubic is u / 2 + 3 u^2 / 2 - u^3.
    EXPECT_NEAR(Draw().x, -50 + 100 * (0.075 + 0.03375 - 0.003375), 0.01);
}

TEST_F(PathDrawingTest, HiddenPointsTakeTheirSegments) {
    Add(-50, 0);
    Entity& middle = Add(-20, 0);
    Add(10, 0);
    Add(40, 0);
    middle.is_hidden = true;
    context.anim_time = -1;
    Draw();
    EXPECT_EQ(PixelAt(-45, 0), 0u);
    EXPECT_EQ(PixelAt(-5, 0), 0u);
    EXPECT_EQ(PixelAt(25, 0), PATH);
    context.anim_time = 0.15f;
    // The middle of a cubic: that of the chord, and an eighth of the tangents' difference, 15 and 30.
    EXPECT_NEAR(Draw().x, -35 - 15 / 8.0, 0.01) << "the place is still known";
}

TEST_F(PathDrawingTest, DeadIdsLeaveTheList) {
    Add(0, 0);
    world.DeleteEntityByID(Add(50, 0).GetObjectID());
    owner.path.Add(NO_OBJECT_ID);
    Draw();
    EXPECT_EQ(owner.path.GetCount(), 1);
}

TEST_F(PathDrawingTest, InThePerspectiveViewTheDiamondStandsAcrossTheSegment) {
    SetCamera(100);
    context.anim_time = -1;
    AddPoint(world, owner, false, {0, 0, 1000});
    AddPoint(world, owner, false, {0, 0, 0}); // toward the camera: its diamond is seen whole
    Draw();
    const auto seen = [&](int x, int y) {
        int near = 0;
        for (int dx = -1; dx <= 1; ++dx)
            for (int dy = -1; dy <= 1; ++dy)
                near += screen.At(MIDDLE + x + dx, MIDDLE - y + dy) == PATH;
        return near > 0;
    };
    const int half = 64 * 10 / 100; // halfway of 20 units, in pixels
    for (const auto& [x, y] : {std::pair{half, half}, {-half, half}, {-half, -half}, {half, -half}})
        EXPECT_TRUE(seen(x, y)) << x << ", " << y;
    EXPECT_EQ(screen.CountOf(RED), 0) << "no mark";
    context.anim_time = 0;
    Draw();
    EXPECT_GT(screen.CountOf(RED), 0);
}

TEST_F(PathDrawingTest, EntitiesShowTheirPathsWithTheSelection) {
    owner.position = {-60, 0, -60};
    Entity& first = Add(-40, 0);
    Entity& second = Add(0, 0);
    AddPoint(world, owner, true, {-40, 0, 40});
    AddPoint(world, owner, true, {0, 0, 40});
    context.filters.show_nonbox_entities = true;
    context.anim_time = 100; // held at the ends
    const auto draw = [&] {
        screen.NextFrame();
        world.RenderEntities(context);
    };
    draw();
    EXPECT_EQ(screen.CountOf(PATH) + screen.CountOf(TARGET) + screen.CountOf(RED), 0);
    for (const Entity* const selected : {&owner, &first}) {
        world.entity_selection.ClearList();
        SelectEntity(world, *selected);
        draw();
        EXPECT_EQ(PixelAt(-20, 0), RED) << "the segment of the moment";
        EXPECT_EQ(PixelAt(-20, 40), RED);
        EXPECT_EQ(PixelAt(0, 15), RED) << "from place to target";
    }
    first.is_hidden = true;
    draw();
    EXPECT_NE(PixelAt(-20, 0), RED);
    first.is_hidden = false;
    owner.is_hidden = true;
    draw();
    EXPECT_NE(PixelAt(-20, 0), RED) << "a hidden owner has none";
    owner.is_hidden = false;
    context.filters.show_entities = false;
    draw();
    EXPECT_TRUE(IsEmpty());
    EXPECT_EQ(second.path_parent_id, owner.GetObjectID());
}

TEST_F(PathDrawingTest, BrushesShowTheirPathsInWireOnly) {
    Brush& brush = AddBox(world, {-300, 0, 0}, {-290, 8, 8}, {0, 0, 1, 1}); // outside the view
    Entity& first = AddPoint(world, brush, false, {-40, 0, 0});
    AddPoint(world, brush, false, {0, 0, 0});
    context.anim_time = -1;
    const auto draws = [&] {
        screen.NextFrame();
        world.RenderBrushes(context);
        return PixelAt(-20, 0) == PATH;
    };
    EXPECT_FALSE(draws());
    SelectEntity(world, first);
    EXPECT_TRUE(draws()) << "a point of it is selected";
    context.filters.show_brushes = false;
    EXPECT_TRUE(draws()) << "the path of a brush that is not selected";
    world.entity_selection.ClearList();
    brush.is_selected = true;
    EXPECT_FALSE(draws());
    context.filters.show_brushes = true;
    EXPECT_TRUE(draws());
    brush.is_hidden = true;
    EXPECT_FALSE(draws());
    brush.is_hidden = false;
    SetCamera(100);
    world.render_mode = 1;
    screen.NextFrame();
    world.RenderBrushes(context);
    EXPECT_EQ(screen.CountOf(PATH), 0) << "not with solid brushes";
}

TEST_F(PathDrawingTest, RenderObjectPathsJoinsBothPlaces) {
    Add(-40, 0);
    Add(40, 0);
    AddPoint(world, owner, true, {-40, 0, 40});
    AddPoint(world, owner, true, {40, 0, 40});
    context.anim_time = -1; // the first points
    screen.NextFrame();
    world.RenderObjectPaths(context, owner);
    EXPECT_EQ(PixelAt(0, 0), PATH);
    EXPECT_EQ(PixelAt(0, 40), TARGET);
    EXPECT_EQ(PixelAt(-40, 15), RED);
    owner.target_path.Reset();
    screen.NextFrame();
    world.RenderObjectPaths(context, owner);
    EXPECT_EQ(screen.CountOf(RED), 0);
}
