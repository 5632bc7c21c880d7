#include "foundation/AtomicFile.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <mutex>
#include <random>
#include <set>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "foundation/Paths.h"
#include "foundation/Strings.h"

namespace fs = std::filesystem;

namespace {

constexpr size_t WRITE_BUFFER_BYTES = 256 * 1024;
constexpr mode_t NEW_FILE_MODE = 0666, MODE_BITS = 07777; // a new file's: less the user's mask
constexpr mode_t ANY_WRITE_BIT = S_IWUSR | S_IWGRP | S_IWOTH;
constexpr int NAME_ATTEMPTS = 100;
constexpr int MOST_LINKS = 40; // one behind the other, as the system counts them
constexpr std::string_view TEMPORARY_PREFIX = ".marrowstead-", TEMPORARY_ENDING = ".tmp";
constexpr std::time_t OLD_AGE = 60; // seconds; of a left-over, longer than between making a file and locking it

std::function<int(DiskStep)> disk_faults;
bool nameless_possible = true;

// True, with errno, when a test wants this step to fail.
bool Faulty(DiskStep step) {
    const int fault = disk_faults ? disk_faults(step) : 0;
    if (fault != 0)
        errno = fault;
    return fault != 0;
}

fs::path FolderOf(const fs::path& file) { return file.has_parent_path() ? file.parent_path() : fs::path("."); }

// Short, so that it fits beside a target of any name.
fs::path TemporaryName(const fs::path& target) {
    static std::mutex one_at_a_time;
    const std::lock_guard lock(one_at_a_time);
    static std::random_device random;
    return FolderOf(target) /
           (std::string(TEMPORARY_PREFIX) + Format("%08x%08x", random(), random()) + std::string(TEMPORARY_ENDING));
}

std::string DescriptorName(int descriptor) { return "/proc/self/fd/" + std::to_string(descriptor); }

// What the path stands for behind its links, also where the last one points to nothing. False for a ring of links.
bool FollowLinks(fs::path& path) {
    std::error_code error;
    for (int links = 0; fs::is_symlink(path, error); ++links) {
        const fs::path pointed_to = fs::read_symlink(path, error);
        if (error || links == MOST_LINKS)
            return false;
        path = path.parent_path() / pointed_to; // an absolute one stands alone
    }
    return true;
}

// A writer holds the lock of its temporary file to its end, also when that is a kill.
void RemoveUnowned(const fs::path& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0)
        return;
    struct stat status = {};
    if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && std::time(nullptr) - status.st_mtime >= OLD_AGE &&
        flock(descriptor, LOCK_EX | LOCK_NB) == 0)
        unlink(path.c_str());
    close(descriptor);
}

// Of the temporary name "NAME.tmp123-0", which earlier versions wrote NAME under: that process, 0 for any other name.
pid_t WriterOf(std::string_view temporary, std::string_view name) {
    constexpr std::string_view BEHIND_NAME = ".tmp";
    constexpr size_t MOST_DIGITS = 9;
    if (!temporary.starts_with(name) || !temporary.substr(name.size()).starts_with(BEHIND_NAME))
        return 0;
    const std::string numbers(temporary.substr(name.size() + BEHIND_NAME.size()));
    const size_t dash = numbers.find('-');
    if (dash == std::string::npos || dash > MOST_DIGITS || dash + 1 == numbers.size() ||
        numbers.find_first_not_of("0123456789", dash + 1) != std::string::npos ||
        numbers.find_first_not_of("0123456789") != dash)
        return 0;
    return std::atoi(numbers.c_str());
}

// What killed writers of earlier versions have left beside a file, looked for once a run and file.
void RemoveLeftOversOf(const fs::path& target) {
    static std::mutex one_at_a_time;
    static std::set<fs::path> looked_at;
    std::error_code error;
    {
        const std::lock_guard lock(one_at_a_time);
        if (!looked_at.insert(fs::absolute(target, error)).second)
            return;
    }
    const std::string name = target.filename().string();
    for (fs::directory_iterator entry(FolderOf(target), error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        const pid_t writer = WriterOf(entry->path().filename().string(), name);
        if (writer > 0 && kill(writer, 0) != 0 && errno == ESRCH)
            RemoveUnowned(entry->path());
    }
}

// What killed writers have left in a folder, looked for once a run.
void RemoveLeftOvers(const fs::path& folder) {
    static std::mutex one_at_a_time;
    static std::set<fs::path> looked_at;
    std::error_code error;
    const fs::path whole = fs::absolute(folder, error);
    {
        const std::lock_guard lock(one_at_a_time);
        if (!looked_at.insert(whole).second)
            return;
    }
    for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (name.starts_with(TEMPORARY_PREFIX) && name.ends_with(TEMPORARY_ENDING))
            RemoveUnowned(entry->path());
    }
}

} // namespace

void SetDiskFaults(std::function<int(DiskStep)> faults) { disk_faults = std::move(faults); }

void SetNamelessFiles(bool possible) { nameless_possible = possible; }

