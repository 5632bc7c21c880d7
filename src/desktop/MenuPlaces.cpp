#include "desktop/MenuPlaces.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "commands/CommandTable.h"

namespace {

struct Placing {
    std::string_view name;
    MenuPlace place;
};
constexpr const char *MOVIES = "&Movie file", *BOUNDS = "&Boxes", *TURNS = "Turn and f&lip", *TERRAIN = "Terr&ain",
                     *CHECKS = "Chec&k and repair", *CAMERA = "&Camera";

constexpr Placing PLACINGS[] = {
    {"OnFileImport", {"", true}},
    {"OnFileNewmovie", {MOVIES, true}},
    {"OnFileLoadmovie", {MOVIES}},
    {"OnFileLoadmovieforselection", {MOVIES}},
    {"OnFileMergemovie", {MOVIES}},
    {"OnFileSavemovie", {MOVIES}},
    {"OnFileSavemovieas", {MOVIES}},
    {"OnClone", {"", true}},
    {"OnEditCopypath", {"", true}},
    {"OnEditLink", {"", true}},
    {"OnBrushColor", {"", true}},
    {"OnBrushCreatepivot", {"", true}},
    {"OnToolsTerraingenerator", {TERRAIN}},
    {"OnToolsSmoothterrainedges", {TERRAIN}},
    {"OnToolsTerrainmodifier", {TERRAIN}},
    {"OnFlipNormals", {TURNS}},
    {"OnRotateCcw", {TURNS}},
    {"OnRotateCw", {TURNS}},
    {"OnFlipHorizontally", {TURNS}},
    {"OnFlipVertically", {TURNS}},
    {"OnAlignvertices", {TURNS}},
    {"OnClipbox", {BOUNDS}},
    {"OnCordonstate", {BOUNDS}},
    {"OnCordonbounds", {BOUNDS}},
    {"OnEditMovie", {"", true}},
    {"OnCompile", {"", true}},
    {"OnToolsConvertoldscripts", {CHECKS}},
    {"OnToolsReindexallobjectids", {CHECKS}},
    {"OnRandomizeBots", {CHECKS}},
    {"OnSelwrongobj", {CHECKS}},
    {"OnToolsValidate", {CHECKS}},
    {"OnLogAll", {CHECKS}},
    {"OnLogScripts", {CHECKS}},
    {"OnLogTraceingId", {CHECKS}},
    {"OnSelectall", {"", true}},
    {"OnSelectionSpecial", {"", true}},
    {"OnHideselected", {"", true}},
    {"OnGroup", {"", true}},
    {"OnCenterToSelection", {"", true}},
    {"OnViewShowlevelsumary", {"", true}},
    {"OnTextureWindow", {"", true}},
    {"OnAutocenter", {"", true}},
    {"OnRendermodes", {"", true}},
    {"OnCameraRotation", {CAMERA}},
    {"OnRotateLeft", {CAMERA}},
    {"OnRotateRight", {CAMERA}},
    {"OnRotateUp", {CAMERA}},
    {"OnRotateDown", {CAMERA}},
    {"OnMovieTrackfw", {"", true}},
    {"OnMovieAligntimeofpoints", {"", true}},
    {"OnCyclesurfaces", {"", true}},
    {"OnUshiftadd", {"", true}},
    {"OnUscaleadd", {"", true}},
    {"OnRotAdd", {"", true}},
    {"OnShowMatScript", {"", true}},
    {"OnSet3dviewbgcolor", {"", true}},
};

} // namespace

MenuPlace PlaceInMenu(const Command& command) {
    const auto found = std::find_if(std::begin(PLACINGS), std::end(PLACINGS),
                                    [&](const Placing& p) { return p.name == command.name; });
    return found == std::end(PLACINGS) ? MenuPlace{} : found->place;
}
