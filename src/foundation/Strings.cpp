#include "foundation/Strings.h"

#include <algorithm>
#include <cstdio>

namespace {

unsigned char FoldCase(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + ('a' - 'A')) : byte;
}

size_t LastSeparator(std::string_view path) { return path.find_last_of("\\/"); }

} // namespace

int CompareNoCase(std::string_view a, std::string_view b) {
    const size_t common = std::min(a.size(), b.size());
    for (size_t i = 0; i < common; ++i) {
        const int difference = FoldCase(a[i]) - FoldCase(b[i]);
        if (difference != 0)
            return difference;
    }
    return a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
}

bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
    return EqualNoCase(text.substr(0, prefix.size()), prefix);
}

std::string ToLower(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        c = static_cast<char>(FoldCase(c));
    return lower;
}

std::string FormatList(const char* format_string, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format_string, again);
    va_end(again);
    if (length <= 0)
        return {};
    std::string text(static_cast<size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format_string, arguments);
    return text;
}

std::string Format(const char* format_string, ...) {
    va_list arguments;
    va_start(arguments, format_string);
    std::string text = FormatList(format_string, arguments);
    va_end(arguments);
    return text;
}

bool CutPath(std::string& dest, std::string_view src) {
    std::string result;
    bool part_removed = false;
    size_t pos = 0;
    while (pos < src.size()) {
        const size_t separator = src.find('\\', pos);
        if (separator == std::string_view::npos)
            break;
        const std::string_view segment = src.substr(pos, separator - pos);
        pos = separator + 1;
        if (segment == ".") {
            part_removed = true;
            continue;
        }
        if (segment == ".." && result.size() > 1) {
            const size_t before = result.rfind('\\', result.size() - 2);
            const size_t start = before == std::string::npos ? 0 : before + 1;
            if (std::string_view(result).substr(start) != "..\\") {
                result.resize(start);
                part_removed = true;
                continue;
            }
        }
        result += segment;
        result += '\\';
    }
    std::string_view last = src.substr(pos);
    if (last.size() > 1 && last.back() == '.')
        last.remove_suffix(1);
    result += last;
    dest = std::move(result);
    return part_removed;
}

std::string DirectoryPart(std::string_view path) {
    const size_t separator = LastSeparator(path);
    if (separator == std::string_view::npos)
        return {};
    return std::string(path.substr(0, separator == 0 ? 1 : separator));
}

std::string FilePart(std::string_view path) {
    const size_t separator = LastSeparator(path);
    return std::string(separator == std::string_view::npos ? path : path.substr(separator + 1));
}

std::string CutText(std::string_view text, size_t max_length) { return std::string(text.substr(0, max_length)); }
