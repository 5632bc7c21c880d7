// Keys as texts: "Ctrl+Shift+S", "Num6", "F7", "`". Modifiers come in any order and case.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "foundation/Desktop.h"

struct KeyCombination {
    bool control = false, shift = false, alt = false;
    bool num0 = false; // held besides: it changes what some keys of the numeric pad do
    std::string key;   // such as "S", "Num6", "Backspace"; letters are capitals
    bool operator==(const KeyCombination&) const = default;
};

// Nothing for a text that names no key.
std::optional<KeyCombination> ParseKeys(std::string_view text);
std::string KeysText(const KeyCombination& keys); // in one spelling

// The key whose state can be asked for, if it is one of those.
std::optional<HeldKey> HeldKeyOf(const std::string& key);
