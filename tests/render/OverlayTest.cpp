#include <bit>

#include <gtest/gtest.h>

#include "render/DrawFixture.h"
#include "render/FontGlyphs.h"
#include "render/Particles.h"
#include "render/Shapes.h"
#include "render/Text.h"
#include "render/TransparentFaces.h"

namespace {

class TextTest : public DrawTest {
protected:
    TextTest() {
        for (const CRFont font : {CRF_8x12, CRF_10, CRF_33})
            EXPECT_EQ(crLoadFont(font), 0);
        crPresetMode(RM_TEXT);
        Use(CRF_8x12);
        crTextColor(0xFFFFFFFF);
    }
    static void Use(CRFont font, float space = 0) {
        crTextFont(font);
        crTextParam(-1, -1, space);
    }
    // Colour and left edge of each letter drawn.
    std::vector<std::pair<uint32_t, float>> Letters() const {
        std::vector<std::pair<uint32_t, float>> letters;
        for (const auto& bytes : device.drawn) {
            float x;
            uint32_t color;
            std::memcpy(&x, bytes.data(), sizeof(x));
            std::memcpy(&color, bytes.data() + 16, sizeof(color));
            letters.emplace_back(color, x);
        }
        return letters;
    }
    using Expected = std::vector<std::pair<uint32_t, float>>;
};

constexpr uint32_t RED = 0xFFFF0000, TEXT = 0xFFFFFFFF;

} // namespace

TEST_F(TextTest, LettersHaveTheDotsOfTheirGlyphs) {
    crText(0, 0, "I");
    EXPECT_EQ(CountOf(0xFFFFFF), 3 + 5 + 3);
    EXPECT_EQ(At(2, 2), 0xFFFFFFu); // its top left dot
    EXPECT_EQ(At(3, 5), 0xFFFFFFu);
    EXPECT_EQ(At(2, 5), 0u);
    for (const CRFont font : {CRF_8x12, CRF_10, CRF_33}) {
        Use(font);
        for (int i = 0; i < GLYPH_COUNT; ++i) {
            int dots = 0;
            for (const uint16_t column : GLYPHS[i])
                dots += std::popcount(column);
            const char c = static_cast<char>(FIRST_GLYPH + i);
            crTexture(CR_NO_TEXTURE, 0);
            crRect(0, 64, 0, 64, 0xFF000000);
            crText(10, 10, c == '{' ? std::string("{{") : std::string(1, c));
            EXPECT_EQ(CountOf(0xFFFFFF), dots * (font == CRF_33 ? 9 : 1)) << c << " in font " << font;
        }
    }
}

TEST_F(TextTest, WidthsFollowTheFont) {
    EXPECT_EQ(crGetTextWidth("W! "), 24);
    EXPECT_EQ(crGetTextWidth("W! ", 1), 8);
    EXPECT_EQ(crGetTextWidth("ab\nabc{FF0000}d{}"), 32);
    EXPECT_EQ(crGetTextHeight("ab\nabc"), 24);
    EXPECT_EQ(crGetTextWidth(""), 0);
    crTextParam(-1, 24, 2); // twice the size: 16 by 24
    EXPECT_EQ(crGetTextWidth("ab"), 36);
    Use(CRF_10); // five, one and no columns of dots, one more between letters
    EXPECT_NEAR(crGetTextWidth("W! "), 6 + 2 + 3, 0.001f);
    crTextParam(20, 10, 1);
    EXPECT_NEAR(crGetTextWidth("W!"), 2 * (6 + 2) + 2, 0.001f);
    Use(CRF_33); // dots of three by three
    EXPECT_NEAR(crGetTextWidth("W! "), 3 * (6 + 2 + 3), 0.001f);
    EXPECT_EQ(crGetTextHeight("W"), 33);
}

TEST_F(TextTest, BracesSetColours) {
    struct Case {
        const char* text;
        Expected letters;
    };
    const Case cases[] = {
        {"{FF0000}ab{}c", {{RED, 0}, {RED, 8}, {TEXT, 16}}},
        {"a b\nc", {{TEXT, 0}, {TEXT, 16}, {TEXT, 0}}},
        {"{{a", {{TEXT, 0}, {TEXT, 8}}},
        {"{ff00g0}", {{TEXT, 0}, {TEXT, 8}, {TEXT, 16}, {TEXT, 24}, {TEXT, 32}, {TEXT, 40}, {TEXT, 48}}}, // no number
        {"{FF00", {{TEXT, 0}, {TEXT, 8}, {TEXT, 16}, {TEXT, 24}}},
        {"{ff0000}{", {}},
        {"a\tb", {{TEXT, 0}, {TEXT, 16}}},
        {"\xFF\x80"
         "a",
         {{TEXT, 16}}},
    };
    for (const Case& c : cases) {
        device.drawn.clear();
        crText(0, 0, c.text);
        EXPECT_EQ(Letters(), c.letters) << c.text;
    }
    crTextColor(0x80FFFFFF); // the alpha stays
    device.drawn.clear();
    crText(5, 0, "{FF0000}abc", 9);
    EXPECT_EQ(Letters(), (Expected{{0x80FF0000, 5}}));
}

