#include <memory>

#include "compiler/CellSight.h"
#include "compiler/EntityVisibility.h"
#include "compiler/SurfaceTriangle.h"
#include "foundation/Desktop.h"
#include "foundation/Log.h"
#include "foundation/Parallel.h"
#include "render/ItemBuffer.h"

namespace {

constexpr float EYE_NEAR = 1, EYE_FAR = 16384;
constexpr int FACES = 6, PLANES = 6;

struct FaceAxes {
    D3DVECTOR front, right, up;
};
constexpr FaceAxes FACE_AXES[FACES] = {{{1, 0, 0}, {0, 0, -1}, {0, 1, 0}}, {{-1, 0, 0}, {0, 0, 1}, {0, 1, 0}},
                                       {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}},  {{0, 0, -1}, {-1, 0, 0}, {0, 1, 0}},
                                       {{0, 1, 0}, {1, 0, 0}, {0, 0, -1}}, {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}}};

D3DMATRIX FaceView(const FaceAxes& axes, const D3DVECTOR& eye) {
    const auto &r = axes.right, &u = axes.up, &f = axes.front;
    return {{{r.x, u.x, f.x, 0},
             {r.y, u.y, f.y, 0},
             {r.z, u.z, f.z, 0},
             {-DotProduct(eye, r), -DotProduct(eye, u), -DotProduct(eye, f), 1}}};
}

// Near, far, left, right, top, bottom; the normals point inwards. The field of view is pi / 2.
void FacePlanes(const FaceAxes& axes, const D3DVECTOR& eye, PLANE (&planes)[PLANES]) {
    planes[0] = PLANE(eye + axes.front * EYE_NEAR, axes.front);
    planes[1] = PLANE(eye + axes.front * EYE_FAR, -axes.front);
    planes[2] = PLANE(eye, Normalize(axes.front + axes.right));
    planes[3] = PLANE(eye, Normalize(axes.front - axes.right));
    planes[4] = PLANE(eye, Normalize(axes.front - axes.up));
    planes[5] = PLANE(eye, Normalize(axes.front + axes.up));
}

// Flat copies of what is drawn into item buffers, made once before the threads start.
class DrawScene {
public:
    explicit DrawScene(const WorldSubdivide& ws) {
        for (size_t p = 0; p < ws.portal.size(); ++p)
            portal_of_brush.emplace_back(ws.portal[p].portalowner, static_cast<uint32_t>(p));
        auto next_portal = portal_of_brush.begin();
        for (int b = 0; b < ws.world.GetBrushCount(); ++b) {
            const Brush& brush = *ws.world.brush[static_cast<size_t>(b)];
            const bool has_portal = next_portal != portal_of_brush.end() && next_portal->first == b;
            const uint32_t p = has_portal ? next_portal++->second : 0;
            if (!CanBeHeld(brush))
                continue;
            if (ws.IsClipped(brush)) {
                if (!brush.IsPortalOrOccluder())
                    removed.push_back(b);
            } else if (brush.FindLinkedEntity("BASIC_DOOR") || brush.HasProperty(BP_SEE_THROUGH)) {
                tested.push_back(b);
            } else {
                AddDrawn(ws, brush, b, has_portal ? &ws.portal[p] : nullptr, p);
            }
        }
    }

    // Draws the brushes before the eye. False when stopped on the way.
    bool Draw(ItemBuffer& buffer, const PLANE (&planes)[PLANES], const StageState& state) const {
        for (const DrawnBrush& drawn : drawn_brushes) {
            if (state.Stopped())
                return false;
            if (!drawn.brush->Visible(planes))
                continue;
            for (size_t t = drawn.first; t < drawn.end; ++t) {
                const DrawnTriangle& triangle = triangles[t];
                buffer.DrawTriangle(triangle.v[0], triangle.v[1], triangle.v[2], triangle.color, triangle.double_sided);
            }
        }
        return true;
    }

    std::vector<int> removed; // by the clip box, brushes that a cell could have held
    std::vector<int> tested;  // found by rays: doors and see-through brushes hide nothing

private:
    struct DrawnTriangle {
        D3DVECTOR v[3];
        uint32_t color;
        bool double_sided;
    };
    struct DrawnBrush {
        const Brush* brush;
        size_t first, end; // triangles
    };

