#include "pages/EntityDlg.h"

#include <algorithm>
#include <map>

#include "editor/Interface.h"
#include "foundation/Strings.h"
#include "pages/ParameterText.h"

namespace {

constexpr const char* FIRST_TEMPLATE = "POINT_LIGHT"; // its type word
constexpr const char* UNSET = "x";                    // a value that a definition leaves to the page

bool IsActor(const Entity& e) { return e.IsType("ACTOR") || e.IsType("SENTRYGUN") || e.IsType("RESPAWN_POINT"); }

int IndexNoCase(const std::vector<std::string>& list, std::string_view text) {
    const auto found =
        std::find_if(list.begin(), list.end(), [text](const std::string& s) { return EqualNoCase(s, text); });
    return found == list.end() ? -1 : static_cast<int>(found - list.begin());
}

void AddAll(std::vector<std::string>& list, const StringListClass& names) {
    for (int i = 0; i < names.GetStringCount(); ++i)
        list.emplace_back(names.GetString(i));
}

} // namespace

EntityDlg::EntityDlg(CInterface& controller) : editor(controller) {
    OnInitDialog();
    editor.AddListener(*this);
}

EntityDlg::~EntityDlg() { editor.RemoveListener(*this); }

// --- The tree

void EntityDlg::OnInitDialog() {
    entity_directory.clear();
    entity_template.clear();
    real_entity_template_index.clear();
    if (!editor.entity_parser)
        return;
    EntityParser& parser = *editor.entity_parser;
    const auto before = [](const std::string& x, const std::string& y) { return CompareNoCase(x, y) < 0; };
    std::map<std::string, std::vector<int>, decltype(before)> templates_of(before); // of each directory
    int first = -1;
    for (int t = 0; t < parser.GetTemplateCount(); ++t) {
        const Entity& e = *parser.GetTemplate(t, false);
        entity_template.push_back(e.name);
        templates_of.try_emplace(e.directory);
        if (first == -1 && e.IsType(FIRST_TEMPLATE))
            first = t;
    }
    std::stable_sort(entity_template.begin(), entity_template.end(), before);
    for (const std::string& name : entity_template) {
        const int index = parser.GetTemplateIndex(name);
        templates_of.at(parser.GetTemplate(index, false)->directory)
            .push_back(static_cast<int>(real_entity_template_index.size()));
        real_entity_template_index.push_back(index);
    }
    for (auto& [name, templates] : templates_of)
        entity_directory.push_back({name, false, std::move(templates)});
    editor.selected_entity = first;
    selected_parameter = -1;
    UpdateControls();
}

Entity* EntityDlg::SelectedTemplate() const {
    return editor.entity_parser ? editor.entity_parser->GetTemplate(editor.selected_entity, false) : nullptr;
}

Entity* EntityDlg::FirstSelectedEntity() const {
    if (!IsSelection())
        return nullptr;
    const int first = editor.world->entity_selection.GetItem(0);
    return first >= 0 && first < editor.world->GetEntityCount() ? editor.world->entity[static_cast<size_t>(first)].get()
                                                                : nullptr;
}

bool EntityDlg::IsSelection() const { return editor.world && editor.world->entity_selection.GetItemCount() > 0; }

void EntityDlg::SelectDirectory() {
    if (IsSelection())
        return;
    editor.selected_entity = -1;
    selected_parameter = -1;
    UpdateControls();
}

bool EntityDlg::SelectTemplate(std::string_view name) {
    int chosen = editor.entity_parser ? editor.entity_parser->GetTemplateIndex(name) : -1;
    const int row = chosen == -1 ? IndexNoCase(entity_template, name) : -1;
    if (row >= 0)
        chosen = real_entity_template_index[static_cast<size_t>(row)];
    if (chosen == -1)
        return false;
    if (IsSelection() && chosen != editor.selected_entity) {
        ConvertSelection(chosen);
        return true;
    }
    if (chosen != editor.selected_entity)
        selected_parameter = -1;
    editor.selected_entity = chosen;
    editor.RedrawAllViews();
    UpdateControls();
    return true;
}

void EntityDlg::ConvertSelection(int new_template) {
    const Entity* current = FirstSelectedEntity();
    const Entity& wanted = *editor.entity_parser->GetTemplate(new_template, true);
    if (!current)
        return;
    const std::string question = Format("Selected entity(s) is of type \"%s\". Do you want to convert it to \"%s\" ?",
                                        current->name.c_str(), wanted.name.c_str());
    if (GetDesktop().MessageBox(question, "Marrowstead 2000", MessageButtons::YesNo) == MessageAnswer::Yes) {
        ChangeRecord record(*editor.world, "Convert entities.");
        editor.world->ConvertSelectedEntities(wanted);
        editor.selected_entity = new_template;
        SetTemplate(*FirstSelectedEntity());
        editor.MarkDirty();
        editor.Tell(&EditorListener::EntityTypesChanged);
    }
    editor.RedrawAllViews();
    UpdateControls();
}

