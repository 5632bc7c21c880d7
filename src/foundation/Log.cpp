#include "foundation/Log.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>

#include "foundation/Paths.h"
#include "foundation/Strings.h"

void LOG(const char* format_string, ...) {
    std::string entry = "\n";
    va_list arguments;
    va_start(arguments, format_string);
    entry += FormatList(format_string, arguments);
    va_end(arguments);
    AppendToLog(TRACE_LOG, entry);
}

void AppendToLog(std::string_view log, std::string_view text) {
    static std::mutex one_entry_at_a_time;
    const std::lock_guard lock(one_entry_at_a_time);
    std::FILE* file = std::fopen(RealPath(log).c_str(), "ab");
    if (!file)
        return; // a run without the folder has no log
    std::fwrite(text.data(), 1, text.size(), file);
    std::fclose(file);
}
