#include <cstring>

#include <gtest/gtest.h>

#include "foundation/TempFolder.h"
#include "render/SoftDevice.h"
#include "render/TestPictures.h"
#include "render/Textures.h"

namespace {

// A device whose limits a test sets.
class LimitedDevice : public SoftDevice {
public:
    const std::vector<PixelFormat>& TextureFormats() const override {
        return formats.empty() ? SoftDevice::TextureFormats() : formats;
    }
    uint32_t MaxTextureSize() const override { return max_size; }
    bool SupportsCubeMaps() const override { return cube_maps; }
    std::unique_ptr<DeviceSurface> CreateTexture(const TextureDescription& d) override {
        last = d;
        return SoftDevice::CreateTexture(d);
    }
    void PreloadTexture(DeviceSurface&) override { ++preloaded; }

    std::vector<PixelFormat> formats;
    uint32_t max_size = 4096;
    bool cube_maps = true;
    TextureDescription last;
    int preloaded = 0;
};

class TextureTest : public testing::Test {
protected:
    TextureTest() { criSetTextureDevice(&device); }
    ~TextureTest() override {
        crvTForceMipmap = crvTForceType = crvTForceBpp = crvTForceScaleDown = -1;
        crvTForcePreload = crvTForceAvgColorUpdate = false;
        criSetTextureDevice(nullptr);
    }
    // One level of one face, words of pixelsize bytes.
    static std::vector<uint32_t> Level(uint32_t handle, uint32_t level, uint32_t face = 0) {
        const CRTexture& t = *crTRecord(handle);
        uint32_t pitch = 0;
        const uint8_t* row = t.surface->Lock(level, face, pitch);
        std::vector<uint32_t> words;
        for (uint32_t y = 0; row && y < LevelSide(t.height, level); ++y, row += pitch)
            for (uint32_t x = 0; x < LevelSide(t.width, level); ++x) {
                uint32_t word = 0;
                std::memcpy(&word, row + x * t.actformat->pixelsize, t.actformat->pixelsize);
                words.push_back(word);
            }
        return words;
    }
    static std::vector<uint32_t> Pixels(uint32_t handle) {
        std::vector<uint32_t> argb;
        uint32_t w = 0, h = 0;
        EXPECT_TRUE(crTReadPixels(handle, argb, w, h));
        return argb;
    }

    TempFolder folder;
    CurrentFolder current{folder.Path()};
    LimitedDevice device;
};

using Words = std::vector<uint32_t>;

constexpr PixelFormat X8R8G8B8{.rgb = true, .bits = 32, .mask = {0xFF0000, 0xFF00, 0xFF, 0}};
constexpr PixelFormat R5G6B5{.rgb = true, .bits = 16, .mask = {0xF800, 0x7E0, 0x1F, 0}};
constexpr PixelFormat X1R5G5B5{.rgb = true, .bits = 16, .mask = {0x7C00, 0x3E0, 0x1F, 0}};
constexpr PixelFormat A1R5G5B5{.rgb = true, .alpha = true, .bits = 16, .mask = {0x7C00, 0x3E0, 0x1F, 0x8000}};
constexpr PixelFormat A2R5G5B5{.rgb = true, .alpha = true, .bits = 32, .mask = {0x7C00, 0x3E0, 0x1F, 0x18000}};

} // namespace

