#include "compiler/LightingStage.h"

#include <deque>

#include "compiler/Lighting.h"
#include "compiler/LightmapPages.h"
#include "compiler/StageRunner.h"
#include "foundation/Desktop.h"
#include "foundation/Parallel.h"
#include "render/Textures.h"

namespace {

constexpr const char* METHOD_TEXT[3] = {"Clearing Lightmaps...  ", "Illuminating Lightmaps...",
                                        "Raytracing Lightmaps... "};

void FindAmbientColor(World& world) {
    world.ambient_color = {};
    for (const auto& entity : world.entity) {
        if (!entity->IsType("AMBIENT_LIGHT"))
            continue;
        const COLOR color = entity->ColorParameter("color");
        const float intensity = entity->FloatParameter("intensity");
        const D3DCOLORVALUE scaled{color.r * intensity, color.g * intensity, color.b * intensity, 0};
        world.ambient_color = {PackColor(scaled), scaled.r, scaled.g, scaled.b, scaled.a};
    }
}

int PrepareSurfaces(World& world) {
    int count = 0;
    for (size_t b = 0; b < world.brush.size(); ++b) {
        Brush& brush = *world.brush[b];
        if (!TakesPartInPaging(brush))
            continue;
        brush.index = static_cast<int32_t>(b);
        brush.ForEachSurface([&](Surface& surface, int, bool) {
            surface.lightmap_info.lightmap = 0;
            ++count;
        });
    }
    return count;
}

bool LightBrushes(WorldSubdivide& ws, CompileProgress& progress) {
    const LightingInput input(ws, ws.options);
    const int threads = ThreadCount(ws.options.threads);
    std::vector<std::unique_ptr<Lighting>> workers(static_cast<size_t>(threads));
    return RunStage(progress, ws.world.GetBrushCount(), threads, [&](int b, int worker, StageState& state) {
        std::unique_ptr<Lighting>& lighting = workers[static_cast<size_t>(worker)];
        if (!lighting)
            lighting = std::make_unique<Lighting>(input, state);
        Brush& brush = *ws.world.brush[static_cast<size_t>(b)];
        brush.CalculateLightmap(*lighting);
        if (ws.options.light_observer && !state.Stopped())
            ws.options.light_observer(brush);
    });
}

} // namespace

LightingInput::LightingInput(const WorldSubdivide& subdivision, const CompileOptions& compile_options)
    : ws(subdivision), options(compile_options), materials(subdivision.world), lights(subdivision.world.entity.size()) {
    for (size_t e = 0; e < lights.size(); ++e)
        if (IsPointLight(*subdivision.world.entity[e]))
            lights[e] = LIGHT(*subdivision.world.entity[e]);
    if (options.lighting_method == LIGHTING_RAYTRACED)
        shadow = std::make_unique<FastShadow>(subdivision.world, subdivision.tree, materials);
}

void SetCurveDetail(World& world, int detail, int threads) {
    ParallelFor(world.GetBrushCount(), threads,
                [&](int b, int) { world.brush[static_cast<size_t>(b)]->ChangeCurveDetail(detail); });
}

void Brush::CalculateLightmap(Lighting& lighting) {
    const CompileOptions& options = lighting.input.options;
    const bool outside = options.clip_box_compilation && !BoxesOverlap(bbox, options.clip_box);
    const bool white = options.lighting_method == LIGHTING_NONE || outside;
    const bool counted = TakesPartInPaging(*this);
    ForEachSurface([&](Surface& surface, int, bool curved) {
        if (lighting.state.Stopped())
            return;
        if (counted)
            lighting.state.Step();
        surface.lightmap_block.clear();
        if (curved && IsCustom()) {
            lighting.CalculateNormalIlluminationPerVertex(*this, index, surface, white);
            return;
        }
        if (!surface.HasMaterial()) {
            surface.dynamic_lightmaps.clear();
            surface.lightmap_info.lightmap = -1;
            surface.lightmap = -1;
            return;
        }
        if (!white && !curved)
            lighting.CalculateLightmapUV(*this, surface, false);
        else if (!white && surface.cp_count == CURVE_FAN)
            lighting.CalculateLightmapUV(*this, surface, true);
        else if (!white)
            lighting.CalculateLightmapUV4Curves(surface);
        lighting.CalculateNormalIllumination(*this, index, surface, white);
    });
    MarkDrawnChanged();
}

CompileResult CalculateLightmaps(WorldSubdivide& ws, CompileProgress& progress, std::string& message) {
    World& world = ws.world;
    const uint32_t start = GetDesktop().GetTickCount();
    progress.AddText(METHOD_TEXT[ws.options.lighting_method == LIGHTING_NONE    ? 0
                                 : ws.options.lighting_method == LIGHTING_QUICK ? 1
                                                                                : 2]);
    crTDestroyAll(TL_LIGHTMAP);
    world.lightmap_index.clear();
    CompileResult result = CompileResult::Stopped;
    if (CreateLightBrushList(world, progress)) {
        SetCurveDetail(world, 0, ws.options.threads);
        const int count = PrepareSurfaces(world);
        world.SmoothTerrainEdgeNormals();
        FindAmbientColor(world);
        progress.InitProgress(count);
        world.lightmaps.clear();
        if (LightBrushes(ws, progress)) {
            progress.AddText("\t-> " + TimeSince(start) + "\r\n");
            progress.AddText("Paging Lightmaps...");
            result = BatchLightmaps(ws, progress, message);
        }
    }
    if (result != CompileResult::Written)
        ResetLightmaps(world); // before the curves: their lightmap coordinates follow the sizes
    SetCurveDetail(world, world.curve_detail, ws.options.threads);
    if (result == CompileResult::Written && progress.CompilationCancelled()) {
        ResetLightmaps(world);
        result = CompileResult::Stopped;
    }
    if (result == CompileResult::Written)
        world.render_mode = SOLID_WITH_LIGHTMAPS;
    for (const auto& brush : world.brush)
        brush->MarkDrawnChanged();
    return result;
}
