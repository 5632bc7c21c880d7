#include <gtest/gtest.h>

#include "definitions/EntityParser.h"
#include "files/ChunkFile.h"
#include "foundation/Desktop.h"
#include "foundation/TempFolder.h"
#include "render/TestPictures.h"
#include "render/Textures.h"

namespace {

class EntityMeshTest : public testing::Test {
protected:
    EntityMeshTest() {
        ForgetNotices();
        SetDesktop(&desktop);
    }
    ~EntityMeshTest() override {
        SetDesktop(nullptr);
        crTDestroyAll(0xFFFFFFFF);
        crTDestroy(crTExist("entities_textures\\", "wood"));
        crTDestroy(crTExist("Textures\\", "skins\\face"));
    }

    // A triangle that hangs over a corner at `start`.
    static void WriteSurface(UChunkFile& file, const char* chunk, int32_t flags, const char* material, D3DVECTOR start,
                             uint16_t last_index = 2) {
        file.CreateChunk(chunk, ANY_CHUNK_ID);
        const int32_t header[4] = {flags, 3, 2, 0};
        file.WriteArray(header, sizeof(header));
        file.WriteString(material);
        file.WriteValues(std::vector<D3DVECTOR>{start, start + D3DVECTOR{2, 0, 0}, start + D3DVECTOR{0, 4, 6}});
        file.WriteValues(std::vector<UVVector>{{0, 0}, {1, 0}, {0, 1}});
        file.WriteValues(std::vector<D3DVECTOR>(3, {0, 1, 0}));
        file.WriteValues(std::vector<TRIANGLE>{{{0, 1, 2}}, {{2, 1, last_index}}});
        file.CloseChunk();
    }
    static void WriteMesh(const std::string& path, uint16_t last_index = 2) {
        UChunkFile file(path, CFM_Create);
        file.CreateChunk("system", ANY_CHUNK_ID);
        file.WriteValue(int32_t{1});
        file.CloseChunk();
        WriteSurface(file, "Body", 0, "wood", {10, 0, 0}, last_index);
        WriteSurface(file, "plain", 4, "", {20, 0, 0});
        ASSERT_TRUE(file.CloseChunkFile());
    }

    TempFolder folder;
    CurrentFolder current{folder.Path()};
    HeadlessDesktop desktop;
};

} // namespace

TEST_F(EntityMeshTest, MeshFile) {
    std::filesystem::create_directories("entities_meshes");
    WriteBytes("entities_textures/wood.tga", TargaBytes(2, 2, 24));
    WriteMesh("entities_meshes\\table.msh", 3);
    const auto mesh = LoadMesh("entities_meshes\\table.msh");
    ASSERT_TRUE(mesh);
    ASSERT_EQ(mesh->surfaces.size(), 2u);
    const MeshSurface& surface = mesh->surfaces[0];
    EXPECT_EQ(surface.vertices[2], (D3DVECTOR{10, 4, 6}));
    EXPECT_EQ(surface.uv[1], (UVVector{1, 0}));
    EXPECT_EQ(surface.normals.size(), 3u);
    EXPECT_EQ(surface.tri_indices, (std::vector<TRIANGLE>{{{0, 1, 2}}})); // the triangle with a vertex 3 is gone
    EXPECT_EQ(surface.texture, crTExist("entities_textures\\", "wood"));
    EXPECT_NE(surface.texture, CR_NO_TEXTURE);
    EXPECT_EQ(mesh->surfaces[1].texture, CR_NO_TEXTURE);
    EXPECT_EQ(mesh->surfaces[1].tri_indices.size(), 2u);
    EXPECT_TRUE(desktop.notices.empty());
    EXPECT_FALSE(LoadMesh("entities_meshes\\none.msh"));
    EXPECT_EQ(desktop.notices.size(), 1u);
}

