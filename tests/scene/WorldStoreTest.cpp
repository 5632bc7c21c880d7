#include <algorithm>

#include <gtest/gtest.h>

#include "foundation/Desktop.h"
#include "foundation/Random.h"
#include "render/Textures.h"
#include "scene/FrontEnd.h"
#include "scene/Scenes.h"

namespace {

Selection Of(const std::vector<int>& items) {
    Selection selection;
    for (const int i : items)
        selection.AddItem(i);
    return selection;
}

void Fill(World& world, int brushes, int entities) {
    for (int i = 0; i < brushes; ++i)
        world.AddBrush(std::make_unique<Brush>())->GenerateNewObjectID();
    for (int i = 0; i < entities; ++i)
        world.AddEntity(std::make_unique<Entity>())->GenerateNewObjectID();
}

class WorldStore : public testing::Test {
protected:
    void SetUp() override {
        SetDesktop(&desktop);
        ForgetNotices();
    }
    void TearDown() override { SetDesktop(nullptr); }
    HeadlessDesktop desktop;
};

TEST_F(WorldStore, StartsAsToldAndCleansUpItsTextures) {
    uint32_t darkmap, icon;
    {
        World world;
        EXPECT_EQ(world.render_mode, 1);
        EXPECT_EQ(world.map_file, "Default");
        EXPECT_EQ(world.map_name, "No Name");
        EXPECT_EQ(world.GetMaterialCount(), 1);
        ASSERT_EQ(world.actor_groups.size(), 2u);
        EXPECT_EQ(world.actor_groups[1]->name, "Bots");
        EXPECT_EQ(world.actor_groups[1]->GetType(0), AGT_Enemy);
        EXPECT_EQ(world.actor_groups[1]->GetType(1), AGT_Ally);
        EXPECT_EQ(world.actor_groups[0]->GetType(7), AGT_Neutral); // grows
        for (const int expected : {2, 0, 1, 2}) {
            world.ChangeRenderMode();
            EXPECT_EQ(world.render_mode, expected);
        }
        darkmap = world.darkmap;
        std::vector<uint32_t> texels;
        uint32_t width = 0, height = 0;
        ASSERT_TRUE(crTReadPixels(darkmap, texels, width, height));
        EXPECT_EQ(width * height, 16u);
        for (const uint32_t texel : texels)
            EXPECT_EQ(texel & 0xFFFFFF, 0u);
        icon = crTCreate(4, 4, 32, TL_ICON, TEX_NORMAL, 0, false);
    }
    EXPECT_EQ(crTRecord(darkmap), nullptr);
    EXPECT_NE(crTRecord(icon), nullptr); // belongs to a definition
    crTDestroy(icon);
}

TEST_F(WorldStore, CreatingSelects) {
    World world;
    Brush* brush = world.CreateBrush(ShapeOf(BT_BOX, {0, 0, 0}, {64, 64, 64}));
    EXPECT_EQ(brush->index, 0);
    EXPECT_TRUE(brush->is_selected);
    EXPECT_EQ(Items(world.brush_selection), std::vector<int>{0});
    EXPECT_EQ(world.first_selected_id, brush->GetObjectID());
    EXPECT_EQ(BaseObject::GetObjectFromID(brush->GetObjectID()), brush);
    Entity* plain = world.NewEntityCreated(std::make_unique<Entity>(), 0);
    EXPECT_NE(plain->GetObjectID(), NO_OBJECT_ID);
    EXPECT_EQ(world.entity_selection.GetItemCount(), 0);
    Entity* chosen = world.NewEntityCreated(std::make_unique<Entity>(), 1);
    EXPECT_EQ(Items(world.entity_selection), std::vector<int>{1});
    EXPECT_EQ(world.first_selected_id, chosen->GetObjectID());
    EXPECT_TRUE(world.IsEntitySelected(chosen->GetObjectID()));
    EXPECT_FALSE(world.IsEntitySelected(plain->GetObjectID()));
}

TEST_F(WorldStore, FullTablesRefuse) {
    World world;
    Fill(world, MAX_BRUSHES, MAX_ENTITIES);
    EXPECT_EQ(world.CreateBrush(ShapeOf(BT_BOX, {0, 0, 0}, {64, 64, 64})), nullptr);
    EXPECT_EQ(world.NewEntityCreated(std::make_unique<Entity>(), 1), nullptr);
    EXPECT_EQ(desktop.boxes.size(), 2u);
    EXPECT_EQ(world.AddBrush(BoxBrush()), nullptr);
    EXPECT_EQ(world.AddEntity(std::make_unique<Entity>()), nullptr);
    EXPECT_EQ(world.AddEntity(std::make_unique<Entity>()), nullptr);
    for (int i = 0; i < MAX_GROUPS; ++i)
        ASSERT_TRUE(world.AddGroup(Of({i}), Of({})));
    EXPECT_FALSE(world.AddGroup(Of({1}), Of({})));
    EXPECT_EQ(desktop.notices.size(), 3u); // each limit once
    world.SelectAll();
    world.CreateGroup();
    EXPECT_EQ(world.GetGroupCount(), MAX_GROUPS);
    EXPECT_EQ(desktop.boxes.size(), 3u);
    world.DeleteSelection(); // a linear job even here
    EXPECT_EQ(world.GetBrushCount() + world.GetEntityCount() + world.GetGroupCount(), 0);
}

TEST_F(WorldStore, DeletingOneObjectUnlinksIt) {
    World world;
    Fill(world, 3, 2);
    const uint32_t gone = world.brush[1]->GetObjectID(), kept = world.brush[2]->GetObjectID();
    world.brush[0]->AddLinkedObjectID(gone);
    world.brush[0]->AddLinkedObjectID(kept);
    world.entity[1]->AddLinkedObjectID(gone);
    world.selected_surface_brush = 2;
    world.DeleteBrush(1);
    EXPECT_EQ(BaseObject::GetObjectFromID(gone), nullptr);
    EXPECT_EQ(world.brush[0]->GetLinkedObjectsCount(), 1);
    EXPECT_EQ(world.entity[1]->GetLinkedObjectsCount(), 0);
    EXPECT_EQ(world.brush[1]->GetObjectID(), kept);
    EXPECT_EQ(world.selected_surface_brush, 1);
    world.DeleteEntityByID(world.entity[0]->GetObjectID());
    world.DeleteEntityByID(kept); // a brush: nothing happens
    world.DeleteEntityByID(123456);
    world.DeleteBrush(99);
    EXPECT_EQ(world.GetEntityCount(), 1);
    EXPECT_EQ(world.GetBrushCount(), 2);
}

// The deletion as the long way: slot by slot.
struct PlainWorld {
    std::vector<uint32_t> ids;
    std::vector<std::vector<int>> groups;

