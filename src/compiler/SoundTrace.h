// Sound paths: for each pair of cells the shortest way through the portals that join them.
#pragma once

#include <cstdint>
#include <vector>

#include "compiler/StageRunner.h"
#include "compiler/WorldSubdivide.h"

inline constexpr int MAX_SOUND_PORTALS = 255;

// Entries for a number of portals: pair (a, b), a above b, stands at a * (a - 1) / 2 + b.
int SoundTraceCount(int portal_count);

// Fills the table on all threads. The entries do not depend on their number. False after a stop.
bool CountSoundData(const WorldSubdivide& ws, std::vector<SoundTraceData>& data, CompileProgress& progress);
