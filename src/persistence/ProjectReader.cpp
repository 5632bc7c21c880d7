#include <algorithm>

#include "files/ChunkFile.h"
#include "foundation/Desktop.h"
#include "foundation/Strings.h"
#include "persistence/BrushReader.h"
#include "persistence/ObjectChunks.h"
#include "persistence/Project.h"
#include "persistence/ProjectChunks.h"
#include "persistence/Records.h"
#include "scene/DecalCutting.h"

namespace {

class ProjectReader {
public:
    ProjectReader(UChunkFile& chunk_file, World& new_world, ProjectViews& project_views, MaterialLibrary& library,
                  EntityParser& definitions)
        : file(chunk_file), world(new_world), views(project_views), materials(library), parser(definitions) {}

    bool Read() {
        ReadVersion();
        if (!CheckKind() || !ReadBrushes() || !ReadMaterials())
            return false;
        RenumberMaterials();
        if (!ReadEntities())
            return false;
        if (version < PROJECT_VERSION_2_0)
            ConvertBrushLinks();
        for (const auto& brush : world.brush)
            RestoreDerivedData(*brush, world.GetMaterialCount());
        world.SmoothTerrainEdgeNormals();
        world.GenerateIDs();
        return ReadMapInfo() && ReadGroups() && ReadBoxes() && ReadGames() && ReadActorGroups() && ReadDecals();
    }
    // Only the decals, in place of the world's.
    bool ReadOnlyDecals() {
        const DecalState old(world);
        world.ClearAllDecals();
        if (ReadDecals())
            return true;
        old.Restore(world);
        return false;
    }
    const std::string& Error() const { return error; }
    ProjectLeftOut LeftOut() const {
        const auto dropped = std::count(entities_of_file.begin(), entities_of_file.end(), nullptr);
        return {static_cast<int>(dropped), unknown_materials, decals_without_texture};
    }

private:
    bool Fail(const std::string& reason) {
        error = reason;
        return false;
    }
    // Calls read(n) for each chunk of a name, n counting from 0, until one fails.
    template <class Fn>
    bool ForEachChunk(const char* name, Fn&& read) {
        int n = 0;
        for (bool more = file.OpenChunk(name, ANY_CHUNK_ID, COT_SameName); more; more = file.OpenNextChunk())
            if (!read(n++))
                return false;
        return true;
    }
    bool DamagedChunk(const char* name, int n) { return Fail(Format("%s %d is damaged", name, n)); }

    void ReadVersion() {
        std::string text;
        if (file.OpenChunk(CHUNK_FORMAT, ANY_CHUNK_ID, COT_SameName))
            file.GetNextString(text);
        version = EqualNoCase(text, PROJECT_FORMAT_2_0)   ? PROJECT_VERSION_2_0
                  : EqualNoCase(text, PROJECT_FORMAT_1_1) ? PROJECT_VERSION_1_1
                                                          : PROJECT_VERSION_1_0;
    }

    // A file of another kind would open as an empty level, and a save would write over it.
    bool CheckKind() {
        if (file.OpenChunk(CHUNK_WORLD_ID, ANY_CHUNK_ID, COT_SameName))
            return Fail("it is a compiled world, not a project");
        for (const char* name : {CHUNK_FORMAT, CHUNK_BRUSH, CHUNK_ENTITY, CHUNK_MAP_INFO})
            if (file.OpenChunk(name, ANY_CHUNK_ID, COT_SameName))
                return true;
        return Fail("it holds no level");
    }

