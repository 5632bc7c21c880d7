#include <cmath>

#include <gtest/gtest.h>

#include "foundation/SpecialMath.h"
#include "render/Device.h"

namespace {

void ExpectNear(const D3DVECTOR& actual, const D3DVECTOR& expected, float tolerance = 1e-4f) {
    for (int k = 0; k < 3; ++k)
        EXPECT_NEAR(Component(actual, k), Component(expected, k), tolerance) << "component " << k;
}

void SetPerspective(float fov, float aspect, float zn, float zf) {
    crMCurrent(CRM_PROJ);
    crMSetIdentity();
    crMProj(fov, aspect, zn, zf);
}

int LookTo(const D3DVECTOR& from, const D3DVECTOR& to, const D3DVECTOR& up = {0, 1, 0}, float roll = 0) {
    crMCurrent(CRM_VIEW);
    return crMViewTo(from, to, up, roll);
}

} // namespace

TEST(Camera, ValuesComeBackFromViewAndProjection) {
    SetPerspective(PI / 2, 0.75f, 10, 10000);
    ASSERT_EQ(LookTo({10, -20.5f, 30}, {110, -20.5f, 30}), 0); // along +X: right is -Z
    crMUpdate();
    EXPECT_NEAR(crvZn, 10, 1e-4f);
    EXPECT_NEAR(crvZf, 10000, 5);
    EXPECT_NEAR(crvHVW, 10, 1e-4f);
    EXPECT_NEAR(crvHVH, 7.5f, 1e-4f);
    ExpectNear(crvViewFrom, {10, -20.5f, 30});
    EXPECT_EQ(crvViewFromInteger[0], 320);
    EXPECT_EQ(crvViewFromInteger[1], -656);

    D3DVECTOR up, right, front, base, u, v;
    crGetViewVectors(up, right, front);
    ExpectNear(front, {1, 0, 0});
    ExpectNear(up, {0, 1, 0});
    ExpectNear(right, {0, 0, -1});
    crGetScreenVectors(base, u, v);
    ExpectNear(base, {20, -28, 40});
    ExpectNear(u, {0, 0, -20});
    ExpectNear(v, {0, 15, 0});
}

TEST(Camera, ClipPlanesFaceInwards) {
    SetPerspective(1.1f, 0.6f, 10, 1000);
    ASSERT_EQ(LookTo({5, 6, 7}, {-20, 30, 90}, {0.2f, 1, 0}, 0.4f), 0);
    crMUpdate();
    PLANE planes[6];
    crGetClipPlanes(planes);
    for (int i = 2; i < 6; ++i)
        EXPECT_NEAR(planes[i].get_cos(crvViewFrom), 0, 1e-3f) << i;

    // A point at (right, up, front) of the camera is inside exactly the planes it should be inside of.
    const auto inside = [&](float right, float up, float front) {
        const D3DVECTOR p = crvViewFrom + crvVRight * right + crvVUp * up + crvVFront * front;
        int bits = 0;
        for (int i = 0; i < 6; ++i)
            bits |= planes[i].is_inside(p) ? 1 << i : 0;
        return bits;
    };
    const float w = 10 * crvHVW, h = 10 * crvHVH; // half sizes at the distance 100
    EXPECT_EQ(inside(0, 0, 100), 63);
    EXPECT_EQ(inside(-0.99f * w, 0.99f * h, 100), 63);
    EXPECT_EQ(inside(0, 0, 9.9f), 63 & ~1);
    EXPECT_EQ(inside(0, 0, 1001), 63 & ~2);
    EXPECT_EQ(inside(-1.01f * w, 0, 100), 63 & ~4);
    EXPECT_EQ(inside(1.01f * w, 0, 100), 63 & ~8);
    EXPECT_EQ(inside(0, 1.01f * h, 100), 63 & ~16);
    EXPECT_EQ(inside(0, -1.01f * h, 100), 63 & ~32);
}

