#include "compiler/OctalTree.h"

#include <algorithm>
#include <cmath>

#include "compiler/SurfaceTriangle.h"
#include "foundation/Log.h"
#include "scene/World.h"

namespace {

constexpr float WORLD_LIMIT = 1000000.0f; // where the search for the world's box starts
constexpr float ROOT_MARGIN = 32.0f;
constexpr float TERMINAL_SIZE = 128.0f; // leaves of this side and below are not split
constexpr size_t TERMINAL_BRUSHES = 16; // nor those with so few brushes

struct Bounds {
    D3DVECTOR min{WORLD_LIMIT, WORLD_LIMIT, WORLD_LIMIT}, max{-WORLD_LIMIT, -WORLD_LIMIT, -WORLD_LIMIT};

    void Add(const D3DVECTOR& p) {
        min = {std::min(min.x, p.x), std::min(min.y, p.y), std::min(min.z, p.z)};
        max = {std::max(max.x, p.x), std::max(max.y, p.y), std::max(max.z, p.z)};
    }
    bool IsFinite() const {
        return std::isfinite(max.x - min.x) && std::isfinite(max.y - min.y) && std::isfinite(max.z - min.z);
    }
};

Bounds WorldBounds(const World& world) {
    Bounds bounds;
    for (const auto& brush : world.brush)
        if (!brush->HasProperty(BP_ENVIRONMENT))
            for (const D3DVECTOR& corner : brush->bbox)
                bounds.Add(corner);
    for (const auto& entity : world.entity)
        bounds.Add(entity->position);
    if (bounds.min.x > bounds.max.x) // nothing at all: a small world about the origin
        bounds.min = bounds.max = D3DVECTOR{};
    return bounds;
}

// Lets the longest side stand and grows the two others evenly on both ends to its length.
void MakeCube(Bounds& bounds) {
    const D3DVECTOR size = bounds.max - bounds.min;
    const int longest = size.x > size.y && size.x > size.z ? 0 : size.y > size.x && size.y > size.z ? 1 : 2;
    const float side = Component(size, longest);
    for (int axis = 0; axis < 3; ++axis) {
        if (axis == longest)
            continue;
        const float growth = (side - Component(size, axis)) * 0.5f;
        Component(bounds.min, axis) -= growth;
        Component(bounds.max, axis) += growth;
    }
}

bool StandsInTree(const Brush& brush) {
    return !brush.IsPortalOrOccluder() && !brush.HasProperty(BP_ENVIRONMENT) && !brush.FindLinkedEntity("BOX_TRIGGER");
}

} // namespace

void LeafSelection::Clear(size_t leaf_count) {
    leaves.clear();
    if (stamps.size() != leaf_count || ++stamp == 0) {
        stamps.assign(leaf_count, 0);
        stamp = 1;
    }
}

void LeafSelection::Add(int leaf) {
    uint32_t& mark = stamps[static_cast<size_t>(leaf)];
    if (mark == stamp)
        return;
    mark = stamp;
    leaves.push_back(leaf);
}

OctalTree::BuildResult OctalTree::BuildOctalTree(const World& world, const std::function<bool()>& stopped) {
    build_stopped = stopped;
    octal_tree.clear();
    Bounds bounds = WorldBounds(world);
    const D3DVECTOR margin{ROOT_MARGIN, ROOT_MARGIN, ROOT_MARGIN};
    bounds.min -= margin;
    bounds.max += margin;
    MakeCube(bounds);
    if (!bounds.IsFinite())
        return BuildResult::NotFinite;

    OCTAL_LEAF root;
    root.min = bounds.min;
    root.max = bounds.max;
    root.half = (bounds.min + bounds.max) * 0.5f;
    root.size = bounds.max.x - bounds.min.x;
    for (int b = 0; b < world.GetBrushCount(); ++b)
        if (StandsInTree(*world.brush[static_cast<size_t>(b)]))
            root.brush_list.push_back(b);
    octal_tree.push_back(std::move(root));
    CopyBrushes(world);

    const BuildResult result = AddChildren(0);
    build_brushes = {};
    build_triangles = {};
    build_stopped = {};
    for (OCTAL_LEAF& leaf : octal_tree)
        if (leaf.type == OCTAL_NODE)
            leaf.brush_list = {};
    return result;
}

void OctalTree::CopyBrushes(const World& world) {
    build_brushes.clear();
    build_triangles.clear();
    for (const auto& brush : world.brush) {
        const size_t first = build_triangles.size();
        brush->ForEachSurface([&](const Surface& surface, int, bool) {
            for (const TRIANGLE& triangle : surface.tri_indices) {
                SurfaceTriangle corners;
                if (corners.Take(surface, triangle))
                    build_triangles.push_back({{corners.v[0], corners.v[1], corners.v[2]}, corners.UnitNormal()});
            }
        });
        build_brushes.push_back({BoxMin(brush->bbox), BoxMax(brush->bbox), first, build_triangles.size() - first});
    }
}

