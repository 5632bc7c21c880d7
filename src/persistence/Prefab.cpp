// Prefabs (.mpf): a part of a level in a file of its own, relative to the pivot of the selection that it was.
#include <algorithm>
#include <unordered_map>

#include "definitions/EntityParser.h"
#include "definitions/MaterialLibrary.h"
#include "files/ChunkFile.h"
#include "foundation/Desktop.h"
#include "foundation/Strings.h"
#include "persistence/BrushReader.h"
#include "persistence/ObjectChunks.h"
#include "persistence/ProjectChunks.h"
#include "scene/FrontEnd.h"
#include "scene/World.h"

namespace {

constexpr bool KEEP_TEXTURE = true; // it stays on the geometry that is moved
constexpr int32_t NOT_SELECTED = -1;

// Of the copy, those links of the source that stay inside the selection.
void CopyInnerLinks(const World& world, const BaseObject& source, BaseObject& copy) {
    copy.RemoveAllLinkedObjectsID();
    for (const uint32_t id : source.linked_objects)
        if (world.IsObjectSelected(id))
            copy.AddLinkedObjectID(id);
}

class PrefabWriter {
public:
    PrefabWriter(UChunkFile& chunk_file, const World& scene, const D3DVECTOR& of_pivot)
        : file(chunk_file), world(scene), pivot(of_pivot) {
        materials.AddItem(0);
        for (const int b : world.brush_selection)
            world.brush[static_cast<size_t>(b)]->ForEachSurface(
                [this](const Surface& s, int, bool) { materials.AddItem(s.texture.index); });
    }

    void Write(std::string_view description) {
        WriteText(CHUNK_FORMAT, PREFAB_FORMAT_2_0);
        WriteText(CHUNK_DESCRIPTION, description);
        int number = 0;
        for (const int b : world.brush_selection)
            WriteSelectedBrush(*world.brush[static_cast<size_t>(b)], number++);
        for (int m = 1; m < materials.GetItemCount(); ++m)
            WriteMaterial(file, world.material[static_cast<size_t>(materials.GetItem(m))], m);
        number = 0;
        for (const int e : world.entity_selection)
            WriteSelectedEntity(*world.entity[static_cast<size_t>(e)], number++);
        number = 0;
        for (const int g : world.group_selection)
            WriteGroup(world.group[static_cast<size_t>(g)], number++);
    }

private:
    void WriteText(const char* chunk, std::string_view text) {
        file.CreateChunk(chunk, ANY_CHUNK_ID);
        file.WriteString(text);
        file.CloseChunk();
    }
    void WriteSelectedBrush(const Brush& source, int number) {
        Brush copy(source);
        CopyInnerLinks(world, source, copy);
        copy.ForEachSurface(
            [this](Surface& s, int, bool) { s.texture.index = std::max(materials.TestItem(s.texture.index), 0); });
        copy.Move(-pivot, KEEP_TEXTURE);
        WriteBrush(file, copy, number, source.GetObjectID());
    }
    void WriteSelectedEntity(const Entity& source, int number) {
        Entity copy(source);
        CopyInnerLinks(world, source, copy);
        copy.is_hidden = source.is_hidden;
        copy.position = source.position - pivot;
        file.CreateChunk(CHUNK_ENTITY, static_cast<uint32_t>(number));
        WriteEntity(file, copy, source.GetObjectID());
        file.CloseChunk();
    }
    void WriteGroup(const ObjectGroupLists& group, int number) {
        file.CreateChunk(CHUNK_GROUP, static_cast<uint32_t>(number));
        WriteMembers(group.brushes, world.brush_selection);
        WriteMembers(group.entities, world.entity_selection);
        file.CloseChunk();
    }
    // As places in the selection.
    void WriteMembers(const Selection& members, const Selection& selected) {
        std::vector<int32_t> places;
        for (const int member : members)
            places.push_back(selected.TestItem(member)); // NOT_SELECTED if it is not there
        file.WriteValues(places);
    }

    UChunkFile& file;
    const World& world;
    D3DVECTOR pivot;
    Selection materials; // rows of the world; their places are the numbers in the file
};

// A whole prefab in memory, not yet part of the world.
class PrefabReader {
public:
    PrefabReader(UChunkFile& chunk_file, EntityParser& definitions) : file(chunk_file), parser(definitions) {}

    struct StoredGroup {
        std::vector<int32_t> brushes, entities;
    };
    std::vector<std::unique_ptr<Brush>> brushes;
    std::vector<std::unique_ptr<Entity>> entities; // null: the definitions lack it
    std::vector<uint32_t> brush_ids, entity_ids;   // as stored
    std::vector<MaterialRow> materials;            // from number 1
    std::vector<StoredGroup> groups;
    int version = PROJECT_VERSION_1_0;
    std::string error;