TEST_F(TextureTest, FormatFollowsTypeAndDepth) {
    struct Case {
        std::vector<PixelFormat> formats; // none: the soft device's
        uint32_t type, bpp;
        uint32_t red_mask, alpha_mask, pixelsize; // pixelsize 0: no format
    };
    const Case cases[] = {
        {{}, TEX_NORMAL, 32, 0xFF0000, 0, 4},
        {{}, TEX_NORMAL, 24, 0xFF0000, 0, 3},
        {{}, TEX_NORMAL, 16, 0xF800, 0, 2},
        {{}, TEX_NORMAL, 8, 0, 0, 0},
        {{}, TEX_ALPHA_NORMAL, 32, 0xFF0000, 0xFF000000, 4},
        {{}, TEX_ALPHA_NORMAL, 24, 0xF00, 0xF000, 2},
        {{}, TEX_ALPHA, 8, 0, 0xFF, 1},
        {{}, TEX_ALPHA, 32, 0xFF0000, 0xFF000000, 4}, // the first with eight bits
        {{}, TEX_BUMP, 16, 0x1F, 0, 2},
        {{}, TEX_TARGET, 32, 0xFF0000, 0xFF000000, 4},
        {{}, 5, 32, 0, 0, 0},
        {{R5G6B5, X8R8G8B8}, TEX_NORMAL, 32, 0xF800, 0, 2}, // the order decides
        {{X1R5G5B5, R5G6B5}, TEX_NORMAL, 32, 0xF800, 0, 2},
        {{X1R5G5B5}, TEX_NORMAL, 16, 0x7C00, 0, 2}, // no exact one: the best
        {{A1R5G5B5, A2R5G5B5}, TEX_ALPHA_NORMAL, 32, 0x7C00, 0x18000, 4},
        {{A2R5G5B5, A1R5G5B5}, TEX_ALPHA_NORMAL, 32, 0x7C00, 0x18000, 4},
        {{X1R5G5B5}, TEX_ALPHA_NORMAL, 32, 0, 0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "type " << c.type << " bpp " << c.bpp << " formats " << c.formats.size());
        device.formats = c.formats;
        criTInit();
        const uint32_t handle = crTCreate(4, 4, c.bpp, 1, c.type, 2, true);
        const CRTexture* texture = crTRecord(handle);
        ASSERT_EQ(texture != nullptr, c.pixelsize != 0);
        if (!texture)
            continue;
        EXPECT_EQ(texture->actformat->pixelsize, c.pixelsize);
        EXPECT_EQ(texture->actformat->pf.mask[0], c.red_mask);
        EXPECT_EQ(texture->actformat->pf.mask[3], c.alpha_mask);
        EXPECT_EQ(device.last.levels, c.type == TEX_TARGET ? 1u : 2u);
        EXPECT_EQ(device.last.stage, 2u);
        EXPECT_TRUE(device.last.dynamic);
    }
}

TEST_F(TextureTest, ShiftsStandAtTheMasksTop) {
    criTInit();
    const int32_t expected[][4] = {{16, 8, 0, 0}, {16, 8, 0, 0}, {8, 3, -3, 0}, {16, 8, 0, 24},
                                   {4, 0, -4, 8}, {0, 0, 0, 0},  {-3, 2, 8, 0}};
    ASSERT_EQ(crvTFormats.size(), std::size(expected));
    for (size_t i = 0; i < crvTFormats.size(); ++i)
        for (size_t c = 0; c < 4; ++c)
            EXPECT_EQ(crvTFormats[i].shift[c], expected[i][c]) << i << " " << c;
}

TEST_F(TextureTest, LevelsRunDownToASideOfTwo) {
    const uint32_t handle = crTCreate(256, 128, 32, 1, TEX_NORMAL, 0, false);
    EXPECT_EQ(crTRecord(handle)->surface->Levels(), 7u);
    EXPECT_EQ(crTRecord(handle)->size, 4u * (32768 + 8192 + 2048 + 512 + 128 + 32 + 8));
    EXPECT_EQ(Level(handle, 6).size(), 8u);
    const Words pixels(8);
    EXPECT_EQ(crTFillTexture(handle, pixels.data(), 7, 0), -2);
    EXPECT_EQ(crTFillTexture(handle, pixels.data(), 6, CRT_FACE | 1), -21);
    EXPECT_EQ(crTFillTexture(CR_NO_TEXTURE, pixels.data(), 0, 0), -1);
    EXPECT_EQ(crTFillTexture(CR_MAX_TEXTURES, pixels.data(), 0, 0), -1);
    EXPECT_EQ(crTFillTexture(handle, pixels.data(), 6, 0), 0);

    crvTForceMipmap = 3;
    EXPECT_EQ(crTRecord(crTCreate(256, 256, 32, 1, TEX_NORMAL, 0, false))->surface->Levels(), 3u);
    EXPECT_EQ(crTRecord(crTCreate(4, 4, 32, 1, TEX_NORMAL, 0, false))->surface->Levels(), 2u);
    for (const auto& [w, h] : {std::pair{0u, 4u}, std::pair{4u, 0u}, std::pair{5000u, 4u}})
        EXPECT_EQ(crTCreate(w, h, 32, 1, TEX_NORMAL, 0, false), CR_NO_TEXTURE);
    EXPECT_EQ(crTCreate(4, 5, 32, 1, TEX_NORMAL | CRT_CUBE_MAP, 0, false), CR_NO_TEXTURE);
}

