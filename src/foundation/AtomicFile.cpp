#include "foundation/AtomicFile.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "foundation/Paths.h"

namespace {

constexpr size_t WRITE_BUFFER_BYTES = 256 * 1024;
constexpr mode_t NEW_FILE_MODE = 0666; // less the user's mask
constexpr int NAME_ATTEMPTS = 100;     // leftovers of a crashed run may hold a name

// A name of its own in the folder of the target, for this process and this file.
std::filesystem::path TemporaryName(const std::filesystem::path& target) {
    static std::atomic<unsigned> counter{0};
    std::filesystem::path name = target;
    name += ".tmp" + std::to_string(getpid()) + "-" + std::to_string(counter++);
    return name;
}

} // namespace

AtomicFile::AtomicFile(std::string_view data_path, bool survives_power_loss)
    : target(RealPath(data_path)), flush_to_disk(survives_power_loss) {
    // A link keeps standing: what it points to is replaced.
    std::error_code link_error;
    if (std::filesystem::is_symlink(target, link_error)) {
        const std::filesystem::path pointed_to = std::filesystem::weakly_canonical(target, link_error);
        if (!link_error)
            target = pointed_to;
    }
    struct stat present = {};
    const bool replaces = stat(target.c_str(), &present) == 0;
    if (replaces && !S_ISREG(present.st_mode)) {
        Fail(S_ISDIR(present.st_mode) ? EISDIR : EINVAL);
        return;
    }
    int descriptor = -1;
    for (int attempt = 0; descriptor < 0 && attempt < NAME_ATTEMPTS; ++attempt) {
        temporary = TemporaryName(target);
        descriptor = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, NEW_FILE_MODE);
        if (descriptor < 0 && errno != EEXIST)
            break;
    }
    if (descriptor < 0) {
        Fail(errno);
        return;
    }
    if (replaces)
        (void)!fchmod(descriptor, present.st_mode & 07777); // best effort: the content matters more
    file = fdopen(descriptor, "wb");
    if (!file) {
        Fail(errno);
        close(descriptor);
        unlink(temporary.c_str());
        return;
    }
    buffer.resize(WRITE_BUFFER_BYTES);
    std::setvbuf(file, buffer.data(), _IOFBF, buffer.size());
}

AtomicFile::~AtomicFile() { Abandon(); }

bool AtomicFile::Write(const void* data, size_t length) {
    if (failed || !file)
        return false;
    if (length > 0 && std::fwrite(data, 1, length, file) != length)
        return Fail(errno);
    return true;
}

bool AtomicFile::Commit() {
    if (!file)
        return false;
    if (!failed && (std::fflush(file) != 0 || (flush_to_disk && fsync(fileno(file)) != 0)))
        Fail(errno);
    if (failed) {
        Abandon();
        return false;
    }
    std::FILE* closing = file;
    file = nullptr;
    if (std::fclose(closing) == 0 && std::rename(temporary.c_str(), target.c_str()) == 0)
        return true;
    Fail(errno);
    unlink(temporary.c_str());
    return false;
}

bool AtomicFile::Fail(int error_number) {
    if (!failed)
        error = std::generic_category().message(error_number);
    failed = true;
    return false;
}

void AtomicFile::Abandon() {
    if (!file)
        return;
    std::fclose(file);
    file = nullptr;
    unlink(temporary.c_str());
}
