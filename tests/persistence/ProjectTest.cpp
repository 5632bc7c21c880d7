#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "files/ChunkFile.h"
#include "foundation/Desktop.h"
#include "foundation/Random.h"
#include "foundation/Strings.h"
#include "persistence/OldRecords.h"
#include "persistence/ProjectData.h"
#include "render/Textures.h"

// A level that sets every field that a project stores.
static std::unique_ptr<World> FullWorld(ProjectData& data) {
    std::unique_ptr<World> world = data.NewWorld();
    const int brick = world->GetNewMaterial("wall", "brick"), stone = world->GetNewMaterial("wall", "stone");
    Brush* box = AddTestBrush(*world, BT_BOX, 0, stone);
    Brush* cone = AddTestBrush(*world, BT_CONE, 100, brick);
    AddTestBrush(*world, BT_Q_BLOCK, 200, 0);
    box->name = "crate";
    box->death_particle = "splinters";
    box->energy = 65535;
    box->properties = BP_DYNAMIC | BP_NO_PROJECTOR;
    box->elasticity = 0.125f, box->static_friction = 0.25f, box->dynamic_friction = 0.375f, box->time_scale = 1.5f;
    box->rotation_factor = 2.5f, box->mass = 7, box->coll_dmg = 0.5f, box->touch_dmg = 0.75f;
    box->link_action = -3;
    box->is_hidden = box->is_frozen = true;
    TEX_INFO& mapping = box->surfaces[2].texture;
    mapping.shift = {3, 4}, mapping.scale = {0.5f, 2}, mapping.size = {16, 16}, mapping.rotation = 30;
    mapping.flip_u = mapping.flip_v = mapping.locked = mapping.fitted = true;
    for (const auto& brush : world->brush) { // coordinates are derived: the loader maps them anew
        brush->GenerateTextureSpaces();
        brush->RemapAll();
    }

    Entity* light = data.Place(*world, "light", {1, 2, 3});
    Entity* actor = data.Place(*world, "actor", {-4, -5, -6});
    data.Place(*world, "object_point", {9, 9, 9});
    light->variable_name = "lamp";
    light->is_hidden = true;
    light->GetParameterStr("dynamic")->p_bool = true;
    light->GetParameterStr("count")->p_int = -12;
    light->GetParameterStr("range")->p_float = 300.5f;
    light->GetParameterStr("pair")->p_vector2 = {5, 6};
    light->GetParameterStr("wind")->p_vector3 = {7, 8, 9};
    light->GetParameterStr("color")->p_color = MakeColor(1, 2, 3, 4);
    light->GetParameterStr("picture")->p_text = "sun.tga";
    light->GetParameterStr("script")->p_text = "Wait 1\nEndLevel";
    light->GetParameterStr("mood")->p_text = "angry";
    box->AddLinkedObjectID(light->GetObjectID());
    box->AddLinkedObjectID(cone->GetObjectID());
    light->AddLinkedObjectID(actor->GetObjectID());

    Selection brushes, entities;
    brushes.AddItem(2), brushes.AddItem(0), entities.AddItem(1);
    world->AddGroup(brushes, entities);
    world->map_file = "night", world->map_name = "The Long Night";
    world->mp_games = {"Deathmatch", "Relic"};
    auto monks = std::make_unique<CActorGroup>();
    monks->name = "Monks";
    monks->SetType(1, AGT_Enemy);
    monks->SetTurnToEnemy(0, true);
    world->actor_groups.push_back(std::move(monks));
    auto decal = std::make_unique<DecalTemplate>();
    decal->texture = crTGet("Textures\\wall", "brick", TL_MATERIAL);
    decal->color = MakeColor(9, 8, 7, 255);
    decal->x_size = 24, decal->y_size = 12, decal->o_position = {1, 1, 1}, decal->o_normal = {0, 1, 0},
    decal->o_rotation = 45, decal->id = 77;
    world->AddNewDecal(std::move(decal));
    return world;
}

