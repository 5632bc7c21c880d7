#include "editor/LineColorStore.h"

#include "drawing/LineColors.h"
#include "editor/Interface.h"
#include "foundation/Settings.h"

static constexpr const char* LINE_COLORS = "LineColors";

void ReadLineColors() {
    RegistryClass store;
    TakeLineColors(store.OpenKeyDirectory(SETTINGS_KEY) ? store.GetText(LINE_COLORS, "") : std::string());
}

bool WriteLineColors() {
    RegistryClass store;
    return store.OpenKeyDirectory(SETTINGS_KEY) && store.SetKeyValue(LINE_COLORS, LineColorText().c_str());
}

void ApplyGridColors(CInterface& interface) {
    if (interface.movie_editing || interface.edit_cordon_bounds)
        return;
    constexpr LineColor GRID[] = {LineColor::GridMinor, LineColor::GridMajor, LineColor::GridAxes};
    for (size_t i = 0; i < std::size(GRID); ++i)
        interface.view_grid_color[i] = ColorOf(GRID[i]) & 0x00FFFFFF;
}
