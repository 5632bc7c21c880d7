#include <gtest/gtest.h>

#include "drawing/ViewDrawing.h"
#include "drawing/ViewSetup.h"
#include "scene/Entity.h"

namespace {

class ConnectionLinesTest : public ViewTest {
protected:
    ConnectionLinesTest() {
        SetView(VIEW_TOP);
        context.show_links = true;
    }
    Entity& Add(const char* type_word, const D3DVECTOR& position) {
        auto entity = std::make_unique<Entity>();
        entity->str_type = type_word;
        entity->position = position;
        entity->GenerateNewObjectID();
        return *world.AddEntity(std::move(entity));
    }
    Brush& AddBrush(const D3DVECTOR& pivot) {
        return AddBox(world, pivot - D3DVECTOR{4, 4, 4}, pivot + D3DVECTOR{4, 4, 4}, {0, 0, 1, 1});
    }
    // The colour in the middle of the view, where the shafts of these tests pass.
    uint32_t Shaft() {
        screen.NextFrame();
        world.RenderConnectionLines(context);
        return screen.At(MIDDLE, MIDDLE);
    }
};

constexpr uint32_t LINK = 0xFFD200, TARGET = 0xEA2CB9, TRIGGER = 0x88B32E;
constexpr D3DVECTOR LEFT{-40, 0, 0}, RIGHT{40, 0, 0};

} // namespace

TEST_F(ConnectionLinesTest, TheArrowHead) {
    DrawArrow(LEFT, RIGHT, 0xFF00FF00);
    // The tip 20 units before the middle, on the side of the start; ribs go back 10 and aside 10. The two that rise and
    // fall lie on the shaft.
    EXPECT_EQ(screen.At(24, 64), 0x00FF00u);
    EXPECT_EQ(screen.At(103, 64), 0x00FF00u);
    EXPECT_EQ(screen.At(44, 63), 0x00FF00u); // at 44.5 half a pixel aside
    EXPECT_EQ(screen.At(50, 57), 0x00FF00u);
    EXPECT_EQ(screen.At(53, 54), 0x00FF00u);
    EXPECT_EQ(screen.At(50, 70), 0x00FF00u);
    EXPECT_EQ(screen.At(43, 62), 0u);
    EXPECT_EQ(screen.At(54, 53), 0u);
    EXPECT_EQ(screen.CountOf(0x00FF00), 80 + 10 + 9); // one rib starts on the shaft
    // Along y the shaft stands on end and all four ribs of 10 pixels show, which share one; along z two of them show.
    struct Case {
        D3DVECTOR to;
        int pixels;
    };
    for (const Case& c : {Case{{0, -40, 0}, 39}, {{0, 0, -60}, 60 + 10 + 9}}) {
        screen.NextFrame();
        DrawArrow({}, c.to, 0xFF00FF00);
        EXPECT_EQ(screen.CountOf(0x00FF00), c.pixels) << c.to.y;
    }
    screen.NextFrame();
    DrawArrow(LEFT, LEFT, 0xFF00FF00);
    EXPECT_TRUE(IsEmpty());
}

TEST_F(ConnectionLinesTest, LinksOfBrushes) {
    Brush& brush = AddBrush(LEFT);
    Entity& target = Add("INFO", RIGHT);
    brush.AddLinkedObjectID(target.GetObjectID());
    brush.AddLinkedObjectID(NO_OBJECT_ID);
    brush.AddLinkedObjectID(0x123456); // no such object
    EXPECT_EQ(Shaft(), LINK);
    EXPECT_EQ(screen.At(77, 57), LINK); // the head points at the target: tip at 84, back to 74
    struct Case {
        const char* type_word;
        uint32_t color;
    };
    for (const Case& c : {Case{"TARGET_POSITION", TARGET},
                          {"BOX_TRIGGER", TRIGGER},
                          {"RADIAL_TRIGGER", TRIGGER},
                          {"KEY_TRIGGER", TRIGGER},
                          {"POINT_LIGHT", LINK}}) {
        target.str_type = c.type_word;
        EXPECT_EQ(Shaft(), c.color) << c.type_word;
    }
    context.filters.show_lights = false;
    EXPECT_EQ(Shaft(), 0u) << "the target is filtered out";
    context.filters = {};
    target.is_hidden = true;
    EXPECT_EQ(Shaft(), 0u);
    target.is_hidden = false;
    brush.is_hidden = true;
    EXPECT_EQ(Shaft(), 0u);
    brush.is_hidden = false;
    context.filters.show_brushes = false;
    EXPECT_EQ(Shaft(), 0u);
    brush.type = BT_PORTAL;
    EXPECT_EQ(Shaft(), LINK);
    context.show_links = false;
    EXPECT_EQ(Shaft(), 0u);
}

TEST_F(ConnectionLinesTest, LinksOfEntities) {
    Entity& light = Add("POINT_LIGHT", LEFT);
    Brush& target = AddBrush(RIGHT);
    light.AddLinkedObjectID(target.GetObjectID());
    EXPECT_EQ(Shaft(), LINK);
    context.filters.show_lights = false; // asked of targets only
    context.filters.show_brushes = false;
    EXPECT_EQ(Shaft(), LINK);
    target.is_hidden = true;
    EXPECT_EQ(Shaft(), 0u);
    target.is_hidden = false;
    context.filters.show_entities = false;
    EXPECT_EQ(Shaft(), 0u);
    context.filters = {};
    light.is_hidden_special = true;
    EXPECT_EQ(Shaft(), 0u);
}

TEST_F(ConnectionLinesTest, CommandsOfSelectedTriggers) {
    Entity& trigger = Add("BOX_TRIGGER", LEFT);
    EntityParameter commands;
    commands.name = "commands";
    commands.type = EPT_STRING;
    trigger.AddParameter(commands);
    Brush& door = AddBrush(RIGHT);
    const auto shaft = [&](const char* text) {
        trigger.GetParameterStr("commands")->p_text = text;
        return Shaft();
    };
    door.name = "Door 1";
    EXPECT_EQ(shaft("open \"DOOR 1\" on"), 0u) << "not selected";
    world.entity_selection.AddItem(0);
    EXPECT_EQ(shaft("open \"DOOR 1\" on"), TRIGGER);
    EXPECT_EQ(screen.At(77, 57), TRIGGER) << "it points at the door";
    EXPECT_EQ(shaft("open DOOR 1"), 0u);
    EXPECT_EQ(shaft("open \"door 1"), TRIGGER) << "no closing quote";
    EXPECT_EQ(shaft(""), 0u);
    door.name = "ON";
    EXPECT_EQ(shaft("\t on\n off"), 0u);
    door.name = "";
    EXPECT_EQ(shaft("\"\" x"), 0u);
    Entity& lamp = Add("INFO", RIGHT);
    lamp.variable_name = "lamp";
    EXPECT_EQ(shaft("switch\tLamp"), TRIGGER);
    trigger.str_type = "INFO";
    EXPECT_EQ(shaft("lamp"), 0u);
}
