#include "pages/BrushProperties.h"

#include <algorithm>

#include "definitions/Numbers.h"
#include "editor/Interface.h"
#include "foundation/Strings.h"

const std::array<const char*, BRUSH_PROPERTY_COUNT> BRUSH_PROPERTY_LABELS = {
    "Dynamic",         "Player Clip",   "Ladder",     "Environment",       "Player No Clip",  "Hidden",
    "Destroyable",     "See Through",   "No Shadows", "Always Visible",    "Bot See Through", "Bullet No Clip",
    "Corona No Clip",  "Cross Portals", "Bot Clip",   "Trigger Activator", "Bot No Clip",     "Fast Transform",
    "Grenade No Clip", "No Projector"};

namespace {

constexpr uint32_t CLIP_BITS = BP_PLAYER_CLIP | BP_LADDER | BP_BOT_CLIP;
constexpr uint32_t BITS_OF_CLIPS =
    BP_SEE_THROUGH | BP_BOT_SEE_THROUGH | BP_NO_SHADOWS | BP_BULLET_NO_CLIP | BP_CORONA_NO_CLIP | BP_GRENADE_NO_CLIP;
constexpr const char* MIXED_CHOICES[] = {"Unchanged", "On", "Off"};

using BrushField = std::variant<std::string Brush::*, uint16_t Brush::*, float Brush::*, int32_t Brush::*>;
struct FieldEntry {
    const char* label;
    BrushField field;
};
const FieldEntry FIELDS[BrushProperties::FIELD_COUNT] = {
    {"Name:", &Brush::name},
    {"Energy:", &Brush::energy},
    {"Elasticity:", &Brush::elasticity},
    {"Static friction:", &Brush::static_friction},
    {"Dynamic friction:", &Brush::dynamic_friction},
    {"Time scale:", &Brush::time_scale},
    {"Rotation factor:", &Brush::rotation_factor},
    {"Mass:", &Brush::mass},
    {"Collision damage:", &Brush::coll_dmg},
    {"Touch damage:", &Brush::touch_dmg},
    {"Death particle:", &Brush::death_particle},
    {"On Death Link Action:", &Brush::link_action},
};

std::string TextOf(const Brush& b, const BrushField& field) {
    return std::visit(
        [&b](auto member) -> std::string {
            const auto& value = b.*member;
            using Value = std::decay_t<decltype(value)>;
            if constexpr (std::is_same_v<Value, std::string>)
                return value;
            else if constexpr (std::is_same_v<Value, float>)
                return Format("%.6g", static_cast<double>(value));
            else
                return Format("%d", static_cast<int>(value));
        },
        field);
}

void PutText(Brush& b, const BrushField& field, const std::string& text) {
    std::visit(
        [&](auto member) {
            auto& value = b.*member;
            using Value = std::decay_t<decltype(value)>;
            if constexpr (std::is_same_v<Value, std::string>)
                value = text;
            else if constexpr (std::is_same_v<Value, float>)
                value = ParseFloat(text);
            else if constexpr (std::is_same_v<Value, uint16_t>)
                value = static_cast<uint16_t>(std::clamp(ParseInt(text), 0, 0xFFFF));
            else
                value = ParseInt(text);
        },
        field);
}

} // namespace

uint32_t WithClipProperties(uint32_t set_properties) {
    return set_properties & CLIP_BITS ? set_properties | BITS_OF_CLIPS : set_properties;
}

BrushProperties::BrushProperties(const World& world) {
    for (const FieldEntry& entry : FIELDS)
        fields.push_back({entry.label, {}, false, false});
    flags.fill(FlagState::Off);
    bool first = true;
    for (const int i : world.brush_selection) {
        const Brush& b = *world.brush[static_cast<size_t>(i)];
        for (size_t f = 0; f < fields.size(); ++f) {
            const std::string text = TextOf(b, FIELDS[f].field);
            if (first)
                fields[f].value = text;
            else if (!fields[f].mixed && fields[f].value != text) {
                fields[f].mixed = true;
                fields[f].value.clear();
            }
        }
        for (size_t bit = 0; bit < flags.size(); ++bit) {
            const FlagState state = b.HasProperty(1u << bit) ? FlagState::On : FlagState::Off;
            flags[bit] = first || flags[bit] == state ? state : FlagState::Mixed;
        }
        first = false;
    }
}

