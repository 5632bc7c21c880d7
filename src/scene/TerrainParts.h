// What the code of terrains shares.
#pragma once

#include <cstdint>

#include "scene/Brush.h"

// How often the wanted distance between two vertices fits into a side of a segment.
int TerrainCells(float side, int detail);

inline bool IsTerrain(const Brush& b) { return b.type == BT_TERRAIN && b.IsTerrainGrid(); }

// First and last row, first and last column, in index order: fn(column, row) until it says true. True if it did.
template <class Fn>
bool FindBorderVertex(const SIZE& size, Fn&& fn) {
    for (int32_t y = 0; y < size.cy; ++y) {
        const bool whole_row = y == 0 || y + 1 == size.cy || size.cx == 1;
        for (int32_t x = 0; x < size.cx; x += whole_row ? 1 : size.cx - 1)
            if (fn(x, y))
                return true;
    }
    return false;
}

// The ground is looked for from this height straight down.
inline constexpr float TERRAIN_SKY = 1000000.0f, TERRAIN_REACH = 10000000.0f;
// True if the brush lies below the place, nearer to the sky than `depth`, which follows it.
inline bool FindGround(const Brush& b, float x, float z, float& depth) {
    return b.TestSolidSelection({x, TERRAIN_SKY, z}, {0, -1, 0}, depth);
}
