// Where the commands stand in the menus.
#pragma once

struct Command;

struct MenuPlace {
    const char* submenu = ""; // of its menu; empty: the menu itself
    bool separated = false;   // a line stands above
};
MenuPlace PlaceInMenu(const Command& command);
