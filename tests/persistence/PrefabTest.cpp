#include <gtest/gtest.h>

#include <set>

#include "foundation/Desktop.h"
#include "foundation/Random.h"
#include "persistence/OldRecords.h"
#include "persistence/ProjectData.h"
#include "scene/FrontEnd.h"

namespace {

// Where the selection's pivot is, as the front end says.
class Pivot : public FrontEnd {
public:
    Pivot() { SetFrontEnd(this); }
    ~Pivot() override { SetFrontEnd(nullptr); }
    D3DVECTOR SelectionPivot() const override { return pivot; }
    D3DVECTOR pivot{100, 20, -30};
};

struct Scene {
    std::unique_ptr<World> world;
    Brush *box, *patch, *outside;
    Entity *light, *actor;
};

// A box, a patch and a light are selected; an actor and a second box are not. Links lead in and out of the selection.
Scene MakeScene(const ProjectData& data, ProjectData& placing) {
    Scene s;
    s.world = data.NewWorld();
    const int brick = s.world->GetNewMaterial("wall", "brick"), stone = s.world->GetNewMaterial("wall", "stone");
    s.outside = AddTestBrush(*s.world, BT_BOX, -500, brick);
    s.box = AddTestBrush(*s.world, BT_BOX, 0, stone);
    s.patch = AddTestBrush(*s.world, BT_PATCH, 100, brick);
    s.actor = placing.Place(*s.world, "actor", {1, 1, 1});
    s.light = placing.Place(*s.world, "light", {10, 20, 30});
    s.light->variable_name = "lamp";
    s.light->is_hidden = true;
    s.box->is_hidden = s.box->is_frozen = true;
    s.box->name = "crate";
    TEX_INFO& mapping = s.box->surfaces[1].texture;
    mapping.shift = {3, 4}, mapping.scale = {0.5f, 2}, mapping.size = {16, 16}, mapping.rotation = 30;
    for (const auto& b : s.world->brush) {
        b->GenerateTextureSpaces();
        b->RemapAll();
    }
    s.box->AddLinkedObjectID(s.light->GetObjectID());
    s.box->AddLinkedObjectID(s.actor->GetObjectID());
    s.light->AddLinkedObjectID(s.patch->GetObjectID());
    s.light->AddLinkedObjectID(s.outside->GetObjectID());
    for (const int b : {1, 2})
        s.world->SetBrushSelection(b, true);
    s.world->entity_selection.AddItem(1);
    Selection brushes, entities;
    for (const int b : {2, 0, 1}) // the one outside is member 1
        brushes.AddItem(b);
    entities.AddItem(1);
    s.world->AddGroup(brushes, entities);
    s.world->group_selection.AddItem(0);
    return s;
}

std::vector<int> Items(const Selection& selection) { return {selection.begin(), selection.end()}; }

void ExpectSameGeometry(const Brush& a, const Brush& b, const D3DVECTOR& shift) {
    ASSERT_EQ(a.surfaces.size(), b.surfaces.size());
    ASSERT_EQ(a.curved_surfaces.size(), b.curved_surfaces.size());
    for (const auto& lists : {std::pair(&a.surfaces, &b.surfaces), std::pair(&a.curved_surfaces, &b.curved_surfaces)})
        for (size_t s = 0; s < lists.first->size(); ++s) {
            const Surface &x = (*lists.first)[s], &y = (*lists.second)[s];
            ASSERT_EQ(x.vertices.size(), y.vertices.size());
            EXPECT_EQ(x.tri_indices, y.tri_indices);
            for (size_t v = 0; v < x.vertices.size(); ++v) {
                const D3DVECTOR d = x.vertices[v] + shift - y.vertices[v];
                EXPECT_LT(Magnitude(d), 0.001f);
                EXPECT_NEAR(x.uv[v].u, y.uv[v].u, 0.001f);
                EXPECT_NEAR(x.uv[v].v, y.uv[v].v, 0.001f);
            }
        }
}

} // namespace

