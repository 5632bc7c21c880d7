#include "commands/CommandLabels.h"

#include <algorithm>
#include <iterator>

#include "commands/CommandTable.h"

namespace {

struct Label {
    std::string_view name;
    const char* text; // with the mark of its menu letter; null: that of the command table
    const char* help;
};

constexpr Label LABELS[] = {
    {"OnFileNew", nullptr, "Starts an empty level."},
    {"OnFileOpen", nullptr, "Opens a level."},
    {"OnFileSave", nullptr, "Saves the level to its file."},
    {"OnFileSaveAs", nullptr, "Saves the level to another file and goes on with that one."},
    {"OnSaveplus", nullptr, "Saves under the next number: level_0000, level_0001 and so on."},
    {"OnFileImport", nullptr, "Brings the meshes of a file into the level as custom brushes."},
    {"OnFileExport", nullptr, "Writes the level's shapes for other 3D programs."},
    {"OnFileNewmovie", nullptr, "Starts an empty movie file; the level's paths stay."},
    {"OnFileLoadmovie", nullptr, "Reads the paths of a movie file."},
    {"OnFileLoadmovieforselection", nullptr, "Gives the first path of a movie file to the selected object."},
    {"OnFileMergemovie", nullptr, "Adds the paths of a movie file to those that are here."},
    {"OnFileSavemovie", nullptr, "Writes the paths to the movie file in use."},
    {"OnFileSavemovieas", nullptr, "Writes the paths to another movie file."},
    {"OnFileMergeDecals", nullptr, "Adds the decals of another project to this one."},
    {"OnEditUndo", nullptr, "Takes the last step back."},
    {"OnEditRedo", nullptr, "Does again what was taken back last."},
    {"OnClone", nullptr, "Makes a copy of the selection."},
    {"OnDelete", nullptr, "Removes the selected objects from the level."},
    {"OnEditCopypath", nullptr, "Keeps the path of the selected object for pasting."},
    {"OnEditPastepath", nullptr, "Gives the kept path to all selected objects."},
    {"OnEditLink", nullptr, "Links each selected object to the next one."},
    {"OnEditLinktofirst", nullptr, "Links the object selected first to all others."},
    {"OnLinktofirst2", nullptr, "Links all other selected objects to the one selected first."},
    {"OnEditChangelink", nullptr, "Turns the links between the selected objects around."},
    {"OnEditUnlink", nullptr, "Removes the links between the selected objects."},
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
    {"OnBrushCreatepivot", nullptr, "Finds the frame of the selection and its middle anew."},
    {"OnBrushProperties", "&Properties...", "Names, flags and physics of the selected brushes."},
    {"OnCollapse", "Collapse", "Joins the selected brushes into one."},
    {"OnToolsTerraingenerator", nullptr, "Makes a terrain from a picture of heights or from numbers."},
    {"OnToolsSmoothterrainedges", nullptr, "Gives neighbouring terrains one shading along their edges."},
    {"OnToolsTerrainmodifier", nullptr, "Raises, lowers and paints terrain with the mouse."},
    {"OnRotate", nullptr, "Dragging turns the selection instead of moving it."},
    {"OnSheering", nullptr, "Dragging a side of the selection shears it instead of resizing."},
    {"OnVertexMode", nullptr, "Moves single corners of the selected brushes."},
    {"OnFlipNormals", nullptr, "Turns the selected brushes inside out."},
    {"OnPickTexture", nullptr, "The next click in the perspective view takes the texture under it."},
    {"OnTexturelock", nullptr, "Textures stay on their surfaces when brushes are moved."},
    {"OnDecals", nullptr, "The next clicks in the perspective view put decals on surfaces."},
    {"OnPrefab", nullptr, "Opens the page of ready-made brushes and groups."},
    {"OnClipbox", nullptr, "Hides everything outside of the clip box."},
    {"OnCordonstate", nullptr, "Shows the cordon box."},
    {"OnCordonbounds", nullptr, "The mouse drags the sides of the clip box and of the cordon box."},
    {"OnEditMovie", nullptr, "Clicks with Ctrl place points of a path."},
    {"OnToolsTrackedit", nullptr, "Opens the window of tracklists, which drive entities over time."},
    {"OnCompile", nullptr, "Makes what the game loads from this level."},
    {"OnCompileEntity", nullptr, "Only rewrites the entities of the compiled level."},
    {"OnCompileEntityVis", nullptr, "Rewrites the entities and which cells they stand in."},
    {"OnToolsConvertoldscripts", nullptr, "Turns scripts of old levels into those of now."},
    {"OnToolsReindexallobjectids", nullptr, "Gives all objects new numbers without gaps; links follow."},
    {"OnRandomizeBots", nullptr, "Gives each selected actor a body of its class by chance."},
    {"OnGamemode", nullptr, "Starts the game with the compiled level."},
    {"OnSelwrongobj", nullptr, "Selects the brushes that have no proper shape."},
    {"OnToolsProblemsolver", nullptr, "Shows what the last compile has found, by object."},
    {"OnToolsValidate", nullptr, "Looks for objects that share an ID."},
    {"OnLogAll", nullptr, "Writes the values of all entities to the log."},
    {"OnLogScripts", nullptr, "Writes the scripts of all entities to the log."},
    {"OnLogTraceingId", "Trace an object ID...", "Messages of the compile then follow this object."},
    {"OnRotateCcw", "Turn left by 90\302\260",
     "Turns the selection by a quarter to the left, as the active view shows it."},
    {"OnRotateCw", "Turn right by 90\302\260",
     "Turns the selection by a quarter to the right, as the active view shows it."},
    {"OnFlipHorizontally", "Flip horizontally",
     "Mirrors the selection from left to right, as the active view shows it."},
    {"OnFlipVertically", "Flip vertically", "Mirrors the selection from top to bottom, as the active view shows it."},
    {"OnAlignvertices", "Round vertices", "In vertex mode: puts all corners on whole units."},
    {"OnSelectionRelevant", nullptr, "Adds everything that the selected objects have to do with."},
    {"OnSelectionRelevant2", nullptr, "The same, without what triggers start."},
    {"OnSelectionMultiplepointselection", nullptr, "A click in a flat view takes every entity under it."},
    {"OnSelectall", nullptr, "Selects everything that is shown."},
    {"OnInvertselection", nullptr, "Selects what was not selected, and nothing else."},
    {"OnEscape", nullptr, "Leaves the mode one is in, else selects nothing."},
    {"OnSelectionSpecial", nullptr, "Selects brushes by type, material, size and flags."},
    {"OnSelectionEntSpecial", nullptr, "Selects entities by type and values."},
    {"OnHideselected", nullptr, "Hides the selected objects."},
    {"OnHideunselected", nullptr, "Hides everything but the selected objects."},
    {"OnUnhideall", nullptr, "Shows all that was hidden."},
    {"OnGroup", nullptr, "Joins the selected objects: a click on one takes them all."},
    {"OnUngroup", nullptr, "Parts the selected group again."},
    {"OnIgnoregroups", nullptr, "A click selects one object of a group alone."},
    {"OnCenterToSelection", nullptr, "The flat views move to the selection."},
    {"OnMultiselect", "&Multiple selection", "Each click adds to the selection, as with Ctrl."},
    {"OnSelectionlock", "Selection &lock", "Shows LOCK in the status bar."},
    {"OnExtendedhide", "Entities by type...", "Selects, hides and shows entities by their type."},
    {"OnSelectId", "Select by ID...", "Adds the object with this number to the selection."},
    {"OnSelectionShowBrushes", nullptr, "Shows or hides all brushes."},
    {"OnSelectionShowEntities", nullptr, "Shows or hides all entities."},
    {"OnSelectionShowPortals", nullptr, "Shows or hides all portals."},
    {"OnSelectionShowOccluders", nullptr, "Shows or hides all occluders."},
    {"OnSelectionShowNonboxentities", nullptr, "Shows entities as bodies and pictures instead of boxes."},
    {"OnShowlinks", nullptr, "Shows or hides the arrows between linked objects."},
    {"OnShowGroundgrid", nullptr, "Shows or hides the grid on the ground and the axes in the perspective view."},
    {"OnSelectionShowParticles", nullptr, "Shows or hides all particle entities."},
    {"OnSelectionShowEyes", nullptr, "Shows or hides the visibility eyes, which start the cells."},
    {"OnSelectionShowLights", nullptr, "Shows or hides all lights and coronas."},
    {"OnConsole", nullptr, "Shows or hides the library window."},
    {"OnViewShowlevelsumary", nullptr, "Counts what the level holds."},
    {"OnViewNamedobjlist", nullptr, "Lists the objects that have a name, to find and select them."},
    {"OnTextureWindow", nullptr, "Opens the page of materials and of their place on surfaces."},
    {"OnEntityWindow", nullptr, "Opens the page of entity types and values."},
    {"OnPrefabWindow", nullptr, "Opens the page of prefabs."},
    {"OnPreferencesWindow", nullptr, "Opens the page of settings."},
    {"OnViewAiwindow", nullptr, "Opens the page of actors and their groups."},
    {"OnViewUndo", nullptr, "Opens the list of steps that can be taken back."},
    {"OnAutocenter", "&Full view", "The active view takes the whole window."},
    {"OnCenterworld", "&Origin to the middle", "The active view shows the middle of the world."},
    {"OnCenterworldall", "Origin to the middle of all views", "All four views show the middle of the world."},
    {"OnView1", "Only the perspective view", "The perspective view takes the whole window."},
    {"OnView2", "Only the top view", "The top view takes the whole window."},
    {"OnView3", "Only the left view", "The left view takes the whole window."},
    {"OnView4", "Only the front view", "The front view takes the whole window."},
    {"OnRendermodes", "Next way of drawing", "Textures, light, colours or lines in the perspective view."},
    {"OnCurveLower", "Coarser curves", "Divides curved brushes into fewer pieces."},
    {"OnCurveHigher", "Finer curves", "Divides curved brushes into more pieces."},
    {"OnShowTextureBorder", "Borders of textures", "Marks where the texture of the selected surface repeats."},
    {"OnCameraRotation", "Camera about the selection", "The camera turns about the selection, or goes to a camera."},
    {"OnRotateLeft", "Camera to the left", "Turns the camera left while it goes about the selection."},
    {"OnRotateRight", "Camera to the right", "Turns the camera right while it goes about the selection."},
    {"OnRotateUp", "Camera up", "Raises the camera while it goes about the selection."},
    {"OnRotateDown", "Camera down", "Lowers the camera while it goes about the selection."},
    {"OnMoviePlay", nullptr, "Plays the movie in the views, or holds it."},
    {"OnMovieStop", nullptr, "Stops the movie and goes back to its start."},
    {"OnMovieTrackfw", nullptr, "One small step forward in the movie."},
    {"OnMovieTrackbk", nullptr, "One small step back in the movie."},
    {"OnMovieFastfw", nullptr, "One second forward in the movie."},
    {"OnMovieFastbk", nullptr, "One second back in the movie."},
    {"OnMovieAligntimeofpoints", nullptr, "Spreads the times of the path's points by their distance."},
    {"OnMovieComputetime", nullptr, "Tells how long the selected path takes."},
    {"OnFit", "Fit once", "The texture covers the surface once."},
    {"OnUfitadd", "One more across", "The texture repeats once more across the surface."},
    {"OnUfitsub", "One less across", "The texture repeats once less across the surface."},
    {"OnVfitadd", "One more along", "The texture repeats once more along the surface."},
    {"OnVfitsub", "One less along", "The texture repeats once less along the surface."},
    {"OnCyclesurfaces", "Next surface", "Selects the next surface of the brush."},
    {"OnUshiftadd", "Shift across, forward", "Moves the texture across the surface; faster while the key is held."},
    {"OnUshiftsub", "Shift across, back", "Moves the texture back across the surface; faster while the key is held."},
    {"OnVshiftadd", "Shift along, forward", "Moves the texture along the surface; faster while the key is held."},
    {"OnVshiftsub", "Shift along, back", "Moves the texture back along the surface; faster while the key is held."},
    {"OnUscaleadd", "More repeats across", "Changes the texture's scale across the surface by a small step."},
    {"OnUscalesub", "Fewer repeats across", "Changes the texture's scale across the surface back by a small step."},
    {"OnVscaleadd", "More repeats along", "Changes the texture's scale along the surface by a small step."},
    {"OnVscalesub", "Fewer repeats along", "Changes the texture's scale along the surface back by a small step."},
    {"OnRotAdd", "Turn forward", "Turns the texture by one degree; by 90 with 0 of the numeric pad held."},
    {"OnRotSub", "Turn back", "Turns the texture back by one degree; by 90 with 0 of the numeric pad held."},
    {"OnUFlip", "Mirror across", "Mirrors the texture from left to right."},
    {"OnVFlip", "Mirror along", "Mirrors the texture from top to bottom."},
    {"OnShowMatScript", "Show the material's script",
     "Shows the material's script while 0 of the numeric pad is held."},
    {"OnMask", "Mask", "Shows the selected surface in one colour."},
    {"OnAutoloadproject", nullptr, "The program starts with the level that was open last."},
    {"OnCreateProjBkp", nullptr, "Each save keeps the file that was there before."},
    {"OnBkpbeforecompile", nullptr, "Each compile keeps a copy of the level first."},
    {"OnSet3dviewbgcolor", nullptr, "Chooses the colour behind the perspective view."},
    {"OnSetWireviewbgcolor", nullptr, "Chooses the colour behind the flat views."},
    {"OnShowSelwire", nullptr, "Shows the edges of the selected brushes in the perspective view."},
};

const Label* FindLabel(std::string_view name) {
    const auto found =
        std::find_if(std::begin(LABELS), std::end(LABELS), [&](const Label& l) { return l.name == name; });
    return found == std::end(LABELS) ? nullptr : found;
}

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
