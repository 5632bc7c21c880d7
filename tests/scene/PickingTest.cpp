// Clicks and rectangles on brushes.
#include <gtest/gtest.h>

#include "foundation/Random.h"
#include "render/Device.h"
#include "render/Matrix.h"
#include "scene/SceneState.h"
#include "scene/Scenes.h"
#include "scene/Undo.h"

namespace {

constexpr int SIDE = 512; // pixels of a view

class Picking : public testing::Test {
protected:
    void SetUp() override {
        crSetViewport(0, 0, SIDE, SIDE);
        SetOrthographic();
    }
    void TearDown() override {
        for (const uint32_t matrix : {CRM_VIEW, CRM_PROJ}) {
            crMCurrent(matrix);
            crMSetIdentity();
        }
        crMCurrent(CRM_WORLD);
        crSetViewport(-1, 0, 0, 0);
    }
    // The front view: a unit a pixel, world 0 in the middle.
    void SetOrthographic() {
        D3DMATRIX proj = crIdentity();
        proj.m[0][0] = proj.m[1][1] = 2.0f / SIDE;
        proj.m[2][2] = 0;
        crMCurrent(CRM_VIEW);
        crMSetIdentity();
        crMCurrent(CRM_PROJ);
        crMSet(proj);
    }
    // Along z from -500, 90 degrees: at distance d, a pixel is d / 256 units.
    PickRequest SetPerspective() {
        PickRequest request;
        request.view = VIEW_PERSPECTIVE;
        request.camera_position = {0, 0, -500};
        crMCurrent(CRM_VIEW);
        crMViewTo(request.camera_position, {0, 0, 0}, {0, 1, 0}, 0);
        crMCurrent(CRM_PROJ);
        crMSetIdentity();
        crMProj(PI / 2, 1, 10, 10000);
        request.point = {SIDE / 2, SIDE / 2};
        return request;
    }
    static PickRequest At(int x, int y, bool additive = false, bool ignore_groups = false) {
        PickRequest request;
        request.view = VIEW_FRONT;
        request.point = {SIDE / 2 + x, SIDE / 2 - y};
        request.additive = additive;
        request.ignore_groups = ignore_groups;
        return request;
    }
    Brush& Add(const D3DVECTOR& min, const D3DVECTOR& max) {
        Brush& b = *world.AddBrush(BoxBrush(min, max));
        b.GenerateNewObjectID();
        b.is_selected = false;
        return b;
    }
    void AddRow(int count) { // boxes of 32 every 48 units from 0
        for (int i = 0; i < count; ++i)
            Add({static_cast<float>(48 * i), 0, 0}, {static_cast<float>(48 * i + 32), 32, 32});
    }
    std::vector<int> Selected() const {
        std::vector<int> items = Items(world.brush_selection);
        std::sort(items.begin(), items.end());
        return items;
    }
    std::string LastStep() const {
        return world.undo_buffer.GetActionDescription(world.undo_buffer.GetActionCount() - 1);
    }
    using Ints = std::vector<int>;

