#include "render/Device.h"

uint32_t crvScrWidth = 640, crvScrHeight = 480;
uint32_t crvViewportX = 0, crvViewportY = 0, crvViewportW = crvScrWidth, crvViewportH = crvScrHeight;

void crSetViewport(int x, int y, int w, int h) {
    const bool whole = x == -1;
    crvViewportX = whole ? 0 : static_cast<uint32_t>(x);
    crvViewportY = whole ? 0 : static_cast<uint32_t>(y);
    crvViewportW = whole ? crvScrWidth : static_cast<uint32_t>(w);
    crvViewportH = whole ? crvScrHeight : static_cast<uint32_t>(h);
}

void crGetViewport(int& x, int& y, int& w, int& h) {
    x = static_cast<int>(crvViewportX);
    y = static_cast<int>(crvViewportY);
    w = static_cast<int>(crvViewportW);
    h = static_cast<int>(crvViewportH);
}
