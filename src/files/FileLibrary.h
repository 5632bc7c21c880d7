// The merged directory of all packed ".fs" libraries, and reading out of them. Any thread may look up and read, several
// at one library at a time; a handle belongs to one thread at a time.
#pragma once

#include <cstdint>
#include <cstdio>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "foundation/StringList.h"

enum FileLibraryResult { FL_OK = 1, FL_IO_FAILURE = 6, FL_WRONG_VERSION = 7 };

inline constexpr uint32_t FL_BAD_HANDLE = 0xFFFFFFFF;
inline constexpr uint32_t FL_BLOCK_SIZE = 16384; // unpacked bytes of a packed block
inline constexpr int32_t FL_VERSION = 8192;

#pragma pack(push, 1)
struct FLHeaderStruct {
    int32_t headerSize, version, lengthOfDirNames, numberOfDirectories, lengthOfFileNames, numberOfFiles;
};
struct FLHeaderFileStruct {
    int32_t fileOffset, fileLength, unpackedLength;
    int16_t directoryNumber; // -1: the root
    uint16_t flags;          // FLF_ bits
};
struct FLPackedBlockStruct {
    uint32_t blockOffset; // from the entry's fileOffset
    uint16_t reserve;
    uint16_t blockLength; // bytes of LZSS data; 0: 16384 raw bytes
};
#pragma pack(pop)
static_assert(sizeof(FLHeaderStruct) == 24 && sizeof(FLHeaderFileStruct) == 16 && sizeof(FLPackedBlockStruct) == 8);

enum : uint16_t { FLF_ONLY_IN_LIBRARY = 1, FLF_PACKED = 2 };

struct FLMemFileStruct {
    std::string name;
    uint16_t flags = 0;
    uint32_t fileOffset = 0, fileLength = 0, unpackedLength = 0; // a stored entry's two lengths are the same
    int fileLibraryNumber = 0;
    // What reading gives and GetFileSize tells, also of an entry whose lengths are at odds.
    uint32_t Size() const { return flags & FLF_PACKED ? unpackedLength : fileLength; }
};
struct FLMemDirStruct {
    std::string name;
    std::vector<FLMemFileStruct> memFiles; // sorted without regard to case
};

// Where a search stands; begin with an empty one.
struct FindFileStruct {
    std::string cutName;
    int next = 0;
};
struct FindDirectoryStruct {
    std::string last_name;
    int next = 0;
    StringListClass hacked_dir_names; // full paths of folders that exist only as prefixes
};

class FileLibrary {
public:
    explicit FileLibrary(int maxOpenedHandles = 16);
    FileLibrary(const FileLibrary&) = delete;
    FileLibrary& operator=(const FileLibrary&) = delete;
    ~FileLibrary();

    // flags bit 0: an entry that is already there stays; else the new library's entry replaces it.
    FileLibraryResult AddFileLibrary(std::string_view file_name, uint32_t flags);
    void InitFileLibraries(); // forgets everything

    uint32_t FileOpen(std::string_view path, int bufferSize); // FL_BAD_HANDLE when the path is not in the directory
    std::FILE* FileOpenWithUniqueHandle(std::string_view path, uint32_t& file_size); // the caller's; null on failure
    uint32_t FileRead(uint32_t handle, void* buffer, uint32_t number_of_bytes);
    uint32_t FileSeek(uint32_t handle, int64_t offset, int from_where); // 0 start, 1 position, 2 end
    uint32_t FileSize(uint32_t handle) const;
    void FileClose(uint32_t handle);
    bool FileExists(std::string_view path, bool* valid_only_in_fs = nullptr) const;
    bool DirectoryExists(std::string_view dir_path) const;
    bool FindNext_File(std::string_view directory, std::string_view mask, FindFileStruct& search) const;
    bool FindNext_Directory(std::string_view directory, std::string_view mask, FindDirectoryStruct& search) const;
    int GetLibraryCount() const { return static_cast<int>(libraries.size()); }
    // Sorted, the root first; as long as no library comes or goes.
    const std::vector<FLMemDirStruct>& GetDirectories() const { return memDirectories; }

    // '*' matches any run of characters; any other mask character matches itself in any case.
    static bool WildcardMatchedName(std::string_view mask, std::string_view name);
    // Splits a path into its folder and file name after resolving its dot parts; false when it names no file.
    static bool CutPathAndFilename(std::string_view path, std::string& directory, std::string& file_name);
    // A folder's path as the directory spells it: backslashes between its parts, none at the ends, no dot parts.
    static std::string FolderName(std::string_view directory);

private:
    class OpenFile; // of the system; closed when its last reader lets go of it
    using OpenFilePtr = std::shared_ptr<OpenFile>;
    struct LibraryFile {
        std::string name;
        OpenFilePtr file; // null while closed
    };
    struct OpenEntry {
        FLMemFileStruct entry;
        uint32_t filePosition = 0;
        uint32_t sectorInBuffer = FL_BAD_HANDLE; // none
        uint32_t bytesInBuffer = 0;
        std::vector<uint8_t> buffer; // a sector; empty for unbuffered reading
    };
    using OpenEntryPtr = std::shared_ptr<OpenEntry>; // a reader's handle may be closed while it reads

    // Those without a lock of their own: the caller holds the guard.
    const FLMemDirStruct* FindDirectory(std::string_view name) const;
    const FLMemFileStruct* FindFile(std::string_view path) const;
    OpenEntryPtr FindOpen(uint32_t handle) const;
    void MergeTables(const struct LibraryTables& tables, int library, bool replace);
    void Optimize();
    OpenFilePtr GetFileLibraryHandle(int library);

    static bool LoadSector(const OpenEntry& open, const OpenFile& file, uint32_t sector, uint8_t* target,
                           uint32_t& loaded);
    static bool ReadPast(OpenEntry& open, const OpenFile& file, uint8_t* target, uint32_t count);

    // Over everything below. It is held for a look-up, never while bytes are read or unpacked.
    mutable std::mutex guard;
    std::vector<FLMemDirStruct> memDirectories; // sorted without regard to case
    std::vector<LibraryFile> libraries;
    std::list<int> recently_used; // libraries with an open file, the latest first
    int max_open;
    std::unordered_map<uint32_t, OpenEntryPtr> open_entries;
    uint32_t lastFreeHandle = 0;
};
