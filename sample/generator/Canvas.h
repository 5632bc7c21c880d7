// A picture being painted: floats 0 to 1 a channel, rows from the top, tiling in both directions.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

struct Pixel {
    float r = 0, g = 0, b = 0, a = 1;
};

inline Pixel Mix(const Pixel& p, const Pixel& q, float t) {
    return {p.r + (q.r - p.r) * t, p.g + (q.g - p.g) * t, p.b + (q.b - p.b) * t, p.a + (q.a - p.a) * t};
}
inline Pixel Shade(const Pixel& p, float f) { return {p.r * f, p.g * f, p.b * f, p.a}; }

class Canvas {
public:
    Canvas(int w, int h) : width(w), height(h), pixels(static_cast<size_t>(w) * static_cast<size_t>(h)) {}
    Pixel& At(int x, int y) {
        return pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
    }
    const Pixel& At(int x, int y) const { return const_cast<Canvas*>(this)->At(x, y); }
    // paint(u, v) with u, v from 0 to 1.
    void Paint(const std::function<Pixel(float u, float v)>& paint);

    // Targa of 8 (alpha as grey), 24 or 32 bits; DDS with one level. False when the file cannot be written.
    bool SaveTarga(const std::string& path, int bits) const;
    enum class DdsKind { DXT1, DXT3, DXT5 };
    bool SaveDds(const std::string& path, DdsKind kind) const;

    int width, height;

private:
    std::vector<Pixel> pixels;
};

// Smooth noise that repeats every `period` cells, 0 to 1; the same on every machine.
float TilingNoise(float x, float y, int period, uint32_t seed);
// Several octaves of it over the unit square.
float Turbulence(float u, float v, int period, int octaves, uint32_t seed);
// One number from 0 to 1 for a cell.
float CellValue(int x, int y, uint32_t seed);
