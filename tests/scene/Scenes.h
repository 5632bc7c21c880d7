// What the tests of the scene share: shapes by their box, and measures taken by a second method.
#pragma once

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "scene/World.h"

inline BrushShape ShapeOf(BrushType type, const D3DVECTOR& min, const D3DVECTOR& max, uint32_t segments = 0,
                          uint32_t view = 0) {
    BrushShape shape;
    shape.type = type;
    shape.bb = MakeBox(min, max);
    shape.pivot = (min + max) * 0.5f;
    shape.segment_count = segments;
    shape.view = view;
    return shape;
}

inline std::unique_ptr<Brush> BoxBrush(const D3DVECTOR& min = {0, 0, 0}, const D3DVECTOR& max = {64, 64, 64}) {
    return std::make_unique<Brush>(ShapeOf(BT_BOX, min, max));
}

// The volume that the triangles enclose; right only if the mesh is closed and every triangle faces outward.
inline double SignedVolume(const Brush& brush) {
    double six_volumes = 0;
    brush.ForEachSurface([&](const Surface& s, int, bool) {
        for (const TRIANGLE& t : s.tri_indices) {
            const D3DVECTOR &a = s.vertices[t.i[0]], &b = s.vertices[t.i[1]], &c = s.vertices[t.i[2]];
            six_volumes += double(a.x) * (double(b.y) * c.z - double(b.z) * c.y) +
                           double(a.y) * (double(b.z) * c.x - double(b.x) * c.z) +
                           double(a.z) * (double(b.x) * c.y - double(b.y) * c.x);
        }
    });
    return six_volumes / 6;
}

inline std::vector<int> Items(const Selection& selection) { return {selection.begin(), selection.end()}; }

inline void ExpectNear(const D3DVECTOR& actual, const D3DVECTOR& expected, float tolerance,
                       const std::string& what = {}) {
    EXPECT_NEAR(actual.x, expected.x, tolerance) << what;
    EXPECT_NEAR(actual.y, expected.y, tolerance) << what;
    EXPECT_NEAR(actual.z, expected.z, tolerance) << what;
}
inline void ExpectNear(const UVVector& actual, const UVVector& expected, float tolerance,
                       const std::string& what = {}) {
    EXPECT_NEAR(actual.u, expected.u, tolerance) << what;
    EXPECT_NEAR(actual.v, expected.v, tolerance) << what;
}
