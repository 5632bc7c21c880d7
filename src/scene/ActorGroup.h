// AI groups: the level's square table of stances of each group toward every group.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

enum EActorGroupType : int32_t { AGT_Neutral = 0, AGT_Enemy = 1, AGT_Ally = 2 };

struct SGroupRelation {
    EActorGroupType type = AGT_Neutral;
    bool turn_to_enemy = false;
};

class CActorGroup {
public:
    virtual ~CActorGroup() = default;

    std::string name;

    // All of these first grow the relations with neutral entries until i is a valid index.
    EActorGroupType GetType(int i) { return GetRelation(i).type; }
    void SetType(int i, EActorGroupType type) { GetRelation(i).type = type; }
    bool GetTurnToEnemy(int i) { return GetRelation(i).turn_to_enemy; }
    void SetTurnToEnemy(int i, bool value) { GetRelation(i).turn_to_enemy = value; }
    SGroupRelation& GetRelation(int i);
    void AddRelation(const SGroupRelation& relation) { relations.push_back(relation); }
    void RemoveRelation(int i);

private:
    std::vector<SGroupRelation> relations;
};
