// The primitives with curved surfaces, as control points. c0 to c7 are the corners of the box in the view frame, P the
// pivot.
#include <algorithm>
#include <array>
#include <utility>

#include "scene/BrushParts.h"
#include "scene/ViewFrame.h"

namespace {

using Arc = std::array<D3DVECTOR, 3>; // control points of a quadratic arc

void AddCurve(Brush& brush, std::vector<D3DVECTOR> cp) {
    Surface& s = brush.curved_surfaces.emplace_back();
    s.cp_count = static_cast<int32_t>(cp.size());
    s.cp = std::move(cp);
}
void AddFan(Brush& brush, const Arc& arc, const D3DVECTOR& center) {
    AddCurve(brush, {arc[0], arc[1], arc[2], center});
}
void AddStrip(Brush& brush, const Arc& a, const Arc& b) { AddCurve(brush, {a[0], a[1], a[2], b[0], b[1], b[2]}); }
void AddPatch(Brush& brush, const Arc& a, const Arc& b, const Arc& c) {
    AddCurve(brush, {a[0], a[1], a[2], b[0], b[1], b[2], c[0], c[1], c[2]});
}

Arc AtHeight(Arc arc, float y) {
    for (D3DVECTOR& p : arc)
        p.y = y;
    return arc;
}

// A quarter of the ellipse from beside the corner in x, by way of the corner, to beside it in z; or the other way.
Arc CornerArc(const D3DVECTOR& corner, const D3DVECTOR& pivot, bool reversed) {
    Arc arc = {{{corner.x, corner.y, pivot.z}, corner, {pivot.x, corner.y, corner.z}}};
    if (reversed)
        std::swap(arc[0], arc[2]);
    return arc;
}

// Corners whose arcs run the other way, which keeps the winding of the caps.
constexpr bool CAP_REVERSED[8] = {false, true, false, true, true, false, true, false};

} // namespace

void Brush::FinishCurvedPrimitive() {
    ComputeBrushSpheres();
    TesselateCurves();
    ComputeNormals();
    GenerateTextureSpaces();
    MapFans();
    SurfaceLight();
}

void Brush::CreatePatch(uint32_t view, uint32_t segment_count) {
    ViewFrame frame(*this, view);
    const Box& c = bbox;
    const D3DVECTOR& P = pivot;
    const float y = c[0].y, dx = c[1].x - c[0].x, dz = c[0].z - c[3].z;
    const float parts = 2 * static_cast<float>(segment_count);
    const auto row = [y](float x0, float x1, float x2, float z0, float z1, float z2) {
        return Arc{{{x0, y, z0}, {x1, y, z1}, {x2, y, z2}}};
    };
    const auto row_at_z = [&](float z) { return row(c[1].x, P.x, c[0].x, z, z, z); };
    if (!(dx > dz)) {
        if (segment_count == 0)
            AddStrip(*this, row(c[0].x, c[0].x, c[0].x, c[0].z, P.z, c[3].z),
                     row(c[1].x, c[1].x, c[1].x, c[0].z, P.z, c[3].z));
        const float step = dz / parts;
        float z = c[0].z;
        for (uint32_t i = 0; i < segment_count; ++i, z -= 2 * step)
            AddPatch(*this, row_at_z(z), row_at_z(z - step), row_at_z(z - 2 * step));
    } else {
        if (segment_count == 0)
            AddStrip(*this, row(c[1].x, P.x, c[0].x, c[1].z, c[0].z, c[0].z),
                     row(c[1].x, P.x, c[0].x, c[3].z, c[3].z, c[3].z));
        const float step = dx / parts;
        float x = c[0].x;
        for (uint32_t i = 0; i < segment_count; ++i, x += 2 * step) {
            const auto part = [&](float z) { return row(x + 2 * step, x + step, x, z, z, z); };
            AddPatch(*this, part(c[1].z), part(P.z), part(c[2].z));
        }
    }
    frame.Leave();
    FinishCurvedPrimitive();
}

void Brush::CreateCylinder(uint32_t view, uint32_t segment_count) {
    ViewFrame frame(*this, view);
    const float top = bbox[0].y, bottom = bbox[4].y;
    Arc arcs[8];
    for (size_t c = 0; c < 8; ++c) {
        arcs[c] = CornerArc(bbox[c], pivot, CAP_REVERSED[c]);
        AddFan(*this, arcs[c], {pivot.x, bbox[c].y, pivot.z});
    }
    if (segment_count == 0)
        for (size_t c = 0; c < 4; ++c)
            AddStrip(*this, arcs[c], AtHeight(arcs[c], bottom));
    // Upward from the bottom; in the front view the frame is upside down, and the step with it.
    const float step = (top - bottom) / (2 * static_cast<float>(segment_count));
    for (uint32_t i = 0; i < segment_count; ++i) {
        const auto height = [&](uint32_t half_rows) { return bottom + static_cast<float>(2 * i + half_rows) * step; };
        for (size_t c = 0; c < 4; ++c)
            AddPatch(*this, AtHeight(arcs[c], height(2)), AtHeight(arcs[c], height(1)), AtHeight(arcs[c], height(0)));
    }
    frame.Leave();
    FinishCurvedPrimitive();
}

