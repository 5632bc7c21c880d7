#include "files/FileLibrary.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <system_error>
#include <unistd.h>

#include "files/LZSS.h"
#include "foundation/Paths.h"
#include "foundation/Strings.h"

static_assert(std::endian::native == std::endian::little, "records of files are read as they stand");

// The tables of a library file, read and checked against its size.
struct LibraryTables {
    std::vector<std::string> directories, files;
    std::vector<FLHeaderFileStruct> records; // one for each of files

    FileLibraryResult Read(std::FILE* file);
};

namespace {

constexpr int LEAST_HANDLES = 2, USUAL_HANDLES = 16;
constexpr int NO_DIRECTORY = -1;

bool ReadAt(std::FILE* file, uint64_t offset, void* target, size_t length) {
    return fseeko(file, static_cast<off_t>(offset), SEEK_SET) == 0 && std::fread(target, 1, length, file) == length;
}

template <class T>
auto LowerBoundByName(std::vector<T>& items, std::string_view name) {
    return std::lower_bound(items.begin(), items.end(), name, [](const T& item, std::string_view sought) {
        return CompareNoCase(item.name, sought) < 0;
    });
}

template <class T>
const T* FindByName(const std::vector<T>& items, std::string_view name) {
    const auto found = LowerBoundByName(const_cast<std::vector<T>&>(items), name);
    return found != items.end() && EqualNoCase(found->name, name) ? &*found : nullptr;
}

template <class T>
void SortByName(std::vector<T>& items) {
    std::stable_sort(items.begin(), items.end(),
                     [](const T& a, const T& b) { return CompareNoCase(a.name, b.name) < 0; });
}

// Cuts a block of zero-terminated names. False when it holds fewer than count.
bool CutNames(const std::vector<char>& block, int32_t count, std::vector<std::string>& names) {
    if (static_cast<size_t>(count) > block.size())
        return false;
    names.reserve(static_cast<size_t>(count));
    auto start = block.begin();
    for (int32_t i = 0; i < count; ++i) {
        const auto end = std::find(start, block.end(), '\0');
        if (end == block.end())
            return false;
        names.emplace_back(start, end);
        start = end + 1;
    }
    return true;
}

} // namespace

FileLibraryResult LibraryTables::Read(std::FILE* file) {
    int32_t header_offset = 0;
    if (fseeko(file, -static_cast<off_t>(sizeof header_offset), SEEK_END) != 0)
        return FL_IO_FAILURE;
    const int64_t tables_end = ftello(file);
    FLHeaderStruct header;
    if (std::fread(&header_offset, sizeof header_offset, 1, file) != 1 || header_offset < 0 ||
        !ReadAt(file, static_cast<uint64_t>(header_offset), &header, sizeof header))
        return FL_IO_FAILURE;
    if (header.version != FL_VERSION)
        return FL_WRONG_VERSION;
    const int64_t room = tables_end - header_offset - static_cast<int64_t>(sizeof header);
    if (header.lengthOfDirNames < 0 || header.numberOfDirectories < 0 || header.lengthOfFileNames < 0 ||
        header.numberOfFiles < 0 ||
        header.lengthOfDirNames + int64_t{header.lengthOfFileNames} +
                header.numberOfFiles * static_cast<int64_t>(sizeof(FLHeaderFileStruct)) >
            room)
        return FL_IO_FAILURE;
    std::vector<char> directory_names(static_cast<size_t>(header.lengthOfDirNames));
    std::vector<char> file_names(static_cast<size_t>(header.lengthOfFileNames));
    records.resize(static_cast<size_t>(header.numberOfFiles));
    if (std::fread(directory_names.data(), 1, directory_names.size(), file) != directory_names.size() ||
        std::fread(file_names.data(), 1, file_names.size(), file) != file_names.size() ||
        std::fread(records.data(), sizeof(FLHeaderFileStruct), records.size(), file) != records.size() ||
        !CutNames(directory_names, header.numberOfDirectories, directories) ||
        !CutNames(file_names, header.numberOfFiles, files))
        return FL_IO_FAILURE;
    return FL_OK;
}

