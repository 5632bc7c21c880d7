#include "files/Picture.h"
#include "files/Bytes.h"
#include "files/DXTC.h"
#include "foundation/TempFolder.h"

#include <gtest/gtest.h>

namespace {

std::string Targa(uint8_t type, uint16_t width, uint16_t height, uint8_t bits, uint8_t desc, const std::string& id,
                  const std::string& pixels, uint8_t color_map = 0) {
    return Raw(static_cast<uint8_t>(id.size())) + Raw(color_map) + Raw(type) + Short(0) + Short(0) + Raw(uint8_t{0}) +
           Short(0) + Short(0) + Short(width) + Short(height) + Raw(bits) + Raw(desc) + id + pixels;
}

struct Masks {
    uint32_t bits, red, green, blue, alpha;
};

std::string Dds(uint32_t width, uint32_t height, const std::string& four_cc, const std::string& data,
                const Masks& masks = {}) {
    const std::string format = Word(32) + (four_cc.empty() ? Word(0x40) + Word(0) : Word(4) + four_cc) +
                               Word(masks.bits) + Word(masks.red) + Word(masks.green) + Word(masks.blue) +
                               Word(masks.alpha);
    return "DDS " + Word(124) + Word(0x1007) + Word(height) + Word(width) + Word(0) + Word(0) + Word(1) +
           std::string(44, '\0') + format + std::string(20, '\0') + data;
}

std::string Pixels(const TGAClass& picture) { return {picture.PixelData().begin(), picture.PixelData().end()}; }

// Of the words that decoding gives: red lowest, alpha highest. Blue, green, red, alpha in the result.
std::string Bgra(std::initializer_list<uint32_t> words) {
    std::string bytes;
    for (const uint32_t word : words)
        for (const int shift : {16, 8, 0, 24})
            bytes += static_cast<char>(word >> shift);
    return bytes;
}
std::string FirstPixels(const TGAClass& picture, size_t count, size_t size) {
    return Pixels(picture).substr(0, count * size);
}

} // namespace

class Pictures : public testing::Test {
protected:
    PictureResult Load(const std::string& name, const std::string& bytes) {
        WriteBytes(folder / name, bytes);
        return picture.LoadImage(folder / name);
    }
    TGAInfoStruct Info() {
        TGAInfoStruct info;
        EXPECT_EQ(picture.GetImageInfo(info), PICTURE_OK);
        return info;
    }

    TempFolder folder;
    TGAClass picture;
};

TEST_F(Pictures, TargaRowsComeFromTheTop) {
    const std::string rows = "aaabbb"
                             "cccddd"
                             "eeefff"; // three rows of two pixels
    ASSERT_EQ(Load("up.TGA", Targa(2, 2, 3, 24, 0, "the id field", rows)), PICTURE_OK);
    EXPECT_EQ(Pixels(picture), "eeefff"
                               "cccddd"
                               "aaabbb");
    ASSERT_EQ(picture.SaveImage(folder / "saved.tga"), PICTURE_OK);
    EXPECT_EQ(ReadBytes(folder / "saved.tga"), Targa(2, 2, 3, 24, 0x20, "",
                                                     "eeefff"
                                                     "cccddd"
                                                     "aaabbb"));
    ASSERT_EQ(Load("down.tga", Targa(2, 2, 3, 24, 0x20, "", rows + "a footer")), PICTURE_OK);
    EXPECT_EQ(Pixels(picture), rows);
    ASSERT_EQ(Load("alpha.tga", Targa(2, 1, 2, 32, 8, "", "aaaabbbb")), PICTURE_OK);
    EXPECT_EQ(Pixels(picture), "bbbbaaaa");
    const TGAInfoStruct info = Info();
    EXPECT_EQ(info.alpha_bits, 8);
    EXPECT_EQ(info.pixel_size, 32);
    EXPECT_EQ(info.height, 2);
    EXPECT_EQ(info.imgPtr, picture.Pixels());
    ASSERT_EQ(Load("grey.tga", Targa(3, 4, 1, 8, 0, "", "abcd")), PICTURE_OK);
    EXPECT_EQ(Info().image_type, 3);
    TGAInfoStruct on_disk;
    EXPECT_EQ(TGAClass::GetImageInfo(folder / "alpha.tga", on_disk), PICTURE_OK);
    EXPECT_EQ(on_disk.width, 1);
    EXPECT_EQ(on_disk.imgPtr, nullptr);
}

