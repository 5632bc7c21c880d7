#include "commands/Recovery.h"

#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "commands/Document.h"
#include "files/AtomicFile.h"
#include "foundation/Settings.h"
#include "foundation/Strings.h"
#include "foundation/WholeFile.h"
#include "persistence/MovieFile.h"
#include "persistence/Project.h"

namespace fs = std::filesystem;

namespace {

constexpr uint32_t MILLISECONDS = 1000;
constexpr const char* PREFIX = "level-";

fs::path RecoveryFolder() { return fs::path(SettingsFolder()) / "recovery"; }

// The lock is held as long as the run lives, also through a crash of it: the system gives it back. -1 when another run
// holds it, or when there is none.
int TakeLock(const std::string& file, int flags) {
    const int descriptor = open(file.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC | flags, 0600);
    struct stat held = {}, named = {};
    if (descriptor >= 0 && (flock(descriptor, LOCK_EX | LOCK_NB) != 0 || fstat(descriptor, &held) != 0 ||
                            stat(file.c_str(), &named) != 0 || held.st_ino != named.st_ino)) {
        close(descriptor); // in the last case its run has ended, and removed it, since it was opened
        return -1;
    }
    return descriptor;
}

// Keeps a left-over from being offered by two programs at once.
class LeftOverLock {
public:
    explicit LeftOverLock(const std::string& file) : descriptor(TakeLock(file, O_CREAT)) {}
    LeftOverLock(const LeftOverLock&) = delete;
    LeftOverLock& operator=(const LeftOverLock&) = delete;
    ~LeftOverLock() {
        if (descriptor >= 0)
            close(descriptor);
    }
    bool IsHeld() const { return descriptor >= 0; }

private:
    int descriptor;
};

// A process number would not do: another machine, or a container, has the same one over the same folder.
std::string RandomName() {
    std::random_device random;
    return PREFIX + Format("%08x%08x%08x%08x", random(), random(), random(), random());
}

// A run names its copy before it has one, so whatever bears a lock that nobody holds is left over.
bool IsLeftOver(const std::string& lock) {
    std::error_code error;
    if (!fs::exists(lock, error))
        return true;
    const int descriptor = TakeLock(lock, 0);
    if (descriptor >= 0)
        close(descriptor);
    return descriptor >= 0;
}

// How long ago a file was written.
std::string AgeOf(const std::string& file) {
    using std::chrono::minutes, std::chrono::hours;
    std::error_code error;
    const fs::file_time_type written = fs::last_write_time(file, error);
    if (error)
        return "some time";
    const auto age = std::chrono::duration_cast<minutes>(fs::file_time_type::clock::now() - written);
    const auto tell = [](int64_t count, const char* unit) {
        return Format("%lld %s%s", static_cast<long long>(count), unit, count == 1 ? "" : "s");
    };
    if (age < minutes(1))
        return "less than a minute";
    if (age < hours(1))
        return tell(age.count(), "minute");
    return age < hours(24) ? tell(age / hours(1), "hour") : tell(age / hours(24), "day");
}

void RemoveFiles(std::initializer_list<std::string> files) {
    std::error_code ignored;
    for (const std::string& file : files)
        fs::remove(file, ignored);
}

} // namespace

RecoveryFile::RecoveryFile(CInterface& editor_interface)
    : interface(editor_interface), written_changes(editor_interface.changes) {
    std::error_code ignored;
    fs::create_directories(RecoveryFolder(), ignored);
    const std::string stem = (RecoveryFolder() / RandomName()).string();
    copy = stem + ".msp", movie = stem + ".mvi", note = stem + ".json", lock = stem + ".lock";
    lock_descriptor = TakeLock(lock, O_CREAT | O_EXCL);
}

RecoveryFile::~RecoveryFile() {
    Remove();
    if (lock_descriptor >= 0) {
        RemoveFiles({lock});
        close(lock_descriptor);
    }
}

void RecoveryFile::Remove() {
    if (has_copy)
        RemoveFiles({copy, movie, note});
    has_copy = false;
}

void RecoveryFile::Tick(uint32_t now) {
    if (interface.changes == interface.saved_changes) {
        Remove();
        is_waiting = false;
        written_changes = interface.changes;
        return;
    }
    if (interface.changes == written_changes || interface.settings.recovery_interval == 0)
        return;
    if (!is_waiting) {
        is_waiting = true;
        first_change_tick = now;
    }
    if (now - first_change_tick >= static_cast<uint32_t>(interface.settings.recovery_interval) * MILLISECONDS)
        Write();
}

bool RecoveryFile::WriteNote(std::string& error) const {
    const nlohmann::json json = {{"has_name", interface.project_file_has_name},
                                 {"path", interface.project_file_path},
                                 {"name", interface.project_file_name},
                                 {"movie", interface.world->movie_name},
                                 {"movie_editing", interface.movie_editing}};
    const std::string text = json.dump(1, ' ', false, nlohmann::json::error_handler_t::replace);
    AtomicFile file(note);
    if (file.Write(text.data(), text.size()) && file.Commit())
        return true;
    error = "\"" + note + "\" cannot be written: " + file.GetError();
    return false;
}

