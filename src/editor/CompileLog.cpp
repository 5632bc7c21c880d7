#include "editor/CompileLog.h"

#include <ctime>
#include <filesystem>
#include <vector>

#include "foundation/Paths.h"

static constexpr const char* LOG_FILE = "Marrowstead\\Marrowstead2000.log";
static constexpr const char* NEW_LOG_FILE = "Marrowstead\\Marrowstead2000.new";
static constexpr size_t COPY_BLOCK = 32768;

CompileLog::CompileLog(const std::string& project_name, const std::string& map_file) {
    file = std::fopen(RealPath(NEW_LOG_FILE).c_str(), "wb");
    if (!file)
        return;
    const std::string rule(70, '#');
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::fprintf(file, "%s\r\n", rule.c_str());
    if (!project_name.empty())
        std::fprintf(file, "##  Project: %s\r\n", project_name.c_str());
    std::fprintf(file, "##   Target: %s\r\n", map_file.c_str());
    std::fprintf(file, "##  [%02d.%02d %d - %02d:%02d]\r\n", local.tm_mday, local.tm_mon + 1, local.tm_year + 1900,
                 local.tm_hour, local.tm_min);
    std::fprintf(file, "%s\r\n\r\n", rule.c_str());
}

CompileLog::~CompileLog() {
    if (file)
        std::fclose(file);
}

void CompileLog::Finish(const std::string& text) {
    if (!file)
        return;
    bool written = std::fprintf(file, "%s\r\n\r\n\r\n", text.c_str()) >= 0;
    if (std::FILE* old = std::fopen(RealPath(LOG_FILE).c_str(), "rb")) {
        std::vector<char> block(COPY_BLOCK);
        for (size_t n = 0; (n = std::fread(block.data(), 1, block.size(), old)) > 0;)
            written = std::fwrite(block.data(), 1, n, file) == n && written;
        std::fclose(old);
    }
    written = std::fclose(file) == 0 && written;
    file = nullptr;
    std::error_code ignored;
    if (written)
        std::filesystem::rename(RealPath(NEW_LOG_FILE), RealPath(LOG_FILE), ignored);
}
