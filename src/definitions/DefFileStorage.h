// A store of definition files in memory, which DefFileObject asks before it looks for a file. Packed, it is one LZSS
// stream of items: a 32-bit length of the text with its terminator, the name and the text, each with a terminating
// zero.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct DFS_Item {
    std::string fname, fdata;
    size_t cur_index = 0; // the read position
};

class DefFileStorage {
public:
    bool AddDefFile(std::string_view filename); // true when the file is held, also from before
    const std::vector<uint8_t>& PackDefFiles(int& packed_size, int& unpacked_size);
    // Replaces the contents; false leaves them when the data are damaged.
    bool UnpackDefFiles(const uint8_t* data, int packed_size, int unpacked_size);
    DFS_Item* OpenDefFileItem(std::string_view filename); // from its start; null if there is none of that name
    // The next line without its end; runs of line ends count as one. -1 at the end of the text or for a null item.
    static int GetDFSNextLine(DFS_Item* item_ptr, std::string& line);

private:
    DFS_Item* Find(std::string_view filename) const;

    std::vector<std::unique_ptr<DFS_Item>> dfs_list;
    std::vector<uint8_t> packed_data; // the last packed block
};

extern DefFileStorage def_file_storage;
