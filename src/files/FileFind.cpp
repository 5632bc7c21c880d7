#include "files/FileFind.h"

#include <algorithm>
#include <filesystem>
#include <sys/stat.h>

#include "foundation/Paths.h"
#include "foundation/Strings.h"

namespace {

constexpr uint32_t IN_LIBRARY = 1;

// Of a search on disk, where "*.*" means every name, also one without a dot.
bool MatchesOnDisk(std::string_view pattern, std::string_view name) {
    return pattern == "*.*" || FileLibrary::WildcardMatchedName(pattern, name);
}

} // namespace

FileFindObject::FileFindObject(std::string_view directory_path, std::string_view pattern, FFOSearchType type,
                               bool search_flib)
    : current_mode(type), search_filelibrary(search_flib), directory(directory_path), wildcard_pattern(pattern) {}

const FFOInfo* FileFindObject::FindNext() {
    has_result = false;
    if (current_mode == FFO_Finished)
        return nullptr;
    const FileLibrary& library = FileObject::Library();
    if (!disk_search_started && search_filelibrary) {
        const bool found = current_mode == FFO_FileFind
                               ? library.FindNext_File(directory, wildcard_pattern, file_find)
                               : library.FindNext_Directory(directory, wildcard_pattern, dir_find);
        if (found) {
            found_object = {current_mode == FFO_FileFind ? file_find.cutName : dir_find.last_name, {}, IN_LIBRARY};
            has_result = true;
            return &found_object;
        }
    }
    if (!disk_search_started)
        StartDiskSearch();
    while (next_disk_entry < disk_entries.size()) {
        const FFOInfo& entry = disk_entries[next_disk_entry++];
        if (search_filelibrary && IsInLibraryToo(directory + "\\" + entry.name))
            continue;
        found_object = entry;
        has_result = true;
        return &found_object;
    }
    current_mode = FFO_Finished;
    return nullptr;
}

const char* FileFindObject::GetName() const { return has_result ? found_object.name.c_str() : nullptr; }

bool FileFindObject::IsInLibraryToo(const std::string& path) const {
    const FileLibrary& library = FileObject::Library();
    if (current_mode == FFO_FileFind)
        return library.FileExists(path);
    return library.DirectoryExists(path) || dir_find.hacked_dir_names.FindString(FileLibrary::FolderName(path)) >= 0;
}

void FileFindObject::StartDiskSearch() {
    disk_search_started = true;
    const std::filesystem::path folder = directory.empty() ? std::filesystem::path(".") : RealPath(directory);
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        struct stat status = {};
        if (!MatchesOnDisk(wildcard_pattern, name) || stat(entry->path().c_str(), &status) != 0)
            continue;
        if (current_mode == FFO_DirectoryFind ? S_ISDIR(status.st_mode) : S_ISREG(status.st_mode))
            disk_entries.push_back({name, FileTime::FromUnix(status.st_mtim.tv_sec, status.st_mtim.tv_nsec), 0});
    }
    std::sort(disk_entries.begin(), disk_entries.end(),
              [](const FFOInfo& a, const FFOInfo& b) { return a.name < b.name; });
}
