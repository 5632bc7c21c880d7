// A file that appears whole or not at all: written without a name, or beside its target where the disk knows no
// nameless files, flushed, and put in the place of the target by Commit.
#pragma once

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

// A file that is there and that nobody, or not this user, may write.
bool IsReadOnlyFile(const std::filesystem::path& path);

// Gives a file that nobody writes in place a second name, in the place of another file; at no cost, and in one step.
// False, and nothing is changed, where the disk has no such names.
bool LinkInPlaceOf(const std::filesystem::path& file, const std::filesystem::path& name);

class AtomicFile {
public:
    // A file that is there and read-only is refused. survives_power_loss: Commit waits until the disk has the bytes,
    // some milliseconds. What can be made again at once, as one of thousands of files, may do without.
    explicit AtomicFile(std::string_view data_path, bool survives_power_loss = true);
    explicit AtomicFile(const std::filesystem::path& path, bool survives_power_loss = true);
    explicit AtomicFile(const char* data_path) : AtomicFile(std::string_view(data_path)) {}
    explicit AtomicFile(const std::string& data_path, bool survives_power_loss = true)
        : AtomicFile(std::string_view(data_path), survives_power_loss) {}
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    ~AtomicFile(); // without Commit nothing stays

    bool IsOpen() const { return file != nullptr; }
    void SetMode(mode_t mode);                            // of a new file; one that is replaced gives its own
    bool Write(const void* data, size_t length);          // false once anything failed
    bool Commit();                                        // false leaves the target as it was
    const std::string& GetError() const { return error; } // the reason, such as "No space left on device"

private:
    void Open();
    int OpenNameless();
    int OpenBeside();
    int Publish();
    bool Fail(int error_number);
    void Abandon();

    std::filesystem::path target, temporary; // temporary: empty while the file has no name
    std::FILE* file = nullptr;
    std::vector<char> buffer;
    bool flush_to_disk;
    bool replaces = false;
    bool failed = false;
    std::string error;
};

// What the disk is asked for, in this order.
enum class DiskStep { Open, Write, Flush, Link, Rename };
// A disk that fails, for tests: asked before each step, it gives the error number of the failure, or 0. Null: none.
void SetDiskFaults(std::function<int(DiskStep)> faults);
// Files without a name are not asked for, as on a disk that has none.
void SetNamelessFiles(bool possible);
