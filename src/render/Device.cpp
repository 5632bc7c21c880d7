#include "render/Device.h"

#include "render/Textures.h"

uint32_t crvScrWidth = 640, crvScrHeight = 480;
uint32_t crvViewportX = 0, crvViewportY = 0, crvViewportW = crvScrWidth, crvViewportH = crvScrHeight;

void crSetViewport(int x, int y, int w, int h) {
    const bool whole = x == -1;
    crvViewportX = whole ? 0 : static_cast<uint32_t>(x);
    crvViewportY = whole ? 0 : static_cast<uint32_t>(y);
    crvViewportW = whole ? crvScrWidth : static_cast<uint32_t>(w);
    crvViewportH = whole ? crvScrHeight : static_cast<uint32_t>(h);
    criTextureDevice().SetViewport({crvViewportX, crvViewportY, crvViewportW, crvViewportH});
}

void crGetViewport(int& x, int& y, int& w, int& h) {
    x = static_cast<int>(crvViewportX);
    y = static_cast<int>(crvViewportY);
    w = static_cast<int>(crvViewportW);
    h = static_cast<int>(crvViewportH);
}

FvfLayout MakeFvfLayout(uint32_t fvf) {
    constexpr uint32_t MOST_SETS = 3, SETS_SHIFT = 8, SETS_MASK = 15;
    constexpr uint32_t WIDE_SET = VT_TEX1_3 & ~VT_TEX1;
    FvfLayout layout;
    const auto take = [&layout](CrOffsets field, uint32_t bytes) {
        layout.offsets[field] = layout.size;
        layout.size += bytes;
    };
    if ((fvf & VT_XYZ) != 0) {
        take(CRO_XYZ, 12);
    } else if ((fvf & VT_XYZRHW) != 0) {
        take(CRO_XYZ, 12);
        take(CRO_RHW, 4);
    }
    if ((fvf & VT_NORMAL) != 0)
        take(CRO_NORM, 12);
    if ((fvf & VT_DIFFUSE) != 0)
        take(CRO_DIFF, 4);
    if ((fvf & VT_SPECULAR) != 0)
        take(CRO_SPEC, 4);
    if ((fvf & WIDE_SET) != 0) {
        layout.coordinate_sets = 1;
        take(CRO_TEX1, 12);
        return layout;
    }
    const uint32_t sets = fvf >> SETS_SHIFT & SETS_MASK;
    layout.coordinate_sets = sets < MOST_SETS ? sets : MOST_SETS;
    for (uint32_t i = 0; i < layout.coordinate_sets; ++i)
        take(static_cast<CrOffsets>(CRO_TEX1 + i), 8);
    return layout;
}
