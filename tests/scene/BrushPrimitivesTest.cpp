#include <gtest/gtest.h>

#include "foundation/Random.h"
#include "scene/Scenes.h"

namespace {

const D3DVECTOR MIN = {96, -16, 32}, MAX = {160, 80, 72};
constexpr double X = 64, Y = 96, Z = 40; // its extents

// The area of a quadrant of unit sides that the tessellated arc (1, 0), (1, 1), (0, 1) cuts off, at the default detail.
double ArcArea() {
    constexpr int SEGMENTS = 4;
    double twice_area = 0;
    const auto point = [](double t) { return std::pair((1 - t) * (1 - t) + 2 * t * (1 - t), 2 * t * (1 - t) + t * t); };
    for (int i = 0; i < SEGMENTS; ++i) {
        const auto [ax, ay] = point(double(i) / SEGMENTS);
        const auto [bx, by] = point(double(i + 1) / SEGMENTS);
        twice_area += ax * by - ay * bx;
    }
    return twice_area / 2;
}
double RingArea(int n) { return n / 8.0 * std::sin(2 * 3.14159265358979 / n); } // of an ellipse in a unit square

struct Primitive {
    const char* name;
    BrushType type;
    uint32_t segments;
    size_t flat, curved;
    double filled; // the part of the box that the solid fills
};

TEST(BrushPrimitives, EverySolidIsClosedAndFacesOutwardInEveryView) {
    const Primitive primitives[] = {
        {"box", BT_BOX, 6, 6, 0, 1},
        {"portal", BT_PORTAL, 6, 6, 0, 1},
        {"pyramid 3", BT_PYRAMID, 3, 4, 0, RingArea(3) / 3},
        {"pyramid 256", BT_PYRAMID, 9999, 257, 0, RingArea(256) / 3},
        {"prism 7", BT_PRISM, 7, 9, 0, RingArea(7)},
        {"cylinder 0", BT_CYLINDER, 0, 0, 12, ArcArea()},
        {"cylinder 1", BT_CYLINDER, 1, 0, 12, ArcArea()},
        {"cylinder 3", BT_CYLINDER, 3, 0, 20, ArcArea()},
        {"cone 0", BT_CONE, 0, 0, 8, ArcArea() / 3},
        {"cone 1", BT_CONE, 1, 0, 8, ArcArea() / 3},
        {"cone 3", BT_CONE, 3, 0, 16, ArcArea() / 3},
        {"SFT block", BT_SFT_BLOCK, 5, 2, 3, 1 - ArcArea()},
        {"Q block", BT_Q_BLOCK, 5, 2, 3, ArcArea()},
        {"elastic box 0", BT_ELASTIC_BOX, 0, 2, 4, 1},
        {"elastic box 1", BT_ELASTIC_BOX, 1, 0, 6, 1},
    };
    for (const Primitive& p : primitives)
        for (uint32_t view = 0; view < 3; ++view) {
            SCOPED_TRACE(std::string(p.name) + " in view " + std::to_string(view));
            const Brush brush(ShapeOf(p.type, MIN, MAX, p.segments, view));
            EXPECT_EQ(brush.surfaces.size(), p.flat);
            EXPECT_EQ(brush.curved_surfaces.size(), p.curved);
            EXPECT_NEAR(SignedVolume(brush), p.filled * X * Y * Z, 2e-4 * X * Y * Z);
            EXPECT_TRUE(brush.is_selected);
            brush.ForEachSurface([](const Surface& s, int, bool) {
                ASSERT_EQ(s.normal.size(), s.vertices.size());
                ASSERT_EQ(s.diffuse.size(), s.vertices.size());
                for (const EDGE& e : s.edge_indices)
                    EXPECT_TRUE(e.i[0] < s.vertices.size() && e.i[1] < s.vertices.size());
            });
        }
}

TEST(BrushPrimitives, ThePointedEndLooksAtTheViewer) {
    const D3DVECTOR apex[3] = {{128, MAX.y, 52}, {128, 32, MIN.z}, {MAX.x, 32, 52}};
    for (uint32_t view = 0; view < 3; ++view) {
        const Brush pyramid(ShapeOf(BT_PYRAMID, MIN, MAX, 5, view));
        EXPECT_EQ(pyramid.surfaces[1].vertices[0], apex[view]);
        const Brush cone(ShapeOf(BT_CONE, MIN, MAX, 0, view));
        EXPECT_EQ(cone.curved_surfaces[4].cp[5], apex[view]);
        const Brush sliced(ShapeOf(BT_CONE, MIN, MAX, 4, view));
        for (size_t k = 6; k < 9; ++k)
            EXPECT_EQ(sliced.curved_surfaces[19].cp[k], apex[view]);
    }
}

TEST(BrushPrimitives, RectangleByViewHasTheGivenBox) {
    const Box box = MakeBox(MIN, MAX);
    const size_t corners[3][4] = {{0, 1, 2, 3}, {3, 2, 6, 7}, {2, 1, 5, 6}};
    const D3DVECTOR normals[3] = {{0, 1, 0}, {0, 0, -1}, {1, 0, 0}};
    for (uint32_t view = 0; view < 3; ++view) {
        Brush rectangle(ShapeOf(BT_RECTANGLE, MIN, MAX, 0, view));
        const Surface& s = rectangle.surfaces.at(0);
        for (size_t k = 0; k < 4; ++k) {
            EXPECT_EQ(s.vertices[k], box[corners[view][k]]);
            EXPECT_EQ(s.normal[k], normals[view]);
        }
        EXPECT_EQ(rectangle.bbox, box); // stays as given until vertices change
        rectangle.RecalcBBox();
        const D3DVECTOR extent = BoxMax(rectangle.bbox) - BoxMin(rectangle.bbox);
        EXPECT_EQ(Component(extent, view == 0 ? 1 : view == 1 ? 2 : 0), 8.0f);
    }
}

TEST(BrushPrimitives, BoxFacesAreInTheStoredOrder) {
    const Brush box(ShapeOf(BT_BOX, MIN, MAX));
    const D3DVECTOR normals[6] = {{0, 1, 0}, {0, 0, -1}, {1, 0, 0}, {0, -1, 0}, {0, 0, 1}, {-1, 0, 0}};
    for (size_t f = 0; f < 6; ++f)
        EXPECT_EQ(box.surfaces[f].normal[0], normals[f]) << f;
    EXPECT_EQ(box.surfaces[3].vertices[0], box.bbox[7]);
    EXPECT_EQ(box.surfaces[5].vertices[1], box.bbox[4]);
    EXPECT_EQ(box.surfaces[0].tri_indices, (std::vector<TRIANGLE>{{{0, 1, 2}}, {{0, 2, 3}}}));
    EXPECT_EQ(box.surfaces[0].edge_indices, (std::vector<EDGE>{{{0, 1}}, {{1, 2}}, {{2, 3}}, {{3, 0}}}));
}

TEST(BrushPrimitives, PyramidAndPrismByHand) {
    BrushShape shape = ShapeOf(BT_PYRAMID, {0, 0, 0}, {64, 32, 64}, 4);
    shape.pivot = {16, 16, 48}; // off centre: ra = 16 from c0, rb = 48 from c3
    const Brush pyramid(shape);
    const Surface& base = pyramid.surfaces[0];
    const D3DVECTOR ring[4] = {{32, 0, 48}, {16, 0, 96}, {0, 0, 48}, {16, 0, 0}};
    EXPECT_EQ(base.vertices[0], (D3DVECTOR{16, 0, 48}));
    for (size_t i = 0; i < 4; ++i)
        ExpectNear(base.vertices[i + 1], ring[i], 1e-4f);
    EXPECT_EQ(base.tri_indices, (std::vector<TRIANGLE>{{{0, 1, 2}}, {{0, 2, 3}}, {{0, 3, 4}}, {{0, 4, 1}}}));
    EXPECT_EQ(base.edge_indices, (std::vector<EDGE>{{{1, 2}}, {{2, 3}}, {{3, 4}}, {{4, 1}}}));
    EXPECT_EQ(pyramid.surfaces[4].tri_indices, (std::vector<TRIANGLE>{{{2, 1, 0}}}));
    ExpectNear(pyramid.surfaces[4].vertices[2], ring[0], 1e-4f); // the last side closes on the first point
    EXPECT_NEAR(BoxMax(pyramid.bbox).z, 96, 1e-3f);              // the ring overhangs, the box follows

    shape.type = BT_PRISM;
    const Brush prism(shape);
    EXPECT_EQ(prism.surfaces[1].tri_indices,
              (std::vector<TRIANGLE>{{{2, 1, 0}}, {{3, 2, 0}}, {{4, 3, 0}}, {{1, 4, 0}}}));
    EXPECT_EQ(prism.surfaces[1].vertices[0].y, 32.0f);
    EXPECT_EQ(prism.surfaces[5].vertices[1], prism.surfaces[1].vertices[1]);
    EXPECT_EQ(prism.surfaces[5].vertices[3], prism.surfaces[0].vertices[4]);
}

TEST(BrushPrimitives, TooFewSegmentsBuildNothing) {
    for (const BrushType type : {BT_PYRAMID, BT_PRISM})
        for (uint32_t segments = 0; segments < 3; ++segments) {
            const Brush brush(ShapeOf(type, MIN, MAX, segments));
            EXPECT_TRUE(brush.surfaces.empty());
            EXPECT_EQ(brush.bbox, MakeBox(MIN, MAX));
        }
    EXPECT_TRUE(Brush(ShapeOf(BT_TERRAIN, MIN, MAX, 5)).surfaces.empty());
}

TEST(BrushPrimitives, ControlPointsByHand) {
    BrushShape shape = ShapeOf(BT_CYLINDER, {0, 0, 0}, {8, 4, 6}, 1);
    shape.pivot = {2, 1, 5};
    const Brush cylinder(shape);
    using Points = std::vector<D3DVECTOR>;
    EXPECT_EQ(cylinder.curved_surfaces[0].cp, (Points{{0, 4, 5}, {0, 4, 6}, {2, 4, 6}, {2, 4, 5}}));
    EXPECT_EQ(cylinder.curved_surfaces[1].cp, (Points{{2, 4, 6}, {8, 4, 6}, {8, 4, 5}, {2, 4, 5}}));
    EXPECT_EQ(cylinder.curved_surfaces[4].cp, (Points{{2, 0, 6}, {0, 0, 6}, {0, 0, 5}, {2, 0, 5}}));
    EXPECT_EQ(cylinder.curved_surfaces[7].cp, (Points{{0, 0, 5}, {0, 0, 0}, {2, 0, 0}, {2, 0, 5}}));
    EXPECT_EQ(
        cylinder.curved_surfaces[10].cp,
        (Points{{8, 4, 5}, {8, 4, 0}, {2, 4, 0}, {8, 2, 5}, {8, 2, 0}, {2, 2, 0}, {8, 0, 5}, {8, 0, 0}, {2, 0, 0}}));
    shape.type = BT_CONE;
    const Brush cone(shape); // rx = 2 and rz = 1, on both sides of the pivot
    EXPECT_EQ(cone.curved_surfaces[0].cp, (Points{{2, 0, 6}, {0, 0, 6}, {0, 0, 5}, {2, 0, 5}}));
    EXPECT_EQ(cone.curved_surfaces[3].cp, (Points{{0, 0, 5}, {0, 0, 0}, {2, 0, 0}, {2, 0, 5}}));
    EXPECT_EQ(
        cone.curved_surfaces[5].cp,
        (Points{
            {4, 0, 5}, {4, 0, 6}, {2, 0, 6}, {3, 2, 5}, {3, 2, 5.5f}, {2, 2, 5.5f}, {2, 4, 5}, {2, 4, 5}, {2, 4, 5}}));
    shape.type = BT_ELASTIC_BOX;
    const Brush elastic(shape);
    const D3DVECTOR middle[6] = {{2, 4, 5}, {2, 0, 5}, {2, 1, 0}, {2, 1, 6}, {8, 1, 5}, {0, 1, 5}};
    for (size_t f = 0; f < 6; ++f)
        EXPECT_EQ(elastic.curved_surfaces[f].cp[4], middle[f]) << f;
    EXPECT_EQ(elastic.curved_surfaces[4].cp[1], (D3DVECTOR{8, 4, 5}));
    shape.segment_count = 0;
    const Brush sides(shape);
    EXPECT_EQ(sides.curved_surfaces[0].cp, (Points{{0, 4, 0}, {0, 1, 0}, {0, 0, 0}, {8, 4, 0}, {8, 1, 0}, {8, 0, 0}}));
    shape.type = BT_SFT_BLOCK;
    EXPECT_EQ(Brush(shape).curved_surfaces[1].cp, (Points{{0, 0, 0}, {0, 0, 6}, {8, 0, 6}, {0, 0, 6}}));
    shape.type = BT_Q_BLOCK;
    EXPECT_EQ(Brush(shape).curved_surfaces[2].cp,
              (Points{{8, 4, 6}, {8, 4, 0}, {0, 4, 0}, {8, 0, 6}, {8, 0, 0}, {0, 0, 0}}));
}

TEST(BrushPrimitives, PatchesDivideTheLongerSide) {
    // A square is divided along z.
    const Brush square(ShapeOf(BT_PATCH, {0, 0, 0}, {60, 8, 60}, 3));
    ASSERT_EQ(square.curved_surfaces.size(), 3u);
    EXPECT_EQ(square.curved_surfaces[0].cp[0], (D3DVECTOR{60, 8, 60}));
    EXPECT_EQ(square.curved_surfaces[1].cp[8], (D3DVECTOR{0, 8, 20}));
    const Brush wide(ShapeOf(BT_PATCH, {0, 0, 0}, {80, 8, 60}, 2));
    ASSERT_EQ(wide.curved_surfaces.size(), 2u);
    EXPECT_EQ(wide.curved_surfaces[1].cp[0], (D3DVECTOR{80, 8, 60}));
    EXPECT_EQ(wide.curved_surfaces[1].cp[8], (D3DVECTOR{40, 8, 0}));
    for (const float width : {40.0f, 80.0f}) {
        const Brush strip(ShapeOf(BT_PATCH, {0, 0, 0}, {width, 8, 60}, 0));
        ASSERT_EQ(strip.curved_surfaces.size(), 1u);
        EXPECT_EQ(strip.curved_surfaces[0].cp_count, CURVE_STRIP);
    }
    // All forms face the viewer.
    const D3DVECTOR normals[3] = {{0, 1, 0}, {0, 0, -1}, {1, 0, 0}};
    for (uint32_t view = 0; view < 3; ++view)
        for (const uint32_t segments : {0u, 2u})
            for (const D3DVECTOR& max : {D3DVECTOR{40, 90, 60}, D3DVECTOR{90, 40, 60}, D3DVECTOR{40, 60, 90}})
                for (const Surface& s : Brush(ShapeOf(BT_PATCH, {0, 0, 0}, max, segments, view)).curved_surfaces)
                    for (const D3DVECTOR& n : s.normal)
                        ExpectNear(n, normals[view], 1e-5f);
}

double OutlineArea(const std::vector<D3DVECTOR>& outline) {
    double twice = 0;
    for (size_t i = 0; i < outline.size(); ++i) {
        const D3DVECTOR &a = outline[i], &b = outline[(i + 1) % outline.size()];
        twice += double(a.x) * b.y - double(a.y) * b.x;
    }
    return std::fabs(twice) / 2;
}

TEST(BrushPrimitives, ExtrudedOutlinesFillTheirAreaInBothWindings) {
    std::vector<std::vector<D3DVECTOR>> outlines = {
        {{0, 0, 0}, {64, 0, 0}, {64, 64, 0}, {0, 64, 0}},
        {{0, 0, 0}, {64, 0, 0}, {64, 16, 0}, {16, 16, 0}, {16, 64, 0}, {0, 64, 0}}, // L
        {{0, 0, 0}, {32, 0, 0}, {64, 0, 0}, {64, 64, 0}, {32, 8, 0}, {0, 64, 0}},   // crown, collinear base
        {{0, 0, 0},
         {80, 0, 0},
         {80, 80, 0},
         {0, 80, 0},
         {0, 16, 0},
         {16, 16, 0},
         {16, 64, 0},
         {64, 64, 0},
         {64, 10, 0},
         {0, 10, 0}}, // a spiral
    };
    RandomMT random;
    random.seedMT(3);
    for (const size_t n : {5u, 40u, 256u}) { // stars of random spikes
        std::vector<D3DVECTOR>& star = outlines.emplace_back();
        for (size_t i = 0; i < n; ++i) {
            const float angle = TWO_PI * static_cast<float>(i) / static_cast<float>(n);
            const auto radius = static_cast<float>(20 + random.randomMT() % 80);
            star.push_back({std::cos(angle) * radius, std::sin(angle) * radius, 99});
        }
    }
    for (size_t k = 0; k < outlines.size(); ++k)
        for (const bool reversed : {false, true})
            for (uint32_t view = 0; view < 3; ++view) {
                SCOPED_TRACE("outline " + std::to_string(k) + (reversed ? " reversed" : "") + " view " +
                             std::to_string(view));
                BrushShape shape = ShapeOf(BT_EXTRUDABLE, {-100, -100, -100}, {100, 100, 100}, 0, view);
                shape.ex_points = outlines[k];
                if (reversed)
                    shape.ex_points.assign(outlines[k].rbegin(), outlines[k].rend());
                const Brush brush(shape);
                const size_t n = outlines[k].size();
                ASSERT_EQ(brush.surfaces.size(), n + 2);
                EXPECT_EQ(brush.surfaces[0].tri_indices.size(), n - 2);
                EXPECT_EQ(brush.surfaces[1].edge_indices.size(), n);
                const double area = OutlineArea(outlines[k]);
                EXPECT_NEAR(SignedVolume(brush), area * 200, area * 0.01);
                double lid = 0; // each triangle counts with its own sign: none may be inside out or overlap
                for (const TRIANGLE& t : brush.surfaces[1].tri_indices) {
                    const auto& v = brush.surfaces[1].vertices;
                    const D3DVECTOR cross = CrossProduct(v[t.i[1]] - v[t.i[0]], v[t.i[2]] - v[t.i[0]]);
                    lid += Magnitude(cross) / 2;
                }
                EXPECT_NEAR(lid, area, area * 1e-3);
            }
}

TEST(BrushPrimitives, BadOutlinesEndInOrder) {
    const float nan = std::nanf("");
    const std::vector<std::vector<D3DVECTOR>> outlines = {
        {},
        {{0, 0, 0}, {1, 0, 0}},
        {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}},
        {{nan, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}},
        std::vector<D3DVECTOR>(257, D3DVECTOR{1, 2, 3}),
        std::vector<D3DVECTOR>(256, D3DVECTOR{1, 2, 3}),
    };
    for (const auto& outline : outlines) {
        BrushShape shape = ShapeOf(BT_EXTRUDABLE, MIN, MAX);
        shape.ex_points = outline;
        EXPECT_TRUE(Brush(shape).surfaces.empty()) << outline.size();
    }
    // Crossing edges: whatever comes of it, the lids are whole or the brush is empty.
    BrushShape shape = ShapeOf(BT_EXTRUDABLE, MIN, MAX);
    RandomMT random;
    random.seedMT(8);
    for (int round = 0; round < 200; ++round) {
        shape.ex_points.clear();
        for (uint32_t i = 0; i < 3 + random.randomMT() % 12; ++i)
            shape.ex_points.push_back(
                {static_cast<float>(random.randomMT() % 6), static_cast<float>(random.randomMT() % 6), 0});
        const Brush brush(shape);
        if (!brush.surfaces.empty()) {
            EXPECT_EQ(brush.surfaces[0].tri_indices.size(), shape.ex_points.size() - 2);
        }
    }
}

} // namespace
