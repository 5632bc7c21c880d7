// The editors that the entity page opens for a parameter, and the saved templates.
#include <algorithm>

#include "editor/EntityScripts.h"
#include "editor/Interface.h"
#include "files/FileFind.h"
#include "files/FileObject.h"
#include "foundation/Paths.h"
#include "foundation/Strings.h"
#include "pages/EntityDlg.h"
#include "pages/FileCopy.h"
#include "pages/ParameterText.h"

namespace {

constexpr const char* TEMPLATE_FOLDER = "Marrowstead\\Templates";

struct BrowseRoot {
    const char* type_word;
    const char* root;
    const char* pattern; // null: from the value
};
constexpr BrowseRoot BROWSE_ROOTS[] = {
    {"POINT_LIGHT", "Textures", nullptr},   {"CORONA", "Textures", nullptr},
    {"SPOTLIGHT_RAY", "Textures", nullptr}, {"WEATHER_EFFECT", "Textures", nullptr},
    {"KEY_TRIGGER", "Sounds", nullptr},     {"BASIC_DOOR", "Sounds", nullptr},
    {"AMBIENT_SOUND", "Sounds", nullptr},   {"GLOBAL_AMBIENT_SOUND", "Sounds", nullptr},
    {"RANDOM_SOUND", "Sounds", nullptr},    {"MOVE_SOUND", "Sounds", nullptr},
    {"SENTRY_CAMERA", "Sounds", nullptr},   {"PARTICLE", "Models\\Particles", "*.psf"},
    {"MUSIC", "Scripts\\Music", "*.mus"},   {"FIGHT_POINT", "Vanmanim", "*.ani"},
    {"PHYSICS_PLAYBACK", "Anim", "*.ppb"},  {"CABLE", "Scripts\\Materials", "*.mtl"},
};

bool IsFileName(const std::string& name) {
    return name.find_first_of("\\/:*?\"<>|") == std::string::npos && name != "." && name != "..";
}

// A line of a saved template: a name up to a blank or "=", and the value behind all blanks, tabs and "=".
void CutLine(const std::string& line, std::string& name, std::string& value) {
    const size_t end = std::min(line.find_first_of(" ="), line.size());
    name = line.substr(0, end);
    const size_t start = line.find_first_not_of(" \t=", end);
    value = start == std::string::npos ? std::string() : line.substr(start);
}

} // namespace

ParameterEditor EntityDlg::EditorOfParameter() const {
    const EntityParameter* p = SelectedParameter();
    if (!p)
        return ParameterEditor::None;
    if (IsScriptParameter(*p))
        return ParameterEditor::CommandScript;
    if (p->type == EPT_STRING && EqualNoCase(p->name, "conditions"))
        return ParameterEditor::ConditionScript;
    return p->type == EPT_COLOR      ? ParameterEditor::Color
           : p->type == EPT_FILENAME ? ParameterEditor::File
           : p->type == EPT_BOOL     ? ParameterEditor::Toggled
                                     : ParameterEditor::Text;
}

ParameterEditor EntityDlg::OnDblclkParameterlist() {
    const ParameterEditor opened = EditorOfParameter();
    if (opened == ParameterEditor::Toggled)
        TypeValue(SelectedParameter()->p_bool ? "FALSE" : "TRUE");
    else if (opened == ParameterEditor::Text)
        editor.MarkDirty();
    return opened;
}

const CScriptSyntax* EntityDlg::ScriptSyntax(ParameterEditor editor_kind) const {
    return editor_kind == ParameterEditor::ConditionScript ? editor.condition_syntax.get()
           : editor_kind == ParameterEditor::CommandScript ? editor.command_syntax.get()
                                                           : nullptr;
}

bool EntityDlg::TakeScript(std::string_view text) {
    const EntityParameter* p = SelectedParameter();
    return p && p->type == EPT_STRING && TypeValue(text);
}

bool EntityDlg::TakeFile(std::string_view path) {
    const EntityParameter* p = SelectedParameter();
    return p && p->type == EPT_FILENAME && TypeValue(path);
}