    static bool CanBeHeld(const Brush& brush) {
        return !brush.HasProperty(BP_PLAYER_CLIP | BP_LADDER | BP_ENVIRONMENT | BP_BOT_CLIP) &&
               !brush.FindLinkedEntity("ENVIRONMENT") && !brush.FindLinkedEntity("BOX_TRIGGER");
    }

    void AddDrawn(const WorldSubdivide& ws, const Brush& brush, int b, const PORTAL* portal, uint32_t portal_index) {
        const size_t first = triangles.size();
        if (portal)
            AddPortal(*portal, portal_index);
        else if (!brush.IsPortalOrOccluder())
            brush.ForEachSurface([&](const Surface& surface, int, bool) {
                const bool double_sided = ws.world.IsMaterialDoublesided(surface.texture.index);
                for (const TRIANGLE& triangle : surface.tri_indices)
                    if (SurfaceTriangle corners; corners.Take(surface, triangle))
                        triangles.push_back(
                            {{corners.v[0], corners.v[1], corners.v[2]}, static_cast<uint32_t>(b), double_sided});
            });
        if (triangles.size() != first)
            drawn_brushes.push_back({&brush, first, triangles.size()});
    }
    void AddPortal(const PORTAL& portal, uint32_t portal_index) {
        for (size_t side = 0; side < portal.partindices.size(); ++side) {
            const auto& indices = portal.partindices[side];
            for (size_t k = 0; k < indices.size(); k += 3)
                triangles.push_back(
                    {{portal.bounds[indices[k]], portal.bounds[indices[k + 1]], portal.bounds[indices[k + 2]]},
                     ITEM_PORTAL + (side == 1 ? ITEM_SIDE_1 : 0) + portal_index,
                     false});
        }
    }

    std::vector<std::pair<int, uint32_t>> portal_of_brush; // ascending
    std::vector<DrawnTriangle> triangles;
    std::vector<DrawnBrush> drawn_brushes;
};

// The cells of one worker.
class CellWorker {
public:
    CellWorker(const WorldSubdivide& subdivision, const DrawScene& draw_scene, const VisibilityScene& visibility_scene,
               const StageState& stage_state)
        : ws(subdivision), scene(draw_scene), state(stage_state), buffer(subdivision.options.voxel_size),
          sight(subdivision), rays(visibility_scene, stage_state) {}

    // What one cell sees. Incomplete after a stop.
    void CreateCell(int c, CELL& cell, CellFindings& found) {
        const uint32_t start = GetDesktop().GetTickCount();
        sight.BeginCell();
        for (const int eye : ws.cell_eye[static_cast<size_t>(c)]) {
            const Entity& entity = *ws.world.entity[static_cast<size_t>(eye)];
            sight.BeginEye(entity.GetObjectID());
            for (int face = 0; face < FACES; ++face)
                if (!LookAtFace(c, eye, face, found))
                    return;
        }
        sight.Finish(cell);
        const uint32_t seen = GetDesktop().GetTickCount();
        rays.GetEntitiesForCell(found, c);
        found.times = {seen - start, GetDesktop().GetTickCount() - seen};
    }

private:
    // False when stopped on the way.
    bool LookAtFace(int c, int eye, int face, CellFindings& found) {
        const D3DVECTOR& position = ws.world.entity[static_cast<size_t>(eye)]->position;
        if (face == 0) // rays go all ways at once
            for (const int b : scene.tested)
                if (!sight.HasBrush(b) && rays.TestEyeVisibility(b, position))
                    sight.AddBrush(b);
        PLANE planes[PLANES];
        FacePlanes(FACE_AXES[face], position, planes);
        buffer.Clear(ITEM_BACKGROUND);
        buffer.SetView(FaceView(FACE_AXES[face], position), EYE_NEAR, EYE_FAR);
        if (!scene.Draw(buffer, planes, state))
            return false;
        sight.ReadFace(buffer.Pixels(), found.portals);
        if (ws.options.face_observer)
            ws.options.face_observer(c, eye, face, buffer);
        return true;
    }

    const WorldSubdivide& ws;
    const DrawScene& scene;
    const StageState& state;
    ItemBuffer buffer;
    CellSight sight;
    VisibilityRays rays;
};

} // namespace

