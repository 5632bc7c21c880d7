// The two dialogs that select by content: brushes by their properties, entities by type, name, parameters and scripts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class Brush;
class CInterface;
class CScriptSyntax;
class Entity;
class World;
struct EntityParameter;

// "Advanced brush selection"
class DlgSpecialSelection {
public:
    uint32_t mask = 0; // BrushProperty bits, of which one is enough; 0: any brush
    std::string name;  // any case; empty: any
    bool has_touch_dmg = false, has_coll_dmg = false;

    static std::string Label(int bit); // of the property's box
    bool Takes(const Brush& b) const;
    int Count(const World& world) const; // how many brushes it takes
    void OnOK(CInterface& editor) const;
};

// "Advanced entity selection". All empty: every entity.
class DlgSpecialEntSelection {
public:
    static constexpr const char* ALL_TYPES = "All types";
    std::string type = ALL_TYPES; // in any case
    std::string name, parameter_name, value;
    std::string reference; // the name of an object that a script of the entity names

    bool Takes(const CInterface& editor, const Entity& e) const;
    int Count(const CInterface& editor) const; // how many entities it takes
    void OnOK(CInterface& editor) const;

    static bool ParamValueEquals(const EntityParameter& parameter, std::string_view text);
    static bool ScriptReferencesValue(const CScriptSyntax& syntax, std::string_view script, std::string_view name);
    static bool IsNumber(std::string_view text); // digits only
};

// What a level offers to choose from, each once, sorted.
std::vector<std::string> BrushNames(const World& world);
std::vector<std::string> ObjectNames(const World& world); // of brushes and entities
std::vector<std::string> EntityTypes(const World& world); // ALL_TYPES, then the type words in capitals
// Of the entities of a type, or of ALL_TYPES.
std::vector<std::string> EntityNames(const World& world, std::string_view type);
std::vector<std::string> ParameterNames(const World& world, std::string_view type);
// Those by which the parameter, or any if it is empty, can be found; at most MOST_VALUES.
inline constexpr size_t MOST_VALUES = 500;
std::vector<std::string> ParameterValues(const World& world, std::string_view type, std::string_view parameter_name);

// Each asks through a form. False after Cancel.
bool AskSpecialSelection(CInterface& editor);
bool AskSpecialEntSelection(CInterface& editor);