// Reads at any place without moving one that others share.
class FileLibrary::OpenFile {
public:
    explicit OpenFile(const std::string& name) : descriptor(open(name.c_str(), O_RDONLY | O_CLOEXEC)) {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() {
        if (IsOpen())
            close(descriptor);
    }
    bool IsOpen() const { return descriptor >= 0; }
    bool ReadAt(uint64_t offset, void* target, size_t length) const {
        auto* to = static_cast<uint8_t*>(target);
        while (length > 0) {
            const ssize_t count = pread(descriptor, to, length, static_cast<off_t>(offset));
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0)
                return false;
            to += count;
            offset += static_cast<uint64_t>(count);
            length -= static_cast<size_t>(count);
        }
        return true;
    }

private:
    int descriptor;
};

FileLibrary::FileLibrary(int maxOpenedHandles)
    : max_open(maxOpenedHandles < LEAST_HANDLES ? USUAL_HANDLES : maxOpenedHandles) {}

FileLibrary::~FileLibrary() { InitFileLibraries(); }

void FileLibrary::InitFileLibraries() {
    const std::lock_guard lock(guard);
    libraries.clear();
    recently_used.clear();
    memDirectories.clear();
    open_entries.clear(); // handles are not given again: a reader may still hold one
}

FileLibraryResult FileLibrary::AddFileLibrary(std::string_view file_name, uint32_t flags) {
    const std::filesystem::path path = RealPath(file_name);
    std::error_code error;
    std::FILE* file = std::filesystem::is_regular_file(path, error) ? std::fopen(path.c_str(), "rb") : nullptr;
    if (!file)
        return FL_IO_FAILURE;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error); // it is opened again later
    LibraryTables tables;
    const FileLibraryResult result = tables.Read(file);
    std::fclose(file);
    const std::lock_guard lock(guard);
    libraries.push_back({error ? path.string() : absolute.string(), nullptr});
    if (result == FL_OK) {
        MergeTables(tables, GetLibraryCount() - 1, !(flags & 1));
        Optimize();
    }
    return result;
}

// replace: an entry that is already there gives way.
void FileLibrary::MergeTables(const LibraryTables& tables, int library, bool replace) {
    // The files of each folder, in the order of the library; the root stands first.
    std::vector<std::vector<size_t>> files_of_folder(tables.directories.size() + 1);
    for (size_t i = 0; i < tables.records.size(); ++i) {
        const int folder = tables.records[i].directoryNumber;
        if (folder >= NO_DIRECTORY && folder + 1 < static_cast<int>(files_of_folder.size()))
            files_of_folder[static_cast<size_t>(folder + 1)].push_back(i);
    }
    std::unordered_map<std::string, size_t> known_folders;
    for (size_t i = 0; i < memDirectories.size(); ++i)
        known_folders.emplace(ToLower(memDirectories[i].name), i);
    for (size_t folder = 0; folder < files_of_folder.size(); ++folder) {
        const std::string name = folder == 0 ? std::string() : tables.directories[folder - 1];
        const auto [place, is_new] = known_folders.emplace(ToLower(name), memDirectories.size());
        if (is_new)
            memDirectories.push_back({name, {}});
        FLMemDirStruct& directory = memDirectories[place->second];
        std::unordered_map<std::string, size_t> known_files;
        if (!files_of_folder[folder].empty())
            for (size_t i = 0; i < directory.memFiles.size(); ++i)
                known_files.emplace(ToLower(directory.memFiles[i].name), i);
        for (const size_t i : files_of_folder[folder]) {
            const FLHeaderFileStruct& record = tables.records[i];
            FLMemFileStruct entry = {tables.files[i],
                                     record.flags,
                                     static_cast<uint32_t>(record.fileOffset),
                                     static_cast<uint32_t>(record.fileLength),
                                     static_cast<uint32_t>(record.unpackedLength),
                                     library};
            const auto [file_place, file_is_new] = known_files.emplace(ToLower(entry.name), directory.memFiles.size());
            if (file_is_new)
                directory.memFiles.push_back(std::move(entry));
            else if (replace) {
                FLMemFileStruct& present = directory.memFiles[file_place->second];
                entry.name = present.name; // the first spelling stays
                present = std::move(entry);
            }
        }
    }
}