TEST(Camera, ViewToFindsAnUpVectorOrFails) {
    crMCurrent(CRM_VIEW);
    const D3DMATRIX before = crTranslation({1, 2, 3});
    crMSet(before);
    EXPECT_EQ(LookTo({1, 1, 1}, {1, 1, 1.0000001f}), -1);
    EXPECT_EQ(LookTo({0, 0, 0}, {NAN, 0, 0}), -1);
    EXPECT_EQ(crMGet(), before);

    EXPECT_EQ(LookTo({0, 0, 0}, {3, 0, 0}, {5, 0, 0}), 0); // along up: Y steps in
    ExpectNear(crMGetCol(crMGet(), 1), {0, 1, 0});
    EXPECT_EQ(LookTo({0, 0, 0}, {0, 3, 0}, {0, 1, 0}), 0); // along Y, too: Z steps in
    ExpectNear(crMGetCol(crMGet(), 1), {0, 0, 1});
    ExpectNear(crMGetCol(crMGet(), 0), {-1, 0, 0});

    EXPECT_EQ(LookTo({7, 0, 0}, {7, 0, 9}, {0, 1, 0}, PI / 2), 0); // a quarter roll keeps place and direction
    ExpectNear(crMGetCol(crMGet(), 2), {0, 0, 1});
    ExpectNear(crMGetCol(crMGet(), 0), {0, 1, 0});
    D3DVECTOR out;
    crMTransform({7, 0, 0}, out);
    ExpectNear(out, {0, 0, 0});
}

TEST(Camera, BiasMovesOnlyTheDepthRange) {
    SetPerspective(1.0f, 0.75f, 10, 1000);
    const D3DMATRIX before = crvMatrices[CRM_PROJ];
    crMCurrent(CRM_USER4);
    crvMatrixDirty = 0;
    D3DMATRIX saved;
    crZProjBias(2, &saved);
    EXPECT_EQ(saved, before);
    EXPECT_EQ(crvMatrixDirty, 1u << CRM_PROJ);
    EXPECT_EQ(crMCurrent(CRM_USER4), CRM_USER4);
    D3DMATRIX expected = before;
    expected.m[2][2] = 1002.0f / 990.0f;
    expected.m[3][2] = -12.0f * 1002.0f / 990.0f;
    EXPECT_NEAR(crvMatrices[CRM_PROJ].m[2][2], expected.m[2][2], 1e-4f);
    EXPECT_NEAR(crvMatrices[CRM_PROJ].m[3][2], expected.m[3][2], 1e-2f);
    expected.m[2][2] = crvMatrices[CRM_PROJ].m[2][2];
    expected.m[3][2] = crvMatrices[CRM_PROJ].m[3][2];
    EXPECT_EQ(crvMatrices[CRM_PROJ], expected);
}

TEST(Camera, PixelsOfTheViewport) {
    crSetViewport(-1, 5, 5, 5);
    int x, y, w, h;
    crGetViewport(x, y, w, h);
    EXPECT_EQ(x, 0);
    EXPECT_EQ(w, 640);
    EXPECT_EQ(h, 480);

    SetPerspective(PI / 2, 0.75f, 10, 1000);
    ASSERT_EQ(LookTo({100, 50, 25}, {100, 50, 125}), 0);
    ExpectNear(s_math.GetSelectionRay({320, 240}, {100, 50, 25}), {0, 0, 1}, 1e-6f);
    const float length = std::sqrt(100.0f + 56.25f + 100.0f);
    ExpectNear(s_math.GetSelectionRay({0, 0}, {100, 50, 25}), {-10 / length, 7.5f / length, 10 / length}, 1e-6f);
    ExpectNear(s_math.GetSelectionRay({640, 480}, {100, 50, 25}), {10 / length, -7.5f / length, 10 / length}, 1e-6f);

    crSetViewport(100, 50, 641, 481);
    crMCurrent(CRM_USER1);
    crMSetIdentity();
    crMClip();
    D3DVECTOR out;
    crMTransform({0, 0, 0.5f}, out);
    EXPECT_EQ(out, (D3DVECTOR{420, 290, 0.5f}));
    crMTransform({-1, 1, 0}, out);
    EXPECT_EQ(out, (D3DVECTOR{100, 50, 0}));
    crSetViewport(-1, 0, 0, 0);

    // A negative aspect is the screen's.
    SetPerspective(PI / 2, -1, 10, 1000);
    EXPECT_NEAR(crvMatrices[CRM_PROJ].m[1][1], 640.0f / 480.0f, 1e-5f);
}

TEST(Camera, DepthOffsetGrowsWithTheDistance) {
    ASSERT_EQ(LookTo({0, 0, 0}, {0, 0, 1}), 0);
    SetPerspective(1, 1, 1, 10);
    crMUpdate();
    EXPECT_FLOAT_EQ(crUpdateTBufferDelta({0, 3, 4}, 1), 0.006f);
    EXPECT_FLOAT_EQ(crUpdateTBufferDelta({0, 3, 4}, 5), 0.003f);
    EXPECT_FLOAT_EQ(crvTBufDelta, 0.003f);
}
