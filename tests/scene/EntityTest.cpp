#include <gtest/gtest.h>

#include "scene/FrontEnd.h"
#include "scene/Scenes.h"

namespace {

EntityParameter Parameter(const char* name, EntityParameterType type) {
    EntityParameter p;
    p.name = name;
    p.type = type;
    return p;
}
EntityParameter FloatOf(const char* name, float value) {
    EntityParameter p = Parameter(name, EPT_FLOAT);
    p.p_float = value;
    return p;
}
EntityParameter ConstantOf(const char* name, const char* value, std::vector<std::string> choices = {}) {
    EntityParameter p = Parameter(name, EPT_CONSTANT);
    p.p_text = value;
    p.constant = std::move(choices);
    return p;
}

class Listener : public FrontEnd {
public:
    void SetLastEntityPosition(const D3DVECTOR& p) override { last = p; }
    bool IsClipActive() const override { return clip_active; }
    D3DVECTOR last;
    bool clip_active = false;
};

TEST(Entity, ParametersAreFoundByExactName) {
    Entity entity;
    EntityParameter commented = FloatOf("range", 1);
    commented.comment = "how far";
    commented.has_comment = true;
    entity.AddParameter(commented);
    entity.AddParameter(FloatOf("Range", 2));
    entity.AddParameter(FloatOf("range", 3)); // replaces, the comment stays
    entity.AddParameterConstant("class", "guard");
    ASSERT_EQ(entity.parameter.size(), 3u);
    EXPECT_EQ(entity.GetParameterIndex("Range"), 1);
    EXPECT_EQ(entity.GetParameterStr("range")->comment, "how far");
    EXPECT_EQ(entity.FloatParameter("range"), 3.0f);
    EXPECT_EQ(entity.FloatParameter("RANGE", 7), 7.0f);
    EXPECT_EQ(entity.FloatParameter("class", 7), 7.0f); // another type
    EXPECT_TRUE(entity.BoolParameter("range", true));
    EXPECT_EQ(entity.ColorParameter("range"), COLOR{});
    entity.RemoveParameter(-1);
    entity.RemoveParameter(3);
    entity.RemoveParameter(0);
    EXPECT_EQ(entity.parameter[0].name, "Range");
    EXPECT_EQ(EntityParameter::NameChecksum("range"), 'r' + 'a' + 'n' + 'g' + 'e');
    EXPECT_EQ(EntityParameter::NameChecksum("\xFF\x80"), -129);
}

TEST(Entity, OrientationStaysWithinATurn) {
    const struct {
        float start;
        int angle;
        float result;
    } cases[] = {{300, 90, 30}, {30, -90, 300}, {0, 360, 360}, {350, 10, 360}, {10, -10, 0}};
    for (const auto& c : cases) {
        Entity entity;
        entity.AddParameter(FloatOf("orientation", c.start));
        EXPECT_TRUE(entity.AddOrientation(c.angle));
        EXPECT_EQ(entity.FloatParameter("orientation"), c.result);
    }
    Entity entity;
    entity.AddParameter(Parameter("orientation", EPT_INT));
    EXPECT_FALSE(entity.AddOrientation(5));
    EXPECT_FALSE(entity.AddRange(5));
    entity.AddParameter(FloatOf("range", 10));
    EXPECT_TRUE(entity.AddRange(-32));
    EXPECT_EQ(entity.FloatParameter("range"), -22.0f);
}

TEST(Entity, OldParametersComeUnderTheirNewNames) {
    const char* values[][2] = {{"move_only", "ignore"},
                               {"move&look", "look"},
                               {"move&attack", "attack"},
                               {"move&attack_when_hit", "look_until_hit"},
                               {"whatever", "attack"}};
    for (const auto& [old_value, new_value] : values) {
        Entity entity;
        EXPECT_TRUE(entity.TryConvert(ConstantOf("attack_type", old_value)));
        const EntityParameter* p = entity.GetParameterStr("watch_enemy_type");
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(p->p_text, new_value);
        EXPECT_EQ(p->comment, "Converted from attack_type");
        EXPECT_EQ(p->constant.size(), 5u);
    }
    Entity entity;
    EXPECT_TRUE(entity.TryConvert(FloatOf("initial_orientation", 45)));
    EXPECT_EQ(entity.FloatParameter("orientation"), 45.0f);
    EXPECT_FALSE(entity.TryConvert(Parameter("initial_orientation", EPT_INT)));
    EXPECT_FALSE(entity.TryConvert(FloatOf("attack_type", 1)));
    EXPECT_FALSE(entity.TryConvert(FloatOf("unknown", 1)));
    EXPECT_EQ(entity.parameter.size(), 1u);
}

TEST(Entity, AssignmentIsDeepAndLeavesIdentityAndState) {
    Entity source;
    source.name = "lamp";
    source.position = {1, 2, 3};
    source.mesh = std::make_unique<Mesh>();
    source.mesh->surfaces.resize(1);
    source.mesh->surfaces[0].texture = 5;
    source.AddParameter(FloatOf("range", 9));
    source.is_hidden = true;
    source.cell = 4;
    source.AddLinkedObjectID(3);
    Entity target;
    target.AddLinkedObjectID(8);
    target.cell = 6;
    target = source;
    EXPECT_EQ(target.name, "lamp");
    EXPECT_EQ(target.position, (D3DVECTOR{1, 2, 3}));
    ASSERT_NE(target.mesh, nullptr);
    EXPECT_NE(target.mesh, source.mesh);
    EXPECT_EQ(target.mesh->surfaces[0].texture, 5u);
    EXPECT_EQ(target.FloatParameter("range"), 9.0f);
    EXPECT_FALSE(target.is_hidden);
    EXPECT_EQ(target.cell, 6);
    EXPECT_TRUE(target.HasLinkedObjectID(8) && !target.HasLinkedObjectID(3));
    target = *&target; // assigning to itself changes nothing
    EXPECT_EQ(target.parameter.size(), 1u);
    target.str_type = "Point_Light";
    EXPECT_TRUE(target.IsType("POINT_LIGHT"));
    EXPECT_FALSE(target.IsPathPoint());
    target.name = "object_point";
    EXPECT_TRUE(target.IsPathPoint());
}

TEST(Entity, TheFrontEndHearsOfPlacesAndDecidesOnClipping) {
    Listener listener;
    SetFrontEnd(&listener);
    Entity entity;
    entity.SetPosition({4, 5, 6});
    EXPECT_EQ(listener.last, (D3DVECTOR{4, 5, 6}));
    entity.is_hidden_by_clipbox = true;
    EXPECT_FALSE(entity.IsHidden());
    listener.clip_active = true;
    EXPECT_TRUE(entity.IsHidden());
    SetFrontEnd(nullptr);
    EXPECT_FALSE(entity.IsHidden());
    entity.is_hidden_special = true;
    EXPECT_TRUE(entity.IsHidden());
}

TEST(Entity, ConvertingTheSelectionKeepsWhatFits) {
    World world;
    Entity& old = *world.AddEntity(std::make_unique<Entity>());
    old.position = {7, 8, 9};
    old.variable_name = "gate";
    old.AddLinkedObjectID(12);
    old.AddParameter(FloatOf("speed", 3));
    old.AddParameter(FloatOf("sound", 1));
    old.AddParameter(ConstantOf("state", "OPEN"));
    old.AddParameter(ConstantOf("mode", "fast"));
    Entity kind;
    kind.name = "door";
    kind.AddParameter(FloatOf("speed", 1));
    kind.AddParameter(Parameter("sound", EPT_INT));
    kind.AddParameter(ConstantOf("state", "closed", {"open", "closed"}));
    kind.AddParameter(ConstantOf("mode", "slow", {"slow"}));
    world.entity_selection.AddItem(0);
    world.ConvertSelectedEntities(kind);
    EXPECT_EQ(old.name, "door");
    EXPECT_EQ(old.variable_name, "gate");
    EXPECT_EQ(old.position, (D3DVECTOR{7, 8, 9}));
    EXPECT_TRUE(old.HasLinkedObjectID(12));
    EXPECT_EQ(old.FloatParameter("speed"), 3.0f);
    EXPECT_EQ(old.GetParameterStr("sound")->p_int, 0);
    EXPECT_EQ(old.GetParameterStr("state")->p_text, "OPEN");
    EXPECT_EQ(old.GetParameterStr("state")->constant.size(), 2u);
    EXPECT_EQ(old.GetParameterStr("mode")->p_text, "slow");
}

TEST(Entity, ChangingAParameterObeysTheTypeFilter) {
    World world;
    for (const char* type : {"LAMP", "DOOR", "LAMP"}) {
        Entity& e = *world.AddEntity(std::make_unique<Entity>());
        e.str_type = type;
        e.AddParameter(FloatOf("range", 1));
    }
    world.entity_selection.AddItem(0);
    world.entity_selection.AddItem(1);
    world.ChangeEntityParameter(FloatOf("range", 5), "lamp", false);
    EXPECT_EQ(world.entity[0]->FloatParameter("range"), 5.0f);
    EXPECT_EQ(world.entity[1]->FloatParameter("range"), 1.0f);
    EXPECT_EQ(world.entity[2]->FloatParameter("range"), 1.0f); // not selected
    world.ChangeEntityParameter(FloatOf("range", 6), nullptr, true);
    EXPECT_EQ(world.entity[1]->FloatParameter("range"), 6.0f);
    world.ChangeEntityParameter(Parameter("range", EPT_INT), nullptr, false); // another type has no value for it
    world.ChangeEntityParameter(FloatOf("absent", 6), nullptr, false);
    EXPECT_EQ(world.entity[1]->FloatParameter("range"), 6.0f);
    EXPECT_EQ(world.entity[1]->parameter.size(), 1u);
}

} // namespace
