// What the user is told when a file could not be written: the box that all writers share, and the file with the reason.
#pragma once

#include <string>

// reason: one sentence that names the file, empty if it is not known.
void ShowWriteError(const std::string& reason);
