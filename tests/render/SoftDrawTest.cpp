#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "render/DrawFixture.h"
#include "render/Textures.h"

namespace {

class SoftDrawTest : public DrawTest {
protected:
    struct Corner {
        float x, y, rhw, u, v;
        float z = 0;
    };
    // A quad on the screen, in white.
    static void ScreenQuad(const std::vector<Corner>& corners) {
        crBegin(PT_TRI_FAN, VT_XYZRHW | VT_DIFFUSE | VT_TEX1);
        for (const Corner& c : corners) {
            crRHW(c.rhw);
            crUV(c.u, c.v);
            Vertex(c.x, c.y, c.z, 0xFFFFFFFF);
        }
        crEnd();
    }
    static void Quad(float x1, float y1, float x2, float y2, float z, uint32_t color) {
        crBegin(PT_TRI_STRIP, VT_XYZ | VT_DIFFUSE);
        Vertex(x1, y1, z, color), Vertex(x2, y1, z, color), Vertex(x1, y2, z, color), Vertex(x2, y2, z, color);
        crEnd();
    }
    static uint32_t MakeTexture(uint32_t w, uint32_t h, const std::vector<uint32_t>& argb, uint32_t type = TEX_NORMAL) {
        const uint32_t handle = crTCreate(w, h, 32, TL_MATERIAL, type, 0, false);
        EXPECT_EQ(crTFillTexture(handle, argb.data(), 0, 0), 0);
        return handle;
    }
};

constexpr uint32_t WHITE = 0xFFFFFFFF;

} // namespace

TEST_F(SoftDrawTest, TriangleTakesTheCentresInside) {
    // Centres with x + y < 63: 1 + 2 + ... + 63. Those with x + y = 63 lie on the slope, a right edge here.
    Triangle({0, 0, 0}, {64, 0, 0}, {0, 64, 0}, 0xFFFF0000);
    EXPECT_EQ(CountOf(0xFF0000), 2016);
    // For the other half it is a left edge.
    Triangle({64, 0, 0}, {64, 64, 0}, {0, 64, 0}, 0xFF00FF00);
    EXPECT_EQ(CountOf(0xFF0000), 2016);
    EXPECT_EQ(CountOf(0x00FF00), 2080);
    // Top and left edges through centres are in, right and bottom ones are out.
    Quad(10.5f, 20.5f, 14.5f, 23.5f, 0, 0xFF0000FF);
    EXPECT_EQ(CountOf(0x0000FF), 4 * 3);
    EXPECT_EQ(At(10, 20), 0x0000FFu);
    EXPECT_NE(At(14, 20), 0x0000FFu);
    EXPECT_NE(At(10, 23), 0x0000FFu);
    // Positions round to 1/256: 0.001 below a centre is on it, 0.003 is not.
    Quad(30.501f, 40, 31.4f, 41, 0, 0xFFFF00FF);
    EXPECT_EQ(CountOf(0xFF00FF), 1);
    Quad(40.503f, 40, 41.4f, 41, 0, 0xFFFFFF00);
    EXPECT_EQ(CountOf(0xFFFF00), 0);
}

TEST_F(SoftDrawTest, SharedEdgesLeaveNoGapAndNoDoublePixel) {
    crAlphaBlend(BM_ONE, BM_ONE);
    const float centres[][2] = {{31.7f, 20.2f}, {32, 32}, {0.1f, 63.3f}, {12.5f, 40.5f}};
    int drawn = 0;
    for (const auto& centre : centres) {
        crBegin(PT_TRI_FAN, VT_XYZ | VT_DIFFUSE);
        Vertex(centre[0], centre[1], 0, 0xFF010101);
        const float step = 64.0f / 7;
        for (int side = 0; side < 4; ++side)
            for (int i = 0; i < 7; ++i) {
                const float along = static_cast<float>(i) * step;
                const float x = side == 0 ? along : side == 1 ? 64 : side == 2 ? 64 - along : 0;
                const float y = side == 0 ? 0 : side == 1 ? along : side == 2 ? 64 : 64 - along;
                Vertex(x, y, 0, 0xFF010101);
            }
        Vertex(0, 0, 0, 0xFF010101);
        crEnd();
        ++drawn;
        EXPECT_EQ(CountOf(0x010101u * static_cast<uint32_t>(drawn)), 64 * 64);
    }
}

