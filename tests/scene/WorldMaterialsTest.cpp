#include <gtest/gtest.h>

#include "files/Picture.h"
#include "foundation/Desktop.h"
#include "foundation/Random.h"
#include "foundation/Strings.h"
#include "foundation/TempFolder.h"
#include "render/Textures.h"
#include "scene/Scenes.h"

namespace {

// A library that knows "glass" and records what is flushed.
class Library : public MaterialSource {
public:
    bool IsTransparent(std::string_view, std::string_view name) const override { return EqualNoCase(name, "glass"); }
    bool IsDoubleSided(std::string_view, std::string_view name) const override { return EqualNoCase(name, "glass"); }
    float GetAmbientIntensity(std::string_view, std::string_view) const override { return 0.5f; }
    bool FindMaterial(const char* mc, std::string_view name, MaterialNames& found) const override {
        found = {"Windows", "Glass", "brick", "wall"};
        return EqualNoCase(name, "glass") && (!mc || EqualNoCase(mc, "windows"));
    }
    void FlushMaterial(int row) const override { flushed.push_back(row); }

    mutable std::vector<int> flushed;
};

class WorldMaterials : public testing::Test {
protected:
    void SetUp() override {
        SetDesktop(&desktop);
        ForgetNotices();
        std::filesystem::create_directories("Textures/Brick");
        std::filesystem::create_directory("Marrowstead");
        WriteImage("Textures/Brick/Wall.tga", 16, 8, 24);
        WriteImage("Textures/Brick/Mask.tga", 4, 4, 8);
        WriteBytes("Textures/Brick/Broken.tga", "no picture");
    }
    void TearDown() override { SetDesktop(nullptr); }

    static void WriteImage(const char* path, uint16_t width, uint16_t height, uint8_t bits) {
        TGAHeaderStruct header;
        header.imageType = bits == 8 ? 3 : 2;
        header.width = width;
        header.height = height;
        header.pixel_size = bits;
        TGAClass image;
        ASSERT_EQ(image.CreateNewImage(header), PICTURE_OK);
        ASSERT_EQ(image.SaveImage(path), PICTURE_OK);
    }