void FileLibrary::Optimize() {
    SortByName(memDirectories);
    for (FLMemDirStruct& directory : memDirectories)
        SortByName(directory.memFiles);
}

const FLMemDirStruct* FileLibrary::FindDirectory(std::string_view name) const {
    return FindByName(memDirectories, name);
}

const FLMemFileStruct* FileLibrary::FindFile(std::string_view path) const {
    std::string directory, file_name;
    if (memDirectories.empty() || !CutPathAndFilename(path, directory, file_name))
        return nullptr;
    const FLMemDirStruct* folder = FindDirectory(directory);
    return folder ? FindByName(folder->memFiles, file_name) : nullptr;
}

FileLibrary::OpenEntryPtr FileLibrary::FindOpen(uint32_t handle) const {
    const auto found = open_entries.find(handle);
    return found == open_entries.end() ? nullptr : found->second;
}

FileLibrary::OpenFilePtr FileLibrary::GetFileLibraryHandle(int library) {
    if (library < 0 || library >= GetLibraryCount())
        return nullptr;
    LibraryFile& wanted = libraries[static_cast<size_t>(library)];
    if (wanted.file) {
        if (recently_used.front() != library)
            recently_used.splice(recently_used.begin(), recently_used,
                                 std::find(recently_used.begin(), recently_used.end(), library));
        return wanted.file;
    }
    auto opened = std::make_shared<OpenFile>(wanted.name);
    if (!opened->IsOpen())
        return nullptr;
    if (static_cast<int>(recently_used.size()) >= max_open) {
        libraries[static_cast<size_t>(recently_used.back())].file.reset();
        recently_used.pop_back();
    }
    wanted.file = std::move(opened);
    recently_used.push_front(library);
    return wanted.file;
}

uint32_t FileLibrary::FileOpen(std::string_view path, int bufferSize) {
    const std::lock_guard lock(guard);
    const FLMemFileStruct* entry = FindFile(path);
    if (!entry)
        return FL_BAD_HANDLE;
    do
        ++lastFreeHandle;
    while (lastFreeHandle == FL_BAD_HANDLE || open_entries.count(lastFreeHandle) != 0);
    auto opened = std::make_shared<OpenEntry>();
    opened->entry = *entry;
    if (entry->flags & FLF_PACKED)
        opened->buffer.resize(FL_BLOCK_SIZE);
    else if (bufferSize > 0)
        opened->buffer.resize(static_cast<size_t>(bufferSize));
    open_entries.emplace(lastFreeHandle, std::move(opened));
    return lastFreeHandle;
}

std::FILE* FileLibrary::FileOpenWithUniqueHandle(std::string_view path, uint32_t& file_size) {
    const std::lock_guard lock(guard);
    const FLMemFileStruct* entry = FindFile(path);
    if (!entry)
        return nullptr;
    std::FILE* file = std::fopen(libraries[static_cast<size_t>(entry->fileLibraryNumber)].name.c_str(), "rb");
    if (file && fseeko(file, static_cast<off_t>(entry->fileOffset), SEEK_SET) != 0) {
        std::fclose(file);
        return nullptr;
    }
    file_size = entry->fileLength;
    return file;
}

// Fills target with one sector of the entry, a buffer's length. `loaded` is how much of it is valid.
bool FileLibrary::LoadSector(const OpenEntry& open, const OpenFile& file, uint32_t sector, uint8_t* target,
                             uint32_t& loaded) {
    const FLMemFileStruct& entry = open.entry;
    const size_t sector_size = open.buffer.size();
    if (!(entry.flags & FLF_PACKED)) {
        const uint64_t start = uint64_t{sector} * sector_size;
        loaded = static_cast<uint32_t>(std::min<uint64_t>(sector_size, entry.fileLength - start));
        return file.ReadAt(entry.fileOffset + start, target, loaded);
    }
    FLPackedBlockStruct block;
    if (!file.ReadAt(uint64_t{entry.fileOffset} + uint64_t{sector} * sizeof block, &block, sizeof block) ||
        block.blockLength > FL_BLOCK_SIZE)
        return false;
    const uint64_t data = uint64_t{entry.fileOffset} + block.blockOffset;
    if (block.blockLength == 0) {
        loaded = FL_BLOCK_SIZE;
        return file.ReadAt(data, target, FL_BLOCK_SIZE);
    }
    uint8_t packed[FL_BLOCK_SIZE];
    if (!file.ReadAt(data, packed, block.blockLength))
        return false;
    const size_t produced = LZSSClass::Decode({target, sector_size}, {packed, block.blockLength});
    if (produced == LZSSClass::TOO_LONG)
        return false;
    loaded = static_cast<uint32_t>(produced);
    return true;
}

