// The script window: edits one script against the table of commands or conditions, checks it, explains what stands
// under the caret, and completes names.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "definitions/ScriptSyntax.h"

class CInterface;

class CScriptDialog {
public:
    static constexpr const char* ALL_OBJECTS = "____ALL____";
    static constexpr const char* BRUSHES = "__BRUSHES__";

    CScriptDialog(CInterface& controller, const CScriptSyntax* syntax_table);

    void SetScript(std::string_view text) { script = text; }
    const std::string& GetScript() const { return script; }
    void SetScriptSyntax(const CScriptSyntax* syntax_table) { syntax = syntax_table; }

    std::string script;
    std::vector<std::string> type_filters; // ALL_OBJECTS, BRUSHES, then the types of named entities in capitals
    std::string type_filter = ALL_OBJECTS;
    std::vector<std::string> object_names;
    std::vector<std::string> command_names; // of the table
    bool show_duplicates = false;           // stored as a setting

    void RefreshNameList(bool update_types);
    void SetShowDuplicates(bool shown);
    int OnParse() const; // the check; boxes tell the findings. Their number, -1 after a cancel
    // What the help shows for a caret; false where it shows nothing.
    bool GetHelp(size_t caret, ScriptHelp& help) const;
    std::string Complete(size_t caret); // inserts the completion at the caret and tells it; empty: none
    // Inserts text at the caret. The caret behind it.
    size_t Insert(size_t caret, std::string_view text);
    // An entry of a list with a blank behind it.
    size_t InsertEntry(size_t caret, const std::string& entry) { return Insert(caret, entry + " "); }
    size_t InsertFile(size_t caret); // asks for it; what its path shares with the current folder is left out

private:
    std::string_view LineAt(size_t caret, int& column) const;

    CInterface& editor;
    const CScriptSyntax* syntax;
};

// A smaller script window, whose two buttons only show messages.
class CActorScriptDialog {
public:
    std::string script;
    void OnCheck() const;
    void OnAutocomplete() const;
};
