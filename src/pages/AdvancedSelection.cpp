#include "pages/AdvancedSelection.h"

#include <algorithm>
#include <set>

#include "definitions/Numbers.h"
#include "editor/EntityScripts.h"
#include "editor/Interface.h"
#include "foundation/Strings.h"
#include "pages/BrushProperties.h"
#include "pages/NamedObjects.h"
#include "pages/ParameterText.h"

namespace {

FormField MakeField(const char* label, FormField::Kind kind, const char* value = "") {
    FormField field;
    field.label = label;
    field.kind = kind;
    field.value = value;
    return field;
}

bool IsOn(const FormField& field) { return field.value == "1"; }

bool IsOfType(const Entity& e, std::string_view type) {
    return type.empty() || type == DlgSpecialEntSelection::ALL_TYPES || e.IsType(type);
}

struct NoCaseOrder {
    bool operator()(const std::string& a, const std::string& b) const { return CompareNoCase(a, b) < 0; }
};
using SortedNames = std::set<std::string, NoCaseOrder>;

void AddName(SortedNames& names, const std::string& name) {
    if (!name.empty() && !EqualNoCase(name, "none"))
        names.insert(name);
}

} // namespace

// --- Brushes

std::string DlgSpecialSelection::Label(int bit) {
    return bit == 1 ? "Player clip" : BRUSH_PROPERTY_LABELS[static_cast<size_t>(bit)];
}

bool DlgSpecialSelection::Takes(const Brush& b) const {
    return (mask == 0 || b.HasProperty(mask)) && (name.empty() || EqualNoCase(b.name, name)) &&
           (!has_touch_dmg || b.touch_dmg > 0) && (!has_coll_dmg || b.coll_dmg > 0);
}

int DlgSpecialSelection::Count(const World& world) const {
    return static_cast<int>(
        std::count_if(world.brush.begin(), world.brush.end(), [this](const auto& b) { return Takes(*b); }));
}

void DlgSpecialSelection::OnOK(CInterface& editor) const {
    World& world = *editor.world;
    const ChangeRecord record(world, "Select brushes by their properties.");
    world.ClearSelection();
    for (int i = 0; i < world.GetBrushCount(); ++i)
        if (Takes(*world.brush[static_cast<size_t>(i)]))
            world.SetBrushSelection(i, true);
    if (world.brush_selection.GetItemCount() == 0) {
        editor.RedrawAllViews();
        return;
    }
    world.first_selected_id = world.brush[static_cast<size_t>(world.brush_selection.GetItem(0))]->GetObjectID();
    ShowNewSelection(editor);
}

bool AskSpecialSelection(CInterface& editor) {
    FormQuestion question;
    question.title = "Advanced brush selection";
    for (int bit = 0; bit < BRUSH_PROPERTY_COUNT; ++bit)
        question.fields.push_back(MakeField(DlgSpecialSelection::Label(bit).c_str(), FormField::Flag, "0"));
    question.fields.push_back(MakeField("Name:", FormField::Text));
    question.fields.push_back(MakeField("Has touch dmg.", FormField::Flag, "0"));
    question.fields.push_back(MakeField("Has collision dmg.", FormField::Flag, "0"));
    if (!GetDesktop().AskForm(question))
        return false;
    DlgSpecialSelection selection;
    for (size_t bit = 0; bit < BRUSH_PROPERTY_COUNT; ++bit)
        if (IsOn(question.fields[bit]))
            selection.mask |= 1u << bit;
    const FormField* others = &question.fields[BRUSH_PROPERTY_COUNT];
    selection.name = others[0].value;
    selection.has_touch_dmg = IsOn(others[1]);
    selection.has_coll_dmg = IsOn(others[2]);
    selection.OnOK(editor);
    return true;
}

// --- Entities

