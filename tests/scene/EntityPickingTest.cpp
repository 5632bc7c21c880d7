// Clicks and rectangles on entities.
#include <algorithm>

#include <gtest/gtest.h>

#include "render/Device.h"
#include "render/Matrix.h"
#include "scene/SceneState.h"
#include "scene/Scenes.h"

namespace {

class EntityPicking : public testing::Test {
protected:
    Entity& Add(const D3DVECTOR& position, const char* type = "ACTOR") {
        auto e = std::make_unique<Entity>();
        e->position = position;
        e->str_type = type;
        e->model_size = {16, 16, 16};
        Entity* added = world.AddEntity(std::move(e));
        added->GenerateNewObjectID();
        return *added;
    }
    void Group(std::initializer_list<int> entities) {
        Selection members;
        for (const int e : entities)
            members.AddItem(e);
        world.AddGroup({}, members);
    }
    static PickRequest At(int view, const D3DVECTOR& place, bool additive = false) {
        PickRequest request;
        request.view = view;
        request.world_position = place;
        request.additive = additive;
        return request;
    }
    std::string LastStep() const {
        return world.undo_buffer.GetActionDescription(world.undo_buffer.GetActionCount() - 1);
    }
    using Ints = std::vector<int>;
    Ints Selected() const {
        Ints items = Items(world.entity_selection);
        std::sort(items.begin(), items.end());
        return items;
    }

