// The check of a script, the live help and the completion of names.
#include <algorithm>

#include "definitions/ScriptSyntax.h"
#include "definitions/ScriptTokens.h"
#include "foundation/Strings.h"

namespace {

constexpr const char* FLOAT_DEFAULT = "0.f";
constexpr const char* INT_DEFAULT = "0";

std::string_view WithoutMark(std::string_view command) {
    return command.substr(!command.empty() && command[0] == '!' ? 1 : 0);
}

// Whether a parameter passes; adv, which stands behind its first token, moves on where it takes more tokens.
bool ParameterPasses(SScriptParamType type, std::string_view from_token, const std::string& token, int& adv,
                     const std::function<bool(std::string_view)>& name_exists) {
    switch (type) {
    case SSPT_STRING:
        return true;
    case SSPT_FLOAT:
        return CScriptFloat().Init(from_token, adv, FLOAT_DEFAULT);
    case SSPT_INT:
        return CScriptInt().Init(from_token, adv, INT_DEFAULT);
    case SSPT_BOOL:
        return EqualNoCase(token, "true") || EqualNoCase(token, "false");
    case SSPT_OBJECT:
        return name_exists(token);
    case SSPT_INVALID:
        break;
    }
    return false;
}

class Checker {
public:
    Checker(const CScriptSyntax& table, const std::function<bool(std::string_view)>& exists,
            const std::function<bool(const std::string&, bool)>& tell)
        : syntax(table), name_exists(exists), report(tell) {}

    bool CheckLine(std::string_view line, int number); // false after a cancel
    int errors = 0;

private:
    bool Report(const std::string& text, bool can_stop) {
        ++errors;
        return report(text, can_stop) || !can_stop;
    }

    const CScriptSyntax& syntax;
    const std::function<bool(std::string_view)>& name_exists;
    const std::function<bool(const std::string&, bool)>& report;
};

bool Checker::CheckLine(std::string_view line, int number) {
    std::string token;
    int adv;
    if (!CScriptSyntax::GetToken(line, token, adv))
        return true;
    const int index = syntax.IndexOf(WithoutMark(token));
    if (index == -1)
        return Report(Format("Unrecognized command \"%s\" at line %d", token.c_str(), number), true);
    const SScriptTerm& term = syntax.Get(index);
    const int expected = static_cast<int>(term.params.size());
    int count = 0;
    for (int start = adv; CScriptSyntax::AddNextToken(line, token, adv); start = adv, ++count) {
        if (count == expected)
            return Report(Format("Command %s has too many parameters at line %d", term.name.c_str(), number), true);
        if (token.substr(0, 1) == "?")
            continue;
        int used = adv - start;
        if (!ParameterPasses(term.params[static_cast<size_t>(count)].type, line.substr(static_cast<size_t>(start)),
                             token, used, name_exists))
            Report(Format("Invalid paramerer %d : \"%s\" at line %d", count + 1, token.c_str(), number), false);
        adv = start + used;
    }
    if (count < expected)
        Report(Format("Command %s has %d parameters, but only %d of them were specified at line %d", term.name.c_str(),
                      expected, count, number),
               false);
    return true;
}

// A line with the caret in it.
struct CaretLine {
    ScriptTokenPlace command; // without its mark
    int term = -1;            // -1: unknown
    bool in_command = false;
    // Behind the command: the parameter under the caret, and its token, empty at the caret between two tokens.
    size_t parameter = 0;
    ScriptTokenPlace under_caret;
};

// False when the line has no command.
bool ReadCaretLine(const CScriptSyntax& syntax, std::string_view line, size_t caret, CaretLine& read) {
    if (!read.command.Find(line, 0))
        return false;
    const size_t start = read.command.start;
    if (line.substr(start, 1) == "!")
        ++read.command.start;
    const std::string_view name = line.substr(read.command.start, read.command.end - read.command.start);
    read.term = syntax.IndexOf(name);
    read.in_command = caret <= read.command.next;
    if (read.in_command) {
        read.under_caret = read.command;
        return true;
    }
    ScriptTokenPlace place = read.command;
    while (place.Find(line, place.next) && place.next < caret)
        ++read.parameter;
    if (caret < place.start)
        place.start = place.end = caret;
    read.under_caret = place;
    if (read.under_caret.start == read.under_caret.end)
        read.under_caret.start = read.under_caret.end = caret;
    return true;
}

std::string SyntaxText(const SScriptTerm& term) {
    std::string text = term.name;
    for (size_t p = 0; p < term.params.size(); ++p)
        text += (p == 0 ? "   " : ",   ") + term.params[p].name;
    return text;
}

bool EndsWithNoCase(std::string_view text, std::string_view ending) {
    return text.size() >= ending.size() && EqualNoCase(text.substr(text.size() - ending.size()), ending);
}

// The common part of what the candidates have between pre and post.
class Completion {
public:
    Completion(std::string_view before, std::string_view behind) : pre(before), post(behind) {}

