// A level of 10,000 boxes, 60,000 surfaces, and views of it, for what measures its drawing.
#pragma once

#include <benchmark/benchmark.h>

#include "drawing/DrawContext.h"
#include "drawing/DrawingScope.h"
#include "render/Frame.h"
#include "render/StateCache.h"
#include "scene/World.h"

namespace big_level {

inline constexpr int COLUMNS = 25, ROWS = 25, STOREYS = 16;
inline constexpr float SPACING = 64, SIDE = 48;

struct Level {
    World world;

    Level() {
        for (int z = 0; z < ROWS; ++z)
            for (int y = 0; y < STOREYS; ++y)
                for (int x = 0; x < COLUMNS; ++x)
                    AddBox({static_cast<float>(x) * SPACING, static_cast<float>(y) * SPACING,
                            static_cast<float>(z) * SPACING},
                           x + y + z);
    }
    void AddBox(const D3DVECTOR& min, int shade) {
        BrushShape shape;
        shape.bb = MakeBox(min, min + D3DVECTOR{SIDE, SIDE, SIDE});
        shape.pivot = min + D3DVECTOR{SIDE, SIDE, SIDE} * 0.5f;
        shape.color = {static_cast<float>(shade % 3) * 0.5f, static_cast<float>(shade % 5) * 0.25f, 1, 1};
        world.AddBrush(std::make_unique<Brush>(shape));
    }
    void SetMaterial(int row) {
        for (const auto& b : world.brush) {
            b->ForEachSurface([row](Surface& s, int, bool) {
                s.texture.index = row;
                s.texture.size = {SIDE, SIDE};
            });
            b->RemapAll();
            b->MarkDrawnChanged();
        }
    }
};

inline Level& TheLevel() {
    static Level level;
    return level;
}

class Screen {
public:
    Screen(Device& to, uint32_t width, uint32_t height) : device(to) {
        crInit({&device});
        criSetRenderer(crGetRootDevice(), &crGetRootDevice()->devices.front());
        crSetMode(width, height, 32, 32, 0, 0, true);
        crvRenderEnabled = true;
        Set(CRM_WORLD, crIdentity());
    }
    ~Screen() { crRelease(); }
    static void Set(TrType type, const D3DMATRIX& m) {
        const uint32_t old = crMCurrent(type);
        crMSet(m);
        crMCurrent(old);
    }
    void Frame(const DrawContext& context) {
        crBgColor(0);
        crBeginFrame();
        TheLevel().world.RenderBrushes(context);
        device.EndScene();
        benchmark::DoNotOptimize(device.BackBuffer());
    }

private:
    Device& device;
};

// One of the orthographic views, its middle on that of the level. s: pixels a unit.
inline void SetWireView(int view, float s, float w, float h) {
    D3DMATRIX m = crIdentity();
    const bool top = view == VIEW_TOP;
    if (top)
        m.m[0][0] = s, m.m[1][1] = 0, m.m[1][2] = 1, m.m[2][1] = s;
    else if (view == VIEW_FRONT)
        m.m[0][0] = s, m.m[1][1] = s;
    else
        m.m[0][0] = 0, m.m[0][2] = 1, m.m[1][1] = s, m.m[2][0] = s, m.m[2][2] = 0;
    const float across = COLUMNS * SPACING * s / 2, up = (top ? ROWS : STOREYS) * SPACING * s / 2; // of the centre
    Screen::Set(CRM_VIEW, m);
    Screen::Set(CRM_PROJ, {{{2 / w, 0, 0, 0}, {0, 2 / h, 0, 0}, {0, 0, 0, 0}, {-2 * across / w, -2 * up / h, 0, 1}}});
}

struct ViewPoint {
    D3DVECTOR eye, at;
};
inline const ViewPoint VIEW_POINTS[] = {
    {{-200, 1200, -300}, {800, 512, 800}}, // outside a corner: the first brushes are the nearest
    {{1800, 1200, 1900}, {800, 512, 800}}, // the last are
    {{824, 1000, 1800}, {824, 0, 400}},    // down between the columns of brushes
    {{-900, 504, 2500}, {800, 504, 800}},  // far out, all in view
    {{824, 504, 1640}, {830, 500, 0}},     // into a gap: brush behind brush
    {{824, 490, 824}, {1500, 600, 1400}},  // amid the level
    {{824, 490, 830}, {824, 490, 820}},    // close to one that fills the view
};

inline void SetCamera(const ViewPoint& point, float w, float h) {
    Screen::Set(CRM_VIEW, crIdentity());
    const uint32_t old = crMCurrent(CRM_VIEW);
    crMViewTo(point.eye, point.at, {0, 1, 0}, 0);
    crMCurrent(CRM_PROJ);
    crMSetIdentity();
    crMProj(PI / 2, h / w, 10, 10000);
    crMCurrent(old);
}

// Noise on every surface, read as the editor's views do it.
inline void SetTextures(bool smooth) {
    World& world = TheLevel().world;
    constexpr uint32_t TEXTURE_SIDE = 256;
    std::vector<uint32_t> argb(TEXTURE_SIDE * TEXTURE_SIDE);
    for (uint32_t i = 0; i < argb.size(); ++i)
        argb[i] = 0xFF000000 | i * 2654435761u >> 8;
    world.material.resize(2);
    world.material[1].texture_index = crTCreate(TEXTURE_SIDE, TEXTURE_SIDE, 32, TL_MATERIAL, TEX_NORMAL, 0, false);
    crTComputeMipLevels(world.material[1].texture_index, argb.data());
    criSetStageValue(0, TSS_MAGFILTER, smooth ? TF_LINEAR : TF_POINT);
    crTextureAddress(TA_WRAP, TA_WRAP, 0);
}

// All that a redraw of the window does: four views that share 1920 by 1080, textured as in the editor.
inline void RedrawViews(Screen& screen) {
    constexpr int W = 960, H = 540;
    DrawContext context;
    const DrawingScope one_level;
    for (int view = 0; view < VIEW_COUNT; ++view) {
        context.view = view;
        context.scale = 0.5f;
        crSetViewport(view % 2 * W, view / 2 * H, W, H);
        if (view == VIEW_PERSPECTIVE)
            SetCamera(VIEW_POINTS[0], W, H);
        else
            SetWireView(view, context.scale, W, H);
        screen.Frame(context);
    }
}

// Some selected boxes that move to and fro.
class Moving {
public:
    explicit Moving(int box_count) : count(box_count) { Select(true); }
    ~Moving() { Select(false); }
    Moving(const Moving&) = delete;
    Moving& operator=(const Moving&) = delete;
    void Step() {
        for (int i = 0; i < count; ++i)
            TheLevel().world.brush[static_cast<size_t>(i)]->Move({step, 0, 0}, false);
        step = -step;
    }

private:
    void Select(bool state) const {
        for (int i = 0; i < count; ++i)
            TheLevel().world.SetBrushSelection(i, state);
    }

    int count;
    float step = 1;
};

} // namespace big_level
