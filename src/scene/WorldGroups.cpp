// Groups: pairs of index lists. An object may be in several; the newest one counts.
#include <algorithm>
#include <array>

#include "foundation/Desktop.h"
#include "foundation/Strings.h"
#include "scene/World.h"

namespace {

constexpr int MIN_GROUP = 2;               // objects
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

int MemberCount(const ObjectGroupLists& g) { return g.brushes.GetItemCount() + g.entities.GetItemCount(); }

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

void World::DestroySmallGroups() {
    group_selection.ClearList();
    for (int g = 0; g < GetGroupCount(); ++g)
        if (MemberCount(group[static_cast<size_t>(g)]) < MIN_GROUP)
            group_selection.AddItemMulti(g);
    DestroyGroup();
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
    std::erase_if(group, [](const ObjectGroupLists& g) { return MemberCount(g) == 0; });
}

void World::RemoveFromGroups(const std::vector<bool>& gone, bool brushes) {
    std::vector<int> gone_before(gone.size() + 1);
    for (size_t i = 0; i < gone.size(); ++i)
        gone_before[i + 1] = gone_before[i] + gone[i];
    for (ObjectGroupLists& lists : group) {
        Selection& selection = brushes ? lists.brushes : lists.entities;
        Selection kept;
        for (const int item : selection) {
            const size_t place = item < 0 ? 0 : std::min(static_cast<size_t>(item), gone.size());
            if (place == gone.size() || !gone[place])
                kept.AddItemMulti(item - gone_before[place]);
        }
        selection = std::move(kept);
    }
}
