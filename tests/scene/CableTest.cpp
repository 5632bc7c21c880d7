// How hanging cables settle.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "foundation/Strings.h"
#include "scene/CableComputer.h"
#include "scene/Entity.h"
#include "scene/Scenes.h"

namespace {

// Stiff against its weight, so that it keeps its length.
CableProperties Rope(const D3DVECTOR& begin, const D3DVECTOR& end, float length) {
    CableProperties p;
    p.rigidity = 300;
    p.elasticity = 100;
    p.gravity = 2;
    p.lenght = length;
    p.begin = begin;
    p.end = end;
    return p;
}

float LengthOf(const CCableComputer& cable) {
    float sum = 0;
    for (size_t i = 0; i + 1 < cable.positions.size(); ++i)
        sum += Magnitude(cable.positions[i + 1] - cable.positions[i]);
    return sum;
}

void ExpectFinite(const CCableComputer& cable, const std::string& what) {
    for (const D3DVECTOR& p : cable.positions)
        ASSERT_TRUE(std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z)) << what;
}

// The sag of a chain of this length between two level points: a catenary.
double CatenarySag(double distance, double length) {
    double least = distance / 100, most = distance * 100;
    for (int i = 0; i < 200; ++i) {
        const double a = (least + most) / 2;
        (2 * a * std::sinh(distance / 2 / a) > length ? least : most) = a;
    }
    return least * (std::cosh(distance / 2 / least) - 1);
}

TEST(Cable, HangsAsACatenaryOfItsLength) {
    const struct { float property, length; } cases[] = {{500, 500}, {-50, 450}, {-10, 330}}; // 300 units apart
    for (const auto& c : cases) {
        const D3DVECTOR begin{-150, 40, 7}, end{150, 40, 7};
        const CCableComputer cable(Rope(begin, end, c.property));
        ASSERT_EQ(cable.len, 34);
        EXPECT_EQ(cable.positions.front(), begin);
        EXPECT_EQ(cable.positions.back(), end);
        EXPECT_NEAR(LengthOf(cable), c.length, c.length * 0.03f);
        size_t lowest = 0;
        for (size_t i = 0; i < 34; ++i) {
            EXPECT_NEAR(cable.positions[i].y, cable.positions[33 - i].y, 0.1f) << i;
            EXPECT_NEAR(cable.positions[i].x, -cable.positions[33 - i].x, 0.1f) << i;
            EXPECT_NEAR(cable.positions[i].z, 7, 1e-3f);
            EXPECT_EQ(cable.speeds[i], D3DVECTOR{});
            if (cable.positions[i].y < cable.positions[lowest].y)
                lowest = i;
        }
        EXPECT_TRUE(lowest == 16 || lowest == 17) << lowest;
        const double sag = CatenarySag(300, static_cast<double>(LengthOf(cable)));
        EXPECT_NEAR(40 - cable.positions[lowest].y, sag, sag * 0.03) << c.length;
        EXPECT_EQ(cable.dampening, 0.5f); // put back
    }
}

TEST(Cable, WithoutAnEndItHangsStraightDown) {
    CCableComputer cable(Rope({0, 100, 0}, {300, 100, 0}, 330));
    cable.is_end = 0;            // let go
    for (int i = 0; i < 12; ++i) // so light a chain swings out slowly
        cable.InitComp();
    // Each segment carries what hangs below it: stretched by 1 + n * gravity / (10 * rigidity).
    float y = 100;
    for (size_t i = 0; i < 34; ++i) {
        ExpectNear(cable.positions[i], {0, y, 0}, 1.5f);
        y -= 10 * (1 + static_cast<float>(33 - i) * 2 / 3000);
    }
}

