#include <gtest/gtest.h>

#include "drawing/ViewSetup.h"

namespace {

constexpr uint32_t RED = 0xFF0000, GREEN = 0x00FF00, BLUE = 0x0000FF;

class WireTest : public ViewTest {
protected:
    void Draw() {
        screen.NextFrame();
        world.RenderBrushes(context);
    }
};

} // namespace

TEST_F(WireTest, ABoxInEachViewAndZoom) {
    AddBox(world, {-4, 0, 8}, {12, 20, 16}, {0, 1, 0, 1});
    struct Case {
        int view, zoom, left, top, right, bottom; // pixels
    };
    const Case cases[] = {
        {VIEW_TOP, 0, 60, 48, 76, 56},   {VIEW_TOP, 1, 56, 32, 88, 48},   {VIEW_TOP, -1, 62, 56, 70, 60},
        {VIEW_FRONT, 0, 60, 44, 76, 64}, {VIEW_FRONT, 1, 56, 24, 88, 64}, {VIEW_FRONT, -1, 62, 54, 70, 64},
        {VIEW_LEFT, 0, 72, 44, 80, 64},  {VIEW_LEFT, 1, 80, 24, 96, 64},  {VIEW_LEFT, -1, 68, 54, 72, 64},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "view " << c.view << " zoom " << c.zoom);
        SetView(c.view, c.zoom);
        Draw();
        ExpectOutline(c.left, c.top, c.right, c.bottom, GREEN);
    }
}

TEST_F(WireTest, SelectedLieOverPortalsAndThoseOverTheRest) {
    Brush& first = AddBox(world, {0, 0, 0}, {16, 16, 16}, {0, 1, 0, 1});
    Brush& second = AddBox(world, {0, 0, 0}, {16, 16, 16}, {0, 0, 1, 1});
    AddBox(world, {0, 0, 0}, {16, 16, 16}, {1, 1, 0, 1});
    SetView(VIEW_TOP);
    const auto expect = [&](uint32_t color) {
        Draw();
        ExpectOutline(64, 48, 80, 64, color);
    };
    expect(0xFFFF00); // the last in the table
    second.type = BT_PORTAL;
    expect(BLUE);
    first.type = BT_OCCLUDER;
    expect(BLUE); // the later of the deferred ones
    first.is_selected = true;
    expect(RED);
}

TEST_F(WireTest, WhatIsNotShown) {
    Brush& brush = AddBox(world, {0, 0, 0}, {16, 16, 16}, {0, 1, 0, 1});
    SetView(VIEW_FRONT);
    struct Case {
        BrushType type;
        bool selected, hidden, brushes, portals, occluders, seen;
    };
    const Case cases[] = {
        {BT_BOX, false, false, true, false, false, true},      {BT_BOX, false, false, false, true, true, false},
        {BT_PORTAL, false, false, false, true, false, true},   {BT_PORTAL, false, false, true, false, true, false},
        {BT_OCCLUDER, false, false, false, false, true, true}, {BT_OCCLUDER, false, false, true, true, false, false},
        {BT_PORTAL, true, false, true, false, false, true}, // a selected one goes by the switch of the brushes
        {BT_PORTAL, true, false, false, true, true, false},    {BT_BOX, false, true, true, true, true, false},
        {BT_BOX, true, true, true, true, true, false},         {BT_BOX, true, false, false, false, false, false},
    };
    for (const Case& c : cases)
        for (const int view : {VIEW_FRONT, VIEW_PERSPECTIVE}) {
            if (view == VIEW_PERSPECTIVE)
                SetCamera(100);
            else
                SetView(view);
            world.render_mode = 0;
            brush.type = c.type;
            brush.is_selected = c.selected;
            brush.is_hidden = c.hidden;
            context.filters = {};
            context.filters.show_brushes = c.brushes;
            context.filters.show_portals = c.portals;
            context.filters.show_occluders = c.occluders;
            Draw();
            EXPECT_EQ(!IsEmpty(), c.seen) << "type " << c.type << " view " << view << " case " << &c - cases;
        }
}

TEST_F(WireTest, BoxesPartlyOutsideTheView) {
    // Whole numbers cut from 66.9 lie within the view although the box of the brush does not.
    Brush& brush = AddBox(world, {64.5f, 0, 0}, {70, 8, 8}, {0, 1, 0, 1});
    for (Surface& s : brush.surfaces)
        for (D3DVECTOR& p : s.vertices)
            p.x = p.x < 66 ? 63 : p.x;
    AddBox(world, {-100, 0, -100}, {100, 8, 100}, {0, 0, 1, 1}); // around the view
    AddBox(world, {-100, 0, -30}, {100, 8, -20}, {1, 0, 1, 1});  // through it
    SetView(VIEW_TOP);
    Draw();
    EXPECT_EQ(screen.At(127, 60), GREEN);
    EXPECT_EQ(screen.CountOf(BLUE), 0);
    EXPECT_EQ(screen.CountOf(0xFF00FF), 2 * SIDE);
}

TEST_F(WireTest, WireInThePerspectiveView) {
    AddBox(world, {-25, -25, 0}, {25, 25, 100}, {0, 1, 0, 1});
    SetCamera(100);
    world.render_mode = 0;
    Draw();
    // The front face 16 pixels about the middle, the back face 8.
    EXPECT_EQ(screen.At(64, 48), GREEN);
    EXPECT_EQ(screen.At(48, 60), GREEN);
    EXPECT_EQ(screen.At(80, 60), GREEN);
    EXPECT_EQ(screen.At(64, 56), GREEN);
    EXPECT_EQ(screen.At(64, 72), GREEN);
    EXPECT_EQ(screen.At(64, 52), 0u);
    EXPECT_EQ(screen.At(64, 64), 0u);
}

TEST_F(WireTest, ManyBrushesFillManyBatches) {
    // 3,000 boxes of 24 vertices, one and more from each of the 128 columns: 17 rows are full.
    for (int i = 0; i < 3000; ++i) {
        const auto at = static_cast<float>(i % 128 - 64);
        AddBox(world, {at, 0, -8}, {at + 16, 8, 8}, {0, 1, 0, 1});
    }
    world.brush.back()->is_selected = true; // 3000 % 128 = 56: from pixel column 55
    SetView(VIEW_TOP);
    Draw();
    EXPECT_EQ(screen.CountOf(RED), 2 * 32 - 1);
    EXPECT_EQ(screen.At(55, 60), RED);
    EXPECT_EQ(screen.CountOf(GREEN), SIDE * 17 - (2 * 32 - 1));
}

TEST_F(WireTest, EdgesThatNameMissingVerticesAreLeftOut) {
    Brush& brush = AddBox(world, {0, 0, 0}, {16, 16, 16}, {0, 1, 0, 1});
    for (Surface& s : brush.surfaces)
        s.edge_indices.push_back({{0, 60000}});
    SetView(VIEW_TOP);
    Draw();
    ExpectOutline(64, 48, 80, 64, GREEN);
}
