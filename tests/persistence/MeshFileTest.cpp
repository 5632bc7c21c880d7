// Meshes of modelling tools: read, written as custom meshes, and placed as brushes.
#include <algorithm>

#include <gtest/gtest.h>

#include "files/ChunkFile.h"
#include "foundation/Desktop.h"
#include "foundation/TempFolder.h"
#include "persistence/MeshFile.h"
#include "scene/Scenes.h"

TEST(MeshFile, ArraysOfAPart) {
    TempFolder folder;
    std::string error;
    CustomMeshPart part;
    part.material = std::string(300, 'm');
    part.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 2, 0}};
    part.normals = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
    part.uv = {{0, 1}, {1, 1}, {0, 0}};
    part.triangles = {{{0, 1, 2}}};
    ASSERT_TRUE(WriteMesh(folder / "part.msh", {part, part}, error)) << error;
    UChunkFile file(folder / "part.msh", CFM_Open);
    ASSERT_TRUE(file.IsValid());
    EXPECT_EQ(file.GetChunkCount(), 2);
    ASSERT_TRUE(file.OpenChunk(nullptr));
    const uint32_t lengths[] = {16, 260, 36, 24, 36, 6};
    ASSERT_EQ(file.GetArraysCountInChunk(), 6u);
    for (uint32_t a = 0; a < 6; ++a)
        EXPECT_EQ(file.GetArrayLength(a), lengths[a]) << a;
    std::string name;
    file.SkipNextArray();
    ASSERT_TRUE(file.GetNextString(name));
    EXPECT_EQ(name, std::string(259, 'm'));
    EXPECT_FALSE(WriteMesh(folder / "missing/part.msh", {part}, error));
    EXPECT_NE(error.find("part.msh"), std::string::npos) << error;
}

TEST(MeshFile, WithoutAReaderItSaysSo) {
    if (CanImportMeshes())
        GTEST_SKIP() << "built with a reader";
    std::vector<CustomMeshPart> parts;
    std::string error;
    EXPECT_FALSE(ReadForeignMesh("a.obj", parts, error));
    EXPECT_NE(error.find("a.obj"), std::string::npos);
}

#ifdef MARROWSTEAD_MESH_IMPORT

namespace {

// The brush of a mesh file, its middle at the origin.
Brush CustomBrush(const std::string& file) {
    BrushShape shape = ShapeOf(BT_CUSTOM, {-8, -8, -8}, {8, 8, 8}, 0, 1); // the front view turns nothing
    shape.custom = file;
    return Brush(shape);
}

class MeshImport : public testing::Test {
protected:
    std::string Read(const std::string& obj) {
        WriteBytes(folder / "mesh.obj", obj);
        error.clear();
        const bool read = ReadForeignMesh(folder / "mesh.obj", parts, error);
        EXPECT_EQ(read, error.empty());
        return error;
    }

    TempFolder folder;
    std::vector<CustomMeshPart> parts;
    std::string error;
};

} // namespace

TEST_F(MeshImport, AxesWindingAndTextureByHand) {
    // A quad in the plane z = 4 that faces +z there, and so -z here.
    ASSERT_EQ(Read("v 0 0 4\nv 10 0 4\nv 10 20 4\nv 0 20 4\n"
                   "vt 0 0\nvt 0.5 0\nvt 0.5 0.25\nvt 0 0.25\nvn 0 0 1\n"
                   "usemtl steel\nf 1/1/1 2/2/1 3/3/1 4/4/1\n"),
              "");
    ASSERT_EQ(parts.size(), 1u);
    const CustomMeshPart& p = parts[0];
    EXPECT_EQ(p.triangles.size(), 2u);
    ASSERT_EQ(p.vertices.size(), 4u);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(p.vertices[i].z, -4);
        ExpectNear(p.normals[i], {0, 0, -1}, 1e-5f);
        ExpectNear(p.uv[i], {p.vertices[i].x / 20, 1 - p.vertices[i].y / 80}, 1e-5f);
    }
    for (const TRIANGLE& t : p.triangles)
        EXPECT_LT(CrossProduct(p.vertices[t.i[1]] - p.vertices[t.i[0]], p.vertices[t.i[2]] - p.vertices[t.i[0]]).z, 0);

    ASSERT_TRUE(WriteMesh(folder / "mesh.msh", parts, error)) << error;
    const Brush brush = CustomBrush(folder / "mesh.msh");
    ASSERT_EQ(brush.curved_surfaces.size(), 1u);
    ASSERT_EQ(brush.curved_surfaces[0].vertices.size(), 4u);
    D3DVECTOR low{100, 100, 100}, high{-100, -100, -100};
    for (const D3DVECTOR& v : brush.curved_surfaces[0].vertices)
        for (int k = 0; k < 3; ++k) {
            Component(low, k) = std::min(Component(low, k), Component(v, k));
            Component(high, k) = std::max(Component(high, k), Component(v, k));
        }
    EXPECT_EQ(high.x - low.x, 10);
    EXPECT_EQ(high.y - low.y, 20);
    ExpectNear(brush.curved_surfaces[0].normal[0], {0, 0, -1}, 1e-5f);
}

