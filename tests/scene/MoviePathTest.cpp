// Paths of movies: the spline against a second computation in double precision, times, play modes, and alignment.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

#include "foundation/Random.h"
#include "scene/PathScenes.h"
#include "scene/Scenes.h"

namespace {

constexpr float INF = std::numeric_limits<float>::infinity(), NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();

struct Moment {
    D3DVECTOR position{-1, -2, -3};
    float rotation = -4, fov = -5;
};

Moment At(SimpleList<uint32_t>& list, float time) {
    Moment m;
    ComputePathPos(time, list, m.position, m.rotation, m.fov);
    return m;
}
bool IsUntouched(const Moment& m) { return m.position == Moment().position && m.rotation == -4 && m.fov == -5; }

// The second computation: cubics in Bezier form, by repeated division.
using Value = std::array<double, 5>; // position, rotation, field of view
Value ValueOf(const PathPoint& p) { return {p.position.x, p.position.y, p.position.z, p.rotation, p.fov}; }
Value Mix(const Value& a, const Value& b, double wa, double wb) {
    Value v{};
    for (size_t k = 0; k < v.size(); ++k)
        v[k] = wa * a[k] + wb * b[k];
    return v;
}
Value Bezier(std::array<Value, 4> p, double u) {
    for (size_t level = 3; level > 0; --level)
        for (size_t k = 0; k < level; ++k)
            p[k] = Mix(p[k], p[k + 1], 1 - u, u);
    return p[0];
}
double Distance(const PathPoint& a, const PathPoint& b) {
    return std::hypot(double(a.position.x) - b.position.x, double(a.position.y) - b.position.y,
                      double(a.position.z) - b.position.z);
}
Value SecondComputation(const std::vector<PathPoint>& p, double t) {
    const double standard = p[0].speed == 0 ? 100.0 : p[0].speed;
    double leave = 0; // the point before
    for (size_t i = 0; i + 1 < p.size(); ++i) {
        const PathPoint &a = p[i], &b = p[i + 1], &before = p[i == 0 ? 0 : i - 1],
                        &next = p[std::min(i + 2, p.size() - 1)];
        const double start = leave + a.delay, length = Distance(a, b) / (b.speed == 0 ? standard : b.speed);
        leave = start + length;
        if (t > leave && i + 2 < p.size())
            continue;
        const double s = std::clamp((t - start) / length, 0.0, 1.0);
        const double u = std::clamp(s >= 0.5 ? s + (1 - std::pow(4 * s - 3, 2)) * b.ease_to
                                             : s - (1 - std::pow(4 * s - 1, 2)) * a.ease_from,
                                    0.0, 1.0);
        const auto tangent = [](const PathPoint& q, double sign, const Value& in, const Value& out) {
            const double T = q.tension, C = q.continuity * sign, S = q.bias;
            Value v = Mix(in, out, (1 - T) * (1 + C) * (1 + S) / 2, (1 - T) * (1 - C) * (1 - S) / 2);
            v[3] = (in[3] + out[3]) / 2, v[4] = (in[4] + out[4]) / 2;
            return v;
        };
        const Value va = ValueOf(a), vb = ValueOf(b), way = Mix(vb, va, 1, -1);
        const Value ta = tangent(a, 1, Mix(va, ValueOf(before), 1, -1), way);
        const Value tb = tangent(b, -1, way, Mix(ValueOf(next), vb, 1, -1));
        return Bezier({va, Mix(va, ta, 1, 1.0 / 3), Mix(vb, tb, 1, -1.0 / 3), vb}, u);
    }
    return {};
}

class RandomPath {
public:
    explicit RandomPath(uint32_t seed) { random.seedMT(seed); }
    float Within(float low, float high) {
        return low + (high - low) * static_cast<float>(random.randomMT() >> 8) / 16777216.0f;
    }
    void Fill(World& world, Entity& owner, int count, float play_mode) {
        for (int i = 0; i < count; ++i) {
            const float speed = random.randomMT() % 4 == 0 ? 0.0f : Within(20, 200);
            AddPoint(world, owner, false, {Within(-500, 500), Within(-500, 500), Within(-500, 500)},
                     {{"delay", i == 0 || i == count - 1 ? 0.0f : Within(0, 2)},
                      {"speed", speed},
                      {"tension", Within(-1, 1)},
                      {"continuity", Within(-1, 1)},
                      {"bias", Within(-1, 1)},
                      {"ease_to", i == 0 ? play_mode : Within(-0.5f, 0.5f)},
                      {"ease_from", Within(-0.5f, 0.5f)},
                      {"rotation", Within(-180, 180)},
                      {"fov", Within(30, 120)}});
        }
    }
    RandomMT random;
};

class MoviePathTest : public testing::Test {
protected:
    std::vector<PathPoint> Points() { return PathPoints(owner.path); }
    // Along x, from 0 on.
    Entity& Add(float x, PointValues values = {}, bool target = false) {
        return AddPoint(world, owner, target, {x, 0, 0}, values);
    }
    static float Speed(const Entity& point) { return point.FloatParameter("speed"); }

