// What light asks of the materials, read once before the threads start: properties, and the pixels of transparent
// textures.
#pragma once

#include <cstdint>
#include <vector>

#include "foundation/Vector.h"

class World;

struct LightMaterial {
    bool transparent = false; // with pixels: a texture that cannot be read makes the material opaque
    bool doublesided = false, light_illumination = false;
    float ambient_intensity = 0;
    D3DCOLORVALUE self_illumination;
    std::vector<uint32_t> pixels; // 0xAARRGGBB in rows, of a transparent material
    uint32_t width = 0, height = 0;

    // The word of a translucent hit: 255 - alpha in the top byte, then red, green, blue. u and v are wrapped to 0..1.
    uint32_t TranslucentColor(const UVVector& uv) const;
};

class LightMaterials {
public:
    explicit LightMaterials(const World& world);
    const LightMaterial& operator[](int index) const {
        return materials[index >= 0 && static_cast<size_t>(index) < materials.size() ? static_cast<size_t>(index) : 0];
    }

private:
    std::vector<LightMaterial> materials; // row 0 has no property
};
