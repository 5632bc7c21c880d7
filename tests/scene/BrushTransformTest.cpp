#include <algorithm>

#include <gtest/gtest.h>

#include "foundation/Random.h"
#include "foundation/Strings.h"
#include "render/Matrix.h"
#include "scene/Scenes.h"

namespace {

constexpr float RIGHT_ANGLE = 1.5707964f;

TEX_INFO Textured(float width = 64, float height = 128) {
    TEX_INFO info;
    info.index = 1;
    info.size = {width, height};
    return info;
}

std::unique_ptr<Brush> TexturedBrush(BrushType type, const TEX_INFO& info) {
    auto brush = std::make_unique<Brush>(ShapeOf(type, {-32, 16, 8}, {96, 80, 72}, 6));
    brush->ForEachSurface([&info](Surface& s, int, bool) { s.texture = info; });
    for (size_t i = 0; i < brush->surfaces.size(); ++i)
        brush->Remap(static_cast<int>(i), false);
    for (size_t c = 0; c < brush->curved_surfaces.size(); ++c)
        brush->Remap(static_cast<int>(c), true);
    return brush;
}

std::vector<UVVector> Coordinates(const Brush& brush) {
    std::vector<UVVector> all;
    brush.ForEachSurface([&all](const Surface& s, int, bool) { all.insert(all.end(), s.uv.begin(), s.uv.end()); });
    return all;
}

void ExpectCoordinates(const Brush& brush, const std::vector<UVVector>& expected, float tolerance,
                       const std::string& what) {
    const std::vector<UVVector> actual = Coordinates(brush);
    ASSERT_EQ(actual.size(), expected.size()) << what;
    for (size_t i = 0; i < actual.size(); ++i)
        ExpectNear(actual[i], expected[i], tolerance, what + " vertex " + std::to_string(i));
}

void ExpectFinite(const Brush& brush) {
    brush.ForEachSurface([](const Surface& s, int index, bool) {
        for (size_t i = 0; i < s.vertices.size(); ++i) {
            const D3DVECTOR sum = s.vertices[i] + s.normal[i];
            EXPECT_TRUE(std::isfinite(sum.x + sum.y + sum.z + s.uv[i].u + s.uv[i].v)) << index << ' ' << i;
        }
        EXPECT_TRUE(std::isfinite(s.texture.rotation + s.texture.shift.u + s.texture.shift.v)) << index;
    });
}

// Cases that a mapping can be in; the size of the texture is not square.
std::vector<std::pair<std::string, TEX_INFO>> Mappings() {
    std::vector<std::pair<std::string, TEX_INFO>> mappings(5, {"plain", Textured()});
    mappings[1].first = "shifted", mappings[1].second.shift = {13, -7};
    mappings[2].first = "scaled", mappings[2].second.scale = {0.5f, 2};
    mappings[3].first = "turned", mappings[3].second.rotation = 33, mappings[3].second.shift = {5, 9};
    mappings[4].first = "twice flipped", mappings[4].second.flip_u = mappings[4].second.flip_v = true;
    mappings[4].second.rotation = -120;
    return mappings;
}

constexpr BrushType LOCKED_TYPES[] = {BT_BOX, BT_PRISM, BT_PYRAMID, BT_Q_BLOCK, BT_SFT_BLOCK, BT_CYLINDER};

TEST(BrushMove, LockedTexturesStayOnTheirSurfaces) {
    for (const BrushType type : LOCKED_TYPES)
        for (auto [what, info] : Mappings())
            for (const bool by_surface : {false, true}) {
                info.locked = by_surface;
                auto brush = TexturedBrush(type, info);
                const auto before = Coordinates(*brush);
                const D3DVECTOR corner = brush->bbox[0];
                for (const D3DVECTOR& move : {D3DVECTOR{16, 0, 0}, {0, -40, 3}, {-7.5f, 100, 1000.25f}}) {
                    brush->Move(move, !by_surface);
                    ExpectCoordinates(*brush, before, 1e-4f, std::to_string(type) + ' ' + what);
                }
                ExpectNear(brush->bbox[0], corner + D3DVECTOR{8.5f, 60, 1003.25f}, 1e-3f);
                ExpectNear(brush->pivot, (brush->bbox[1] + brush->bbox[7]) * 0.5f, 1e-3f);
            }
}

// Tilted by 45 degrees, two axes of a plane's normal tie, and the frame of its mapping hangs on the last bit.
TEST(BrushMove, LockedTexturesOfTiltedBrushesStayToo) {
    RandomMT random;
    random.seedMT(3);
    const auto coordinate = [&random] { return static_cast<float>(random.randomMT() % 20000) * 0.01f - 100; };
    for (const BrushType type : LOCKED_TYPES)
        for (int view = 0; view < 3; ++view) {
            auto brush = TexturedBrush(type, Textured());
            const auto before = Coordinates(*brush);
            brush->Rotate(RIGHT_ANGLE / 2, view, {10, 20, 30}, true);
            for (int step = 0; step < 25; ++step)
                brush->Move({coordinate(), coordinate(), coordinate()}, true);
            ExpectCoordinates(*brush, before, 3e-3f, Format("type %d view %d", type, view));
        }
}

TEST(BrushMove, UnlockedTexturesStayInTheWorld) {
    auto brush = TexturedBrush(BT_Q_BLOCK, Textured());
    brush->surfaces[0].texture.index = 0;
    const TEX_INFO untouched = brush->surfaces[0].texture;
    const std::vector<UVVector> plain = brush->surfaces[0].uv, wall = brush->curved_surfaces[2].uv;
    brush->assigned_to_cell = true;
    brush->Move({32, 0, 64}, false);
    // The top fan, by hand: u = x / 64, v = -z / 128.
    const Surface& top = brush->curved_surfaces[0];
    ASSERT_GT(top.vertices.size(), 3u);
    for (size_t i = 0; i < top.vertices.size(); ++i)
        ExpectNear(top.uv[i], {top.vertices[i].x / 64, -top.vertices[i].z / 128}, 1e-5f);
    EXPECT_EQ(top.texture.shift, UVVector{});
    EXPECT_EQ(brush->surfaces[0].uv, plain); // no material
    EXPECT_EQ(brush->surfaces[0].texture, untouched);
    EXPECT_EQ(brush->curved_surfaces[2].uv, wall); // its mapping is not by plane
    EXPECT_FALSE(brush->assigned_to_cell);

    auto box = TexturedBrush(BT_BOX, Textured());
    const UVVector corner = box->surfaces[0].uv[0];
    box->surfaces[1].texture.locked = true;
    const std::vector<UVVector> locked = box->surfaces[1].uv;
    box->Move({32, 0, 64}, false);
    ExpectNear(box->surfaces[0].uv[0], {corner.u + 0.5f, corner.v - 0.5f}, 1e-5f);
    for (size_t i = 0; i < locked.size(); ++i)
        ExpectNear(box->surfaces[1].uv[i], locked[i], 1e-5f);
}

TEST(BrushMove, ControlPointsOfAStoredMeshStay) {
    Brush brush;
    brush.type = BT_CUSTOM;
    Surface& s = brush.curved_surfaces.emplace_back();
    s.Allocate(3, 1, 0);
    s.vertices = {{0, 0, 0}, {0, 0, 64}, {64, 0, 0}};
    s.tri_indices = {{{0, 1, 2}}};
    s.cp = {{1, 2, 3}};
    s.cp_count = CURVE_MESH;
    s.uv = {{0.25f, 0.5f}, {1, 2}, {3, 4}};
    const std::vector<UVVector> stored = s.uv;
    brush.RecalcBBox();
    brush.ComputeNormals();
    brush.Move({10, 20, 30}, true);
    EXPECT_EQ(s.vertices[2], (D3DVECTOR{74, 20, 30}));
    brush.Rotate(RIGHT_ANGLE, 0, {10, 20, 30}, true); // x goes to z
    ExpectNear(s.vertices[2], {10, 20, 94}, 1e-3f);
    brush.FlipNormals();
    EXPECT_EQ(s.cp[0], (D3DVECTOR{1, 2, 3}));
    EXPECT_EQ(s.uv, stored);
    EXPECT_EQ(s.tri_indices[0], (TRIANGLE{{0, 1, 2}}));
}

TEST(BrushRotate, LockedTexturesTurnWithTheirSurfaces) {
    for (const BrushType type : LOCKED_TYPES)
        for (const auto& [what, info] : Mappings())
            for (int view = 0; view < 3; ++view)
                for (const float degrees : {90.0f, -90.0f, 180.0f, 45.0f, 37.0f, -1.0f, 300.0f}) {
                    auto brush = TexturedBrush(type, info);
                    const auto before = Coordinates(*brush);
                    brush->Rotate(degrees * PI / 180, view, {100, -50, 20}, true);
                    // An arc cosine near 1 is good for 0.02 degrees: 0.05 texels over the brush.
                    ExpectCoordinates(*brush, before, 2e-3f,
                                      Format("type %d %s view %d by %g", type, what.c_str(), view, degrees));
                }
}

TEST(BrushRotate, ASequenceOfTurnsKeepsTheTexture) {
    RandomMT random;
    random.seedMT(5);
    auto box = TexturedBrush(BT_BOX, Mappings()[3].second);
    const auto before = Coordinates(*box);
    const double volume = SignedVolume(*box);
    for (int turn = 0; turn < 12; ++turn) {
        const float angle = static_cast<float>(random.randomMT() % 360) * PI / 180;
        box->Rotate(angle, static_cast<int>(random.randomMT() % 3), {10, 20, 30}, true);
    }
    ExpectCoordinates(*box, before, 1e-2f, "sequence");
    EXPECT_NEAR(SignedVolume(*box) / volume, 1, 1e-4);
}

TEST(BrushRotate, RecordAndPositionsByHand) {
    auto box = TexturedBrush(BT_BOX, Textured());
    const auto top =
        std::find_if(box->surfaces.begin(), box->surfaces.end(), [](const Surface& s) { return s.normal[0].y > 0.9f; });
    const D3DVECTOR first = top->vertices[0];
    box->assigned_to_cell = true;
    box->Rotate(RIGHT_ANGLE, 0, {}, true); // x goes to z, z to -x
    ExpectNear(top->vertices[0], {-first.z, first.y, first.x}, 1e-4f);
    EXPECT_NEAR(top->texture.rotation, -90, 0.01f);
    EXPECT_FALSE(box->assigned_to_cell);
    box->Rotate(RIGHT_ANGLE, 1, {}, false); // x goes to y, y to -x
    ExpectNear(top->vertices[0], {-first.y, -first.z, first.x}, 1e-4f);
    box->Rotate(RIGHT_ANGLE, 2, {}, false); // y goes to -z, z to y
    ExpectNear(top->vertices[0], {-first.y, first.x, first.z}, 1e-4f);
    const Brush still = *box;
    box->Rotate(1, 3, {5, 5, 5}, true); // no such view
    ExpectNear(top->vertices[0], still.surfaces[static_cast<size_t>(top - box->surfaces.begin())].vertices[0], 1e-4f);
}

TEST(BrushScale, TakesTheOldBoxToTheNewOne) {
    auto block = TexturedBrush(BT_Q_BLOCK, Textured());
    block->ForEachSurface([](Surface& s, int, bool) { s.texture.locked = true; });
    const Box old_box = block->bbox, new_box = MakeBox({0, 0, 0}, {64, 256, 16});
    const double volume = SignedVolume(*block);
    block->assigned_to_cell = true;
    block->Scale(new_box, old_box);
    for (size_t corner = 0; corner < 8; ++corner)
        ExpectNear(block->bbox[corner], new_box[corner], 1e-3f);
    EXPECT_NEAR(SignedVolume(*block), volume * (64 / 128.0) * (256 / 64.0) * (16 / 64.0), 1);
    EXPECT_FALSE(block->assigned_to_cell);
    const Surface& top = block->curved_surfaces[0]; // the lock has no say: the world is mapped
    for (size_t i = 0; i < top.vertices.size(); ++i)
        ExpectNear(top.uv[i], {top.vertices[i].x / 64, -top.vertices[i].z / 128}, 1e-5f);

    Brush box(ShapeOf(BT_BOX, {0, 0, 0}, {64, 64, 64}));
    box.Scale(MakeBox({0, 0, 0}, {128, 64, 64}), MakeBox({0, 0, 0}, {0, 64, 0})); // no extent in x and z
    ExpectFinite(box);
    EXPECT_EQ(box.bbox[1].x - box.bbox[0].x, 64.0f);
}

// A drag scales step by step. What is on the grid at first and after the last step is on it exactly.
TEST(BrushScale, StepsOfTheGridLeaveNoRounding) {
    const struct {
        D3DVECTOR min, max;
        int axis, steps;
        float step;
        bool low; // the side dragged
    } drags[] = {
        {{-240, -64, -64}, {224, 64, 64}, 0, 1, 16, false},   {{-240, -64, -64}, {-320 + 720, 64, 64}, 0, 45, 8, false},
        {{-240, -64, -64}, {224, 64, 64}, 0, 45, 16, false},  {{-17, -64, 8}, {24, 3000, 64}, 1, 60, -16, false},
        {{4096, -64, 8}, {5000, 3000, 64}, 2, 100, -8, true}, {{-1000, -7, 8}, {-993, 3000, 64}, 0, 33, -1, true},
    };
    for (const auto& d : drags) {
        Brush box(ShapeOf(BT_BOX, d.min, d.max));
        Box sides = MakeBox(d.min, d.max);
        D3DVECTOR min = d.min, max = d.max;
        for (int i = 0; i < d.steps; ++i) {
            Component(d.low ? min : max, d.axis) += d.step;
            const Box next = MakeBox(min, max);
            box.Scale(next, sides);
            sides = next;
            for (const Surface& s : box.surfaces)
                for (const D3DVECTOR& v : s.vertices)
                    for (int axis = 0; axis < 3; ++axis)
                        ASSERT_TRUE(Component(v, axis) == Component(min, axis) ||
                                    Component(v, axis) == Component(max, axis))
                            << "step " << i << ": " << Component(v, axis);
        }
    }
    // Inner corners, too: a quarter of the way stays a quarter.
    Brush box(ShapeOf(BT_BOX, {-240, 0, 0}, {160, 64, 64}));
    for (Surface& s : box.surfaces)
        for (D3DVECTOR& v : s.vertices)
            if (v.y == 64 && v.x == 160)
                v.x = -140;
    Box sides = MakeBox({-240, 0, 0}, {160, 64, 64});
    for (float high = 176; high <= 880; high += 16) {
        const Box next = MakeBox({-240, 0, 0}, {high, 64, 64});
        box.Scale(next, sides);
        sides = next;
    }
    for (const Surface& s : box.surfaces)
        for (const D3DVECTOR& v : s.vertices)
            EXPECT_TRUE(v.x == -240 || v.x == (v.y == 64 ? 40 : 880)) << v.x;
}

TEST(BrushTransform, OnlyARemapTouchesUnlockedSurfaces) {
    for (const bool remap : {false, true}) {
        auto box = TexturedBrush(BT_BOX, Textured());
        box->surfaces[0].texture.locked = true;
        box->surfaces[1].texture.index = 0;
        const Brush before = *box;
        box->Transform(crTranslation({32, 32, 32}), remap);
        EXPECT_EQ(box->bbox[7], before.bbox[7] + (D3DVECTOR{32, 32, 32}));
        EXPECT_EQ(box->surfaces[0].uv, before.surfaces[0].uv);
        EXPECT_EQ(box->surfaces[1].uv, before.surfaces[1].uv);
        EXPECT_EQ(box->surfaces[2].uv != before.surfaces[2].uv, remap);
    }
}

TEST(BrushFlipNormals, TurnsInsideOutAndBack) {
    for (const BrushType type : {BT_BOX, BT_Q_BLOCK, BT_SFT_BLOCK, BT_CYLINDER, BT_CONE, BT_PATCH}) {
        auto brush = TexturedBrush(type, Textured());
        const Brush before = *brush;
        brush->FlipNormals();
        EXPECT_NEAR(SignedVolume(*brush), -SignedVolume(before), 1 + 1e-4 * std::fabs(SignedVolume(before)));
        for (size_t i = 0; i < before.surfaces.size(); ++i)
            ExpectNear(brush->surfaces[i].normal[0], -before.surfaces[i].normal[0], 1e-5f);
        if (type == BT_PATCH) { // one net of nine: the first row runs the other way
            EXPECT_EQ(brush->curved_surfaces[0].cp[6], before.curved_surfaces[0].cp[8]);
            EXPECT_EQ(brush->curved_surfaces[0].cp[7], before.curved_surfaces[0].cp[7]);
        }
        brush->FlipNormals();
        for (size_t c = 0; c < before.curved_surfaces.size(); ++c)
            EXPECT_EQ(brush->curved_surfaces[c].vertices, before.curved_surfaces[c].vertices);
        EXPECT_NEAR(SignedVolume(*brush), SignedVolume(before), 1e-3);
    }
}

TEST(BrushAlignVertices, CutsTowardZeroAndRebuildsNothing) {
    auto brush = TexturedBrush(BT_Q_BLOCK, Textured());
    Surface& flat = brush->surfaces[0];
    flat.vertices[0] = {-0.9f, 1.9f, -1.9f};
    flat.vertices[1] = {12345.5f, -0.0f, 7};
    brush->curved_surfaces[0].cp[0] = {0.999f, -33.3f, 2.5f};
    const Box box = brush->bbox;
    brush->AlignVertices();
    EXPECT_EQ(flat.vertices[0], (D3DVECTOR{0, 1, -1}));
    EXPECT_FALSE(std::signbit(flat.vertices[0].x));
    EXPECT_EQ(flat.vertices[1], (D3DVECTOR{12345, 0, 7}));
    EXPECT_EQ(brush->curved_surfaces[0].cp[0], (D3DVECTOR{0, -33, 2}));
    EXPECT_EQ(brush->bbox, box);
}

// A cap's coordinates always are those of its record and its plane, whatever was done last.
TEST(BrushCaps, CoordinatesNeverLag) {
    const auto expect_consistent = [](const Brush& brush, const char* what) {
        for (size_t c = 0; c < 2; ++c) {
            const Surface& s = brush.curved_surfaces[c];
            TEXTURE_SPACE ts;
            Brush::ComputeTextureSpace(s.normal[0], ts, s.texture);
            for (size_t i = 0; i < s.vertices.size(); ++i) {
                const D3DVECTOR& p = s.vertices[i];
                ExpectNear(s.uv[i],
                           {(DotProduct(p, ts.ts_x) + ts.ts_s.x) / 64, (ts.ts_s.y - DotProduct(p, ts.ts_y)) / 128},
                           1e-4f, what);
            }
        }
    };
    auto block = TexturedBrush(BT_Q_BLOCK, Mappings()[3].second);
    expect_consistent(*block, "start");
    block->Move({5, 6, 7}, true);
    expect_consistent(*block, "locked move");
    block->Rotate(1, 1, {}, false);
    expect_consistent(*block, "turn");
    block->Rotate(1, 2, {}, true);
    expect_consistent(*block, "locked turn");
    block->Transform(crTranslation({1, 2, 3}), true);
    expect_consistent(*block, "transform");
    block->FlipNormals();
    expect_consistent(*block, "flip");
    block->Scale(MakeBox({0, 0, 0}, {8, 8, 8}), block->bbox);
    expect_consistent(*block, "scale");
    const Brush copy(*block);
    expect_consistent(copy, "copy");
}

TEST(BrushTransforms, NothingBecomesNotANumber) {
    TEX_INFO no_texture;
    no_texture.index = 1;
    TEX_INFO no_scale = Textured();
    no_scale.scale = {};
    for (const TEX_INFO& info : {no_texture, no_scale})
        for (const D3DVECTOR& max : {D3DVECTOR{64, 64, 64}, {64, 0, 0}, {0, 0, 0}})
            for (const BrushType type : {BT_RECTANGLE, BT_BOX, BT_Q_BLOCK, BT_PATCH}) {
                Brush brush(ShapeOf(type, {0, 0, 0}, max, 1));
                brush.ForEachSurface([&info](Surface& s, int, bool) { s.texture = info; });
                brush.GenerateTextureSpaces();
                for (int view = 0; view < 3; ++view) {
                    brush.Move({1, 2, 3}, true);
                    brush.Rotate(0.3f, view, {}, true);
                    brush.Scale(MakeBox({0, 0, 0}, {8, 8, 8}), brush.bbox);
                    brush.FlipNormals();
                }
                ExpectFinite(brush);
            }
    // A texture that is not loaded keeps its place as any other.
    auto box = TexturedBrush(BT_BOX, no_texture);
    const auto before = Coordinates(*box);
    box->Rotate(RIGHT_ANGLE, 0, {}, true);
    ExpectCoordinates(*box, before, 0.1f, "texels");
    Brush none;
    none.Move({1, 1, 1}, true);
    none.Rotate(1, 0, {}, true);
    none.FlipNormals();
}

} // namespace
