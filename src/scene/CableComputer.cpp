#include "scene/CableComputer.h"

#include <algorithm>
#include <cmath>

#include "scene/Entity.h"

namespace {

constexpr float FARTHEST_ANCHOR = 1e11f; // an end from here on is free
constexpr int MOST_PRECISION = 7, LEAST_LOD = 3;
constexpr float SETTLING_TIME = 3.0f;

int PointCount(int bits) { return (1 << std::clamp(bits, 0, CableProperties::MAX_BITS)) + 2; }

bool IsAnchor(const D3DVECTOR& p) { // false for what is no number
    return std::fabs(p.x) < FARTHEST_ANCHOR && std::fabs(p.y) < FARTHEST_ANCHOR && std::fabs(p.z) < FARTHEST_ANCHOR;
}

float NumberOf(const Entity& e, const char* name, float fallback) {
    const EntityParameter* const p = e.GetParameterStr(name);
    if (p && p->type == EPT_INT)
        return static_cast<float>(p->p_int);
    return p && p->type == EPT_FLOAT && std::isfinite(p->p_float) ? p->p_float : fallback;
}

int WholeOf(const Entity& e, const char* name, int fallback) {
    constexpr float MOST = 1000000.0f; // more than any of them can mean
    return static_cast<int>(std::clamp(NumberOf(e, name, static_cast<float>(fallback)), -MOST, MOST));
}

void PutStraight(CCableComputer& cable) {
    const bool fixed_begin = cable.is_begin != 0, fixed_end = cable.is_end != 0;
    const D3DVECTOR start = fixed_begin ? cable.begin : cable.end;
    const D3DVECTOR whole = fixed_begin && fixed_end ? cable.end - cable.begin : D3DVECTOR{};
    for (int i = 0; i < cable.len; ++i) {
        cable.positions[static_cast<size_t>(i)] =
            start + whole * static_cast<float>(i) / static_cast<float>(cable.len - 1);
        cable.speeds[static_cast<size_t>(i)] = {};
    }
}

// Springs between the points, gravity and friction, for one step of time.
void Step(CCableComputer& cable, float dt) {
    constexpr float STRETCHING = 10, COMPRESSING = 20, PER_CENT = 0.01f;
    const size_t last = cable.positions.size() - 1;
    const float whole =
        cable.lenght > 0 ? cable.lenght : Magnitude(cable.end - cable.begin) * (1 - cable.lenght * PER_CENT);
    const float r = whole / static_cast<float>(last);
    const float ks = cable.rigidity * STRETCHING, kc = cable.elasticity * COMPRESSING;
    const float friction = dt * cable.dampening, fall = dt * cable.gravity;
    const auto accelerate = [&](size_t i, const D3DVECTOR& pull) {
        D3DVECTOR& speed = cable.speeds[i];
        speed += dt * pull - friction * speed;
        speed.y -= fall;
    };
    D3DVECTOR d, d_before;
    float c = 0, c_before = 0, m = 0;
    for (size_t i = 0; i < last; ++i) {
        d = cable.positions[i + 1] - cable.positions[i];
        m = std::min(Magnitude(d), 2 * r);
        if (m > 0) {
            const float s = 1 / r - 1 / m;
            c = (s > 0 ? ks : kc) * s;
            accelerate(i, c * d - c_before * d_before);
        }
        d_before = d;
        c_before = c;
    }
    if (m > 0)
        accelerate(last, -(c * d));
    for (size_t i = 0; i <= last; ++i)
        cable.positions[i] += dt * cable.speeds[i];
    if (cable.is_begin != 0)
        cable.positions[0] = cable.begin;
    if (cable.is_end != 0)
        cable.positions[last] = cable.end;
}

// Springs too stiff for the step of time throw the points out of all bounds.
void MendChain(CCableComputer& cable) {
    if (!std::all_of(cable.positions.begin(), cable.positions.end(), IsAnchor))
        PutStraight(cable);
}

} // namespace

