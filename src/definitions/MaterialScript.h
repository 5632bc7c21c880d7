// The files of a material.
#pragma once

#include <string>
#include <string_view>

inline constexpr size_t MATERIAL_NAME_FIELD = 32; // a class, a material or a texture name, with terminator
inline constexpr const char* MATERIAL_FOLDER = "Scripts\\Materials";
inline constexpr const char* TEXTURE_FOLDER = "Textures";

std::string MaterialScriptPath(std::string_view material_class, std::string_view name);
// The ".tga" of a texture, or its ".dds" when that does not exist.
std::string TexturePath(std::string_view texture_class, std::string_view name);
// The script of a new image, the material of the image's class and name. False when it cannot be written.
bool WriteDefaultScript(std::string_view texture_class, std::string_view name);
