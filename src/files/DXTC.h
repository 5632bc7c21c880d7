// DDS files, compressed (DXT1, DXT3, DXT5) or with plain pixels, presented as Targa pictures.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "files/Picture.h"

enum PixFormat { PF_ARGB, PF_RGB, PF_DXT1, PF_DXT2, PF_DXT3, PF_DXT4, PF_DXT5, PF_UNKNOWN };

// The published records of a DDS file, behind its four magic bytes.
struct DDSPixelFormat {
    uint32_t size, flags, four_cc, bit_count, red_mask, green_mask, blue_mask, alpha_mask;
};
struct DDSDescription {
    uint32_t size, flags, height, width, pitch, depth, mip_map_count, reserved1[11];
    DDSPixelFormat format;
    uint32_t caps[4], reserved2;
};
static_assert(sizeof(DDSPixelFormat) == 32 && sizeof(DDSDescription) == 124);

class Image_DXTC {
public:
    virtual ~Image_DXTC() = default;

    // Rows from the top: blue, green, red for formats without alpha and DXT1, else blue, green, red, alpha. DXT2 and
    // DXT4 are recognised and give zeros. False for a file that cannot be read or breaks off.
    bool LoadFromFileAsTGA(std::string_view path, TGAHeaderStruct& header, std::vector<uint8_t>& pixels,
                           bool header_only);
    // The name is that of the code, or tells the bits of alpha, red, green and blue.
    static PixFormat DecodePixelFormat(std::string& name, const DDSPixelFormat& format);

private:
    size_t NeededBytes() const; // of m_CompBytes, for the top level
    void Decompress();
    void DecodePlainPixels();
    void TakePixels(std::vector<uint8_t>& pixels) const;

    std::vector<uint8_t> m_CompBytes;    // the file behind its headers
    std::vector<uint32_t> m_DecompWords; // a word a pixel: red in the lowest byte, then green, blue, alpha
    PixFormat m_CompFormat = PF_UNKNOWN;
    DDSDescription m_DDSD = {};
    uint32_t m_nWidth = 0, m_nHeight = 0;
};