bool DlgSpecialEntSelection::IsNumber(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool DlgSpecialEntSelection::ParamValueEquals(const EntityParameter& p, std::string_view text) {
    switch (p.type) {
    case EPT_BOOL:
        return EqualNoCase(text, p.p_bool ? "True" : "False");
    case EPT_INT:
        return IsNumber(text) && ParseInt(text) == p.p_int;
    case EPT_FLOAT:
        return IsNumber(text) && ParseFloat(text) == p.p_float;
    case EPT_VECTOR2:
    case EPT_VECTOR3:
        return false;
    case EPT_COLOR: {
        const std::string spaced = ParameterText(p, 0);
        std::string closed = spaced;
        std::erase(closed, ' ');
        return text == spaced || text == closed;
    }
    case EPT_FILENAME:
    case EPT_STRING:
    case EPT_CONSTANT:
        break;
    }
    return EqualNoCase(text, p.p_text);
}

bool DlgSpecialEntSelection::ScriptReferencesValue(const CScriptSyntax& syntax, std::string_view script,
                                                   std::string_view name) {
    std::string line, token;
    while (!script.empty() && CScriptSyntax::GetLine(script, line)) {
        int at = 0;
        if (!CScriptSyntax::GetToken(line, token, at))
            continue;
        if (token.starts_with('!'))
            token.erase(0, 1);
        const int term = syntax.IndexOf(token);
        if (term == -1)
            continue;
        for (const SScriptParam& parameter : syntax.Get(term).params) {
            if (!CScriptSyntax::AddNextToken(line, token, at))
                break;
            if (parameter.type == SSPT_OBJECT && token != "?" && EqualNoCase(token, name))
                return true;
        }
    }
    return false;
}

bool DlgSpecialEntSelection::Takes(const CInterface& editor, const Entity& e) const {
    const auto has_value = [this](const EntityParameter& p) {
        return (parameter_name.empty() || p.name == parameter_name) && (value.empty() || ParamValueEquals(p, value));
    };
    const auto has_reference = [&](const EntityParameter& p) {
        return p.IsText() && IsScriptParameter(p) && ScriptReferencesValue(*editor.command_syntax, p.p_text, reference);
    };
    const auto any = [&e](const auto& test) { return std::any_of(e.parameter.begin(), e.parameter.end(), test); };
    return IsOfType(e, type) && (name.empty() || EqualNoCase(e.variable_name, name)) &&
           ((parameter_name.empty() && value.empty()) || any(has_value)) &&
           (reference.empty() || (editor.command_syntax && any(has_reference)));
}

int DlgSpecialEntSelection::Count(const CInterface& editor) const {
    const auto& entities = editor.world->entity;
    return static_cast<int>(
        std::count_if(entities.begin(), entities.end(), [&](const auto& e) { return Takes(editor, *e); }));
}

void DlgSpecialEntSelection::OnOK(CInterface& editor) const {
    World& world = *editor.world;
    const ChangeRecord record(world, "Select entities by their content.");
    world.entity_selection.ClearList();
    for (int i = 0; i < world.GetEntityCount(); ++i)
        if (Takes(editor, *world.entity[static_cast<size_t>(i)]))
            world.entity_selection.AddItem(i);
    if (world.IsSomethingSelected()) {
        ShowNewSelection(editor);
        return;
    }
    editor.SelectionChanged();
    editor.SetEditorState(ES_SELECTED);
    editor.ChangeCursor();
    editor.RedrawAllViews();
}

// --- What there is to choose from

std::vector<std::string> BrushNames(const World& world) {
    SortedNames names;
    for (const auto& b : world.brush)
        AddName(names, b->name);
    return {names.begin(), names.end()};
}

std::vector<std::string> ObjectNames(const World& world) {
    SortedNames names;
    for (const auto& b : world.brush)
        AddName(names, b->name);
    for (const auto& e : world.entity)
        AddName(names, e->variable_name);
    return {names.begin(), names.end()};
}

std::vector<std::string> EntityTypes(const World& world) {
    std::set<std::string> words;
    for (const auto& e : world.entity)
        words.insert(ToUpper(e->str_type));
    std::vector<std::string> types{DlgSpecialEntSelection::ALL_TYPES};
    types.insert(types.end(), words.begin(), words.end());
    return types;
}

std::vector<std::string> EntityNames(const World& world, std::string_view type) {
    SortedNames names;
    for (const auto& e : world.entity)
        if (IsOfType(*e, type))
            AddName(names, e->variable_name);
    return {names.begin(), names.end()};
}

std::vector<std::string> ParameterNames(const World& world, std::string_view type) {
    std::set<std::string> names; // told apart by their case
    for (const auto& e : world.entity)
        if (IsOfType(*e, type))
            for (const EntityParameter& p : e->parameter)
                names.insert(p.name);
    std::vector<std::string> sorted(names.begin(), names.end());
    std::stable_sort(sorted.begin(), sorted.end(), NoCaseOrder());
    return sorted;
}

std::vector<std::string> ParameterValues(const World& world, std::string_view type, std::string_view parameter_name) {
    SortedNames values;
    for (const auto& e : world.entity)
        for (const EntityParameter& p : e->parameter) {
            if (values.size() == MOST_VALUES)
                break;
            if (!IsOfType(*e, type) || (!parameter_name.empty() && p.name != parameter_name) || IsScriptParameter(p))
                continue;
            const std::string text = p.type == EPT_BOOL    ? p.p_bool ? "True" : "False"
                                     : p.type == EPT_FLOAT ? Format("%.0f", static_cast<double>(p.p_float))
                                                           : ParameterText(p, 0);
            if (!text.empty() && text.find('\n') == std::string::npos &&
                DlgSpecialEntSelection::ParamValueEquals(p, text))
                values.insert(text);
        }
    return {values.begin(), values.end()};
}

bool AskSpecialEntSelection(CInterface& editor) {
    DlgSpecialEntSelection selection;
    FormQuestion question;
    question.title = "Advanced entity selection";
    question.fields.push_back(MakeField("Type:", FormField::Choice, DlgSpecialEntSelection::ALL_TYPES));
    question.fields[0].choices = EntityTypes(*editor.world);
    for (const char* label : {"Name:", "Parameter:", "Value:", "References:"})
        question.fields.push_back(MakeField(label, FormField::Text));
    if (!GetDesktop().AskForm(question))
        return false;
    selection.type = question.fields[0].value;
    selection.name = question.fields[1].value;
    selection.parameter_name = question.fields[2].value;
    selection.value = question.fields[3].value;
    selection.reference = question.fields[4].value;
    selection.OnOK(editor);
    return true;
}