TEST_F(Pictures, WhatIsRefused) {
    struct Case {
        const char* name;
        std::string bytes;
        PictureResult result;
    };
    const std::string pixels(12, 'x');
    const Case cases[] = {
        {"packed.tga", Targa(10, 2, 2, 24, 0, "", pixels), PICTURE_UNSUPPORTED},
        {"mapped.tga", Targa(2, 2, 2, 24, 0, "", pixels, 1), PICTURE_UNSUPPORTED},
        {"sixteen.tga", Targa(2, 2, 2, 16, 0, "", pixels), PICTURE_UNSUPPORTED},
        {"empty.tga", Targa(2, 0, 2, 24, 0, "", pixels), PICTURE_UNSUPPORTED},
        {"short.tga", Targa(2, 2, 2, 24, 0, "", pixels.substr(1)), PICTURE_CANNOT_OPEN},
        {"huge.tga", Targa(2, 65535, 65535, 32, 0, "", pixels), PICTURE_CANNOT_OPEN},
        {"header.tga", Targa(2, 2, 2, 24, 0, "", "").substr(0, 17), PICTURE_CANNOT_OPEN},
        {"picture.bmp", Targa(2, 2, 2, 24, 0, "", pixels), PICTURE_UNSUPPORTED},
        {"text.dds", "not a picture", PICTURE_CANNOT_OPEN},
        {"dxt6.dds", Dds(4, 4, "DXT6", std::string(64, 'x')), PICTURE_CANNOT_OPEN},
        {"none.dds", Dds(0, 4, "DXT1", std::string(64, 'x')), PICTURE_CANNOT_OPEN},
        {"wide.dds", Dds(16385, 4, "DXT1", std::string(64, 'x')), PICTURE_CANNOT_OPEN},
        {"hollow.dds", Dds(16384, 16384, "DXT2", ""), PICTURE_CANNOT_OPEN},
        {"short.dds", Dds(8, 8, "DXT5", std::string(63, 'x')), PICTURE_CANNOT_OPEN},
        {"plain.dds", Dds(2, 2, "", pixels.substr(1), {24, 0xFF0000, 0xFF00, 0xFF, 0}), PICTURE_CANNOT_OPEN},
        {"twelve.dds", Dds(2, 2, "", pixels, {12, 0xF00, 0xF0, 0xF, 0}), PICTURE_CANNOT_OPEN},
    };
    TGAInfoStruct info;
    for (const Case& c : cases) {
        EXPECT_EQ(Load(c.name, c.bytes), c.result) << c.name;
        EXPECT_EQ(picture.GetImageInfo(info), PICTURE_NO_HEADER) << c.name;
        EXPECT_EQ(picture.SaveImage(folder / "never.tga"), PICTURE_NO_HEADER);
    }
    EXPECT_EQ(picture.LoadImage(folder / "absent.tga"), PICTURE_CANNOT_OPEN);
    EXPECT_EQ(TGAClass::GetImageInfo(folder / "absent.tga", info), PICTURE_CANNOT_OPEN);
    EXPECT_EQ(TGAClass::GetImageInfo(folder / "picture.bmp", info), PICTURE_UNSUPPORTED);
    const CurrentFolder inside(folder.Path());
    WriteBytes(".tga", Targa(2, 2, 2, 24, 0, "", pixels));
    EXPECT_EQ(picture.LoadImage(".tga"), PICTURE_UNSUPPORTED) << "a path of four characters has no ending";
}

