// Display meshes of entities.
#include <algorithm>
#include <array>

#include "definitions/DefFile.h"
#include "definitions/EntityParser.h"
#include "files/ChunkFile.h"
#include "foundation/Desktop.h"
#include "foundation/Strings.h"
#include "render/Textures.h"

namespace {

constexpr const char* SYSTEM_CHUNK = "system";
constexpr int32_t MOST_VERTICES = 65536; // a triangle's indices have 16 bits
constexpr int32_t MOST_TRIANGLES = 0x7FFFFFFF / static_cast<int32_t>(sizeof(TRIANGLE));
constexpr uint32_t MESH_TEXTURE_LEVEL = 0;

using SurfaceHeader = std::array<int32_t, 4>; // flags, vertices, triangles, unused

// Calls read for each chunk that may hold a surface; false as soon as it returns false.
template <class Read>
bool ForEachSurfaceChunk(UChunkFile& file, Read&& read) {
    for (bool open = file.OpenChunk(nullptr, ANY_CHUNK_ID, COT_Any); open; open = file.OpenNextChunk())
        if (std::string_view(file.GetChunkName()) != SYSTEM_CHUNK && !read())
            return false;
    return true;
}

// Vertices, texture coordinates, normals, triangles.
bool ReadGeometry(UChunkFile& file, const SurfaceHeader& header, MeshSurface& surface) {
    const int32_t vertices = header[1], triangles = header[2];
    if (vertices < 0 || vertices > MOST_VERTICES || triangles < 0 || triangles > MOST_TRIANGLES)
        return false;
    const auto n = static_cast<size_t>(vertices);
    if (!file.GetNextValues(surface.vertices, n) || !file.GetNextValues(surface.uv, n) ||
        !file.GetNextValues(surface.normals, n) ||
        !file.GetNextValues(surface.tri_indices, static_cast<size_t>(triangles)))
        return false;
    std::erase_if(surface.tri_indices, [n](const TRIANGLE& t) {
        return std::any_of(t.i.begin(), t.i.end(), [n](uint16_t index) { return index >= n; });
    });
    return true;
}

uint32_t MeshTexture(const UChunkFile& file, std::string_view path, const std::string& name) {
    const uint32_t texture = name.empty() ? CR_NO_TEXTURE : crTGet(path, name, MESH_TEXTURE_LEVEL);
    if (texture == CR_NO_TEXTURE && !name.empty())
        NoticeOnce(Format("%s: the texture %s of a surface cannot be read", file.GetFilename().c_str(), name.c_str()));
    return texture;
}

bool OpenMeshFile(const UChunkFile& file) {
    if (!file.IsValid())
        NoticeOnce(file.GetError());
    return file.IsValid();
}

void NoticeDamaged(const UChunkFile& file) {
    NoticeOnce(file.GetFilename() + " is damaged: the arrays of a surface do not have the lengths that it tells");
}

// The "diffuse_map" of a material script.
std::string DiffuseMap(const std::string& material_file) {
    DefFileObject material(material_file);
    std::string name;
    if (material.OpenSection("Basic Material Properties"))
        while (material.OpenNextCommand())
            if (EqualNoCase(material.GetCommandName(), "diffuse_map") && material.GetString(0, name))
                break;
    return name;
}

// What an actor definition says about its mesh.
struct ActorModel {
    std::string model_path, chunk_file;
    struct Skin {
        const char* name; // of the command, and of the chunk that it is for
        std::string material_file;
    };
    Skin skins[3] = {{"Head", {}}, {"Body", {}}, {"Legs", {}}};
};

ActorModel ReadActorModel(DefFileObject& definition) {
    ActorModel model;
    if (definition.OpenSection("General"))
        while (definition.OpenNextCommand()) {
            std::string value;
            definition.GetString(0, value);
            if (EqualNoCase(definition.GetCommandName(), "ModelPath")) {
                model.model_path = value;
                if (!value.ends_with('\\'))
                    model.model_path += '\\';
            } else if (EqualNoCase(definition.GetCommandName(), "Model"))
                model.chunk_file = "Models\\" + model.model_path + value;
        }
    if (definition.OpenSection("Skin"))
        while (definition.OpenNextCommand())
            for (ActorModel::Skin& skin : model.skins)
                if (EqualNoCase(definition.GetCommandName(), skin.name))
                    definition.GetString(0, skin.material_file);
    return model;
}

// Moves all vertices so that the centre of their box lies at the origin.
void CenterMesh(Mesh& mesh) {
    constexpr float FAR = 1e10f;
    D3DVECTOR min{FAR, FAR, FAR}, max{-FAR, -FAR, -FAR};
    for (const MeshSurface& surface : mesh.surfaces)
        for (const D3DVECTOR& v : surface.vertices) {
            min = {std::min(min.x, v.x), std::min(min.y, v.y), std::min(min.z, v.z)};
            max = {std::max(max.x, v.x), std::max(max.y, v.y), std::max(max.z, v.z)};
        }
    const D3DVECTOR center = (min + max) * 0.5f;
    for (MeshSurface& surface : mesh.surfaces)
        for (D3DVECTOR& v : surface.vertices)
            v -= center;
}

} // namespace

std::unique_ptr<Mesh> LoadMesh(std::string_view filename) {
    UChunkFile file(filename, CFM_Open);
    if (!OpenMeshFile(file))
        return nullptr;
    auto mesh = std::make_unique<Mesh>();
    const bool complete = ForEachSurfaceChunk(file, [&] {
        SurfaceHeader header{};
        std::string material;
        MeshSurface& surface = mesh->surfaces.emplace_back();
        if (!file.GetNextValue(header) || !file.GetNextString(material) || !ReadGeometry(file, header, surface))
            return false;
        surface.texture = MeshTexture(file, "entities_textures\\", material);
        return true;
    });
    if (complete)
        return mesh;
    NoticeDamaged(file);
    return nullptr;
}

std::unique_ptr<Mesh> LoadActor(std::string_view filename) {
    DefFileObject definition(filename);
    if (!definition.IsValid()) {
        NoticeOnce(std::string(filename) + " cannot be read as an actor definition");
        return nullptr;
    }
    const ActorModel model = ReadActorModel(definition);
    if (model.chunk_file.empty()) {
        NoticeOnce(std::string(filename) + " names no model");
        return nullptr;
    }
    UChunkFile file(model.chunk_file, CFM_Open);
    if (!OpenMeshFile(file))
        return nullptr;
    const std::string mesh_directory = DirectoryPart(model.chunk_file) + "\\";
    auto mesh = std::make_unique<Mesh>();
    const bool complete = ForEachSurfaceChunk(file, [&] {
        constexpr int32_t IS_SURFACE = 1 << 2;
        SurfaceHeader header{};
        std::string material;
        if (!file.GetNextValue(header))
            return false;
        if ((header[0] & IS_SURFACE) == 0)
            return true;
        MeshSurface& surface = mesh->surfaces.emplace_back();
        if (!file.GetNextString(material) || !ReadGeometry(file, header, surface))
            return false;
        std::string material_file = mesh_directory + model.model_path + material + ".mtl";
        for (const ActorModel::Skin& skin : model.skins)
            if (EqualNoCase(file.GetChunkName(), skin.name))
                material_file = skin.material_file;
        surface.texture = MeshTexture(file, "Textures\\", DiffuseMap(material_file));
        return true;
    });
    if (!complete) {
        NoticeDamaged(file);
        return nullptr;
    }
    CenterMesh(*mesh);
    return mesh;
}