TEST(Prefab, ComesBackWithNewIdsInnerLinksAndGroups) {
    ProjectData data;
    Pivot front_end;
    Scene s = MakeScene(data, data);
    World& world = *s.world;
    const D3DVECTOR before = s.box->surfaces[0].vertices[0];
    ASSERT_TRUE(world.SavePrefab("crate.mpf", "a crate with a lamp", data.error)) << data.error;
    EXPECT_EQ(s.box->surfaces[0].vertices[0], before) << "saving works on copies";
    EXPECT_EQ(world.GetBrushCount(), 3);
    {
        UChunkFile file("crate.mpf", CFM_Open);
        std::string text;
        ASSERT_TRUE(file.OpenChunk("FormatID") && file.GetNextString(text));
        EXPECT_EQ(text, "Marrowstead2000 Prefab v2.0");
        EXPECT_EQ(file.GetArrayLength(0), 28u);
        ASSERT_TRUE(file.OpenChunk("Description") && file.GetNextString(text));
        EXPECT_EQ(text, "a crate with a lamp");
        ASSERT_TRUE(file.OpenChunk("MaterialData"));
        EXPECT_EQ(file.GetChunkID(), 1u);
        ASSERT_TRUE(file.OpenChunk("EntityData"));
        D3DVECTOR stored;
        file.SkipNextArray(), file.SkipNextArray();
        ASSERT_TRUE(file.GetNextValue(stored));
        EXPECT_EQ(stored, (D3DVECTOR{-90, 0, 60})) << "relative to the pivot";
        std::vector<int32_t> members;
        ASSERT_TRUE(file.OpenChunk("GroupInfo") && file.GetNextValues(members, 3));
        EXPECT_EQ(members, (std::vector<int32_t>{1, -1, 0}));
        ASSERT_TRUE(file.GetNextValues(members, 1));
        EXPECT_EQ(members, std::vector<int32_t>{0});
    }
    std::set<uint32_t> ids;
    for (int copy = 1; copy <= 2; ++copy) {
        const D3DVECTOR shift{0, copy * 64.0f, 0};
        ASSERT_TRUE(world.PlacePrefab("crate.mpf", front_end.pivot + shift, data.materials, *data.parser, data.error))
            << data.error;
        const int first = 1 + 2 * copy;
        ASSERT_EQ(world.GetBrushCount(), first + 2);
        ASSERT_EQ(world.GetEntityCount(), 2 + copy);
        const Brush &box = *world.brush[static_cast<size_t>(first)],
                    &patch = *world.brush[static_cast<size_t>(first + 1)];
        const Entity& light = *world.entity.back();
        EXPECT_EQ(Items(world.brush_selection), (std::vector<int>{first, first + 1}));
        EXPECT_EQ(Items(world.entity_selection), std::vector<int>{1 + copy});
        EXPECT_TRUE(box.is_selected && box.is_hidden && box.is_frozen);
        EXPECT_EQ(box.name, "crate");
        ExpectSameGeometry(*s.box, box, shift);
        ExpectSameGeometry(*s.patch, patch, shift);
        EXPECT_EQ(box.surfaces[0].texture.index, 2);
        EXPECT_EQ(patch.curved_surfaces[0].texture.index, 1);
        EXPECT_EQ(light.position, s.light->position + shift);
        EXPECT_EQ(light.variable_name, "lamp");
        EXPECT_TRUE(light.is_hidden);
        ASSERT_EQ(box.GetLinkedObjectsCount(), 1) << "the link out of the selection is lost";
        EXPECT_EQ(box.GetLinkedObjectID(0), light.GetObjectID());
        ASSERT_EQ(light.GetLinkedObjectsCount(), 1);
        EXPECT_EQ(light.GetLinkedObjectID(0), patch.GetObjectID());
        const ObjectGroupLists& group = world.group.back();
        EXPECT_EQ(Items(group.brushes), (std::vector<int>{first + 1, first}))
            << "without the member that was not saved";
        EXPECT_EQ(Items(group.entities), std::vector<int>{1 + copy});
        for (const BaseObject* object : {static_cast<const BaseObject*>(&box), static_cast<const BaseObject*>(&patch),
                                         static_cast<const BaseObject*>(&light)})
            EXPECT_TRUE(ids.insert(object->GetObjectID()).second);
    }
    EXPECT_EQ(world.GetMaterialCount(), 3) << "no row twice";
}

TEST(Prefab, WhatTheDataLackIsKeptOrPassedOver) {
    ProjectData data;
    Pivot front_end;
    {
        Scene s = MakeScene(data, data);
        s.world->material[2] = {"lost", "moss", "wall", "stone", s.world->material[2].texture_index,
                                false,  false,  false};
        s.world->entity_selection.AddItem(0); // the actor is the second of the file
        Selection entities;
        entities.AddItem(1), entities.AddItem(0);
        s.world->AddGroup({}, entities);
        s.world->group_selection.AddItem(1);
        ASSERT_TRUE(s.world->SavePrefab("moss.mpf", "", data.error));
    }
    WriteBytes("Marrowstead/entities.def",
               "#actors\\actor { #Type <ACTOR> #TraceType <Trace> #EntityLocation <AnyCell> "
               "#EditorImage { MODEL (BOX) } #Parameters { } }\n");
    data.parser = std::make_unique<EntityParser>("Marrowstead\\entities.def");
    HeadlessDesktop desktop;
    SetDesktop(&desktop);
    ForgetNotices();
    std::unique_ptr<World> world = data.NewWorld();
    EXPECT_TRUE(world->PlacePrefab("moss.mpf", {}, data.materials, *data.parser, data.error)) << data.error;
    SetDesktop(nullptr);
    ASSERT_EQ(world->GetEntityCount(), 1);
    EXPECT_EQ(world->entity[0]->name, "actor");
    ASSERT_EQ(world->GetMaterialCount(), 3);
    const MaterialRow& moss = world->material[static_cast<size_t>(world->brush[0]->surfaces[0].texture.index)];
    EXPECT_EQ(moss.material_name, "moss") << "a material that the library lacks stays by its name";
    EXPECT_EQ(moss.texture_name, "stone");
    EXPECT_EQ(world->brush[0]->GetLinkedObjectsCount(), 1) << "to the actor; the light is not there";
    ASSERT_EQ(world->GetGroupCount(), 1) << "a group of one is none";
    EXPECT_EQ(world->group[0].brushes.GetItemCount(), 2);
    EXPECT_EQ(desktop.notices.size(), 2u);
}

