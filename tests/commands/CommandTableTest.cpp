// The table of all commands and the spelling of keys.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>

#include "commands/Accelerator.h"
#include "commands/CommandLabels.h"
#include "commands/CommandTable.h"
#include "commands/KeyTablePage.h"

TEST(Accelerator, KeysHaveOneSpelling) {
    const std::pair<const char*, const char*> cases[] = {{"ctrl+z", "Ctrl+Z"},
                                                         {"Shift+Ctrl+S", "Ctrl+Shift+S"},
                                                         {"Num+", "Num+"},
                                                         {"ctrl+num5", "Ctrl+Num5"},
                                                         {"Num0+Num-", "Num0+Num-"},
                                                         {"pgdn", "PgDn"},
                                                         {"alt+.", "Alt+."},
                                                         {"`", "`"},
                                                         {"+", "+"},
                                                         {"Alt+Shift+Ctrl+E", "Ctrl+Shift+Alt+E"}};
    for (const auto& [text, spelling] : cases) {
        const std::optional<KeyCombination> keys = ParseKeys(text);
        ASSERT_TRUE(keys) << text;
        EXPECT_EQ(KeysText(*keys), spelling);
    }
    for (const char* wrong : {"", "Ctrl+", "Bogus", "F13", "Ctrl+Bogus", "ab"})
        EXPECT_FALSE(ParseKeys(wrong)) << wrong;
}

TEST(CommandTable, EachKeyHasOneCommandAndEachCommandOneName) {
    std::map<std::string, std::string> owner_of_key;
    std::set<std::string> names;
    for (const Command& command : CommandTable()) {
        EXPECT_TRUE(names.insert(std::string(command.owner) + "::" + command.name).second) << command.name;
        EXPECT_EQ(FindCommand(command.name), &command);
        std::istringstream keys(command.keys);
        for (std::string key; keys >> key;) {
            const std::optional<KeyCombination> parsed = ParseKeys(key);
            ASSERT_TRUE(parsed) << command.name << ": " << key;
            const auto [other, is_new] = owner_of_key.emplace(KeysText(*parsed), command.name);
            EXPECT_TRUE(is_new) << key << " is that of " << other->second << " and of " << command.name;
            EXPECT_FALSE(IsReservedKey(key)) << key;
            EXPECT_EQ(FindCommandOfKey(key), &command);
        }
    }
}

TEST(CommandTable, EachCommandHasALabelOfItsOwnAndASentence) {
    std::map<std::string, std::string> owner_of_label;
    for (const Command& command : CommandTable()) {
        const std::string label = CommandTitle(command), help = CommandHelp(command);
        EXPECT_FALSE(label.empty()) << command.name;
        EXPECT_NE(label, command.name);
        const auto [other, is_new] = owner_of_label.emplace(label, command.name);
        EXPECT_TRUE(is_new) << label << " is that of " << other->second << " and of " << command.name;
        ASSERT_FALSE(help.empty()) << command.name;
        EXPECT_EQ(help.back(), '.') << command.name;
    }
    const std::string page = KeyTablePage();
    for (const char* handler_words : {"Ufitsub", "Extendedhide", "Alignvertices", "Centerworldall", "Rot add"})
        EXPECT_EQ(page.find(std::string("| ") + handler_words + " |"), std::string::npos) << handler_words;
    EXPECT_NE(page.find("| Round vertices | `Ctrl+A` |"), std::string::npos);
}

TEST(CommandTable, TheKeysThatHandsKnow) {
    const std::pair<const char*, const char*> cases[] = {{"Ctrl+Z", "OnEditUndo"},
                                                         {"Alt+Backspace", "OnEditUndo"},
                                                         {"Space", "OnClone"},
                                                         {"Backspace", "OnDelete"},
                                                         {"Ctrl+Shift+Alt+E", "OnLinktofirst2"},
                                                         {"B", "OnBrushProperties"},
                                                         {"Ctrl+M", "OnEditMovie"},
                                                         {"Ctrl+Shift+F7", "OnCompileEntityVis"},
                                                         {"[", "OnRotateCcw"},
                                                         {"Alt+G", "OnUngroup"},
                                                         {"Shift+Tab", "OnCenterToSelection"},
                                                         {">", "OnViewNamedobjlist"},
                                                         {"?", "OnViewShowlevelsumary"},
                                                         {"F1", "OnView1"},
                                                         {"Q", "OnCameraRotation"},
                                                         {"Left", "OnRotateLeft"},
                                                         {"Shift+Left", "OnUshiftsub"},
                                                         {"Num.", "OnVfitsub"},
                                                         {"Del", "OnVfitsub"},
                                                         {"Num*", "OnVFlip"},
                                                         {";", "OnMoviePlay"},
                                                         {"Alt+,", "OnMovieFastbk"},
                                                         {"Ctrl+Up", "OnVscaleadd"},
                                                         {"Alt+0", "OnSelectionShowLights"}};
    for (const auto& [key, name] : cases) {
        const Command* command = FindCommandOfKey(key);
        ASSERT_NE(command, nullptr) << key;
        EXPECT_STREQ(command->name, name) << key;
    }
    EXPECT_TRUE(IsReservedKey("a") && IsReservedKey("Z"));
    EXPECT_FALSE(IsReservedKey("Ctrl+Z"));
    EXPECT_NE(FindCommand("CPerspectiveView::OnRotateLeft"), nullptr);
    EXPECT_EQ(FindCommand("CMainFrame::OnRotateLeft"), nullptr);
}
