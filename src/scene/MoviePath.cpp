#include "scene/MoviePath.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "scene/Entity.h"

namespace {

float FiniteOr0(float f) { return std::isfinite(f) ? f : 0.0f; }

bool IsFinite(const D3DVECTOR& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

const Entity* PointOf(uint32_t id) {
    BaseObject* const object = id == NO_OBJECT_ID ? nullptr : BaseObject::GetObjectFromID(id);
    return object ? object->GetEntity() : nullptr;
}

// ease_to of the first point, cut to a whole number, as far as it means anything.
bool PlaysBy(PathPlayMode mode, const std::vector<PathPoint>& points) {
    return !points.empty() && std::trunc(points[0].ease_to) == static_cast<float>(mode);
}

// A share of `period`, from 0 to it, however often it has passed.
float Repeated(float time, float period) {
    const float turns = time / period;
    return FiniteOr0((turns - std::floor(turns)) * period);
}

struct Basis {
    float h1, h2, h3, h4; // of the two ends and of their tangents
};

Basis HermiteBasis(float u) {
    const float u2 = u * u, u3 = u2 * u;
    return {2.0f * u3 - 3.0f * u2 + 1.0f, 3.0f * u2 - 2.0f * u3, u3 - 2.0f * u2 + u, u3 - u2};
}

float HermiteValue(float a, float b, float tangent_a, float tangent_b, float u) {
    const Basis h = HermiteBasis(u);
    return h.h1 * a + h.h2 * b + h.h3 * tangent_a + h.h4 * tangent_b;
}

D3DVECTOR OutgoingTangent(const PathPoint& before, const PathPoint& p, const PathPoint& next) {
    const float t = p.tension, c = p.continuity, s = p.bias;
    return (1.0f - t) * (1.0f + c) * (1.0f + s) / 2.0f * (p.position - before.position) +
           (1.0f - t) * (1.0f - c) * (1.0f - s) / 2.0f * (next.position - p.position);
}

D3DVECTOR IncomingTangent(const PathPoint& before, const PathPoint& p, const PathPoint& next) {
    const float t = p.tension, c = p.continuity, s = p.bias;
    return (1.0f - t) * (1.0f - c) * (1.0f + s) / 2.0f * (p.position - before.position) +
           (1.0f - t) * (1.0f + c) * (1.0f - s) / 2.0f * (next.position - p.position);
}

PathSegment MakeSegment(const PathPoint& before, const PathPoint& a, const PathPoint& b, const PathPoint& next) {
    PathSegment segment;
    segment.a = a;
    segment.b = b;
    segment.tangent_a = OutgoingTangent(before, a, b);
    segment.tangent_b = IncomingTangent(a, b, next);
    segment.rotation_tangent_a = (b.rotation - before.rotation) * 0.5f;
    segment.rotation_tangent_b = (next.rotation - a.rotation) * 0.5f;
    segment.fov_tangent_a = (b.fov - before.fov) * 0.5f;
    segment.fov_tangent_b = (next.fov - a.fov) * 0.5f;
    segment.delay = a.delay;
    return segment;
}

float EasedPlace(float time, const PathSegment& segment, float easing) {
    const float duration = segment.end_time - segment.start_time;
    float s = duration > 0 ? FiniteOr0((time - segment.start_time - segment.delay) / duration) : 0.0f;
    s = std::max(s, 0.0f);
    const auto hump = [s](float middle) { return 1.0f - (4.0f * s - middle) * (4.0f * s - middle); };
    const float u =
        s >= 0.5f ? s + hump(3.0f) * (segment.b.ease_to * easing) : s - hump(1.0f) * (segment.a.ease_from * easing);
    return std::clamp(FiniteOr0(u), 0.0f, 1.0f);
}

} // namespace

PathPoint PathPointOf(const Entity& point) {
    const auto value = [&point](const char* name) { return FiniteOr0(point.FloatParameter(name)); };
    PathPoint p;
    p.position = point.position;
    p.delay = std::max(value("delay"), 0.0f);
    p.speed = std::max(value("speed"), 0.0f);
    p.tension = value("tension");
    p.continuity = value("continuity");
    p.bias = value("bias");
    p.ease_to = value("ease_to");
    p.ease_from = value("ease_from");
    p.rotation = value("rotation");
    p.fov = value("fov");
    return p;
}

void SetPointParameter(Entity& point, const char* name, float value) {
    if (EntityParameter* const known = point.GetParameterStr(name)) {
        if (known->type == EPT_FLOAT)
            known->p_float = value;
        return;
    }
    EntityParameter added;
    added.name = name;
    added.type = EPT_FLOAT;
    added.p_float = value;
    point.AddParameter(std::move(added));
}

std::vector<PathPoint> PathPoints(SimpleList<uint32_t>& list) {
    std::vector<PathPoint> points;
    for (int i = list.GetCount() - 1; i >= 0; --i)
        if (!PointOf(list.Get(i)))
            list.Remove(i);
    points.reserve(static_cast<size_t>(list.GetCount()));
    for (const uint32_t id : list)
        points.push_back(PathPointOf(*PointOf(id)));
    return points;
}

float StandardSpeed(const std::vector<PathPoint>& points) {
    const float first = points.empty() ? 0.0f : points[0].speed;
    return first > 0 && std::isfinite(first) ? first : STANDARD_PATH_SPEED;
}

float SegmentTime(const PathPoint& from, const PathPoint& to, float standard_speed) {
    const float speed = to.speed > 0 && std::isfinite(to.speed) ? to.speed : standard_speed;
    return FiniteOr0(Magnitude(to.position - from.position) / speed);
}

float PathTime(const std::vector<PathPoint>& points) {
    const float standard = StandardSpeed(points);
    float time = 0;
    for (size_t i = 1; i < points.size(); ++i)
        time += SegmentTime(points[i - 1], points[i], standard) + points[i].delay;
    return std::min(time, FLT_MAX);
}

float PlayedTime(float time, const std::vector<PathPoint>& points) {
    const float total = PathTime(points);
    if (PlaysBy(PATH_HOLD, points))
        return std::min(time, total);
    const bool loops = PlaysBy(PATH_LOOP, points);
    if (!loops && !PlaysBy(PATH_BACK_AND_FORTH, points))
        return time;
    if (!(total > 0))
        return 0;
    if (loops)
        return Repeated(time, total);
    const float both_ways = Repeated(time, 2.0f * total);
    return both_ways >= total ? 2.0f * total - both_ways : both_ways;
}

std::vector<PathSegment> PathSegments(const std::vector<PathPoint>& points) {
    std::vector<PathSegment> segments;
    if (points.size() < 2)
        return segments;
    segments.reserve(points.size() - 1);
    const float standard = StandardSpeed(points);
    const size_t last = points.size() - 1;
    float start = 0;
    for (size_t i = 0; i < last; ++i) {
        const PathPoint &a = points[i], &b = points[i + 1];
        PathSegment segment = MakeSegment(points[i == 0 ? 0 : i - 1], a, b, points[std::min(i + 2, last)]);
        segment.start_time = start;
        segment.end_time = start + SegmentTime(a, b, standard);
        start = segment.delay + segment.end_time;
        segments.push_back(segment);
    }
    return segments;
}

PathPlace FindPathPlace(float time, const std::vector<PathPoint>& points, const std::vector<PathSegment>& segments,
                        float easing) {
    float t = PlayedTime(time, points);
    // The whole time counts the last point's delay, which no segment does: the path is held at its last point.
    if (!segments.empty() && PlaysBy(PATH_HOLD, points))
        t = std::min(t, segments.back().delay + segments.back().end_time);
    for (size_t i = 0; i < segments.size(); ++i) {
        const PathSegment& segment = segments[i];
        if (segment.start_time <= t && t <= segment.delay + segment.end_time)
            return {static_cast<int>(i), EasedPlace(t, segment, easing)};
    }
    return {};
}

D3DVECTOR HermitePoint(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& tangent_a, const D3DVECTOR& tangent_b,
                       float u) {
    const Basis h = HermiteBasis(u);
    return h.h1 * a + h.h2 * b + h.h3 * tangent_a + h.h4 * tangent_b;
}

void ComputePathPos(float time, SimpleList<uint32_t>& list, D3DVECTOR& position, float& o_rot, float& o_fov) {
    const std::vector<PathPoint> points = PathPoints(list);
    const std::vector<PathSegment> segments = PathSegments(points);
    const PathPlace place = FindPathPlace(time, points, segments);
    if (place.segment == -1)
        return;
    const PathSegment& s = segments[static_cast<size_t>(place.segment)];
    const D3DVECTOR p = HermitePoint(s.a.position, s.b.position, s.tangent_a, s.tangent_b, place.u);
    const float rotation =
        HermiteValue(s.a.rotation, s.b.rotation, s.rotation_tangent_a, s.rotation_tangent_b, place.u);
    const float fov = HermiteValue(s.a.fov, s.b.fov, s.fov_tangent_a, s.fov_tangent_b, place.u);
    if (!IsFinite(p) || !std::isfinite(rotation) || !std::isfinite(fov))
        return;
    position = p;
    o_rot = rotation;
    o_fov = fov;
}

float BaseObject::ComputePathTime(bool target) const {
    SimpleList<uint32_t> list = target ? target_path : path; // a copy: reading one drops ids
    return PathTime(PathPoints(list));
}
