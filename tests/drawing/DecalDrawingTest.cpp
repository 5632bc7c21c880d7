// Decals on solid brushes, pixel by pixel.
#include <gtest/gtest.h>

#include "drawing/ViewSetup.h"
#include "render/Textures.h"

namespace {

// The front of a white box is white in three quarters: 0.75 * 255 = 191.
constexpr uint32_t WALL = 0xBFBFBF;

class DecalDrawingTest : public ViewTest {
protected:
    DecalDrawingTest() {
        SetCamera(100);
        world.material.resize(2);
        AddBox(world, {-60, -60, 0}, {60, 60, 20}, {1, 1, 1, 1});
    }
    // Half of the side is 20 units, at a distance of 100 that is 12.8 pixels.
    DecalTemplate& AddDecal(uint32_t texture, uint32_t argb, uint32_t id = 1) {
        auto t = std::make_unique<DecalTemplate>();
        t->texture = texture;
        t->color.dw_color = argb;
        t->o_position = {2, 1, 0}; // off the diagonal of the wall
        t->o_normal = {0, 0, -1};
        t->x_size = t->y_size = 40;
        t->id = id;
        return *world.AddNewDecal(std::move(t));
    }
    static uint32_t Plain(uint32_t argb, uint32_t type) {
        const uint32_t handle = crTCreate(4, 4, 32, TL_MATERIAL, type, 0, false);
        EXPECT_EQ(crTFillTexture(handle, std::vector<uint32_t>(16, argb).data(), 0, 0), 0);
        return handle;
    }
    uint32_t Middle() {
        screen.NextFrame();
        world.RenderBrushes(context);
        return screen.At(MIDDLE, MIDDLE);
    }
    static void ExpectColor(uint32_t actual, int red, int green, int blue) {
        EXPECT_NEAR(static_cast<int>(actual >> 16 & 255), red, 2);
        EXPECT_NEAR(static_cast<int>(actual >> 8 & 255), green, 2);
        EXPECT_NEAR(static_cast<int>(actual & 255), blue, 2);
    }
};

} // namespace

TEST_F(DecalDrawingTest, WithoutAlphaItMultipliesTheFrame) {
    AddDecal(Plain(0xFF804020, TEX_NORMAL), 0xFFFFFFFF);
    // 191 times 128, 64 and 32 of 255.
    ExpectColor(Middle(), 96, 48, 24);
    ExpectColor(screen.At(MIDDLE + 11, MIDDLE - 11), 96, 48, 24);
    EXPECT_EQ(screen.At(MIDDLE + 15, MIDDLE), WALL);
    world.decal_template[0]->color.dw_color = 0xFFFF0000;
    world.ReplaceDecal(1);
    ExpectColor(Middle(), 96, 0, 0);
}

TEST_F(DecalDrawingTest, WithAlphaItLiesOver) {
    AddDecal(Plain(0x80FF0000, TEX_ALPHA_NORMAL), 0xFFFFFFFF);
    ASSERT_TRUE(world.brush[0]->decal_list[0]->alpha_decal);
    ExpectColor(Middle(), (255 + 191) / 2, 191 / 2, 191 / 2);
}

TEST_F(DecalDrawingTest, MasksShowTheSelection) {
    AddDecal(Plain(0xFFFFFFFF, TEX_NORMAL), 0xFFFFFFFF); // changes nothing itself
    EXPECT_EQ(Middle(), WALL);
    world.decal_selection.AddItem(1); // yellow, half over it
    ExpectColor(Middle(), (255 + 191) / 2, (255 + 191) / 2, 191 / 2);
    world.decal_selection.ClearList();
    world.decal_selection.AddItem(2); // another one: the mask of the rest
    ExpectColor(Middle(), (250 + 191) / 2, (250 + 191) / 2, (200 + 191) / 2);
}

TEST_F(DecalDrawingTest, TheDepthBufferAndTheStateStayAsTheyWere) {
    AddDecal(Plain(0xFFFF0000, TEX_NORMAL), 0xFFFFFFFF);
    AddBox(world, {-60, -60, 0}, {60, 60, 20}, {0, 1, 0, 1}); // the same front again: not nearer than the decal's wall
    AddBox(world, {-5, -5, -10}, {5, 5, -5}, {0, 0, 1, 1});   // before the decal
    const D3DMATRIX projection = crvMatrices[CRM_PROJ];
    EXPECT_EQ(Middle(), 0x0000BFu);
    EXPECT_EQ(crvMatrices[CRM_PROJ], projection);
    // The second box is drawn over the decal where depths are equal: the decal has left no depth of its own.
    EXPECT_EQ(screen.At(MIDDLE + 10, MIDDLE), screen.At(MIDDLE + 20, MIDDLE));
    world.brush.erase(world.brush.begin() + 1, world.brush.end());
    ExpectColor(Middle(), 191, 0, 0);
}

TEST_F(DecalDrawingTest, OnlyTheSolidPerspectiveShowsThem) {
    AddDecal(Plain(0xFFFF0000, TEX_NORMAL), 0xFFFFFFFF);
    world.render_mode = 0;
    Middle();
    EXPECT_EQ(screen.CountOf(0xBF0000), 0);
    world.render_mode = 1;
    context.filters.show_brushes = false;
    Middle();
    EXPECT_TRUE(IsEmpty());
    context.filters.show_brushes = true;
    Middle();
    EXPECT_GT(screen.CountOf(0xBF0000), 500);
}
