// The lighting stage as a whole: from brushes with geometry to pages of lightmaps.
#pragma once

#include <string>

#include "compiler/Compile.h"
#include "compiler/WorldSubdivide.h"

// Written when the pages stand; Stopped and LimitExceeded leave the world without lightmaps. Brushes always end at the
// world's curve detail.
CompileResult CalculateLightmaps(WorldSubdivide& ws, CompileProgress& progress, std::string& message);
// Curve detail of all brushes, on all threads; returns once all are done.
void SetCurveDetail(World& world, int detail, int threads);
