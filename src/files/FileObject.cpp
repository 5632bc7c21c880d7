#include "files/FileObject.h"

#include <algorithm>
#include <cstring>
#include <sys/stat.h>

#include "files/FileLibrary.h"
#include "foundation/Paths.h"
#include "foundation/Strings.h"
#include "foundation/WholeFile.h"

namespace {

constexpr size_t LINE_BUFFER_BYTES = 32768;
// Memory is asked for as the bytes come, not by what a header claims.
constexpr size_t READ_ALL_STEP = 1 << 20, READ_ALL_LAST_STEP = 512;
constexpr uint32_t LIBRARY_TIME_HALF = 0x4444;
constexpr int64_t UNIX_EPOCH_SECONDS = 11644473600; // from 1601 to 1970
constexpr int64_t TICKS_PER_SECOND = 10000000, NANOSECONDS_PER_TICK = 100;
constexpr uint32_t SEEK_FAILED = 0xFFFFFFFF;

bool OpensOnDisk(std::string_view file_name) {
    std::string reason;
    std::FILE* file = OpenRegularFile(RealPath(file_name), reason);
    return file && std::fclose(file) == 0;
}

bool IsBlank(char c) { return c == ' ' || c == '\t'; }
bool IsBlankOrLineEnd(char c) { return IsBlank(c) || c == '\n' || c == '\r'; }

} // namespace

FileTime FileTime::FromUnix(int64_t seconds, int64_t nanoseconds) {
    const auto ticks =
        static_cast<uint64_t>((seconds + UNIX_EPOCH_SECONDS) * TICKS_PER_SECOND + nanoseconds / NANOSECONDS_PER_TICK);
    return {static_cast<uint32_t>(ticks), static_cast<uint32_t>(ticks >> 32)};
}

FileLibrary& FileObject::Library() {
    static FileLibrary file_library;
    return file_library;
}

FileObject::FileObject(std::string_view file_name, FOOpenMethod method) : open_method(method) {
    if (method == FO_Create) {
        output = std::make_unique<AtomicFile>(file_name);
        object_is_valid = output->IsOpen();
        error = output->GetError();
        return;
    }
    bool only_in_library = false;
    const bool in_library = Library().FileExists(file_name, &only_in_library);
    if (!only_in_library)
        object_is_valid = OpenOnDisk(file_name);
    if (!object_is_valid && in_library)
        object_is_valid = OpenInLibrary(file_name);
}

bool FileObject::OpenOnDisk(std::string_view file_name) {
    disk_file = OpenRegularFile(RealPath(file_name), error);
    if (!disk_file)
        return false;
    struct stat status = {};
    if (open_method == FO_OpenWithUniqueHandle && fstat(fileno(disk_file), &status) == 0)
        unique_handle_file_size = static_cast<uint32_t>(std::min<int64_t>(status.st_size, UINT32_MAX));
    return true;
}

bool FileObject::OpenInLibrary(std::string_view file_name) {
    error.clear();
    if (open_method == FO_OpenWithUniqueHandle)
        disk_file = Library().FileOpenWithUniqueHandle(file_name, unique_handle_file_size);
    else {
        library_handle = Library().FileOpen(file_name, 0);
        file_in_library = library_handle != FL_BAD_HANDLE;
    }
    if (disk_file || file_in_library)
        return true;
    error = "its library cannot be opened";
    return false;
}

int FileObject::Read(void* buffer, uint32_t length) {
    if (!object_is_valid || open_method != FO_Open)
        return 0;
    length = std::min<uint32_t>(length, INT32_MAX);
    if (file_in_library)
        return static_cast<int>(Library().FileRead(library_handle, buffer, length));
    const size_t count = length > 0 ? std::fread(buffer, 1, length, disk_file) : 0;
    return count < length && std::ferror(disk_file) ? -1 : static_cast<int>(count);
}

int FileObject::Write(const void* buffer, uint32_t length) {
    if (!object_is_valid || !output)
        return 0;
    length = std::min<uint32_t>(length, INT32_MAX);
    return output->Write(buffer, length) ? static_cast<int>(length) : 0;
}

bool FileObject::FillLineBuffer() {
    if (line_buffer_cur_pos < line_buffer_bytes)
        return true;
    line_buffer.resize(LINE_BUFFER_BYTES);
    line_buffer_cur_pos = 0;
    line_buffer_bytes = static_cast<size_t>(std::max(0, Read(line_buffer.data(), LINE_BUFFER_BYTES)));
    return line_buffer_bytes > 0;
}