void EntityDlg::OnColor() {
    EntityParameter* p = SelectedParameter();
    if (!p || p->type != EPT_COLOR)
        return;
    const COLOR& now = p->p_color;
    const auto chosen =
        GetDesktop().AskColor(ChannelToByte(now.r) << 16 | ChannelToByte(now.g) << 8 | ChannelToByte(now.b));
    if (chosen)
        TypeValue(
            Format("%u, %u, %u, %u", *chosen >> 16 & 255, *chosen >> 8 & 255, *chosen & 255, ChannelToByte(now.a)));
}

BrowseRule EntityDlg::GetBrowseRule() const {
    const EntityParameter* p = SelectedParameter();
    BrowseRule rule{".\\", "*", {}};
    if (!p)
        return rule;
    const std::string file = FilePart(p->p_text);
    const size_t dot = file.rfind('.');
    if (dot != std::string::npos)
        rule.pattern += file.substr(dot);
    rule.default_dir = DirectoryPart(p->p_text);
    for (const BrowseRoot& known : BROWSE_ROOTS)
        if (SelectedTemplate()->IsType(known.type_word)) {
            rule.root = known.root;
            if (known.pattern)
                rule.pattern = known.pattern;
            break;
        }
    return rule;
}

// --- Saved templates

std::string EntityDlg::SavedTemplateFolder() const {
    return std::string(TEMPLATE_FOLDER) + "\\" + SelectedTemplate()->str_type;
}

void EntityDlg::RefreshSavedTemplates(bool changed) {
    if (!changed && EqualNoCase(SelectedTemplate()->str_type, saved_templates_of))
        return; // each selection comes here: the folder is read once
    saved_templates_of = SelectedTemplate()->str_type;
    saved_templates.clear();
    FileFindObject search(SavedTemplateFolder(), "*", FFO_FileFind, true);
    while (const FFOInfo* found = search.FindNext())
        saved_templates.push_back(found->name);
}

void EntityDlg::OnSavetemplate() {
    const Entity* chosen = SelectedTemplate();
    if (!chosen)
        return;
    FormQuestion question{"Get template file name:", {{}}};
    question.fields[0].label = "Name:";
    question.fields[0].max_length = 63;
    std::string path;
    do {
        if (!GetDesktop().AskForm(question) || question.fields[0].value.empty())
            return;
        if (!IsFileName(question.fields[0].value)) {
            GetDesktop().MessageBox("A file cannot have this name.", "Error");
            return;
        }
        path = SavedTemplateFolder() + "\\" + question.fields[0].value;
    } while (FileObject::FileExists(path) &&
             GetDesktop().MessageBox("Template with specified name already exists! Do you\nwant to ovewrite it?",
                                     "Overwrite confirmation", MessageButtons::YesNo) != MessageAnswer::Yes);
    std::string text, error;
    for (const EntityParameter& p : chosen->parameter)
        text += p.name + " = " + ParameterText(p, EDIT_DECIMALS) + "\r\n";
    if (!WriteTextFile(path, text, error))
        GetDesktop().MessageBox(error, "Error");
    RefreshSavedTemplates(true);
    UpdateControls();
}

void EntityDlg::LoadSavedTemplate(int index) {
    Entity* chosen = SelectedTemplate();
    if (!chosen || index < 0 || static_cast<size_t>(index) >= saved_templates.size())
        return;
    FileObject file(SavedTemplateFolder() + "\\" + saved_templates[static_cast<size_t>(index)], FO_Open);
    if (!file.IsValid())
        return;
    ChangeRecord record(*editor.world, "Recall a template.");
    std::string line, name, value;
    while (file.ReadLine(line, RLTF_TruncateEnd) >= 0) {
        CutLine(line, name, value);
        if (EntityParameter* p = chosen->GetParameterStr(name)) {
            SetParameterValue(*p, value);
            editor.world->ChangeEntityParameter(*p, nullptr, false);
        }
    }
    FillParameterList();
    SelectParameter(selected_parameter);
    editor.RedrawAllViews();
    editor.MarkDirty();
}
