#include <algorithm>
#include <filesystem>
#include <vector>

#include "files/AtomicFile.h"
#include "files/ChunkFile.h"
#include "foundation/Desktop.h"
#include "foundation/Paths.h"
#include "foundation/WholeFile.h"
#include "persistence/ObjectChunks.h"
#include "persistence/Project.h"
#include "persistence/ProjectChunks.h"
#include "persistence/Records.h"

static void WriteEntityWithLinks(UChunkFile& file, const Entity& entity, int index) {
    file.CreateChunk(CHUNK_ENTITY, static_cast<uint32_t>(index));
    WriteEntity(file, entity, entity.GetObjectID());
    const int links = entity.linked_objects.GetCount();
    file.WriteValue<int32_t>(links);
    file.WriteArray(entity.linked_objects.GetListPtr(), static_cast<size_t>(links) * sizeof(uint32_t));
    file.CloseChunk();
}

static void WriteMapInfo(UChunkFile& file, const World& world, const ProjectViews& views) {
    file.CreateChunk(CHUNK_MAP_INFO, ANY_CHUNK_ID);
    RecordWriter().PutText(world.map_file, PATH_FIELD).WriteTo(file);
    for (const VIEWINFO* view : {&views.front, &views.top, &views.left, &views.perspective})
        file.WriteValue(*view);
    RecordWriter().PutText(world.map_name, PATH_FIELD).WriteTo(file);
    file.CloseChunk();
}

// What each entity's index is when the project is read: path points, -1 here, are not in it.
static std::vector<int32_t> IndicesInProject(const World& world) {
    std::vector<int32_t> indices;
    int32_t written = 0;
    for (const auto& entity : world.entity)
        indices.push_back(entity->IsPathPoint() ? -1 : written++);
    return indices;
}

static void WriteGroups(UChunkFile& file, const World& world) {
    const std::vector<int32_t> indices = IndicesInProject(world);
    for (int g = 0; g < world.GetGroupCount(); ++g) {
        file.CreateChunk(CHUNK_GROUP, static_cast<uint32_t>(g));
        const ObjectGroupLists& lists = world.group[static_cast<size_t>(g)];
        const auto brush_count = static_cast<size_t>(lists.brushes.GetItemCount());
        file.WriteArray(lists.brushes.GetListPtr(), brush_count * sizeof(int32_t));
        std::vector<int32_t> entities;
        for (const int e : lists.entities)
            if (e < world.GetEntityCount() && indices[static_cast<size_t>(e)] >= 0)
                entities.push_back(indices[static_cast<size_t>(e)]);
        file.WriteArray(entities.data(), entities.size() * sizeof(int32_t));
        file.CloseChunk();
    }
}

static void WriteActorGroups(UChunkFile& file, const World& world) {
    file.CreateChunk(CHUNK_AI_GROUPS, ANY_CHUNK_ID);
    const int count = static_cast<int>(world.actor_groups.size());
    file.WriteValue<int32_t>(count);
    for (const auto& actor_group : world.actor_groups) {
        file.WriteArray(actor_group->name.data(), actor_group->name.size());
        for (int g = 0; g < count; ++g)
            PackRelation(actor_group->GetRelation(g)).WriteTo(file);
    }
    file.CloseChunk();
}

static void WriteChunks(UChunkFile& file, const World& world, const ProjectViews& views) {
    file.CreateChunk(CHUNK_FORMAT, ANY_CHUNK_ID);
    file.WriteString(PROJECT_FORMAT_2_0);
    file.CloseChunk();
    for (int b = 0; b < world.GetBrushCount(); ++b)
        WriteBrush(file, *world.brush[static_cast<size_t>(b)], b, world.brush[static_cast<size_t>(b)]->GetObjectID());
    for (int m = 1; m < world.GetMaterialCount(); ++m)
        WriteMaterial(file, world.material[static_cast<size_t>(m)], m);
    for (int e = 0; e < world.GetEntityCount(); ++e)
        if (const Entity& entity = *world.entity[static_cast<size_t>(e)]; !entity.IsPathPoint())
            WriteEntityWithLinks(file, entity, e);
    WriteMapInfo(file, world, views);
    WriteGroups(file, world);
    file.CreateChunk(CHUNK_CORDON, ANY_CHUNK_ID);
    file.WriteValue(views.cordon_box);
    file.WriteValue(views.clip_box);
    file.CloseChunk();
    file.CreateChunk(CHUNK_MP_GAMES, ANY_CHUNK_ID);
    file.WriteValue(static_cast<int32_t>(world.mp_games.size()));
    for (const std::string& game : world.mp_games)
        file.WriteString(game);
    file.CloseChunk();
    WriteActorGroups(file, world);
    file.CreateChunk(CHUNK_DECALS, ANY_CHUNK_ID);
    file.WriteValue(static_cast<int32_t>(world.decal_template.size()));
    for (const auto& decal : world.decal_template)
        PackDecalTemplate(*decal).WriteTo(file);
    file.CloseChunk();
}

// The existing project becomes the backup by a hard link or a copy, so that both the project and a backup are there at
// every moment. False with a sentence.
static bool KeepBackup(std::string_view full_name, std::string& error) {
    namespace fs = std::filesystem;
    std::error_code failure;
    const fs::path project = RealPath(full_name), backup = RealPath(std::string(full_name) + ".bkp");
    if (!fs::exists(project, failure) || fs::equivalent(project, backup, failure))
        return true;
    return LinkInPlaceOf(project, backup) || CopyWholeFile(project, backup, error);
}

bool SaveProject(std::string_view full_name, World& world, const ProjectViews& views, bool backup, std::string& error) {
    world.FlushUnusedMaterials();
    UChunkFile file(full_name, CFM_Create);
    if (file.IsValid())
        WriteChunks(file, world, views);
    std::string no_backup;
    if (backup && file.IsValid() && !KeepBackup(full_name, no_backup))
        GetDesktop().Notice(no_backup);
    if (file.IsValid() && file.CloseChunkFile())
        return true;
    error = file.GetError();
    return false;
}
