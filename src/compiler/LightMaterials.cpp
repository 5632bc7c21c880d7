#include "compiler/LightMaterials.h"

#include <cmath>

#include "render/Textures.h"
#include "scene/World.h"

namespace {

constexpr uint32_t OPAQUE_ALPHA = 255u << 24;

// The fraction of a coordinate as a texel number below count.
uint32_t Texel(float coordinate, uint32_t count) {
    float fraction = coordinate - std::trunc(coordinate);
    if (fraction < 0)
        fraction += 1.0f;
    const float texel = fraction * static_cast<float>(count) + 0.5f;
    const auto last = static_cast<float>(count - 1);
    return texel >= last ? count - 1 : texel > 0 ? static_cast<uint32_t>(texel) : 0; // not-a-number gives 0
}

void ReadPixels(LightMaterial& material, uint32_t texture) {
    const CRTexture* record = crTRecord(texture);
    if (!record || !crTReadPixels(texture, material.pixels, material.width, material.height) || material.pixels.empty())
        return;
    const uint32_t type = record->type & 0xFF;
    if (type != TEX_ALPHA && type != TEX_ALPHA_NORMAL)
        for (uint32_t& pixel : material.pixels)
            pixel |= OPAQUE_ALPHA;
    material.transparent = true;
}

} // namespace

uint32_t LightMaterial::TranslucentColor(const UVVector& uv) const {
    const uint32_t pixel = pixels[static_cast<size_t>(Texel(uv.v, height)) * width + Texel(uv.u, width)];
    return (pixel & 0x00FFFFFF) | (255 - (pixel >> 24)) << 24;
}

LightMaterials::LightMaterials(const World& world)
    : materials(static_cast<size_t>(std::max(1, world.GetMaterialCount()))) {
    for (int index = 1; index < world.GetMaterialCount(); ++index) {
        LightMaterial& material = materials[static_cast<size_t>(index)];
        material.doublesided = world.IsMaterialDoublesided(index);
        material.light_illumination = world.IsLightIllumination(index);
        material.ambient_intensity = world.GetAmbientIntensity(index);
        const COLOR self = world.GetSelfIllumination(index);
        material.self_illumination = {self.r, self.g, self.b, self.a};
        if (world.IsMaterialTransparent(index))
            ReadPixels(material, world.material[static_cast<size_t>(index)].texture_index);
    }
}
