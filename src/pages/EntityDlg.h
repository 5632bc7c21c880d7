// The entity page: chooses the kind of the next entity and edits the parameters of its template, which are passed on to
// all selected entities. Also stores and recalls sets of values, the saved templates.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "editor/EditorListener.h"
#include "pages/ParameterText.h"

class CInterface;
class CScriptSyntax;
class Entity;
struct EntityParameter;

// What a double click on a parameter opens. A flag is toggled at once.
enum class ParameterEditor { None, CommandScript, ConditionScript, Color, File, Toggled, Text };

// Where the file of a parameter is looked for.
struct BrowseRule {
    std::string root, pattern, default_dir;
};

class EntityDlg : public EditorListener {
public:
    explicit EntityDlg(CInterface& controller);
    EntityDlg(const EntityDlg&) = delete;
    EntityDlg& operator=(const EntityDlg&) = delete;
    ~EntityDlg() override;

    // The tree: directories, and the templates under each, both sorted. The chosen template's index in the parser is
    // the editor's selected_entity.
    struct Directory {
        std::string name;
        bool expanded = false;
        std::vector<int> templates; // indices into entity_template
    };
    std::vector<Directory> entity_directory;
    std::vector<std::string> entity_template;
    std::vector<int> real_entity_template_index; // in the parser, of each name

    // The page
    std::string m_entity_type; // headline of the list
    std::vector<std::string> parameter_lines;
    int selected_parameter = -1;
    std::string m_parameter; // the value being edited
    std::string m_name, m_helpline;
    std::vector<std::string> choices; // of the choice list; shown while the parameter has any
    int choice = -1;
    std::vector<std::string> saved_templates;

    void OnInitDialog();              // reads the parser's templates; the first POINT_LIGHT is chosen
    Entity* SelectedTemplate() const; // null if none
    bool IsSelection() const;         // whether entities are selected in the level

    void SelectDirectory(); // a directory in the tree: no template, unless entities are selected
    // A template by its name, in any case. With entities selected it asks whether to convert them, and changes nothing
    // on No. False if there is no such template.
    bool SelectTemplate(std::string_view name);
    void SetTemplate(const Entity& entity); // shows it: its values go into its template
    void Clear() { selected_parameter = -1; }
    void UpdateControls();
    void FillParameterList();

    void SelectParameter(int index); // in the list; -1: none
    // A value of the selected parameter; of a part of it, such as one component of a vector, the selected entities keep
    // the rest. False after the user was told.
    bool TypeValue(std::string_view text, int part = WHOLE_VALUE);
    // Chooses the parameter and types the value.
    bool SetParameter(std::string_view name, std::string_view text);
    void SelectChoice(int row);
    void SetAngle(int degrees); // the angle buttons: 0, 45 to 315
    void ChangeName(std::string_view variable_name);

    ParameterEditor OnDblclkParameterlist();
    ParameterEditor EditorOfParameter() const; // what a double click would open
    const CScriptSyntax* ScriptSyntax(ParameterEditor editor_kind) const;
    bool TakeScript(std::string_view text); // of an EPT_STRING only
    void OnColor();
    BrowseRule GetBrowseRule() const;
    bool TakeFile(std::string_view path); // of an EPT_FILENAME only

    void OnSavetemplate(); // asks for a name
    void LoadSavedTemplate(int index);
    void LoadAIGroups(); // the level's groups as choices

    void SelectionChanged() override;
    void WorldReplaced() override;
    void AIGroupsChanged() override;

private:
    EntityParameter* SelectedParameter() const;
    Entity* FirstSelectedEntity() const;
    void ConvertSelection(int new_template);
    void ChooseDefaults(Entity& chosen);
    void ChooseModel(EntityParameter& parameter, const std::string& actor_class);
    void PassOn(const EntityParameter& parameter);
    void PassOnPart(const EntityParameter& parameter, int part);
    bool NamesAIGroup() const;
    void RefreshSavedTemplates(bool changed); // of another type word, or when changed
    std::string SavedTemplateFolder() const;

    CInterface& editor;
    std::string saved_templates_of; // the type word
};
