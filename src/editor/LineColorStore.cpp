#include "editor/LineColorStore.h"

#include <array>

#include "drawing/LineColors.h"
#include "editor/Interface.h"
#include "foundation/Settings.h"

namespace {

using Colors = std::array<uint32_t, LINE_COLOR_COUNT>;

constexpr const char* LINE_COLORS = "LineColors";
Colors stored; // as they were read or written last

Colors NowColors() {
    Colors colors;
    for (size_t i = 0; i < LINE_COLOR_COUNT; ++i)
        colors[i] = ColorOf(static_cast<LineColor>(i));
    return colors;
}

void TakeColors(const Colors& colors) {
    for (size_t i = 0; i < LINE_COLOR_COUNT; ++i)
        SetLineColor(static_cast<LineColor>(i), colors[i]);
}

} // namespace

void ReadLineColors() {
    RegistryClass store;
    TakeLineColors(store.OpenKeyDirectory(SETTINGS_KEY) ? store.GetText(LINE_COLORS, "") : std::string());
    stored = NowColors();
}

bool WriteLineColors() {
    const Colors own = NowColors();
    const bool written = RegistryClass::ChangeTexts(SETTINGS_KEY, [&](std::map<std::string, std::string>& texts) {
        TakeLineColors(texts[LINE_COLORS]); // another program's
        Colors merged = NowColors();
        for (size_t i = 0; i < LINE_COLOR_COUNT; ++i)
            if (own[i] != stored[i])
                merged[i] = own[i];
        TakeColors(merged);
        texts[LINE_COLORS] = LineColorText();
    });
    TakeColors(own);
    if (written)
        stored = own;
    return written;
}

void ApplyGridColors(CInterface& interface) {
    if (interface.movie_editing || interface.edit_cordon_bounds)
        return;
    constexpr LineColor GRID[] = {LineColor::GridMinor, LineColor::GridMajor, LineColor::GridAxes};
    for (size_t i = 0; i < std::size(GRID); ++i)
        interface.view_grid_color[i] = ColorOf(GRID[i]) & 0x00FFFFFF;
}
