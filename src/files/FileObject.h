// The file handle of the system: a loose disk file, or an entry of a packed library laid over the disk tree.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "files/AtomicFile.h"

class FileLibrary;

enum FOOpenMethod { FO_Open = 0, FO_Create = 1, FO_OpenWithUniqueHandle = 2 };
enum FOPositionMethod : int { FOPM_Start = 0, FOPM_Current = 1, FOPM_End = 2 };
enum RLTruncateFlags { RLTF_TruncateEnd = 0, RLTF_TruncateAll = 1, RLTF_TruncateNothing = 2 };

// A file time in 100-nanosecond ticks since 1601, in two halves.
struct FileTime {
    uint32_t low = 0, high = 0;
    bool operator==(const FileTime&) const = default;
    static FileTime FromUnix(int64_t seconds, int64_t nanoseconds);
};

class FileObject {
public:
    FileObject(std::string_view file_name, FOOpenMethod method);
    FileObject(const FileObject&) = delete;
    FileObject& operator=(const FileObject&) = delete;
    ~FileObject() { Close(); }

    bool IsValid() const { return object_is_valid; }
    const std::string& GetError() const { return error; } // why it is not valid, such as "No such file or directory"
    int Read(void* buffer, uint32_t length);              // bytes read; -1 for a failed read
    int Write(const void* buffer, uint32_t length);       // bytes written
    // One line; its end and trailing blanks are cut unless the flags say otherwise. Returns its length, -1 at the end
    // of the file. max_length 0 sets no limit; what is beyond it is the next line. Not to be mixed with Seek.
    int ReadLine(std::string& line, RLTruncateFlags flags, int max_length = 0);
    uint32_t Seek(int64_t position, FOPositionMethod method); // the new position; 0 unless open for reading
    uint32_t GetFileSize() const;                             // at most 4 GiB - 1
    // A library entry has 0x4444 in both halves of its last-write time.
    bool GetFileTime(FileTime& last_write) const;
    // A created file appears now, whole. False when it could not be written; what stood there then still stands.
    bool Close();
    std::FILE* GetFileHandle() const { return disk_file; } // null for a library entry and for a created file
    bool IsInLibrary() const { return file_in_library; }
    // All that is left of the file. False when a read failed or it is larger than limit.
    bool ReadAll(std::vector<uint8_t>& data, uint32_t limit = 0x7FFFFFFF);

    static bool FileExists(std::string_view file_name);
    // 1; 6 for an I/O failure, 7 for a wrong version.
    static int AddFileLibrary(std::string_view file_name, uint32_t flags);
    static void ResetFileLibrary();
    static bool FileSoundExists(std::string& name); // may turn ".wav" into ".mp3" and back
    static FileLibrary& Library();

private:
    bool OpenOnDisk(std::string_view file_name);
    bool OpenInLibrary(std::string_view file_name);
    bool FillLineBuffer();

    FOOpenMethod open_method;
    bool object_is_valid = false, file_in_library = false;
    uint32_t library_handle = 0, unique_handle_file_size = 0;
    std::FILE* disk_file = nullptr;
    std::unique_ptr<AtomicFile> output; // of FO_Create
    std::string error;
    std::vector<uint8_t> line_buffer;
    size_t line_buffer_cur_pos = 0, line_buffer_bytes = 0;
};