void EntityDlg::SetTemplate(const Entity& entity) {
    const int index = editor.entity_parser ? editor.entity_parser->GetTemplateIndex(entity.name) : -1;
    if (index == -1)
        return;
    selected_parameter = -1;
    editor.selected_entity = index;
    Entity& shown = *SelectedTemplate();
    if (&shown != &entity)
        shown = entity;
    UpdateControls();
}

// --- The list

void EntityDlg::UpdateControls() {
    m_parameter.clear();
    m_name.clear();
    m_helpline.clear();
    if (SelectedTemplate()) {
        FillParameterList();
        RefreshSavedTemplates(false);
        SelectParameter(selected_parameter);
    } else {
        m_entity_type.clear();
        parameter_lines.clear();
        saved_templates.clear();
        saved_templates_of.clear();
        choices.clear();
        choice = -1;
    }
}

void EntityDlg::FillParameterList() {
    parameter_lines.clear();
    Entity* chosen = SelectedTemplate();
    if (!chosen)
        return;
    const Entity* first = FirstSelectedEntity();
    const int selected = first ? editor.world->entity_selection.GetItemCount() : 0;
    m_entity_type = selected > 1 ? Format("Parameters of %s    (id = %u, the first of %d):", chosen->name.c_str(),
                                          first->GetObjectID(), selected)
                    : first      ? Format("Parameters of %s    (id = %u):", chosen->name.c_str(), first->GetObjectID())
                                 : Format("Parameters of %s:", chosen->name.c_str());
    ChooseDefaults(*chosen);
    for (const EntityParameter& p : chosen->parameter)
        parameter_lines.push_back(p.name + " = " + ParameterText(p, LIST_DECIMALS));
    const std::string* common_name = editor.world ? editor.world->GetEntityVariableName() : nullptr;
    m_name = common_name ? *common_name : chosen->variable_name;
}

// The choices that the level's definition files give, and values for what a definition leaves open.
void EntityDlg::ChooseDefaults(Entity& chosen) {
    const bool actor = IsActor(chosen);
    const bool has_class = actor || chosen.IsType("DEAD_BODY");
    std::string actor_class;
    if (const EntityParameter* p = chosen.GetParameterStr("class"); p && actor)
        actor_class = p->p_text;
    for (EntityParameter& p : chosen.parameter) {
        if (!p.IsText())
            continue;
        if (has_class && p.name == "class") {
            p.constant.clear();
            for (const auto& group : editor.actor_def_groups.Groups())
                p.constant.push_back(group->name);
            if (p.p_text == UNSET) {
                p.p_text = "Special";
                PassOn(p);
            }
            actor_class = p.p_text;
        } else if (has_class && p.name == "model_script") {
            ChooseModel(p, actor_class);
        } else if (p.name == "weapon") {
            p.constant = {"none"};
            AddAll(p.constant, editor.weapon_defs);
            if (p.p_text == UNSET) {
                p.p_text = actor ? "sig" : "none";
                PassOn(p);
            }
        }
    }
}

void EntityDlg::ChooseModel(EntityParameter& p, const std::string& actor_class) {
    constexpr const char* COMMON_MODEL = "Vanmur";
    ActorDefGroup* group = editor.actor_def_groups.GetActorDefGroup(actor_class, false);
    if (!group)
        return;
    p.constant.clear();
    AddAll(p.constant, group->def_files);
    if (p.p_text == UNSET || (group->def_files.FindString(p.p_text) == -1 && p.p_text != COMMON_MODEL)) {
        p.p_text = COMMON_MODEL;
        PassOn(p);
    }
    group->default_def_file = p.p_text;
}

void EntityDlg::PassOn(const EntityParameter& parameter) {
    if (editor.world)
        editor.world->ChangeEntityParameter(parameter, nullptr, true);
}

void EntityDlg::PassOnPart(const EntityParameter& parameter, int part) {
    for (const int e : editor.world->entity_selection) {
        EntityParameter* own = editor.world->entity[static_cast<size_t>(e)]->GetParameterStr(parameter.name);
        if (own && own->type == parameter.type)
            TakePart(*own, parameter, part);
    }
    editor.RedrawAllViews();
    editor.MarkFileAsDirty(true);
}

