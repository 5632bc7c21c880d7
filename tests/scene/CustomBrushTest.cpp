#include <gtest/gtest.h>

#include "files/ChunkFile.h"
#include "foundation/Desktop.h"
#include "foundation/TempFolder.h"
#include "scene/Scenes.h"

namespace {

struct Part {
    const char* chunk = "part";
    int32_t info[4] = {0, 4, 2, 0};
    std::vector<char> material = std::vector<char>(260);
    std::vector<D3DVECTOR> vertices = {{0, 0, 0}, {10, 0, 0}, {10, 20, 0}, {0, 20, 4}};
    std::vector<UVVector> uv = {{0.25f, 0}, {1, 0}, {1, 1}, {0, 1}};
    std::vector<D3DVECTOR> normals = std::vector<D3DVECTOR>(4, D3DVECTOR{0, 0, 1});
    std::vector<TRIANGLE> triangles = {{{0, 1, 2}}, {{0, 2, 3}}};
};

void WriteMesh(const std::string& path, const std::vector<Part>& parts) {
    UChunkFile file(path, CFM_Create);
    for (const Part& p : parts) {
        file.CreateChunk(p.chunk, ANY_CHUNK_ID);
        file.WriteArray(p.info, sizeof p.info);
        file.WriteValues(p.material);
        file.WriteValues(p.vertices);
        file.WriteValues(p.uv);
        file.WriteValues(p.normals);
        file.WriteValues(p.triangles);
        file.CloseChunk();
    }
    ASSERT_TRUE(file.CloseChunkFile()) << file.GetError();
}

class CustomBrush : public testing::Test {
protected:
    void SetUp() override {
        SetDesktop(&desktop);
        ForgetNotices();
        shape.custom = mesh;
        std::string("steel").copy(part.material.data(), 5);
    }
    void TearDown() override { SetDesktop(nullptr); }

