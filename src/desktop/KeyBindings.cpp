#include "desktop/KeyBindings.h"

#include <algorithm>
#include <sstream>

#include "commands/Accelerator.h"
#include "foundation/Settings.h"

namespace {

std::string KeysSettings() { return std::string(SETTINGS_KEY) + "\\Keys"; }

std::string SettingOf(const Command& command) { return std::string(command.owner) + "::" + command.name; }

std::string Spelled(std::string_view keys) {
    const std::optional<KeyCombination> combination = ParseKeys(keys);
    return combination ? KeysText(*combination) : std::string();
}

std::vector<std::string> SplitKeys(const std::string& text) {
    std::vector<std::string> keys;
    std::istringstream stream(text);
    for (std::string word; stream >> word;)
        if (std::string key = Spelled(word); !key.empty())
            keys.push_back(std::move(key));
    return keys;
}

std::string Joined(const std::vector<std::string>& keys, const char* separator) {
    std::string text;
    for (const std::string& key : keys)
        text += (text.empty() ? "" : separator) + key;
    return text;
}

constexpr const char* NO_KEYS = "-"; // stored for a command that has lost its keys

} // namespace

KeyBindings::KeyBindings() { ResetAll(); }

void KeyBindings::ResetAll() {
    keys_of.clear();
    command_of.clear();
    for (const Command& command : CommandTable())
        Set(command, SplitKeys(command.keys));
}

void KeyBindings::Load() {
    RegistryClass store;
    if (!store.OpenKeyDirectory(KeysSettings()))
        return;
    for (const Command& command : CommandTable()) {
        const std::string text = store.GetText(SettingOf(command), "");
        if (!text.empty())
            Set(command, text == NO_KEYS ? std::vector<std::string>() : SplitKeys(text));
    }
    stored = Texts();
}

std::map<std::string, std::string> KeyBindings::Texts() const {
    std::map<std::string, std::string> texts;
    for (const Command& command : CommandTable())
        if (!IsDefault(command))
            texts[SettingOf(command)] = KeysOf(command).empty() ? NO_KEYS : Joined(KeysOf(command), " ");
    return texts;
}

bool KeyBindings::Store() {
    std::map<std::string, std::string> own = Texts();
    const bool written = RegistryClass::ChangeTexts(KeysSettings(), [&](std::map<std::string, std::string>& texts) {
        for (const auto& [name, text] : stored)
            if (!own.contains(name))
                texts.erase(name);
        for (const auto& [name, text] : own)
            if (const auto old = stored.find(name); old == stored.end() || old->second != text)
                texts[name] = text;
    });
    if (written)
        stored = std::move(own);
    return written;
}

const std::vector<std::string>& KeyBindings::KeysOf(const Command& command) const {
    static const std::vector<std::string> none;
    const auto found = keys_of.find(&command);
    return found == keys_of.end() ? none : found->second;
}

std::string KeyBindings::Text(const Command& command) const { return Joined(KeysOf(command), ", "); }

const Command* KeyBindings::Find(std::string_view keys) const {
    const auto found = command_of.find(Spelled(keys));
    return found == command_of.end() ? nullptr : found->second;
}

bool KeyBindings::IsTaken(std::string_view keys) const { return Spelled(keys) == Spelled(PALETTE_KEYS); }

bool KeyBindings::IsDefault(const Command& command) const { return KeysOf(command) == SplitKeys(command.keys); }

void KeyBindings::Set(const Command& command, const std::vector<std::string>& keys) {
    for (const std::string& old : keys_of[&command])
        command_of.erase(old);
    std::vector<std::string> taken;
    for (const std::string& written : keys) {
        const std::string key = Spelled(written);
        if (key.empty() || IsTaken(key) || std::find(taken.begin(), taken.end(), key) != taken.end())
            continue;
        if (const auto other = command_of.find(key); other != command_of.end())
            std::erase(keys_of[other->second], key);
        command_of[key] = &command;
        taken.push_back(key);
    }
    keys_of[&command] = std::move(taken);
}

void KeyBindings::Reset(const Command& command) { Set(command, SplitKeys(command.keys)); }
