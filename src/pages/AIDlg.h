// The AI page: the level's groups of actors and the stance of the selected group toward each. All changes take effect
// at once.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "editor/EditorListener.h"
#include "scene/ActorGroup.h"

class CInterface;

// One row of the page: the selected group's relation to the group at the row's index.
struct SRelationLine {
    std::string name;
    EActorGroupType type = AGT_Neutral;
    bool shot = false; // turns to enemy
};

class AIDlg : public EditorListener {
public:
    static constexpr int MAX_LINES = 32;        // what the page has room for
    static constexpr int FIRST_COMMAND = 10000; // of the rows' buttons
    static constexpr int COMMANDS_A_LINE = 10;  // neutral, enemy, ally, shot; the others are free

    explicit AIDlg(CInterface& controller);
    AIDlg(const AIDlg&) = delete;
    AIDlg& operator=(const AIDlg&) = delete;
    ~AIDlg() override;

    std::vector<std::string> groups; // the names to choose from, in the level's order
    std::string m_name;              // the selected group; empty: none
    std::vector<SRelationLine> m_relations;

    void LoadGroups();
    void UpdateGroupsDialog();
    void SelectGroup(std::string_view name);
    bool OnCommand(int command); // a button of a row; false if it is none
    // False after the user was told.
    bool OnGroupCreate(const std::string& new_name);
    bool OnGroupRename(const std::string& new_name);
    bool OnGroupDelete();

    void AIGroupsChanged() override;
    void WorldReplaced() override { AIGroupsChanged(); }

private:
    CActorGroup* SelectedGroup() const;

    CInterface& editor;
};
