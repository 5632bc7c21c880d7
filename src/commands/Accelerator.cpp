#include "commands/Accelerator.h"

#include <array>
#include <cctype>

#include "foundation/Strings.h"

namespace {

constexpr std::array<const char*, 44> NAMED_KEYS = {
    "Space", "Backspace", "Esc",  "Ins",   "Del",  "Home", "End",  "PgUp", "PgDn",     "Left", "Right",
    "Up",    "Down",      "Tab",  "Enter", "F1",   "F2",   "F3",   "F4",   "F5",       "F6",   "F7",
    "F8",    "F9",        "F10",  "F11",   "F12",  "Num0", "Num1", "Num2", "Num3",     "Num4", "Num5",
    "Num6",  "Num7",      "Num8", "Num9",  "Num+", "Num-", "Num*", "Num/", "CapsLock", "Num.", "Pause"};

// Takes "Name+" off the front, in any case.
bool TakeModifier(std::string_view& text, std::string_view name) {
    if (text.size() <= name.size() + 1 || text[name.size()] != '+' || !StartsWithNoCase(text, name))
        return false;
    text.remove_prefix(name.size() + 1);
    return true;
}

} // namespace

std::optional<KeyCombination> ParseKeys(std::string_view text) {
    KeyCombination keys;
    for (bool more = true; more;) {
        more = false;
        if (TakeModifier(text, "Ctrl"))
            keys.control = more = true;
        else if (TakeModifier(text, "Shift"))
            keys.shift = more = true;
        else if (TakeModifier(text, "Alt"))
            keys.alt = more = true;
        else if (TakeModifier(text, "Num0"))
            keys.num0 = more = true;
    }
    for (const char* name : NAMED_KEYS)
        if (EqualNoCase(text, name)) {
            keys.key = name;
            return keys;
        }
    const bool one_character = text.size() == 1 && std::isgraph(static_cast<unsigned char>(text[0]));
    if (!one_character)
        return std::nullopt;
    keys.key = std::string(1, static_cast<char>(std::toupper(static_cast<unsigned char>(text[0]))));
    return keys;
}

std::string KeysText(const KeyCombination& keys) {
    return std::string(keys.control ? "Ctrl+" : "") + (keys.shift ? "Shift+" : "") + (keys.alt ? "Alt+" : "") +
           (keys.num0 ? "Num0+" : "") + keys.key;
}

std::optional<HeldKey> HeldKeyOf(const std::string& key) {
    constexpr std::pair<const char*, HeldKey> KEYS[] = {{"Num0", HeldKey::Num0},
                                                        {"Num2", HeldKey::Num2},
                                                        {"Num4", HeldKey::Num4},
                                                        {"Num6", HeldKey::Num6},
                                                        {"Num8", HeldKey::Num8}};
    for (const auto& [name, held] : KEYS)
        if (key == name)
            return held;
    return std::nullopt;
}