EntityParameter* EntityDlg::SelectedParameter() const {
    Entity* chosen = SelectedTemplate();
    return chosen && selected_parameter >= 0 && static_cast<size_t>(selected_parameter) < chosen->parameter.size()
               ? &chosen->parameter[static_cast<size_t>(selected_parameter)]
               : nullptr;
}

bool EntityDlg::NamesAIGroup() const {
    const Entity* chosen = SelectedTemplate();
    const EntityParameter* p = SelectedParameter();
    return p && p->name == "Group" &&
           (chosen->IsType("ACTOR") || chosen->IsType("SENTRYGUN") || chosen->IsType("COUNTER"));
}

void EntityDlg::LoadAIGroups() {
    choices.clear();
    if (editor.world)
        for (const auto& group : editor.world->actor_groups)
            choices.push_back(group->name);
}

void EntityDlg::SelectParameter(int index) {
    selected_parameter = index;
    choices.clear();
    choice = -1;
    m_parameter.clear();
    m_helpline.clear();
    const EntityParameter* p = SelectedParameter();
    if (!p) {
        selected_parameter = -1;
        return;
    }
    m_parameter = ParameterText(*p, EDIT_DECIMALS);
    m_helpline = p->has_comment ? p->comment : std::string();
    if (p->type == EPT_BOOL)
        choices = {"TRUE", "FALSE"};
    else if (NamesAIGroup())
        LoadAIGroups();
    else if (p->type == EPT_CONSTANT)
        choices = p->constant;
    choice = IndexNoCase(choices, m_parameter);
}

// --- Values

bool EntityDlg::TypeValue(std::string_view text, int part) {
    EntityParameter* p = SelectedParameter();
    if (!p || !editor.world)
        return false;
    EntityParameter typed = *p;
    const int row = IndexNoCase(choices, text);
    const bool is_choice = p->type != EPT_CONSTANT || row >= 0;
    if (!is_choice ||
        !TypeParameter(typed, p->type == EPT_CONSTANT ? std::string_view(choices[static_cast<size_t>(row)]) : text)) {
        GetDesktop().MessageBox("Invalid parameter", "Marrowstead 2000");
        return false;
    }
    ChangeRecord record(*editor.world, "Change a parameter.");
    TakePart(*p, typed, part);
    FillParameterList();
    if (part == WHOLE_VALUE)
        PassOn(*p);
    else
        PassOnPart(*p, part);
    SelectParameter(selected_parameter);
    return true;
}

bool EntityDlg::SetParameter(std::string_view name, std::string_view text) {
    const Entity* chosen = SelectedTemplate();
    if (!chosen)
        return false;
    int index = chosen->GetParameterIndex(name);
    for (size_t i = 0; index == -1 && i < chosen->parameter.size(); ++i)
        if (EqualNoCase(chosen->parameter[i].name, name))
            index = static_cast<int>(i);
    if (index == -1)
        return false;
    SelectParameter(index);
    return TypeValue(text);
}

void EntityDlg::SelectChoice(int row) {
    EntityParameter* p = SelectedParameter();
    if (!p || !editor.world || row < 0 || static_cast<size_t>(row) >= choices.size())
        return;
    const auto n = static_cast<size_t>(row);
    ChangeRecord record(*editor.world, "Change a parameter.");
    if (p->type == EPT_BOOL)
        p->p_bool = row == 0;
    else if (p->type == EPT_CONSTANT) {
        for (size_t i = p->constant.size(); i <= n; ++i)
            p->constant.push_back(choices[i]); // groups, which the parameter itself does not hold
        p->p_text = choices[n];
    } else
        return;
    FillParameterList();
    PassOn(*p);
    SelectParameter(selected_parameter);
}

void EntityDlg::SetAngle(int degrees) {
    const EntityParameter* p = SelectedParameter();
    if (p && (p->type == EPT_INT || p->type == EPT_FLOAT))
        TypeValue(Format("%d", degrees));
}

void EntityDlg::ChangeName(std::string_view variable_name) {
    constexpr size_t NAME_LENGTH = 63;
    m_name = CutText(variable_name, NAME_LENGTH);
    if (!IsSelection())
        return;
    ChangeRecord record(*editor.world, "Rename entities.");
    editor.world->ChangeEntityVariableName(m_name);
    editor.MarkDirty();
}

// --- News

void EntityDlg::SelectionChanged() {
    if (const Entity* first = FirstSelectedEntity())
        SetTemplate(*first);
    else
        FillParameterList();
}

void EntityDlg::WorldReplaced() {
    selected_parameter = -1;
    UpdateControls();
}

void EntityDlg::AIGroupsChanged() {
    if (NamesAIGroup())
        SelectParameter(selected_parameter);
}
