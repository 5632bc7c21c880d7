#include "pages/PreferencesDlg.h"

#include <algorithm>

#include "definitions/DefFile.h"
#include "editor/Interface.h"
#include "foundation/Strings.h"

namespace {

constexpr const char* GAMES_FILE = "Marrowstead\\mpgames.def";
constexpr size_t MOST_GAMES = 64; // taken from the file

std::string ValueOf(const EditorSettings& settings, const SettingField& field) {
    if (const auto* text = std::get_if<std::string EditorSettings::*>(&field))
        return settings.*(*text);
    if (const auto* flag = std::get_if<bool EditorSettings::*>(&field))
        return settings.*(*flag) ? "1" : "0";
    return Format("%d", settings.*std::get<int EditorSettings::*>(field));
}

auto FindGame(std::vector<std::string>& games, std::string_view game) {
    return std::find_if(games.begin(), games.end(), [game](const std::string& g) { return EqualNoCase(g, game); });
}

} // namespace

const std::vector<Preference>& PreferencesDlg::Table() {
    static const std::vector<Preference> table = {
        {"LightingMethod",
         "Lighting Method",
         "How a compile lights the level: not at all, without shadows, or with them",
         {"No Light", "Quick Illumination", "Raytracing"}},
        {"LightmapDetail", "Lightmap Detail", "How fine the light on surfaces is", {"Low", "Medium", "High"}},
        {"VoxelSize",
         "Buffer Detail:",
         "Side in pixels of the pictures by which a compile finds what a cell sees; more finds smaller gaps",
         {}},
        {"LightmapRefinement",
         "Clip Box Compilation",
         "A compile takes only what touches the clip box, and looks for no problems",
         {}},
        {"SmoothShadows", "Smooth Shadows", "Four samples for each texel of light instead of one", {}},
        {"SubdivideWorld",
         "World Subdivision",
         "A compile makes cells and portals; without it the level is one cell",
         {}},
        {"SaveFinalMap", "Calculate Physics", "Collision shapes also for brushes that do not move", {}},
        {"RenderGroups",
         "Render Groups",
         "Joins small brushes that stand together into groups, which are drawn faster",
         {}},
        {"BkpBeforeCompile",
         "Backup project before compile",
         "Keeps the level as __autosave__.msp beside the project before each compile",
         {}},
        {"UndoStates", "Undo States:", "How many steps can be undone", {}},
        {"FullUndo",
         "Undo Every Change",
         "Also textures, properties, links and all else can be undone, not moves and selections alone",
         {}},
        {"RecoveryInterval",
         "Seconds Between Recovery Files:",
         "Unsaved work is kept against a crash this long after a change; 0: not at all",
         {}},
        {"UseMetricUnits", "Metric Units", "The status bar shows metres: 64 units are one", {}},
        {"MultiSelectionAsDefault",
         "Multiple Selection As Default",
         "Each click adds to the selection, from the start of the program on",
         {}},
        {"MultiEntSel", "Multiple point selection", "A click in a flat view takes every entity under it", {}},
        {"RotationAngle", "Rotation Angle:", "Degrees of one notch of the wheel with Ctrl", {}},
        {"WiredSelection", "Show selection in wireframe", "Draws the corners and edges of selected brushes", {}},
        {"SelectionOutline",
         "Outline the selection",
         "The selection keeps its textures, under an outline and a light tint; otherwise it is drawn in solid red",
         {}},
        {"ShadeBareFaces",
         "Shade faces without material",
         "Faces that have no material show their shape and their edges, in the lit picture too",
         {}},
        {"GroundGrid", "Ground grid", "Draws a grid on the ground and the axes in the perspective view", {}},
        {"ThinGrid", "Thin the grid", "Draws every eighth line of the grid where all of them would be too close", {}},
        {"CameraLook", "Show where the camera looks", "Draws the direction of the camera in the flat views", {}},
        {"SmoothFar", "Smooth far textures", "Far textures do not flicker while the camera moves", {}},
        {"OpenLight",
         "Light of the last compile",
         "An opened project shows the light of its compiled world where that is not older",
         {}},
        {"FlySpeed",
         "Flying Speed:",
         "Units a second of the camera, while the right button is held and keys fly it",
         {}},
        {"ShowLinks", "Show Links", "Draws lines between linked objects", {}},
        {"AutoLoadProject", "Reload last project at startup", "The start opens the project that was open last", {}},
        {"ProjectBackup",
         "Create backup file when saving project",
         "Keeps the project as it was before a save, with the ending .bkp",
         {}},
        {"BgColor_3DView", "3D view background color", "Behind everything in the perspective view", {}},
        {"BgColor_WireView", "Wired view background color", "Behind everything in the top, front and left views", {}},
        {"GameCommand", "Game Program:", "What \"Run game\" starts, with the compiled level behind it", {}},
        {"UpdateDir", "Update Directory:", "Where \"Engine Update\" of the tracklist window writes its file", {}},
    };
    return table;
}

