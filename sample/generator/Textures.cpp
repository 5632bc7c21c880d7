// The pictures of the sample, painted from noise and patterns.
#include "Canvas.h"
#include "Sample.h"

static Canvas Bricks(const Pixel& base, const Pixel& joint, uint32_t seed) {
    Canvas canvas(256, 256);
    canvas.Paint([&](float u, float v) {
        const float rows = 16, columns = 8;
        const int row = static_cast<int>(v * rows);
        const float shifted = u * columns + (row % 2 ? 0.5f : 0.0f);
        const int column = static_cast<int>(shifted) % 8;
        const float fx = shifted - std::floor(shifted), fy = v * rows - static_cast<float>(row);
        const float grain = Turbulence(u, v, 32, 3, seed);
        if (fx < 0.05f || fy < 0.12f)
            return Shade(joint, 0.75f + 0.5f * grain);
        const float edge = std::min({(fx - 0.05f) * 8, (1 - fx) * 8, (fy - 0.12f) * 4, (1 - fy) * 4, 1.0f});
        return Shade(base,
                     (0.65f + 0.35f * CellValue(column, row, seed)) * (0.7f + 0.5f * grain) * (0.75f + 0.25f * edge));
    });
    return canvas;
}

static Canvas Grained(int side, const Pixel& dark, const Pixel& light, int period, uint32_t seed) {
    Canvas canvas(side, side);
    canvas.Paint([&](float u, float v) { return Mix(dark, light, Turbulence(u, v, period, 5, seed)); });
    return canvas;
}

static Canvas Planks() {
    Canvas canvas(256, 256);
    canvas.Paint([](float u, float v) {
        const int plank = static_cast<int>(u * 8);
        const float fx = u * 8 - static_cast<float>(plank);
        const float grain = TilingNoise(u * 64, v * 4 + 9 * CellValue(plank, 0, 5), 64, 21);
        const Pixel wood =
            Mix({0.36f, 0.22f, 0.11f}, {0.62f, 0.42f, 0.22f}, 0.5f * grain + 0.5f * CellValue(plank, 1, 5));
        return fx < 0.04f ? Shade(wood, 0.3f) : wood;
    });
    return canvas;
}

static Canvas Steel() {
    Canvas canvas(128, 128);
    canvas.Paint([](float u, float v) {
        const float brushed = TilingNoise(u * 8, v * 128, 128, 31) * 0.25f + 0.45f;
        const float fu = u * 4 - std::floor(u * 4), fv = v * 4 - std::floor(v * 4);
        const float rivet = (fu - 0.12f) * (fu - 0.12f) + (fv - 0.12f) * (fv - 0.12f);
        const bool seam = fu < 0.02f || fv < 0.02f;
        return Shade({0.8f, 0.85f, 0.95f}, seam ? 0.25f : rivet < 0.003f ? 0.85f : brushed);
    });
    return canvas;
}

// Panes of coloured glass in leading: the panes let light pass, the leading does not.
static Canvas StainedGlass() {
    static const Pixel panes[] = {{0.9f, 0.15f, 0.1f, 0.35f},
                                  {0.1f, 0.25f, 0.9f, 0.35f},
                                  {0.95f, 0.75f, 0.1f, 0.3f},
                                  {0.1f, 0.7f, 0.25f, 0.35f},
                                  {0.6f, 0.15f, 0.7f, 0.4f}};
    Canvas canvas(128, 128);
    canvas.Paint([](float u, float v) {
        const float x = u * 4 + v * 4, y = u * 4 - v * 4 + 8;
        const int cx = static_cast<int>(x), cy = static_cast<int>(y);
        const float fx = x - static_cast<float>(cx), fy = y - static_cast<float>(cy);
        if (fx < 0.08f || fy < 0.08f)
            return Pixel{0.08f, 0.08f, 0.09f, 1};
        return panes[static_cast<size_t>((cx * 2 + cy * 3) % 5)];
    });
    return canvas;
}