    bool Read() {
        ReadVersion();
        return ReadEach(CHUNK_BRUSH, &PrefabReader::ReadOneBrush) &&
               ReadEach(CHUNK_MATERIAL, &PrefabReader::ReadOneMaterial) &&
               ReadEach(CHUNK_ENTITY, &PrefabReader::ReadOneEntity) &&
               ReadEach(CHUNK_GROUP, &PrefabReader::ReadOneGroup);
    }

private:
    void ReadVersion() {
        std::string text;
        if (file.OpenChunk(CHUNK_FORMAT))
            file.GetNextString(text);
        version = EqualNoCase(text, PREFAB_FORMAT_2_0)   ? PROJECT_VERSION_2_0
                  : EqualNoCase(text, PREFAB_FORMAT_1_1) ? PROJECT_VERSION_1_1
                                                         : PROJECT_VERSION_1_0;
    }
    bool ReadEach(const char* chunk, bool (PrefabReader::*read)(int)) {
        int n = 0;
        for (bool more = file.OpenChunk(chunk, ANY_CHUNK_ID, COT_SameName); more; more = file.OpenNextChunk())
            if (!(this->*read)(n++))
                return false;
        return true;
    }
    bool Damaged(const char* what, int n) {
        error = Format("%s %d is damaged", what, n);
        return false;
    }
    bool ReadOneBrush(int n) {
        uint32_t id = NO_OBJECT_ID;
        bool repaired = false;
        std::string reason;
        std::unique_ptr<Brush> brush = ReadBrush(file, version, id, repaired, reason);
        if (!brush) {
            error = Format("brush %d is damaged: %s", n, reason.c_str());
            return false;
        }
        brushes.push_back(std::move(brush));
        brush_ids.push_back(id);
        return true;
    }
    bool ReadOneMaterial(int n) {
        MaterialRow& row = materials.emplace_back();
        return ReadMaterial(file, row) || Damaged("material", n + 1);
    }
    bool ReadOneEntity(int n) {
        std::string name;
        if (!file.GetNextString(name))
            return Damaged("entity", n);
        entities.emplace_back();
        entity_ids.push_back(NO_OBJECT_ID);
        const Entity* entity_template = parser.GetTemplate(name, true);
        if (!entity_template) {
            NoticeOnce(Format("missing entity definition \"%s\"", name.c_str()));
            return true;
        }
        entities.back() = std::make_unique<Entity>(*entity_template);
        return ReadEntity(file, version, *entities.back(), entity_ids.back()) || Damaged("entity", n);
    }
    bool ReadOneGroup(int n) {
        StoredGroup& group = groups.emplace_back();
        for (std::vector<int32_t>* members : {&group.brushes, &group.entities}) {
            const uint32_t length = file.GetCurrentArrayLength();
            if (length % sizeof(int32_t) != 0)
                return Damaged("group", n);
            file.GetNextValues(*members, length / sizeof(int32_t));
        }
        return true;
    }

    UChunkFile& file;
    EntityParser& parser;
};

// Puts what was read into the world: new ids, links among the placed, everything selected.
class PrefabPlacer {
public:
    PrefabPlacer(World& scene, PrefabReader& prefab, const D3DVECTOR& at)
        : world(scene), source(prefab), position(at) {}

    void Place(const std::vector<int>& material_rows) {
        world.brush_selection.ClearList();
        world.entity_selection.ClearList();
        for (size_t b = 0; b < source.brushes.size(); ++b)
            PlaceBrush(std::move(source.brushes[b]), source.brush_ids[b], material_rows);
        for (size_t e = 0; e < source.entities.size(); ++e)
            PlaceEntity(std::move(source.entities[e]), source.entity_ids[e]);
        for (BaseObject* object : placed)
            MapLinks(*object);
        for (const PrefabReader::StoredGroup& group : source.groups)
            PlaceGroup(group);
    }

private:
    void Register(BaseObject& object, uint32_t stored_id) {
        object.GenerateNewObjectID();
        if (stored_id != NO_OBJECT_ID)
            new_ids[stored_id] = object.GetObjectID();
        placed.push_back(&object);
    }
    void PlaceBrush(std::unique_ptr<Brush> stored, uint32_t stored_id, const std::vector<int>& material_rows) {
        stored->SetCurveDetail(world.curve_detail);
        stored->is_selected = true;
        stored->ForEachSurface([&](Surface& s, int, bool) {
            const auto number = static_cast<size_t>(s.texture.index);
            s.texture.index = number < material_rows.size() ? material_rows[number] : 0;
        });
        Brush* brush = world.AddBrush(std::move(stored));
        Register(*brush, stored_id);
        RestoreDerivedData(*brush, world.GetMaterialCount());
        brush->Move(position, KEEP_TEXTURE);
        world.brush_selection.AddItem(brush->index);
        brush_places.push_back(brush->index);
    }
    void PlaceEntity(std::unique_ptr<Entity> stored, uint32_t stored_id) {
        if (!stored) {
            entity_places.push_back(NOT_SELECTED);
            return;
        }
        stored->SetPosition(position + stored->position);
        Entity* entity = world.AddEntity(std::move(stored));
        Register(*entity, stored_id);
        world.entity_selection.AddItem(world.GetEntityCount() - 1);
        entity_places.push_back(world.GetEntityCount() - 1);
    }
    // What a stored link means here; NO_OBJECT_ID when it leads to nothing that was placed.
    uint32_t NewLink(uint32_t stored) const {
        if (source.version < PROJECT_VERSION_2_0) { // an entity by its number in the file
            const int place = stored < entity_places.size() ? entity_places[stored] : NOT_SELECTED;
            return place == NOT_SELECTED ? NO_OBJECT_ID : world.entity[static_cast<size_t>(place)]->GetObjectID();
        }
        const auto found = new_ids.find(stored);
        return found == new_ids.end() ? NO_OBJECT_ID : found->second;
    }
    void MapLinks(BaseObject& object) {
        const std::vector<uint32_t> stored(object.linked_objects.begin(), object.linked_objects.end());
        object.RemoveAllLinkedObjectsID();
        for (const uint32_t link : stored)
            if (const uint32_t id = NewLink(link); BaseObject::GetObjectFromID(id))
                object.AddLinkedObjectID(id);
    }
    static Selection Placed(const std::vector<int32_t>& members, const std::vector<int>& places) {
        Selection indices;
        for (const int32_t member : members)
            if (member >= 0 && static_cast<size_t>(member) < places.size() &&
                places[static_cast<size_t>(member)] != NOT_SELECTED)
                indices.AddItem(places[static_cast<size_t>(member)]);
        return indices;
    }
    void PlaceGroup(const PrefabReader::StoredGroup& group) {
        Selection brushes = Placed(group.brushes, brush_places), entities = Placed(group.entities, entity_places);
        if (brushes.GetItemCount() + entities.GetItemCount() >= MIN_GROUP)
            world.AddGroup(std::move(brushes), std::move(entities));
    }

