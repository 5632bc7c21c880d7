#include "foundation/StringList.h"

#include <algorithm>

#include "foundation/Strings.h"

int StringListClass::AddString(std::string_view text) {
    if (!flag_samestrings) {
        const int present = FindString(text);
        if (present >= 0)
            return present;
    }
    if (!flag_sortstrings) {
        string_list.emplace_back(text);
        return GetStringCount() - 1;
    }
    SortList(); // sorting may have been switched on with strings already there
    const auto place = std::upper_bound(string_list.begin(), string_list.end(), text,
                                        [](std::string_view a, std::string_view b) { return CompareNoCase(a, b) < 0; });
    const auto added = string_list.emplace(place, text);
    return static_cast<int>(added - string_list.begin());
}

int StringListClass::FindString(std::string_view text) const {
    for (size_t i = 0; i < string_list.size(); ++i) {
        const int order = CompareNoCase(string_list[i], text);
        if (order == 0)
            return static_cast<int>(i);
        if (flag_sortstrings && order > 0)
            return -1;
    }
    return -1;
}

const char* StringListClass::GetString(int index) const {
    return index >= 0 && index < GetStringCount() ? string_list[static_cast<size_t>(index)].c_str() : nullptr;
}

int StringListClass::GetStringLength(int index) const {
    return index >= 0 && index < GetStringCount() ? static_cast<int>(string_list[static_cast<size_t>(index)].size())
                                                  : -1;
}

void StringListClass::ChangeString(int index, std::string_view text) {
    if (index < 0 || index > GetStringCount())
        return;
    if (index == GetStringCount())
        AddString(text);
    else
        string_list[static_cast<size_t>(index)] = std::string(text);
}

void StringListClass::RemoveString(int index) {
    if (index >= 0 && index < GetStringCount())
        string_list.erase(string_list.begin() + index);
}

void StringListClass::SortList() {
    const auto before = [](const std::string& a, const std::string& b) { return CompareNoCase(a, b) < 0; };
    if (!std::is_sorted(string_list.begin(), string_list.end(), before))
        std::stable_sort(string_list.begin(), string_list.end(), before);
}

void StringListClass::SetListSorting(bool state) {
    if (flag_sortstrings && !state)
        SortList();
    flag_sortstrings = state;
}

uint32_t StringListClass::HashValue(const char* text) {
    constexpr int HASHED_CHARACTERS = 10;
    uint32_t hash = 0;
    for (int i = 0; text && i < HASHED_CHARACTERS && text[i]; ++i) {
        // Only ASCII letters fold; other bytes keep their sign.
        const int c = text[i] >= 'a' && text[i] <= 'z' ? text[i] - 'a' + 'A' : static_cast<signed char>(text[i]);
        hash = static_cast<uint32_t>(c) + (hash * 8 ^ hash);
    }
    return hash;
}
