#include "foundation/Plane.h"
#include "foundation/Quaternion.h"
#include "foundation/Random.h"
#include "foundation/SpecialMath.h"

#include <gtest/gtest.h>

// The projection of the view belongs to a higher room; nothing here asks for it.
namespace {

void ExpectNear(const D3DVECTOR& a, const D3DVECTOR& b, float tolerance = 1e-5f) {
    EXPECT_NEAR(a.x, b.x, tolerance);
    EXPECT_NEAR(a.y, b.y, tolerance);
    EXPECT_NEAR(a.z, b.z, tolerance);
}

float RandomUnit() { return static_cast<float>(random_mt.randomMT() >> 8) / (1 << 24); }
float RandomBetween(float low, float high) { return low + (high - low) * RandomUnit(); }
D3DVECTOR RandomPoint(float reach) {
    return {RandomBetween(-reach, reach), RandomBetween(-reach, reach), RandomBetween(-reach, reach)};
}
D3DVECTOR RotateByMatrix(const D3DVECTOR& v, const D3DMATRIX& m) {
    return {v.x * m.m[0][0] + v.y * m.m[1][0] + v.z * m.m[2][0], v.x * m.m[0][1] + v.y * m.m[1][1] + v.z * m.m[2][1],
            v.x * m.m[0][2] + v.y * m.m[1][2] + v.z * m.m[2][2]};
}

} // namespace

TEST(Colour, PacksAndUnpacks) {
    const COLOR color = MakeColor(255, 128, 0, 64);
    EXPECT_EQ(color.dw_color, 0x40FF8000u);
    EXPECT_FLOAT_EQ(color.r, 255 * 0.003921569f);
    EXPECT_FLOAT_EQ(color.g, 128 * 0.003921569f);
    EXPECT_EQ(PackColor({2.0f, 0.5f, -1.0f, NAN}), 0x00FF7F00u);
}

TEST(Plane, ThroughThreePoints) {
    const PLANE plane(D3DVECTOR{0, 0, 0}, D3DVECTOR{1, 0, 0}, D3DVECTOR{0, 1, 0});
    EXPECT_EQ(plane.normal, (D3DVECTOR{0, 0, -1}));
    PLANE doubled(D3DVECTOR{0, 3, 0}, D3DVECTOR{0, 2, 0});
    EXPECT_EQ(doubled.D, -6);
    EXPECT_EQ(doubled.get_dist({0, 4, 0}), 0.5f);
    doubled.normalize();
    EXPECT_EQ(doubled.normal, (D3DVECTOR{0, 1, 0}));
    EXPECT_EQ(doubled.D, -6) << "the distance stays as it is";
    EXPECT_EQ(PLANE().get_dist({1, 1, 1}), 0);
}

TEST(Plane, SidesAndHits) {
    const PLANE floor(0, 1, 0, 0);
    EXPECT_FALSE(floor.is_inside({0, -0.000001f, 0}));
    EXPECT_TRUE(floor.is_inside2({0, -0.000001f, 0}));
    EXPECT_FALSE(floor.is_inside2({0, -0.001f, 0}));
    D3DVECTOR hit;
    float t = 0;
    ASSERT_TRUE(floor.intersect({1, 2, 3}, {0, 4, 1}, hit, t));
    EXPECT_EQ(t, -0.5f);
    EXPECT_EQ(hit, (D3DVECTOR{1, 0, 2.5f}));
    EXPECT_FALSE(floor.intersect({1, 2, 3}, {1, 0, 1}, hit, t));
}

