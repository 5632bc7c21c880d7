// The level as it is being lit, in a picture of the perspective view as it was at the start: first all of it in the
// dark, then, while a compile works on it in another thread, each brush that has its light.
#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

#include "editor/WorldPicture.h"

class Brush;
class CInterface;

class LightPreview {
public:
    // Of the perspective view now, width by height pixels. Before the compile begins.
    LightPreview(const CInterface& interface, int width, int height);

    void Take(const Brush& lit); // from any thread
    // Draws what was taken since, the level in the dark at first. False when there was nothing.
    bool Draw();
    std::vector<uint8_t> Rgb() const { return picture.Rgb(); } // three bytes a pixel

private:
    struct LitMesh {
        PictureMesh mesh;
        int material = 0;
        PictureBlend blend = PictureBlend::Relit;
        int width = 0, height = 0;     // of the lightmap, texels
        std::vector<uint8_t> lightmap; // blue, green, red
    };
    static LitMesh MeshOf(const Surface& surface);
    static std::vector<LitMesh> MeshesOf(const Brush& brush);

    std::vector<Texels> textures; // by row of the world's table
    WorldPicture picture;
    std::mutex mutex; // of taken
    std::vector<LitMesh> taken;
};
