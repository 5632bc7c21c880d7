#include "compiler/FastShadow.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "compiler/SurfaceTriangle.h"
#include "scene/World.h"

FastShadow::FastShadow(const World& world, const OctalTree& tree, const LightMaterials& materials,
                       const ShadowKernels& shadow_kernels)
    : kernels(shadow_kernels) {
    if (tree.octal_tree.empty())
        return;
    root_min = tree.octal_tree[0].min;
    root_max = tree.octal_tree[0].max;
    std::vector<int> flat_index(world.brush.size(), -1);
    for (size_t b = 0; b < world.brush.size(); ++b) {
        if (!CastsShadow(*world.brush[b]))
            continue;
        const size_t first_group = groups.size(), first_glass = glass.size();
        const ShadowReach reach = AddBrush(*world.brush[b], materials);
        if (groups.size() == first_group)
            continue;
        flat_index[b] = static_cast<int>(brushes.size());
        brushes.push_back({static_cast<int>(first_group), static_cast<int>(groups.size() - first_group), reach,
                           glass.size() > first_glass});
    }
    AddTree(tree);
    size_t leaf = 0;
    for (const OCTAL_LEAF& source : tree.octal_tree)
        if (source.type != OCTAL_NODE)
            AddLeafBoxes(leaves[leaf++], source, world, flat_index);
}

// A triangle whose normal is not a number is left out: no point is inside it.
ShadowReach FastShadow::AddBrush(const Brush& brush, const LightMaterials& materials) {
    int lane = SHADOW_LANES;
    D3DVECTOR min{1e30f, 1e30f, 1e30f},
        max{-1e30f, -1e30f, -1e30f}; // of the triangles: curves leave the brush's own box
    bool thin = false;
    brush.ForEachSurface([&](const Surface& surface, int, bool) {
        const LightMaterial& material = materials[surface.texture.index];
        for (const TRIANGLE& triangle : surface.tri_indices) {
            SurfaceTriangle corners;
            if (!corners.Take(surface, triangle))
                continue;
            const D3DVECTOR normal = corners.UnitNormal();
            if (std::isnan(normal.x) || std::isnan(normal.y) || std::isnan(normal.z))
                continue;
            thin = thin || IsThinTriangle(corners.v);
            for (const D3DVECTOR& v : corners.v) {
                min = {std::min(min.x, v.x), std::min(min.y, v.y), std::min(min.z, v.z)};
                max = {std::max(max.x, v.x), std::max(max.y, v.y), std::max(max.z, v.z)};
            }
            if (lane == SHADOW_LANES) {
                lane = 0;
                groups.emplace_back().first_glass = static_cast<uint32_t>(glass.size());
            }
            groups.back().Set(lane, normal, corners.v);
            ++triangle_count;
            if (material.transparent) {
                groups.back().glass |= 1u << lane;
                GlassTriangle& pane = glass.emplace_back();
                pane = {&material, {corners.v[0], corners.v[1], corners.v[2]}, normal, {}};
                for (size_t k = 0; k < 3; ++k)
                    if (static_cast<size_t>(corners.index[k]) < surface.uv.size())
                        pane.uv[k] = surface.uv[static_cast<size_t>(corners.index[k])];
            }
            ++lane;
        }
    });
    return ReachOf(min, max, thin);
}

void FastShadow::AddTree(const OctalTree& tree) {
    std::vector<int> place(tree.octal_tree.size()); // in nodes, or ~ in leaves
    for (size_t k = 0; k < tree.octal_tree.size(); ++k) {
        const OCTAL_LEAF& source = tree.octal_tree[k];
        if (source.type == OCTAL_NODE) {
            place[k] = static_cast<int>(nodes.size());
            nodes.emplace_back().half = source.half;
        } else {
            place[k] = ~static_cast<int>(leaves.size());
            leaves.push_back({source.min, source.max, 0, 0, 0, source.type == OCTAL_TERMINAL});
        }
    }
    constexpr size_t CHILD_OF_BITS[8] = {7, 6, 4, 5, 3, 2, 0, 1}; // by the bits of Node::child
    size_t node = 0;
    for (const OCTAL_LEAF& source : tree.octal_tree)
        if (source.type == OCTAL_NODE) {
            for (size_t bits = 0; bits < 8; ++bits)
                nodes[node].child[bits] = place[static_cast<size_t>(source.child[CHILD_OF_BITS[bits]])];
            ++node;
        }
    LimitRegions();
}

