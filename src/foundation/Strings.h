// Texts: comparison without regard to case, formatting, path clean-up.
#pragma once

#include <cstdarg>
#include <string>
#include <string_view>
#include <vector>

// Order of two texts with ASCII letters folded to lower case: below 0, 0, above 0.
int CompareNoCase(std::string_view a, std::string_view b);
inline bool EqualNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && CompareNoCase(a, b) == 0;
}
bool StartsWithNoCase(std::string_view text, std::string_view prefix);
std::string ToLower(std::string_view text); // ASCII letters only

// printf into a string.
[[gnu::format(printf, 1, 2)]] std::string Format(const char* format_string, ...);
[[gnu::format(printf, 1, 0)]] std::string FormatList(const char* format_string, va_list arguments);

// Copies a backslash path without its dot parts; true if a part was removed.
bool CutPath(std::string& dest, std::string_view src);

// The part before the last backslash or slash (empty if there is none), and the part behind it.
std::string DirectoryPart(std::string_view path);
std::string FilePart(std::string_view path);

// At most max_length characters, for names that live in fixed fields.
std::string CutText(std::string_view text, size_t max_length);
