#include "compiler/CompiledWorld.h"

#include "compiler/LightmapPages.h"
#include "compiler/WorldRecords.h"
#include "files/ChunkFile.h"
#include "persistence/Records.h"
#include "persistence/WorldFile.h"
#include "persistence/WriteError.h"

namespace {

constexpr uint32_t ALWAYS_WHOLE = BP_PLAYER_CLIP | BP_LADDER | BP_BOT_CLIP;
constexpr uint32_t POINTER_IN_FILE = 0; // pointers have no meaning in the file
constexpr uint32_t NO_CHUNK_ID = 0xFFFFFFFF;

class CompiledWorldWriter {
public:
    CompiledWorldWriter(WorldSubdivide& subdivision, UChunkFile& target_file, StopPoll& stop_poll)
        : ws(subdivision), world(subdivision.world), file(target_file), poll(stop_poll) {}

    // False after a stop.
    bool WriteAll();
    bool WriteFailed() const { return failed; }

private:
    template <class Fn>
    bool WriteChunk(const char* name, uint32_t id, Fn&& write) {
        failed = !file.CreateChunk(name, id) || failed;
        write();
        failed = !file.CloseChunk() || failed;
        return !poll.Stopped() && !failed;
    }
    template <class Fn>
    bool WriteChunks(const char* name, size_t first, size_t count, Fn&& write) {
        for (size_t k = first; k < count; ++k)
            if (!WriteChunk(name, static_cast<uint32_t>(k), [&] { write(k); }))
                return false;
        return true;
    }
    void WriteIndices(const std::vector<int32_t>& values) { file.WriteValues(values); }
    static int32_t Count(size_t count) { return static_cast<int32_t>(count); }

    // Calls fn(surface, curved) for the surfaces that the file keeps.
    template <class Fn>
    void ForEachKept(const Brush& brush, Fn&& fn) const {
        const bool whole = KeepsAllSurfaces(brush, world);
        brush.ForEachSurface([&](const Surface& surface, int, bool curved) {
            if (whole || surface.HasMaterial())
                fn(surface, curved);
        });
    }
    void WriteBrushInfo(const Brush& brush);
    void WriteSurfaceInfo(const Brush& brush, const Surface& surface, bool curved);
    void WriteInitialCount();
    void WriteBrushData(Brush& brush);
    void WriteLightmapInfo(const LIGHTMAP_INFO& info);
    void WritePhysics(Brush& brush);
    void WritePortal(const PORTAL& portal);
    void WriteCell(const CELL& cell);
    void WriteOccluder(const OCCLUDER& occluder);
    void WriteOctalTree();
    void WriteDecals();
    void WriteActorGroups();

