// What a terrain is made from, and the tool that reshapes it. A terrain is a grid of brushes of type BT_TERRAIN, each a
// regular mesh of height samples.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/Vector.h"

// An 8-bit picture as heights: row 0 is the edge of greatest z.
struct HeightMap {
    int width = 0, height = 0;   // pixels
    std::vector<uint8_t> sample; // row by row
};
// False with a sentence that names the file and the reason, also for a picture that is not 8 bits per pixel.
bool LoadHeightMap(const std::string& path, HeightMap& map, std::string& error);

// The whole terrain, centred on the world's origin at height 0. World units.
struct TerrainShape {
    std::string heightmap;                           // a data path
    int size_x = 8192, size_y = 2048, size_z = 8192; // size_y: the height of a sample of 255
    int seg_x = 8, seg_y = 8;                        // segments along x and z
    int detail = 128;                                // wanted distance between two vertices
};
// Empty when every segment has at least one cell and at most 65,536 vertices, and the world has room for them; else one
// sentence.
std::string CheckTerrainShape(const TerrainShape& shape, int free_brushes);

// Where one segment lies on the map and in the world.
struct TerrainSegment {
    float map_unit_x = 1, map_unit_y = 1; // world units a pixel
    D3DVECTOR terrain_origin;             // corner of least x and greatest z of the whole terrain
    D3DVECTOR start;                      // the same corner of this segment
    float size_x = 0, size_y = 0;         // extents on x and z
    float height = 0;                     // of a sample of 255
    int detail = 128;
};

enum TerrainStrokeType {
    TERRAIN_RAISE = 0,
    TERRAIN_NOISE = 1,
    TERRAIN_SMOOTH = 2,
    TERRAIN_FLATTEN = 3,
    TERRAIN_DECORATE = 4
};
inline constexpr const char* TERRAIN_STROKE_WORDS[] = {"RAISE", "NOISE", "SMOOTH", "FLATTEN", "DECORATE"};

struct TERRAIN_MODIFIER {
    int type = TERRAIN_RAISE;
    float radius = 256;   // world units, in the xz plane
    float intensity = 2;  // height change an application
    int density = 32;     // copies a stroke of DECORATE
    bool collapse = true; // DECORATE melts its copies into one brush
};
inline constexpr float LEAST_TERRAIN_RADIUS = 8.0f, LEAST_TERRAIN_INTENSITY = 1.0f;

// The noise of one application, by a grid of cells over the tool's circle.
inline constexpr int NOISE_FIELD_SIDE = 50;
using NoiseField = std::vector<float>; // NOISE_FIELD_SIDE squared