    void Delete(std::vector<int> selected) {
        std::sort(selected.rbegin(), selected.rend());
        for (const int i : selected) {
            ids.erase(ids.begin() + i);
            for (auto& g : groups) {
                g.erase(std::remove(g.begin(), g.end(), i), g.end());
                for (int& member : g)
                    member -= member > i;
            }
        }
    }
};

TEST_F(WorldStore, DeletingTheSelectionReindexesGroups) {
    RandomMT random;
    random.seedMT(5);
    const auto below = [&random](int n) { return static_cast<int>(random.randomMT() % static_cast<uint32_t>(n)); };
    for (int round = 0; round < 60; ++round) {
        World world;
        Fill(world, 12, 9);
        PlainWorld brushes, entities;
        for (const auto& b : world.brush)
            brushes.ids.push_back(b->GetObjectID());
        for (const auto& e : world.entity)
            entities.ids.push_back(e->GetObjectID());
        for (int g = 0; g < 6; ++g) {
            Selection b, e;
            for (int k = below(6); k >= 0; --k)
                b.AddItem(below(12)), e.AddItem(below(9));
            brushes.groups.push_back(Items(b));
            entities.groups.push_back(Items(e));
            world.AddGroup(b, e);
        }
        for (int k = 0; k < 5; ++k)
            world.SetBrushSelection(below(12), true), world.entity_selection.AddItem(below(9));
        brushes.Delete(Items(world.brush_selection));
        entities.Delete(Items(world.entity_selection));
        world.DeleteSelection();
        ASSERT_EQ(world.brush.size(), brushes.ids.size());
        for (size_t i = 0; i < brushes.ids.size(); ++i)
            EXPECT_EQ(world.brush[i]->GetObjectID(), brushes.ids[i]);
        ASSERT_EQ(world.entity.size(), entities.ids.size());
        for (size_t i = 0; i < entities.ids.size(); ++i)
            EXPECT_EQ(world.entity[i]->GetObjectID(), entities.ids[i]);
        size_t left = 0;
        for (size_t g = 0; g < brushes.groups.size(); ++g) {
            if (brushes.groups[g].size() + entities.groups[g].size() < 2)
                continue; // dissolved
            ASSERT_LT(left, world.group.size());
            EXPECT_EQ(Items(world.group[left].brushes), brushes.groups[g]);
            EXPECT_EQ(Items(world.group[left].entities), entities.groups[g]);
            ++left;
        }
        EXPECT_EQ(world.group.size(), left);
        EXPECT_FALSE(world.IsSomethingSelected());
        EXPECT_EQ(world.first_selected_id, NO_OBJECT_ID);
    }
}

TEST_F(WorldStore, DeletingAPathPointSelectsItsOwner) {
    World world;
    Fill(world, 2, 4);
    world.entity[1]->path_parent_id = world.brush[1]->GetObjectID();
    world.entity[2]->path_parent_id = world.entity[3]->GetObjectID();
    world.entity[0]->path_parent_id = 987654; // gone long ago
    for (const int e : {0, 1, 2})
        world.entity_selection.AddItem(e);
    world.DeleteSelection();
    EXPECT_EQ(Items(world.brush_selection), std::vector<int>{1});
    EXPECT_TRUE(world.brush[1]->is_selected);
    EXPECT_EQ(Items(world.entity_selection), std::vector<int>{0});
}

TEST_F(WorldStore, DeleteOnASelectedSurfaceTakesItsMaterial) {
    World world;
    world.AddBrush(BoxBrush());
    world.brush[0]->surfaces[2].texture.index = 3;
    world.brush[0]->selected_surface = 2;
    world.selected_surface_brush = 0;
    world.SetBrushSelection(0, true);
    world.DeleteSelection();
    ASSERT_EQ(world.GetBrushCount(), 1);
    EXPECT_EQ(world.brush[0]->surfaces[2].texture.index, 0);
}

TEST_F(WorldStore, WholeSelections) {
    World world;
    Fill(world, 3, 3);
    world.brush[1]->is_hidden = world.entity[1]->is_hidden = true;
    EXPECT_TRUE(world.SelectAll());
    EXPECT_EQ(Items(world.brush_selection), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(world.first_selected_id, world.entity[0]->GetObjectID());
    world.group_selection.AddItem(0);
    world.brush[0]->selected_surface = 4;
    world.selected_surface_brush = 0;
    world.ClearSelection();
    EXPECT_FALSE(world.IsSomethingSelected());
    EXPECT_FALSE(world.brush[2]->is_selected);
    EXPECT_EQ(world.group_selection.GetItemCount(), 0);
    EXPECT_EQ(world.brush[0]->selected_surface, -1);
    EXPECT_EQ(world.selected_surface_brush, -1);
    EXPECT_EQ(world.first_selected_id, NO_OBJECT_ID);
    world.SetBrushSelection(2, true);
    EXPECT_TRUE(world.InvertSelection());
    EXPECT_EQ(Items(world.brush_selection), std::vector<int>{0}); // not the hidden one
    EXPECT_EQ(Items(world.entity_selection), (std::vector<int>{0, 2}));
    EXPECT_FALSE(world.brush[2]->is_selected);
    world.HideSelected();
    EXPECT_FALSE(world.IsSomethingSelected());
    EXPECT_TRUE(world.brush[0]->is_hidden && world.entity[2]->is_hidden);
    EXPECT_FALSE(world.brush[0]->is_selected);
    world.UnhideAll();
    EXPECT_FALSE(world.brush[1]->is_hidden || world.entity[2]->is_hidden);
    world.SetBrushSelection(1, true);
    world.HideUnselected();
    EXPECT_TRUE(world.brush[0]->is_hidden && world.entity[0]->is_hidden && !world.brush[1]->is_hidden);
    world.SetBrushSelection(77, true);
}

TEST_F(WorldStore, SelectionBoxSpansBrushesAndEntities) {
    World world;
    world.AddBrush(BoxBrush({0, 0, 0}, {10, 20, 30}));
    Fill(world, 0, 1);
    world.entity[0]->position = {-5, 25, 10};
    world.SelectAll();
    Box box;
    world.ComputeSelectionBox(box);
    EXPECT_EQ(box, MakeBox({-5, 0, 0}, {10, 25, 30}));
    world.MoveEntity({1, 2, 3});
    EXPECT_EQ(world.entity[0]->position, (D3DVECTOR{-4, 27, 13}));
    world.ChangeBrushColor({1, 0, 0, 1});
    EXPECT_EQ(world.brush[0]->color, 0xFFFF0000u);
    EXPECT_EQ(world.brush[0]->surfaces[0].diffuse[0], 0x7F0000u); // shade of a floor
}

TEST_F(WorldStore, GroupBasics) {
    World world;
    Fill(world, 5, 2);
    world.SetBrushSelection(1, true);
    world.CreateGroup(); // one object makes none
    EXPECT_EQ(world.GetGroupCount(), 0);
    world.entity_selection.AddItem(1);
    world.CreateGroup();
    world.SetBrushSelection(2, true);
    world.CreateGroup();
    EXPECT_EQ(world.CheckGroups(1, -1), 1); // the newest
    EXPECT_EQ(world.CheckGroups(3, 1), 1);
    EXPECT_EQ(world.CheckGroups(0, 0), -1);
    EXPECT_EQ(world.CheckGroups(-1, -1), -1);
    world.group_selection.AddItem(1);
    world.DestroyGroup();
    EXPECT_EQ(world.CheckGroups(2, -1), -1);
    EXPECT_EQ(world.CheckGroups(1, -1), 0);
    EXPECT_EQ(world.group_selection.GetItemCount(), 0);
    world.group[0] = {Of({4, 5, -1, 0}), Of({2, 1})};
    world.CorrectGroup(0);
    world.CorrectGroup(3);
    EXPECT_EQ(Items(world.group[0].brushes), (std::vector<int>{4, 0}));
    EXPECT_EQ(Items(world.group[0].entities), std::vector<int>{1});
}

TEST_F(WorldStore, OptimizingKeepsTheThreeNewestGroups) {
    RandomMT random;
    random.seedMT(6);
    for (int round = 0; round < 40; ++round) {
        World world;
        Fill(world, 6, 4);
        std::vector<std::vector<int>> plain[2];
        for (int g = 0; g < 12; ++g) {
            std::vector<int> members[2];
            for (int kind = 0; kind < 2; ++kind) {
                Selection s;
                for (uint32_t k = random.randomMT() % 4; k > 0; --k)
                    s.AddItem(static_cast<int>(random.randomMT() % 9) - 1); // some are beyond the tables
                members[kind] = Items(s);
                plain[kind].push_back(members[kind]);
            }
            world.AddGroup(Of(members[0]), Of(members[1]));
        }
        for (int kind = 0; kind < 2; ++kind) { // object by object, from the last group
            const int count = kind == 0 ? 6 : 4;
            for (auto& g : plain[kind])
                g.erase(std::remove_if(g.begin(), g.end(), [count](int i) { return i < 0 || i >= count; }), g.end());
            for (int object = 0; object < count; ++object)
                for (int met = 0, g = 11; g >= 0; --g) {
                    auto& list = plain[kind][static_cast<size_t>(g)];
                    const auto found = std::find(list.begin(), list.end(), object);
                    if (found != list.end() && ++met > 3)
                        list.erase(found);
                }
        }
        world.OptimizeGroups();
        size_t left = 0;
        for (size_t g = 0; g < 12; ++g) {
            if (plain[0][g].empty() && plain[1][g].empty())
                continue;
            ASSERT_LT(left, world.group.size());
            EXPECT_EQ(Items(world.group[left].brushes), plain[0][g]);
            EXPECT_EQ(Items(world.group[left].entities), plain[1][g]);
            ++left;
        }
        EXPECT_EQ(world.group.size(), left);
    }
}

TEST_F(WorldStore, DecalTemplatesKeepTheLastId) {
    World world;
    for (const uint32_t id : {9u, 4u}) {
        auto decal = std::make_unique<DecalTemplate>();
        decal->id = id;
        EXPECT_NE(world.AddNewDecal(std::move(decal)), nullptr);
    }
    EXPECT_EQ(world.last_decal_id, 4u); // the last one's, not the largest
    world.ClearAllDecals();
    EXPECT_TRUE(world.decal_template.empty());
    EXPECT_EQ(world.last_decal_id, 4u);
}

} // namespace
