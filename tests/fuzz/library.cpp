// A packed library: listed, and each entry read in pieces and from any place, to the same bytes.
#include <algorithm>
#include <vector>

#include "files/FileLibrary.h"
#include "files/FileObject.h"
#include "fuzz/FuzzTarget.h"

namespace {

constexpr uint32_t MOST_BYTES = 100000; // of an entry

// Reads on until there is no more, or a read fails.
std::vector<uint8_t> ReadOn(FileLibrary& library, uint32_t handle, uint32_t piece) {
    std::vector<uint8_t> bytes, part(piece);
    uint32_t count = 0;
    while (bytes.size() < MOST_BYTES && (count = library.FileRead(handle, part.data(), piece)) != 0 &&
           count != FL_BAD_HANDLE) {
        Require(count <= piece, "no more is read than was asked for");
        bytes.insert(bytes.end(), part.begin(), part.begin() + count);
    }
    return bytes;
}

void ReadEntry(FileLibrary& library, const std::string& path, int buffer) {
    const uint32_t handle = library.FileOpen(path, buffer);
    Require(handle != FL_BAD_HANDLE, "what is listed can be opened");
    const uint32_t size = library.FileSize(handle);
    const std::vector<uint8_t> whole = ReadOn(library, handle, 997);
    Require(whole.size() <= size, "no more is read than the size tells");
    const auto length = static_cast<uint32_t>(whole.size());
    for (uint32_t start = 0; start < length; start += length / 4 + 1) {
        Require(library.FileSeek(handle, start, FOPM_Start) == start, "a seek goes where it is told to");
        std::vector<uint8_t> part(std::min(length - start, FL_BLOCK_SIZE + 5));
        // What a failed read of a whole block leaves out, a smaller piece may have read.
        if (library.FileRead(handle, part.data(), static_cast<uint32_t>(part.size())) == part.size())
            Require(std::equal(part.begin(), part.end(), whole.begin() + start),
                    "each piece has the bytes of the whole");
    }
    Require(library.FileSeek(handle, -5, FOPM_End) <= size, "a seek stays inside");
    Require(ReadOn(library, handle, 1).size() <= 5, "and ends with the file");
    library.FileClose(handle);
}

} // namespace

FUZZ_TARGET(library, bytes) {
    static FuzzFolder folder;
    folder.NextInput("in.fs", bytes);
    FileLibrary library;
    if (library.AddFileLibrary("in.fs", 0) != FL_OK)
        return;
    int entries = 0;
    for (const FLMemDirStruct& directory : library.GetDirectories()) {
        FindFileStruct files;
        size_t listed = 0;
        while (listed < directory.memFiles.size() && library.FindNext_File(directory.name, "*", files))
            ++listed;
        FindDirectoryStruct folders;
        while (++listed < 1000 && library.FindNext_Directory(directory.name, "*", folders))
            ;
        for (const FLMemFileStruct& file : directory.memFiles) {
            const std::string path = directory.name.empty() ? file.name : directory.name + "\\" + file.name;
            if (++entries > 16)
                return;
            if (library.FileExists(path)) // a name with a dot part leads elsewhere
                ReadEntry(library, path, entries % 2 ? 0 : 700);
        }
    }
}
