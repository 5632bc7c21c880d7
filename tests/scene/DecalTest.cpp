// The cut of a decal's rectangle from the triangles of a surface, judged by area and texture coordinates.
#include <algorithm>
#include <array>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "foundation/Random.h"
#include "scene/DecalCutting.h"
#include "scene/Scenes.h"

namespace {

constexpr float UP_TO_ROUNDING = 0.001f;

class RandomGenerator {
public:
    explicit RandomGenerator(uint32_t seed) { words.seedMT(seed); }
    float Float() { return static_cast<float>(words.randomMT() >> 8) * 0x1p-24f; } // 0 to below 1

private:
    RandomMT words;
};

// Triangles on the ground, given by x and z, facing up.
Brush Ground(const std::vector<std::array<UVVector, 3>>& triangles) {
    Brush b;
    b.type = BT_BOX;
    Surface& s = b.surfaces.emplace_back();
    for (const auto& corners : triangles) {
        const auto first = static_cast<uint16_t>(s.vertices.size());
        for (const UVVector& c : corners)
            s.vertices.push_back({c.u, 0, c.v});
        s.tri_indices.push_back({{first, static_cast<uint16_t>(first + 1), static_cast<uint16_t>(first + 2)}});
    }
    b.RecalcBBox();
    return b;
}

constexpr std::array<UVVector, 3> LOW_HALF{{{0, 0}, {0, 100}, {100, 0}}}, HIGH_HALF{{{100, 0}, {0, 100}, {100, 100}}};

DecalTemplate Flat(float x, float z, float x_size, float y_size) {
    DecalTemplate t;
    t.o_position = {x, 0, z};
    t.o_normal = {0, 1, 0};
    t.x_size = x_size, t.y_size = y_size;
    t.color = MakeColor(1, 2, 3, 255);
    t.id = 7;
    return t;
}

double AreaOf(const Decal& d) {
    double area = 0;
    for (const TRIANGLE& t : d.tris)
        area += Magnitude(CrossProduct(d.xyz[t.i[1]] - d.xyz[t.i[0]], d.xyz[t.i[2]] - d.xyz[t.i[0]])) * 0.5;
    return area;
}

double TotalArea(const Brush& brush) {
    double area = 0;
    for (const auto& d : brush.decal_list)
        area += AreaOf(*d);
    return area;
}

// A convex outline cut by the half planes of an upright rectangle.
using Outline = std::vector<std::pair<double, double>>;
double AreaInside(Outline outline, double x0, double y0, double x1, double y1) {
    const auto cut = [&outline](auto&& inside_by) {
        Outline kept;
        for (size_t i = 0; i < outline.size(); ++i) {
            const auto &a = outline[i], &b = outline[(i + 1) % outline.size()];
            const double da = inside_by(a), db = inside_by(b);
            if (da >= 0)
                kept.push_back(a);
            if ((da >= 0) != (db >= 0)) {
                const double t = da / (da - db);
                kept.emplace_back(a.first + (b.first - a.first) * t, a.second + (b.second - a.second) * t);
            }
        }
        outline = std::move(kept);
    };
    cut([&](const auto& p) { return p.first - x0; });
    cut([&](const auto& p) { return x1 - p.first; });
    cut([&](const auto& p) { return p.second - y0; });
    cut([&](const auto& p) { return y1 - p.second; });
    double twice = 0;
    for (size_t i = 0; i < outline.size(); ++i) {
        const auto &a = outline[i], &b = outline[(i + 1) % outline.size()];
        twice += a.first * b.second - b.first * a.second;
    }
    return std::fabs(twice) / 2;
}

} // namespace

