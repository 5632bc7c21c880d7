// Which keys run which command: those of the command table, or what the user has made of them.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "commands/CommandTable.h"

class KeyBindings {
public:
    KeyBindings(); // as in the table

    // Changed keys, kept with the settings. What cannot be understood there is passed over.
    void Load();
    bool Store(); // what has changed since they were loaded or stored: another window may have stored its own

    const std::vector<std::string>& KeysOf(const Command& command) const;
    std::string Text(const Command& command) const; // for a menu: "Ctrl+Z, Alt+Backspace"
    // Null for keys of no command.
    const Command* Find(std::string_view keys) const;
    bool IsTaken(std::string_view keys) const; // by the window itself: no command can have them
    bool IsDefault(const Command& command) const;

    // Another command that has one of the keys loses it.
    void Set(const Command& command, const std::vector<std::string>& keys);
    void Reset(const Command& command);
    void ResetAll();

private:
    std::map<std::string, std::string>
    Texts() const; // of the commands whose keys are changed, by names in the settings

    std::map<std::string, std::string> stored;
    std::map<const Command*, std::vector<std::string>> keys_of;
    std::map<std::string, const Command*, std::less<>> command_of;
};

// The palette of commands, which the window opens itself.
inline constexpr const char* PALETTE_KEYS = "Ctrl+Shift+A";
