// From the data's paths (backslashes, any case) to real paths. No other code touches the separator.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

// What a user names, in a dialog of the desktop or on a command line: absolute, with slashes alone. The case of its
// letters counts, as everywhere on the user's disk.
bool IsNativePath(std::string_view path);

// A native path stays as it is. Of a data path backslashes become slashes, and each segment that exists is found
// without regard to case, the exact spelling first, else the first match in byte order. Segments that do not exist
// keep their spelling, so the result also names a file to be created. A relative path stays relative to the current
// folder.
std::filesystem::path RealPath(std::string_view data_path);

bool FileExistsOnDisk(std::string_view data_path);
bool MakeFolders(std::string_view data_path); // with all parents; true if it is there afterwards
bool RemoveFile(std::string_view data_path);