    UndoFrontEnd front_end;
    World world;
};

TEST_F(Picking, AWireClickTakesTheHighestIndexAndAsksNoFilter) {
    AddRow(3);
    Add({0, 0, 100}, {32, 32, 132}); // behind the first one
    PickRequest click = At(0, 16);
    click.filters.show_brushes = false;
    EXPECT_TRUE(world.PointSelection(click));
    EXPECT_EQ(Selected(), Ints{3});
    EXPECT_TRUE(world.brush[3]->is_selected);
    EXPECT_EQ(world.first_selected_id, world.brush[3]->GetObjectID());
    EXPECT_EQ(LastStep(), "Select 1 object(s).");
    world.brush[3]->is_hidden = true;
    EXPECT_TRUE(world.PointSelection(click));
    EXPECT_EQ(Selected(), Ints{0});
    EXPECT_FALSE(world.brush[3]->is_selected);
    EXPECT_EQ(world.undo_buffer.GetActionCount(), 3); // select, deselect, select
    EXPECT_FALSE(world.PointSelection(At(-40, -40)));
    EXPECT_EQ(LastStep(), "Deselect 1 object(s).");
    EXPECT_EQ(world.first_selected_id, NO_OBJECT_ID);
    EXPECT_FALSE(world.PointSelection(At(16, 16))); // inside, away from the wire
    EXPECT_EQ(world.undo_buffer.GetActionCount(), 4);
}

TEST_F(Picking, ClicksWithAndWithoutAddition) {
    AddRow(3);
    world.PointSelection(At(0, 16));
    world.PointSelection(At(48, 16, true));
    EXPECT_EQ(Items(world.brush_selection), (Ints{0, 1}));
    EXPECT_EQ(world.first_selected_id, world.brush[0]->GetObjectID());
    world.undo_buffer.Empty();
    EXPECT_TRUE(world.PointSelection(At(0, 16, true))); // out again: no step by itself
    EXPECT_EQ(Selected(), Ints{1});
    EXPECT_EQ(world.first_selected_id, world.brush[1]->GetObjectID());
    EXPECT_EQ(world.undo_buffer.GetActionCount(), 0);
    front_end.full_undo = true;
    EXPECT_FALSE(world.PointSelection(At(48, 16, true)));
    EXPECT_EQ(LastStep(), "Deselect 1 object(s).");
    world.undo_buffer.UndoLastAction(world, world.redo_buffer);
    EXPECT_EQ(Selected(), Ints{1});
    world.PointSelection(At(-100, 0, true));          // beside all
    EXPECT_EQ(world.redo_buffer.GetActionCount(), 1); // survives a step of nothing
    EXPECT_EQ(Selected(), Ints{1});
    EXPECT_EQ(BrokenRule(world), "");
}

TEST_F(Picking, ThePerspectiveTakesTheNearestThatIsShown) {
    Brush& far_box = Add({-32, -32, 200}, {32, 32, 264});
    Brush& portal = Add({-32, -32, -300}, {32, 32, -290});
    portal.type = BT_PORTAL;
    Brush& occluder = Add({-32, -32, -200}, {32, 32, -190});
    occluder.type = BT_OCCLUDER;
    Brush& near_box = Add({-32, -32, 0}, {32, 32, 64});
    Add({-32, -32, -900}, {32, 32, -800}); // behind the camera
    PickRequest click = SetPerspective();
    const auto picked = [&]() -> const Brush* {
        world.PointSelection(click);
        return world.brush_selection.GetItemCount() == 1
                   ? world.brush[static_cast<size_t>(world.brush_selection.GetItem(0))].get()
                   : nullptr;
    };
    EXPECT_EQ(picked(), &portal);
    click.filters.show_portals = false;
    EXPECT_EQ(picked(), &occluder);
    click.filters.show_occluders = false;
    EXPECT_EQ(picked(), &near_box);
    near_box.is_hidden = true;
    EXPECT_EQ(picked(), &far_box);
    click.filters.show_brushes = false;
    EXPECT_EQ(picked(), nullptr);
    click.filters.show_portals = true; // is no matter of show_brushes
    EXPECT_EQ(picked(), &portal);
    click.point = {2, 2};
    EXPECT_EQ(picked(), nullptr);
}

TEST_F(Picking, GroupsComeAndGoWhole) {
    AddRow(4);
    for (int i = 0; i < 3; ++i)
        world.AddEntity(std::make_unique<Entity>())->GenerateNewObjectID();
    ObjectGroupLists members;
    for (const int b : {0, 2})
        members.brushes.AddItem(b);
    for (const int e : {1, 2})
        members.entities.AddItem(e);
    world.AddGroup(members.brushes, members.entities);
    world.PointSelection(At(0, 16));
    EXPECT_EQ(Selected(), (Ints{0, 2}));
    EXPECT_EQ(Items(world.entity_selection), (Ints{1, 2}));
    EXPECT_EQ(Items(world.group_selection), Ints{0});
    EXPECT_EQ(LastStep(), "Select 4 object(s).");
    world.PointSelection(At(48, 16, true));
    world.PointSelection(At(96, 16, true)); // another member: all go
    EXPECT_EQ(Selected(), Ints{1});
    EXPECT_EQ(world.entity_selection.GetItemCount() + world.group_selection.GetItemCount(), 0);
    world.PointSelection(At(0, 16, false, true));
    EXPECT_EQ(Selected(), Ints{0});
    EXPECT_EQ(world.group_selection.GetItemCount(), 0);
    world.PointSelection(At(96, 16, true)); // brings the rest, and the step holds the rest only
    EXPECT_EQ(LastStep(), "Select 3 object(s).");
    world.undo_buffer.UndoLastAction(world, world.redo_buffer);
    EXPECT_EQ(Selected(), Ints{0});
    EXPECT_EQ(world.group_selection.GetItemCount(), 0);
    EXPECT_EQ(BrokenRule(world), "");
}

TEST_F(Picking, ARectangleReachesThroughTheDepthAndNeverTakesOut) {
    Add({0, 0, 0}, {32, 32, 32});
    Add({0, 0, 5000}, {32, 32, 5032});
    Add({0, 5000, 0}, {32, 5032, 32});
    Add({5000, 0, 0}, {5032, 32, 32});
    Add({0, 0, 0}, {32, 32, 32}).is_hidden = true;
    const Box box = MakeBox({8, 8, 8}, {40, 40, 40});
    const Ints expected[] = {{0, 2}, {0, 1}, {0, 3}, {0}};
    for (int view = 0; view < VIEW_COUNT; ++view) {
        PickRequest request;
        request.view = view;
        EXPECT_TRUE(world.DragBoxSelection(box, request));
        EXPECT_EQ(Selected(), expected[view]) << view;
    }
    PickRequest request = At(0, 0, true);
    EXPECT_TRUE(world.DragBoxSelection(box, request));
    EXPECT_EQ(Selected(), (Ints{0, 1}));
    const int steps = world.undo_buffer.GetActionCount();
    world.DragBoxSelection(box, request); // none is new
    EXPECT_EQ(world.undo_buffer.GetActionCount(), steps);
    EXPECT_FALSE(world.DragBoxSelection(MakeBox({-9, -9, 0}, {-8, -8, 0}), At(0, 0)));
    EXPECT_EQ(LastStep(), "Deselect 2 object(s).");
}

TEST_F(Picking, TheNewestGroupCountsForEveryMemberOfARectangle) {
    RandomMT random;
    random.seedMT(31);
    AddRow(10);
    for (int round = 0; round < 30; ++round) {
        world.group.clear();
        world.ClearSelection();
        for (int g = 0; g < 5; ++g) {
            Selection members;
            for (int k = 0; k < 2; ++k)
                members.AddItem(static_cast<int>(random.randomMT() % 10));
            world.AddGroup(members, {});
        }
        const auto from = static_cast<float>(random.randomMT() % 300);
        const Box box = MakeBox({from, 0, 0}, {from + 100, 10, 0});
        Ints expected; // one after the other, each by the search from the last group
        for (int b = 0; b < 10; ++b) {
            const auto x = static_cast<float>(48 * b);
            if (x + 32 < from || x > from + 100 || std::count(expected.begin(), expected.end(), b) > 0)
                continue;
            const int g = world.CheckGroups(b, -1);
            const Ints members = g == -1 ? Ints{b} : Items(world.group[static_cast<size_t>(g)].brushes);
            for (const int m : members)
                if (std::count(expected.begin(), expected.end(), m) == 0)
                    expected.push_back(m);
        }
        world.DragBoxSelection(box, At(0, 0));
        EXPECT_EQ(Items(world.brush_selection), expected);
    }
}

TEST_F(Picking, DeletedBrushesLeaveSelectionsGroupsAndNeighboursRight) {
    AddRow(6);
    for (const int b : {1, 3, 5})
        world.SetBrushSelection(b, true);
    world.CreateGroup();
    world.group_selection.AddItem(0);
    world.brush[5]->tn_list.AddItem(2), world.brush[5]->tn_list.AddItem(4);
    world.brush[4]->selected_surface = 1;
    world.selected_surface_brush = 4;
    world.first_selected_id = world.brush[3]->GetObjectID();
    world.DeleteBrush(2);
    EXPECT_EQ(Items(world.brush_selection), (Ints{1, 2, 4}));
    EXPECT_EQ(Items(world.group[0].brushes), (Ints{1, 2, 4}));
    EXPECT_EQ(Items(world.brush[4]->tn_list), Ints{3});
    EXPECT_EQ(world.selected_surface_brush, 3);
    world.DeleteBrush(2); // selected first
    EXPECT_EQ(Items(world.group[0].brushes), (Ints{1, 3}));
    EXPECT_EQ(Items(world.group_selection), Ints{0});
    EXPECT_EQ(world.first_selected_id, world.brush[1]->GetObjectID());
    world.DeleteBrush(3);
    EXPECT_EQ(world.GetGroupCount(), 0);
    EXPECT_EQ(world.group_selection.GetItemCount(), 0);
    world.DeleteBrush(2);
    EXPECT_EQ(world.selected_surface_brush, -1);
    EXPECT_EQ(BrokenRule(world), "");
}

} // namespace