static void ExpectSameSurface(const Surface& a, const Surface& b) {
    EXPECT_EQ(a.vertices, b.vertices);
    EXPECT_EQ(a.tri_indices, b.tri_indices);
    EXPECT_EQ(a.edge_indices, b.edge_indices);
    EXPECT_EQ(a.cp, b.cp);
    EXPECT_EQ(a.cp_count, b.cp_count);
    EXPECT_EQ(a.texture, b.texture);
}

static void ExpectSameBrush(const Brush& a, const Brush& b) {
    EXPECT_EQ(a.GetObjectID(), b.GetObjectID());
    EXPECT_EQ(a.type, b.type);
    EXPECT_EQ(a.name, b.name);
    EXPECT_EQ(a.death_particle, b.death_particle);
    EXPECT_EQ(a.energy, b.energy);
    EXPECT_EQ(a.properties, b.properties);
    for (float Brush::*field :
         {&Brush::elasticity, &Brush::static_friction, &Brush::dynamic_friction, &Brush::time_scale,
          &Brush::rotation_factor, &Brush::mass, &Brush::coll_dmg, &Brush::touch_dmg})
        EXPECT_EQ(a.*field, b.*field);
    EXPECT_EQ(a.link_action, b.link_action);
    EXPECT_EQ(a.color_vector, b.color_vector);
    EXPECT_EQ(a.is_hidden, b.is_hidden);
    EXPECT_EQ(a.is_frozen, b.is_frozen);
    EXPECT_EQ(a.bbox, b.bbox);
    ASSERT_EQ(a.surfaces.size(), b.surfaces.size());
    ASSERT_EQ(a.curved_surfaces.size(), b.curved_surfaces.size());
    for (size_t s = 0; s < a.surfaces.size(); ++s)
        ExpectSameSurface(a.surfaces[s], b.surfaces[s]);
    for (size_t s = 0; s < a.curved_surfaces.size(); ++s)
        ExpectSameSurface(a.curved_surfaces[s], b.curved_surfaces[s]);
    ASSERT_EQ(a.GetLinkedObjectsCount(), b.GetLinkedObjectsCount());
    for (int k = 0; k < a.GetLinkedObjectsCount(); ++k)
        EXPECT_EQ(a.GetLinkedObjectID(k), b.GetLinkedObjectID(k));
}

static void ExpectSameEntity(const Entity& a, const Entity& b) {
    EXPECT_EQ(a.GetObjectID(), b.GetObjectID());
    EXPECT_EQ(a.name, b.name);
    EXPECT_EQ(a.str_type, b.str_type);
    EXPECT_EQ(a.variable_name, b.variable_name);
    EXPECT_EQ(a.position, b.position);
    EXPECT_EQ(a.is_hidden, b.is_hidden);
    ASSERT_EQ(a.parameter.size(), b.parameter.size());
    for (size_t p = 0; p < a.parameter.size(); ++p) {
        const EntityParameter &x = a.parameter[p], &y = b.parameter[p];
        EXPECT_EQ(x.name, y.name);
        EXPECT_EQ(x.type, y.type);
        EXPECT_EQ(x.p_bool, y.p_bool);
        EXPECT_EQ(x.p_int, y.p_int);
        EXPECT_EQ(x.p_float, y.p_float);
        EXPECT_EQ(x.p_vector2, y.p_vector2);
        EXPECT_EQ(x.p_vector3, y.p_vector3);
        EXPECT_EQ(x.p_color, y.p_color);
        EXPECT_EQ(x.p_text, y.p_text);
        EXPECT_EQ(x.constant, y.constant);
    }
    EXPECT_EQ(a.GetLinkedObjectsCount(), b.GetLinkedObjectsCount());
}