TEST_F(MeshImport, ABoxIsClosedAndFacesOutward) {
    ASSERT_EQ(Read("v 0 0 0\nv 2 0 0\nv 2 3 0\nv 0 3 0\nv 0 0 5\nv 2 0 5\nv 2 3 5\nv 0 3 5\n"
                   "f 5 6 7 8\nf 2 1 4 3\nf 6 2 3 7\nf 1 5 8 4\nf 8 7 3 4\nf 1 2 6 5\n"),
              "");
    ASSERT_TRUE(WriteMesh(folder / "mesh.msh", parts, error)) << error;
    const Brush brush = CustomBrush(folder / "mesh.msh");
    EXPECT_NEAR(SignedVolume(brush), 30, 0.001);
    for (const CustomMeshPart& p : parts)
        for (const D3DVECTOR& n : p.normals)
            EXPECT_NEAR(Magnitude(n), 1, 0.001f) << "made where there are none";
}

TEST_F(MeshImport, AMaterialIsAPartAndLargePartsAreSplit) {
    std::string obj = "v 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl one\nf 1 2 3\nusemtl two\nf 3 2 1\n";
    WriteBytes(folder / "mesh.mtl", "newmtl one\nnewmtl two\n");
    ASSERT_EQ(Read("mtllib mesh.mtl\n" + obj), "");
    ASSERT_EQ(parts.size(), 2u);
    EXPECT_EQ(parts[0].material, "one");
    EXPECT_EQ(parts[1].material, "two");

    constexpr int TRIANGLES = 30000;
    obj.clear();
    for (int t = 0; t < TRIANGLES; ++t) {
        const std::string x = std::to_string(t);
        obj += "v " + x + " 0 0\nv " + x + " 1 0\nv " + x + " 0 1\n";
    }
    for (int t = 0; t < TRIANGLES; ++t)
        obj +=
            "f " + std::to_string(3 * t + 1) + " " + std::to_string(3 * t + 2) + " " + std::to_string(3 * t + 3) + "\n";
    ASSERT_EQ(Read(obj), "");
    ASSERT_EQ(parts.size(), 2u);
    size_t vertices = 0, triangles = 0;
    for (const CustomMeshPart& p : parts) {
        EXPECT_LE(p.vertices.size(), 65536u);
        EXPECT_EQ(p.normals.size(), p.vertices.size());
        EXPECT_EQ(p.uv.size(), p.vertices.size());
        for (const TRIANGLE& t : p.triangles)
            for (const uint16_t i : t.i)
                ASSERT_LT(i, p.vertices.size());
        vertices += p.vertices.size(), triangles += p.triangles.size();
    }
    EXPECT_EQ(vertices, 3u * TRIANGLES);
    EXPECT_EQ(triangles, size_t{TRIANGLES});
}

TEST_F(MeshImport, BadFilesAreOneSentence) {
    const std::string cases[] = {"",
                                 "nothing of this kind",
                                 "v 0 0 0\nv 1 0 0\n",
                                 "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 900\n",
                                 "v 0 0 0\nv nan 0 0\nv 0 1 0\nf 1 2 3\n",
                                 std::string("\0\xFF\xFE\x01 f 1 2 3\n", 12),
                                 "f 1 2 3\n",
                                 "v 0 0 0\nv 1 0 0\nv 0 1 0\nl 1 2\n"};
    for (const std::string& obj : cases) {
        EXPECT_NE(Read(obj), "") << obj;
        EXPECT_NE(error.find("mesh.obj"), std::string::npos) << error;
        EXPECT_EQ(error.find('\n'), std::string::npos) << error;
        EXPECT_TRUE(parts.empty());
    }
    EXPECT_FALSE(ReadForeignMesh(folder / "missing.obj", parts, error));
    EXPECT_NE(error.find("missing.obj"), std::string::npos) << error;
}

#endif