TEST_F(SoftDrawTest, CullingGoesByTheTurnOnTheScreen) {
    struct Case {
        CullMode mode;
        bool clockwise, counter;
    };
    for (const Case& c : {Case{CULL_NONE, true, true}, {CULL_CCW, true, false}, {CULL_CW, false, true}}) {
        criSetStateValue(RS_CULLMODE, CULL_NONE);
        Quad(0, 0, 64, 64, 0, 0xFF000000);
        criSetStateValue(RS_CULLMODE, c.mode);
        Triangle({0, 0, 0}, {8, 0, 0}, {8, 8, 0}, 0xFFFF0000);
        EXPECT_EQ(CountOf(0xFF0000) > 0, c.clockwise) << c.mode;
        Triangle({0, 20, 0}, {8, 28, 0}, {8, 20, 0}, 0xFF00FF00);
        EXPECT_EQ(CountOf(0x00FF00) > 0, c.counter) << c.mode;
    }
    criSetStateValue(RS_CULLMODE, CULL_CCW);
    Quad(0, 0, 64, 64, 0, 0xFF123456); // every second triangle of a strip turns the other way
    EXPECT_EQ(CountOf(0x123456), 64 * 64);
}

TEST_F(SoftDrawTest, NearerPixelsWin) {
    Quad(0, 0, 64, 64, 0.5f, 0xFF0000FF);
    crBegin(PT_TRI_STRIP, VT_XYZ | VT_DIFFUSE); // depth x / 64
    Vertex(0, 0, 0, 0xFFFF0000), Vertex(64, 0, 1, 0xFFFF0000);
    Vertex(0, 64, 0, 0xFFFF0000), Vertex(64, 64, 1, 0xFFFF0000);
    crEnd();
    EXPECT_EQ(CountOf(0xFF0000), 32 * 64);
    EXPECT_EQ(At(31, 5), 0xFF0000u);
    EXPECT_EQ(At(32, 5), 0x0000FFu);

    criSetStateValue(RS_ZFUNC, CMP_GREATER);
    Quad(0, 0, 64, 64, 0.25f, 0xFF00FF00); // behind the slope's depths up to (15 + 0.5) / 64
    EXPECT_EQ(CountOf(0x00FF00), 16 * 64);
    criSetStateValue(RS_ZFUNC, CMP_LESSEQUAL);
    criSetStateValue(RS_ZWRITEENABLE, 0);
    Quad(0, 0, 64, 64, 0.0f, 0xFF888888);
    EXPECT_EQ(CountOf(0x888888), 64 * 64);
    Quad(0, 0, 64, 64, 0.5f, 0xFF777777); // no depth was written: hidden left of the middle
    EXPECT_EQ(CountOf(0x777777), (64 - 16) * 64 - 16 * 64);
    criSetStateValue(RS_ZWRITEENABLE, 1);
    criSetStateValue(RS_ZENABLE, 0); // neither asked nor written
    Quad(0, 0, 64, 64, 0.9f, 0xFF666666);
    Quad(0, 0, 64, 64, 0, 0xFF555555);
    EXPECT_EQ(CountOf(0x555555), 64 * 64);
    criSetStateValue(RS_ZENABLE, 1);
    Quad(0, 0, 64, 64, 0.2f, 0xFF444444);
    EXPECT_EQ(CountOf(0x444444), 64 * 64);
}

TEST_F(SoftDrawTest, TrianglesAreCutAtNearAndFar) {
    const auto ground = [](float near_z, float far_z) {
        crBegin(PT_TRI_STRIP, VT_XYZ | VT_DIFFUSE);
        for (const float z : {near_z, far_z})
            for (const float x : {-1000.0f, 1000.0f})
                Vertex(x, -1, z, 0xFFFF0000);
        crEnd();
    };
    const uint32_t old = crMCurrent(CRM_PROJ);
    crMSetIdentity();
    crMProj(PI / 2, 1, 1, 100);
    crMCurrent(old);
    // Depth z stands at row 32 + 32 / z.
    ground(-10, 50);
    EXPECT_EQ(CountOf(0xFF0000), (63 - 33 + 1) * 64); // from 32.64 on
    ground(-10, 5000);
    EXPECT_EQ(CountOf(0xFF0000), (63 - 32 + 1) * 64); // the far plane: from 32.32 on
    ground(-10, -1);
    EXPECT_EQ(CountOf(0xFF0000), 32 * 64);
}

