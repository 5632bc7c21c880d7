#include <gtest/gtest.h>

#include "definitions/DefFile.h"
#include "definitions/DefFileStorage.h"
#include "definitions/Numbers.h"
#include "foundation/Random.h"
#include "foundation/TempFolder.h"

namespace {

class DefFileTest : public testing::Test {
protected:
    TempFolder folder;
    CurrentFolder current{folder.Path()};
};

std::vector<std::string> Tokens(std::string_view line) {
    StringListClass list;
    DefFileObject::CutCommand(line, list);
    std::vector<std::string> tokens;
    for (int i = 0; i < list.GetStringCount(); ++i)
        tokens.emplace_back(list.GetString(i));
    return tokens;
}

// "section: line, line; section: ..." of all commands, each with its tokens joined by '|'.
std::string Contents(DefFileObject& file) {
    std::string text;
    while (file.OpenNextSection()) {
        text += std::string("[") + file.GetSectionName() + "]";
        while (file.OpenNextCommand()) {
            text += file.GetCommandName();
            std::string param;
            for (int p = 0; file.GetString(p, param); ++p)
                text += "|" + param;
            text += ";";
        }
    }
    return text;
}

} // namespace

TEST(DefFileTokens, CutAtTheirSeparators) {
    using List = std::vector<std::string>;
    const std::pair<const char*, List> cases[] = {
        {"Name=1,2,3", {"Name", "1", "2", "3"}},
        {"Name (1,2,3)", {"Name (1", "2", "3)"}},
        {"Name = (1,2,3)", {"Name", "1,2,3"}},
        {"Name = (1, 2, 3", {"Name", "1, 2, 3"}},
        {"Name = \"x\";", {"Name", "x", ""}},
        {"KEY = value;", {"KEY", "value"}},
        {"Model a b", {"Model a b"}},
        {"A = 'it;s', \"a = b\" ,, == c \t;", {"A", "it;s", "a = b", "c"}},
        {"\"quoted name  \" = 1", {"quoted name", "1"}},
        {"A =\tB", {"A", "B"}},
        {"A = \"b\"\t;c", {"A", "b", "", "c"}},
        {";", {""}},
        {"\"", {""}},
        {"", {}},
        {" \t", {}},
    };
    for (const auto& [line, expected] : cases)
        EXPECT_EQ(Tokens(line), expected) << line;
}

TEST_F(DefFileTest, LinesAndSections) {
    const std::pair<const char*, const char*> cases[] = {
        {"// only\r\n{ comments\n\n/ here", ""},
        {"lost = 1\n#One\n{\n\tA = 1;\r\n  // not B\n}\nlost = 2\n#Two words \nC\n", "[One]A|1;[Two words]C;"},
        {"#One\nA\n#One\nB", "[One]A;[One]B;"},
        {"#\nA", "[]A;"},
        {"#One\n{ A = 1\n} B\nC", "[One]"},
    };
    for (const auto& [text, expected] : cases) {
        WriteBytes("a.def", text);
        DefFileObject file("a.def");
        EXPECT_TRUE(file.WasFound());
        EXPECT_EQ(file.IsValid(), *expected != '\0');
        EXPECT_EQ(Contents(file), expected) << text;
    }
    DefFileObject missing("missing.def");
    EXPECT_FALSE(missing.WasFound());
    EXPECT_FALSE(missing.IsValid());

    // What is beyond the longest line is the next line.
    WriteBytes("long.def", "#S\n" + std::string(4095, 'a') + "b = 1\n");
    DefFileObject cut("long.def");
    EXPECT_EQ(Contents(cut), "[S]" + std::string(4095, 'a') + ";b|1;");
}

TEST_F(DefFileTest, SectionsAreFoundInAnyCase) {
    WriteBytes("a.def", "#One\nA\nB\n#Two\nC\n#ONE\nD\n");
    DefFileObject file("a.def");
    EXPECT_FALSE(file.OpenNextCommand());
    EXPECT_EQ(file.GetSectionName(), nullptr);
    EXPECT_EQ(file.GetCommandName(), nullptr);
    EXPECT_EQ(file.GetCommandParamCount(), 0);
    ASSERT_TRUE(file.OpenSection("oNE"));
    ASSERT_TRUE(file.OpenNextCommand());
    ASSERT_TRUE(file.OpenNextCommand());
    EXPECT_STREQ(file.GetCommandName(), "B");
    EXPECT_FALSE(file.OpenNextCommand());
    EXPECT_FALSE(file.OpenSection("Three")); // resets the position all the same
    ASSERT_TRUE(file.OpenNextCommand());
    EXPECT_STREQ(file.GetCommandName(), "A");
    ASSERT_TRUE(file.OpenNextSection());
    EXPECT_STREQ(file.GetSectionName(), "Two");
    ASSERT_TRUE(file.OpenNextSection());
    EXPECT_FALSE(file.OpenNextSection());
    ASSERT_TRUE(file.OpenNextCommand());
    EXPECT_STREQ(file.GetCommandName(), "D");
}

