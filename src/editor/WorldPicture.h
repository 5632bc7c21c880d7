// A picture of a compiled world from one camera: textures times lightmaps, drawn by a small rasteriser with a depth
// buffer.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "persistence/WorldFile.h"

class World;

struct PictureCamera {
    D3DVECTOR position;
    D3DVECTOR direction{0, 0, 1}; // a unit vector
    float roll = 0;               // radians
    float fov = 1.4f;             // radians, of the width
};
// elevation: up is positive; azimuth: from +z towards +x; radians.
D3DVECTOR DirectionOf(float elevation, float azimuth);

// Texels 0xAARRGGBB, rows from the top.
struct Texels {
    int width = 0, height = 0;
    std::vector<uint32_t> argb;
};

// Of each material of the world, by its script and the mounted libraries.
std::vector<Texels> LoadTextures(const WorldFile& world);

// A lightmap: three bytes a texel, blue, green, red; rows from the top.
struct LightTexels {
    int width = 0, height = 0;
    const uint8_t* bytes = nullptr;
};

struct PictureMesh {
    std::vector<D3DVECTOR> vertices;
    std::vector<UVVector> uv, light; // light: 0 to 1 over the lightmap
    std::vector<uint32_t> colors;    // 0x00RRGGBB, in place of a lightmap; may be empty
    std::vector<TRIANGLE> triangles;
};

enum class PictureBlend {
    Opaque,
    Relit,    // in place of what was drawn of the same surface before
    Glass,    // glows in its own colour and lets what was drawn before through
    Multiply, // a decal without alpha darkens what lies under it
    Alpha,    // a decal with alpha covers it, without light
};

// The decals of a level, ready to be drawn in many pictures.
struct PictureDecals {
    struct Piece {
        PictureMesh mesh;
        size_t texture;
        PictureBlend blend;
    };
    std::vector<Texels> textures;
    std::vector<Piece> pieces;
};
PictureDecals DecalsOf(const World& world);

class WorldPicture {
public:
    WorldPicture(int w, int h, const PictureCamera& camera);

    // textures: one of each material, number 1 first; an empty one draws grey.
    void Draw(const WorldFile& world, const std::vector<Texels>& textures, const PictureDecals& decals = {});
    // Into what is drawn already. lightmap: none when its bytes are null.
    void DrawMesh(const PictureMesh& mesh, const Texels& texture, const LightTexels& lightmap, PictureBlend blend);
    std::vector<uint8_t> Rgb() const; // three bytes a pixel

private:
    struct Vertex {
        D3DVECTOR view; // right, up, front
        UVVector uv, light;
        D3DVECTOR tint{1, 1, 1};
    };
    struct Paint {
        const Texels* texture;
        LightTexels lightmap;
        PictureBlend blend;
    };

    void DrawSurface(const WorldBrush& brush, const WorldSurface& surface, const WorldFile& world,
                     const std::vector<Texels>& textures, PictureBlend blend);
    void DrawTriangle(const Vertex* corners, const Paint& paint);
    void Rasterise(const Vertex& a, const Vertex& b, const Vertex& c, const Paint& paint);
    Vertex ToView(const D3DVECTOR& p) const;

    int width, height;
    D3DVECTOR from, right, up, front;
    float scale; // pixels at distance 1
    std::vector<float> depth;
    std::vector<D3DVECTOR> color;
};
