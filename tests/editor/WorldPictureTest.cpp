#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "editor/Interface.h"
#include "editor/WorldPicture.h"
#include "render/Matrix.h"

// A picture of a compiled world is framed as the movie camera of the views frames the level: the place of a small
// triangle against the views' own matrix.
TEST(WorldPicture, IsFramedAsTheMovieCameraDoes) {
    constexpr int WIDTH = 200, HEIGHT = 120;
    constexpr float FOV = 1.2f;
    const D3DVECTOR eye{10, 20, -30}, target{40, 5, 60}, spot{20, 25, 20};
    const Texels white{1, 1, {0xFFFFFFFF}};
    const std::vector<uint8_t> empty = WorldPicture(WIDTH, HEIGHT, {eye, NormalizeOrZero(target - eye), 0, FOV}).Rgb();
    for (const float roll : {0.0f, 0.4f, -0.7f, 2.5f}) {
        WorldPicture picture(WIDTH, HEIGHT, {eye, NormalizeOrZero(target - eye), roll, FOV});
        PictureMesh mesh;
        mesh.vertices = {spot + D3DVECTOR{-1, -1, 0}, spot + D3DVECTOR{1, -1, 0}, spot + D3DVECTOR{0, 2, 0}};
        mesh.triangles = {{{0, 1, 2}}};
        picture.DrawMesh(mesh, white, {}, PictureBlend::Opaque);
        const std::vector<uint8_t> rgb = picture.Rgb();
        float x = 0, y = 0, pixels = 0;
        for (int py = 0; py < HEIGHT; ++py)
            for (int px = 0; px < WIDTH; ++px)
                if (const auto at = static_cast<size_t>((py * WIDTH + px) * 3); rgb[at] != empty[at]) {
                    x += static_cast<float>(px) + 0.5f;
                    y += static_cast<float>(py) + 0.5f;
                    ++pixels;
                }
        ASSERT_GT(pixels, 0) << roll;
        D3DVECTOR view;
        crMTransform(CInterface::CameraMatrix(eye, target, roll), spot, view);
        const float scale = WIDTH / 2.0f / std::tan(FOV / 2) / view.z;
        EXPECT_NEAR(x / pixels, WIDTH / 2.0f + view.x * scale, 1.0f) << roll;
        EXPECT_NEAR(y / pixels, HEIGHT / 2.0f - view.y * scale, 1.0f) << roll;
    }
}

// A picture survives coordinates, light and sizes that are no numbers or beyond all integers.
TEST(WorldPicture, SurvivesNumbersThatCannotBe) {
    constexpr float ENDLESS = std::numeric_limits<float>::infinity();
    const Texels checks{2, 2, {0xFFFFFFFF, 0xFF000000, 0xFF000000, 0xFFFFFFFF}};
    WorldFile world;
    world.materials.resize(1);
    world.lightmap_pages.emplace_back(static_cast<size_t>(LIGHTMAP_PAGE_SIDE) * LIGHTMAP_PAGE_SIDE * 3, uint8_t{200});
    for (const float odd : {std::nanf(""), ENDLESS, -ENDLESS, 3.0e38f, -1.0e30f, 1.0e10f})
        for (int field = 0; field < 6; ++field) {
            WorldBrush& brush = world.brushes.emplace_back();
            WorldSurface& surface = brush.surfaces.emplace_back();
            surface.texture.index = 1;
            surface.lightmap.u_size = surface.lightmap.v_size = 0.25f;
            surface.vertices = {{-5, -5, 20}, {5, -5, 20}, {0, 5, 20}};
            surface.uv.assign(3, {0.25f, 0.25f});
            surface.lightmap_uv.assign(3, {0.5f, 0.5f});
            surface.triangles = {{{0, 2, 1}}, {{0, 1, 2}}};
            float* const places[] = {&surface.uv[1].u,         &surface.lightmap_uv[2].v,
                                     &surface.lightmap.u_size, &surface.lightmap.v_start,
                                     &surface.vertices[2].y,   &surface.lightmap.v_size};
            *places[field] = odd;
            if (field == 5) {
                surface.cp_count = CURVE_PATCH;
                for (int k = 0; k < 9; ++k)
                    surface.cp.push_back(
                        {static_cast<float>(k % 3) * 4 - 4, static_cast<float>(k / 3) * 4 - 4, 25});
                surface.texture.scale = {odd, 1};
            }
        }
    WorldPicture picture(40, 30, {{0, 0, 0}, {0, 0, 1}, 0, 1.2f});
    picture.Draw(world, {checks}, {});
    EXPECT_EQ(picture.Rgb().size(), 40u * 30u * 3u);
    constexpr size_t MIDDLE = (15 * 40 + 20) * 3;
    EXPECT_GT(picture.Rgb()[MIDDLE], 100) << "the surfaces before and behind the odd ones are still drawn";
}

// A decal without alpha multiplies what the picture shows under it, one with alpha covers it by its share; where a
// surface stands in front nothing of it is seen. Shades by hand.
TEST(WorldPicture, DecalsLieOnTheirSurfaces) {
    constexpr int SIDE = 40;
    const auto square = [](float z, float half, uint32_t color) {
        PictureMesh mesh;
        mesh.vertices = {{-half, -half, z}, {half, -half, z}, {half, half, z}, {-half, half, z}};
        mesh.colors.assign(4, color);
        mesh.triangles = {{{0, 1, 2}}, {{0, 2, 3}}};
        return mesh;
    };
    const Texels white{1, 1, {0xFFFFFFFF}}, half_alpha{1, 1, {0x80FFFFFF}};
    const auto middle = [&](float decal_distance, const Texels& texture, PictureBlend blend, uint32_t color) {
        WorldPicture picture(SIDE, SIDE, {{0, 0, 0}, {0, 0, 1}, 0, PI / 2});
        // 0x40 of 0xFF: an intensity of a quarter is shown as a half.
        picture.DrawMesh(square(1000, 900, 0x404040), white, {}, PictureBlend::Opaque);
        picture.DrawMesh(square(decal_distance, 500, color), texture, {}, blend);
        return static_cast<int>(picture.Rgb()[(SIDE / 2 * SIDE + SIDE / 2) * 3]);
    };
    EXPECT_NEAR(middle(1000, white, PictureBlend::Multiply, 0x808080), 64, 1); // half of a half
    EXPECT_NEAR(middle(1000, half_alpha, PictureBlend::Alpha, 0xFFFFFF), 192, 2);
    EXPECT_NEAR(middle(1000, half_alpha, PictureBlend::Alpha, 0x000000), 64, 1);
    EXPECT_NEAR(middle(1001, white, PictureBlend::Multiply, 0x000000), 128, 1); // behind the surface
}
