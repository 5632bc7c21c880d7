// What comes back after a crash is the whole level: as after saving and opening it, byte by byte, and its paths.
#include "commands/Recovery.h"
#include "commands/ScriptData.h"
#include "pages/BrushProperties.h"
#include "persistence/MovieFile.h"
#include "render/Textures.h"
#include "scene/PathScenes.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* KINDS[] = {"CAMERA",  "PATH_POINT_TGT", "VISIBILITY_EYE", "CORONA", "PARTICLE", "SOUND",
                                 "TRIGGER", "START_POSITION", "DUMMY_OBJECT",   "ITEM",   "WEAPON"};

// Every kind of object, and every bond between objects.
class RecoveredLevels : public ScriptData {
protected:
    RecoveredLevels() {
        std::string definitions = TEST_DEFINITIONS;
        for (const char* kind : KINDS)
            definitions += "#" + NameOf(kind) + " { #Type <" + kind +
                           "> #TraceType <Trace> #EntityLocation <AnyCell> #EditorImage { MODEL (BOX) } #Parameters { "
                           "INT count = 3; STRING script = \"\"; } }\n";
        WriteBytes("Marrowstead/entities.def", definitions);
        interface->entity_parser = std::make_unique<EntityParser>("Marrowstead\\entities.def");
        WriteBytes("heights.tga", TargaBytes(8, 8, 8));
    }
    static std::string NameOf(const std::string& kind) {
        std::string name = kind == "PATH_POINT_TGT" ? "target_point" : kind;
        for (char& c : name)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return name;
    }
    Entity& Place(const std::string& name, float x) {
        auto entity = std::make_unique<Entity>(*interface->entity_parser->GetTemplate(name, false));
        entity->SetPosition({x, 8, 16});
        return *Level().NewEntityCreated(std::move(entity), 0);
    }
    void MakeBrushes() {
        const int brick = Level().GetNewMaterial("wall", "brick");
        for (uint32_t type = BT_RECTANGLE; type <= BT_OCCLUDER; ++type)
            if (type != BT_CUSTOM && type != BT_EXTRUDABLE)
                AddTestBrush(Level(), static_cast<BrushType>(type), 100.0f * static_cast<float>(type), brick);
        BrushShape outline;
        outline.type = BT_EXTRUDABLE;
        outline.bb = MakeBox({-300, 0, 0}, {-200, 64, 100});
        outline.ex_points = {{-300, 0, 0}, {-200, 0, 0}, {-250, 100, 0}};
        Level().CreateBrush(outline);
        Level().ClearSelection();
        ASSERT_EQ(Run("terrain heights.tga 512 64 512 2 2 4\nkey Esc\n"), "");
        Brush& door = LevelBrush(1);
        door.name = "door", door.death_particle = "splinters", door.properties = BP_DYNAMIC;
        door.is_hidden = door.is_frozen = true;
        door.surfaces[2].texture.shift = {3, 4};
        door.surfaces[2].texture.locked = true;
        LevelBrush(4).type = BT_CUSTOM; // as a mesh that was placed
    }
    // Points stand between the other entities, as they were placed.
    void MakeEntities() {
        Entity& lamp = Place("light", 0);
        AddPoint(Level(), lamp, false, {0, 0, 0}, {{"speed", 2.5f}});
        for (const char* kind : KINDS)
            if (std::string(kind) != "PATH_POINT_TGT")
                Place(NameOf(kind), 64);
        AddPoint(Level(), lamp, false, {100, 0, 0}, {{"delay", 1.5f}});
        AddPoint(Level(), lamp, true, {0, 100, 0});
        AddPoint(Level(), LevelBrush(0), false, {5, 6, 7});
        Entity& monk = Place("actor", 300);
        monk.variable_name = "abbot";
        monk.is_hidden = true;
        lamp.GetParameterStr("script")->p_text = "Wait 1\nEndLevel";
        lamp.AddLinkedObjectID(monk.GetObjectID());
        LevelBrush(1).AddLinkedObjectID(lamp.GetObjectID());
        LevelBrush(1).AddLinkedObjectID(LevelBrush(2).GetObjectID());
        Selection brushes, entities;
        brushes.AddItem(3), brushes.AddItem(0), entities.AddItem(Level().GetEntityIndex(&monk));
        Level().AddGroup(brushes, entities);
    }
    void MakeTables() {
        auto decal = std::make_unique<DecalTemplate>();
        decal->texture = crTGet("Textures\\wall", "brick", TL_MATERIAL);
        decal->x_size = 24, decal->y_size = 12, decal->o_position = {132, 32, 20}, decal->o_normal = {0, 1, 0};
        Level().AddNewDecal(std::move(decal));
        auto monks = std::make_unique<CActorGroup>();
        monks->name = "Monks";
        monks->SetType(1, AGT_Enemy);
        Level().actor_groups.push_back(std::move(monks));
        Level().map_file = "night", Level().map_name = "The Long Night";
        Level().mp_games = {"Deathmatch", "Relic"};
        interface->views.cordon_box = MakeBox({1, 2, 3}, {40, 50, 60});
        interface->views.clip_box = MakeBox({-1, -2, -3}, {4, 5, 6});
        interface->views.perspective.camera_position = {10, 20, 30};
        interface->movie_editing = true;
        Level().movie_name = data.folder / "flight.mvi";
        interface->MarkDirty();
    }
    // The files of a run that was killed: those of a living one under another name, without its lock.
    void WriteAndCrash() {
        const fs::path kept = data.folder / "config/recovery";
        RecoveryFile crashing(*interface);
        ASSERT_TRUE(crashing.Write());
        for (const auto& entry : fs::directory_iterator(kept))
            if (entry.path().extension() != ".lock")
                fs::copy_file(entry.path(), kept / ("level-c" + entry.path().extension().string()));
    }
    // The project and the movie as files of these names hold them.
    void Save(const std::string& name) {
        std::string error;
        ASSERT_EQ(Run("save " + name + ".msp\n"), "");
        ASSERT_EQ(interface->SaveMovie(data.folder / (name + ".mvi"), error), MOVIE_OK) << error;
    }
    // The objects and tables, without what is of the run: so are the ids of points, each reading gives new ones.
    nlohmann::json Scene() {
        nlohmann::json state = Dump();
        for (const char* of_the_run : {"interface", "undo", "redo", "messages", "selection", "completion"})
            state.erase(of_the_run);
        std::map<uint32_t, size_t> places, points;
        for (const nlohmann::json& entity : state["entities"])
            places.emplace(entity["object_id"].get<uint32_t>(), places.size());
        for (const char* table : {"brushes", "entities"})
            for (nlohmann::json& object : state[table])
                for (const char* path : {"path", "target_path"})
                    for (nlohmann::json& point : object["paths"][path])
                        point = points[point.get<uint32_t>()] = places.at(point.get<uint32_t>());
        EXPECT_EQ(points.size(), 4u);
        for (const auto& [id, place] : points)
            state["entities"][place].erase("object_id");
        return state;
    }
};

} // namespace

