#include "pages/CConsole.h"

#include <algorithm>

#include "editor/Interface.h"
#include "pages/PreferencesDlg.h"

CConsole::CConsole(CInterface& controller, PreferencesDlg& preferences_page)
    : editor(controller), preferences(preferences_page) {
    editor.AddListener(*this);
}

CConsole::~CConsole() { editor.RemoveListener(*this); }

void CConsole::SelectTab(int tab) {
    if (tab == TAB_PREFERENCES)
        preferences.InitData();
    editor.selected_tab = active_tab = tab;
}

void CConsole::OnClose() {
    editor.console_onscreen = false;
    editor.Tell(&EditorListener::LibraryWindowChanged);
}

bool CConsole::PreTranslateMessage(std::string_view key) {
    struct TabKey {
        const char* key;
        LibraryTab tab;
    };
    static constexpr TabKey TAB_KEYS[] = {{"T", TAB_TEXTURE},      {"E", TAB_ENTITY}, {"P", TAB_PREFAB},
                                          {"F8", TAB_PREFERENCES}, {"A", TAB_AI},     {"U", TAB_UNDO}};
    if (key == "`") {
        editor.Console();
        return true;
    }
    for (const TabKey& known : TAB_KEYS)
        if (key == known.key) {
            editor.ShowLibraryTab(known.tab);
            return true;
        }
    return false;
}

void CConsole::LibraryWindowChanged() {
    if (editor.console_onscreen && editor.selected_tab != active_tab)
        SelectTab(editor.selected_tab);
}
