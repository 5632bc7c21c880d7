// Lines of the world in the dash pattern of the views, which keeps its length on the screen at any zoom.
#pragma once

#include "drawing/DrawContext.h"
#include "drawing/GeometryBatch.h"

class DashedLines {
public:
    explicit DashedLines(const DrawContext& draw_context)
        : context(draw_context), batch(PT_LINE_LIST, VT_XYZ | VT_DIFFUSE | VT_TEX1) {}
    ~DashedLines() { Flush(); }
    DashedLines(const DashedLines&) = delete;
    DashedLines& operator=(const DashedLines&) = delete;

    void Line(const D3DVECTOR& from, const D3DVECTOR& to, uint32_t color);
    void Flush(); // blending is off afterwards

private:
    void SetState() const;

    const DrawContext& context;
    GeometryBatch batch;
    bool drawing = false;
};
