#include "render/Text.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "render/Batches.h"
#include "render/FontGlyphs.h"
#include "render/StateCache.h"

uint32_t crvFonts[CRF_COUNT] = {CR_NO_TEXTURE, CR_NO_TEXTURE, CR_NO_TEXTURE};
float crvFont10width[256], crvFont33width[256];

namespace {

// The characters in the order of the font pictures.
constexpr std::string_view str8x12 = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ1234567890"
                                     "!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~";
static_assert(str8x12.size() == GLYPH_COUNT);
constexpr uint32_t SPACE_PLACE = GLYPH_COUNT; // behind them, in the proportional fonts

struct FontPicture {
    uint32_t side;      // of the texture, pixels
    uint32_t row;       // from one row of letters to the next
    uint32_t scale;     // pixels of a glyph's dot
    uint32_t left, top; // of a glyph within its place
    float own_width, own_height;
    float u, v;              // of the first letter
    float cell_width, row_v; // as parts of the texture; a proportional font has no cell
    float advance;           // times text width times table width
};
constexpr FontPicture PICTURES[CRF_COUNT] = {
    {128, 12, 1, 1, 2, 8, 12, 0, 0, 0.0625f, 0.09375f, 0},
    {128, 10, 1, 0, 1, 10, 10, 0.00005f, 0.00005f, 0, 0.078125f, 128 * 0.1f},
    {256, 33, 3, 0, 5, 33, 33, 0.00005f, 0.00005f, 0, 0.12890625f, 256 * 0.030303031f},
};

struct Letter {
    bool drawn = false;
    float u = 0, v = 0, width = 0; // parts of the texture
    uint32_t x = 0, y = 0;         // pixels of the texture
};
Letter letters[CRF_COUNT][256];

CRFont text_font = CRF_8x12;
uint32_t text_color = 0xFFFFFFFF;
float text_width = 8, text_height = 12, text_space = 0;

const uint16_t* Columns(char c) { return GLYPHS[c - FIRST_GLYPH]; }

uint32_t FirstColumn(char c) {
    uint32_t column = 0;
    while (Columns(c)[column] == 0)
        ++column;
    return column;
}

uint32_t UsedColumns(char c) {
    uint32_t end = GLYPH_COLUMNS;
    while (Columns(c)[end - 1] == 0)
        --end;
    return end - FirstColumn(c);
}

char CharacterAt(uint32_t place) { return place == SPACE_PLACE ? ' ' : str8x12[place]; }

// Pixel widths of the letters, one column of room included; a negative one ends its row.
std::vector<float> MakeWidths(const FontPicture& picture) {
    constexpr uint32_t SPACE_COLUMNS = 3;
    std::vector<float> widths;
    float used = 0;
    for (uint32_t place = 0; place <= SPACE_PLACE; ++place) {
        const char c = CharacterAt(place);
        const uint32_t columns = c == ' ' ? SPACE_COLUMNS : UsedColumns(c) + 1;
        const auto width = static_cast<float>(columns * picture.scale);
        if (used + width > static_cast<float>(picture.side - 1)) {
            widths.back() = -widths.back();
            used = 0;
        }
        used += width;
        widths.push_back(width);
    }
    return widths;
}

void PlaceProportional(CRFont font, float* table) {
    const FontPicture& picture = PICTURES[font];
    const std::vector<float> fontw = MakeWidths(picture);
    const float pixel = 1.0f / static_cast<float>(picture.side);
    float u = picture.u, v = picture.v;
    uint32_t x = 0, y = 0;
    for (uint32_t place = 0; place <= SPACE_PLACE; ++place) {
        const float width = std::fabs(fontw[place]);
        const auto c = static_cast<uint8_t>(CharacterAt(place));
        letters[font][c] = {c != ' ', u, v, width * pixel, x, y};
        u += width * pixel;
        x += static_cast<uint32_t>(width);
        if (fontw[place] < 0) {
            u = picture.u, v += picture.row_v;
            x = 0, y += picture.row;
        }
    }
    for (uint32_t c = 0; c < 256; ++c) // what has no letter is as wide as a space
        table[c] = letters[font][c].drawn ? letters[font][c].width : letters[font][uint8_t{' '}].width;
}

void PlaceCells() {
    constexpr uint32_t CELLS_IN_ROW = 16, CELL = 8;
    const FontPicture& picture = PICTURES[CRF_8x12];
    for (uint32_t n = 0; n < GLYPH_COUNT; ++n) {
        const uint32_t column = n % CELLS_IN_ROW, row = n / CELLS_IN_ROW;
        letters[CRF_8x12][static_cast<uint8_t>(str8x12[n])] = {true,
                                                               static_cast<float>(column) * picture.cell_width,
                                                               static_cast<float>(row) * picture.row_v,
                                                               picture.cell_width,
                                                               column * CELL,
                                                               row * picture.row};
    }
}

std::vector<uint32_t> DrawPicture(CRFont font) {
    constexpr uint32_t CLEAR_WHITE = 0x00FFFFFF, FULL_WHITE = 0xFFFFFFFF;
    const FontPicture& picture = PICTURES[font];
    std::vector<uint32_t> argb(static_cast<size_t>(picture.side) * picture.side, CLEAR_WHITE);
    for (const char c : str8x12) {
        const Letter& letter = letters[font][static_cast<uint8_t>(c)];
        const uint32_t first = font == CRF_8x12 ? 0 : FirstColumn(c), end = FirstColumn(c) + UsedColumns(c);
        for (uint32_t column = first; column < end; ++column)
            for (uint32_t dot = 0; dot < GLYPH_ROWS * picture.scale * picture.scale; ++dot) {
                const uint32_t across = dot % picture.scale, down = dot / picture.scale;
                if ((Columns(c)[column] >> down / picture.scale & 1) == 0)
                    continue;
                const uint32_t x = letter.x + picture.left + (column - first) * picture.scale + across;
                const uint32_t y = letter.y + picture.top + down;
                argb[static_cast<size_t>(y) * picture.side + x] = FULL_WHITE;
            }
    }
    return argb;
}

float Advance(char c) {
    const auto place = static_cast<uint8_t>(c);
    if (text_font == CRF_8x12)
        return text_width;
    const float* const table = text_font == CRF_10 ? crvFont10width : crvFont33width;
    return text_width * table[place] * PICTURES[text_font].advance;
}

bool ReadHex(std::string_view digits, uint32_t& value) {
    value = 0;
    for (const char c : digits) {
        const int digit = c >= '0' && c <= '9'   ? c - '0'
                          : c >= 'a' && c <= 'f' ? c - 'a' + 10
                          : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                 : -1;
        if (digit < 0)
            return false;
        value = value * 16 + static_cast<uint32_t>(digit);
    }
    return true;
}

// Calls visit(x, y, character, colour) for each character that takes room, from (0, 0) on, and end_line(width).
template <class Visit, class EndLine>
void Walk(std::string_view text, const Visit& visit, const EndLine& end_line) {
    constexpr size_t COLOR_DIGITS = 6;
    uint32_t color = text_color;
    float x = 0, y = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const std::string_view rest = text.substr(i + 1);
        if (c == '\n') {
            end_line(x);
            x = 0;
            y += text_height;
            continue;
        }
        if (c == '{' && rest.starts_with('{')) {
            ++i; // a literal one
        } else if (c == '{') {
            uint32_t rgb;
            if (rest.starts_with('}')) {
                color = text_color;
                ++i;
            } else if (rest.size() > COLOR_DIGITS && rest[COLOR_DIGITS] == '}' &&
                       ReadHex(rest.substr(0, COLOR_DIGITS), rgb)) {
                color = (text_color & 0xFF000000) | rgb;
                i += COLOR_DIGITS + 1;
            }
            continue;
        }
        visit(x, y, c, color);
        x += Advance(c) + text_space;
    }
    end_line(x);
}

