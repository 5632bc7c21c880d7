#include <gtest/gtest.h>

#include "drawing/ViewSetup.h"
#include "scene/Entity.h"

namespace {

class EntityDrawingTest : public ViewTest {
protected:
    EntityDrawingTest() { SetView(VIEW_TOP); }

    Entity& Add(const char* type_word, const D3DVECTOR& position = {}, float half = 8) {
        auto entity = std::make_unique<Entity>();
        entity->str_type = type_word;
        entity->position = position;
        entity->model_size = {half, half, half};
        entity->color = 0xFF00FF00;
        entity->GenerateNewObjectID();
        return *world.AddEntity(std::move(entity));
    }
    static void SetFloat(Entity& e, const char* name, float value) {
        EntityParameter parameter;
        parameter.name = name;
        parameter.type = EPT_FLOAT;
        parameter.p_float = value;
        e.AddParameter(parameter);
    }
    void Select(const Entity& e) { world.entity_selection.AddItem(world.GetEntityIndex(&e)); }
    void Draw() {
        screen.NextFrame();
        world.RenderEntities(context);
    }
    bool Shows() {
        Draw();
        return !IsEmpty();
    }
};

constexpr uint32_t GREEN = 0x00FF00, RED = 0xFF0000, YELLOW = 0xFFFF00;

} // namespace

TEST_F(EntityDrawingTest, TheBoxAndItsStar) {
    Entity& e = Add("INFO", {2, 0, 0});
    e.offset = {2, 0, 0};
    constexpr int STAR_PIXELS = 4; // two diagonals of two pixels
    Draw();
    ExpectOutline(60, 56, 76, 72, GREEN, STAR_PIXELS);
    EXPECT_EQ(screen.At(67, 63), GREEN);
    EXPECT_EQ(screen.At(68, 64), GREEN);
    EXPECT_EQ(screen.At(68, 63), GREEN);
    EXPECT_EQ(screen.At(67, 64), GREEN);
    world.entity_selection.AddItem(0);
    Add("INFO");
    world.entity_selection.AddItem(1); // not alone: no circle
    world.entity.back()->is_hidden = true;
    Draw();
    ExpectOutline(60, 56, 76, 72, RED, STAR_PIXELS);
}

TEST_F(EntityDrawingTest, WhatIsShownAndAsWhat) {
    Entity& e = Add("POINT_LIGHT");
    EXPECT_TRUE(Shows());
    for (bool Entity::*flag : {&Entity::is_hidden, &Entity::is_hidden_special}) {
        e.*flag = true;
        EXPECT_FALSE(Shows());
        e.*flag = false;
    }
    struct Case {
        const char* type_word;
        bool DisplayFilters::*filter;
        bool shown;
    };
    for (const Case& c : {Case{"POINT_LIGHT", &DisplayFilters::show_lights, false},
                          {"CORONA", &DisplayFilters::show_lights, false},
                          {"point_light", &DisplayFilters::show_lights, true},
                          {"VISIBILITY_EYE", &DisplayFilters::show_eyes, false},
                          {"PARTICLE", &DisplayFilters::show_particles, false},
                          {"PARTICLE", &DisplayFilters::show_lights, true},
                          {"INFO", &DisplayFilters::show_entities, false}}) {
        e.str_type = c.type_word;
        context.filters = {};
        context.filters.*c.filter = false;
        EXPECT_EQ(Shows(), c.shown) << c.type_word;
    }
    context.filters = {};
    e.model = EM_MESH; // without a mesh
    EXPECT_FALSE(Shows());
    context.filters.show_nonbox_entities = false;
    EXPECT_TRUE(Shows());
}