TEST(Cable, TheFieldsOfConstruction) {
    CableProperties p = Rope({0, 0, 0}, {100, 0, 0}, 0);
    EXPECT_NEAR(LengthOf(CCableComputer(p)), 100, 2);
    p.min_lod = 1;
    p.max_lod = 2;
    p.precision = 9;
    p.bits = 0;
    p.end = {CableProperties::NO_ANCHOR, 0, 0};
    const CCableComputer cable(p);
    EXPECT_EQ(cable.len, 3);
    EXPECT_EQ(cable.min_tessel, 3);
    EXPECT_EQ(cable.max_tessel, 3);
    EXPECT_EQ(cable.lod_count, 1);
    EXPECT_EQ(cable.tgt_precision, 7);
    EXPECT_EQ(cable.is_begin, 1);
    EXPECT_EQ(cable.is_end, 0);
    EXPECT_EQ(cable.end, D3DVECTOR{});
    EXPECT_EQ(cable.timeout, 3);
    EXPECT_TRUE(cable.comp_flag && cable.valid && !cable.init && !cable.rend_flag);
    EXPECT_EQ(cable.ID_1, 0xFFFFFFFFu);
}

TEST(Cable, OneStepByHand) {
    CableProperties p = Rope({0, 0, 0}, {40, 0, 0}, 20);
    p.bits = 0; // three points, segments of 10
    p.rigidity = 100;
    p.elasticity = 30;
    p.gravity = 8;
    p.dampening = 0.5f;
    CCableComputer cable(p);
    cable.positions = {{0, 0, 0}, {5, 0, 0}, {40, 0, 0}};
    cable.speeds = {{}, {0, 4, 0}, {}};
    cable.ComputeMovement(0.5f);
    // First segment, 5 long: 600 * (1/10 - 1/5) = -60, times 5 is a pull of -300. Second, 35, limited to 20:
    // 1000 * (1/10 - 1/20) = 50, times 35 is 1750. The middle: 0.5 * (1750 + 300) = 1025, and 4 - 1 - 4 = -1.
    ExpectNear(cable.speeds[1], {1025, -1, 0}, 0.01f);
    ExpectNear(cable.positions[1], {517.5f, -0.5f, 0}, 0.01f);
    EXPECT_EQ(cable.positions[0], (D3DVECTOR{0, 0, 0}));
    EXPECT_EQ(cable.positions[2], (D3DVECTOR{40, 0, 0}));
    // The loose end: -0.5 * 1750, though the end itself is put back.
    ExpectNear(cable.speeds[2], {-875, -4, 0}, 0.01f);
}

void SetNumber(Entity& e, const char* name, float value, EntityParameterType type = EPT_FLOAT) {
    EntityParameter p;
    p.name = name;
    p.type = type;
    p.p_float = value;
    if (type == EPT_INT)
        p.p_int = static_cast<int32_t>(value);
    e.AddParameter(p);
}

TEST(Cable, PropertiesComeFromTheFirstEntity) {
    Entity a, b;
    a.position = {1, 2, 3};
    b.position = {4, 5, 6};
    SetNumber(b, "rigidity", 7);
    CableProperties p = CablePropertiesOf(a, b);
    EXPECT_EQ(p.rigidity, 100);
    EXPECT_EQ(p.lenght, -1);
    EXPECT_EQ(p.bits, 5);
    EXPECT_EQ(p.begin, a.position);
    EXPECT_EQ(p.end, b.position);
    SetNumber(a, "length", 500);
    SetNumber(a, "gravity", 12, EPT_INT);
    SetNumber(a, "granularity", 3, EPT_INT);
    SetNumber(a, "noise_randomness", 0.25f);
    SetNumber(a, "noise_period", 9);
    p = CablePropertiesOf(a, b);
    EXPECT_EQ(p.lenght, 500);
    EXPECT_EQ(p.gravity, 12);
    EXPECT_EQ(p.bits, 3);
    EXPECT_EQ(p.autokick_strenght_dispersion, 0.25f);
    EXPECT_EQ(p.autokick_repeat_dispersion, 0.25f);
    EXPECT_EQ(p.autokick_repeat, 9);
    for (const auto& [granularity, bits] : {std::pair{-3.0f, 0}, {1000.0f, CableProperties::MAX_BITS}}) {
        SetNumber(a, "granularity", granularity, EPT_INT);
        EXPECT_EQ(CablePropertiesOf(a, b).bits, bits);
    }
}

