#include "foundation/Settings.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string_view>
#include <sys/file.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include "foundation/AtomicFile.h"
#include "foundation/Desktop.h"
#include "foundation/Paths.h"
#include "foundation/Strings.h"
#include "foundation/WholeFile.h"

using nlohmann::json;

namespace {

constexpr const char* SETTINGS_FILE = "settings.json";
constexpr const char* DAMAGED_SUFFIX = ".damaged";
constexpr const char* LOCK_FILE = "settings.lock";
constexpr int LOCK_TRIES = 5000;
constexpr std::chrono::milliseconds LOCK_NAP{1};
constexpr const char* FOLDER_NAME = "marrowstead2000";
constexpr const char* BINARY_TAG = "binary"; // {"binary": "hex digits"}
constexpr const char* TEXT_TAG = "text";     // {"text": "hex digits"}: a text that is not valid UTF-8
constexpr int DEEPEST_NESTING = 64;          // of a settings file that we believe

std::mutex settings_mutex; // one change of the file at a time in this process

std::string SettingsPath() { return SettingsFolder() + "/" + SETTINGS_FILE; }

std::string ToHex(const void* data, size_t size) {
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string hex;
    hex.reserve(size * 2);
    const auto* bytes = static_cast<const unsigned char*>(data);
    for (size_t i = 0; i < size; ++i) {
        hex += DIGITS[bytes[i] >> 4];
        hex += DIGITS[bytes[i] & 15];
    }
    return hex;
}

std::optional<std::string> FromHex(std::string_view hex) {
    const auto digit = [](char c) { return c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1; };
    if (hex.size() % 2 != 0)
        return std::nullopt;
    std::string bytes;
    for (size_t i = 0; i < hex.size(); i += 2) {
        const int high = digit(hex[i]), low = digit(hex[i + 1]);
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes += static_cast<char>(high << 4 | low);
    }
    return bytes;
}

// Nothing when the text is not a JSON object of a believable depth.
std::optional<json> ParseSettings(const std::string& text) {
    bool too_deep = false;
    const auto check_depth = [&](int depth, json::parse_event_t, json&) {
        too_deep = too_deep || depth > DEEPEST_NESTING;
        return !too_deep;
    };
    json root = json::parse(text, check_depth, false);
    if (too_deep || !root.is_object())
        return std::nullopt;
    return root;
}

// What the file held when it was read last. Its descriptor stays open, so that no later file gets its number.
class CachedSettings {
public:
    CachedSettings() = default;
    CachedSettings(const CachedSettings&) = delete;
    CachedSettings& operator=(const CachedSettings&) = delete;
    ~CachedSettings() { Forget(); }

