#include <gtest/gtest.h>

#include "definitions/EntityParser.h"
#include "foundation/Desktop.h"
#include "foundation/Random.h"
#include "foundation/TempFolder.h"
#include "render/TestPictures.h"
#include "render/Textures.h"

namespace {

// The head of a definition that needs no base.
const std::string HEAD = "#Type <T>\n#TraceType <Trace>\n#EntityLocation <OneCellOnly>\n#EditorImage { MODEL(BOX) }\n";

std::string Definition(const std::string& name, const std::string& parameters = "") {
    return "#" + name + "\n" + HEAD + "#Parameters {" + parameters + "}\n";
}

class EntityParserTest : public testing::Test {
protected:
    EntityParserTest() {
        ForgetNotices();
        SetDesktop(&desktop);
    }
    ~EntityParserTest() override {
        SetDesktop(nullptr);
        crTDestroyAll(0xFFFFFFFF);
    }

    EntityParser Parse(std::string_view script) {
        WriteBytes("entities.def", script);
        return EntityParser("entities.def");
    }
    // The parameter x of a definition with this block.
    EntityParameter Parameter(const std::string& block) {
        EntityParser parser = Parse(Definition("A", block));
        const EntityParameter* parameter =
            parser.GetTemplateCount() == 1 ? parser.GetTemplate(0, false)->GetParameterStr("x") : nullptr;
        EXPECT_TRUE(parameter) << block;
        return parameter ? *parameter : EntityParameter();
    }
    static std::string Names(EntityParser& parser) {
        std::string names;
        for (int t = 0; t < parser.GetTemplateCount(); ++t)
            names += (t > 0 ? "," : "") + parser.GetTemplate(t, false)->name;
        return names;
    }

    TempFolder folder;
    CurrentFolder current{folder.Path()};
    HeadlessDesktop desktop;
};

} // namespace

TEST_F(EntityParserTest, ANameIsThatOfItsFirstDefinitionAndABaseTheFirstThatTheTextGoesOnWith) {
    EntityParser parser = Parse(
        Definition("lamp", "INT x = 0;") + Definition("Lamp", "INT x = 1;") + Definition("lampshade", "INT x = 2;") +
        Definition("lamp", "INT x = 3;") + Definition("shade", "INT x = 4;") + Definition("sha", "INT x = 5;") +
        "#A extends lampshade #Stop #B extends shadeless #Stop #C extends shark #Stop #D extends Lamp #Stop\n");
    const struct {
        const char* name;
        int index, x;
    } wanted[] = {{"lamp", 0, 0}, {"Lamp", 1, 1}, {"lampshade", 2, 2}, {"shade", 4, 4}, {"sha", 5, 5},
                  {"A", 6, 0},    {"B", 7, 4},    {"C", 8, 5},         {"D", 9, 1},     {"LAMP", -1, 0}};
    ASSERT_EQ(parser.GetTemplateCount(), 10);
    for (const auto& [name, index, x] : wanted) {
        EXPECT_EQ(parser.GetTemplateIndex(name), index) << name;
        const Entity* entity = parser.GetTemplate(name, false);
        ASSERT_EQ(entity != nullptr, index >= 0) << name;
        EXPECT_EQ(entity ? entity->GetParameterStr("x")->p_int : 0, x) << name;
    }
}