TEST_F(Pictures, NewPictures) {
    TGAHeaderStruct header;
    header.imageType = 2;
    header.width = 2;
    header.height = 1;
    header.pixel_size = 15;
    EXPECT_EQ(picture.CreateNewImage(header), PICTURE_UNSUPPORTED);
    header.pixel_size = 24;
    header.IDField_bytes = 9;
    ASSERT_EQ(picture.CreateNewImage(header), PICTURE_OK);
    EXPECT_EQ(Pixels(picture), std::string(6, '\0'));
    picture.Pixels()[4] = 'g';
    EXPECT_EQ(picture.SaveImage(folder / "new.tga"), PICTURE_OK);
    EXPECT_EQ(ReadBytes(folder / "new.tga"), Targa(2, 2, 1, 24, 0, "", std::string("\0\0\0\0g\0", 6)));
    EXPECT_EQ(picture.SaveImage(folder / "no/new.tga"), PICTURE_CANNOT_CREATE);
    picture.SetNewImgPtr({1, 2, 3});
    EXPECT_NE(picture.SaveImage(folder / "new.tga"), PICTURE_OK) << "too few pixels";
}

TEST_F(Pictures, Dxt1Blocks) {
    // Red 0xF800 above green 0x07E0: two thirds and one third between them.
    const std::string four = Short(0xF800) + Short(0x07E0) + "\xE4" + std::string(3, '\0');
    ASSERT_EQ(Load("a.dds", Dds(4, 4, "DXT1", four)), PICTURE_OK);
    EXPECT_EQ(Info().pixel_size, 24);
    EXPECT_EQ(Info().alpha_bits, 0);
    EXPECT_EQ(Info().image_type, 2);
    // The first row takes the colours 0 1 2 3: 248 red; 252 green; (2*248/3, 252/3); (248/3, 2*252/3).
    EXPECT_EQ(FirstPixels(picture, 4, 3), std::string("\0\0\xF8\0\xFC\0\0\x54\xA5\0\xA8\x52", 12));
    // Blue 0x001F below white 0xFFFF: the mean, and the transparent colour with green and blue at full. Blue loses its
    // lowest bits: 248 shows as 240.
    const std::string three = Short(0x001F) + Short(0xFFFF) + "\xE4" + std::string(3, '\0');
    ASSERT_EQ(Load("b.dds", Dds(4, 4, "DXT1", three)), PICTURE_OK);
    EXPECT_EQ(FirstPixels(picture, 4, 3), std::string("\xF0\0\0\xF0\xFC\xF8\xF0\x7E\x7C\xF0\xFF\0", 12));
}

TEST_F(Pictures, OnlyWholeBlocksAreDecoded) {
    const auto plain = [](uint16_t colour) { return Short(colour) + Short(0) + Word(0); };
    // 6 by 9 pixels: two columns and three rows of blocks, of which one column and two rows are whole.
    const std::string data =
        plain(0xF800) + plain(0x07E0) + plain(0x001F) + plain(0x07E0) + plain(0x07E0) + plain(0x07E0);
    ASSERT_EQ(Load("a.DDS", Dds(6, 9, "DXT1", data)), PICTURE_OK);
    for (size_t y = 0; y < 9; ++y)
        for (size_t x = 0; x < 6; ++x) {
            const std::string expected = x >= 4 || y == 8 ? std::string(3, '\0')
                                         : y < 4          ? std::string("\0\0\xF8", 3)
                                                          : std::string("\xF0\0\0", 3);
            EXPECT_EQ(Pixels(picture).substr((y * 6 + x) * 3, 3), expected) << x << " " << y;
        }
}

TEST_F(Pictures, Dxt3AndDxt5Alpha) {
    // White below black: still four colours. Row 0 takes the colours 0 1 2 3.
    const std::string colours = Short(0x0000) + Short(0xFFFF) + "\xE4" + std::string(3, '\0');
    const std::string alpha4 = Short(0xF810) + std::string(6, '\0');
    ASSERT_EQ(Load("a.dds", Dds(4, 4, "DXT3", alpha4 + colours)), PICTURE_OK);
    EXPECT_EQ(Info().pixel_size, 32);
    EXPECT_EQ(Info().alpha_bits, 8);
    EXPECT_EQ(FirstPixels(picture, 4, 4), Bgra({0x00000000, 0x11F8FCF8, 0x88525452, 0xFFA5A8A5}));
    EXPECT_EQ(FirstPixels(picture, 5, 4).substr(16), Bgra({0}));

    struct Case {
        uint8_t a0, a1;
        std::vector<uint8_t> alphas;
    };
    const Case cases[] = {{240, 30, {240, 30, 210, 180, 150, 120, 90, 60}}, // sevenths of 210
                          {30, 240, {30, 240, 72, 114, 156, 198, 0, 255}},  // fifths of 210
                          {100, 100, {100, 100, 100, 100, 100, 100, 0, 255}}};
    for (const Case& c : cases) {
        // The 16 pixels take the alphas 0 to 7, twice: 24 bits of octal 76543210 each.
        const std::string indices = Word(076543210).substr(0, 3) + Word(076543210).substr(0, 3);
        ASSERT_EQ(Load("b.dds", Dds(4, 4, "DXT5", Raw(c.a0) + Raw(c.a1) + indices + colours)), PICTURE_OK);
        for (size_t i = 0; i < 16; ++i)
            EXPECT_EQ(picture.PixelData()[i * 4 + 3], c.alphas[i % 8]) << i;
        EXPECT_EQ(Pixels(picture).substr(4, 3), "\xF8\xFC\xF8");
    }
}

