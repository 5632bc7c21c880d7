// The colours of the lines in the views, which the user may change. One set for the whole program, read by the drawing
// alone.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

enum class LineColor {
    GridMinor,
    GridMajor,
    GridAxes,
    Selected, // brushes and entities
    SelectionBox,
    DragBox,
    CordonBox,
    ClipBox,
    Outline,
    Link,
    TargetLink,
    TriggerLink,
    LightRange,
    LightFalloff,
    Camera,
    Path,
    TargetPath,
    PathNow, // the piece of a path that its object is on
    Cable,
    TerrainTool,
    Net, // of the selection shown in wire
    NetEdge,
    MarkedNetEdge,
    Vertex,
    MarkedVertex,
    Count
};
inline constexpr size_t LINE_COLOR_COUNT = static_cast<size_t>(LineColor::Count);

struct LineColorEntry {
    const char *name, *label; // name: in the settings
    uint32_t standard;        // 0x00RRGGBB
};
const std::array<LineColorEntry, LINE_COLOR_COUNT>& LineColorTable(); // in the order of LineColor

uint32_t ColorOf(LineColor line); // 0xFFRRGGBB
void SetLineColor(LineColor line, uint32_t rgb);
void ResetLineColors();
// Those that differ from the standard, such as "Link=FFD200 Camera=102030".
std::string LineColorText();
void TakeLineColors(std::string_view text); // all others become standard; what is no colour is passed over
