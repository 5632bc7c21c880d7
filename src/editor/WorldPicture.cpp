#include "editor/WorldPicture.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "compiler/Lighting.h"
#include "definitions/MaterialLibrary.h"
#include "foundation/WholeNumber.h"
#include "render/Textures.h"
#include "scene/Brush.h"
#include "scene/World.h"

static Texels ReadTexels(uint32_t handle) {
    Texels texels;
    uint32_t width = 0, height = 0;
    if (crTReadPixels(handle, texels.argb, width, height)) {
        texels.width = static_cast<int>(width);
        texels.height = static_cast<int>(height);
    }
    return texels;
}

std::vector<Texels> LoadTextures(const WorldFile& world) {
    std::vector<Texels> textures;
    for (const WorldMaterial& material : world.materials) {
        Texels& texels = textures.emplace_back();
        MaterialProperties properties;
        if (ParseMaterialScript(material.material_class, material.material_name, properties))
            texels = ReadTexels(crTGet("Textures\\" + properties.texture_class, properties.texture_name, TL_MATERIAL));
    }
    return textures;
}

PictureDecals DecalsOf(const World& world) {
    PictureDecals decals;
    std::map<uint32_t, size_t> places; // of each texture
    for (const auto& brush : world.brush)
        for (const auto& decal : brush->decal_list) {
            const auto [place, is_new] = places.try_emplace(decal->texture, decals.textures.size());
            if (is_new)
                decals.textures.push_back(ReadTexels(decal->texture));
            PictureDecals::Piece& piece = decals.pieces.emplace_back();
            piece.mesh = {decal->xyz, decal->uv, {}, {}, decal->tris};
            piece.mesh.colors.assign(decal->xyz.size(), decal->color.dw_color & 0xFFFFFF);
            piece.texture = place->second;
            piece.blend = decal->alpha_decal ? PictureBlend::Alpha : PictureBlend::Multiply;
        }
    return decals;
}

static constexpr float NEAR_PLANE = 2.0f;
static const D3DVECTOR GREY{0.6f, 0.6f, 0.6f};

D3DVECTOR DirectionOf(float elevation, float azimuth) {
    const float across = std::cos(elevation);
    return {std::sin(azimuth) * across, std::sin(elevation), std::cos(azimuth) * across};
}

WorldPicture::WorldPicture(int w, int h, const PictureCamera& camera)
    : width(w), height(h), from(camera.position), front(camera.direction),
      scale(static_cast<float>(w) / 2 / std::tan(camera.fov / 2)),
      depth(static_cast<size_t>(w) * static_cast<size_t>(h), 0.0f), color(depth.size(), D3DVECTOR{0.05f, 0.07f, 0.1f}) {
    if (Magnitude(front) == 0)
        front = {0, 0, 1};
    const D3DVECTOR flat{front.z, 0, -front.x};
    const D3DVECTOR level = Magnitude(flat) == 0 ? D3DVECTOR{1, 0, 0} : NormalizeOrZero(flat),
                    upright = CrossProduct(front, level);
    const float c = std::cos(camera.roll), s = std::sin(camera.roll);
    right = level * c + upright * s;
    up = upright * c - level * s;
}

WorldPicture::Vertex WorldPicture::ToView(const D3DVECTOR& p) const {
    const D3DVECTOR d = p - from;
    Vertex vertex;
    vertex.view = {DotProduct(d, right), DotProduct(d, up), DotProduct(d, front)};
    return vertex;
}

void WorldPicture::Draw(const WorldFile& world, const std::vector<Texels>& textures, const PictureDecals& decals) {
    const auto draw_surfaces = [&](PictureBlend blend) {
        for (const WorldBrush& brush : world.brushes)
            if (brush.type != BT_PORTAL && brush.type != BT_OCCLUDER)
                for (const WorldSurface& surface : brush.surfaces)
                    DrawSurface(brush, surface, world, textures, blend);
    };
    draw_surfaces(PictureBlend::Opaque);
    for (const PictureDecals::Piece& piece : decals.pieces)
        DrawMesh(piece.mesh, decals.textures[piece.texture], {}, piece.blend);
    draw_surfaces(PictureBlend::Glass);
}