TEST(Cable, FollowsItsEntities) {
    Entity a, b;
    b.position = {300, 0, 0};
    SetNumber(a, "rigidity", 300);
    SetNumber(a, "gravity", 2);
    SetNumber(a, "dampening", 0.5f);
    CCableComputer cable(CablePropertiesOf(a, b));
    const std::vector<D3DVECTOR> settled = cable.positions;
    const auto disturb = [&] {
        cable.valid = false;
        cable.positions[5].y = 1000;
    };
    disturb();
    SetNumber(a, "dampening", 0.9f);
    SetNumber(a, "size", 99);
    EXPECT_TRUE(cable.Follow(a, b));
    EXPECT_TRUE(cable.valid);
    EXPECT_EQ(cable.positions[5].y, 1000); // did not settle
    EXPECT_EQ(cable.dampening, 0.5f);
    const struct {
        const char* name;
        float value;
    } changes[] = {{"rigidity", 250}, {"gravity", 3}, {"elasticity", 20}, {"length", 400}};
    for (const auto& change : changes) {
        disturb();
        SetNumber(a, change.name, change.value);
        EXPECT_TRUE(cable.Follow(a, b));
        EXPECT_LT(cable.positions[5].y, 100) << change.name;
    }
    disturb();
    b.position.x = 301;
    EXPECT_TRUE(cable.Follow(a, b));
    EXPECT_EQ(cable.positions.back(), b.position);
    EXPECT_LT(cable.positions[5].y, 100);
    SetNumber(a, "granularity", 4, EPT_INT);
    cable.valid = false;
    EXPECT_FALSE(cable.Follow(a, b));
    EXPECT_FALSE(cable.valid);
}

TEST(Cable, NoNumberThrowsItOutOfAllBounds) {
    const float nan = std::nanf(""), inf = std::numeric_limits<float>::infinity();
    for (const float length : {-1.0f, 0.0f, -200.0f, 5.0f, 1e-30f, 1e30f, -1e30f, nan})
        ExpectFinite(CCableComputer(Rope({1, 2, 3}, {1, 2, 3}, length)), Format("equal ends, %g", double(length)));
    for (float CableProperties::*field : {&CableProperties::rigidity, &CableProperties::elasticity,
                                          &CableProperties::gravity, &CableProperties::lenght})
        for (const float value : {0.0f, -50.0f, 1e30f, -1e30f, 1e-30f, nan, inf, -inf}) {
            CableProperties p;
            p.begin = {0, 0, 0};
            p.end = {50, 20, 0};
            p.*field = value;
            const CCableComputer cable(p);
            ExpectFinite(cable, Format("%g", double(value)));
            EXPECT_EQ(cable.positions.front(), p.begin);
            EXPECT_EQ(cable.positions.back(), p.end);
        }
    for (const float x : {nan, inf, 1e12f}) {
        ExpectFinite(CCableComputer(Rope({x, 0, 0}, {1, 0, 0}, -1)), "no begin");
        ExpectFinite(CCableComputer(Rope({x, 0, 0}, {0, x, 0}, 10)), "no end at all");
    }
    for (const int bits : {-5, 99})
        EXPECT_EQ(CCableComputer([&] {
                      CableProperties p = Rope({0, 0, 0}, {1, 0, 0}, 2);
                      p.bits = bits;
                      p.gravity = 0;
                      return p;
                  }())
                      .len,
                  bits < 0 ? 3 : 1026);
    Entity a, b;
    b.position = {10, 0, 0};
    CCableComputer cable(CablePropertiesOf(a, b));
    a.position.x = nan;
    SetNumber(a, "rigidity", nan);
    EXPECT_TRUE(cable.Follow(a, b));
    ExpectFinite(cable, "moved to nowhere");
}

} // namespace
