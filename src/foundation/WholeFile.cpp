#include "foundation/WholeFile.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "foundation/AtomicFile.h"

static constexpr size_t BLOCK_BYTES = 64 * 1024;

static std::string Reason(int error_number) { return std::generic_category().message(error_number); }

std::FILE* OpenRegularFile(const std::filesystem::path& path, std::string& reason) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        reason = Reason(errno);
        return nullptr;
    }
    struct stat status = {};
    std::FILE* file = nullptr;
    if (fstat(descriptor, &status) != 0 || S_ISDIR(status.st_mode))
        reason = Reason(EISDIR);
    else if (!S_ISREG(status.st_mode))
        reason = "not a regular file";
    else if (!(file = fdopen(descriptor, "rb")))
        reason = Reason(errno);
    if (file)
        std::setvbuf(file, nullptr, _IONBF, 0); // readers bring their own buffers
    else
        close(descriptor);
    return file;
}

// Hands the file on in blocks until take refuses one. False with a reason after a read error.
template <class Take>
static bool ReadBlocks(std::FILE* file, std::string& reason, const Take& take) {
    std::vector<char> block(BLOCK_BYTES);
    for (size_t n = 0; (n = std::fread(block.data(), 1, block.size(), file)) > 0;)
        if (!take(block.data(), n))
            return true;
    if (std::ferror(file))
        reason = Reason(errno);
    return !std::ferror(file);
}

bool ReadWholeFile(const std::filesystem::path& path, std::string& bytes, std::string& reason) {
    bytes.clear();
    std::FILE* file = OpenRegularFile(path, reason);
    if (!file)
        return false;
    const bool read = ReadBlocks(file, reason, [&bytes](const char* data, size_t length) {
        bytes.append(data, length);
        return true;
    });
    std::fclose(file);
    if (!read)
        bytes.clear();
    return read;
}

bool CopyWholeFile(const std::filesystem::path& from, const std::filesystem::path& to, std::string& error) {
    std::string reason;
    std::FILE* file = OpenRegularFile(from, reason);
    if (!file) {
        error = "\"" + from.string() + "\" cannot be read: " + reason;
        return false;
    }
    AtomicFile copy(to);
    struct stat status = {};
    if (fstat(fileno(file), &status) == 0)
        copy.SetMode(status.st_mode);
    const bool read =
        ReadBlocks(file, reason, [&copy](const char* data, size_t length) { return copy.Write(data, length); });
    std::fclose(file);
    if (!read)
        error = "\"" + from.string() + "\" cannot be read: " + reason;
    else if (!copy.Commit())
        error = "\"" + to.string() + "\" cannot be written: " + copy.GetError();
    else
        return true;
    return false;
}

bool FileIdentity::operator==(const FileIdentity& other) const {
    return device == other.device && number == other.number && size == other.size &&
           changed.tv_sec == other.changed.tv_sec && changed.tv_nsec == other.changed.tv_nsec;
}

FileIdentity IdentityOf(const struct stat& status) {
    if (!S_ISREG(status.st_mode))
        return {};
    return {status.st_dev, status.st_ino, status.st_size, status.st_mtim};
}

FileIdentity IdentityOf(const std::filesystem::path& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? IdentityOf(status) : FileIdentity{};
}
