// Reads one "BrushData" chunk, as projects and prefabs hold it.
#pragma once

#include <memory>
#include <string>

#include "files/ChunkFile.h"
#include "scene/Brush.h"

// Of geometry and of mappings; beyond it squares of distances are no longer finite.
inline constexpr float MAX_COORDINATE = 1.0e9f;

// Reads the brush of the current chunk. Null for a damaged record, with the reason in error (without the file's name).
// stored_id is the id of the file, NO_OBJECT_ID for none; it is not registered. Below version 2.0 the one link is an
// entity index. repaired tells that numbers of the geometry were unusable: coordinates and
// mappings became 0, or triangle corners
// vertex 0; the brush then comes up selected.
std::unique_ptr<Brush> ReadBrush(UChunkFile& file, int version, uint32_t& stored_id, bool& repaired,
                                 std::string& error);