TEST_F(EntityDrawingTest, TheIconCoversACube) {
    Entity& e = Add("INFO");
    e.bitmap = MakeTexture(2, 2, {0xFFFFFFFF, 0xFF0000FF, 0xFFFFFFFF, 0xFF0000FF});
    for (const int view : {VIEW_TOP, VIEW_FRONT, VIEW_LEFT}) {
        SetView(view);
        Draw();
        EXPECT_EQ(screen.CountOf(0xFFFFFF), 8 * 16) << view;
        EXPECT_EQ(screen.CountOf(0x0000FF), 8 * 16) << view;
        EXPECT_EQ(screen.At(56, 56), 0xFFFFFFu) << view; // its left stands left
        EXPECT_EQ(screen.At(71, 71), 0x0000FFu) << view;
    }
    Select(e);
    Draw();
    EXPECT_EQ(screen.At(57, 57), RED);
    context.filters.show_nonbox_entities = false;
    world.entity_selection.ClearList();
    SetView(VIEW_TOP);
    Draw();
    ExpectOutline(56, 56, 72, 72, GREEN, 4);
}

TEST_F(EntityDrawingTest, TheMeshTurnsByItsOrientation) {
    Entity& e = Add("INFO");
    MeshSurface part;
    part.vertices = {{0, 0, 8}, {16, 0, 8}, {16, 0, 0}, {0, 0, 0}}; // clockwise from above
    part.tri_indices = {{{0, 1, 2}}, {{0, 2, 3}}, {{0, 1, 9}}};
    e.mesh = std::make_unique<Mesh>();
    e.mesh->surfaces.push_back(part);
    Draw();
    EXPECT_EQ(screen.CountOf(0xFFFFFF), 16 * 8);
    EXPECT_EQ(screen.At(79, 57), 0xFFFFFFu);
    SetFloat(e, "orientation", 90); // x to z, z to -x
    Draw();
    EXPECT_EQ(screen.CountOf(0xFFFFFF), 16 * 8);
    EXPECT_EQ(screen.At(57, 49), 0xFFFFFFu);
    EXPECT_EQ(screen.At(63, 63), 0xFFFFFFu);
}

TEST_F(EntityDrawingTest, KeyPointsShowWithTheirPath) {
    Entity& owner = Add("CAMERA");
    owner.is_hidden = true;
    Entity &point = Add("PATH_POINT_POS"), &other = Add("PATH_POINT_TGT");
    other.is_hidden = true;
    owner.path.Add(point.GetObjectID());
    owner.target_path.Add(other.GetObjectID());
    EXPECT_TRUE(Shows());
    point.path_parent_id = owner.GetObjectID();
    EXPECT_FALSE(Shows());
    Select(other); // of the same path
    EXPECT_TRUE(Shows());
    world.entity_selection.ClearList();
    Select(owner); // the owner alone does not select its path
    EXPECT_FALSE(Shows());
    Select(point);
    EXPECT_TRUE(Shows());
    world.entity_selection.ClearList();
    point.path_parent_id = 0x7FFFFFFF; // no such object
    EXPECT_TRUE(Shows());
}

TEST_F(EntityDrawingTest, RangesAreCircles) {
    Entity& light = Add("POINT_LIGHT", {5, 7, 0}, 2);
    Select(light);
    // Yellow pixels lie about the centre, up to a pixel off the radius.
    const auto expect_circle = [&](int cx, int cy, double radius, uint32_t color) {
        Draw();
        int count = 0;
        for (int y = 0; y < SIDE; ++y)
            for (int x = 0; x < SIDE; ++x)
                if (screen.At(x, y) == color) {
                    ++count;
                    EXPECT_NEAR(std::hypot(x + 0.5 - cx, y + 0.5 - cy), radius, 1.1);
                }
        EXPECT_GT(count, 4 * radius);
        EXPECT_LT(count, 8 * radius);
    };
    SetView(VIEW_TOP, -1);
    expect_circle(66, 64, 50, YELLOW); // 100 units, as it is alone; x of 2.5 pixels
    Entity& second = Add("POINT_LIGHT", {5, 7, 0}, 2);
    second.is_hidden = true;
    Select(second);
    Draw();
    EXPECT_EQ(screen.CountOf(YELLOW), 0);
    SetFloat(light, "range", 40);
    SetView(VIEW_TOP);
    expect_circle(69, 64, 40, YELLOW);
    SetView(VIEW_FRONT);
    expect_circle(69, 57, 40, YELLOW);
    SetView(VIEW_LEFT);
    expect_circle(64, 57, 40, YELLOW);
    SetFloat(light, "falloff", 20);
    expect_circle(64, 57, 20, 0xF4BE00);
    SetCamera(100);
    Draw();
    EXPECT_EQ(screen.CountOf(YELLOW), 0);
    EXPECT_EQ(screen.CountOf(0xF4BE00), 0);
}

