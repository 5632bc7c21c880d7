// The rigid body of a brush: a welded triangle mesh with shared points and edges, its centre and its inertia tensor.
// The mesh exists only between the physics stage of a compile and the writing of the file.
#pragma once

#include <cstdint>
#include <vector>

#include "foundation/Vector.h"
#include "foundation/WorkList.h"
#include "scene/Surface.h"

struct CPhyPoint {
    D3DVECTOR pos;
    WorkList<int, 8> indexes; // the surfaces that use the point
};
struct CPhyEdge {
    int beg_index = -1, end_index = -1;    // points
    int left_index = -1, right_index = -1; // faces, -1 until one takes the side
};
struct CPhyFace {
    int p0_index = -1, p1_index = -1, p2_index = -1;
    int e0_index = -1, e1_index = -1, e2_index = -1; // e0 joins p1 and p2, e1 p2 and p0, e2 p0 and p1
};

class CPhysicsData {
public:
    float mass = 1;
    D3DVECTOR center; // the area centre, world coordinates
    D3DMATRIX I{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};
    float static_friction_coef = 1.1f, dynamic_friction_coef = 1, elasticity = 0.2f, time_scale = 1;
    float rotation_factor = 1; // scale of the inertia tensor
    std::vector<CPhyPoint> points;
    std::vector<CPhyEdge> edges;
    std::vector<CPhyFace> faces;
    bool tainted = true; // the mesh broke a rule

    bool CheckConsistency() const { return !tainted; }
    void Clear() { points.clear(), edges.clear(), faces.clear(); }
    // Adds one surface: vertices nearer than epsilon weld, a third triangle on an edge taints. Defined in compiler/.
    void InsertSurface(float epsilon, int index, const std::vector<D3DVECTOR>& points_in,
                       const std::vector<TRIANGLE>& faces_in);
    // Moves the mesh to its area centre and computes I. A mesh without area keeps its values. Defined in compiler/.
    void ComputeInertiaMomentum();
};
