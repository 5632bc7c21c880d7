#include "scene/ActorGroup.h"

#include <algorithm>

SGroupRelation& CActorGroup::GetRelation(int i) {
    const auto index = static_cast<size_t>(std::max(i, 0));
    if (index >= relations.size())
        relations.resize(index + 1);
    return relations[index];
}

void CActorGroup::RemoveRelation(int i) {
    if (i >= 0 && static_cast<size_t>(i) < relations.size())
        relations.erase(relations.begin() + i);
}
