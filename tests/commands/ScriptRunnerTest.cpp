// Scripts: the grammar of a line, each word, and what is wrong with a line.
#include "commands/ScriptData.h"

namespace {

constexpr float TOLERANCE = 1e-4f;

std::vector<float> Corner(const nlohmann::json& brush, size_t corner) {
    return brush["bbox"][corner].get<std::vector<float>>();
}

uint32_t PngSide(const std::string& bytes, size_t offset) { // big-endian, as the format has it
    uint32_t side = 0;
    for (size_t i = 0; i < 4; ++i)
        side = side << 8 | static_cast<uint8_t>(bytes.at(offset + i));
    return side;
}

} // namespace

TEST(ScriptLine, Words) {
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"", {}},
        {"   # only a comment", {}},
        {"set grid_size 16 # finer", {"set", "grid_size", "16"}},
        {"echo \"two words\"  three\t\"\"\r", {"echo", "two words", "three", ""}},
        {"save \"a # b.msp\"", {"save", "a # b.msp"}},
    };
    std::vector<std::string> words;
    for (const auto& [line, expected] : cases) {
        EXPECT_TRUE(SplitScriptLine(line, words)) << line;
        EXPECT_EQ(words, expected) << line;
    }
    EXPECT_FALSE(SplitScriptLine("echo \"open", words));
}

TEST_F(ScriptData, WrongLinesEndTheRunWithTheirNumber) {
    const std::pair<const char*, const char*> cases[] = {
        {"jump", "\"jump\" is no word"},
        {"command OnNothing", "no command \"OnNothing\""},
        {"key Ctrl+F12", "has no command"},
        {"key Hyper", "no key"},
        {"key Ctrl+Z 0", "number of presses"},
        {"mouse bottom move 1 1", "no view \"bottom\""},
        {"mouse top jump 1 1", "no mouse event"},
        {"mouse top move 1 x", "no whole number"},
        {"mouse top move 1 1 hyper", "no key to hold"},
        {"drag top 1 2 3", "too few"},
        {"set grid_size 3", "no value of grid_size"},
        {"set grid_size 1024", "no value of grid_size"},
        {"set grid_size nan", "no value of grid_size"},
        {"set bogus 1", "no field \"bogus\""},
        {"open missing.msp", "missing.msp"},
        {"save", "no name"},
        {"entity dragon", "no entity \"dragon\""},
        {"parameter wings 2", "no parameter"},
        {"material wall gold", "no material"},
        {"apply", "no material is chosen"},
        {"view top zoom 3", "no zoom"},
        {"view top scroll 3", "is needed behind the view"},
        {"camera 0 0 inf 0 0", "no number"},
        {"flip w", "u or v"},
        {"lock 2", "0 or 1"},
        {"check_script verbs a.txt", "\"commands\" or \"conditions\""},
        {"check_script commands missing.txt", "cannot be opened"},
        {"check_script commands Scripts", "Is a directory"},
        {"picture top Scripts", "Is a directory"},
        {"picture top missing/folder/a.png", "cannot be written"},
        {"echo \"open", "quote"},
    };
    for (const auto& [line, part] : cases) {
        const std::string error = Run(std::string("# first\n\n") + line + "\necho never\n");
        EXPECT_EQ(error.find("line 3: "), 0u) << line << ": " << error;
        EXPECT_NE(error.find(part), std::string::npos) << line << ": " << error;
    }
}

TEST_F(ScriptData, ADragMakesABoxAndTheDumpTellsIt) {
    ASSERT_EQ(Run("set selection_box -16 -24 -16 16 40 16\ncommand CMainFrame::OnBrushBox\n"
                  "drag top 256 256 323 189\n"),
              "");
    const nlohmann::json state = Dump();
    ASSERT_EQ(state["brushes"].size(), 1u);
    const nlohmann::json& brush = state["brushes"][0];
    // 67 pixels right and up of the origin: 64 on the grid of 8; the height is that of the last box.
    EXPECT_EQ(Corner(brush, 0), (std::vector<float>{0, 40, 64}));
    EXPECT_EQ(Corner(brush, 6), (std::vector<float>{64, -24, 0}));
    EXPECT_EQ(brush["pivot"].get<std::vector<float>>(), (std::vector<float>{32, 8, 32}));
    EXPECT_EQ(brush["surfaces"].size(), 6u);
    EXPECT_TRUE(brush["is_selected"].get<bool>());
    EXPECT_EQ(state["selection"]["brush"], nlohmann::json::array({0}));
    EXPECT_EQ(state["interface"]["editor_state"], ES_SELECTED);
    EXPECT_EQ(state["interface"]["status"]["5"], "Size: X: 64,  Y: 64,  Z: 64");
    EXPECT_EQ(state["undo"], nlohmann::json::array({"Create 1 object(s)."}));
    EXPECT_TRUE(state["interface"]["project_file_need_save"].get<bool>());
}

