#include "editor/EditorSettings.h"

#include <charconv>
#include <climits>

#include "foundation/Settings.h"
#include "foundation/Strings.h"

const std::vector<SettingEntry>& SettingTable() {
    using S = EditorSettings;
    static const std::vector<SettingEntry> table = {
        {"LightingMethod", &S::lighting_method, 0, 2},
        {"LightmapDetail", &S::lightmap_detail, 0, 2},
        {"VoxelSize", &S::voxel_size, 8, 4096},
        {"LightmapRefinement", &S::clip_box_compilation},
        {"SmoothShadows", &S::smooth_shadows},
        {"RenderGroups", &S::create_render_groups},
        {"SubdivideWorld", &S::subdivide_world},
        {"SaveFinalMap", &S::save_finalmap},
        {"BkpBeforeCompile", &S::bkp_before_compile},
        {"UseMetricUnits", &S::use_metric_units},
        {"MultiSelectionAsDefault", &S::multiselection_as_default},
        {"UndoStates", &S::undo_states, 0, 100000},
        {"FullUndo", &S::full_undo},
        {"RecoveryInterval", &S::recovery_interval, 0, 86400},
        {"BgColor_3DView", &S::bg_color_3D_view},
        {"BgColor_WireView", &S::bg_color_vire_view},
        {"WiredSelection", &S::show_sel_wire},
        {"SelectionOutline", &S::outline_selection},
        {"ShadeBareFaces", &S::shade_bare},
        {"GroundGrid", &S::ground_grid},
        {"ThinGrid", &S::thin_grid},
        {"CameraLook", &S::camera_look},
        {"SmoothFar", &S::smooth_far},
        {"OpenLight", &S::open_light},
        {"FlySpeed", &S::fly_speed, 16, 16384},
        {"ShowLinks", &S::show_links},
        {"RotationAngle", &S::rotation_angle},
        {"UpdateDir", &S::update_dir},
        {"GameCommand", &S::game_command},
        {"AutoLoadProject", &S::reload_last_project},
        {"ProjectBackup", &S::create_prj_backup},
        {"MultiEntSel", &S::multiple_entity_selection},
    };
    return table;
}

static bool InRange(const SettingEntry& entry, int value) {
    return (entry.least == 0 && entry.most == 0) || (value >= entry.least && value <= entry.most);
}

EditorSettings ReadSettings() {
    EditorSettings settings;
    RegistryClass store;
    if (!store.OpenKeyDirectory(SETTINGS_KEY))
        return settings;
    for (const SettingEntry& entry : SettingTable()) {
        if (const auto* flag = std::get_if<bool EditorSettings::*>(&entry.field)) {
            settings.*(*flag) = store.GetFlag(entry.name, settings.*(*flag));
        } else if (const auto* number = std::get_if<int EditorSettings::*>(&entry.field)) {
            const int value = store.GetInteger(entry.name, settings.*(*number));
            if (InRange(entry, value))
                settings.*(*number) = value;
        } else {
            std::string& text = settings.*std::get<std::string EditorSettings::*>(entry.field);
            text = store.GetText(entry.name, text);
        }
    }
    return settings;
}

void SetWindowDefaults(EditorSettings& settings) {
    static constexpr const char* DEFAULTS[] = {"FullUndo=1",       "UndoStates=200", "SelectionOutline=1",
                                               "ShadeBareFaces=1", "GroundGrid=1",   "ThinGrid=1",
                                               "CameraLook=1",     "SmoothFar=1",    "OpenLight=1"};
    RegistryClass store;
    if (!store.OpenKeyDirectory(SETTINGS_KEY))
        return;
    for (const std::string assignment : DEFAULTS) {
        int value = 0;
        std::string error;
        if (store.GetKeyValue(assignment.substr(0, assignment.find('=')), &value, sizeof value) == 0)
            ApplySetting(settings, assignment, error);
    }
}

bool WriteSettings(const EditorSettings& settings, const EditorSettings& stored) {
    if (settings == stored)
        return true;
    RegistryClass store;
    bool written = store.OpenKeyDirectory(SETTINGS_KEY);
    for (const SettingEntry& entry : SettingTable())
        std::visit(
            [&](auto field) {
                const auto& value = settings.*field;
                if (value == stored.*field)
                    return;
                if constexpr (std::is_same_v<decltype(field), std::string EditorSettings::*>) {
                    written = store.SetKeyValue(entry.name, value.c_str()) && written;
                } else {
                    const int number = static_cast<int>(value);
                    written = store.SetKeyValue(entry.name, &number) && written;
                }
            },
            entry.field);
    return written;
}

bool ApplySetting(EditorSettings& settings, std::string_view assignment, std::string& error) {
    const size_t equals = assignment.find('=');
    if (equals == std::string_view::npos) {
        error = Format("\"%s\" is no setting: NAME=VALUE is needed", std::string(assignment).c_str());
        return false;
    }
    const std::string name(assignment.substr(0, equals)), value(assignment.substr(equals + 1));
    for (const SettingEntry& entry : SettingTable()) {
        if (!EqualNoCase(name, entry.name))
            continue;
        if (const auto* text = std::get_if<std::string EditorSettings::*>(&entry.field)) {
            settings.*(*text) = value;
            return true;
        }
        int number = 0;
        const auto [end, failure] = std::from_chars(value.data(), value.data() + value.size(), number);
        if (failure != std::errc{} || end != value.data() + value.size() || !InRange(entry, number)) {
            error = entry.most > 0
                        ? Format("\"%s\" is no value of %s: a whole number from %d to %d is needed", value.c_str(),
                                 entry.name, entry.least, entry.most)
                        : Format("\"%s\" is no value of %s: a whole number is needed", value.c_str(), entry.name);
            return false;
        }
        if (const auto* flag = std::get_if<bool EditorSettings::*>(&entry.field))
            settings.*(*flag) = number != 0;
        else
            settings.*std::get<int EditorSettings::*>(entry.field) = number;
        return true;
    }
    error = Format("there is no setting named \"%s\"", name.c_str());
    return false;
}
