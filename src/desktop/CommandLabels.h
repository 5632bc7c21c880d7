// What the commands are called in menus, the palette and tool tips, and where they stand in the menus.
#pragma once

#include <string>
#include <string_view>

struct Command;

std::string CommandText(const Command& command);  // with the mark of its menu letter
std::string CommandTitle(const Command& command); // without
const char* CommandHelp(const Command& command);  // one sentence, or ""

struct MenuPlace {
    const char* submenu = ""; // of its menu; empty: the menu itself
    bool separated = false;   // a line stands above
};
MenuPlace PlaceInMenu(const Command& command);
