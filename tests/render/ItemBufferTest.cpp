#include "render/ItemBuffer.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "foundation/Random.h"
#include "render/Matrix.h"

namespace {

constexpr uint32_t NOTHING = 0xFFFFFF;

ItemBuffer MakeBuffer(int side, float zn = 1, float zf = 16384) {
    ItemBuffer buffer(side);
    buffer.Clear(NOTHING);
    buffer.SetView(crIdentity(), zn, zf);
    return buffer;
}

// A rectangle across the view at a distance, its front to the eye.
void DrawRect(ItemBuffer& buffer, float left, float bottom, float right, float top, float z, uint32_t color) {
    const D3DVECTOR a{left, bottom, z}, b{left, top, z}, c{right, top, z}, d{right, bottom, z};
    buffer.DrawTriangle(a, b, c, color, false);
    buffer.DrawTriangle(a, c, d, color, false);
}

int Count(const ItemBuffer& buffer, uint32_t color) {
    return static_cast<int>(std::count(buffer.Pixels().begin(), buffer.Pixels().end(), color));
}

float Between(RandomMT& random, float low, float high) {
    return low + (high - low) * static_cast<float>(random.randomMT() >> 8) / 16777216.0f;
}

// The rule once more, pixel by pixel with edge functions. Only for triangles that are not cut.
class Reference {
public:
    explicit Reference(int picture_side) : side(picture_side) {}

    bool Covers(const D3DVECTOR (&corners)[3], int px, int py) const {
        int64_t x[3], y[3];
        for (int k = 0; k < 3; ++k) {
            const double half = side * 0.5, z = corners[k].z;
            x[k] = std::llround(std::floor((corners[k].x / z * half + half) * 256 + 0.5));
            y[k] = std::llround(std::floor((half - corners[k].y / z * half) * 256 + 0.5));
        }
        const int64_t cx = px * 256 + 128, cy = py * 256 + 128;
        if ((x[1] - x[0]) * (y[2] - y[0]) - (y[1] - y[0]) * (x[2] - x[0]) <= 0)
            return false;
        for (int k = 0; k < 3; ++k) {
            const int n = (k + 1) % 3;
            const int64_t dx = x[n] - x[k], dy = y[n] - y[k];
            const int64_t value = dx * (cy - y[k]) - dy * (cx - x[k]);
            const bool top_or_left = (dy == 0 && dx > 0) || dy < 0; // the front runs with the clock
            if (value < 0 || (value == 0 && !top_or_left))
                return false;
        }
        return true;
    }

private:
    int side;
};

} // namespace

TEST(ItemBuffer, RectanglesCoverTheCentresInside) {
    struct Case {
        const char* name;
        float left, bottom, right, top, z;
        int side, x, y, width, height;
    };
    // A pixel is x / z * side / 2 + side / 2.
    const Case cases[] = {
        {"a quarter of the view", -1, -1, 1, 1, 4, 128, 48, 48, 32, 32},
        {"all of it, and more", -90, -90, 90, 90, 4, 16, 0, 0, 16, 16},
        {"edges on pixel centres: left and top belong", -2.5f, -0.5f, 0.5f, 2.5f, 4, 8, 1, 1, 3, 3},
        {"just right of a centre", -2.49f, -0.5f, 0.5f, 2.5f, 4, 8, 2, 1, 2, 3},
        {"less than a 512th right of it", -2.499f, -0.5f, 0.5f, 2.5f, 4, 8, 1, 1, 3, 3},
        {"between centres", -2.4f, -2, -1.6f, 2, 4, 8, 0, 0, 0, 0},
        {"an odd side", -1, -1, 1, 1, 1, 7, 0, 0, 7, 7},
        {"off to the right", 2, -1, 9, 1, 4, 8, 6, 3, 2, 2},
        {"one pixel", -4, 3, -3, 4, 4, 8, 0, 0, 1, 1},
        {"at the near plane", -1, -1, 1, 1, 1, 8, 0, 0, 8, 8},
        {"at the far plane", -16384, -16384, 16384, 16384, 16384, 8, 0, 0, 8, 8},
        {"before the near plane", -1, -1, 1, 1, 0.99f, 8, 0, 0, 0, 0},
        {"beyond the far plane", -16384, -16384, 16384, 16384, 16390, 8, 0, 0, 0, 0},
        {"behind", -1, -1, 1, 1, -4, 8, 0, 0, 0, 0},
    };
    for (const Case& c : cases) {
        ItemBuffer buffer = MakeBuffer(c.side);
        DrawRect(buffer, c.left, c.bottom, c.right, c.top, c.z, 7);
        EXPECT_EQ(Count(buffer, 7), c.width * c.height) << c.name;
        for (int y = 0; y < c.height; ++y)
            for (int x = 0; x < c.width; ++x)
                EXPECT_EQ(buffer.At(c.x + x, c.y + y), 7u) << c.name << " " << x << " " << y;
    }
}

