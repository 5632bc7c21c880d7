// A growing array of plain items. A bad index is ignored or answered with a fixed result. Pointees are not owned.
#pragma once

#include <algorithm>
#include <vector>

template <class T>
class SimpleList {
public:
    static constexpr int STEP = 32; // the capacity grows by this many items

    void Reset() { items.clear(); } // keeps the storage
    // Returns the index of the new item.
    int Add(T item) {
        if (alloc_size < GetCount() + 1)
            alloc_size += STEP;
        items.push_back(item);
        return GetCount() - 1;
    }
    int GetCount() const { return static_cast<int>(items.size()); }
    int GetAllocSize() const { return alloc_size; }
    void Remove(int index) {
        if (InRange(index))
            items.erase(items.begin() + index);
    }
    // The first item for an index out of range. An empty list must not be asked.
    T Get(int index) const { return InRange(index) ? items[static_cast<size_t>(index)] : items.front(); }
    void Set(int index, T item) {
        if (InRange(index))
            items[static_cast<size_t>(index)] = item;
    }
    void RemoveItem(T item) { Remove(GetIndex(item)); }
    int GetIndex(T item) const {
        const auto found = std::find(items.begin(), items.end(), item);
        return found == items.end() ? -1 : static_cast<int>(found - items.begin());
    }
    T* GetListPtr() { return items.data(); }
    const T* GetListPtr() const { return items.data(); }

    auto begin() const { return items.begin(); }
    auto end() const { return items.end(); }

private:
    bool InRange(int index) const { return index >= 0 && index < GetCount(); }

    std::vector<T> items;
    int alloc_size = 0;
};
