// The two dialogs that select by content: brushes by their properties, entities by type, name, parameters and scripts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class CInterface;
class CScriptSyntax;
struct EntityParameter;

// "Advanced brush selection"
class DlgSpecialSelection {
public:
    uint32_t mask = 0; // BrushProperty bits, of which one is enough; 0: any brush
    std::string name;  // any case; empty: any
    bool has_touch_dmg = false, has_coll_dmg = false;

    static std::string Label(int bit); // of the property's box
    void OnOK(CInterface& editor) const;
};

// "Advanced entity selection". All empty: every entity.
class DlgSpecialEntSelection {
public:
    explicit DlgSpecialEntSelection(const CInterface& editor);

    static constexpr const char* ALL_TYPES = "All types";
    std::vector<std::string> types; // to choose from: ALL_TYPES, then the level's type words in capitals, sorted
    std::string type = ALL_TYPES;
    std::string name, parameter_name, value;
    std::string reference; // the name of an object that a script of the entity names

    void OnOK(CInterface& editor) const;

    static bool ParamValueEquals(const EntityParameter& parameter, std::string_view text);
    static bool ScriptReferencesValue(const CScriptSyntax& syntax, std::string_view script, std::string_view name);
    static bool IsNumber(std::string_view text); // digits only
};

// Each asks through a form. False after Cancel.
bool AskSpecialSelection(CInterface& editor);
bool AskSpecialEntSelection(CInterface& editor);