TEST(ItemBuffer, TheFrontIsWhereTheNormalPoints) {
    const D3DVECTOR a{-1, -1, 2}, b{-1, 1, 2}, c{1, 1, 2}; // normal to the eye
    for (const bool double_sided : {false, true}) {
        ItemBuffer front = MakeBuffer(16), back = MakeBuffer(16);
        front.DrawTriangle(a, b, c, 1, double_sided);
        back.DrawTriangle(a, c, b, 1, double_sided);
        EXPECT_GT(Count(front, 1), 20);
        EXPECT_EQ(Count(back, 1), double_sided ? Count(front, 1) : 0);
        EXPECT_EQ(front.Pixels() == back.Pixels(), double_sided) << "the same pixels from either side";
    }
}

TEST(ItemBuffer, TheNearerWinsAndTheFirstAtEqualDepth) {
    for (const bool near_first : {false, true}) {
        ItemBuffer buffer = MakeBuffer(32);
        for (int k = 0; k < 2; ++k) {
            const bool near_one = (k == 0) == near_first;
            const float z = near_one ? 16000.0f : 16001.0f;
            DrawRect(buffer, -9000, -9000, 9000, 9000, z, near_one ? 1 : 2);
        }
        EXPECT_EQ(Count(buffer, 1), 18 * 18) << "one unit apart, far away";
        EXPECT_EQ(Count(buffer, 2), 0);
    }
    ItemBuffer equal = MakeBuffer(32);
    DrawRect(equal, -1, -1, 1, 1, 2, 1);
    DrawRect(equal, -1, -1, 1, 1, 2, 2);
    EXPECT_EQ(Count(equal, 2), 0);
    EXPECT_EQ(Count(equal, 1), 16 * 16);

    // Two planes z = 4 + x and z = 4 - x meet on the middle line: each is the nearer one on its own half.
    ItemBuffer crossing = MakeBuffer(64);
    for (const float slope : {1.0f, -1.0f}) {
        const D3DVECTOR p[4] = {
            {-2, -9, 4 - 2 * slope}, {-2, 9, 4 - 2 * slope}, {2, 9, 4 + 2 * slope}, {2, -9, 4 + 2 * slope}};
        const uint32_t color = slope > 0 ? 1 : 2;
        crossing.DrawTriangle(p[0], p[1], p[2], color, false);
        crossing.DrawTriangle(p[0], p[2], p[3], color, false);
    }
    for (int y = 0; y < 64; ++y)
        for (int x = 14; x < 50; ++x)
            ASSERT_EQ(crossing.At(x, y), x < 32 ? 1u : 2u) << x << " " << y;
}

TEST(ItemBuffer, AWallThatRunsPastTheEyeIsCut) {
    // The plane x = 1 from z = -5 to 4: right of it 0.25 to 1 of the view, and |y| up to x.
    constexpr int SIDE = 128;
    ItemBuffer buffer = MakeBuffer(SIDE);
    const D3DVECTOR p[4] = {{1, -1, 4}, {1, 1, 4}, {1, 1, -5}, {1, -1, -5}};
    buffer.DrawTriangle(p[0], p[1], p[2], 1, false);
    buffer.DrawTriangle(p[0], p[2], p[3], 1, false);
    for (int y = 0; y < SIDE; ++y)
        for (int x = 0; x < SIDE; ++x) {
            const int dx = 2 * x + 1 - SIDE, dy = std::abs(2 * y + 1 - SIDE); // half pixels from the middle
            ASSERT_EQ(buffer.At(x, y), dx >= SIDE / 4 && dy <= dx ? 1u : NOTHING) << x << " " << y;
        }
}

