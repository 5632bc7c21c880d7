// How a hanging cable between two linked cable entities will lie: a chain of points joined by springs, settled under
// gravity. The game simulates the cable itself; this is what the views show of it.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "foundation/Vector.h"

class Entity;
class World;

struct CableProperties {
    static constexpr float NO_ANCHOR = 1e16f;

    float rigidity = 100, elasticity = 30, dampening = 0.5f, gravity = 320;
    float lenght = -1; // world units; 0 or less: per cent of slack, negated
    float size = 10;
    D3DVECTOR begin{NO_ANCHOR, NO_ANCHOR, NO_ANCHOR}, end{NO_ANCHOR, NO_ANCHOR, NO_ANCHOR};
    int min_lod = 3, max_lod = 7;
    int bits = 5; // 2 to this power, and 2, points: 0 to MAX_BITS
    int precision = 2;
    int texture_repeat_count = 1;
    float autokick_strenght = 1, autokick_strenght_dispersion = 0, autokick_repeat = -1, autokick_repeat_dispersion = 0;

    static constexpr int MAX_BITS = 10;
};
// From the parameters of the entity that holds the link; what it lacks keeps its default.
CableProperties CablePropertiesOf(const Entity& begin, const Entity& end);

class CCableComputer {
public:
    explicit CCableComputer(const CableProperties& properties); // settled
    virtual ~CCableComputer() = default;
    CCableComputer(const CCableComputer&) = delete;
    CCableComputer& operator=(const CCableComputer&) = delete;

    void InitComp();                // settles again after a change
    void ComputeMovement(float dt); // seconds
    void Render();                  // defined in drawing/
    // Takes over what has changed at the entities, and settles again if anything did. False when it is another cable:
    // the number of points differs.
    bool Follow(const Entity& begin_entity, const Entity& end_entity);

    int len = 0; // points
    std::vector<D3DVECTOR> positions, speeds;
    float rigidity, elasticity, dampening, gravity, lenght;
    float is_begin = 0, is_end = 0; // 1: that end is fixed
    D3DVECTOR begin, end;
    float size;
    int act_lod = 0;
    float texture_lenght = 0;
    int lod_count = 0;
    bool rend_flag = false, comp_flag = true, init = false;
    int tgt_precision = 0;
    D3DVECTOR vmin, vmax;
    float autokick_strenght, autokick_strenght_dispersion, autokick_repeat, autokick_repeat_dispersion;
    float autokick_time = 0;
    int max_tessel = 0, min_tessel = 0;
    float timeout = 3;
    int texture_repeat_count = 1;
    uint32_t ID_1 = 0xFFFFFFFF, ID_2 = 0xFFFFFFFF; // of the two entities
    bool valid = true;                             // met in the present pass
};
