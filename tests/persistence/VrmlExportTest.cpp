// The level as VRML: the text by hand, and what a foreign reader makes of it.
#include <algorithm>
#include <cstdlib>
#include <sstream>

#include <gtest/gtest.h>

#include "persistence/ProjectData.h"
#include "persistence/VrmlExport.h"

namespace {

const char* const HEADER = "#VRML V2.0 utf8\r\n\r\n#Produced by Marrowstead 2000 VRML Exporter\r\n\r\n";

// A brush of its own surfaces, without any derived data.
Brush& AddBare(World& world, BrushType type) {
    auto brush = std::make_unique<Brush>();
    brush->type = type;
    return *world.AddBrush(std::move(brush));
}

void AddSurface(std::vector<Surface>& list, int material, const std::vector<D3DVECTOR>& vertices,
                const std::vector<TRIANGLE>& triangles) {
    Surface& s = list.emplace_back();
    s.texture.index = material;
    s.vertices = vertices;
    s.tri_indices = triangles;
}

// The numbers of the list that starts at a place of the text.
void AppendNumbers(const std::string& text, size_t at, std::vector<float>& numbers) {
    at = text.find('[', at) + 1;
    std::string list = text.substr(at, text.find(']', at) - at);
    std::replace(list.begin(), list.end(), ',', ' ');
    std::istringstream words(list);
    for (float number = 0; words >> number;)
        numbers.push_back(number);
}

void ExpectClose(const D3DVECTOR& actual, const D3DVECTOR& expected) {
    constexpr float TWO_DECIMALS = 0.0051f;
    for (int k = 0; k < 3; ++k)
        EXPECT_NEAR(Component(actual, k), Component(expected, k), TWO_DECIMALS);
}

} // namespace

TEST(VrmlExport, TheWholeTextOfASmallLevel) {
    World world;
    Brush& portal = AddBare(world, BT_PORTAL);
    AddSurface(portal.surfaces, 1, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{{0, 1, 2}}});
    Brush& b = AddBare(world, BT_BOX);
    b.is_hidden = true; // what is hidden belongs to the level
    AddSurface(b.surfaces, 0, {{9, 9, 9}}, {});
    AddSurface(b.surfaces, 3, {{0.5f, 1, -2.126f}, {-1, 20, 3}, {4, 5, 6}, {7, 8, -9}, {1000.125f, 0, 0.004f}},
               {{{0, 1, 2}}, {{0, 2, 3}}, {{1, 2, 3}}, {{3, 2, 4}}, {{0, 1, 4}}, {{0, 1, 77}}});
    AddSurface(b.curved_surfaces, 1, {{1, 2, 3}}, {});
    const std::string expected = std::string(HEADER) +
                                 "DEF Brush1Surface1 Transform {\r\n"
                                 "  translation 0 0 0\r\n"
                                 "  children [\r\n"
                                 "    Shape {\r\n"
                                 "      appearance Appearance {\r\n"
                                 "        material Material {\r\n"
                                 "          diffuseColor 0.8 0.8 0.8\r\n"
                                 "        }\r\n"
                                 "      }\r\n"
                                 "      geometry Brush1Surface1-FACES IndexedFaceSet {\r\n"
                                 "        ccw TRUE\r\n"
                                 "        solid TRUE\r\n"
                                 "        coord Brush1Surface1-COORD Coordinate { point [\r\n"
                                 "          0.50 1.00 2.13, -1.00 20.00 -3.00, 4.00 5.00 -6.00, 7.00 8.00 9.00,\r\n"
                                 "          1000.12 0.00 -0.00]\r\n"
                                 "        }\r\n"
                                 "        coordIndex [\r\n"
                                 "          2, 1, 0, -1, 3, 2, 0, -1, 3, 2, 1, -1, 4, 2, 3, -1,\r\n"
                                 "          4, 1, 0, -1]\r\n"
                                 "        }\r\n"
                                 "    }\r\n"
                                 "  ]\r\n"
                                 "}\r\n\r\n"
                                 "DEF Brush1CurvedSurface0 Transform {\r\n"
                                 "  translation 0 0 0\r\n"
                                 "  children [\r\n"
                                 "    Shape {\r\n"
                                 "      appearance Appearance {\r\n"
                                 "        material Material {\r\n"
                                 "          diffuseColor 0.8 0.8 0.8\r\n"
                                 "        }\r\n"
                                 "      }\r\n"
                                 "      geometry Brush1CurvedSurface0-FACES IndexedFaceSet {\r\n"
                                 "        ccw TRUE\r\n"
                                 "        solid TRUE\r\n"
                                 "        coord Brush1CurvedSurface0-COORD Coordinate { point [\r\n"
                                 "          1.00 2.00 -3.00]\r\n"
                                 "        }\r\n"
                                 "        coordIndex []\r\n"
                                 "        }\r\n"
                                 "    }\r\n"
                                 "  ]\r\n"
                                 "}\r\n\r\n";
    EXPECT_EQ(VrmlText(world), expected);
    World empty;
    EXPECT_EQ(VrmlText(empty), HEADER);
}

