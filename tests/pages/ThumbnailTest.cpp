#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include "foundation/TempFolder.h"
#include "pages/Thumbnails.h"
#include "render/TestPictures.h"

namespace {

uint32_t At(const Thumbnail& thumbnail, int x, int y) {
    return thumbnail.pixels[static_cast<size_t>(y * thumbnail.Side() + x)];
}

void SetTime(const char* path, int64_t seconds) {
    const timespec times[2] = {{seconds, 0}, {seconds, 0}};
    utimensat(AT_FDCWD, path, times, 0);
}

int64_t TimeOf(const char* path) {
    struct stat status {};
    stat(path, &status);
    return status.st_mtim.tv_sec;
}

constexpr uint32_t FIELD = 0xFF404040;

class ThumbnailTest : public testing::Test {
protected:
    ThumbnailTest() : current(folder.Path()) {}
    TempFolder folder;
    CurrentFolder current;
};

} // namespace

TEST_F(ThumbnailTest, SmallImagesStandInTheMiddle) {
    WriteBytes("Textures/c/small.tga", TargaBytes(8, 4, 24, 0x102030));
    Thumbnail thumbnail;
    ASSERT_TRUE(MakeThumbnail("c", "small", thumbnail));
    EXPECT_EQ(thumbnail.texture_size, (SIZE{8, 4}));
    for (int y = 0; y < THUMBNAIL_SIDE; ++y)
        for (int x = 0; x < THUMBNAIL_SIDE; ++x) {
            const bool inside = x >= 28 && x < 36 && y >= 30 && y < 34;
            ASSERT_EQ(At(thumbnail, x, y), inside ? 0xFF102030 : FIELD) << x << "," << y;
        }
    EXPECT_FALSE(MakeThumbnail("c", "absent", thumbnail));
    EXPECT_EQ(At(thumbnail, 30, 31), FIELD);
}

TEST_F(ThumbnailTest, LargeImagesShrinkByTheirLongerSide) {
    std::vector<uint32_t> halves(256 * 128, 0x0000FF); // left half blue, right half red
    for (size_t i = 0; i < halves.size(); ++i)
        if (i % 256 >= 128)
            halves[i] = 0xFF0000;
    WriteBytes("Textures/c/large.tga", TargaBytes(256, 128, 24, halves));
    Thumbnail thumbnail;
    ASSERT_TRUE(MakeThumbnail("c", "large", thumbnail));
    EXPECT_EQ(At(thumbnail, 0, 15), FIELD);
    EXPECT_EQ(At(thumbnail, 0, 16), 0xFF0000FFu);
    EXPECT_EQ(At(thumbnail, 63, 47), 0xFFFF0000u);
    EXPECT_EQ(At(thumbnail, 63, 48), FIELD);
}

TEST_F(ThumbnailTest, FineScreensHaveEveryTexelAndTheCacheStays) {
    std::vector<uint32_t> stripes(128 * 128, 0x000000);
    for (size_t i = 0; i < stripes.size(); ++i)
        if (i % 2 == 1)
            stripes[i] = 0xFFFFFF;
    WriteBytes("Textures/c/fine.tga", TargaBytes(128, 128, 24, stripes));
    WriteBytes("Textures/c/small.tga", TargaBytes(8, 4, 24, 0x102030));
    Thumbnail coarse, fine(2), small(2);
    ASSERT_TRUE(MakeThumbnail("c", "fine", coarse));
    EXPECT_EQ(At(coarse, 20, 20), 0xFF7F7F7Fu) << "a mean of both stripes";
    const std::string cached = ReadBytes("Marrowstead/Cache/c/fine.tga");
    ASSERT_TRUE(MakeThumbnail("c", "fine", fine));
    ASSERT_EQ(fine.Side(), 128);
    for (const int x : {20, 21, 127})
        EXPECT_EQ(At(fine, x, 40), x % 2 == 1 ? 0xFFFFFFFFu : 0xFF000000u);
    EXPECT_EQ(ReadBytes("Marrowstead/Cache/c/fine.tga"), cached);
    fine.DrawFrame(true);
    EXPECT_EQ(At(fine, 1, 60), 0xFFFF0000u);
    EXPECT_NE(At(fine, 2, 60), 0xFFFF0000u);
    ASSERT_TRUE(MakeThumbnail("c", "small", small));
    for (const auto& [x, y] : {std::pair{56, 60}, std::pair{71, 67}}) // as large as at scale 1
        EXPECT_EQ(At(small, x, y), 0xFF102030u);
    EXPECT_EQ(At(small, 55, 60), FIELD);
    EXPECT_EQ(At(small, 72, 67), FIELD);
}

