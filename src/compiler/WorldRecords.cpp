#include "compiler/WorldRecords.h"

#include "persistence/Records.h"

static int32_t Length(const std::string& text) { return static_cast<int32_t>(text.size()); }

void WriteBrushHeader(UChunkFile& file, const Brush& brush, int32_t surface_count) {
    const int32_t links = brush.GetLinkedObjectsCount();
    RecordWriter record;
    record.Put(static_cast<uint32_t>(brush.type))
        .Put(brush.properties)
        .Put(PackColor(brush.color_vector))
        .Put(brush.color_vector);
    record.Put(surface_count).Put(links).Put(brush.GetObjectID()).Put(static_cast<int32_t>(brush.energy));
    record.Put(brush.mass).Put(brush.coll_dmg).Put(brush.touch_dmg).Put(brush.terrain_vertex_size);
    record.Put(Length(brush.name))
        .Put(Length(brush.death_particle))
        .Put(static_cast<uint8_t>(brush.link_action))
        .WriteTo(file);
    if (links > 0)
        file.WriteArray(brush.linked_objects.GetListPtr(), static_cast<size_t>(links) * sizeof(uint32_t));
    for (const std::string* text : {&brush.name, &brush.death_particle})
        if (!text->empty())
            file.WriteArray(text->data(), text->size());
}

void WriteWorldEntity(UChunkFile& file, const Entity& entity) {
    WriteEntityArrays(file, entity);
    file.WriteValue(entity.GetObjectID());
}

void WriteWorldGames(UChunkFile& file, const World& world) {
    file.WriteString(world.map_name);
    file.WriteValue(static_cast<int32_t>(world.mp_games.size()));
    for (const std::string& game : world.mp_games)
        file.WriteString(game);
}