std::string_view Cut(std::string_view text, int length) {
    return length < 0 ? text : text.substr(0, static_cast<size_t>(length));
}

} // namespace

void crInitFonts() {
    PlaceCells();
    PlaceProportional(CRF_10, crvFont10width);
    PlaceProportional(CRF_33, crvFont33width);
}

int crLoadFont(CRFont font, std::string_view name) {
    if (font >= CRF_COUNT)
        return -1;
    if (!name.empty()) {
        crvFonts[font] = crTGet(name, {}, TL_ICON);
        return crvFonts[font] == CR_NO_TEXTURE ? -1 : 0;
    }
    crInitFonts();
    const uint32_t side = PICTURES[font].side;
    crvFonts[font] = crTCreate(side, side, 32, TL_ICON, TEX_ALPHA_NORMAL, 0, false);
    return crTComputeMipLevels(crvFonts[font], DrawPicture(font).data()) == 0 ? 0 : -1;
}

void criForgetFonts() { std::fill(std::begin(crvFonts), std::end(crvFonts), CR_NO_TEXTURE); }

void crTextFont(CRFont font) { text_font = font < CRF_COUNT ? font : CRF_8x12; }

void crTextColor(uint32_t argb) { text_color = argb; }

void crTextParam(float width, float height, float space) {
    const FontPicture& picture = PICTURES[text_font];
    text_height = height < 0 ? picture.own_height : height;
    text_width = width < 0 ? text_height * picture.own_width / picture.own_height : width;
    text_space = space;
}

void crText(float left, float top, std::string_view string, int length) {
    constexpr float TEXT_RHW = 0.5f;
    crTexture(crvFonts[text_font], 0);
    const auto draw = [&](float x, float y, char c, uint32_t color) {
        const Letter& letter = letters[text_font][static_cast<uint8_t>(c)];
        if (!letter.drawn)
            return;
        const float x1 = left + x, y1 = top + y, x2 = x1 + Advance(c), y2 = y1 + text_height;
        const float u2 = letter.u + letter.width, v2 = letter.v + PICTURES[text_font].row_v;
        const auto corner = [color](float px, float py, float u, float v) {
            crRHW(TEXT_RHW);
            crDiffuse(color);
            crUV(u, v);
            crXYZ(px, py, criGet2DDepth());
        };
        crBegin(PT_TRI_FAN, VT_XYZRHW | VT_DIFFUSE | VT_TEX1);
        corner(x1, y1, letter.u, letter.v);
        corner(x2, y1, u2, letter.v);
        corner(x2, y2, u2, v2);
        corner(x1, y2, letter.u, v2);
        crEnd();
    };
    Walk(Cut(string, length), draw, [](float) {});
}

float crGetTextWidth(std::string_view string, int length) {
    float widest = 0;
    Walk(
        Cut(string, length), [](float, float, char, uint32_t) {}, [&](float x) { widest = std::max(widest, x); });
    return widest;
}

float crGetTextHeight(std::string_view string, int length) {
    const std::string_view text = Cut(string, length);
    return text_height * static_cast<float>(1 + std::count(text.begin(), text.end(), '\n'));
}
