// Named, typed values under one key, kept in one readable file in the user's configuration folder. Several processes
// may change it: each change is of single values, of the file as it then is. What cannot be read or written is told
// once.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

// The key of all settings of this program.
inline constexpr const char* SETTINGS_KEY = "Software\\Tallowen\\Marrowstead";

enum class SettingType { None, Integer, Text, Binary };

// The folder of the settings file: MARROWSTEAD_CONFIG, or the desktop's convention for this user.
std::string SettingsFolder();

class RegistryClass {
public:
    RegistryClass() = default;
    RegistryClass(const RegistryClass&) = delete;
    RegistryClass& operator=(const RegistryClass&) = delete;
    virtual ~RegistryClass();

    // Closes an open key, then opens or creates this one. A file that cannot be read opens as an empty key.
    bool OpenKeyDirectory(const std::string& key_name);
    void CloseKeyDirectory();

    // All return false when no key is open or the file could not be replaced.
    bool SetKeyValue(const std::string& name, const int* value);
    bool SetKeyValue(const std::string& name, const float* value); // 4 bytes, binary
    bool SetKeyValue(const std::string& name, const char* value);  // a text with its terminator
    bool SetKeyValue(const std::string& name, const void* data, int size);
    // Reads at most length bytes; returns the number read, 0 on failure. key_type may be null.
    int GetKeyValue(const std::string& name, void* value, int length, SettingType* key_type = nullptr) const;
    // All texts of a key by their names, to be changed as they then are, in one step and one write. Those that `change`
    // takes out go. It may not touch settings.
    using TextChange = std::function<void(std::map<std::string, std::string>& texts)>;
    static bool ChangeTexts(const std::string& key_name, const TextChange& change);
    // The key and all below it.
    bool DeleteKeyTree(const std::string& key_name);

    // A 32-bit value, or fallback when absent or of another type.
    int GetInteger(const std::string& name, int fallback) const;
    bool GetFlag(const std::string& name, bool fallback) const { return GetInteger(name, fallback) != 0; }
    std::string GetText(const std::string& name, const std::string& fallback) const;

private:
    std::string open_key;
    bool key_is_open = false;
};
