// A chunk file: a flat sequence of named chunks, each a sequence of untyped byte arrays, with its tables at the end.
// Projects, prefabs, meshes, movies and compiled worlds are chunk files.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "files/AtomicFile.h"
#include "files/FileObject.h"
#include "foundation/StringList.h"

enum ChunkFileMode { CFM_NotOpened = 0, CFM_Open = 1, CFM_Create = 2 };

// How OpenNextChunk goes on from a chunk opened with OpenChunk.
enum ChunkOpenType { COT_One = 0, COT_SameNameAndID = 1, COT_SameName = 2, COT_Any = 3 };

inline constexpr uint32_t ANY_CHUNK_ID = 0xFFFFFFFF; // matches every ID; also the ID of chunks without one

class UChunkFile {
public:
    UChunkFile(std::string_view chunk_file_name, ChunkFileMode open_mode);
    UChunkFile(const UChunkFile&) = delete;
    UChunkFile& operator=(const UChunkFile&) = delete;
    // Closes an open chunk and finishes the file, when writing.
    virtual ~UChunkFile();

    bool IsValid() const { return valid; }
    // Why the file is not valid or a write failed: one sentence that names the file. Empty when all is well.
    const std::string& GetError() const { return error; }
    // Closes at once and writes nothing more. The target of an unfinished file stays as it was.
    void HardCloseFile();
    const std::string& GetFilename() const { return file_name; }
    uint32_t GetTotalSize() const { return total_size; }
    int GetChunkCount() const;

    // Reading
    bool OpenChunk(const char* chunk_name, uint32_t chunk_ID = ANY_CHUNK_ID,
                   ChunkOpenType type = COT_One); // null: the first chunk
    bool OpenNextChunk();
    bool
    CloseChunk(); // in write mode: writes the pending arrays; false when there was no open chunk or a write fell short
    const char* GetChunkName() const;
    uint32_t GetChunkID() const;
    int GetChunkTypeCount(const char* chunk_name, uint32_t chunk_ID = ANY_CHUNK_ID) const;
    uint64_t GetChunkTypeDataSize(const char* chunk_name, uint32_t chunk_ID = ANY_CHUNK_ID) const;
    uint32_t GetArraysCountInChunk() const;
    uint32_t GetArrayLength(uint32_t array_index) const;
    uint32_t GetCurrentArrayLength() const; // of the array that GetNextArray would read
    uint32_t GetCurrentArrayIndex() const { return current_array_index; }
    bool GetArray(uint32_t array_index, void* store) const; // the caller has made room for GetArrayLength bytes
    bool GetNextArray(void* store);
    std::vector<uint8_t> GetArrayAlloc(uint32_t array_index) const; // empty for a missing array
    void SkipNextArray() { ++current_array_index; }
    bool IsArraysFinished() const { return current_array_index >= GetArraysCountInChunk(); }

    // The next array into a plain value. False leaves the value alone and, when the length differs from the value's,
    // passes over the array: a damaged record never reads past its variable. SizeMismatch() then tells.
    template <class T>
    bool GetNextValue(T& value) {
        static_assert(std::is_trivially_copyable_v<T>);
        if (IsArraysFinished())
            return false;
        if (GetCurrentArrayLength() != sizeof(T)) {
            size_mismatch = true;
            SkipNextArray();
            return false;
        }
        return GetNextArray(&value);
    }
    // The next array as exactly `count` values; the same rules.
    template <class T>
    bool GetNextValues(std::vector<T>& values, size_t count) {
        static_assert(std::is_trivially_copyable_v<T>);
        if (IsArraysFinished())
            return false;
        if (GetCurrentArrayLength() != count * sizeof(T)) {
            size_mismatch = true;
            SkipNextArray();
            return false;
        }
        values.resize(count);
        return GetNextArray(values.data());
    }
    // The next array as a text, cut at its first zero byte.
    bool GetNextString(std::string& text);
    // A record of another size than asked for, or an array that the disk did not give, since OpenChunk.
    bool SizeMismatch() const { return size_mismatch; }

