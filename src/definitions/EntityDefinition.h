// The grammar of entity definitions over an expanded script.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "definitions/EntityScript.h"
#include "scene/Entity.h"

class EntityDefinitionReader {
public:
    EntityDefinitionReader(std::string_view file, const ExpandedScript& expanded,
                           std::vector<std::unique_ptr<Entity>>& target)
        : file_name(file), script(expanded), scanner(expanded.Text()), templates(target) {}

    void ReadAll(); // up to the end, or the first definition that cannot be completed

private:
    enum class Step { Goes, Completed, Failed };

    bool ReadDefinition(); // behind its '#'
    bool ReadHead();
    bool TakeBase();
    Step ReadLabel();
    bool ReadEditorImage();
    bool ReadParameters();
    bool ReadParameter(EntityParameterType type, bool leave_out); // false at the end of the text
    bool ReadValue(EntityParameter& parameter);
    bool ReadText(EntityParameter& parameter);
    void ReadChoices(EntityParameter& parameter);
    void ReadFloats(std::initializer_list<float*> values);
    void ReadColor(uint32_t& dw_color, std::vector<int32_t>& channels); // red, green, blue and perhaps alpha
    bool Fail(const std::string& reason);                               // false, with a notice
    bool FailUnfinished();
    void Notice(const std::string& text) const;
    void ReleaseBitmap() const;

    std::string file_name;
    const ExpandedScript& script;
    ScriptScanner scanner;
    std::vector<std::unique_ptr<Entity>>& templates;
    std::unordered_map<std::string_view, size_t> first_of_name; // in templates, which own the names
    std::set<size_t> name_lengths;

    // The definition that is being read
    std::unique_ptr<Entity> entity;
    size_t start = 0; // of its name
    bool extends = false;
    uint32_t labels_seen = 0; // bit i: label i of the table
};
