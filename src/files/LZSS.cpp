#include "files/LZSS.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr size_t WINDOW = 4096;
constexpr size_t FIRST_WRITE = 4078; // ring position of the first output byte; blanks stand before it
constexpr size_t SHORTEST = 3, LONGEST = 18;
constexpr uint8_t BLANK = ' ';

// The byte of the window `back` bytes before the start of the output.
uint8_t BeforeStart(size_t back) { return back <= FIRST_WRITE ? BLANK : 0; }

} // namespace

size_t LZSSClass::Decode(std::span<uint8_t> out, std::span<const uint8_t> in) {
    // The window is the last 4096 bytes of the output itself.
    const uint8_t* source = in.data();
    const uint8_t* const end = source + in.size();
    uint8_t* const target = out.data();
    size_t written = 0;
    while (source != end) {
        unsigned flags = *source++;
        for (int bit = 0; bit < 8; ++bit, flags >>= 1) {
            if (flags & 1) {
                if (source == end)
                    return written;
                if (written == out.size())
                    return TOO_LONG;
                target[written++] = *source++;
                continue;
            }
            if (end - source < 2)
                return written;
            const size_t position = source[0] | (source[1] & 0xF0u) << 4;
            const size_t length = (source[1] & 0x0Fu) + SHORTEST;
            source += 2;
            if (length > out.size() - written)
                return TOO_LONG;
            const size_t back = ((FIRST_WRITE + written - position - 1) & (WINDOW - 1)) + 1; // 1 to 4096
            if (back >= LONGEST && back <= written && out.size() - written >= LONGEST) {
                std::memcpy(target + written, target + written - back, LONGEST); // more than needed, in one step
                written += length;
                continue;
            }
            for (size_t k = 0; k < length; ++k, ++written)
                target[written] = back <= written ? target[written - back] : BeforeStart(back - written);
        }
    }
    return written;
}

void LZSSClass::InitTrees() {
    std::fill(std::begin(rson) + NIL + 1, std::end(rson), NIL);
    std::fill(std::begin(dad), std::end(dad), NIL);
}

void LZSSClass::InsertNode(int position) {
    const uint8_t* key = &text_buf[position];
    int node = NIL + 1 + key[0];
    int order = 1; // of the key against the node: the roots have only a right branch
    lson[position] = rson[position] = NIL;
    match_length = 0;
    for (;;) {
        int& branch = order >= 0 ? rson[node] : lson[node];
        if (branch == NIL) {
            branch = position;
            dad[position] = node;
            return;
        }
        node = branch;
        int same = 1;
        order = 0;
        while (same < LONGEST_MATCH && (order = key[same] - text_buf[node + same]) == 0)
            ++same;
        if (same > match_length) {
            match_position = node;
            match_length = same;
            if (same >= LONGEST_MATCH)
                break;
        }
    }
    // The same string stands at node: the newer position takes its place.
    dad[position] = dad[node];
    lson[position] = lson[node];
    rson[position] = rson[node];
    dad[lson[node]] = position;
    dad[rson[node]] = position;
    (rson[dad[node]] == node ? rson : lson)[dad[node]] = position;
    dad[node] = NIL;
}

void LZSSClass::DeleteNode(int position) {
    if (dad[position] == NIL)
        return;
    int heir;
    if (rson[position] == NIL)
        heir = lson[position];
    else if (lson[position] == NIL)
        heir = rson[position];
    else {
        heir = lson[position];
        if (rson[heir] != NIL) {
            while (rson[heir] != NIL)
                heir = rson[heir];
            rson[dad[heir]] = lson[heir];
            dad[lson[heir]] = dad[heir];
            lson[heir] = lson[position];
            dad[lson[position]] = heir;
        }
        rson[heir] = rson[position];
        dad[rson[position]] = heir;
    }
    dad[heir] = dad[position];
    (rson[dad[position]] == position ? rson : lson)[dad[position]] = heir;
    dad[position] = NIL;
}

size_t LZSSClass::Encode(std::vector<uint8_t>& out, std::span<const uint8_t> in) {
    const size_t out_start = out.size();
    int leaving = 0;                             // the position that the window loses next
    int reading = static_cast<int>(FIRST_WRITE); // where the string to be coded starts
    std::fill(std::begin(text_buf), std::end(text_buf), uint8_t{0});
    std::fill_n(text_buf, FIRST_WRITE, BLANK);
    InitTrees();

    size_t taken = std::min<size_t>(in.size(), LONGEST_MATCH);
    int ahead = static_cast<int>(taken); // bytes of the input in the ring from `reading` on
    std::copy_n(in.data(), taken, text_buf + reading);
    for (int i = 1; i <= LONGEST_MATCH; ++i)
        InsertNode(reading - i);
    InsertNode(reading);

    uint8_t group[17] = {}; // a flag byte and eight codes
    size_t group_size = 1;
    unsigned flag = 1;
    const auto flush = [&] {
        out.insert(out.end(), group, group + group_size);
        group[0] = 0;
        group_size = 1;
        flag = 1;
    };
    const auto step = [&] {
        leaving = (leaving + 1) & (RING_SIZE - 1);
        reading = (reading + 1) & (RING_SIZE - 1);
    };
    while (ahead > 0) {
        int coded = std::min(match_length, ahead);
        if (coded <= BREAK_EVEN) {
            coded = 1;
            group[0] = static_cast<uint8_t>(group[0] | flag);
            group[group_size++] = text_buf[reading];
        } else {
            group[group_size++] = static_cast<uint8_t>(match_position & 0xFF);
            group[group_size++] =
                static_cast<uint8_t>((match_position >> 4 & 0xF0) | (coded - static_cast<int>(SHORTEST)));
        }
        flag <<= 1;
        if (flag > 0x80)
            flush();
        for (; coded > 0; --coded) {
            DeleteNode(leaving);
            if (taken < in.size()) {
                const uint8_t byte = in[taken++];
                text_buf[leaving] = byte;
                if (leaving < LONGEST_MATCH - 1)
                    text_buf[leaving + RING_SIZE] = byte;
            } else
                --ahead;
            step();
            if (ahead > 0)
                InsertNode(reading);
        }
    }
    if (group_size > 1)
        flush();
    return out.size() - out_start;
}