TEST_F(TextureTest, ForcedTypeAndDepthReplaceTheWish) {
    crvTForceType = TEX_ALPHA_NORMAL;
    crvTForceBpp = 16;
    const CRTexture* texture = crTRecord(crTCreate(4, 4, 32, 1, TEX_NORMAL, 0, false));
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture->type, TEX_ALPHA_NORMAL);
    EXPECT_EQ(texture->actformat->pf.mask[3], 0xF000u);
    crvTForceType = 5;
    EXPECT_EQ(crTCreate(4, 4, 32, 1, TEX_NORMAL, 0, false), CR_NO_TEXTURE);
}

// 4 by 4 words; the second level is worked out by hand, each channel's sum over four pixels divided by 4, rounded down.
TEST_F(TextureTest, EachLevelIsTheMeanOfTheOneAbove) {
    const Words picture = {
        0x00000000, 0x04010203, 0xFF000000, 0xFF000000, 0x00000000, 0x00000000, 0xFF000000, 0xFFFFFFFF,
        0x10203040, 0x10203040, 0x01010101, 0x01010101, 0x10203040, 0x14243444, 0x01010101, 0x01010100,
    };
    const Words halved = {0x01000000, 0xFF3F3F3F, 0x11213141, 0x01010100};
    WriteBytes("Textures/a.tga", TargaBytes(4, 4, 32, picture));
    const uint32_t handle = crTGet("Textures", "a", TL_MATERIAL);
    ASSERT_NE(handle, CR_NO_TEXTURE);
    EXPECT_EQ(Level(handle, 0), picture);
    EXPECT_EQ(Level(handle, 1), halved);
    EXPECT_EQ(Pixels(handle), picture);

    // The same chain from the surface alone.
    const Words wrong(4, 0x12345678);
    ASSERT_EQ(crTFillTexture(handle, wrong.data(), 1, 0), 0);
    ASSERT_EQ(crTComputeMipLevels(handle, nullptr), 0);
    EXPECT_EQ(Level(handle, 1), halved);
    EXPECT_EQ(crTComputeMipLevels(5, nullptr), -1);

    // A larger picture than the device can hold is halved first, and so is one that the setting shrinks.
    crTDestroy(handle);
    device.max_size = 2;
    const uint32_t small = crTGet("Textures", "a", TL_MATERIAL);
    ASSERT_NE(small, CR_NO_TEXTURE);
    EXPECT_EQ(crTRecord(small)->width, 2u);
    EXPECT_EQ(Level(small, 0), halved);
    EXPECT_EQ(crvTForceScaleDown, -1);
    crvTForceScaleDown = 3;
    EXPECT_EQ(crTCreateTga("Textures\\a.tga", 1), CR_NO_TEXTURE); // a size of 0
    crvTForceScaleDown = 1;
    device.max_size = 4096;
    const uint32_t shrunk = crTCreateTga("Textures\\a.tga", 1);
    ASSERT_NE(shrunk, CR_NO_TEXTURE);
    EXPECT_EQ(Level(shrunk, 0), halved);
    const uint32_t own = crTCreate(2, 2, 32, 1, TEX_ALPHA_NORMAL, 0, false);
    EXPECT_EQ(crTComputeMipLevels(own, picture.data()), 0);
    EXPECT_EQ(Level(own, 0), halved);
}

