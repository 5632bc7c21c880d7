// A chained hash table from a 32-bit key to an item, with N buckets and one iteration cursor.
// Items come in bucket order, within a bucket in order of insertion. Removed nodes are used again.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>

template <uint32_t N, class T>
class UHashTable {
public:
    UHashTable() = default;
    UHashTable(const UHashTable&) = delete;
    UHashTable& operator=(const UHashTable&) = delete;

    void Reset() {
        hash_table.fill(nullptr);
        free_hash_item = nullptr;
        nodes.clear();
    }
    // Replaces the item of a key that is already there.
    void Add(uint32_t key, T item) {
        HashTableItem** link = &hash_table[key % N];
        for (; *link; link = &(*link)->next)
            if ((*link)->key == key) {
                (*link)->item = item;
                return;
            }
        HashTableItem* node = free_hash_item;
        if (node)
            free_hash_item = node->next;
        else
            node = &nodes.emplace_back();
        *node = {item, key, nullptr};
        *link = node;
    }
    void Remove(uint32_t key) {
        for (HashTableItem** link = &hash_table[key % N]; *link; link = &(*link)->next)
            if ((*link)->key == key) {
                HashTableItem* node = *link;
                *link = node->next;
                node->next = free_hash_item;
                free_hash_item = node;
                return;
            }
    }
    // True with the item in ret_val; false leaves ret_val untouched.
    bool Get(uint32_t key, T& ret_val) const {
        const HashTableItem* node = Find(key);
        if (node)
            ret_val = node->item;
        return node != nullptr;
    }
    bool KeyExists(uint32_t key) const { return Find(key) != nullptr; }
    void ChangeKeyValue(uint32_t key, T new_val) {
        if (const HashTableItem* node = Find(key))
            const_cast<HashTableItem*>(node)->item = new_val;
    }
    bool GetFirst(uint32_t& key, T& ret_val) {
        cur_item = nullptr;
        cur_index = 0;
        return Advance(0, key, ret_val);
    }
    // False at the end; the cursor then stays where it was.
    bool GetNext(uint32_t& key, T& ret_val) {
        if (!cur_item)
            return false;
        if (cur_item->next) {
            cur_item = cur_item->next;
            return Deliver(key, ret_val);
        }
        return Advance(cur_index + 1, key, ret_val);
    }
    // Nodes ever allocated: removed ones are used again before this grows.
    size_t NodeCount() const { return nodes.size(); }

private:
    struct HashTableItem {
        T item{};
        uint32_t key = 0;
        HashTableItem* next = nullptr;
    };

    const HashTableItem* Find(uint32_t key) const {
        const HashTableItem* node = hash_table[key % N];
        while (node && node->key != key)
            node = node->next;
        return node;
    }
    bool Deliver(uint32_t& key, T& ret_val) const {
        key = cur_item->key;
        ret_val = cur_item->item;
        return true;
    }
    bool Advance(uint32_t from, uint32_t& key, T& ret_val) {
        for (uint32_t index = from; index < N; ++index)
            if (hash_table[index]) {
                cur_index = index;
                cur_item = hash_table[index];
                return Deliver(key, ret_val);
            }
        return false;
    }

    std::array<HashTableItem*, N> hash_table{};
    HashTableItem* free_hash_item = nullptr;
    HashTableItem* cur_item = nullptr;
    uint32_t cur_index = 0;
    std::deque<HashTableItem> nodes; // owns every node; a deque keeps their addresses
};
