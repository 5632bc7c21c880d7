#include "files/LZSS.h"
#include "files/Bytes.h"

#include <gtest/gtest.h>

namespace {

std::vector<uint8_t> Bytes(std::string_view text) { return {text.begin(), text.end()}; }

std::string Unpack(std::string_view packed, size_t capacity) {
    std::vector<uint8_t> out(capacity);
    const std::vector<uint8_t> in = Bytes(packed);
    const size_t size = LZSSClass::Decode(out, in);
    return size == LZSSClass::TOO_LONG ? "too long" : std::string(out.begin(), out.begin() + static_cast<int>(size));
}

// The ring of 4096 bytes as it is told, byte by byte.
std::vector<uint8_t> DecodeByRing(const std::vector<uint8_t>& in) {
    std::vector<uint8_t> ring(4096, 0), out;
    std::fill_n(ring.begin(), 4078, uint8_t{' '});
    size_t r = 4078, i = 0;
    const auto put = [&](uint8_t byte) {
        out.push_back(byte);
        ring[r] = byte;
        r = (r + 1) % 4096;
    };
    while (i < in.size()) {
        const unsigned flags = in[i++];
        for (int bit = 0; bit < 8; ++bit) {
            if (flags >> bit & 1) {
                if (i == in.size())
                    return out;
                put(in[i++]);
            } else {
                if (in.size() - i < 2)
                    return out;
                const size_t position = in[i] | (in[i + 1] & 0xF0u) << 4, length = (in[i + 1] & 0x0Fu) + 3;
                i += 2;
                for (size_t k = 0; k < length; ++k)
                    put(ring[(position + k) % 4096]);
            }
        }
    }
    return out;
}

} // namespace

TEST(LZSS, StreamsByHand) {
    EXPECT_EQ(Unpack("\x07"
                     "abc",
                     10),
              "abc");
    // "ab", then a match of 5 from ring position 4078 (0xFEE), which runs into what it writes itself.
    EXPECT_EQ(Unpack(std::string("\x03"
                                 "ab\xEE\xF2",
                                 5),
                     10),
              "abababa");
    // A match of 3 from position 0: blanks.
    EXPECT_EQ(Unpack(std::string("\0\0\0", 3), 10), "   ");
    // Streams that break off: no flag byte, no literal, half a match.
    EXPECT_EQ(Unpack("", 10), "");
    EXPECT_EQ(Unpack("\x0F"
                     "ab",
                     10),
              "ab");
    EXPECT_EQ(Unpack("\x01"
                     "a\xEE",
                     10),
              "a");
    EXPECT_EQ(Unpack("\x07"
                     "abc",
                     2),
              "too long");
    EXPECT_EQ(Unpack(std::string("\0\0\x0F", 3), 17), "too long");
    EXPECT_EQ(Unpack(std::string("\0\0\x0F", 3), 18), std::string(18, ' '));
}

TEST(LZSS, AnyStreamDecodesAsTheRingSays) {
    for (uint32_t seed = 1; seed <= 300; ++seed) {
        std::vector<uint8_t> stream = NoiseBytes(40 + seed * 7, seed);
        if (seed % 2) // longer matches of near places
            for (size_t i = 0; i < stream.size(); i += 17)
                stream[i] &= 0x11;
        const std::vector<uint8_t> expected = DecodeByRing(stream);
        std::vector<uint8_t> out(expected.size());
        ASSERT_EQ(LZSSClass::Decode(out, stream), expected.size());
        ASSERT_EQ(out, expected);
        if (!out.empty()) {
            out.pop_back();
            ASSERT_EQ(LZSSClass::Decode(out, stream), LZSSClass::TOO_LONG);
        }
    }
}

TEST(LZSS, WhatIsPackedUnpacks) {
    LZSSClass packer;
    std::vector<std::vector<uint8_t>> blocks = {{},
                                                Bytes("x"),
                                                Bytes("abcabcabcabcabc"),
                                                std::vector<uint8_t>(16384, 0),
                                                std::vector<uint8_t>(5000, ' '),
                                                NoiseBytes(16384)};
    for (uint32_t seed = 1; seed <= 20; ++seed)
        blocks.push_back(TextLikeBytes(700 * seed, seed));
    for (const std::vector<uint8_t>& block : blocks) {
        std::vector<uint8_t> packed = {1, 2, 3};
        const size_t size = packer.Encode(packed, block);
        ASSERT_EQ(packed.size(), size + 3) << "the stream is appended";
        const std::vector<uint8_t> stream(packed.begin() + 3, packed.end());
        EXPECT_EQ(DecodeByRing(stream), block);
        std::vector<uint8_t> out(block.size());
        EXPECT_EQ(LZSSClass::Decode(out, stream), block.size());
        EXPECT_EQ(out, block);
    }
}

TEST(LZSS, FindsTheLongestMatches) {
    LZSSClass packer;
    std::vector<uint8_t> packed;
    // One repeated byte: a literal, then matches of 18, the last one shorter. Eight codes share a flag byte.
    EXPECT_EQ(packer.Encode(packed, std::vector<uint8_t>(1 + 18 * 7 + 5, 'z')), 1u + 1 + 7 * 2 + 1 + 2);
    packed.clear();
    // Blanks match the blanks that the window starts with: no literal.
    EXPECT_EQ(packer.Encode(packed, std::vector<uint8_t>(36, ' ')), 1u + 2 * 2);
    packed.clear();
    // A pair of bytes that repeats does not pay: literals only.
    EXPECT_EQ(packer.Encode(packed, Bytes("abXabYab")), 1u + 8);
}
