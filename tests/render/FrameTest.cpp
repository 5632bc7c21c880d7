#include <memory>

#include <gtest/gtest.h>

#include "render/DrawFixture.h"
#include "render/Textures.h"
#include "render/VertexBuffers.h"

namespace {

class CapabilityTest : public testing::Test {
protected:
    static void Choose(FakeDevice& device) {
        crInit({&device});
        criSetRenderer(crGetRootDevice(), &crGetRootDevice()->devices.front());
    }

    ReleasedAtEnd released;
};

template <class List>
size_t Length(const List& list) {
    return static_cast<size_t>(std::distance(list.begin(), list.end()));
}

} // namespace

TEST_F(CapabilityTest, TreeListsDevicesLastFirst) {
    FakeDevice first("Direct3D HAL", "One"), second("Direct3D T&L HAL", "One"), other(std::string(300, 'n'), "Two");
    first.modes = {{640, 480, 16, 60}, {640, 480, 32, 60}, {640, 480, 24, 75}, {640, 480, 32, 85},
                   {640, 480, 8, 50},  {800, 600, 32, 60}, {1024, 768, 24, 60}};
    crInit({&first, &second, &other});
    ASSERT_EQ(Length(crvRootDevices), 2u);
    const CR_DDDevice& two = *crGetRootDevice();
    EXPECT_EQ(two.name, "Two");
    EXPECT_EQ(two.devices.front().name, std::string(255, 'n'));
    const CR_DDDevice& one = *std::next(crvRootDevices.begin());
    ASSERT_EQ(Length(one.devices), 2u);
    EXPECT_EQ(one.devices.front().name, "Direct3D T&L HAL");
    const CR_D3DDevice& hal = *std::next(one.devices.begin());
    EXPECT_EQ(hal.device, &first);
    EXPECT_EQ(hal.top, &one);

    ASSERT_EQ(Length(hal.modes), 2u); // 8 and 24 bits are passed over
    EXPECT_EQ(hal.modes.front().w, 800u);
    const CR_DisplayMode& small = *std::next(hal.modes.begin());
    EXPECT_EQ(small.w, 640u);
    EXPECT_EQ(small.top, &hal);
    ASSERT_EQ(Length(small.depth), 2u);
    EXPECT_EQ(small.depth.front().bpp, 32u);
    ASSERT_EQ(Length(small.refresh), 2u);
    EXPECT_EQ(small.refresh.front().n, 85u);
    EXPECT_EQ(hal.zbuffer_formats.front().format.stencil_bits, 8u);
    EXPECT_EQ(Length(hal.texture_formats), 7u);
}

TEST_F(CapabilityTest, SoftwareDeviceStandsIn) {
    crInit();
    ASSERT_NE(crGetRootDevice(), nullptr);
    EXPECT_EQ(crGetRootDevice()->devices.front().name, "Direct3D T&L HAL");
    EXPECT_EQ(crSetMode(64, 64, 32, 32, 0, 0, true), MODE_NO_DEPTH_FORMAT); // no renderer chosen
    criSetRenderer(crGetRootDevice(), &crGetRootDevice()->devices.front());
    EXPECT_EQ(crSetMode(64, 64, 32, 32, 0, 0, true), 0);
    EXPECT_EQ(crRelease(), 0);
    EXPECT_EQ(crGetRootDevice(), nullptr);
    EXPECT_EQ(crBeginFrame(), FRAME_DISABLED);
}

TEST_F(CapabilityTest, DepthFormatIsTheDeepestAllowed) {
    struct Case {
        std::vector<DepthFormat> formats;
        uint32_t zbpp, stbpp;
        int result;
        uint32_t depth, stencil;
    };
    const Case cases[] = {
        {{{16, 0}, {24, 8}, {24, 0}}, 32, 0, 0, 24, 0},
        {{{16, 0}, {24, 8}, {24, 0}}, 32, 8, 0, 24, 8},
        {{{16, 0}, {24, 8}, {32, 0}}, 16, 8, 0, 16, 0},
        {{{15, 1}, {24, 8}}, 32, 0, -1, 0, 0},
        {{{24, 0}, {32, 0}}, 16, 0, -1, 0, 0},
        {{{24, 8}, {32, 0}}, 32, 8, 0, 32, 0}, // the list is walked from its end: less depth never replaces more
        {{}, 32, 32, -1, 0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.zbpp << " " << c.stbpp << " of " << c.formats.size());
        FakeDevice device;
        device.depth_formats = c.formats;
        Choose(device);
        EXPECT_EQ(crSetMode(64, 64, 32, c.zbpp, c.stbpp, 0, true), c.result);
        EXPECT_EQ(device.depth_format.depth_bits, c.depth);
        EXPECT_EQ(device.depth_format.stencil_bits, c.stencil);
        EXPECT_EQ(device.calls.empty(), c.result != 0); // without a format nothing is made
        crRelease();
    }
}

TEST_F(CapabilityTest, FailedStepsHaveTheirCodes) {
    struct Case {
        const char* call;
        bool windowed;
        int code;
    };
    const Case cases[] = {{"TakeScreen", true, -4},         {"CreateBackBuffer", true, -6},
                          {"SetVideoMode", false, -10},     {"CreateBackBuffer", false, -11},
                          {"CreateDepthBuffer", true, -14}, {"Open", true, -16},
                          {"SetVideoMode", true, 0}}; // not asked for in a window
    for (const Case& c : cases) {
        SCOPED_TRACE(c.call);
        FakeDevice device;
        Choose(device);
        device.fails = {c.call};
        EXPECT_EQ(crSetMode(640, 480, 32, 32, 0, 60, c.windowed), c.code);
        EXPECT_EQ(crvD3DDevice != nullptr, c.code == 0);
        crRelease();
    }
}