TEST(Project, KeepsEveryField) {
    ProjectData data;
    ProjectViews views;
    views.top = {{-10, 20}, 4, 1, {}, {}, {1, 2, 3, 4}, {5, 6, 7, 8}};
    views.perspective.camera_position = {10, 20, 30};
    views.perspective.camera_rotation = {0.5f, 1, 0};
    views.cordon_box = MakeBox({-1, -2, -3}, {4, 5, 6});
    views.clip_box = MakeBox({-7, -8, -9}, {10, 11, 12});
    std::unique_ptr<World> saved = FullWorld(data);
    ASSERT_TRUE(SaveProject("level.msp", *saved, views, false, data.error)) << data.error;

    ProjectViews loaded_views;
    std::unique_ptr<World> loaded = data.Load("LEVEL.MSP", loaded_views);
    ASSERT_TRUE(loaded) << data.error;
    ASSERT_EQ(loaded->GetBrushCount(), 3);
    for (size_t b = 0; b < 3; ++b)
        ExpectSameBrush(*saved->brush[b], *loaded->brush[b]);
    ASSERT_EQ(loaded->GetEntityCount(), 2) << "the path point belongs to the movie";
    for (size_t e = 0; e < 2; ++e)
        ExpectSameEntity(*saved->entity[e], *loaded->entity[e]);
    ASSERT_EQ(loaded->GetMaterialCount(), 3);
    EXPECT_EQ(loaded->material[1].material_name, "brick");
    EXPECT_EQ(loaded->material[2].material_name, "stone");
    ASSERT_EQ(loaded->GetGroupCount(), 1);
    EXPECT_EQ(std::vector<int>(loaded->group[0].brushes.begin(), loaded->group[0].brushes.end()),
              (std::vector<int>{2, 0}));
    EXPECT_EQ(loaded->group[0].entities.GetItem(0), 1);
    EXPECT_EQ(loaded->map_file, "night");
    EXPECT_EQ(loaded->map_name, "The Long Night");
    EXPECT_EQ(loaded->mp_games, saved->mp_games);
    ASSERT_EQ(loaded->actor_groups.size(), 3u);
    EXPECT_EQ(loaded->actor_groups[0]->name, "Player");
    EXPECT_EQ(loaded->actor_groups[0]->GetType(1), AGT_Enemy);
    EXPECT_EQ(loaded->actor_groups[2]->name, "Monks");
    EXPECT_EQ(loaded->actor_groups[2]->GetType(1), AGT_Enemy);
    EXPECT_TRUE(loaded->actor_groups[2]->GetTurnToEnemy(0));
    ASSERT_EQ(loaded->decal_template.size(), 1u);
    const DecalTemplate& decal = *loaded->decal_template[0];
    EXPECT_EQ(decal.color, MakeColor(9, 8, 7, 255));
    EXPECT_EQ(decal.x_size, 24);
    EXPECT_EQ(decal.y_size, 12);
    EXPECT_EQ(decal.o_normal, (D3DVECTOR{0, 1, 0}));
    EXPECT_EQ(decal.o_rotation, 45);
    EXPECT_EQ(decal.id, 77u);
    EXPECT_EQ(loaded->last_decal_id, 77u);
    EXPECT_EQ(std::memcmp(&loaded_views, &views, sizeof views), 0);

    ASSERT_TRUE(SaveProject("again.msp", *loaded, loaded_views, false, data.error));
    const std::string first = ReadBytes("level.msp"), second = ReadBytes("again.msp");
    EXPECT_TRUE(first == second) << "what was read is not what is written";
}

template <class T>
static T At(const std::vector<uint8_t>& bytes, size_t offset) {
    T value{};
    if (offset + sizeof(T) <= bytes.size())
        std::memcpy(&value, bytes.data() + offset, sizeof(T));
    return value;
}

