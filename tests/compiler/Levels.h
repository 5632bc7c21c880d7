// Small levels for the tests of the compile, made by hand or from the generator.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "compiler/Lighting.h"
#include "foundation/Random.h"
#include "render/Textures.h"
#include "scene/World.h"

// Materials by name, with the properties that a test gives them.
class TestMaterials : public MaterialSource {
public:
    struct Properties {
        bool transparent = false, doublesided = false, light_illumination = false, fog = false;
        float ambient_intensity = 1;
        COLOR self_illumination;
    };
    std::map<std::string, Properties, std::less<>> by_name;

    bool IsTransparent(std::string_view, std::string_view name) const override { return Of(name).transparent; }
    bool IsDoubleSided(std::string_view, std::string_view name) const override { return Of(name).doublesided; }
    bool IsVolumetricFog(std::string_view, std::string_view name) const override { return Of(name).fog; }
    bool IsLightIllumination(std::string_view, std::string_view name) const override {
        return Of(name).light_illumination;
    }
    float GetAmbientIntensity(std::string_view, std::string_view name) const override {
        return Of(name).ambient_intensity;
    }
    COLOR GetSelfIllumination(std::string_view, std::string_view name) const override {
        return Of(name).self_illumination;
    }

private:
    Properties Of(std::string_view name) const {
        const auto found = by_name.find(name);
        return found == by_name.end() ? Properties() : found->second;
    }
};

inline int AddMaterialRow(World& world, const std::string& name, uint32_t texture = CR_NO_TEXTURE) {
    MaterialRow row;
    row.material_class = "test";
    row.material_name = name;
    row.texture_class = "test";
    row.texture_name = name;
    row.texture_index = texture;
    row.transparent = world.Materials().IsTransparent("test", name);
    row.doublesided = world.Materials().IsDoubleSided("test", name);
    row.volumetric_fog = world.Materials().IsVolumetricFog("test", name);
    world.material.push_back(row);
    return world.GetMaterialCount() - 1;
}

inline Brush& AddShape(World& world, BrushType type, const D3DVECTOR& min, const D3DVECTOR& max, int material = 1,
                       uint32_t segments = 4) {
    BrushShape shape;
    shape.type = type;
    shape.bb = MakeBox(min, max);
    shape.pivot = (min + max) * 0.5f;
    shape.segment_count = segments;
    shape.curve_detail = world.curve_detail;
    Brush* brush = world.AddBrush(std::make_unique<Brush>(shape));
    brush->GenerateNewObjectID();
    brush->ForEachSurface([&](Surface& surface, int, bool) { surface.texture.index = material; });
    return *brush;
}

inline EntityParameter MakeParameter(const char* name, EntityParameterType type) {
    EntityParameter parameter;
    parameter.name = name;
    parameter.type = type;
    return parameter;
}
inline void SetFloat(Entity& entity, const char* name, float value) {
    EntityParameter parameter = MakeParameter(name, EPT_FLOAT);
    parameter.p_float = value;
    entity.AddParameter(parameter);
}
inline void SetBool(Entity& entity, const char* name, bool value) {
    EntityParameter parameter = MakeParameter(name, EPT_BOOL);
    parameter.p_bool = value;
    entity.AddParameter(parameter);
}
inline void SetColor(Entity& entity, float r, float g, float b) {
    EntityParameter parameter = MakeParameter("color", EPT_COLOR);
    parameter.p_color = {0, r, g, b, 1};
    entity.AddParameter(parameter);
}

inline Entity& AddEntityOf(World& world, const char* type_word, const D3DVECTOR& position) {
    auto entity = std::make_unique<Entity>();
    entity->name = "test";
    entity->str_type = type_word;
    entity->position = position;
    entity->GenerateNewObjectID();
    return *world.AddEntity(std::move(entity));
}

inline Entity& AddLight(World& world, const D3DVECTOR& position, float range, float intensity = 1) {
    Entity& light = AddEntityOf(world, "POINT_LIGHT", position);
    SetFloat(light, "range", range);
    SetFloat(light, "intensity", intensity);
    SetColor(light, 1, 1, 1);
    return light;
}

// A 4 by 4 texture with alpha, one word for all texels unless `second` differs: then the columns alternate.
inline uint32_t MakeGlass(uint32_t argb, uint32_t second) {
    const uint32_t handle = crTCreate(4, 4, 32, TL_MATERIAL, TEX_ALPHA_NORMAL, 0, false);
    std::vector<uint32_t> pixels;
    for (int k = 0; k < 16; ++k)
        pixels.push_back(k % 2 ? second : argb);
    crTFillTexture(handle, pixels.data(), 0, 0);
    return handle;
}

class Dice {
public:
    explicit Dice(uint32_t seed) { generator.seedMT(seed); }
    int Below(int n) { return static_cast<int>(generator.randomMT() % static_cast<uint32_t>(n)); }
    float Between(float low, float high) {
        return low + (high - low) * static_cast<float>(generator.randomMT() >> 8) / 16777216.0f;
    }
    D3DVECTOR Point(float reach) {
        const float x = Between(-reach, reach), y = Between(-reach, reach), z = Between(-reach, reach);
        return {x, y, z};
    }

private:
    RandomMT generator;
};

// A subdivision with its tree and one cell, as it stands before lighting.
struct Prepared {
    Prepared(World& world, const CompileOptions& compile_options = {}) : options(compile_options), ws(world, options) {
        ws.tree.BuildOctalTree(world, {});
        ws.PrepareBrushes();
        ws.CreateWorldCell();
        ws.GroupBrushes();
    }
    CompileOptions options;
    WorldSubdivide ws;
};
