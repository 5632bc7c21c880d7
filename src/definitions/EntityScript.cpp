#include "definitions/EntityScript.h"

#include <algorithm>
#include <map>

#include "foundation/Strings.h"

namespace {

constexpr std::string_view DEFINE = "%define";

bool IsLetterOrDigit(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); }
bool IsWordCharacter(char c) { return IsLetterOrDigit(c) || c == '_'; }
bool IsControlOrBlank(char c) { return static_cast<unsigned char>(c) <= ' ' || c == 0x7F; }
bool IsNameEnd(char c) { return IsControlOrBlank(c) || static_cast<unsigned char>(c) > 0x7F; }
bool IsNumberCharacter(char c) { return (c >= '0' && c <= '9') || c == '.' || c == '-' || c == '+' || c == 'e'; }
bool IsNumberStart(char c) { return IsNumberCharacter(c) && c != 'e' && c != '+'; }

size_t WordEnd(std::string_view text, size_t at) {
    while (at < text.size() && IsWordCharacter(text[at]))
        ++at;
    return at;
}

// A value ends before the first blank behind something else, outside of all braces.
size_t ValueEnd(std::string_view text, size_t at) {
    int depth = 0;
    bool begun = false;
    for (; at < text.size(); ++at) {
        const bool blank = IsControlOrBlank(text[at]);
        if (blank && begun && depth <= 0)
            break;
        begun = begun || !blank;
        depth += text[at] == '{' ? 1 : text[at] == '}' ? -1 : 0;
    }
    return at;
}

int CountLines(std::string_view text) { return static_cast<int>(std::count(text.begin(), text.end(), '\n')); }

} // namespace

bool ExpandedScript::Append(std::string_view piece, int line) {
    if (piece.empty())
        return true;
    if (text.size() + piece.size() > LARGEST)
        return false;
    marks.push_back({text.size(), line});
    text += piece;
    return true;
}

bool ExpandedScript::Expand(std::string_view source) {
    source = source.substr(0, source.find(END_MARK));
    struct Range {
        size_t start, end;
    };
    std::vector<Range> definitions; // in the source
    std::map<std::string, std::string> macros;
    for (size_t at = source.find(DEFINE); at < source.size(); at = source.find(DEFINE, at)) {
        const size_t start = at;
        at += DEFINE.size();
        const size_t dollar = std::min(source.find_first_not_of(" \t", at), source.size());
        if (dollar == source.size() || source[dollar] != '$')
            continue;
        const size_t name_end = WordEnd(source, dollar + 1);
        at = ValueEnd(source, name_end);
        macros[ToLower(source.substr(dollar + 1, name_end - dollar - 1))] = source.substr(name_end, at - name_end);
        definitions.push_back({start, at});
    }
    if (definitions.empty())
        return Append(source, 1);

    int line = 1;
    size_t at = 0;
    auto definition = definitions.begin();
    while (at < source.size()) {
        const size_t removed = definition == definitions.end() ? source.size() : definition->start;
        const size_t stop = std::min(source.find('$', at), removed);
        const std::string_view piece = source.substr(at, stop - at);
        if (!Append(piece, line))
            return false;
        line += CountLines(piece);
        size_t next = source.size();
        if (stop < removed) {
            const size_t name_end = WordEnd(source, stop + 1);
            const auto macro = macros.find(ToLower(source.substr(stop + 1, name_end - stop - 1)));
            if (macro != macros.end() && !Append(macro->second, line))
                return false;
            // The character behind the name goes too, unless a definition begins there.
            next = std::min({name_end + 1, removed, source.size()});
        } else if (definition != definitions.end()) {
            next = definition->end;
            ++definition;
        }
        line += CountLines(source.substr(stop, next - stop));
        at = next;
    }
    return true;
}

int ExpandedScript::LineAt(size_t position) const {
    const auto behind = std::upper_bound(marks.begin(), marks.end(), position,
                                         [](size_t p, const Mark& mark) { return p < mark.position; });
    if (behind == marks.begin())
        return 1;
    const Mark& mark = *(behind - 1);
    return mark.line + CountLines(std::string_view(text).substr(mark.position, position - mark.position));
}

bool ScriptScanner::SkipComment() {
    const std::string_view rest = text.substr(at);
    if (!rest.starts_with("//") && !rest.starts_with("/*"))
        return false;
    const bool line_comment = rest[1] == '/';
    const size_t end = rest.find(line_comment ? "\n" : "*/", 2);
    at = end == std::string_view::npos ? text.size() : at + end + (line_comment ? 1 : 2);
    return true;
}