    World world;
    Entity& owner = AddOwner(world);
};

} // namespace

TEST_F(MoviePathTest, TheSplineAgainstBezierCurves) {
    for (uint32_t seed = 1; seed <= 40; ++seed) {
        RandomPath random(seed);
        Entity& object = AddOwner(world);
        random.Fill(world, object, 2 + static_cast<int>(seed % 6), 0);
        const std::vector<PathPoint> points = PathPoints(object.path);
        const float total = object.ComputePathTime(false);
        for (int i = 0; i <= 60; ++i) {
            const float t = total * static_cast<float>(i) / 60.0f;
            const Moment m = At(object.path, t);
            const Value expected = SecondComputation(points, t);
            const float actual[5] = {m.position.x, m.position.y, m.position.z, m.rotation, m.fov};
            for (size_t k = 0; k < 5; ++k)
                ASSERT_NEAR(actual[k], expected[k], 0.05) << "seed " << seed << " time " << t << " value " << k;
        }
    }
}

TEST_F(MoviePathTest, TimesByHand) {
    EXPECT_EQ(owner.ComputePathTime(false), 0);
    Add(0, {{"delay", 7}});
    EXPECT_EQ(owner.ComputePathTime(false), 0) << "the first delay does not count";
    Add(200, {{"delay", 3}});
    EXPECT_FLOAT_EQ(owner.ComputePathTime(false), 5) << "100 units a second, then 3 seconds";
    Add(250, {{"speed", 25}});
    EXPECT_FLOAT_EQ(owner.ComputePathTime(false), 7);
    SetPointParameter(*world.GetEntityFromID(owner.path.Get(0)), "speed", 50);
    EXPECT_FLOAT_EQ(owner.ComputePathTime(false), 9) << "the first speed is the standard";
    EXPECT_EQ(owner.ComputePathTime(true), 0);
}

TEST_F(MoviePathTest, PlayModesByBruteForce) {
    Add(0);
    Add(300);
    Add(500, {{"delay", 1}}); // 6 seconds
    const double total = 6;
    const auto counted = [&](double time, bool back) {
        double t = 0, direction = 1;
        constexpr double STEP = 1.0 / 1024;
        for (double done = 0; done < time; done += STEP) {
            t += direction * STEP;
            if (back && (t >= total || t <= 0))
                direction = t >= total ? -1 : 1;
            else if (t >= total)
                t -= total;
        }
        return t;
    };
    const auto played = [&](float mode, float time) {
        SetPointParameter(*world.GetEntityFromID(owner.path.Get(0)), "ease_to", mode);
        return PlayedTime(time, Points());
    };
    for (const float time : {0.25f, 3.0f, 5.75f, 6.5f, 9.0f, 12.5f, 17.0f, 23.25f, 100.125f}) {
        EXPECT_FLOAT_EQ(played(0, time), std::min(time, 6.0f));
        EXPECT_NEAR(played(1, time), counted(time, false), 0.01) << time;
        EXPECT_NEAR(played(-1, time), counted(time, true), 0.01) << time;
        EXPECT_NEAR(played(1.9f, time), counted(time, false), 0.01) << "cut to a whole number";
        EXPECT_NEAR(played(-0.9f, time), std::min(time, 6.0f), 0.01);
        for (const float other : {2.0f, -2.0f, 1e20f, -1e20f, INF})
            EXPECT_EQ(played(other, time), other == INF ? std::min(time, 6.0f) : time) << other;
    }
    EXPECT_NEAR(played(1, -1), 5, 0.001) << "before the start";
    EXPECT_NEAR(played(-1, -1), 1, 0.001);
}

TEST_F(MoviePathTest, WhatIsThereAtTheEndsAndWhileItWaits) {
    EXPECT_TRUE(IsUntouched(At(owner.path, 0))) << "an empty list";
    Add(0, {{"delay", 2}, {"rotation", 10}, {"fov", 60}});
    EXPECT_TRUE(IsUntouched(At(owner.path, 0))) << "one point";
    Add(100, {{"rotation", 30}, {"fov", 80}, {"delay", 5}});
    struct Case {
        float time, x, rotation;
    };
    for (const Case& c :
         {Case{0, 0, 10}, {1.5f, 0, 10}, {2, 0, 10}, {2.5f, 50, 20}, {3, 100, 30}, {4, 100, 30}, {50, 100, 30}}) {
        const Moment m = At(owner.path, c.time);
        ExpectNear(m.position, {c.x, 0, 0}, 0.001f, std::to_string(c.time));
        EXPECT_NEAR(m.rotation, c.rotation, 0.001f) << c.time;
    }
    EXPECT_TRUE(IsUntouched(At(owner.path, -0.5f)));
    EXPECT_TRUE(IsUntouched(At(owner.path, NOT_A_NUMBER)));
    SetPointParameter(*world.GetEntityFromID(owner.path.Get(0)), "ease_to", 3);
    EXPECT_TRUE(IsUntouched(At(owner.path, 3.5f))) << "no mode: nothing after the end";
    EXPECT_FALSE(IsUntouched(At(owner.path, 2.75f)));
}

