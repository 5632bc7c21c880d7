// A packed block: what comes out packs and unpacks to itself.
#include <memory>
#include <vector>

#include "files/FileLibrary.h"
#include "files/LZSS.h"
#include "fuzz/FuzzTarget.h"

FUZZ_TARGET(lzss, bytes) {
    const std::vector<uint8_t> in(bytes.begin(), bytes.end());
    std::vector<uint8_t> out(FL_BLOCK_SIZE), again(FL_BLOCK_SIZE), packed;
    const size_t produced = LZSSClass::Decode(out, in);
    if (produced == LZSSClass::TOO_LONG)
        return;
    Require(produced <= out.size(), "no more comes out than there is room for");
    out.resize(produced);
    std::make_unique<LZSSClass>()->Encode(packed, out);
    Require(LZSSClass::Decode(again, packed) == produced, "packing keeps the length");
    again.resize(produced);
    Require(again == out, "packing keeps the bytes");
}
