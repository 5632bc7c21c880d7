#include <gtest/gtest.h>

#include "render/DrawFixture.h"
#include "render/Textures.h"

using StateCacheTest = DrawTest;

TEST_F(StateCacheTest, StatesAreSentOnce) {
    device.states.clear();
    criSetStateValue(RS_TEXTUREFACTOR, 5);
    criSetStateValue(RS_TEXTUREFACTOR, 5);
    criSetStateValue(RS_TEXTUREFACTOR, 6);
    criSetStateValue(RENDER_STATES, 1); // no such state
    const std::vector<std::pair<uint32_t, uint32_t>> expected = {{RS_TEXTUREFACTOR, 5}, {RS_TEXTUREFACTOR, 6}};
    EXPECT_EQ(device.states, expected);

    device.calls.clear();
    criSetStageValue(3, TSS_TEXCOORDINDEX, 0);
    criSetStageValue(3, TSS_TEXCOORDINDEX, 0);
    criSetStageValue(TEXTURE_STAGES, TSS_TEXCOORDINDEX, 0);
    criSetStageValue(0, STAGE_STATES, 0);
    EXPECT_EQ(device.Count("SetTextureStageState"), 1);

    EXPECT_EQ(crSetMode(64, 64, 32, 32, 0, 0, true), 0); // a new mode knows nothing
    device.states.clear();
    criSetStateValue(RS_TEXTUREFACTOR, 6);
    criSetStateValue(RS_LIGHTING, 0); // switched off by the mode
    EXPECT_EQ(device.states.size(), 1u);
}

TEST_F(StateCacheTest, BlendingAndAlphaTestSwitchOff) {
    crAlphaBlend(BM_SRCALPHA, BM_ONE);
    EXPECT_EQ(crvLastStateValues[RS_ALPHABLENDENABLE], 1u);
    EXPECT_EQ(crvLastStateValues[RS_SRCBLEND], static_cast<uint32_t>(BM_SRCALPHA));
    EXPECT_EQ(crvLastStateValues[RS_DESTBLEND], static_cast<uint32_t>(BM_ONE));
    crAlphaBlend(BM_ONE, BM_ZERO);
    EXPECT_EQ(crvLastStateValues[RS_ALPHABLENDENABLE], 0u);
    crAlphaBlend(BM_DESTCOLOR, BM_ZERO);
    crAlphaBlend(BM_NONE, BM_SRCCOLOR);
    EXPECT_EQ(crvLastStateValues[RS_ALPHABLENDENABLE], 0u);
    EXPECT_EQ(crvLastStateValues[RS_SRCBLEND], static_cast<uint32_t>(BM_ONE));
    EXPECT_EQ(crvLastStateValues[RS_DESTBLEND], static_cast<uint32_t>(BM_ZERO));
    crAlphaTest(CMP_GREATEREQUAL, 7);
    EXPECT_EQ(crvLastStateValues[RS_ALPHATESTENABLE], 1u);
    EXPECT_EQ(crvLastStateValues[RS_ALPHAREF], 7u);
    crAlphaTest(CMP_OFF);
    EXPECT_EQ(crvLastStateValues[RS_ALPHATESTENABLE], 0u);
}

TEST_F(StateCacheTest, TexturesAreBoundOnceAndLeaveWithTheirSurface) {
    const uint32_t texture = crTCreate(4, 4, 32, TL_MATERIAL, TEX_NORMAL, 0, false);
    ASSERT_NE(texture, CR_NO_TEXTURE);
    crTexture(texture, 0);
    crTexture(texture, 0);
    crTexture(texture, 1);
    crTexture(texture, TEXTURE_STAGES); // no such stage
    EXPECT_EQ(device.Count("SetTexture"), 2);
    device.calls.clear();
    crTDestroyAll(TL_MATERIAL); // a surface that is gone must not be drawn with
    EXPECT_EQ(device.Count("SetTexture none"), 2);
    crTexture(texture, 0); // no live entry
    crTexture(CR_NO_TEXTURE, 1);
    EXPECT_EQ(device.calls.size(), 2u);
    Triangle({0, 0, 0}, {8, 0, 0}, {0, 8, 0}, 0xFF112233);
    EXPECT_EQ(At(0, 0), 0x112233u);
}

TEST_F(StateCacheTest, StateBlocksBringBackWhatWasSet) {
    const uint32_t texture = crTCreate(4, 4, 32, TL_MATERIAL, TEX_NORMAL, 0, false);
    crPresetMode(RM_TEXT);
    crTexture(texture, 0);
    const int block = crStateBlockCreate();
    ASSERT_GE(block, 0);
    crPresetMode(RM_TEX1_MODULATE_TEX2);
    criSetStateValue(RS_ZENABLE, 1);
    crTexture(CR_NO_TEXTURE, 0);
    device.calls.clear();
    EXPECT_EQ(crStateBlockApply(static_cast<uint32_t>(block)), 0);
    EXPECT_EQ(crvLastStateValues[RS_ZENABLE], 0u);
    EXPECT_EQ(crvLastStateValues[RS_SRCBLEND], static_cast<uint32_t>(BM_SRCALPHA));
    EXPECT_EQ(crvLastStageValues[0][TSS_ADDRESSU], static_cast<uint32_t>(TA_CLAMP));
    EXPECT_EQ(crvLastStageValues[1][TSS_COLOROP], static_cast<uint32_t>(OP_DISABLE));
    EXPECT_EQ(device.Count("SetTexture"), 1);
    device.calls.clear();
    EXPECT_EQ(crStateBlockApply(static_cast<uint32_t>(block)), 0);
    EXPECT_TRUE(device.calls.empty());
    EXPECT_EQ(crStateBlockDestroy(static_cast<uint32_t>(block)), 0);
    EXPECT_EQ(crStateBlockApply(static_cast<uint32_t>(block)), -1);
    EXPECT_EQ(crStateBlockDestroy(CR_MAX_STATE_BLOCKS), -1);

    for (uint32_t i = 0; i < CR_MAX_STATE_BLOCKS; ++i)
        EXPECT_GE(crStateBlockCreate(), 0);
    EXPECT_EQ(crStateBlockCreate(), -1);
    criSetRenderer(crvCurDDDevice, crvCurD3DDevice); // clears the table
    EXPECT_EQ(crStateBlockApply(0), -1);
}
