// A list of owned strings, compared without regard to case.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class StringListClass {
public:
    // samestrings: equal strings allowed; sortstrings: the list is kept sorted.
    explicit StringListClass(bool samestrings = true, bool sortstrings = false)
        : flag_samestrings(samestrings), flag_sortstrings(sortstrings) {}
    virtual ~StringListClass() = default;

    // The string's index: after sorting where it then stands, or that of an equal string where none may be equal.
    int AddString(std::string_view text);
    int FindString(std::string_view text) const; // -1 if absent
    const char* GetString(int index) const;      // null for an index out of range
    int GetStringCount() const { return static_cast<int>(string_list.size()); }
    int GetStringLength(int index) const; // -1 for an index out of range
    // index equal to the count adds; the list is not sorted again.
    void ChangeString(int index, std::string_view text);
    void RemoveString(int index);
    void ResetList() { string_list.clear(); }
    void SortList();
    void SetListSorting(bool state); // switching off sorts one last time
    void SetStringsDuplicity(bool state) { flag_samestrings = state; }

    static uint32_t HashValue(const char* text); // of at most the first 10 characters, without regard to case

private:
    std::vector<std::string> string_list;
    bool flag_samestrings;
    bool flag_sortstrings;
};
