#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "compiler/StageRunner.h"
#include "foundation/Desktop.h"
#include "scene/World.h"

namespace {

constexpr float WELD_DISTANCE = 0.01f;
constexpr float STATIC_MASS = 1000000000.0f;
constexpr float FARTHEST_POINT = 1e19f; // squared, where the search for the nearest point starts
constexpr int COARSEST_CURVES = 3;

// Adds surfaces to a mesh, with a grid over its points and a table of its edges. The cells of the grid are twice the
// welding distance, so every point that could weld stands in the cell of the new one or in a neighbouring one.
class MeshBuilder {
public:
    MeshBuilder(CPhysicsData& built_mesh, float epsilon)
        : mesh(built_mesh), eps2(epsilon * epsilon), cell_side(2 * epsilon) {
        for (size_t p = 0; p < mesh.points.size(); ++p)
            EnterPoint(static_cast<int>(p));
        for (size_t e = 0; e < mesh.edges.size(); ++e)
            edges.emplace(EdgeKey(mesh.edges[e].beg_index, mesh.edges[e].end_index), static_cast<int>(e));
    }
    void InsertSurface(int index, const std::vector<D3DVECTOR>& points_in, const std::vector<TRIANGLE>& faces_in) {
        std::vector<int> mapped;
        mapped.reserve(points_in.size());
        for (const D3DVECTOR& p : points_in)
            mapped.push_back(Weld(p, index));
        for (const TRIANGLE& face : faces_in)
            InsertFace(face, mapped);
    }

private:
    struct GridCell {
        int64_t x, y, z;
        bool operator==(const GridCell&) const = default;
    };
    struct GridHash {
        size_t operator()(const GridCell& cell) const {
            auto hash = static_cast<uint64_t>(cell.x) * 0x9E3779B97F4A7C15ull;
            hash = (hash ^ static_cast<uint64_t>(cell.y)) * 0xC2B2AE3D27D4EB4Full;
            hash = (hash ^ static_cast<uint64_t>(cell.z)) * 0x165667B19E3779F9ull;
            return static_cast<size_t>(hash ^ hash >> 29);
        }
    };

    static bool IsFinite(const D3DVECTOR& p) { return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z); }
    static uint64_t EdgeKey(int a, int b) {
        return static_cast<uint64_t>(std::min(a, b)) << 32 | static_cast<uint32_t>(std::max(a, b));
    }
    GridCell CellOf(const D3DVECTOR& p) const {
        static constexpr double FARTHEST_CELL = 1e18; // beyond it, cells only hold points that are far from each other
        const auto number = [this](float c) {
            return static_cast<int64_t>(std::floor(
                std::clamp(static_cast<double>(c) / static_cast<double>(cell_side), -FARTHEST_CELL, FARTHEST_CELL)));
        };
        return {number(p.x), number(p.y), number(p.z)};
    }
    void EnterPoint(int p) {
        const D3DVECTOR& pos = mesh.points[static_cast<size_t>(p)].pos;
        if (IsFinite(pos)) // others are at no distance from anything
            grid[CellOf(pos)].push_back(p);
    }
    int FindNearest(const D3DVECTOR& p, float& best) const {
        int nearest = -1;
        const GridCell center = CellOf(p);
        for (int64_t x = center.x - 1; x <= center.x + 1; ++x)
            for (int64_t y = center.y - 1; y <= center.y + 1; ++y)
                for (int64_t z = center.z - 1; z <= center.z + 1; ++z) {
                    const auto found = grid.find({x, y, z});
                    if (found == grid.end())
                        continue;
                    for (const int candidate : found->second) {
                        const float square = SquareMagnitude(mesh.points[static_cast<size_t>(candidate)].pos - p);
                        if (square < best ||
                            (square == best && candidate < nearest)) { // the first in the list wins a tie
                            best = square;
                            nearest = candidate;
                        }
                    }
                }
        return nearest;
    }
    int Weld(const D3DVECTOR& p, int index) {
        float best = FARTHEST_POINT;
        int nearest = IsFinite(p) ? FindNearest(p, best) : -1;
        if (nearest < 0 || !(best < eps2)) {
            nearest = static_cast<int>(mesh.points.size());
            mesh.points.emplace_back().pos = p;
            EnterPoint(nearest);
        }
        mesh.points[static_cast<size_t>(nearest)].indexes.Insert(index);
        return nearest;
    }
    int TakeEdge(int beg, int end) {
        const auto [found, is_new] = edges.emplace(EdgeKey(beg, end), static_cast<int>(mesh.edges.size()));
        if (is_new) {
            CPhyEdge& edge = mesh.edges.emplace_back();
            edge.beg_index = beg;
            edge.end_index = end;
        }
        return found->second;
    }
    void InsertFace(const TRIANGLE& face, const std::vector<int>& mapped) {
        for (const uint16_t i : face.i)
            if (i >= mapped.size()) {
                mesh.tainted = true;
                return;
            }
        CPhyFace added;
        added.p0_index = mapped[face.i[0]];
        added.p1_index = mapped[face.i[1]];
        added.p2_index = mapped[face.i[2]];
        if (added.p0_index == added.p1_index || added.p1_index == added.p2_index || added.p2_index == added.p0_index)
            return; // collapsed
        added.e0_index = TakeEdge(added.p1_index, added.p2_index);
        added.e1_index = TakeEdge(added.p2_index, added.p0_index);
        added.e2_index = TakeEdge(added.p0_index, added.p1_index);
        const int sides[3] = {added.e0_index, added.e1_index, added.e2_index};
        for (const int e : sides)
            if (mesh.edges[static_cast<size_t>(e)].left_index >= 0 &&
                mesh.edges[static_cast<size_t>(e)].right_index >= 0) {
                mesh.tainted = true; // a third triangle on one edge
                return;
            }
        const auto number = static_cast<int>(mesh.faces.size());
        for (const int e : sides) {
            CPhyEdge& edge = mesh.edges[static_cast<size_t>(e)];
            (edge.left_index < 0 ? edge.left_index : edge.right_index) = number;
        }
        mesh.faces.push_back(added);
    }

