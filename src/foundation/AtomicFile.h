// A file that appears whole or not at all: written beside its target, flushed, renamed over it by Commit.
#pragma once

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

class AtomicFile {
public:
    // survives_power_loss: Commit waits until the disk has the bytes, some milliseconds. What can be made again at
    // once, as one of thousands of files, may do without.
    explicit AtomicFile(std::string_view data_path, bool survives_power_loss = true);
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    ~AtomicFile(); // without Commit nothing stays

    bool IsOpen() const { return file != nullptr; }
    bool Write(const void* data, size_t length);          // false once anything failed
    bool Commit();                                        // false leaves the target as it was
    const std::string& GetError() const { return error; } // the reason, such as "No space left on device"

private:
    bool Fail(int error_number);
    void Abandon();

    std::filesystem::path target, temporary;
    std::FILE* file = nullptr;
    std::vector<char> buffer;
    bool flush_to_disk;
    bool failed = false;
    std::string error;
};