    bool ReadBrushes() {
        return ForEachChunk(CHUNK_BRUSH, [&](int n) {
            uint32_t id = NO_OBJECT_ID;
            bool repaired = false;
            std::string reason;
            std::unique_ptr<Brush> brush = ReadBrush(file, version, id, repaired, reason);
            if (!brush)
                return Fail(Format("brush %d is damaged: %s", n, reason.c_str()));
            if (repaired)
                NoticeOnce(Format(
                    "\"%s\": brush %d has coordinates or indices that cannot be; it was repaired and is selected",
                    file.GetFilename().c_str(), n));
            brush->SetCurveDetail(world.curve_detail);
            if (id != NO_OBJECT_ID)
                brush->SetObjectID(id);
            if (brush->is_selected)
                world.brush_selection.AddItem(world.GetBrushCount());
            return world.AddBrush(std::move(brush)) != nullptr ||
                   Fail(Format("it has more than %d brushes", MAX_BRUSHES));
        });
    }

    bool ReadMaterials() {
        return ForEachChunk(CHUNK_MATERIAL, [&](int n) {
            MaterialRow stored;
            if (!ReadMaterial(file, stored))
                return DamagedChunk("material", n + 1);
            const std::string &material_class = stored.material_class, &name = stored.material_name;
            int row = -1;
            if (materials.MaterialExist(material_class, name)) {
                materials.AddMaterialToUseList(material_class, name);
                row = world.GetNewMaterial(material_class.c_str(), name);
            } else {
                NoticeOnce(Format("missing material \"%s\\%s\"", material_class.c_str(), name.c_str()));
                ++unknown_materials;
            }
            material_rows.push_back(row > 0 ? row : 0);
            return true;
        });
    }

    // From the numbers of the file to the rows of the world; a material that is missing becomes none.
    void RenumberMaterials() {
        for (const auto& brush : world.brush)
            brush->ForEachSurface([&](Surface& surface, int, bool) {
                const int32_t number = surface.texture.index;
                const bool known = number > 0 && static_cast<size_t>(number) < material_rows.size();
                surface.texture.index = known ? material_rows[static_cast<size_t>(number)] : 0;
            });
    }

    bool ReadEntities() {
        return ForEachChunk(CHUNK_ENTITY, [&](int n) {
            std::string name;
            if (!file.GetNextString(name))
                return DamagedChunk("entity", n);
            entities_of_file.push_back(nullptr);
            const Entity* entity_template = parser.GetTemplate(name, true);
            if (!entity_template) {
                NoticeOnce(Format("missing entity definition \"%s\"", name.c_str()));
                return true;
            }
            auto entity = std::make_unique<Entity>(*entity_template);
            uint32_t id = NO_OBJECT_ID;
            if (!ReadEntity(file, version, *entity, id))
                return DamagedChunk("entity", n);
            if (id != NO_OBJECT_ID)
                entity->SetObjectID(id);
            entities_of_file.back() = world.AddEntity(std::move(entity));
            return entities_of_file.back() != nullptr || Fail(Format("it has more than %d entities", MAX_ENTITIES));
        });
    }

    // Up to version 1.1 a brush names its entity by the place in the file. Entities need their ids before that.
    void ConvertBrushLinks() {
        world.GenerateIDs();
        for (const auto& brush : world.brush)
            for (int k = brush->GetLinkedObjectsCount() - 1; k >= 0; --k) {
                const uint32_t place = brush->GetLinkedObjectID(k);
                const Entity* entity = place < entities_of_file.size() ? entities_of_file[place] : nullptr;
                if (entity)
                    brush->SetLinkedObjectID(k, entity->GetObjectID());
                else
                    brush->RemoveLinkedObjectIDAtIndex(k);
            }
    }

    bool ReadPathField(std::string& text) {
        const std::vector<uint8_t> bytes = file.GetArrayAlloc(file.GetCurrentArrayIndex());
        file.SkipNextArray();
        if (bytes.size() != PATH_FIELD)
            return false;
        RecordReader(bytes).GetText(text, PATH_FIELD);
        return true;
    }

