#include <gtest/gtest.h>

#include "drawing/ViewSetup.h"

namespace {

// A box facing the camera shows its front in three quarters of its colour: 0.75 * 255 = 191.
constexpr uint32_t SHADE = 191;
constexpr D3DCOLORVALUE RED{1, 0, 0, 1}, GREEN{0, 1, 0, 1}, BLUE{0, 0, 1, 1};

class SolidTest : public ViewTest {
protected:
    SolidTest() {
        SetCamera(100);
        world.material.resize(3);
        world.darkmap = MakeTexture(4, 4, std::vector<uint32_t>(16, 0xFF000000));
    }
    void Draw() {
        for (const auto& b : world.brush) // the tests write into the surfaces
            b->MarkDrawnChanged();
        screen.NextFrame();
        world.RenderBrushes(context);
    }
    uint32_t Middle() {
        Draw();
        return screen.At(MIDDLE, MIDDLE);
    }
    void SetMaterial(Brush& brush, int row) {
        brush.ForEachSurface([row](Surface& s, int, bool) { s.texture.index = row; });
    }
    Brush& Plate(float z, float half, const D3DCOLORVALUE& color) {
        return AddBox(world, {-half, -half, z}, {half, half, z + 20}, color);
    }
};

} // namespace

TEST_F(SolidTest, TheNearerHidesTheFarther) {
    for (const bool near_first : {true, false}) {
        world.brush.clear();
        Plate(near_first ? 0 : 100, near_first ? 20 : 60, near_first ? RED : GREEN);
        Plate(near_first ? 100 : 0, near_first ? 60 : 20, near_first ? GREEN : RED);
        Draw();
        // 20 at 100 is 12.8 pixels, 60 at 200 is 19.2.
        EXPECT_EQ(screen.CountOf(SHADE << 16), 26 * 26);
        EXPECT_EQ(screen.CountOf(SHADE << 8), 38 * 38 - 26 * 26);
        EXPECT_EQ(screen.At(64, 64), SHADE << 16);
        EXPECT_EQ(screen.At(80, 64), SHADE << 8);
    }
}

TEST_F(SolidTest, ColoursOfPlainSurfaces) {
    screen.background = 0x0000FF;
    Brush& brush = Plate(0, 20, RED);
    EXPECT_EQ(Middle(), SHADE << 16);
    const auto front = std::find_if(brush.surfaces.begin(), brush.surfaces.end(),
                                    [](const Surface& s) { return s.normal[0].z < -0.5f; });
    brush.selected_surface = static_cast<int>(front - brush.surfaces.begin());
    EXPECT_EQ(Middle(), SHADE << 16);
    context.mask_enabled = true;
    EXPECT_EQ(Middle(), 0x00FFFFu);
    brush.selected_surface_curved = true;
    EXPECT_EQ(Middle(), SHADE << 16);
    brush.selected_surface_curved = false;
    brush.is_selected = true;
    EXPECT_EQ(Middle(), 0xFF0000u);
    // A texture is coloured by the vertices.
    SetMaterial(brush, 1);
    world.material[1].texture_index = MakeTexture(2, 2, std::vector<uint32_t>(4, 0xFF80FFFF));
    EXPECT_EQ(Middle(), 0x800000u);
    world.material[1].texture_index = NO_TEXTURE_HANDLE; // none: as white
    EXPECT_EQ(Middle(), 0xFF0000u);
    SetMaterial(brush, 77); // not in the table
    EXPECT_EQ(Middle(), 0xFF0000u);
}

TEST_F(SolidTest, PortalsAndOccludersBlend) {
    Brush& brush = Plate(0, 20, RED);
    struct Case {
        BrushType type;
        bool selected;
        uint32_t color; // a quarter over black: 255 * 64 / 255
    };
    for (const Case& c : {Case{BT_PORTAL, false, 0x004000},
                          {BT_OCCLUDER, false, 0x404000},
                          {BT_PORTAL, true, 0x400000},
                          {BT_OCCLUDER, true, 0x400000}}) {
        brush.type = c.type;
        brush.is_selected = c.selected;
        EXPECT_EQ(Middle(), c.color) << c.type;
    }
    context.filters.show_occluders = false;
    EXPECT_EQ(Middle(), 0u);
}

