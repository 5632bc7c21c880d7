// The pages of the library window, one of each for the whole run. They are made when the editor has its definitions and
// a world.
#pragma once

#include <memory>

#include "pages/AIDlg.h"
#include "pages/CConsole.h"
#include "pages/EntityDlg.h"
#include "pages/ExtendedSelect.h"
#include "pages/PrefabDlg.h"
#include "pages/PreferencesDlg.h"
#include "pages/TextureDlg.h"

struct LibraryPages {
    explicit LibraryPages(CInterface& editor)
        : texture(editor), preferences(editor), entity(editor), prefab(editor), ai(editor),
          console(editor, preferences) {}

    TextureDlg texture;
    PreferencesDlg preferences;
    EntityDlg entity;
    PrefabDlg prefab;
    AIDlg ai;
    CConsole console;
    std::unique_ptr<DlgExtendedSelect> extended_sel_dlg; // while the window is open
};
