#include "definitions/DefFileStorage.h"

#include <cstring>

#include "files/FileObject.h"
#include "files/LZSS.h"
#include "foundation/Strings.h"

DefFileStorage def_file_storage;

namespace {

// A text with its terminating zero at the position; false when there is none.
bool TakeString(const std::vector<uint8_t>& data, size_t& position, std::string& text) {
    const void* start = data.data() + position;
    const void* end = position < data.size() ? std::memchr(start, 0, data.size() - position) : nullptr;
    if (!end)
        return false;
    const auto length = static_cast<size_t>(static_cast<const char*>(end) - static_cast<const char*>(start));
    text.assign(static_cast<const char*>(start), length);
    position += length + 1;
    return true;
}

void PutString(std::vector<uint8_t>& data, const std::string& text) {
    data.insert(data.end(), text.c_str(), text.c_str() + text.size() + 1);
}

} // namespace

DFS_Item* DefFileStorage::Find(std::string_view filename) const {
    for (const auto& item : dfs_list)
        if (EqualNoCase(item->fname, filename))
            return item.get();
    return nullptr;
}

bool DefFileStorage::AddDefFile(std::string_view filename) {
    if (Find(filename))
        return true;
    FileObject file(filename, FO_Open);
    std::vector<uint8_t> data;
    if (!file.IsValid() || !file.ReadAll(data))
        return false;
    auto item = std::make_unique<DFS_Item>();
    item->fname = filename;
    item->fdata.assign(data.begin(), data.end());
    item->fdata.resize(std::strlen(item->fdata.c_str())); // a text ends at its first zero
    dfs_list.push_back(std::move(item));
    return true;
}

const std::vector<uint8_t>& DefFileStorage::PackDefFiles(int& packed_size, int& unpacked_size) {
    std::vector<uint8_t> plain;
    for (const auto& item : dfs_list) {
        const auto length = static_cast<int32_t>(item->fdata.size() + 1);
        const auto* bytes = reinterpret_cast<const uint8_t*>(&length);
        plain.insert(plain.end(), bytes, bytes + sizeof(length));
        PutString(plain, item->fname);
        PutString(plain, item->fdata);
    }
    packed_data.clear();
    LZSSClass().Encode(packed_data, plain);
    packed_size = static_cast<int>(packed_data.size());
    unpacked_size = static_cast<int>(plain.size());
    return packed_data;
}

bool DefFileStorage::UnpackDefFiles(const uint8_t* data, int packed_size, int unpacked_size) {
    constexpr int64_t MOST_BYTES_A_BYTE = 9; // eight matches of 18 bytes from 17 packed ones
    if (packed_size < 0 || unpacked_size < 0 || unpacked_size > packed_size * MOST_BYTES_A_BYTE)
        return false;
    std::vector<uint8_t> plain(static_cast<size_t>(unpacked_size));
    if (LZSSClass::Decode(plain, {data, static_cast<size_t>(packed_size)}) != plain.size())
        return false;

    std::vector<std::unique_ptr<DFS_Item>> items;
    for (size_t position = 0; position < plain.size();) {
        int32_t length = 0;
        auto item = std::make_unique<DFS_Item>();
        if (plain.size() - position < sizeof(length))
            return false;
        std::memcpy(&length, plain.data() + position, sizeof(length));
        position += sizeof(length);
        if (!TakeString(plain, position, item->fname) || !TakeString(plain, position, item->fdata) ||
            static_cast<int64_t>(item->fdata.size()) + 1 != length)
            return false;
        items.push_back(std::move(item));
    }
    dfs_list = std::move(items);
    return true;
}

DFS_Item* DefFileStorage::OpenDefFileItem(std::string_view filename) {
    DFS_Item* item = Find(filename);
    if (item)
        item->cur_index = 0;
    return item;
}

int DefFileStorage::GetDFSNextLine(DFS_Item* item_ptr, std::string& line) {
    line.clear();
    if (!item_ptr || item_ptr->cur_index >= item_ptr->fdata.size())
        return -1;
    constexpr const char* LINE_ENDS = "\n\r";
    const std::string& text = item_ptr->fdata;
    const size_t start = item_ptr->cur_index, end = std::min(text.find_first_of(LINE_ENDS, start), text.size());
    line = text.substr(start, end - start);
    item_ptr->cur_index = std::min(text.find_first_not_of(LINE_ENDS, end), text.size());
    return static_cast<int>(line.size());
}