// count bytes from the position on, which stays. There are as many.
bool FileLibrary::ReadPast(OpenEntry& open, const OpenFile& file, uint8_t* target, uint32_t count) {
    if (open.buffer.empty())
        return file.ReadAt(uint64_t{open.entry.fileOffset} + open.filePosition, target, count);
    const auto sector_size = static_cast<uint32_t>(open.buffer.size());
    for (uint32_t done = 0; done < count;) {
        const uint32_t position = open.filePosition + done;
        const uint32_t sector = position / sector_size, inside = position % sector_size;
        const uint32_t wanted = std::min(count - done, sector_size - inside);
        uint32_t loaded = 0;
        if (sector != open.sectorInBuffer && wanted == sector_size) { // whole sectors pass the buffer by
            if (!LoadSector(open, file, sector, target + done, loaded) || loaded < wanted)
                return false;
        } else {
            if (sector != open.sectorInBuffer) {
                open.sectorInBuffer = FL_BAD_HANDLE;
                if (!LoadSector(open, file, sector, open.buffer.data(), open.bytesInBuffer))
                    return false;
                open.sectorInBuffer = sector;
            }
            if (inside + wanted > open.bytesInBuffer)
                return false;
            std::memcpy(target + done, open.buffer.data() + inside, wanted);
        }
        done += wanted;
    }
    return true;
}

uint32_t FileLibrary::FileRead(uint32_t handle, void* buffer, uint32_t number_of_bytes) {
    OpenEntryPtr open;
    OpenFilePtr file;
    {
        const std::lock_guard lock(guard);
        open = FindOpen(handle);
        if (open)
            file = GetFileLibraryHandle(open->entry.fileLibraryNumber);
    }
    if (!file)
        return FL_BAD_HANDLE;
    const uint32_t count = std::min(number_of_bytes, open->entry.Size() - open->filePosition);
    if (count == 0)
        return 0;
    if (!ReadPast(*open, *file, static_cast<uint8_t*>(buffer), count))
        return FL_BAD_HANDLE;
    open->filePosition += count;
    return count;
}

uint32_t FileLibrary::FileSeek(uint32_t handle, int64_t offset, int from_where) {
    OpenEntryPtr open;
    {
        const std::lock_guard lock(guard);
        open = FindOpen(handle);
    }
    if (!open || from_where < 0 || from_where > 2)
        return FL_BAD_HANDLE;
    const int64_t size = open->entry.Size();
    const int64_t start = from_where == 0 ? 0 : from_where == 1 ? int64_t{open->filePosition} : size;
    open->filePosition = static_cast<uint32_t>(std::clamp<int64_t>(offset, -start, size - start) + start);
    return open->filePosition;
}

uint32_t FileLibrary::FileSize(uint32_t handle) const {
    const std::lock_guard lock(guard);
    const OpenEntryPtr open = FindOpen(handle);
    return open ? open->entry.Size() : FL_BAD_HANDLE;
}

void FileLibrary::FileClose(uint32_t handle) {
    const std::lock_guard lock(guard);
    open_entries.erase(handle);
}

bool FileLibrary::FileExists(std::string_view path, bool* valid_only_in_fs) const {
    const std::lock_guard lock(guard);
    const FLMemFileStruct* entry = FindFile(path);
    if (entry && valid_only_in_fs)
        *valid_only_in_fs = (entry->flags & FLF_ONLY_IN_LIBRARY) != 0;
    return entry != nullptr;
}

bool FileLibrary::DirectoryExists(std::string_view dir_path) const {
    const std::lock_guard lock(guard);
    return FindDirectory(FolderName(dir_path)) != nullptr;
}