// A node stands before its children, so its own region is known when theirs are cut from it.
void FastShadow::LimitRegions() {
    constexpr float EVERYWHERE = std::numeric_limits<float>::infinity();
    if (!nodes.empty()) {
        nodes[0].low = {-EVERYWHERE, -EVERYWHERE, -EVERYWHERE};
        nodes[0].high = {EVERYWHERE, EVERYWHERE, EVERYWHERE};
    }
    for (size_t n = 0; n < nodes.size(); ++n)
        for (size_t bits = 0; bits < 8; ++bits) {
            const int child = nodes[n].child[bits];
            if (child < 0) {
                leaves[static_cast<size_t>(~child)].parent = static_cast<int>(n);
                continue;
            }
            Node& node = nodes[static_cast<size_t>(child)];
            node.parent = static_cast<int>(n);
            node.low = nodes[n].low;
            node.high = nodes[n].high;
            ((bits & 1) != 0 ? node.low.x : node.high.x) = nodes[n].half.x;
            ((bits & 2) != 0 ? node.low.z : node.high.z) = nodes[n].half.z;
            ((bits & 4) != 0 ? node.low.y : node.high.y) = nodes[n].half.y;
        }
}

void FastShadow::AddLeafBoxes(Leaf& leaf, const OCTAL_LEAF& source, const World& world,
                              const std::vector<int>& flat_index) {
    leaf.first_box = static_cast<int>(leaf_boxes.size());
    int lane = SHADOW_LANES;
    for (const int b : source.brush_list) {
        const int flat = flat_index[static_cast<size_t>(b)];
        if (flat < 0)
            continue;
        if (lane == SHADOW_LANES) {
            lane = 0;
            leaf_boxes.emplace_back();
        }
        const Box& box = world.brush[static_cast<size_t>(b)]->bbox;
        leaf_boxes.back().boxes.Set(lane, (BoxMin(box) + BoxMax(box)) * 0.5f, (BoxMax(box) - BoxMin(box)) * 0.5f,
                                    brushes[static_cast<size_t>(flat)].reach);
        leaf_boxes.back().brush[static_cast<size_t>(lane)] = flat;
        ++lane;
    }
    leaf.box_count = static_cast<int>(leaf_boxes.size()) - leaf.first_box;
}

int FastShadow::FindLeaf(const D3DVECTOR& point, int near_node) const {
    int place = near_node;
    for (const Node* node = &nodes[static_cast<size_t>(place)]; place > 0; node = &nodes[static_cast<size_t>(place)]) {
        const bool inside = static_cast<int>(point.x >= node->low.x) & static_cast<int>(point.x < node->high.x) &
                            static_cast<int>(point.y >= node->low.y) & static_cast<int>(point.y < node->high.y) &
                            static_cast<int>(point.z >= node->low.z) & static_cast<int>(point.z < node->high.z);
        if (inside)
            break;
        place = node->parent;
    }
    do {
        const Node& node = nodes[static_cast<size_t>(place)];
        // Written so that a coordinate that is not a number goes where OctalTree::FindLeafRecursive sends it.
        const int bits = static_cast<int>(point.x >= node.half.x) | static_cast<int>(!(point.z < node.half.z)) << 1 |
                         static_cast<int>(!(point.y < node.half.y)) << 2;
        place = node.child[bits];
    } while (place >= 0);
    return ~place;
}

