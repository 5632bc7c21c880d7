// A fresh empty folder that goes away with the test.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdlib.h>
#include <string>
#include <string_view>

class TempFolder {
public:
    TempFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "marrowstead-test-XXXXXX").string();
        root = mkdtemp(name.data()) ? name : std::string();
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder() {
        std::error_code error;
        if (!root.empty())
            std::filesystem::remove_all(root, error);
    }

    std::string operator/(std::string_view name) const { return (root / name).string(); }
    const std::filesystem::path& Path() const { return root; }

private:
    std::filesystem::path root;
};

// The current folder for the time of a test.
class CurrentFolder {
public:
    explicit CurrentFolder(const std::filesystem::path& folder) : before(std::filesystem::current_path()) {
        std::filesystem::current_path(folder);
    }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;
    ~CurrentFolder() { std::filesystem::current_path(before); }

private:
    std::filesystem::path before;
};

inline std::string ReadBytes(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

// Creates the folders above it too.
inline void WriteBytes(const std::filesystem::path& path, std::string_view bytes) {
    if (path.has_parent_path())
        std::filesystem::create_directories(path.parent_path());
    std::filesystem::remove(path); // writing over a file would wait for the disk
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

inline size_t EntriesIn(const std::filesystem::path& folder) {
    return static_cast<size_t>(
        std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()));
}
