#include <algorithm>

#include <gtest/gtest.h>

#include "definitions/ScriptSyntax.h"
#include "foundation/Desktop.h"
#include "foundation/Random.h"
#include "foundation/Strings.h"
#include "foundation/TempFolder.h"

namespace {

constexpr const char* COMMANDS = "#Wait\n{\n!desc = \"Does nothing for a while.\";\n"
                                 "Seconds = Float, 1.0, \"How long.\";\n}\n"
                                 "#MoveTo\n{\nWho = object, none, \"The actor.\"\nCount = INT, 1, \"How often.\"\n"
                                 "Text = String, hello, \"What is said.\"\nLoud = Bool, false, \"Whether loud.\"\n}\n"
                                 "#MoveToPoint\n{\n!DESC = \"Straight there.\"\n}\n"
                                 "#Odd\n{\nWhat = Vector, 0, \"Of no known type.\"\n}\n";

class ScriptSyntax : public testing::Test {
protected:
    void SetUp() override {
        SetDesktop(&desktop);
        ForgetNotices();
        WriteBytes("commands.def", COMMANDS);
        syntax = CScriptSyntax("commands.def");
    }
    void TearDown() override { SetDesktop(nullptr); }

    TempFolder folder;
    CurrentFolder current{folder.Path()};
    HeadlessDesktop desktop;
    CScriptSyntax syntax;
};

// All tokens of a line, joined by '|'.
std::string Tokens(std::string_view line) {
    std::string token, text;
    int adv = 0;
    while (CScriptSyntax::AddNextToken(line, token, adv))
        text += token + '|';
    return text;
}

TEST_F(ScriptSyntax, ReadsTermsInFileOrder) {
    ASSERT_EQ(syntax.GetCount(), 4);
    EXPECT_EQ(syntax.Get(0).desc, "Does nothing for a while.");
    ASSERT_EQ(syntax.Get(1).params.size(), 4u);
    const SScriptParam& count = syntax.Get(1).params[1];
    EXPECT_EQ(count.name + count.default_value + count.desc, "Count1How often.");
    EXPECT_EQ(count.type, SSPT_INT);
    EXPECT_EQ(syntax.Get(1).params[0].type, SSPT_OBJECT);
    EXPECT_EQ(syntax.Get(2).desc, "Straight there.");
    EXPECT_EQ(syntax.Get(3).params[0].type, SSPT_INVALID);
    EXPECT_EQ(syntax.IndexOf("moveTO"), 1);
    EXPECT_EQ(syntax.IndexOf("Move"), -1);
    EXPECT_EQ(CScriptSyntax("missing.def").GetCount(), 0);
}

TEST_F(ScriptSyntax, AParameterWithoutAFieldEndsTheReading) {
    for (const char* line : {"Who = Object, none", "Who = Object", "Who"}) {
        ForgetNotices();
        desktop.notices.clear();
        WriteBytes("bad.def", std::string("#A\n{\nx = Int, 0, \"x\"\n}\n#B\n{\n") + line + "\n}\n#C\n{\n}\n");
        const CScriptSyntax bad("bad.def");
        ASSERT_EQ(bad.GetCount(), 1) << line;
        EXPECT_EQ(bad.Get(0).name, "A");
        ASSERT_EQ(desktop.notices.size(), 1u);
        EXPECT_NE(desktop.notices[0].find("bad.def"), std::string::npos);
    }
}

TEST_F(ScriptSyntax, DamagedFilesAreRead) {
    RandomMT random;
    random.seedMT(3);
    const std::string whole = COMMANDS;
    for (int round = 0; round < 300; ++round) {
        std::string bytes = whole.substr(0, random.randomMT() % (whole.size() + 1));
        for (int k = 0; k < 4 && !bytes.empty(); ++k)
            bytes[random.randomMT() % bytes.size()] = static_cast<char>(random.randomMT());
        WriteBytes("damaged.def", bytes);
        const CScriptSyntax damaged("damaged.def");
        for (int t = 0; t < damaged.GetCount(); ++t)
            EXPECT_LE(damaged.Get(t).params.size(), 8u);
        CheckScript(
            damaged, bytes, [](std::string_view) { return false; }, [](const std::string&, bool) { return true; });
        EXPECT_LE(damaged.ConvertOldScript(bytes).size(), 3 * bytes.size() + 2);
    }
}

TEST_F(ScriptSyntax, TokensOfALine) {
    EXPECT_EQ(Tokens("a b,c;d ;, e"), "a|b|c|d|e|");
    EXPECT_EQ(Tokens("(rand 5)"), "(|rand|5|)|");
    EXPECT_EQ(Tokens("f(x)y((z"), "f|(|x|)|y|(|(|z|");
    EXPECT_EQ(Tokens("say \"two words\" \"\" \"open, end"), "say|two words||open, end|");
    EXPECT_EQ(Tokens("a // b"), "a|");
    EXPECT_EQ(Tokens("http://x a/b \"//c\""), "http://x|a/b|//c|");
    EXPECT_EQ(Tokens("  // all"), "");
    EXPECT_EQ(Tokens("a\nb"), "a|"); // a line end yields none
    EXPECT_EQ(Tokens("a\"b c\""), "a\"b|c\"|");
    EXPECT_EQ(Tokens(""), "");
    std::string token, trimmed;
    int adv = 99; // from the start, whatever stood there
    bool quoted = false;
    ASSERT_TRUE(CScriptSyntax::GetToken(" ,; x", token, adv, &trimmed));
    EXPECT_EQ(trimmed, " ,; ");
    EXPECT_EQ(adv, 5);
    adv = 1;
    ASSERT_TRUE(CScriptSyntax::AddNextToken("a\t\"b\" c", token, adv, &trimmed, &quoted));
    EXPECT_TRUE(quoted);
    EXPECT_EQ(trimmed + token, "\tb");
    EXPECT_EQ(adv, 5);
    EXPECT_FALSE(CScriptSyntax::GetToken(" //c\n", token, adv, &trimmed));
    EXPECT_EQ(trimmed, " //c");
    ASSERT_TRUE(CScriptSyntax::GetToken(std::string(1500, 'x') + " y", token, adv));
    EXPECT_EQ(token.size(), 1000u);
    EXPECT_EQ(adv, 1500);
}

TEST_F(ScriptSyntax, LinesKeepTheirNumbers) {
    std::string_view script = "one\r\n\ntwo\n\r\nthree";
    std::string line, all;
    while (CScriptSyntax::GetLine(script, line))
        all += line + '|';
    EXPECT_EQ(all, "one||two||three|");
    const std::string long_line(2500, 'y');
    script = long_line;
    ASSERT_TRUE(CScriptSyntax::GetLine(script, line));
    EXPECT_EQ(line.size(), 1000u);
    EXPECT_TRUE(script.empty());
}

TEST_F(ScriptSyntax, ValuesOfTheForms) {
    struct Case {
        const char* text;
        bool is_int, is_float, is_string;
        int used; // by the float, where it parses
    };
    static constexpr Case CASES[] = {{"5 6", true, true, true, 1},
                                     {"-7", true, true, true, 2},
                                     {"+7", true, true, true, 2},
                                     {"2.5", false, true, true, 3},
                                     {"5x", false, false, true, 0},
                                     {"1e-50", false, true, true, 5}, // less than a float can tell
                                     {"-1e50", false, true, true, 5},
                                     {"nan", false, false, true, 0},
                                     {"inf", false, false, true, 0},
                                     {"", false, false, false, 0},
                                     {"// 5", false, false, false, 0},
                                     {"(rand 5)", true, true, false, 8},
                                     {"(RAND 2 9)", true, true, true, 10},
                                     {"( rand 1 )", true, true, false, 10},
                                     {"(rand x)", false, false, false, 0},
                                     {"(rnd 1 2)", false, false, false, 0},
                                     {"(rand 1 2 3)", false, false, true, 0},
                                     {"(rand 1 2", false, false, false, 0},
                                     {"(rand x 1 2)", false, false, true, 0},
                                     {"(rand x 2)", false, false, true, 0},
                                     {"(rand x 1 y)", false, false, false, 0},
                                     {"\"(\"", false, false, true, 0},
                                     {"?", true, true, true, 1},
                                     {"?x", false, false, true, 0},
                                     {"(rand 1.5 2)", false, true, true, 12}};
    for (const Case& c : CASES) {
        SCOPED_TRACE(c.text);
        int used = 0;
        CScriptInt an_int;
        CScriptFloat a_float;
        CScriptString a_string;
        EXPECT_EQ(an_int.Init(c.text, used, "3"), c.is_int);
        EXPECT_EQ(a_string.Init(c.text, used, "name"), c.is_string);
        EXPECT_EQ(a_float.Init(c.text, used, "3.5"), c.is_float);
        if (c.is_float) {
            EXPECT_EQ(used, c.used);
        }
    }
    int used = 0;
    CScriptInt value;
    EXPECT_FALSE(value.Init("?", used, "3 4")); // the default is not used up
    EXPECT_FALSE(value.Init("?", used, nullptr));
    ASSERT_TRUE(value.Init("?", used, "(rand 4)"));
    EXPECT_EQ(value.type, CScriptValue::ERAND);
    EXPECT_EQ(value.arg1, 0);
    EXPECT_EQ(value.arg2, 4);
    EXPECT_TRUE(value.Init("99999999999", used, nullptr)); // as far as an int reaches
    EXPECT_EQ(value.GetInt(), 2147483647);
}

TEST_F(ScriptSyntax, ValuesAreReadFromTheGenerator) {
    int used = 0;
    CScriptInt number;
    ASSERT_TRUE(number.Init("(rand 9 -3)", used, nullptr));
    CScriptFloat real;
    ASSERT_TRUE(real.Init("(rand 2 4)", used, nullptr));
    CScriptString text;
    ASSERT_TRUE(text.Init("(rand door 2 3)", used, nullptr));
    RandomMT same;
    same.seedMT(77);
    random_mt.seedMT(77);
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(number.GetInt(), -3 + static_cast<int>(same.randomMT() % 13));
        EXPECT_NEAR(real.GetFloat(), 2 + 2 * (same.randomMT() / 4294967296.0), 1e-5);
        EXPECT_EQ(text.GetString(), same.randomMT() % 2 == 0 ? "door2" : "door3");
    }
    ASSERT_TRUE(number.Init("(rand -2147483648 2147483647)", used, nullptr));
    same.seedMT(78);
    random_mt.seedMT(78);
    EXPECT_EQ(number.GetInt(), static_cast<int>(static_cast<int64_t>(same.randomMT()) - 2147483648LL));
    EXPECT_EQ(CScriptInt().GetInt(), 0);
    EXPECT_EQ(CScriptFloat().GetFloat(), 0.0f);
    EXPECT_EQ(CScriptString().GetString(), "");
    ASSERT_TRUE(text.Init("plain", used, nullptr));
    EXPECT_EQ(text.GetString(), "plain");
}

