// Moving, scaling, turning and reshaping a brush. The vertices are rewritten, and what derives from them is rebuilt.
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "render/Matrix.h"
#include "scene/BrushParts.h"
#include "scene/EditMatrices.h"

namespace {

// The positions of the geometry: all vertices, and the control points where they are in use.
template <class Fn>
void ForEachPosition(Brush& brush, Fn&& fn) {
    brush.ForEachSurface([&](Surface& s, int, bool curved) {
        std::for_each(s.vertices.begin(), s.vertices.end(), fn);
        if (curved && !brush.IsCustom())
            std::for_each(s.cp.begin(), s.cp.end(), fn);
    });
}

void TransformPositions(Brush& brush, const D3DMATRIX& m) {
    ForEachPosition(brush, [&m](D3DVECTOR& p) { crMTransform(m, p, p); });
}

// True if the texels of a surface follow a move or a turn. Parametric mappings need no help, nor do stored coordinates.
bool KeepsTexels(const Brush& brush, const Surface& s, bool curved, bool texture_lock) {
    return s.HasMaterial() && (texture_lock || s.texture.locked) && !s.vertices.empty() && !s.uv.empty() &&
           (!curved || (s.cp_count == CURVE_FAN && !brush.IsCustom()));
}

struct Range {
    float low, high;
    bool IsWhole() const { return std::trunc(low) == low && std::trunc(high) == high; }
};

Range AxisRange(const Box& box, int axis) { return {Component(BoxMin(box), axis), Component(BoxMax(box), axis)}; }

// A scaled coordinate. What lay on a side of the box lies on that side, and with whole sides what should come to a
// whole number comes to it: else each step of a drag leaves its rounding behind.
float FreeOfRounding(float scaled, float before, const Range& old_range, const Range& new_range) {
    constexpr double ROUNDINGS = 16;
    if (!(old_range.high > old_range.low) || !(new_range.high > new_range.low))
        return scaled;
    if (before == old_range.low || before == old_range.high)
        return before == old_range.low ? new_range.low : new_range.high;
    if (!old_range.IsWhole() || !new_range.IsWhole())
        return scaled;
    const double whole = std::nearbyint(static_cast<double>(scaled));
    const double reach = std::max(
        {std::fabs(old_range.low), std::fabs(old_range.high), std::fabs(new_range.low), std::fabs(new_range.high)});
    const bool is_rounding = std::fabs(scaled - whole) <= ROUNDINGS * std::numeric_limits<float>::epsilon() * reach;
    return is_rounding ? static_cast<float>(whole) : scaled;
}

void RemapFlatSurfaces(Brush& brush, bool locked_too) {
    for (size_t i = 0; i < brush.surfaces.size(); ++i)
        if (brush.surfaces[i].HasMaterial() && (locked_too || !brush.surfaces[i].texture.locked))
            brush.CalculateUV(static_cast<int>(i));
}

void RebuildDerived(Brush& brush) {
    brush.TesselateCurves();
    brush.RecalcBBox();
    brush.ComputeNormals();
    brush.SurfaceLight();
}

std::vector<D3DVECTOR> FirstNormals(const Brush& brush) {
    std::vector<D3DVECTOR> normals;
    brush.ForEachSurface([&normals](const Surface& s, int, bool) {
        normals.push_back(s.normal.empty() ? D3DVECTOR{} : s.normal.front());
    });
    return normals;
}

// After a move the normals differ by rounding at most. The first ones, by which surfaces are mapped, keep their last
// bits: where two axes of a normal tie, these decide on the frame of the mapping.
void KeepFirstNormals(Brush& brush, const std::vector<D3DVECTOR>& normals) {
    constexpr float ROUNDING = 0.001f; // more is a change of shape that had not been followed yet
    size_t i = 0;
    brush.ForEachSurface([&](Surface& s, int, bool) {
        const D3DVECTOR& old = normals[i++];
        if (!s.normal.empty() && Magnitude(s.normal.front() - old) < ROUNDING)
            s.normal.front() = old;
    });
}

// What a surface keeps through a turn.
struct LockedMapping {
    Surface* surface;
    int index;
    bool curved;
    D3DVECTOR axis;  // ts_x after the turn, of unit length
    UVVector texels; // of the first vertex
};

LockedMapping LockMapping(Surface& s, int index, bool curved, const D3DMATRIX& turn) {
    const UVVector size = s.texture.MappingSize();
    LockedMapping locked{&s, index, curved, {}, {size.u * s.uv.front().u, size.v * s.uv.front().v}};
    crMTransform3(turn, s.texture_space.ts_x, locked.axis);
    locked.axis = NormalizeOrZero(locked.axis);
    return locked;
}

// On the turned surface: first the rotation that brings the axis back, then the shift that brings the texels back. The
// plane is that of the new geometry, by which the surface is mapped from now on: near a tie of two dominant axes the
// smallest difference would change the frame in which the rotation counts.
void RestoreMapping(const LockedMapping& locked, const D3DVECTOR& normal) {
    Surface& s = *locked.surface;
    TEX_INFO& info = s.texture;
    info.rotation = 0;
    Brush::ComputeTextureSpace(normal, s.texture_space, info);
    const float a = std::clamp(DotProduct(NormalizeOrZero(s.texture_space.ts_x), locked.axis), -1.0f, 1.0f);
    const float b = DotProduct(NormalizeOrZero(s.texture_space.ts_y), locked.axis);
    const float degrees = std::acos(a) / TWO_PI * 360.0f;
    info.rotation = b >= 0 ? -degrees : degrees;
    Brush::ComputeTextureSpace(normal, s.texture_space, info);
    const UVVector found = TexelAt(s.texture_space, s.vertices.front());
    info.shift.u -= locked.texels.u - found.u;
    info.shift.v += locked.texels.v - found.v;
}

} // namespace