static D3DVECTOR Rgb24(uint32_t word) {
    return D3DVECTOR{static_cast<float>(word >> 16 & 255), static_cast<float>(word >> 8 & 255),
                     static_cast<float>(word & 255)} /
           255.0f;
}

// The mesh of a surface; a curved one is tessellated as the game does it.
static WorldSurface Tessellated(const WorldSurface& surface) {
    WorldSurface mesh = surface;
    if (surface.cp_count == 0)
        return mesh;
    Brush brush;
    brush.SetCurveDetail(0);
    Surface& curved = brush.curved_surfaces.emplace_back();
    curved.cp = surface.cp;
    curved.cp_count = surface.cp_count;
    curved.texture = surface.texture;
    // On the quartered pages a texel is half of 1/256.
    const auto side = [](float share_of_page) {
        return std::clamp(WholeNumber(share_of_page * 2.0f * LIGHTMAP_PAGE_SIDE + 0.5f), 4, MAX_LIGHTMAP_SIDE);
    };
    curved.lightmap_size = {side(surface.lightmap.u_size), side(surface.lightmap.v_size)};
    brush.GenerateTextureSpaces();
    brush.TesselateCurves();
    brush.ComputeNormals();
    brush.GenerateTextureSpaces();
    brush.TesselateCurves();
    mesh.vertices = curved.vertices;
    mesh.uv = curved.uv;
    mesh.lightmap_uv = curved.lightmap_uv;
    mesh.triangles = curved.tri_indices;
    return mesh;
}

void WorldPicture::DrawSurface(const WorldBrush& brush, const WorldSurface& surface, const WorldFile& world,
                               const std::vector<Texels>& textures, PictureBlend blend) {
    const int material = surface.texture.index;
    if (material < 1 || static_cast<size_t>(material) > textures.size())
        return;
    const Texels& texture = textures[static_cast<size_t>(material) - 1];
    const bool has_alpha =
        std::any_of(texture.argb.begin(), texture.argb.end(), [](uint32_t t) { return t >> 24 != 255; });
    if (has_alpha != (blend == PictureBlend::Glass))
        return;
    const WorldSurface tessellated = Tessellated(surface);
    PictureMesh mesh{tessellated.vertices, tessellated.uv, tessellated.lightmap_uv, tessellated.colors,
                     tessellated.triangles};
    for (UVVector& light : mesh.light)
        light = {surface.lightmap.u_start + light.u * surface.lightmap.u_size,
                 surface.lightmap.v_start + light.v * surface.lightmap.v_size};
    LightTexels lightmap;
    if (const auto page = static_cast<size_t>(surface.lightmap.lightmap);
        brush.type != BT_CUSTOM && page < world.lightmap_pages.size())
        lightmap = {LIGHTMAP_PAGE_SIDE, LIGHTMAP_PAGE_SIDE, world.lightmap_pages[page].data()};
    DrawMesh(mesh, texture, lightmap, blend);
}

void WorldPicture::DrawMesh(const PictureMesh& mesh, const Texels& texture, const LightTexels& lightmap,
                            PictureBlend blend) {
    std::vector<Vertex> vertices;
    for (size_t v = 0; v < mesh.vertices.size(); ++v) {
        Vertex& vertex = vertices.emplace_back(ToView(mesh.vertices[v]));
        vertex.uv = v < mesh.uv.size() ? mesh.uv[v] : UVVector{};
        if (v < mesh.light.size())
            vertex.light = mesh.light[v];
        if (v < mesh.colors.size())
            vertex.tint = Rgb24(mesh.colors[v]);
    }
    const Paint paint{&texture, lightmap, blend};
    for (const TRIANGLE& triangle : mesh.triangles) {
        if (std::any_of(triangle.i.begin(), triangle.i.end(), [&](uint16_t i) { return i >= vertices.size(); }))
            continue;
        const Vertex corners[3] = {vertices[triangle.i[0]], vertices[triangle.i[1]], vertices[triangle.i[2]]};
        DrawTriangle(corners, paint);
    }
}

