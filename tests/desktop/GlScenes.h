// Scenes drawn by the OpenGL device in a context without a window, and by the software device beside it.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>

#include <gtest/gtest.h>

#include <QApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include "desktop/GlDevice.h"
#include "render/Batches.h"
#include "render/Frame.h"
#include "render/SoftDevice.h"
#include "render/StateCache.h"
#include "render/Textures.h"

namespace gl_test {

inline constexpr uint32_t WHITE = 0xFFFFFFFF;

// A context without a window.
class Graphics {
public:
    Graphics() {
        static int argc = 1;
        static char name[] = "test", *argv[] = {name, nullptr};
        if (!QCoreApplication::instance())
            application = std::make_unique<QApplication>(argc, argv);
        QSurfaceFormat format;
        format.setVersion(3, 3);
        format.setProfile(QSurfaceFormat::CoreProfile);
        surface = std::make_unique<QOffscreenSurface>();
        surface->setFormat(format);
        surface->create();
        context = std::make_unique<QOpenGLContext>();
        context->setFormat(format);
        const std::string platform = "the window system \"" + QGuiApplication::platformName().toStdString() + "\"";
        if (!context->create())
            missing = platform + " gives no OpenGL context (it needs a display, as of Xvfb)";
        else if (!context->makeCurrent(surface.get()))
            missing = "the OpenGL context of " + platform + " cannot be made current";
        else if (!GlDevice(context.get()).IsUsable())
            missing = "the OpenGL of " + platform + " is older than 3.3 core";
    }
    QOpenGLFunctions& Functions() { return *context->functions(); }

    std::string missing; // why there is none
    std::unique_ptr<QApplication> application;
    std::unique_ptr<QOffscreenSurface> surface;
    std::unique_ptr<QOpenGLContext> context;
};

using Picture = std::vector<uint32_t>; // 0xRRGGBB

inline Picture ReadSurface(DeviceSurface& surface) {
    Picture picture;
    uint32_t pitch = 0;
    const uint8_t* const rows = surface.Lock(0, 0, pitch);
    EXPECT_NE(rows, nullptr);
    for (uint32_t y = 0; rows && y < surface.Height(); ++y)
        for (uint32_t x = 0; x < surface.Width(); ++x) {
            uint32_t word;
            std::memcpy(&word, rows + static_cast<size_t>(y) * pitch + static_cast<size_t>(x) * 4, sizeof(word));
            picture.push_back(word);
        }
    EXPECT_TRUE(surface.Unlock(0, 0));
    return picture;
}

inline void SetMatrix(TrType type, const D3DMATRIX& m) {
    const uint32_t old = crMCurrent(type);
    crMSet(m);
    crMCurrent(old);
}

// A mode of this size on a device, a frame begun. Positions are pixels from the top left corner, depth 0 to 1.
class Mode {
public:
    Mode(Device& device, uint32_t width, uint32_t height) {
        crInit({&device});
        criSetRenderer(crGetRootDevice(), &crGetRootDevice()->devices.front());
        EXPECT_EQ(crSetMode(width, height, 32, 32, 0, 0, true), 0);
        crBgColor(0);
        crvRenderEnabled = true;
        SetMatrix(CRM_WORLD, crIdentity());
        SetMatrix(CRM_VIEW, crIdentity());
        const auto w = static_cast<float>(width), h = static_cast<float>(height);
        SetMatrix(CRM_PROJ, {{{2 / w, 0, 0, 0}, {0, -2 / h, 0, 0}, {0, 0, 1, 0}, {-1, 1, 0, 1}}});
        EXPECT_EQ(crBeginFrame(), 0);
        crPresetMode(RM_NORMAL);
        criSetStateValue(RS_CULLMODE, CULL_NONE);
    }
    ~Mode() {
        crRelease();
        crvRenderEnabled = false;
    }
    Mode(const Mode&) = delete;
    Mode& operator=(const Mode&) = delete;
};

using Scene = std::function<void()>;

inline Picture Draw(Device& device, uint32_t width, uint32_t height, const Scene& scene) {
    const Mode mode(device, width, height);
    scene();
    device.EndScene();
    return ReadSurface(*device.BackBuffer());
}

struct Difference {
    double mean = 0;   // of a channel, 0 to 255
    size_t strong = 0; // pixels with a channel off by more than STRONG
    size_t drawn = 0;  // pixels that are not black in the first picture
};

inline Difference Compare(const Picture& a, const Picture& b) {
    constexpr int STRONG = 24;
    Difference difference;
    double sum = 0;
    for (size_t i = 0; i < a.size() && i < b.size(); ++i) {
        int most = 0;
        for (const int shift : {0, 8, 16}) {
            const int off = std::abs(static_cast<int>(a[i] >> shift & 255) - static_cast<int>(b[i] >> shift & 255));
            most = std::max(most, off);
            sum += off;
        }
        difference.strong += most > STRONG ? 1 : 0;
        difference.drawn += a[i] != 0 ? 1 : 0;
    }
    difference.mean = sum / static_cast<double>(3 * a.size());
    return difference;
}

class GlTest : public testing::Test {
protected:
    static constexpr uint32_t SIDE = 64;

