#include "files/DXTC.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "files/FileObject.h"
#include "foundation/Strings.h"

static_assert(std::endian::native == std::endian::little, "records of files are read as they stand");

namespace {

constexpr uint32_t FLAG_FOUR_CC = 0x4, FLAG_RGB = 0x40; // of DDSPixelFormat
constexpr uint32_t LARGEST_SIDE = 16384;                // pixels
constexpr uint32_t BLOCK_SIDE = 4;
constexpr size_t COLOUR_BLOCK_BYTES = 8, ALPHA_BLOCK_BYTES = 8;
constexpr uint32_t OPAQUE = 0xFF000000, COLOUR_BITS = 0x00FFFFFF;
constexpr uint32_t TRANSPARENT = 0x00FFFF00; // the fourth colour of a three-colour block
constexpr uint32_t DXT1_BLUE_BITS = 0xF0;
constexpr uint8_t TARGA_TRUE_COLOUR = 2, TARGA_EIGHT_ALPHA_BITS = 8;

constexpr uint32_t FourCC(const char (&code)[5]) {
    return static_cast<uint32_t>(code[0]) | static_cast<uint32_t>(code[1]) << 8 | static_cast<uint32_t>(code[2]) << 16 |
           static_cast<uint32_t>(code[3]) << 24;
}

template <class T>
T Take(const uint8_t* bytes) {
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

struct Channels {
    uint32_t red, green, blue;
    uint32_t Word() const { return OPAQUE | blue << 16 | green << 8 | red; }
};

// The low bits stay 0: no bits are repeated.
Channels ChannelsOf565(uint32_t c) { return {(c >> 11) << 3, ((c >> 5) & 63) << 2, (c & 31) << 3}; }

Channels Blend(const Channels& a, const Channels& b, uint32_t part_a, uint32_t part_b) {
    const uint32_t whole = part_a + part_b;
    return {(part_a * a.red + part_b * b.red) / whole, (part_a * a.green + part_b * b.green) / whole,
            (part_a * a.blue + part_b * b.blue) / whole};
}

// A 4 by 4 piece of the picture in decoding.
struct Block {
    uint32_t* top_left;
    size_t pitch; // words from row to row
    uint32_t& Pixel(uint32_t x, uint32_t y) const { return top_left[y * pitch + x]; }
};

void DecodeColours(const uint8_t* source, const Block& block, bool always_four_colours) {
    const uint32_t first = Take<uint16_t>(source), second = Take<uint16_t>(source + 2);
    const Channels a = ChannelsOf565(first), b = ChannelsOf565(second);
    uint32_t table[4] = {a.Word(), b.Word()};
    if (first > second || always_four_colours) {
        table[2] = Blend(a, b, 2, 1).Word();
        table[3] = Blend(a, b, 1, 2).Word();
    } else {
        table[2] = Blend(a, b, 1, 1).Word();
        table[3] = TRANSPARENT;
    }
    for (uint32_t y = 0; y < BLOCK_SIDE; ++y)
        for (uint32_t x = 0; x < BLOCK_SIDE; ++x)
            block.Pixel(x, y) = table[source[4 + y] >> 2 * x & 3];
}

void SetAlpha(uint32_t& word, uint32_t alpha) { word = (word & COLOUR_BITS) | alpha << 24; }

void DecodeAlpha4Bit(const uint8_t* source, const Block& block) {
    for (uint32_t y = 0; y < BLOCK_SIDE; ++y) {
        const uint32_t row = Take<uint16_t>(source + 2 * y);
        for (uint32_t x = 0; x < BLOCK_SIDE; ++x) {
            const uint32_t n = row >> 4 * x & 15;
            SetAlpha(block.Pixel(x, y), n | n << 4);
        }
    }
}

void DecodeAlpha3BitLinear(const uint8_t* source, const Block& block) {
    const uint32_t a0 = source[0], a1 = source[1];
    uint32_t table[8] = {a0, a1};
    const uint32_t steps = a0 > a1 ? 7 : 5; // between the two alphas
    for (uint32_t i = 1; i < steps; ++i)
        table[i + 1] = ((steps - i) * a0 + i * a1) / steps;
    if (steps == 5) {
        table[6] = 0;
        table[7] = 255;
    }
    for (uint32_t pixel = 0; pixel < BLOCK_SIDE * BLOCK_SIDE; ++pixel) {
        const uint8_t* group = source + 2 + 3 * (pixel / 8); // 24 bits for eight pixels
        const uint32_t bits = group[0] | group[1] << 8 | group[2] << 16;
        SetAlpha(block.Pixel(pixel % BLOCK_SIDE, pixel / BLOCK_SIDE), table[bits >> 3 * (pixel % 8) & 7]);
    }
}

// The bits of a mask in a value, stretched to 0 to 255; 0 for an empty mask.
uint32_t ChannelByMask(uint32_t value, uint32_t mask) {
    if (mask == 0)
        return 0;
    const int shift = std::countr_zero(mask);
    const uint64_t most = mask >> shift;
    return static_cast<uint32_t>((uint64_t{(value & mask) >> shift} * 255 + most / 2) / most);
}

bool IsPlain(PixFormat format) { return format == PF_ARGB || format == PF_RGB; }
size_t BlockBytes(PixFormat format) {
    return format == PF_DXT1 ? COLOUR_BLOCK_BYTES : ALPHA_BLOCK_BYTES + COLOUR_BLOCK_BYTES;
}
// Blocks from row to row in the file: a row holds a block for each begun group of four pixels.
size_t BlockPitch(uint32_t width) { return (width + BLOCK_SIDE - 1) / BLOCK_SIDE; }

} // namespace

PixFormat Image_DXTC::DecodePixelFormat(std::string& name, const DDSPixelFormat& format) {
    struct Code {
        uint32_t four_cc;
        const char* name;
        PixFormat format;
    };
    static constexpr Code CODES[] = {{FourCC("DXT1"), "DXT1", PF_DXT1},
                                     {FourCC("DXT2"), "DXT2", PF_DXT2},
                                     {FourCC("DXT3"), "DXT3", PF_DXT3},
                                     {FourCC("DXT4"), "DXT4", PF_DXT4},
                                     {FourCC("DXT5"), "DXT5", PF_DXT5}};
    name = "Format Unknown";
    if (format.flags & FLAG_FOUR_CC) {
        for (const Code& code : CODES)
            if (code.four_cc == format.four_cc) {
                name = code.name;
                return code.format;
            }
        return PF_UNKNOWN;
    }
    const bool whole_bytes = format.bit_count % 8 == 0 && format.bit_count >= 8 && format.bit_count <= 32;
    if (!(format.flags & FLAG_RGB) || !whole_bytes)
        return PF_UNKNOWN;
    name = Format("ARGB-%d%d%d%d", std::popcount(format.alpha_mask), std::popcount(format.red_mask),
                  std::popcount(format.green_mask), std::popcount(format.blue_mask));
    return format.alpha_mask ? PF_ARGB : PF_RGB;
}

bool Image_DXTC::LoadFromFileAsTGA(std::string_view path, TGAHeaderStruct& header, std::vector<uint8_t>& pixels,
                                   bool header_only) {
    FileObject file(path, FO_Open);
    char magic[4];
    if (!file.IsValid() || file.Read(magic, sizeof magic) != static_cast<int>(sizeof magic) ||
        std::memcmp(magic, "DDS ", sizeof magic) != 0 ||
        file.Read(&m_DDSD, sizeof m_DDSD) != static_cast<int>(sizeof m_DDSD))
        return false;
    std::string format_name;
    m_CompFormat = DecodePixelFormat(format_name, m_DDSD.format);
    m_nWidth = m_DDSD.width;
    m_nHeight = m_DDSD.height;
    if (m_CompFormat > PF_DXT5 || m_nWidth == 0 || m_nHeight == 0 || m_nWidth > LARGEST_SIDE ||
        m_nHeight > LARGEST_SIDE)
        return false;

    const bool has_alpha = m_CompFormat != PF_RGB && m_CompFormat != PF_DXT1;
    header = {};
    header.imageType = TARGA_TRUE_COLOUR;
    header.width = static_cast<uint16_t>(m_nWidth);
    header.height = static_cast<uint16_t>(m_nHeight);
    header.pixel_size = has_alpha ? 32 : 24;
    header.image_desc = has_alpha ? TARGA_EIGHT_ALPHA_BITS : 0;
    if (header_only)
        return true;

    if (!file.ReadAll(m_CompBytes) || m_CompBytes.size() < NeededBytes())
        return false;
    m_DecompWords.assign(size_t{m_nWidth} * m_nHeight, 0);
    if (IsPlain(m_CompFormat))
        DecodePlainPixels();
    else
        Decompress();
    TakePixels(pixels);
    return true;
}

size_t Image_DXTC::NeededBytes() const {
    if (IsPlain(m_CompFormat))
        return size_t{m_nWidth} * m_nHeight * (m_DDSD.format.bit_count / 8);
    const size_t columns = m_nWidth / BLOCK_SIDE, rows = m_nHeight / BLOCK_SIDE;
    if (columns == 0 || rows == 0)
        return 0;
    return ((rows - 1) * BlockPitch(m_nWidth) + columns) * BlockBytes(m_CompFormat);
}

// The top level; only whole blocks are decoded.
void Image_DXTC::Decompress() {
    if (m_CompFormat == PF_DXT2 || m_CompFormat == PF_DXT4)
        return;
    const size_t block_bytes = BlockBytes(m_CompFormat);
    for (uint32_t y = 0; y < m_nHeight / BLOCK_SIDE; ++y)
        for (uint32_t x = 0; x < m_nWidth / BLOCK_SIDE; ++x) {
            const uint8_t* source = m_CompBytes.data() + (y * BlockPitch(m_nWidth) + x) * block_bytes;
            const Block block = {m_DecompWords.data() + size_t{y} * BLOCK_SIDE * m_nWidth + x * BLOCK_SIDE, m_nWidth};
            if (m_CompFormat == PF_DXT1) {
                DecodeColours(source, block, false);
                continue;
            }
            DecodeColours(source + ALPHA_BLOCK_BYTES, block, true);
            if (m_CompFormat == PF_DXT3)
                DecodeAlpha4Bit(source, block);
            else
                DecodeAlpha3BitLinear(source, block);
        }
}

void Image_DXTC::DecodePlainPixels() {
    const DDSPixelFormat& format = m_DDSD.format;
    const size_t pixel_bytes = format.bit_count / 8;
    const uint8_t* source = m_CompBytes.data();
    for (uint32_t& word : m_DecompWords) {
        uint32_t value = 0;
        std::memcpy(&value, source, pixel_bytes);
        source += pixel_bytes;
        word = ChannelByMask(value, format.red_mask) | ChannelByMask(value, format.green_mask) << 8 |
               ChannelByMask(value, format.blue_mask) << 16 | ChannelByMask(value, format.alpha_mask) << 24;
    }
}

void Image_DXTC::TakePixels(std::vector<uint8_t>& pixels) const {
    const bool has_alpha = m_CompFormat != PF_RGB && m_CompFormat != PF_DXT1;
    const uint32_t blue_bits = m_CompFormat == PF_DXT1 ? DXT1_BLUE_BITS : 0xFF;
    pixels.resize(m_DecompWords.size() * (has_alpha ? 4 : 3));
    uint8_t* target = pixels.data();
    for (const uint32_t word : m_DecompWords) {
        *target++ = static_cast<uint8_t>(word >> 16 & blue_bits);
        *target++ = static_cast<uint8_t>(word >> 8);
        *target++ = static_cast<uint8_t>(word);
        if (has_alpha)
            *target++ = static_cast<uint8_t>(word >> 24);
    }
}