void Brush::CreateCone(uint32_t view, uint32_t segment_count) {
    ViewFrame frame(*this, view);
    const float top = bbox[0].y, bottom = bbox[4].y;
    Arc arcs[4];
    for (size_t c = 0; c < 4; ++c) {
        arcs[c] = CornerArc(bbox[c + 4], pivot, c % 2 == 0);
        AddFan(*this, arcs[c], {pivot.x, bottom, pivot.z});
    }
    const D3DVECTOR apex{pivot.x, top, pivot.z};
    if (segment_count == 0)
        for (const Arc& arc : arcs)
            AddStrip(*this, arc, {apex, apex, apex});
    // Rows of quadrants upward, about the pivot, whose radii shrink to nothing at the apex.
    const float rx = std::fabs(bbox[0].x - pivot.x), rz = std::fabs(bbox[0].z - pivot.z);
    const float half_rows = 2 * static_cast<float>(segment_count);
    const float step = (top - bottom) / half_rows;
    const auto quadrant = [&](size_t c, uint32_t half_row) {
        const float k = static_cast<float>(half_row), r = (half_rows - k) / half_rows;
        const float x = c == 0 || c == 3 ? pivot.x - r * rx : pivot.x + r * rx;
        const float z = c < 2 ? pivot.z + r * rz : pivot.z - r * rz;
        return CornerArc({x, bottom + k * step, z}, pivot, c % 2 == 0);
    };
    for (uint32_t i = 0; i < segment_count; ++i)
        for (size_t c = 0; c < 4; ++c)
            AddPatch(*this, quadrant(c, 2 * i), quadrant(c, 2 * i + 1), quadrant(c, 2 * i + 2));
    frame.Leave();
    FinishCurvedPrimitive();
}

// What the SFT block and the Q block share: the two sides at the edge c0 to c4, and an arc from c1 to c3 by way of a
// corner.
void Brush::CreateArcBlock(uint32_t view, size_t middle) {
    ViewFrame frame(*this, view);
    const Box& c = bbox;
    surfaces.push_back(MakeQuad(c[7], c[4], c[0], c[3]));
    surfaces.push_back(MakeQuad(c[4], c[5], c[1], c[0]));
    const Arc top = {{c[1], c[middle], c[3]}};
    AddFan(*this, top, c[0]);
    AddFan(*this, {{c[7], c[middle + 4], c[5]}}, c[4]);
    AddStrip(*this, top, AtHeight(top, c[4].y));
    frame.Leave();
    FinishCurvedPrimitive();
}

void Brush::CreateSFTBlock(uint32_t view) { CreateArcBlock(view, 0); }

void Brush::CreateQCylinder(uint32_t view) { CreateArcBlock(view, 2); }

void Brush::CreateElasticBox(uint32_t view, uint32_t segment_count) {
    const Box& c = bbox;
    const D3DVECTOR& P = pivot;
    if (segment_count != 0) {
        // Six flat patches that the pivot divides.
        const auto grid = [this](const std::array<float, 3>& rows, const std::array<float, 3>& columns, auto point) {
            std::vector<D3DVECTOR> cp;
            for (const float r : rows)
                for (const float k : columns)
                    cp.push_back(point(r, k));
            AddCurve(*this, std::move(cp));
        };
        const auto at_x = [](float x) { return [x](float row, float column) { return D3DVECTOR{x, row, column}; }; };
        const auto at_y = [](float y) { return [y](float row, float column) { return D3DVECTOR{column, y, row}; }; };
        const auto at_z = [](float z) { return [z](float row, float column) { return D3DVECTOR{column, row, z}; }; };
        grid({c[1].z, P.z, c[2].z}, {c[1].x, P.x, c[0].x}, at_y(c[0].y));
        grid({c[1].z, P.z, c[2].z}, {c[0].x, P.x, c[1].x}, at_y(c[4].y));
        grid({c[3].y, P.y, c[7].y}, {c[2].x, P.x, c[3].x}, at_z(c[3].z));
        grid({c[3].y, P.y, c[7].y}, {c[3].x, P.x, c[2].x}, at_z(c[0].z));
        grid({c[2].y, P.y, c[5].y}, {c[1].z, P.z, c[2].z}, at_x(c[1].x));
        grid({c[2].y, P.y, c[5].y}, {c[2].z, P.z, c[1].z}, at_x(c[0].x));
        FinishCurvedPrimitive();
        return;
    }
    ViewFrame frame(*this, view);
    surfaces.push_back(MakeQuad(c[0], c[1], c[2], c[3]));
    surfaces.push_back(MakeQuad(c[7], c[6], c[5], c[4]));
    const auto edge = [&](size_t corner) { // down from the top face
        const D3DVECTOR& below = c[corner + 4];
        return Arc{{c[corner], {below.x, P.y, below.z}, below}};
    };
    for (const auto& [from, to] : {std::pair<size_t, size_t>{3, 2}, {2, 1}, {1, 0}, {0, 3}})
        AddStrip(*this, edge(from), edge(to));
    frame.Leave();
    FinishCurvedPrimitive();
}
