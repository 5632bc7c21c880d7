#include "definitions/MaterialLibrary.h"

#include <algorithm>

#include "definitions/MaterialCache.h"
#include "definitions/MaterialScript.h"
#include "files/FileFind.h"
#include "files/FileObject.h"
#include "files/Picture.h"
#include "foundation/Desktop.h"
#include "foundation/Paths.h"
#include "foundation/Strings.h"

namespace {

constexpr size_t MOST_USED_MATERIALS = 2048;
constexpr size_t ENDING_LENGTH = 4; // of ".mtl", ".tga" and ".dds"
constexpr int CUBE_FACES = 6;       // of the picture of an environment map

// Names sorted without regard to case, each once, those that fit their field, at most `limit`. What is left out is
// told.
std::vector<std::string> FittingNames(std::vector<std::string> names, size_t limit, const std::string& folder,
                                      const char* what) {
    std::erase_if(names, [&](const std::string& name) {
        const bool too_long = name.size() >= MATERIAL_NAME_FIELD;
        if (too_long)
            NoticeOnce(Format("%s\\%s is left out: a name has at most %zu characters", folder.c_str(), name.c_str(),
                              MATERIAL_NAME_FIELD - 1));
        return too_long;
    });
    std::stable_sort(names.begin(), names.end(), [](const auto& a, const auto& b) { return CompareNoCase(a, b) < 0; });
    names.erase(std::unique(names.begin(), names.end(), [](const auto& a, const auto& b) { return EqualNoCase(a, b); }),
                names.end());
    if (names.size() > limit) {
        NoticeOnce(Format("%s holds more than %zu %s; the others are left out", folder.c_str(), limit, what));
        names.resize(limit);
    }
    return names;
}

std::vector<std::string> List(const std::string& folder, const char* pattern, FFOSearchType type, bool search_flib) {
    std::vector<std::string> names;
    FileFindObject search(folder, pattern, type, search_flib);
    while (const FFOInfo* found = search.FindNext())
        names.push_back(found->name);
    return names;
}

std::string ClassFolder(const char* root, std::string_view name) { return std::string(root).append("\\").append(name); }

// Whether a picture can be a material: no mask of 8 bits and no environment map.
bool CanBeMaterial(const TGAInfoStruct& info) { return info.pixel_size != 8 && info.height != info.width * CUBE_FACES; }

// Whether the image of a material says that it has alpha bits.
bool HasAlpha(const MaterialProperties& properties) {
    TGAInfoStruct info;
    return !properties.texture_name.empty() &&
           TGAClass::GetImageInfo(TexturePath(properties.texture_class, properties.texture_name), info) == PICTURE_OK &&
           info.alpha_bits != 0;
}

void MirrorTextureFolders() {
    for (const std::string& folder : List(TEXTURE_FOLDER, "*", FFO_DirectoryFind, true))
        if (!MakeFolders(ClassFolder(MATERIAL_FOLDER, folder)))
            NoticeOnce(Format("the folders of %s cannot be made in %s", TEXTURE_FOLDER, MATERIAL_FOLDER));
}

// The first element that is not below the name; end if it is another.
template <class Vector>
auto FindByName(const Vector& sorted, std::string_view name) {
    const auto found =
        std::lower_bound(sorted.begin(), sorted.end(), name,
                         [](const auto& element, std::string_view n) { return CompareNoCase(element.name, n) < 0; });
    return found != sorted.end() && EqualNoCase(found->name, name) ? found : sorted.end();
}

} // namespace

void MaterialLibrary::ParseTextures() {
    classes.clear();
    used_materials.clear();
    MirrorTextureFolders();
    const auto names = FittingNames(List(MATERIAL_FOLDER, "*", FFO_DirectoryFind, true), MAX_MATERIAL_CLASSES,
                                    MATERIAL_FOLDER, "classes");
    MaterialCache cache(MATERIAL_CACHE_FILE);
    for (const std::string& name : names) {
        WriteMissingScripts(name);
        classes.push_back({name, {}});
        ReadClass(classes.back(), cache);
    }
    cache.Save(MATERIAL_CACHE_FILE);
}

void MaterialLibrary::RefreshClass(std::string_view material_class) {
    const auto found = FindByName(classes, material_class);
    if (found == classes.end())
        return;
    const auto class_index = static_cast<int>(found - classes.begin());
    MaterialClass& refreshed = classes[static_cast<size_t>(class_index)];
    const std::vector<Material> before = std::move(refreshed.materials);
    WriteMissingScripts(refreshed.name);
    MaterialCache cache(MATERIAL_CACHE_FILE);
    ReadClass(refreshed, cache);
    cache.Save(MATERIAL_CACHE_FILE);

    // The used list follows the materials to their new places.
    std::erase_if(used_materials, [&](std::pair<int, int>& used) {
        if (used.first != class_index)
            return false;
        const auto place = FindByName(refreshed.materials, before[static_cast<size_t>(used.second)].name);
        if (place == refreshed.materials.end())
            return true;
        used.second = static_cast<int>(place - refreshed.materials.begin());
        refreshed.materials[static_cast<size_t>(used.second)].used = true;
        return false;
    });
}

