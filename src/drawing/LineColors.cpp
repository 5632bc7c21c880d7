#include "drawing/LineColors.h"

#include <charconv>

#include "foundation/Strings.h"

namespace {

constexpr uint32_t OPAQUE = 0xFF000000, RGB = 0x00FFFFFF;

std::array<uint32_t, LINE_COLOR_COUNT> StandardColors() {
    std::array<uint32_t, LINE_COLOR_COUNT> colors{};
    for (size_t i = 0; i < colors.size(); ++i)
        colors[i] = LineColorTable()[i].standard;
    return colors;
}

std::array<uint32_t, LINE_COLOR_COUNT>& Colors() {
    static std::array<uint32_t, LINE_COLOR_COUNT> colors = StandardColors();
    return colors;
}

} // namespace

const std::array<LineColorEntry, LINE_COLOR_COUNT>& LineColorTable() {
    static constexpr std::array<LineColorEntry, LINE_COLOR_COUNT> table = {{
        {"GridMinor", "Grid", 100},
        {"GridMajor", "Grid, every eighth", 150},
        {"GridAxes", "Axes", 200},
        {"Selected", "Selected objects", 0xFF0000},
        {"SelectionBox", "Selection box", 0xFF0000},
        {"DragBox", "Dragged box", 0x00FF00},
        {"CordonBox", "Cordon box", 0xFFFF00},
        {"ClipBox", "Clip box", 0x00FFFF},
        {"Outline", "Outline being drawn", 0xFF0000},
        {"Link", "Links", 0xFFD200},
        {"TargetLink", "Links to targets", 0xEA2CB9},
        {"TriggerLink", "Links of triggers", 0x88B32E},
        {"LightRange", "Range of lights", 0xFFFF00},
        {"LightFalloff", "Falloff of lights", 0xF4BE00},
        {"Camera", "Camera", 0xFF4040},
        {"Path", "Paths", 0xFFF040},
        {"TargetPath", "Paths of what is looked at", 0x40FF40},
        {"PathNow", "Path at this moment", 0xFF0000},
        {"Cable", "Cables", 0xFFFFFF},
        {"TerrainTool", "Terrain tool", 0x00FF00},
        {"Net", "Selection shown in wire", 0xFF0000},
        {"NetEdge", "Edges in vertex mode", 0xFFFFFF},
        {"MarkedNetEdge", "Marked edges", 0xFFFF00},
        {"Vertex", "Vertices", 0x00FF00},
        {"MarkedVertex", "Marked vertices", 0xFF0000},
    }};
    return table;
}

uint32_t ColorOf(LineColor line) { return Colors()[static_cast<size_t>(line)] | OPAQUE; }

void SetLineColor(LineColor line, uint32_t rgb) { Colors()[static_cast<size_t>(line)] = rgb & RGB; }

void ResetLineColors() { Colors() = StandardColors(); }

std::string LineColorText() {
    std::string text;
    for (size_t i = 0; i < LINE_COLOR_COUNT; ++i)
        if (const LineColorEntry& entry = LineColorTable()[i]; Colors()[i] != entry.standard)
            text += Format("%s%s=%06X", text.empty() ? "" : " ", entry.name, Colors()[i]);
    return text;
}

void TakeLineColors(std::string_view text) {
    ResetLineColors();
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        const size_t equals = word.find('=');
        if (equals == std::string_view::npos)
            continue;
        uint32_t rgb = 0;
        const std::string_view digits = word.substr(equals + 1);
        const auto [end, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), rgb, 16);
        if (failure != std::errc{} || end != digits.data() + digits.size() || rgb > RGB)
            continue;
        for (size_t i = 0; i < LINE_COLOR_COUNT; ++i)
            if (EqualNoCase(LineColorTable()[i].name, word.substr(0, equals)))
                Colors()[i] = rgb;
    }
}