CableProperties CablePropertiesOf(const Entity& begin, const Entity& end) {
    CableProperties p;
    p.rigidity = NumberOf(begin, "rigidity", p.rigidity);
    p.elasticity = NumberOf(begin, "elasticity", p.elasticity);
    p.dampening = NumberOf(begin, "dampening", p.dampening);
    p.gravity = NumberOf(begin, "gravity", p.gravity);
    p.lenght = NumberOf(begin, "length", p.lenght);
    p.size = NumberOf(begin, "size", p.size);
    p.begin = begin.position;
    p.end = end.position;
    p.min_lod = WholeOf(begin, "min_lod", p.min_lod);
    p.max_lod = WholeOf(begin, "max_lod", p.max_lod);
    p.bits = std::clamp(WholeOf(begin, "granularity", p.bits), 0, CableProperties::MAX_BITS);
    p.texture_repeat_count = WholeOf(begin, "texture_repeat_count", p.texture_repeat_count);
    p.autokick_strenght = NumberOf(begin, "noise_strenght", p.autokick_strenght);
    p.autokick_repeat = NumberOf(begin, "noise_period", p.autokick_repeat);
    p.autokick_strenght_dispersion = NumberOf(begin, "noise_randomness", p.autokick_strenght_dispersion);
    p.autokick_repeat_dispersion = NumberOf(begin, "noise_randomness", p.autokick_repeat_dispersion);
    return p;
}

CCableComputer::CCableComputer(const CableProperties& p)
    : len(PointCount(p.bits)), positions(static_cast<size_t>(len)), speeds(static_cast<size_t>(len)),
      rigidity(p.rigidity), elasticity(p.elasticity), dampening(p.dampening), gravity(p.gravity), lenght(p.lenght),
      size(p.size), tgt_precision(std::min(p.precision, MOST_PRECISION)), autokick_strenght(p.autokick_strenght),
      autokick_strenght_dispersion(p.autokick_strenght_dispersion), autokick_repeat(p.autokick_repeat),
      autokick_repeat_dispersion(p.autokick_repeat_dispersion), texture_repeat_count(p.texture_repeat_count) {
    min_tessel = std::max(p.min_lod, LEAST_LOD);
    max_tessel = std::max(p.max_lod, min_tessel);
    lod_count = max_tessel - min_tessel + 1;
    if (IsAnchor(p.begin)) {
        is_begin = 1;
        begin = p.begin;
    }
    if (IsAnchor(p.end)) {
        is_end = 1;
        end = p.end;
    }
    PutStraight(*this);
    InitComp();
}

void CCableComputer::InitComp() {
    constexpr int STEPS = 2000;
    constexpr float STEP = 0.05f, SETTLING_DAMPENING = 1.0f; // seconds
    const float kept = dampening;
    comp_flag = true;
    timeout = SETTLING_TIME;
    dampening = SETTLING_DAMPENING;
    for (int i = 0; i < STEPS; ++i)
        Step(*this, STEP);
    dampening = kept;
    std::fill(speeds.begin(), speeds.end(), D3DVECTOR{});
    MendChain(*this);
}

void CCableComputer::ComputeMovement(float dt) {
    Step(*this, dt);
    MendChain(*this);
}

bool CCableComputer::Follow(const Entity& begin_entity, const Entity& end_entity) {
    constexpr float SAME_PLACE = 0.00001f; // squared
    const CableProperties now = CablePropertiesOf(begin_entity, end_entity);
    if (len != PointCount(now.bits))
        return false;
    bool changed = false;
    const auto follow_place = [&](D3DVECTOR& place, const D3DVECTOR& wanted) {
        if (!IsAnchor(wanted) || !(SquareMagnitude(wanted - place) > SAME_PLACE))
            return;
        place = wanted;
        changed = true;
    };
    const auto follow = [&](float& value, float wanted) {
        changed = changed || value != wanted;
        value = wanted;
    };
    follow_place(begin, now.begin);
    follow_place(end, now.end);
    follow(rigidity, now.rigidity);
    follow(elasticity, now.elasticity);
    follow(gravity, now.gravity);
    follow(lenght, now.lenght);
    if (changed)
        InitComp();
    valid = true;
    return true;
}
