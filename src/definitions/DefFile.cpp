#include "definitions/DefFile.h"

#include "definitions/DefFileStorage.h"
#include "definitions/Numbers.h"
#include "files/FileObject.h"
#include "foundation/Strings.h"

namespace {

constexpr int LONGEST_LINE = 4095;
constexpr const char* BLANKS = " \t";

std::string_view Trimmed(std::string_view text) {
    const size_t start = std::min(text.find_first_not_of(BLANKS), text.size());
    return text.substr(start, text.find_last_not_of(BLANKS) + 1 - start);
}

} // namespace

DefFileObject::DefFileObject(std::string_view def_file_name) {
    bool in_section = false;
    std::string line;
    if (DFS_Item* item = def_file_storage.OpenDefFileItem(def_file_name)) {
        file_found = true;
        while (DefFileStorage::GetDFSNextLine(item, line) >= 0)
            ParseLine(line, in_section);
        return;
    }
    FileObject file(def_file_name, FO_Open);
    file_found = file.IsValid();
    while (file_found && file.ReadLine(line, RLTF_TruncateAll, LONGEST_LINE) >= 0)
        ParseLine(line, in_section);
}

void DefFileObject::ParseLine(std::string_view line, bool& in_section) {
    line = Trimmed(line.substr(0, line.find('\0')));
    if (line.empty() || line[0] == '{' || line[0] == '/')
        return;
    if (line[0] == '#') {
        section_names.AddString(line.substr(1));
        section_lines.emplace_back();
        in_section = true;
    } else if (line[0] == '}')
        in_section = false;
    else if (in_section)
        section_lines.back().AddString(line);
}

bool DefFileObject::OpenSection(std::string_view section_name) {
    current_command_index = -1;
    cur_command.ResetList();
    const int found = section_names.FindString(section_name);
    if (found < 0)
        return false;
    current_section_index = found;
    return true;
}

bool DefFileObject::OpenNextSection() {
    current_command_index = -1;
    cur_command.ResetList();
    if (current_section_index + 1 >= GetSectionCount())
        return false;
    ++current_section_index;
    return true;
}

const char* DefFileObject::GetSectionName() const { return section_names.GetString(current_section_index); }

bool DefFileObject::OpenNextCommand() {
    if (current_section_index < 0)
        return false;
    const StringListClass& lines = section_lines[static_cast<size_t>(current_section_index)];
    if (current_command_index + 1 >= lines.GetStringCount())
        return false;
    CutCommand(lines.GetString(++current_command_index), cur_command);
    return true;
}

const char* DefFileObject::GetCommandName() const { return cur_command.GetString(0); }

int DefFileObject::GetCommandParamCount() const { return std::max(cur_command.GetStringCount() - 1, 0); }

void DefFileObject::CutCommand(std::string_view line, StringListClass& tokens) {
    tokens.ResetList();
    for (size_t at = line.find_first_not_of(BLANKS); at < line.size(); at = line.find_first_not_of(BLANKS, at)) {
        const char first = line[at];
        const char* ends = ",=;";
        if (first == '"' || first == '\'' || first == '(') {
            ends = first == '(' ? ")" : first == '"' ? "\"" : "'";
            ++at;
        }
        const size_t end = std::min(line.find_first_of(ends, at), line.size());
        const std::string_view token = line.substr(at, end - at);
        tokens.AddString(token.substr(0, token.find_last_not_of(BLANKS) + 1));
        at = std::min(line.find_first_not_of(" ,=", std::min(end + 1, line.size())), line.size());
    }
}

const char* DefFileObject::Param(int param_index) const {
    return param_index >= 0 && param_index < GetCommandParamCount() ? cur_command.GetString(param_index + 1) : nullptr;
}

bool DefFileObject::GetInt(int param_index, int32_t& value) const {
    const char* param = Param(param_index);
    if (param)
        value = ParseInt(param);
    return param != nullptr;
}

bool DefFileObject::GetFloat(int param_index, float& value) const {
    const char* param = Param(param_index);
    if (param)
        value = ParseFloat(param);
    return param != nullptr;
}

bool DefFileObject::GetString(int param_index, std::string& value) const {
    const char* param = Param(param_index);
    value = param ? param : "";
    return param != nullptr;
}

bool DefFileObject::GetBool(int param_index, bool& value) const {
    const char* param = Param(param_index);
    if (param)
        value = EqualNoCase(param, "True") || EqualNoCase(param, "Yes") || EqualNoCase(param, "On");
    return param != nullptr;
}

bool DefFileObject::GetWord(int param_index, uint16_t& value) const {
    const char* param = Param(param_index);
    if (param)
        value = static_cast<uint16_t>(ParseInt(param));
    return param != nullptr;
}

bool DefFileObject::GetColor(int param_index, uint8_t (&value)[4]) const {
    const char* param = Param(param_index);
    if (!param)
        return false;
    std::string_view rest = param;
    for (uint8_t& item : value) {
        item = rest.empty() ? 255 : static_cast<uint8_t>(ParseInt(rest));
        rest.remove_prefix(std::min(rest.find(','), rest.size()));
        if (!rest.empty())
            rest.remove_prefix(1);
    }
    return true;
}