    WorldSubdivide& ws;
    World& world;
    UChunkFile& file;
    StopPoll& poll;
    bool failed = false;
};

bool CompiledWorldWriter::WriteAll() {
    const size_t brushes = world.brush.size();
    return WriteChunk("FileID", NO_CHUNK_ID, [&] { file.WriteString(WORLD_FILE_ID); }) &&
           WriteChunks("BrushInfo", 0, brushes, [&](size_t b) { WriteBrushInfo(*world.brush[b]); }) &&
           WriteChunk("BrushInitialCount", 0, [&] { WriteInitialCount(); }) &&
           WriteChunks("BrushData", 0, brushes, [&](size_t b) { WriteBrushData(*world.brush[b]); }) &&
           WriteChunks("LightmapData", 0, world.lightmaps.size(),
                       [&](size_t page) { file.WriteValues(GetLightmapData(world, static_cast<int>(page))); }) &&
           WriteChunks("MaterialData", 1, world.material.size(),
                       [&](size_t m) {
                           RecordWriter()
                               .PutText(world.material[m].material_class, NAME_FIELD)
                               .PutText(world.material[m].material_name, NAME_FIELD)
                               .WriteTo(file);
                       }) &&
           WriteChunks("EntityData", 0, world.entity.size(),
                       [&](size_t e) { WriteWorldEntity(file, *world.entity[e]); }) &&
           WriteChunks("PortalData", 0, ws.portal.size(), [&](size_t p) { WritePortal(ws.portal[p]); }) &&
           WriteChunks("CellData", 0, ws.cell.size(), [&](size_t c) { WriteCell(ws.cell[c]); }) &&
           WriteChunks("RenderGroup", 0, ws.render_group.size(),
                       [&](size_t g) {
                           file.WriteValue(static_cast<int32_t>(ws.render_group[g].GetItemCount()));
                           file.WriteArray(ws.render_group[g].GetListPtr(),
                                           static_cast<size_t>(ws.render_group[g].GetItemCount()) * sizeof(int32_t));
                       }) &&
           WriteChunks("OccluderData", 0, ws.occluder.size(), [&](size_t o) { WriteOccluder(ws.occluder[o]); }) &&
           WriteChunk("OctalTree", 0, [&] { WriteOctalTree(); }) &&
           WriteChunk("SoundTraceData", 0, [&] { file.WriteValues(ws.snd_trace_data); }) &&
           WriteChunk("MPGames", NO_CHUNK_ID, [&] { WriteWorldGames(file, world); }) &&
           WriteChunk("Decals", NO_CHUNK_ID, [&] { WriteDecals(); }) &&
           WriteChunk("AIGroups", NO_CHUNK_ID, [&] { WriteActorGroups(); });
}

void CompiledWorldWriter::WriteBrushInfo(const Brush& brush) {
    int32_t kept = 0;
    ForEachKept(brush, [&](const Surface&, bool) { ++kept; });
    WriteBrushHeader(file, brush, kept);
    ForEachKept(brush, [&](const Surface& surface, bool curved) { WriteSurfaceInfo(brush, surface, curved); });
}

void CompiledWorldWriter::WriteSurfaceInfo(const Brush& brush, const Surface& surface, bool curved) {
    const bool mesh =
        !curved || brush.IsCustom(); // stored as it is; other curves are rebuilt from their control points
    int32_t type = brush.type == BT_TERRAIN && !curved ? WS_TERRAIN : WS_MESH;
    if (!mesh)
        type = surface.cp_count == CURVE_FAN     ? WS_FAN
               : surface.cp_count == CURVE_STRIP ? WS_STRIP
               : surface.cp_count == CURVE_PATCH ? WS_PATCH
                                                 : 0;
    RecordWriter record;
    record.Put(mesh ? Count(surface.vertices.size()) : 0).Put(mesh ? 0 : Count(surface.cp.size()));
    record.Put(mesh ? Count(surface.tri_indices.size()) : 0).Put(Count(surface.dynamic_lightmaps.size()));
    record.Put(type).WriteTo(file);
    if (!mesh)
        file.WriteValues(surface.cp);
}

void CompiledWorldWriter::WriteInitialCount() {
    int32_t surfaces = 0, control_points = 0;
    for (const auto& brush : world.brush)
        ForEachKept(*brush, [&](const Surface& surface, bool curved) {
            ++surfaces;
            if (curved && !brush->IsCustom())
                control_points += Count(surface.cp.size());
        });
    file.WriteValue(surfaces);
    file.WriteValue(control_points);
}

void CompiledWorldWriter::WriteLightmapInfo(const LIGHTMAP_INFO& info) {
    RecordWriter record;
    record.Put(info.lightmap)
        .Put(info.u_start)
        .Put(info.v_start)
        .Put(info.u_size)
        .Put(info.v_size)
        .Put(info.light_index)
        .WriteTo(file);
}

void CompiledWorldWriter::WriteBrushData(Brush& brush) {
    const auto same_count = [](std::vector<UVVector> uv, const Surface& surface) {
        uv.resize(surface.vertices.size());
        return uv;
    };
    ForEachKept(brush, [&](const Surface& surface, bool curved) {
        if (!curved || brush.IsCustom()) {
            file.WriteValues(surface.vertices);
            file.WriteValues(same_count(surface.uv, surface));
            if (!curved)
                file.WriteValues(same_count(surface.lightmap_uv, surface));
            file.WriteValues(surface.tri_indices);
        }
        if (curved && brush.IsCustom()) {
            std::vector<uint32_t> colors = surface.extra_diffuse;
            colors.resize(surface.vertices.size());
            file.WriteValues(colors);
        }
        PackTexInfo(surface.texture).WriteTo(file);
        WriteLightmapInfo(surface.lightmap_info);
        for (const DynamicLightmap& lightmap : surface.dynamic_lightmaps)
            WriteLightmapInfo(lightmap.info);
    });
    WritePhysics(brush);
}

// The mesh is used up: the next compile builds it again.
void CompiledWorldWriter::WritePhysics(Brush& brush) {
    CPhysicsData& physics = brush.physics_data;
    RecordWriter record;
    record.Put(brush.HasProperty(BP_DYNAMIC) ? physics.mass : STATIC_MASS_IN_FILE).Put(physics.center);
    record.Put(physics.static_friction_coef)
        .Put(physics.dynamic_friction_coef)
        .Put(physics.elasticity)
        .Put(physics.time_scale);
    record.Put(physics.I)
        .Put(Count(physics.points.size()))
        .Put(Count(physics.edges.size()))
        .Put(Count(physics.faces.size()))
        .WriteTo(file);
    RecordWriter points, edges, faces;
    for (const CPhyPoint& point : physics.points)
        points.Put(point.pos);
    for (const CPhyEdge& edge : physics.edges)
        edges.Put(edge.beg_index).Put(edge.end_index);
    for (const CPhyFace& face : physics.faces)
        faces.Put(face.p0_index)
            .Put(face.p1_index)
            .Put(face.p2_index)
            .Put(face.e0_index)
            .Put(face.e1_index)
            .Put(face.e2_index);
    for (const RecordWriter* list : {&points, &edges, &faces})
        list->WriteTo(file);
    physics.Clear();
    physics.tainted = false;
}

void CompiledWorldWriter::WritePortal(const PORTAL& portal) {
    RecordWriter record;
    record.Put(portal.bounds).Put(portal.pivot).Put(portal.partindices).Put(portal.normal);
    record.Put(POINTER_IN_FILE).Put(POINTER_IN_FILE).Put(Count(portal.PVP[0].size())).Put(Count(portal.PVP[1].size()));
    record.Put(portal.portalowner).Put(portal.cell).WriteTo(file);
    for (const std::vector<int32_t>& side : portal.PVP) { // one array of leaves each, also when empty
        RecordWriter leaves;
        for (const int32_t reached : side)
            leaves.Put(reached).Put(std::array<int32_t, 3>{}); // parent, cell and depth have no meaning
        leaves.WriteTo(file);
    }
}

void CompiledWorldWriter::WriteCell(const CELL& cell) {
    RecordWriter record;
    record.Put(Count(cell.objects.size())).Put(POINTER_IN_FILE).Put(Count(cell.entities.size())).Put(POINTER_IN_FILE);
    record.Put(Count(cell.portals.size())).Put(POINTER_IN_FILE).Put(POINTER_IN_FILE);
    record.Put(Count(cell.occluders.size())).Put(POINTER_IN_FILE).PutFlag(cell.can_see_outside);
    record.Put(Count(cell.render_group_list.size())).Put(POINTER_IN_FILE).WriteTo(file);
    for (const auto* list :
         {&cell.objects, &cell.entities, &cell.portals, &cell.portalside, &cell.occluders, &cell.render_group_list})
        WriteIndices(*list);
}

void CompiledWorldWriter::WriteOccluder(const OCCLUDER& occluder) {
    RecordWriter()
        .Put(occluder.bounds)
        .Put(occluder.plane.normal)
        .Put(occluder.plane.D)
        .Put(occluder.owner)
        .WriteTo(file);
}

void CompiledWorldWriter::WriteOctalTree() {
    file.WriteValue(static_cast<int32_t>(ws.tree.GetLeafCount()));
    for (const OCTAL_LEAF& leaf : ws.tree.octal_tree) {
        RecordWriter record;
        record.Put(leaf.type)
            .Put(leaf.min)
            .Put(leaf.max)
            .Put(leaf.half)
            .Put(leaf.size)
            .Put(leaf.parent)
            .Put(leaf.child);
        record.Put(Count(leaf.brush_list.size())).Put(POINTER_IN_FILE).WriteTo(file);
        if (!leaf.brush_list.empty())
            WriteIndices(leaf.brush_list);
    }
    ws.tree.octal_tree.clear();
}

void CompiledWorldWriter::WriteDecals() {
    file.WriteValue(Count(world.decal_template.size()));
    for (const auto& decal : world.decal_template)
        PackDecalTemplate(*decal).WriteTo(file);
}

void CompiledWorldWriter::WriteActorGroups() {
    file.WriteValue(Count(world.actor_groups.size()));
    for (const auto& group : world.actor_groups) {
        file.WriteArray(group->name.data(), group->name.size());
        for (size_t k = 0; k < world.actor_groups.size(); ++k)
            PackRelation(group->GetRelation(static_cast<int>(k))).WriteTo(file);
    }
}

} // namespace

