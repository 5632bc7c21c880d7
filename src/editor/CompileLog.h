// The compile log "Marrowstead\Marrowstead2000.log": the newest run stands at its top. While a run goes on,
// "Marrowstead\Marrowstead2000.new" holds its header; of several runs at once, that of the first. A log that cannot be
// opened is no failure of the run; one that cannot be written is told.
#pragma once

#include <string>

class CompileLog {
public:
    // Opens the new file and writes the header. An empty project name leaves its line out.
    CompileLog(const std::string& project_name, const std::string& map_file);
    CompileLog(const CompileLog&) = delete;
    CompileLog& operator=(const CompileLog&) = delete;
    ~CompileLog();

    // The progress text of the run, with the old log behind it, becomes the log.
    void Finish(const std::string& text);

private:
    std::string header;
    int new_file = -1;
    bool owns_new_file = false;
};
