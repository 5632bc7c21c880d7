// An ordered list of integers with an index by value. Nearly always the integers are array indices of brushes, entities
// or groups, and they follow those arrays' compaction.
#pragma once

#include <memory>
#include <vector>

#include "foundation/HashTable.h"

class Selection {
public:
    Selection() = default;
    Selection(const Selection& src) { *this = src; }
    Selection& operator=(const Selection& src);
    Selection(Selection&&) noexcept = default;
    Selection& operator=(Selection&&) noexcept = default;
    virtual ~Selection() = default;

    void AddItem(int item);      // no effect if present
    void AddItemMulti(int item); // without testing: a value can then occur twice, the index names the last
    void RemoveItem(int item);
    void RemoveIndex(int position);
    int GetItem(int position) const { return list[static_cast<size_t>(position)]; } // unchecked
    int GetItemCount() const { return static_cast<int>(list.size()); }
    const int* GetListPtr() const { return list.data(); }
    int TestItem(int item) const; // the position, or -1
    void ClearList();
    void Sort();                 // ascending
    void ReindexFrom(int value); // lowers every item above value by one: array element `value` has gone

    auto begin() const { return list.begin(); }
    auto end() const { return list.end(); }

private:
    // Short lists are searched; the table exists only above this length. There may be tens of thousands of selections.
    static constexpr size_t HASH_FROM = 16;
    void Index(size_t position);
    void RebuildHash();

    std::vector<int> list;
    std::unique_ptr<UHashTable<1024, int>> item_hash; // value to position
};
