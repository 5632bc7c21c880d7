#include "definitions/EntityParser.h"

#include "definitions/EntityDefinition.h"
#include "files/FileObject.h"
#include "foundation/Desktop.h"
#include "foundation/Strings.h"

EntityParser::EntityParser(std::string_view filename) {
    const std::string name(filename);
    FileObject file(filename, FO_Open);
    if (!file.IsValid()) {
        NoticeOnce(name + " cannot be opened; there are no entity definitions");
        return;
    }
    std::vector<uint8_t> data;
    ExpandedScript script;
    if (!file.ReadAll(data, ExpandedScript::LARGEST)) {
        NoticeOnce(name + " cannot be read, or is too large for an entity script");
        return;
    }
    if (!script.Expand({reinterpret_cast<const char*>(data.data()), data.size()})) {
        NoticeOnce(name + " is too large once its macros are expanded; it is not read");
        return;
    }
    EntityDefinitionReader(filename, script, entity_template).ReadAll();
    mesh_wanted.resize(entity_template.size());
    for (int t = 0; t < GetTemplateCount(); ++t)
        index_of_name.emplace(entity_template[static_cast<size_t>(t)]->name, t);
}

Entity* EntityParser::GetTemplate(int t, bool load) {
    if (t < 0 || t >= GetTemplateCount())
        return nullptr;
    const auto index = static_cast<size_t>(t);
    Entity* entity = entity_template[index].get();
    if (load && !mesh_wanted[index]) {
        mesh_wanted[index] = true;
        if (!entity->mesh && !entity->mesh_file.empty())
            entity->mesh = LoadMesh(entity->mesh_file);
        if (!entity->mesh && !entity->actor_file.empty())
            entity->mesh = LoadActor(entity->actor_file);
    }
    return entity;
}

Entity* EntityParser::GetTemplate(std::string_view name, bool load) {
    return GetTemplate(GetTemplateIndex(name), load);
}

int EntityParser::GetTemplateIndex(std::string_view name) const {
    const auto found = index_of_name.find(std::string(name));
    return found == index_of_name.end() ? -1 : found->second;
}