TEST_F(EntityMeshTest, ActorDefinition) {
    std::filesystem::create_directories("Models/men");
    WriteBytes("Textures/skins/face.tga", TargaBytes(2, 2, 24));
    WriteBytes("Scripts/man.mtl", "#Basic Material Properties\n{\nDiffuse_Map = skins\\face;\n}\n");
    WriteBytes("Scripts/Actors/man.def",
               "#General\n{\nModelPath = men;\nModel = man.msh;\n}\n#Skin\n{\nBody = Scripts\\man.mtl;\n}\n");
    {
        UChunkFile file("Models\\men\\man.msh", CFM_Create);
        WriteSurface(file, "BODY", 4, "other", {10, 0, 0});
        WriteSurface(file, "Bone", 3, "other", {-1000, 0, 0}); // not a surface
        WriteSurface(file, "Legs", 4 | 1, "other", {20, 2, -2});
        ASSERT_TRUE(file.CloseChunkFile());
    }
    const auto mesh = LoadActor("Scripts\\Actors\\man.def");
    ASSERT_TRUE(mesh);
    ASSERT_EQ(mesh->surfaces.size(), 2u);
    // The box is 10..22, 0..6, -2..6.
    EXPECT_EQ(mesh->surfaces[0].vertices[0], (D3DVECTOR{-6, -3, -2}));
    EXPECT_EQ(mesh->surfaces[1].vertices[1], (D3DVECTOR{6, -1, -4}));
    EXPECT_NE(mesh->surfaces[0].texture, CR_NO_TEXTURE);
    EXPECT_EQ(mesh->surfaces[0].texture, crTExist("Textures\\", "skins\\face"));
    EXPECT_EQ(mesh->surfaces[1].texture, CR_NO_TEXTURE); // the skin names no file for it

    EXPECT_FALSE(LoadActor("Scripts\\Actors\\nobody.def"));
    WriteBytes("Scripts/Actors/empty.def", "#General\nModel = nothing.msh\n");
    EXPECT_FALSE(LoadActor("Scripts\\Actors\\empty.def"));
}

TEST_F(EntityMeshTest, TemplatesLoadTheirMeshOnceOnDemand) {
    std::filesystem::create_directories("entities_meshes");
    WriteMesh("entities_meshes\\m.msh");
    const std::string head = "#Type <T> #TraceType <X> #EntityLocation <X> #EditorImage { MODEL(MESH) MESH(";
    WriteBytes("e.def",
               "#A " + head + "m.msh) } #Parameters {}\n#B " + head + "none.msh) ACTOR(none.def) } #Parameters {}");
    EntityParser parser("e.def");
    ASSERT_EQ(parser.GetTemplateCount(), 2);
    EXPECT_FALSE(parser.GetTemplate("A", false)->mesh);
    ASSERT_TRUE(parser.GetTemplate("A", true)->mesh);
    const Mesh* mesh = parser.GetTemplate("A", true)->mesh.get();
    EXPECT_EQ(parser.GetTemplate(0, true)->mesh.get(), mesh);
    EXPECT_FALSE(parser.GetTemplate("B", true)->mesh);
    WriteMesh("entities_meshes\\none.msh");
    EXPECT_FALSE(parser.GetTemplate("B", true)->mesh); // it is not tried again
}

TEST_F(EntityMeshTest, DamagedFilesGiveNoMesh) {
    WriteMesh("good.msh");
    const std::string good = ReadBytes("good.msh");
    for (size_t length = 0; length < good.size(); ++length) {
        WriteBytes("cut.msh", good.substr(0, length));
        EXPECT_FALSE(LoadMesh("cut.msh")) << length;
    }
    for (size_t bit = 0; bit < good.size() * 8; ++bit) {
        std::string flipped = good;
        flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ 1 << bit % 8);
        WriteBytes("flip.msh", flipped);
        if (const auto mesh = LoadMesh("flip.msh"))
            for (const MeshSurface& surface : mesh->surfaces) {
                ASSERT_EQ(surface.vertices.size(), surface.uv.size());
                ASSERT_EQ(surface.vertices.size(), surface.normals.size());
                for (const TRIANGLE& t : surface.tri_indices)
                    ASSERT_LT(std::max({t.i[0], t.i[1], t.i[2]}), surface.vertices.size());
            }
    }
}
