// Regular files read whole, and copied whole or not at all.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <sys/stat.h>

// Opens a regular file for reading, without a buffer; never waits for the other end of a pipe. Null with a reason.
std::FILE* OpenRegularFile(const std::filesystem::path& path, std::string& reason);

// False with a reason; the bytes then are empty.
bool ReadWholeFile(const std::filesystem::path& path, std::string& bytes, std::string& reason);

// The copy takes the mode of the file. False with a sentence that names the file and the reason; an older copy then is
// as it was.
bool CopyWholeFile(const std::filesystem::path& from, const std::filesystem::path& to, std::string& error);

// Which file a name stands for, and since which change.
struct FileIdentity {
    dev_t device = 0;
    ino_t number = 0;
    off_t size = -1; // -1: no regular file
    timespec changed{};

    bool Exists() const { return size >= 0; }
    bool operator==(const FileIdentity& other) const;
};
FileIdentity IdentityOf(const struct stat& status);
FileIdentity IdentityOf(const std::filesystem::path& path);
