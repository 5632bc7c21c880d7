#include <algorithm>
#include <bit>
#include <cstring>

#include "drawing/ViewDrawing.h"
#include "render/DisplayScale.h"
#include "render/FontGlyphs.h"
#include "render/Frame.h"

namespace {

// A part of the back buffer, locked to be written. Pixels outside it are dropped, as are all without a buffer.
class BackBufferPixels {
public:
    explicit BackBufferPixels(const RECT& wanted) : surface(criGetBackBuffer()) {
        if (!surface)
            return;
        part.left = std::max(wanted.left, 0);
        part.top = std::max(wanted.top, 0);
        part.right = std::min(wanted.right, static_cast<int32_t>(surface->Width()));
        part.bottom = std::min(wanted.bottom, static_cast<int32_t>(surface->Height()));
        pixel_size = surface->Format().bits / 8;
        if (part.Width() > 0 && part.Height() > 0 && pixel_size <= sizeof(uint32_t))
            pixels = surface->LockPart({static_cast<uint32_t>(part.left), static_cast<uint32_t>(part.top),
                                        static_cast<uint32_t>(part.Width()), static_cast<uint32_t>(part.Height())},
                                       pitch);
    }
    ~BackBufferPixels() {
        if (pixels)
            surface->Unlock(0, 0);
    }
    BackBufferPixels(const BackBufferPixels&) = delete;
    BackBufferPixels& operator=(const BackBufferPixels&) = delete;

    void Set(int x, int y, uint32_t rgb) {
        if (!pixels || x < part.left || y < part.top || x >= part.right || y >= part.bottom)
            return;
        const uint32_t word = ToFormat(rgb); // little-endian, as the formats are
        std::memcpy(pixels + static_cast<size_t>(y - part.top) * pitch +
                        static_cast<size_t>(x - part.left) * pixel_size,
                    &word, pixel_size);
    }
    void Fill(uint32_t rgb) {
        for (int y = part.top; y < part.bottom; ++y)
            for (int x = part.left; x < part.right; ++x)
                Set(x, y, rgb);
    }

private:
    uint32_t ToFormat(uint32_t rgb) const {
        uint32_t word = 0;
        for (int c = 0; c < 3; ++c) {
            const uint32_t value = rgb >> (16 - 8 * c) & 255, mask = surface->Format().mask[c];
            const int shift = static_cast<int>(std::bit_width(mask)) - 8;
            word |= (shift >= 0 ? value << shift : value >> -shift) & mask;
        }
        return word;
    }

    DeviceSurface* surface;
    RECT part;
    uint8_t* pixels = nullptr;
    uint32_t pitch = 0, pixel_size = 0;
};

constexpr uint32_t CAPTION_COLOR = 0xFFFFFF;

void DrawGlyph(BackBufferPixels& picture, int left, int top, int dot, char c) {
    const int glyph = c - FIRST_GLYPH;
    if (glyph < 0 || glyph >= GLYPH_COUNT)
        return;
    for (int x = 0; x < GLYPH_COLUMNS; ++x)
        for (int y = 0; y < GLYPH_ROWS; ++y)
            if ((GLYPHS[glyph][x] >> y & 1) != 0)
                for (int k = 0; k < dot * dot; ++k)
                    picture.Set(left + x * dot + k % dot, top + y * dot + k / dot, CAPTION_COLOR);
}

} // namespace

void DrawCaption(const RECT& window_rect, const std::string& text) {
    constexpr int LEFT = 3, TOP = 2; // of the text in the view, dots
    constexpr int CELL_WIDTH = 6, CELL_HEIGHT = 16, GLYPH_LEFT = 1, GLYPH_TOP = 2;
    const int dot = static_cast<int>(crvDotSize);
    int left = window_rect.left + LEFT * dot;
    const int top = window_rect.top + TOP * dot;
    BackBufferPixels picture(
        {left, top, left + static_cast<int>(text.size()) * CELL_WIDTH * dot, top + CELL_HEIGHT * dot});
    for (const char c : text) {
        DrawGlyph(picture, left + GLYPH_LEFT * dot, top + GLYPH_TOP * dot, dot, c);
        left += CELL_WIDTH * dot;
    }
}

void DrawViewFrame(const RECT& window_rect, uint32_t color) {
    const int thickness = 2 * static_cast<int>(crvDotSize);
    const auto& [left, top, right, bottom] = window_rect;
    for (const RECT& strip : {RECT{left, top, right, std::min(top + thickness, bottom)},
                              RECT{left, std::max(bottom - thickness, top), right, bottom},
                              RECT{left, top, std::min(left + thickness, right), bottom},
                              RECT{std::max(right - thickness, left), top, right, bottom}})
        BackBufferPixels(strip).Fill(color);
}

std::vector<uint8_t> ReadBackBuffer(const RECT& rect) {
    std::vector<uint8_t> rgb;
    if (rect.Width() <= 0 || rect.Height() <= 0 || crLockBuffer(BT_BACK) != 0)
        return rgb;
    rgb.reserve(static_cast<size_t>(rect.Width()) * static_cast<size_t>(rect.Height()) * 3);
    for (int32_t y = rect.top; y < rect.bottom; ++y)
        for (int32_t x = rect.left; x < rect.right; ++x) {
            const bool inside =
                x >= 0 && y >= 0 && x < static_cast<int64_t>(crvScrWidth) && y < static_cast<int64_t>(crvScrHeight);
            uint32_t r = 0, g = 0, b = 0;
            if (inside)
                crGetBuffer(static_cast<uint32_t>(x), static_cast<uint32_t>(y), r, g, b);
            for (const uint32_t channel : {r, g, b})
                rgb.push_back(static_cast<uint8_t>(channel));
        }
    crUnlockBuffer();
    return rgb;
}
