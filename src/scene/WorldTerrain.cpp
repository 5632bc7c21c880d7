// Terrains as a whole: made segment by segment from a height map. The segments are separate meshes; along their common
// borders their normals are made one.
#include <algorithm>

#include "scene/FrontEnd.h"
#include "scene/TerrainParts.h"
#include "scene/TerrainStroke.h"

namespace {

constexpr float NEIGHBOUR_MARGIN = 4.0f; // boxes grown by this that meet make neighbours
constexpr float SAME_PLACE = 1.0f;       // vertices nearer than this on each axis are one
constexpr size_t MAX_SHARED = 512;       // vertices that share a normal
constexpr D3DVECTOR MARGIN = {NEIGHBOUR_MARGIN, NEIGHBOUR_MARGIN, NEIGHBOUR_MARGIN};

// Indices of the border vertices.
std::vector<size_t> BorderOf(const SIZE& size) {
    std::vector<size_t> border;
    FindBorderVertex(size, [&](int32_t x, int32_t y) {
        border.push_back(static_cast<size_t>(y) * static_cast<size_t>(size.cx) + static_cast<size_t>(x));
        return false;
    });
    return border;
}

bool SamePlace(const D3DVECTOR& a, const D3DVECTOR& b) {
    return std::fabs(a.x - b.x) < SAME_PLACE && std::fabs(a.y - b.y) < SAME_PLACE && std::fabs(a.z - b.z) < SAME_PLACE;
}

bool NearBox(const Box& box, const D3DVECTOR& p) {
    return s_math.PointInBox(BoxMin(box) - MARGIN, BoxMax(box) + MARGIN, p);
}

struct Segment {
    int index; // of the brush
    Surface* mesh;
    std::vector<size_t> border;
};

// Fills tn_list of each segment: a sweep along x, then the order of the indices.
void FindNeighbours(const std::vector<std::unique_ptr<Brush>>& brush, const std::vector<int>& terrain) {
    std::vector<int> by_x = terrain;
    const auto box_of = [&brush](int b) -> const Box& { return brush[static_cast<size_t>(b)]->bbox; };
    std::stable_sort(by_x.begin(), by_x.end(), [&](int a, int b) { return BoxMin(box_of(a)).x < BoxMin(box_of(b)).x; });
    for (const int b : terrain)
        brush[static_cast<size_t>(b)]->tn_list.ClearList();
    for (size_t i = 0; i < by_x.size(); ++i) {
        const Box& box = box_of(by_x[i]);
        const D3DVECTOR min = BoxMin(box) - MARGIN, max = BoxMax(box) + MARGIN;
        for (size_t k = i + 1; k < by_x.size() && BoxMin(box_of(by_x[k])).x - NEIGHBOUR_MARGIN <= max.x; ++k) {
            const Box& other = box_of(by_x[k]);
            if (!s_math.BoxBoxIntersect(min, max, BoxMin(other) - MARGIN, BoxMax(other) + MARGIN))
                continue;
            brush[static_cast<size_t>(by_x[i])]->tn_list.AddItemMulti(by_x[k]);
            brush[static_cast<size_t>(by_x[k])]->tn_list.AddItemMulti(by_x[i]);
        }
    }
    for (const int b : terrain)
        brush[static_cast<size_t>(b)]->tn_list.Sort();
}

} // namespace

void World::SmoothTerrainEdgeNormals() {
    std::vector<int> terrain;
    std::vector<Segment> segments;
    std::unordered_map<int, size_t> segment_of; // by brush index
    for (int b = 0; b < GetBrushCount(); ++b) {
        Brush& candidate = *brush[static_cast<size_t>(b)];
        if (candidate.type != BT_TERRAIN)
            continue;
        terrain.push_back(b);
        if (!candidate.IsTerrainGrid())
            continue;
        segment_of[b] = segments.size();
        segments.push_back({b, &candidate.surfaces[0], BorderOf(candidate.terrain_vertex_size)});
    }
    FindNeighbours(brush, terrain);
    std::vector<D3DVECTOR*> shared;
    for (Segment& segment : segments)
        for (const size_t vertex : segment.border) {
            const D3DVECTOR& place = segment.mesh->vertices[vertex];
            D3DVECTOR sum = segment.mesh->normal[vertex];
            shared.assign(1, &segment.mesh->normal[vertex]);
            for (const int n : brush[static_cast<size_t>(segment.index)]->tn_list) {
                const auto found = segment_of.find(n);
                if (found == segment_of.end() || !NearBox(brush[static_cast<size_t>(n)]->bbox, place))
                    continue;
                const Segment& neighbour = segments[found->second];
                const auto same = std::find_if(neighbour.border.begin(), neighbour.border.end(),
                                               [&](size_t v) { return SamePlace(neighbour.mesh->vertices[v], place); });
                if (same == neighbour.border.end() || shared.size() >= MAX_SHARED)
                    continue;
                sum += neighbour.mesh->normal[*same];
                shared.push_back(&neighbour.mesh->normal[*same]);
            }
            const D3DVECTOR common = NormalizeOrZero(sum);
            for (D3DVECTOR* normal : shared)
                *normal = common;
        }
    for (const int b : terrain) {
        brush[static_cast<size_t>(b)]->SurfaceLight();
        brush[static_cast<size_t>(b)]->MarkDrawnChanged();
    }
    GetFrontEnd().MarkFileAsDirty(true);
}

bool World::GenerateTerrain(const TerrainShape& shape, std::string& error) {
    HeightMap map;
    error = CheckTerrainShape(shape, MAX_BRUSHES - GetBrushCount());
    if (!error.empty() || !LoadHeightMap(shape.heightmap, map, error))
        return false;
    const bool had_selection = IsSomethingSelected();
    {
        ChangeRecord record(*this, "Generate terrain.", ChangeScope::Added);
        AddTerrains(record, *this);
        const auto size_x = static_cast<float>(shape.size_x), size_z = static_cast<float>(shape.size_z);
        TerrainSegment segment;
        segment.map_unit_x = size_x / static_cast<float>(map.width);
        segment.map_unit_y = size_z / static_cast<float>(map.height);
        segment.terrain_origin = {-size_x / 2, 0, size_z / 2};
        segment.size_x = size_x / static_cast<float>(shape.seg_x);
        segment.size_y = size_z / static_cast<float>(shape.seg_y);
        segment.height = static_cast<float>(shape.size_y);
        segment.detail = shape.detail;
        ClearSelection();
        for (int y = 0; y < shape.seg_y; ++y)
            for (int x = 0; x < shape.seg_x; ++x) {
                segment.start = {static_cast<float>(x) * segment.size_x - size_x / 2, 0,
                                 size_z / 2 - static_cast<float>(y) * segment.size_y};
                auto made = std::make_unique<Brush>();
                made->GenerateTerrainSegment(map, segment);
                made->GenerateNewObjectID();
                SetBrushSelection(AddBrush(std::move(made))->index, true);
            }
        SmoothTerrainEdgeNormals();
        CreateGroup();
        ClearSelection();
    }
    if (had_selection)
        GetFrontEnd().SelectionRestored(false);
    GetFrontEnd().SelectionChanged();
    GetFrontEnd().CountsChanged();
    GetFrontEnd().RedrawAllViews();
    return true;
}
