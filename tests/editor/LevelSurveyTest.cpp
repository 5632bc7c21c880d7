// The summary of a level, the log of its entities, and a selection that grows along its links.
#include "editor/EditorFixture.h"
#include "editor/EntityScripts.h"

class LevelSurveyTest : public EditorTest {
protected:
    static EntityParameter Text(const char* name, const char* value, EntityParameterType type = EPT_STRING) {
        EntityParameter p;
        p.name = name;
        p.type = type;
        p.p_text = value;
        return p;
    }
    void Link(BaseObject& from, BaseObject& to) { from.AddLinkedObjectID(to.GetObjectID()); }
    void SelectOnly(std::initializer_list<int> brushes, std::initializer_list<int> entities) {
        Level().ClearSelection();
        for (const int b : brushes)
            Level().SetBrushSelection(b, true);
        for (const int e : entities)
            Level().entity_selection.AddItem(e);
    }
};

TEST_F(LevelSurveyTest, SummaryOfNothing) {
    std::string text = "before ";
    Ed().GetLevelSummary(text);
    EXPECT_EQ(text,
              "before BRUSHES - total: 0\r\n  0x DESTROYABLE\r\n  0x SEE THROUGH\r\n  0x LADDERS\r\n  0x DYNAMIC\r\n"
              "  0x CLIP\r\n\r\nENTITIES - total 0\r\n");
}

TEST_F(LevelSurveyTest, SummaryCountsByKind) {
    AddBox({0, 0, 0}, {8, 8, 8}).properties = 0x40 | 0x80;
    AddBox({0, 0, 0}, {8, 8, 8}).properties = 0x80 | 0x4 | 0x1;
    AddBox({0, 0, 0}, {8, 8, 8}).properties = 0x2 | 0x100;
    for (const char* type : {"SOUND", "Item", "ITEM", "ITEM", "ACTOR", "SOUND", "ACTOR"})
        AddEntity(type, {});
    const char* const kinds[] = {"", "medkit", "axe", "Medkit", "wolf.ms", "", "bear.ms"};
    for (int i = 0; i < Level().GetEntityCount(); ++i) {
        Entity& e = EntityAt(i);
        if (e.IsType("ITEM")) {
            e.parameter.push_back(Text("class", "things"));
            e.parameter.push_back(Text("type", kinds[i]));
        } else if (e.IsType("ACTOR"))
            e.parameter.push_back(Text("model_script", kinds[i], EPT_FILENAME));
    }
    std::string text;
    Ed().GetLevelSummary(text);
    EXPECT_EQ(text, "BRUSHES - total: 3\r\n  1x DESTROYABLE\r\n  2x SEE THROUGH\r\n  1x LADDERS\r\n  1x DYNAMIC\r\n"
                    "  1x CLIP\r\n\r\nENTITIES - total 7\r\n"
                    "  2x ACTOR\r\n      1x bear.ms\r\n      1x wolf.ms\r\n"
                    "  3x Item\r\n      1x [things] axe\r\n      2x [things] medkit\r\n"
                    "  2x SOUND\r\n");
}

TEST_F(LevelSurveyTest, LogOfAllParametersAndOfScripts) {
    AddEntity("SOUND", {}); // no parameters: no heading
    Entity& e = AddEntity("ACTOR", {});
    e.variable_name = "wolf";
    EntityParameter p;
    p.name = "alive", p.type = EPT_BOOL, p.p_bool = true;
    e.parameter.push_back(p);
    p = {}, p.name = "count", p.type = EPT_INT, p.p_int = -3;
    e.parameter.push_back(p);
    p = {}, p.name = "range", p.type = EPT_FLOAT, p.p_float = 0.5f;
    e.parameter.push_back(p);
    p = {}, p.name = "pair", p.type = EPT_VECTOR2, p.p_vector2 = {1, 2.25f};
    e.parameter.push_back(p);
    p = {}, p.name = "wind", p.type = EPT_VECTOR3, p.p_vector3 = {1, 2, -3.5f};
    e.parameter.push_back(p);
    p = {}, p.name = "color", p.type = EPT_COLOR, p.p_color = {0, 1, 128 / 255.0f, 0, 1};
    e.parameter.push_back(p);
    e.parameter.push_back(Text("Script", "walk\nrun"));
    e.parameter.push_back(Text("OnDeath", "howl", EPT_FILENAME));
    e.parameter.push_back(Text("Only", "no script"));
    e.parameter.push_back(Text("mood", "calm", EPT_CONSTANT));
    const std::string rule(70, '#');
    const std::string heading =
        "\n" + rule + "\nACTOR: wolf (ID: " + std::to_string(e.GetObjectID()) + ")\n" + rule + "\n";
    const std::string script = "---- Script = \nwalk\nrun\n---- OnDeath = howl\n";

    Ed().LogEntities(false);
    EXPECT_EQ(ReadBytes("Marrowstead/entity_params.log"),
              heading +
                  "---- alive = True\n---- count = -3\n---- range = 0.5000\n---- pair = (1.0000, 2.2500)\n"
                  "---- wind = (1.00, 2.00, -3.50)\n---- color = (255, 128, 0, 255)\n" +
                  script + "---- Only = \nno script\n---- mood = calm\n");
    Ed().LogEntities(true);
    EXPECT_EQ(ReadBytes("Marrowstead/entity_params.log"), heading + script);
}