    World& world;
    PrefabReader& source;
    D3DVECTOR position;
    std::unordered_map<uint32_t, uint32_t> new_ids; // by stored id
    std::vector<BaseObject*> placed;
    std::vector<int> brush_places, entity_places; // table indices by number in the file
};

// Empty if the world has room for it all; else one reason.
std::string MissingRoom(const World& world, const PrefabReader& prefab) {
    const auto entities =
        std::count_if(prefab.entities.begin(), prefab.entities.end(), [](const auto& e) { return !!e; });
    if (prefab.brushes.size() > static_cast<size_t>(MAX_BRUSHES - world.GetBrushCount()))
        return Format("the level has no room for its %zu brushes", prefab.brushes.size());
    if (entities > MAX_ENTITIES - world.GetEntityCount())
        return Format("the level has no room for its %d entities", static_cast<int>(entities));
    if (prefab.groups.size() > static_cast<size_t>(MAX_GROUPS - world.GetGroupCount()))
        return Format("the level has no room for its %zu groups", prefab.groups.size());
    return {};
}

} // namespace

bool World::SavePrefab(std::string_view name, std::string_view description, std::string& error) {
    if (!IsSomethingSelected()) {
        error = "Nothing is selected: a prefab is made from the selection";
        return false;
    }
    UChunkFile file(name, CFM_Create);
    if (file.IsValid())
        PrefabWriter(file, *this, GetFrontEnd().SelectionPivot()).Write(description);
    if (file.IsValid() && file.CloseChunkFile())
        return true;
    error = file.GetError();
    return false;
}

bool World::PlacePrefab(std::string_view name, const D3DVECTOR& position, MaterialLibrary& materials,
                        EntityParser& parser, std::string& error) {
    UChunkFile file(name, CFM_Open);
    if (!file.IsValid()) {
        error = file.GetError();
        return false;
    }
    PrefabReader prefab(file, parser);
    std::string reason;
    if (!prefab.Read())
        reason = prefab.error;
    else if (prefab.brushes.empty() && prefab.entities.empty())
        reason = "it holds no objects";
    else
        reason = MissingRoom(*this, prefab);
    if (!reason.empty()) {
        error = Format("\"%s\" cannot be placed: %s", file.GetFilename().c_str(), reason.c_str());
        return false;
    }
    std::vector<int> rows{0};
    for (const MaterialRow& row : prefab.materials) {
        materials.AddMaterialToUseList(row.material_class, row.material_name);
        // The library's texture holds where it knows the material, the file's where it does not.
        if (materials.MaterialExist(row.material_class, row.material_name))
            GetNewMaterial(row.material_class.c_str(), row.material_name);
        else
            NoticeOnce(Format("missing material \"%s\\%s\"", row.material_class.c_str(), row.material_name.c_str()));
        rows.push_back(
            std::max(AddMaterial(row.material_class, row.material_name, row.texture_class, row.texture_name), 0));
    }
    PrefabPlacer(*this, prefab, position).Place(rows);
    GetFrontEnd().EntityTypesChanged();
    GetFrontEnd().CountsChanged();
    return true;
}
