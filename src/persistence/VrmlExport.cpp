#include "persistence/VrmlExport.h"

#include <charconv>
#include <vector>

#include "files/AtomicFile.h"
#include "foundation/Strings.h"

namespace {

constexpr const char* HEADER = "#VRML V2.0 utf8\r\n\r\n#Produced by Marrowstead 2000 VRML Exporter\r\n\r\n";
constexpr const char* STRICT_ENDING = ".vrml";
constexpr const char* NEW_LINE = "\r\n         ";
constexpr size_t ENTRIES_A_LINE = 4;

void AppendNumber(std::string& text, float number) {
    constexpr int DECIMALS = 2;
    char digits[64]; // the longest has 40 before the point
    const auto end = std::to_chars(digits, digits + sizeof digits, number, std::chars_format::fixed, DECIMALS).ptr;
    text += ' ';
    text.append(digits, end);
}

// Entries with a comma behind each but the last, some a line.
class EntryList {
public:
    explicit EntryList(std::string& written) : text(written) {}
    void Begin() {
        if (count > 0)
            text += ',';
        if (count++ % ENTRIES_A_LINE == 0)
            text += NEW_LINE;
    }

private:
    std::string& text;
    size_t count = 0;
};

void AppendPoints(std::string& text, const Surface& s) {
    EntryList list(text);
    for (const D3DVECTOR& v : s.vertices) {
        list.Begin();
        AppendNumber(text, v.x);
        AppendNumber(text, v.y);
        AppendNumber(text, -v.z); // right-handed there
    }
}

void AppendTriangles(std::string& text, const Surface& s) {
    EntryList list(text);
    for (const TRIANGLE& t : s.tri_indices) {
        if (!s.HasCorners(t))
            continue;
        list.Begin();
        text += Format(" %d, %d, %d, -1", t.i[2], t.i[1], t.i[0]); // the other hand turns them
    }
}

void AppendSurface(std::string& text, const std::string& name, const Surface& s, bool strict) {
    const std::string inner_name = strict ? "DEF " + name : name;
    text += "DEF " + name + " Transform {\r\n";
    text += "  translation 0 0 0\r\n"
            "  children [\r\n"
            "    Shape {\r\n"
            "      appearance Appearance {\r\n"
            "        material Material {\r\n"
            "          diffuseColor 0.8 0.8 0.8\r\n"
            "        }\r\n"
            "      }\r\n"
            "      geometry ";
    text += inner_name + "-FACES IndexedFaceSet {\r\n";
    text += "        ccw TRUE\r\n"
            "        solid TRUE\r\n"
            "        coord ";
    text += inner_name + "-COORD Coordinate { point [";
    AppendPoints(text, s);
    text += "]\r\n        }\r\n        coordIndex [";
    AppendTriangles(text, s);
    text += "]\r\n        }\r\n"
            "    }\r\n"
            "  ]\r\n"
            "}\r\n\r\n";
}

} // namespace

std::string VrmlText(const World& world, bool strict) {
    std::string text = HEADER;
    for (int b = 0; b < world.GetBrushCount(); ++b) {
        const Brush& brush = *world.brush[static_cast<size_t>(b)];
        if (brush.IsPortalOrOccluder())
            continue;
        brush.ForEachSurface([&](const Surface& s, int index, bool curved) {
            if (s.HasMaterial())
                AppendSurface(text, Format(curved ? "Brush%dCurvedSurface%d" : "Brush%dSurface%d", b, index), s,
                              strict);
        });
    }
    return text;
}

bool ExportVrml(std::string_view full_name, const World& world, std::string& error) {
    const size_t dot = full_name.rfind('.');
    const bool strict = dot != std::string_view::npos && EqualNoCase(full_name.substr(dot), STRICT_ENDING);
    const std::string text = VrmlText(world, strict);
    AtomicFile file(full_name);
    if (file.IsOpen() && file.Write(text.data(), text.size()) && file.Commit())
        return true;
    error = Format("cannot write \"%s\": %s", std::string(full_name).c_str(), file.GetError().c_str());
    return false;
}
