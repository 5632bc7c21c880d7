// The properties dialog of the selected brushes: what they have in common, and what the user changes of it.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class Brush;
class CInterface;
class World;
struct FormQuestion;

inline constexpr int BRUSH_PROPERTY_COUNT = 20;
// The label of each property bit, from bit 0 on.
extern const std::array<const char*, BRUSH_PROPERTY_COUNT> BRUSH_PROPERTY_LABELS;

// Properties that come with those that make a brush a mere barrier.
uint32_t WithClipProperties(uint32_t set_properties);

class BrushProperties {
public:
    // A value of all selected brushes as text; empty and mixed where they differ.
    struct Field {
        const char* label;
        std::string value;
        bool mixed = false, changed = false;
    };
    enum FieldName {
        NAME,
        ENERGY,
        ELASTICITY,
        STATIC_FRICTION,
        DYNAMIC_FRICTION,
        TIME_SCALE,
        ROTATION_FACTOR,
        MASS,
        COLLISION_DAMAGE,
        TOUCH_DAMAGE,
        DEATH_PARTICLE,
        LINK_ACTION,
        FIELD_COUNT
    };
    enum class FlagState { Off, On, Mixed };

    explicit BrushProperties(const World& world); // of its selected brushes

    std::vector<Field> fields; // by FieldName
    std::array<FlagState, BRUSH_PROPERTY_COUNT> flags;

    void SetValue(FieldName field, std::string_view text);
    // By its number. Setting a clip property also sets the properties that come with it.
    void SetFlag(int bit, bool on);
    // Writes what was changed, and nothing else, to all selected brushes. False if nothing was changed.
    bool Apply(World& world) const;

    FormQuestion MakeForm() const;
    void TakeAnswers(const FormQuestion& asked, const FormQuestion& answered);

private:
    uint32_t set_bits = 0, cleared_bits = 0; // by the user
};

// Writes what was changed, as one step.
void ApplyBrushProperties(CInterface& editor, const BrushProperties& properties);
// Asks for the properties of the selected brushes. False when none is selected or the user cancels.
bool EditBrushProperties(CInterface& editor);