TEST_F(SoftDrawTest, ClipPlanesCutInTheWorld) {
    SetMatrix(CRM_WORLD, crTranslation({10, 0, 0}));
    crClipPlaneSet(0, PLANE(-1, 0, 0, 32)); // keeps x up to 32
    crClipPlaneSet(3, PLANE(0, 1, 0, -50)); // and y from 50 on
    crClipPlaneSet(CLIP_PLANES, PLANE(0, 0, 0, -1));
    crClipPlaneEnable(1);
    Quad(-10, 0, 54, 64, 0, 0xFFFF0000);
    EXPECT_EQ(CountOf(0xFF0000), 32 * 64);
    crClipPlaneEnable(1 | 8);
    Quad(-10, 0, 54, 64, 0, 0xFF00FF00);
    EXPECT_EQ(CountOf(0x00FF00), 32 * 14);
}

TEST_F(SoftDrawTest, CoordinatesFollowPerspective) {
    // u = 0.5 s / (1 - 0.5 s) at a part s of the width: 1/4, 1/2, 3/4 at s = 0.4, 2/3, 6/7.
    crTexture(MakeTexture(4, 1, {0x10, 0x20, 0x30, 0x40}), 0);
    ScreenQuad({{0, 0, 1, 0, 0}, {60, 0, 0.5f, 1, 0}, {60, 10, 0.5f, 1, 1}, {0, 10, 1, 0, 1}});
    EXPECT_EQ(CountOf(0x10), 24 * 10);
    EXPECT_EQ(CountOf(0x20), 16 * 10);
    EXPECT_EQ(CountOf(0x30), 11 * 10);
    EXPECT_EQ(CountOf(0x40), 9 * 10);
}

TEST_F(SoftDrawTest, AddressModesBeyondTheTexture) {
    crTexture(MakeTexture(2, 2, {0xA, 0xB, 0xA, 0xB}), 0);
    struct Case {
        TAType mode;
        uint32_t columns[5]; // u of -0.5, 0, 0.5, 1, 1.5 and half a texel
    };
    for (const Case& c : {Case{TA_WRAP, {0xB, 0xA, 0xB, 0xA, 0xB}},
                          {TA_MIRROR, {0xA, 0xA, 0xB, 0xB, 0xA}},
                          {TA_CLAMP, {0xA, 0xA, 0xB, 0xB, 0xB}}}) {
        crTextureAddress(c.mode, c.mode, 0);
        ScreenQuad({{0, 0, 1, -0.5f, 0}, {50, 0, 1, 2, 0}, {50, 8, 1, 2, 0}, {0, 8, 1, -0.5f, 0}});
        for (uint32_t i = 0; i < 5; ++i)
            EXPECT_EQ(At(5 + 10 * i, 4), c.columns[i]) << c.mode << " " << i;
    }
}

TEST_F(SoftDrawTest, SmoothFilterMixesNeighbours) {
    crTexture(MakeTexture(2, 2, {0, 0xFF0000, 0, 0xFF0000}), 0);
    crTextureAddress(TA_CLAMP, TA_CLAMP, 0);
    criSetStageValue(0, TSS_MAGFILTER, TF_LINEAR);
    ScreenQuad({{0, 0, 1, 0, 0}, {64, 0, 1, 1, 0}, {64, 8, 1, 1, 1}, {0, 8, 1, 0, 1}});
    EXPECT_EQ(At(0, 4), 0u);
    EXPECT_EQ(At(31, 4), 0x7C0000u); // 255 * 124 / 256
    EXPECT_EQ(At(32, 4), 0x830000u); // 255 * 132 / 256
    EXPECT_EQ(At(63, 4), 0xFF0000u);
}