TEST_F(SolidTest, OnlyTransparentMaterialsBlendAndTheyComeLast) {
    const uint32_t half = MakeTexture(2, 2, std::vector<uint32_t>(4, 0x80FFFFFF));
    world.material[1].texture_index = world.material[2].texture_index = half;
    world.material[2].transparent = true;
    Brush& nearer = Plate(0, 20, GREEN);
    Brush& farther = Plate(50, 40, RED);
    SetMaterial(nearer, 1);
    SetMaterial(farther, 1);
    EXPECT_EQ(Middle(), SHADE << 8);
    // 191 * 128 / 255 = 95.9; what is under it keeps 127 / 255.
    SetMaterial(nearer, 2);
    EXPECT_EQ(Middle(), (95u << 16 | 96u << 8)) << "over the opaque one behind it, which comes later in the table";
    SetMaterial(farther, 2);
    EXPECT_EQ(Middle(), (48u << 16 | 96u << 8)) << "the farther of two comes first";
    nearer.pivot.z = 200; // by the depth of the pivots alone
    EXPECT_EQ(Middle(), 96u << 8) << "drawn first it hides the other";
}

TEST_F(SolidTest, Lightmaps) {
    screen.background = 0x123456;
    Brush& brush = Plate(0, 20, RED);
    const uint32_t left = 0xFF400000, right = 0xFF004000;
    world.lightmap_index = {MakeTexture(2, 2, {left, right, left, right})};
    world.material[1].texture_index = MakeTexture(2, 2, std::vector<uint32_t>(4, 0xFFFF80FF));
    SetMaterial(brush, 1);
    brush.ForEachSurface([](Surface& s, int, bool) {
        s.lightmap = 1;
        s.lightmap_uv.assign(s.vertices.size(), {0.5f, 0.5f});
        s.lightmap_info = {0, 0.5f, 0, 0.5f, 1, -1}; // the right half of page 0
    });
    EXPECT_EQ(Middle(), SHADE << 16) << "vertex colours in mode 1";
    world.render_mode = 2;
    EXPECT_EQ(Middle(), 0x002000u) << "64 * 128 / 255, rounded";
    brush.ForEachSurface([](Surface& s, int, bool) { s.lightmap_info.u_start = 0; });
    EXPECT_EQ(Middle(), 0x400000u) << "u of 0.25 on the page";
    brush.ForEachSurface([](Surface& s, int, bool) { s.lightmap_info.lightmap = 5; });
    EXPECT_EQ(Middle(), 0u) << "no such page";
    SetMaterial(brush, 0);
    EXPECT_EQ(Middle(), 0u) << "without a material";
    brush.ForEachSurface([](Surface& s, int, bool) { s.lightmap = -1; });
    EXPECT_EQ(Middle(), SHADE << 16) << "not lit";
    // A custom brush keeps its light in its vertices.
    brush.type = BT_CUSTOM;
    std::swap(brush.surfaces, brush.curved_surfaces);
    SetMaterial(brush, 1);
    brush.ForEachSurface([](Surface& s, int, bool) {
        s.lightmap = 1;
        s.extra_diffuse.assign(s.vertices.size(), 0xFF0000FF);
    });
    EXPECT_EQ(Middle(), 0x0000FFu);
}

TEST_F(SolidTest, TheBorderLiesOverEveryTexture) {
    Brush& brush = Plate(0, 20, BLUE);
    context.border_texture = MakeTexture(2, 2, std::vector<uint32_t>(4, 0x80FFFFFF));
    context.show_texture_border = true;
    EXPECT_EQ(Middle(), SHADE) << "without a material";
    SetMaterial(brush, 1);
    EXPECT_EQ(Middle(), (128u << 16 | 128u << 8 | 223u)) << "255 * 128 / 255 + 191 * 127 / 255";
    context.show_texture_border = false;
    EXPECT_EQ(Middle(), SHADE);
}

