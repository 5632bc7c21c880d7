// The prefab, AI and preferences pages, and the window that holds them.
#include <algorithm>

#include "files/ChunkFile.h"
#include "foundation/Settings.h"
#include "pages/PagesData.h"
#include "pages/Thumbnails.h"
#include "scene/Undo.h"

using PrefabPageTest = PagesTest;
using AIPageTest = PagesTest;
using PreferencesPageTest = PagesTest;
using ConsoleTest = PagesTest;

// --- Prefabs

TEST_F(PrefabPageTest, ChoosesABrushOrAPrefab) {
    WriteBytes("Marrowstead/Brushes/stairs/b.msh", "");
    WriteBytes("Marrowstead/Brushes/stairs/A.msh", "");
    WriteBytes("Marrowstead/Brushes/stairs/A_th.tga", TargaBytes(64, 64, 24, 0x123456));
    WriteBytes("Marrowstead/Brushes/stairs/" + std::string(32, 'l') + ".msh", "");
    std::filesystem::create_directories("Marrowstead/Prefabs/rooms");
    std::filesystem::create_directories("Marrowstead/Prefabs/void");
    {
        UChunkFile file("Marrowstead\\Prefabs\\rooms\\hall.mpf", CFM_Create);
        ASSERT_TRUE(file.CreateChunk("Description", ANY_CHUNK_ID));
        file.WriteString("a hall " + std::string(300, '.'));
        ASSERT_TRUE(file.CloseChunk());
    }
    WriteBytes("Marrowstead/Prefabs/rooms/broken.mpf", "no chunks");
    PrefabDlg& page = pages->prefab;
    page.Refresh();
    EXPECT_EQ(page.brushes.directory, std::vector<std::string>{"stairs"});
    EXPECT_EQ(page.brushes.file[0], (std::vector<std::string>{"A", "b"})) << "sorted; a long name is left out";
    EXPECT_EQ(page.prefabs.directory, (std::vector<std::string>{"rooms", "void"}));
    EXPECT_FALSE(page.IsAnythingSelected());
    EXPECT_FALSE(editor->prefab_choice.IsChosen());

    page.SelectDirectory(true, 0);
    EXPECT_TRUE(page.IsAnythingSelected());
    EXPECT_FALSE(page.CanSave());
    EXPECT_TRUE(editor->prefab_choice.brushes_selected);
    EXPECT_EQ(editor->prefab_choice.directory + "\\" + editor->prefab_choice.file, "stairs\\A");
    Thumbnail picture;
    EXPECT_TRUE(page.LoadPicture("stairs", "A", picture));
    EXPECT_EQ(picture.pixels[0], 0xFF123456u);
    EXPECT_FALSE(page.LoadPicture("stairs", "b", picture));

    ASSERT_TRUE(page.Select(false, "ROOMS", "Hall"));
    EXPECT_TRUE(page.CanSave());
    EXPECT_EQ(page.m_desc.size(), PrefabDlg::DESCRIPTION_LENGTH);
    EXPECT_EQ(page.m_desc.substr(0, 8), "a hall .");
    EXPECT_EQ(editor->prefab_choice.file, "hall");
    page.SelectFile(0);
    EXPECT_EQ(page.m_desc, "");
    page.SelectDirectory(false, 1);
    EXPECT_EQ(page.selected_file, -1) << "an empty directory";
    page.SelectRoot(false);
    EXPECT_FALSE(editor->prefab_choice.IsChosen());
    EXPECT_FALSE(page.Select(true, "rooms", "hall"));
}

TEST_F(PrefabPageTest, RefreshKeepsTheChoiceByName) {
    WriteBytes("Marrowstead/Prefabs/rooms/hall.mpf", "");
    PrefabDlg& page = pages->prefab;
    page.Refresh();
    ASSERT_TRUE(page.Select(false, "rooms", "hall"));
    WriteBytes("Marrowstead/Prefabs/attics/big.mpf", "");
    page.Refresh();
    EXPECT_EQ(page.GetSelectedDirectory() + page.GetSelectedFile(), "roomshall");
    EXPECT_EQ(page.selected_directory, 1);
    EXPECT_TRUE(page.CanSave());
    std::filesystem::remove_all("Marrowstead/Prefabs/rooms");
    page.Refresh();
    EXPECT_EQ(page.selected_directory, -1);
    EXPECT_FALSE(page.CanSave());
}

