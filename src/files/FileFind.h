// Enumerates a folder over the packed libraries and the disk: library hits first, then disk entries that the library
// does not also have. Entries of the disk come in byte order of their names, so that a run is the same everywhere.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "files/FileLibrary.h"
#include "files/FileObject.h"

enum FFOSearchType { FFO_FileFind = 0, FFO_DirectoryFind = 1, FFO_Finished = 2 };

struct FFOInfo {
    std::string name;
    FileTime creation_time; // the last-write time; zero for a library entry
    uint32_t flags = 0;     // bit 0: a library entry
};

class FileFindObject {
public:
    FileFindObject(std::string_view directory_path, std::string_view pattern, FFOSearchType type, bool search_flib);

    const FFOInfo* FindNext();   // null at the end
    const char* GetName() const; // of the last result; null before the first and after the end
    FileTime GetFileTime() const { return found_object.creation_time; }
    bool IsInFilelibrary() const { return (found_object.flags & 1) != 0; }

private:
    void StartDiskSearch();
    bool IsInLibraryToo(const std::string& path) const;

    FFOSearchType current_mode;
    FFOInfo found_object;
    bool search_filelibrary, disk_search_started = false, has_result = false;
    std::string directory, wildcard_pattern;
    FindFileStruct file_find;
    FindDirectoryStruct dir_find;
    std::vector<FFOInfo> disk_entries;
    size_t next_disk_entry = 0;
};
