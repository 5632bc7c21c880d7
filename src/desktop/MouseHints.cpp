#include "desktop/MouseHints.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <optional>

#include "foundation/Strings.h"

namespace {

enum ViewKind { FLAT = 1, SPACE = 2, ANY_VIEW = FLAT | SPACE }; // the orthographic views; the perspective one
enum Keys { PLAIN = 1, SHIFT = 2, CONTROL = 4, BOTH = 8, ALT = 16, ANY_KEYS = 31 };
enum Mode {
    NONE = 1,
    SELECTED = 2,
    SHEAR = 4,
    ROTATE = 8,
    EXTRUDE = 16,
    PICK = 32,
    VERTEX = 64,
    DECAL = 128,
    CREATE = 256,
    DRAG_SELECT = 512,
    PAN = 1024,
    TERRAIN = 2048,
    ANY_MODE = 4095
};
enum Button { LEFT, MIDDLE, RIGHT, WHEEL };

// The first rule that fits a button tells what it does.
struct Rule {
    Button button;
    int views, modes, keys;
    const char* text;
};

constexpr Rule RULES[] = {
    // While something is under way
    {LEFT, FLAT, EXTRUDE, ANY_KEYS, "next corner; the first one again closes the outline"},
    {RIGHT, FLAT, EXTRUDE, ANY_KEYS, "give the outline up"},
    {LEFT, FLAT, CREATE, ANY_KEYS, "drag to the far corner of the brush"},
    {RIGHT, FLAT, CREATE, ANY_KEYS, "give the brush up"},
    {LEFT, ANY_VIEW, DRAG_SELECT, ANY_KEYS, "drag a box over what to select"},
    {MIDDLE, FLAT, PAN, ANY_KEYS, "drag to scroll"},
    {LEFT, SPACE, PICK, ANY_KEYS, "take this texture"},
    {RIGHT, FLAT, PICK, PLAIN | ALT, "leave the picker"},
    {LEFT, FLAT, PICK, ANY_KEYS, ""},

    // Decals and the terrain tool
    {LEFT, SPACE, DECAL, SHIFT, "select a decal"},
    {LEFT, SPACE, DECAL, BOTH, "select a decal besides the others"},
    {LEFT, SPACE, DECAL, CONTROL, "place a decal; with Alt too: a copy of the selected one"},
    {LEFT, SPACE, DECAL, ALT, "move the selected decal here"},
    {RIGHT, SPACE, DECAL, ALT, "drag to scale the selected decals"},
    {WHEEL, SPACE, DECAL, ALT, "rotate the selected decals"},
    {LEFT, SPACE, TERRAIN, SHIFT | BOTH, "drag to shape the ground, upward"},
    {RIGHT, SPACE, TERRAIN, SHIFT | BOTH, "drag to shape the ground, downward"},
    {WHEEL, SPACE, TERRAIN, ALT, "radius of the tool; with Ctrl too: its intensity"},

    // Orthographic views
    {LEFT, FLAT, ANY_MODE, ALT, "put the camera here"},
    {LEFT, FLAT, NONE, PLAIN | CONTROL, "drag out a new brush"},
    {LEFT, FLAT, NONE | SELECTED | SHEAR, SHIFT, "select a brush, or drag a box over brushes"},
    {LEFT, FLAT, NONE | SELECTED | SHEAR, BOTH, "select brushes besides the others"},
    {LEFT, FLAT, SELECTED, PLAIN, "drag inside to move, a side to resize"},
    {LEFT, FLAT, SELECTED, CONTROL, "drag inside to move"},
    {LEFT, FLAT, SHEAR, PLAIN | CONTROL, "drag a side to shear"},
    {LEFT, FLAT, ROTATE, ANY_KEYS, "drag to rotate"},
    {LEFT, FLAT, VERTEX, PLAIN | CONTROL, "drag to move the marked corners"},
    {LEFT, FLAT, VERTEX, SHIFT | BOTH, "mark a corner, or drag a box over corners"},
    {MIDDLE, FLAT, ANY_MODE, CONTROL | BOTH, "flip from left to right"},
    {MIDDLE, FLAT, SELECTED | SHEAR | ROTATE, SHIFT, "drag to move the selected brushes"},
    {MIDDLE, FLAT, ANY_MODE, SHIFT, ""},
    {MIDDLE, FLAT, ANY_MODE, PLAIN | ALT, "drag to scroll; twice: put the camera here"},
    {RIGHT, FLAT, NONE | SELECTED | SHEAR, SHIFT, "select an entity, or drag a box over entities"},
    {RIGHT, FLAT, NONE | SELECTED | SHEAR, BOTH, "select entities besides the others"},
    {RIGHT, FLAT, ANY_MODE, CONTROL, "place the chosen entity"},
    {RIGHT, FLAT, NONE, PLAIN | ALT, ""},
    {RIGHT, FLAT, SELECTED, PLAIN | ALT, "clear the selection"},
    {RIGHT, FLAT, SHEAR, PLAIN | ALT, "leave the shear mode"},
    {RIGHT, FLAT, ROTATE, PLAIN | ALT, "leave the rotation mode"},
    {RIGHT, FLAT, VERTEX, PLAIN | ALT, "unmark all corners, then leave"},
    {WHEEL, FLAT, ANY_MODE, PLAIN | ALT, "zoom"},
    {WHEEL, FLAT, ANY_MODE, SHIFT, "size of the grid"},
    {WHEEL, FLAT, ANY_MODE, CONTROL, "rotate by the rotation angle"},
    {WHEEL, FLAT, ANY_MODE, BOTH, "rotate by 90\302\260"},

    // Perspective view
    {LEFT, SPACE, VERTEX, CONTROL, "drag to look around"},
    {LEFT, SPACE, VERTEX, PLAIN | ALT, "drag a corner at its cross, or look around"},
    {LEFT, SPACE, VERTEX, SHIFT | BOTH, "mark a corner"},
    {LEFT, SPACE, ANY_MODE, PLAIN | ALT, "drag to look around"},
    {LEFT, SPACE, ANY_MODE, SHIFT, "select a brush"},
    {LEFT, SPACE, ANY_MODE, BOTH, "select a brush besides the others"},
    {LEFT, SPACE, ANY_MODE, CONTROL, "select a surface; twice: map its texture anew"},
    {RIGHT, SPACE, ANY_MODE, PLAIN | ALT, "drag to move the camera, or hold and fly by W S A D E Q"},
    {RIGHT, SPACE, ANY_MODE, SHIFT, "select an entity"},
    {RIGHT, SPACE, ANY_MODE, BOTH, "select an entity besides the others"},
    {RIGHT, SPACE, ANY_MODE, CONTROL, "copy the selected surface's texture here"},
    {WHEEL, SPACE, ANY_MODE, PLAIN | ALT, "fly forward and back"},
    {WHEEL, SPACE, ANY_MODE, SHIFT, "fly fast"},
    {WHEEL, SPACE, ANY_MODE, CONTROL | BOTH, "fly slowly"},
};

Mode ModeOf(const CInterface& interface) {
    switch (interface.editor_state) {
    case ES_IDLE:
        return NONE;
    case ES_PAN:
        return PAN;
    case ES_CREATE_BRUSH:
        return CREATE;
    case ES_SELECTED:
    case ES_EDIT:
        return interface.shearing ? SHEAR : SELECTED;
    case ES_EXTRUDABLE:
        return EXTRUDE;
    case ES_ROTATE_ARMED:
    case ES_ROTATE:
        return ROTATE;
    case ES_PICK_TEXTURE:
        return PICK;
    case ES_DRAG_SELECT:
        return DRAG_SELECT;
    case ES_VERTEX:
    case ES_VERTEX_MOVE:
        return VERTEX;
    case ES_DECAL:
        return DECAL;
    case ES_TERRAIN:
        return TERRAIN;
    }
    return NONE;
}

Keys KeysOf(const HeldModifiers& held) {
    return held.shift && held.control ? BOTH : held.shift ? SHIFT : held.control ? CONTROL : held.alt ? ALT : PLAIN;
}

} // namespace