TEST_F(ScriptData, NumbersOfTheDumpReadBackExactly) {
    ASSERT_EQ(Run("drag top 200 300 260 200\ndrag top 300 300 300 270\ndrag front 256 256 320 200\n"), "");
    LevelBrush(0).surfaces[0].vertices[0] = {0.1f, 1.0f / 3.0f, 16777216.0f};
    const nlohmann::json state = Dump();
    const auto read = state["brushes"][0]["surfaces"][0]["vertices"][0].get<std::vector<double>>();
    EXPECT_EQ(static_cast<float>(read[0]), 0.1f);
    EXPECT_EQ(static_cast<float>(read[1]), 1.0f / 3.0f);
    EXPECT_EQ(static_cast<float>(read[2]), 16777216.0f);
}

TEST_F(ScriptData, ShiftsGrowUnderKeyRepeatAndStartAgainOnTheNextLine) {
    ASSERT_EQ(Run("drag front 192 320 320 192\nmaterial wall brick\napply\nkey Esc\n"
                  "camera 0 0 -500 0 0\nmouse perspective left_down 256 256 ctrl\n"
                  "mouse perspective left_up 256 256 ctrl\n"),
              "");
    ASSERT_EQ(Level().selected_surface_brush, 0);
    const TEX_INFO* info = LevelBrush(0).GetSelectedSurfaceTexInfo();
    // Ten steps of 1, then 1, 2, 2, 3, 3.
    ASSERT_EQ(Run("key Num6 15"), "");
    EXPECT_EQ(info->shift.u, 21.0f);
    ASSERT_EQ(Run("key Shift+Right\nkey Num4 2\nkey Num8"), "");
    EXPECT_EQ(info->shift.u, 20.0f);
    EXPECT_EQ(info->shift.v, 1.0f);
    ASSERT_EQ(Run("key Num+ 3\nkey Num0+Num+"), "");
    EXPECT_EQ(info->rotation, 90.0f) << "with Num0 held the rotation goes on to a whole quarter";
    ASSERT_EQ(Run("key Ctrl+Right 2\nkey Num7"), "");
    EXPECT_NEAR(info->scale.u, 1.05f, TOLERANCE);
}

TEST_F(ScriptData, MaterialsAndMappings) {
    ASSERT_EQ(Run("drag front 192 320 320 192\nmaterial wall brick\napply\n"), "");
    for (const Surface& s : LevelBrush(0).surfaces) {
        EXPECT_EQ(s.texture.index, 1);
        EXPECT_EQ(s.texture.size, (UVVector{8, 4}));
    }
    // The face toward the camera, fitted twice across: u runs over two repeats, v over one.
    ASSERT_EQ(Run("key Esc\ncamera 0 0 -500 0 0\nmouse perspective left_down 256 256 ctrl\nfit 2 1\n"), "");
    const Brush& brush = LevelBrush(0);
    ASSERT_GE(brush.selected_surface, 0);
    const Surface& face = brush.surfaces[static_cast<size_t>(brush.selected_surface)];
    EXPECT_NEAR(face.normal[0].z, -1.0f, TOLERANCE);
    float least_u = 9, most_u = -9, least_v = 9, most_v = -9;
    for (const UVVector& uv : face.uv) {
        least_u = std::min(least_u, uv.u), most_u = std::max(most_u, uv.u);
        least_v = std::min(least_v, uv.v), most_v = std::max(most_v, uv.v);
    }
    EXPECT_NEAR(most_u - least_u, 2.0f, TOLERANCE);
    EXPECT_NEAR(most_v - least_v, 1.0f, TOLERANCE);
    EXPECT_NEAR(least_u, 0.0f, TOLERANCE);
    ASSERT_EQ(Run("lock 1\nflip u\n"), "");
    EXPECT_TRUE(face.texture.locked && face.texture.flip_u && !face.texture.flip_v);
    // The picker takes the material of what is clicked.
    ASSERT_EQ(Run("material wall stone\ncommand OnPickTexture\nmouse perspective left_down 256 256\n"), "");
    EXPECT_EQ(pages->texture.material_name, "brick");
}

