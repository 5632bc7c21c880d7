#include "foundation/Paths.h"

#include <algorithm>
#include <system_error>

#include "foundation/Strings.h"

namespace fs = std::filesystem;

namespace {

bool Exists(const fs::path& path) {
    std::error_code error;
    return fs::exists(path, error);
}

// The entry of the folder that equals the name without regard to case, the first in byte order; empty if none does.
std::string FindEntry(const fs::path& folder, const std::string& name) {
    std::string found;
    std::error_code error;
    fs::directory_iterator entry(folder.empty() ? fs::path(".") : folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        std::string candidate = entry->path().filename().string();
        if (EqualNoCase(candidate, name) && (found.empty() || candidate < found))
            found = std::move(candidate);
    }
    return found;
}

} // namespace

bool IsNativePath(std::string_view path) {
    return !path.empty() && path.front() == '/' && path.find('\\') == std::string_view::npos;
}

fs::path RealPath(std::string_view data_path) {
    std::string text(data_path.substr(0, data_path.find('\0')));
    if (IsNativePath(text))
        return text;
    std::replace(text.begin(), text.end(), '\\', '/');
    fs::path exact(text);
    if (text.empty() || Exists(exact))
        return exact;

    fs::path result;
    bool on_disk = true; // all segments so far exist
    for (const fs::path& segment : exact) {
        fs::path step = result / segment;
        if (on_disk && !segment.empty() && !Exists(step)) {
            const std::string entry = FindEntry(result, segment.string());
            on_disk = !entry.empty();
            if (on_disk)
                step = result / entry;
        }
        result = std::move(step);
    }
    return result;
}

bool FileExistsOnDisk(std::string_view data_path) {
    std::error_code error;
    return fs::is_regular_file(RealPath(data_path), error);
}

bool MakeFolders(std::string_view data_path) {
    const fs::path path = RealPath(data_path);
    std::error_code error;
    fs::create_directories(path, error);
    return fs::is_directory(path, error);
}

bool RemoveFile(std::string_view data_path) {
    std::error_code error;
    const fs::path path = RealPath(data_path);
    return !fs::is_directory(path, error) && fs::remove(path, error);
}