TEST_F(DrawTest, FailureSwitchesRenderingOffUntilRestored) {
    struct Case {
        const char* call;
        int begin;
    };
    crEndFrame();
    for (const Case& c :
         {Case{"Clear", FRAME_NOT_CLEARED}, {"BeginScene", FRAME_NO_SCENE}, {"Present", 0}, {"EndScene", 0}}) {
        SCOPED_TRACE(c.call);
        ASSERT_TRUE(crvRenderEnabled);
        device.fails = {c.call};
        EXPECT_EQ(crBeginFrame(), c.begin);
        crEndFrame();
        EXPECT_FALSE(crvRenderEnabled);
        device.fails.clear();
        device.calls.clear();
        EXPECT_EQ(crBeginFrame(), FRAME_DISABLED);
        crEndFrame();
        EXPECT_TRUE(device.calls.empty()); // not even asked

        crvTryRestore = true;
        device.fails = {"RestoreSurfaces"};
        EXPECT_EQ(crBeginFrame(), FRAME_DISABLED);
        EXPECT_TRUE(crvTryRestore);
        device.fails.clear();
        const uint32_t vb = crVBCreate(VT_XYZ, 3, PT_TRI_LIST, 0);
        EXPECT_EQ(crBeginFrame(), 0);
        EXPECT_TRUE(criGetVB(vb)->is_lost);
        EXPECT_FALSE(crvTryRestore);
        crVBDestroy(vb);
        crEndFrame();
    }
    EXPECT_TRUE(crvRenderEnabled);
}

TEST_F(DrawTest, TopByteOfTheBackgroundKeepsThePicture) {
    Triangle({0, 0, 0.5f}, {64, 0, 0.5f}, {0, 64, 0.5f}, 0xFF00FF00);
    crEndFrame();
    crBgColor(0xFF000000);
    ASSERT_EQ(crBeginFrame(), 0);
    EXPECT_EQ(device.last_clear_flags, static_cast<uint32_t>(CLEAR_ZBUFFER));
    EXPECT_EQ(At(1, 1), 0x00FF00u);
    Triangle({0, 0, 0.9f}, {64, 0, 0.9f}, {0, 64, 0.9f}, 0xFF0000FF); // farther, but the depth was cleared
    EXPECT_EQ(At(1, 1), 0x0000FFu);
    crEndFrame();
    crBgColor(0x123456);
    ASSERT_EQ(crBeginFrame(), 0);
    EXPECT_EQ(CountOf(0x123456), 64 * 64);
    crEndFrame();
}

TEST_F(DrawTest, ViewportRestrictsClearingAndDrawing) {
    crSetViewport(8, 16, 20, 10);
    crEndFrame();
    crBgColor(0x0000FF);
    ASSERT_EQ(crBeginFrame(), 0);
    EXPECT_EQ(CountOf(0x0000FF), 20 * 10);
    Triangle({-100, -100, 0}, {300, -100, 0}, {-100, 300, 0}, 0xFFFF0000);
    EXPECT_EQ(CountOf(0xFF0000), 20 * 10);
    EXPECT_EQ(At(8, 16), 0xFF0000u);
    EXPECT_EQ(At(27, 25), 0xFF0000u);
    crSetViewport(-1, 5, 6, 7);
    int x, y, w, h;
    crGetViewport(x, y, w, h);
    EXPECT_TRUE(x == 0 && y == 0 && w == 64 && h == 64);
    crSetViewport(60, 60, 1000, 1000); // beyond the buffer
    Triangle({-1000, -1000, 0}, {3000, -1000, 0}, {-1000, 3000, 0}, 0xFF00FF00);
    EXPECT_EQ(CountOf(0x00FF00), 16);
}

TEST_F(DrawTest, FrontBufferGetsTheFinishedPicture) {
    Triangle({0, 0, 0}, {8, 0, 0}, {0, 8, 0}, 0xFF112233);
    crEndFrame();
    uint32_t pitch = 0;
    const auto* shown = reinterpret_cast<const uint32_t*>(criGetFrontBuffer()->Lock(0, 0, pitch));
    EXPECT_EQ(shown[0], 0x112233u);
    EXPECT_EQ(pitch, 64u * 4);
    EXPECT_EQ(crvStatFaces, 0u);
}

TEST_F(DrawTest, LockedBufferIsReadWithinBounds) {
    uint32_t r = 1, g = 2, b = 3;
    EXPECT_EQ(crUnlockBuffer(), -1);
    crGetBuffer(0, 0, r, g, b);
    EXPECT_TRUE(r == 255 && g == 0 && b == 0);
    Triangle({0, 0, 0}, {8, 0, 0}, {0, 8, 0}, 0xFF112233);
    EXPECT_EQ(crLockBuffer(BT_FRONT), 0); // the back buffer all the same
    EXPECT_EQ(crLockBuffer(BT_BACK), -1);
    crGetBuffer(1, 1, r, g, b);
    EXPECT_TRUE(r == 0x11 && g == 0x22 && b == 0x33);
    crGetBuffer(64, 0, r, g, b);
    EXPECT_TRUE(r == 255 && g == 0 && b == 0);
    EXPECT_EQ(crUnlockBuffer(), 0);
}

TEST_F(DrawTest, NewModeForgetsTheBackBufferLock) {
    EXPECT_EQ(crLockBuffer(BT_BACK), 0);
    EXPECT_EQ(crSetMode(32, 32, 32, 16, 0, 0, true), 0);
    EXPECT_EQ(crUnlockBuffer(), -1);
}