TEST_F(MoviePathTest, EasingMovesTheMiddleOfEachHalf) {
    Add(0, {{"ease_from", 0.1f}});
    Add(100, {{"ease_to", 0.05f}});
    // One second; a quarter of it and three are where the whole easing counts.
    const auto place = [&](float time) { return FindPathPlace(time, Points(), PathSegments(Points())).u; };
    EXPECT_NEAR(place(0.25f), 0.15f, 1e-5f);
    EXPECT_NEAR(place(0.75f), 0.80f, 1e-5f);
    EXPECT_NEAR(place(0.5f), 0.5f, 1e-5f);
    EXPECT_NEAR(place(0.125f), 0.125f - 0.75f * 0.1f, 1e-5f);
    EXPECT_NEAR(FindPathPlace(0.25f, Points(), PathSegments(Points()), 0.1f).u, 0.24f, 1e-5f) << "a tenth of it";
    SetPointParameter(*world.GetEntityFromID(owner.path.Get(0)), "ease_from", 9);
    EXPECT_EQ(place(0.25f), 0) << "held in the segment";
}

TEST_F(MoviePathTest, NothingIsEverNotANumber) {
    const float odd[] = {0, -1, -100, 1e-38f, 1e30f, INF, -INF, NOT_A_NUMBER};
    const char* const names[] = {"speed", "delay", "tension", "bias", "ease_to", "ease_from", "rotation", "fov"};
    for (const bool coincident : {false, true})
        for (const float value : odd)
            for (const char* const name : names) {
                Entity& object = AddOwner(world);
                for (int i = 0; i < 3; ++i)
                    AddPoint(world, object, false, {coincident ? 5.0f : static_cast<float>(i) * 100, 0, 0},
                             {{name, value}});
                for (const float mode : {0.0f, 1.0f, -1.0f, 2.0f}) {
                    if (std::string(name) != "ease_to")
                        SetPointParameter(*world.GetEntityFromID(object.path.Get(0)), "ease_to", mode);
                    const float total = object.ComputePathTime(false);
                    EXPECT_TRUE(std::isfinite(total) && total >= 0) << name << value;
                    for (const float time : {-1.0f, 0.0f, 0.5f, 1.0f, 2.0f, 1e6f, 1e38f}) {
                        const Moment m = At(object.path, time);
                        EXPECT_TRUE(std::isfinite(m.position.x) && std::isfinite(m.rotation) && std::isfinite(m.fov))
                            << name << value << " at " << time;
                    }
                }
            }
    Add(5, {{"delay", 2}});
    Add(5);
    EXPECT_EQ(owner.ComputePathTime(false), 0);
    for (const float time : {0.0f, 1.0f, 2.0f, 3.0f})
        EXPECT_EQ(At(owner.path, time).position.x, 5) << "only the delay counts";
}

TEST_F(MoviePathTest, IdsOfNoneLeaveTheList) {
    Add(0);
    const uint32_t gone = Add(50).GetObjectID();
    Add(100);
    owner.path.Add(NO_OBJECT_ID);
    world.DeleteEntityByID(gone);
    EXPECT_EQ(owner.path.GetCount(), 4);
    EXPECT_NEAR(owner.ComputePathTime(false), 1, 0.001);
    EXPECT_EQ(owner.path.GetCount(), 4) << "a question changes nothing";
    EXPECT_NEAR(At(owner.path, 0.5f).position.x, 50, 0.001);
    EXPECT_EQ(owner.path.GetCount(), 2);
}

TEST_F(MoviePathTest, TheTimeOfTheSelection) {
    Brush& brush = *world.AddBrush(BoxBrush());
    brush.GenerateNewObjectID();
    AddPoint(world, brush, false, {0, 0, 0});
    AddPoint(world, brush, false, {400, 0, 0});
    EXPECT_EQ(world.ComputePathTimeForSelection(), 0);
    world.SetBrushSelection(0, true);
    EXPECT_FLOAT_EQ(world.ComputePathTimeForSelection(), 4);
    Add(0);
    const Entity& point = Add(100);
    Add(0, {}, true);
    Add(300, {}, true);
    SelectEntity(world, point);
    EXPECT_FLOAT_EQ(world.ComputePathTimeForSelection(), 3) << "its owner's longer list, in place of the brush's";
    world.entity_selection.ClearList();
    SelectEntity(world, owner);
    EXPECT_FLOAT_EQ(world.ComputePathTimeForSelection(), 3);
    world.entity_selection.ClearList();
    SelectEntity(world, AddOwner(world, "other"));
    EXPECT_EQ(world.ComputePathTimeForSelection(), 0) << "an entity without a path";
}