TEST_F(PrefabPageTest, SavesTheSelectionAndAsksBeforeItOverwrites) {
    std::filesystem::create_directories("Marrowstead/Prefabs/rooms");
    PrefabDlg& page = pages->prefab;
    page.Refresh();
    page.SelectDirectory(false, 0);
    const auto save = [&] {
        desktop.form_answers.push_back({{0, "tower"}, {1, "high"}});
        page.Save();
        return ReadBytes("Marrowstead/Prefabs/rooms/tower.mpf");
    };
    EXPECT_EQ(save(), "") << "nothing is selected";
    ASSERT_EQ(desktop.notices.size(), 1u);
    editor->world->CreateBrush({});
    const std::string first = save();
    EXPECT_NE(first, "");
    ASSERT_TRUE(page.Select(false, "rooms", "tower")) << "listed at once";
    EXPECT_EQ(page.m_desc, "high");
    editor->world->CreateBrush({});
    desktop.answers.push_back(MessageAnswer::No);
    EXPECT_EQ(save(), first);
    desktop.answers.push_back(MessageAnswer::Yes);
    EXPECT_NE(save(), first);
}

TEST_F(PrefabPageTest, AsksForNames) {
    WriteBytes("Marrowstead/Prefabs/rooms/hall.mpf", "");
    PrefabDlg& page = pages->prefab;
    page.Refresh();
    EXPECT_FALSE(page.AskSave());
    ASSERT_EQ(desktop.boxes.size(), 1u);
    EXPECT_EQ(desktop.boxes[0].text, "No Prefab directory selected");
    page.SelectDirectory(false, 0);
    EXPECT_FALSE(page.AskSave()) << "cancelled";
    desktop.form_answers = {{{0, "tower"}, {1, "high"}}, {{0, ""}}, {{0, "..\\x"}}, {{0, "new"}}, {{0, "a\\b"}}};
    const auto answer = page.AskSave();
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->path, "Marrowstead\\Prefabs\\rooms\\tower.mpf");
    EXPECT_EQ(answer->description, "high");
    EXPECT_FALSE(page.AskSave());
    EXPECT_FALSE(page.AskSave());
    page.MakeDirectory();
    EXPECT_TRUE(std::filesystem::is_directory("Marrowstead/Prefabs/new"));
    EXPECT_EQ(page.prefabs.directory.size(), 2u);
    page.MakeDirectory();
    EXPECT_FALSE(std::filesystem::exists("Marrowstead/Prefabs/a"));
}

// --- AI groups

TEST_F(AIPageTest, GroupsAreMadeRenamedAndDeleted) {
    AIDlg& page = pages->ai;
    EXPECT_EQ(page.groups, (std::vector<std::string>{"Player", "Bots"}));
    struct Refusal {
        bool (AIDlg::*operation)(const std::string&);
        const char* selected;
        const char* name;
        const char* text;
    };
    for (const Refusal& r : {Refusal{&AIDlg::OnGroupCreate, "", "", "Group must have some name."},
                             Refusal{&AIDlg::OnGroupCreate, "", "pLAYER",
                                     "You cannot create group with a reserved name (\"Player\" or \"Bots\")."},
                             Refusal{&AIDlg::OnGroupRename, "Bots", "", "Group must have some name."},
                             Refusal{&AIDlg::OnGroupRename, "Bots", "Robots",
                                     "You cannot rename reserved group (\"Player\" or \"Bots\")."}}) {
        page.SelectGroup(r.selected);
        EXPECT_FALSE((page.*r.operation)(r.name));
        EXPECT_EQ(desktop.boxes.back().title + ": " + desktop.boxes.back().text, std::string("Error: ") + r.text);
    }
    EXPECT_FALSE(page.OnGroupDelete());
    EXPECT_EQ(desktop.boxes.back().text, "You cannot delete reserved group (\"Player\" or \"Bots\").");
    EXPECT_FALSE(editor->project_file_need_save);

    ASSERT_TRUE(page.OnGroupCreate("Thieves"));
    ASSERT_TRUE(page.OnGroupCreate("Guards"));
    EXPECT_EQ(page.m_name, "Guards");
    ASSERT_EQ(page.m_relations.size(), 4u);
    for (const SRelationLine& line : page.m_relations) {
        EXPECT_EQ(line.type, AGT_Neutral);
        EXPECT_FALSE(line.shot);
    }
    EXPECT_TRUE(page.OnCommand(10021)); // enemy of the thieves
    EXPECT_TRUE(page.OnCommand(10023)); // shot
    EXPECT_TRUE(page.OnCommand(10032)); // ally of itself
    EXPECT_FALSE(page.OnCommand(10040));
    EXPECT_FALSE(page.OnCommand(10004));
    EXPECT_FALSE(page.OnCommand(9999));
    EXPECT_EQ(page.m_relations[2].type, AGT_Enemy);
    EXPECT_TRUE(page.m_relations[2].shot);
    EXPECT_TRUE(page.OnCommand(10023));
    EXPECT_FALSE(page.m_relations[2].shot);
    EXPECT_TRUE(editor->project_file_need_save);

    ASSERT_TRUE(page.OnGroupRename("Watch"));
    EXPECT_EQ(page.groups[3], "Watch");
    page.SelectGroup("Thieves");
    ASSERT_TRUE(page.OnGroupDelete());
    page.SelectGroup("Watch");
    ASSERT_EQ(page.m_relations.size(), 3u);
    EXPECT_EQ(page.m_relations[2].type, AGT_Ally) << "each stance stays with its group";
    EXPECT_EQ(page.m_relations[1].type, AGT_Neutral);
}

