#include "commands/CommandTable.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <sstream>

#include "commands/Accelerator.h"
#include "commands/MainFrame.h"
#include "foundation/Strings.h"
#include "pages/AdvancedSelection.h"
#include "pages/BrushProperties.h"
#include "pages/SmallDialogs.h"
#include "persistence/MeshFile.h"
#include "scene/TerrainStroke.h"

namespace {

using F = CMainFrame;
constexpr const char* FRAME = "CMainFrame";
constexpr const char* DOC = "CMarrowstead2Doc";
constexpr const char* PERSPECTIVE = "CPerspectiveView";
constexpr float QUARTER_TURN = 1.5707964f;             // radians
constexpr float MOVIE_STEP = 0.02f, MOVIE_JUMP = 1.0f; // seconds

template <BrushType TYPE>
Command Template(const char* name, const char* text) {
    return {FRAME,
            name,
            "Brush",
            text,
            "",
            [](F& f) { f.SelectTemplate(TYPE); },
            [](F& f) { return f.interface.active_brush_template == TYPE; }};
}

template <bool DisplayFilters::*FILTER>
Command Filter(const char* name, const char* text, const char* keys) {
    return {FRAME,
            name,
            "Show",
            text,
            keys,
            [](F& f) { f.ToggleFilter(FILTER); },
            [](F& f) { return f.interface.filters.*FILTER; }};
}

template <bool CInterface::*FLAG>
bool IsOn(F& f) {
    return f.interface.*FLAG;
}

template <bool EditorSettings::*FLAG>
bool IsSet(F& f) {
    return f.interface.settings.*FLAG;
}

template <LibraryTab TAB>
void ShowTab(F& f) {
    f.interface.ShowLibraryTab(TAB);
}

template <int VIEW>
void OneView(F& f) {
    f.ShowOneView(VIEW);
}

// A change through the texture page, which redraws the perspective view.
#define ON_TEXTURE(call)                                                                                               \
    [](F& f) {                                                                                                         \
        f.pages.texture.call;                                                                                          \
        f.interface.RedrawView(VIEW_PERSPECTIVE);                                                                      \
    }

std::vector<Command> FileCommands() {
    return {
        {DOC, "OnFileNew", "File", "&New", "Ctrl+N", [](F& f) { f.document.OnFileNew(); }},
        {DOC, "OnFileOpen", "File", "&Open...", "Ctrl+O", [](F& f) { f.document.OnFileOpen(); }},
        {DOC, "OnFileSave", "File", "&Save", "Ctrl+S", [](F& f) { f.document.OnFileSave(); }},
        {DOC, "OnFileSaveAs", "File", "Save &As...", "", [](F& f) { f.document.OnFileSaveAs(); }},
        {DOC, "OnSaveplus", "File", "In&cremental save", "Ctrl+Shift+S", [](F& f) { f.document.OnSaveplus(); }},
        {DOC, "OnFileImport", "File", "&Import...", "", [](F& f) { f.document.OnFileImport(); }, nullptr,
         [](F&) { return CanImportMeshes(); }},
        {DOC, "OnFileExport", "File", "&Export...", "", [](F& f) { f.document.OnFileExport(); }},
        {FRAME, "OnFileNewmovie", "File", "New Movie", "", [](F& f) { f.OnFileNewmovie(); }},
        {FRAME, "OnFileLoadmovie", "File", "Load Movie", "", [](F& f) { f.OnFileLoadmovie(); }},
        {FRAME, "OnFileLoadmovieforselection", "File", "Load Movie For Selection", "",
         [](F& f) { f.OnFileLoadmovieforselection(); }},
        {FRAME, "OnFileMergemovie", "File", "Merge Movie", "", [](F& f) { f.OnFileMergemovie(); }},
        {FRAME, "OnFileSavemovie", "File", "Save Movie", "", [](F& f) { f.SaveMovie(); }},
        {FRAME, "OnFileSavemovieas", "File", "Save Movie As", "", [](F& f) { f.SaveMovieAs(); }},
        {FRAME, "OnFileMergeDecals", "File", "Load decals from project...", "",
         [](F& f) { f.document.OnFileMergeDecals(); }},
    };
}

std::vector<Command> EditCommands() {
    return {
        {FRAME, "OnEditUndo", "Edit", "&Undo", "Ctrl+Z Alt+Backspace", [](F& f) { f.OnEditUndo(); }},
        {FRAME, "OnEditRedo", "Edit", "&Redo", "Ctrl+Y", [](F& f) { f.OnEditRedo(); }},
        {FRAME, "OnClone", "Edit", "C&lone", "Space", [](F& f) { f.interface.Clone(); }},
        {FRAME, "OnDelete", "Edit", "&Delete", "Backspace", [](F& f) { f.interface.DeleteSelection(); }},
        {FRAME, "OnEditCopypath", "Edit", "Copy Path", "", [](F& f) { f.OnEditCopypath(); }},
        {FRAME, "OnEditPastepath", "Edit", "Paste Path", "", [](F& f) { f.OnEditPastepath(); }},
        {FRAME, "OnEditLink", "Edit", "Link Chain", "Shift+Alt+E", [](F& f) { f.Link(false, false); }},
        {FRAME, "OnEditLinktofirst", "Edit", "Link First To All", "Alt+E", [](F& f) { f.Link(true, false); }},
        {FRAME, "OnLinktofirst2", "Edit", "Link All To First", "Ctrl+Shift+Alt+E", [](F& f) { f.Link(true, true); }},
        {FRAME, "OnEditChangelink", "Edit", "Change Link", "Ctrl+Alt+E", [](F& f) { f.OnEditChangelink(); }},
        {FRAME, "OnEditUnlink", "Edit", "Unlink", "Ctrl+E", [](F& f) { f.OnEditUnlink(); }},
    };
}

std::vector<Command> BrushCommands() {
    return {
        Template<BT_RECTANGLE>("OnBrushRectangle", "&Rectangle"),
        Template<BT_BOX>("OnBrushBox", "&Box"),
        Template<BT_PYRAMID>("OnBrushPyramid", "&Pyramid"),
        Template<BT_PRISM>("OnBrushPrism", "Pr&ism"),
        Template<BT_PATCH>("OnBrushPatch", "P&atch"),
        Template<BT_CYLINDER>("OnBrushCylinder", "C&ylinder"),
        Template<BT_CONE>("OnBrushCone", "&Cone"),
        Template<BT_SFT_BLOCK>("OnBrushSftblock", "S&FT-Block"),
        Template<BT_Q_BLOCK>("OnBrushQblock", "&Q-Block"),
        Template<BT_ELASTIC_BOX>("OnBrushElasticbox", "Ela&stic Box"),
        Template<BT_EXTRUDABLE>("OnBrushExtrudable", "&Extrudable"),
        Template<BT_PORTAL>("OnBrushPortal", "P&ortal"),
        Template<BT_CUSTOM>("OnBrushCustom", "Custom..."),
        Template<BT_OCCLUDER>("OnBrushOccluder", ""),
        {FRAME, "OnBrushColor", "Brush", "Co&lor...", "", [](F& f) { f.OnBrushColor(); }},
        {FRAME, "OnBrushSegments", "Brush", "Se&gments...", "", [](F& f) { AskSegments(f.interface); }},
        {FRAME, "OnRotationAngle", "Brush", "", "", [](F& f) { AskRotationAngle(f.interface); }},
        {FRAME, "OnBrushCreatepivot", "Brush", "Create pivo&t", "",
         [](F& f) { f.interface.CreatePivotForSelection(); }},
        {FRAME, "OnBrushProperties", "Brush", "", "B", [](F& f) { EditBrushProperties(f.interface); }},
        {FRAME, "OnCollapse", "Brush", "", "Alt+C", [](F& f) { f.OnCollapse(); }},
    };
}

std::vector<Command> ToolCommands() {
    return {
        {FRAME, "OnToolsTerraingenerator", "Tools", "Terrain &Generator...", "Ctrl+T",
         [](F& f) { f.OnToolsTerraingenerator(); }},
        {FRAME, "OnToolsSmoothterrainedges", "Tools", "Sm&ooth Terrain Edges", "Alt+S",
         [](F& f) {
             World& world = *f.interface.world;
             ChangeRecord record(world, "Smooth terrain edges.", ChangeScope::Added);
             AddTerrains(record, world);
             world.SmoothTerrainEdgeNormals();
             f.interface.RedrawAllViews();
         }},
        {FRAME, "OnToolsTerrainmodifier", "Tools", "Terrain Modifier...", "Shift+T",
         [](F& f) { f.OnToolsTerrainmodifier(); }},
        {FRAME, "OnRotate", "Tools", "&Rotation mode", "R", [](F& f) { f.OnRotate(); }},
        {FRAME, "OnSheering", "Tools", "&Sheer mode", "S", [](F& f) { f.interface.ToggleShearing(); }},
        {FRAME, "OnVertexMode", "Tools", "&Vertex mode", "V", [](F& f) { f.OnVertexMode(); }},
        {FRAME, "OnFlipNormals", "Tools", "&Flip normals", "Alt+N", [](F& f) { f.OnFlipNormals(); }},
        {FRAME, "OnPickTexture", "Tools", "&Texture picker", "I", [](F& f) { f.OnPickTexture(); }},
        {FRAME, "OnTexturelock", "Tools", "T&exture Lock", "L",
         [](F& f) { f.interface.texture_lock = !f.interface.texture_lock; }, IsOn<&CInterface::texture_lock>},
        {FRAME, "OnDecals", "Tools", "&Decals", "D", [](F& f) { f.OnDecals(); },
         [](F& f) { return f.interface.editor_state == ES_DECAL; }},
        {FRAME, "OnPrefab", "Tools", "&Prefabs", "", ShowTab<TAB_PREFAB>},
        {FRAME, "OnClipbox", "Tools", "&Clip state", "", [](F& f) { f.OnClipbox(); }, IsOn<&CInterface::clip_active>,
         [](F& f) { return !f.interface.movie_editing; }},
        {FRAME, "OnCordonstate", "Tools", "C&ordon state", "", [](F& f) { f.OnCordonstate(); },
         IsOn<&CInterface::cordon_active>, [](F& f) { return !f.interface.movie_editing; }},
        {FRAME, "OnCordonbounds", "Tools", "&Edit bounds", "K", [](F& f) { f.OnCordonbounds(); },
         IsOn<&CInterface::edit_cordon_bounds>, [](F& f) { return f.CordonboundsEnabled(); }},
        {FRAME, "OnEditMovie", "Tools", "Movie Edit", "Ctrl+M", [](F& f) { f.OnEditMovie(); },
         IsOn<&CInterface::movie_editing>},
        {FRAME, "OnToolsTrackedit", "Tools", "Track Edit", "Alt+T", [](F& f) { f.OnToolsTrackedit(); }},
        {FRAME, "OnCompile", "Tools", "&Compile world", "F7", [](F& f) { f.OnCompile(); }},
        {FRAME, "OnCompileEntity", "Tools", "Compile entities", "Ctrl+F7", [](F& f) { f.CompileEntities(false); }},
        {FRAME, "OnCompileEntityVis", "Tools", "Compile entities + visibility", "Ctrl+Shift+F7",
         [](F& f) { f.CompileEntities(true); }},
        {FRAME, "OnToolsConvertoldscripts", "Tools", "Convert old scripts", "",
         [](F& f) { f.OnToolsConvertoldscripts(); }},
        {FRAME, "OnToolsReindexallobjectids", "Tools", "Reindex all object IDs", "",
         [](F& f) { f.OnToolsReindexallobjectids(); }},
        {FRAME, "OnRandomizeBots", "Tools", "Randomize bot models", "Alt+R", [](F& f) { f.OnRandomizeBots(); }},
        {FRAME, "OnGamemode", "Tools", "R&un game", "F10", [](F& f) { f.OnGamemode(); }},
        {FRAME, "OnSelwrongobj", "Tools", "Select wrong objects", "", [](F& f) { f.OnSelwrongobj(); }},
        {FRAME, "OnToolsProblemsolver", "Tools", "Show compilation errors", "Alt+P",
         [](F& f) { GetDesktop().ShowText(f.interface.problem_solver.TreeText(), "Compilation errors"); }},
        {FRAME, "OnToolsValidate", "Tools", "Validate", "", [](F& f) { f.OnToolsValidate(); }},
        {FRAME, "OnLogAll", "Tools", "Log all entities params", "", [](F& f) { f.interface.LogEntities(false); }},
        {FRAME, "OnLogScripts", "Tools", "Log all entities scripts", "", [](F& f) { f.interface.LogEntities(true); }},
        {FRAME, "OnLogTraceingId", "Tools", "", "Alt+F11",
         [](F& f) {
             if (const std::optional<uint32_t> id = AskObjectID())
                 f.interface.traceing_id = *id;
         }},
        {FRAME, "OnRotateCcw", "Tools", "", "[", [](F& f) { f.interface.RotateBrush(QUARTER_TURN); }},
        {FRAME, "OnRotateCw", "Tools", "", "]", [](F& f) { f.interface.RotateBrush(-QUARTER_TURN); }},
        {FRAME, "OnFlipHorizontally", "Tools", "", "Alt+H", [](F& f) { f.interface.FlipHorizontally(); }},
        {FRAME, "OnFlipVertically", "Tools", "", "Alt+V", [](F& f) { f.interface.FlipVertically(); }},
        {FRAME, "OnAlignvertices", "Tools", "", "Ctrl+A", [](F& f) { f.OnAlignvertices(); }},
    };
}

std::vector<Command> SelectionCommands() {
    return {
        {FRAME, "OnSelectionRelevant", "Selection", "Select relevant", "Shift+R",
         [](F& f) { f.interface.SelectRelevant(false); }},
        {FRAME, "OnSelectionRelevant2", "Selection", "Select relevant (ignore triggers)", "Ctrl+R",
         [](F& f) { f.interface.SelectRelevant(true); }},
        {FRAME, "OnSelectionMultiplepointselection", "Selection", "Multiple point selection", "",
         [](F& f) { f.StoreFlag("MultiEntSel", f.interface.settings.multiple_entity_selection); },
         IsSet<&EditorSettings::multiple_entity_selection>},
        {FRAME, "OnSelectall", "Selection", "Select &all", "Ctrl+1", [](F& f) { f.interface.SelectAll(); }},
        {FRAME, "OnInvertselection", "Selection", "In&vert selection", "Ctrl+2",
         [](F& f) { f.interface.InvertSelection(); }},
        {FRAME, "OnEscape", "Selection", "&Clear selection", "Esc", [](F& f) { f.interface.Cancel(); }},
        {FRAME, "OnSelectionSpecial", "Selection", "Advanced brush selection", "Ctrl+3",
         [](F& f) { AskSpecialSelection(f.interface); }},
        {FRAME, "OnSelectionEntSpecial", "Selection", "Advanced entity selection", "Ctrl+4",
         [](F& f) { AskSpecialEntSelection(f.interface); }},
        {FRAME, "OnHideselected", "Selection", "&Hide selected", "Shift+1", [](F& f) { f.interface.HideSelected(); }},
        {FRAME, "OnHideunselected", "Selection", "Hi&de unselected", "Shift+2",
         [](F& f) { f.interface.HideUnselected(); }},
        {FRAME, "OnUnhideall", "Selection", "&Unhide all", "Shift+3", [](F& f) { f.interface.UnhideAll(); }},
        {FRAME, "OnGroup", "Selection", "Create &group", "G", [](F& f) { f.interface.CreateGroup(); }},
        {FRAME, "OnUngroup", "Selection", "Des&troy group", "Ctrl+G Alt+G", [](F& f) { f.interface.DestroyGroup(); }},
        {FRAME, "OnIgnoregroups", "Selection", "&Ignore groups", "Shift+G",
         [](F& f) { f.interface.ignore_groups = !f.interface.ignore_groups; }, IsOn<&CInterface::ignore_groups>},
        {FRAME, "OnCenterToSelection", "Selection", "Center to selection", "Shift+Tab",
         [](F& f) { f.interface.CenterToSelection(); }},
        {FRAME, "OnMultiselect", "Selection", "", "",
         [](F& f) { f.interface.multi_selection = !f.interface.multi_selection; }, IsOn<&CInterface::multi_selection>},
        {FRAME, "OnSelectionlock", "Selection", "", "CapsLock", [](F& f) { f.interface.SelectionLock(); }},
        {FRAME, "OnExtendedhide", "Selection", "", "Alt+F", [](F& f) { f.OnExtendedhide(); }},
        {FRAME, "OnSelectId", "Selection", "", "F11", [](F& f) { f.OnSelectId(); }},
    };
}

std::vector<Command> ShowCommands() {
    using D = DisplayFilters;
    return {
        Filter<&D::show_brushes>("OnSelectionShowBrushes", "Brushes", "Alt+1"),
        Filter<&D::show_entities>("OnSelectionShowEntities", "Entities", "Alt+2"),
        {FRAME, "OnSelectionShowPortals", "Show", "Portals", "Alt+3", [](F& f) { f.OnSelectionShowPortals(); },
         [](F& f) { return f.interface.filters.show_portals; }},
        Filter<&D::show_occluders>("OnSelectionShowOccluders", "Occluders", "Alt+4"),
        Filter<&D::show_nonbox_entities>("OnSelectionShowNonboxentities", "NonBox Entities", "Alt+5"),
        {FRAME, "OnShowlinks", "Show", "Links", "Alt+7",
         [](F& f) {
             f.interface.settings.show_links = !f.interface.settings.show_links;
             f.interface.RedrawAllViews();
         },
         IsSet<&EditorSettings::show_links>},
        {FRAME, "OnShowGroundgrid", "Show", "Ground grid", "",
         [](F& f) {
             f.StoreFlag("GroundGrid", f.interface.settings.ground_grid);
             f.interface.RedrawView(VIEW_PERSPECTIVE);
         },
         IsSet<&EditorSettings::ground_grid>},
        Filter<&D::show_particles>("OnSelectionShowParticles", "Particles", "Alt+8"),
        Filter<&D::show_eyes>("OnSelectionShowEyes", "Eyes", "Alt+9"),
        Filter<&D::show_lights>("OnSelectionShowLights", "Lights && Coronas", "Alt+0"),
    };
}

std::vector<Command> ViewCommands() {
    return {
        {FRAME, "OnConsole", "View", "Toggle &console", "`", [](F& f) { f.interface.Console(); }},
        {FRAME, "OnViewShowlevelsumary", "View", "Show level summary", "?", [](F& f) { f.OnViewShowlevelsumary(); }},
        {FRAME, "OnViewNamedobjlist", "View", "Show named objects list", "> Ctrl+L",
         [](F& f) { f.OnViewNamedobjlist(); }},
        {FRAME, "OnTextureWindow", "View", "Te&xture window", "T", ShowTab<TAB_TEXTURE>},
        {FRAME, "OnEntityWindow", "View", "&Entity window", "E", ShowTab<TAB_ENTITY>},
        {FRAME, "OnPrefabWindow", "View", "&Prefab window", "P", ShowTab<TAB_PREFAB>},
        {FRAME, "OnPreferencesWindow", "View", "P&references window", "F8", ShowTab<TAB_PREFERENCES>},
        {FRAME, "OnViewAiwindow", "View", "&AIWindow", "F9", ShowTab<TAB_AI>},
        {FRAME, "OnViewUndo", "View", "UndoBuffer", "U", ShowTab<TAB_UNDO>},
        {FRAME, "OnAutocenter", "View", "", "W", [](F& f) { f.OnAutocenter(); }, IsOn<&CInterface::full_view>},
        {FRAME, "OnCenterworld", "View", "", "O", [](F& f) { f.interface.CenterWorld(false); }},
        {FRAME, "OnCenterworldall", "View", "", "Alt+O", [](F& f) { f.interface.CenterWorld(true); }},
        {FRAME, "OnView1", "View", "", "F1", OneView<VIEW_PERSPECTIVE>},
        {FRAME, "OnView2", "View", "", "F2", OneView<VIEW_TOP>},
        {FRAME, "OnView3", "View", "", "F3", OneView<VIEW_LEFT>},
        {FRAME, "OnView4", "View", "", "F4", OneView<VIEW_FRONT>},
        {FRAME, "OnRendermodes", "View", "", "Ctrl+W", [](F& f) { f.interface.ChangeRenderMode(); }},
        {FRAME, "OnCurveLower", "View", "", "F5", [](F& f) { f.ChangeCurveDetail(false); }},
        {FRAME, "OnCurveHigher", "View", "", "F6", [](F& f) { f.ChangeCurveDetail(true); }},
        {FRAME, "OnShowTextureBorder", "View", "", "Ctrl+Q",
         [](F& f) {
             f.interface.show_texture_border = !f.interface.show_texture_border;
             f.interface.RedrawView(VIEW_PERSPECTIVE);
         },
         IsOn<&CInterface::show_texture_border>},
        {PERSPECTIVE, "OnCameraRotation", "View", "", "Q", [](F& f) { f.perspective.OnCameraRotation(); },
         IsOn<&CInterface::special_camera_rotation>},
        {PERSPECTIVE, "OnRotateLeft", "View", "", "Left", [](F& f) { f.perspective.OnRotateLeft(); }},
        {PERSPECTIVE, "OnRotateRight", "View", "", "Right", [](F& f) { f.perspective.OnRotateRight(); }},
        {PERSPECTIVE, "OnRotateUp", "View", "", "Up", [](F& f) { f.perspective.OnRotateUp(); }},
        {PERSPECTIVE, "OnRotateDown", "View", "", "Down", [](F& f) { f.perspective.OnRotateDown(); }},
    };
}

std::vector<Command> MovieCommands() {
    return {
        {FRAME, "OnMoviePlay", "Movie", "&Play", "M ;", [](F& f) { f.OnMoviePlay(); }, IsOn<&CInterface::playing>,
         nullptr, [](F& f) { return f.interface.playing ? "Pause" : "Play"; }},
        {FRAME, "OnMovieStop", "Movie", "&Stop", "/ Alt+Space", [](F& f) { f.OnMovieStop(); }},
        {FRAME, "OnMovieTrackfw", "Movie", "Track Fw", ".", [](F& f) { f.StepMovie(MOVIE_STEP); }},
        {FRAME, "OnMovieTrackbk", "Movie", "Track Bk", ",", [](F& f) { f.StepMovie(-MOVIE_STEP); }},
        {FRAME, "OnMovieFastfw", "Movie", "Fast Fw", "Alt+.", [](F& f) { f.StepMovie(MOVIE_JUMP); }},
        {FRAME, "OnMovieFastbk", "Movie", "Fast Bk", "Alt+,", [](F& f) { f.StepMovie(-MOVIE_JUMP); }},
        {FRAME, "OnMovieAligntimeofpoints", "Movie", "Align Time Of Points", "",
         [](F& f) { f.OnMovieAligntimeofpoints(); }},
        {FRAME, "OnMovieComputetime", "Movie", "Compute Time", "", [](F& f) { f.OnMovieComputetime(); }},
    };
}

std::vector<Command> TextureCommands() {
    return {
        {FRAME, "OnFit", "Texture", "", "Ins", ON_TEXTURE(FitOnce())},
        {FRAME, "OnUfitadd", "Texture", "", "Home", ON_TEXTURE(ChangeFit(1, 0))},
        {FRAME, "OnUfitsub", "Texture", "", "End", ON_TEXTURE(ChangeFit(-1, 0))},
        {FRAME, "OnVfitadd", "Texture", "", "PgDn", ON_TEXTURE(ChangeFit(0, 1))},
        {FRAME, "OnVfitsub", "Texture", "", "Del Num.", ON_TEXTURE(ChangeFit(0, -1))},
        {FRAME, "OnCyclesurfaces", "Texture", "", "PgUp",
         [](F& f) {
             f.interface.world->CycleSurfaces();
             f.interface.RedrawView(VIEW_PERSPECTIVE);
         }},
        {FRAME, "OnUshiftadd", "Texture", "", "Num6 Shift+Right", [](F& f) { f.ShiftTexture(1, 0); }},
        {FRAME, "OnUshiftsub", "Texture", "", "Num4 Shift+Left", [](F& f) { f.ShiftTexture(-1, 0); }},
        {FRAME, "OnVshiftadd", "Texture", "", "Num8 Shift+Up", [](F& f) { f.ShiftTexture(0, 1); }},
        {FRAME, "OnVshiftsub", "Texture", "", "Num2 Shift+Down", [](F& f) { f.ShiftTexture(0, -1); }},
        {FRAME, "OnUscaleadd", "Texture", "", "Num9 Ctrl+Right", ON_TEXTURE(ChangeScale(TextureDlg::SCALE_STEP, 0))},
        {FRAME, "OnUscalesub", "Texture", "", "Num7 Ctrl+Left", ON_TEXTURE(ChangeScale(-TextureDlg::SCALE_STEP, 0))},
        {FRAME, "OnVscaleadd", "Texture", "", "Num3 Ctrl+Up", ON_TEXTURE(ChangeScale(0, TextureDlg::SCALE_STEP))},
        {FRAME, "OnVscalesub", "Texture", "", "Num1 Ctrl+Down", ON_TEXTURE(ChangeScale(0, -TextureDlg::SCALE_STEP))},
        {FRAME, "OnRotAdd", "Texture", "", "Num+", [](F& f) { f.RotateTexture(1); }},
        {FRAME, "OnRotSub", "Texture", "", "Num-", [](F& f) { f.RotateTexture(-1); }},
        {FRAME, "OnUFlip", "Texture", "", "Num/", ON_TEXTURE(FlipU())},
        {FRAME, "OnVFlip", "Texture", "", "Num*", ON_TEXTURE(FlipV())},
        {FRAME, "OnShowMatScript", "Texture", "", "Num5",
         [](F& f) {
             if (GetDesktop().IsKeyDown(HeldKey::Num0))
                 f.pages.texture.ShowCurMaterialScript();
         }},
        {FRAME, "OnMask", "Texture", "", "Ctrl+Num5", ON_TEXTURE(ToggleMask()), IsOn<&CInterface::mask_enabled>},
    };
}

std::vector<Command> SettingCommands() {
    return {
        {FRAME, "OnAutoloadproject", "Settings", "Reload last project at startup", "",
         [](F& f) { f.StoreFlag("AutoLoadProject", f.interface.settings.reload_last_project); },
         IsSet<&EditorSettings::reload_last_project>},
        {FRAME, "OnCreateProjBkp", "Settings", "Create backup file when saving project", "",
         [](F& f) { f.StoreFlag("ProjectBackup", f.interface.settings.create_prj_backup); },
         IsSet<&EditorSettings::create_prj_backup>},
        {FRAME, "OnBkpbeforecompile", "Settings", "Backup project before compile", "",
         [](F& f) { f.interface.settings.bkp_before_compile = !f.interface.settings.bkp_before_compile; },
         IsSet<&EditorSettings::bkp_before_compile>},
        {FRAME, "OnSet3dviewbgcolor", "Settings", "Set 3D view background color", "",
         [](F& f) { f.AskBackground(f.interface.settings.bg_color_3D_view); }},
        {FRAME, "OnSetWireviewbgcolor", "Settings", "Set wired view background color", "",
         [](F& f) {
             f.AskBackground(f.interface.settings.bg_color_vire_view);
             f.interface.RedrawAllViews();
         }},
        {FRAME, "OnShowSelwire", "Settings", "Show selection in wireframe", "Alt+W", [](F& f) { f.OnShowSelwire(); },
         IsSet<&EditorSettings::show_sel_wire>},
    };
}

#undef ON_TEXTURE

std::map<std::string, const Command*> KeyMap() {
    std::map<std::string, const Command*> map;
    for (const Command& command : CommandTable()) {
        std::istringstream keys(command.keys);
        for (std::string key; keys >> key;)
            map.emplace(KeysText(*ParseKeys(key)), &command);
    }
    return map;
}

// What shows or moves the view, or counts for the drag itself.
bool WorksInDrag(const Command& command) {
    constexpr std::string_view NAMES[] = {
        "OnClone",       "OnEscape",         "OnTexturelock",    "OnRendermodes", "OnShowTextureBorder",
        "OnCenterworld", "OnCenterworldall", "OnCameraRotation", "OnRotateLeft",  "OnRotateRight",
        "OnRotateUp",    "OnRotateDown",     "OnShowSelwire"};
    return std::string_view(command.menu) == "Show" ||
           std::find(std::begin(NAMES), std::end(NAMES), command.name) != std::end(NAMES);
}

} // namespace

