#include <limits>

#include "desktop/GlScenes.h"

using namespace gl_test;

namespace {

class GlSurfacesTest : public GlTest {};

} // namespace

TEST_F(GlSurfacesTest, SmallerLevelsAreReadWhenAsked) {
    constexpr uint32_t FAR_COLOR = 0x00FF00;
    const auto level_colors = [](MFType filter) {
        const uint32_t handle = MakeTexture(16, [](uint32_t, uint32_t) { return 0xFFFF0000; });
        const std::vector<uint32_t> green(16 * 16, 0xFF000000 | FAR_COLOR);
        for (uint32_t level = 1; level < crTRecord(handle)->surface->Levels(); ++level)
            EXPECT_EQ(crTFillTexture(handle, green.data(), level, 0), 0);
        crTexture(handle, 0);
        criSetStageValue(0, TSS_MIPFILTER, filter);
        TexturedQuad(16); // four texels a pixel: level 2
    };
    EXPECT_EQ(Draw([&] { level_colors(MF_NONE); })[0], 0xFF0000u);
    EXPECT_EQ(Draw([&] { level_colors(MF_POINT); })[0], FAR_COLOR);
    EXPECT_EQ(Draw([&] { level_colors(MF_LINEAR); })[0], FAR_COLOR);
}

TEST_F(GlSurfacesTest, ATextureShowsWhatItHeldWhenItWasDrawn) {
    const Picture picture = Draw([] {
        const uint32_t handle = MakeTexture(4, [](uint32_t, uint32_t) { return 0xFFFF0000; });
        crTexture(handle, 0);
        TexturedQuad(1, 64);
        EXPECT_EQ(crTFillTexture(handle, std::vector<uint32_t>(16, 0xFF00FF00).data(), 0, 0), 0);
        TexturedQuad(1, 32);
        EXPECT_EQ(crTDestroy(handle), 0); // what is drawn stays
        const uint32_t other = MakeTexture(4, [](uint32_t, uint32_t) { return 0xFF0000FF; });
        crTexture(other, 0);
        TexturedQuad(1, 16);
    });
    EXPECT_EQ(picture[50 * SIDE + 50], 0xFF0000u);
    EXPECT_EQ(picture[20 * SIDE + 20], 0x00FF00u);
    EXPECT_EQ(picture[8 * SIDE + 8], 0x0000FFu);
}

TEST_F(GlSurfacesTest, LockedPicturesAreReadAndWritten) {
    const Mode mode(*device, SIDE, SIDE);
    Quad(0, 0, 64, 64, 0, 0xFF102030);
    Quad(8, 8, 16, 16, 0, 0xFFFF0000); // pending while the buffer is locked
    DeviceSurface& back = *device->BackBuffer();
    uint32_t pitch = 0;
    auto* rows = reinterpret_cast<uint32_t*>(back.Lock(0, 0, pitch));
    ASSERT_NE(rows, nullptr);
    ASSERT_EQ(pitch, SIDE * 4);
    EXPECT_EQ(rows[9 * SIDE + 9], 0xFF0000u);
    EXPECT_EQ(rows[0], 0x102030u);
    for (const uint32_t at : {0u, 63u, 5 * SIDE + 2, 63 * SIDE + 63})
        rows[at] = 0xABCDEF;
    EXPECT_TRUE(back.Unlock(0, 0));
    EXPECT_FALSE(back.Unlock(0, 0));
    Quad(20, 20, 24, 24, 0, 0xFF00FF00); // over what was written, not under it
    const PixelRectangle part{22, 2, 3, 60};
    rows = reinterpret_cast<uint32_t*>(back.LockPart(part, pitch));
    ASSERT_NE(rows, nullptr);
    EXPECT_EQ(rows[18 * SIDE], 0x00FF00u);
    rows[19 * SIDE + 2] = 0x123456;
    EXPECT_TRUE(back.Unlock(0, 0));
    EXPECT_TRUE(device->EndScene());
    const Picture picture = ReadSurface(back);
    EXPECT_EQ(std::count(picture.begin(), picture.end(), 0xABCDEFu), 4);
    EXPECT_EQ(std::count(picture.begin(), picture.end(), 0x00FF00u), 16);
    EXPECT_EQ(std::count(picture.begin(), picture.end(), 0xFF0000u), 64);
    EXPECT_EQ(picture[21 * SIDE + 24], 0x123456u);
    EXPECT_EQ(picture[63], 0xABCDEFu);

    // Only the part that is presented comes to the front.
    EXPECT_TRUE(device->Present({0, 0, 32, 64}));
    Picture front = ReadSurface(*device->FrontBuffer());
    EXPECT_EQ(front[0], 0xABCDEFu);
    EXPECT_EQ(front[63], 0u);
    EXPECT_EQ(std::count(front.begin(), front.end(), 0x00FF00u), 16);
    EXPECT_TRUE(device->Present({32, 32, 4000, 4000}));
    front = ReadSurface(*device->FrontBuffer());
    EXPECT_EQ(front[63 * SIDE + 63], 0xABCDEFu);
    EXPECT_EQ(front[63], 0u);
}

