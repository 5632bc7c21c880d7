#pragma once

#include <string>

// The commands by menu with their keys, as a page of the manual.
std::string KeyTablePage();
