#include "foundation/HashTable.h"
#include "foundation/SimpleList.h"
#include "foundation/StringList.h"
#include "foundation/WorkList.h"

#include <gtest/gtest.h>
#include <map>
#include <vector>

TEST(SimpleList, GrowsBySteps) {
    SimpleList<int> list;
    EXPECT_EQ(list.GetAllocSize(), 0);
    for (int i = 0; i < 33; ++i) {
        EXPECT_EQ(list.Add(i * 10), i);
        EXPECT_EQ(list.GetAllocSize(), i < 32 ? 32 : 64);
    }
    list.Reset();
    EXPECT_EQ(list.GetCount(), 0);
    EXPECT_EQ(list.GetAllocSize(), 64);
    SimpleList<int> copy = list;
    EXPECT_EQ(copy.Add(7), 0);
    EXPECT_EQ(copy.Get(0), 7);
}

TEST(SimpleList, BadIndicesAreHarmless) {
    SimpleList<int> list;
    for (int value : {4, 5, 4, 6})
        list.Add(value);
    for (const int index : {-1, list.GetCount()}) {
        list.Remove(index);
        list.Set(index, 99);
    }
    EXPECT_EQ(list.GetCount(), 4);
    EXPECT_EQ(list.Get(4), 4) << "the first item stands for an index out of range";
    EXPECT_EQ(list.Get(-1), 4);
    list.RemoveItem(4);
    list.RemoveItem(1000);
    EXPECT_EQ(std::vector<int>(list.begin(), list.end()), (std::vector<int>{5, 4, 6}));
    EXPECT_EQ(list.GetIndex(6), 2);
    EXPECT_EQ(list.GetIndex(7), -1);
}

TEST(WorkList, StepsByItsParameter) {
    WorkList<int, 8> list;
    EXPECT_EQ(list.Allocated(), 8);
    for (int i = 0; i < 9; ++i)
        list.Insert(i);
    EXPECT_EQ(list.Allocated(), 16);
    EXPECT_EQ(list.Size(), 9);
    EXPECT_EQ(list[8], 8);
}

TEST(HashTable, KeysOfOneBucketLiveTogether) {
    UHashTable<1023, int> table;
    int value = 0;
    uint32_t key = 0;
    EXPECT_FALSE(table.GetNext(key, value));
    EXPECT_FALSE(table.GetFirst(key, value));
    table.Add(5, 50);
    table.Add(1028, 60);
    table.Add(5, 51);
    ASSERT_TRUE(table.Get(5, value));
    EXPECT_EQ(value, 51);
    table.Remove(5);
    EXPECT_FALSE(table.Get(5, value));
    EXPECT_EQ(value, 51) << "an absent key leaves the value untouched";
    ASSERT_TRUE(table.Get(1028, value));
    EXPECT_EQ(value, 60);
    table.Add(4, 40);
    EXPECT_EQ(table.NodeCount(), 2u) << "the removed node is used again";
    table.ChangeKeyValue(4, 41);
    table.ChangeKeyValue(99, 1);
    EXPECT_TRUE(table.Get(4, value) && value == 41);
    EXPECT_FALSE(table.KeyExists(99));
}

TEST(HashTable, IteratesByBucketThenByInsertion) {
    UHashTable<7, int> table;
    for (uint32_t key : {20u, 6u, 7u, 13u, 0u, 0xFFFFFFFFu})
        table.Add(key, static_cast<int>(key));
    table.Add(6, 66);
    std::vector<uint32_t> keys;
    uint32_t key;
    int value;
    for (bool more = table.GetFirst(key, value); more; more = table.GetNext(key, value))
        keys.push_back(key);
    EXPECT_EQ(keys, (std::vector<uint32_t>{7, 0, 0xFFFFFFFF, 20, 6, 13})); // 0xFFFFFFFF % 7 is 3
    EXPECT_FALSE(table.GetNext(key, value));
}

TEST(HashTable, AgreesWithAMap) {
    UHashTable<255, uint32_t> table;
    std::map<uint32_t, uint32_t> map;
    uint32_t random = 1;
    for (int step = 0; step < 20000; ++step) {
        random = random * 1664525 + 1013904223;
        const uint32_t key = random >> 16 & 1023;
        if (random >> 30 == 0) {
            table.Remove(key);
            map.erase(key);
        } else {
            table.Add(key, random);
            map[key] = random;
        }
    }
    size_t count = 0;
    uint32_t key, value;
    for (bool more = table.GetFirst(key, value); more; more = table.GetNext(key, value), ++count)
        EXPECT_EQ(map.at(key), value);
    EXPECT_EQ(count, map.size());
}

TEST(StringList, EqualStringsAndSorting) {
    StringListClass unique(false, false);
    EXPECT_EQ(unique.AddString("BrushData"), 0);
    EXPECT_EQ(unique.AddString("MapInfo"), 1);
    EXPECT_EQ(unique.AddString("brushDATA"), 0);
    EXPECT_EQ(unique.GetStringCount(), 2);
    EXPECT_STREQ(unique.GetString(0), "BrushData");

    StringListClass sorted(true, true);
    EXPECT_EQ(sorted.AddString("m"), 0);
    EXPECT_EQ(sorted.AddString("z"), 1);
    EXPECT_EQ(sorted.AddString("B"), 0);
    EXPECT_EQ(sorted.FindString("Z"), 2);
    EXPECT_EQ(sorted.FindString("a"), -1);
    EXPECT_EQ(sorted.FindString("n"), -1);

    StringListClass switched;
    switched.AddString("b");
    switched.AddString("a");
    switched.SetListSorting(true);
    EXPECT_STREQ(switched.GetString(0), "b") << "switching on only sets the flag";
    EXPECT_EQ(switched.AddString("c"), 2);
    EXPECT_STREQ(switched.GetString(0), "a");
    switched.ChangeString(0, "x");
    switched.SetListSorting(false);
    EXPECT_STREQ(switched.GetString(2), "x");
}

TEST(StringList, IndicesOutOfRange) {
    StringListClass list;
    list.AddString("one");
    EXPECT_EQ(list.GetString(-1), nullptr);
    EXPECT_EQ(list.GetString(1), nullptr);
    EXPECT_EQ(list.GetStringLength(-1), -1);
    EXPECT_EQ(list.GetStringLength(0), 3);
    list.ChangeString(2, "ignored");
    list.ChangeString(1, "two");
    list.RemoveString(5);
    EXPECT_EQ(list.GetStringCount(), 2);
    list.RemoveString(0);
    EXPECT_STREQ(list.GetString(0), "two");
}

TEST(StringList, HashOfTheFirstTenCharacters) {
    EXPECT_EQ(StringListClass::HashValue(nullptr), 0u);
    EXPECT_EQ(StringListClass::HashValue(""), 0u);
    EXPECT_EQ(StringListClass::HashValue("a"), 65u);
    EXPECT_EQ(StringListClass::HashValue("ab"), 66u + ((65u * 8) ^ 65u)); // 66 + 585
    EXPECT_EQ(StringListClass::HashValue("0123456789x"), StringListClass::HashValue("0123456789y"));
    EXPECT_EQ(StringListClass::HashValue("\xE9"), 0xFFFFFFE9u) << "a byte above 127 is signed";
}