// The paths of the objects with their points: a project is saved without them.
bool RecoveryFile::WriteMovieCopy(std::string& error) const {
    const std::vector<MoviePathRecord> paths = MoviePathsOf(*interface.world);
    if (!paths.empty())
        return WriteMovie(movie, paths, error);
    RemoveFiles({movie});
    return true;
}

bool RecoveryFile::Write() {
    if (interface.changes == interface.saved_changes || !interface.world)
        return true;
    is_waiting = false;
    written_changes = interface.changes;
    std::string error;
    const bool written =
        WriteNote(error) && WriteMovieCopy(error) && SaveProject(copy, *interface.world, interface.views, false, error);
    has_copy |= written;
    if (!written && !failure_told)
        GetDesktop().Notice("The copy of the level against a crash cannot be written: " + error);
    failure_told = !written;
    return written;
}

// What the note says of the project. A note that cannot be read is told and left alone.
static void ReadNote(RecoveredLevel& level) {
    std::string content, reason;
    if (!ReadWholeFile(level.note, content, reason)) {
        if (std::error_code error; fs::exists(level.note, error))
            NoticeOnce("\"" + level.note + "\" cannot be read: " + reason);
        return;
    }
    const nlohmann::json json = nlohmann::json::parse(content, nullptr, false);
    if (!json.is_object())
        return;
    const auto text = [&json](const char* key) {
        const auto value = json.find(key);
        return value != json.end() && value->is_string() ? value->get<std::string>() : std::string();
    };
    const auto flag = [&json](const char* key) {
        const auto value = json.find(key);
        return value != json.end() && value->is_boolean() && value->get<bool>();
    };
    level.has_name = flag("has_name");
    level.movie_editing = flag("movie_editing");
    level.movie_name = text("movie");
    level.project_path = text("path");
    level.project_name = text("name");
}

std::vector<RecoveredLevel> RecoveryFile::FindLeftOver() {
    std::vector<RecoveredLevel> found;
    std::set<std::string> stems;
    std::error_code error;
    for (fs::directory_iterator entry(RecoveryFolder(), error); !error && entry != fs::directory_iterator();
         entry.increment(error))
        if (const fs::path& path = entry->path(); path.filename().string().starts_with(PREFIX))
            stems.insert((path.parent_path() / path.stem()).string());
    for (const std::string& stem : stems) {
        RecoveredLevel level;
        level.copy = stem + ".msp", level.movie = stem + ".mvi", level.note = stem + ".json",
        level.lock = stem + ".lock";
        if (!IsLeftOver(level.lock))
            continue;
        if (!fs::is_regular_file(level.copy, error)) {
            RemoveFiles({level.movie, level.note, level.lock});
            continue;
        }
        ReadNote(level);
        found.push_back(std::move(level));
    }
    return found;
}

void RecoveryFile::OpenMovie(const RecoveredLevel& level) {
    std::string error;
    std::error_code ignored;
    if (fs::exists(level.movie, ignored) && interface.LoadMovie(level.movie, error, true) != MOVIE_OK)
        GetDesktop().MessageBox(error, "Marrowstead 2000");
    interface.world->movie_name = level.movie_name;
    interface.movie_editing = level.movie_editing;
}

void RecoveryFile::Offer(CMarrowstead2Doc& document) {
    for (const RecoveredLevel& level : FindLeftOver()) {
        const LeftOverLock lock_of_copy(level.lock);
        std::error_code error_code;
        if (!lock_of_copy.IsHeld() || !fs::exists(level.copy, error_code))
            continue; // another program has it, or had it
        const std::string name = level.has_name ? "\"" + level.project_name + "\"" : "a level without a name";
        const MessageAnswer answer = GetDesktop().MessageBox(
            "The last run did not end in order. A copy of " + name + " was kept " + AgeOf(level.copy) +
                " ago. Do you want to open it?\n\n\"No\" deletes the copy for good. \"Cancel\" "
                "keeps it, and the next start asks again.",
            "Marrowstead 2000", MessageButtons::YesNoCancel);
        if (answer == MessageAnswer::Cancel)
            continue; // offered again at the next start
        if (answer == MessageAnswer::No) {
            RemoveFiles({level.copy, level.movie, level.note, level.lock});
            continue;
        }
        std::string error;
        if (!document.OpenCopy(level.copy, level.has_name, level.project_path, level.project_name, error)) {
            GetDesktop().MessageBox(error, "Marrowstead 2000");
            continue;
        }
        OpenMovie(level);
        if (Write()) // as this run's own copy
            RemoveFiles({level.copy, level.movie, level.note, level.lock});
        return;
    }
}