    HeadlessDesktop desktop;
    TempFolder folder;
    std::string mesh = folder / "mesh.msh";
    BrushShape shape = ShapeOf(BT_CUSTOM, {90, 90, 90}, {110, 110, 110});
    Part part;
};

TEST_F(CustomBrush, IsCentredOnThePivotAndTurnedByView) {
    Part system;
    system.chunk = "system";
    system.vertices.clear(); // whatever it holds
    Part empty;
    empty.info[1] = empty.info[2] = 0;
    empty.vertices.clear(), empty.uv.clear(), empty.normals.clear(), empty.triangles.clear();
    WriteMesh(mesh, {system, part, empty});
    const D3DVECTOR first_corner[3] = {
        {95, 102, 90}, {95, 90, 98}, {102, 90, 95}}; // from (x, -z, y), as is, (-z, y, x)
    for (uint32_t view = 0; view < 3; ++view) {
        shape.view = view;
        const Brush brush(shape);
        ASSERT_EQ(brush.curved_surfaces.size(), 2u);
        const Surface& s = brush.curved_surfaces[0];
        EXPECT_EQ(s.cp_count, CURVE_MESH);
        EXPECT_TRUE(s.texture.locked);
        EXPECT_EQ(s.uv, part.uv);
        EXPECT_EQ(s.edge_indices, (std::vector<EDGE>{{{0, 1}}, {{1, 2}}, {{2, 0}}, {{2, 3}}, {{3, 0}}}));
        ExpectNear(s.vertices[0], first_corner[view], 1e-4f);
        ExpectNear(brush.pivot, {100, 100, 100}, 1e-4f);
        EXPECT_NEAR(Magnitude(s.normal[3]), 1, 1e-5f); // computed, not the file's
        EXPECT_NE(s.normal[3], (D3DVECTOR{0, 0, 1}));
    }
    EXPECT_TRUE(desktop.notices.empty());
}

TEST_F(CustomBrush, KeepsItsCoordinatesAndCopiesItsMesh) {
    WriteMesh(mesh, {part});
    Brush brush(shape);
    brush.curved_surfaces[0].extra_diffuse = {1, 2, 3, 4};
    brush.RemapAll();
    brush.ChangeCurveDetail(0);
    EXPECT_EQ(brush.CURVE_SEGMENTS, 16u);
    brush.TesselateCurves();
    brush.SelectNextSurface();
    brush.FitTexture(3, 3);
    const Brush copy(brush);
    EXPECT_EQ(copy.curved_surfaces[0].uv, part.uv);
    EXPECT_EQ(copy.curved_surfaces[0].vertices, brush.curved_surfaces[0].vertices);
    EXPECT_EQ(copy.curved_surfaces[0].extra_diffuse, brush.curved_surfaces[0].extra_diffuse);
    EXPECT_EQ(copy.curved_surfaces[0].tri_indices, part.triangles);
}

TEST_F(CustomBrush, TheWorldResolvesItsMaterial) {
    class Library : public MaterialSource {
        bool FindMaterial(const char* mc, std::string_view mn, MaterialNames& found) const override {
            found = {"Brushes", "Steel", "metal", "steel01"};
            return std::string(mc) == "brushes" && mn == "steel";
        }
    } library;
    Part unknown = part;
    unknown.material[0] = 'x';
    WriteMesh(mesh, {part, unknown});
    World world(&library);
    const Brush* brush = world.CreateBrush(shape);
    ASSERT_NE(brush, nullptr);
    EXPECT_EQ(brush->curved_surfaces[0].texture.index, 1);
    EXPECT_EQ(brush->curved_surfaces[1].texture.index, 0);
    EXPECT_EQ(world.material[1].texture_name, "steel01");
    EXPECT_EQ(desktop.notices, (std::vector<std::string>{"missing texture \"Textures\\metal\\steel01\"",
                                                         "missing material \"brushes\\xteel\""}));
}

TEST_F(CustomBrush, ADamagedRecordRefusesTheFileWithOneSentence) {
    std::vector<Part> damaged(11, part);
    damaged[0].info[1] = 5;
    damaged[1].info[1] = -4;
    damaged[2].info[2] = 0x7FFFFFFF;
    damaged[3].info[2] = 1;
    damaged[4].triangles[1].i[2] = 4;
    damaged[5].vertices[3].y = std::nanf("");
    damaged[6].uv[0].v = INFINITY;
    damaged[7].material.pop_back();
    damaged[8].normals.pop_back();
    damaged[9].info[1] = 65537, damaged[9].vertices.resize(65537), damaged[9].uv.resize(65537),
    damaged[9].normals.resize(65537);
    damaged[10].info[1] = 0x20000001; // times 12 is 12 in 32 bits
    for (const Part& bad : damaged) {
        desktop.notices.clear();
        ForgetNotices();
        WriteMesh(mesh, {part, bad});
        const Brush brush(shape);
        EXPECT_TRUE(brush.curved_surfaces.empty());
        EXPECT_EQ(brush.bbox, shape.bb);
        ASSERT_EQ(desktop.notices.size(), 1u);
        EXPECT_NE(desktop.notices[0].find(mesh), std::string::npos);
    }
    shape.custom = folder / "absent.msh";
    EXPECT_TRUE(Brush(shape).curved_surfaces.empty());
}

TEST_F(CustomBrush, SurvivesEveryTruncationAndFlippedByte) {
    WriteMesh(mesh, {part, part});
    const std::string good = ReadBytes(mesh);
    const auto check = [&](const std::string& bytes) {
        WriteBytes(mesh, bytes);
        const Brush brush(shape);
        brush.ForEachSurface([](const Surface& s, int, bool) {
            for (const TRIANGLE& t : s.tri_indices)
                ASSERT_TRUE(s.HasCorners(t));
            ASSERT_EQ(s.uv.size(), s.vertices.size());
            ASSERT_EQ(s.normal.size(), s.vertices.size());
        });
    };
    for (size_t length = 0; length < good.size(); ++length)
        check(good.substr(0, length));
    for (size_t at = 0; at < good.size(); ++at)
        for (const char flip : {'\x01', '\x80', '\xFF'}) {
            std::string bytes = good;
            bytes[at] ^= flip;
            check(bytes);
        }
}

} // namespace
