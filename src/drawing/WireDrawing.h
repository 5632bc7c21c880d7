// The wire of brushes, many in one batch.
#pragma once

#include "drawing/GeometryBatch.h"

class Brush;

void AddWire(LineBatch& lines, const Brush& brush, uint32_t color);
uint32_t WireColor(const Brush& brush);
