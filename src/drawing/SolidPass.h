// Solid brushes, surface by surface. Surfaces that look alike and follow each other share a batch.
#pragma once

#include <memory>

#include "drawing/DrawContext.h"
#include "drawing/GeometryBatch.h"
#include "drawing/SolidLook.h"
#include "render/StateCache.h"

class World;

class SolidPass {
public:
    SolidPass(const World& scene, const DrawContext& draw_context);
    void Draw(const Brush& brush);
    void DrawDecals(const Brush& brush); // on a brush just drawn, with the masks that show which are selected

    void Flush() { batch.reset(); } // the next brush sets its state anew
    static void SetDepthState();    // of all solid brushes

private:
    GeometryBatch& Batch(const SolidLook& look); // in whose state it is drawn

    const World& world;
    const DrawContext& context;
    SolidOptions options;
    SolidLook current;
    std::vector<SolidSurface> found;      // of the last brush
    std::unique_ptr<GeometryBatch> batch; // null before the first
};
