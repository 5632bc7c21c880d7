// Solid brushes, surface by surface. Surfaces that look alike and follow each other share a batch.
#pragma once

#include <memory>

#include "drawing/DrawContext.h"
#include "drawing/GeometryBatch.h"
#include "render/StateCache.h"

class World;

class SolidPass {
public:
    SolidPass(const World& scene, const DrawContext& draw_context);
    void Draw(const Brush& brush);

private:
    enum Kind { BARE, MARKED, TEXTURED, DARK, LIGHTMAPPED, BORDER };
    struct Look {
        Kind kind = BARE;
        bool blended = false;
        uint32_t texture = NO_TEXTURE_HANDLE, lightmap = NO_TEXTURE_HANDLE;
        bool operator==(const Look&) const = default;
    };

    GeometryBatch& Batch(const Look& look); // in whose state it is drawn
    static void SetState(const Look& look);
    Look PlainLook(const Surface& surface) const;
    void DrawMarked(const Brush& brush);
    void DrawPlain(const Surface& surface, const Look& look, const uint32_t* fixed_color,
                   const std::vector<uint32_t>& colors);
    void DrawLightmapped(const Surface& surface);
    void DrawBorder(const Surface& surface);

    const World& world;
    const DrawContext& context;
    Look current;
    std::unique_ptr<GeometryBatch> batch; // null before the first
};