TEST_F(SolidTest, SurfacesWithDamage) {
    Brush& brush = Plate(0, 20, RED);
    brush.ForEachSurface([](Surface& s, int, bool) {
        s.tri_indices.push_back({{0, 1, 60000}});
        s.uv.clear();
        s.diffuse.resize(1);
    });
    Draw();
    EXPECT_EQ(screen.At(2, 2), 0u);
    world.render_mode = 2;
    brush.ForEachSurface([](Surface& s, int, bool) { s.lightmap = 1, s.lightmap_info.lightmap = -3; });
    SetMaterial(brush, 1);
    EXPECT_EQ(Middle(), 0u);
}

TEST_F(SolidTest, LargeMeshesAreDrawnWhole) {
    // More vertices than a batch has room for: 250 by 250 squares of 0.16 units.
    Brush& brush = Plate(0, 20, GREEN);
    Surface big;
    constexpr uint16_t SQUARES = 249, POINTS = SQUARES + 1;
    for (int y = 0; y < POINTS; ++y)
        for (int x = 0; x < POINTS; ++x)
            big.vertices.push_back(
                {-20 + 40.0f * static_cast<float>(x) / SQUARES, 20 - 40.0f * static_cast<float>(y) / SQUARES, 0});
    for (uint16_t y = 0; y < SQUARES; ++y)
        for (uint16_t x = 0; x < SQUARES; ++x) {
            const auto at = static_cast<uint16_t>(y * POINTS + x), below = static_cast<uint16_t>(at + POINTS);
            const auto next = static_cast<uint16_t>(at + 1), across = static_cast<uint16_t>(below + 1);
            big.tri_indices.push_back({{at, next, across}});
            big.tri_indices.push_back({{at, across, below}});
        }
    big.uv.resize(big.vertices.size());
    big.diffuse.assign(big.vertices.size(), 0xFF00BF00);
    brush.surfaces.assign(1, big);
    Draw();
    EXPECT_EQ(screen.CountOf(0x00BF00), 26 * 26);
}

TEST_F(SolidTest, VisibleBoxes) {
    crMUpdate();
    PLANE planes[6];
    crGetClipPlanes(planes);
    struct Case {
        D3DVECTOR min, max;
        bool visible;
        const char* what;
    };
    // The view opens by one to each side from (0, 0, -100), from 10 units on.
    const Case cases[] = {
        {{-1, -1, 0}, {1, 1, 2}, true, "inside"},
        {{-500, -1, 0}, {500, 1, 2}, true, "through both sides, no corner inside"},
        {{-500, -500, -99}, {500, 500, -92}, false, "before the near plane"},
        {{-500, -500, -99}, {500, 500, -89}, true, "across the near plane"},
        {{-1, -1, -300}, {1, 1, -200}, false, "behind"},
        {{120, -1, 0}, {130, 1, 2}, false, "right of the view"},
        {{-130, -1, 0}, {-120, 1, 2}, false, "left of it"},
        {{-1, 120, 0}, {1, 130, 2}, false, "above"},
        {{-1, -130, 0}, {1, -120, 2}, false, "below"},
        {{-1, -1, 20000}, {1, 1, 20010}, true, "beyond the far plane"},
        {{50, 50, -120}, {200, 200, 60}, true, "past two planes, but not past one alone"},
    };
    for (const Case& c : cases) {
        Brush brush;
        brush.bbox = MakeBox(c.min, c.max);
        EXPECT_EQ(brush.Visible(planes), c.visible) << c.what;
    }
}

TEST_F(SolidTest, ACameraStraightUpDrawsWithoutHarm) {
    Plate(0, 20, RED);
    D3DMATRIX view = {{{0, 0, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 0}, {0, 0, 100, 1}}}; // no right, no up
    SetMatrix(CRM_VIEW, view);
    Draw();
    EXPECT_TRUE(IsEmpty());
}
