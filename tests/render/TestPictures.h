// Small pictures for tests, as bytes of their files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// An uncompressed Targa, top row first, of words 0xAARRGGBB; 8 bits a pixel keep the blue byte.
inline std::string TargaBytes(int width, int height, int bits, const std::vector<uint32_t>& argb) {
    std::string bytes(18, '\0');
    bytes[2] = bits == 8 ? 3 : 2;
    bytes[12] = static_cast<char>(width & 255), bytes[13] = static_cast<char>(width >> 8);
    bytes[14] = static_cast<char>(height & 255), bytes[15] = static_cast<char>(height >> 8);
    bytes[16] = static_cast<char>(bits);
    bytes[17] = static_cast<char>(bits == 32 ? 0x28 : 0x20);
    for (const uint32_t word : argb)
        for (int shift = 0; shift < bits; shift += 8)
            bytes += static_cast<char>(word >> shift & 255);
    return bytes;
}

inline std::string TargaBytes(int width, int height, int bits, uint32_t argb = 0) {
    return TargaBytes(width, height, bits,
                      std::vector<uint32_t>(static_cast<size_t>(width) * static_cast<size_t>(height), argb));
}

// A DXT1 picture of one block in one colour, a 5:6:5 word.
inline std::string Dxt1Bytes(uint16_t color) {
    std::string bytes = "DDS ";
    bytes.resize(128 + 8);
    const auto put = [&](size_t at, uint32_t value) {
        for (size_t i = 0; i < 4; ++i)
            bytes[at + i] = static_cast<char>(value >> 8 * i & 255);
    };
    put(4, 124);
    put(8, 0x1007);
    put(12, 4), put(16, 4);
    put(76, 32), put(80, 4);
    bytes.replace(84, 4, "DXT1");
    put(108, 0x1000);
    put(128, color);
    return bytes;
}
