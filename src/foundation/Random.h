// The MT19937 generator of Matsumoto and Nishimura, in its published form of 1997 with the multiplicative seeding.
#pragma once

#include <cstdint>

class RandomMT {
public:
    void seedMT(uint32_t seed);
    uint32_t reloadMT(); // regenerates the state and returns its first word
    uint32_t randomMT(); // the next word; the first one seeds from 4357

private:
    uint32_t state[624] = {};
    uint32_t next = 0; // index of the word drawn next
    int left = -1;     // words left before a reload; below -1 when it was never seeded
};

// The generator of this run.
extern RandomMT random_mt;
