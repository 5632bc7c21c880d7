// The selection as an outline and a light tint, bare faces with their edges, and the ground in the perspective view.
#include <gtest/gtest.h>

#include "drawing/LineColors.h"
#include "drawing/ViewDrawing.h"
#include "drawing/ViewSetup.h"

namespace {

constexpr uint32_t SHADE = 191; // 0.75 * 255, of a face that looks at the camera
constexpr D3DCOLORVALUE GREEN{0, 1, 0, 1};
// Over it a red of 56 / 255: 255 * 56 / 255 = 56, and 191 * 199 / 255 = 149.05.
constexpr uint32_t TINTED = 56u << 16 | 149u << 8;

class SelectionLookTest : public ViewTest {
protected:
    SelectionLookTest() {
        SetCamera(100);
        world.darkmap = MakeTexture(4, 4, std::vector<uint32_t>(16, 0xFF000000));
        world.material.resize(2);
        world.material[1].texture_index = MakeTexture(2, 2, std::vector<uint32_t>(4, 0xFFFFFFFF));
        box = &AddBox(world, {-20, -20, 0}, {20, 20, 20}, GREEN); // its front is 26 pixels wide
        box->color = 0xFF00FF00;
    }
    void Draw() {
        for (const auto& b : world.brush)
            b->MarkDrawnChanged();
        screen.NextFrame();
        world.RenderBrushes(context);
    }
    void UseMaterial() {
        box->ForEachSurface([](Surface& s, int, bool) { s.texture.index = 1; });
    }
    void Light() { // white light on a material, but for the page that is not there
        world.render_mode = 2;
        world.lightmap_index = {MakeTexture(2, 2, std::vector<uint32_t>(4, 0xFF00BF00))};
        box->ForEachSurface([](Surface& s, int, bool) {
            s.lightmap = 1;
            s.lightmap_info.lightmap = 0;
        });
    }
    int FrontFace() const {
        for (size_t s = 0; s < box->surfaces.size(); ++s)
            if (box->surfaces[s].normal[0].z < -0.5f)
                return static_cast<int>(s);
        return -1;
    }
    // The rim of the front, a pixel in each direction; a line may lie on either side of it.
    int RimPixels(uint32_t color) {
        int found = 0;
        for (int i = -12; i <= 12; ++i)
            for (const int rim : {-14, -13, -12, 12, 13}) {
                found += screen.At(MIDDLE + i, MIDDLE + rim) == color;
                found += screen.At(MIDDLE + rim, MIDDLE + i) == color;
            }
        return found;
    }

    Brush* box;
};

} // namespace

TEST_F(SelectionLookTest, ASelectedBrushKeepsItsLookUnderATintAndHasAnOutline) {
    context.outline_selection = true;
    for (const char* look : {"bare", "textured", "lit"}) {
        SCOPED_TRACE(look);
        if (look[0] != 'b')
            UseMaterial();
        if (look[0] == 'l')
            Light();
        box->is_selected = false;
        Draw();
        EXPECT_EQ(screen.At(MIDDLE, MIDDLE), SHADE << 8);
        EXPECT_EQ(RimPixels(0xFF0000), 0);
        box->is_selected = true;
        Draw();
        EXPECT_EQ(screen.At(MIDDLE, MIDDLE), TINTED);
        EXPECT_GE(RimPixels(0xFF0000), 4 * 24) << "nothing of the outline is hidden by the faces";
    }
}

TEST_F(SelectionLookTest, TheSelectedSurfaceIsMarkedWithoutTheMask) {
    for (const bool outline : {false, true}) {
        context.outline_selection = outline;
        box->selected_surface = FrontFace();
        world.selected_surface_brush = 0;
        Draw();
        // 255 * 40 / 255 = 40, and 191 * 215 / 255 + 40 = 201.04.
        EXPECT_EQ(screen.At(MIDDLE, MIDDLE), outline ? 201u << 8 | 40u : SHADE << 8);
        EXPECT_EQ(RimPixels(0x00FFFF) > 4 * 24, outline);
    }
}

TEST_F(SelectionLookTest, ABareFaceIsShadedInTheLitPictureAndHasEdges) {
    Light();
    Draw();
    EXPECT_EQ(screen.At(MIDDLE, MIDDLE), 0u);
    context.shade_bare = true;
    Draw();
    EXPECT_EQ(screen.At(MIDDLE, MIDDLE), SHADE << 8);
    EXPECT_GE(RimPixels(0x00FF00), 4 * 24);
    UseMaterial();
    Draw();
    EXPECT_EQ(RimPixels(0x00FF00), 0) << "a face with a material is not bare";
}

TEST_F(SelectionLookTest, TheGroundLiesUnderFloorsAndShowsTheAxes) {
    SetPerspective({0, 100, -200}, screen.window);
    screen.NextFrame();
    DrawGroundGrid({0, 100, -200});
    EXPECT_GT(screen.CountOf(0xC04040), 100) << "x";
    EXPECT_GT(screen.CountOf(0x4060E0), 10) << "z";
    EXPECT_GT(screen.CountOf(ColorOf(LineColor::GridMinor) & 0xFFFFFF), 200);
    world.brush.clear();
    AddBox(world, {-5000, -20, -5000}, {5000, 0, 5000}, GREEN);
    Draw();
    const int floor_alone = screen.CountOf(127u << 8); // half of the colour
    screen.NextFrame();
    DrawGroundGrid({0, 100, -200});
    world.RenderBrushes(context);
    EXPECT_EQ(screen.CountOf(127u << 8), floor_alone);
    EXPECT_GT(floor_alone, 1000);
}