TEST_F(SoftDrawTest, StagesCombineTexturesAndColours) {
    const uint32_t first = MakeTexture(2, 2, std::vector<uint32_t>(4, 0x80FF40));
    const uint32_t second = MakeTexture(2, 2, std::vector<uint32_t>(4, 0xFF8000));
    crTexture(first, 0);
    crTexture(second, 1);
    crPresetMode(RM_TEX1_MODULATE_TEX2);
    criSetStageValue(1, TSS_TEXCOORDINDEX, 0);
    const std::vector<Corner> corners = {{0, 0, 1, 0, 0}, {8, 0, 1, 1, 0}, {8, 8, 1, 1, 1}, {0, 8, 1, 0, 1}};
    ScreenQuad(corners);
    EXPECT_EQ(At(1, 1), 0x808000u);
    crColorOp(OP_ADD, ARG_TEXTURE, ARG_CURRENT, 1);
    ScreenQuad(corners);
    EXPECT_EQ(At(1, 1), 0xFFFF40u);
    crColorOp(OP_SELECTARG2, ARG_TEXTURE, ARG_TFACTOR, 1);
    criSetStateValue(RS_TEXTUREFACTOR, 0xFF010203);
    ScreenQuad(corners);
    EXPECT_EQ(At(1, 1), 0x010203u);
    crPresetMode(RM_NORMAL); // texture times colour
    crTexture(first, 0);
    crBegin(PT_TRI_LIST, VT_XYZ | VT_DIFFUSE);
    Vertex(0, 0, 0, 0xFFFF8000), Vertex(8, 0, 0, 0xFFFF8000), Vertex(0, 8, 0, 0xFFFF8000);
    crEnd();
    EXPECT_EQ(At(1, 1), 0x808000u);
    criSetStageValue(0, TSS_COLOROP, OP_DISABLE); // the vertices alone
    Triangle({0, 0, 0}, {8, 0, 0}, {0, 8, 0}, 0xFF654321);
    EXPECT_EQ(At(1, 1), 0x654321u);
}

TEST_F(SoftDrawTest, NarrowFormatsReachFullWhite) {
    const uint32_t narrow = crTCreate(2, 2, 16, TL_MATERIAL, TEX_NORMAL, 0, false);
    const std::vector<uint32_t> white(4, 0xFFFFFFFF);
    ASSERT_EQ(crTFillTexture(narrow, white.data(), 0, 0), 0);
    ASSERT_EQ(crTRecord(narrow)->actformat->pixelsize, 2u);
    crTexture(narrow, 0);
    ScreenQuad({{0, 0, 1, 0, 0}, {8, 0, 1, 1, 0}, {8, 8, 1, 1, 1}, {0, 8, 1, 0, 1}});
    EXPECT_EQ(At(1, 1), 0xFFFFFFu);
}

TEST_F(SoftDrawTest, BlendingByHand) {
    struct Case {
        BlendMode src, dst;
        uint32_t expected; // of 0x4080C0F0 over 0x6496C8: source 128, 192, 240, alpha 64 over 100, 150, 200
    };
    const Case cases[] = {
        {BM_ONE, BM_ONE, 0xE4FFFF},
        {BM_SRCALPHA, BM_INVSRCALPHA, 0x6BA1D2}, // 128 * 64 + 100 * 191 = 27292: 107.03; 160.54; 210.04
        {BM_ZERO, BM_SRCCOLOR, 0x3271BC},        // 50.2; 112.9; 188.2
        {BM_DESTCOLOR, BM_ZERO, 0x3271BC},
        {BM_ZERO, BM_INVSRCALPHA, 0x4B7096},       // 74.9; 112.35; 149.8
        {BM_INVDESTCOLOR, BM_ONE, 0xB2E5FC},       // 128 * 155 / 255 + 100 = 177.8; 229.06; 251.76
        {BM_DESTALPHA, BM_INVDESTALPHA, 0x80C0F0}, // a picture without alpha counts as 255
    };
    for (const Case& c : cases) {
        crAlphaBlend(BM_NONE);
        Quad(0, 0, 8, 8, 0, 0xFF6496C8);
        crAlphaBlend(c.src, c.dst);
        Quad(0, 0, 8, 8, 0, 0x4080C0F0);
        EXPECT_EQ(At(3, 3), c.expected) << std::hex << At(3, 3) << " " << c.src << " " << c.dst;
    }
}

