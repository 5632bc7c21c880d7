// The compile log "Marrowstead\Marrowstead2000.log": the newest run stands at its top. A run writes
// "Marrowstead\Marrowstead2000.new" first; a log that cannot be opened is no failure of the run.
#pragma once

#include <cstdio>
#include <string>

class CompileLog {
public:
    // Opens the new file and writes the header. An empty project name leaves its line out.
    CompileLog(const std::string& project_name, const std::string& map_file);
    CompileLog(const CompileLog&) = delete;
    CompileLog& operator=(const CompileLog&) = delete;
    ~CompileLog();

    // The progress text of the run, then the old log behind it; the new file takes the log's name.
    void Finish(const std::string& text);

private:
    std::FILE* file = nullptr;
};
