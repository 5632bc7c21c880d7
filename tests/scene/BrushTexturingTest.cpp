#include <gtest/gtest.h>

#include "scene/Scenes.h"

namespace {

TEX_INFO Textured(float width, float height) {
    TEX_INFO info;
    info.index = 1;
    info.size = {width, height};
    return info;
}

TEST(BrushTexturing, TextureSpacesOfTheMainPlanes) {
    const struct {
        D3DVECTOR z, x, y;
    } cases[] = {
        {{0, 1, 0}, {1, 0, 0}, {0, 0, 1}},   // floor
        {{0, -1, 0}, {1, 0, 0}, {0, 0, -1}}, // ceiling
        {{1, 0, 0}, {0, 0, 1}, {0, 1, 0}},   // walls: y is up
        {{-1, 0, 0}, {0, 0, -1}, {0, 1, 0}},
        {{0, 0, 1}, {-1, 0, 0}, {0, 1, 0}},
        {{0, 0, -1}, {1, 0, 0}, {0, 1, 0}},
        {{0.70710677f, 0.70710677f, 0}, {0, 0, 1}, {-0.70710677f, 0.70710677f, 0}}, // a tie goes to the last rule
    };
    for (const auto& c : cases) {
        TEXTURE_SPACE ts;
        Brush::ComputeTextureSpace(c.z, ts, {});
        EXPECT_EQ(ts.ts_z, c.z);
        ExpectNear(ts.ts_x, c.x, 1e-6f);
        ExpectNear(ts.ts_y, c.y, 1e-6f);
    }
}

TEST(BrushTexturing, EachFieldActsOnTheFloorAsTold) {
    const D3DVECTOR p{32, 0, 16};
    struct Case {
        const char* what;
        TEX_INFO info;
        UVVector uv;
    };
    std::vector<Case> cases(7, Case{"plain", Textured(64, 64), {0.5f, -0.25f}});
    cases[1] = {"shift", cases[0].info, {(32 - 8) / 64.0f, (-16 + 4) / 64.0f}}, cases[1].info.shift = {8, 4};
    cases[2] = {"scale", cases[0].info, {1, -0.75f}}, cases[2].info.scale = {2, 3};
    cases[3] = {"flips", cases[0].info, {-0.5f, 0.25f}}, cases[3].info.flip_u = cases[3].info.flip_v = true;
    // Turned by 90 degrees ts_x is (0, 0, -1) and ts_y (1, 0, 0); the flip mirrors before the turn.
    cases[4] = {"rotation", cases[0].info, {-0.25f, -0.5f}}, cases[4].info.rotation = 90;
    cases[5] = {"flipped rotation", cases[4].info, {0.25f, -0.5f}}, cases[5].info.flip_u = true;
    cases[6] = {"no texture", TEX_INFO{}, {32, -16}};
    for (const Case& c : cases) {
        Brush brush(ShapeOf(BT_RECTANGLE, {32, 0, 0}, {96, 0, 16}));
        brush.surfaces[0].texture = c.info;
        brush.Remap(0, false);
        EXPECT_EQ(brush.surfaces[0].vertices[0], p);
        ExpectNear(brush.surfaces[0].uv[0], c.uv, 1e-5f, c.what);
    }
}

TEST(BrushTexturing, FitCoversTheSurfaceOnce) {
    for (uint32_t view = 0; view < 3; ++view)
        for (const UVVector& repeats : {UVVector{1, 1}, UVVector{3, 0.5f}}) {
            Brush brush(ShapeOf(BT_RECTANGLE, {-7, 13, 100}, {93, 46, 355}, 0, view));
            brush.surfaces[0].texture = Textured(256, 64);
            brush.surfaces[0].texture.rotation = 33;
            brush.surfaces[0].texture.locked = brush.surfaces[0].texture.fitted = true;
            brush.SelectNextSurface();
            brush.FitTexture(repeats.u, repeats.v);
            const Surface& s = brush.surfaces[0];
            UVVector least = s.uv[0], most = least;
            for (const UVVector& uv : s.uv) {
                least = {std::min(least.u, uv.u), std::min(least.v, uv.v)};
                most = {std::max(most.u, uv.u), std::max(most.v, uv.v)};
            }
            ExpectNear(least, {0, 0}, 1e-6f);
            ExpectNear(most, repeats, 2e-6f * repeats.u);
            EXPECT_FALSE(s.texture.locked || s.texture.fitted);
            EXPECT_EQ(s.texture.rotation, 0.0f);
            const std::vector<UVVector> fitted = s.uv;
            brush.Remap(); // the record alone gives the same coordinates
            EXPECT_EQ(s.uv, fitted);
        }
}

TEST(BrushTexturing, FitOfFansStripsAndThinThings) {
    Brush block(ShapeOf(BT_Q_BLOCK, {0, 0, 0}, {64, 32, 48}));
    for (Surface& s : block.curved_surfaces)
        s.texture = Textured(32, 32);
    block.selected_surface_curved = true;
    block.selected_surface = 0; // the top fan
    block.curved_surfaces[0].texture.fitted = true;
    block.FitTexture(1, 1);
    EXPECT_TRUE(block.curved_surfaces[0].texture.fitted);
    const auto range = [](const Surface& s) {
        float least = s.uv[0].u, most = least;
        for (const UVVector& uv : s.uv)
            least = std::min(least, uv.u), most = std::max(most, uv.u);
        return std::pair(least, most);
    };
    EXPECT_NEAR(range(block.curved_surfaces[0]).first, 0, 1e-5);
    EXPECT_NEAR(range(block.curved_surfaces[0]).second, 1, 1e-5);
    const auto fitted = block.curved_surfaces[0].uv;
    block.TesselateCurves(); // stands through edits
    for (size_t i = 0; i < fitted.size(); ++i)
        ExpectNear(block.curved_surfaces[0].uv[i], fitted[i], 1e-6f);
    block.selected_surface = 2; // the wall
    block.curved_surfaces[2].texture.shift = {5, 5};
    block.FitTexture(4, 2);
    ExpectNear(block.curved_surfaces[2].uv[4], {4, 0}, 1e-6f);

    Brush line(ShapeOf(BT_RECTANGLE, {0, 0, 0}, {64, 0, 0})); // no area
    line.SelectNextSurface();
    line.FitTexture(1, 1);
    for (const UVVector& uv : line.surfaces[0].uv)
        EXPECT_TRUE(std::isfinite(uv.u) && std::isfinite(uv.v));
    Brush none;
    none.FitTexture(1, 1);
    none.Remap();
    none.SelectNextSurface();
    EXPECT_EQ(none.GetSelectedSurfaceTexInfo(), nullptr);
}

TEST(BrushTexturing, RemapAllTakesEitherFamily) {
    Brush box(ShapeOf(BT_BOX, {0, 0, 0}, {64, 64, 64}));
    for (Surface& s : box.surfaces)
        s.texture.size = {64, 64};
    box.surfaces[0].texture.index = 1;
    box.RemapAll();
    EXPECT_EQ(box.surfaces[0].uv[1].u, 1.0f);
    EXPECT_EQ(box.surfaces[1].uv[1].u, 0.0f); // no material

    Brush block(ShapeOf(BT_SFT_BLOCK, {0, 0, 0}, {64, 64, 64}));
    block.surfaces[0].texture = block.curved_surfaces[0].texture = Textured(64, 64);
    block.surfaces[0].uv[0] = {7, 7};
    block.curved_surfaces[0].texture.scale = {2, 2};
    block.RemapAll();
    EXPECT_EQ(block.surfaces[0].uv[0], (UVVector{7, 7}));
    EXPECT_EQ(block.curved_surfaces[0].uv[0], (UVVector{0, -2})); // c0 = (0, 64, 64) at once by the new scale
}

TEST(BrushTexturing, TerrainIsMappedFromAbove) {
    Brush terrain(ShapeOf(BT_RECTANGLE, {0, 0, 0}, {64, 64, 64}));
    terrain.type = BT_TERRAIN;
    terrain.surfaces[0].vertices[0].y = 0; // a slope
    terrain.ComputeNormals();
    terrain.surfaces[0].texture = Textured(64, 64);
    terrain.Remap(0, false);
    ExpectNear(terrain.surfaces[0].uv[0], {0, -1}, 1e-6f);
    ExpectNear(terrain.surfaces[0].uv[2], {1, 0}, 1e-6f);
}

TEST(BrushTexturing, CyclingVisitsBothFamilies) {
    const auto visit = [](Brush& brush, int steps) {
        std::string order;
        for (int i = 0; i < steps; ++i) {
            brush.SelectNextSurface();
            order += (brush.selected_surface_curved ? 'c' : 'f') + std::to_string(brush.selected_surface);
        }
        return order;
    };
    Brush block(ShapeOf(BT_Q_BLOCK, {0, 0, 0}, {64, 64, 64}));
    EXPECT_EQ(visit(block, 7), "f0f1c0c1c2f0f1");
    Brush cone(ShapeOf(BT_CONE, {0, 0, 0}, {64, 64, 64}));
    EXPECT_EQ(visit(cone, 9), "c0c1c2c3c4c5c6c7c0");
}

} // namespace