// Cuts the triangle at the near plane and draws what is left as a fan.
void WorldPicture::DrawTriangle(const Vertex* corners, const Paint& paint) {
    std::vector<Vertex> polygon;
    for (int k = 0; k < 3; ++k) {
        const Vertex &a = corners[k], &b = corners[(k + 1) % 3];
        const bool a_in = a.view.z >= NEAR_PLANE, b_in = b.view.z >= NEAR_PLANE;
        if (a_in)
            polygon.push_back(a);
        if (a_in != b_in) {
            const float t = (NEAR_PLANE - a.view.z) / (b.view.z - a.view.z);
            Vertex cut;
            cut.view = a.view + (b.view - a.view) * t;
            cut.uv = UVVector::interpolate(a.uv, b.uv, t);
            cut.light = UVVector::interpolate(a.light, b.light, t);
            cut.tint = a.tint + (b.tint - a.tint) * t;
            polygon.push_back(cut);
        }
    }
    for (size_t k = 2; k < polygon.size(); ++k)
        Rasterise(polygon[0], polygon[k - 1], polygon[k], paint);
}

// The column or row of a repeated texture; one of them also for a coordinate that is no number.
static int TexelPlace(float coordinate, int side) {
    const float fraction = coordinate - std::floor(coordinate);
    return std::clamp(WholeNumber(fraction * static_cast<float>(side)), 0, side - 1);
}

static uint32_t Texel(const Texels& texture, const UVVector& uv) {
    const int x = TexelPlace(uv.u, texture.width), y = TexelPlace(uv.v, texture.height);
    return texture.argb[static_cast<size_t>(y) * static_cast<size_t>(texture.width) + static_cast<size_t>(x)];
}

// Bilinear, clamped to the edges.
static D3DVECTOR LightColor(const LightTexels& map, const UVVector& uv) {
    const auto place = [](float coordinate, int side) {
        return std::clamp(coordinate * static_cast<float>(side) - 0.5f, -1.0f, static_cast<float>(side));
    };
    const float x = place(uv.u, map.width), y = place(uv.v, map.height);
    const int x0 = WholeNumber(std::floor(x)), y0 = WholeNumber(std::floor(y));
    const float fx = x - static_cast<float>(x0), fy = y - static_cast<float>(y0);
    const auto at = [&map](int px, int py) {
        const uint8_t* texel = map.bytes + (static_cast<ptrdiff_t>(std::clamp(py, 0, map.height - 1)) * map.width +
                                            std::clamp(px, 0, map.width - 1)) *
                                               3;
        return D3DVECTOR{static_cast<float>(texel[2]), static_cast<float>(texel[1]), static_cast<float>(texel[0])} /
               255.0f;
    };
    return (at(x0, y0) * (1 - fx) + at(x0 + 1, y0) * fx) * (1 - fy) +
           (at(x0, y0 + 1) * (1 - fx) + at(x0 + 1, y0 + 1) * fx) * fy;
}

// What a picture shows of an intensity, and back.
static D3DVECTOR Shown(const D3DVECTOR& c) {
    return {std::sqrt(std::max(0.0f, c.x)), std::sqrt(std::max(0.0f, c.y)), std::sqrt(std::max(0.0f, c.z))};
}
static D3DVECTOR Intensity(const D3DVECTOR& shown) { return {shown.x * shown.x, shown.y * shown.y, shown.z * shown.z}; }

// The inverse distance of a decal, which lies on its surface: as far in front of it as rounding may move either.
static float NearerThan(float inverse) {
    const float z = 1 / inverse;
    return 1 / (z - 0.01f - z * 1.0e-5f);
}

