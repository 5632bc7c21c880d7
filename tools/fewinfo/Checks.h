// Every rule of a compiled world that can be checked from the file alone.
#pragma once

#include <string>
#include <vector>

#include "persistence/WorldFile.h"

// One sentence a broken rule; empty when all hold. At most `limit` are collected.
std::vector<std::string> CheckWorld(const WorldFile& world, size_t limit = 50);
