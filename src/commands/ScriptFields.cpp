#include "commands/ScriptFields.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <sstream>
#include <vector>

#include "editor/Interface.h"
#include "foundation/Strings.h"

namespace {

// Stores a value; false when the field cannot have it.
using Setter = std::function<bool(CInterface&, const std::vector<float>&)>;

struct ScriptField {
    const char* name;
    size_t numbers; // that the value needs
    Setter set;
};

bool IsWhole(float v, float least, float most) { return v >= least && v <= most && std::trunc(v) == v; }

bool IsPowerOfTwo(int v) { return v > 0 && (v & (v - 1)) == 0; }

template <class Owner>
Setter Flag(Owner& (*owner)(CInterface&), bool Owner::*field) {
    return [owner, field](CInterface& i, const std::vector<float>& v) {
        owner(i).*field = v[0] != 0;
        return v[0] == 0 || v[0] == 1;
    };
}

template <class Owner, class Number>
Setter Whole(Owner& (*owner)(CInterface&), Number Owner::*field, int least, int most) {
    return [owner, field, least, most](CInterface& i, const std::vector<float>& v) {
        if (!IsWhole(v[0], static_cast<float>(least), static_cast<float>(most)))
            return false;
        owner(i).*field = static_cast<Number>(v[0]);
        return true;
    };
}

template <class Owner>
Setter Vector(Owner& (*owner)(CInterface&), D3DVECTOR Owner::*field) {
    return [owner, field](CInterface& i, const std::vector<float>& v) {
        owner(i).*field = {v[0], v[1], v[2]};
        return true;
    };
}

CInterface& Self(CInterface& i) { return i; }
EditorSettings& Settings(CInterface& i) { return i.settings; }
DisplayFilters& Filters(CInterface& i) { return i.filters; }
World& Level(CInterface& i) { return *i.world; }

#define FLAG(owner, Class, field)                                                                                      \
    { #field, 1, Flag < Class>(owner, &Class::field) }
#define WHOLE(owner, Class, field, least, most)                                                                        \
    { #field, 1, Whole(owner, &Class::field, least, most) }

const std::vector<ScriptField>& Fields() {
    using I = CInterface;
    using S = EditorSettings;
    using D = DisplayFilters;
    constexpr int MOST = 1 << 24; // the largest whole number that a float holds
    static const std::vector<ScriptField> fields = {
        FLAG(Self, I, texture_lock),
        FLAG(Self, I, multi_selection),
        FLAG(Self, I, ignore_groups),
        FLAG(Self, I, selection_locked),
        FLAG(Self, I, shearing),
        FLAG(Self, I, movie_editing),
        FLAG(Self, I, show_texture_border),
        FLAG(Self, I, mask_enabled),
        FLAG(Self, I, cordon_active),
        FLAG(Self, I, clip_active),
        FLAG(Self, I, edit_cordon_bounds),
        FLAG(Self, I, full_view),
        WHOLE(Self, I, rotation_grid_size, 1, 360),
        WHOLE(Self, I, active_brush_segments, 0, static_cast<int>(MAX_SEGMENTS)),
        WHOLE(Self, I, normal_segments, 0, static_cast<int>(MAX_SEGMENTS)),
        WHOLE(Self, I, curved_segments, 0, static_cast<int>(MAX_SEGMENTS)),
        WHOLE(Self, I, selected_entity, -1, MOST),
        FLAG(Settings, S, clip_box_compilation),
        FLAG(Settings, S, smooth_shadows),
        FLAG(Settings, S, create_render_groups),
        FLAG(Settings, S, subdivide_world),
        FLAG(Settings, S, save_finalmap),
        FLAG(Settings, S, bkp_before_compile),
        FLAG(Settings, S, use_metric_units),
        FLAG(Settings, S, multiselection_as_default),
        FLAG(Settings, S, full_undo),
        FLAG(Settings, S, show_sel_wire),
        FLAG(Settings, S, outline_selection),
        FLAG(Settings, S, shade_bare),
        FLAG(Settings, S, ground_grid),
        FLAG(Settings, S, thin_grid),
        FLAG(Settings, S, camera_look),
        FLAG(Settings, S, smooth_far),
        FLAG(Settings, S, open_light),
        FLAG(Settings, S, show_links),
        FLAG(Settings, S, create_prj_backup),
        FLAG(Settings, S, reload_last_project),
        FLAG(Settings, S, multiple_entity_selection),
        WHOLE(Settings, S, lighting_method, 0, 2),
        WHOLE(Settings, S, lightmap_detail, 0, 2),
        WHOLE(Settings, S, voxel_size, 8, 4096),
        WHOLE(Settings, S, undo_states, 0, 100000),
        WHOLE(Settings, S, fly_speed, 16, 16384),
        WHOLE(Settings, S, rotation_angle, 0, 359),
        WHOLE(Settings, S, bg_color_3D_view, 0, 0xFFFFFF),
        WHOLE(Settings, S, bg_color_vire_view, 0, 0xFFFFFF),
        FLAG(Filters, D, show_brushes),
        FLAG(Filters, D, show_occluders),
        FLAG(Filters, D, show_entities),
        FLAG(Filters, D, show_lights),
        FLAG(Filters, D, show_eyes),
        FLAG(Filters, D, show_particles),
        FLAG(Filters, D, show_nonbox_entities),
        WHOLE(Level, World, render_mode, 0, 2),
        {"show_portals", 1,
         [](I& i, const std::vector<float>& v) {
             i.ShowPortals(v[0] != 0);
             return v[0] == 0 || v[0] == 1;
         }},
        {"grid_size", 1,
         [](I& i, const std::vector<float>& v) {
             if (!IsWhole(v[0], 1, 512) || !IsPowerOfTwo(static_cast<int>(v[0])))
                 return false;
             i.grid_size = static_cast<int>(v[0]);
             i.SetInfoText();
             return true;
         }},
        {"active_brush_template", 1,
         [](I& i, const std::vector<float>& v) {
             if (!IsWhole(v[0], BT_RECTANGLE, BT_OCCLUDER))
                 return false;
             i.SetActiveBrushTemplate(static_cast<BrushType>(v[0]));
             return true;
         }},
        {"active_view", 1,
         [](I& i, const std::vector<float>& v) {
             if (!IsWhole(v[0], VIEW_TOP, VIEW_PERSPECTIVE))
                 return false;
             i.SetActiveView(static_cast<int>(v[0]));
             return true;
         }},
        {"anim_time", 1,
         [](I& i, const std::vector<float>& v) {
             i.anim_time = v[0];
             return true;
         }},
        {"last_entity_position", 3, Vector(Self, &I::last_entity_position)},
        {"active_brush_color", 4,
         [](I& i, const std::vector<float>& v) {
             i.active_brush_color = {v[0], v[1], v[2], v[3]};
             return true;
         }},
        {"selection_box", 6,
         [](I& i, const std::vector<float>& v) {
             i.selection_box = MakeBox({v[0], v[1], v[2]}, {v[3], v[4], v[5]});
             i.selection_pivot = I::CreatePivot(i.selection_box);
             return true;
         }},
        {"cordon_box", 6,
         [](I& i, const std::vector<float>& v) {
             i.views.cordon_box = MakeBox({v[0], v[1], v[2]}, {v[3], v[4], v[5]});
             return true;
         }},
        {"clip_box", 6,
         [](I& i, const std::vector<float>& v) {
             i.views.clip_box = MakeBox({v[0], v[1], v[2]}, {v[3], v[4], v[5]});
             return true;
         }},
    };
    return fields;
}

#undef FLAG
#undef WHOLE

// Finite numbers parted by blanks; false for anything else.
bool ReadNumbers(const std::string& value, std::vector<float>& numbers) {
    std::istringstream words(value);
    for (std::string word; words >> word;) {
        char* end = nullptr;
        const float number = std::strtof(word.c_str(), &end);
        if (end == word.c_str() || *end != '\0' || !std::isfinite(number))
            return false;
        numbers.push_back(number);
    }
    return true;
}

} // namespace

bool SetScriptField(CInterface& interface, const std::string& name, const std::string& value, std::string& error) {
    if (name == "map_file" || name == "map_name") {
        (name == "map_file" ? interface.world->map_file : interface.world->map_name) = CutText(value, PATH_FIELD - 1);
        return true;
    }
    for (const ScriptField& field : Fields()) {
        if (name != field.name)
            continue;
        std::vector<float> numbers;
        if (ReadNumbers(value, numbers) && numbers.size() == field.numbers && field.set(interface, numbers))
            return true;
        error = Format("\"%s\" is no value of %s", value.c_str(), name.c_str());
        return false;
    }
    error = Format("there is no field \"%s\"", name.c_str());
    return false;
}