    HeadlessDesktop desktop;
    TempFolder folder;
    CurrentFolder here{folder.Path()};
    Library library;
};

TEST_F(WorldMaterials, RowsAreFoundAgainAndShareTextures) {
    World world(&library);
    const int wall = world.AddMaterial("Walls", "Brick", "brick", "wall");
    EXPECT_EQ(wall, 1);
    EXPECT_EQ(world.AddMaterial("WALLS", "brick", "other", "texture"), 1);
    const int glass = world.AddMaterial("windows", "Glass", "BRICK", "WALL");
    EXPECT_EQ(glass, 2);
    EXPECT_EQ(world.material[2].texture_index, world.material[1].texture_index);
    EXPECT_TRUE(world.IsMaterialTransparent(glass) && world.IsMaterialDoublesided(glass));
    EXPECT_FALSE(world.IsMaterialTransparent(wall) || world.IsMaterialVolumetricFog(glass));
    EXPECT_EQ(world.TextureSize(wall), (SIZE{16, 8}));
    EXPECT_EQ(world.GetAmbientIntensity(wall), 0.5f);
    for (const int nowhere : {0, -1, 3, 5000}) {
        EXPECT_FALSE(world.IsMaterialTransparent(nowhere));
        EXPECT_EQ(world.TextureSize(nowhere), SIZE{});
        EXPECT_EQ(world.GetAmbientIntensity(nowhere), 0.0f);
        EXPECT_EQ(world.GetSelfIllumination(nowhere), COLOR{});
    }
    world.material.push_back({"added", "directly", "a", "b"}); // the index follows
    EXPECT_EQ(world.AddMaterial("Added", "Directly", "", ""), 3);
    EXPECT_TRUE(desktop.notices.empty());
}

TEST_F(WorldMaterials, ImagesThatAreNotThere) {
    World world(&library);
    EXPECT_EQ(world.AddMaterial("m", "masked", "brick", "mask"), -1); // 8 bits are no material
    EXPECT_EQ(world.GetMaterialCount(), 1);
    EXPECT_EQ(world.AddMaterial("m", "missing", "brick", "nowhere"), 1);
    EXPECT_EQ(world.AddMaterial("m", "broken", "brick", "broken"), 2); // cannot be read, yet a row
    EXPECT_EQ(world.TextureSize(1), SIZE{});
    EXPECT_EQ(world.AddMaterial("m", "missing too", "brick", "nowhere"), 3);
    EXPECT_EQ(desktop.notices, (std::vector<std::string>{"missing texture \"Textures\\brick\\nowhere\"",
                                                         "missing texture \"Textures\\brick\\broken\""}));
    EXPECT_EQ(world.GetNewMaterial("doors", "oak"), -1);
    EXPECT_EQ(world.GetNewMaterial(nullptr, "oak"), -1);
    EXPECT_EQ(ReadBytes("Marrowstead/texture.log"), "Missing texture: brick\\nowhere\nMissing texture: brick\\broken\n"
                                                    "Missing material: doors\\oak\nMissing material: \\oak\n");
    EXPECT_EQ(desktop.notices.size(), 4u);
    const int glass = world.GetNewMaterial(nullptr, "glass");
    ASSERT_EQ(glass, 4);
    EXPECT_EQ(world.material[4].material_class, "Windows");
    EXPECT_EQ(world.material[4].texture_name, "wall");
    EXPECT_EQ(world.GetNewMaterial("windows", "GLASS"), glass);
}

TEST_F(WorldMaterials, NamesAndRowsHaveTheirLimits) {
    World world;
    const std::string long_name(40, 'x');
    EXPECT_EQ(world.AddMaterial("c", long_name, "t", "t"), 1);
    EXPECT_EQ(world.material[1].material_name.size(), 31u);
    EXPECT_EQ(world.AddMaterial("c", long_name + "y", "t", "t"), 1);
    for (int i = 2; i < MAX_MATERIALS; ++i)
        ASSERT_EQ(world.AddMaterial("c", std::to_string(i), "t", "t"), i);
    EXPECT_EQ(world.AddMaterial("c", "one more", "t", "t"), -1);
    EXPECT_EQ(world.AddMaterial("c", "2046", "t", "t"), 2046);
    EXPECT_NE(desktop.notices.back().find("2046"), std::string::npos);
}

// Flushing as the long way: row by row, each removal through all tables.
void FlushPlainly(std::vector<std::string>& rows, std::vector<std::string>& textures, std::vector<int>& used,
                  std::vector<int>& told, std::vector<std::string>& released) {
    for (size_t row = 1; row < rows.size();) {
        const int number = static_cast<int>(row);
        if (std::find(used.begin(), used.end(), number) != used.end()) {
            ++row;
            continue;
        }
        const std::string texture = textures[row];
        rows.erase(rows.begin() + number);
        textures.erase(textures.begin() + number);
        if (std::find(textures.begin() + 1, textures.end(), texture) == textures.end())
            released.push_back(texture);
        for (int& index : used)
            index -= index > number;
        told.push_back(number);
    }
}

TEST_F(WorldMaterials, FlushingEqualsTheLongWay) {
    RandomMT random;
    random.seedMT(9);
    for (int round = 0; round < 40; ++round) {
        World world(&library);
        library.flushed.clear();
        std::vector<std::string> rows(1), textures(1);
        uint32_t handles[4];
        for (uint32_t& handle : handles)
            handle = crTCreate(4, 4, 32, TL_MATERIAL, TEX_NORMAL, 0, false);
        for (int i = 1; i < 15; ++i) {
            const uint32_t texture = random.randomMT() % 4;
            rows.push_back(std::to_string(i));
            textures.push_back(std::to_string(texture));
            world.material.push_back({"c", rows.back(), "t", textures.back(), handles[texture]});
        }
        std::vector<int> used;
        for (int b = 0; b < 3; ++b) {
            world.AddBrush(std::make_unique<Brush>(ShapeOf(BT_Q_BLOCK, {0, 0, 0}, {64, 64, 64})));
            world.brush.back()->ForEachSurface([&](Surface& s, int, bool) {
                s.texture.index = static_cast<int>(random.randomMT() % 18); // some beyond the table
                used.push_back(s.texture.index);
            });
        }
        std::vector<int> told;
        std::vector<std::string> released;
        FlushPlainly(rows, textures, used, told, released);
        world.FlushUnusedMaterials();
        ASSERT_EQ(world.material.size(), rows.size());
        for (size_t row = 1; row < rows.size(); ++row) {
            EXPECT_EQ(world.material[row].material_name, rows[row]);
            EXPECT_EQ(world.AddMaterial("C", rows[row], "", ""), static_cast<int>(row));
        }
        size_t k = 0;
        for (const auto& b : world.brush)
            b->ForEachSurface([&](const Surface& s, int, bool) { EXPECT_EQ(s.texture.index, used[k++]); });
        EXPECT_EQ(library.flushed, told);
        for (size_t t = 0; t < 4; ++t) {
            const bool gone = std::find(released.begin(), released.end(), std::to_string(t)) != released.end();
            EXPECT_EQ(crTRecord(handles[t]) == nullptr, gone);
        }
    }
}

class WorldSurfaces : public WorldMaterials {
protected:
    void SetUp() override {
        WorldMaterials::SetUp();
        for (int b = 0; b < 2; ++b)
            world.AddBrush(BoxBrush());
        Select(0, 1);
    }
    void Select(int b, int surface) {
        world.brush[static_cast<size_t>(b)]->selected_surface = surface;
        world.selected_surface_brush = b;
    }
    TEX_INFO& Info(size_t b, size_t surface) { return world.brush[b]->surfaces[surface].texture; }

