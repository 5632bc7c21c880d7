// The actor definition files sorted into named sets, which feed the choice of models.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/StringList.h"

struct ActorDefGroup {
    std::string name;
    std::string default_def_file; // the first of the set
    StringListClass def_files;    // base names
};

class ActorDefGroups {
public:
    void ParseActorDefGroups(); // "Scripts\Actors\*.def", libraries included
    // The set of that name, in any case. Without one: a new set when create is set, else the first set, null if there
    // is none.
    ActorDefGroup* GetActorDefGroup(std::string_view name, bool create);

    const std::vector<std::unique_ptr<ActorDefGroup>>& Groups() const { return groups; }

private:
    std::vector<std::unique_ptr<ActorDefGroup>> groups;
};