TEST_F(SoftDrawTest, AlphaTestLeavesColourAndDepth) {
    crPresetMode(RM_ALPHA);
    Quad(0, 0, 8, 8, 0.1f, 0x00FF0000);
    EXPECT_EQ(CountOf(0), 64 * 64);
    crPresetMode(RM_NORMAL);
    Quad(0, 0, 8, 8, 0.2f, 0xFF00FF00);
    EXPECT_EQ(CountOf(0x00FF00), 64);
    crAlphaTest(CMP_GREATEREQUAL, 0x80);
    Quad(0, 0, 8, 8, 0, 0x7F0000FF);
    EXPECT_EQ(CountOf(0x0000FF), 0);
    Quad(0, 0, 8, 8, 0, 0x800000FF);
    EXPECT_EQ(CountOf(0x0000FF), 64);
}

TEST_F(SoftDrawTest, ColoursRunBetweenTheCorners) {
    crBegin(PT_TRI_STRIP, VT_XYZ | VT_DIFFUSE);
    Vertex(0, 0, 0, 0xFF000000), Vertex(51, 0, 0, 0xFFFF0000), Vertex(0, 8, 0, 0xFF000000),
        Vertex(51, 8, 0, 0xFFFF0000);
    crEnd();
    EXPECT_EQ(At(0, 2), 0x030000u);  // 5 a pixel, 2.5 at the first centre
    EXPECT_EQ(At(10, 2), 0x350000u); // 52.5
    criSetStateValue(RS_SHADEMODE, SHADE_FLAT);
    crBegin(PT_TRI_LIST, VT_XYZ | VT_DIFFUSE);
    Vertex(0, 0, 0, 0xFF00FF00), Vertex(8, 0, 0, 0xFFFF0000), Vertex(0, 8, 0, 0xFFFF00FF);
    crEnd();
    EXPECT_EQ(CountOf(0x00FF00), 28); // 1 + ... + 7
}

TEST_F(SoftDrawTest, LinesAndPoints) {
    struct Case {
        D3DVECTOR from, to;
        int count;
        uint32_t x, y; // a pixel of it
    };
    const Case cases[] = {
        {{0, 0, 0}, {10, 0, 0}, 10, 9, 0},
        {{10.5f, 5.5f, 0}, {2.5f, 5.5f, 0}, 8, 10, 5}, // the first point is in, the last is out
        {{3.5f, 1.5f, 0}, {3.5f, 11.5f, 0}, 10, 3, 1},
        {{0.5f, 0.5f, 0}, {20.5f, 10.5f, 0}, 20, 10, 5},
        {{-100, 30.5f, 0}, {1000, 30.5f, 0}, 64, 63, 30},
        {{5, 5, 0}, {5, 5, 0}, 0, 63, 63},
        {{5, 5, -2}, {5, 5, -1}, 0, 63, 63}, // before the near plane
    };
    for (const Case& c : cases) {
        Quad(0, 0, 64, 64, 1, 0xFF000000);
        criSetStateValue(RS_ZENABLE, 0);
        crBegin(PT_LINE_LIST, VT_XYZ | VT_DIFFUSE);
        Vertex(c.from.x, c.from.y, c.from.z, WHITE), Vertex(c.to.x, c.to.y, c.to.z, WHITE);
        crEnd();
        EXPECT_EQ(CountOf(0xFFFFFF), c.count) << c.from.x << " " << c.to.x;
        EXPECT_EQ(At(c.x, c.y) == 0xFFFFFF, c.count > 0) << c.from.x << " " << c.to.x;
    }
    Quad(0, 0, 64, 64, 1, 0xFF000000);
    crAlphaBlend(BM_ONE, BM_ONE); // a closed strip meets every corner once
    crBegin(PT_LINE_STRIP, VT_XYZ | VT_DIFFUSE);
    for (const auto& [x, y] : {std::pair{10.5f, 10.5f}, {20.5f, 10.5f}, {20.5f, 20.5f}, {10.5f, 20.5f}, {10.5f, 10.5f}})
        Vertex(x, y, 0, 0xFF010101);
    crEnd();
    EXPECT_EQ(CountOf(0x010101), 40);
    crBegin(PT_POINT_LIST, VT_XYZ | VT_DIFFUSE);
    Vertex(40, 40, 0, 0xFF050505), Vertex(40.9f, 41.9f, 0, 0xFF050505), Vertex(-0.5f, 40, 0, 0xFF050505);
    crEnd();
    EXPECT_EQ(CountOf(0x050505), 2);
    EXPECT_EQ(At(40, 41), 0x050505u);
}

