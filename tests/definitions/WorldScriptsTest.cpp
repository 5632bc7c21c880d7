#include <set>

#include <gtest/gtest.h>

#include "definitions/ActorDefGroup.h"
#include "definitions/ScriptSyntax.h"
#include "foundation/Desktop.h"
#include "foundation/Random.h"
#include "foundation/TempFolder.h"
#include "scene/World.h"

namespace {

class WorldScripts : public testing::Test {
protected:
    void SetUp() override { SetDesktop(&desktop); }
    void TearDown() override { SetDesktop(nullptr); }

    Entity& Add(const char* type, std::initializer_list<EntityParameter> parameters) {
        auto e = std::make_unique<Entity>();
        e->str_type = type;
        e->parameter = parameters;
        Entity* added = world.AddEntity(std::move(e));
        added->GenerateNewObjectID();
        return *added;
    }
    static EntityParameter Text(const char* name, const char* value, EntityParameterType type = EPT_CONSTANT) {
        EntityParameter parameter;
        parameter.name = name;
        parameter.type = type;
        parameter.p_text = value;
        return parameter;
    }

    TempFolder folder;
    CurrentFolder current{folder.Path()};
    HeadlessDesktop desktop;
    World world;
};

TEST_F(WorldScripts, OldScriptsAreConvertedByTheirTables) {
    WriteBytes("commands.def", "#MoveTo\n{\n}\n");
    WriteBytes("conditions.def", "#IsDead\n{\n}\n");
    Entity& e = Add("ACTOR", {Text("script", "move_to", EPT_STRING), Text("commands", "move_to is_dead", EPT_STRING),
                              Text("conditions", "is_dead move_to", EPT_STRING), Text("class", "move_to")});
    Entity& other = Add("DOOR", {Text("script", "move_to", EPT_FILENAME)});
    world.ConvertOldScripts(CScriptSyntax("commands.def"), CScriptSyntax("conditions.def"));
    EXPECT_EQ(e.parameter[0].p_text, "MoveTo");
    EXPECT_EQ(e.parameter[1].p_text, "MoveTo is_dead");
    EXPECT_EQ(e.parameter[2].p_text, "IsDead move_to");
    EXPECT_EQ(e.parameter[3].p_text, "move_to");
    EXPECT_EQ(other.parameter[0].p_text, "move_to"); // no script text
    ASSERT_EQ(desktop.boxes.size(), 1u);
    EXPECT_EQ(desktop.boxes[0].text, "Old scripts have been converted. Please deselect all entities and close Entity "
                                     "console before you do any further work.");
}

TEST_F(WorldScripts, ModelsOfSelectedActorsAreDrawnFromTheirSet) {
    for (const char* name : {"a", "b", "c"})
        WriteBytes(std::string("Scripts/Actors/") + name + ".def", "#General\nMarrowsGroup = Guards\n");
    WriteBytes("Scripts/Actors/thief.def", "#General\nMarrowsGroup = Thieves\n");
    ActorDefGroups groups;
    world.RandomizeBotModels(groups); // without any set
    groups.ParseActorDefGroups();
    Entity& guard = Add("ACTOR", {Text("class", "guards"), Text("model_script", "old")});
    Entity& thief = Add("ACTOR", {Text("class", "Thieves"), Text("model_script", "old")});
    Entity& unselected = Add("ACTOR", {Text("class", "guards"), Text("model_script", "old")});
    Entity& lamp = Add("LAMP", {Text("class", "guards"), Text("model_script", "old")});
    Entity& bare = Add("ACTOR", {Text("class", "guards")});
    for (const int e : {0, 1, 3, 4})
        world.entity_selection.AddItem(e);
    std::set<std::string> drawn;
    random_mt.seedMT(5);
    for (int i = 0; i < 60; ++i) {
        world.RandomizeBotModels(groups);
        drawn.insert(guard.parameter[1].p_text);
        EXPECT_EQ(thief.parameter[1].p_text, "thief");
    }
    EXPECT_EQ(drawn, (std::set<std::string>{"a", "b", "c"}));
    EXPECT_EQ(unselected.parameter[1].p_text, "old");
    EXPECT_EQ(lamp.parameter[1].p_text, "old");
    EXPECT_EQ(bare.parameter.size(), 1u);
}

} // namespace
