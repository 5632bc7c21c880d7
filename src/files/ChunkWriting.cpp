// Writing a chunk file.
#include <algorithm>
#include <functional>

#include "files/ChunkFile.h"
#include "files/ChunkFormat.h"

using namespace chunk_format;

namespace {

void Append(std::vector<uint8_t>& block, const void* data, size_t length) {
    const auto* bytes = static_cast<const uint8_t*>(data);
    block.insert(block.end(), bytes, bytes + length);
}

} // namespace

bool UChunkFile::OpenForWriting() {
    output = std::make_unique<AtomicFile>(file_name);
    if (!output->IsOpen()) {
        error = "cannot create \"" + file_name + "\": " + output->GetError();
        return false;
    }
    output->Write(CHUNK_FILE_MAGIC.data(), CHUNK_FILE_MAGIC.size());
    output->Write(&FORMAT_WORD, sizeof FORMAT_WORD);
    current_file_offset = DATA_OFFSET;
    return true;
}

bool UChunkFile::WriteFailed(const std::string& reason) {
    write_failed = true;
    return Fail(reason);
}

bool UChunkFile::CreateChunk(std::string_view chunk_name, uint32_t chunk_ID) {
    if (chunk_file_open_mode != CFM_Create || chunk_file_headers_written)
        return false;
    CloseChunk();
    currently_written_chunk = {};
    currently_written_chunk.chunk_name_index = static_cast<uint32_t>(create_chunk_names.AddString(chunk_name));
    currently_written_chunk.chunk_ID = chunk_ID;
    currently_written_chunk.file_offset = current_file_offset;
    pending.clear();
    pending_lengths.clear();
    chunk_is_open = true;
    return true;
}

void UChunkFile::WriteArray(const void* data, size_t length) {
    if (!chunk_is_open || write_failed)
        return;
    if (length > UINT32_MAX - current_file_offset - pending.size()) {
        WriteFailed("would be larger than 4 GiB");
        return;
    }
    if (length > 0)
        Append(pending, data, length);
    pending_lengths.push_back(static_cast<uint32_t>(length));
}

void UChunkFile::WriteString(std::string_view text) {
    const std::string terminated(text);
    WriteArray(terminated.c_str(), terminated.size() + 1);
}

bool UChunkFile::CloseChunk() {
    if (chunk_file_open_mode != CFM_Create) {
        current_chunk_index = -1;
        return true;
    }
    if (!chunk_is_open)
        return false;
    chunk_is_open = false;
    if (!write_failed && !output->Write(pending.data(), pending.size()))
        WriteFailed("could not be written: " + output->GetError());
    current_file_offset += static_cast<uint32_t>(pending.size());

    ChunkHeader& header = currently_written_chunk;
    header.arrays_count = static_cast<uint32_t>(pending_lengths.size());
    const bool equal = std::adjacent_find(pending_lengths.begin(), pending_lengths.end(), std::not_equal_to<>()) ==
                       pending_lengths.end();
    header.chunk_type = equal ? ONE_LENGTH : LENGTH_EACH;
    header.first_length = lengths_of_arrays.size();
    pending_lengths.resize(equal ? 1 : pending_lengths.size());
    lengths_of_arrays.insert(lengths_of_arrays.end(), pending_lengths.begin(), pending_lengths.end());
    chunk_headers.push_back(header);
    pending.clear();
    pending_lengths.clear();
    return !write_failed;
}

bool UChunkFile::CloseChunkFile() {
    if (chunk_file_open_mode != CFM_Create || chunk_file_headers_written)
        return false;
    CloseChunk();
    chunk_file_headers_written = true;

    std::vector<uint8_t> names, headers, tables;
    for (int i = 0; i < create_chunk_names.GetStringCount(); ++i)
        Append(names, create_chunk_names.GetString(i), static_cast<size_t>(create_chunk_names.GetStringLength(i)) + 1);
    for (const ChunkHeader& header : chunk_headers) {
        const StoredHeader stored = {header.chunk_name_index, header.chunk_ID,     {0, 0, 0}, header.chunk_type,
                                     header.file_offset,      header.arrays_count, 0};
        Append(headers, &stored, sizeof stored);
        Append(headers, Lengths(header), StoredLengths(header) * sizeof(uint32_t));
    }
    const ChunkFileInfo info = {TABLES_MAGIC, static_cast<uint32_t>(names.size()),
                                static_cast<uint32_t>(create_chunk_names.GetStringCount())};
    const ChunkHeadersInfo headers_info = {static_cast<uint32_t>(headers.size()),
                                           static_cast<uint32_t>(chunk_headers.size())};
    Append(tables, &info, sizeof info);
    Append(tables, names.data(), names.size());
    Append(tables, &headers_info, sizeof headers_info);
    Append(tables, headers.data(), headers.size());
    Append(tables, &current_file_offset, sizeof current_file_offset);

    if (tables.size() >= UINT32_MAX - current_file_offset)
        WriteFailed("would be larger than 4 GiB");
    if (!write_failed && !(output->Write(tables.data(), tables.size()) && output->Commit()))
        WriteFailed("could not be written: " + output->GetError());
    output.reset();
    total_size = current_file_offset + static_cast<uint32_t>(tables.size());
    return !write_failed;
}