TEST_F(TextureTest, PicturesOfAnyDepthAndSize) {
    WriteBytes("mask.tga", TargaBytes(1, 3, 8, {0x10, 0x80, 0xFF}));
    WriteBytes("rgb.tga", TargaBytes(5, 1, 24, {0x010203, 0x040506, 0x070809, 0x0A0B0C, 0xFFFFFF}));
    WriteBytes("block.dds", Dxt1Bytes(0x07E0));
    const uint32_t mask = crTGet("", "mask.tga", 1), rgb = crTGet("", "rgb.tga", 1), block = crTGet("", "block.dds", 1);
    ASSERT_NE(mask, CR_NO_TEXTURE);
    ASSERT_NE(rgb, CR_NO_TEXTURE);
    ASSERT_NE(block, CR_NO_TEXTURE);
    EXPECT_EQ(Level(mask, 0), (Words{0x10, 0x80, 0xFF}));
    EXPECT_EQ(Pixels(mask), (Words{0x10000000, 0x80000000, 0xFF000000}));
    EXPECT_EQ(Pixels(rgb), (Words{0xFF010203, 0xFF040506, 0xFF070809, 0xFF0A0B0C, 0xFFFFFFFF}));
    EXPECT_EQ(Pixels(block), Words(16, 0xFF00FC00));

    device.formats = {R5G6B5};
    criTInit();
    WriteBytes("deep.tga", TargaBytes(1, 1, 24, 0xFF8081));
    EXPECT_EQ(Pixels(crTGet("", "deep.tga", 1)), (Words{0xFFF88080}));
}

TEST_F(TextureTest, FileNamesAndSharing) {
    WriteBytes("tex/Both.tga", TargaBytes(2, 2, 24, 0x112233));
    WriteBytes("tex/both.dds", Dxt1Bytes(0));
    WriteBytes("tex/only.dds", Dxt1Bytes(0));
    const uint32_t both = crTGet("tex", "both", 1);
    ASSERT_NE(both, CR_NO_TEXTURE);
    EXPECT_EQ(Pixels(both)[0], 0xFF112233u); // .tga before .dds
    EXPECT_EQ(crTGet("TEX", "BOTH", 2), both);
    EXPECT_EQ(crTRecord(both)->level, 1u);
    EXPECT_EQ(crTExist("tex", "both"), both);
    EXPECT_EQ(crTExist("tex", "both.tga"), CR_NO_TEXTURE);
    EXPECT_NE(crTGet("tex\\", "both", 1), CR_NO_TEXTURE);   // a closing backslash names the same file
    EXPECT_EQ(crTGet("tex", "only.tga", 1), CR_NO_TEXTURE); // no other ending is tried
    EXPECT_NE(crTGet("tex", "only", 1), CR_NO_TEXTURE);
    EXPECT_EQ(crTGet("tex", "nothing", 1), CR_NO_TEXTURE);

    const uint32_t sized = crTCreate(2, 2, 32, 1, TEX_NORMAL, 0, false); // has no name
    EXPECT_EQ(crTExist("", ""), CR_NO_TEXTURE);
    EXPECT_EQ(crTDestroy(sized), 0);
    EXPECT_EQ(crTDestroy(sized), -1);

    EXPECT_EQ(crTLoad(both, "tex", "only"), both);
    EXPECT_EQ(crTRecord(both)->level, 1u);
    EXPECT_EQ(crTRecord(both)->width, 4u);
    EXPECT_EQ(crTLoad(both, "tex", "nothing"), CR_NO_TEXTURE);
    EXPECT_EQ(crTRecord(both), nullptr);
    EXPECT_EQ(crTLoad(both, "tex", "only"), CR_NO_TEXTURE);
}

TEST_F(TextureTest, CubeMapsFromStackedPictures) {
    Words faces;
    for (uint32_t face = 0; face < 6; ++face)
        faces.insert(faces.end(), {face * 4, face * 4 + 1, face * 4 + 2, face * 4 + 3});
    WriteBytes("sky.tga", TargaBytes(2, 12, 24, faces));
    WriteBytes("bad.tga", TargaBytes(4, 23, 24));
    const uint32_t sky = crTCreateEnv("sky.tga", 1);
    ASSERT_NE(sky, CR_NO_TEXTURE);
    EXPECT_EQ(crTRecord(sky)->type, TEX_NORMAL | CRT_CUBE_MAP);
    EXPECT_EQ(crTRecord(sky)->height, 2u);
    EXPECT_EQ(crTRecord(sky)->size, 6u * 4 * 3);
    for (uint32_t face = 0; face < 6; ++face)
        EXPECT_EQ(Level(sky, 0, face), Words(faces.begin() + face * 4, faces.begin() + face * 4 + 4)) << face;
    EXPECT_EQ(crTCreateEnv("bad.tga", 1), CR_NO_TEXTURE);

    // Each face of the second level comes from its own face.
    Words large;
    for (uint32_t face = 0; face < 6; ++face)
        large.insert(large.end(), 16, 0x010101 * (face + 1));
    WriteBytes("large.tga", TargaBytes(4, 24, 24, large));
    const uint32_t chain = crTCreateEnv("large.tga", 1);
    ASSERT_NE(chain, CR_NO_TEXTURE);
    for (uint32_t face = 0; face < 6; ++face)
        EXPECT_EQ(Level(chain, 1, face), Words(4, 0x010101 * (face + 1))) << face;
    device.max_size = 2;
    EXPECT_EQ(crTCreateEnv("large.tga", 1), CR_NO_TEXTURE); // never scaled down
    device.cube_maps = false;
    EXPECT_EQ(crTGet("", "sky.env", 1), CR_NO_TEXTURE);
}

