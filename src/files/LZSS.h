// LZSS with a 4096-byte window that starts out as blanks, and matches of 3 to 18 bytes: the packing of library blocks.
// After the published LZSS.C of Haruhiko Okumura (1989).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

class LZSSClass {
public:
    static constexpr size_t TOO_LONG = SIZE_MAX;

    // Returns the number of bytes produced, or TOO_LONG when they do not fit into out. A stream that breaks off is
    // decoded as far as it goes. Bytes of out behind the result may be overwritten.
    static size_t Decode(std::span<uint8_t> out, std::span<const uint8_t> in);

    // Appends the packed stream of one block to out and returns its size.
    size_t Encode(std::vector<uint8_t>& out, std::span<const uint8_t> in);

private:
    static constexpr int RING_SIZE = 4096, LONGEST_MATCH = 18, BREAK_EVEN = 2;
    static constexpr int NIL = RING_SIZE; // the empty mark of the trees

    void InitTrees();
    void InsertNode(int position); // and finds the longest match of the string there
    void DeleteNode(int position);

    // The ring, with its first bytes repeated behind it so that a string never wraps.
    uint8_t text_buf[RING_SIZE + LONGEST_MATCH - 1];
    // Binary search trees over the ring's strings; 256 roots, by first byte, stand behind NIL in rson.
    int lson[RING_SIZE + 1], rson[RING_SIZE + 257], dad[RING_SIZE + 1];
    int match_position, match_length;
};
