// Text over the picture, in pixels of the screen, at the depth of crSet2DDepth. The caller sets RM_TEXT first.
#pragma once

#include <cstdint>
#include <string_view>

enum CRFont : uint32_t { CRF_8x12, CRF_10, CRF_33, CRF_COUNT }; // fixed cells; proportional, 10 and 33 high

extern uint32_t crvFonts[CRF_COUNT];                   // texture handles
extern float crvFont10width[256], crvFont33width[256]; // of a character, as a part of the texture

void crInitFonts(); // the tables
// Draws the built-in picture of a font, or takes that of a texture file. 0, or -1 when there is none.
int crLoadFont(CRFont font, std::string_view name = {});
void criForgetFonts();
void crTextFont(CRFont font);
void crTextColor(uint32_t argb);
// height below 0: the font's own; width below 0: the font's aspect at this height. space: between letters.
void crTextParam(float width, float height, float space);

// length -1: all of it. A newline starts a new line, "{RRGGBB}" sets the colour, "{}" goes back to that of crTextColor,
// "{{" is one brace; any other opening brace is left out.
void crText(float x, float y, std::string_view string, int length = -1);
float crGetTextWidth(std::string_view string, int length = -1); // of the widest line, the spacing included
float crGetTextHeight(std::string_view string, int length = -1);