TEST_F(ScriptData, EntitiesArePlacedWithTheirParameters) {
    ASSERT_EQ(Run("entity light\nparameter range 96.5\nparameter mood angry\nparameter dynamic TRUE\n"
                  "set last_entity_position 0 24 0\nmouse top move 296 216\nmouse top right_down 296 216 ctrl\n"
                  "mouse top right_up 296 216 ctrl\nparameter mood weird\n"),
              "");
    const nlohmann::json state = Dump();
    ASSERT_EQ(state["entities"].size(), 1u);
    const nlohmann::json& light = state["entities"][0];
    EXPECT_EQ(light["position"].get<std::vector<float>>(), (std::vector<float>{40, 24, 40}));
    EXPECT_EQ(light["parameters"]["range"], 96.5);
    EXPECT_EQ(light["parameters"]["mood"], "angry");
    EXPECT_TRUE(light["parameters"]["dynamic"].get<bool>());
    ASSERT_EQ(state["messages"].size(), 1u);
    EXPECT_EQ(state["messages"][0]["text"], "Invalid parameter");
    EXPECT_EQ(state["undo"], nlohmann::json::array({"Create 1 object(s)."}));
}

TEST_F(ScriptData, BoxesTakeTheQueuedAnswerOrTheSafeOne) {
    ASSERT_EQ(Run("drag top 256 256 300 200\ncommand OnFileNew\n"), "");
    EXPECT_EQ(Level().GetBrushCount(), 1) << "without an answer the question is cancelled";
    ASSERT_EQ(Run("answer no\ncommand OnFileNew\n"), "");
    EXPECT_EQ(Level().GetBrushCount(), 0);
    ASSERT_EQ(Run("answer 45\ncommand OnRotationAngle\nanswer 400\ncommand OnRotationAngle\nanswer 0,128,255\n"
                  "command OnSetWireviewbgcolor\nanswer black\ncommand OnSetWireviewbgcolor\n"),
              "");
    EXPECT_EQ(interface->settings.rotation_angle, 45) << "400 is out of the dialog's range";
    EXPECT_EQ(interface->settings.bg_color_vire_view, 0x0080FF);
    const nlohmann::json state = Dump();
    std::vector<std::string> answers;
    for (const nlohmann::json& message : state["messages"])
        answers.push_back(message["answer"]);
    EXPECT_EQ(answers, (std::vector<std::string>{"cancel", "no", "45", "cancel", "0,128,255", "cancel"}));
}

TEST_F(ScriptData, PicturesShowOneViewOrAllFour) {
    ASSERT_EQ(Run("drag top 256 256 300 200\npicture top top.png\npicture all all.png\n"), "");
    const std::string top = ReadBytes("top.png"), all = ReadBytes("all.png");
    constexpr size_t WIDTH_OFFSET = 16, HEIGHT_OFFSET = 20; // of a PNG's header
    EXPECT_EQ(PngSide(top, WIDTH_OFFSET), 512u);
    EXPECT_EQ(PngSide(top, HEIGHT_OFFSET), 512u);
    EXPECT_EQ(PngSide(all, WIDTH_OFFSET), 1024u);
    EXPECT_EQ(PngSide(all, HEIGHT_OFFSET), 1024u);
}

TEST_F(ScriptData, GameScriptsAreCheckedAndCompleted) {
    WriteBytes("good.txt", "OpenDoor ? 2.5 // comment\n!PlaySound a.wav\n");
    WriteBytes("bad.txt", "OpenDoor nowhere fast\nJump\n");
    WriteBytes("part.txt", "first\nPla\n");
    ASSERT_EQ(Run("check_script commands good.txt\ncheck_script commands bad.txt\n"
                  "complete_script commands part.txt 2 3\n"),
              "");
    const nlohmann::json state = Dump();
    EXPECT_EQ(state["completion"], "ySound ");
    std::vector<std::string> texts;
    for (const nlohmann::json& message : state["messages"])
        texts.push_back(message["text"]);
    EXPECT_EQ(texts, (std::vector<std::string>{
                         "Check ended. 0 errors found.", "Invalid paramerer 1 : \"nowhere\" at line 1",
                         "Invalid paramerer 2 : \"fast\" at line 1", "Unrecognized command \"Jump\" at line 2"}))
        << "without an answer the box of an unknown command is cancelled, which ends the check";
    EXPECT_NE(Run("complete_script commands part.txt 9 0").find("no line 9"), std::string::npos);
}

TEST_F(ScriptData, ALevelMadeByAScriptCompiles) {
    ASSERT_EQ(Run("set map_file made\nset selection_box -64 -64 -64 64 64 64\ndrag top 128 384 384 128\n"
                  "material wall brick\napply\ncompile\nsave made.msp\n"),
              "");
    EXPECT_TRUE(std::filesystem::exists("Maps/made.few"));
    EXPECT_TRUE(std::filesystem::exists("made.msp"));
    EXPECT_EQ(Run("quit\nbogus\n"), "") << "nothing behind quit is read";
}