TEST(Project, BytesStandWhereTheFormatHasThem) {
    ProjectData data;
    std::unique_ptr<World> world = FullWorld(data);
    ASSERT_TRUE(SaveProject("level.msp", *world, {}, false, data.error));
    UChunkFile file("level.msp", CFM_Open);
    ASSERT_TRUE(file.OpenChunk("FormatID"));
    EXPECT_EQ(file.GetArrayLength(0), 29u);

    ASSERT_TRUE(file.OpenChunk("BrushData", 0));
    const std::vector<uint8_t> record = file.GetArrayAlloc(0);
    ASSERT_EQ(record.size(), 147u);
    EXPECT_EQ(At<uint32_t>(record, 0), 1u);
    EXPECT_EQ(At<float>(record, 4 + 12), 64.0f) << "corner 1 is the high one";
    EXPECT_EQ(At<float>(record, 100), 32.0f) << "pivot";
    EXPECT_EQ(At<uint32_t>(record, 112), 0x007F3FFFu) << "0.5, 0.25, 1 times 255, cut";
    EXPECT_EQ(At<float>(record, 116 + 8), 1.0f);
    EXPECT_EQ(At<int32_t>(record, 132), 6);
    EXPECT_EQ(At<int32_t>(record, 136), 0);
    EXPECT_EQ(At<int32_t>(record, 140), 2);
    EXPECT_EQ(record[144], 0);
    EXPECT_EQ(record[145], 1);
    EXPECT_EQ(record[146], 1);
    // 1 record, 1 links, 6 counts, 6 times 7 surface arrays, 17 scalars (both names are there)
    EXPECT_EQ(file.GetArraysCountInChunk(), 1u + 1 + 6 + 42 + 17);
    const std::vector<uint8_t> counts = file.GetArrayAlloc(2);
    EXPECT_EQ((std::vector<int32_t>{At<int32_t>(counts, 0), At<int32_t>(counts, 4), At<int32_t>(counts, 8),
                                    At<int32_t>(counts, 12)}),
              (std::vector<int32_t>{4, 2, 4, 0}));
    const std::vector<uint8_t> mapping = file.GetArrayAlloc(8 + 2 * 7 + 6); // of surface 2
    ASSERT_EQ(mapping.size(), 36u);
    EXPECT_EQ(At<float>(mapping, 0), 3.0f);
    EXPECT_EQ(At<float>(mapping, 12), 2.0f);
    EXPECT_EQ(At<float>(mapping, 24), 30.0f);
    EXPECT_EQ(mapping[28] + mapping[29] + mapping[30] + mapping[35], 4);
    EXPECT_EQ(At<int32_t>(mapping, 31), 2);

    ASSERT_TRUE(file.OpenChunk("BrushData", 1)); // a cone of three rows: 4 caps and 12 patches, no flat surface
    EXPECT_EQ(At<int32_t>(file.GetArrayAlloc(0), 136), 16);
    EXPECT_EQ(file.GetArraysCountInChunk(), 1u + 16 + 16 * 2 + 15) << "no links, no names";
    EXPECT_EQ(file.GetArrayLength(1 + 16), 4u * 12);
    EXPECT_EQ(file.GetArrayLength(1 + 16 + 4 * 2), 9u * 12);

    ASSERT_TRUE(file.OpenChunk("EntityData", 1));
    EXPECT_EQ(file.GetArrayLength(file.GetArraysCountInChunk() - 1), 0u)
        << "the second link list is there though empty";
    EXPECT_EQ(file.GetChunkTypeCount("EntityData"), 2);
    ASSERT_TRUE(file.OpenChunk("MaterialData", 2));
    EXPECT_EQ(file.GetArrayLength(1), 64u);
    ASSERT_TRUE(file.OpenChunk("MapInfo"));
    EXPECT_EQ(file.GetArrayLength(0), 260u);
    EXPECT_EQ(file.GetArrayLength(1), 72u);
    ASSERT_TRUE(file.OpenChunk("Decals"));
    const std::vector<uint8_t> decal = file.GetArrayAlloc(1);
    ASSERT_EQ(decal.size(), 124u);
    EXPECT_STREQ(reinterpret_cast<const char*>(decal.data()), "wall");
    EXPECT_STREQ(reinterpret_cast<const char*>(decal.data()) + 32, "brick");
    EXPECT_EQ(At<float>(decal, 108), 24.0f);
    EXPECT_EQ(At<uint32_t>(decal, 120), 77u);
    ASSERT_TRUE(file.OpenChunk("AIGroups"));
    EXPECT_EQ(file.GetArraysCountInChunk(), 1u + 3 * 4);
    EXPECT_EQ(file.GetArrayLength(1), 6u) << "Player, without terminator";
}

