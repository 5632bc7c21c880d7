// A definition file: named sections of commands with parameters. Most text scripts of the game have this form.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/StringList.h"

class DefFileObject {
public:
    // Reads all. A file that cannot be opened leaves no sections. What is beyond 4095 characters of a line is the next
    // line.
    explicit DefFileObject(std::string_view def_file_name);

    bool WasFound() const { return file_found; }
    bool IsValid() const { return GetSectionCount() > 0; }
    int GetSectionCount() const { return section_names.GetStringCount(); }

    // The first section of that name, in any case; the command position is reset also when there is none.
    bool OpenSection(std::string_view section_name);
    bool OpenNextSection();             // at first the first one
    const char* GetSectionName() const; // null while none is open

    bool OpenNextCommand();
    const char* GetCommandName() const; // null while none is open
    int GetCommandParamCount() const;

    // The parameters of the open command; 0 is the one behind its name. An index past the last gives false and leaves
    // the value alone, but makes a string empty.
    bool GetInt(int param_index, int32_t& value) const;
    bool GetFloat(int param_index, float& value) const;
    bool GetString(int param_index, std::string& value) const;
    bool GetBool(int param_index, bool& value) const; // "True", "Yes" and "On" in any case are true
    bool GetWord(int param_index, uint16_t& value) const;
    bool GetColor(int param_index, uint8_t (&value)[4]) const; // of a comma-separated list; a missing item is 255

    // The tokens of a command line, its name first.
    static void CutCommand(std::string_view line, StringListClass& tokens);

private:
    void ParseLine(std::string_view line, bool& in_section);
    const char* Param(int param_index) const; // null past the last

    bool file_found = false;
    StringListClass cur_command;
    StringListClass section_names;
    std::vector<StringListClass> section_lines; // one a section, file order
    int current_section_index = -1, current_command_index = -1;
};
