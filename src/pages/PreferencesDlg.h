// The preferences page: the settings of the editor, and what the level itself says of its name and its game types. All
// changes take effect at once.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "editor/EditorListener.h"

class CInterface;

// A setting as the page shows it. Its field and its range stand in the table of the settings, under its name.
struct Preference {
    const char* name; // of the stored value
    const char* label;
    const char* help;                 // what it does, in a sentence without its point
    std::vector<const char*> choices; // of a choice by number; empty for a flag, a number or a text
};

class PreferencesDlg : public EditorListener {
public:
    explicit PreferencesDlg(CInterface& controller);
    PreferencesDlg(const PreferencesDlg&) = delete;
    PreferencesDlg& operator=(const PreferencesDlg&) = delete;
    ~PreferencesDlg() override;

    static const std::vector<Preference>& Table();

    std::vector<std::string> values;          // of the table's rows: numbers in decimal, a flag 1 or 0
    std::vector<std::string> available_games; // from Marrowstead\mpgames.def, then others that the level names
    std::string map_file, map_name;
    uint32_t ambient_color = 0; // 0x00RRGGBB

    void InitData(); // from the settings and the level
    // One setting by its stored name, in any case; an out-of-range or unknown one is refused with a sentence.
    bool Set(std::string_view name, std::string_view value, std::string& error);
    void OnUndoPurge(); // both lists
    bool OnChangeUndoStates(int states);

    void SetMapFile(std::string_view name);
    void SetMapName(std::string_view name);
    bool IsGameChosen(std::string_view game) const;
    bool ChooseGame(std::string_view game, bool chosen); // false when the level holds no more
    void SetAmbientColor(uint32_t rgb);
    void OnAmbientColor(); // asks for it

    void SettingsChanged() override { InitData(); }
    void WorldReplaced() override { InitData(); }

private:
    void ReadGames();

    CInterface& editor;
    std::vector<std::string> defined_games;
};
