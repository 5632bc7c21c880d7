// A packed library: listed, and each entry read in pieces and from any place.
#include <vector>

#include "files/FileLibrary.h"
#include "files/FileObject.h"
#include "fuzz/FuzzTarget.h"

FUZZ_TARGET(library, bytes) {
    static FuzzFolder folder;
    folder.NextInput("in.fs", bytes);
    FileLibrary library;
    if (library.AddFileLibrary("in.fs", 0) != FL_OK)
        return;
    int entries = 0;
    for (const FLMemDirStruct& directory : library.GetDirectories())
        for (const FLMemFileStruct& file : directory.memFiles) {
            if (++entries > 16)
                return;
            const std::string path = directory.name.empty() ? file.name : directory.name + "\\" + file.name;
            const uint32_t handle = library.FileOpen(path, entries % 2 ? 0 : 700);
            if (handle == FL_BAD_HANDLE)
                continue;
            const uint32_t size = library.FileSize(handle);
            std::vector<uint8_t> piece(997);
            uint32_t total = 0, count = 0;
            while (total < 100000 &&
                   (count = library.FileRead(handle, piece.data(), static_cast<uint32_t>(piece.size()))) != 0 &&
                   count != FL_BAD_HANDLE)
                total += count;
            Require(total <= size, "no more is read than the size tells");
            Require(library.FileSeek(handle, -5, FOPM_End) <= size, "a seek stays inside");
            library.FileRead(handle, piece.data(), static_cast<uint32_t>(piece.size()));
            library.FileClose(handle);
        }
}
