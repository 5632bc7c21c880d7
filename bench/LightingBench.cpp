// The shadow test and the whole lighting of a generated level of about 20,000 triangles: rooms in a grid, with pillars,
// crates and arches, and a light in each.
#include <atomic>
#include <benchmark/benchmark.h>
#include <cstring>
#include <map>
#include <memory>

#ifdef MARROWSTEAD_EMBREE
#include <embree3/rtcore.h>
#endif

#include "compiler/Lighting.h"
#include "compiler/LightingStage.h"
#include "foundation/Parallel.h"

namespace {

constexpr int ROOMS = 8; // a side
constexpr float ROOM = 512, HEIGHT = 256, WALL = 16;

Brush& AddShape(World& world, BrushType type, const D3DVECTOR& min, const D3DVECTOR& max, uint32_t segments = 2) {
    BrushShape shape;
    shape.type = type;
    shape.bb = MakeBox(min, max);
    shape.pivot = (min + max) * 0.5f;
    shape.segment_count = segments;
    shape.curve_detail = world.curve_detail;
    Brush& brush = *world.AddBrush(std::make_unique<Brush>(shape));
    brush.ForEachSurface([](Surface& surface, int, bool) { surface.texture.index = 1; });
    return brush;
}

void AddLight(World& world, const D3DVECTOR& position, float range) {
    auto light = std::make_unique<Entity>();
    light->str_type = "POINT_LIGHT";
    light->position = position;
    for (const auto& [name, value] : {std::pair<const char*, float>{"range", range}, {"intensity", 1.0f}}) {
        EntityParameter parameter;
        parameter.name = name;
        parameter.type = EPT_FLOAT;
        parameter.p_float = value;
        light->AddParameter(parameter);
    }
    EntityParameter color;
    color.name = "color";
    color.type = EPT_COLOR;
    color.p_color = {0, 1, 0.9f, 0.8f, 1};
    light->AddParameter(color);
    world.AddEntity(std::move(light));
}

// A curved sheet at the detail of lighting has as many triangles as 42 boxes.
void AddSheet(World& world, float x, float z) {
    AddShape(world, BT_PATCH, {x + 200, 100, z + 40}, {x + 300, 108, z + 90}, 1);
}

void AddRoom(World& world, float x, float z) {
    AddShape(world, BT_BOX, {x, -WALL, z}, {x + ROOM, 0, z + ROOM});
    AddShape(world, BT_BOX, {x, HEIGHT, z}, {x + ROOM, HEIGHT + WALL, z + ROOM});
    const float gap = ROOM / 2 - 48, far_gap = ROOM / 2 + 48; // a doorway in the middle of two walls
    AddShape(world, BT_BOX, {x, 0, z}, {x + gap, HEIGHT, z + WALL});
    AddShape(world, BT_BOX, {x + far_gap, 0, z}, {x + ROOM, HEIGHT, z + WALL});
    AddShape(world, BT_BOX, {x, 0, z}, {x + WALL, HEIGHT, z + gap});
    AddShape(world, BT_BOX, {x, 0, z + far_gap}, {x + WALL, HEIGHT, z + ROOM});
    for (const float px : {140.0f, 356.0f})
        for (const float pz : {140.0f, 356.0f})
            AddShape(world, BT_BOX, {x + px, 0, z + pz}, {x + px + 16, HEIGHT, z + pz + 16});
    for (int k = 0; k < 8; ++k) {
        const float cx = x + 60 + 50 * static_cast<float>(k), cz = z + 60 + static_cast<float>(k * 131 % 380);
        AddShape(world, BT_BOX, {cx, 0, cz}, {cx + 28, 20 + static_cast<float>(k * 7), cz + 28});
    }
    AddLight(world, {x + 250, 200, z + 260}, 420);
    AddLight(world, {x + 90, 120, z + 420}, 300);
}

struct Level {
    World world;
    CompileOptions options;
    CompileProgress progress;
    WorldSubdivide ws{world, options};

