#include "pages/MyFileDialog.h"

#include <algorithm>

#include "files/FileFind.h"
#include "foundation/Paths.h"
#include "foundation/StringList.h"
#include "foundation/Strings.h"

namespace {

constexpr int DEEPEST = 32; // folders in one another: links on the disk can form rings

std::string CleanPath(std::string_view path) {
    std::string clean;
    CutPath(clean, path);
    while (!clean.empty() && (clean.back() == '\\' || clean.back() == '/'))
        clean.pop_back();
    return clean == "." ? std::string() : clean;
}

std::string Join(const std::string& folder, const std::string& name) {
    return folder.empty() ? name : folder + "\\" + name;
}

std::string SearchPath(const std::string& folder) { return folder.empty() ? "." : folder; }

} // namespace

MyFileDialog::MyFileDialog(std::string_view root, std::string_view default_dir, std::string_view file_pattern)
    : pattern(file_pattern) {
    const std::string top = CleanPath(root);
    AddDirectory(top, top.empty() ? std::string(root) : top, -1, 0);
    const std::string wanted = CleanPath(default_dir);
    const auto found = std::find_if(folders.begin(), folders.end(),
                                    [&wanted](const Folder& folder) { return EqualNoCase(folder.path, wanted); });
    SelectFolder(found == folders.end() ? 0 : static_cast<int>(found - folders.begin()));
}

void MyFileDialog::AddDirectory(const std::string& path, const std::string& name, int parent, int depth) {
    const int self = static_cast<int>(folders.size());
    folders.push_back({path, name, parent});
    if (depth == DEEPEST)
        return;
    StringListClass below(false, true);
    FileFindObject search(SearchPath(path), "*", FFO_DirectoryFind, true);
    while (const FFOInfo* found = search.FindNext())
        if (found->name != "." && found->name != "..")
            below.AddString(found->name);
    for (int i = 0; i < below.GetStringCount(); ++i)
        AddDirectory(Join(path, below.GetString(i)), below.GetString(i), self, depth + 1);
}

void MyFileDialog::SelectFolder(int folder) {
    if (folder < 0 || folder >= static_cast<int>(folders.size()))
        return;
    selected_folder = folder;
    ListFiles();
}

void MyFileDialog::SetFilePattern(std::string_view file_pattern) {
    pattern = file_pattern;
    ListFiles();
}

void MyFileDialog::ListFiles() {
    files.clear();
    selected_file = -1;
    const std::string& folder = folders[static_cast<size_t>(selected_folder)].path;
    FileFindObject search(SearchPath(folder), pattern, FFO_FileFind, true);
    while (const FFOInfo* found = search.FindNext()) {
        const bool on_disk = FileExistsOnDisk(Join(folder, found->name));
        files.push_back({found->name, !search.IsInFilelibrary() ? Place::Disk
                                      : on_disk                 ? Place::DiskAndLibrary
                                                                : Place::Library});
    }
    std::stable_sort(files.begin(), files.end(),
                     [](const File& a, const File& b) { return CompareNoCase(a.name, b.name) < 0; });
}

bool MyFileDialog::SelectFile(std::string_view name) {
    const auto found =
        std::find_if(files.begin(), files.end(), [name](const File& file) { return EqualNoCase(file.name, name); });
    selected_file = found == files.end() ? -1 : static_cast<int>(found - files.begin());
    return IsOKEnabled();
}

std::string MyFileDialog::GetSelectedFile() const {
    if (!IsOKEnabled())
        return {};
    return Join(folders[static_cast<size_t>(selected_folder)].path, files[static_cast<size_t>(selected_file)].name);
}
