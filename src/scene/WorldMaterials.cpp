// The world's table of materials.
#include "files/FileObject.h"
#include "files/Picture.h"
#include "foundation/Desktop.h"
#include "foundation/Log.h"
#include "foundation/Strings.h"
#include "render/Textures.h"
#include "scene/World.h"

namespace {

constexpr uint8_t MASK_BITS = 8; // an image of this depth is a mask, no material

std::string RowKey(std::string_view first, std::string_view second) { return ToLower(first) + '\\' + ToLower(second); }

std::string TextureFolder(const MaterialRow& row) { return "Textures\\" + row.texture_class; }

bool IsMask(const MaterialRow& row) {
    std::string path = TextureFolder(row) + '\\' + row.texture_name + ".tga";
    if (!FileObject::FileExists(path))
        path.replace(path.size() - 3, 3, "dds");
    TGAInfoStruct info;
    return TGAClass::GetImageInfo(path, info) == PICTURE_OK && info.pixel_size == MASK_BITS;
}

} // namespace

int World::FindMaterialRow(std::string_view mc, std::string_view mn) {
    if (indexed_rows != material.size()) {
        material_rows.clear();
        for (size_t row = 1; row < material.size(); ++row)
            material_rows.emplace(RowKey(material[row].material_class, material[row].material_name),
                                  static_cast<int>(row));
        indexed_rows = material.size();
    }
    const auto found = material_rows.find(RowKey(mc, mn));
    return found == material_rows.end() ? -1 : found->second;
}

int World::AddMaterial(std::string_view mc, std::string_view mn, std::string_view tc, std::string_view tn) {
    MaterialRow row;
    row.material_class = CutText(mc, NAME_FIELD - 1);
    row.material_name = CutText(mn, NAME_FIELD - 1);
    row.texture_class = CutText(tc, NAME_FIELD - 1);
    row.texture_name = CutText(tn, NAME_FIELD - 1);
    const int present = FindMaterialRow(row.material_class, row.material_name);
    if (present != -1)
        return present;
    if (GetMaterialCount() >= MAX_MATERIALS) {
        NoticeOnce(Format("The level cannot use more than %d materials", MAX_MATERIALS - 1));
        return -1;
    }
    const MaterialRow* same_texture = nullptr;
    for (size_t i = 1; i < material.size() && !same_texture; ++i)
        if (EqualNoCase(material[i].texture_name, row.texture_name) &&
            EqualNoCase(material[i].texture_class, row.texture_class))
            same_texture = &material[i];
    if (same_texture)
        row.texture_index = same_texture->texture_index;
    else if (IsMask(row))
        return -1;
    else
        LoadTexture(row);
    row.transparent = material_source->IsTransparent(row.material_class, row.material_name);
    row.doublesided = material_source->IsDoubleSided(row.material_class, row.material_name);
    row.volumetric_fog = material_source->IsVolumetricFog(row.material_class, row.material_name);
    const int index = GetMaterialCount();
    material_rows.emplace(RowKey(row.material_class, row.material_name), index);
    material.push_back(std::move(row));
    indexed_rows = material.size();
    return index;
}

void World::LoadTexture(MaterialRow& row) {
    row.texture_index = crTGet(TextureFolder(row), row.texture_name, TL_MATERIAL);
    if (crTRecord(row.texture_index))
        return;
    AppendToLog(TEXTURE_LOG, Format("Missing texture: %s\\%s\n", row.texture_class.c_str(), row.texture_name.c_str()));
    NoticeOnce(Format("missing texture \"%s\\%s\"", TextureFolder(row).c_str(), row.texture_name.c_str()));
}

int World::GetNewMaterial(const char* mc, std::string_view mn) {
    MaterialNames found;
    if (material_source->FindMaterial(mc, mn, found))
        return AddMaterial(mc ? mc : found.material_class, mn, found.texture_class, found.texture_name);
    const std::string name = Format("%s\\%.*s", mc ? mc : "", static_cast<int>(mn.size()), mn.data());
    AppendToLog(TEXTURE_LOG, "Missing material: " + name + "\n");
    NoticeOnce("missing material \"" + name + "\"");
    return -1;
}

void World::FlushUnusedMaterials() {
    std::vector<bool> used(material.size());
    for (const auto& b : brush)
        b->ForEachSurface([&used](const Surface& s, int, bool) {
            if (s.texture.index >= 0 && static_cast<size_t>(s.texture.index) < used.size())
                used[static_cast<size_t>(s.texture.index)] = true;
        });
    used[0] = true;

    const auto texture_key = [](const MaterialRow& row) { return RowKey(row.texture_class, row.texture_name); };
    std::unordered_map<std::string, int> rows_of_texture;
    for (size_t row = 1; row < material.size(); ++row)
        ++rows_of_texture[texture_key(material[row])];
    const auto of_decal = [this](uint32_t texture) {
        return std::any_of(decal_template.begin(), decal_template.end(),
                           [texture](const auto& decal) { return decal->texture == texture; });
    };
    std::vector<int> new_row(material.size());
    int kept = 0;
    for (size_t row = 0; row < material.size(); ++row) {
        new_row[row] = kept;
        if (used[row]) {
            if (static_cast<size_t>(kept) != row)
                material[static_cast<size_t>(kept)] = std::move(material[row]);
            ++kept;
            continue;
        }
        if (--rows_of_texture[texture_key(material[row])] == 0 && !of_decal(material[row].texture_index))
            crTDestroy(material[row].texture_index);
        material_source->FlushMaterial(kept);
    }
    const int removed = GetMaterialCount() - kept;
    if (removed == 0)
        return;
    material.resize(static_cast<size_t>(kept));
    indexed_rows = 0;
    for (const auto& b : brush)
        ForEachSurfaceOf(*b, [&](Surface& s) {
            int32_t& index = s.texture.index;
            if (index >= static_cast<int>(new_row.size()))
                index -= removed;
            else if (index > 0)
                index = new_row[static_cast<size_t>(index)];
        });
}

namespace {

const MaterialRow NO_ROW;

const MaterialRow& RowAt(const World& world, int index) {
    return index > 0 && index < world.GetMaterialCount() ? world.material[static_cast<size_t>(index)] : NO_ROW;
}

} // namespace

bool World::IsMaterialTransparent(int index) const { return RowAt(*this, index).transparent; }

bool World::IsMaterialDoublesided(int index) const { return RowAt(*this, index).doublesided; }

bool World::IsMaterialVolumetricFog(int index) const { return RowAt(*this, index).volumetric_fog; }

bool World::IsLightIllumination(int index) const {
    const MaterialRow& row = RowAt(*this, index);
    return &row != &NO_ROW && material_source->IsLightIllumination(row.material_class, row.material_name);
}

float World::GetAmbientIntensity(int index) const {
    const MaterialRow& row = RowAt(*this, index);
    return &row != &NO_ROW ? material_source->GetAmbientIntensity(row.material_class, row.material_name) : 0;
}

COLOR World::GetSelfIllumination(int index) const {
    const MaterialRow& row = RowAt(*this, index);
    return &row != &NO_ROW ? material_source->GetSelfIllumination(row.material_class, row.material_name) : COLOR{};
}

SIZE World::TextureSize(int index) const {
    const CRTexture* texture = crTRecord(RowAt(*this, index).texture_index);
    return texture ? SIZE{static_cast<int32_t>(texture->width), static_cast<int32_t>(texture->height)} : SIZE{};
}
