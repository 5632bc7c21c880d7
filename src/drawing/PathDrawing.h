// The paths of movies as lines.
#pragma once

#include "drawing/DrawContext.h"
#include "drawing/GeometryBatch.h"
#include "foundation/SimpleList.h"

class BaseObject;
class World;

// One list of points. Gives the place on it at the context's anim_time, the first point if it has no other.
D3DVECTOR AddPath(LineBatch& lines, const DrawContext& context, SimpleList<uint32_t>& path, uint32_t color);
// Both lists of an object, and a line between the two places.
void AddObjectPaths(LineBatch& lines, const DrawContext& context, BaseObject& object);
