// Segments of terrain for tests.
#pragma once

#include <gtest/gtest.h>

#include "scene/Scenes.h"

// A segment of cells by cells from the corner (x, z) of least x and greatest z, at heights by a function of the place.
template <class Fn>
std::unique_ptr<Brush> Segment(int cells, float size, float x0, float z0, Fn height) {
    auto brush = std::make_unique<Brush>();
    brush->type = BT_TERRAIN;
    const int side = cells + 1;
    brush->terrain_vertex_size = {side, side};
    Surface& s = brush->surfaces.emplace_back();
    s.Allocate(side * side, 0, 0);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            const float px = x0 + size * static_cast<float>(x), pz = z0 - size * static_cast<float>(y);
            s.vertices[static_cast<size_t>(y * side + x)] = {px, height(px, pz), pz};
        }
    for (uint16_t y = 0; y < cells; ++y)
        for (uint16_t x = 0; x < cells; ++x) {
            const auto r0 = static_cast<uint16_t>(y * side), r1 = static_cast<uint16_t>(r0 + side);
            const auto at = [](int i) { return static_cast<uint16_t>(i); };
            s.tri_indices.push_back({{at(r1 + x + 1), at(r1 + x), at(r0 + x)}});
            s.tri_indices.push_back({{at(r0 + x + 1), at(r1 + x + 1), at(r0 + x)}});
        }
    brush->color_vector = {1, 1, 1, 1};
    brush->RecalcBBox();
    brush->ComputeNormals();
    brush->SurfaceLight();
    return brush;
}