void WorldPicture::Rasterise(const Vertex& a, const Vertex& b, const Vertex& c, const Paint& paint) {
    const Vertex* corner[3] = {&a, &b, &c};
    float x[3], y[3], w[3];
    for (int k = 0; k < 3; ++k) {
        w[k] = 1.0f / corner[k]->view.z;
        x[k] = static_cast<float>(width) / 2 + corner[k]->view.x * w[k] * scale;
        y[k] = static_cast<float>(height) / 2 - corner[k]->view.y * w[k] * scale;
    }
    const float area = (x[1] - x[0]) * (y[2] - y[0]) - (x[2] - x[0]) * (y[1] - y[0]);
    if (!(std::fabs(area) > 1.0e-6f))
        return;
    const bool is_decal = paint.blend == PictureBlend::Multiply || paint.blend == PictureBlend::Alpha;
    constexpr float OTHER_DETAIL = 1.01f; // nearer: a curve has other facets while it is lit
    const float forward = paint.blend == PictureBlend::Relit ? OTHER_DETAIL : 1;
    const auto bound = [](float value, int most) { return std::clamp(WholeNumber(value), 0, most); };
    const int x_first = bound(std::min({x[0], x[1], x[2]}), width),
              x_last = bound(std::max({x[0], x[1], x[2]}) + 1, width);
    const int y_first = bound(std::min({y[0], y[1], y[2]}), height),
              y_last = bound(std::max({y[0], y[1], y[2]}) + 1, height);
    for (int py = y_first; py < y_last; ++py)
        for (int px = x_first; px < x_last; ++px) {
            const float cx = static_cast<float>(px) + 0.5f, cy = static_cast<float>(py) + 0.5f;
            const float l1 = ((cx - x[0]) * (y[2] - y[0]) - (x[2] - x[0]) * (cy - y[0])) / area;
            const float l2 = ((x[1] - x[0]) * (cy - y[0]) - (cx - x[0]) * (y[1] - y[0])) / area;
            const float l0 = 1 - l1 - l2;
            if (l0 < 0 || l1 < 0 || l2 < 0)
                continue;
            const float inverse = l0 * w[0] + l1 * w[1] + l2 * w[2];
            const size_t pixel = static_cast<size_t>(py) * static_cast<size_t>(width) + static_cast<size_t>(px);
            if ((is_decal ? NearerThan(inverse) : forward * inverse) <= depth[pixel])
                continue;
            const float p0 = l0 * w[0] / inverse, p1 = l1 * w[1] / inverse, p2 = l2 * w[2] / inverse;
            const UVVector uv{a.uv.u * p0 + b.uv.u * p1 + c.uv.u * p2, a.uv.v * p0 + b.uv.v * p1 + c.uv.v * p2};
            D3DVECTOR light = a.tint * p0 + b.tint * p1 + c.tint * p2;
            if (paint.lightmap.bytes)
                light = LightColor(paint.lightmap, {a.light.u * p0 + b.light.u * p1 + c.light.u * p2,
                                                    a.light.v * p0 + b.light.v * p1 + c.light.v * p2});
            const bool textured = paint.texture->width > 0;
            const uint32_t texel = textured ? Texel(*paint.texture, uv) : 0xFF000000;
            const D3DVECTOR base = textured ? Rgb24(texel) : GREY;
            const float alpha = static_cast<float>(texel >> 24) / 255;
            const D3DVECTOR lit{base.x * light.x, base.y * light.y, base.z * light.z};
            D3DVECTOR& under = color[pixel];
            switch (paint.blend) {
            case PictureBlend::Opaque:
            case PictureBlend::Relit:
                under = lit;
                depth[pixel] = inverse;
                break;
            case PictureBlend::Glass:
                under = base * (alpha * 0.8f) + under * (1 - alpha);
                break;
            case PictureBlend::Multiply: // decals blend with what is shown
                under = {under.x * lit.x * lit.x, under.y * lit.y * lit.y, under.z * lit.z * lit.z};
                break;
            case PictureBlend::Alpha:
                under = Intensity(lit * alpha + Shown(under) * (1 - alpha));
                break;
            }
        }
}

std::vector<uint8_t> WorldPicture::Rgb() const {
    std::vector<uint8_t> rgb;
    rgb.reserve(color.size() * 3);
    for (const D3DVECTOR& c : color) {
        const D3DVECTOR shown = Shown(c);
        for (float channel : {shown.x, shown.y, shown.z})
            rgb.push_back(static_cast<uint8_t>(ChannelToByte(channel)));
    }
    return rgb;
}