int FileObject::ReadLine(std::string& line, RLTruncateFlags flags, int max_length) {
    line.clear();
    if (!FillLineBuffer())
        return -1;
    if (flags == RLTF_TruncateAll)
        while (FillLineBuffer() && IsBlank(static_cast<char>(line_buffer[line_buffer_cur_pos])))
            ++line_buffer_cur_pos;
    const size_t limit = max_length > 0 ? static_cast<size_t>(max_length) : SIZE_MAX;
    while (line.size() < limit && (line.empty() || line.back() != '\n') && FillLineBuffer()) {
        const auto* start = reinterpret_cast<const char*>(line_buffer.data()) + line_buffer_cur_pos;
        size_t count = std::min(limit - line.size(), line_buffer_bytes - line_buffer_cur_pos);
        if (const void* line_end = std::memchr(start, '\n', count))
            count = static_cast<size_t>(static_cast<const char*>(line_end) - start) + 1;
        line.append(start, count);
        line_buffer_cur_pos += count;
    }
    if (flags != RLTF_TruncateNothing)
        while (!line.empty() && IsBlankOrLineEnd(line.back()))
            line.pop_back();
    return static_cast<int>(line.size());
}

uint32_t FileObject::Seek(int64_t position, FOPositionMethod method) {
    if (!object_is_valid || open_method != FO_Open)
        return 0;
    if (method != FOPM_Start && method != FOPM_Current && method != FOPM_End)
        return SEEK_FAILED;
    if (file_in_library)
        return Library().FileSeek(library_handle, position, method);
    const int whence = method == FOPM_Start ? SEEK_SET : method == FOPM_Current ? SEEK_CUR : SEEK_END;
    if (fseeko(disk_file, position, whence) != 0)
        return SEEK_FAILED;
    return static_cast<uint32_t>(ftello(disk_file));
}

uint32_t FileObject::GetFileSize() const {
    if (!object_is_valid)
        return 0;
    if (file_in_library)
        return Library().FileSize(library_handle);
    if (open_method == FO_OpenWithUniqueHandle)
        return unique_handle_file_size;
    struct stat status = {};
    if (!disk_file || fstat(fileno(disk_file), &status) != 0)
        return 0;
    return static_cast<uint32_t>(std::min<int64_t>(status.st_size, UINT32_MAX));
}

bool FileObject::GetFileTime(FileTime& last_write) const {
    if (!object_is_valid)
        return false;
    if (file_in_library) {
        last_write = {LIBRARY_TIME_HALF, LIBRARY_TIME_HALF};
        return true;
    }
    struct stat status = {};
    if (!disk_file || fstat(fileno(disk_file), &status) != 0)
        return false;
    last_write = FileTime::FromUnix(status.st_mtim.tv_sec, status.st_mtim.tv_nsec);
    return true;
}

bool FileObject::Close() {
    if (!object_is_valid)
        return false;
    object_is_valid = false;
    if (file_in_library)
        Library().FileClose(library_handle);
    if (disk_file)
        std::fclose(disk_file);
    disk_file = nullptr;
    file_in_library = false;
    line_buffer.clear();
    line_buffer_cur_pos = line_buffer_bytes = 0;
    if (!output)
        return true;
    const bool written = output->Commit();
    error = output->GetError();
    output.reset();
    return written;
}

bool FileObject::ReadAll(std::vector<uint8_t>& data, uint32_t limit) {
    data.clear();
    const size_t expected = GetFileSize();
    for (;;) {
        const size_t have = data.size();
        const size_t step = have < expected ? std::min(expected - have, READ_ALL_STEP) : READ_ALL_LAST_STEP;
        data.resize(have + step);
        const int count = Read(data.data() + have, static_cast<uint32_t>(step));
        data.resize(have + static_cast<size_t>(std::max(0, count)));
        if (count < 0 || data.size() > limit)
            return false;
        if (count == 0)
            return object_is_valid && open_method == FO_Open;
    }
}

bool FileObject::FileExists(std::string_view file_name) {
    return Library().FileExists(file_name) || OpensOnDisk(file_name);
}

int FileObject::AddFileLibrary(std::string_view file_name, uint32_t flags) {
    return Library().AddFileLibrary(file_name, flags);
}

void FileObject::ResetFileLibrary() { Library().InitFileLibraries(); }

bool FileObject::FileSoundExists(std::string& name) {
    constexpr std::string_view WAVE = ".wav", COMPRESSED = ".mp3";
    if (FileExists(name))
        return true;
    if (name.size() < WAVE.size())
        return false;
    const size_t ending = name.size() - WAVE.size();
    const bool is_wave = EqualNoCase(std::string_view(name).substr(ending), WAVE);
    name.replace(ending, std::string::npos, is_wave ? COMPRESSED : WAVE);
    return FileExists(name);
}
