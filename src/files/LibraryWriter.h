// Writes packed ".fs" libraries. The same entries give the same bytes, whatever the order they were added in.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

class LibraryWriter {
public:
    // A path such as "Scripts\Materials\x.mtl", with either separator. Returns false when an entry of that path, in any
    // case, is there already or the path names no file; nothing is added then.
    bool Add(std::string_view path_in_library, std::vector<uint8_t> data, bool only_in_library = false);

    size_t GetCount() const { return entries.size(); }

    // store: nothing is packed. On failure error is one sentence and the file of that name is as it was.
    bool Write(std::string_view path, bool store, std::string& error) const;

private:
    struct Entry {
        std::string directory, name;
        std::vector<uint8_t> data;
        bool only_in_library = false;
    };

    // By directory and name in lower case, which is the order of the library.
    std::map<std::pair<std::string, std::string>, Entry> entries;
};
