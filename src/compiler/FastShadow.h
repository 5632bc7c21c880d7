// The shadow test of the compile: the answers of ShadowTrace, bit for bit, from flat copies of the tree and the
// triangles. A brush that stands in several leaves is tested once; its translucent hits are repeated as the plain walk
// repeats them.
#pragma once

#include <array>
#include <vector>

#include "compiler/ShadowKernels.h"
#include "compiler/ShadowTrace.h"

// The marks of one thread.
class ShadowScratch {
public:
    struct BrushMark {
        uint32_t stamp = 0;
        int first_hit = 0, hit_count = 0; // what this ray passed in it
    };
    std::vector<uint32_t> leaf_stamps;
    std::vector<BrushMark> brush_marks;
    uint32_t stamp = 0;
    int from_node = 0, sample_node = 0; // where the ends of the last segment lay: the next ones are near
};

class FastShadow {
public:
    // Of the brushes as they are now; the materials must outlive it.
    FastShadow(const World& world, const OctalTree& tree, const LightMaterials& materials,
               const ShadowKernels& shadow_kernels = BestShadowKernels());

    // As ShadowTrace::RayTraceFast. Allocates only when the scratch is new.
    bool RayTraceFast(const D3DVECTOR& b, const D3DVECTOR& a, const D3DVECTOR& ray, ShadowScratch& scratch,
                      TranslucentHits& hits) const;
    size_t TriangleCount() const { return triangle_count; }

private:
    struct Node {
        D3DVECTOR half;
        D3DVECTOR low, high; // a point reaches this node from the root when low <= point < high
        int parent = -1;
        int child[8]; // bit 0: high x, bit 1: high z, bit 2: high y; ~leaf for a leaf
    };
    struct Leaf {
        D3DVECTOR min, max;
        int first_box = 0, box_count = 0; // groups
        int parent = 0;                   // node
        bool terminal = false;
    };
    struct LeafBoxes {
        BoxGroup boxes;
        std::array<int, SHADOW_LANES> brush{}; // positions in brushes
    };
    struct FlatBrush {
        int first_group = 0, group_count = 0;
        ShadowReach reach;
        bool has_glass = false;
    };

    void AddTree(const OctalTree& tree);
    void LimitRegions();
    ShadowReach AddBrush(const Brush& brush, const LightMaterials& materials);
    void AddLeafBoxes(Leaf& leaf, const OCTAL_LEAF& source, const World& world, const std::vector<int>& flat_index);
    // The leaf that holds the point. The search begins at a node that may lie near it.
    int FindLeaf(const D3DVECTOR& point, int near_node) const;
    bool TestLeaf(const Leaf& leaf, const ShadowRay& ray, ShadowScratch& scratch, TranslucentHits& hits) const;
    bool TestBrush(const FlatBrush& brush, const ShadowRay& ray, TranslucentHits& hits) const;

    const ShadowKernels& kernels;
    D3DVECTOR root_min, root_max;
    std::vector<Node> nodes; // the root first
    std::vector<Leaf> leaves;
    std::vector<LeafBoxes> leaf_boxes;
    std::vector<FlatBrush> brushes;
    std::vector<TriangleGroup> groups;
    std::vector<GlassTriangle> glass;
    size_t triangle_count = 0;
};