PreferencesDlg::PreferencesDlg(CInterface& controller) : editor(controller) {
    ReadGames();
    InitData();
    editor.AddListener(*this);
}

PreferencesDlg::~PreferencesDlg() { editor.RemoveListener(*this); }

void PreferencesDlg::ReadGames() {
    DefFileObject file(GAMES_FILE);
    if (!file.OpenSection("Multiplayer Games"))
        return;
    while (file.OpenNextCommand() && defined_games.size() < MOST_GAMES)
        defined_games.push_back(CutText(file.GetCommandName(), NAME_FIELD - 1));
}

void PreferencesDlg::InitData() {
    values.clear();
    for (const Preference& row : Table())
        for (const SettingEntry& entry : SettingTable())
            if (EqualNoCase(entry.name, row.name))
                values.push_back(ValueOf(editor.settings, entry.field));
    available_games = defined_games;
    if (!editor.world)
        return;
    const World& world = *editor.world;
    for (const std::string& game : world.mp_games)
        if (FindGame(available_games, game) == available_games.end())
            available_games.push_back(game);
    map_file = world.map_file;
    map_name = world.map_name;
    ambient_color = world.ambient_color.dw_color & 0x00FFFFFF;
}

bool PreferencesDlg::Set(std::string_view name, std::string_view value, std::string& error) {
    if (!ApplySetting(editor.settings, std::string(name).append("=").append(value), error))
        return false;
    if (!editor.StoreSettings()) // at once: a crash shall not lose it
        GetDesktop().Notice("The preferences cannot be stored with the settings.");
    if (EqualNoCase(name, "WiredSelection")) {
        if (editor.settings.show_sel_wire)
            editor.RebuildSelectionNet();
        else
            editor.world->DestroySOVertices();
    }
    editor.Tell(&EditorListener::SettingsChanged);
    editor.SetInfoText();
    editor.RedrawAllViews();
    return true;
}

void PreferencesDlg::OnUndoPurge() {
    editor.world->undo_buffer.Empty();
    editor.world->redo_buffer.Empty();
    editor.UndoListsChanged();
}

bool PreferencesDlg::OnChangeUndoStates(int states) {
    std::string error;
    return Set("UndoStates", Format("%d", states), error);
}

void PreferencesDlg::SetMapFile(std::string_view name) {
    editor.world->map_file = map_file = CutText(name, PATH_FIELD - 1);
    editor.MarkDirty();
}

void PreferencesDlg::SetMapName(std::string_view name) {
    editor.world->map_name = map_name = CutText(name, PATH_FIELD - 1);
    editor.MarkDirty();
}

bool PreferencesDlg::IsGameChosen(std::string_view game) const {
    return FindGame(editor.world->mp_games, game) != editor.world->mp_games.end();
}

bool PreferencesDlg::ChooseGame(std::string_view game, bool chosen) {
    std::vector<std::string>& games = editor.world->mp_games;
    const auto place = FindGame(games, game);
    if (chosen == (place != games.end()))
        return true;
    if (!chosen)
        games.erase(place);
    else if (games.size() < MAX_MP_GAMES)
        games.push_back(CutText(game, NAME_FIELD - 1));
    else {
        GetDesktop().MessageBox(Format("The level cannot hold more than %d game types", MAX_MP_GAMES), "Warning");
        return false;
    }
    editor.MarkDirty();
    return true;
}

void PreferencesDlg::SetAmbientColor(uint32_t rgb) {
    ambient_color = rgb & 0x00FFFFFF;
    editor.world->ambient_color = MakeColor(rgb >> 16 & 255, rgb >> 8 & 255, rgb & 255, 0);
    editor.MarkDirty();
}

void PreferencesDlg::OnAmbientColor() {
    if (const auto chosen = GetDesktop().AskColor(ambient_color))
        SetAmbientColor(*chosen);
}
