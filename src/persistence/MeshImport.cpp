#include "foundation/Strings.h"
#include "persistence/MeshFile.h"

#ifdef MARROWSTEAD_MESH_IMPORT

#include <cmath>

#include <assimp/Importer.hpp>
#include <assimp/material.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include "foundation/Paths.h"

namespace {

constexpr size_t MOST_VERTICES = 65536; // of a part: indices have 16 bits
constexpr size_t LONGEST_NAME = 259;

bool IsFinite(const aiVector3D& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

// The material's name; empty for faces that name none.
std::string MaterialName(const aiScene& scene, const aiMesh& mesh) {
    aiString name;
    if (mesh.mMaterialIndex >= scene.mNumMaterials ||
        scene.mMaterials[mesh.mMaterialIndex]->Get(AI_MATKEY_NAME, name) != AI_SUCCESS ||
        std::string_view(name.C_Str()) == AI_DEFAULT_MATERIAL_NAME)
        return {};
    return CutText(name.C_Str(), LONGEST_NAME);
}

// Builds parts of one mesh, a new one where the vertices would be too many.
class PartBuilder {
public:
    PartBuilder(const aiMesh& source, std::string material_name, std::vector<CustomMeshPart>& built)
        : mesh(source), material(std::move(material_name)), parts(built) {
        Begin();
    }
    // False for a corner that is not there or not a number.
    bool Add(const aiFace& face) {
        for (unsigned k = 0; k < 3; ++k)
            if (face.mIndices[k] >= mesh.mNumVertices || !IsUsable(face.mIndices[k]))
                return false;
        if (parts.back().vertices.size() + 3 > MOST_VERTICES)
            Begin();
        TRIANGLE t;
        for (unsigned k = 0; k < 3; ++k) // the other hand turns them
            t.i[2 - k] = Place(face.mIndices[k]);
        parts.back().triangles.push_back(t);
        return true;
    }

private:
    void Begin() {
        parts.emplace_back().material = material;
        places.assign(mesh.mNumVertices, NOT_PLACED);
    }
    bool IsUsable(unsigned i) const {
        return IsFinite(mesh.mVertices[i]) && (!mesh.HasTextureCoords(0) || IsFinite(mesh.mTextureCoords[0][i]));
    }
    uint16_t Place(unsigned i) {
        CustomMeshPart& part = parts.back();
        if (places[i] == NOT_PLACED) {
            places[i] = static_cast<int>(part.vertices.size());
            const aiVector3D& v = mesh.mVertices[i];
            part.vertices.push_back({v.x, v.y, -v.z});
            const bool has_normal = mesh.HasNormals() && IsFinite(mesh.mNormals[i]);
            const aiVector3D n = has_normal ? mesh.mNormals[i] : aiVector3D(0, 1, 0);
            part.normals.push_back({n.x, n.y, -n.z});
            // Pictures start at their top row here, at their bottom row there.
            part.uv.push_back(mesh.HasTextureCoords(0)
                                  ? UVVector{mesh.mTextureCoords[0][i].x, 1 - mesh.mTextureCoords[0][i].y}
                                  : UVVector{});
        }
        return static_cast<uint16_t>(places[i]);
    }

    static constexpr int NOT_PLACED = -1;
    const aiMesh& mesh;
    const std::string material;
    std::vector<CustomMeshPart>& parts;
    std::vector<int> places; // of the vertices in the last part
};

// A reason, empty if all is well.
std::string ConvertMesh(const aiScene& scene, const aiMesh& mesh, std::vector<CustomMeshPart>& parts) {
    PartBuilder builder(mesh, MaterialName(scene, mesh), parts);
    for (unsigned f = 0; f < mesh.mNumFaces; ++f)
        if (mesh.mFaces[f].mNumIndices == 3 && !builder.Add(mesh.mFaces[f]))
            return "a face has a corner that is not there or not a number";
    if (parts.back().triangles.empty())
        parts.pop_back();
    return {};
}

} // namespace

bool CanImportMeshes() { return true; }

bool ReadForeignMesh(std::string_view full_name, std::vector<CustomMeshPart>& parts, std::string& error) {
    parts.clear();
    Assimp::Importer importer;
    const aiScene* const scene =
        importer.ReadFile(RealPath(full_name).string(), aiProcess_Triangulate | aiProcess_JoinIdenticalVertices |
                                                            aiProcess_GenSmoothNormals | aiProcess_SortByPType);
    std::string reason = scene ? "" : importer.GetErrorString();
    if (scene)
        for (unsigned m = 0; m < scene->mNumMeshes && reason.empty(); ++m)
            reason = ConvertMesh(*scene, *scene->mMeshes[m], parts);
    if (reason.empty() && parts.empty())
        reason = "it holds no triangles";
    if (reason.empty())
        return true;
    parts.clear();
    error = Format("cannot read mesh \"%s\": %s", std::string(full_name).c_str(), reason.c_str());
    for (char& c : error) // one sentence, whatever the reader says
        if (c == '\n' || c == '\r')
            c = ' ';
    return false;
}

#else

bool CanImportMeshes() { return false; }

bool ReadForeignMesh(std::string_view full_name, std::vector<CustomMeshPart>& parts, std::string& error) {
    parts.clear();
    error = Format("cannot read mesh \"%s\": this program was built without a reader of foreign meshes",
                   std::string(full_name).c_str());
    return false;
}

#endif