void MaterialLibrary::Reset() {
    for (const auto& [c, m] : used_materials)
        classes[static_cast<size_t>(c)].materials[static_cast<size_t>(m)].used = false;
    used_materials.clear();
}

void MaterialLibrary::WriteMissingScripts(std::string_view material_class) {
    const std::string folder = ClassFolder(TEXTURE_FOLDER, material_class);
    for (const char* pattern : {"*.tga", "*.dds"})
        for (const std::string& file : List(folder, pattern, FFO_FileFind, false)) {
            const std::string name = file.substr(0, file.size() - ENDING_LENGTH);
            if (FileObject::FileExists(MaterialScriptPath(material_class, name)))
                continue;
            TGAInfoStruct info;
            if (TGAClass::GetImageInfo(folder + "\\" + file, info) != PICTURE_OK)
                NoticeOnce(folder + "\\" + file + " cannot be read as a picture");
            else if (CanBeMaterial(info) && !WriteDefaultScript(material_class, name))
                NoticeOnce(Format("%s cannot be written; new pictures get no material", MATERIAL_FOLDER));
        }
}

void MaterialLibrary::ReadClass(MaterialClass& material_class, MaterialCache& cache) {
    const std::string folder = ClassFolder(MATERIAL_FOLDER, material_class.name);
    std::vector<std::string> names = List(folder, "*.mtl", FFO_FileFind, false);
    for (std::string& name : names)
        name.resize(name.size() - ENDING_LENGTH);
    material_class.materials.clear();
    for (std::string& name : FittingNames(std::move(names), MAX_MATERIALS_IN_CLASS, folder, "materials")) {
        Material material;
        if (!cache.GetFileData(material_class.name, name, material.properties)) {
            ParseMaterialScript(material_class.name, name, material.properties);
            material.properties.transparent = HasAlpha(material.properties);
            cache.AddFileData(material_class.name, name, material.properties);
        }
        material.name = std::move(name);
        material_class.materials.push_back(std::move(material));
    }
}

const MaterialLibrary::Material* MaterialLibrary::Find(std::string_view material_class, std::string_view name) const {
    const auto c = FindByName(classes, material_class);
    if (c == classes.end())
        return nullptr;
    const auto m = FindByName(c->materials, name);
    return m == c->materials.end() ? nullptr : &*m;
}

bool MaterialLibrary::MaterialExist(std::string_view material_class, std::string_view name) const {
    return Find(material_class, name) != nullptr;
}

bool MaterialLibrary::IsTransparent(std::string_view material_class, std::string_view name) const {
    const Material* material = Find(material_class, name);
    return material && material->properties.transparent;
}

bool MaterialLibrary::IsDoubleSided(std::string_view material_class, std::string_view name) const {
    const Material* material = Find(material_class, name);
    return material && material->properties.double_sided;
}

bool MaterialLibrary::IsVolumetricFog(std::string_view material_class, std::string_view name) const {
    const Material* material = Find(material_class, name);
    return material && material->properties.volumetric_fog;
}

bool MaterialLibrary::IsLightIllumination(std::string_view material_class, std::string_view name) const {
    const Material* material = Find(material_class, name);
    return material && material->properties.light_illumination;
}

float MaterialLibrary::GetAmbientIntensity(std::string_view material_class, std::string_view name) const {
    const Material* material = Find(material_class, name);
    return material ? material->properties.ambient_intensity : 0.0f;
}

COLOR MaterialLibrary::GetSelfIllumination(std::string_view material_class, std::string_view name) const {
    const Material* material = Find(material_class, name);
    return material ? material->properties.self_illumination : COLOR{};
}

bool MaterialLibrary::FindMaterial(const char* material_class, std::string_view name, MaterialNames& found) const {
    for (const MaterialClass& c : classes) {
        if (material_class && !EqualNoCase(c.name, material_class))
            continue;
        const auto m = FindByName(c.materials, name);
        if (m == c.materials.end())
            continue;
        found = {c.name, m->name, m->properties.texture_class, m->properties.texture_name};
        return true;
    }
    return false;
}

void MaterialLibrary::AddMaterialToUseList(std::string_view material_class, std::string_view name) {
    const auto c = FindByName(classes, material_class);
    if (c == classes.end())
        return;
    const auto m = FindByName(c->materials, name);
    if (m == c->materials.end() || m->used || used_materials.size() >= MOST_USED_MATERIALS)
        return;
    const std::pair<int, int> place(c - classes.begin(), m - c->materials.begin());
    classes[static_cast<size_t>(place.first)].materials[static_cast<size_t>(place.second)].used = true;
    used_materials.push_back(place);
}
