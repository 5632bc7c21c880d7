// What the commands are called and do, in a level maker's words: for menus, the palette, tool tips, the keys page and
// the manual.
#pragma once

#include <string>

struct Command;

std::string CommandText(const Command& command);  // with the mark of its menu letter
std::string CommandTitle(const Command& command); // without
const char* CommandHelp(const Command& command);  // one sentence
