// What the material scripts said when they were last read, with the time of each script.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "definitions/MaterialLibrary.h"
#include "files/FileObject.h"

class MaterialCache {
public:
    // A file that does not exist leaves the cache empty, and so does a damaged or older one, which is deleted.
    explicit MaterialCache(std::string_view cache_file);

    // What the cache holds for a script that has not changed since. False when it must be read.
    bool GetFileData(std::string_view directory, std::string_view file_name, MaterialProperties& properties) const;
    void AddFileData(std::string_view directory, std::string_view file_name, const MaterialProperties& properties);
    // Writes the file if it would differ from the one that was read. False with a notice when that fails.
    bool Save(std::string_view cache_file);

private:
    struct Item {
        std::string name;
        MaterialProperties properties;
        FileTime ftime; // of the script; zero if it is no disk file
    };
    struct Directory {
        std::string name;
        std::vector<Item> items;
    };

    bool Parse(const std::vector<uint8_t>& bytes);
    std::vector<uint8_t> Bytes() const;
    void Index(size_t directory, size_t item);

    std::vector<Directory> directories;
    std::unordered_map<std::string, std::pair<size_t, size_t>>
        index; // lower-case "directory\name" to directory and item
    std::vector<uint8_t> bytes_on_disk;
};