TEST(Prefab, OldVersionsNameEntitiesByTheirPlace) {
    ProjectData data;
    for (const char* version : {"marrowstead2000 prefab", ""}) {
        {
            UChunkFile file("old.mpf", CFM_Create);
            if (*version) {
                file.CreateChunk("FormatID", ANY_CHUNK_ID);
                file.WriteString(version);
                file.CloseChunk();
            }
            WriteOldBrush(file, 2);
            WriteOldBrush(file, -1);
            WriteOldBrush(file, 7);
            WriteOldEntity(file, "light", 2);
            WriteOldEntity(file, "gone", -1);
            WriteOldEntity(file, "actor", -1);
            ASSERT_TRUE(file.CloseChunkFile());
        }
        std::unique_ptr<World> world = data.NewWorld();
        data.Place(*world, "light", {}); // stands before those that are placed
        ASSERT_TRUE(world->PlacePrefab("old.mpf", {10, 0, 0}, data.materials, *data.parser, data.error)) << data.error;
        ASSERT_EQ(world->GetEntityCount(), 3);
        const uint32_t actor = world->entity[2]->GetObjectID();
        EXPECT_EQ(world->entity[2]->position, (D3DVECTOR{11, 2, 3}));
        ASSERT_EQ(world->brush[0]->GetLinkedObjectsCount(), 1);
        EXPECT_EQ(world->brush[0]->GetLinkedObjectID(0), actor);
        EXPECT_EQ(world->brush[1]->GetLinkedObjectsCount(), 0);
        EXPECT_EQ(world->brush[2]->GetLinkedObjectsCount(), 0);
        ASSERT_EQ(world->entity[1]->GetLinkedObjectsCount(), 1);
        EXPECT_EQ(world->entity[1]->GetLinkedObjectID(0), actor);
    }
}

TEST(Prefab, DamagedOrTooLargeFilesChangeNothing) {
    ProjectData data;
    Pivot front_end;
    Scene s = MakeScene(data, data);
    ASSERT_TRUE(s.world->SavePrefab("good.mpf", "words", data.error));
    const std::string good = ReadBytes("good.mpf");
    const auto expect_survival = [&](const std::string& bytes) {
        WriteBytes("damaged.mpf", bytes);
        std::unique_ptr<World> world = data.NewWorld();
        AddTestBrush(*world, BT_BOX, 0, 0);
        data.error.clear();
        if (world->PlacePrefab("damaged.mpf", {}, data.materials, *data.parser, data.error))
            return;
        EXPECT_NE(data.error.find("damaged.mpf"), std::string::npos) << data.error;
        EXPECT_EQ(data.error.find('\n'), std::string::npos);
        EXPECT_EQ(world->GetBrushCount(), 1);
        EXPECT_EQ(world->GetEntityCount(), 0);
        EXPECT_EQ(world->GetMaterialCount(), 1);
    };
    RandomMT random;
    for (size_t length = 0; length < good.size(); length += 1 + random.randomMT() % 61)
        expect_survival(good.substr(0, length));
    for (int round = 0; round < 300; ++round) {
        std::string bytes = good;
        bytes.replace(random.randomMT() % (bytes.size() - 4), 4, round % 2 ? "\xff\xff\xff\x7f" : "\xff\xff\xff\xff");
        expect_survival(bytes);
    }
    std::unique_ptr<World> full = data.NewWorld();
    while (full->GetBrushCount() < MAX_BRUSHES - 1)
        full->AddBrush(std::make_unique<Brush>());
    EXPECT_FALSE(full->PlacePrefab("good.mpf", {}, data.materials, *data.parser, data.error));
    EXPECT_EQ(data.error, "\"good.mpf\" cannot be placed: the level has no room for its 2 brushes");
    EXPECT_EQ(full->GetBrushCount(), MAX_BRUSHES - 1);

    s.world->ClearSelection();
    EXPECT_FALSE(s.world->SavePrefab("empty.mpf", "", data.error));
    EXPECT_FALSE(std::filesystem::exists("empty.mpf"));
}
