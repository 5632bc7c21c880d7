// A file chooser over the data root with the packed libraries laid over it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

class MyFileDialog {
public:
    enum class Place { DiskAndLibrary, Disk, Library };
    struct Folder {
        std::string path; // from the root on, without a backslash at its end
        std::string name;
        int parent = -1; // index of the folder above, -1 of the root
    };
    struct File {
        std::string name;
        Place place;
    };

    // default_dir: the folder that is selected at first, where it exists.
    MyFileDialog(std::string_view root, std::string_view default_dir, std::string_view file_pattern);

    std::vector<Folder> folders; // the root, then all below it, each behind the one that holds it
    std::vector<File> files;     // of the selected folder, sorted
    int selected_folder = 0, selected_file = -1;

    void SelectFolder(int folder);
    bool SelectFile(std::string_view name); // any case
    void SetFilePattern(std::string_view file_pattern);
    bool IsOKEnabled() const { return selected_file >= 0; }
    std::string GetSelectedFile() const; // the path; empty if none is selected

private:
    void AddDirectory(const std::string& path, const std::string& name, int parent, int depth);
    void ListFiles();

    std::string pattern;
};
