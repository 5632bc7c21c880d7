// A picture of a compiled world from one camera: textures times lightmaps, drawn by a small rasteriser with a depth
// buffer.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "persistence/WorldFile.h"

struct Camera {
    D3DVECTOR position;
    float elevation = 0; // radians, up is positive
    float azimuth = 0;   // radians from +z towards +x
    float fov = 1.4f;    // radians, of the width
};

// Texels 0xAARRGGBB, rows from the top.
struct Texels {
    int width = 0, height = 0;
    std::vector<uint32_t> argb;
};

class Picture3D {
public:
    Picture3D(int w, int h, const Camera& camera);

    // textures: one of each material, number 1 first; an empty one draws grey.
    void Draw(const WorldFile& world, const std::vector<Texels>& textures);
    std::vector<uint8_t> Rgb() const; // three bytes a pixel

private:
    struct Vertex {
        D3DVECTOR view; // right, up, front
        UVVector uv, light;
        D3DVECTOR tint{1, 1, 1};
    };
    struct Paint {
        const Texels* texture;
        const std::vector<uint8_t>* page; // null: no lightmap
        bool transparent;
    };

    void DrawSurface(const WorldBrush& brush, const WorldSurface& surface, const WorldFile& world,
                     const std::vector<Texels>& textures, bool transparent);
    void DrawTriangle(const Vertex* corners, const Paint& paint);
    void Rasterise(const Vertex& a, const Vertex& b, const Vertex& c, const Paint& paint);
    Vertex ToView(const D3DVECTOR& p) const;

    int width, height;
    D3DVECTOR from, right, up, front;
    float scale; // pixels at distance 1
    std::vector<float> depth;
    std::vector<D3DVECTOR> color;
};
