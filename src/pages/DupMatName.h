// The question by which a material is copied under another name, with its images or with others.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

class DupMatName {
public:
    // An image that the script names, and what the copy is to name.
    struct Map {
        const char* key; // of the script, such as "DIFFUSE_MAP"
        std::string source_class, source_name;
        std::string texture_class, texture_name; // the fields
    };

    DupMatName(std::string_view material_dir, std::string_view material_name);

    std::array<Map, 4> maps;
    bool fields_enabled = true;                    // off for a procedural shader, whose images stay as they are
    std::vector<std::string> texture_classes;      // to choose from, sorted
    std::vector<std::string> material_directories; // likewise
    std::string new_directory, new_name;           // of the copy

    // Makes the script and the images that it names. False after the user was told: the window stays.
    bool OnOK();

private:
    void ParseMaterial();
    void DetectMatDirectories();
    std::string CopyLine(const std::string& line, std::array<bool, 4>& replaced) const;
    void CopyIfDifferent(const Map& map) const;

    std::string source_directory, source_name;
};
