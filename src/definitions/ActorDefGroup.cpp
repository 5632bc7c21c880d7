#include "definitions/ActorDefGroup.h"

#include "definitions/DefFile.h"
#include "files/FileFind.h"
#include "foundation/Strings.h"

namespace {

constexpr const char* ACTORS_FOLDER = "Scripts\\Actors";
constexpr size_t ENDING_LENGTH = 4; // of ".def"

// The first "MarrowsGroup" of the section "General", else the fallback.
std::string GroupOf(DefFileObject& definition, const std::string& fallback) {
    if (definition.OpenSection("General"))
        while (definition.OpenNextCommand())
            if (EqualNoCase(definition.GetCommandName(), "MarrowsGroup")) {
                std::string group;
                return definition.GetString(0, group) ? group : fallback;
            }
    return fallback;
}

} // namespace

void ActorDefGroups::ParseActorDefGroups() {
    groups.clear();
    FileFindObject search(ACTORS_FOLDER, "*.def", FFO_FileFind, true);
    while (const FFOInfo* found = search.FindNext()) {
        DefFileObject definition(Format("%s\\%s", ACTORS_FOLDER, found->name.c_str()));
        if (!definition.IsValid())
            continue;
        const std::string base = found->name.substr(0, found->name.size() - ENDING_LENGTH);
        ActorDefGroup* group = GetActorDefGroup(GroupOf(definition, base), true);
        if (group->default_def_file.empty())
            group->default_def_file = base;
        group->def_files.AddString(base);
    }
}

ActorDefGroup* ActorDefGroups::GetActorDefGroup(std::string_view name, bool create) {
    for (const auto& group : groups)
        if (EqualNoCase(group->name, name))
            return group.get();
    if (create) {
        groups.push_back(std::make_unique<ActorDefGroup>());
        groups.back()->name = name;
        return groups.back().get();
    }
    return groups.empty() ? nullptr : groups.front().get();
}