TEST(Quaternion, TurnsLikeItsAxisAndAngle) {
    // A quarter turn about z takes x to y; the matrix works on rows, so it turns the other way round.
    const Quaternion quarter = Quaternion::from_rotation({0, 0, 1}, PI / 2);
    ExpectNear(RotateByMatrix({1, 0, 0}, quarter.to_matrix()), {0, -1, 0});
    const Quaternion half = quarter * quarter;
    EXPECT_NEAR(half.z, 1, 1e-6f);
    EXPECT_NEAR(half.w, 0, 1e-6f);
    const Quaternion none = quarter * -quarter;
    EXPECT_NEAR(none.w, 1, 1e-6f);
    D3DVECTOR axis;
    float angle;
    quarter.to_rotation(axis, angle);
    ExpectNear(axis, {0, 0, 1});
    EXPECT_NEAR(angle, PI / 2, 1e-6f);
    EXPECT_EQ((Quaternion{0, 0, 0, 0}.normalize().w), 1);
    EXPECT_FLOAT_EQ((Quaternion{0, 3, 0, 4}.normalize().y), 0.6f);
}

TEST(Quaternion, EulerAnglesOneAxisAtATime) {
    // Each angle alone fills the component that its own formula names.
    const float s = std::sin(0.25f), c = std::cos(0.25f);
    const Quaternion x = Quaternion::from_euler({0.5f, 0, 0});
    const Quaternion y = Quaternion::from_euler({0, 0.5f, 0});
    const Quaternion z = Quaternion::from_euler({0, 0, 0.5f});
    EXPECT_FLOAT_EQ(x.y, s);
    EXPECT_FLOAT_EQ(y.z, s);
    EXPECT_FLOAT_EQ(z.x, s);
    EXPECT_FLOAT_EQ(x.w, c);
    EXPECT_EQ(x.x, 0);
}

TEST(Quaternion, SlerpTakesTheShortWay) {
    const Quaternion a = Quaternion::from_rotation({0, 1, 0}, 0.2f);
    const Quaternion b = Quaternion::from_rotation({0, 1, 0}, 1.2f);
    const Quaternion minus_b = {-b.x, -b.y, -b.z, -b.w};
    const Quaternion expected = Quaternion::from_rotation({0, 1, 0}, 0.45f);
    for (const Quaternion& end : {b, minus_b}) {
        const Quaternion middle = a.slerp(end, 0.25f);
        EXPECT_NEAR(middle.y, expected.y, 1e-5f);
        EXPECT_NEAR(middle.w, expected.w, 1e-5f);
    }
    const Quaternion itself = b.slerp(minus_b, 0.3f); // 0.7 of b less 0.3 of its opposite
    EXPECT_FLOAT_EQ(itself.w, b.w);
}

TEST(SpecialMath, PlaneTestsDifferInWhatTheyRefuse) {
    using Method = bool (SpecialMath::*)(const D3DVECTOR&, const D3DVECTOR&, const D3DVECTOR&, const D3DVECTOR&,
                                         D3DVECTOR&, float&) const;
    struct Case {
        const char* name;
        Method method;
        D3DVECTOR a, b;
        bool hits;
        float t;
    };
    // The plane y = 0 with its normal up.
    const Case cases[] = {
        {"two points", &SpecialMath::PlaneIntersect, {0, 4, 0}, {0, 2, 0}, true, 2},
        {"two points, from behind", &SpecialMath::PlaneIntersect, {0, -4, 0}, {0, -2, 0}, true, 2},
        {"two points, away", &SpecialMath::PlaneIntersect, {0, 2, 0}, {0, 4, 0}, false, 0},
        {"two points, parallel", &SpecialMath::PlaneIntersect, {0, 2, 0}, {1, 2, 0}, false, 0},
        {"two sided, away", &SpecialMath::PlaneIntersect2Sided, {0, 2, 0}, {0, 4, 0}, true, -0.5f},
        {"two sided, parallel", &SpecialMath::PlaneIntersect2Sided, {0, 2, 0}, {4, 0, 0}, false, 0},
        {"ray down", &SpecialMath::PlaneIntersectRay, {0, 2, 0}, {0, -1, 0}, true, 2},
        {"ray with the normal", &SpecialMath::PlaneIntersectRay, {0, -2, 0}, {0, 1, 0}, false, 0},
        {"ray from behind", &SpecialMath::PlaneIntersectRay, {0, -2, 0}, {0, -1, 0}, false, 0},
        {"ex down", &SpecialMath::PlaneIntersectEx, {0, 2, 0}, {0, -4, 0}, true, 0.5f},
        {"ex from behind", &SpecialMath::PlaneIntersectEx, {0, -2, 0}, {0, -1, 0}, false, 0},
        {"segment through", &SpecialMath::PlaneIntersectSegment, {0, 2, 0}, {0, -4, 0}, true, 0.5f},
        {"segment to its end", &SpecialMath::PlaneIntersectSegment, {0, 2, 0}, {0, -2, 0}, true, 1},
        {"segment too short", &SpecialMath::PlaneIntersectSegment, {0, 2, 0}, {0, -1, 0}, false, 0},
        {"segment from behind", &SpecialMath::PlaneIntersectSegment, {0, -1, 0}, {0, -4, 0}, false, 0},
    };
    for (const Case& c : cases) {
        D3DVECTOR hit = {9, 9, 9};
        float t = 9;
        EXPECT_EQ((s_math.*c.method)(c.a, c.b, {5, 0, 5}, {0, 1, 0}, hit, t), c.hits) << c.name;
        EXPECT_EQ(t, c.hits ? c.t : 9) << c.name;
        EXPECT_EQ(hit.y, c.hits ? 0 : 9) << c.name;
    }
}