bool KeepsAllSurfaces(const Brush& brush, const World& world) {
    if (brush.IsPortalOrOccluder() || brush.HasProperty(ALWAYS_WHOLE) || brush.FindLinkedEntity("BOX_TRIGGER") ||
        brush.FindLinkedEntity("ENVIRONMENT"))
        return true;
    bool fog = false;
    brush.ForEachSurface(
        [&](const Surface& surface, int, bool) { fog = fog || world.IsMaterialVolumetricFog(surface.texture.index); });
    return fog;
}

SaveResult SaveFinalMap(WorldSubdivide& ws, const std::string& target, CompileProgress& progress, std::string& error) {
    progress.AddText("Saving map " + target + "\r\n\r\n");
    UChunkFile file(target, CFM_Create);
    if (!file.IsValid()) {
        error = file.GetError();
        ShowWriteError(error);
        return SaveResult::Failed;
    }
    StopPoll poll(progress);
    CompiledWorldWriter writer(ws, file, poll);
    const bool complete = writer.WriteAll();
    if (!complete && !writer.WriteFailed()) {
        file.HardCloseFile();
        return SaveResult::Stopped;
    }
    if (complete && file.CloseChunkFile())
        return SaveResult::Written;
    error = file.GetError();
    file.HardCloseFile();
    ShowWriteError(error);
    return SaveResult::Failed;
}