TEST_F(ScriptSyntax, TruthValues) {
    bool value = true;
    int used = 0;
    EXPECT_TRUE(GetBoolParam("OFF x", used, value, nullptr));
    EXPECT_FALSE(value);
    EXPECT_EQ(used, 3);
    EXPECT_TRUE(GetBoolParam("True", used, value, nullptr));
    EXPECT_TRUE(value);
    EXPECT_TRUE(GetBoolParam("?", used, value, "false"));
    EXPECT_FALSE(value);
    for (const char* text : {"1", "yes", "", "?", "truex"})
        EXPECT_FALSE(GetBoolParam(text, used, value, nullptr)) << text;
    EXPECT_FALSE(GetBoolParam("?", used, value, "maybe"));
}

TEST_F(ScriptSyntax, Check) {
    struct Case {
        const char* script;
        const char* findings; // with a '!' behind those that can stop the check
    };
    static constexpr Case CASES[] = {
        {"", ""},
        {"// only this\n   \n", ""},
        {"Wait 1\n!wait 2.5 // long", ""},
        {"Wait (rand 5)\nMoveTo hero (rand 5) x true", ""},
        {"Wait ?\nMoveTo ? ? ? ?\nOdd ?", ""},
        {"MoveTo HERO, 5; \"two words\" FALSE", ""},
        {"\nJump 1", "Unrecognized command \"Jump\" at line 2!"},
        {"!Jump", "Unrecognized command \"!Jump\" at line 1!"},
        {"Wait 1 2 3", "Command Wait has too many parameters at line 1!"},
        {"wait", "Command Wait has 1 parameters, but only 0 of them were specified at line 1"},
        {"MoveTo nobody 1", "Invalid paramerer 1 : \"nobody\" at line 1|"
                            "Command MoveTo has 4 parameters, but only 2 of them were specified at line 1"},
        {"MoveTo hero x say on", "Invalid paramerer 2 : \"x\" at line 1|Invalid paramerer 4 : \"on\" at line 1"},
        {"Wait (rand x)", "Invalid paramerer 1 : \"(\" at line 1|Command Wait has too many parameters at line 1!"},
        {"Wait (rnd 1 2)", "Invalid paramerer 1 : \"(\" at line 1|Command Wait has too many parameters at line 1!"},
        {"MoveTo hero 1 two words", "Invalid paramerer 4 : \"words\" at line 1"},
        {"Odd 0", "Invalid paramerer 1 : \"0\" at line 1"},
    };
    for (const Case& c : CASES) {
        std::string findings;
        int count = 0;
        const auto report = [&](const std::string& text, bool can_stop) {
            findings += (count++ ? "|" : "") + text + (can_stop ? "!" : "");
            return true;
        };
        EXPECT_EQ(CheckScript(
                      syntax, c.script, [](std::string_view name) { return EqualNoCase(name, "hero"); }, report),
                  count)
            << c.script;
        EXPECT_EQ(findings, c.findings) << c.script;
    }
}