TEST(VrmlExport, AFailureIsOneSentenceAndLeavesTheFile) {
    TempFolder folder;
    World world;
    std::string error;
    EXPECT_FALSE(ExportVrml(folder / "missing/level.wrl", world, error));
    EXPECT_NE(error.find("level.wrl\": "), std::string::npos) << error;
    ASSERT_TRUE(ExportVrml(folder / "level.wrl", world, error)) << error;
    EXPECT_EQ(ReadBytes(folder / "level.wrl"), HEADER);
    AddTestBrush(world, BT_BOX, 0, 1);
    ASSERT_TRUE(ExportVrml(folder / "level.wrl", world, error)) << error;
    EXPECT_EQ(ReadBytes(folder / "level.wrl"), VrmlText(world));
    EXPECT_EQ(EntriesIn(folder.Path()), 1u);
}

// Reads the text back by a converter of another maker, where one is installed.
TEST(VrmlExport, AForeignReaderFindsTheSameMeshes) {
    if (std::system("command -v tovrmlx3d >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "tovrmlx3d of view3dscene is not installed";
    TempFolder folder;
    World world;
    AddTestBrush(world, BT_BOX, 0, 1);
    AddTestBrush(world, BT_PATCH, 100, 1);
    AddTestBrush(world, BT_CYLINDER, 200, 1);
    std::string error;
    ASSERT_TRUE(ExportVrml(folder / "level.vrml", world, error)) << error;
    EXPECT_EQ(ReadBytes(folder / "level.vrml"), VrmlText(world, true));
    std::filesystem::rename(folder / "level.vrml", folder / "level.wrl");
    const std::string command = "timeout 60 tovrmlx3d \"" + (folder / "level.wrl") + "\" >\"" + (folder / "read.wrl") +
                                "\" 2>\"" + (folder / "warnings") + "\"";
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(ReadBytes(folder / "warnings"), "");
    const std::string read = ReadBytes(folder / "read.wrl");
    std::vector<float> points, corners;
    for (size_t at = 0; (at = read.find("point [", at)) != std::string::npos; ++at)
        AppendNumbers(read, at, points);
    for (size_t at = 0; (at = read.find("coordIndex [", at)) != std::string::npos; ++at)
        AppendNumbers(read, at, corners);
    size_t point = 0, corner = 0;
    for (const auto& b : world.brush)
        b->ForEachSurface([&](const Surface& s, int, bool) {
            for (const D3DVECTOR& v : s.vertices) {
                ASSERT_LE(point + 3, points.size());
                ExpectClose({points[point], points[point + 1], -points[point + 2]}, v);
                point += 3;
            }
            for (const TRIANGLE& t : s.tri_indices) {
                ASSERT_LE(corner + 4, corners.size());
                for (size_t k = 0; k < 3; ++k)
                    EXPECT_EQ(corners[corner + k], static_cast<float>(t.i[2 - k]));
                corner += 4;
            }
        });
    EXPECT_EQ(point, points.size());
    EXPECT_EQ(corner, corners.size());
}
