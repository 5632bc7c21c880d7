#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "definitions/MaterialCache.h"
#include "definitions/MaterialLibrary.h"
#include "definitions/MaterialScript.h"
#include "foundation/Desktop.h"
#include "foundation/Random.h"
#include "foundation/TempFolder.h"
#include "render/TestPictures.h"

namespace {

constexpr const char* CACHE_PATH = "Marrowstead/Cache/Materials.cache";

class MaterialTest : public testing::Test {
protected:
    MaterialTest() {
        ForgetNotices();
        SetDesktop(&desktop);
    }
    ~MaterialTest() override { SetDesktop(nullptr); }

    static void WriteScript(const std::string& material, const std::string& keys, const std::string& more = "") {
        WriteBytes("Scripts/Materials/" + material + ".mtl",
                   "#Basic Material Properties\r\n{\r\n" + keys + "\r\n}\r\n" + more);
    }
    static MaterialProperties Parse(const std::string& keys, const std::string& more = "") {
        WriteScript("c/m", keys, more);
        MaterialProperties properties;
        EXPECT_TRUE(ParseMaterialScript("c", "m", properties));
        return properties;
    }
    static void SetTime(const std::string& path, int64_t seconds) {
        const timespec times[2] = {{seconds, 0}, {seconds, 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    }
    // "class: material material, class: ..."
    static std::string Names(const MaterialLibrary& library) {
        std::string names;
        for (const auto& c : library.Classes()) {
            names += (names.empty() ? "" : ", ") + c.name + ":";
            for (const auto& m : c.materials)
                names += " " + m.name;
        }
        return names;
    }

    TempFolder folder;
    CurrentFolder current{folder.Path()};
    HeadlessDesktop desktop;
};

} // namespace

TEST_F(MaterialTest, ScriptKeys) {
    const MaterialProperties all =
        Parse("AMBIENT_INTENSITY = 0.25;\r\nSELF_ILLUMINATION = 255, 16.9, -3;\r\nLIGHT_ILLUMINATION = TRUE;\r\n"
              "VOLUMETRIC_FOG = yes;\r\nDOUBLE_SIDED = On;\r\nDIFFUSE_MAP = brick\\old\\wall01;");
    EXPECT_EQ(all.ambient_intensity, 0.25f);
    EXPECT_EQ(all.self_illumination, (COLOR{0x00FF1000, 255 * 0.003921569f, 16 * 0.003921569f, 0, 0}));
    EXPECT_TRUE(all.light_illumination && all.volumetric_fog && all.double_sided);
    EXPECT_EQ(all.texture_class, "brick");
    EXPECT_EQ(all.texture_name, "old\\wall01"); // cut at the first backslash
    EXPECT_FALSE(all.transparent);

    const MaterialProperties none = Parse("ambient_intensity = 1;\r\nDOUBLE_SIDED = FALSE;\r\nDIFFUSE_MAP = alone;");
    EXPECT_EQ(none.ambient_intensity, 0);
    EXPECT_FALSE(none.double_sided);
    EXPECT_EQ(none.texture_class, "");
    EXPECT_EQ(none.texture_name, "alone");
    MaterialProperties missing;
    EXPECT_FALSE(ParseMaterialScript("c", "missing", missing));
    WriteBytes("Scripts/Materials/c/m.mtl", "");
    EXPECT_TRUE(ParseMaterialScript("c", "m", missing));
    EXPECT_EQ(missing.texture_name, "");
}

TEST_F(MaterialTest, ImagesOfOtherSections) {
    struct Case {
        const char *keyword, *sections, *texture_class, *texture_name;
    };
    const Case cases[] = {
        {"PROCEDURAL_SHADER",
         "#Procedural Shader\nSelectTexture = no\\no\n#Frames\nSpeed = 3\nSelectTexture = a\\b, c\\d\n", "a", "b"},
        {"PROCEDURAL_SHADER", "#procedural shader\n#X\nAnimTexture = 5, a\\b\nSelectTexture = c\\d\n", "a", "b"},
        {"PROCEDURAL_SHADER", "#Procedural Shader\n#X\nRndTexture = 5, a\\b;\n#Y\nSelectTexture = c\\d\n", "a", "b"},
        {"PROCEDURAL_SHADER", "#Procedural Shader\n#X\nTexture = a\\b\n", "", ""},
        {"PROCEDURAL_SHADER", "#Procedural Shader\nSelectTexture = a\\b\n", "", ""},
        {"PROCEDURAL_SHADER", "", "", ""},
        {"LAYERED_TERRAIN", "#Layered Terrain\n#Layers\nSelectTexture = c\\d\nTexture = a\\b\n", "a", "b"},
    };
    for (const Case& c : cases) {
        const MaterialProperties properties =
            Parse(std::string("DIFFUSE_MAP = ") + c.keyword + ";\r\nDOUBLE_SIDED = TRUE;", c.sections);
        EXPECT_EQ(properties.texture_class, c.texture_class) << c.sections;
        EXPECT_EQ(properties.texture_name, c.texture_name) << c.sections;
        EXPECT_TRUE(properties.double_sided);
    }
}

TEST_F(MaterialTest, NewImagesGetAScript) {
    WriteBytes("Textures/Brick/wall.tga", TargaBytes(2, 2, 24));
    WriteBytes("Textures/Brick/block.DDS", Dxt1Bytes(0));
    WriteBytes("Textures/Brick/glass.tga", TargaBytes(2, 2, 32));
    WriteBytes("Textures/Brick/mask.tga", TargaBytes(2, 2, 8));
    WriteBytes("Textures/Brick/sky.tga", TargaBytes(2, 12, 24));
    WriteBytes("Textures/Brick/broken.tga", "no picture");
    WriteBytes("Textures/Brick/old.tga", TargaBytes(2, 2, 24));
    WriteScript("Brick/old", "DIFFUSE_MAP = Brick\\glass;");
    std::filesystem::create_directories("Textures/Empty");
    WriteScript("alone/only", "DIFFUSE_MAP = Brick\\nothing;");

    MaterialLibrary library;
    library.ParseTextures();
    EXPECT_EQ(Names(library), "alone: only, Brick: block glass old wall, Empty:");
    EXPECT_EQ(ReadBytes("Scripts/Materials/Brick/wall.mtl"),
              "#Basic Material Properties\r\n{\r\n\tAMBIENT_INTENSITY = 1.0;\r\n\tSELF_ILLUMINATION = 0, 0, 0;\r\n"
              "\tLIGHT_ILLUMINATION = FALSE;\r\n\tDIFFUSE_MAP = Brick\\wall;\r\n\tBUMP_MAP = common\\default_bump;\r\n"
              "\tBUMP_SCALE = 1.0;\r\n\tSPECULAR_INTENSITY = 0.0;\r\n\tSPECULAR_POWER = 1.0;\r\n\tGLOSS_MAP = "
              "common\\default_gloss;\r\n"
              "\tREFLECTION_MAP = common\\default_reflection;\r\n\tREFLECTION_INTENSITY = 0.0;\r\n\tLIGHT_REFLECTION = "
              "FALSE;\r\n}\r\n\r\n");
    EXPECT_TRUE(std::filesystem::is_directory("Scripts/Materials/Empty"));
    ASSERT_EQ(desktop.notices.size(), 1u);
    EXPECT_NE(desktop.notices[0].find("broken.tga"), std::string::npos);

    EXPECT_EQ(library.GetAmbientIntensity("BRICK", "Wall"), 1.0f);
    EXPECT_FALSE(library.IsTransparent("brick", "wall"));
    EXPECT_TRUE(library.IsTransparent("brick", "glass"));
    EXPECT_TRUE(library.IsTransparent("brick", "old")); // by its image, not its name
    EXPECT_FALSE(library.MaterialExist("brick", "mask"));
    EXPECT_FALSE(library.MaterialExist("wood", "wall"));
    EXPECT_EQ(library.GetSelfIllumination("wood", "wall"), COLOR{});

    MaterialNames found;
    ASSERT_TRUE(library.FindMaterial("bRICK", "WALL", found));
    EXPECT_EQ(found.material_class + "|" + found.material_name + "|" + found.texture_class + "|" + found.texture_name,
              "Brick|wall|Brick|wall");
    ASSERT_TRUE(library.FindMaterial(nullptr, "only", found));
    EXPECT_EQ(found.material_class, "alone");
    EXPECT_FALSE(library.FindMaterial("alone", "wall", found));
    EXPECT_FALSE(library.FindMaterial(nullptr, "none", found));
}

TEST_F(MaterialTest, MissingFoldersAreFine) {
    MaterialLibrary library;
    library.ParseTextures();
    EXPECT_TRUE(library.Classes().empty());
    library.RefreshClass("none");
}

TEST_F(MaterialTest, CacheSparesUnchangedScripts) {
    WriteScript(
        "c/same",
        "AMBIENT_INTENSITY = 0.5;\r\nSELF_ILLUMINATION = 1, 2, 3;\r\nDIFFUSE_MAP = t\\same;\r\nDOUBLE_SIDED = TRUE;");
    WriteScript("c/touched", "AMBIENT_INTENSITY = 0.5;");
    SetTime("Scripts/Materials/c/same.mtl", 1000);
    SetTime("Scripts/Materials/c/touched.mtl", 1000);
    MaterialLibrary().ParseTextures();
    const std::string cache = ReadBytes(CACHE_PATH);
    EXPECT_EQ(cache.size(), 16u + 2 + 4 + 2 * 132);
    EXPECT_EQ(cache.substr(0, 22), std::string("\xFF\xFF\xFF\xFF\x03\0\0\0\x01\0\0\0\x02\0\0\0c\0\x02\0\0\0", 22));
    const std::string item = cache.substr(22, 132);
    EXPECT_STREQ(item.c_str(), "same");
    EXPECT_STREQ(item.c_str() + 32, "same");
    EXPECT_STREQ(item.c_str() + 64, "t");
    float ambient;
    uint32_t packed, ftime_low, ftime_high;
    std::memcpy(&ambient, item.data() + 97, 4);
    std::memcpy(&packed, item.data() + 104, 4);
    std::memcpy(&ftime_low, item.data() + 124, 4);
    std::memcpy(&ftime_high, item.data() + 128, 4);
    EXPECT_EQ(ambient, 0.5f);
    EXPECT_EQ(item[103], 1);
    EXPECT_EQ(packed, 0x00010203u);
    EXPECT_EQ(static_cast<uint64_t>(ftime_high) << 32 | ftime_low, (11644473600u + 1000u) * 10000000ull);

    // Changed contents behind an unchanged time do not show; with another time they do.
    WriteScript("c/same", "AMBIENT_INTENSITY = 0.75;");
    WriteScript("c/touched", "AMBIENT_INTENSITY = 0.75;");
    SetTime("Scripts/Materials/c/same.mtl", 1000);
    SetTime("Scripts/Materials/c/touched.mtl", 1001);
    SetTime(CACHE_PATH, 5000);
    MaterialLibrary library;
    library.ParseTextures();
    EXPECT_EQ(library.GetAmbientIntensity("c", "same"), 0.5f);
    EXPECT_EQ(library.GetAmbientIntensity("c", "touched"), 0.75f);
    EXPECT_TRUE(library.IsDoubleSided("c", "same"));
    EXPECT_EQ(library.GetSelfIllumination("c", "same"),
              (COLOR{0x010203, 1 * 0.003921569f, 2 * 0.003921569f, 3 * 0.003921569f, 0}));

    // Nothing changed: nothing is written.
    SetTime(CACHE_PATH, 5000);
    MaterialLibrary().ParseTextures();
    struct stat status = {};
    ASSERT_EQ(stat(CACHE_PATH, &status), 0);
    EXPECT_EQ(status.st_mtime, 5000);
}

TEST_F(MaterialTest, CacheRoundTripAndCase) {
    MaterialProperties stored{
        "class of 31 characters 123456789", "image", true, true, false, true, 1.5f, MakeColor(1, 2, 3, 0)};
    stored.texture_class = stored.texture_class.substr(0, 31);
    WriteScript("A/one", "");
    WriteScript("B/one", "");
    {
        MaterialCache cache("x.cache");
        cache.AddFileData("A", "one", stored);
        cache.AddFileData("B", "one", {});
        cache.AddFileData("b", "gone", stored);
        ASSERT_TRUE(cache.Save("x.cache"));
    }
    MaterialCache cache("x.cache");
    MaterialProperties read;
    EXPECT_FALSE(cache.GetFileData("A", "two", read));
    EXPECT_FALSE(cache.GetFileData("B", "gone", read)); // the script cannot be opened
    ASSERT_TRUE(cache.GetFileData("a", "ONE", read));
    EXPECT_EQ(read.texture_class, stored.texture_class);
    EXPECT_EQ(read.texture_name, stored.texture_name);
    EXPECT_EQ(read.self_illumination, stored.self_illumination);
    EXPECT_EQ(read.ambient_intensity, 1.5f);
    EXPECT_TRUE(read.transparent && read.light_illumination && read.double_sided && !read.volumetric_fog);
    cache.AddFileData("A", "ONE", {}); // replaces
    ASSERT_TRUE(cache.Save("x.cache"));
    EXPECT_EQ(ReadBytes("x.cache").size(), 16u + 4 + 2 * 4 + 3 * 132);

    // The older magic is accepted, an older version is not.
    std::string bytes = ReadBytes("x.cache");
    bytes[0] = '\xFE';
    WriteBytes("x.cache", bytes);
    EXPECT_TRUE(MaterialCache("x.cache").GetFileData("B", "one", read));
    bytes[4] = 2;
    WriteBytes("x.cache", bytes);
    EXPECT_FALSE(MaterialCache("x.cache").GetFileData("B", "one", read));
    EXPECT_FALSE(std::filesystem::exists("x.cache"));
}

TEST_F(MaterialTest, DamagedCachesAreDeleted) {
    WriteScript("A/one", "");
    WriteScript("Bb/two", "");
    MaterialLibrary().ParseTextures();
    const std::string good = ReadBytes(CACHE_PATH);
    for (size_t length = 0; length <= good.size() + 1; ++length) {
        if (length == good.size())
            continue;
        WriteBytes("cut.cache", length < good.size() ? good.substr(0, length) : good + "x");
        const MaterialCache cache("cut.cache");
        MaterialProperties read;
        EXPECT_FALSE(cache.GetFileData("A", "one", read)) << length;
        EXPECT_FALSE(std::filesystem::exists("cut.cache")) << length;
    }
    RandomMT random;
    random.seedMT(3);
    for (int round = 0; round < 500; ++round) {
        std::string bytes = good;
        for (int change = 0; change < 3; ++change)
            bytes[random.randomMT() % bytes.size()] = static_cast<char>(random.randomMT() & 255);
        for (const size_t count_at : {8, 12, 21})
            if (round % 3 == 0)
                bytes[count_at + 3] = '\x7F'; // huge counts
        WriteBytes("flip.cache", bytes);
        MaterialCache cache("flip.cache");
        MaterialProperties read;
        cache.GetFileData("A", "one", read);
        EXPECT_LT(read.texture_name.size(), 32u);
    }
    // A library rebuilds what it deleted.
    WriteBytes(CACHE_PATH, good.substr(0, 40));
    MaterialLibrary().ParseTextures();
    EXPECT_EQ(ReadBytes(CACHE_PATH), good);
}

TEST_F(MaterialTest, LimitsAreTold) {
    for (int i = 0; i < 514; ++i)
        WriteScript("many/m" + std::to_string(1000 + i), "");
    for (int i = 0; i < 256; ++i)
        std::filesystem::create_directories("Scripts/Materials/n" + std::to_string(1000 + i));
    WriteScript("many/" + std::string(32, 'x'), "");
    WriteScript("many/" + std::string(31, 'w'), "");
    MaterialLibrary library;
    library.ParseTextures();
    ASSERT_EQ(library.Classes().size(), 256u);
    EXPECT_EQ(library.Classes()[0].name, "many");
    EXPECT_EQ(library.Classes()[0].materials.size(), 512u);
    ASSERT_EQ(desktop.notices.size(), 3u);
    EXPECT_NE(desktop.notices[0].find("256 classes"), std::string::npos);
    EXPECT_NE(desktop.notices[1].find("31 characters"), std::string::npos);
    EXPECT_NE(desktop.notices[2].find("512 materials"), std::string::npos);
}

TEST_F(MaterialTest, RefreshReadsOneClassAndKeepsWhatIsUsed) {
    WriteScript("c/b", "AMBIENT_INTENSITY = 1;");
    WriteScript("c/gone", "");
    WriteScript("d/x", "");
    MaterialLibrary library;
    library.ParseTextures();
    library.AddMaterialToUseList("C", "B");
    library.AddMaterialToUseList("c", "gone");
    library.AddMaterialToUseList("d", "x");
    library.AddMaterialToUseList("d", "unknown");
    std::filesystem::remove("Scripts/Materials/c/gone.mtl");
    WriteBytes("Textures/c/a.tga", TargaBytes(2, 2, 24));
    WriteScript("d/y", "");
    library.RefreshClass("C");
    EXPECT_EQ(Names(library), "c: a b, d: x");
    EXPECT_FALSE(library.Classes()[0].materials[0].used);
    EXPECT_TRUE(library.Classes()[0].materials[1].used);
    EXPECT_TRUE(library.Classes()[1].materials[0].used);
    library.Reset();
    EXPECT_FALSE(library.Classes()[0].materials[1].used);
    EXPECT_FALSE(library.Classes()[1].materials[0].used);
}

TEST_F(MaterialTest, FoldersThatCannotBeWrittenAreToldOnce) {
    WriteBytes("Textures/c/a.tga", TargaBytes(2, 2, 24));
    WriteBytes("Textures/d/b.tga", TargaBytes(2, 2, 24));
    WriteBytes("Scripts", "a file where the folder should be");
    MaterialLibrary library;
    library.ParseTextures();
    EXPECT_TRUE(library.Classes().empty());
    EXPECT_EQ(desktop.notices.size(), 1u);
}
