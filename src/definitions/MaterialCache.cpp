#include "definitions/MaterialCache.h"

#include <algorithm>
#include <cstring>

#include "definitions/MaterialScript.h"
#include "files/AtomicFile.h"
#include "foundation/Desktop.h"
#include "foundation/Paths.h"
#include "foundation/Strings.h"

namespace {

constexpr uint32_t CACHE_MAGIC = 0xFFFFFFFF, CACHE_OLDER_MAGIC = 0xFFFFFFFE;
constexpr int32_t CACHE_VERSION = 3;

#pragma pack(push, 1)
struct CacheHeader {
    uint32_t magic = CACHE_MAGIC;
    int32_t version = CACHE_VERSION;
    uint32_t directory_count = 0, directory_names_length = 0;
};
struct MaterialCacheItem {
    char name[MATERIAL_NAME_FIELD] = {}, tex_name[MATERIAL_NAME_FIELD] = {}, tex_class[MATERIAL_NAME_FIELD] = {};
    uint8_t is_transparent = 0;
    float ambient_intensity = 0;
    uint8_t light_illumination = 0, volumetric_fog = 0, double_sided = 0;
    COLOR self_illumuniation;
    FileTime ftime;
};
#pragma pack(pop)
static_assert(sizeof(CacheHeader) == 16 && sizeof(MaterialCacheItem) == 132);

std::string TakeField(const char (&field)[MATERIAL_NAME_FIELD]) {
    return {field, std::find(std::begin(field), std::end(field) - 1, '\0')};
}

void PutField(char (&field)[MATERIAL_NAME_FIELD], std::string_view text) {
    text.substr(0, MATERIAL_NAME_FIELD - 1).copy(field, MATERIAL_NAME_FIELD - 1);
}

template <class T>
void Put(std::vector<uint8_t>& bytes, const T& value) {
    const auto* start = reinterpret_cast<const uint8_t*>(&value);
    bytes.insert(bytes.end(), start, start + sizeof(T));
}

// Reads values one behind the other; false when they are not all there.
class ByteReader {
public:
    explicit ByteReader(const std::vector<uint8_t>& data) : bytes(data) {}

    template <class T>
    bool Take(T& value) {
        if (Left() < sizeof(T))
            return false;
        std::memcpy(static_cast<void*>(&value), bytes.data() + at, sizeof(T));
        at += sizeof(T);
        return true;
    }
    bool TakeText(size_t length, std::string& text) {
        if (Left() < length)
            return false;
        text.assign(reinterpret_cast<const char*>(bytes.data()) + at, length);
        at += length;
        return true;
    }
    size_t Left() const { return bytes.size() - at; }

private:
    const std::vector<uint8_t>& bytes;
    size_t at = 0;
};

std::string Key(std::string_view directory, std::string_view file_name) {
    return ToLower(std::string(directory) + '\\' + std::string(file_name));
}

// The last-write time of the script's disk file.
bool ScriptTime(std::string_view directory, std::string_view file_name, FileTime& time) {
    const FileObject script(MaterialScriptPath(directory, file_name), FO_Open);
    return script.IsValid() && !script.IsInLibrary() && script.GetFileTime(time);
}

} // namespace

MaterialCache::MaterialCache(std::string_view cache_file) {
    FileObject file(cache_file, FO_Open);
    if (!file.IsValid())
        return;
    if (file.ReadAll(bytes_on_disk) && Parse(bytes_on_disk))
        return;
    const bool in_library = file.IsInLibrary();
    file.Close();
    if (!in_library)
        RemoveFile(cache_file);
    directories.clear();
    index.clear();
    bytes_on_disk.clear();
}