TEST_F(RecoveredLevels, AreTheSavedOnesByteByByte) {
    MakeBrushes();
    MakeEntities();
    MakeTables();
    WriteAndCrash();
    Save("saved");
    ASSERT_EQ(Run("new\nopen saved.msp\nmovie load saved.mvi\n"), "");
    const nlohmann::json opened = Scene();
    Save("opened");
    interface->movie_editing = false;
    ASSERT_EQ(Run("new\n"), "");

    RecoveryFile recovery(*interface);
    desktop.answers = {"yes"};
    recovery.Offer(frame->document);
    EXPECT_TRUE(interface->movie_editing);
    EXPECT_EQ(Level().movie_name, data.folder / "flight.mvi");
    ASSERT_EQ(Level().GetBrushCount(), 17) << "a brush of each type, and four of the terrain";
    ASSERT_EQ(Level().GetEntityCount(), 16) << "twelve kinds and four points";
    const nlohmann::json recovered = Scene();
    EXPECT_TRUE(recovered == opened) << nlohmann::json::diff(opened, recovered).dump(1).substr(0, 3000);
    ASSERT_EQ(Level().group.size(), 2u) << "the terrain is one, too";
    const ObjectGroupLists& mixed = Level().group[Level().group[0].entities.GetItemCount() == 0 ? 1 : 0];
    ASSERT_EQ(mixed.entities.GetItemCount(), 1);
    const int member = mixed.entities.GetItem(0);
    EXPECT_EQ(Level().entity.at(static_cast<size_t>(member))->variable_name, "abbot");
    Save("recovered");
    EXPECT_EQ(interface->SaveMovie(data.folder / "recovered.mvi", data.error), MOVIE_OK);
    EXPECT_TRUE(ReadBytes("recovered.msp") == ReadBytes("opened.msp"));
    EXPECT_TRUE(ReadBytes("recovered.mvi") == ReadBytes("saved.mvi"));
    EXPECT_GT(ReadBytes("saved.mvi").size(), 100u);
}

TEST_F(ScriptData, EachPropertyThatABrushCanGetIsSaved) {
    ASSERT_EQ(Run("drag top 256 256 300 200\n"), "");
    BrushProperties given(Level());
    for (int f = 0; f < BrushProperties::FIELD_COUNT; ++f)
        given.SetValue(static_cast<BrushProperties::FieldName>(f), std::to_string(3 + f));
    for (int bit = 0; bit < BRUSH_PROPERTY_COUNT; ++bit)
        given.SetFlag(bit, true);
    ASSERT_TRUE(given.Apply(Level()));
    ASSERT_EQ(Run("save level.msp\nopen level.msp\n"), "");
    Level().SelectAll();
    const BrushProperties opened(Level());
    for (size_t f = 0; f < BrushProperties::FIELD_COUNT; ++f)
        EXPECT_EQ(opened.fields[f].value, given.fields[f].value) << opened.fields[f].label;
    EXPECT_EQ(opened.flags, given.flags);
}