const std::vector<Command>& CommandTable() {
    static const std::vector<Command> table = [] {
        std::vector<Command> all;
        for (const auto& part : {FileCommands(), EditCommands(), BrushCommands(), ToolCommands(), SelectionCommands(),
                                 ShowCommands(), ViewCommands(), MovieCommands(), TextureCommands(), SettingCommands()})
            all.insert(all.end(), part.begin(), part.end());
        for (Command& command : all)
            command.works_in_drag = WorksInDrag(command);
        return all;
    }();
    return table;
}

const Command* FindCommand(std::string_view name) {
    const size_t colons = name.find("::");
    const std::string_view owner = colons == std::string_view::npos ? std::string_view() : name.substr(0, colons);
    const std::string_view handler = colons == std::string_view::npos ? name : name.substr(colons + 2);
    const Command* found = nullptr;
    for (const Command& command : CommandTable())
        if (handler == command.name && (owner.empty() || owner == command.owner)) {
            if (found)
                return nullptr;
            found = &command;
        }
    return found;
}

const Command* FindCommandOfKey(std::string_view keys) {
    static const std::map<std::string, const Command*> map = KeyMap();
    std::optional<KeyCombination> combination = ParseKeys(keys);
    if (!combination)
        return nullptr;
    combination->num0 = false; // the command itself asks whether it is held
    const auto found = map.find(KeysText(*combination));
    return found == map.end() ? nullptr : found->second;
}

bool IsReservedKey(std::string_view keys) {
    const std::optional<KeyCombination> combination = ParseKeys(keys);
    return combination && (KeysText(*combination) == "A" || KeysText(*combination) == "Z");
}
