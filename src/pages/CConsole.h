// The library window: a frame of tabs, one page shown at a time.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "editor/EditorListener.h"

class CInterface;
class PreferencesDlg;

class CConsole : public EditorListener {
public:
    struct Tab {
        int number;
        const char* text;
    };
    static constexpr std::array<Tab, 5> TABS = {
        {{0, "Texture"}, {1, "Entity"}, {2, "Prefab"}, {4, "Preferences"}, {5, "AI"}}};

    CConsole(CInterface& controller, PreferencesDlg& preferences_page);
    CConsole(const CConsole&) = delete;
    CConsole& operator=(const CConsole&) = delete;
    ~CConsole() override;

    int active_tab = -1;     // the page shown; -1: none
    void SelectTab(int tab); // a number without a page shows nothing
    int GetActiveTab() const { return active_tab; }

    void OnClose();
    void OnOK() { OnClose(); }
    void OnCancel() { OnClose(); }
    // The keys that the window shares with the main frame, such as "T" or "F8"; "`" is the key to the left of 1. True
    // if it was one of them; the window handles the key as any other all the same.
    bool PreTranslateMessage(std::string_view key);

    void LibraryWindowChanged() override;

private:
    CInterface& editor;
    PreferencesDlg& preferences;
};