bool OctalTree::IsInVoxel(const BuildBrush& brush, const D3DVECTOR& min, const D3DVECTOR& max) const {
    if (!s_math.BoxBoxIntersect(brush.min, brush.max, min, max))
        return false;
    for (size_t t = brush.first_triangle; t < brush.first_triangle + brush.triangle_count; ++t) {
        const BuildTriangle& triangle = build_triangles[t];
        if (s_math.FaceInBox(min, max, triangle.v[0], triangle.v[1], triangle.v[2], triangle.normal))
            return true;
    }
    return false;
}

OctalTree::BuildResult OctalTree::AddChildren(int parent) {
    constexpr bool HIGH_X[4] = {false, true, true, false}, HIGH_Z[4] = {true, true, false, false};
    const D3DVECTOR low = GetOctalLeaf(parent).min;
    const float h = GetOctalLeaf(parent).size * 0.5f;
    for (size_t i = 0; i < 8; ++i) {
        octal_tree[static_cast<size_t>(parent)].child[i] = GetLeafCount();
        const D3DVECTOR min{HIGH_X[i % 4] ? low.x + h : low.x, i < 4 ? low.y + h : low.y,
                            HIGH_Z[i % 4] ? low.z + h : low.z};
        const BuildResult result = ChildLeafRecursive(parent, min, min + D3DVECTOR{h, h, h});
        if (result != BuildResult::Built)
            return result;
    }
    return BuildResult::Built;
}

OctalTree::BuildResult OctalTree::ChildLeafRecursive(int parent, const D3DVECTOR& min, const D3DVECTOR& max) {
    if (GetLeafCount() >= MAX_OCTAL_TREE_SIZE)
        return BuildResult::LimitReached;
    if (build_stopped && build_stopped())
        return BuildResult::Stopped;
    OCTAL_LEAF leaf;
    leaf.min = min;
    leaf.max = max;
    leaf.parent = parent;
    leaf.size = std::fabs(max.x - min.x);
    const float half_side = leaf.size * 0.5f;
    leaf.half = min + D3DVECTOR{half_side, half_side, half_side};
    for (const int b : GetOctalLeaf(parent).brush_list)
        if (IsInVoxel(build_brushes[static_cast<size_t>(b)], min, max))
            leaf.brush_list.push_back(b);
    if (leaf.brush_list.empty())
        leaf.type = OCTAL_EMPTY;
    else if (leaf.size <= TERMINAL_SIZE || leaf.brush_list.size() <= TERMINAL_BRUSHES)
        leaf.type = OCTAL_TERMINAL;
    const bool split = leaf.type == OCTAL_NODE;
    const int index = GetLeafCount();
    octal_tree.push_back(std::move(leaf));
    if (!split)
        return BuildResult::Built;
    const BuildResult result = AddChildren(index);
    octal_tree[static_cast<size_t>(index)].brush_list = {};
    return result;
}

int OctalTree::CountType(uint32_t type) const {
    return static_cast<int>(
        std::count_if(octal_tree.begin(), octal_tree.end(), [&](const OCTAL_LEAF& l) { return l.type == type; }));
}

int OctalTree::FindLeafRecursive(const D3DVECTOR& point, int parent) const {
    int leaf = parent;
    do {
        const OCTAL_LEAF& node = GetOctalLeaf(leaf);
        size_t child = point.x >= node.half.x ? (point.z < node.half.z ? 2 : 1) : (point.z < node.half.z ? 3 : 0);
        if (point.y < node.half.y)
            child += 4;
        leaf = node.child[child];
    } while (GetOctalLeaf(leaf).type == OCTAL_NODE);
    return leaf;
}

float OctalTree::ProjectVectorInOctalLeaf(const D3DVECTOR& from, const D3DVECTOR& inv_dir, float eps,
                                          int octal_leaf) const {
    const OCTAL_LEAF& leaf = GetOctalLeaf(octal_leaf);
    return ProjectOutOfCube(from, inv_dir, eps, leaf.min, leaf.max);
}

void LogEndlessTrace(const D3DVECTOR& start, const D3DVECTOR& end) {
    LOG("Endless loop: s.x = %.3f, s.y = %.3f, s.z = %.3f, e.x = %.3f, e.y = %.3f, e.z = %.3f",
        static_cast<double>(start.x), static_cast<double>(start.y), static_cast<double>(start.z),
        static_cast<double>(end.x), static_cast<double>(end.y), static_cast<double>(end.z));
}

void OctalTree::TraceOctalTree(const D3DVECTOR& start, const D3DVECTOR& end, LeafSelection& selection) const {
    selection.Clear(octal_tree.size());
    if (octal_tree.empty() || !s_math.PointInBox(octal_tree[0].min, octal_tree[0].max, end))
        return;
    const D3DVECTOR dir = end - start, inv_dir = InverseDirection(dir);
    int current = FindLeafRecursive(start, 0);
    const int last = FindLeafRecursive(end, 0);
    for (int step = 0; step < MAX_TRACE_STEPS; ++step) {
        if (GetOctalLeaf(current).type == OCTAL_TERMINAL)
            selection.Add(current);
        if (current == last)
            return;
        const float t = ProjectVectorInOctalLeaf(start, inv_dir, TRACE_EPSILON, current);
        if (t > 1)
            return;
        current = FindLeafRecursive(start + dir * t, 0);
    }
    LogEndlessTrace(start, end);
}
