#include <gtest/gtest.h>

#include "scene/EditingFrontEnd.h"
#include "scene/Scenes.h"

namespace {

constexpr float RIGHT_ANGLE = 1.5707964f;

class WorldTransform : public testing::Test {
protected:
    Brush& AddBox(const D3DVECTOR& min = {0, 0, 0}, const D3DVECTOR& max = {64, 64, 64}) {
        return AddSelected(world, BoxBrush(min, max));
    }
    EditingFrontEnd front_end;
    World world;
};

EntityParameter FloatOf(const char* name, float value) {
    EntityParameter parameter;
    parameter.name = name;
    parameter.type = EPT_FLOAT;
    parameter.p_float = value;
    return parameter;
}

TEST_F(WorldTransform, OnlyTheSelectionMovesAndScales) {
    Brush& box = AddBox();
    Brush& other = AddBox();
    world.SetBrushSelection(other.index, false);
    world.MoveBrush({8, 16, -8});
    EXPECT_EQ(BoxMin(box.bbox), (D3DVECTOR{8, 16, -8}));
    world.ScaleBrush(MakeBox({8, 16, -8}, {72, 80, 120}), MakeBox({8, 16, -8}, {72, 80, 56}));
    EXPECT_EQ(BoxMin(box.bbox), (D3DVECTOR{8, 16, -8}));
    EXPECT_EQ(BoxMax(box.bbox), (D3DVECTOR{72, 80, 120}));
    EXPECT_EQ(BoxMin(other.bbox), (D3DVECTOR{}));
    front_end.texture_locked = false;
    box.surfaces[0].texture.index = 1;
    world.MoveBrush({8, 0, 0});
    EXPECT_EQ(box.surfaces[0].texture.shift, UVVector{});
    front_end.texture_locked = true;
    world.MoveBrush({8, 0, 0});
    EXPECT_NE(box.surfaces[0].texture.shift, UVVector{});
    world.ClearSelection();
    world.MoveBrush({8, 0, 0}); // nothing is selected: nothing happens
    EXPECT_EQ(BoxMin(box.bbox).x, 24.0f);
}

// The dragged side follows the drag along itself, the side across stays, whatever lies between is sheared evenly.
TEST_F(WorldTransform, ShearDragsOneSideOfTheBox) {
    const D3DVECTOR min{10, -20, 30}, max{110, 20, 80}, inside{35, -10, 60};
    constexpr int ACROSS[] = {0, 0, 2}, DOWN[] = {2, 1, 1};
    for (int view = 0; view < 3; ++view)
        for (int point = 0; point < 4; ++point)
            for (const float drag : {16.0f, -8.0f}) {
                world.ClearSelection();
                Brush& box = AddBox(min, max);
                box.surfaces[0].vertices.push_back(inside);
                Entity& entity = AddSelectedEntity(world, inside);
                const int along = point % 2 == 0 ? ACROSS[view] : DOWN[view];
                const int across = point % 2 == 0 ? DOWN[view] : ACROSS[view];
                const bool far_side = point < 2;
                D3DVECTOR new_max = max;
                Component(new_max, along) += drag;
                const std::vector<Surface> before = box.surfaces;
                world.ShearBrush(MakeBox(min, new_max), MakeBox(min, max), view, point);
                for (size_t s = 0; s < before.size(); ++s)
                    for (size_t i = 0; i < before[s].vertices.size(); ++i) {
                        D3DVECTOR expected = before[s].vertices[i];
                        const float from_min = (Component(expected, across) - Component(min, across)) /
                                               (Component(max, across) - Component(min, across));
                        Component(expected, along) += drag * (far_side ? from_min : 1 - from_min);
                        ExpectNear(box.surfaces[s].vertices[i], expected, 1e-4f,
                                   std::to_string(view) + ' ' + std::to_string(point));
                    }
                EXPECT_EQ(entity.position, inside);
            }
}

TEST_F(WorldTransform, ShearOfBoxesAndViewsThatAreNone) {
    Brush& box = AddBox();
    const std::vector<D3DVECTOR> before = box.surfaces[0].vertices;
    const Box whole = MakeBox({0, 0, 0}, {64, 64, 64}), wider = MakeBox({0, 0, 0}, {80, 80, 80});
    for (const auto& [view, point] : {std::pair(3, 0), {-1, 0}, {0, 4}, {0, -1}}) {
        world.ShearBrush(wider, whole, view, point);
        EXPECT_EQ(box.surfaces[0].vertices, before) << view << ' ' << point;
    }
    const Box flat[] = {MakeBox({0, 0, 0}, {0, 64, 64}), MakeBox({0, 0, 0}, {64, 0, 64}),
                        MakeBox({0, 0, 0}, {64, 64, 0}), MakeBox({0, 0, 0}, {0, 0, 0})};
    for (const Box& thin : flat)
        for (int view = 0; view < 3; ++view)
            for (int point = 0; point < 4; ++point) {
                world.ShearBrush(wider, thin, view, point);
                world.ScaleBrush(wider, thin);
                for (const D3DVECTOR& v : box.surfaces[0].vertices)
                    EXPECT_TRUE(std::isfinite(v.x + v.y + v.z)) << view << ' ' << point;
            }
}

TEST_F(WorldTransform, MirrorsKeepOutwardNormals) {
    front_end.pivot = {100, 50, 20};
    const D3DVECTOR place{30, 10, 5};
    const struct {
        bool horizontally;
        int view;
        D3DVECTOR mirrored; // place
    } cases[] = {{true, 0, {170, 10, 5}},  {true, 1, {170, 10, 5}}, {true, 2, {30, 10, 35}},
                 {false, 0, {30, 10, 35}}, {false, 1, {30, 90, 5}}, {false, 2, {30, 90, 5}}};
    for (const auto& c : cases) {
        world.ClearSelection();
        Brush& wedge = AddSelected(world, std::make_unique<Brush>(ShapeOf(BT_PRISM, {0, 0, 0}, {64, 32, 48}, 3)));
        Brush& block = AddSelected(world, std::make_unique<Brush>(ShapeOf(BT_Q_BLOCK, {0, 0, 0}, {64, 32, 48})));
        wedge.surfaces[0].vertices.push_back(place);
        Entity& entity = AddSelectedEntity(world, place);
        const double volumes[] = {SignedVolume(wedge), SignedVolume(block)};
        EXPECT_GT(volumes[0], 0);
        front_end.redraws = 0;
        c.horizontally ? world.FlipHorizontally(c.view) : world.FlipVertically(c.view);
        EXPECT_EQ(front_end.redraws, 1);
        EXPECT_EQ(wedge.surfaces[0].vertices.back(), c.mirrored);
        EXPECT_EQ(entity.position, c.mirrored);
        EXPECT_NEAR(SignedVolume(wedge), volumes[0], 1);
        EXPECT_NEAR(SignedVolume(block), volumes[1], 10);
    }
    Brush& box = AddBox();
    const std::vector<D3DVECTOR> before = box.surfaces[0].vertices;
    world.FlipHorizontally(3); // no axis is seen across it
    world.FlipVertically(-1);
    EXPECT_EQ(box.surfaces[0].vertices, before);
    EXPECT_NEAR(SignedVolume(box), 64 * 64 * 64, 1);
}

TEST_F(WorldTransform, RotationTurnsAboutThePivot) {
    front_end.pivot = {10, 20, 30};
    Brush& box = AddBox({20, 20, 30}, {84, 52, 46});
    Entity& entity = AddSelectedEntity(world, {20, 20, 30});
    entity.AddParameter(FloatOf("orientation", 15));
    world.RotateBrush(RIGHT_ANGLE, 0);
    ExpectNear(entity.position, {10, 20, 40}, 1e-4f);
    ExpectNear(BoxMin(box.bbox), {-6, 20, 40}, 1e-4f);
    ExpectNear(BoxMax(box.bbox), {10, 52, 104}, 1e-4f);
    EXPECT_EQ(entity.FloatParameter("orientation"), 15.0f); // a brush is selected too
}

TEST_F(WorldTransform, ASingleEntityTurnsItsOwnData) {
    const struct {
        bool orientation, range, shift;
        float angle, expected_orientation, expected_range;
    } cases[] = {{true, true, false, RIGHT_ANGLE, 100, 200}, {true, true, true, RIGHT_ANGLE, 10, 232},
                 {false, true, false, RIGHT_ANGLE, 0, 232},  {true, false, true, RIGHT_ANGLE, 100, 0},
                 {true, true, true, -RIGHT_ANGLE, 10, 168},  {true, true, false, -RIGHT_ANGLE, 280, 200},
                 {false, false, false, RIGHT_ANGLE, 0, 0}};
    for (const auto& c : cases) {
        world.ClearSelection();
        Entity& entity = AddSelectedEntity(world);
        if (c.orientation)
            entity.AddParameter(FloatOf("orientation", 10));
        if (c.range)
            entity.AddParameter(FloatOf("range", 200));
        front_end.shift_down = c.shift;
        world.RotateBrush(c.angle, 1);
        EXPECT_EQ(entity.FloatParameter("orientation"), c.expected_orientation);
        EXPECT_EQ(entity.FloatParameter("range"), c.expected_range);
    }
    world.entity_selection.AddItem(0); // two: their data stay
    world.RotateBrush(RIGHT_ANGLE, 1);
    EXPECT_EQ(world.entity[0]->FloatParameter("orientation"), 100.0f);
}

TEST_F(WorldTransform, FlipAndRoundingOfTheSelection) {
    Brush& box = AddBox({0.5f, 0.5f, 0.5f}, {64.5f, 64.5f, 64.5f});
    Brush& other = AddBox({0.5f, 0, 0});
    world.SetBrushSelection(other.index, false);
    world.FlipNormals();
    EXPECT_LT(SignedVolume(box), 0);
    EXPECT_GT(SignedVolume(other), 0);
    world.AlignVertices();
    for (const D3DVECTOR& v : box.surfaces[0].vertices)
        EXPECT_EQ(v, (D3DVECTOR{std::trunc(v.x), std::trunc(v.y), std::trunc(v.z)}));
    EXPECT_EQ(BoxMin(box.bbox).x, 0.5f); // nothing derived
    EXPECT_EQ(BoxMin(other.bbox).x, 0.5f);
    EXPECT_EQ(front_end.redraws, 2);
}

} // namespace