TEST_F(EntityParserTest, DefinitionWithAllLabels) {
    WriteBytes("Icons/lamp.tga", TargaBytes(2, 2, 24));
    EntityParser parser = Parse("/* # no { definition */ // # neither\n"
                                "#Lights\\Inner\\Lamp\n"
                                "#TYPE <POINT_LIGHT> #traceType < nOTRACE >\n"
                                "#EntityLocation <Anywhere>\n"
                                "#EditorImage { // } no end\n"
                                "  BITMAP(Icons\\lamp) COLOR(255, 128, 1) SIZE(8, 9.5, .5) OFFSET(0, -2, 1e1)\n"
                                "  MESH(lamp.msh) DEF_MESH(Actors\\lamp.def) MODEL(MESH) UNKNOWN _x \"\" 12\n"
                                "}\n"
                                "#Parameters { INT a = 1; }");
    ASSERT_EQ(parser.GetTemplateCount(), 1);
    const Entity& lamp = *parser.GetTemplate("Lamp", false);
    EXPECT_EQ(lamp.directory, "Lights");
    EXPECT_EQ(lamp.str_type, "POINT_LIGHT");
    EXPECT_FALSE(lamp.trace_entity);
    EXPECT_FALSE(lamp.one_cell_only);
    EXPECT_EQ(lamp.color, 0xFFFF8001u);
    EXPECT_EQ(lamp.model, EM_MESH);
    EXPECT_EQ(lamp.model_size, (D3DVECTOR{8, 9.5f, 0.5f}));
    EXPECT_EQ(lamp.offset, (D3DVECTOR{0, -2, 10}));
    EXPECT_EQ(lamp.mesh_file, "entities_meshes\\lamp.msh");
    EXPECT_EQ(lamp.actor_file, "Scripts\\Actors\\lamp.def");
    EXPECT_EQ(lamp.bitmap, crTExist("Icons", "lamp"));
    EXPECT_NE(lamp.bitmap, CR_NO_TEXTURE);
    EXPECT_EQ(parser.GetTemplate("lamp", false), nullptr); // case counts
    EXPECT_EQ(parser.GetTemplate(1, false), nullptr);
    EXPECT_EQ(parser.GetTemplate(-1, false), nullptr);
    EXPECT_TRUE(desktop.notices.empty());
}

TEST_F(EntityParserTest, WhatMakesADefinitionComplete) {
    const std::string a = Definition("A");
    struct Case {
        std::string script;
        const char* names;
        const char* notice; // part of it, empty: none
    };
    const Case cases[] = {
        {"", "", ""},
        {"no definition", "", ""},
        {a + Definition("D\\B"), "A,B", ""},
        {a + "#B extends A #Parameters { }", "A,B", ""},
        {a + "#B extends A #Stop #C extends A #Stop", "A,B,C", ""},
        {a + "#B extends A #Type <X>", "A", "line 7: definition \"B\" is not finished"},
        {a + "#B extends A #Type <X> #Stop", "A,B", ""},
        {"#B\n#Type <T> #EntityLocation <X> #EditorImage {} #Parameters {}\n" + a, "",
         "entities.def line 1: definition \"B\" lacks TraceType; the rest of the file is not read"},
        {a + "#B\n" + HEAD, "A", "is not finished"},
        {a + "#B\n" + HEAD + "#C", "A", "lacks Parameters"},
        {a + "#B extends Nobody #Parameters {}" + Definition("C"), "A",
         "line 7: definition \"B\" extends no earlier definition"},
        {a + "#B extends", "A", "extends no earlier"},
        {a + "#B", "A", "is not finished"},
        {a + "#B #Type\n#TraceType <X>", "A", "has no value for Type"},
        {a + "#", "A", "has no name"},
        {a + "#B extends A #Parameters { INT x = 1", "A", "is not finished"},
        {a + "#B extends A #Parameters { STRING x = \"open;\n}", "A", "is not finished"},
        {a + "#B extends A #EditorImage { SIZE(1", "A", "is not finished"},
        {Definition("Light") + Definition("LightSpot") + "#B extends LightSpot #Parameters {}", "Light,LightSpot,B",
         ""},
        {a + "\xAD" + Definition("B"), "A", ""},
        {a + "#B ext\xAD", "A", "is not finished"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.script);
        desktop.notices.clear();
        ForgetNotices();
        EntityParser parser = Parse(c.script);
        EXPECT_EQ(Names(parser), c.names);
        ASSERT_EQ(desktop.notices.size(), *c.notice ? 1u : 0u);
        const std::string notice = *c.notice ? desktop.notices[0] : "";
        EXPECT_NE(notice.find(c.notice), std::string::npos) << notice;
    }
    EntityParser missing("missing.def");
    EXPECT_EQ(missing.GetTemplateCount(), 0);
}

