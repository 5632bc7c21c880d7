#include <gtest/gtest.h>

#include "foundation/Random.h"
#include "render/Matrix.h"
#include "scene/PlaneMapping.h"
#include "scene/Scenes.h"

namespace {

D3DVECTOR Through(const D3DMATRIX& m, const D3DVECTOR& v) {
    D3DVECTOR out;
    crMTransform(m, v, out);
    return out;
}

TEST(PlaneMapping, AxisAlignedPiecesMapExactly) {
    // A rectangle of 30 by 20 in each axis plane: its sides come out as size, to the bit.
    const struct {
        D3DVECTOR normal, a, b; // and the two edge vectors
        D3DVECTOR size;
    } cases[] = {
        {{1, 0, 0}, {0, 0, 30}, {0, 20, 0}, {30, 20, 0}}, {{-1, 0, 0}, {0, 0, 30}, {0, 20, 0}, {30, 20, 0}},
        {{0, 1, 0}, {30, 0, 0}, {0, 0, 20}, {30, 20, 0}}, {{0, -1, 0}, {30, 0, 0}, {0, 0, 20}, {30, 20, 0}},
        {{0, 0, 1}, {30, 0, 0}, {0, 20, 0}, {30, 20, 0}}, {{0, 0, -1}, {30, 0, 0}, {0, 20, 0}, {30, 20, 0}},
    };
    for (const auto& c : cases) {
        const D3DVECTOR corner{7, -64, 128};
        const std::vector<D3DVECTOR> vertices = {corner, corner + c.a, corner + c.a + c.b, corner + c.b};
        const PlaneMapping mapping = MapToPlane(c.normal, vertices);
        EXPECT_EQ(mapping.size, c.size);
        for (size_t i = 0; i < vertices.size(); ++i) {
            EXPECT_EQ(mapping.points[i].z, 0.0f);
            EXPECT_EQ(Through(mapping.to_plane, vertices[i]), mapping.points[i]);
            EXPECT_EQ(Through(mapping.to_world, mapping.points[i]), vertices[i]);
        }
    }
}

TEST(PlaneMapping, RandomTrianglesGoThereAndBack) {
    RandomMT random;
    random.seedMT(11);
    const auto coordinate = [&random] { return static_cast<float>(static_cast<int>(random.randomMT() % 4096) - 2048); };
    for (int round = 0; round < 500; ++round) {
        std::vector<D3DVECTOR> v(3);
        for (D3DVECTOR& p : v)
            p = {coordinate(), coordinate(), round % 3 ? coordinate() : 0};
        const D3DVECTOR cross = CrossProduct(v[1] - v[0], v[2] - v[0]);
        if (Magnitude(cross) < 1e4f)
            continue;
        const PlaneMapping mapping = MapToPlane(Normalize(cross), v);
        D3DVECTOR least = mapping.points[0], most = least;
        for (size_t i = 0; i < 3; ++i) {
            const D3DVECTOR& p = mapping.points[i];
            least = {std::min(least.x, p.x), std::min(least.y, p.y), std::min(least.z, p.z)};
            most = {std::max(most.x, p.x), std::max(most.y, p.y), std::max(most.z, p.z)};
            ExpectNear(Through(mapping.to_world, p), v[i], 0.01f);
            ExpectNear(Through(mapping.to_plane, v[i]), p, 0.01f);
            EXPECT_NEAR(Magnitude(p - mapping.points[(i + 1) % 3]), Magnitude(v[i] - v[(i + 1) % 3]), 0.01f); // rigid
        }
        EXPECT_EQ(least, (D3DVECTOR{0, 0, 0}));
        EXPECT_EQ(most, mapping.size);
        EXPECT_LT(mapping.size.z, 5e-4f * Magnitude(mapping.size)); // flat, as far as acos resolves near 1
    }
}

TEST(PlaneMapping, WithoutVerticesOrNormalNothingBreaks) {
    EXPECT_EQ(MapToPlane({0, 1, 0}, {}).size, (D3DVECTOR{}));
    const PlaneMapping mapping = MapToPlane({0, 0, 0}, {{1, 2, 3}, {4, 5, 6}});
    EXPECT_EQ(mapping.size, (D3DVECTOR{3, 3, 3}));
}

} // namespace
