#include "editor/CompileLog.h"

#include <ctime>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "files/AtomicFile.h"
#include "foundation/Desktop.h"
#include "foundation/Paths.h"
#include "foundation/Strings.h"
#include "foundation/WholeFile.h"

namespace {

constexpr const char* LOG_FOLDER = "Marrowstead";
constexpr const char* LOG_FILE = "Marrowstead\\Marrowstead2000.log";
constexpr const char* NEW_LOG_FILE = "Marrowstead\\Marrowstead2000.new";
constexpr mode_t NEW_FILE_MODE = 0666; // less the user's mask

// From reading the old log to writing the new one no other run writes one.
class FolderLock {
public:
    FolderLock() : folder(open(RealPath(LOG_FOLDER).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        if (folder >= 0)
            flock(folder, LOCK_EX);
    }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;
    ~FolderLock() {
        if (folder >= 0)
            close(folder);
    }

private:
    int folder;
};

std::string Header(const std::string& project_name, const std::string& map_file) {
    const std::string rule = std::string(70, '#') + "\r\n";
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    const std::string date = Format("##  [%02d.%02d %d - %02d:%02d]\r\n", local.tm_mday, local.tm_mon + 1,
                                    local.tm_year + 1900, local.tm_hour, local.tm_min);
    return rule + (project_name.empty() ? "" : "##  Project: " + project_name + "\r\n") + "##   Target: " + map_file +
           "\r\n" + date + rule + "\r\n";
}

} // namespace

CompileLog::CompileLog(const std::string& project_name, const std::string& map_file)
    : header(Header(project_name, map_file)),
      new_file(open(RealPath(NEW_LOG_FILE).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, NEW_FILE_MODE)) {
    owns_new_file = new_file >= 0 && flock(new_file, LOCK_EX | LOCK_NB) == 0;
    if (owns_new_file && ftruncate(new_file, 0) == 0)
        (void)!write(new_file, header.data(), header.size());
}

CompileLog::~CompileLog() {
    if (owns_new_file)
        RemoveFile(NEW_LOG_FILE);
    if (new_file >= 0)
        close(new_file);
}

void CompileLog::Finish(const std::string& text) {
    if (new_file < 0)
        return;
    const FolderLock lock;
    std::string old_log, reason;
    const bool read = !FileExistsOnDisk(LOG_FILE) || ReadWholeFile(RealPath(LOG_FILE), old_log, reason);
    if (read) {
        const std::string log = header + text + "\r\n\r\n\r\n" + old_log;
        AtomicFile file(LOG_FILE);
        if (file.Write(log.data(), log.size()) && file.Commit())
            return;
        reason = file.GetError();
    }
    GetDesktop().Notice(Format("\"%s\" cannot be written: %s", LOG_FILE, reason.c_str()));
}