bool FastShadow::RayTraceFast(const D3DVECTOR& b, const D3DVECTOR& a, const D3DVECTOR& ray, ShadowScratch& scratch,
                              TranslucentHits& hits) const {
    hits.rt_count = 0;
    if (nodes.empty() || !s_math.PointInBox(root_min, root_max, b))
        return false;
    if (scratch.leaf_stamps.size() != leaves.size() || scratch.brush_marks.size() != brushes.size() ||
        ++scratch.stamp == 0) {
        scratch.leaf_stamps.assign(leaves.size(), 0);
        scratch.brush_marks.assign(brushes.size(), {});
        scratch.stamp = 1;
        scratch.from_node = scratch.sample_node = 0;
    }
    const ShadowRay shadow_ray(a, ray, b);
    const D3DVECTOR dir = b - a, inv_dir = InverseDirection(dir);
    int current = FindLeaf(a, scratch.from_node);
    const int last = FindLeaf(b, scratch.sample_node);
    scratch.from_node = leaves[static_cast<size_t>(current)].parent;
    scratch.sample_node = leaves[static_cast<size_t>(last)].parent;
    for (int step = 0; step < OctalTree::MAX_TRACE_STEPS; ++step) {
        const Leaf& leaf = leaves[static_cast<size_t>(current)];
        uint32_t& stamp = scratch.leaf_stamps[static_cast<size_t>(current)];
        if (leaf.terminal && stamp != scratch.stamp) {
            stamp = scratch.stamp;
            if (TestLeaf(leaf, shadow_ray, scratch, hits))
                return true;
        }
        if (current == last)
            return false;
        const float t = ProjectOutOfCube(a, inv_dir, TRACE_EPSILON, leaf.min, leaf.max);
        if (t > 1)
            return false;
        current = FindLeaf(a + dir * t, leaf.parent);
    }
    LogEndlessTrace(a, b);
    return false;
}

bool FastShadow::TestLeaf(const Leaf& leaf, const ShadowRay& ray, ShadowScratch& scratch, TranslucentHits& hits) const {
    for (int k = 0; k < leaf.box_count; ++k) {
        const LeafBoxes& group = leaf_boxes[static_cast<size_t>(leaf.first_box + k)];
        for (uint32_t mask = kernels.boxes(group.boxes, ray); mask != 0; mask &= mask - 1) {
            const int flat = group.brush[static_cast<size_t>(std::countr_zero(mask))];
            ShadowScratch::BrushMark& mark = scratch.brush_marks[static_cast<size_t>(flat)];
            if (mark.stamp == scratch.stamp) {
                for (int hit = mark.first_hit; hit < mark.first_hit + mark.hit_count; ++hit)
                    hits.Add(hits.rt_color[static_cast<size_t>(hit)], hits.rt_param[static_cast<size_t>(hit)]);
                continue;
            }
            mark.stamp = scratch.stamp;
            mark.first_hit = hits.rt_count;
            if (TestBrush(brushes[static_cast<size_t>(flat)], ray, hits))
                return true;
            mark.hit_count = hits.rt_count - mark.first_hit;
            if (hits.rt_count >
                MAX_TRANSLUCENT_HITS) // not all of them are stored, so they cannot be repeated from there
                mark.stamp = 0;
        }
    }
    return false;
}

bool FastShadow::TestBrush(const FlatBrush& brush, const ShadowRay& ray, TranslucentHits& hits) const {
    if (!brush.has_glass)
        return kernels.any_triangle(&groups[static_cast<size_t>(brush.first_group)], brush.group_count, ray);
    for (int k = 0; k < brush.group_count; ++k) {
        const TriangleGroup& group = groups[static_cast<size_t>(brush.first_group + k)];
        const uint32_t mask = kernels.triangles(group, ray);
        if (mask == 0)
            continue;
        if (mask & ~group.glass)
            return true;
        for (uint32_t rest = mask; rest != 0; rest &= rest - 1) {
            const uint32_t lower_lanes = (rest & (0u - rest)) - 1;
            const GlassTriangle& pane =
                glass[group.first_glass + static_cast<uint32_t>(std::popcount(group.glass & lower_lanes))];
            D3DVECTOR hit;
            float param;
            s_math.PlaneIntersectSegment(ray.from, ray.direction, pane.v[0], pane.normal, hit, param);
            const uint32_t color = pane.ColorAt(hit);
            if (color >> 24 == 0)
                return true;
            hits.Add(color, param);
        }
    }
    return false;
}