void BrushProperties::SetValue(FieldName field, std::string_view text) {
    Field& f = fields[static_cast<size_t>(field)];
    if (!f.mixed && f.value == text)
        return;
    f.value = text;
    f.mixed = false;
    f.changed = true;
}

void BrushProperties::SetFlag(int bit, bool on) {
    if (bit < 0 || bit >= BRUSH_PROPERTY_COUNT)
        return;
    const uint32_t bits = on ? WithClipProperties(1u << bit) : 1u << bit;
    set_bits = on ? set_bits | bits : set_bits & ~bits;
    cleared_bits = on ? cleared_bits & ~bits : cleared_bits | bits;
    for (size_t i = 0; i < flags.size(); ++i)
        if (bits >> i & 1)
            flags[i] = on ? FlagState::On : FlagState::Off;
}

bool BrushProperties::Apply(World& world) const {
    const bool any_field = std::any_of(fields.begin(), fields.end(), [](const Field& f) { return f.changed; });
    if (!any_field && (set_bits | cleared_bits) == 0)
        return false;
    for (const int i : world.brush_selection) {
        Brush& b = *world.brush[static_cast<size_t>(i)];
        for (size_t f = 0; f < fields.size(); ++f)
            if (fields[f].changed)
                PutText(b, FIELDS[f].field, fields[f].value);
        b.properties = (b.properties | set_bits) & ~cleared_bits;
    }
    return true;
}

FormQuestion BrushProperties::MakeForm() const {
    FormQuestion question;
    question.title = "Brush properties";
    for (const Field& f : fields) {
        FormField field;
        field.label = f.label;
        field.value = f.value; // empty: they differ
        question.fields.push_back(std::move(field));
    }
    for (size_t bit = 0; bit < flags.size(); ++bit) {
        FormField field;
        field.label = BRUSH_PROPERTY_LABELS[bit];
        if (flags[bit] == FlagState::Mixed) {
            field.kind = FormField::Choice;
            field.choices.assign(std::begin(MIXED_CHOICES), std::end(MIXED_CHOICES));
            field.value = MIXED_CHOICES[0];
        } else {
            field.kind = FormField::Flag;
            field.value = flags[bit] == FlagState::On ? "1" : "0";
        }
        question.fields.push_back(std::move(field));
    }
    return question;
}

void BrushProperties::TakeAnswers(const FormQuestion& asked, const FormQuestion& answered) {
    for (size_t i = 0; i < asked.fields.size() && i < answered.fields.size(); ++i) {
        const std::string& answer = answered.fields[i].value;
        if (answer == asked.fields[i].value)
            continue;
        if (i < fields.size())
            SetValue(static_cast<FieldName>(i), answer);
        else
            SetFlag(static_cast<int>(i - fields.size()), answer == "1" || answer == MIXED_CHOICES[1]);
    }
    // What the user took off stays off, also where a clip property brings it along.
    for (size_t i = fields.size(); i < answered.fields.size(); ++i)
        if (asked.fields[i].value == "1" && answered.fields[i].value == "0")
            SetFlag(static_cast<int>(i - fields.size()), false);
}

void ApplyBrushProperties(CInterface& editor, const BrushProperties& properties) {
    ChangeRecord record(*editor.world, "Change brush properties.");
    if (properties.Apply(*editor.world)) {
        editor.MarkDirty();
        editor.RedrawAllViews();
    }
}

bool EditBrushProperties(CInterface& editor) {
    if (editor.world->brush_selection.GetItemCount() == 0)
        return false;
    BrushProperties properties(*editor.world);
    const FormQuestion asked = properties.MakeForm();
    FormQuestion question = asked;
    if (!GetDesktop().AskForm(question))
        return false;
    properties.TakeAnswers(asked, question);
    ApplyBrushProperties(editor, properties);
    return true;
}