SubdivideResult WorldSubdivide::CreateCells(CompileProgress& progress, CellTimes& times) {
    const DrawScene draw_scene(*this);
    const VisibilityScene visibility_scene(*this);
    const int cells = static_cast<int>(cell_eye.size()), threads = ThreadCount(options.threads);
    std::vector<std::unique_ptr<CellWorker>> workers(static_cast<size_t>(threads));
    std::vector<CellFindings> findings(cell_eye.size());
    const bool complete = RunStage(progress, cells, threads, [&](int c, int worker, StageState& state) {
        std::unique_ptr<CellWorker>& own = workers[static_cast<size_t>(worker)];
        if (!own)
            own = std::make_unique<CellWorker>(*this, draw_scene, visibility_scene, state);
        own->CreateCell(c, cell[static_cast<size_t>(c)], findings[static_cast<size_t>(c)]);
        state.Step();
    });
    if (!complete)
        return SubdivideResult::Stopped;
    if (cells > 0)
        removed_brush_list.assign(draw_scene.removed.begin(), draw_scene.removed.end());
    TakeFindings(findings);
    for (const CellFindings& found : findings) {
        times.brushes += found.times.brushes;
        times.entities += found.times.entities;
    }
    IndexCells();
    return SubdivideResult::Done;
}

SubdivideResult WorldSubdivide::SubdivideEntities(CompileProgress& progress, std::string& message) {
    if (!options.subdivide_world) {
        CreateWorldCell();
        progress.AddText("1 Cell(s) created\r\n\r\n");
        return SubdivideResult::Done;
    }
    if (const SubdivideResult result = CreatePortalsAndEyes(message); result != SubdivideResult::Done)
        return result;
    progress.InitProgress(static_cast<int>(cell.size()));
    const VisibilityScene visibility_scene(*this);
    const int threads = ThreadCount(options.threads);
    std::vector<std::unique_ptr<VisibilityRays>> workers(static_cast<size_t>(threads));
    std::vector<CellFindings> findings(cell.size());
    const int cells = static_cast<int>(cell.size());
    const bool complete = RunStage(progress, cells, threads, [&](int c, int worker, StageState& state) {
        std::unique_ptr<VisibilityRays>& rays = workers[static_cast<size_t>(worker)];
        if (!rays)
            rays = std::make_unique<VisibilityRays>(visibility_scene, state);
        rays->GetEntitiesForCell(findings[static_cast<size_t>(c)], c);
        state.Step();
    });
    if (!complete)
        return SubdivideResult::Stopped;
    TakeFindings(findings);
    return SubdivideResult::Done;
}

void WorldSubdivide::TakeFindings(const std::vector<CellFindings>& findings) {
    removed_entity_list.clear();
    if (!findings.empty())
        for (int e = 0; e < world.GetEntityCount(); ++e)
            if (const Entity& entity = *world.entity[static_cast<size_t>(e)];
                entity.trace_entity && IsClipped(entity.position) && !entity.IsType("VISIBILITY_EYE"))
                removed_entity_list.push_back(e);
    for (int c = 0; c < static_cast<int>(findings.size()); ++c) {
        const CellFindings& found = findings[static_cast<size_t>(c)];
        cell[static_cast<size_t>(c)].entities = found.entities;
        cell[static_cast<size_t>(c)].occluders = FindCellOccluders(c);
        for (const int e : removed_entity_list)
            world.entity[static_cast<size_t>(e)]->cell = 0;
        for (const int e : found.entities)
            world.entity[static_cast<size_t>(e)]->cell = c;
        for (const PortalFinding& portal_seen : found.portals)
            problem_solver.AddPortalInfo(portal_seen.portal_id, portal_seen.side, c, portal_seen.eye_id);
        for (const OneCellFinding& entity : found.one_cell_entities)
            problem_solver.AddOneCellOnlyEntity(entity.entity_id, c, entity.eye_id);
        for (const std::string& line : found.log)
            LOG("%s", line.c_str());
    }
}

void WorldSubdivide::FindWrongEntities() {
    for (const auto& entity : world.entity)
        if (entity->cell == -1 && entity->trace_entity && !entity->IsType("CORONA"))
            problem_solver.AddWrongEntity(entity->GetObjectID());
}
