#include "compiler/WorldSubdivide.h"

namespace {

// Brushes of these kinds are in no cell: they are not drawn.
constexpr uint32_t NOT_IN_CELL = BP_PLAYER_CLIP | BP_LADDER | BP_ENVIRONMENT;

} // namespace

void WorldSubdivide::PrepareBrushes() {
    for (size_t b = 0; b < world.brush.size(); ++b) {
        Brush& brush = *world.brush[b];
        brush.BBoxFromVertices(brush.bbox);
        brush.index = static_cast<int32_t>(b);
        brush.multi_cell = false;
        brush.render_group = -1;
    }
    for (const auto& entity : world.entity)
        entity->cell = -1;
    cell.clear();
    cell_eye.clear();
    portal.clear();
    occluder.clear();
    render_group.clear();
    removed_brush_list.clear();
    removed_entity_list.clear();
    snd_trace_data.clear();
    problem_solver.Reset();
}

bool WorldSubdivide::IsClipped(const Brush& brush) const {
    return options.clip_box_compilation && !BoxesOverlap(brush.bbox, options.clip_box);
}

bool WorldSubdivide::IsClipped(const D3DVECTOR& position) const {
    return options.clip_box_compilation &&
           !s_math.PointInBox(BoxMin(options.clip_box), BoxMax(options.clip_box), position);
}

void WorldSubdivide::CreateWorldCell() {
    CELL& whole = cell.emplace_back();
    whole.can_see_outside = true;
    for (int b = 0; b < world.GetBrushCount(); ++b) {
        const Brush& brush = *world.brush[static_cast<size_t>(b)];
        if (brush.IsPortalOrOccluder() || brush.HasProperty(NOT_IN_CELL))
            continue;
        (IsClipped(brush) ? removed_brush_list : whole.objects).push_back(b);
    }
    for (int e = 0; e < world.GetEntityCount(); ++e) {
        Entity& entity = *world.entity[static_cast<size_t>(e)];
        if (entity.IsType("VISIBILITY_EYE"))
            continue;
        entity.cell = 0;
        (IsClipped(entity.position) ? removed_entity_list : whole.entities).push_back(e);
    }
    IndexCells();
}

void WorldSubdivide::IndexCells() {
    brush_cell.assign(world.brush.size(), -1);
    cell_ambient.assign(cell.size(), nullptr);
    for (size_t c = 0; c < cell.size(); ++c) {
        for (const int b : cell[c].objects)
            if (brush_cell[static_cast<size_t>(b)] == -1)
                brush_cell[static_cast<size_t>(b)] = static_cast<int32_t>(c);
        for (const int e : cell[c].entities)
            if (!cell_ambient[c] && world.entity[static_cast<size_t>(e)]->IsType("AMBIENT_LIGHT"))
                cell_ambient[c] = world.entity[static_cast<size_t>(e)].get();
    }
}

int WorldSubdivide::GetBrushCell(int index) const {
    return index >= 0 && static_cast<size_t>(index) < brush_cell.size() ? brush_cell[static_cast<size_t>(index)] : -1;
}

const Entity* WorldSubdivide::GetAmbientFromCell(int index) const {
    const int c = GetBrushCell(index);
    return c >= 0 ? cell_ambient[static_cast<size_t>(c)] : nullptr;
}

void WorldSubdivide::AddRemovedCells() {
    CELL& removed = cell.emplace_back();
    removed.objects = removed_brush_list;
    removed.entities = removed_entity_list;
    cell.emplace_back();
}