TEST(SpecialMath, CrossingSegments) {
    EXPECT_TRUE(s_math.LineIntersect2d({0, 0, 7}, {0, 2, -7}, {2, 2, 0}, {2, -2, 0}));
    EXPECT_FALSE(s_math.LineIntersect2d({0, 0, 0}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0})) << "a shared end";
    EXPECT_FALSE(s_math.LineIntersect2d({0, 0, 0}, {1, -1, 0}, {2, 0, 0}, {0, 1, 0})) << "an end on the other";
    EXPECT_FALSE(s_math.LineIntersect2d({0, 0, 0}, {0, 1, 0}, {1, 0, 0}, {2, 0, 0})) << "parallel";
    EXPECT_FALSE(s_math.LineIntersect2d({0, 0, 0}, {3, -1, 0}, {2, 0, 0}, {0, 2, 0})) << "beyond the end";
}

TEST(SpecialMath, AnglesGoFullCircle) {
    const D3DVECTOR x = {2, 0, 0}, side = {0, 0, 3};
    EXPECT_NEAR(s_math.CalculateFullAngle(x, {0, 0, 1}, side), PI / 2, 1e-5f);
    EXPECT_NEAR(s_math.CalculateFullAngle(x, {0, 0, -1}, side), 3 * PI / 2, 1e-5f);
    EXPECT_NEAR(s_math.CalculateFullAngle(x, {-5, 0, 0}, side), PI, 1e-5f);
    for (int i = 0; i < 1000; ++i) { // rounding must not leave the domain of the arc cosine
        const D3DVECTOR v = RandomPoint(1);
        EXPECT_NEAR(s_math.CalculateFullAngle(v, v * 3, v), 0, 1e-3f);
    }
}

TEST(SpecialMath, TrianglesAndTheirCoordinates) {
    const D3DVECTOR a = {0, 0, 0}, b = {4, 0, 0}, c = {0, 4, 0}, n = {0, 0, 1};
    for (const D3DVECTOR& inside : {D3DVECTOR{1, 1, 0}, a, b, c, D3DVECTOR{2, 2, 0}}) {
        EXPECT_TRUE(s_math.PointInTriangle(a, b, c, n, inside));
        EXPECT_TRUE(s_math.PointInTriangle(a, c, b, n, inside));
    }
    EXPECT_FALSE(s_math.PointInTriangle(a, b, c, n, {3, 2, 0}));
    EXPECT_FALSE(s_math.PointInTriangle(a, b, c, n, {-0.001f, 1, 0}));
    float u, v;
    s_math.GetBarycentricCoordinates(a, b, c, {1, 2, 0}, n, u, v);
    EXPECT_FLOAT_EQ(u, 0.5f) << "the weight of the third corner";
    EXPECT_FLOAT_EQ(v, 0.25f) << "the weight of the second corner";
}

