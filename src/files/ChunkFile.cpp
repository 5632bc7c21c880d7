// Reading a chunk file, and what both directions share.
#include "files/ChunkFile.h"

#include <algorithm>
#include <numeric>

#include "files/ChunkFormat.h"
#include "foundation/Strings.h"

using namespace chunk_format;

namespace {

constexpr uint32_t WINDOW_BYTES = 64 * 1024;    // read ahead; a longer array is read straight to its place
constexpr uint64_t MOST_EMPTY_ARRAYS = 1 << 20; // of one file: they cost no bytes, so nothing else bounds their number

uint32_t FastSearchID(std::string_view name) {
    uint32_t sum = 0;
    for (const char c : name)
        sum += static_cast<uint32_t>(static_cast<signed char>(c));
    return sum;
}

template <class T>
T Take(const uint8_t* bytes) {
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

} // namespace

UChunkFile::UChunkFile(std::string_view chunk_file_name, ChunkFileMode open_mode)
    : chunk_file_open_mode(open_mode), file_name(chunk_file_name) {
    if (open_mode == CFM_Open)
        valid = OpenForReading();
    else if (open_mode == CFM_Create)
        valid = OpenForWriting();
    if (!valid)
        HardCloseFile();
}

UChunkFile::~UChunkFile() {
    if (chunk_file_open_mode == CFM_Create && !chunk_file_headers_written)
        CloseChunkFile();
}

bool UChunkFile::Fail(const std::string& reason) {
    if (error.empty())
        error = "\"" + file_name + "\" " + reason;
    return false;
}

void UChunkFile::HardCloseFile() {
    chunk_file.reset();
    output.reset();
    chunk_file_open_mode = CFM_NotOpened;
    valid = false;
    current_chunk_index = -1;
    chunk_is_open = false;
    chunk_headers.clear();
    lengths_of_arrays.clear();
    chunk_names.clear();
}

int UChunkFile::GetChunkCount() const { return static_cast<int>(chunk_headers.size()); }

bool UChunkFile::OpenForReading() {
    chunk_file = std::make_unique<FileObject>(file_name, FO_Open);
    if (!chunk_file->IsValid()) {
        error = "cannot open \"" + file_name + "\": " + chunk_file->GetError();
        return false;
    }
    total_size = chunk_file->GetFileSize();
    if (total_size == UINT32_MAX)
        return Fail("is larger than 4 GiB");
    char magic[CHUNK_FILE_MAGIC.size()];
    if (total_size < sizeof magic || !ReadAt(0, magic, sizeof magic) ||
        std::string_view(magic, sizeof magic) != CHUNK_FILE_MAGIC)
        return Fail("is not a file of Marrowstead 2000, or its beginning is damaged");
    return ReadTables();
}

// Reads a block whose length the file claims; `room` is what is left of the file and falls by the length.
bool UChunkFile::ReadBlock(std::vector<uint8_t>& block, uint32_t length, uint32_t& room) {
    if (length > room)
        return false;
    room -= length;
    // The size of a library entry is a claim of its own: memory is asked for as the bytes come.
    constexpr uint32_t STEP = 1 << 20;
    block.clear();
    for (uint32_t done = 0; done < length;) {
        const uint32_t step = std::min(STEP, length - done);
        block.resize(done + step);
        if (!ReadAt(file_position, block.data() + done, step))
            return false;
        done += step;
    }
    return true;
}

bool UChunkFile::ReadTables() {
    constexpr const char* OUTSIDE = "is damaged: its tables lie outside the file";
    uint32_t tables_offset = 0;
    if (total_size < DATA_OFFSET + sizeof(ChunkFileInfo) + sizeof(ChunkHeadersInfo) + sizeof tables_offset ||
        !ReadAt(total_size - sizeof tables_offset, &tables_offset, sizeof tables_offset))
        return Fail(OUTSIDE);
    const uint32_t tables_end = total_size - sizeof tables_offset;
    if (tables_offset < DATA_OFFSET || tables_offset > tables_end)
        return Fail(OUTSIDE);

    uint32_t room = tables_end - tables_offset;
    std::vector<uint8_t> block;
    ChunkFileInfo info;
    ChunkHeadersInfo headers_info;
    if (room < sizeof info || !ReadAt(tables_offset, &info, sizeof info))
        return Fail(OUTSIDE);
    room -= sizeof info;
    if (info.magic_number != TABLES_MAGIC)
        return Fail("is damaged: the number that leads its tables is wrong");
    if (!ReadBlock(block, info.block_length, room))
        return Fail(OUTSIDE);
    if (!CutNames(block, info.names_count))
        return Fail("is damaged: it names fewer chunks than it tells");
    if (!ReadBlock(block, sizeof headers_info, room))
        return Fail(OUTSIDE);
    headers_info = Take<ChunkHeadersInfo>(block.data());
    if (!ReadBlock(block, headers_info.block_length, room))
        return Fail(OUTSIDE);
    return CutHeaders(block, headers_info.headers_count, tables_offset);
}

bool UChunkFile::CutNames(const std::vector<uint8_t>& block, uint32_t count) {
    if (count > block.size())
        return false;
    chunk_names.reserve(count);
    auto start = block.begin();
    for (uint32_t i = 0; i < count; ++i) {
        const auto end = std::find(start, block.end(), uint8_t{0});
        if (end == block.end())
            return false;
        std::string name(start, end);
        const uint32_t fast_search_ID = FastSearchID(name);
        chunk_names.push_back({std::move(name), fast_search_ID});
        start = end + 1;
    }
    return true;
}

bool UChunkFile::CutHeaders(const std::vector<uint8_t>& block, uint32_t count, uint32_t data_end) {
    if (count > block.size() / sizeof(StoredHeader))
        return Fail("is damaged: it holds fewer chunks than it tells");
    chunk_headers.reserve(count);
    lengths_of_arrays.reserve((block.size() - count * sizeof(StoredHeader)) / sizeof(uint32_t));
    uint64_t empty_arrays = 0;
    size_t pos = 0;
    for (uint32_t i = 0; i < count; ++i) {
        if (block.size() - pos < sizeof(StoredHeader))
            return Fail("is damaged: it holds fewer chunks than it tells");
        const auto stored = Take<StoredHeader>(block.data() + pos);
        pos += sizeof stored;
        const ChunkHeader header = {stored.chunk_name_index, stored.chunk_ID,     stored.chunk_type,
                                    stored.file_offset,      stored.arrays_count, lengths_of_arrays.size()};
        if (header.chunk_type > LENGTH_EACH || StoredLengths(header) > (block.size() - pos) / sizeof(uint32_t))
            return Fail("is damaged: the lengths of a chunk's arrays are missing");
        const size_t bytes = StoredLengths(header) * sizeof(uint32_t);
        lengths_of_arrays.resize(header.first_length + StoredLengths(header));
        if (bytes > 0)
            std::memcpy(lengths_of_arrays.data() + header.first_length, block.data() + pos, bytes);
        pos += bytes;
        if (header.chunk_name_index >= chunk_names.size())
            return Fail("is damaged: a chunk has no name");
        if (!LiesBefore(data_end, header))
            return Fail("is damaged: a chunk lies outside the file");
        if (header.chunk_type == ONE_LENGTH && Lengths(header)[0] == 0)
            empty_arrays += header.arrays_count;
        if (empty_arrays > MOST_EMPTY_ARRAYS)
            return Fail("is damaged: it tells of more than a million empty arrays");
        chunk_headers.push_back(header);
    }
    return true;
}

bool UChunkFile::LiesBefore(uint32_t data_end, const ChunkHeader& header) const {
    return header.file_offset >= DATA_OFFSET && header.file_offset <= data_end &&
           DataSize(header) <= data_end - header.file_offset;
}

uint64_t UChunkFile::DataSize(const ChunkHeader& header) const {
    if (header.chunk_type == ONE_LENGTH)
        return uint64_t{header.arrays_count} * Lengths(header)[0];
    return std::accumulate(Lengths(header), Lengths(header) + header.arrays_count, uint64_t{0});
}

uint32_t UChunkFile::OffsetInChunk(const ChunkHeader& header, uint32_t array_index) const {
    const uint32_t* lengths = Lengths(header);
    if (header.chunk_type == ONE_LENGTH)
        return array_index * lengths[0];
    if (array_index != following_array) {
        if (offsets_of_arrays.empty()) {
            offsets_of_arrays.resize(header.arrays_count);
            std::exclusive_scan(lengths, lengths + header.arrays_count, offsets_of_arrays.begin(), 0u);
        }
        following_offset = offsets_of_arrays[array_index];
    }
    const uint32_t offset = following_offset;
    following_array = array_index + 1;
    following_offset = offset + lengths[array_index];
    return offset;
}

bool UChunkFile::ReadAt(uint32_t offset, void* target, uint32_t length) const {
    if (offset != file_position && chunk_file->Seek(offset, FOPM_Start) != offset)
        return false;
    const int count = length > INT32_MAX ? -1 : chunk_file->Read(target, length);
    file_position = count == static_cast<int>(length) ? offset + length : SEEK_NEEDED;
    return count == static_cast<int>(length);
}

// Brings a stretch of the file into the window, from the offset on. False when not even `length` bytes are to be had.
bool UChunkFile::ReadAhead(uint32_t offset, uint32_t length) const {
    window.resize(WINDOW_BYTES);
    window_length = 0;
    uint32_t ahead = std::min(WINDOW_BYTES, total_size - offset);
    if (!ReadAt(offset, window.data(), ahead)) { // what lies behind the array may be the trouble
        ahead = length;
        if (!ReadAt(offset, window.data(), ahead))
            return false;
    }
    window_offset = offset;
    window_length = ahead;
    return true;
}

int UChunkFile::GetChunkHeader(const char* chunk_name, uint32_t chunk_ID, int first_index) const {
    if (!chunk_name) // any chunk
        return first_index < GetChunkCount() ? first_index : -1;
    const std::string_view sought = chunk_name;
    const uint32_t fast_search_ID = FastSearchID(sought);
    for (int index = first_index; index < GetChunkCount(); ++index) {
        const ChunkHeader& header = chunk_headers[static_cast<size_t>(index)];
        if (chunk_ID != ANY_CHUNK_ID && chunk_ID != header.chunk_ID)
            continue;
        const ChunkName& name = chunk_names[header.chunk_name_index];
        if (name.fast_search_ID == fast_search_ID && EqualNoCase(name.name, sought))
            return index;
    }
    return -1;
}

bool UChunkFile::OpenChunk(const char* chunk_name, uint32_t chunk_ID, ChunkOpenType type) {
    size_mismatch = false;
    if (chunk_file_open_mode != CFM_Open)
        return false;
    current_chunk_mode = type;
    current_chunk_ID = chunk_ID;
    MakeCurrent(GetChunkHeader(chunk_name, chunk_ID, 0));
    return current_chunk_index >= 0;
}

void UChunkFile::MakeCurrent(int chunk_index) {
    current_chunk_index = chunk_index;
    current_array_index = 0;
    following_array = following_offset = 0;
    offsets_of_arrays.clear();
}

bool UChunkFile::OpenNextChunk() {
    if (!CurrentHeader() || current_chunk_mode == COT_One)
        return false;
    const int next = current_chunk_index + 1;
    if (current_chunk_mode == COT_Any)
        MakeCurrent(next < GetChunkCount() ? next : -1);
    else
        MakeCurrent(
            GetChunkHeader(GetChunkName(), current_chunk_mode == COT_SameName ? ANY_CHUNK_ID : current_chunk_ID, next));
    return current_chunk_index >= 0;
}

const UChunkFile::ChunkHeader* UChunkFile::CurrentHeader() const {
    return chunk_file_open_mode == CFM_Open && current_chunk_index >= 0
               ? &chunk_headers[static_cast<size_t>(current_chunk_index)]
               : nullptr;
}

const char* UChunkFile::GetChunkName() const {
    const ChunkHeader* header = CurrentHeader();
    return header ? chunk_names[header->chunk_name_index].name.c_str() : nullptr;
}

uint32_t UChunkFile::GetChunkID() const {
    const ChunkHeader* header = CurrentHeader();
    return header ? header->chunk_ID : ANY_CHUNK_ID;
}

int UChunkFile::GetChunkTypeCount(const char* chunk_name, uint32_t chunk_ID) const {
    int count = 0;
    if (chunk_file_open_mode == CFM_Open)
        for (int i = -1; (i = GetChunkHeader(chunk_name, chunk_ID, i + 1)) >= 0;)
            ++count;
    return count;
}

uint64_t UChunkFile::GetChunkTypeDataSize(const char* chunk_name, uint32_t chunk_ID) const {
    uint64_t size = 0;
    if (chunk_file_open_mode == CFM_Open)
        for (int i = -1; (i = GetChunkHeader(chunk_name, chunk_ID, i + 1)) >= 0;)
            size += DataSize(chunk_headers[static_cast<size_t>(i)]);
    return size;
}

uint32_t UChunkFile::GetArraysCountInChunk() const {
    const ChunkHeader* header = CurrentHeader();
    return header ? header->arrays_count : 0;
}

uint32_t UChunkFile::GetArrayLength(uint32_t array_index) const {
    const ChunkHeader* header = CurrentHeader();
    if (!header || array_index >= header->arrays_count)
        return 0;
    return Lengths(*header)[header->chunk_type == ONE_LENGTH ? 0 : array_index];
}

uint32_t UChunkFile::GetCurrentArrayLength() const { return GetArrayLength(current_array_index); }

bool UChunkFile::GetArray(uint32_t array_index, void* store) const {
    const ChunkHeader* header = CurrentHeader();
    if (!header || array_index >= header->arrays_count)
        return false;
    const uint32_t length = GetArrayLength(array_index);
    const uint32_t offset = header->file_offset + OffsetInChunk(*header, array_index);
    if (length == 0)
        return true;
    const bool in_window =
        offset >= window_offset && uint64_t{offset} + length <= uint64_t{window_offset} + window_length;
    if (in_window || (length <= WINDOW_BYTES && ReadAhead(offset, length))) {
        std::memcpy(store, window.data() + (offset - window_offset), length);
        return true;
    }
    if (length > WINDOW_BYTES && ReadAt(offset, store, length))
        return true;
    size_mismatch = true;
    return false;
}

bool UChunkFile::GetNextArray(void* store) {
    if (!GetArray(current_array_index, store))
        return false;
    ++current_array_index;
    return true;
}

std::vector<uint8_t> UChunkFile::GetArrayAlloc(uint32_t array_index) const {
    std::vector<uint8_t> data(GetArrayLength(array_index));
    if (data.empty() || !GetArray(array_index, data.data()))
        data.clear();
    return data;
}

bool UChunkFile::GetNextString(std::string& text) {
    if (IsArraysFinished())
        return false;
    std::string bytes(GetCurrentArrayLength(), '\0');
    if (!GetNextArray(bytes.data()))
        return false;
    text.assign(bytes, 0, bytes.find('\0'));
    return true;
}