void Brush::Move(const D3DVECTOR& move, bool texture_lock) {
    ForEachSurface([&](Surface& s, int i, bool curved) {
        if (!KeepsTexels(*this, s, curved, texture_lock))
            return;
        const UVVector before = TexelAt(s.texture_space, s.vertices.front());
        const UVVector after = TexelAt(s.texture_space, s.vertices.front() + move);
        s.texture.shift.u += after.u - before.u;
        s.texture.shift.v -= after.v - before.v;
        ComputeTextureSpace(MappingNormal(i, curved), s.texture_space, s.texture);
    });
    ForEachPosition(*this, [&move](D3DVECTOR& p) { p += move; });
    if (!curved_surfaces.empty()) {
        const std::vector<D3DVECTOR> normals = FirstNormals(*this);
        RebuildCurves();
        KeepFirstNormals(*this, normals);
        GenerateTextureSpaces();
        MapFans();
    }
    RecalcBBox();
    RemapFlatSurfaces(*this, true);
    assigned_to_cell = false;
    ReplaceDecals();
}

void Brush::Scale(const Box& new_box, const Box& old_box) {
    const D3DMATRIX scale = ScaleMatrix(new_box, old_box);
    ForEachPosition(*this, [&](D3DVECTOR& p) {
        const D3DVECTOR before = p;
        crMTransform(scale, p, p);
        for (int axis = 0; axis < 3; ++axis)
            Component(p, axis) = FreeOfRounding(Component(p, axis), Component(before, axis), AxisRange(old_box, axis),
                                                AxisRange(new_box, axis));
    });
    RebuildDerived(*this);
    GenerateTextureSpaces();
    MapFans();
    RemapFlatSurfaces(*this, true);
    assigned_to_cell = false;
    ReplaceDecals();
}

void Brush::Rotate(float angle, int view, const D3DVECTOR& center, bool texture_lock) {
    const D3DMATRIX turn = RotationMatrix(angle, view, center);
    std::vector<LockedMapping> locked;
    ForEachSurface([&](Surface& s, int i, bool curved) {
        if (KeepsTexels(*this, s, curved, texture_lock))
            locked.push_back(LockMapping(s, i, curved, turn));
    });
    TransformPositions(*this, turn);
    RebuildDerived(*this);
    for (const LockedMapping& mapping : locked)
        RestoreMapping(mapping, MappingNormal(mapping.index, mapping.curved));
    GenerateTextureSpaces();
    MapFans();
    RemapFlatSurfaces(*this, true);
    assigned_to_cell = false;
    ReplaceDecals();
}

void Brush::Transform(const D3DMATRIX& matrix, bool remap) {
    TransformPositions(*this, matrix);
    RebuildDerived(*this);
    if (remap) {
        GenerateTextureSpaces();
        MapFans();
        RemapFlatSurfaces(*this, false);
    }
    ReplaceDecals();
}

void Brush::FlipNormals() {
    for (Surface& s : surfaces)
        for (TRIANGLE& triangle : s.tri_indices)
            std::swap(triangle.i[0], triangle.i[2]);
    constexpr size_t COLUMNS = 3; // of a control net; the middle of a fan stands behind its only row
    if (!IsCustom())
        for (Surface& s : curved_surfaces)
            for (size_t row = 0; row + COLUMNS <= s.cp.size(); row += COLUMNS)
                std::swap(s.cp[row], s.cp[row + COLUMNS - 1]);
    RebuildDerived(*this);
    GenerateTextureSpaces();
    MapFans();
    RemapFlatSurfaces(*this, false);
    ReplaceDecals();
}

void Brush::AlignVertices() {
    const auto whole = [](float c) { return std::trunc(c) + 0.0f; }; // never a negative zero
    ForEachPosition(*this, [&whole](D3DVECTOR& p) { p = {whole(p.x), whole(p.y), whole(p.z)}; });
    MarkDrawnChanged();
}
