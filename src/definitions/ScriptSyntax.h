// The commands that the game's scripts know, read from a definition file, and the tokens of a script. The editor does
// not run scripts: it checks them, completes names, and shows what each command and parameter means.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

enum SScriptParamType { SSPT_INVALID, SSPT_STRING, SSPT_FLOAT, SSPT_INT, SSPT_BOOL, SSPT_OBJECT };
extern const char* const SSPTString[6]; // the word of each type

struct SScriptParam {
    std::string name, desc, default_value;
    SScriptParamType type = SSPT_INVALID;
};

struct SScriptTerm {
    std::string name, desc;
    std::vector<SScriptParam> params;
};

class CScriptSyntax {
public:
    CScriptSyntax() = default;
    // An invalid file leaves no terms. A parameter that lacks one of its fields ends the reading; a notice tells it.
    explicit CScriptSyntax(std::string_view filename);

    int GetCount() const { return static_cast<int>(terms.size()); }
    const SScriptTerm& Get(int i) const { return terms[static_cast<size_t>(i)]; }
    int IndexOf(std::string_view name) const; // any case; -1 if unknown

    // One token of a line from adv on, which it advances. False when there is none. trimmed, if given, receives the
    // separators and comments in front of it. Quotes are no part of a token; was_quoted tells of them.
    static bool AddNextToken(std::string_view str, std::string& token, int& adv, std::string* trimmed = nullptr,
                             bool* was_quoted = nullptr);
    static bool GetToken(std::string_view str, std::string& token, int& adv, std::string* trimmed = nullptr) {
        adv = 0;
        return AddNextToken(str, token, adv, trimmed);
    }
    // One line of a script, cut to 1000 characters; string moves behind the line ends. False at the end of the text.
    static bool GetLine(std::string_view& string, std::string& line);

    // A script of the older style, in which terms were written with underscores, in the table's spelling.
    std::string ConvertOldScript(std::string_view old_script) const;

private:
    std::vector<SScriptTerm> terms; // file order
};

// One parsed parameter of a script. Init parses it from the start of script and tells in adv the characters used;
// defvalue stands for a "?".
class CScriptValue {
public:
    enum EType { ENONE = 0, EVALUE = 1, ERAND = 2 };
    virtual ~CScriptValue() = default;
    virtual bool Init(std::string_view script, int& adv, const char* defvalue) = 0;

    EType type = ENONE;
};

class CScriptInt : public CScriptValue {
public:
    bool Init(std::string_view script, int& adv, const char* defvalue) override;
    int GetInt() const; // draws from the generator for a random value
    int arg1 = 0, arg2 = 0;
};

class CScriptFloat : public CScriptValue {
public:
    bool Init(std::string_view script, int& adv, const char* defvalue) override;
    float GetFloat() const;
    float arg1 = 0, arg2 = 0;
};

class CScriptString : public CScriptValue {
public:
    bool Init(std::string_view script, int& adv, const char* defvalue) override;
    std::string GetString() const;
    std::string string;
    int arg1 = 0, arg2 = 0;
};

bool GetBoolParam(std::string_view script, int& adv, bool& param, const char* defvalue);

// The check of a script. name_exists: whether an object of that name stands in the level, in any case. report shows one
// finding; can_stop: the box offers retry and cancel, and false means cancel. Returns the number of findings, or -1
// after a cancel.
int CheckScript(const CScriptSyntax& syntax, std::string_view script,
                const std::function<bool(std::string_view)>& name_exists,
                const std::function<bool(const std::string& text, bool can_stop)>& report);

struct ScriptHelp {
    std::string syntax;      // the command and its parameters' names
    std::string description; // of what stands under the caret
};
// What the live help shows for a line of script with the caret at a column. False when the first token is no known
// term.
bool GetScriptHelp(const CScriptSyntax& syntax, std::string_view line, int column, ScriptHelp& help);

// The text to insert at the caret, empty for none. object_names: the candidates for an object parameter.
std::string CompleteScript(const CScriptSyntax& syntax, std::string_view line, int column,
                           const std::vector<std::string>& object_names);
