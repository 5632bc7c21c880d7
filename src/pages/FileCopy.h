// Copies of files out of the data root, libraries included.
#pragma once

#include <string>
#include <string_view>

// The folders of the target are made. False with a sentence.
bool CopyFileOut(std::string_view source, std::string_view target, std::string& error);
// Replaces the target whole.
bool WriteTextFile(std::string_view target, std::string_view text, std::string& error);