const char* ModeName(const CInterface& interface) {
    if (interface.edit_cordon_bounds)
        return "Boxes";
    switch (ModeOf(interface)) {
    case SELECTED:
        return "Selected";
    case SHEAR:
        return "Shear";
    case ROTATE:
        return "Rotation";
    case EXTRUDE:
        return "Outline";
    case PICK:
        return "Texture picker";
    case VERTEX:
        return "Vertices";
    case DECAL:
        return "Decals";
    case TERRAIN:
        return "Terrain";
    case PAN:
        return "Scroll";
    case DRAG_SELECT:
        return "Select";
    default:
        return interface.movie_editing                        ? "Movie"
               : interface.world->selected_surface_brush >= 0 ? "Surface selected"
                                                              : "Nothing selected";
    }
}

MouseHint HintFor(const CInterface& interface, const HeldModifiers& held) {
    const int view = interface.active_view == VIEW_PERSPECTIVE ? SPACE : FLAT;
    const Mode mode = ModeOf(interface);
    const Keys keys = KeysOf(held);
    const auto find = [&](Button button) {
        const auto rule = std::find_if(std::begin(RULES), std::end(RULES), [&](const Rule& r) {
            return r.button == button && r.views & view && r.modes & mode && r.keys & keys;
        });
        return rule == std::end(RULES) ? "" : rule->text;
    };
    MouseHint hint{find(LEFT), find(MIDDLE), find(RIGHT), find(WHEEL)};
    if (interface.edit_cordon_bounds && view == FLAT && interface.editor_state != ES_EDIT) {
        if (interface.clip_active)
            hint.left = "drag a side of the clip box";
        if (interface.cordon_active)
            hint.right = "drag a side of the cordon box";
    } else if (view == FLAT && mode == SELECTED && keys == PLAIN &&
               interface.world->entity_selection.GetItemCount() > 0)
        hint.left = "drag to move"; // from anywhere; nothing is resized
    else if (interface.movie_editing && keys == CONTROL) {
        hint.left = "place a point of the path";
        hint.right = "place a point that is looked at";
    }
    return hint;
}