    CPhysicsData& mesh;
    float eps2, cell_side;
    std::unordered_map<GridCell, std::vector<int>, GridHash> grid;
    std::unordered_map<uint64_t, int> edges;
};

void BuildMesh(const Brush& brush, CPhysicsData& mesh) {
    MeshBuilder builder(mesh, WELD_DISTANCE);
    brush.ForEachSurface([&](const Surface& surface, int s, bool) {
        if (surface.HasMaterial()) // others are no collision geometry
            builder.InsertSurface(s, surface.vertices, surface.tri_indices);
    });
}

} // namespace

void CPhysicsData::InsertSurface(float epsilon, int index, const std::vector<D3DVECTOR>& points_in,
                                 const std::vector<TRIANGLE>& faces_in) {
    MeshBuilder(*this, epsilon).InsertSurface(index, points_in, faces_in);
}

void CPhysicsData::ComputeInertiaMomentum() {
    struct FaceMass {
        float area;
        D3DVECTOR centroid;
    };
    std::vector<FaceMass> masses;
    masses.reserve(faces.size());
    D3DVECTOR weighted;
    float total = 0;
    for (const CPhyFace& face : faces) {
        const D3DVECTOR &p0 = points[static_cast<size_t>(face.p0_index)].pos,
                        &p1 = points[static_cast<size_t>(face.p1_index)].pos,
                        &p2 = points[static_cast<size_t>(face.p2_index)].pos;
        const float a = Magnitude(p1 - p0), b = Magnitude(p2 - p1), c = Magnitude(p0 - p2);
        const float s = (a + b + c) * 0.5f;
        const float square = s * (s - a) * (s - b) * (s - c);
        const float area = square > 0 ? std::sqrt(square) : 0; // rounding may bring a sliver below 0
        const D3DVECTOR centroid = (p0 + p1 + p2) * 0.33333334f;
        weighted += centroid * area;
        total += area;
        masses.push_back({area, centroid});
    }
    const float scale = rotation_factor * mass * 0.5f / total;
    if (!(total > 0) || !std::isfinite(scale) || !std::isfinite(SquareMagnitude(weighted))) {
        Clear();
        return;
    }
    center = weighted / total;
    for (CPhyPoint& point : points)
        point.pos -= center;
    I = D3DMATRIX{};
    for (FaceMass& face : masses) {
        face.centroid -= center;
        const auto [x, y, z] = face.centroid;
        const float w = face.area;
        I.m[0][0] += w * (y * y + z * z);
        I.m[1][1] += w * (x * x + z * z);
        I.m[2][2] += w * (x * x + y * y);
        I.m[0][1] -= w * x * y;
        I.m[0][2] -= w * x * z;
        I.m[1][2] -= w * y * z;
    }
    I.m[1][0] = I.m[0][1];
    I.m[2][0] = I.m[0][2];
    I.m[2][1] = I.m[1][2];
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            I.m[row][column] *= scale;
}

void Brush::ComputePhysicsData(bool build_mesh) {
    physics_data = CPhysicsData(); // nothing of an earlier compile stays
    physics_data.tainted = false;
    physics_data.static_friction_coef = static_friction;
    physics_data.dynamic_friction_coef = dynamic_friction;
    physics_data.elasticity = elasticity;
    physics_data.time_scale = time_scale;
    physics_data.rotation_factor = rotation_factor;
    const float new_mass = HasProperty(BP_DYNAMIC) ? mass : STATIC_MASS;
    const float scale = new_mass / physics_data.mass;
    for (auto& row : physics_data.I.m)
        for (float& entry : row)
            entry *= scale;
    physics_data.mass = new_mass;
    if (IsPortalOrOccluder() || !build_mesh)
        return;
    BuildMesh(*this, physics_data);
    physics_data.ComputeInertiaMomentum();
}

bool Brush::CheckPhysics() {
    physics_data.Clear();
    physics_data.tainted = false;
    if (IsPortalOrOccluder())
        return true;
    BuildMesh(*this, physics_data);
    const bool clean = physics_data.CheckConsistency();
    physics_data.Clear();
    return clean;
}

bool World::CalculatePhysicsData(bool save_finalmap, int threads, CompileProgress& progress) {
    const uint32_t start = GetDesktop().GetTickCount();
    progress.AddText("Calculating Physics...  ");
    progress.InitProgress(GetBrushCount());
    const bool finished = RunStage(progress, GetBrushCount(), threads, [&](int b, int, StageState& state) {
        Brush& computed = *brush[static_cast<size_t>(b)];
        computed.ChangeCurveDetail(COARSEST_CURVES);
        computed.ComputePhysicsData(computed.HasProperty(BP_DYNAMIC) || save_finalmap);
        state.Step();
    });
    if (finished)
        progress.AddText("\t-> " + TimeSince(start) + "\r\n\r\n");
    return finished;
}