TEST_F(EntityParserTest, ExtendingTakesOverAndReplaces) {
    EntityParser parser = Parse("#Dir\\Base #Type <ONE> #TraceType <NoTrace> #EntityLocation <OneCellOnly>\n"
                                "#EditorImage { COLOR(1 2 3) SIZE(1 2 3) MESH(m) }\n"
                                "#Parameters { INT a = 1; // first\n INT b = 2; // second\n STRING c = \"s\"; }\n"
                                "#BaseOther extends Base #EditorImage { MODEL(WRONG) OFFSET(1 1 1) }\n"
                                "#Parameters { FLOAT b = 2.5;\n INT d = 4;\n INT a = 7; // new\n }\n"
                                "#Last extends BaseOther #Type <TWO> #Stop");
    ASSERT_EQ(Names(parser), "Base,BaseOther,Last");
    const Entity& other = *parser.GetTemplate(1, false);
    EXPECT_EQ(other.directory, "");
    EXPECT_EQ(other.str_type, "ONE");
    EXPECT_FALSE(other.trace_entity);
    EXPECT_TRUE(other.one_cell_only);
    EXPECT_EQ(other.model, EM_BOX);
    EXPECT_EQ(other.color, 0xFFFFFFFFu); // the block replaces the look as a whole
    EXPECT_EQ(other.model_size, (D3DVECTOR{32, 32, 32}));
    EXPECT_EQ(other.mesh_file, "");
    ASSERT_EQ(other.parameter.size(), 4u);
    EXPECT_EQ(other.parameter[0].name, "a");
    EXPECT_EQ(other.parameter[0].p_int, 7);
    EXPECT_EQ(other.parameter[0].comment, " new");
    EXPECT_EQ(other.parameter[1].type, EPT_FLOAT);
    EXPECT_EQ(other.parameter[1].p_float, 2.5f);
    EXPECT_EQ(other.parameter[1].comment, " second");
    EXPECT_EQ(other.parameter[3].name, "d");
    // The base is the first whose name the text begins with, so Last has Base's look.
    EXPECT_EQ(parser.GetTemplate(2, false)->color, 0xFF010203u);
    EXPECT_EQ(parser.GetTemplate(2, false)->str_type, "TWO");
}

TEST_F(EntityParserTest, ParametersOfEveryType) {
    EXPECT_TRUE(Parameter("BOOL x = TRUE;").p_bool);
    EXPECT_FALSE(Parameter("BOOL x = FALSE;").p_bool);
    EXPECT_FALSE(Parameter("BOOL x = true;").p_bool);
    EXPECT_EQ(Parameter("INT x;").p_int, 0);
    EXPECT_EQ(Parameter("INT x = -10;").p_int, -10);
    EXPECT_EQ(Parameter("INT x=5;\nINT y;\nINT x = 6;").p_int, 6); // "x=5" is a name
    EXPECT_EQ(Parameter("INT x = 3;\nINT x;").p_int, 0);
    EXPECT_EQ(Parameter("INT x = 3; INT x = 4;").p_int, 3); // one a line
    EXPECT_EQ(Parameter("FLOAT x =  1.5;").p_float, 1.5f);
    EXPECT_EQ(Parameter("VECTOR2 x = 1 -2.5;").p_vector2, (UVVector{1, -2.5f}));
    EXPECT_EQ(Parameter("VECTOR3 x = (1, 2e1, .5);").p_vector3, (D3DVECTOR{1, 20, 0.5f}));
    EXPECT_EQ(Parameter("VECTOR3 x = 1;\nINT y = 7;").p_vector3, (D3DVECTOR{1, 0, 0}));
    EXPECT_EQ(Parameter("STRING x = \"a; // } b\";").p_text, "a; // } b");
    EXPECT_EQ(Parameter("FILENAME x =   \"f\";").p_text, "f");
    EXPECT_EQ(Parameter("STRING x =\"t\";").p_text, "t");
    EXPECT_EQ(Parameter("STRING x = bare;").p_text, "bare");
    EXPECT_EQ(Parameter("STRING x;").p_text, "");
    EXPECT_EQ(Parameter("STRING x = \"" + std::string(9000, 's') + "\";").p_text.size(), 7999u);

    EXPECT_EQ(Parameter("COLOR x;").p_color, (COLOR{0xFF000000, 0, 0, 0, 1}));
    const COLOR color = Parameter("COLOR x = 255 16 1 128;").p_color;
    EXPECT_EQ(color.dw_color, 0x80FF1001u);
    EXPECT_EQ(color.r, 255 * 0.003921569f);
    EXPECT_EQ(color.a, 128 * 0.003921569f);
    EXPECT_EQ(Parameter("COLOR x = 1 2 3;\nINT y;").p_color.dw_color, 0xFF010203u);

    const EntityParameter constant = Parameter("CONSTANT x = two; // choose\n { one, two\n, \"three\" }\nINT y = 1;");
    EXPECT_EQ(constant.p_text, "two");
    EXPECT_EQ(constant.constant, (std::vector<std::string>{"one", "two", "three"}));
    EXPECT_EQ(constant.comment, " choose");
    EXPECT_EQ(Parameter("CONSTANT x = two; { one, two } // here\n").comment, " here");
    EXPECT_TRUE(Parameter("CONSTANT x = two;\nINT y = 1;").constant.empty());
    EXPECT_EQ(Parameter("CONSTANT x;\n{ a }").p_text, "");

    EXPECT_FALSE(Parameter("INT x = 1;\n// no comment of x\nINT y;").has_comment);
    const EntityParameter commented = Parameter("INT x = 1; //the \"x\"; {}\r\nINT y;");
    EXPECT_TRUE(commented.has_comment);
    EXPECT_EQ(commented.comment, "the \"x\"; {}");
    EXPECT_EQ(Parameter("INT x; //" + std::string(9000, 'c') + "\n").comment.size(), 8191u);
    EXPECT_TRUE(desktop.notices.empty());
}