TEST_F(ScriptSyntax, CancelEndsTheCheckWhereItIsOffered) {
    int shown = 0;
    const auto none = [](std::string_view) { return false; };
    const auto cancel = [&shown](const std::string&, bool) {
        ++shown;
        return false;
    };
    EXPECT_EQ(CheckScript(syntax, "Wait\nJump\nJump", none, cancel), -1);
    EXPECT_EQ(shown, 2); // an answer to a box with OK alone stops nothing
    EXPECT_EQ(CheckScript(syntax, "Wait 1 2\nJump", none, cancel), -1);
    EXPECT_EQ(shown, 3);
}

TEST_F(ScriptSyntax, OldScriptsTakeTheSpellingOfTheTable) {
    struct Case {
        const char* old;
        const char* converted;
    };
    static constexpr Case CASES[] = {
        {"move_to a_b 1, 2;", "MoveTo a_b 1, 2;"},
        {"MOVE_TO_POINT // move_to\r\n\twait 1\n", "MoveToPoint // move_to\r\n\tWait 1\n"},
        {"say \"two words\" \"\" \"one\"", "say \"two words\" \"\" one"},
        {"say \"a,b\" \"(\" \"//x\"", "say \"a,b\" \"(\" \"//x\""}, // these would not stay one token
        {"say \"move_to\"", "say MoveTo"},
        {"f(rand 1 2)", "f(rand 1 2)"},
        {"!move_to", "!move_to"},
        {"", ""},
        {"\n\n x", "\n\n x"},
        {"say \"open", "say open"},
    };
    for (const Case& c : CASES) {
        EXPECT_EQ(syntax.ConvertOldScript(c.old), c.converted);
        EXPECT_EQ(syntax.ConvertOldScript(c.converted), c.converted) << "again";
    }
    const std::string long_token(3000, 'z');
    EXPECT_EQ(syntax.ConvertOldScript(long_token), long_token); // nothing of the user's text is cut
}

