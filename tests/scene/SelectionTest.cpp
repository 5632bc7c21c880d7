#include <algorithm>

#include <gtest/gtest.h>

#include "foundation/Random.h"
#include "scene/Scenes.h"

namespace {

// The position of the last occurrence.
int Find(const std::vector<int>& list, int item) {
    const auto found = std::find(list.rbegin(), list.rend(), item);
    return static_cast<int>(list.rend() - found) - 1;
}

TEST(Selection, FollowsAPlainListThroughRandomOperations) {
    for (const int values : {8, 60, 5000}) { // short lists are searched, long ones hashed
        RandomMT random;
        random.seedMT(static_cast<uint32_t>(values));
        Selection selection;
        std::vector<int> list;
        for (int step = 0; step < 1500; ++step) {
            const int item = static_cast<int>(random.randomMT() % static_cast<uint32_t>(values)) - 1;
            const int position = Find(list, item);
            const uint32_t operation = random.randomMT() % 64;
            if (operation < 40) {
                selection.AddItem(item);
                if (position == -1)
                    list.push_back(item);
            } else if (operation < 44) {
                selection.AddItemMulti(item);
                list.push_back(item);
            } else if (operation < 56) {
                selection.RemoveItem(item);
                if (position != -1)
                    list.erase(list.begin() + position);
            } else if (operation < 60 && !list.empty()) {
                const int at = static_cast<int>(random.randomMT() % list.size());
                selection.RemoveIndex(at);
                list.erase(list.begin() + at);
            } else if (operation == 60) {
                selection.ReindexFrom(item);
                for (int& i : list)
                    i -= i > item;
            } else if (operation == 61 && step % 10 == 0) {
                selection.Sort();
                std::sort(list.begin(), list.end());
            } else if (operation == 62 && step % 50 == 0) {
                selection.ClearList();
                list.clear();
            }
            ASSERT_EQ(Items(selection), list) << values << ' ' << step;
            for (int probe = -1; probe < values; probe += std::max(1, values / 16))
                ASSERT_EQ(selection.TestItem(probe), Find(list, probe)) << values << ' ' << step << ' ' << probe;
        }
    }
}

TEST(Selection, ACopyHoldsEachItemOnceAndMovingKeepsTheIndex) {
    Selection source;
    for (int i = 0; i < 40; ++i)
        source.AddItemMulti(i % 30);
    EXPECT_EQ(source.TestItem(3), 33);
    Selection copy(source);
    EXPECT_EQ(copy.GetItemCount(), 30);
    EXPECT_EQ(copy.TestItem(3), 3);
    copy = *&copy; // assigning to itself changes nothing
    EXPECT_EQ(copy.GetItemCount(), 30);
    const Selection moved(std::move(copy));
    EXPECT_EQ(moved.TestItem(29), 29);
    EXPECT_EQ(moved.TestItem(30), -1);
}

} // namespace
