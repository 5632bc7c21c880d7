// The rooms of src/ include only rooms that stand below them. Reads the include lines of every source.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>

namespace fs = std::filesystem;

static const std::map<std::string, int> floors = {
    {"foundation", 0}, {"files", 1},    {"render", 2}, {"scene", 3}, {"definitions", 4}, {"persistence", 5},
    {"drawing", 5},    {"compiler", 6}, {"editor", 7}, {"pages", 8}, {"commands", 9},    {"desktop", 10}};

// The room of an include line, empty for other lines and for includes that name none.
static std::string IncludedRoom(const std::string& line) {
    static const std::string directive = "#include \"";
    const size_t start = line.find(directive);
    const size_t slash = line.find('/', start);
    if (start == std::string::npos || line.find_first_not_of(" \t") != start || slash == std::string::npos)
        return {};
    return line.substr(start + directive.size(), slash - start - directive.size());
}

TEST(RoomArrows, NoIncludeRunsUp) {
    int read = 0;
    for (const auto& entry : fs::recursive_directory_iterator(SOURCE_FOLDER)) {
        if (!entry.is_regular_file())
            continue;
        const std::string room = fs::relative(entry.path(), SOURCE_FOLDER).begin()->string();
        ASSERT_TRUE(floors.count(room)) << "src/" << room << " is no room of this house";
        std::ifstream source(entry.path());
        for (std::string line; std::getline(source, line);) {
            const std::string other = IncludedRoom(line);
            if (other.empty())
                continue;
            ASSERT_TRUE(floors.count(other)) << entry.path() << ": " << line;
            EXPECT_TRUE(other == room || floors.at(other) < floors.at(room)) << entry.path() << ": " << line;
            ++read;
        }
    }
    EXPECT_GT(read, 100) << "the sources were not found";
}
