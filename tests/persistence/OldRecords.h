// What the records of older versions look like, written chunk by chunk.
#pragma once

#include <cstring>
#include <vector>

#include "files/ChunkFile.h"
#include "scene/Brush.h"
#include "scene/Entity.h"

inline void WriteOldBrush(UChunkFile& file, int32_t link) {
    file.CreateChunk("BrushData", 0);
    std::vector<uint8_t> record(147, 0);
    const uint32_t type = BT_BOX;
    std::memcpy(record.data(), &type, 4);
    std::memcpy(record.data() + 140, &link, 4);
    file.WriteArray(record.data(), record.size());
    file.WriteValue<int32_t>(5); // the id; nothing behind it was known yet
    file.CloseChunk();
}

inline void WriteOldEntity(UChunkFile& file, const char* name, int32_t link) {
    file.CreateChunk("EntityData", 0);
    file.WriteString(name);
    file.WriteString("ANY");
    file.WriteValue(D3DVECTOR{1, 2, 3});
    file.WriteString("old");
    file.WriteValue(link);
    file.WriteValue<int32_t>(3);
    file.WriteString("attack_type");
    file.WriteValue<int32_t>(EntityParameter::NameChecksum("attack_type"));
    file.WriteValue<int32_t>(EPT_CONSTANT);
    file.WriteString("move&look");
    file.WriteString("initial_orientation");
    file.WriteValue<int32_t>(EntityParameter::NameChecksum("initial_orientation"));
    file.WriteValue<int32_t>(EPT_FLOAT);
    file.WriteValue(275.0f);
    file.WriteString("range"); // known to the light, with another type
    file.WriteValue<int32_t>(EntityParameter::NameChecksum("range"));
    file.WriteValue<int32_t>(EPT_INT);
    file.WriteValue<int32_t>(999);
    file.CloseChunk();
}
