#include "files/Picture.h"

#include <algorithm>

#include "files/AtomicFile.h"
#include "files/DXTC.h"
#include "files/FileObject.h"
#include "foundation/Strings.h"

namespace {

constexpr uint8_t TRUE_COLOUR = 2, GREY = 3;               // imageType
constexpr uint8_t TOP_ROW_FIRST = 0x20, ALPHA_BITS = 0x0F; // of image_desc
constexpr size_t ENDING_LENGTH = 3;

enum class PictureKind { Unknown, Targa, DirectDraw };

PictureKind KindOfPath(std::string_view path) {
    if (path.size() <= ENDING_LENGTH + 1)
        return PictureKind::Unknown;
    const std::string_view ending = path.substr(path.size() - ENDING_LENGTH);
    return EqualNoCase(ending, "tga")   ? PictureKind::Targa
           : EqualNoCase(ending, "dds") ? PictureKind::DirectDraw
                                        : PictureKind::Unknown;
}

bool ReadHeader(FileObject& file, TGAHeaderStruct& header) {
    return file.Read(&header, sizeof header) == static_cast<int>(sizeof header);
}

bool IsReadablePixelSize(uint8_t pixel_size) { return pixel_size == 8 || pixel_size == 24 || pixel_size == 32; }

size_t PixelBytes(const TGAHeaderStruct& header) {
    return size_t{header.width} * header.height * (header.pixel_size / 8u);
}

TGAInfoStruct InfoOf(const TGAHeaderStruct& header) {
    TGAInfoStruct info;
    info.image_type = header.imageType;
    info.alpha_bits = header.image_desc & ALPHA_BITS;
    info.pixel_size = header.pixel_size;
    info.width = header.width;
    info.height = header.height;
    return info;
}

void TurnUpsideDown(std::vector<uint8_t>& pixels, size_t row_bytes) {
    if (pixels.empty())
        return;
    const size_t rows = pixels.size() / row_bytes;
    const auto row = [&](size_t i) { return pixels.begin() + static_cast<std::ptrdiff_t>(i * row_bytes); };
    for (size_t i = 0; i < rows / 2; ++i)
        std::swap_ranges(row(i), row(i + 1), row(rows - 1 - i));
}

} // namespace

PictureResult TGAClass::LoadImage(std::string_view path) {
    FileObject file(path, FO_Open);
    if (!file.IsValid())
        return PICTURE_CANNOT_OPEN;
    imgData.clear();
    TGA_header_loaded = false;
    PictureResult result = PICTURE_UNSUPPORTED;
    switch (KindOfPath(path)) {
    case PictureKind::Targa:
        result = LoadTarga(file);
        break;
    case PictureKind::DirectDraw:
        file.Close();
        result = Image_DXTC().LoadFromFileAsTGA(path, TGA_header, imgData, false) ? PICTURE_OK : PICTURE_CANNOT_OPEN;
        break;
    case PictureKind::Unknown:
        break;
    }
    TGA_header_loaded = result == PICTURE_OK;
    return result;
}

PictureResult TGAClass::LoadTarga(FileObject& file) {
    if (!ReadHeader(file, TGA_header))
        return PICTURE_CANNOT_OPEN;
    if (TGA_header.colorMap_type != 0 || (TGA_header.imageType != TRUE_COLOUR && TGA_header.imageType != GREY) ||
        !IsReadablePixelSize(TGA_header.pixel_size) || PixelBytes(TGA_header) == 0)
        return PICTURE_UNSUPPORTED;
    const size_t pixels_offset = sizeof TGA_header + TGA_header.IDField_bytes;
    const size_t size = PixelBytes(TGA_header);
    if (file.GetFileSize() < pixels_offset || size > file.GetFileSize() - pixels_offset)
        return PICTURE_CANNOT_OPEN;
    imgData.resize(size);
    if (file.Seek(static_cast<int64_t>(pixels_offset), FOPM_Start) != pixels_offset ||
        file.Read(imgData.data(), static_cast<uint32_t>(size)) != static_cast<int>(size)) {
        imgData.clear();
        return PICTURE_CANNOT_OPEN;
    }
    if (!(TGA_header.image_desc & TOP_ROW_FIRST)) {
        TGA_header.image_desc |= TOP_ROW_FIRST;
        TurnUpsideDown(imgData, size / TGA_header.height);
    }
    return PICTURE_OK;
}

PictureResult TGAClass::GetImageInfo(TGAInfoStruct& info) const {
    if (!TGA_header_loaded)
        return PICTURE_NO_HEADER;
    info = InfoOf(TGA_header);
    info.imgPtr = imgData.empty() ? nullptr : imgData.data();
    return PICTURE_OK;
}

PictureResult TGAClass::GetImageInfo(std::string_view path, TGAInfoStruct& info) {
    FileObject file(path, FO_Open);
    if (!file.IsValid())
        return PICTURE_CANNOT_OPEN;
    TGAHeaderStruct header;
    bool read = false;
    switch (KindOfPath(path)) {
    case PictureKind::Targa:
        read = ReadHeader(file, header);
        break;
    case PictureKind::DirectDraw: {
        std::vector<uint8_t> no_pixels;
        file.Close();
        read = Image_DXTC().LoadFromFileAsTGA(path, header, no_pixels, true);
        break;
    }
    case PictureKind::Unknown:
        return PICTURE_UNSUPPORTED;
    }
    if (!read)
        return PICTURE_CANNOT_OPEN;
    info = InfoOf(header);
    return PICTURE_OK;
}

PictureResult TGAClass::CreateNewImage(const TGAHeaderStruct& header) {
    if (!IsReadablePixelSize(header.pixel_size))
        return PICTURE_UNSUPPORTED;
    TGA_header = header;
    TGA_header_loaded = true;
    imgData.assign(PixelBytes(header), 0);
    return PICTURE_OK;
}

PictureResult TGAClass::SaveImage(std::string_view path) {
    if (!TGA_header_loaded || imgData.size() < PixelBytes(TGA_header))
        return PICTURE_NO_HEADER;
    AtomicFile file(path);
    TGA_header.IDField_bytes = 0;
    const bool written = file.Write(&TGA_header, sizeof TGA_header) &&
                         file.Write(imgData.data(), PixelBytes(TGA_header)) && file.Commit();
    return written ? PICTURE_OK : PICTURE_CANNOT_CREATE;
}