bool MaterialCache::Parse(const std::vector<uint8_t>& bytes) {
    ByteReader reader(bytes);
    CacheHeader header;
    std::string names;
    if (!reader.Take(header) || (header.magic != CACHE_MAGIC && header.magic != CACHE_OLDER_MAGIC) ||
        header.version != CACHE_VERSION || !reader.TakeText(header.directory_names_length, names))
        return false;
    size_t name_start = 0;
    for (uint32_t d = 0; d < header.directory_count; ++d) {
        const size_t name_end = names.find('\0', name_start);
        uint32_t count = 0;
        if (name_end == std::string::npos || !reader.Take(count) || count > reader.Left() / sizeof(MaterialCacheItem))
            return false;
        directories.push_back({names.substr(name_start, name_end - name_start), std::vector<Item>(count)});
        name_start = name_end + 1;
        for (uint32_t i = 0; i < count; ++i) {
            MaterialCacheItem stored;
            reader.Take(stored);
            Item& item = directories[d].items[i];
            item.name = TakeField(stored.name);
            item.properties = {TakeField(stored.tex_class),    TakeField(stored.tex_name), stored.is_transparent != 0,
                               stored.light_illumination != 0, stored.volumetric_fog != 0, stored.double_sided != 0,
                               stored.ambient_intensity,       stored.self_illumuniation};
            item.ftime = stored.ftime;
            Index(d, i);
        }
    }
    return name_start == names.size() && reader.Left() == 0;
}

void MaterialCache::Index(size_t directory, size_t item) {
    index.try_emplace(Key(directories[directory].name, directories[directory].items[item].name), directory, item);
}

bool MaterialCache::GetFileData(std::string_view directory, std::string_view file_name,
                                MaterialProperties& properties) const {
    const auto known = index.find(Key(directory, file_name));
    if (known == index.end())
        return false;
    const Item& item = directories[known->second.first].items[known->second.second];
    FileTime time;
    if (!ScriptTime(directory, file_name, time) || time != item.ftime)
        return false;
    properties = item.properties;
    return true;
}

void MaterialCache::AddFileData(std::string_view directory, std::string_view file_name,
                                const MaterialProperties& properties) {
    FileTime time;
    ScriptTime(directory, file_name, time);
    if (const auto known = index.find(Key(directory, file_name)); known != index.end()) {
        Item& item = directories[known->second.first].items[known->second.second];
        item.properties = properties;
        item.ftime = time;
        return;
    }
    size_t d = 0;
    while (d < directories.size() && !EqualNoCase(directories[d].name, directory))
        ++d;
    if (d == directories.size())
        directories.push_back({std::string(directory), {}});
    directories[d].items.push_back({CutText(file_name, MATERIAL_NAME_FIELD - 1), properties, time});
    Index(d, directories[d].items.size() - 1);
}

std::vector<uint8_t> MaterialCache::Bytes() const {
    std::string names;
    for (const Directory& directory : directories)
        names.append(directory.name.c_str(), directory.name.size() + 1);
    std::vector<uint8_t> bytes;
    Put(bytes, CacheHeader{CACHE_MAGIC, CACHE_VERSION, static_cast<uint32_t>(directories.size()),
                           static_cast<uint32_t>(names.size())});
    bytes.insert(bytes.end(), names.begin(), names.end());
    for (const Directory& directory : directories) {
        Put(bytes, static_cast<uint32_t>(directory.items.size()));
        for (const Item& item : directory.items) {
            const MaterialProperties& p = item.properties;
            MaterialCacheItem stored;
            PutField(stored.name, item.name);
            PutField(stored.tex_name, p.texture_name);
            PutField(stored.tex_class, p.texture_class);
            stored.is_transparent = p.transparent;
            stored.ambient_intensity = p.ambient_intensity;
            stored.light_illumination = p.light_illumination;
            stored.volumetric_fog = p.volumetric_fog;
            stored.double_sided = p.double_sided;
            stored.self_illumuniation = p.self_illumination;
            stored.ftime = item.ftime;
            Put(bytes, stored);
        }
    }
    return bytes;
}

bool MaterialCache::Save(std::string_view cache_file) {
    std::vector<uint8_t> bytes = Bytes();
    if (bytes == bytes_on_disk)
        return true;
    MakeFolders(DirectoryPart(cache_file));
    AtomicFile file(cache_file);
    if (file.IsOpen() && file.Write(bytes.data(), bytes.size()) && file.Commit()) {
        bytes_on_disk = std::move(bytes);
        return true;
    }
    NoticeOnce(std::string(cache_file) + " cannot be written: " + file.GetError());
    return false;
}