TEST(Decal, PolygonsByAreaAndTexture) {
    const Brush half = Ground({LOW_HALF}), whole = Ground({LOW_HALF, HIGH_HALF});
    const struct {
        const char* what;
        const Brush& ground;
        float x, z, x_size, y_size;
        size_t points, triangles;
        float area;
    } cases[] = {
        {"inside one triangle", half, 20, 20, 10, 10, 4, 2, 100},
        {"around the triangle", half, 50, 50, 400, 400, 3, 1, 5000},
        {"across an edge", half, 0, 30, 20, 10, 4, 2, 100},
        {"over two triangles", whole, 52, 50, 20, 10, 8, 4, 200},
        {"one corner of the triangle", half, -5, -3, 20, 20, 4, 2, 35},
        {"a stripe through the triangle", half, 50, 20, 300, 10, 4, 2, 800},
        {"one corner of the rectangle", half, 55, 55, 20, 20, 3, 1, 50},
        {"beside the triangle", half, -20, 50, 20, 20, 0, 0, 0},
        {"in a corner that the boxes share", half, 90, 90, 20, 20, 0, 0, 0},
    };
    for (const auto& c : cases) {
        Decal d;
        const DecalTemplate source = Flat(c.x, c.z, c.x_size, c.y_size);
        EXPECT_EQ(d.Create(c.ground, 0, false, source), c.area > 0) << c.what;
        EXPECT_EQ(d.xyz.size(), c.points) << c.what;
        EXPECT_EQ(d.tris.size(), c.triangles) << c.what;
        EXPECT_NEAR(AreaOf(d), c.area, UP_TO_ROUNDING) << c.what;
        EXPECT_EQ(d.color.dw_color, source.color.dw_color) << c.what;
        ASSERT_EQ(d.uv.size(), d.xyz.size()) << c.what;
        // Seen from above with x to the right, z runs up: the texture starts at the low x and the high z.
        for (size_t i = 0; i < d.xyz.size(); ++i) {
            EXPECT_NEAR(d.uv[i].u, (d.xyz[i].x - (c.x - c.x_size / 2)) / c.x_size, 1e-5f) << c.what;
            EXPECT_NEAR(d.uv[i].v, (c.z + c.y_size / 2 - d.xyz[i].z) / c.y_size, 1e-5f) << c.what;
        }
        for (const TRIANGLE& t : d.tris)
            EXPECT_GT(CrossProduct(d.xyz[t.i[1]] - d.xyz[t.i[0]], d.xyz[t.i[2]] - d.xyz[t.i[0]]).y, 0) << c.what;
    }
}

TEST(Decal, CornersOfTheWholeTexture) {
    const Brush half = Ground({LOW_HALF});
    Decal d;
    ASSERT_TRUE(d.Create(half, 0, false, Flat(20, 30, 8, 4)));
    const struct {
        D3DVECTOR place;
        UVVector uv;
    } corners[] = {{{16, 0, 32}, {0, 0}}, {{24, 0, 32}, {1, 0}}, {{24, 0, 28}, {1, 1}}, {{16, 0, 28}, {0, 1}}};
    ASSERT_EQ(d.xyz.size(), 4u);
    for (size_t i = 0; i < 4; ++i) {
        ExpectNear(d.xyz[i], corners[i].place, UP_TO_ROUNDING);
        ExpectNear(d.uv[i], corners[i].uv, 1e-5f);
    }
    EXPECT_EQ(d.id, 7u);
    EXPECT_EQ(d.owner, &half);
    EXPECT_EQ(d.owner_surface, 0);
}

// A decal turns as the texture of a surface does.
TEST(Decal, AxesAreThoseOfTexturesOnSurfaces) {
    RandomGenerator random(5);
    for (int i = 0; i < 500; ++i) {
        const auto one = [&random] { return random.Float() * 2 - 1; };
        const D3DVECTOR n = Normalize({one(), one(), one() + 0.001f});
        DecalTemplate t = Flat(0, 0, 10, 10);
        t.o_normal = n * 40;
        t.o_rotation = one() * 400;
        const Brush ground = Ground({LOW_HALF});
        Decal d;
        d.Create(ground, 0, false, t);
        TEX_INFO mapping;
        mapping.rotation = t.o_rotation;
        TEXTURE_SPACE space;
        Brush::ComputeTextureSpace(d.o_normal, space, mapping);
        ExpectNear(d.cp[1].normal, space.ts_x, 1e-5f);
        ExpectNear(d.cp[0].normal, space.ts_y, 1e-5f);
        ExpectNear(d.cp[3].normal, -space.ts_x, 1e-5f);
        ExpectNear(d.cp[2].normal, -space.ts_y, 1e-5f);
    }
}

TEST(Decal, OnlySurfacesThatFaceItAndLieNear) {
    const Brush ground = Ground({LOW_HALF, HIGH_HALF});
    const auto tilted = [](float degrees) {
        const float a = degrees / 180 * PI;
        return D3DVECTOR{std::sin(a), std::cos(a), 0};
    };
    const struct {
        float degrees, height;
        bool cut;
    } cases[] = {{0, 0, true},      {59.9f, 0, true}, {60.1f, 0, false}, {90, 0, false},
                 {180, 0, false},   {0, 3.9f, true},  {0, -3.9f, true},  {0, 4.1f, false},
                 {0, -4.1f, false}, {30, 3.9f, true}, {30, 4.1f, false}};
    for (const auto& c : cases) {
        DecalTemplate t = Flat(52, 47, 10, 10);
        t.o_position.y = c.height;
        t.o_normal = tilted(c.degrees);
        Decal d;
        EXPECT_EQ(d.Create(ground, 0, false, t), c.cut) << c.degrees << " " << c.height;
    }
    // One far triangle that faces it does not keep a near one that faces away from being passed over.
    Brush folded = Ground({LOW_HALF, HIGH_HALF});
    std::swap(folded.surfaces[0].tri_indices[1].i[0], folded.surfaces[0].tri_indices[1].i[2]);
    Decal d;
    ASSERT_TRUE(d.Create(folded, 0, false, Flat(52, 47, 300, 300)));
    EXPECT_NEAR(AreaOf(d), 5000, 0.01);
}