TEST_F(SoftDrawTest, SmallerLevelsAreDrawnWhereAPixelPassesManyTexels) {
    constexpr uint32_t TEXELS = 64;
    const std::vector<uint32_t> colors = {0xFF0000, 0x00FF00, 0x0000FF, 0xFFFF00, 0xFF00FF, 0x00FFFF};
    const uint32_t handle = MakeTexture(TEXELS, TEXELS, std::vector<uint32_t>(TEXELS * TEXELS, 0xFF000000 | colors[0]));
    ASSERT_EQ(crTRecord(handle)->surface->Levels(), colors.size());
    for (uint32_t level = 1; level < colors.size(); ++level)
        ASSERT_EQ(
            crTFillTexture(handle, std::vector<uint32_t>(TEXELS * TEXELS, 0xFF000000 | colors[level]).data(), level, 0),
            0);
    crTexture(handle, 0);
    struct Case {
        float texels; // a pixel
        size_t level; // between its neighbours by the square root of two
    };
    const Case cases[] = {{0.5f, 0}, {1, 0},     {1.41f, 0}, {1.42f, 1}, {2, 1},
                          {2.8f, 1}, {2.84f, 2}, {4, 2},     {32, 5},    {1000, 5}};
    const auto draw = [](float texels, uint32_t last_color) {
        crBegin(PT_TRI_FAN, VT_XYZRHW | VT_DIFFUSE | VT_TEX1);
        for (const auto& [x, y] :
             {std::pair{0.0f, 0.0f}, std::pair{64.0f, 0.0f}, std::pair{64.0f, 64.0f}, std::pair{0.0f, 64.0f}}) {
            crRHW(1);
            crUV(x * texels / TEXELS, y * texels / TEXELS);
            Vertex(x, y, 0, x == 0 && y > 0 ? last_color : WHITE);
        }
        crEnd();
    };
    for (const MFType filter : {MF_NONE, MF_POINT, MF_LINEAR})
        for (const TFType smooth : {TF_POINT, TF_LINEAR})
            for (const bool tested : {false, true})
                for (const uint32_t last_color : {WHITE, 0xFEFFFFFFu}) // one colour for all, or one for each pixel
                    for (const Case& c : cases) {
                        criSetStageValue(0, TSS_MIPFILTER, filter);
                        criSetStageValue(0, TSS_MAGFILTER, smooth);
                        crAlphaTest(tested ? CMP_GREATER : CMP_OFF);
                        draw(c.texels, last_color);
                        EXPECT_EQ(CountOf(colors[filter == MF_NONE ? 0 : c.level]), 64 * 64)
                            << c.texels << " " << filter << " " << tested;
                    }
}

