// The library of all materials on disk: scripts "Scripts\Materials\class\name.mtl", their images and their properties,
// with a cache file that spares parsing.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "scene/MaterialSource.h"

inline constexpr int MAX_MATERIAL_CLASSES = 256;
inline constexpr int MAX_MATERIALS_IN_CLASS = 512;
inline constexpr const char* MATERIAL_CACHE_FILE = "Marrowstead\\Cache\\Materials.cache";

// What a script says; transparent is told by its image instead. A key that is absent leaves its default.
struct MaterialProperties {
    std::string texture_class, texture_name; // of DIFFUSE_MAP, or of the section it points to
    bool transparent = false, light_illumination = false, volumetric_fog = false, double_sided = false;
    float ambient_intensity = 0;
    COLOR self_illumination;
};

// Reads "Scripts\Materials\class\name.mtl"; false when it cannot be opened.
bool ParseMaterialScript(std::string_view material_class, std::string_view name, MaterialProperties& properties);

class MaterialLibrary : public MaterialSource {
public:
    struct Material {
        std::string name;
        MaterialProperties properties;
        bool used = false;
    };
    struct MaterialClass {
        std::string name;
        std::vector<Material> materials; // sorted without regard to case
    };

    // The full scan: mirrors the texture folders, writes scripts for new images, reads all scripts or their cache.
    void ParseTextures();
    void RefreshClass(std::string_view material_class); // the scan of one class
    void Reset();                                       // of what is used, for a new project

    bool MaterialExist(std::string_view material_class, std::string_view name) const override;
    bool IsTransparent(std::string_view material_class, std::string_view name) const override;
    bool IsDoubleSided(std::string_view material_class, std::string_view name) const override;
    bool IsVolumetricFog(std::string_view material_class, std::string_view name) const override;
    bool IsLightIllumination(std::string_view material_class, std::string_view name) const override;
    float GetAmbientIntensity(std::string_view material_class, std::string_view name) const override;
    COLOR GetSelfIllumination(std::string_view material_class, std::string_view name) const override;
    bool FindMaterial(const char* material_class, std::string_view name, MaterialNames& found) const override;
    void AddMaterialToUseList(std::string_view material_class, std::string_view name);

    const std::vector<MaterialClass>& Classes() const { return classes; }

private:
    const Material* Find(std::string_view material_class, std::string_view name) const;
    void WriteMissingScripts(std::string_view material_class);
    void ReadClass(MaterialClass& material_class, class MaterialCache& cache);

    std::vector<MaterialClass> classes;              // sorted without regard to case
    std::vector<std::pair<int, int>> used_materials; // class and material, at most 2048
};
