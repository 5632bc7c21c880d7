// Pictures: uncompressed Targa files, and DDS files shown as if they were Targa.
#pragma once

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

class FileObject;

#pragma pack(push, 1)
struct TGAHeaderStruct {
    uint8_t IDField_bytes = 0, colorMap_type = 0, imageType = 0;
    uint16_t colorMap_origin = 0, colorMap_length = 0;
    uint8_t colorMap_entry_size = 0;
    uint16_t x = 0, y = 0, width = 0, height = 0; // pixels
    uint8_t pixel_size = 0;                       // bits per pixel: 8, 24 or 32
    uint8_t image_desc = 0;                       // low four bits: alpha bits; 0x20: top row first
};
#pragma pack(pop)
static_assert(sizeof(TGAHeaderStruct) == 18);

struct TGAInfoStruct {
    uint8_t image_type = 0, alpha_bits = 0;
    const uint8_t* imgPtr = nullptr; // owned by the TGAClass; null from the path form
    uint8_t pixel_size = 0;
    uint16_t width = 0, height = 0;
};

enum PictureResult {
    PICTURE_OK = 0,
    PICTURE_CANNOT_OPEN = 1, // also: it breaks off
    PICTURE_NO_HEADER = 3,
    PICTURE_UNSUPPORTED = 4,
    PICTURE_CANNOT_CREATE = 5
};

class TGAClass {
public:
    virtual ~TGAClass() = default;

    // Rows from the top, tightly packed, blue green red (alpha), or grey. Bit 5 of image_desc is then set for a Targa.
    PictureResult LoadImage(std::string_view path);
    PictureResult GetImageInfo(TGAInfoStruct& info) const;                         // of the loaded picture
    static PictureResult GetImageInfo(std::string_view path, TGAInfoStruct& info); // reads only the header
    PictureResult CreateNewImage(const TGAHeaderStruct& header);                   // zeroed pixels
    PictureResult SaveImage(std::string_view path);
    void SetNewImgPtr(std::vector<uint8_t> pixels) { imgData = std::move(pixels); }
    void UnLoadImage() { imgData.clear(); }
    uint8_t* Pixels() { return imgData.data(); }
    const std::vector<uint8_t>& PixelData() const { return imgData; }

private:
    PictureResult LoadTarga(FileObject& file);

    std::vector<uint8_t> imgData;
    bool TGA_header_loaded = false;
    TGAHeaderStruct TGA_header;
};
