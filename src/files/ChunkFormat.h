// The records of a chunk file as they stand in the file.
#pragma once

#include <bit>
#include <cstdint>
#include <string_view>

namespace chunk_format {

static_assert(std::endian::native == std::endian::little, "records of files are read and written as they stand");

inline constexpr std::string_view CHUNK_FILE_MAGIC = "<Tallowen Chunk File>";
inline constexpr uint32_t FORMAT_WORD = 1;
inline constexpr uint32_t DATA_OFFSET = CHUNK_FILE_MAGIC.size() + sizeof FORMAT_WORD; // where chunk data begins
inline constexpr uint32_t TABLES_MAGIC = 0xCDD44DDC;
inline constexpr uint8_t ONE_LENGTH = 0, LENGTH_EACH = 1; // chunk_type
inline constexpr uint32_t SEEK_NEEDED = UINT32_MAX;       // a file position that no read goes on from

struct ChunkFileInfo {
    uint32_t magic_number, block_length, names_count;
};
struct ChunkHeadersInfo {
    uint32_t block_length, headers_count;
};
struct StoredHeader {
    uint32_t chunk_name_index, chunk_ID;
    uint8_t chunk_flags[3];
    uint8_t chunk_type;
    uint32_t file_offset, arrays_count;
    uint32_t lengths_of_arrays; // without a meaning in the file, 0
};
static_assert(sizeof(ChunkFileInfo) == 12 && sizeof(ChunkHeadersInfo) == 8 && sizeof(StoredHeader) == 24);

} // namespace chunk_format