TEST_F(DefFileTest, ParametersByType) {
    WriteBytes("a.def", "#S\nP = -12abc, 2.5e1x, text, yES, 65537, (10, 20), True1, (1,2,3,4), (300,,x)\n");
    DefFileObject file("a.def");
    ASSERT_TRUE(file.OpenSection("S") && file.OpenNextCommand());
    EXPECT_EQ(file.GetCommandParamCount(), 9);
    int32_t i = 0;
    float f = 0;
    std::string s;
    bool b = false;
    uint16_t w = 0;
    uint8_t color[4] = {};
    const auto color_is = [&](int r, int g, int bl, int a) {
        return color[0] == r && color[1] == g && color[2] == bl && color[3] == a;
    };
    EXPECT_TRUE(file.GetInt(0, i) && i == -12);
    EXPECT_TRUE(file.GetFloat(1, f) && f == 25.0f);
    EXPECT_TRUE(file.GetString(2, s) && s == "text");
    EXPECT_TRUE(file.GetBool(3, b) && b);
    EXPECT_TRUE(file.GetWord(4, w) && w == 1);
    EXPECT_TRUE(file.GetColor(5, color) && color_is(10, 20, 255, 255));
    EXPECT_TRUE(file.GetBool(6, b) && !b);
    EXPECT_TRUE(file.GetColor(7, color) && color_is(1, 2, 3, 4));
    EXPECT_TRUE(file.GetColor(8, color) && color_is(300 & 255, 0, 0, 255));

    i = 77, f = 7, b = true, w = 7, s = "kept?";
    for (const int missing : {9, -1}) {
        EXPECT_FALSE(file.GetInt(missing, i) || file.GetFloat(missing, f) || file.GetBool(missing, b) ||
                     file.GetWord(missing, w) || file.GetColor(missing, color) || file.GetString(missing, s));
        EXPECT_EQ(i, 77);
        EXPECT_EQ(f, 7);
        EXPECT_TRUE(b);
        EXPECT_EQ(w, 7);
        EXPECT_TRUE(color_is(44, 0, 0, 255));
        EXPECT_EQ(s, "");
    }
}

TEST(Numbers, TakeWhatTheTextStartsWith) {
    const std::pair<const char*, int32_t> ints[] = {{"12", 12},
                                                    {" \t+7x", 7},
                                                    {"-3.9", -3},
                                                    {"", 0},
                                                    {"x1", 0},
                                                    {"+-4", 0},
                                                    {"99999999999", 2147483647},
                                                    {"-99999999999", -2147483647 - 1}};
    for (const auto& [text, expected] : ints)
        EXPECT_EQ(ParseInt(text), expected) << text;
    const std::pair<const char*, float> floats[] = {{"1.5", 1.5f}, {".5", .5f},   {"-2.", -2.0f}, {" +1e2", 100.0f},
                                                    {"1,5", 1.0f}, {"nan", 0.0f}, {"inf", 0.0f},  {"1e99", 0.0f},
                                                    {"", 0.0f},    {"0.1", 0.1f}};
    for (const auto& [text, expected] : floats)
        EXPECT_EQ(ParseFloat(text), expected) << text;
}

TEST_F(DefFileTest, StorageComesFirstAndSurvivesPacking) {
    WriteBytes("a.def", "#Kept\r\n\r\n  A = 1; \r\n");
    WriteBytes("b.def", "");
    DefFileStorage store;
    EXPECT_TRUE(store.AddDefFile("a.def"));
    EXPECT_TRUE(store.AddDefFile("b.def"));
    EXPECT_FALSE(store.AddDefFile("c.def"));
    WriteBytes("a.def", "#Changed\n");
    EXPECT_TRUE(store.AddDefFile("A.DEF")); // held from before

    int packed_size = 0, unpacked_size = 0;
    const std::vector<uint8_t> packed = store.PackDefFiles(packed_size, unpacked_size);
    EXPECT_EQ(packed_size, static_cast<int>(packed.size()));
    EXPECT_EQ(unpacked_size, (4 + 6 + 21) + (4 + 6 + 1));
    ASSERT_TRUE(def_file_storage.UnpackDefFiles(packed.data(), packed_size, unpacked_size));
    DefFileObject stored("a.Def");
    EXPECT_EQ(Contents(stored), "[Kept]A|1;");

    DFS_Item* item = def_file_storage.OpenDefFileItem("a.def");
    std::string line;
    EXPECT_EQ(DefFileStorage::GetDFSNextLine(item, line), 5);
    EXPECT_EQ(DefFileStorage::GetDFSNextLine(item, line), 9);
    EXPECT_EQ(line, "  A = 1; ");
    EXPECT_EQ(DefFileStorage::GetDFSNextLine(item, line), -1);
    EXPECT_EQ(DefFileStorage::GetDFSNextLine(def_file_storage.OpenDefFileItem("c.def"), line), -1);

    // Damaged blocks leave the contents.
    for (int length = 0; length < packed_size; ++length)
        EXPECT_FALSE(def_file_storage.UnpackDefFiles(packed.data(), length, unpacked_size)) << length;
    for (const int size : {-1, unpacked_size - 1, unpacked_size + 1, 0x7FFFFFFF})
        EXPECT_FALSE(def_file_storage.UnpackDefFiles(packed.data(), packed_size, size)) << size;
    EXPECT_NE(def_file_storage.OpenDefFileItem("a.def"), nullptr);

    ASSERT_TRUE(def_file_storage.UnpackDefFiles(nullptr, 0, 0)); // empty again: the file counts
    DefFileObject from_disk("a.def");
    EXPECT_EQ(Contents(from_disk), "[Changed]");
}

TEST_F(DefFileTest, HostileTextsEnd) {
    RandomMT random;
    random.seedMT(7);
    constexpr char ALPHABET[] = "#{}/\"'(),=;\n\r\t A\0\xFF";
    for (int round = 0; round < 200; ++round) {
        std::string text;
        for (uint32_t length = random.randomMT() % 300; text.size() < length;)
            text += ALPHABET[random.randomMT() % (sizeof(ALPHABET) - 1)];
        WriteBytes("x.def", text);
        DefFileObject file("x.def");
        EXPECT_LE(Contents(file).size(), text.size() * 2 + 2);
    }
}