TEST_F(GlSurfacesTest, TheFrontIsShownUpright) {
    const Mode mode(*device, SIDE, SIDE);
    Quad(0, 0, 64, 8, 0, 0xFFFF0000);
    Quad(0, 56, 64, 64, 0, 0xFF0000FF);
    crvD3DDevice->EndScene();
    EXPECT_TRUE(device->Present({0, 0, SIDE, SIDE}));
    auto& gl = graphics->Functions();
    GLuint texture = 0, framebuffer = 0;
    gl.glGenTextures(1, &texture);
    gl.glBindTexture(GL_TEXTURE_2D, texture);
    gl.glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, SIDE, SIDE, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    gl.glGenFramebuffers(1, &framebuffer);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
    device->BlitTo(framebuffer, SIDE, SIDE);
    std::vector<uint8_t> rgba(4 * SIDE * SIDE);
    gl.glReadPixels(0, 0, SIDE, SIDE, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
    const auto row = [&](uint32_t y) { return std::vector<uint8_t>(&rgba[4 * SIDE * y], &rgba[4 * SIDE * y] + 4); };
    EXPECT_EQ(row(SIDE - 1), (std::vector<uint8_t>{255, 0, 0, 255})); // OpenGL's last row is the top
    EXPECT_EQ(row(0), (std::vector<uint8_t>{0, 0, 255, 255}));
    EXPECT_EQ(row(32), (std::vector<uint8_t>{0, 0, 0, 255}));
    gl.glDeleteFramebuffers(1, &framebuffer);
    gl.glDeleteTextures(1, &texture);
    EXPECT_EQ(gl.glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(GlSurfacesTest, WildInputIsLeftOut) {
    const float nan = std::nanf(""), infinite = std::numeric_limits<float>::infinity();
    ExpectSame("not a number, far away, no such vertex", [&] {
        Shape(PT_TRI_LIST, {{0, 0, nan}, {64, 0, 0}, {0, 64, 0}}, WHITE);
        Shape(PT_TRI_FAN, {{60, 60, 0}, {64, 60, 0}, {infinite, 64, 0}, {60, 64, 0}, {50, 60, 0}}, WHITE);
        Shape(PT_TRI_LIST, {{-1e6f, -1e6f, 0.9f}, {3e6f, -1e6f, 0.9f}, {-1e6f, 3e6f, 0.9f}}, 0xFF800000);
        crBeginIndexed(VT_XYZ | VT_DIFFUSE, PT_TRI_LIST);
        Vertex(0, 0, 0, 0xFF00FF00), Vertex(8, 0, 0, 0xFF00FF00), Vertex(0, 8, 0, 0xFF00FF00);
        crIndexFace(0, 1, 3);
        crIndexFace(0, 1, 2);
        crIndexFace(9, 9, 9);
        crEnd();
    });
    const uint8_t vertex[LARGEST_VERTEX] = {};
    EXPECT_FALSE(device->DrawPrimitive(PT_POINT_LIST, VT_XYZ, vertex, 1)); // no mode
    EXPECT_FALSE(device->CreateBackBuffer(0, 5));
    EXPECT_FALSE(device->CreateBackBuffer(1u << 20, 5));
    EXPECT_FALSE(device->CreateDepthBuffer({24, 0}));
    EXPECT_FALSE(device->Open());
    const Mode mode(*device, SIDE, SIDE);
    EXPECT_FALSE(device->BeginScene());
    EXPECT_FALSE(device->DrawPrimitive(PT_POINT_LIST, VT_DIFFUSE, vertex, 1)); // no position
    EXPECT_FALSE(device->DrawPrimitive(static_cast<PrimType>(9), VT_XYZ, vertex, 1));
    EXPECT_FALSE(device->Present({0, 0, 1, 1})); // within a scene
    EXPECT_TRUE(device->EndScene());
    EXPECT_FALSE(device->EndScene());
    EXPECT_FALSE(device->DrawPrimitive(PT_POINT_LIST, VT_XYZ, vertex, 1));
    EXPECT_EQ(graphics->Functions().glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    graphics->context->doneCurrent();
    EXPECT_FALSE(device->BeginScene());
    uint32_t pitch = 0;
    EXPECT_EQ(device->BackBuffer()->Lock(0, 0, pitch), nullptr);
    EXPECT_TRUE(graphics->context->makeCurrent(graphics->surface.get()));
    EXPECT_FALSE(GlDevice(nullptr).IsUsable());
}
