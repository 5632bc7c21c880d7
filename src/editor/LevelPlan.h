// A plan of a compiled world from above: each cell in a colour of its own, portals in white, eyes as dots.
#pragma once

#include <cstdint>
#include <vector>

#include "persistence/WorldFile.h"

struct PlanPicture {
    int width = 0, height = 0;
    std::vector<uint8_t> rgb; // rows from the top: north (+z) is up, east (+x) right
};

PlanPicture DrawLevelPlan(const WorldFile& world, int longest_side = 1400);
// A colour for a number that stands apart from its neighbours' colours: 0xRRGGBB.
uint32_t DistinctColor(int number);
