// Every command of the program in one table: its handler, menu and text, keys, the rules by which it is enabled and
// checked, and what it does. Menus, key bindings, scripts and the manual are made from it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

class CMainFrame;

struct Command {
    const char* owner;                                  // class of the handler
    const char* name;                                   // of the handler
    const char* menu;                                   // "File", "Edit", ...; empty: in no menu
    const char* text;                                   // of the menu item, "" where there is none
    const char* keys;                                   // parted by blanks
    void (*action)(CMainFrame&);                        // null: not available
    bool (*is_checked)(CMainFrame&) = nullptr;          // null: the item has no mark
    bool (*is_enabled)(CMainFrame&) = nullptr;          // null: always
    const char* (*current_text)(CMainFrame&) = nullptr; // a menu text that changes
    bool works_in_drag = false;                         // else a drag under way ends first, as by its button
};

const std::vector<Command>& CommandTable();

// By "Handler" or "Class::Handler". Null if there is none, or several without the class.
const Command* FindCommand(std::string_view name);
// By keys in any spelling; null if no command has them.
const Command* FindCommandOfKey(std::string_view keys);
// Keys that are taken and do nothing.
bool IsReservedKey(std::string_view keys);