TEST_F(MoviePathTest, SelectedPathsAndTheirDeletion) {
    const Entity& point = Add(0);
    const uint32_t target = Add(100, {}, true).GetObjectID();
    const uint32_t id = owner.GetObjectID();
    EXPECT_FALSE(world.IsPathSelected(id));
    SelectEntity(world, owner);
    EXPECT_FALSE(world.IsPathSelected(id));
    SelectEntity(world, point);
    EXPECT_TRUE(world.IsPathSelected(id));
    world.entity_selection.ClearList();
    SelectEntity(world, *world.GetEntityFromID(target));
    EXPECT_TRUE(world.IsPathSelected(id));
    EXPECT_FALSE(world.IsPathSelected(target));
    EXPECT_FALSE(world.IsPathSelected(NO_OBJECT_ID));
    const uint32_t light = AddOwner(world, "light").GetObjectID();
    owner.path.Add(light); // an id that another object has taken over
    world.DeletePaths(owner);
    EXPECT_EQ(world.GetEntityCount(), 2);
    EXPECT_TRUE(world.GetEntityFromID(light));
    EXPECT_EQ(owner.path.GetCount() + owner.target_path.GetCount(), 0);
    EXPECT_EQ(world.entity_selection.GetItemCount(), 0);
    EXPECT_TRUE(World::IsMovieModeEntity("CAMERA") && World::IsMovieModeEntity("PATH_POINT_POS") &&
                World::IsMovieModeEntity("PATH_POINT_TGT"));
    EXPECT_FALSE(World::IsMovieModeEntity("POINT_LIGHT"));
}

TEST_F(MoviePathTest, TheListThatIsBehindIsMadeToArriveInTime) {
    Add(0);
    Entity& second = Add(100); // 1 second
    Entity& third = Add(300);  // 2 seconds more
    AddPoint(world, owner, true, {0, 0, 50}, {{"delay", 1}});
    Entity& target_second = AddPoint(world, owner, true, {400, 0, 50}); // arrives after 5 seconds
    Entity& target_third = AddPoint(world, owner, true, {500, 0, 50});  // and after 6
    SelectEntity(world, second);
    world.AlignTimeOfPoints();
    // The path is behind: 0 seconds against 1. It has until 5.
    EXPECT_FLOAT_EQ(Speed(second), 20);
    EXPECT_EQ(Speed(target_second), 0);
    EXPECT_EQ(Speed(third), 0);
    SetPointParameter(second, "speed", 0);
    SelectEntity(world, target_third); // with the second, which changes no time of the pass
    world.AlignTimeOfPoints();
    EXPECT_FLOAT_EQ(Speed(second), 20);
    // The path has passed 1 second by its old speed, the targets 5; they arrive at 6.
    EXPECT_FLOAT_EQ(Speed(third), 40);
}

TEST_F(MoviePathTest, TheTargetsAreBehindAtEqualTimes) {
    Add(0);
    Add(100);
    AddPoint(world, owner, true, {0, 0, 0});
    Entity& target = AddPoint(world, owner, true, {300, 0, 0});
    SelectEntity(world, target);
    world.AlignTimeOfPoints();
    EXPECT_FLOAT_EQ(Speed(target), 300);
}

TEST_F(MoviePathTest, AlignmentWithoutTimeOrListsChangesNothing) {
    Add(0);
    Entity& only = Add(100);
    SelectEntity(world, only);
    world.AlignTimeOfPoints();
    EXPECT_EQ(Speed(only), 0) << "no targets";
    AddPoint(world, owner, true, {0, 0, 0}, {{"delay", 0}});
    AddPoint(world, owner, true, {0, 0, 0}); // there at once
    Entity& third = Add(200, {{"speed", 10}});
    AddPoint(world, owner, true, {0, 0, 0});
    SelectEntity(world, third);
    world.AlignTimeOfPoints();
    for (const uint32_t id : owner.target_path) {
        const float speed = Speed(*world.GetEntityFromID(id));
        EXPECT_TRUE(std::isfinite(speed) && speed >= 0);
    }
    EXPECT_EQ(Speed(third), 10);
    const Entity& stranger = AddOwner(world, "light");
    world.entity_selection.ClearList();
    SelectEntity(world, stranger);
    world.AlignTimeOfPoints();
}