TEST_F(DrawTest, RectanglesOnTheScreen) {
    crRect(2, 10, 4, 7, 0xFFFF0000);
    EXPECT_EQ(CountOf(0xFF0000), 8 * 3);
    crWireRect(20.5f, 30.5f, 20.5f, 26.5f, 0xFF00FF00, 1);
    EXPECT_EQ(CountOf(0x00FF00), 2 * 10 + 2 * 6);
    crWireRect(20.5f, 30.5f, 20.5f, 26.5f, 0xFF00FF00, -1); // the texture five times along an edge
    float u;
    std::memcpy(&u, device.drawn.back().data() + 28 + 20, sizeof(u));
    EXPECT_EQ(u, 5);
    cr3DRect(40, 60, 40, 50, 2, 0xFF101010, 0xFF202020, 0xFF303030);
    EXPECT_EQ(CountOf(0x101010), 16 * 6);
    // The bevels meet on the slopes of the corners without a gap.
    EXPECT_EQ(CountOf(0x101010) + CountOf(0x202020) + CountOf(0x303030), 20 * 10);
    EXPECT_EQ(At(50, 40), 0x303030u);
    EXPECT_EQ(At(40, 45), 0x303030u);
    EXPECT_EQ(At(50, 49), 0x202020u);
    EXPECT_EQ(At(59, 45), 0x202020u);
}

TEST_F(DrawTest, AxisAndBoxInTheWorld) {
    crAxis({20.5f, 20.5f, 0.5f}, 10); // its Z line looks along the view: no length on the screen, and out of depth
    EXPECT_EQ(At(25, 20), 0xFF0000u);
    EXPECT_EQ(At(20, 25), 0x00FF00u);
    EXPECT_EQ(At(16, 20) & 0xFFFF, 0u);
    EXPECT_EQ(Picture()[20 * SIDE + 16] >> 16 & 0xFF, 0x80u + 13); // 255 down to 128, a tenth before its end
    crBox({44.5f, 44.5f, 0.5f}, {10, 6, 1});
    EXPECT_EQ(CountOf(0xFFFFFF), 2 * 10 + 2 * 6 - 1); // lines only end in one corner
}

TEST_F(DrawTest, ParticlesFaceTheCamera) {
    const uint32_t old = crMCurrent(CRM_PROJ);
    crMSetIdentity();
    crMProj(PI / 2, 1, 1, 100);
    crMCurrent(CRM_VIEW);
    EXPECT_EQ(crMViewTo({0, 0, 0}, {10, 0, 0}, {0, 1, 0}, 0), 0);
    crMCurrent(old);
    crMUpdate();
    // At distance 10 the picture is 20 wide: 3.2 pixels a unit.
    crDrawParticle({10, 0, 0}, 10, 5, CR_NO_TEXTURE, 0xFFFFFFFF, 0, BM_ONE, BM_ONE);
    crDrawParticle({0, 0, 90}, 10, 5, CR_NO_TEXTURE, 0x00FFFFFF, 0, BM_SRCALPHA, BM_ONE); // nothing to see
    crDrawParticle({10, 0, 0}, 10, 5, CR_NO_TEXTURE, 0xFF000000, 0, BM_ONE, BM_ONE);
    EXPECT_EQ(crvTFCount, 1u);
    crEndFrame();
    EXPECT_EQ(CountOf(0xFEFEFE), 32 * 16); // 255 * 255 / 256
    EXPECT_EQ(At(16, 24), 0xFEFEFEu);

    ASSERT_EQ(crBeginFrame(), 0);
    crDrawParticle({10, 0, 0}, 10, 5, CR_NO_TEXTURE, 0xFFFFFFFF, 256, BM_ONE, BM_ONE); // a quarter turn
    crEndFrame();
    EXPECT_EQ(CountOf(0xFEFEFE), 32 * 16);
    EXPECT_EQ(At(24, 16), 0xFEFEFEu);
    EXPECT_EQ(At(16, 24), 0u);

    ASSERT_EQ(crBeginFrame(), 0);
    crDrawDirParticle({10, 0, 0}, 5, 10, CR_NO_TEXTURE, 0xFFFFFFFF, {0, 0, -3}, BM_ONE, BM_ONE);
    crEndFrame();
    EXPECT_EQ(CountOf(0xFEFEFE), 32 * 16);
    EXPECT_EQ(At(16, 24), 0xFEFEFEu);
    ASSERT_EQ(crBeginFrame(), 0);
    crDrawVertParticle({10, 0, 0}, 10, 5, CR_NO_TEXTURE, 0xFFFFFFFF, BM_ONE, BM_ONE);
    crEndFrame();
    EXPECT_EQ(CountOf(0xFEFEFE), 32 * 16);

    crFogTablePow(20, 1); // half gone at distance 10: entry 127 of 255
    ASSERT_EQ(crBeginFrame(), 0);
    crDrawParticle({10, 0, 0}, 10, 5, CR_NO_TEXTURE, 0xFFFFFFFF, 0, BM_ONE, BM_ONE);
    crDrawParticle({21, 0, 0}, 10, 5, CR_NO_TEXTURE, 0xFFFFFFFF, 0, BM_ONE, BM_ONE);
    crEndFrame();
    EXPECT_EQ(CountOf(0x7F7F7F), 32 * 16); // 255 * 128 / 256
    crFogTablePow(16384, 1000);
}
