#include "persistence/ObjectChunks.h"

#include <cmath>

#include "persistence/ProjectChunks.h"
#include "persistence/Records.h"

static void WriteSurfaceCounts(UChunkFile& file, const Surface& surface, bool curved) {
    RecordWriter record;
    record.Put(static_cast<int32_t>(surface.vertices.size())).Put(static_cast<int32_t>(surface.tri_indices.size()));
    record.Put(static_cast<int32_t>(surface.edge_indices.size())).Put<int32_t>(curved ? surface.cp_count : 0);
    record.Put<int32_t>(0); // lights: no meaning in a project
    record.WriteTo(file);
}

template <class T>
static void WriteFirst(UChunkFile& file, const std::vector<T>& values) {
    file.WriteValue(values.empty() ? T{} : values.front());
}

static void WriteFlatSurface(UChunkFile& file, const Surface& surface) {
    file.WriteValues(surface.vertices);
    WriteFirst(file, surface.normal);
    file.WriteValues(surface.uv);
    WriteFirst(file, surface.diffuse);
    file.WriteValues(surface.tri_indices);
    file.WriteValues(surface.edge_indices);
    PackTexInfo(surface.texture).WriteTo(file);
}

// Curved geometry is rebuilt from its control points; only a custom brush stores its mesh.
static void WriteCurvedSurface(UChunkFile& file, const Surface& surface, bool custom) {
    if (custom) {
        file.WriteValues(surface.vertices);
        file.WriteValues(surface.normal);
        file.WriteValues(surface.uv);
        file.WriteValues(surface.diffuse);
        file.WriteValues(surface.tri_indices);
        file.WriteValues(surface.edge_indices);
    } else {
        file.WriteValues(surface.cp);
    }
    PackTexInfo(surface.texture).WriteTo(file);
}

// The length without terminator, then the characters if there are any.
static void WriteCountedText(UChunkFile& file, const std::string& text) {
    file.WriteValue(static_cast<int32_t>(text.size()));
    if (!text.empty())
        file.WriteArray(text.data(), text.size());
}

void WriteBrush(UChunkFile& file, const Brush& brush, int chunk_id, uint32_t stored_id) {
    file.CreateChunk(CHUNK_BRUSH, static_cast<uint32_t>(chunk_id));
    const int links = brush.linked_objects.GetCount();
    RecordWriter record;
    record.Put(static_cast<uint32_t>(brush.type)).Put(brush.bbox).Put(brush.pivot);
    record.Put(PackColor(brush.color_vector)).Put(brush.color_vector);
    record.Put(static_cast<int32_t>(brush.surfaces.size())).Put(static_cast<int32_t>(brush.curved_surfaces.size()));
    record.Put<int32_t>(links).PutFlag(false).PutFlag(brush.is_hidden).PutFlag(brush.is_frozen);
    record.WriteTo(file);
    if (links > 0)
        file.WriteArray(brush.linked_objects.GetListPtr(), static_cast<size_t>(links) * sizeof(uint32_t));
    brush.ForEachSurface([&](const Surface& surface, int, bool curved) { WriteSurfaceCounts(file, surface, curved); });
    for (const Surface& surface : brush.surfaces)
        WriteFlatSurface(file, surface);
    for (const Surface& surface : brush.curved_surfaces)
        WriteCurvedSurface(file, surface, brush.IsCustom());

    file.WriteValue(stored_id);
    file.WriteValue(brush.properties);
    WriteCountedText(file, brush.name);
    file.WriteValue<uint32_t>(brush.energy);
    file.WriteValue(brush.mass);
    WriteCountedText(file, brush.death_particle);
    file.WriteValue(brush.elasticity);
    file.WriteValue(brush.static_friction);
    file.WriteValue(brush.dynamic_friction);
    file.WriteValue(brush.terrain_vertex_size);
    file.WriteValue(brush.coll_dmg);
    file.WriteValue(brush.touch_dmg);
    file.WriteValue(brush.time_scale);
    file.WriteValue(brush.rotation_factor);
    file.WriteValue(brush.link_action);
    file.CloseChunk();
}

void WriteMaterial(UChunkFile& file, const MaterialRow& row, int chunk_id) {
    file.CreateChunk(CHUNK_MATERIAL, static_cast<uint32_t>(chunk_id));
    RecordWriter().PutText(row.material_class, NAME_FIELD).PutText(row.material_name, NAME_FIELD).WriteTo(file);
    RecordWriter().PutText(row.texture_class, NAME_FIELD).PutText(row.texture_name, NAME_FIELD).WriteTo(file);
    file.CloseChunk();
}

void WriteEntity(UChunkFile& file, const Entity& entity, uint32_t stored_id) {
    file.WriteString(entity.name);
    WriteEntityArrays(file, entity);
    file.WriteValue(stored_id);
}

bool ReadEntity(UChunkFile& file, int version, Entity& entity, uint32_t& id) {
    file.SkipNextArray(); // the type word: the definition's holds
    int32_t links = 0;
    if (!file.GetNextValue(entity.position) || !file.GetNextString(entity.variable_name) || !file.GetNextValue(links))
        return false;
    for (float* value : {&entity.position.x, &entity.position.y, &entity.position.z})
        if (!std::isfinite(*value))
            *value = 0;
    if (version < PROJECT_VERSION_2_0) {
        if (links != -1)
            entity.AddLinkedObjectID(static_cast<uint32_t>(links));
    } else if (links != 0) {
        std::vector<uint32_t> ids;
        if (links < 0 || !file.GetNextValues(ids, static_cast<size_t>(links)))
            return false;
        for (uint32_t linked : ids)
            entity.AddLinkedObjectID(linked);
    }
    if (!LoadEntityParameters(file, entity))
        return false;
    uint8_t hidden = 0;
    int32_t stored_id = -1;
    file.GetNextValue(hidden);
    file.GetNextValue(stored_id);
    entity.is_hidden = hidden != 0;
    id = stored_id < 0 ? NO_OBJECT_ID : static_cast<uint32_t>(stored_id);
    return !file.SizeMismatch();
}

bool ReadMaterial(UChunkFile& file, MaterialRow& row) {
    const std::vector<uint8_t> material = file.GetArrayAlloc(0), texture = file.GetArrayAlloc(1);
    if (material.size() != TEXTURE_RECORD)
        return false;
    RecordReader(material).GetText(row.material_class, NAME_FIELD).GetText(row.material_name, NAME_FIELD);
    if (texture.size() == TEXTURE_RECORD)
        RecordReader(texture).GetText(row.texture_class, NAME_FIELD).GetText(row.texture_name, NAME_FIELD);
    return true;
}

void RestoreDerivedData(Brush& brush, int material_count) {
    brush.Initialize(material_count);
    brush.TesselateCurves();
    brush.RecalcBBox();
    brush.ComputeNormals();
    brush.SurfaceLight();
    brush.GenerateTextureSpaces();
    brush.RemapAllInit();
}
