#include "desktop/CommandLabels.h"

#include <algorithm>
#include <iterator>

#include "commands/CommandTable.h"

namespace {

struct Label {
    std::string_view name;
    const char* text; // null: that of the command table
    const char* help = "";
};

constexpr Label LABELS[] = {
    {"OnSaveplus", nullptr, "Saves under the next number: level_0000, level_0001 and so on."},
    {"OnFileMergeDecals", nullptr, "Adds the decals of another project to this one."},
    {"OnEditLink", nullptr, "Links each selected object to the next one."},
    {"OnEditLinktofirst", nullptr, "Links the object selected first to all others."},
    {"OnLinktofirst2", nullptr, "Links all other selected objects to the one selected first."},
    {"OnEditChangelink", nullptr, "Turns the links between the selected objects around."},
    {"OnEditCopypath", nullptr, "Keeps the path of the selected object for pasting."},
    {"OnEditPastepath", nullptr, "Gives the kept path to all selected objects."},
    {"OnBrushRectangle", nullptr, "New brushes are flat rectangles."},
    {"OnBrushBox", nullptr, "New brushes are boxes."},
    {"OnBrushPyramid", nullptr, "New brushes are pyramids."},
    {"OnBrushPrism", nullptr, "New brushes are prisms; the segments tell their sides."},
    {"OnBrushPatch", nullptr, "New brushes are curved patches."},
    {"OnBrushCylinder", nullptr, "New brushes are curved cylinders."},
    {"OnBrushCone", nullptr, "New brushes are curved cones."},
    {"OnBrushSftblock", nullptr, "New brushes are blocks with a softened edge."},
    {"OnBrushQblock", nullptr, "New brushes are quarter blocks with a curved side."},
    {"OnBrushElasticbox", nullptr, "New brushes are boxes of six curved sides."},
    {"OnBrushExtrudable", nullptr, "Click the corners of an outline; click the first one again to close it."},
    {"OnBrushPortal", nullptr, "New brushes are portals between two cells."},
    {"OnBrushCustom", nullptr, "New brushes are those chosen on the prefab page."},
    {"OnBrushOccluder", "Occl&uder", "New brushes hide what is behind them."},
    {"OnBrushColor", nullptr, "The colour of the selected brushes and of new ones."},
    {"OnBrushSegments", nullptr, "Into how many segments new brushes are divided."},
    {"OnRotationAngle", "Rotation a&ngle...", "The angle of one notch of the wheel with Ctrl."},
    {"OnBrushProperties", "&Properties...", "Names, flags and physics of the selected brushes."},
    {"OnCollapse", "Collapse", "Joins the selected brushes into one."},
    {"OnToolsSmoothterrainedges", nullptr, "Gives neighbouring terrains one shading along their edges."},
    {"OnRotate", nullptr, "Dragging turns the selection instead of moving it."},
    {"OnSheering", nullptr, "Dragging a side of the selection shears it instead of resizing."},
    {"OnVertexMode", nullptr, "Moves single corners of the selected brushes."},
    {"OnPickTexture", nullptr, "The next click in the perspective view takes the texture under it."},
    {"OnTexturelock", nullptr, "Textures stay on their surfaces when brushes are moved."},
    {"OnClipbox", nullptr, "Hides everything outside of the clip box."},
    {"OnCordonstate", nullptr, "Shows the cordon box."},
    {"OnCordonbounds", nullptr, "The mouse drags the sides of the clip box and of the cordon box."},
    {"OnEditMovie", nullptr, "Clicks with Ctrl place points of a path."},
    {"OnCompile", nullptr, "Makes what the game loads from this level."},
    {"OnCompileEntity", nullptr, "Only rewrites the entities of the compiled level."},
    {"OnCompileEntityVis", nullptr, "Rewrites the entities and which cells they stand in."},
    {"OnGamemode", nullptr, "Starts the game with the compiled level."},
    {"OnToolsProblemsolver", nullptr, "What the last compile has found, by object."},
    {"OnToolsValidate", nullptr, "Looks for objects that share an ID."},
    {"OnSelwrongobj", nullptr, "Selects the brushes that have no proper shape."},
    {"OnLogTraceingId", "Trace an object ID...", "Messages of the compile then follow this object."},
    {"OnRotateCcw", "Turn left by 90\302\260", "In the active view."},
    {"OnRotateCw", "Turn right by 90\302\260", "In the active view."},
    {"OnFlipHorizontally", "Flip horizontally", "In the active view."},
    {"OnFlipVertically", "Flip vertically", "In the active view."},
    {"OnAlignvertices", "Round vertices", "In vertex mode: puts all corners on whole units."},
    {"OnSelectionMultiplepointselection", nullptr, "A click in a flat view takes every entity under it."},
    {"OnIgnoregroups", nullptr, "A click selects one object of a group alone."},
    {"OnMultiselect", "&Multiple selection", "Each click adds to the selection, as with Ctrl."},
    {"OnSelectionlock", "Selection &lock", "Shows LOCK in the status bar."},
    {"OnExtendedhide", "Entities by type...", "Selects, hides and shows entities by their type."},
    {"OnSelectId", "Select by ID...", "Adds the object with this number to the selection."},
    {"OnConsole", nullptr, "Shows or hides the library window."},
    {"OnAutocenter", "&Full view", "The active view takes the whole window."},
    {"OnCenterworld", "&Origin to the middle", "In the active view."},
    {"OnCenterworldall", "Origin to the middle of all views", ""},
    {"OnView1", "Only the perspective view", ""},
    {"OnView2", "Only the top view", ""},
    {"OnView3", "Only the left view", ""},
    {"OnView4", "Only the front view", ""},
    {"OnRendermodes", "Next way of drawing", "Textures, light, colours or lines in the perspective view."},
    {"OnCurveLower", "Coarser curves", ""},
    {"OnCurveHigher", "Finer curves", ""},
    {"OnShowTextureBorder", "Borders of textures", "Marks where the texture of the selected surface repeats."},
    {"OnCameraRotation", "Camera about the selection", "The camera turns about the selection, or goes to a camera."},
    {"OnRotateLeft", "Camera to the left", "While it turns about the selection."},
    {"OnRotateRight", "Camera to the right", "While it turns about the selection."},
    {"OnRotateUp", "Camera up", "While it turns about the selection."},
    {"OnRotateDown", "Camera down", "While it turns about the selection."},
    {"OnFit", "Fit once", "The texture covers the surface once."},
    {"OnUfitadd", "One more across", ""},
    {"OnUfitsub", "One less across", ""},
    {"OnVfitadd", "One more along", ""},
    {"OnVfitsub", "One less along", ""},
    {"OnCyclesurfaces", "Next surface", "Selects the next surface of the brush."},
    {"OnUshiftadd", "Shift across, forward", ""},
    {"OnUshiftsub", "Shift across, back", ""},
    {"OnVshiftadd", "Shift along, forward", ""},
    {"OnVshiftsub", "Shift along, back", ""},
    {"OnUscaleadd", "More repeats across", ""},
    {"OnUscalesub", "Fewer repeats across", ""},
    {"OnVscaleadd", "More repeats along", ""},
    {"OnVscalesub", "Fewer repeats along", ""},
    {"OnRotAdd", "Turn forward", "By one degree; by 90 with 0 of the numeric pad held."},
    {"OnRotSub", "Turn back", "By one degree; by 90 with 0 of the numeric pad held."},
    {"OnUFlip", "Mirror across", ""},
    {"OnVFlip", "Mirror along", ""},
    {"OnShowMatScript", "Show the material's script", "With 0 of the numeric pad held."},
    {"OnMask", "Mask", "Shows the selected surface in one colour."},
};

const Label* FindLabel(std::string_view name) {
    const auto found =
        std::find_if(std::begin(LABELS), std::end(LABELS), [&](const Label& l) { return l.name == name; });
    return found == std::end(LABELS) ? nullptr : found;
}

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

std::string CommandText(const Command& command) {
    const Label* label = FindLabel(command.name);
    return label && label->text ? label->text : command.text[0] != '\0' ? command.text : command.name;
}

std::string CommandTitle(const Command& command) {
    const std::string text = CommandText(command);
    std::string title;
    for (size_t i = 0; i < text.size(); ++i)
        if (text[i] != '&' || (i + 1 < text.size() && text[i + 1] == '&'))
            title += text[i], i += text[i] == '&';
    return title;
}

const char* CommandHelp(const Command& command) {
    const Label* label = FindLabel(command.name);
    return label ? label->help : "";
}

MenuPlace PlaceInMenu(const Command& command) {
    const auto found = std::find_if(std::begin(PLACINGS), std::end(PLACINGS),
                                    [&](const Placing& p) { return p.name == command.name; });
    return found == std::end(PLACINGS) ? MenuPlace{} : found->place;
}