// A floor that runs away: the size of a step is measured between neighbouring pixels.
TEST_F(SoftDrawTest, LevelsFollowThePerspective) {
    constexpr uint32_t TEXELS = 64;
    const std::vector<uint32_t> colors = {0xFF0000, 0x00FF00, 0x0000FF, 0xFFFF00, 0xFF00FF, 0x00FFFF};
    const uint32_t handle = MakeTexture(TEXELS, TEXELS, std::vector<uint32_t>(TEXELS * TEXELS, 0xFF000000 | colors[0]));
    for (uint32_t level = 1; level < colors.size(); ++level)
        crTFillTexture(handle, std::vector<uint32_t>(TEXELS * TEXELS, 0xFF000000 | colors[level]).data(), level, 0);
    crTexture(handle, 0);
    criSetStageValue(0, TSS_MIPFILTER, MF_POINT);
    constexpr double NEAR = 1, FAR = 16;
    ScreenQuad({{0, 0, 1 / 16.0f, -16, 16}, {64, 0, 1 / 16.0f, 16, 16}, {64, 64, 1, 1, 1}, {0, 64, 1, -1, 1}});
    const std::vector<uint32_t> picture = Picture();
    const auto place = [](double x, double y) { // in texels
        const double distance = 1 / (1 / FAR + (1 / NEAR - 1 / FAR) * y / 64);
        return std::pair{(x - 32) / 32 * distance * TEXELS, distance * TEXELS};
    };
    std::vector<int> seen(colors.size());
    for (uint32_t y = 0; y < SIDE; ++y)
        for (uint32_t x = 0; x < SIDE; ++x) {
            const double cx = x / 8 * 8 + 4, cy = y + 0.5; // eight pixels share a level
            constexpr double H = 0.01;
            const auto [u1, v1] = place(cx - H, cy);
            const auto [u2, v2] = place(cx + H, cy);
            const auto [u3, v3] = place(cx, cy - H);
            const auto [u4, v4] = place(cx, cy + H);
            const double step = std::max(std::hypot(u2 - u1, v2 - v1), std::hypot(u4 - u3, v4 - v3)) / (2 * H);
            const double level = std::log2(step), whole = std::clamp(std::round(level), 0.0, 5.0);
            if (std::fabs(std::fabs(level - std::floor(level)) - 0.5) < 0.01)
                continue; // either
            ASSERT_EQ(picture[y * SIDE + x], colors[static_cast<size_t>(whole)]) << x << "," << y;
            ++seen[static_cast<size_t>(whole)];
        }
    EXPECT_GE(std::count_if(seen.begin(), seen.end(), [](int n) { return n > 0; }), 4);
}

TEST_F(SoftDrawTest, WildInputIsLeftOutOrCut) {
    const float nan = std::nanf(""), infinite = std::numeric_limits<float>::infinity();
    Triangle({0, 0, nan}, {64, 0, 0}, {0, 64, 0}, WHITE);
    Triangle({0, 0, 0}, {infinite, 0, 0}, {0, 64, 0}, WHITE);
    EXPECT_EQ(CountOf(0), 64 * 64);
    Triangle({-1e9f, -1e9f, 0}, {3e9f, -1e9f, 0}, {-1e9f, 3e9f, 0}, 0xFFFF0000);
    EXPECT_EQ(CountOf(0xFF0000), 64 * 64);
    ScreenQuad({{-1e9f, -1e9f, 1, 0, 0}, {1e9f, -1e9f, 1, 1e9f, 0}, {1e9f, 1e9f, 1, nan, 0}, {-1e9f, 1e9f, 0, 0, 0}});
    ScreenQuad(
        {{-1e9f, -1e9f, 1, 0, 0}, {1e9f, -1e9f, 1, 1e9f, 0}, {1e9f, 1e9f, 1, 0, -1e30f}, {-1e9f, 1e9f, 0, 0, 0}});
    EXPECT_EQ(CountOf(0xFFFFFF), 64 * 64);

    crBeginIndexed(VT_XYZ | VT_DIFFUSE, PT_TRI_LIST);
    Vertex(0, 0, 0, 0xFF00FF00), Vertex(8, 0, 0, 0xFF00FF00), Vertex(0, 8, 0, 0xFF00FF00);
    crIndexFace(0, 1, 3); // no such vertex
    crIndexFace(0, 1, 2);
    crEnd();
    EXPECT_EQ(CountOf(0x00FF00), 28);

    const uint8_t vertex[LARGEST_VERTEX] = {};
    EXPECT_FALSE(device.SoftDevice::DrawPrimitive(PT_POINT_LIST, VT_DIFFUSE, vertex, 1)); // no position
    EXPECT_FALSE(device.SoftDevice::DrawPrimitive(static_cast<PrimType>(9), VT_XYZ, vertex, 1));
    device.EndScene();
    EXPECT_FALSE(device.SoftDevice::DrawPrimitive(PT_POINT_LIST, VT_XYZ, vertex, 1));
}
