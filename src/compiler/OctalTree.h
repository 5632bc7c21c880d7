// The spatial index of the world: cubes that halve until few brushes are left. It speeds up shadow rays and goes into
// the compiled world. A node has eight children; terminal leaves list the brushes whose faces touch them.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

#include "foundation/Vector.h"

class World;

inline constexpr int MAX_OCTAL_TREE_SIZE = 131072;

enum OctalLeafType : uint32_t { OCTAL_NODE = 0, OCTAL_EMPTY = 1, OCTAL_TERMINAL = 2 };

struct OCTAL_LEAF {
    uint32_t type = OCTAL_NODE;
    D3DVECTOR min, max, half; // half is the centre
    float size = 0;           // side
    int32_t parent = -1;
    // 0 to 3 are the upper ones: (low x, high z), (high, high), (high, low), (low, low); 4 to 7 below them.
    std::array<int32_t, 8> child{};
    std::vector<int32_t> brush_list; // ascending; nodes have none once the tree is built
};

// The terminal leaves along a segment, in order. One for each thread, kept from trace to trace.
class LeafSelection {
public:
    void Clear(size_t leaf_count);
    void Add(int leaf); // no effect if present
    const std::vector<int>& Leaves() const { return leaves; }

private:
    std::vector<int> leaves;
    std::vector<uint32_t> stamps; // by leaf: the trace that added it
    uint32_t stamp = 0;
};

class OctalTree {
public:
    enum class BuildResult { Built, Stopped, LimitReached, NotFinite };
    static constexpr int MAX_TRACE_STEPS = 2048;

    // Of the brushes as they are now. stopped is asked now and then.
    BuildResult BuildOctalTree(const World& world, const std::function<bool()>& stopped);
    int CountType(uint32_t type) const;

    // The leaf that holds the point, from the given node down. Points outside go to the nearest side.
    int FindLeafRecursive(const D3DVECTOR& point, int parent) const;
    // Empty when end lies outside the tree.
    void TraceOctalTree(const D3DVECTOR& start, const D3DVECTOR& end, LeafSelection& selection) const;
    // The parameter at which a ray from `from` is eps beyond the leaf.
    float ProjectVectorInOctalLeaf(const D3DVECTOR& from, const D3DVECTOR& inv_dir, float eps, int octal_leaf) const;
    const OCTAL_LEAF& GetOctalLeaf(int leaf) const { return octal_tree[static_cast<size_t>(leaf)]; }
    int GetLeafCount() const { return static_cast<int>(octal_tree.size()); }

    std::vector<OCTAL_LEAF> octal_tree; // the root is leaf 0

private:
    BuildResult ChildLeafRecursive(int parent, const D3DVECTOR& min, const D3DVECTOR& max);
    BuildResult AddChildren(int parent);

    struct BuildTriangle {
        D3DVECTOR v[3], normal;
    };
    struct BuildBrush {
        D3DVECTOR min, max; // its box
        size_t first_triangle, triangle_count;
    };
    void CopyBrushes(const World& world);
    bool IsInVoxel(const BuildBrush& brush, const D3DVECTOR& min, const D3DVECTOR& max) const; // as Brush::IsInVoxel

    // During the build: flat copies, side by side, as every brush is looked at again on each level of the tree.
    std::vector<BuildBrush> build_brushes;
    std::vector<BuildTriangle> build_triangles;
    std::function<bool()> build_stopped;
};

// How far a trace steps past a leaf's face, and the parameter that takes an axis out of the choice of the next face.
inline constexpr float TRACE_EPSILON = 1.0f;
inline constexpr float NO_FACE = 1000000.0f;

// 1 / component; 0 where it is 0, or so small that the quotient is not finite.
inline float InverseComponent(float component) {
    const float quotient = component != 0 ? 1.0f / component : 0.0f;
    return std::fabs(quotient) <= std::numeric_limits<float>::max() ? quotient : 0.0f;
}
inline D3DVECTOR InverseDirection(const D3DVECTOR& dir) {
    return {InverseComponent(dir.x), InverseComponent(dir.y), InverseComponent(dir.z)};
}
// The parameter at which a ray is eps beyond the face of one axis. Written without a jump: it runs for every leaf of a
// ray.
inline float ProjectOutOfSlab(float from, float inverse, float eps, float min, float max) {
    const float face = inverse < 0 ? min - eps : max + eps;
    const float t = (face - from) * inverse;
    return inverse != 0 ? t : NO_FACE;
}
inline float ProjectOutOfCube(const D3DVECTOR& from, const D3DVECTOR& inv_dir, float eps, const D3DVECTOR& min,
                              const D3DVECTOR& max) {
    const float x = ProjectOutOfSlab(from.x, inv_dir.x, eps, min.x, max.x);
    const float y = ProjectOutOfSlab(from.y, inv_dir.y, eps, min.y, max.y);
    const float z = ProjectOutOfSlab(from.z, inv_dir.z, eps, min.z, max.z);
    return std::min(x, std::min(y, z));
}
void LogEndlessTrace(const D3DVECTOR& start, const D3DVECTOR& end);
