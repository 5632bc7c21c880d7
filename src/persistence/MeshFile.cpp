#include "persistence/MeshFile.h"

#include "files/ChunkFile.h"
#include "foundation/Strings.h"

namespace {

constexpr const char* PART_CHUNK = "mesh";
constexpr size_t NAME_FIELD_LENGTH = 260; // with terminator

} // namespace

bool WriteMesh(std::string_view full_name, const std::vector<CustomMeshPart>& parts, std::string& error) {
    UChunkFile file(full_name, CFM_Create);
    bool written = file.IsValid();
    for (size_t p = 0; p < parts.size() && written; ++p) {
        const CustomMeshPart& part = parts[p];
        const int32_t info[4] = {0, static_cast<int32_t>(part.vertices.size()),
                                 static_cast<int32_t>(part.triangles.size()), 0};
        std::vector<char> name(NAME_FIELD_LENGTH);
        part.material.copy(name.data(), NAME_FIELD_LENGTH - 1);
        file.CreateChunk(PART_CHUNK, static_cast<uint32_t>(p));
        file.WriteArray(info, sizeof info);
        file.WriteValues(name);
        file.WriteValues(part.vertices);
        file.WriteValues(part.uv);
        file.WriteValues(part.normals);
        file.WriteValues(part.triangles);
        written = file.CloseChunk();
    }
    if (written && file.CloseChunkFile())
        return true;
    error = file.GetError().empty() ? Format("cannot write \"%s\"", std::string(full_name).c_str()) : file.GetError();
    file.HardCloseFile();
    return false;
}