TEST(SpecialMath, Boxes) {
    const D3DVECTOR min = {-1, -1, -1}, max = {1, 1, 1};
    EXPECT_TRUE(s_math.BoxBoxIntersect(min, max, {1, 0, 0}, {2, 1, 1}));
    EXPECT_FALSE(s_math.BoxBoxIntersect(min, max, {1.001f, 0, 0}, {2, 1, 1}));
    EXPECT_FALSE(s_math.BoxBoxIntersect(min, max, {0, 0, -3}, {1, 1, -2}));
    EXPECT_TRUE(s_math.PointInBox(min, max, {1, 0, -1}));
    EXPECT_FALSE(s_math.PointInBox(min, max, {0, 1.001f, 0}));
    EXPECT_TRUE(s_math.BoxPlaneIntersect(min, max, PLANE(0, 1, 0, 0)));
    EXPECT_FALSE(s_math.BoxPlaneIntersect(min, max, PLANE(0, 1, 0, 1))) << "touching from inside";
    EXPECT_TRUE(s_math.BoxPlaneIntersect(min, max, PLANE(0, 1, 0, -1))) << "0 counts as positive";
    EXPECT_FALSE(s_math.BoxPlaneIntersect(min, max, PLANE(0, 1, 0, -2)));
    EXPECT_TRUE(s_math.BoxRayIntersectInner({-5, 0, 0}, {1, 0, 0}, {}, max));
    EXPECT_TRUE(s_math.BoxRayIntersectInner({5, 0, 0}, {1, 0, 0}, {}, max)) << "the line has no start";
    EXPECT_FALSE(s_math.BoxRayIntersectInner({-5, 2, 0}, {1, 0, 0}, {}, max));
    EXPECT_FALSE(s_math.BoxRayIntersectInner({0, 3, 0}, {1, 1, 1}, {}, max));
}

TEST(SpecialMath, FacesAndBoxesByHand) {
    const D3DVECTOR min = {-1, -1, -1}, max = {1, 1, 1}, up = {0, 1, 0};
    EXPECT_TRUE(s_math.FaceInBox(min, max, {0, 0, 0}, {9, 0, 0}, {0, 0, 9}, up)) << "a corner inside";
    EXPECT_TRUE(s_math.FaceInBox(min, max, {-40, 0, -40}, {40, 0, -40}, {0, 0, 80}, up)) << "the box inside the face";
    EXPECT_TRUE(s_math.FaceInBox(min, max, {-5, 0, 0}, {5, 0, 0}, {0, 0, 50}, up)) << "an edge through the box";
    EXPECT_FALSE(s_math.FaceInBox(min, max, {-5, 2, 0}, {5, 2, 0}, {0, 2, 50}, up)) << "above";
    EXPECT_FALSE(s_math.FaceInBox(min, max, {3, -5, 0}, {3, 5, 5}, {4, 0, -5}, {1, 0, 0})) << "beside";
}

// A box and a triangle that really overlap are never missed: sample points of the triangle are looked up in the box.
TEST(SpecialMath, NoOverlapOfFaceAndBoxIsMissed) {
    int overlaps = 0;
    for (int i = 0; i < 20000; ++i) {
        const D3DVECTOR v1 = RandomPoint(3), v2 = RandomPoint(3), v3 = RandomPoint(3);
        const D3DVECTOR min = RandomPoint(2), size = RandomPoint(1);
        const D3DVECTOR max = min + D3DVECTOR{std::fabs(size.x), std::fabs(size.y), std::fabs(size.z)};
        bool overlap = false;
        for (int s = 0; s <= 12; ++s)
            for (int t = 0; s + t <= 12; ++t) {
                const float u = static_cast<float>(s) / 12, v = static_cast<float>(t) / 12;
                overlap = overlap || s_math.PointInBox(min, max, v1 + (v2 - v1) * u + (v3 - v1) * v);
            }
        overlaps += overlap;
        const D3DVECTOR normal = Normalize(CrossProduct(v2 - v1, v3 - v1));
        EXPECT_TRUE(!overlap || s_math.FaceInBox(min, max, v1, v2, v3, normal));
    }
    EXPECT_GT(overlaps, 500);
}

