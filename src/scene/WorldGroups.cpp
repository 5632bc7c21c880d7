// Groups: pairs of index lists. An object may be in several; the newest one counts.
#include <algorithm>
#include <array>

#include "foundation/Desktop.h"
#include "foundation/Strings.h"
#include "scene/World.h"

namespace {

constexpr uint8_t GROUPS_OF_AN_OBJECT = 3; // the newest ones that it stays in

// Keeps the items for which keep is true, in order.
template <class Fn>
void Filter(Selection& selection, Fn&& keep) {
    Selection kept;
    for (const int item : selection)
        if (keep(item))
            kept.AddItemMulti(item);
    if (kept.GetItemCount() != selection.GetItemCount())
        selection = std::move(kept);
}

void RemoveBeyond(Selection& selection, int count) {
    Filter(selection, [count](int item) { return item >= 0 && item < count; });
}

std::string GroupLimit() { return Format("The level cannot hold more than %d groups", MAX_GROUPS); }

} // namespace

bool World::AddGroup(Selection brushes, Selection entities) {
    if (GetGroupCount() >= MAX_GROUPS) {
        NoticeOnce(GroupLimit());
        return false;
    }
    group.push_back({std::move(brushes), std::move(entities)});
    return true;
}

void World::CreateGroup() {
    if (brush_selection.GetItemCount() + entity_selection.GetItemCount() < MIN_GROUP)
        return;
    if (GetGroupCount() >= MAX_GROUPS)
        GetDesktop().MessageBox(GroupLimit(), "Warning");
    else
        AddGroup(brush_selection, entity_selection);
}

void World::DestroyGroup() {
    size_t kept = 0;
    for (size_t g = 0; g < group.size(); ++g)
        if (group_selection.TestItem(static_cast<int>(g)) == -1) {
            if (kept != g)
                group[kept] = std::move(group[g]);
            ++kept;
        }
    group.resize(kept);
    group_selection.ClearList();
}

// The selected groups that stay remain selected.
void World::DestroySmallGroups() {
    std::vector<int> new_place(group.size(), -1);
    size_t kept = 0;
    for (size_t g = 0; g < group.size(); ++g) {
        if (group[g].MemberCount() < MIN_GROUP)
            continue;
        new_place[g] = static_cast<int>(kept);
        if (kept != g)
            group[kept] = std::move(group[g]);
        ++kept;
    }
    if (kept == group.size())
        return;
    group.resize(kept);
    Selection selected;
    for (const int g : group_selection)
        if (g >= 0 && static_cast<size_t>(g) < new_place.size() && new_place[static_cast<size_t>(g)] != -1)
            selected.AddItem(new_place[static_cast<size_t>(g)]);
    group_selection = std::move(selected);
}

int World::CheckGroups(int brush_index, int entity_index) const {
    for (const bool brushes : {true, false}) {
        const int index = brushes ? brush_index : entity_index;
        for (int g = GetGroupCount() - 1; index != -1 && g >= 0; --g) {
            const ObjectGroupLists& lists = group[static_cast<size_t>(g)];
            if ((brushes ? lists.brushes : lists.entities).TestItem(index) != -1)
                return g;
        }
    }
    return -1;
}

std::vector<int> World::NewestGroups(bool brushes) const {
    std::vector<int> newest(brushes ? brush.size() : entity.size(), -1);
    for (int g = 0; g < GetGroupCount(); ++g) {
        const ObjectGroupLists& lists = group[static_cast<size_t>(g)];
        for (const int i : brushes ? lists.brushes : lists.entities)
            if (i >= 0 && static_cast<size_t>(i) < newest.size())
                newest[static_cast<size_t>(i)] = g;
    }
    return newest;
}

void World::CorrectGroup(int group_id) {
    if (group_id < 0 || group_id >= GetGroupCount())
        return;
    RemoveBeyond(group[static_cast<size_t>(group_id)].brushes, GetBrushCount());
    RemoveBeyond(group[static_cast<size_t>(group_id)].entities, GetEntityCount());
}

void World::OptimizeGroups() {
    std::vector<uint8_t> groups_of_brush(brush.size()), groups_of_entity(entity.size());
    const auto take = [](std::vector<uint8_t>& counts) {
        return [&counts](int item) {
            uint8_t& count = counts[static_cast<size_t>(item)];
            return count < GROUPS_OF_AN_OBJECT && ++count;
        };
    };
    for (int g = GetGroupCount() - 1; g >= 0; --g) {
        CorrectGroup(g);
        Filter(group[static_cast<size_t>(g)].brushes, take(groups_of_brush));
        Filter(group[static_cast<size_t>(g)].entities, take(groups_of_entity));
    }
    std::erase_if(group, [](const ObjectGroupLists& g) { return g.MemberCount() == 0; });
}
