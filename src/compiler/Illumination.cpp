#include <algorithm>
#include <cmath>

#include "compiler/Lighting.h"

namespace {

constexpr uint32_t WHITE_TEXEL = 0xFFFFFFFF;

float AtMostOne(float value) { return value > 1.0f ? 1.0f : value; }

void ClampToOne(D3DCOLORVALUE& c) { c.r = AtMostOne(c.r), c.g = AtMostOne(c.g), c.b = AtMostOne(c.b); }

// One colour for the whole surface, whatever falls on it.
void MakeWhiteBlock(Surface& surface) {
    surface.lightmap_block.assign(UNIFORM_SIDE * UNIFORM_SIDE, WHITE_TEXEL);
    surface.lightmap_size = {UNIFORM_SIDE, UNIFORM_SIDE};
    surface.lightmap_info = {0, 0, 0, UNIFORM_SIDE, UNIFORM_SIDE, -1};
    surface.lightmap_uv.assign(surface.vertices.size(), {});
    surface.lightmap = 1;
}

const Entity* LinkedLight(const Brush& brush, const LightMaterial& material) {
    return material.light_illumination ? brush.FindLinkedEntity("POINT_LIGHT") : nullptr;
}

} // namespace

LIGHT::LIGHT(const Entity& entity)
    : position(entity.position), color(entity.ColorParameter("color")), intensity(entity.FloatParameter("intensity")),
      range(entity.FloatParameter("range")), spotlight(entity.BoolParameter("spotlight_enable")),
      dynamic_lightmap(entity.BoolParameter("dynamic_lightmap")) {
    if (!spotlight)
        return;
    spotlight_direction = SpotlightAxis(entity);
    spotlight_angle = std::cos(entity.FloatParameter("spotlight_angle") * PI / 360.0f);
}

float LIGHT::Factor(const D3DVECTOR& p, const D3DVECTOR& n, bool doublesided) const {
    const D3DVECTOR v = position - p;
    const float square = SquareMagnitude(v);
    const float projection = spotlight ? DotProduct(-v, spotlight_direction) : 0.0f;
    if (!(range > 0) || (spotlight ? range * projection : square) > range * range)
        return 0;
    const float dot = DotProduct(n, v);
    if (dot < 0 && !doublesided)
        return 0;
    const float length = std::sqrt(square);
    const float facing = (doublesided ? 1.0f : dot) / length;
    float f;
    if (spotlight) {
        const float c = DotProduct(-(v / length), spotlight_direction);
        if (c < spotlight_angle)
            return 0;
        const float a = projection / range;
        f = (1.0f - (1.0f - c) / (1.0f - spotlight_angle)) * (1.0f - a * a * a) * facing;
    } else {
        f = (1.0f - length / range) * facing;
    }
    return std::isfinite(f) ? f : 0; // not so at the light itself and for a cone without width
}

void FilterLightmap(std::vector<D3DCOLORVALUE>& samples, std::vector<D3DCOLORVALUE>& blur_color, int sx, int sy) {
    blur_color = samples;
    for (int y = 1; y < sy - 1; ++y)
        for (int x = 1; x < sx - 1; ++x) {
            const auto k = static_cast<size_t>(y) * static_cast<size_t>(sx) + static_cast<size_t>(x);
            const D3DCOLORVALUE &left = samples[k - 1], &right = samples[k + 1];
            const D3DCOLORVALUE &up = samples[k - static_cast<size_t>(sx)],
                                &down = samples[k + static_cast<size_t>(sx)];
            blur_color[k] = {(left.r + right.r + up.r + down.r) * 0.25f, (left.g + right.g + up.g + down.g) * 0.25f,
                             (left.b + right.b + up.b + down.b) * 0.25f, samples[k].a};
            ClampToOne(blur_color[k]);
        }
    samples.swap(blur_color);
}

