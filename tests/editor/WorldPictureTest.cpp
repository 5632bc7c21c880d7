#include <gtest/gtest.h>

#include <cmath>

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
        picture.DrawMesh(mesh, white, {}, false);
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
