// A small screen on the software device, and the matrices of the editor's views.
#pragma once

#include <algorithm>
#include <cstring>
#include <memory>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

#include "drawing/DrawContext.h"
#include "render/Frame.h"
#include "render/SoftDevice.h"
#include "render/StateCache.h"
#include "scene/World.h"

inline void SetMatrix(TrType type, const D3DMATRIX& m) {
    const uint32_t old = crMCurrent(type);
    crMSet(m);
    crMCurrent(old);
}

// The matrices of an orthographic view, whose window lies anywhere in the back buffer.
inline void SetOrthographic(int view, const VIEWINFO& info) {
    const float s = info.Scale();
    const auto w = static_cast<float>(info.window_rect.Width()), h = static_cast<float>(info.window_rect.Height());
    D3DMATRIX matrix = crIdentity(), projection = crIdentity();
    auto& v = matrix.m;
    if (view == VIEW_TOP) {
        v[0][0] = s, v[1][1] = 0, v[1][2] = 1, v[2][1] = s;
    } else if (view == VIEW_FRONT) {
        v[0][0] = s, v[1][1] = s;
    } else {
        v[0][0] = 0, v[0][2] = 1, v[1][1] = s, v[2][0] = s, v[2][2] = 0;
    }
    projection.m[0][0] = 2 / w, projection.m[1][1] = 2 / h, projection.m[2][2] = 0;
    projection.m[3][0] = -1 - 2 * static_cast<float>(info.view_position[0]) / w;
    projection.m[3][1] = 1 + 2 * static_cast<float>(info.view_position[1]) / h;
    SetMatrix(CRM_VIEW, matrix);
    SetMatrix(CRM_PROJ, projection);
}

// A camera that looks along +z: right is +x, up is +y.
inline void SetPerspective(const D3DVECTOR& position, const RECT& window) {
    SetMatrix(CRM_VIEW, crTranslation(-position));
    const uint32_t old = crMCurrent(CRM_PROJ);
    crMSetIdentity();
    crMProj(std::numbers::pi_v<float> / 2, static_cast<float>(window.Height()) / static_cast<float>(window.Width()), 10,
            10000);
    crMCurrent(old);
}

// One software screen, its frame begun.
class Screen {
public:
    Screen(int width, int height) : window{0, 0, width, height} {
        crInit({&device});
        criSetRenderer(crGetRootDevice(), &crGetRootDevice()->devices.front());
        EXPECT_EQ(crSetMode(static_cast<uint32_t>(width), static_cast<uint32_t>(height), 32, 32, 0, 0, true), 0);
        crvRenderEnabled = true;
        SetMatrix(CRM_WORLD, crIdentity());
        Begin();
    }
    ~Screen() { crRelease(); }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    void Begin() { // a frame
        crBgColor(background);
        crSetViewport(window.left, window.top, window.Width(), window.Height());
        EXPECT_EQ(crBeginFrame(), 0);
    }
    void End() { EXPECT_TRUE(device.EndScene()); }
    void NextFrame() {
        End();
        Begin();
    }
    // A pixel as 0xRRGGBB.
    uint32_t At(int x, int y) {
        uint32_t pitch, pixel;
        const uint8_t* const rows = device.BackBuffer()->Lock(0, 0, pitch);
        std::memcpy(&pixel, rows + static_cast<size_t>(y) * pitch + static_cast<size_t>(x) * 4, 4);
        return pixel;
    }
    std::vector<uint32_t> Picture() {
        std::vector<uint32_t> picture;
        for (int y = 0; y < window.Height(); ++y)
            for (int x = 0; x < window.Width(); ++x)
                picture.push_back(At(x, y));
        return picture;
    }

    int CountOf(uint32_t rgb) {
        const std::vector<uint32_t> picture = Picture();
        return static_cast<int>(std::count(picture.begin(), picture.end(), rgb));
    }

    SoftDevice device;
    RECT window;
    uint32_t background = 0; // of the next frame
};

// A texture that repeats, from words 0xAARRGGBB.
inline uint32_t MakeTexture(uint32_t w, uint32_t h, const std::vector<uint32_t>& argb) {
    const uint32_t handle = crTCreate(w, h, 32, TL_MATERIAL, TEX_ALPHA_NORMAL, 0, false);
    EXPECT_EQ(crTFillTexture(handle, argb.data(), 0, 0), 0);
    return handle;
}

inline Brush& AddBox(World& world, const D3DVECTOR& min, const D3DVECTOR& max, const D3DCOLORVALUE& color) {
    BrushShape shape;
    shape.bb = MakeBox(min, max);
    shape.pivot = (min + max) * 0.5f;
    shape.color = color;
    Brush& brush = *world.AddBrush(std::make_unique<Brush>(shape));
    brush.is_selected = false;
    brush.GenerateNewObjectID();
    return brush;
}

// A screen of 128 by 128 pixels; in the orthographic views the world's origin stands in its middle.
class ViewTest : public testing::Test {
protected:
    static constexpr int SIDE = 128, MIDDLE = SIDE / 2;

    // scale: 2 to the power of zoom
    void SetView(int view, int zoom = 0) {
        VIEWINFO info;
        info.window_rect = screen.window;
        info.view_position[0] = info.view_position[1] = -MIDDLE;
        info.zoom_in = zoom > 0 ? 1 << zoom : 1;
        info.zoom_out = zoom < 0 ? 1 << -zoom : 1;
        SetOrthographic(view, info);
        context.view = view;
        context.scale = info.Scale();
    }
    // The camera stands before the origin at this distance, where 64 / distance pixels show a unit.
    void SetCamera(float distance) {
        SetPerspective({0, 0, -distance}, screen.window);
        context.view = VIEW_PERSPECTIVE;
    }
    // The outline of a rectangle whose lines pass pixel columns left and right and rows top and bottom. The last pixel
    // of a line is left out, so that the lower right corner stays free.
    void ExpectOutline(int left, int top, int right, int bottom, uint32_t color, int other_pixels = 0) {
        for (int x = left; x < right; ++x) {
            EXPECT_EQ(screen.At(x, top), color) << x;
            EXPECT_EQ(screen.At(x, bottom), color) << x;
        }
        for (int y = top; y < bottom; ++y) {
            EXPECT_EQ(screen.At(left, y), color) << y;
            EXPECT_EQ(screen.At(right, y), color) << y;
        }
        EXPECT_EQ(screen.CountOf(color), 2 * (right - left + bottom - top) - 1 + other_pixels);
    }
    bool IsEmpty() { return screen.CountOf(screen.background) == SIDE * SIDE; }

    Screen screen{SIDE, SIDE};
    World world;
    DrawContext context;
};
