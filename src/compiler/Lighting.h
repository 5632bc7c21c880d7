// The lighting of brushes: one Lighting for each worker thread, with the scratch that one surface needs at a time.
#pragma once

#include <vector>

#include "compiler/CompileOptions.h"
#include "compiler/FastShadow.h"
#include "compiler/LightMaterials.h"
#include "compiler/StageRunner.h"
#include "compiler/WorldSubdivide.h"

// A light entity in the form that the inner loop reads.
struct LIGHT {
    D3DVECTOR position;
    COLOR color;
    float intensity = 0, range = 0;
    bool spotlight = false;
    D3DVECTOR spotlight_direction; // unit
    float spotlight_angle = 0;     // cosine of half the cone angle
    bool dynamic_lightmap = false; // it gets lightmaps of its own

    explicit LIGHT(const Entity& entity);
    LIGHT() = default;
    // How much of it reaches a point p with the normal n; 0 when none. Without intensity and colour. A double-sided
    // surface is lit from behind, and its angle does not count.
    float Factor(const D3DVECTOR& p, const D3DVECTOR& n, bool doublesided = false) const;
};

// The axis of a spot light: towards the first linked TARGET_POSITION, nearly straight down without one.
D3DVECTOR SpotlightAxis(const Entity& light);
bool IsPointLight(const Entity& entity);

// What all workers read. Made when the brushes stand at the detail of lighting; CreateLightBrushList has run.
struct LightingInput {
    LightingInput(const WorldSubdivide& subdivision, const CompileOptions& compile_options);

    const WorldSubdivide& ws;
    const CompileOptions& options;
    LightMaterials materials;
    std::vector<LIGHT> lights;          // by entity index
    std::unique_ptr<FastShadow> shadow; // null without ray tracing
};

class Lighting {
public:
    Lighting(const LightingInput& lighting_input, StageState& stage_state)
        : input(lighting_input), state(stage_state) {}

    const LightingInput& input;
    StageState& state;

    // Work of one surface. Row y of the sample grid begins at y * width * Subdivision().
    std::vector<D3DVECTOR> texelpoints, texelnormals;
    std::vector<D3DCOLORVALUE> lm_color, blur_color;

    int Subdivision() const { return input.options.smooth_shadows ? 2 : 1; }

    // From a surface to its sample grid (LightmapLayout.cpp, CurveLightmaps.cpp). All set lightmap_size.
    void CalculateLightmapUV(const Brush& brush, Surface& surface, bool curved);
    void CalculateLightmapUV4Curves(Surface& surface);

    // From samples to texels (Illumination.cpp).
    void CalculateNormalIllumination(Brush& brush, int brush_index, Surface& surface, bool white);
    void CalculateNormalIlluminationPerVertex(Brush& brush, int brush_index, Surface& surface, bool white);

private:
    void SetGridSize(Surface& surface, int width, int height);
    void FitTerrain(const Brush& brush, const Surface& surface);
    void SampleNormals(int columns, int rows);
    void CopyBorder(int columns, int rows);

    D3DCOLORVALUE AmbientTerm(int brush_index, const LightMaterial& material) const;
    void AddLight(const LIGHT& light);
    void CalculateDynamicLightmap(Surface& surface, const LIGHT& light, int light_index, int linked_light);
    // Blurs the samples and averages them to texels; one value for all when they are equal.
    std::vector<uint32_t> TexelsFromSamples(const SIZE& size, bool& uniform);
    bool IsBlocked(const LIGHT& light, const D3DVECTOR& p);

    ShadowScratch scratch;
    TranslucentHits hits;
};

// New value of each inner sample: the mean of its four neighbours, at most 1. The outer edge stays.
void FilterLightmap(std::vector<D3DCOLORVALUE>& samples, std::vector<D3DCOLORVALUE>& blur_color, int sx, int sy);

// Texels along a side for a length, a multiple of 4 from 4 to 128.
int LightmapSide(float length, int detail);

inline constexpr int UNIFORM_SIDE = 4; // of the block of a surface with one colour
inline constexpr int MAX_LIGHTMAP_SIDE = 128;

// Per-surface light lists (all point lights, by TestLightRange), and per-brush ones (those that light it, by their
// boxes). Both false after a stop.
bool ComputeLightRange(World& world, CompileProgress& progress);
bool CreateLightBrushList(World& world, CompileProgress& progress);
