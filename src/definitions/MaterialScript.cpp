#include "definitions/MaterialScript.h"

#include <algorithm>

#include "definitions/DefFile.h"
#include "definitions/MaterialLibrary.h"
#include "files/AtomicFile.h"
#include "files/FileObject.h"
#include "foundation/Strings.h"

namespace {

constexpr const char* BASIC_SECTION = "Basic Material Properties";

// A DIFFUSE_MAP that stands in another section: the one behind the named one.
struct MovedImage {
    const char* keyword;
    const char* section;
    struct Command {
        const char* name;
        int param;
    };
    Command commands[3];
};
constexpr MovedImage MOVED_IMAGES[] = {
    {"PROCEDURAL_SHADER", "Procedural Shader", {{"SelectTexture", 0}, {"AnimTexture", 1}, {"RndTexture", 1}}},
    {"LAYERED_TERRAIN", "Layered Terrain", {{"Texture", 0}, {"", 0}, {"", 0}}},
};

// "class\name" of the first command of those, empty if there is none.
std::string FindMovedImage(DefFileObject& script, const MovedImage& moved) {
    std::string image;
    if (!script.OpenSection(moved.section) || !script.OpenNextSection())
        return image;
    while (script.OpenNextCommand())
        for (const MovedImage::Command& command : moved.commands)
            if (*command.name && EqualNoCase(script.GetCommandName(), command.name)) {
                script.GetString(command.param, image);
                return image;
            }
    return image;
}

uint32_t ToByte(float value) { return static_cast<uint32_t>(std::clamp(value, 0.0f, 255.0f)); }

void ReadProperty(const DefFileObject& script, MaterialProperties& properties, std::string& image) {
    const std::string_view key = script.GetCommandName();
    if (key == "AMBIENT_INTENSITY")
        script.GetFloat(0, properties.ambient_intensity);
    else if (key == "SELF_ILLUMINATION") {
        float channel[3] = {};
        for (int c = 0; c < 3; ++c)
            script.GetFloat(c, channel[c]);
        properties.self_illumination = MakeColor(ToByte(channel[0]), ToByte(channel[1]), ToByte(channel[2]), 0);
    } else if (key == "LIGHT_ILLUMINATION")
        script.GetBool(0, properties.light_illumination);
    else if (key == "VOLUMETRIC_FOG")
        script.GetBool(0, properties.volumetric_fog);
    else if (key == "DOUBLE_SIDED")
        script.GetBool(0, properties.double_sided);
    else if (key == "DIFFUSE_MAP")
        script.GetString(0, image);
}

} // namespace

std::string MaterialScriptPath(std::string_view material_class, std::string_view name) {
    return std::string(MATERIAL_FOLDER).append("\\").append(material_class).append("\\").append(name).append(".mtl");
}

std::string TexturePath(std::string_view texture_class, std::string_view name) {
    const std::string path = std::string(TEXTURE_FOLDER).append("\\").append(texture_class).append("\\").append(name);
    return path + (FileObject::FileExists(path + ".tga") ? ".tga" : ".dds");
}

bool ParseMaterialScript(std::string_view material_class, std::string_view name, MaterialProperties& properties) {
    DefFileObject script(MaterialScriptPath(material_class, name));
    properties = {};
    if (!script.WasFound())
        return false;
    std::string image;
    if (script.OpenSection(BASIC_SECTION))
        while (script.OpenNextCommand())
            ReadProperty(script, properties, image);
    for (const MovedImage& moved : MOVED_IMAGES)
        if (image == moved.keyword) {
            image = FindMovedImage(script, moved);
            break;
        }
    const size_t slash = image.find('\\');
    const bool has_class = slash != std::string::npos;
    properties.texture_class = CutText(has_class ? image.substr(0, slash) : "", MATERIAL_NAME_FIELD - 1);
    properties.texture_name = CutText(has_class ? image.substr(slash + 1) : image, MATERIAL_NAME_FIELD - 1);
    return true;
}

bool WriteDefaultScript(std::string_view texture_class, std::string_view name) {
    const std::string image = std::string(texture_class).append("\\").append(name);
    const std::string body[] = {
        "AMBIENT_INTENSITY = 1.0;",           "SELF_ILLUMINATION = 0, 0, 0;",
        "LIGHT_ILLUMINATION = FALSE;",        "DIFFUSE_MAP = " + image + ";",
        "BUMP_MAP = common\\default_bump;",   "BUMP_SCALE = 1.0;",
        "SPECULAR_INTENSITY = 0.0;",          "SPECULAR_POWER = 1.0;",
        "GLOSS_MAP = common\\default_gloss;", "REFLECTION_MAP = common\\default_reflection;",
        "REFLECTION_INTENSITY = 0.0;",        "LIGHT_REFLECTION = FALSE;",
    };
    std::string text = std::string("#") + BASIC_SECTION + "\r\n{\r\n";
    for (const std::string& line : body)
        text += "\t" + line + "\r\n";
    text += "}\r\n\r\n";
    AtomicFile file(MaterialScriptPath(texture_class, name));
    return file.IsOpen() && file.Write(text.data(), text.size()) && file.Commit();
}