    Level() {
        world.material.resize(2);
        world.material[1].material_class = world.material[1].material_name = "wall";
        for (int room = 0; room < ROOMS * ROOMS; ++room) {
            const float x = static_cast<float>(room % ROOMS) * ROOM, z = static_cast<float>(room / ROOMS) * ROOM;
            AddRoom(world, x, z);
            if (room % 6 == 0)
                AddSheet(world, x, z);
        }
        options.lighting_method = LIGHTING_RAYTRACED;
        options.lightmap_detail = 1;
        ws.tree.BuildOctalTree(world, {});
        ws.PrepareBrushes();
        ws.CreateWorldCell();
        ws.GroupBrushes();
        CreateLightBrushList(world, progress);
        SetCurveDetail(world, 0, 0);
    }
};

Level& SharedLevel() {
    static Level level;
    return level;
}

struct Segment {
    D3DVECTOR light, sample;
};

// In the order of lighting: surface, light, rows of samples; only what reaches the samples.
const std::vector<Segment>& LightingSegments() {
    static std::vector<Segment> segments;
    if (!segments.empty())
        return segments;
    Level& level = SharedLevel();
    const LightingInput input(level.ws, level.options);
    StageState state;
    Lighting lighting(input, state);
    for (const auto& brush : level.world.brush)
        for (Surface& surface : brush->surfaces) {
            lighting.CalculateLightmapUV(*brush, surface, false);
            for (const int index : brush->light_list) {
                const LIGHT& light = input.lights[static_cast<size_t>(index)];
                for (size_t k = 0; k < lighting.texelpoints.size(); ++k)
                    if (light.Factor(lighting.texelpoints[k], lighting.texelnormals[k]) != 0)
                        segments.push_back({light.position, lighting.texelpoints[k]});
            }
        }
    return segments;
}

void BM_ShadowFast(benchmark::State& bench) {
    const Level& level = SharedLevel();
    const std::vector<Segment>& segments = LightingSegments();
    const LightMaterials materials(level.world);
    const FastShadow shadow(level.world, level.ws.tree, materials);
    const auto threads = static_cast<int>(bench.range(0));
    constexpr int PIECES = 64;
    std::atomic<size_t> blocked{0};
    for (auto _ : bench)
        ParallelFor(PIECES, threads, [&](int piece, int) {
            ShadowScratch scratch;
            const auto hits = std::make_unique<TranslucentHits>();
            size_t found = 0;
            const size_t first = segments.size() * static_cast<size_t>(piece) / PIECES,
                         end = segments.size() * static_cast<size_t>(piece + 1) / PIECES;
            for (size_t k = first; k < end; ++k)
                found += shadow.RayTraceFast(segments[k].sample, segments[k].light,
                                             segments[k].sample - segments[k].light, scratch, *hits);
            blocked += found;
        });
    bench.SetItemsProcessed(static_cast<int64_t>(bench.iterations()) * static_cast<int64_t>(segments.size()));
    bench.counters["triangles"] = static_cast<double>(shadow.TriangleCount());
    bench.counters["blocked"] =
        static_cast<double>(blocked) / static_cast<double>(bench.iterations()) / static_cast<double>(segments.size());
}
BENCHMARK(BM_ShadowFast)->Arg(1)->Arg(2)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_ShadowPlain(benchmark::State& bench) {
    const Level& level = SharedLevel();
    const std::vector<Segment>& segments = LightingSegments();
    const LightMaterials materials(level.world);
    const ShadowTrace shadow(level.world, level.ws.tree, materials);
    LeafSelection selection;
    const auto hits = std::make_unique<TranslucentHits>();
    constexpr size_t STRIDE = 50; // a sample of the segments
    size_t count = 0;
    for (auto _ : bench)
        for (size_t k = 0; k < segments.size(); k += STRIDE, ++count)
            benchmark::DoNotOptimize(shadow.RayTraceFast(segments[k].sample, segments[k].light,
                                                         segments[k].sample - segments[k].light, selection, *hits));
    bench.SetItemsProcessed(static_cast<int64_t>(count));
}
BENCHMARK(BM_ShadowPlain)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_LightmapSamples(benchmark::State& bench) {
    Level& level = SharedLevel();
    const LightingInput input(level.ws, level.options);
    size_t samples = 0;
    StageState state;
    Lighting lighting(input, state);
    for (auto _ : bench)
        for (size_t b = 0; b < level.world.brush.size(); ++b) {
            Brush& brush = *level.world.brush[b];
            for (Surface& surface : brush.surfaces) {
                lighting.CalculateLightmapUV(brush, surface, false);
                lighting.CalculateNormalIllumination(brush, static_cast<int>(b), surface, false);
                samples += lighting.texelpoints.size();
            }
        }
    bench.SetItemsProcessed(static_cast<int64_t>(samples));
}
BENCHMARK(BM_LightmapSamples)->UseRealTime()->Unit(benchmark::kMillisecond);

#ifdef MARROWSTEAD_EMBREE
// The yardstick: Embree 3 on the same triangles and segments, one segment at a time.
RTCScene EmbreeScene(RTCDevice device, const World& world) {
    RTCScene scene = rtcNewScene(device);
    RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
    std::vector<D3DVECTOR> corners;
    for (const auto& brush : world.brush)
        brush->ForEachSurface([&](const Surface& surface, int, bool) {
            for (const TRIANGLE& triangle : surface.tri_indices)
                for (const uint16_t index : triangle.i)
                    corners.push_back(surface.vertices[index]);
        });
    void* vertices = rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, sizeof(D3DVECTOR),
                                             corners.size());
    std::memcpy(vertices, corners.data(), corners.size() * sizeof(D3DVECTOR));
    auto* indices = static_cast<unsigned*>(rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3,
                                                                   3 * sizeof(unsigned), corners.size() / 3));
    for (unsigned k = 0; k < corners.size(); ++k)
        indices[k] = k;
    rtcCommitGeometry(geometry);
    rtcAttachGeometry(scene, geometry);
    rtcReleaseGeometry(geometry);
    rtcCommitScene(scene);
    return scene;
}