TEST_F(TextureTest, TableOfSlots) {
    EXPECT_EQ(crTCreate(1, 1, 32, 1, TEX_NORMAL, 0, false, 7), 7u);
    EXPECT_EQ(crTCreate(1, 1, 32, 1, TEX_NORMAL, 0, false, 7), 0u); // taken: the first empty one
    for (uint32_t i = 2; i < CR_MAX_TEXTURES; ++i)
        ASSERT_NE(crTCreate(1, 1, 32, i % 2 == 0 ? 2 : 4, TEX_NORMAL, 0, false), CR_NO_TEXTURE);
    EXPECT_EQ(crTCreate(1, 1, 32, 1, TEX_NORMAL, 0, false), CR_NO_TEXTURE);
    EXPECT_EQ(crTDestroy(1000), 0);
    EXPECT_EQ(crTCreate(1, 1, 32, 1, TEX_NORMAL, 0, false), 1000u);
    EXPECT_EQ(crTDestroyAll(0), 0);
    EXPECT_EQ(crTDestroyAll(1), 3);
    EXPECT_EQ(crTDestroyAll(2 | 4), 2045);
    EXPECT_EQ(crTRecord(CR_MAX_TEXTURES), nullptr);
    crTSetAdditionalPath("Extra", 4);
    crTSetAdditionalPath(std::string(300, 'p'), 3);
    EXPECT_EQ(crvTDefaultPath[3].size(), 255u);
}

TEST_F(TextureTest, AverageColourAndPreload) {
    WriteBytes("a.tga", TargaBytes(2, 1, 32, {0x00000010, 0xFF010003}));
    WriteBytes("b.tga", TargaBytes(2, 1, 24, {0x000010, 0x010003}));
    EXPECT_EQ(crTRecord(crTGet("", "a", 1))->avg_color, 0xFFFFFFFFu);
    EXPECT_EQ(device.preloaded, 0);
    crvTForceAvgColorUpdate = crvTForcePreload = true;
    EXPECT_EQ(crTRecord(crTGet(".", "a", 1))->avg_color, 0x7F000009u);
    EXPECT_EQ(crTRecord(crTGet(".", "b", 1))->avg_color, 0xFF000009u);
    EXPECT_EQ(device.preloaded, 2);
}

TEST_F(TextureTest, DamagedPicturesLoadNothing) {
    const std::string good = TargaBytes(4, 4, 32, 0xFFFFFFFF), block = Dxt1Bytes(0x1234);
    for (size_t length = 0; length < good.size(); ++length) {
        WriteBytes("cut.tga", good.substr(0, length));
        ASSERT_EQ(crTGet("", "cut.tga", 1), CR_NO_TEXTURE) << length;
    }
    for (size_t length = 0; length < block.size(); ++length) {
        WriteBytes("cut.dds", block.substr(0, length));
        crTDestroy(crTGet("", "cut.dds", 1)); // whatever it gives, it does not crash
    }
    for (size_t bit = 0; bit < 18 * 8; ++bit) {
        std::string flipped = good;
        flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ 1 << bit % 8);
        WriteBytes("flip.tga", flipped);
        crTDestroy(crTGet("", "flip.tga", 1));
        crTDestroy(crTCreateEnv("flip.tga", 1));
    }
    EXPECT_EQ(crTDestroyAll(0xFFFFFFFF), 0);
}
