#include "compiler/LightmapPages.h"

#include <gtest/gtest.h>

#include "compiler/Levels.h"

namespace {

// Surfaces with blocks as lighting leaves them.
struct Blocks {
    World world;
    CompileProgress progress;
    std::string message;

    Blocks() { AddMaterialRow(world, "wall"); }
    Surface& Add(int w, int h, uint32_t texel) {
        Surface& surface = AddShape(world, BT_RECTANGLE, {0, 0, 0}, {64, 0, 64}).surfaces[0];
        surface.lightmap_info = {0, 0, 0, static_cast<float>(w), static_cast<float>(h), -1};
        surface.lightmap_block.assign(static_cast<size_t>(w * h), texel);
        return surface;
    }
    CompileResult Batch() {
        Prepared prepared(world);
        return BatchLightmaps(prepared.ws, progress, message);
    }
    const LIGHTMAP_INFO& Info(size_t brush) const { return world.brush[brush]->surfaces[0].lightmap_info; }
};

void ExpectInfo(const LIGHTMAP_INFO& info, int page, float u, float v, float w, float h) {
    EXPECT_EQ(info.lightmap, page);
    EXPECT_EQ(info.u_start, u);
    EXPECT_EQ(info.v_start, v);
    EXPECT_EQ(info.u_size, w);
    EXPECT_EQ(info.v_size, h);
}

// The search as it is told: row by row, position by position.
int FindByBytes(std::vector<uint8_t>& taken, int w, int h) {
    for (int y = 0; y <= 64 - h; ++y)
        for (int x = 0; x <= 64 - w; ++x) {
            bool is_free = true;
            for (int j = 0; j < h && is_free; ++j)
                for (int i = 0; i < w && is_free; ++i)
                    is_free = !taken[static_cast<size_t>((y + j) * 64 + x + i)];
            if (!is_free)
                continue;
            for (int j = 0; j < h; ++j)
                for (int i = 0; i < w; ++i)
                    taken[static_cast<size_t>((y + j) * 64 + x + i)] = 1;
            return y * 64 + x;
        }
    return -1;
}

} // namespace

TEST(LightmapPages, TheSearchFindsTheFirstFreePlace) {
    LightmapSectors page{};
    int sector;
    ASSERT_TRUE(FindFreeLightmapSector(page, 256, 4, sector));
    EXPECT_EQ(sector, 0) << "the whole width fits";
    ASSERT_TRUE(FindFreeLightmapSector(page, 128, 8, sector));
    EXPECT_EQ(sector, 64);
    ASSERT_TRUE(FindFreeLightmapSector(page, 128, 128, sector));
    EXPECT_EQ(sector, 64 + 32);
    ASSERT_FALSE(FindFreeLightmapSector(page, 256, 252, sector));
    EXPECT_EQ(sector, -1);

    Dice dice(3);
    LightmapSectors bits{};
    std::vector<uint8_t> bytes(64 * 64);
    for (int k = 0; k < 400; ++k) {
        const int w = 1 + dice.Below(k < 40 ? 20 : 4), h = 1 + dice.Below(k < 40 ? 20 : 4);
        FindFreeLightmapSector(bits, w * 4, h * 4, sector);
        ASSERT_EQ(sector, FindByBytes(bytes, w, h)) << k;
    }
}

TEST(LightmapPages, BlocksShareAPageAndShrink) {
    Blocks blocks;
    blocks.Add(128, 128, 0x00102030);
    Surface& uneven = blocks.Add(128, 64, 0x00FFFFFF);
    uneven.lightmap_block[0] = 0x00FBFBFB; // the first texel of four
    blocks.Add(4, 4, 0x00405060);
    Surface& mixed = blocks.Add(4, 4, 0);
    mixed.lightmap_block[3] = 4;
    Surface& bare = blocks.Add(4, 4, 0);
    bare.texture.index = 0;
    bare.lightmap_info.lightmap = -1;
    ASSERT_EQ(blocks.Batch(), CompileResult::Written);
    ASSERT_EQ(blocks.world.lightmaps.size(), 1u);
    ExpectInfo(blocks.Info(0), 0, 0, 0, 0.25f, 0.25f);
    ExpectInfo(blocks.Info(1), 0, 0.25f, 0, 0.25f, 0.125f);
    ExpectInfo(blocks.Info(2), 0, (0.5f + 1 / 256.0f) / 2, (0.25f + 1 / 256.0f) / 2, 1 / 256.0f,
               1 / 256.0f); // inset by a texel
    ExpectInfo(blocks.Info(3), 0, (0.5f + 4 / 256.0f) / 2, 0.125f, 2 / 256.0f, 2 / 256.0f);
    ExpectInfo(blocks.Info(4), 0, 0, 0, 2, 2);
    const LightmapPage& page = blocks.world.lightmaps[0];
    EXPECT_EQ(page[0], 0x00102030u);
    EXPECT_EQ(page[64], 0x00FEFEFEu) << "(0xFB + 3 * 0xFF) / 4";
    EXPECT_EQ(page[65], 0x00FFFFFFu);
    EXPECT_EQ(page[32 * 256 + 64], 0x00405060u);
    EXPECT_EQ(page[32 * 256 + 67], 1u) << "a quarter of 4";
    EXPECT_EQ(page[128], 0u) << "the empty quadrant";
    EXPECT_TRUE(blocks.world.brush[0]->surfaces[0].lightmap_block.empty());
    EXPECT_EQ(blocks.world.lightmap_index.size(), 1u);
    std::vector<uint32_t> pixels;
    uint32_t width = 0, height = 0;
    ASSERT_TRUE(crTReadPixels(blocks.world.lightmap_index[0], pixels, width, height));
    EXPECT_EQ(width, 256u);
    EXPECT_EQ(pixels[0] & 0xFFFFFF, 0x00102030u);
    const std::vector<uint8_t> data = GetLightmapData(blocks.world, 0);
    ASSERT_EQ(data.size(), 196608u);
    EXPECT_EQ(std::vector<uint8_t>(data.begin(), data.begin() + 3), (std::vector<uint8_t>{0x30, 0x20, 0x10}));
}