TEST(ItemBuffer, DamagedCornersDrawNothingAndDistantOnesDoNoHarm) {
    const float broken[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 3e38f};
    for (const float value : broken) {
        ItemBuffer buffer = MakeBuffer(16);
        buffer.SetView({{{1, 0, 0, 0}, {1, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}}, 1, 16384);
        buffer.DrawTriangle({value, value, 4}, {0, 1, 4}, {1, 0, 4}, 1, true);
        EXPECT_EQ(Count(buffer, 1), 0) << value;
    }
    ItemBuffer buffer = MakeBuffer(ItemBuffer::MAX_SIDE + 1);
    EXPECT_EQ(buffer.Side(), ItemBuffer::MAX_SIDE);
    buffer.DrawTriangle({-1e6f, -1e6f, 2}, {-1e6f, 1e6f, 2}, {1e6f, 1e6f, 2}, 1, false);
    const int side = buffer.Side();
    EXPECT_EQ(buffer.At(0, 0), 1u);
    EXPECT_EQ(buffer.At(side - 1, side - 1), NOTHING);
    EXPECT_EQ(Count(buffer, 1), side / 2 * (side - 1))
        << "the half above the diagonal; it is a right edge, so its centres are left out";
}

TEST(ItemBuffer, MeshesHaveNeitherGapsNorDoublePixels) {
    constexpr int SIDE = 48, CELLS = 9;
    const Reference reference(SIDE);
    RandomMT random;
    random.seedMT(11);
    for (int round = 0; round < 10; ++round) {
        // A grid that covers the view, its corners shaken on the screen and in depth; some stay on pixel centres.
        D3DVECTOR grid[CELLS + 1][CELLS + 1];
        for (int j = 0; j <= CELLS; ++j)
            for (int i = 0; i <= CELLS; ++i) {
                const float z = Between(random, 2, 40);
                float x = 60.0f * static_cast<float>(i) / CELLS - 30 + Between(random, -1, 1);
                float y = 60.0f * static_cast<float>(j) / CELLS - 30 + Between(random, -1, 1);
                if (round % 2)
                    x = std::floor(x) + 0.5f, y = std::floor(y) + 0.5f;
                grid[j][i] = {x / 24 * z, y / 24 * z, z};
            }
        std::vector<int> covered(SIDE * SIDE);
        for (int j = 0; j < CELLS; ++j)
            for (int i = 0; i < CELLS; ++i)
                for (int half = 0; half < 2; ++half) {
                    const D3DVECTOR corners[3] = {grid[j][i], half ? grid[j + 1][i + 1] : grid[j + 1][i],
                                                  half ? grid[j][i + 1] : grid[j + 1][i + 1]};
                    ItemBuffer buffer = MakeBuffer(SIDE);
                    buffer.DrawTriangle(corners[0], corners[1], corners[2], 1, false);
                    for (int y = 0; y < SIDE; ++y)
                        for (int x = 0; x < SIDE; ++x) {
                            ASSERT_EQ(buffer.At(x, y) == 1, reference.Covers(corners, x, y)) << x << " " << y;
                            covered[static_cast<size_t>(y * SIDE + x)] += buffer.At(x, y) == 1;
                        }
                }
        EXPECT_EQ(std::count(covered.begin(), covered.end(), 1), SIDE * SIDE) << round;
    }
}

TEST(ItemBuffer, AFloorCutByTheNearPlaneIsCoveredOnce) {
    // The plane y = -1 from behind the eye to far ahead: all pixels below the horizon, each by one triangle.
    constexpr int SIDE = 64, CELLS = 14;
    RandomMT random;
    random.seedMT(3);
    D3DVECTOR grid[CELLS + 1][CELLS + 1];
    for (int j = 0; j <= CELLS; ++j)
        for (int i = 0; i <= CELLS; ++i) {
            const float reach = j == CELLS ? 4000.0f : static_cast<float>(j) - 6;
            const float wide = j == CELLS ? 700.0f : 3.0f;
            grid[j][i] = {(static_cast<float>(i) - 7) * wide + Between(random, -0.4f, 0.4f), -1,
                          reach + Between(random, -0.4f, 0.4f)};
        }
    std::vector<int> covered(SIDE * SIDE);
    for (int j = 0; j < CELLS; ++j)
        for (int i = 0; i < CELLS; ++i)
            for (int half = 0; half < 2; ++half) {
                ItemBuffer buffer = MakeBuffer(SIDE, 0.5f);
                buffer.DrawTriangle(grid[j][i], half ? grid[j + 1][i + 1] : grid[j + 1][i],
                                    half ? grid[j][i + 1] : grid[j + 1][i + 1], 1, false);
                for (size_t k = 0; k < covered.size(); ++k)
                    covered[k] += buffer.Pixels()[k] == 1;
            }
    EXPECT_EQ(std::count(covered.begin(), covered.begin() + SIDE * SIDE / 2, 0), SIDE * SIDE / 2) << "the sky";
    EXPECT_EQ(std::count(covered.begin() + SIDE * SIDE / 2, covered.end(), 1), SIDE * SIDE / 2) << "the floor";
}