TEST(Decal, NumbersThatMakeNoRectangleMakeNoMesh) {
    const Brush ground = Ground({LOW_HALF, HIGH_HALF});
    const float nan = std::numeric_limits<float>::quiet_NaN(), infinite = std::numeric_limits<float>::infinity();
    std::vector<DecalTemplate> cases;
    for (const float size : {0.0f, -5.0f, nan, infinite}) {
        cases.push_back(Flat(40, 40, size, 10));
        cases.push_back(Flat(40, 40, 10, size));
    }
    for (const float bad : {nan, infinite}) {
        cases.push_back(Flat(bad, 40, 10, 10));
        cases.push_back(Flat(40, 40, 10, 10));
        cases.back().o_rotation = bad;
        cases.push_back(Flat(40, 40, 10, 10));
        cases.back().o_normal.x = bad;
    }
    for (const D3DVECTOR& normal : {D3DVECTOR{}, D3DVECTOR{1e-30f, 1e-30f, 0}, D3DVECTOR{0, 1e30f, 0}}) {
        cases.push_back(Flat(40, 40, 10, 10));
        cases.back().o_normal = normal;
    }
    for (size_t i = 0; i < cases.size(); ++i) {
        Decal d;
        EXPECT_FALSE(d.Create(ground, 0, false, cases[i])) << i;
        EXPECT_TRUE(d.xyz.empty()) << i;
    }
    Brush damaged = Ground({LOW_HALF, HIGH_HALF, {{{5, 5}, {5, 5}, {5, 5}}}, {{{0, 0}, {50, 50}, {100, 100}}}});
    damaged.surfaces[0].tri_indices.push_back({{0, 1, 60000}});
    Decal d;
    ASSERT_TRUE(d.Create(damaged, 0, false, Flat(40, 40, 10, 10)));
    EXPECT_NEAR(AreaOf(d), 100, UP_TO_ROUNDING);
}

TEST(Decal, TooManyTrianglesEndTheMesh) {
    std::vector<std::array<UVVector, 3>> cells;
    for (int x = 0; x < 40; ++x)
        for (int z = 0; z < 40; ++z) {
            const auto left = static_cast<float>(x), low = static_cast<float>(z);
            cells.push_back({{{left, low}, {left, low + 1}, {left + 1, low}}});
        }
    const Brush ground = Ground(cells);
    Decal d;
    ASSERT_TRUE(d.Create(ground, 0, false, Flat(20, 20, 200, 200)));
    EXPECT_LE(d.xyz.size(), Decal::MAX_VERTICES);
    EXPECT_GT(d.xyz.size(), Decal::MAX_VERTICES - 3);
    EXPECT_EQ(d.tris.size() * 3, d.xyz.size());
    EXPECT_EQ(d.uv.size(), d.xyz.size());
}

// Rectangles whose corners and sides fall on edges and corners of triangles: what cannot be ordered shows in green, and
// nothing else is lost.
TEST(Decal, AFailedCutIsGreenAndStaysWithinItsPoints) {
    const Brush ground = Ground({LOW_HALF, HIGH_HALF});
    int failed = 0, whole = 0;
    for (int x = 0; x <= 100; x += 5)
        for (int z = 0; z <= 100; z += 5)
            for (int size = 10; size <= 80; size += 10) {
                const auto w = static_cast<float>(size), cx = static_cast<float>(x), cz = static_cast<float>(z);
                Decal d;
                if (!d.Create(ground, 0, false, Flat(cx, cz, w, w)))
                    continue;
                for (const D3DVECTOR& p : d.xyz) {
                    ASSERT_TRUE(std::fabs(p.x - cx) <= w / 2 + 0.01f && std::fabs(p.z - cz) <= w / 2 + 0.01f);
                    ASSERT_TRUE(p.x >= -0.01f && p.x <= 100.01f && p.z >= -0.01f && p.z <= 100.01f);
                }
                const double across = std::min(cx + w / 2, 100.0f) - std::max(cx - w / 2, 0.0f);
                const double up = std::min(cz + w / 2, 100.0f) - std::max(cz - w / 2, 0.0f);
                if (d.color.dw_color == 0xFF00FF00) {
                    ++failed;
                    EXPECT_LE(AreaOf(d), across * up + 0.01);
                } else {
                    ++whole;
                    EXPECT_NEAR(AreaOf(d), across * up, 0.01) << cx << " " << cz << " " << w;
                }
            }
    EXPECT_GT(whole, failed);
    EXPECT_GT(failed, 0);
}