TEST_F(EntityDrawingTest, SpotlightsAreCones) {
    Entity& light = Add("POINT_LIGHT", {}, 2);
    Entity& target = Add("target_position", {90, 0, 0}, 2);
    target.is_hidden = true;
    light.AddLinkedObjectID(target.GetObjectID());
    SetFloat(light, "range", 40);
    SetFloat(light, "spotlight_angle", 90);
    EntityParameter enable;
    enable.name = "spotlight_enable";
    enable.p_bool = true;
    light.AddParameter(enable);
    Select(light);
    Draw();
    // The ring stands edge on, 40 units off and 40 wide; rays go to its ends and its middle.
    for (const POINT& p : {POINT{104, 30}, {104, 64}, {104, 100}, {70, 70}, {70, 57}, {80, 64}})
        EXPECT_EQ(screen.At(p.x, p.y), YELLOW) << p.x << " " << p.y;
    EXPECT_EQ(screen.At(60, 64), 0u);
    EXPECT_EQ(crvMatrices[CRM_WORLD], crIdentity());
    target.position = {0, 90, 0}; // straight up
    SetView(VIEW_FRONT);
    Draw();
    EXPECT_EQ(screen.At(64, 24), YELLOW);
    EXPECT_EQ(screen.At(64, 44), YELLOW);
    target.position = light.position; // no direction: down
    Draw();
    EXPECT_EQ(screen.At(64, 84), YELLOW);
    EXPECT_EQ(screen.At(64, 44), 0u);
}

TEST_F(EntityDrawingTest, ActorsShowWhereTheyFace) {
    Entity& actor = Add("Actor", {0, 0, 0}, 8);
    Draw();
    EXPECT_EQ(screen.At(64, 52), 0xFFFFFFu); // orientation 0: along z, twice the half size
    EXPECT_EQ(screen.At(64, 48), 0xFFFFFFu);
    EXPECT_EQ(screen.At(64, 47), 0u);
    SetFloat(actor, "orientation", 90); // 180 degrees: against x
    Draw();
    EXPECT_EQ(screen.At(50, 64), 0xFFFFFFu);
    EXPECT_EQ(screen.At(64, 50), 0u);
}

TEST_F(EntityDrawingTest, TheCameraIsMarkedInTheOtherViews) {
    context.camera_position = {4, 0, 0};
    const auto draw = [&] {
        screen.NextFrame();
        world.RenderCameraPosition(context);
    };
    draw();
    EXPECT_EQ(screen.At(44, 40), 0xFF4040u); // from (36, 32) to (100, 96)
    EXPECT_EQ(screen.At(44, 87), 0xFF4040u); // from (36, 96) to (100, 32)
    EXPECT_EQ(screen.CountOf(0xFF4040), 2 * 64);
    EXPECT_NE(screen.At(90, 64), 0xFF4040u);
    context.camera_look = {1, 0, 0};
    draw();
    EXPECT_EQ(screen.At(90, 64), 0xFF4040u) << "right of its middle at (68, 64)";
    EXPECT_NE(screen.At(50, 64), 0xFF4040u);
    context.camera_look = {0.5f, 0, 0}; // to 132: the head is at 120, and opens toward the camera
    draw();
    EXPECT_EQ(screen.At(115, 59), 0xFF4040u);
    EXPECT_NE(screen.At(125, 59), 0xFF4040u);
    context.filters.show_entities = false;
    draw();
    EXPECT_TRUE(IsEmpty());
    context.filters = {};
    SetCamera(100);
    draw();
    EXPECT_TRUE(IsEmpty());
}
