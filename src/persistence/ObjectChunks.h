// The chunks of brushes, materials and entities, as projects and prefabs hold them. The reader of brushes stands in
// persistence/BrushReader.h.
#pragma once

#include <cstdint>

#include "files/ChunkFile.h"
#include "scene/World.h"

// stored_id: the object id that the chunk names.
void WriteBrush(UChunkFile& file, const Brush& brush, int chunk_id, uint32_t stored_id);
void WriteMaterial(UChunkFile& file, const MaterialRow& row, int chunk_id);
// Up to the object id. The caller creates and closes the chunk.
void WriteEntity(UChunkFile& file, const Entity& entity, uint32_t stored_id);

// Behind the template's name, into an entity made from that template. False for a damaged chunk. id: NO_OBJECT_ID if
// none is stored; below version 2.0 the one link is an entity index.
bool ReadEntity(UChunkFile& file, int version, Entity& entity, uint32_t& id);
// False for a record of another size.
bool ReadMaterial(UChunkFile& file, MaterialRow& row);
// All that is not stored: after reading, in this order.
void RestoreDerivedData(Brush& brush, int material_count);