D3DCOLORVALUE Lighting::AmbientTerm(int brush_index, const LightMaterial& material) const {
    D3DCOLORVALUE ambient;
    if (const Entity* light = input.ws.GetAmbientFromCell(brush_index)) {
        const COLOR color = light->ColorParameter("color");
        const float intensity = light->FloatParameter("intensity");
        ambient = {color.r * intensity * material.ambient_intensity, color.g * intensity * material.ambient_intensity,
                   color.b * intensity * material.ambient_intensity, 0};
    }
    ambient.r += material.self_illumination.r;
    ambient.g += material.self_illumination.g;
    ambient.b += material.self_illumination.b;
    ClampToOne(ambient);
    return ambient;
}

bool Lighting::IsBlocked(const LIGHT& light, const D3DVECTOR& p) {
    return input.shadow && input.shadow->RayTraceFast(p, light.position, p - light.position, scratch, hits);
}

// Adds one light to all samples. Each sample still adds its lights in the order of the light list.
void Lighting::AddLight(const LIGHT& light) {
    hits.rt_count = 0;
    for (size_t k = 0; k < lm_color.size(); ++k) {
        const float f = light.Factor(texelpoints[k], texelnormals[k]) * light.intensity;
        if (f == 0 || IsBlocked(light, texelpoints[k]))
            continue;
        float r = light.color.r, g = light.color.g, b = light.color.b;
        if (hits.rt_count != 0)
            CalculateFilteredColor(hits, r, g, b);
        lm_color[k].r += f * r;
        lm_color[k].g += f * g;
        lm_color[k].b += f * b;
    }
}

std::vector<uint32_t> Lighting::TexelsFromSamples(const SIZE& size, bool& uniform) {
    const int ts = Subdivision(), columns = size.cx * ts;
    FilterLightmap(lm_color, blur_color, columns, size.cy * ts);
    const float share = 1.0f / static_cast<float>(ts * ts);
    std::vector<uint32_t> texels;
    texels.reserve(static_cast<size_t>(size.cx) * static_cast<size_t>(size.cy));
    for (int y = 0; y < size.cy; ++y)
        for (int x = 0; x < size.cx; ++x) {
            D3DCOLORVALUE mean;
            for (int j = y * ts; j < (y + 1) * ts; ++j)
                for (int i = x * ts; i < (x + 1) * ts; ++i) {
                    const D3DCOLORVALUE& sample =
                        lm_color[static_cast<size_t>(j) * static_cast<size_t>(columns) + static_cast<size_t>(i)];
                    mean.r += sample.r, mean.g += sample.g, mean.b += sample.b;
                }
            mean = {mean.r * share, mean.g * share, mean.b * share, 0};
            ClampToOne(mean);
            texels.push_back(PackColor(mean));
        }
    uniform = std::all_of(texels.begin(), texels.end(), [&](uint32_t texel) { return texel == texels[0]; });
    if (uniform)
        texels.assign(UNIFORM_SIDE * UNIFORM_SIDE, texels[0]);
    return texels;
}

// Grey, without colour and intensity: those belong to the game, which switches the light.
void Lighting::CalculateDynamicLightmap(Surface& surface, const LIGHT& light, int light_index, int linked_light) {
    for (size_t k = 0; k < lm_color.size(); ++k) {
        float f = 0;
        if (linked_light >= 0) {
            f = linked_light == light_index ? 1.0f : 0.0f;
        } else {
            f = light.Factor(texelpoints[k], texelnormals[k]);
            if (f != 0 && IsBlocked(light, texelpoints[k]))
                f = 0;
        }
        f = AtMostOne(f);
        lm_color[k] = {f, f, f, 0};
    }
    bool uniform;
    std::vector<uint32_t> texels = TexelsFromSamples(surface.lightmap_size, uniform);
    if (uniform && texels[0] == 0)
        return;
    DynamicLightmap& lightmap = surface.dynamic_lightmaps.emplace_back();
    lightmap.block = std::move(texels);
    lightmap.info.light_index = light_index;
    lightmap.info.u_size = uniform ? UNIFORM_SIDE : static_cast<float>(surface.lightmap_size.cx);
    lightmap.info.v_size = uniform ? UNIFORM_SIDE : static_cast<float>(surface.lightmap_size.cy);
}

