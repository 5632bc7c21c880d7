#include "pages/AIDlg.h"

#include <algorithm>

#include "editor/Interface.h"
#include "foundation/Strings.h"

namespace {

bool Refuse(const char* text) {
    GetDesktop().MessageBox(text, "Error");
    return false;
}

bool IsReserved(std::string_view name) { return EqualNoCase(name, "Player") || EqualNoCase(name, "Bots"); }

constexpr const char* NAME_NEEDED = "Group must have some name.";

} // namespace

AIDlg::AIDlg(CInterface& controller) : editor(controller) {
    AIGroupsChanged();
    editor.AddListener(*this);
}

AIDlg::~AIDlg() { editor.RemoveListener(*this); }

void AIDlg::AIGroupsChanged() {
    LoadGroups();
    UpdateGroupsDialog();
}

void AIDlg::LoadGroups() {
    groups.clear();
    if (editor.world)
        for (const auto& group : editor.world->actor_groups)
            groups.push_back(group->name);
    if (std::find(groups.begin(), groups.end(), m_name) == groups.end())
        m_name.clear();
}

CActorGroup* AIDlg::SelectedGroup() const {
    if (editor.world && !m_name.empty())
        for (const auto& group : editor.world->actor_groups)
            if (group->name == m_name)
                return group.get();
    return nullptr;
}

void AIDlg::UpdateGroupsDialog() {
    m_relations.clear();
    CActorGroup* group = SelectedGroup();
    if (!group)
        return;
    const int lines = std::min(static_cast<int>(groups.size()), MAX_LINES);
    for (int i = 0; i < lines; ++i)
        m_relations.push_back({groups[static_cast<size_t>(i)], group->GetType(i), group->GetTurnToEnemy(i)});
}

void AIDlg::SelectGroup(std::string_view name) {
    m_name = name;
    AIGroupsChanged();
}

bool AIDlg::OnCommand(int command) {
    const int n = command - FIRST_COMMAND;
    CActorGroup* group = SelectedGroup();
    const int target = n / COMMANDS_A_LINE;
    if (n < 0 || !group || target >= static_cast<int>(m_relations.size()))
        return false;
    switch (n % COMMANDS_A_LINE) {
    case 0:
        group->SetType(target, AGT_Neutral);
        break;
    case 1:
        group->SetType(target, AGT_Enemy);
        break;
    case 2:
        group->SetType(target, AGT_Ally);
        break;
    case 3:
        group->SetTurnToEnemy(target, !group->GetTurnToEnemy(target));
        break;
    default:
        return false;
    }
    UpdateGroupsDialog();
    editor.MarkDirty();
    return true;
}

bool AIDlg::OnGroupCreate(const std::string& new_name) {
    if (new_name.empty())
        return Refuse(NAME_NEEDED);
    if (IsReserved(new_name))
        return Refuse("You cannot create group with a reserved name (\"Player\" or \"Bots\").");
    auto group = std::make_unique<CActorGroup>();
    group->name = new_name;
    editor.world->actor_groups.push_back(std::move(group));
    m_name = new_name;
    AIGroupsChanged();
    editor.MarkDirty();
    editor.RefreshAIDlg();
    return true;
}

bool AIDlg::OnGroupRename(const std::string& new_name) {
    if (new_name.empty())
        return Refuse(NAME_NEEDED);
    CActorGroup* group = SelectedGroup();
    if (!group)
        return false;
    if (IsReserved(m_name))
        return Refuse("You cannot rename reserved group (\"Player\" or \"Bots\").");
    group->name = new_name;
    m_name = new_name;
    AIGroupsChanged();
    editor.MarkDirty();
    editor.RefreshAIDlg();
    return true;
}

bool AIDlg::OnGroupDelete() {
    if (IsReserved(m_name))
        return Refuse("You cannot delete reserved group (\"Player\" or \"Bots\").");
    const CActorGroup* group = SelectedGroup();
    if (!group)
        return false;
    auto& list = editor.world->actor_groups;
    const auto place = std::find_if(list.begin(), list.end(), [group](const auto& g) { return g.get() == group; });
    const auto index = static_cast<int>(place - list.begin());
    list.erase(place);
    for (const auto& other : list)
        other->RemoveRelation(index);
    AIGroupsChanged();
    editor.MarkDirty();
    editor.RefreshAIDlg();
    return true;
}
