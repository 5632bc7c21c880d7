// Little-endian bytes by hand, and made-up data.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

template <class T>
std::string Raw(T value) {
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}
inline std::string Word(uint32_t value) { return Raw(value); }
inline std::string Short(uint16_t value) { return Raw(value); }

// Bytes that repeat often enough to pack, and differ at every place a reader could slip to.
inline std::vector<uint8_t> TextLikeBytes(size_t size, uint32_t seed = 1) {
    std::vector<uint8_t> bytes(size);
    for (size_t i = 0; i < size; ++i) {
        seed = seed * 1664525 + 1013904223;
        bytes[i] = static_cast<uint8_t>(seed >> 24 < 40 ? seed >> 16 : "a level of many rooms "[i % 22]);
    }
    return bytes;
}
inline std::vector<uint8_t> NoiseBytes(size_t size, uint32_t seed = 1) {
    std::vector<uint8_t> bytes(size);
    for (uint8_t& byte : bytes) {
        seed = seed * 1664525 + 1013904223;
        byte = static_cast<uint8_t>(seed >> 24);
    }
    return bytes;
}