TEST_F(EntityParserTest, LimitsAndUnknownWords) {
    std::string block = "DOUBLE nothing = 1;\n", choices;
    for (int i = 0; i < 70; ++i)
        block += "INT p" + std::to_string(i) + " = 1;\n";
    EntityParser many = Parse(Definition("A", block) + Definition("B"));
    EXPECT_EQ(Names(many), "A,B");
    EXPECT_EQ(many.GetTemplate(0, false)->parameter.size(), 64u);
    ASSERT_EQ(desktop.notices.size(), 1u);
    EXPECT_NE(desktop.notices[0].find("more than 64 parameters"), std::string::npos);

    for (int i = 0; i < 40; ++i)
        choices += "c" + std::to_string(i) + ",";
    EXPECT_EQ(Parameter("CONSTANT x = a;\n{" + choices + "}").constant.size(), 32u);
    EXPECT_EQ(desktop.notices.size(), 2u);
    EXPECT_EQ(Parse(Definition("A", "INT " + std::string(100, 'n') + " = 1;"))
                  .GetTemplate(0, false)
                  ->parameter[0]
                  .name.size(),
              63u);

    WriteBytes("entities.def", "#A\n" + HEAD + "#EditorImage { BITMAP(no\\icon) }\n#Parameters {}");
    desktop.notices.clear();
    EntityParser icon("entities.def");
    EXPECT_EQ(icon.GetTemplate(0, false)->bitmap, CR_NO_TEXTURE);
    ASSERT_EQ(desktop.notices.size(), 1u);
    EXPECT_NE(desktop.notices[0].find("no\\icon"), std::string::npos);
}

TEST_F(EntityParserTest, IconOfAnUnfinishedDefinitionIsReleasedUnlessShared) {
    WriteBytes("a.tga", TargaBytes(2, 2, 24));
    WriteBytes("b.tga", TargaBytes(2, 2, 24));
    const std::string image = "#EditorImage { BITMAP(a) } ";
    EntityParser parser = Parse("#A " + HEAD + image + "#Parameters {} #B #Type <T> " + image + "#Stop");
    EXPECT_EQ(Names(parser), "A");
    EXPECT_NE(crTExist("", "a"), CR_NO_TEXTURE);
    EntityParser none = Parse("#B #EditorImage { BITMAP(b) } #Stop");
    EXPECT_EQ(crTExist("", "b"), CR_NO_TEXTURE);
}