TEST(Decal, RandomRectanglesOnABoxCoverWhatTheyShould) {
    const D3DVECTOR high{60, 40, 80};
    RandomGenerator random(11);
    const auto within = [&random](float low, float top) { return low + (top - low) * random.Float(); };
    for (int round = 0; round < 3000; ++round) {
        World world;
        Brush& box = *world.AddBrush(BoxBrush({0, 0, 0}, high));
        const int axis = round % 3, side = round / 3 % 2;
        const float sign = side ? 1.0f : -1.0f;
        auto t = std::make_unique<DecalTemplate>();
        for (int k = 0; k < 3; ++k) {
            Component(t->o_position, k) = k == axis ? (side ? Component(high, k) : 0) : within(0, Component(high, k));
            Component(t->o_normal, k) = k == axis ? sign : within(-0.8f, 0.8f);
        }
        t->o_rotation = within(-360, 360);
        t->x_size = within(0.5f, 90), t->y_size = within(0.5f, 90);
        // The brushes that a rectangle meets are found by a box without its turn.
        const DecalTemplate& placed = *world.AddNewDecal(std::move(t));
        const D3DVECTOR n = Normalize(placed.o_normal);
        TEX_INFO mapping;
        mapping.rotation = placed.o_rotation;
        TEXTURE_SPACE axes;
        Brush::ComputeTextureSpace(n, axes, mapping);
        double expected = 0;
        bool at_a_limit = false;
        for (int face = 0; face < 6; ++face) {
            const int k = face / 2, u = (k + 1) % 3, v = (k + 2) % 3;
            const float outward = face % 2 ? 1.0f : -1.0f, plane = face % 2 ? Component(high, k) : 0;
            const double facing = Component(n, k) * outward;
            const double distance = std::fabs(Component(placed.o_position, k) - plane);
            at_a_limit = at_a_limit || std::fabs(facing - 0.5) < 1e-4 || std::fabs(distance - 4) < 1e-3;
            if (facing < 0.5 || distance > 4)
                continue;
            Outline outline;
            for (const auto& [a, b] : {std::pair(-1, 1), std::pair(1, 1), std::pair(1, -1), std::pair(-1, -1)}) {
                const D3DVECTOR corner = placed.o_position + axes.ts_x * (placed.x_size / 2 * static_cast<float>(a)) +
                                         axes.ts_y * (placed.y_size / 2 * static_cast<float>(b));
                const double steps = (double(Component(corner, k)) - plane) / Component(n, k);
                outline.emplace_back(Component(corner, u) - steps * Component(n, u),
                                     Component(corner, v) - steps * Component(n, v));
            }
            expected += AreaInside(outline, 0, 0, Component(high, u), Component(high, v));
        }
        if (at_a_limit)
            continue;
        ASSERT_NEAR(TotalArea(box), expected, 0.02 + expected * 1e-4) << "round " << round;
        for (const auto& d : box.decal_list)
            ASSERT_EQ(d->color.dw_color, 0u) << "round " << round;
    }
}

TEST(Decal, TestSelectionFindsItsTriangles) {
    const Brush ground = Ground({LOW_HALF, HIGH_HALF});
    Decal d;
    ASSERT_TRUE(d.Create(ground, 0, false, Flat(50, 40, 20, 10)));
    const struct {
        D3DVECTOR start, direction;
        bool hit;
    } cases[] = {{{50, 10, 40}, {0, -1, 0}, true},      {{41, 10, 44}, {0, -1, 0}, true},
                 {{39, 10, 40}, {0, -1, 0}, false},     {{50, 10, 46}, {0, -1, 0}, false},
                 {{50, -10, 40}, {0, 1, 0}, false},     {{50, 10, 40}, {0, 1, 0}, false},
                 {{40, 10, 40}, {0.7f, -0.7f, 0}, true}};
    for (const auto& c : cases)
        EXPECT_EQ(d.TestSelection(c.start, c.direction), c.hit) << c.start.x << " " << c.start.y << " " << c.start.z;
}
