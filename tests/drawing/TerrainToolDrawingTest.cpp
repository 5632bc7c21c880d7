#include <gtest/gtest.h>

#include "drawing/ViewSetup.h"
#include "scene/Terrains.h"

namespace {

constexpr uint32_t RIM = 0x00FF00, TWO_THIRDS = 0x00B000, ONE_THIRD = 0x007000;

class TerrainToolDrawing : public ViewTest {
protected:
    TerrainToolDrawing() {
        // From above: x runs to the right, z up. 64 units of the ground are 32 pixels.
        D3DMATRIX view = crIdentity();
        const uint32_t old = crMCurrent(CRM_VIEW);
        crMViewTo({0, 128, 0}, {0, 0, 0}, {0, 0, 1}, 0);
        view = crMGet();
        crMCurrent(CRM_PROJ);
        crMSetIdentity();
        crMProj(std::numbers::pi_v<float> / 2, 1, 10, 10000);
        crMCurrent(old);
        context.view = VIEW_PERSPECTIVE;
        context.camera_position = {0, 128, 0};
        tool.radius = 80;
    }
    // The farthest pixels from the middle in this colour, along x; 0 when there is none.
    int Reach(uint32_t color) {
        int reach = 0;
        for (int x = 0; x < SIDE; ++x)
            for (int y = MIDDLE - 3; y <= MIDDLE + 3; ++y)
                if (screen.At(x, y) == color)
                    reach = std::max(reach, std::abs(x - MIDDLE));
        return reach;
    }
    void Draw() {
        screen.NextFrame();
        world.RenderTerrainBrush(context, tool, {MIDDLE, MIDDLE});
    }
    TERRAIN_MODIFIER tool;
};

TEST_F(TerrainToolDrawing, TheRingsLieOnTheGround) {
    Draw();
    EXPECT_TRUE(IsEmpty()); // no ground
    world.AddBrush(Segment(8, 32, -128, 128, [](float, float) { return 0.0f; }));
    Draw();
    EXPECT_EQ(world.b_list.GetItemCount(), 1);
    EXPECT_NEAR(Reach(RIM), 40, 1);
    EXPECT_NEAR(Reach(TWO_THIRDS), 21, 1); // 0.535 of the radius
    EXPECT_NEAR(Reach(ONE_THIRD), 31, 1);  // 0.784
    tool.type = TERRAIN_FLATTEN;
    Draw();
    EXPECT_NEAR(Reach(RIM), 40, 1);
    EXPECT_EQ(Reach(TWO_THIRDS), 0);
    EXPECT_EQ(Reach(ONE_THIRD), 0);
    // Ground that rises to the right comes nearer to the eye: the ring bulges there.
    world.brush.clear();
    world.AddBrush(Segment(8, 32, -128, 128, [](float x, float) { return std::max(x, 0.0f) * 0.5f; }));
    Draw();
    EXPECT_NEAR(Reach(RIM), 64 * 80 / 87, 2); // 80 units off, 41 up: 87 before the eye
}

} // namespace