TEST_F(ScriptSyntax, LiveHelp) {
    ScriptHelp help;
    const std::string line = "  !moveto hero (rand 5) x";
    struct Case {
        int column;
        const char* description;
    };
    static constexpr Case CASES[] = {{0, ""},
                                     {9, ""}, // MoveTo has no description
                                     {10, "Who (Object) :   The actor."},
                                     {14, "Who (Object) :   The actor."},
                                     {16, "Count (Int) :   How often."},
                                     {19, "Text (String) :   What is said."}, // each token counts
                                     {25, ""},
                                     {9999, ""},
                                     {-5, ""}};
    for (const Case& c : CASES) {
        ASSERT_TRUE(GetScriptHelp(syntax, line, c.column, help));
        EXPECT_EQ(help.description, c.description) << c.column;
        EXPECT_EQ(help.syntax, "MoveTo   Who,   Count,   Text,   Loud");
    }
    ASSERT_TRUE(GetScriptHelp(syntax, "wait", 2, help));
    EXPECT_EQ(help.description, "Does nothing for a while.");
    ASSERT_TRUE(GetScriptHelp(syntax, "MoveToPoint ", 12, help));
    EXPECT_EQ(help.description, "");
    EXPECT_EQ(help.syntax, "MoveToPoint");
    EXPECT_FALSE(GetScriptHelp(syntax, "jump 1", 2, help));
    EXPECT_FALSE(GetScriptHelp(syntax, "", 0, help));
}

