#include <algorithm>
#include <cmath>

#include "compiler/WorldSubdivide.h"
#include "foundation/Desktop.h"

namespace {

constexpr float RG_VOXEL_SIZE = 256.0f;
constexpr float CELL_LIMIT = 1000000.0f; // where the search for a cell's box starts
// Brushes with one of these are not merged with others.
constexpr uint32_t NEVER_MERGED = BP_ALWAYS_VISIBLE | BP_CROSS_PORTALS | BP_DESTROYABLE;

// The diagonal of a cube with this side.
float Diagonal(float side) { return std::sqrt(3.0f * side * side); }

bool IsSmall(const Brush& brush) {
    const D3DVECTOR extent = BoxMax(brush.bbox) - BoxMin(brush.bbox);
    return Diagonal(extent.x) <= 2 * RG_VOXEL_SIZE && Diagonal(extent.y) <= 2 * RG_VOXEL_SIZE &&
           Diagonal(extent.z) <= 2 * RG_VOXEL_SIZE;
}

Selection GroupOfOne(int brush) {
    Selection group;
    group.AddItem(brush);
    return group;
}

// The voxels along one axis of a cell. The grid is longer than the cell by the square root of 3.
struct GridAxis {
    float start, size;
    int count;

    GridAxis(float min, float max) : start(min) {
        const float length = Diagonal(max - min);
        const float voxels = std::trunc(length / RG_VOXEL_SIZE);
        constexpr float MOST = 1 << 20; // of a damaged level
        count = voxels >= MOST ? 1 << 20 : voxels >= 1 ? static_cast<int>(voxels) : 1;
        size = length / static_cast<float>(count);
    }
    float Low(int voxel) const { return start + size * static_cast<float>(voxel); }
    float High(int voxel) const { return Low(voxel) + size; }
    // The first and the last voxel that an extent may touch, with one to spare for rounding.
    int First(float min) const { return Clamp((min - start) / size - 2); }
    int Last(float max) const { return Clamp((max - start) / size + 2); }

private:
    int Clamp(float voxel) const {
        return voxel >= static_cast<float>(count - 1) ? count - 1 : voxel > 0 ? static_cast<int>(voxel) : 0;
    }
};

} // namespace

bool WorldSubdivide::AddRenderGroup(Selection group) {
    if (render_group.size() >= static_cast<size_t>(MAX_RENDER_GROUPS))
        return false;
    render_group.push_back(std::move(group));
    return true;
}

void WorldSubdivide::MarkMultiCellBrushes() {
    for (const auto& brush : world.brush) {
        brush->multi_cell = false;
        brush->render_group = -1;
    }
    std::vector<bool> listed(world.brush.size());
    for (const CELL& listing : cell)
        for (const int b : listing.objects) {
            if (listed[static_cast<size_t>(b)])
                world.brush[static_cast<size_t>(b)]->multi_cell = true;
            listed[static_cast<size_t>(b)] = true;
        }
}

bool WorldSubdivide::GroupBrushes(CompileProgress* progress) {
    for (size_t c = 0; c < cell.size(); ++c) {
        if (!CreateRenderGroups(static_cast<int>(c)))
            return false;
        if (progress)
            progress->IncrementProgress(1);
    }
    if (!GroupMultiCellBrushes())
        return false;
    for (int b = 0; b < world.GetBrushCount(); ++b)
        if (world.brush[static_cast<size_t>(b)]->HasProperty(BP_ENVIRONMENT) && !AddRenderGroup(GroupOfOne(b)))
            return false;
    for (size_t group = 0; group < render_group.size(); ++group)
        for (const int b : render_group[group]) {
            Brush& brush = *world.brush[static_cast<size_t>(b)];
            if (options.subdivide_world && brush.render_group != -1)
                GetDesktop().MessageBox("Brush in multiple groups", "Error");
            brush.render_group = static_cast<int32_t>(group);
        }
    return true;
}