    void Add(std::string_view candidate) {
        if ((found && text.empty()) || !StartsWithNoCase(candidate, pre) || !EndsWithNoCase(candidate, post))
            return;
        const size_t ends = pre.size() + post.size();
        std::string middle(candidate.substr(pre.size(), candidate.size() - std::min(candidate.size(), ends)));
        if (post.empty())
            middle += ' ';
        if (found) {
            const auto differs = std::mismatch(text.begin(), text.end(), middle.begin(), middle.end());
            text.erase(differs.first, text.end());
        } else
            text = std::move(middle);
        found = true;
    }
    const std::string& Text() const { return text; }

private:
    std::string_view pre, post;
    std::string text;
    bool found = false;
};

} // namespace

int CheckScript(const CScriptSyntax& syntax, std::string_view script,
                const std::function<bool(std::string_view)>& name_exists,
                const std::function<bool(const std::string& text, bool can_stop)>& report) {
    Checker checker(syntax, name_exists, report);
    std::string line;
    for (int number = 1; CScriptSyntax::GetLine(script, line); ++number)
        if (!checker.CheckLine(line, number))
            return -1;
    return checker.errors;
}

bool GetScriptHelp(const CScriptSyntax& syntax, std::string_view line, int column, ScriptHelp& help) {
    CaretLine read;
    const size_t caret = static_cast<size_t>(std::max(column, 0));
    if (!ReadCaretLine(syntax, line, caret, read) || read.term == -1)
        return false;
    const SScriptTerm& term = syntax.Get(read.term);
    help.syntax = SyntaxText(term);
    help.description.clear();
    if (read.in_command)
        help.description = term.desc;
    else if (read.parameter < term.params.size()) {
        const SScriptParam& param = term.params[read.parameter];
        help.description = Format("%s (%s) :   %s", param.name.c_str(), SSPTString[param.type], param.desc.c_str());
    }
    return true;
}

std::string CompleteScript(const CScriptSyntax& syntax, std::string_view line, int column,
                           const std::vector<std::string>& object_names) {
    const size_t caret = std::min(static_cast<size_t>(std::max(column, 0)), line.size());
    CaretLine read;
    if (!ReadCaretLine(syntax, line, caret, read) || caret < read.under_caret.start || caret > read.under_caret.end)
        return {};
    const bool complete_command = read.term == -1 && read.in_command;
    if (!complete_command) {
        if (read.term == -1 || read.in_command)
            return {};
        const std::vector<SScriptParam>& params = syntax.Get(read.term).params;
        if (read.parameter >= params.size() || params[read.parameter].type != SSPT_OBJECT)
            return {};
    }
    const ScriptTokenPlace& place = read.under_caret;
    Completion completion(line.substr(place.start, caret - place.start), line.substr(caret, place.end - caret));
    if (complete_command)
        for (int t = 0; t < syntax.GetCount(); ++t)
            completion.Add(syntax.Get(t).name);
    else
        for (const std::string& name : object_names)
            completion.Add(name);
    return completion.Text();
}