void Lighting::CalculateNormalIllumination(Brush& brush, int brush_index, Surface& surface, bool white) {
    surface.dynamic_lightmaps.clear();
    if (white || brush.HasProperty(BP_ENVIRONMENT)) {
        MakeWhiteBlock(surface);
        return;
    }
    const LightMaterial& material = input.materials[surface.texture.index];
    const Entity* linked = LinkedLight(brush, material);
    const int linked_index =
        linked ? input.ws.world.GetEntityIndex(linked) : -1; // -1 also for an object of another world
    lm_color.assign(texelpoints.size(), {});
    hits.rt_count = 0;
    for (const int light : brush.light_list)
        if (input.lights[static_cast<size_t>(light)].dynamic_lightmap && !state.Stopped())
            CalculateDynamicLightmap(surface, input.lights[static_cast<size_t>(light)], light, linked_index);

    if (linked_index >= 0) {
        const LIGHT& light = input.lights[static_cast<size_t>(linked_index)];
        D3DCOLORVALUE color;
        if (!light.dynamic_lightmap)
            color = {light.color.r, light.color.g, light.color.b, 0};
        lm_color.assign(texelpoints.size(), color);
    } else {
        lm_color.assign(texelpoints.size(), {});
        for (const int light : brush.light_list)
            if (!input.lights[static_cast<size_t>(light)].dynamic_lightmap && !state.Stopped())
                AddLight(input.lights[static_cast<size_t>(light)]);
        const D3DCOLORVALUE ambient = AmbientTerm(brush_index, material);
        for (D3DCOLORVALUE& sample : lm_color) {
            sample.r += ambient.r, sample.g += ambient.g, sample.b += ambient.b;
            ClampToOne(sample);
        }
    }
    bool uniform;
    surface.lightmap_block = TexelsFromSamples(surface.lightmap_size, uniform);
    if (uniform)
        surface.lightmap_size = {UNIFORM_SIDE, UNIFORM_SIDE};
    surface.lightmap_info = {
        0, 0, 0, static_cast<float>(surface.lightmap_size.cx), static_cast<float>(surface.lightmap_size.cy), -1};
    surface.lightmap = 1;
}

void Lighting::CalculateNormalIlluminationPerVertex(Brush& brush, int brush_index, Surface& surface, bool white) {
    surface.dynamic_lightmaps.clear();
    surface.lightmap = 1;
    surface.extra_diffuse.assign(surface.vertices.size(), WHITE_TEXEL);
    if (white || brush.HasProperty(BP_ENVIRONMENT))
        return;
    const LightMaterial& material = input.materials[surface.texture.index];
    const D3DCOLORVALUE ambient = AmbientTerm(brush_index, material);
    const Entity* linked = nullptr;
    if (material.light_illumination)
        for (int k = 0; k < brush.GetLinkedObjectsCount() && !linked; ++k)
            if (BaseObject* object = BaseObject::GetObjectFromID(brush.GetLinkedObjectID(k)))
                linked = object->GetEntity();
    for (size_t k = 0; k < surface.vertices.size() && !state.Stopped(); ++k) {
        D3DCOLORVALUE color;
        if (linked) {
            const COLOR own = linked->ColorParameter("color");
            const float intensity = linked->FloatParameter("intensity");
            color = {own.r * intensity, own.g * intensity, own.b * intensity, 0};
            ClampToOne(color);
        } else {
            const D3DVECTOR& p = surface.vertices[k];
            const D3DVECTOR n = k < surface.normal.size() ? surface.normal[k] : D3DVECTOR{};
            for (const int index : brush.light_list) {
                const LIGHT& light = input.lights[static_cast<size_t>(index)];
                const float f = light.dynamic_lightmap ? 0 : light.Factor(p, n, material.doublesided) * light.intensity;
                hits.rt_count = 0;
                if (f == 0 || IsBlocked(light, p))
                    continue;
                float r = light.color.r, g = light.color.g, b = light.color.b;
                if (hits.rt_count != 0)
                    CalculateFilteredColor(hits, r, g, b);
                color.r += f * r, color.g += f * g, color.b += f * b;
            }
            color.r += ambient.r, color.g += ambient.g, color.b += ambient.b;
            ClampToOne(color);
            color.a = AtMostOne(2.0f * std::max(color.r, std::max(color.g, color.b)));
        }
        surface.extra_diffuse[k] = PackColor(color);
    }
}
