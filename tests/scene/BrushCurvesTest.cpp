#include <gtest/gtest.h>

#include "foundation/Random.h"
#include "foundation/TempFolder.h"
#include "scene/Scenes.h"

namespace {

// A brush of one curved surface.
Brush CurveOf(int32_t cp_count, std::vector<D3DVECTOR> cp) {
    Brush brush;
    brush.type = BT_PATCH;
    Surface& s = brush.curved_surfaces.emplace_back();
    s.cp_count = cp_count;
    s.cp = std::move(cp);
    s.texture.size = {64, 64};
    return brush;
}

D3DVECTOR Bezier(const D3DVECTOR* cp, double t, size_t stride = 1) {
    const double w[3] = {(1 - t) * (1 - t), 2 * t * (1 - t), t * t};
    double sum[3] = {};
    for (size_t k = 0; k < 3; ++k)
        for (int axis = 0; axis < 3; ++axis)
            sum[axis] += w[k] * Component(cp[k * stride], axis);
    return {float(sum[0]), float(sum[1]), float(sum[2])};
}

std::vector<D3DVECTOR> RandomPoints(size_t count) {
    static RandomMT random;
    std::vector<D3DVECTOR> points(count);
    for (D3DVECTOR& p : points)
        for (int axis = 0; axis < 3; ++axis)
            Component(p, axis) = static_cast<float>(random.randomMT() % 512);
    return points;
}

TEST(BrushCurves, CountsAndPositionsByDetail) {
    for (int detail = 0; detail < 4; ++detail) {
        const size_t n = (16u >> detail) + 1;
        const struct {
            size_t cp, vertices, triangles, edges;
        } kinds[] = {{4, n + 1, n - 1, n - 1},
                     {6, 2 * n, 2 * (n - 1), 3 * n - 2},
                     {9, n * n, 2 * (n - 1) * (n - 1), 4 * (n - 1) * (n - 1)}};
        for (const auto& kind : kinds) {
            SCOPED_TRACE(std::to_string(kind.cp) + " points at detail " + std::to_string(detail));
            const std::vector<D3DVECTOR> cp = RandomPoints(kind.cp);
            Brush brush = CurveOf(static_cast<int32_t>(kind.cp), cp);
            brush.ChangeCurveDetail(detail);
            const Surface& s = brush.curved_surfaces[0];
            EXPECT_EQ(s.vertices.size(), kind.vertices);
            EXPECT_EQ(s.tri_indices.size(), kind.triangles);
            EXPECT_EQ(s.edge_indices.size(), kind.edges);
            for (const auto size : {s.uv.size(), s.lightmap_uv.size(), s.normal.size(), s.diffuse.size()})
                EXPECT_EQ(size, kind.vertices);
            for (size_t i = 0; i < n; ++i) {
                const double t = double(i) / double(n - 1);
                if (kind.cp == 4)
                    ExpectNear(s.vertices[i + 1], Bezier(cp.data(), t), 0.01f);
                if (kind.cp == 6) {
                    ExpectNear(s.vertices[i], Bezier(cp.data(), t), 0.01f);
                    ExpectNear(s.vertices[n + i], Bezier(cp.data() + 3, t), 0.01f);
                }
                for (size_t j = 0; kind.cp == 9 && j < n; ++j) {
                    D3DVECTOR rows[3]; // each row of control points at the column's parameter
                    for (size_t r = 0; r < 3; ++r)
                        rows[r] = Bezier(cp.data() + 3 * r, double(j) / double(n - 1));
                    ExpectNear(s.vertices[i * n + j], Bezier(rows, t), 0.01f);
                }
            }
        }
    }
}

TEST(BrushCurves, IndicesByHandAtTheCoarsestDetail) {
    Brush fan = CurveOf(4, RandomPoints(4)), strip = CurveOf(6, RandomPoints(6)), patch = CurveOf(9, RandomPoints(9));
    for (Brush* brush : {&fan, &strip, &patch})
        brush->ChangeCurveDetail(3);
    EXPECT_EQ(fan.curved_surfaces[0].vertices[0], fan.curved_surfaces[0].cp[3]);
    EXPECT_EQ(fan.curved_surfaces[0].tri_indices, (std::vector<TRIANGLE>{{{0, 1, 2}}, {{0, 2, 3}}}));
    EXPECT_EQ(fan.curved_surfaces[0].edge_indices, (std::vector<EDGE>{{{1, 2}}, {{2, 3}}}));
    EXPECT_EQ(strip.curved_surfaces[0].tri_indices,
              (std::vector<TRIANGLE>{{{0, 3, 4}}, {{0, 4, 1}}, {{1, 4, 5}}, {{1, 5, 2}}}));
    EXPECT_EQ(strip.curved_surfaces[0].edge_indices,
              (std::vector<EDGE>{{{0, 1}}, {{1, 2}}, {{3, 4}}, {{4, 5}}, {{0, 3}}, {{1, 4}}, {{2, 5}}}));
    EXPECT_EQ(patch.curved_surfaces[0].tri_indices[7], (TRIANGLE{{4, 8, 5}}));
    EXPECT_EQ(patch.curved_surfaces[0].edge_indices[14], (EDGE{{8, 5}}));
}

TEST(BrushCurves, ParametricCoordinates) {
    Brush patch = CurveOf(9, RandomPoints(9)), strip = CurveOf(6, RandomPoints(6));
    patch.curved_surfaces[0].lightmap_size = strip.curved_surfaces[0].lightmap_size = {16, 8};
    patch.TesselateCurves(); // 5 by 5
    strip.TesselateCurves();
    const Surface &p = patch.curved_surfaces[0], &s = strip.curved_surfaces[0];
    ExpectNear(p.uv[0], {0, 0}, 0);
    ExpectNear(p.uv[1 * 5 + 3], {0.75f, 0.25f}, 1e-6f);
    ExpectNear(p.uv[24], {1, 1}, 1e-6f);
    ExpectNear(s.uv[4], {1, 0}, 1e-6f);
    ExpectNear(s.uv[5], {0, 1}, 1e-6f);
    ExpectNear(p.lightmap_uv[0], {1 / 16.0f, 1 / 8.0f}, 1e-6f);
    ExpectNear(p.lightmap_uv[12], {0.5f, 0.5f}, 1e-6f);
    ExpectNear(p.lightmap_uv[24], {15 / 16.0f, 7 / 8.0f}, 1e-6f);
    ExpectNear(s.lightmap_uv[9], {15 / 16.0f, 7 / 8.0f}, 1e-6f);

    TEX_INFO& info = patch.curved_surfaces[0].texture;
    info.rotation = 90; // about the parameter origin: (s, t) goes to (-t, s)
    info.shift = {16, 32};
    info.scale = {2, 3};
    info.flip_v = true;
    patch.TesselateCurves();
    ExpectNear(p.uv[4], {-(0.5f) * 2, -(1.25f) * 3}, 1e-5f); // a = 1.25, b = 0.5
}

TEST(BrushCurves, UnknownKindsBecomeEmptyAndAreLogged) {
    const TempFolder folder;
    const CurrentFolder here(folder.Path());
    std::filesystem::create_directory("Marrowstead");
    for (const int32_t count : {0, 1, 3, 5, 7, -1, 9}) { // 9 announced, 8 there
        Brush brush = CurveOf(count, RandomPoints(count == 9 ? 8 : static_cast<size_t>(std::max(count, 0))));
        brush.SetObjectID(77);
        brush.curved_surfaces[0].vertices.resize(3);
        brush.ChangeCurveDetail(1);
        EXPECT_TRUE(brush.curved_surfaces[0].vertices.empty());
        EXPECT_TRUE(brush.curved_surfaces[0].tri_indices.empty());
        brush.RemapAll();
        brush.RecalcBBox();
        EXPECT_NE(ReadBytes("Marrowstead/trace.log").find("BF correcting brush with id = 77 (this = 0x"),
                  std::string::npos);
        std::filesystem::remove("Marrowstead/trace.log");
    }
}

TEST(BrushCurves, FanLightmapCoordinates) {
    // A quarter of a disc on the floor, 56 by 56: with 16 by 16 texels each is 4 wide.
    Brush fan = CurveOf(4, {{100, 5, 0}, {156, 5, 0}, {156, 5, -56}, {100, 5, -56}});
    fan.curved_surfaces[0].lightmap_size = {16, 16};
    fan.TesselateCurves();
    const Surface& s = fan.curved_surfaces[0];
    UVVector least = s.lightmap_uv[0], most = least;
    for (const UVVector& uv : s.lightmap_uv) {
        least = {std::min(least.u, uv.u), std::min(least.v, uv.v)};
        most = {std::max(most.u, uv.u), std::max(most.v, uv.v)};
    }
    ExpectNear(least, {1 / 16.0f, 1 / 16.0f}, 1e-5f); // one texel of border
    ExpectNear(most, {15 / 16.0f, 15 / 16.0f}, 1e-5f);
    fan.curved_surfaces[0].lightmap_size = {}; // not lit yet
    fan.TesselateCurves();
    for (const UVVector& uv : s.lightmap_uv)
        ExpectNear(uv, {0, 0}, 0);
}

TEST(BrushCurves, TheWorldChangesTheDetailOfAllBrushesWithinItsLimits) {
    World world;
    const Brush* cylinder = world.CreateBrush(ShapeOf(BT_CYLINDER, {0, 0, 0}, {64, 64, 64}));
    EXPECT_EQ(cylinder->CURVE_DETAIL, 2u);
    for (const int expected : {1, 0, 0}) {
        world.ChangeCurveDetail(true);
        EXPECT_EQ(world.curve_detail, expected);
        EXPECT_EQ(cylinder->CURVE_DETAIL, static_cast<uint32_t>(expected));
    }
    EXPECT_EQ(cylinder->curved_surfaces[0].vertices.size(), 18u);
    EXPECT_EQ(cylinder->CURVE_DELTA, 0.0625f);
    const Brush* young = world.CreateBrush(ShapeOf(BT_CYLINDER, {0, 0, 0}, {64, 64, 64}));
    EXPECT_EQ(young->CURVE_SEGMENTS, 16u);
    for (const int expected : {1, 2, 3, 3}) {
        world.ChangeCurveDetail(false);
        EXPECT_EQ(world.curve_detail, expected);
    }
    Brush brush(ShapeOf(BT_CYLINDER, {0, 0, 0}, {64, 64, 64}));
    for (const int beyond : {4, -1, 1000}) {
        brush.ChangeCurveDetail(beyond);
        EXPECT_EQ(brush.CURVE_SEGMENTS, 4u);
    }
}

} // namespace