TEST_F(EntityParserTest, Macros) {
    const std::string use = Definition("A", "INT x = $SIZE ;\nINT y = $Size;;\nSTRING z = \"$none!\";\n INT w = 3;");
    EntityParser parser = Parse(use + "%define $SIZE 12\n" + Definition("B"));
    ASSERT_EQ(Names(parser), "A,B");
    const Entity& a = *parser.GetTemplate(0, false);
    EXPECT_EQ(a.GetParameterStr("x")->p_int, 12);
    EXPECT_EQ(a.GetParameterStr("y")->p_int, 12); // the value has taken one ';'
    EXPECT_EQ(a.GetParameterStr("z")->p_text, "");
    EXPECT_EQ(a.GetParameterStr("w")->p_int, 3);

    // Without the blank, the value's own end is taken and the parameter runs into the next line.
    EntityParser swallowed = Parse("%define $N 7\n" + Definition("A", "INT x = $N;\nINT y = 2;"));
    EXPECT_EQ(swallowed.GetTemplate(0, false)->GetParameterStr("x")->p_int, 7);
    EXPECT_EQ(swallowed.GetTemplate(0, false)->GetParameterStr("y"), nullptr);

    // A value in braces runs over lines; values are not expanded again; the last definition of a name counts.
    EntityParser braces = Parse("%define $LIST { a,\n b }\n%define $T  $x\n%define $V 1\n%define $v 2\n" +
                                Definition("A", "CONSTANT c = a;\n $list\nSTRING s = \"$T|\";\nINT v = $V ;\n"));
    ASSERT_EQ(braces.GetTemplateCount(), 1);
    EXPECT_EQ(braces.GetTemplate(0, false)->GetParameterStr("c")->constant, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(braces.GetTemplate(0, false)->GetParameterStr("s")->p_text, "  $x");
    EXPECT_EQ(braces.GetTemplate(0, false)->GetParameterStr("v")->p_int, 2);

    EntityParser untouched = Parse(Definition("A", "STRING s = \"$100\";"));
    EXPECT_EQ(untouched.GetTemplate(0, false)->GetParameterStr("s")->p_text, "$100");
    EXPECT_EQ(Parse("%define\n%define NAME 1\n" + Definition("A")).GetTemplateCount(), 1);

    // Lines in notices are those of the file.
    desktop.notices.clear();
    Parse("%define $L { 1,\n2,\n3 }\n// $L\n// $L\n#Broken #Stop");
    ASSERT_EQ(desktop.notices.size(), 1u);
    EXPECT_NE(desktop.notices[0].find("line 6:"), std::string::npos) << desktop.notices[0];
}

TEST_F(EntityParserTest, MacrosCannotFillTheMemory) {
    std::string script = "%define $A " + std::string(100000, 'x') + "\n";
    for (int i = 0; i < 1000; ++i)
        script += "$A ";
    EXPECT_EQ(Parse(script + Definition("A")).GetTemplateCount(), 0);
    ASSERT_EQ(desktop.notices.size(), 1u);
    EXPECT_NE(desktop.notices[0].find("too large"), std::string::npos);
}

TEST_F(EntityParserTest, HostileTextsEnd) {
    const std::string good =
        "%define $M { 1, 2 }\n" +
        Definition("D\\A", "INT a = 1; // c\nCOLOR b = 1 2 3 4;\nCONSTANT c = $M ;\n{ x, y }\nSTRING d = \"t\";") +
        "#B extends A #EditorImage { BITMAP(x\\y) MESH(m) SIZE(1 2 3) } #Parameters { VECTOR3 v = 1 2 3; }";
    ASSERT_EQ(Parse(good).GetTemplateCount(), 2);
    for (size_t length = 0; length < good.size(); ++length)
        EXPECT_LE(Parse(good.substr(0, length)).GetTemplateCount(), 2) << length;

    RandomMT random;
    random.seedMT(11);
    for (int round = 0; round < 300; ++round) {
        std::string text = good;
        for (int change = 0; change < 8; ++change)
            text[random.randomMT() % text.size()] = static_cast<char>(random.randomMT() & 255);
        EXPECT_LE(Parse(text).GetTemplateCount(), 3);
        std::string noise(random.randomMT() % 200, ' ');
        for (char& c : noise)
            c = static_cast<char>(random.randomMT() & 255);
        Parse(noise);
    }
}
