// Where a decal is and what it looks like: all of a decal that is saved. Its meshes are cut from this.
#pragma once

#include <cstdint>

#include "foundation/Vector.h"

class DecalTemplate {
public:
    virtual ~DecalTemplate() = default;

    uint32_t texture = 0xFFFFFFFF; // handle; -1 when the image could not be loaded
    COLOR color;
    float x_size = 0, y_size = 0; // full width and height, world units
    D3DVECTOR o_position, o_normal;
    float o_rotation = 0; // degrees about the normal
    uint32_t id = 0;
};
