#include "commands/Recovery.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sys/file.h>
#include <unistd.h>

#include "commands/Document.h"
#include "files/AtomicFile.h"
#include "foundation/Settings.h"
#include "foundation/Strings.h"
#include "persistence/Project.h"

namespace fs = std::filesystem;

namespace {

constexpr uint32_t MILLISECONDS = 1000;
constexpr const char* PREFIX = "level-";

fs::path RecoveryFolder() { return fs::path(SettingsFolder()) / "recovery"; }

// The lock is held as long as the run lives, also through a crash of it: the system gives it back.
int TakeLock(const std::string& file) {
    const int descriptor = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor >= 0 && flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        close(descriptor);
        return -1;
    }
    return descriptor;
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
    const std::string stem = (RecoveryFolder() / (PREFIX + std::to_string(getpid()))).string();
    copy = stem + ".msp", note = stem + ".json", lock = stem + ".lock";
    lock_descriptor = TakeLock(lock);
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
        RemoveFiles({copy, note});
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

bool RecoveryFile::WriteNote() {
    const nlohmann::json json = {{"has_name", interface.project_file_has_name},
                                 {"path", interface.project_file_path},
                                 {"name", interface.project_file_name}};
    const std::string text = json.dump(1, ' ', false, nlohmann::json::error_handler_t::replace);
    AtomicFile file(note);
    return file.IsOpen() && file.Write(text.data(), text.size()) && file.Commit();
}

bool RecoveryFile::Write() {
    if (interface.changes == interface.saved_changes || !interface.world)
        return true;
    is_waiting = false;
    written_changes = interface.changes;
    std::string error;
    const bool written = WriteNote() && SaveProject(copy, *interface.world, interface.views, false, error);
    has_copy |= written;
    if (!written && !failure_told)
        GetDesktop().Notice(Format("The copy of the level against a crash cannot be written: %s",
                                   error.empty() ? ("\"" + note + "\" cannot be written").c_str() : error.c_str()));
    failure_told = !written;
    return written;
}

std::vector<RecoveredLevel> RecoveryFile::FindLeftOver() {
    std::vector<RecoveredLevel> found;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(RecoveryFolder(), ignored)) {
        if (entry.path().extension() != ".msp")
            continue;
        RecoveredLevel level;
        level.copy = entry.path().string();
        const std::string stem = (entry.path().parent_path() / entry.path().stem()).string();
        level.note = stem + ".json", level.lock = stem + ".lock";
        const int descriptor = TakeLock(level.lock);
        if (descriptor < 0)
            continue; // its run is alive
        close(descriptor);
        std::ifstream stream(level.note);
        const nlohmann::json json = nlohmann::json::parse(stream, nullptr, false);
        if (json.is_object()) {
            const auto text = [&json](const char* key) {
                const auto value = json.find(key);
                return value != json.end() && value->is_string() ? value->get<std::string>() : std::string();
            };
            level.has_name = json.contains("has_name") && json["has_name"].is_boolean() && json["has_name"].get<bool>();
            level.project_path = text("path");
            level.project_name = text("name");
        }
        found.push_back(std::move(level));
    }
    return found;
}

void RecoveryFile::Offer(CMarrowstead2Doc& document) {
    for (const RecoveredLevel& level : FindLeftOver()) {
        const std::string name = level.has_name ? "\"" + level.project_name + "\"" : "a level without a name";
        const MessageAnswer answer = GetDesktop().MessageBox("The last run did not end in order. A copy of " + name +
                                                                 " was kept. Do you want to open it?",
                                                             "Marrowstead 2000", MessageButtons::YesNoCancel);
        if (answer == MessageAnswer::Cancel)
            continue; // offered again at the next start
        if (answer == MessageAnswer::No) {
            RemoveFiles({level.copy, level.note, level.lock});
            continue;
        }
        std::string error;
        if (!document.OpenCopy(level.copy, level.has_name, level.project_path, level.project_name, error)) {
            GetDesktop().MessageBox(error, "Marrowstead 2000");
            continue;
        }
        if (Write()) // as this run's own copy
            RemoveFiles({level.copy, level.note, level.lock});
        return;
    }
}