static Canvas Halo() {
    Canvas canvas(64, 64);
    canvas.Paint([](float u, float v) {
        const float distance = std::sqrt((u - 0.5f) * (u - 0.5f) + (v - 0.5f) * (v - 0.5f)) * 2;
        const float strength = std::max(0.0f, 1 - distance);
        return Pixel{1, 1, 1, strength * strength};
    });
    return canvas;
}

static Canvas Water(uint32_t seed) {
    Canvas canvas(128, 128);
    canvas.Paint([seed](float u, float v) {
        const float wave = Turbulence(u, v, 8, 4, seed);
        Pixel water = Mix({0.05f, 0.15f, 0.22f}, {0.35f, 0.55f, 0.6f}, wave);
        water.a = 0.6f + 0.4f * wave;
        return water;
    });
    return canvas;
}

// The dash pattern of boxes in the views: one dash a repetition.
static Canvas Dash() {
    Canvas canvas(8, 8);
    canvas.Paint([](float u, float) { return Pixel{1, 1, 1, u < 0.625f ? 1.0f : 0.0f}; });
    return canvas;
}

// A bright edge about a clear middle, laid over each repetition of a texture.
static Canvas Border() {
    Canvas canvas(64, 64);
    canvas.Paint([](float u, float v) {
        const float edge = std::min(std::min(u, 1 - u), std::min(v, 1 - v));
        return Pixel{1, 0.9f, 0.2f, edge < 0.04f ? 0.8f : 0.0f};
    });
    return canvas;
}

bool MakeTextures() {
    bool saved = Bricks({0.72f, 0.3f, 0.2f}, {0.55f, 0.52f, 0.48f}, 1).SaveTarga("Textures\\brick\\brick_red.tga", 24);
    saved &= Bricks({0.5f, 0.44f, 0.38f}, {0.35f, 0.34f, 0.32f}, 2).SaveTarga("Textures\\brick\\brick_old.tga", 24);
    saved &= Planks().SaveTarga("Textures\\wood\\planks.tga", 24);
    saved &= Steel().SaveTarga("Textures\\metal\\steel.tga", 24);
    saved &= Grained(128, {0.28f, 0.28f, 0.27f}, {0.72f, 0.71f, 0.68f}, 8, 4)
                 .SaveDds("Textures\\concrete\\concrete.dds", Canvas::DdsKind::DXT1);
    saved &=
        Grained(256, {0.08f, 0.2f, 0.05f}, {0.4f, 0.6f, 0.22f}, 32, 6).SaveTarga("Textures\\ground\\grass.tga", 24);
    saved &= StainedGlass().SaveTarga("Textures\\glass\\stained.tga", 32);
    saved &= Halo().SaveTarga("Textures\\fx\\halo.tga", 8);
    saved &= Water(41).SaveDds("Textures\\water\\still.dds", Canvas::DdsKind::DXT3);
    saved &= Water(43).SaveDds("Textures\\water\\waves.dds", Canvas::DdsKind::DXT5);
    saved &= Grained(64, {0.5f, 0.5f, 0.55f}, {0.8f, 0.8f, 0.85f}, 4, 7).SaveTarga("Textures\\fx\\fog.tga", 24);
    saved &= Grained(64, {0.4f, 0.4f, 0.38f}, {0.75f, 0.75f, 0.7f}, 8, 9).SaveTarga("entities_textures\\stone.tga", 24);
    saved &= Dash().SaveTarga("Marrowstead\\brush.tga", 32);
    saved &= Border().SaveTarga("Marrowstead\\border.tga", 32);
    return saved;
}

bool MakePlaster(const std::string& path, bool restored) {
    const Pixel dark = restored ? Pixel{0.78f, 0.76f, 0.7f} : Pixel{0.5f, 0.45f, 0.36f};
    const Pixel light = restored ? Pixel{0.97f, 0.95f, 0.9f} : Pixel{0.8f, 0.74f, 0.62f};
    return Grained(128, dark, light, 8, 3).SaveTarga(path, 24);
}
