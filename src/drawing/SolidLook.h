// How the surfaces of solid brushes look: in which state and colours each is drawn.
#pragma once

#include <compare>
#include <cstdint>
#include <vector>

#include "drawing/DrawContext.h"
#include "scene/Brush.h"

class World;

enum class SolidKind : uint8_t { Bare, Marked, Textured, Dark, Lightmapped, Border, Tint };

// The colour is that of the vertices, and no texture is asked.
constexpr bool HasOwnColor(SolidKind kind) { return kind == SolidKind::Marked || kind == SolidKind::Tint; }

// What surfaces must share to be drawn together.
struct SolidKey {
    SolidKind kind = SolidKind::Bare;
    int32_t row = 0, page = 0; // of the material table; lightmap page
    auto operator<=>(const SolidKey&) const = default;
};

// What a key comes to with the tables as they are now.
struct SolidLook {
    SolidKind kind = SolidKind::Bare;
    bool blended = false;
    uint32_t texture = NO_TEXTURE_HANDLE, lightmap = NO_TEXTURE_HANDLE;
    bool operator==(const SolidLook&) const = default;
};

SolidLook LookOf(const SolidKey& key, const World& world, const DrawContext& context);
void SetSolidState(const SolidLook& look);

struct SolidOptions {
    bool lightmaps = false, mask = false, border = false, outline = false, shade_bare = false;
    bool operator==(const SolidOptions&) const = default;
};
SolidOptions OptionsOf(const World& world, const DrawContext& context);

// One drawing of a surface.
struct SolidSurface {
    const Surface* surface = nullptr;
    SolidKey key;
    bool one_color = false;
    uint32_t color = 0;                            // if it is one
    const std::vector<uint32_t>* colors = nullptr; // else of the vertices; a damaged surface may hold fewer

    uint32_t ColorAt(size_t i) const { return one_color ? color : i < colors->size() ? (*colors)[i] : 0; }
    UVVector UVAt(size_t i) const { return i < surface->uv.size() ? surface->uv[i] : UVVector{}; }
    UVVector LightmapUVAt(size_t i) const; // on the page
};

// The drawings of a brush in their order.
void FindSolidSurfaces(const Brush& brush, const SolidOptions& options, std::vector<SolidSurface>& found);