TEST(Project, MissingMaterialsCloseUp) {
    ProjectData data;
    std::unique_ptr<World> world = FullWorld(data);
    ASSERT_TRUE(SaveProject("level.msp", *world, {}, false, data.error));
    std::filesystem::remove("Scripts/Materials/wall/brick.mtl");
    std::filesystem::remove("Textures/wall/brick.tga");
    data.materials.ParseTextures();
    std::unique_ptr<World> loaded = data.Load("level.msp");
    ASSERT_TRUE(loaded) << data.error;
    ASSERT_EQ(loaded->GetMaterialCount(), 2);
    EXPECT_EQ(loaded->material[1].material_name, "stone");
    EXPECT_EQ(loaded->brush[0]->surfaces[0].texture.index, 1) << "the box keeps its stone";
    EXPECT_EQ(loaded->brush[1]->curved_surfaces[0].texture.index, 0) << "the cone lost its brick";
}

TEST(Project, UnknownDefinitionsDropTheirEntityOnly) {
    ProjectData data;
    HeadlessDesktop desktop;
    SetDesktop(&desktop);
    ForgetNotices();
    std::unique_ptr<World> world = FullWorld(data);
    ASSERT_TRUE(SaveProject("level.msp", *world, {}, false, data.error));
    std::string definitions = TEST_DEFINITIONS;
    definitions.replace(definitions.find("#lights\\light"), 13, "#lights\\torch");
    WriteBytes("Marrowstead/entities.def", definitions);
    data.parser = std::make_unique<EntityParser>("Marrowstead\\entities.def");
    std::unique_ptr<World> loaded = data.Load("level.msp");
    SetDesktop(nullptr);
    ASSERT_TRUE(loaded) << data.error;
    ASSERT_EQ(loaded->GetEntityCount(), 1);
    EXPECT_EQ(loaded->entity[0]->name, "actor");
    EXPECT_EQ(loaded->brush[0]->GetLinkedObjectsCount(), 2) << "a stale link is passed over, not repaired";
    EXPECT_EQ(desktop.notices, std::vector<std::string>{"missing entity definition \"light\""});
}

TEST(Project, OldVersionsAreConverted) {
    ProjectData data;
    for (const char* version : {"Marrowstead2000 Project v1.1", "marrowstead2000 PROJECT V1.1", ""}) {
        {
            UChunkFile file("old.msp", CFM_Create);
            if (*version) {
                file.CreateChunk("FormatID", ANY_CHUNK_ID);
                file.WriteString(version);
                file.CloseChunk();
            }
            file.CreateChunk("FutureData", 3); // a chunk of nobody's
            file.WriteString("whatever");
            file.CloseChunk();
            WriteOldBrush(file, 2);  // the third entity of the file
            WriteOldBrush(file, -1); // none
            WriteOldBrush(file, 1);  // one that is dropped
            WriteOldEntity(file, "light", -1);
            WriteOldEntity(file, "gone", -1);
            WriteOldEntity(file, "actor", -1);
            ASSERT_TRUE(file.CloseChunkFile());
        }
        std::unique_ptr<World> loaded = data.Load("old.msp");
        ASSERT_TRUE(loaded) << data.error;
        ASSERT_EQ(loaded->GetBrushCount(), 3);
        ASSERT_EQ(loaded->GetEntityCount(), 2);
        const Entity& actor = *loaded->entity[1];
        ASSERT_EQ(loaded->brush[0]->GetLinkedObjectsCount(), 1);
        EXPECT_EQ(loaded->brush[0]->GetLinkedObjectID(0), actor.GetObjectID());
        EXPECT_EQ(loaded->brush[1]->GetLinkedObjectsCount(), 0);
        EXPECT_EQ(loaded->brush[2]->GetLinkedObjectsCount(), 0);
        EXPECT_EQ(loaded->brush[0]->elasticity, 0.0f) << "absent: the preset of the reader";
        EXPECT_EQ(loaded->brush[0]->static_friction, 0.5f) << "absent: the default of a brush";
        EXPECT_EQ(loaded->brush[0]->mass, 1.0f);
        EXPECT_EQ(actor.GetParameterStr("orientation")->p_float, 275.0f);
        EXPECT_EQ(actor.GetParameterStr("watch_enemy_type")->p_text, "look");
        EXPECT_EQ(loaded->entity[0]->GetParameterStr("range")->p_float, 256.0f) << "another type keeps the default";
        EXPECT_EQ(loaded->actor_groups.size(), 2u) << "the default groups stay";
    }
}