TEST(SpecialMath, NearestPoints) {
    EXPECT_FLOAT_EQ(s_math.SquareDistanceLinePoint({0, 0, 0}, {0, 0, 5}, {3, 4, 77}), 25);
    const D3DVECTOR a = {0, 0, 0}, b = {4, 0, 0}, c = {0, 4, 0};
    ExpectNear(s_math.ClosestPointOnLine(a, b, {1, 5, 0}), {1, 0, 0});
    ExpectNear(s_math.ClosestPointOnLine(a, b, {-1, 5, 0}), a);
    ExpectNear(s_math.ClosestPointOnLine(a, b, {5, 5, 0}), b);
    ExpectNear(s_math.ClosestPointOnTriangle(a, b, c, {1, 0.5f, 3}), {1, 0, 0});
    ExpectNear(s_math.ClosestPointOnTriangle(a, b, c, {3, 3, 0}), {2, 2, 0});
    ExpectNear(s_math.ClosestPointOnTriangle(a, b, c, {1, 1, 0}), {0, 1, 0}); // as near to ab: ca wins a draw
}

TEST(SpecialMath, BezierWeights) {
    EXPECT_EQ(s_math.B[0][0][0], -0.12109375f);
    EXPECT_EQ(s_math.B[0][0][1], 0.1171875f);
    EXPECT_EQ(s_math.B[0][0][2], 0.00390625f);
    EXPECT_EQ(s_math.B[0][1][0], 0.0078125f);
    EXPECT_EQ(s_math.B[0][1][1], -0.015625f);
    // Halfway along both sides: quarter, half, quarter of quarter, half, quarter.
    const float middle[9] = {0.0625f, 0.125f, 0.0625f, 0.125f, 0.25f, 0.125f, 0.0625f, 0.125f, 0.0625f};
    for (int k = 0; k < 9; ++k)
        EXPECT_EQ(s_math.P[3][1][1][k], middle[k]);
    EXPECT_EQ(s_math.P[3][2][0][6], 1) << "the first column of the last row";
    EXPECT_EQ(s_math.P[3][3][0][6], 0) << "outside the filled corner";
}

// De Casteljau's construction is the second method.
TEST(SpecialMath, BezierCurvesAndPatches) {
    const auto between = [](const D3DVECTOR& a, const D3DVECTOR& b, float t) { return a + (b - a) * t; };
    const auto curve = [&](const D3DVECTOR* cp, float t) {
        return between(between(cp[0], cp[1], t), between(cp[1], cp[2], t), t);
    };
    D3DVECTOR cp[9];
    for (D3DVECTOR& point : cp)
        point = RandomPoint(10);
    for (int detail = 0; detail < 4; ++detail) {
        const int count = (16 >> detail) + 1;
        std::vector<D3DVECTOR> points(static_cast<size_t>(count * count));
        s_math.GetVerticesAlongBezierCurve3CP(cp, points.data(), detail, count);
        for (int i = 0; i < count; ++i)
            ExpectNear(points[static_cast<size_t>(i)], curve(cp, static_cast<float>(i) / static_cast<float>(count - 1)),
                       1e-4f);
        s_math.GetVerticesAlongBezierPatch3CP(cp, points.data(), detail, count);
        for (int i = 0; i < count; ++i)
            for (int j = 0; j < count; ++j) {
                const float s = static_cast<float>(i) / static_cast<float>(count - 1);
                const float t = static_cast<float>(j) / static_cast<float>(count - 1);
                const D3DVECTOR rows[3] = {curve(cp, t), curve(cp + 3, t), curve(cp + 6, t)};
                ExpectNear(points[static_cast<size_t>(i * count + j)], curve(rows, s), 1e-4f);
            }
    }
}
