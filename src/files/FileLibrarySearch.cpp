// The path rules of the file library and its searches by pattern.
#include <algorithm>

#include "files/FileLibrary.h"
#include "foundation/Strings.h"

bool FileLibrary::CutPathAndFilename(std::string_view path, std::string& directory, std::string& file_name) {
    directory.clear();
    file_name.clear();
    if (!path.empty() && (path.front() == '\\' || path.front() == '/'))
        path.remove_prefix(1);
    std::string text(path);
    std::replace(text.begin(), text.end(), '/', '\\');
    const size_t separator = text.rfind('\\');
    file_name = separator == std::string::npos ? text : text.substr(separator + 1);
    if (file_name.empty())
        return false;
    if (separator == std::string::npos)
        return true;

    // The closing backslash takes part in the dot rules.
    const std::string_view source = std::string_view(text).substr(0, separator + 1);
    for (size_t i = 0; i < source.size();) {
        const std::string_view rest = source.substr(i);
        if (rest.starts_with("\\..")) {
            const size_t previous = directory.rfind('\\');
            directory.resize(previous == std::string::npos ? 0 : previous);
            i += 3;
        } else if (rest.starts_with("\\.\\"))
            i += 2;
        else if (directory.empty() && rest.front() == '\\')
            i += 1;
        else if (directory.empty() && rest.starts_with(".\\"))
            i += 2;
        else {
            directory += rest.front();
            i += 1;
        }
    }
    if (!directory.empty() && directory.back() == '\\')
        directory.pop_back();
    return true;
}

std::string FileLibrary::FolderName(std::string_view directory) {
    std::string folder, file_name;
    while (!directory.empty() && (directory.back() == '\\' || directory.back() == '/'))
        directory.remove_suffix(1);
    CutPathAndFilename(std::string(directory) + "\\*", folder, file_name);
    return folder;
}

bool FileLibrary::WildcardMatchedName(std::string_view mask, std::string_view name) {
    const std::string pattern = ToLower(mask), text = ToLower(name);
    size_t m = 0, n = 0;
    size_t star = std::string::npos, star_text = 0; // the last '*' and where its run ends so far
    while (n < text.size()) {
        if (m < pattern.size() && pattern[m] == '*') {
            star = m++;
            star_text = n;
        } else if (m < pattern.size() && pattern[m] == text[n]) {
            ++m;
            ++n;
        } else if (star != std::string::npos) {
            m = star + 1;
            n = ++star_text;
        } else
            return false;
    }
    return pattern.find_first_not_of('*', m) == std::string::npos;
}

bool FileLibrary::FindNext_File(std::string_view directory, std::string_view mask, FindFileStruct& search) const {
    const std::lock_guard lock(guard);
    const FLMemDirStruct* folder = FindDirectory(FolderName(directory));
    if (!folder)
        return false;
    while (search.next < static_cast<int>(folder->memFiles.size())) {
        const std::string& name = folder->memFiles[static_cast<size_t>(search.next++)].name;
        if (WildcardMatchedName(mask, name)) {
            search.cutName = name;
            return true;
        }
    }
    return false;
}

bool FileLibrary::FindNext_Directory(std::string_view directory, std::string_view mask,
                                     FindDirectoryStruct& search) const {
    const std::lock_guard lock(guard);
    const std::string parent = FolderName(directory);
    while (search.next < static_cast<int>(memDirectories.size())) {
        const std::string_view path = memDirectories[static_cast<size_t>(search.next++)].name;
        if (path.size() <= parent.size() || !StartsWithNoCase(path, parent) ||
            (path[parent.size()] != '\\' && path[parent.size()] != '/'))
            continue;
        std::string name(path.substr(parent.size() + 1));
        if (name.find_first_of("\\/") != std::string::npos) {
            // A deeper folder: the folders above it need not be listed by themselves.
            for (const char separator : {'\\', '/'})
                name.resize(std::min(name.size(), name.rfind(separator)));
            const std::string full_path = parent + "\\" + name;
            if (StartsWithNoCase(search.last_name, name) || FindDirectory(full_path))
                continue;
            search.hacked_dir_names.AddString(full_path);
        }
        if (WildcardMatchedName(mask, name)) {
            search.last_name = name;
            return true;
        }
    }
    return false;
}