TEST_F(ScriptSyntax, Completion) {
    const std::vector<std::string> names = {"door_north", "door_south", "Hero", "doorway"};
    struct Case {
        const char* line; // '^': the caret
        const char* inserted;
    };
    static constexpr Case CASES[] = {
        {"w^", "ait "}, // one match ends with a blank
        {"!WA^", "it "},
        {"m^", "oveTo"}, // what all matches share
        {"Move^", "To"},
        {"mo^point", "veTo"}, // and the part behind the caret
        {"x^", ""},
        {"moveto^", ""},  // known: nothing
        {"^w", ""},       // no candidate ends so
        {"jump he^", ""}, // beyond an unknown command
        {"MoveTo he^", "ro "},
        {"MoveTo d^", "oor"},
        {"MoveTo door_^", ""}, // they part at once
        {"MoveTo d^south", "oor_"},
        {"MoveTo ^", ""},
        {"MoveTo hero he^", ""}, // no object there
        {"MoveTo \"he^\"", "ro "},
        {"wait he^", ""},
        {"^", ""},
        {"MoveTo hero 1 2 3 4 5 he^", ""},
    };
    for (const Case& c : CASES) {
        std::string line = c.line;
        const auto caret = line.find('^');
        line.erase(caret, 1);
        EXPECT_EQ(CompleteScript(syntax, line, static_cast<int>(caret), names), c.inserted) << c.line;
    }
    EXPECT_EQ(CompleteScript(syntax, "MoveTo he", 999, names), "ro "); // at the end
    EXPECT_EQ(CompleteScript(syntax, "MoveTo ", 7, {"Hero"}), "Hero ");
    EXPECT_EQ(CompleteScript(syntax, "MoveTo hero", 9, {"hero", "HERO", "heeero"}),
              "");                                                // the first has nothing between
    EXPECT_EQ(CompleteScript(syntax, "MoveTo aa", 8, {"a"}), ""); // pre and post overlap: nothing lies between
}

} // namespace