    UndoFrontEnd front_end;
    World world;
};

TEST_F(EntityPicking, ARayAlongTheAxisOfTheView) {
    Add({100, 0, 0}), Add({0, 100, 0}), Add({0, 0, 100}), Add({100, 100, 100});
    struct Case {
        int view;
        D3DVECTOR place; // 0 where the view does not reach
        Ints expected;
    };
    const Case cases[] = {
        {VIEW_TOP, {100, 0, 0}, {0}},   {VIEW_TOP, {110, 0, 110}, {3}}, {VIEW_FRONT, {0, 100, 0}, {1}},
        {VIEW_FRONT, {100, 0, 0}, {0}}, {VIEW_LEFT, {0, 0, 100}, {2}},  {VIEW_LEFT, {0, 100, 100}, {3}},
        {VIEW_TOP, {0, 0, 60}, {}},     {VIEW_TOP, {0, 0, 0}, {1}},     {VIEW_FRONT, {116, 116, 0}, {3}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(world.EntityPointSelection(At(c.view, c.place)), !c.expected.empty());
        EXPECT_EQ(Selected(), c.expected) << c.view << ' ' << c.place.x << ' ' << c.place.y << ' ' << c.place.z;
    }
    world.entity[3]->offset = {0, 0, -50}; // of the shape
    EXPECT_TRUE(world.EntityPointSelection(At(VIEW_TOP, {100, 0, 50})));
    EXPECT_FALSE(world.EntityPointSelection(At(VIEW_TOP, {100, 0, 100})));
}

TEST_F(EntityPicking, TheFirstUnderThePointerOrAll) {
    Add({0, 0, 0}), Add({0, 50, 0}), Add({0, 0, 500});
    PickRequest click = At(VIEW_TOP, {4, 0, 4});
    world.EntityPointSelection(click);
    EXPECT_EQ(Selected(), Ints{0});
    EXPECT_EQ(world.first_selected_id, world.entity[0]->GetObjectID());
    click.multiple_entities = true;
    world.EntityPointSelection(click);
    EXPECT_EQ(Selected(), (Ints{0, 1}));
    EXPECT_EQ(LastStep(), "Select 2 object(s).");
    click.additive = true;
    world.entity[1]->position = {1, 2, 3};
    EXPECT_FALSE(world.EntityPointSelection(click));
    EXPECT_EQ(front_end.last_position, (D3DVECTOR{1, 2, 3})); // where the last one that went out stands
    Group({0, 1});
    EXPECT_TRUE(world.EntityPointSelection(click)); // one member does not undo the other
    EXPECT_EQ(Selected(), (Ints{0, 1}));
    EXPECT_EQ(Items(world.group_selection), Ints{0});
    EXPECT_FALSE(world.EntityPointSelection(click));
    EXPECT_EQ(world.group_selection.GetItemCount(), 0);
    click.ignore_groups = true;
    click.multiple_entities = false;
    EXPECT_TRUE(world.EntityPointSelection(click));
    EXPECT_EQ(Selected(), Ints{0});
}

TEST_F(EntityPicking, WhatIsHiddenOrFilteredIsNotTaken) {
    struct Case {
        const char* type;
        bool DisplayFilters::*filter;
    };
    static constexpr Case CASES[] = {{"POINT_LIGHT", &DisplayFilters::show_lights},
                                     {"CORONA", &DisplayFilters::show_lights},
                                     {"VISIBILITY_EYE", &DisplayFilters::show_eyes},
                                     {"PARTICLE", &DisplayFilters::show_particles},
                                     {"ACTOR", &DisplayFilters::show_entities}};
    Entity& e = Add({0, 0, 0});
    const Box around = MakeBox({-8, -8, -8}, {8, 8, 8});
    for (const Case& c : CASES) {
        e.str_type = c.type;
        PickRequest request = At(VIEW_TOP, {});
        EXPECT_TRUE(world.EntityPointSelection(request)) << c.type;
        EXPECT_TRUE(world.EntityDragBoxSelection(around, request, false)) << c.type;
        request.filters.*c.filter = false;
        EXPECT_FALSE(world.EntityPointSelection(request)) << c.type;
        EXPECT_FALSE(world.EntityDragBoxSelection(around, request, false)) << c.type;
        EXPECT_TRUE(world.EntityDragBoxSelection(around, request, true)) << c.type;
    }
    e.is_hidden_special = true;
    EXPECT_FALSE(world.EntityPointSelection(At(VIEW_TOP, {})));
    EXPECT_FALSE(world.EntityDragBoxSelection(around, At(VIEW_TOP, {}), true));
}

TEST_F(EntityPicking, ThePerspectiveTakesTheNearestInFront) {
    Add({0, 0, 300}), Add({0, 0, 100}), Add({0, 0, -700});
    Entity& shifted = Add({0, 0, 50});
    shifted.offset = {0, 0, 400}; // far away, but it stands near
    PickRequest click;
    click.view = VIEW_PERSPECTIVE;
    click.camera_position = {0, 0, -500};
    click.point = {256, 256};
    crSetViewport(0, 0, 512, 512);
    crMCurrent(CRM_VIEW);
    crMViewTo(click.camera_position, {0, 0, 0}, {0, 1, 0}, 0);
    crMCurrent(CRM_PROJ);
    crMSetIdentity();
    crMProj(PI / 2, 1, 10, 10000);
    const Ints order[] = {{3}, {1}, {0}, {}};
    for (const Ints& expected : order) {
        world.EntityPointSelection(click);
        EXPECT_EQ(Selected(), expected);
        for (const int e : expected)
            world.entity[static_cast<size_t>(e)]->is_hidden = true;
    }
    for (const uint32_t matrix : {CRM_VIEW, CRM_PROJ}) {
        crMCurrent(matrix);
        crMSetIdentity();
    }
    crMCurrent(CRM_WORLD);
    crSetViewport(-1, 0, 0, 0);
}

TEST_F(EntityPicking, GroupsBringBrushes) {
    Add({0, 0, 0}), Add({100, 0, 0}), Add({200, 0, 0});
    AddSelected(world, BoxBrush());
    world.entity_selection.AddItem(1);
    world.entity_selection.AddItem(2);
    world.CreateGroup();
    world.EntityPointSelection(At(VIEW_TOP, {100, 0, 0}));
    EXPECT_EQ(LastStep(), "Select 3 object(s).");
    EXPECT_TRUE(world.brush[0]->is_selected);
    world.EntityPointSelection(At(VIEW_TOP, {0, 0, 0}, true));
    EXPECT_TRUE(world.EntityPointSelection(At(VIEW_TOP, {200, 0, 0}, true)));
    EXPECT_EQ(Selected(), Ints{0});
    EXPECT_FALSE(world.brush[0]->is_selected);
    EXPECT_EQ(BrokenRule(world), "");
    EXPECT_TRUE(world.EntityDragBoxSelection(MakeBox({90, 0, -1}, {110, 0, 1}), At(VIEW_TOP, {}), false));
    EXPECT_EQ(Selected(), (Ints{1, 2}));
    EXPECT_TRUE(world.brush[0]->is_selected);
}

TEST_F(EntityPicking, ARectangleKeepsToOneType) {
    Add({0, 0, 0}, "ACTOR"), Add({10, 0, 0}, "CORONA"), Add({20, 900, 0}, "actor"), Add({30, 0, 0}, "ACTOR");
    world.entity[3]->model = EM_BITMAP; // has no box
    const Box box = MakeBox({-50, 0, -50}, {50, 0, 50});
    EXPECT_TRUE(world.EntityDragBoxSelection(box, At(VIEW_TOP, {}), false));
    EXPECT_EQ(Selected(), (Ints{0, 2})); // by the first one taken
    EXPECT_TRUE(world.EntityDragBoxSelection(box, At(VIEW_TOP, {}), true));
    EXPECT_EQ(Selected(), (Ints{0, 1, 2}));
    world.ClearSelection();
    world.entity_selection.AddItem(1);
    EXPECT_TRUE(world.EntityDragBoxSelection(box, At(VIEW_TOP, {}, true), false));
    EXPECT_EQ(Selected(), Ints{1});
    EXPECT_TRUE(world.EntityDragBoxSelection(box, At(VIEW_FRONT, {}), true)); // not so deep: without the high one
    EXPECT_EQ(Selected(), (Ints{0, 1}));
    EXPECT_TRUE(world.EntityDragBoxSelection(MakeBox({16, 0, 16}, {99, 0, 99}), At(VIEW_TOP, {}), true)); // touching
    EXPECT_EQ(Selected(), (Ints{0, 1, 2}));
    EXPECT_FALSE(world.EntityDragBoxSelection(MakeBox({80, 0, 0}, {99, 0, 9}), At(VIEW_TOP, {}), true));
}

TEST_F(EntityPicking, EditingAMovie) {
    Add({0, 0, 0}, "CAMERA"), Add({10, 0, 0}, "PATH_POINT_POS"), Add({20, 0, 0}, "ACTOR");
    PickRequest request = At(VIEW_TOP, {});
    request.movie_editing = true;
    EXPECT_TRUE(world.EntityDragBoxSelection(MakeBox({-50, 0, -50}, {50, 0, 50}), request, true));
    EXPECT_EQ(Selected(), (Ints{0, 1}));
    world.ClearSelection();
    EXPECT_TRUE(world.EntityPointSelection(request));
    request.additive = true;
    EXPECT_TRUE(world.EntityPointSelection(request)); // nothing would be left
    EXPECT_EQ(Selected(), Ints{0});
}

} // namespace
