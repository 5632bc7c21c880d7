#include "scene/Selection.h"

#include <algorithm>

Selection& Selection::operator=(const Selection& src) {
    if (this != &src) {
        ClearList();
        for (const int item : src.list)
            AddItem(item);
    }
    return *this;
}

void Selection::AddItem(int item) {
    if (TestItem(item) == -1)
        AddItemMulti(item);
}

void Selection::AddItemMulti(int item) {
    list.push_back(item);
    if (item_hash)
        Index(list.size() - 1);
    else if (list.size() > HASH_FROM)
        RebuildHash();
}

void Selection::RemoveItem(int item) {
    const int position = TestItem(item);
    if (position != -1)
        RemoveIndex(position);
}

void Selection::RemoveIndex(int position) {
    if (position < 0 || position >= GetItemCount())
        return;
    const auto removed = list.begin() + position;
    const int item = *removed;
    const bool indexed = TestItem(item) == position;
    list.erase(removed);
    if (!item_hash)
        return;
    if (indexed) {
        item_hash->Remove(static_cast<uint32_t>(item));
        const auto earlier = std::find(list.rend() - position, list.rend(), item);
        if (earlier != list.rend())
            Index(static_cast<size_t>(list.rend() - earlier) - 1);
    }
    for (size_t i = static_cast<size_t>(position); i < list.size(); ++i)
        Index(i);
}

int Selection::TestItem(int item) const {
    int position = -1;
    if (item_hash) {
        item_hash->Get(static_cast<uint32_t>(item), position);
        return position;
    }
    for (position = GetItemCount() - 1; position >= 0 && GetItem(position) != item; --position) {
    }
    return position;
}

void Selection::ClearList() {
    list.clear();
    item_hash.reset();
}

void Selection::Sort() {
    std::sort(list.begin(), list.end());
    RebuildHash();
}

void Selection::ReindexFrom(int value) {
    bool changed = false;
    for (int& item : list)
        if (item > value) {
            --item;
            changed = true;
        }
    if (changed)
        RebuildHash();
}

void Selection::Index(size_t position) {
    item_hash->Add(static_cast<uint32_t>(list[position]), static_cast<int>(position));
}

void Selection::RebuildHash() {
    if (list.size() <= HASH_FROM) {
        item_hash.reset();
        return;
    }
    if (item_hash)
        item_hash->Reset();
    else
        item_hash = std::make_unique<UHashTable<1024, int>>();
    for (size_t i = 0; i < list.size(); ++i)
        Index(i);
}