std::string DragText(const CInterface& interface, const Box& before) {
    constexpr double DEGREES = 180 / 3.14159265358979323846;
    if (interface.editor_state == ES_ROTATE)
        return Format("Turned by %.5g\302\260", (0 - static_cast<double>(interface.tmp_rotate)) * DEGREES);
    const bool edits = interface.editor_state == ES_EDIT;
    if (!edits && interface.editor_state != ES_VERTEX_MOVE)
        return {};
    const auto tell = [](const char* what, const D3DVECTOR& way) {
        const auto hundredths = [](float length) { return std::round(static_cast<double>(length) * 100) / 100; };
        return Format("%s by X: %g,  Y: %g,  Z: %g", what, hundredths(way.x), hundredths(way.y), hundredths(way.z));
    };
    if (!edits || interface.edit_state == 0)
        return tell("Moved", D3DVECTOR{} - interface.tmp_move);
    const auto size = [](const Box& box) { return BoxMax(box) - BoxMin(box); };
    return tell("Size changed", size(interface.selection_box) - size(before));
}

std::string HintText(const MouseHint& hint) {
    std::string text;
    const auto add = [&](const char* name, const std::string& does) {
        if (!does.empty())
            text += (text.empty() ? "" : "     ") + std::string(name) + ": " + does;
    };
    add("Left", hint.left);
    add("Middle", hint.middle);
    add("Right", hint.right);
    add("Wheel", hint.wheel);
    return text;
}