    bool ReadMapInfo() {
        if (!file.OpenChunk(CHUNK_MAP_INFO, ANY_CHUNK_ID, COT_SameName))
            return true;
        if (!ReadPathField(world.map_file))
            return DamagedChunk(CHUNK_MAP_INFO, 0);
        for (VIEWINFO* view : {&views.front, &views.top, &views.left, &views.perspective}) {
            VIEWINFO stored;
            if (file.GetNextValue(stored))
                *view = stored;
        }
        if (!file.IsArraysFinished() && !ReadPathField(world.map_name))
            return DamagedChunk(CHUNK_MAP_INFO, 0);
        return !file.SizeMismatch() || DamagedChunk(CHUNK_MAP_INFO, 0);
    }

    bool ReadGroups() {
        return ForEachChunk(CHUNK_GROUP,
                            [&](int n) {
                                Selection members[2];
                                for (Selection& list : members) {
                                    const uint32_t length = file.GetCurrentArrayLength();
                                    std::vector<int32_t> indices;
                                    if (length % sizeof(int32_t) != 0)
                                        return DamagedChunk("group", n);
                                    file.GetNextValues(indices, length / sizeof(int32_t));
                                    for (int32_t index : indices)
                                        if (index >= 0)
                                            list.AddItem(index);
                                }
                                return world.AddGroup(std::move(members[0]), std::move(members[1])) ||
                                       Fail(Format("it has more than %d groups", MAX_GROUPS));
                            }) &&
               (world.OptimizeGroups(), true); // indices of objects that were dropped go
    }

    bool ReadBoxes() {
        if (!file.OpenChunk(CHUNK_CORDON, ANY_CHUNK_ID, COT_SameName))
            return true;
        file.GetNextValue(views.cordon_box);
        file.GetNextValue(views.clip_box);
        return !file.SizeMismatch() || DamagedChunk(CHUNK_CORDON, 0);
    }

    bool ReadGames() {
        int32_t count = 0;
        if (!file.OpenChunk(CHUNK_MP_GAMES, ANY_CHUNK_ID, COT_SameName) || !file.GetNextValue(count))
            return true;
        if (count < 0 || count > MAX_MP_GAMES)
            return Fail(Format("it names %d game types, at most %d are possible", count, MAX_MP_GAMES));
        for (int32_t g = 0; g < count; ++g) {
            std::string game;
            if (!file.GetNextString(game))
                return DamagedChunk(CHUNK_MP_GAMES, 0);
            world.mp_games.push_back(CutText(game, NAME_FIELD - 1));
        }
        return true;
    }

    bool ReadActorGroups() {
        world.ClearActorGroups();
        world.AddDefaultGroups();
        default_groups = world.actor_groups.size();
        int32_t count = 0;
        if (!file.OpenChunk(CHUNK_AI_GROUPS, ANY_CHUNK_ID, COT_SameName) || !file.GetNextValue(count))
            return true;
        // Each group is a name and `count` relations: a square table must fit in what is there.
        if (count < 0 ||
            static_cast<uint64_t>(count) * (static_cast<uint64_t>(count) + 1) > file.GetArraysCountInChunk())
            return DamagedChunk(CHUNK_AI_GROUPS, 0);
        for (int32_t g = 0; g < count; ++g) {
            auto actor_group = std::make_unique<CActorGroup>();
            const std::vector<uint8_t> name = file.GetArrayAlloc(file.GetCurrentArrayIndex());
            file.SkipNextArray();
            actor_group->name.assign(name.begin(), name.end());
            for (int32_t k = 0; k < count; ++k) {
                SGroupRelation relation;
                if (!UnpackRelation(file.GetArrayAlloc(file.GetCurrentArrayIndex()), relation))
                    return DamagedChunk(CHUNK_AI_GROUPS, 0);
                file.SkipNextArray();
                actor_group->AddRelation(relation);
            }
            ReplaceDefaultGroup(actor_group->name);
            world.actor_groups.push_back(std::move(actor_group));
        }
        return true;
    }