    static void SetUpTestSuite() { graphics = std::make_unique<Graphics>(); }
    static void TearDownTestSuite() { graphics.reset(); }

    void SetUp() override {
        if (!graphics->missing.empty())
            GTEST_SKIP() << "OpenGL is not tested here: " << graphics->missing << ".";
        device = std::make_unique<GlDevice>(graphics->context.get());
    }
    // Both devices draw the scene alike, and something is to be seen. strong: how many pixels may differ much.
    void ExpectSame(const std::string& name, const Scene& scene, size_t strong = 0, double mean = 0.25,
                    uint32_t width = SIDE, uint32_t height = SIDE) {
        SoftDevice soft;
        const Picture expected = gl_test::Draw(soft, width, height, scene),
                      picture = gl_test::Draw(*device, width, height, scene);
        ASSERT_EQ(picture.size(), expected.size()) << name;
        const Difference difference = Compare(expected, picture);
        EXPECT_GT(difference.drawn, 0u) << name;
        EXPECT_LE(difference.strong, strong) << name << " of " << difference.drawn;
        EXPECT_LE(difference.mean, mean) << name;
    }
    Picture Draw(const Scene& scene) { return gl_test::Draw(*device, SIDE, SIDE, scene); }

    static inline std::unique_ptr<Graphics> graphics;
    std::unique_ptr<GlDevice> device;
};

inline void Vertex(float x, float y, float z, uint32_t color) {
    crDiffuse(color);
    crXYZ(x, y, z);
}

inline void Shape(PrimType prim, const std::vector<D3DVECTOR>& points, uint32_t color) {
    crBegin(prim, VT_XYZ | VT_DIFFUSE);
    for (const D3DVECTOR& p : points)
        Vertex(p.x, p.y, p.z, color);
    crEnd();
}

inline void Quad(float x1, float y1, float x2, float y2, float z, uint32_t color) {
    Shape(PT_TRI_STRIP, {{x1, y1, z}, {x2, y1, z}, {x1, y2, z}, {x2, y2, z}}, color);
}

inline void ScreenVertex(float x, float y, float rhw, float u, float v) {
    crRHW(rhw);
    crUV(u, v);
    Vertex(x, y, 0, WHITE);
}

// From corner to corner of the screen, u and v from 0 to most.
inline void TexturedQuad(float most, float side = 64) {
    crBegin(PT_TRI_FAN, VT_XYZRHW | VT_DIFFUSE | VT_TEX1);
    ScreenVertex(0, 0, 1, 0, 0), ScreenVertex(side, 0, 1, most, 0), ScreenVertex(side, side, 1, most, most),
        ScreenVertex(0, side, 1, 0, most);
    crEnd();
}

inline uint32_t MakeTexture(uint32_t side, const std::function<uint32_t(uint32_t, uint32_t)>& argb,
                            uint32_t type = TEX_ALPHA_NORMAL, uint32_t bpp = 32) {
    std::vector<uint32_t> words;
    for (uint32_t y = 0; y < side; ++y)
        for (uint32_t x = 0; x < side; ++x)
            words.push_back(argb(x, y));
    const uint32_t handle = crTCreate(side, side, bpp, TL_MATERIAL, type, 0, false);
    EXPECT_EQ(crTComputeMipLevels(handle, words.data()), 0);
    return handle;
}

inline uint32_t Pattern(uint32_t x, uint32_t y) {
    return ((x + 3 * y) * 16 & 255) << 24 | x * 31 << 16 | y * 31 << 8 | 0x80;
}

} // namespace gl_test
