// A mode of 64 by 64 pixels on a recording device, with a frame begun. The picture starts black; positions in the world
// are pixels from the top left corner, with depth z from 0 to 1.
#pragma once

#include <gtest/gtest.h>

#include "render/Batches.h"
#include "render/FakeDevice.h"
#include "render/Frame.h"
#include "render/StateCache.h"

// Leaves no device behind, and the screen as it is without one.
class ReleasedAtEnd {
public:
    ReleasedAtEnd() = default;
    ReleasedAtEnd(const ReleasedAtEnd&) = delete;
    ReleasedAtEnd& operator=(const ReleasedAtEnd&) = delete;
    ~ReleasedAtEnd() {
        crEnd();
        crRelease();
        crvRenderEnabled = crvTryRestore = false;
        crvStatVerts = crvStatFaces = 0;
        crvScrWidth = width;
        crvScrHeight = height;
        crSetViewport(-1, 0, 0, 0);
        crSet2DDepth(0);
    }

private:
    uint32_t width = crvScrWidth, height = crvScrHeight;
};

class DrawTest : public testing::Test {
protected:
    static constexpr uint32_t SIDE = 64;

    DrawTest() {
        crInit({&device});
        criSetRenderer(crGetRootDevice(), &crGetRootDevice()->devices.front());
        EXPECT_EQ(crSetMode(SIDE, SIDE, 32, 32, 0, 0, true), 0);
        crBgColor(0);
        crvRenderEnabled = false;
        crvTryRestore = true;
        SetMatrix(CRM_WORLD, crIdentity());
        SetMatrix(CRM_VIEW, crIdentity());
        SetMatrix(CRM_PROJ, {{{2.0f / SIDE, 0, 0, 0}, {0, -2.0f / SIDE, 0, 0}, {0, 0, 1, 0}, {-1, 1, 0, 1}}});
        EXPECT_EQ(crBeginFrame(), 0);
        crPresetMode(RM_NORMAL);
        criSetStateValue(RS_CULLMODE, CULL_NONE);
        device.calls.clear();
    }
    static void SetMatrix(TrType type, const D3DMATRIX& m) {
        const uint32_t old = crMCurrent(type);
        crMSet(m);
        crMCurrent(old);
    }
    static void Vertex(float x, float y, float z, uint32_t color) {
        crDiffuse(color);
        crXYZ(x, y, z);
    }
    static void Triangle(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& c, uint32_t color) {
        crBegin(PT_TRI_LIST, VT_XYZ | VT_DIFFUSE);
        for (const D3DVECTOR& p : {a, b, c})
            Vertex(p.x, p.y, p.z, color);
        crEnd();
    }
    // The picture as words 0xRRGGBB.
    static std::vector<uint32_t> Picture() {
        std::vector<uint32_t> words;
        EXPECT_EQ(crLockBuffer(BT_BACK), 0);
        for (uint32_t i = 0; i < SIDE * SIDE; ++i) {
            uint32_t r, g, b;
            crGetBuffer(i % SIDE, i / SIDE, r, g, b);
            words.push_back(r << 16 | g << 8 | b);
        }
        EXPECT_EQ(crUnlockBuffer(), 0);
        return words;
    }
    static uint32_t At(uint32_t x, uint32_t y) { return Picture()[y * SIDE + x]; }
    static int CountOf(uint32_t rgb) {
        const std::vector<uint32_t> picture = Picture();
        return static_cast<int>(std::count(picture.begin(), picture.end(), rgb));
    }

    FakeDevice device;
    ReleasedAtEnd released;
};
