// The mapping of textures onto surfaces by plane.
#include <algorithm>

#include "render/Matrix.h"
#include "scene/BrushParts.h"
#include "scene/PlaneMapping.h"

namespace {

constexpr D3DVECTOR UP = {0, 1, 0};

void MapVertices(Surface& s) {
    const UVVector size = s.texture.MappingSize();
    s.uv.resize(s.vertices.size());
    for (size_t i = 0; i < s.vertices.size(); ++i) {
        const UVVector texel = TexelAt(s.texture_space, s.vertices[i]);
        s.uv[i] = {texel.u / size.u, texel.v / size.v};
    }
}

// Repeats the texture fu times fv over the surface, from its corner.
void FitPlanar(Surface& s, const D3DVECTOR& plane_normal, float fu, float fv) {
    TEX_INFO& info = s.texture;
    info.scale = {fu, fv};
    info.shift = {};
    info.rotation = 0;
    info.locked = false;
    const D3DVECTOR extent = MapToPlane(plane_normal, s.vertices).size;
    const UVVector size = info.MappingSize();
    if (extent.x > 0)
        info.scale.u = fu * size.u / extent.x;
    if (extent.y > 0)
        info.scale.v = fv * size.v / extent.y;
    Brush::ComputeTextureSpace(plane_normal, s.texture_space, info);
    if (!s.vertices.empty()) {
        UVVector least = TexelAt(s.texture_space, s.vertices.front());
        for (const D3DVECTOR& v : s.vertices) {
            const UVVector texel = TexelAt(s.texture_space, v);
            least = {std::min(least.u, texel.u), std::min(least.v, texel.v)};
        }
        info.shift = {least.u, -least.v};
    }
    Brush::ComputeTextureSpace(plane_normal, s.texture_space, info);
    MapVertices(s);
}

} // namespace

void Brush::ComputeTextureSpace(const D3DVECTOR& z, TEXTURE_SPACE& ts, const TEX_INFO& tex_info) {
    const float ax = std::fabs(z.x), ay = std::fabs(z.y), az = std::fabs(z.z);
    ts.ts_z = z;
    if (ax > ay && ax > az) {
        ts.ts_y = NormalizeOrZero(z.x >= 0 ? D3DVECTOR{-z.y, z.x, 0} : D3DVECTOR{z.y, -z.x, 0});
        ts.ts_x = CrossProduct(z, ts.ts_y);
    } else if (ay > ax && ay > az) {
        ts.ts_y = NormalizeOrZero({0, -z.z, z.y});
        ts.ts_x = CrossProduct(z, ts.ts_y);
    } else {
        ts.ts_x = NormalizeOrZero({-z.z, 0, z.x});
        ts.ts_y = CrossProduct(ts.ts_x, z);
    }
    if (tex_info.flip_u)
        ts.ts_x = -ts.ts_x;
    if (tex_info.flip_v)
        ts.ts_y = -ts.ts_y;
    ts.ts_s = {-tex_info.shift.u, tex_info.shift.v, 0};
    const float angle = tex_info.rotation * DEGREE_TO_TURN * TWO_PI;
    const D3DMATRIX turn = Quaternion::from_rotation(z, -angle).to_matrix();
    for (D3DVECTOR* axis : {&ts.ts_x, &ts.ts_y}) {
        crMTransform3(turn, *axis, *axis);
        *axis = NormalizeOrZero(*axis);
    }
    ts.ts_x *= tex_info.scale.u;
    ts.ts_y *= tex_info.scale.v;
}

D3DVECTOR Brush::MappingNormal(int surface, bool curved) const {
    const Surface& s = (curved ? curved_surfaces : surfaces)[static_cast<size_t>(surface)];
    return (type == BT_TERRAIN && !curved) || s.normal.empty() ? UP : s.normal.front();
}

void Brush::GenerateTextureSpaces() {
    ForEachSurface([this](Surface& s, int i, bool curved) {
        if (!curved || s.cp_count == CURVE_FAN)
            ComputeTextureSpace(MappingNormal(i, curved), s.texture_space, s.texture);
    });
}

void Brush::CalculateUV(int surface) {
    MapVertices(surfaces[static_cast<size_t>(surface)]);
    MarkDrawnChanged();
}

void Brush::CalculateUV4CurveT1(int surface) {
    MapVertices(curved_surfaces[static_cast<size_t>(surface)]);
    MarkDrawnChanged();
}

void Brush::MapFans() {
    if (IsCustom())
        return;
    MarkDrawnChanged();
    for (size_t c = 0; c < curved_surfaces.size(); ++c) {
        Surface& s = curved_surfaces[c];
        if (s.cp_count != CURVE_FAN)
            continue;
        ComputeTextureSpace(MappingNormal(static_cast<int>(c), true), s.texture_space, s.texture);
        MapVertices(s);
    }
}

void Brush::Remap(int surface, bool curved) {
    std::vector<Surface>& list = curved ? curved_surfaces : surfaces;
    if (surface < 0 || static_cast<size_t>(surface) >= list.size())
        return;
    if (curved) {
        RebuildCurves();
        MapFans(); // the tessellation mapped them with their spaces before the change
        return;
    }
    Surface& s = list[static_cast<size_t>(surface)];
    ComputeTextureSpace(MappingNormal(surface, false), s.texture_space, s.texture);
    CalculateUV(surface);
}

void Brush::RemapAll() {
    if (!curved_surfaces.empty()) { // the flat surfaces keep their coordinates
        RebuildCurves();
        MapFans();
        return;
    }
    for (size_t i = 0; i < surfaces.size(); ++i)
        if (surfaces[i].HasMaterial())
            Remap(static_cast<int>(i), false);
}

void Brush::FitTexture(float fu, float fv) {
    TEX_INFO* info = GetSelectedSurfaceTexInfo();
    if (!info)
        return;
    MarkDrawnChanged();
    if (!selected_surface_curved) {
        info->fitted = false;
        FitPlanar(surfaces[static_cast<size_t>(selected_surface)], MappingNormal(selected_surface, false), fu, fv);
    } else if (curved_surfaces[static_cast<size_t>(selected_surface)].cp_count == CURVE_FAN && !IsCustom())
        FitTexture4CurveT1(fu, fv);
    else {
        info->scale = {fu, fv};
        info->shift = {};
        info->rotation = 0;
        info->locked = false;
        Remap();
    }
}

void Brush::FitTexture4CurveT1(float fu, float fv) {
    if (!GetSelectedSurfaceTexInfo() || !selected_surface_curved)
        return;
    FitPlanar(curved_surfaces[static_cast<size_t>(selected_surface)], MappingNormal(selected_surface, true), fu, fv);
    MarkDrawnChanged();
}

void Brush::SelectNextSurface() {
    if (surfaces.empty() && curved_surfaces.empty())
        return;
    ++selected_surface;
    const std::vector<Surface>& list = selected_surface_curved ? curved_surfaces : surfaces;
    if (static_cast<size_t>(selected_surface) < list.size())
        return;
    selected_surface = 0;
    const std::vector<Surface>& other = selected_surface_curved ? surfaces : curved_surfaces;
    if (!other.empty())
        selected_surface_curved = !selected_surface_curved;
}

TEX_INFO* Brush::GetSelectedSurfaceTexInfo() {
    std::vector<Surface>& list = selected_surface_curved ? curved_surfaces : surfaces;
    if (selected_surface < 0 || static_cast<size_t>(selected_surface) >= list.size())
        return nullptr;
    return &list[static_cast<size_t>(selected_surface)].texture;
}
