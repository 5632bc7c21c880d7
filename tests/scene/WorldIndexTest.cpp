// The table index of an object, which the threads of a compile ask for at the same time.
#include <gtest/gtest.h>

#include <atomic>

#include "foundation/Parallel.h"
#include "scene/World.h"

TEST(WorldIndex, ManyThreadsLearnThePlacesTogether) {
    constexpr int OBJECTS = 500, ROUNDS = 20, THREADS = 8;
    for (int round = 0; round < ROUNDS; ++round) {
        World world;
        for (int i = 0; i < OBJECTS; ++i) {
            world.AddEntity(std::make_unique<Entity>());
            world.AddBrush(std::make_unique<Brush>());
        }
        std::atomic<int> wrong = 0;
        ParallelFor(THREADS, THREADS, [&](int, int thread) {
            for (int i = thread; i < OBJECTS; ++i) {
                const auto place = static_cast<size_t>(i);
                wrong += world.GetEntityIndex(world.entity[place].get()) != i;
                wrong += world.GetBrushIndex(world.brush[place].get()) != i;
            }
        });
        EXPECT_EQ(wrong, 0);
    }
}