    // Writing
    bool CreateChunk(std::string_view chunk_name, uint32_t chunk_ID);
    void WriteArray(const void* data, size_t length);
    template <class T>
    void WriteValue(const T& value) {
        static_assert(std::is_trivially_copyable_v<T> && !std::is_pointer_v<T>);
        WriteArray(&value, sizeof(T));
    }
    template <class T>
    void WriteValues(const std::vector<T>& values) {
        static_assert(std::is_trivially_copyable_v<T>);
        WriteArray(values.data(), values.size() * sizeof(T));
    }
    void WriteString(std::string_view text); // with a terminating zero
    // Writes the tables and puts the file in its place. False when already done or a write fell short: the target then
    // is as it was.
    bool CloseChunkFile();

private:
    struct ChunkHeader {
        uint32_t chunk_name_index = 0, chunk_ID = 0;
        uint8_t chunk_type = 0; // 0: one length for all arrays, 1: a length for each
        uint32_t file_offset = 0, arrays_count = 0;
        size_t first_length = 0; // in lengths_of_arrays
    };
    struct ChunkName {
        std::string name;
        uint32_t fast_search_ID = 0; // the sum of the characters as signed bytes
    };

    bool OpenForReading();
    bool OpenForWriting();
    bool ReadTables();
    bool CutNames(const std::vector<uint8_t>& block, uint32_t count);
    bool CutHeaders(const std::vector<uint8_t>& block, uint32_t count, uint32_t data_end);
    bool LiesBefore(uint32_t data_end, const ChunkHeader& header) const;
    bool ReadBlock(std::vector<uint8_t>& block, uint32_t length, uint32_t& room);
    bool ReadAt(uint32_t offset, void* target, uint32_t length) const;
    bool ReadAhead(uint32_t offset, uint32_t length) const;
    bool Fail(const std::string& reason);
    bool WriteFailed(const std::string& reason);
    const ChunkHeader* CurrentHeader() const;
    int GetChunkHeader(const char* chunk_name, uint32_t chunk_ID, int first_index) const; // -1 if none
    const uint32_t* Lengths(const ChunkHeader& header) const { return lengths_of_arrays.data() + header.first_length; }
    size_t StoredLengths(const ChunkHeader& header) const { return header.chunk_type == 0 ? 1 : header.arrays_count; }
    uint64_t DataSize(const ChunkHeader& header) const;
    uint32_t OffsetInChunk(const ChunkHeader& header, uint32_t array_index) const;
    void MakeCurrent(int chunk_index);

    ChunkFileMode chunk_file_open_mode = CFM_NotOpened;
    std::string file_name, error;
    bool valid = false;
    mutable bool size_mismatch = false;
    std::vector<ChunkName> chunk_names;
    std::vector<ChunkHeader> chunk_headers;
    std::vector<uint32_t> lengths_of_arrays; // as stored, of all chunks in their order
    int current_chunk_index = -1;
    uint32_t current_array_index = 0;
    ChunkOpenType current_chunk_mode = COT_One;
    uint32_t current_chunk_ID = ANY_CHUNK_ID;
    uint32_t current_file_offset = 0, total_size = 0;
    std::unique_ptr<FileObject> chunk_file; // reading
    mutable std::vector<uint8_t> window;    // a stretch of the file around the arrays asked for lately
    mutable uint32_t window_offset = 0, window_length = 0, file_position = 0;
    // Of the current chunk: the array that a reader going on comes to next, and where it starts. A reader that jumps
    // gets the offsets of all arrays.
    mutable uint32_t following_array = 0, following_offset = 0;
    mutable std::vector<uint32_t> offsets_of_arrays;
    std::unique_ptr<AtomicFile> output; // writing
    StringListClass create_chunk_names{false, false};
    bool chunk_is_open = false, write_failed = false, chunk_file_headers_written = false;
    ChunkHeader currently_written_chunk;
    std::vector<uint8_t> pending; // the arrays of the open chunk, one behind the other
    std::vector<uint32_t> pending_lengths;
};