TEST(LightmapPages, FivePagesBecomeTwo) {
    Blocks blocks;
    for (uint32_t k = 0; k < 17; ++k) // four of these fill a page
        blocks.Add(128, 128, 0x00010000 * k + 5);
    ASSERT_EQ(blocks.Batch(), CompileResult::Written);
    ASSERT_EQ(blocks.world.lightmaps.size(), 2u);
    for (size_t k = 0; k < 16; ++k) {
        const float u = static_cast<float>(k / 4 % 2) * 0.5f + static_cast<float>(k % 2) * 0.25f;
        const float v = static_cast<float>(k / 8) * 0.5f + static_cast<float>(k / 2 % 2) * 0.25f;
        ExpectInfo(blocks.Info(k), 0, u, v, 0.25f, 0.25f);
        EXPECT_EQ(blocks.world.lightmaps[0][static_cast<size_t>(v * 256) * 256 + static_cast<size_t>(u * 256)],
                  0x00010000 * k + 5);
    }
    ExpectInfo(blocks.Info(16), 1, 0, 0, 0.25f, 0.25f);
}

TEST(LightmapPages, SurfacesGoByCellGroupAndMaterial) {
    Blocks blocks;
    for (uint32_t k = 0; k < 4; ++k)
        blocks.Add(128, 128, k);
    const int material[4] = {3, 1, 2, 1};
    for (size_t k = 0; k < 4; ++k)
        blocks.world.brush[k]->surfaces[0].texture.index = material[k];
    blocks.world.brush[1]->properties = BP_PLAYER_CLIP; // in no cell: cell -1 comes first
    Prepared prepared(blocks.world);
    for (const auto& brush : blocks.world.brush)
        brush->render_group = 0;
    ASSERT_EQ(BatchLightmaps(prepared.ws, blocks.progress, blocks.message), CompileResult::Written);
    ExpectInfo(blocks.Info(1), 0, 0, 0, 0.25f, 0.25f);
    ExpectInfo(blocks.Info(3), 0, 0.25f, 0, 0.25f, 0.25f);
    ExpectInfo(blocks.Info(2), 0, 0, 0.25f, 0.25f, 0.25f);
    ExpectInfo(blocks.Info(0), 0, 0.25f, 0.25f, 0.25f, 0.25f);
}

TEST(LightmapPages, DynamicBlocksFollowTheStaticOnes) {
    Blocks blocks;
    Entity& light = AddLight(blocks.world, {0, 0, 0}, 10);
    for (const char* flag : {"dynamic", "dynamic_lightmap"})
        SetBool(light, flag, true);
    SetBool(AddLight(blocks.world, {0, 0, 0}, 10), "dynamic_lightmap",
            true); // not dynamic: its lightmaps have no place
    Surface& surface = blocks.Add(128, 128, 1);
    for (const int index : {1, 0})
        surface.dynamic_lightmaps.push_back({{0, 0, 0, 128, 128, index}, std::vector<uint32_t>(128 * 128, 7)});
    ASSERT_EQ(blocks.Batch(), CompileResult::Written);
    ExpectInfo(surface.dynamic_lightmaps[1].info, 0, 0.25f, 0, 0.25f, 0.25f);
    ExpectInfo(surface.dynamic_lightmaps[0].info, 0, 0, 0, 2, 2);
    EXPECT_EQ(blocks.world.lightmaps[0][64], 7u);
}

TEST(LightmapPages, AnEmptyWorldHasOnePageAndTooManyAreRefused) {
    Blocks none;
    ASSERT_EQ(none.Batch(), CompileResult::Written);
    EXPECT_EQ(none.world.lightmaps.size(), 1u);

    Blocks many; // one brush with the surfaces of 1025 pages
    Brush& brush = AddShape(many.world, BT_RECTANGLE, {0, 0, 0}, {64, 0, 64});
    const Surface surface = brush.surfaces[0];
    brush.surfaces.assign(1025 * 4, surface);
    const std::vector<uint32_t> block(128 * 128, 0);
    for (size_t k = 0; k < brush.surfaces.size(); ++k) {
        brush.surfaces[k].lightmap_info = {0, 0, 0, 128, 128, -1};
        brush.surfaces[k].lightmap_block = block;
    }
    ASSERT_EQ(many.Batch(), CompileResult::LimitExceeded);
    EXPECT_NE(many.message.find("1024"), std::string::npos);
    EXPECT_NE(many.message.find("Lightmap Detail"), std::string::npos);
}