TEST_F(AIPageTest, ThePageHasRoomForItsRows) {
    for (int i = 0; i < 40; ++i)
        ASSERT_TRUE(pages->ai.OnGroupCreate("group" + std::to_string(i)));
    EXPECT_EQ(pages->ai.m_relations.size(), 32u);
    pages->ai.SelectGroup("group39");
    EXPECT_EQ(pages->ai.m_relations.size(), 32u);
    EXPECT_FALSE(pages->ai.OnCommand(10320));
}

// --- Preferences

TEST_F(PreferencesPageTest, EverySettingStandsOnThePageOnce) {
    const auto& table = PreferencesDlg::Table();
    ASSERT_EQ(pages->preferences.values.size(), table.size());
    for (const SettingEntry& entry : SettingTable())
        EXPECT_EQ(std::count_if(table.begin(), table.end(),
                                [&entry](const Preference& p) { return std::string(p.name) == entry.name; }),
                  1)
            << entry.name;
}

TEST_F(PreferencesPageTest, ChangesTakeEffectAtOnceAndStayInRange) {
    std::string error;
    PreferencesDlg& page = pages->preferences;
    ASSERT_TRUE(page.Set("LightingMethod", "2", error)) << error;
    EXPECT_EQ(editor->settings.lighting_method, 2);
    EXPECT_EQ(page.values[0], "2");
    EXPECT_EQ(ReadSettings().lighting_method, 2) << "stored at once: a crash does not lose it";
    EXPECT_FALSE(page.Set("LightingMethod", "3", error));
    EXPECT_NE(error, "");
    EXPECT_EQ(page.values[0], "2");
    EXPECT_TRUE(page.Set("FullUndo", "1", error));
    EXPECT_TRUE(editor->settings.full_undo);
    EXPECT_TRUE(page.OnChangeUndoStates(7));
    EXPECT_EQ(editor->settings.undo_states, 7);
    EXPECT_FALSE(page.OnChangeUndoStates(-1));
    AddBox();
    ASSERT_GT(Level().undo_buffer.GetActionCount(), 0);
    page.OnUndoPurge();
    EXPECT_EQ(Level().undo_buffer.GetActionCount() + Level().redo_buffer.GetActionCount(), 0);
}

TEST_F(PreferencesPageTest, TheLevelsOwnFields) {
    PreferencesDlg& page = pages->preferences;
    page.SetMapFile("harbour");
    page.SetMapName(std::string(300, 'n'));
    page.SetAmbientColor(0x102030);
    EXPECT_EQ(Level().map_file, "harbour");
    EXPECT_EQ(Level().map_name.size(), 259u);
    EXPECT_EQ(Level().ambient_color, MakeColor(0x10, 0x20, 0x30, 0));
    desktop.color_answer = 0xFFFFFF;
    page.OnAmbientColor();
    EXPECT_EQ(desktop.asked_color, 0x102030u);
    EXPECT_EQ(Level().ambient_color.r, 1);
    EXPECT_TRUE(editor->project_file_need_save);

    EXPECT_EQ(page.available_games, (std::vector<std::string>{"Duel", "Teams"}));
    EXPECT_TRUE(page.ChooseGame("Teams", true));
    EXPECT_TRUE(page.IsGameChosen("teams"));
    for (int i = 0; i < 7; ++i)
        EXPECT_TRUE(page.ChooseGame("game" + std::to_string(i), true));
    EXPECT_FALSE(page.ChooseGame("Duel", true)) << "the level holds 8";
    EXPECT_TRUE(page.ChooseGame("TEAMS", false));
    EXPECT_FALSE(page.IsGameChosen("Teams"));
    page.InitData();
    EXPECT_EQ(page.available_games.size(), 9u) << "also those that only the level names";
}

// --- The window

TEST_F(ConsoleTest, ShowsOnePageAndSharesTheKeysOfTheFrame) {
    CConsole& window = pages->console;
    EXPECT_EQ(window.GetActiveTab(), -1);
    window.SelectTab(TAB_PREFAB);
    EXPECT_EQ(editor->selected_tab, 2);
    EXPECT_TRUE(window.PreTranslateMessage("F8"));
    EXPECT_TRUE(editor->console_onscreen);
    EXPECT_EQ(window.GetActiveTab(), TAB_PREFERENCES);
    EXPECT_TRUE(window.PreTranslateMessage("A"));
    EXPECT_EQ(window.GetActiveTab(), TAB_AI);
    EXPECT_FALSE(window.PreTranslateMessage("Z"));
    window.OnCancel();
    EXPECT_FALSE(editor->console_onscreen);
    EXPECT_TRUE(window.PreTranslateMessage("`"));
    EXPECT_TRUE(editor->console_onscreen);
}
