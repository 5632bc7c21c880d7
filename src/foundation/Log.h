// The trace log "Marrowstead\trace.log" under the current folder. Nothing stays open between entries, so that the log
// survives a crash.
#pragma once

#include <string_view>

inline constexpr const char* TRACE_LOG = "Marrowstead\\trace.log";
inline constexpr const char* TEXTURE_LOG = "Marrowstead\\texture.log";

// Appends a line feed and the formatted text.
[[gnu::format(printf, 1, 2)]] void LOG(const char* format_string, ...);

// Appends the text as it stands to a log named by its data path. A log that cannot be opened is passed over.
void AppendToLog(std::string_view log, std::string_view text);