    // The defaults stand in front; a stored group of the same name takes the place of one.
    void ReplaceDefaultGroup(const std::string& name) {
        for (size_t g = 0; g < default_groups; ++g)
            if (EqualNoCase(world.actor_groups[g]->name, name)) {
                world.actor_groups.erase(world.actor_groups.begin() + static_cast<std::ptrdiff_t>(g));
                --default_groups;
                return;
            }
    }

    bool ReadDecals() {
        int32_t count = 0;
        if (!file.OpenChunk(CHUNK_DECALS, ANY_CHUNK_ID, COT_SameName) || !file.GetNextValue(count))
            return true;
        if (count < 0 || count > MAX_DECAL_TEMPLATES)
            return Fail(Format("it has %d decals, at most %d are possible", count, MAX_DECAL_TEMPLATES));
        for (int32_t d = 0; d < count; ++d) {
            auto decal = std::make_unique<DecalTemplate>();
            bool lacks_texture = false;
            if (!UnpackDecalTemplate(file.GetArrayAlloc(file.GetCurrentArrayIndex()), *decal, lacks_texture))
                return DamagedChunk("decal", d);
            decals_without_texture += lacks_texture ? 1 : 0;
            file.SkipNextArray();
            world.AddNewDecal(std::move(decal));
        }
        return true;
    }

    UChunkFile& file;
    World& world;
    ProjectViews& views;
    MaterialLibrary& materials;
    EntityParser& parser;
    int version = PROJECT_VERSION_1_0;
    size_t default_groups = 0;
    std::vector<int32_t> material_rows{0}; // the world's row of each material of the file, from 1
    std::vector<Entity*> entities_of_file; // null: dropped for want of a definition
    int unknown_materials = 0, decals_without_texture = 0;
    std::string error;
};

// Opens the file and reads what is asked for. False with a sentence, and with the views as they were.
template <class ReadWhat>
bool ReadFrom(std::string_view full_name, World& world, ProjectViews& views, MaterialLibrary& materials,
              EntityParser& parser, std::string& error, ProjectLeftOut* left_out, ReadWhat read) {
    UChunkFile file(full_name, CFM_Open);
    if (!file.IsValid()) {
        error = file.GetError();
        return false;
    }
    ProjectViews stored = views;
    ProjectReader reader(file, world, stored, materials, parser);
    if ((reader.*read)()) {
        views = stored;
        if (left_out)
            *left_out = reader.LeftOut();
        return true;
    }
    error = Format("\"%s\" cannot be read: %s", file.GetFilename().c_str(), reader.Error().c_str());
    return false;
}

} // namespace

std::string ProjectLeftOut::Sentence(std::string_view file_name) const {
    std::vector<std::string> parts;
    const auto add = [&parts](int count, const char* one, const char* several) {
        if (count > 0)
            parts.push_back(count == 1 ? one : Format(several, count));
    };
    add(entities, "an entity", "%d entities");
    add(materials, "a material", "%d materials");
    add(decal_textures, "the texture of a decal", "the textures of %d decals");
    if (parts.empty())
        return {};
    std::string all = parts.front();
    for (size_t i = 1; i < parts.size(); ++i)
        all += (i + 1 < parts.size() ? ", " : " and ") + parts[i];
    return Format("What \"%s\" holds was not all known in this data folder. Left out: %s.",
                  std::string(file_name).c_str(), all.c_str());
}

bool LoadProject(std::string_view full_name, World& world, ProjectViews& views, MaterialLibrary& materials,
                 EntityParser& parser, std::string& error, ProjectLeftOut* left_out) {
    return ReadFrom(full_name, world, views, materials, parser, error, left_out, &ProjectReader::Read);
}

bool LoadDecals(std::string_view full_name, World& world, MaterialLibrary& materials, EntityParser& parser,
                std::string& error) {
    ProjectViews unused;
    return ReadFrom(full_name, world, unused, materials, parser, error, nullptr, &ProjectReader::ReadOnlyDecals);
}