    void ReadAnew() { identity = {}; } // next time
    bool IsOf(const std::filesystem::path& path) const { return identity.Exists() && identity == IdentityOf(path); }
    void Take(const std::filesystem::path& path, json value) {
        Forget();
        std::string ignored;
        file = OpenRegularFile(path, ignored);
        struct stat status = {};
        if (file && fstat(fileno(file), &status) == 0)
            identity = IdentityOf(status);
        root = std::move(value);
        is_damaged = false;
    }
    void Forget() {
        if (file)
            std::fclose(file);
        file = nullptr;
        identity = {};
        root = json::object();
        is_damaged = false;
    }
    json root = json::object();
    bool is_damaged = false; // the file, which then counts as empty

private:
    std::FILE* file = nullptr;
    FileIdentity identity;
};
CachedSettings cached;

// Failures are told once each, and when nothing is locked: telling may read settings.
class Failure {
public:
    Failure() = default;
    Failure(const Failure&) = delete;
    Failure& operator=(const Failure&) = delete;
    ~Failure() {
        static std::mutex one_at_a_time;
        static std::set<std::string> told;
        if (sentence.empty())
            return;
        {
            const std::lock_guard lock(one_at_a_time);
            if (!told.insert(sentence).second)
                return;
        }
        GetDesktop().Notice(sentence);
    }
    std::string sentence;
};

// False when there is a file that cannot be read.
bool ReadSettings(const std::filesystem::path& path, Failure& failure) {
    cached.Forget();
    std::error_code error;
    if (!std::filesystem::exists(std::filesystem::symlink_status(path, error)))
        return true;
    std::string text, reason;
    const FileIdentity before = IdentityOf(path);
    if (!ReadWholeFile(path, text, reason)) {
        failure.sentence = "The settings \"" + path.string() + "\" cannot be read and are left alone: " + reason;
        return false;
    }
    std::optional<json> root = ParseSettings(text);
    cached.Take(path, root ? std::move(*root) : json::object());
    cached.is_damaged = !root;
    if (before != IdentityOf(path))
        cached.ReadAnew(); // it changed while it was read
    return true;
}

// The whole file; an empty object when there is none or it is damaged. Null when there is a file that cannot be read:
// it must not be replaced. Who is about to write has the lock, and keeps a damaged file aside.
json* LoadSettings(Failure& failure, bool is_locked) {
    const std::filesystem::path path = RealPath(SettingsPath());
    if (!cached.IsOf(path) && !ReadSettings(path, failure))
        return nullptr;
    if (cached.is_damaged && is_locked) {
        std::error_code error;
        std::filesystem::rename(path, path.string() + DAMAGED_SUFFIX, error);
        cached.Forget();
    }
    return &cached.root;
}

bool SaveSettings(json root, Failure& failure) {
    const std::string path = SettingsPath();
    const bool has_folder = MakeFolders(SettingsFolder());
    const std::string text = root.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
    AtomicFile file(path);
    if (has_folder && file.Write(text.data(), text.size()) && file.Commit()) {
        cached.Take(RealPath(path), std::move(root));
        return true;
    }
    failure.sentence = "The settings \"" + path + "\" cannot be written: " + file.GetError();
    return false;
}

// Between processes: who reads, changes and writes the file has it alone. Without a folder there is nothing to lock,
// and one who holds it very long is not waited for.
class SettingsLock {
public:
    SettingsLock() : in_process(settings_mutex) {
        MakeFolders(SettingsFolder());
        descriptor =
            open((SettingsFolder() + "/" + LOCK_FILE).c_str(), O_RDWR | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0600);
        for (int tries = 0; descriptor >= 0 && flock(descriptor, LOCK_EX | LOCK_NB) != 0 && tries < LOCK_TRIES; ++tries)
            std::this_thread::sleep_for(LOCK_NAP);
    }
    SettingsLock(const SettingsLock&) = delete;
    SettingsLock& operator=(const SettingsLock&) = delete;
    ~SettingsLock() {
        if (descriptor >= 0)
            close(descriptor);
    }

private:
    const std::lock_guard<std::mutex> in_process;
    int descriptor = -1;
};

// The member of an object by its name without regard to case, or null.
json* FindMember(json& object, std::string_view name) {
    for (auto member = object.begin(); member != object.end(); ++member)
        if (EqualNoCase(member.key(), name))
            return &member.value();
    return nullptr;
}

std::vector<std::string> SplitKey(std::string_view key_name) {
    std::vector<std::string> parts;
    for (size_t start = 0; start <= key_name.size();) {
        const size_t end = std::min(key_name.find('\\', start), key_name.size());
        if (end > start)
            parts.emplace_back(key_name.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

// The object of a key; null when it is missing and not to be created, or a value stands in its way.
json* FindKey(json& root, std::string_view key_name, bool create) {
    json* key = &root;
    for (const std::string& part : SplitKey(key_name)) {
        json* member = FindMember(*key, part);
        if (!member) {
            if (!create)
                return nullptr;
            member = &((*key)[part] = json::object());
        }
        if (!member->is_object())
            return nullptr;
        key = member;
    }
    return key;
}

// No value stands in the way of the key.
bool MayHaveKey(json& root, std::string_view key_name) {
    json* key = &root;
    for (const std::string& part : SplitKey(key_name)) {
        key = FindMember(*key, part);
        if (!key || !key->is_object())
            return !key;
    }
    return true;
}

bool SetValue(std::string_view key_name, const std::string& name, const json& value) {
    Failure failure;
    const SettingsLock lock;
    json* const present = LoadSettings(failure, true);
    if (!present)
        return false;
    json* key = FindKey(*present, key_name, false);
    const json* const stored = key ? FindMember(*key, name) : nullptr;
    if (stored && *stored == value)
        return true;
    json root = *present;
    key = FindKey(root, key_name, true);
    if (!key)
        return false;
    json* const member = FindMember(*key, name);
    (member ? *member : (*key)[name]) = value;
    return SaveSettings(std::move(root), failure);
}

struct Value {
    SettingType type = SettingType::None;
    std::string bytes; // as the caller of GetKeyValue gets them
};

std::optional<std::string> TaggedBytes(const json& value, const char* tag) {
    const auto member = value.find(tag);
    if (value.size() != 1 || member == value.end() || !member->is_string())
        return std::nullopt;
    return FromHex(member->get_ref<const std::string&>());
}

Value DecodeValue(const json& value) {
    if (value.is_number_integer() || value.is_boolean()) {
        const auto wide = value.is_boolean() ? int64_t{value.get<bool>()} : value.get<int64_t>();
        if (wide < std::numeric_limits<int32_t>::min() || wide > std::numeric_limits<uint32_t>::max())
            return {};
        const auto word = static_cast<int32_t>(wide);
        return {SettingType::Integer, std::string(reinterpret_cast<const char*>(&word), sizeof word)};
    }
    if (value.is_string())
        return {SettingType::Text, value.get<std::string>() + '\0'};
    if (value.is_object()) {
        if (auto text = TaggedBytes(value, TEXT_TAG))
            return {SettingType::Text, *text + '\0'};
        if (auto bytes = TaggedBytes(value, BINARY_TAG))
            return {SettingType::Binary, *bytes};
    }
    return {};
}

Value GetValue(std::string_view key_name, const std::string& name) {
    Failure failure;
    const std::lock_guard lock(settings_mutex);
    json* const root = LoadSettings(failure, false);
    json* key = root ? FindKey(*root, key_name, false) : nullptr;
    const json* member = key ? FindMember(*key, name) : nullptr;
    return member ? DecodeValue(*member) : Value{};
}

json EncodeText(const char* text) {
    const json value = std::string(text);
    try {
        value.dump(); // throws for a text that is not UTF-8
        return value;
    } catch (const json::exception&) {
        return json::object({{TEXT_TAG, ToHex(text, std::strlen(text))}});
    }
}

} // namespace

std::string SettingsFolder() {
    const auto variable = [](const char* name) {
        const char* value = std::getenv(name);
        return std::string(value ? value : "");
    };
    if (const std::string own = variable("MARROWSTEAD_CONFIG"); !own.empty())
        return own;
    if (const std::string config = variable("XDG_CONFIG_HOME"); !config.empty())
        return config + "/" + FOLDER_NAME;
    const std::string home = variable("HOME");
    return (home.empty() ? std::string(".") : home) + "/.config/" + FOLDER_NAME;
}

RegistryClass::~RegistryClass() { CloseKeyDirectory(); }

bool RegistryClass::OpenKeyDirectory(const std::string& key_name) {
    CloseKeyDirectory();
    Failure failure;
    const std::lock_guard lock(settings_mutex);
    json* const root = LoadSettings(failure, false);
    if (root && !MayHaveKey(*root, key_name))
        return false;
    open_key = key_name;
    key_is_open = true;
    return true;
}

void RegistryClass::CloseKeyDirectory() {
    open_key.clear();
    key_is_open = false;
}

bool RegistryClass::SetKeyValue(const std::string& name, const int* value) {
    return key_is_open && value && SetValue(open_key, name, *value);
}

bool RegistryClass::SetKeyValue(const std::string& name, const float* value) {
    return SetKeyValue(name, value, sizeof *value);
}

bool RegistryClass::SetKeyValue(const std::string& name, const char* value) {
    return key_is_open && value && SetValue(open_key, name, EncodeText(value));
}

bool RegistryClass::SetKeyValue(const std::string& name, const void* data, int size) {
    if (!key_is_open || size < 0 || (!data && size > 0))
        return false;
    return SetValue(open_key, name, json::object({{BINARY_TAG, ToHex(data, static_cast<size_t>(size))}}));
}

int RegistryClass::GetKeyValue(const std::string& name, void* value, int length, SettingType* key_type) const {
    if (!key_is_open || length < 0)
        return 0;
    const Value stored = GetValue(open_key, name);
    const size_t size = std::min(stored.bytes.size(), static_cast<size_t>(length));
    if (size > 0)
        std::memcpy(value, stored.bytes.data(), size);
    if (key_type)
        *key_type = stored.type;
    return static_cast<int>(size);
}

bool RegistryClass::DeleteKeyTree(const std::string& key_name) {
    Failure failure;
    const SettingsLock lock;
    const json* const present = LoadSettings(failure, true);
    std::vector<std::string> parts = SplitKey(key_name);
    if (!present || parts.empty())
        return false;
    json root = *present;
    json* parent = &root;
    for (size_t i = 0; parent && i + 1 < parts.size(); ++i)
        parent = FindKey(*parent, parts[i], false);
    if (!parent)
        return false;
    for (auto member = parent->begin(); member != parent->end(); ++member)
        if (EqualNoCase(member.key(), parts.back())) {
            parent->erase(member);
            return SaveSettings(std::move(root), failure);
        }
    return false;
}

bool RegistryClass::ChangeTexts(const std::string& key_name, const TextChange& change) {
    Failure failure;
    const SettingsLock lock;
    const json* const present = LoadSettings(failure, true);
    if (!present)
        return false;
    json root = *present;
    json* const key = FindKey(root, key_name, true);
    if (!key)
        return false;
    std::map<std::string, std::string> texts;
    for (const auto& [name, value] : key->items())
        if (const Value decoded = DecodeValue(value); decoded.type == SettingType::Text)
            texts[name] = decoded.bytes.c_str();
    const std::map<std::string, std::string> before = texts;
    change(texts);
    for (const auto& [name, text] : before)
        if (!texts.contains(name))
            key->erase(name);
    for (const auto& [name, text] : texts)
        if (const auto old = before.find(name); old == before.end() || old->second != text) {
            json* const member = FindMember(*key, name);
            (member ? *member : (*key)[name]) = EncodeText(text.c_str());
        }
    return texts == before || SaveSettings(std::move(root), failure);
}

int RegistryClass::GetInteger(const std::string& name, int fallback) const {
    int value = 0;
    SettingType type = SettingType::None;
    return GetKeyValue(name, &value, sizeof value, &type) == sizeof value && type == SettingType::Integer ? value
                                                                                                          : fallback;
}

std::string RegistryClass::GetText(const std::string& name, const std::string& fallback) const {
    const Value stored = key_is_open ? GetValue(open_key, name) : Value{};
    return stored.type == SettingType::Text ? stored.bytes.c_str() : fallback;
}
