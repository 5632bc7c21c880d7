// Records of a compiled world that both a full compile and an update of entities write.
#pragma once

#include "files/ChunkFile.h"
#include "scene/World.h"

// The header of a brush: its record with the number of kept surfaces, its links, name and death particle.
void WriteBrushHeader(UChunkFile& file, const Brush& brush, int32_t surface_count);
// All arrays of an entity's chunk.
void WriteWorldEntity(UChunkFile& file, const Entity& entity);
// All arrays of the chunk of game types.
void WriteWorldGames(UChunkFile& file, const World& world);
