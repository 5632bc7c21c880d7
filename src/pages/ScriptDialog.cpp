#include "pages/ScriptDialog.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <unordered_set>

#include "editor/Interface.h"
#include "foundation/Settings.h"
#include "foundation/Strings.h"
#include "pages/NamedObjects.h"

namespace {

constexpr const char* DUPLICATES_VALUE = "DupNames";

bool IsNamed(const std::string& name) { return !name.empty() && !EqualNoCase(name, "none"); }

} // namespace

CScriptDialog::CScriptDialog(CInterface& controller, const CScriptSyntax* syntax_table)
    : editor(controller), syntax(syntax_table) {
    RegistryClass store;
    if (store.OpenKeyDirectory(SETTINGS_KEY))
        show_duplicates = store.GetFlag(DUPLICATES_VALUE, show_duplicates);
    for (int i = 0; syntax && i < syntax->GetCount(); ++i)
        command_names.push_back(syntax->Get(i).name);
    RefreshNameList(true);
}

void CScriptDialog::RefreshNameList(bool update_types) {
    const World& world = *editor.world;
    if (update_types) {
        type_filters = {ALL_OBJECTS, BRUSHES};
        std::set<std::string> words;
        for (const auto& e : world.entity)
            if (IsNamed(e->variable_name))
                words.insert(ToUpper(e->str_type));
        type_filters.insert(type_filters.end(), words.begin(), words.end());
        type_filter = ALL_OBJECTS;
    }
    object_names.clear();
    std::unordered_set<std::string> listed; // in lower case
    const auto add = [&](const std::string& name) {
        if (IsNamed(name) && (listed.insert(ToLower(name)).second || show_duplicates))
            object_names.push_back(name);
    };
    if (type_filter != BRUSHES)
        for (const auto& e : world.entity)
            if (type_filter == ALL_OBJECTS || e->IsType(type_filter))
                add(e->variable_name);
    if (type_filter == BRUSHES || type_filter == ALL_OBJECTS)
        for (const auto& b : world.brush)
            add(b->name);
}

void CScriptDialog::SetShowDuplicates(bool shown) {
    show_duplicates = shown;
    RegistryClass store;
    const int stored = shown ? 1 : 0;
    if (store.OpenKeyDirectory(SETTINGS_KEY))
        store.SetKeyValue(DUPLICATES_VALUE, &stored);
    RefreshNameList(false);
}

int CScriptDialog::OnParse() const {
    if (!syntax)
        return 0;
    std::set<std::string> names; // in lower case
    for (const auto& b : editor.world->brush)
        names.insert(ToLower(b->name));
    for (const auto& e : editor.world->entity)
        names.insert(ToLower(e->variable_name));
    const auto name_exists = [&names](std::string_view name) { return names.count(ToLower(name)) > 0; };
    const auto report = [](const std::string& text, bool can_stop) {
        const MessageButtons buttons = can_stop ? MessageButtons::RetryCancel : MessageButtons::Ok;
        return GetDesktop().MessageBox(text, "CheckResult", buttons) != MessageAnswer::Cancel;
    };
    const int findings = CheckScript(*syntax, script, name_exists, report);
    if (findings >= 0)
        GetDesktop().MessageBox(Format("Check ended. %d errors found.", findings), "Check result");
    return findings;
}

std::string_view CScriptDialog::LineAt(size_t caret, int& column) const {
    const std::string_view text = script;
    caret = std::min(caret, text.size());
    const size_t before = text.substr(0, caret).find_last_of("\r\n");
    const size_t start = before == std::string_view::npos ? 0 : before + 1;
    column = static_cast<int>(caret - start);
    return text.substr(start, std::min(text.find_first_of("\r\n", start), text.size()) - start);
}

bool CScriptDialog::GetHelp(size_t caret, ScriptHelp& help) const {
    int column = 0;
    const std::string_view line = LineAt(caret, column);
    return syntax && GetScriptHelp(*syntax, line, column, help);
}

std::string CScriptDialog::Complete(size_t caret) {
    if (!syntax)
        return {};
    int column = 0;
    const std::string_view line = LineAt(caret, column);
    const std::string completion = CompleteScript(*syntax, line, column, object_names);
    Insert(caret, completion);
    return completion;
}

size_t CScriptDialog::Insert(size_t caret, std::string_view text) {
    caret = std::min(caret, script.size());
    script.insert(caret, text);
    return caret + text.size();
}

size_t CScriptDialog::InsertFile(size_t caret) {
    FileQuestion question;
    question.title = "Open";
    question.filter = "All files (*.*)|*.*||";
    const auto chosen = GetDesktop().AskFile(question);
    if (!chosen)
        return caret;
    std::error_code error;
    const std::string folder = std::filesystem::current_path(error).string();
    const size_t shared = static_cast<size_t>(
        std::mismatch(chosen->begin(), chosen->end(), folder.begin(), folder.end()).first - chosen->begin());
    std::string path = chosen->substr(shared);
    std::replace(path.begin(), path.end(), '/', '\\');
    return Insert(caret, path);
}

void CActorScriptDialog::OnCheck() const { GetDesktop().MessageBox("Pokus o check", "Check"); }

void CActorScriptDialog::OnAutocomplete() const { GetDesktop().MessageBox("Pokus o autocomplete", "Autocomplete"); }