bool ScriptScanner::FindBehind(char wanted) {
    while (!AtEnd())
        if (!SkipComment() && text[at++] == wanted)
            return true;
    return false;
}

bool ScriptScanner::FindHash() { return FindBehind('#'); }

bool ScriptScanner::FindBlockStart() { return FindBehind('{'); }

ScriptToken ScriptScanner::FindStringStart() {
    while (!AtEnd()) {
        if (SkipComment())
            continue;
        const char c = text[at];
        if (IsLetterOrDigit(c) || c == '-' || c == '.')
            return ScriptToken::Found;
        ++at;
        if (c == '"')
            return ScriptToken::Found;
        if (c == '}')
            return ScriptToken::BlockEnd;
    }
    return ScriptToken::TextEnd;
}

bool ScriptScanner::NextNumber(std::string& number) {
    constexpr std::string_view ENDS_SEARCH = ";}#\"";
    while (!AtEnd() && !IsNumberStart(text[at])) {
        if (SkipComment())
            continue;
        if (IsLetterOrDigit(text[at]) || ENDS_SEARCH.find(text[at]) != std::string_view::npos)
            return false;
        ++at;
    }
    number = TakeWhile([](char c) { return !IsNumberCharacter(c); });
    return !number.empty();
}

bool ScriptScanner::EnterList() {
    const size_t start = at;
    while (!AtEnd()) {
        if (SkipComment())
            continue;
        const char c = text[at++];
        if (c == '{')
            return true;
        if (IsLetterOrDigit(c) || c == '}' || c == '"' || c == '#')
            break;
    }
    at = start;
    return false;
}

template <class IsEnd>
std::string ScriptScanner::TakeWhile(IsEnd is_end) {
    const size_t start = at;
    while (!AtEnd() && !is_end(text[at]))
        ++at;
    return std::string(text.substr(start, at - start));
}

std::string ScriptScanner::TakeWord() {
    std::string word = TakeWhile([](char c) { return !IsWordCharacter(c); });
    if (word.empty() && !AtEnd())
        ++at;
    return word;
}

std::string ScriptScanner::TakeName() { return TakeWhile(IsNameEnd); }

std::string ScriptScanner::TakeFile() {
    std::string file = TakeWhile([](char c) { return IsNameEnd(c) || c == ')' || c == '"'; });
    if (Peek() == '"')
        ++at;
    return file;
}

std::string ScriptScanner::TakeParameterName() {
    return TakeWhile([](char c) { return IsControlOrBlank(c) || c == ';'; });
}

std::string ScriptScanner::TakeItem() {
    std::string item =
        TakeWhile([](char c) { return IsControlOrBlank(c) || c == ';' || c == ',' || c == '}' || c == '"'; });
    if (Peek() == '"')
        ++at;
    return item;
}

bool ScriptScanner::TakeAngled(std::string& value) {
    const size_t open = text.find_first_of("<#", at);
    const size_t close = open < text.size() && text[open] == '<' ? text.find('>', open) : std::string_view::npos;
    if (close == std::string_view::npos)
        return false;
    at = open + 1;
    SkipBlanks();
    value = text.substr(at, std::max(at, close) - at);
    while (!value.empty() && IsControlOrBlank(value.back()))
        value.pop_back();
    at = close + 1;
    return true;
}

std::string_view ScriptScanner::TakeUntil(std::string_view ends) {
    const size_t start = at;
    at = std::min(text.find_first_of(ends, start), text.size());
    return text.substr(start, at - start);
}

void ScriptScanner::SkipBlanks() {
    while (!AtEnd() && IsControlOrBlank(text[at]))
        ++at;
}

void ScriptScanner::SkipSpaces() {
    while (Peek() == ' ' || Peek() == '\t')
        ++at;
}

bool ScriptScanner::SkipText(std::string_view expected) {
    if (!text.substr(at).starts_with(expected))
        return false;
    at += expected.size();
    return true;
}

bool ScriptScanner::FindAssignment() {
    at = std::min(text.find_first_of("=;", at), text.size());
    if (Peek() != '=')
        return false;
    ++at;
    return true;
}

bool ScriptScanner::TakeLineComment(std::string& comment) {
    at = std::min(text.find_first_of("/\n}", at), text.size());
    if (Peek() != '/')
        return false;
    at = std::min(at + 2, text.size());
    comment = TakeUntil("\r\n");
    return true;
}

bool ScriptScanner::LineHasListFirst() const {
    const size_t found = text.find_first_of("{/\n", at);
    return found != std::string_view::npos && text[found] == '{';
}
