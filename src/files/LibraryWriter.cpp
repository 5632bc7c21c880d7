#include "files/LibraryWriter.h"

#include <algorithm>
#include <limits>

#include "files/AtomicFile.h"
#include "files/FileLibrary.h"
#include "files/LZSS.h"
#include "foundation/Strings.h"

namespace {

constexpr size_t LARGEST_LIBRARY = std::numeric_limits<int32_t>::max(); // its offsets are signed
constexpr size_t MOST_DIRECTORIES = std::numeric_limits<int16_t>::max();

void Append(std::vector<uint8_t>& bytes, const void* data, size_t length) {
    const auto* start = static_cast<const uint8_t*>(data);
    bytes.insert(bytes.end(), start, start + length);
}

void AppendName(std::vector<uint8_t>& names, const std::string& name) { Append(names, name.c_str(), name.size() + 1); }

// The entry's block table and blocks. A block that does not shrink is stored whole, filled up with zeros.
std::vector<uint8_t> Pack(const std::vector<uint8_t>& data, LZSSClass& packer) {
    const size_t blocks = (data.size() + FL_BLOCK_SIZE - 1) / FL_BLOCK_SIZE;
    std::vector<uint8_t> packed(blocks * sizeof(FLPackedBlockStruct));
    for (size_t block = 0; block < blocks; ++block) {
        const size_t start = block * FL_BLOCK_SIZE;
        const size_t length = std::min<size_t>(FL_BLOCK_SIZE, data.size() - start);
        FLPackedBlockStruct record = {static_cast<uint32_t>(packed.size()), 0, 0};
        const size_t packed_length = packer.Encode(packed, {data.data() + start, length});
        if (packed_length < length)
            record.blockLength = static_cast<uint16_t>(packed_length);
        else {
            packed.resize(record.blockOffset);
            Append(packed, data.data() + start, length);
            packed.resize(record.blockOffset + FL_BLOCK_SIZE);
        }
        std::copy_n(reinterpret_cast<const uint8_t*>(&record), sizeof record,
                    packed.begin() + static_cast<std::ptrdiff_t>(block * sizeof record));
    }
    return packed;
}

} // namespace

bool LibraryWriter::Add(std::string_view path_in_library, std::vector<uint8_t> data, bool only_in_library) {
    Entry entry;
    if (!FileLibrary::CutPathAndFilename(path_in_library, entry.directory, entry.name))
        return false;
    entry.data = std::move(data);
    entry.only_in_library = only_in_library;
    std::pair key(ToLower(entry.directory), ToLower(entry.name));
    return entries.try_emplace(std::move(key), std::move(entry)).second;
}

bool LibraryWriter::Write(std::string_view path, bool store, std::string& error) const {
    AtomicFile file(path);
    const auto fail = [&](const std::string& reason) {
        error = "cannot write \"" + std::string(path) + "\": " + reason;
        return false;
    };
    if (!file.IsOpen())
        return fail(file.GetError());

    LZSSClass packer;
    std::vector<uint8_t> directory_names, file_names;
    std::vector<FLHeaderFileStruct> records;
    int directories = 0;
    const std::string* last_directory = nullptr;
    size_t offset = 0;
    for (const auto& [key, entry] : entries) {
        if (!key.first.empty() && (!last_directory || *last_directory != key.first)) {
            AppendName(directory_names, entry.directory);
            last_directory = &key.first;
            if (++directories > static_cast<int>(MOST_DIRECTORIES))
                return fail("a library holds at most 32767 folders");
        }
        std::vector<uint8_t> packed;
        if (!store)
            packed = Pack(entry.data, packer);
        const bool is_packed = !store && packed.size() < entry.data.size();
        const std::vector<uint8_t>& bytes = is_packed ? packed : entry.data;
        if (bytes.size() > LARGEST_LIBRARY - offset || entry.data.size() > LARGEST_LIBRARY)
            return fail("a library holds at most 2 GiB");
        FLHeaderFileStruct record = {};
        record.fileOffset = static_cast<int32_t>(offset);
        record.fileLength = static_cast<int32_t>(bytes.size());
        record.unpackedLength = static_cast<int32_t>(entry.data.size());
        record.directoryNumber = static_cast<int16_t>(key.first.empty() ? -1 : directories - 1);
        record.flags =
            static_cast<uint16_t>((entry.only_in_library ? FLF_ONLY_IN_LIBRARY : 0) | (is_packed ? FLF_PACKED : 0));
        records.push_back(record);
        AppendName(file_names, entry.name);
        offset += bytes.size();
        if (!file.Write(bytes.data(), bytes.size()))
            return fail(file.GetError());
    }

    const FLHeaderStruct header = {sizeof(FLHeaderStruct),
                                   FL_VERSION,
                                   static_cast<int32_t>(directory_names.size()),
                                   directories,
                                   static_cast<int32_t>(file_names.size()),
                                   static_cast<int32_t>(records.size())};
    const auto header_offset = static_cast<int32_t>(offset);
    const bool written = file.Write(&header, sizeof header) &&
                         file.Write(directory_names.data(), directory_names.size()) &&
                         file.Write(file_names.data(), file_names.size()) &&
                         file.Write(records.data(), records.size() * sizeof(FLHeaderFileStruct)) &&
                         file.Write(&header_offset, sizeof header_offset) && file.Commit();
    return written || fail(file.GetError());
}
