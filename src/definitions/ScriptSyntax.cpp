#include "definitions/ScriptSyntax.h"

#include <algorithm>

#include "definitions/DefFile.h"
#include "definitions/ScriptTokens.h"
#include "foundation/Desktop.h"
#include "foundation/Strings.h"

const char* const SSPTString[6] = {"Invalid", "String", "Float", "Int", "Bool", "Object"};

namespace {

SScriptParamType TypeOf(std::string_view word) {
    for (int type = SSPT_STRING; type <= SSPT_OBJECT; ++type)
        if (EqualNoCase(word, SSPTString[type]))
            return static_cast<SScriptParamType>(type);
    return SSPT_INVALID;
}

bool IsSeparator(char c) { return IsScriptBlank(c) || c == ',' || c == ';'; }

bool EndsToken(char c) { return IsSeparator(c) || IsScriptLineEnd(c) || c == '(' || c == ')'; }

// Reads one term of the open section. False when a parameter lacks a field.
bool ReadTerm(DefFileObject& file, SScriptTerm& term) {
    while (file.OpenNextCommand()) {
        const char* name = file.GetCommandName();
        if (!name)
            continue;
        if (EqualNoCase(name, "!desc")) {
            file.GetString(0, term.desc);
            continue;
        }
        SScriptParam param;
        param.name = name;
        std::string type;
        if (!file.GetString(0, type) || !file.GetString(1, param.default_value) || !file.GetString(2, param.desc))
            return false;
        param.type = TypeOf(type);
        term.params.push_back(std::move(param));
    }
    return true;
}

// What a term is found by: older scripts write underscores between its words.
std::string WithoutUnderscores(std::string_view token) {
    std::string joined(token);
    std::erase(joined, '_');
    return joined;
}

// True for a string that would not stay one token without its quotes.
bool NeedsQuotes(std::string_view text) {
    return text.empty() || text.substr(0, 2) == "//" || std::any_of(text.begin(), text.end(), EndsToken);
}

} // namespace

bool ScriptTokenPlace::Find(std::string_view text, size_t from) {
    size_t at = std::min(from, text.size());
    while (at < text.size() && IsSeparator(text[at]))
        ++at;
    if (text.substr(at, 2) == "//")
        while (at < text.size() && !IsScriptLineEnd(text[at]))
            ++at;
    start = end = next = at;
    quoted = false;
    if (at == text.size() || IsScriptLineEnd(text[at]))
        return false;
    if (text[at] == '"') {
        quoted = true;
        start = end = at + 1;
        while (end < text.size() && text[end] != '"' && !IsScriptLineEnd(text[end]))
            ++end;
        next = end < text.size() && text[end] == '"' ? end + 1 : end;
        return true;
    }
    do
        ++end;
    while (text[at] != '(' && text[at] != ')' && end < text.size() && !EndsToken(text[end]));
    next = end;
    return true;
}

CScriptSyntax::CScriptSyntax(std::string_view filename) {
    DefFileObject file(filename);
    while (file.OpenNextSection()) {
        SScriptTerm term;
        term.name = file.GetSectionName();
        if (!ReadTerm(file, term)) {
            NoticeOnce(Format("%.*s: a parameter of \"%s\" lacks its type, default or description; the commands from "
                              "there on are left out",
                              static_cast<int>(filename.size()), filename.data(), term.name.c_str()));
            return;
        }
        terms.push_back(std::move(term));
    }
}

int CScriptSyntax::IndexOf(std::string_view name) const {
    const auto found = std::find_if(terms.begin(), terms.end(),
                                    [name](const SScriptTerm& term) { return EqualNoCase(term.name, name); });
    return found == terms.end() ? -1 : static_cast<int>(found - terms.begin());
}

bool CScriptSyntax::AddNextToken(std::string_view str, std::string& token, int& adv, std::string* trimmed,
                                 bool* was_quoted) {
    const size_t from = std::min(static_cast<size_t>(std::max(adv, 0)), str.size());
    ScriptTokenPlace place;
    const bool found = place.Find(str, from);
    const size_t token_start = place.start - (place.quoted ? 1 : 0);
    if (trimmed)
        *trimmed = str.substr(from, token_start - from);
    if (was_quoted)
        *was_quoted = place.quoted;
    token = str.substr(place.start, std::min(place.end - place.start, LONGEST_SCRIPT_TOKEN));
    adv = static_cast<int>(place.next);
    return found;
}

bool CScriptSyntax::GetLine(std::string_view& string, std::string& line) {
    if (string.empty())
        return false;
    const auto end = static_cast<size_t>(std::find_if(string.begin(), string.end(), IsScriptLineEnd) - string.begin());
    line = string.substr(0, std::min(end, LONGEST_SCRIPT_TOKEN));
    size_t next = end + 1;
    if (string.substr(std::min(end, string.size()), 2) == "\r\n")
        ++next;
    string.remove_prefix(std::min(next, string.size()));
    return true;
}

std::string CScriptSyntax::ConvertOldScript(std::string_view old_script) const {
    std::string converted;
    size_t at = 0;
    while (at < old_script.size()) {
        ScriptTokenPlace place;
        if (!place.Find(old_script, at)) {
            // The line end itself too, so that the next line is reached.
            const size_t behind = std::min(place.next + 1, old_script.size());
            converted += old_script.substr(at, behind - at);
            at = behind;
            continue;
        }
        converted += old_script.substr(at, place.start - (place.quoted ? 1 : 0) - at);
        const std::string_view token = old_script.substr(place.start, place.end - place.start);
        const int term = IndexOf(WithoutUnderscores(token));
        if (term != -1)
            converted += Get(term).name;
        else if (place.quoted && NeedsQuotes(token))
            converted.append("\"").append(token).append("\"");
        else
            converted += token;
        at = place.next;
    }
    return converted;
}
