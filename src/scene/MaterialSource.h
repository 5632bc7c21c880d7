// What the scene asks of the library of materials. Names compare without regard to case.
#pragma once

#include <string>
#include <string_view>

#include "foundation/Vector.h"

struct MaterialNames {
    std::string material_class, material_name, texture_class, texture_name;
};

class MaterialSource {
public:
    virtual ~MaterialSource() = default;

    virtual bool MaterialExist(std::string_view, std::string_view) const { return false; }
    virtual bool IsTransparent(std::string_view, std::string_view) const { return false; }
    virtual bool IsDoubleSided(std::string_view, std::string_view) const { return false; }
    virtual bool IsVolumetricFog(std::string_view, std::string_view) const { return false; }
    virtual bool IsLightIllumination(std::string_view, std::string_view) const { return false; }
    virtual float GetAmbientIntensity(std::string_view, std::string_view) const { return 0; }
    virtual COLOR GetSelfIllumination(std::string_view, std::string_view) const { return {}; }
    // The class in the library's spelling and the image of a material; false when it is not known. A null class looks
    // in all classes.
    virtual bool FindMaterial(const char*, std::string_view, MaterialNames&) const { return false; }
    virtual void FlushMaterial(int) const {} // a row of the world's table has gone
};
