// The settings of the editor: read when the interface is made, written back when it goes, one value a field.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

struct EditorSettings {
    // Compile options
    int lighting_method = 1; // 0 no light, 1 quick illumination, 2 ray tracing
    int lightmap_detail = 0; // 0 low, 1 medium, 2 high
    int voxel_size = 128;    // side of the item buffer, pixels
    bool clip_box_compilation = false;
    bool smooth_shadows = false;
    bool create_render_groups = false;
    bool subdivide_world = false;
    bool save_finalmap = false; // "Calculate Physics"
    bool bkp_before_compile = true;

    bool use_metric_units = false;
    bool multiselection_as_default = false;
    int undo_states = 20;
    bool full_undo = false;     // an undo step also for what has none of its own
    int recovery_interval = 30; // seconds of changed work between recovery files; 0: none
    int bg_color_3D_view = 0, bg_color_vire_view = 0;
    bool show_sel_wire = false;
    bool outline_selection = false; // the selection as an outline and a light tint, else solid
    bool shade_bare = false;        // faces without a material are shaded, with edges
    bool ground_grid = false;       // in the perspective view
    bool thin_grid = false;         // of the flat views, where its lines come too close
    bool camera_look = false;       // the flat views show where the camera looks
    bool smooth_far = false;        // far textures by their smaller levels
    bool open_light = false;        // an opened project takes its light from the compiled world
    int fly_speed = 512;            // of the camera by keys, world units a second
    bool show_links = false;
    int rotation_angle = 90; // degrees
    std::string update_dir;
    std::string game_command = "Vanmur.exe"; // the game's program

    // Of the application
    bool reload_last_project = false;
    bool create_prj_backup = false;
    bool multiple_entity_selection = false;

    bool operator==(const EditorSettings&) const = default;
};

using SettingField = std::variant<bool EditorSettings::*, int EditorSettings::*, std::string EditorSettings::*>;

struct SettingEntry {
    const char* name; // the value's name in the store
    SettingField field;
    int least = 0, most = 0; // range of an integer that is checked; both 0: any
};

// All values, one entry each.
const std::vector<SettingEntry>& SettingTable();

EditorSettings ReadSettings();
// What a script draws and undoes is as it always was; who works in the window has more, until it is turned off. Sets
// what was never stored.
void SetWindowDefaults(EditorSettings& settings);
// Writes the values that differ from `stored`, so that a run that changed nothing leaves the file alone.
bool WriteSettings(const EditorSettings& settings, const EditorSettings& stored);
// Sets one value from "NAME=VALUE", names in any case. False with a sentence.
bool ApplySetting(EditorSettings& settings, std::string_view assignment, std::string& error);