TEST_F(Pictures, OtherDdsFormats) {
    ASSERT_EQ(Load("a.dds", Dds(4, 4, "DXT2", std::string(16, 'x'))), PICTURE_OK);
    EXPECT_EQ(Pixels(picture), std::string(64, '\0'));
    ASSERT_EQ(Load("b.dds", Dds(2, 1, "", "bgrBGR", {24, 0xFF0000, 0xFF00, 0xFF, 0})), PICTURE_OK);
    EXPECT_EQ(Pixels(picture), "bgrBGR");
    EXPECT_EQ(Info().pixel_size, 24);
    ASSERT_EQ(Load("c.dds", Dds(1, 1, "", "rgba", {32, 0xFF, 0xFF00, 0xFF0000, 0xFF000000})), PICTURE_OK);
    EXPECT_EQ(Pixels(picture), "bgra");
    // 1:5:5:5 bits: alpha 1, red 31, green 0, blue 16 (132 of 255).
    ASSERT_EQ(Load("d.dds", Dds(1, 1, "", Short(0xFC10), {16, 0x7C00, 0x3E0, 0x1F, 0x8000})), PICTURE_OK);
    EXPECT_EQ(Pixels(picture), std::string("\x84\0\xFF\xFF", 4));
    TGAInfoStruct info;
    ASSERT_EQ(TGAClass::GetImageInfo(folder / "d.dds", info), PICTURE_OK);
    EXPECT_EQ(info.pixel_size, 32);

    std::string name;
    EXPECT_EQ(Image_DXTC::DecodePixelFormat(name, {32, 4, 0x35545844, 0, 0, 0, 0, 0}), PF_DXT5);
    EXPECT_EQ(name, "DXT5");
    EXPECT_EQ(Image_DXTC::DecodePixelFormat(name, {32, 0x41, 0, 16, 0x7C00, 0x3E0, 0x1F, 0x8000}), PF_ARGB);
    EXPECT_EQ(name, "ARGB-1555");
    EXPECT_EQ(Image_DXTC::DecodePixelFormat(name, {32, 4, 0x36545844, 0, 0, 0, 0, 0}), PF_UNKNOWN);
    EXPECT_EQ(name, "Format Unknown");
}

TEST_F(Pictures, SurviveAnyDamage) {
    const std::string targa = Targa(2, 3, 2, 32, 0, "id", std::string(24, 'x'));
    const std::string dds = Dds(8, 8, "DXT5", std::string(64, 'x'));
    for (const auto& [name, good] : {std::pair(std::string("x.tga"), targa), std::pair(std::string("x.dds"), dds)}) {
        ASSERT_EQ(Load(name, good), PICTURE_OK);
        for (size_t length = 0; length < good.size(); ++length)
            EXPECT_EQ(Load(name, good.substr(0, length)), PICTURE_CANNOT_OPEN) << name << " " << length;
        for (size_t i = 0; i < good.size() * 8; ++i) {
            std::string bad = good;
            bad[i / 8] = static_cast<char>(bad[i / 8] ^ 1 << i % 8);
            TGAInfoStruct info;
            if (Load(name, bad) == PICTURE_OK && picture.GetImageInfo(info) == PICTURE_OK) {
                const size_t expected = size_t{info.width} * info.height * (info.pixel_size / 8u);
                EXPECT_EQ(picture.PixelData().size(), expected);
            }
        }
    }
}
