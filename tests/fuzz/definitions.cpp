// Entity definitions with what they show, and the definition of an actor.
#include <map>

#include "definitions/EntityParser.h"
#include "files/ChunkFile.h"
#include "fuzz/FuzzTarget.h"

namespace {

// What a definition may name: a triangle as "in.msh", and an actor that has it as "in.def".
void WriteShown() {
    for (const char* name : {"Models", "entities_meshes"})
        std::filesystem::create_directories(name);
    WriteBytes("Scripts/in.def", "#General\n{\nModel = in.msh\n}\n");
    UChunkFile file("Models\\in.msh", CFM_Create);
    file.CreateChunk("Head", ANY_CHUNK_ID);
    const int32_t header[4] = {4, 3, 1, 0};
    file.WriteArray(header, sizeof(header));
    file.WriteString("skin");
    file.WriteValues(std::vector<D3DVECTOR>{{0, 0, 0}, {2, 0, 0}, {0, 4, 6}});
    file.WriteValues(std::vector<UVVector>(3));
    file.WriteValues(std::vector<D3DVECTOR>(3, {0, 1, 0}));
    file.WriteValues(std::vector<TRIANGLE>{{{0, 1, 2}}});
    file.CloseChunk();
    Require(file.CloseChunkFile(), "a mesh can be written");
    WriteBytes("entities_meshes/in.msh", ReadBytes("Models/in.msh"));
}

} // namespace

FUZZ_TARGET(definitions, bytes) {
    static FuzzFolder folder;
    static const bool written = (WriteShown(), true);
    Require(written, "what is shown is there");
    folder.NextInput("in.def", bytes);
    EntityParser parser("in.def");
    std::map<std::string, int> first;
    for (int t = 0; t < parser.GetTemplateCount(); ++t) {
        const Entity* entity = parser.GetTemplate(t, t < 16);
        Require(entity != nullptr, "each definition that is counted is there");
        first.try_emplace(entity->name, t);
    }
    for (const auto& [name, t] : first)
        Require(parser.GetTemplateIndex(name) == t, "a name is that of its first definition");
    LoadActor("in.def");
}