TEST(Project, DamagesBelowAHundredthReadAsNone) {
    ProjectData data;
    std::unique_ptr<World> world = data.NewWorld();
    Brush* brush = AddTestBrush(*world, BT_RECTANGLE, 0, 0);
    brush->coll_dmg = 0.0099f;
    brush->touch_dmg = 0.01f;
    ASSERT_TRUE(SaveProject("level.msp", *world, {}, false, data.error));
    std::unique_ptr<World> loaded = data.Load("level.msp");
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->brush[0]->coll_dmg, 0.0f);
    EXPECT_EQ(loaded->brush[0]->touch_dmg, 0.01f);
}

TEST(Project, UnusableGeometryIsRepairedAndShown) {
    ProjectData data;
    std::unique_ptr<World> world = data.NewWorld();
    AddTestBrush(*world, BT_BOX, 0, 0)->surfaces[0].tri_indices[0].i[1] = 4; // beyond its four vertices
    AddTestBrush(*world, BT_BOX, 100, 0)->surfaces[5].vertices[2].y = std::nanf("");
    AddTestBrush(*world, BT_BOX, 200, 0);
    AddTestBrush(*world, BT_BOX, 300, 0)->surfaces[2].uv[1].u = std::numeric_limits<float>::infinity();
    AddTestBrush(*world, BT_BOX, 400, 0)->surfaces[1].texture.scale.v = 1.0e30f;
    AddTestBrush(*world, BT_BOX, 500, 0)->surfaces[1].texture.size.u = 1.0e-30f;
    ASSERT_TRUE(SaveProject("level.msp", *world, {}, false, data.error));
    std::unique_ptr<World> loaded = data.Load("level.msp");
    ASSERT_TRUE(loaded) << data.error;
    for (const auto& brush : loaded->brush)
        for (const Surface& surface : brush->surfaces)
            for (const UVVector& uv : surface.uv)
                EXPECT_TRUE(std::fabs(uv.u) < 1.0e6f && std::fabs(uv.v) < 1.0e6f) << uv.u << " " << uv.v;
    EXPECT_EQ(loaded->brush[0]->surfaces[0].tri_indices[0].i[1], 0);
    EXPECT_EQ(loaded->brush[1]->surfaces[5].vertices[2].y, 0.0f);
    EXPECT_EQ(std::vector<int>(loaded->brush_selection.begin(), loaded->brush_selection.end()),
              (std::vector<int>{0, 1, 3, 4, 5}));
}

TEST(Project, BackupHoldsTheLastVersion) {
    ProjectData data;
    std::unique_ptr<World> world = data.NewWorld();
    ASSERT_TRUE(SaveProject("level.msp", *world, {}, true, data.error));
    EXPECT_FALSE(std::filesystem::exists("level.msp.bkp")) << "nothing to keep yet";
    std::vector<std::string> versions;
    for (int k = 0; k < 3; ++k) {
        versions.push_back(ReadBytes("level.msp"));
        AddTestBrush(*world, BT_BOX, 0, 0);
        ASSERT_TRUE(SaveProject("level.msp", *world, {}, true, data.error));
        EXPECT_TRUE(ReadBytes("level.msp.bkp") == versions.back());
    }
}

TEST(Project, FailedSaveLeavesTheOldFile) {
    ProjectData data;
    std::unique_ptr<World> world = data.NewWorld();
    EXPECT_FALSE(SaveProject("no such folder\\level.msp", *world, {}, false, data.error));
    EXPECT_NE(data.error.find("level.msp"), std::string::npos) << data.error;
    std::filesystem::create_directories("taken.msp/inside"); // a folder cannot be replaced by a file
    EXPECT_FALSE(SaveProject("taken.msp", *world, {}, false, data.error));
    EXPECT_TRUE(std::filesystem::is_directory("taken.msp/inside"));
    EXPECT_EQ(EntriesIn("taken.msp"), 1u);
}