TEST_F(ThumbnailTest, AlphaIsABlendTowardGrey) {
    // 64 + (192 - 64) * 128 / 255 = 128, 64 + (0 - 64) * 128 / 255 = 32 both cut toward 64
    WriteBytes("Textures/c/glass.tga", TargaBytes(64, 64, 32, 0x80C00040));
    Thumbnail thumbnail;
    ASSERT_TRUE(MakeThumbnail("c", "glass", thumbnail));
    EXPECT_EQ(At(thumbnail, 5, 5), 0xFF802040u);
}

TEST_F(ThumbnailTest, TheCacheFileCarriesTheTimeOfTheImage) {
    WriteBytes("Textures/c/m.tga", TargaBytes(64, 64, 24, 0x111111));
    SetTime("Textures/c/m.tga", 1000000);
    Thumbnail thumbnail;
    ASSERT_TRUE(MakeThumbnail("c", "m", thumbnail));
    const char* cached = "Marrowstead/Cache/c/m.tga";
    EXPECT_EQ(TimeOf(cached), 1000000);
    EXPECT_EQ(ReadBytes(cached).size(), 18u + 64 * 64 * 3);

    WriteBytes(cached, TargaBytes(64, 64, 24, 0x222222)); // told from a picture made anew
    SetTime(cached, 1000002);
    ASSERT_TRUE(MakeThumbnail("c", "m", thumbnail));
    EXPECT_EQ(At(thumbnail, 1, 1), 0xFF222222u) << "less than 3 seconds apart: taken as it is";
    EXPECT_EQ(thumbnail.texture_size, (SIZE{64, 64}));
    SetTime(cached, 1000003);
    ASSERT_TRUE(MakeThumbnail("c", "m", thumbnail));
    EXPECT_EQ(At(thumbnail, 1, 1), 0xFF111111u);
    EXPECT_EQ(TimeOf(cached), 1000000);

    WriteBytes(cached, "no picture");
    SetTime(cached, 1000000);
    ASSERT_TRUE(MakeThumbnail("c", "m", thumbnail));
    EXPECT_EQ(At(thumbnail, 1, 1), 0xFF111111u) << "a damaged one is made anew";
}

TEST_F(ThumbnailTest, FramesAndPictures) {
    Thumbnail thumbnail;
    thumbnail.DrawFrame(true);
    EXPECT_EQ(At(thumbnail, 0, 63), 0xFFFF0000u);
    EXPECT_EQ(At(thumbnail, 63, 17), 0xFFFF0000u);
    EXPECT_EQ(At(thumbnail, 1, 1), FIELD);
    WriteBytes("wide_th.tga", TargaBytes(65, 64, 24, 0x0A0B0C));
    ASSERT_TRUE(LoadThumbnailPicture("wide_th.tga", thumbnail));
    EXPECT_EQ(At(thumbnail, 63, 63), 0xFF0A0B0Cu);
    WriteBytes("low_th.tga", TargaBytes(64, 63, 24));
    EXPECT_FALSE(LoadThumbnailPicture("low_th.tga", thumbnail));
    EXPECT_FALSE(LoadThumbnailPicture("absent.tga", thumbnail));
}