bool IsReadOnlyFile(const fs::path& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           ((status.st_mode & ANY_WRITE_BIT) == 0 || access(path.c_str(), W_OK) != 0);
}

bool LinkInPlaceOf(const fs::path& file, const fs::path& name) {
    const fs::path linked = TemporaryName(name);
    if (Faulty(DiskStep::Link) || link(file.c_str(), linked.c_str()) != 0)
        return false;
    const bool named = !Faulty(DiskStep::Rename) && std::rename(linked.c_str(), name.c_str()) == 0;
    unlink(linked.c_str()); // it stays after a failure, and where both were one file already
    return named;
}

AtomicFile::AtomicFile(std::string_view data_path, bool survives_power_loss)
    : AtomicFile(RealPath(data_path), survives_power_loss) {}

AtomicFile::AtomicFile(const fs::path& path, bool survives_power_loss)
    : target(path), flush_to_disk(survives_power_loss) {
    Open();
}

AtomicFile::~AtomicFile() { Abandon(); }

void AtomicFile::Open() {
    if (!FollowLinks(target)) {
        Fail(ELOOP);
        return;
    }
    struct stat present = {};
    replaces = stat(target.c_str(), &present) == 0;
    if (replaces && !S_ISREG(present.st_mode)) {
        Fail(S_ISDIR(present.st_mode) ? EISDIR : EINVAL);
        return;
    }
    if (replaces && IsReadOnlyFile(target)) {
        error = "the file is read-only";
        failed = true;
        return;
    }
    if (Faulty(DiskStep::Open)) {
        Fail(errno);
        return;
    }
    int descriptor = OpenNameless();
    if (descriptor < 0)
        descriptor = OpenBeside();
    if (descriptor < 0) {
        Fail(errno);
        return;
    }
    (void)!flock(descriptor, LOCK_EX | LOCK_NB);
    if (replaces)
        (void)!fchmod(descriptor, present.st_mode & MODE_BITS); // best effort: the content matters more
    file = fdopen(descriptor, "wb");
    if (!file) {
        Fail(errno);
        close(descriptor);
        if (!temporary.empty())
            unlink(temporary.c_str());
        return;
    }
    buffer.resize(WRITE_BUFFER_BYTES);
    std::setvbuf(file, buffer.data(), _IOFBF, buffer.size());
}

// Nothing of it stays after a kill. -1 where the disk or the system cannot give it a name later.
int AtomicFile::OpenNameless() {
    if (!nameless_possible) {
        errno = EOPNOTSUPP;
        return -1;
    }
    const int descriptor = open(FolderOf(target).c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, NEW_FILE_MODE);
    if (descriptor < 0 || access(DescriptorName(descriptor).c_str(), F_OK) == 0)
        return descriptor;
    close(descriptor);
    errno = EOPNOTSUPP;
    return -1;
}

int AtomicFile::OpenBeside() {
    for (int attempt = 0; attempt < NAME_ATTEMPTS; ++attempt) {
        temporary = TemporaryName(target);
        const int descriptor = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, NEW_FILE_MODE);
        if (descriptor >= 0 || errno != EEXIST)
            return descriptor;
    }
    return -1;
}

void AtomicFile::SetMode(mode_t mode) {
    if (file && !replaces)
        (void)!fchmod(fileno(file), mode & MODE_BITS);
}

bool AtomicFile::Write(const void* data, size_t length) {
    if (failed || !file)
        return false;
    if (Faulty(DiskStep::Write) || (length > 0 && std::fwrite(data, 1, length, file) != length))
        return Fail(errno);
    return true;
}

// The written file gets the name of the target. The error number, 0 when it has it.
int AtomicFile::Publish() {
    if (temporary.empty()) {
        const std::string nameless = DescriptorName(fileno(file));
        fs::path name = replaces ? TemporaryName(target) : target;
        if (Faulty(DiskStep::Link))
            return errno;
        int linked = linkat(AT_FDCWD, nameless.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW);
        if (linked != 0 && errno == EEXIST) { // the target has come since
            name = TemporaryName(target);
            linked = linkat(AT_FDCWD, nameless.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW);
        }
        if (linked != 0)
            return errno;
        if (name == target)
            return 0;
        temporary = std::move(name);
    }
    return Faulty(DiskStep::Rename) || std::rename(temporary.c_str(), target.c_str()) != 0 ? errno : 0;
}

bool AtomicFile::Commit() {
    if (!file)
        return false;
    if (!failed && (Faulty(DiskStep::Flush) || std::fflush(file) != 0 || (flush_to_disk && fsync(fileno(file)) != 0)))
        Fail(errno);
    const int unpublished = failed ? 0 : Publish();
    if (unpublished != 0)
        Fail(unpublished);
    if (failed) {
        Abandon();
        return false;
    }
    std::fclose(file);
    file = nullptr;
    RemoveLeftOvers(FolderOf(target));
    if (flush_to_disk) // of thousands of files none was ever left
        RemoveLeftOversOf(target);
    return true;
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
    if (!temporary.empty())
        unlink(temporary.c_str());
}