// No damage may crash or hang the reader: it refuses with a sentence that names the file, or reads what is left.
TEST(Project, ARefusedFileLeavesTheViewsAsTheyWere) {
    ProjectData data;
    std::unique_ptr<World> world = FullWorld(data);
    ProjectViews stored;
    stored.left.window_rect = {-2000000000, 5, 2000000000, 6};
    stored.left.zoom_in = 8;
    stored.clip_box = MakeBox({-1, -1, -1}, {1, 1, 1});
    ASSERT_TRUE(SaveProject("level.msp", *world, stored, false, data.error));
    {
        UChunkFile whole("level.msp", CFM_Open), damaged("damaged.msp", CFM_Create);
        for (bool more = whole.OpenChunk(nullptr, ANY_CHUNK_ID, COT_Any); more; more = whole.OpenNextChunk()) {
            damaged.CreateChunk(whole.GetChunkName(), whole.GetChunkID());
            const bool last = std::string(whole.GetChunkName()) == "Decals";
            for (uint32_t k = 0; k < whole.GetArraysCountInChunk(); ++k)
                damaged.WriteValues(last ? std::vector<uint8_t>{100, 0, 0, 0} : whole.GetArrayAlloc(k));
            damaged.CloseChunk();
        }
        ASSERT_TRUE(damaged.CloseChunkFile());
    }
    ProjectViews views;
    views.left.window_rect = {1, 2, 3, 4};
    const ProjectViews before = views;
    EXPECT_FALSE(data.Load("damaged.msp", views));
    EXPECT_EQ(std::memcmp(&views.left, &before.left, sizeof views.left), 0);
    EXPECT_EQ(views.clip_box, before.clip_box);
    EXPECT_TRUE(data.Load("level.msp", views)) << data.error;
    EXPECT_EQ(views.left.zoom_in, 8);
}

TEST(Project, FilesOfOtherKindsAreNoLevels) {
    ProjectData data;
    const auto refusal = [&](const char* chunk, const char* text) {
        {
            UChunkFile file("other.msp", CFM_Create);
            file.CreateChunk(chunk, ANY_CHUNK_ID);
            file.WriteString(text);
            file.CloseChunk();
            EXPECT_TRUE(file.CloseChunkFile());
        }
        return data.Load("other.msp") ? "opened" : data.error;
    };
    EXPECT_EQ(refusal("FileID", "Fennelworks World v2.1"),
              "\"other.msp\" cannot be read: it is a compiled world, not a project");
    EXPECT_EQ(refusal("General", "x"), "\"other.msp\" cannot be read: it holds no level");
    EXPECT_EQ(refusal("FormatID", "Marrowstead2000 Project v2.0"), "opened");
    WriteBytes("other.msp", "a text of someone else, longer than the beginning of a file of ours");
    EXPECT_FALSE(data.Load("other.msp"));
    EXPECT_EQ(data.error, "\"other.msp\" is not a file of Marrowstead 2000, or its beginning is damaged");
}

TEST(Project, DamagedFilesAreRefusedInOneSentence) {
    ProjectData data;
    std::unique_ptr<World> world = FullWorld(data);
    ASSERT_TRUE(SaveProject("level.msp", *world, {}, false, data.error));
    const std::string good = ReadBytes("level.msp");
    const auto expect_survival = [&](const std::string& bytes) {
        WriteBytes("damaged.msp", bytes);
        data.error.clear();
        if (!data.Load("damaged.msp")) {
            EXPECT_NE(data.error.find("damaged.msp"), std::string::npos) << data.error;
            EXPECT_EQ(data.error.find('\n'), std::string::npos);
        }
    };
    RandomMT random;
    for (size_t length = 0; length < good.size(); length += 1 + random.randomMT() % 97)
        expect_survival(good.substr(0, length));
    for (int round = 0; round < 400; ++round) {
        std::string bytes = good;
        for (uint32_t k = 0; k < 1 + random.randomMT() % 4; ++k) {
            const size_t at = random.randomMT() % (bytes.size() - 4);
            if (random.randomMT() % 2)
                bytes[at] = static_cast<char>(random.randomMT());
            else
                bytes.replace(at, 4, round % 2 ? "\xff\xff\xff\x7f" : "\xff\xff\xff\xff");
        }
        expect_survival(bytes);
    }
    EXPECT_FALSE(data.Load("nothing.msp"));
    EXPECT_NE(data.error.find("nothing.msp"), std::string::npos);
}
