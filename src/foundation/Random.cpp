#include "foundation/Random.h"

namespace {

// M. Matsumoto and T. Nishimura, "Mersenne Twister", ACM TOMACS 8 (1998).
constexpr uint32_t STATE_WORDS = 624, SHIFT_WORDS = 397;
constexpr uint32_t MATRIX = 0x9908B0DF, UPPER_BIT = 0x80000000;
constexpr uint32_t TEMPER_B = 0x9D2C5680, TEMPER_C = 0xEFC60000;
constexpr uint32_t SEED_FACTOR = 69069, DEFAULT_SEED = 4357;

uint32_t Temper(uint32_t word) {
    word ^= word >> 11;
    word ^= word << 7 & TEMPER_B;
    word ^= word << 15 & TEMPER_C;
    return word ^ word >> 18;
}

} // namespace

RandomMT random_mt;

void RandomMT::seedMT(uint32_t seed) {
    state[0] = seed | 1;
    for (uint32_t j = 1; j < STATE_WORDS; ++j)
        state[j] = state[j - 1] * SEED_FACTOR;
    left = 0;
}

uint32_t RandomMT::reloadMT() {
    if (left < -1)
        seedMT(DEFAULT_SEED);
    for (uint32_t j = 0; j < STATE_WORDS; ++j) {
        const uint32_t following = state[(j + 1) % STATE_WORDS];
        const uint32_t mixed = (state[j] & UPPER_BIT) | (following & ~UPPER_BIT);
        state[j] = state[(j + SHIFT_WORDS) % STATE_WORDS] ^ mixed >> 1 ^ (following & 1 ? MATRIX : 0);
    }
    left = STATE_WORDS - 1;
    next = 1;
    return Temper(state[0]);
}

uint32_t RandomMT::randomMT() { return --left < 0 ? reloadMT() : Temper(state[next++]); }
