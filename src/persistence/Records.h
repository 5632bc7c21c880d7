// The records that several files share: projects, prefabs and compiled worlds. All numbers are little-endian, records
// are packed, bytes without a meaning are zero.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "files/ChunkFile.h"
#include "scene/ActorGroup.h"
#include "scene/DecalTemplate.h"
#include "scene/Entity.h"
#include "scene/Surface.h"

// Fills a packed record field by field.
class RecordWriter {
public:
    template <class T>
    RecordWriter& Put(const T& value) {
        static_assert(std::is_trivially_copyable_v<T> && !std::is_pointer_v<T>);
        Append(&value, sizeof(T));
        return *this;
    }
    RecordWriter& PutFlag(bool value) { return Put<uint8_t>(value ? 1 : 0); }
    // A text in a field of fixed size, cut so that its terminator fits, zeros behind it.
    RecordWriter& PutText(std::string_view text, size_t field) {
        const size_t length = std::min(text.size(), field - 1);
        Append(text.data(), length);
        bytes.resize(bytes.size() + field - length);
        return *this;
    }
    void WriteTo(UChunkFile& file) const { file.WriteArray(bytes.data(), bytes.size()); }
    const std::vector<uint8_t>& Bytes() const { return bytes; }

private:
    void Append(const void* data, size_t length) {
        if (length == 0)
            return;
        const size_t end = bytes.size();
        bytes.resize(end + length);
        std::memcpy(bytes.data() + end, data, length);
    }

    std::vector<uint8_t> bytes;
};

// Reads a packed record field by field; beyond the end everything reads as zero and Overrun() tells.
class RecordReader {
public:
    explicit RecordReader(const std::vector<uint8_t>& record) : bytes(record) {}

    template <class T>
    RecordReader& Get(T& value) {
        static_assert(std::is_trivially_copyable_v<T>);
        if (bytes.size() - position < sizeof(T)) {
            std::memset(static_cast<void*>(&value), 0, sizeof(T));
            position = bytes.size();
            overrun = true;
        } else {
            std::memcpy(&value, bytes.data() + position, sizeof(T));
            position += sizeof(T);
        }
        return *this;
    }
    RecordReader& GetFlag(bool& value) {
        uint8_t byte = 0;
        Get(byte);
        value = byte != 0;
        return *this;
    }
    RecordReader& GetText(std::string& text, size_t field);
    RecordReader& Skip(size_t count);
    bool Overrun() const { return overrun; }

private:
    const std::vector<uint8_t>& bytes;
    size_t position = 0;
    bool overrun = false;
};

inline constexpr size_t TEX_INFO_RECORD = 36, DECAL_RECORD = 124, RELATION_RECORD = 8, TEXTURE_RECORD = 64;
inline constexpr size_t BRUSH_RECORD = 147, SURFACE_COUNTS_RECORD = 20;

RecordWriter PackTexInfo(const TEX_INFO& info);
bool UnpackTexInfo(const std::vector<uint8_t>& record, TEX_INFO& info); // false for a record of another size

// The image is named by its texture: the folder behind the last backslash of its path, and its name; "common" and
// "no_texture" without one.
RecordWriter PackDecalTemplate(const DecalTemplate& decal);
// Loads the texture. One that cannot be loaded is told by a notice and a line in the texture log; the decal stays.
// lacks_texture: whether a texture that is named could not be loaded.
bool UnpackDecalTemplate(const std::vector<uint8_t>& record, DecalTemplate& decal, bool& lacks_texture);

RecordWriter PackRelation(const SGroupRelation& relation);
bool UnpackRelation(const std::vector<uint8_t>& record, SGroupRelation& relation);

// The arrays of an entity behind its template name: type word, position, name, links, parameters, is_hidden.
void WriteEntityArrays(UChunkFile& file, const Entity& entity);
// Reads parameters into an entity made from its template: value by value where name and type fit, converting older
// names. False when the records are damaged.
bool LoadEntityParameters(UChunkFile& file, Entity& entity);