void BM_ShadowEmbree(benchmark::State& bench) {
    const std::vector<Segment>& segments = LightingSegments();
    RTCDevice device = rtcNewDevice(nullptr);
    RTCScene scene = EmbreeScene(device, SharedLevel().world);
    const auto threads = static_cast<int>(bench.range(0));
    constexpr int PIECES = 64;
    constexpr float BIAS = 8; // a blocker nearer to the sample does not count
    std::atomic<size_t> blocked{0};
    for (auto _ : bench)
        ParallelFor(PIECES, threads, [&](int piece, int) {
            size_t found = 0;
            const size_t first = segments.size() * static_cast<size_t>(piece) / PIECES,
                         end = segments.size() * static_cast<size_t>(piece + 1) / PIECES;
            RTCIntersectContext context;
            rtcInitIntersectContext(&context);
            for (size_t k = first; k < end; ++k) {
                const D3DVECTOR &from = segments[k].light, along = segments[k].sample - from;
                RTCRay ray{};
                ray.org_x = from.x, ray.org_y = from.y, ray.org_z = from.z;
                ray.dir_x = along.x, ray.dir_y = along.y, ray.dir_z = along.z;
                ray.tfar = 1 - BIAS / Magnitude(along);
                ray.mask = ~0u;
                rtcOccluded1(scene, &context, &ray);
                found += ray.tfar < 0;
            }
            blocked += found;
        });
    bench.SetItemsProcessed(static_cast<int64_t>(bench.iterations()) * static_cast<int64_t>(segments.size()));
    bench.counters["blocked"] =
        static_cast<double>(blocked) / static_cast<double>(bench.iterations()) / static_cast<double>(segments.size());
    rtcReleaseScene(scene);
    rtcReleaseDevice(device);
}
BENCHMARK(BM_ShadowEmbree)->Arg(1)->Arg(2)->UseRealTime()->Unit(benchmark::kMillisecond);
#endif

} // namespace