    World world{&library};
};

TEST_F(WorldSurfaces, AssigningAndRemapping) {
    EXPECT_FALSE(world.HasSurfaceTexture());
    world.ChangeTexture("walls", "brick", "Brick", "Wall");
    EXPECT_TRUE(world.HasSurfaceTexture());
    EXPECT_EQ(Info(0, 1).index, 1);
    EXPECT_EQ(Info(0, 1).size, (UVVector{16, 8}));
    TEX_INFO mapping;
    mapping.scale = {2, 2};
    mapping.index = 77;
    mapping.locked = mapping.fitted = true;
    world.RemapSurface(mapping);
    EXPECT_EQ(Info(0, 1).index, 1);
    EXPECT_EQ(Info(0, 1).size, (UVVector{16, 8}));
    EXPECT_TRUE(Info(0, 1).fitted);
    EXPECT_EQ(world.brush[0]->surfaces[1].uv[1].u, 8.0f); // 64 texels of 16, twice
    world.FitTextureOnSurface(1, 1);
    ExpectNear(world.brush[0]->surfaces[1].uv[1], {1, 0}, 1e-6f);
    world.ChangeTexture("m", "masked", "brick", "mask"); // refused: no material then
    EXPECT_EQ(Info(0, 1).index, 0);
    EXPECT_EQ(Info(0, 1).size, UVVector{});
    world.CycleSurfaces();
    EXPECT_EQ(world.brush[0]->selected_surface, 2);

    world.DeselectSurface();
    world.SetBrushSelection(1, true);
    world.RemapSurface(mapping); // without a surface only the lock
    EXPECT_TRUE(Info(1, 3).locked);
    EXPECT_EQ(Info(1, 3).scale, (UVVector{1, 1}));
    EXPECT_FALSE(Info(0, 3).locked);
    world.ChangeTextureToAll("walls", "brick", "Brick", "Wall");
    world.RemapSurfaceToAll(mapping);
    EXPECT_EQ(Info(1, 5).scale, (UVVector{2, 2}));
    EXPECT_FALSE(Info(1, 5).fitted);
    EXPECT_EQ(world.brush[1]->surfaces[1].uv[1].u, 8.0f);
    EXPECT_EQ(Info(0, 5).index, 0);
}

TEST_F(WorldSurfaces, RemovingAsksOnlyForTheWholeLevel) {
    world.AddMaterial("walls", "brick", "Brick", "Wall");
    world.AddMaterial("walls", "glass", "Brick", "Wall");
    Info(0, 1).index = Info(0, 2).index = 1;
    Info(1, 1).index = Info(1, 2).index = 2;
    world.RemoveTextureFromSurface(nullptr, nullptr);
    EXPECT_EQ(Info(0, 1).index, 0);
    EXPECT_EQ(Info(0, 2).index, 1);
    world.DeselectSurface();
    world.SetBrushSelection(1, true);
    world.RemoveTextureFromSurface(nullptr, nullptr);
    EXPECT_EQ(Info(1, 2).index, 0);
    EXPECT_TRUE(desktop.boxes.empty());
    world.ClearSelection();
    Info(1, 1).index = 2;
    desktop.answers = {MessageAnswer::No, MessageAnswer::Yes, MessageAnswer::Yes};
    world.RemoveTextureFromSurface("walls", "BRICK");
    EXPECT_EQ(Info(0, 2).index, 1);
    world.RemoveTextureFromSurface(nullptr, nullptr); // names nothing
    EXPECT_EQ(Info(0, 2).index, 1);
    world.RemoveTextureFromSurface("walls", "BRICK");
    EXPECT_EQ(Info(0, 2).index, 0);
    EXPECT_EQ(Info(1, 1).index, 1); // the table closed up
    ASSERT_EQ(desktop.boxes.size(), 3u);
    EXPECT_EQ(desktop.boxes[0].text, "Do you really want to remove this material?");
    EXPECT_EQ(desktop.boxes[0].title, "Marrowstead 2000");
}

TEST_F(WorldSurfaces, ReplacingKeepsSizesAndFlushes) {
    world.AddMaterial("walls", "brick", "Brick", "Wall");
    for (size_t b = 0; b < 2; ++b)
        for (size_t s = 0; s < 3; ++s)
            Info(b, s).index = 1, Info(b, s).size = {5, 5};
    desktop.answers = {MessageAnswer::No, MessageAnswer::Yes, MessageAnswer::Yes, MessageAnswer::Yes};
    world.ReplaceTextureOnSurface("walls", "glass", "Brick", "Wall", false);
    EXPECT_EQ(world.GetMaterialCount(), 2);
    world.ReplaceTextureOnSurface("walls", "masked", "Brick", "Mask", false); // refused: the old one stays
    EXPECT_EQ(Info(0, 1).index, 1);
    world.SetBrushSelection(0, true);
    world.ReplaceTextureOnSurface("walls", "glass", "Brick", "Wall", true);
    EXPECT_EQ(Info(0, 2).index, 2);
    EXPECT_EQ(Info(1, 2).index, 1);
    EXPECT_EQ(Info(0, 2).size, (UVVector{5, 5}));
    world.ReplaceTextureOnSurface("walls", "brick", "Brick", "Wall", false); // back: glass is not used any more
    EXPECT_EQ(world.GetMaterialCount(), 2);
    EXPECT_EQ(Info(0, 2).index, 1);
    world.DeselectSurface();
    world.ReplaceTextureOnSurface("walls", "glass", "Brick", "Wall", false); // nothing to replace: no question
    EXPECT_EQ(desktop.boxes.size(), 4u);
}

} // namespace