TEST_F(LevelSurveyTest, WhichParametersAreScripts) {
    EXPECT_TRUE(IsScriptParameter(Text("DEAD_SCRIPT", "")));
    EXPECT_FALSE(IsScriptParameter(Text("commands", "", EPT_FILENAME)));
    EXPECT_TRUE(IsScriptParameter(Text("OnX", "", EPT_INT)));
    for (const char* name : {"On", "Onward", "onDeath", "script2"})
        EXPECT_FALSE(IsScriptParameter(Text(name, ""))) << name;
}

TEST_F(LevelSurveyTest, ASelectionGrowsInBothDirections) {
    for (int i = 0; i < 4; ++i)
        AddBox({0, 0, 0}, {8, 8, 8});
    Entity& trigger = AddEntity("BOX_TRIGGER", {0, 0, 100});
    Entity& sound = AddEntity("SOUND", {0, 0, 200});
    Entity& eye = AddEntity("visibility_eye", {});
    Link(BrushAt(0), sound);
    Link(BrushAt(1), BrushAt(0));
    Link(trigger, sound);
    Link(trigger, BrushAt(2));
    Link(BrushAt(0), eye);
    SelectOnly({0}, {});
    Ed().SelectRelevant(false);
    EXPECT_EQ(Brushes(), (ints{0, 1, 2}));
    EXPECT_EQ(Entities(), (ints{1, 0})) << "no eye";
    EXPECT_TRUE(BrushAt(2).is_selected);
    EXPECT_EQ(Ed().editor_state, ES_IDLE) << "left alone";
    ExpectBox(Ed().selection_box, {0, 0, 0}, {8, 8, 200});
    SelectOnly({0}, {});
    Ed().SelectRelevant(true);
    EXPECT_EQ(Brushes(), (ints{0, 1})) << "what lies behind the trigger stays out";
    EXPECT_EQ(Entities(), ints{1});
}

TEST_F(LevelSurveyTest, EyesAloneFollowEyes) {
    AddBox({0, 0, 0}, {8, 8, 8});
    Entity& first = AddEntity("VISIBILITY_EYE", {});
    Entity& second = AddEntity("VISIBILITY_EYE", {});
    Entity& third = AddEntity("VISIBILITY_EYE", {});
    Entity& sound = AddEntity("SOUND", {});
    Link(first, second);
    Link(third, second);
    Link(first, sound);
    Link(first, BrushAt(0));
    SelectOnly({}, {0});
    Ed().SelectRelevant(false);
    EXPECT_EQ(Entities(), (ints{0, 1, 2}));
    EXPECT_TRUE(Brushes().empty());
    SelectOnly({0}, {0});
    Ed().SelectRelevant(false);
    EXPECT_EQ(Entities(), (ints{0, 3})) << "with a brush, all but eyes";
}

TEST_F(LevelSurveyTest, APathPointBringsItsPath) {
    Brush& owner = AddBox({0, 0, 0}, {8, 8, 8});
    for (int i = 0; i < 4; ++i) {
        Entity& point = AddEntity("PATH_POINT_POS", {});
        point.path_parent_id = owner.GetObjectID();
        (i < 3 ? owner.path : owner.target_path).Add(point.GetObjectID());
    }
    SelectOnly({}, {1});
    Ed().SelectRelevant(false);
    EXPECT_EQ(Entities(), (ints{1, 0, 2})) << "not the path of the target";
    EXPECT_TRUE(Brushes().empty());
}