// A group for each brush of several cells, which all of them list.
bool WorldSubdivide::GroupMultiCellBrushes() {
    std::vector<std::vector<int>> listing(world.brush.size()); // cells
    for (size_t c = 0; c < cell.size(); ++c)
        for (const int b : cell[c].objects)
            if (world.brush[static_cast<size_t>(b)]->multi_cell)
                listing[static_cast<size_t>(b)].push_back(static_cast<int>(c));
    for (size_t b = 0; b < listing.size(); ++b) {
        if (listing[b].empty())
            continue;
        const auto group = static_cast<int32_t>(render_group.size());
        if (!AddRenderGroup(GroupOfOne(static_cast<int>(b))))
            return false;
        for (const int c : listing[b])
            cell[static_cast<size_t>(c)].render_group_list.push_back(group);
    }
    return true;
}

bool WorldSubdivide::CreateRenderGroups(int c) {
    CELL& grouped = cell[static_cast<size_t>(c)];
    std::vector<int> separated_brush_list;
    D3DVECTOR cell_min{CELL_LIMIT, CELL_LIMIT, CELL_LIMIT}, cell_max{-CELL_LIMIT, -CELL_LIMIT, -CELL_LIMIT};
    size_t multi_cell_brushes = 0;
    for (const int b : grouped.objects) {
        Brush& brush = *world.brush[static_cast<size_t>(b)];
        brush.separated = false;
        if (brush.multi_cell) {
            ++multi_cell_brushes;
            continue;
        }
        const D3DVECTOR &min = BoxMin(brush.bbox), &max = BoxMax(brush.bbox);
        cell_min = {std::min(cell_min.x, min.x), std::min(cell_min.y, min.y), std::min(cell_min.z, min.z)};
        cell_max = {std::max(cell_max.x, max.x), std::max(cell_max.y, max.y), std::max(cell_max.z, max.z)};
        brush.assigned_to_render_group = false;
        if (!options.create_render_groups || !IsSmall(brush) || brush.HasProperty(NEVER_MERGED)) {
            separated_brush_list.push_back(b);
            brush.separated = true;
        }
    }
    grouped.render_group_list.clear();
    if (multi_cell_brushes == grouped.objects.size())
        return true;
    const size_t first_group = render_group.size();
    if (options.create_render_groups && !GroupByGrid(grouped, cell_min, cell_max))
        return false;
    for (const int b : separated_brush_list)
        if (!AddRenderGroup(GroupOfOne(b)))
            return false;
    for (size_t group = first_group; group < render_group.size(); ++group)
        grouped.render_group_list.push_back(static_cast<int32_t>(group));
    return true;
}

// A brush goes to the first voxel that it touches, voxels counted along x, then y, then z. So each brush is taken by
// itself, with the few voxels near its box, and the groups are made in the order of their voxels.
bool WorldSubdivide::GroupByGrid(const CELL& grouped, const D3DVECTOR& cell_min, const D3DVECTOR& cell_max) {
    const GridAxis x(cell_min.x, cell_max.x), y(cell_min.y, cell_max.y), z(cell_min.z, cell_max.z);
    struct Placed {
        int64_t voxel;
        int brush;
    };
    std::vector<Placed> placed;
    const auto first_voxel = [&](const Brush& brush) -> int64_t {
        const D3DVECTOR &min = BoxMin(brush.bbox), &max = BoxMax(brush.bbox);
        for (int k = z.First(min.z); k <= z.Last(max.z); ++k)
            for (int j = y.First(min.y); j <= y.Last(max.y); ++j)
                for (int i = x.First(min.x); i <= x.Last(max.x); ++i)
                    if (brush.IsInVoxel({x.Low(i), y.Low(j), z.Low(k)}, {x.High(i), y.High(j), z.High(k)}))
                        return (static_cast<int64_t>(k) * y.count + j) * x.count + i;
        return -1;
    };
    for (const int b : grouped.objects) {
        Brush& brush = *world.brush[static_cast<size_t>(b)];
        if (brush.separated || brush.multi_cell || brush.assigned_to_render_group)
            continue;
        const int64_t voxel = first_voxel(brush);
        if (voxel < 0)
            continue; // its faces reach no voxel: it stays without a group
        brush.assigned_to_render_group = true;
        placed.push_back({voxel, b});
    }
    std::stable_sort(placed.begin(), placed.end(), [](const Placed& p, const Placed& q) { return p.voxel < q.voxel; });
    for (size_t k = 0; k < placed.size(); ++k)
        if (k > 0 && placed[k].voxel == placed[k - 1].voxel)
            render_group.back().AddItem(placed[k].brush);
        else if (!AddRenderGroup(GroupOfOne(placed[k].brush)))
            return false;
    return true;
}
