// One surface's part of a decal: the rectangle of its template, cut to the triangles of the surface that it touches.
// Decals are cut anew from their template after every change, never edited, and end with their brush.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "foundation/Plane.h"
#include "foundation/Vector.h"
#include "scene/DecalTemplate.h"
#include "scene/Surface.h"

class Brush;
class World;

class Decal {
public:
    virtual ~Decal() = default;

    std::vector<D3DVECTOR> xyz; // world space
    std::vector<UVVector> uv;   // (0, 0) is the corner at low x and high y of the rectangle
    std::vector<TRIANGLE> tris;
    uint32_t texture = 0xFFFFFFFF; // handle
    COLOR color;
    std::array<PLANE, 4> cp{}; // the sides of the rectangle, normals outward: +y, +x, -y, -x
    float x_size = 0, y_size = 0;
    bool alpha_decal = false; // the texture has alpha: blended, not multiplied
    D3DVECTOR o_position, o_normal;
    float o_rotation = 0; // degrees
    const Brush* owner = nullptr;
    int owner_surface = -1;
    uint32_t id = 0;        // of the template
    World* world = nullptr; // that holds the template

    // Cuts one surface. False, with nothing made, when the rectangle does not touch it, faces away by more than 60
    // degrees, or has no size.
    bool Create(const Brush& brush, int surface, bool curved, const DecalTemplate& source);
    bool TestSelection(const D3DVECTOR& start, const D3DVECTOR& direction) const; // a triangle lies on the ray

    // Drawing (defined in drawing/)
    void Render() const;
    void RenderSelectionMask(uint32_t mask_color) const;

    // More triangles or vertices than these are not cut: the decal ends there.
    static constexpr size_t MAX_CLIP_POINTS = 16, MAX_VERTICES = 2048, MAX_TRIANGLES = 2048;
};
