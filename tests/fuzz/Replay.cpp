// Runs each file of a corpus through its target: replay TARGET FOLDER
#include <algorithm>
#include <map>
#include <vector>

#include "fuzz/FuzzTarget.h"

static std::map<std::string, FuzzFunction>& Targets() {
    static std::map<std::string, FuzzFunction> targets;
    return targets;
}

bool RegisterFuzzTarget(const char* name, FuzzFunction function) { return Targets().emplace(name, function).second; }

int main(int argc, char** argv) {
    const auto target = argc == 3 ? Targets().find(argv[1]) : Targets().end();
    if (target == Targets().end()) {
        std::fprintf(stderr, "replay TARGET FOLDER\n");
        return 1;
    }
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::absolute(argv[2])))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    for (const std::filesystem::path& file : files) {
        std::fprintf(stderr, "%s\n", file.c_str()); // the last one told is the one that was not survived
        target->second(ReadBytes(file));
    }
    return files.empty() ? 1 : 0;
}
