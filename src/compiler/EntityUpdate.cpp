#include "compiler/EntityUpdate.h"

#include <cstring>
#include <filesystem>

#include "compiler/TreeStage.h"
#include "compiler/WorldRecords.h"
#include "compiler/WorldSubdivide.h"
#include "foundation/Desktop.h"
#include "foundation/Paths.h"
#include "foundation/WholeFile.h"
#include "persistence/WriteError.h"

namespace {

// Arrays and offsets of the records that are changed in place.
constexpr uint32_t CELL_ENTITIES = 2, CELL_OCCLUDERS = 5;
constexpr size_t CELL_RECORD_SIZE = 45, CELL_ENTITY_COUNT = 8, CELL_OCCLUDER_COUNT = 28;
constexpr size_t BRUSH_HEADER_SIZE = 73, SURFACE_COUNT_AT = 28, LINK_COUNT_AT = 32, NAME_LENGTH_AT = 64,
                 PARTICLE_LENGTH_AT = 68;
constexpr size_t PHYSICS_RECORD_SIZE = 108, FRICTION_AT = 16;
constexpr size_t PORTAL_RECORD_SIZE = 136, PORTAL_OWNER_AT = 124, OCCLUDER_RECORD_SIZE = 68, OCCLUDER_OWNER_AT = 64;
constexpr uint32_t PHYSICS_ARRAYS = 4; // the last ones of a brush's data, the record first

template <class T>
T ValueAt(const std::vector<uint8_t>& record, size_t offset) {
    T value;
    std::memcpy(&value, record.data() + offset, sizeof(T));
    return value;
}
template <class T>
void PutAt(std::vector<uint8_t>& record, size_t offset, const T& value) {
    std::memcpy(record.data() + offset, &value, sizeof(T));
}

// Whether the cells of a compiled world are those of the level as it is now: a cell is known by its place alone, and
// names portals and occluders by theirs.
class CellComparison {
public:
    CellComparison(const WorldSubdivide& subdivision, UChunkFile& old_file) : ws(subdivision), source(old_file) {}

    // With the cells that are about to be written.
    bool CellsFit() {
        const size_t added = ws.options.clip_box_compilation ? CLIP_BOX_CELLS : 0;
        size_t cells = 0;
        for (bool more = Open("CellData"); more; more = source.OpenNextChunk())
            ++cells;
        return cells == ws.cell.size() + added &&
               Owners("PortalData", PORTAL_RECORD_SIZE, PORTAL_OWNER_AT) == OwnersOf(ws.portal) &&
               Owners("OccluderData", OCCLUDER_RECORD_SIZE, OCCLUDER_OWNER_AT) == OwnersOf(ws.occluder);
    }
    // With cells that stay as they are.
    bool EntitiesFit() {
        for (bool more = Open("CellData"); more; more = source.OpenNextChunk()) {
            const std::vector<uint8_t> entities = source.GetArrayAlloc(CELL_ENTITIES);
            for (size_t at = 0; at + sizeof(uint32_t) <= entities.size(); at += sizeof(uint32_t))
                if (ValueAt<uint32_t>(entities, at) >= ws.world.entity.size())
                    return false;
        }
        return true;
    }

private:
    bool Open(const char* name) { return source.OpenChunk(name, ANY_CHUNK_ID, COT_SameName); }
    std::vector<int32_t> Owners(const char* name, size_t record_size, size_t owner_at) {
        std::vector<int32_t> owners;
        for (bool more = Open(name); more; more = source.OpenNextChunk()) {
            const std::vector<uint8_t> record = source.GetArrayAlloc(0);
            owners.push_back(record.size() == record_size ? ValueAt<int32_t>(record, owner_at) : -1);
        }
        return owners;
    }
    static std::vector<int32_t> OwnersOf(const std::vector<PORTAL>& portals) {
        std::vector<int32_t> owners;
        for (const PORTAL& portal : portals)
            owners.push_back(portal.portalowner);
        return owners;
    }
    static std::vector<int32_t> OwnersOf(const std::vector<OCCLUDER>& occluders) {
        std::vector<int32_t> owners;
        for (const OCCLUDER& occluder : occluders)
            owners.push_back(occluder.owner);
        return owners;
    }

    const WorldSubdivide& ws;
    UChunkFile& source;
};

class EntityUpdate {
public:
    EntityUpdate(const WorldSubdivide& subdivision, bool with_cells, UChunkFile& old_file, UChunkFile& new_file,
                 CompileProgress& compile_progress)
        : ws(subdivision), world(subdivision.world), update_cells(with_cells), source(old_file), file(new_file),
          progress(compile_progress) {}

    EntityUpdateResult Run() {
        for (bool more = source.OpenChunk(nullptr, ANY_CHUNK_ID, COT_Any); more; more = source.OpenNextChunk()) {
            if (progress.CompilationCancelled())
                return EntityUpdateResult::Stopped;
            const std::string name = source.GetChunkName();
            if (name == "EntityData" || name == "MPGames")
                continue;
            file.CreateChunk(name, source.GetChunkID());
            if (name == "BrushInfo") {
                if (source.GetChunkID() >= world.brush.size())
                    return EntityUpdateResult::BrushesDeleted;
                CopyBrushInfo(*world.brush[source.GetChunkID()]);
            } else if (name == "BrushData" && source.GetChunkID() < world.brush.size()) {
                CopyBrushData(*world.brush[source.GetChunkID()]);
            } else if (name == "CellData" && update_cells && source.GetChunkID() < ws.cell.size()) {
                CopyCell(ws.cell[source.GetChunkID()]);
            } else {
                CopyArrays(0, source.GetArraysCountInChunk());
            }
            file.CloseChunk();
        }
        for (size_t e = 0; e < world.entity.size(); ++e) {
            file.CreateChunk("EntityData", static_cast<uint32_t>(e));
            WriteWorldEntity(file, *world.entity[e]);
            file.CloseChunk();
        }
        file.CreateChunk("MPGames", ANY_CHUNK_ID);
        WriteWorldGames(file, world);
        file.CloseChunk();
        return file.CloseChunkFile() ? EntityUpdateResult::Written : EntityUpdateResult::WriteFailed;
    }

private:
    void CopyArrays(uint32_t first, uint32_t end) {
        for (uint32_t k = first; k < end; ++k)
            file.WriteValues(source.GetArrayAlloc(k));
    }

    // A new header; the surfaces stay as they were compiled.
    void CopyBrushInfo(const Brush& brush) {
        const std::vector<uint8_t> old = source.GetArrayAlloc(0);
        if (old.size() != BRUSH_HEADER_SIZE) {
            CopyArrays(0, source.GetArraysCountInChunk());
            return;
        }
        WriteBrushHeader(file, brush, ValueAt<int32_t>(old, SURFACE_COUNT_AT));
        uint32_t first = 1;
        for (const size_t length_at : {LINK_COUNT_AT, NAME_LENGTH_AT, PARTICLE_LENGTH_AT})
            first += ValueAt<int32_t>(old, length_at) > 0 ? 1 : 0;
        CopyArrays(first, source.GetArraysCountInChunk());
    }

    // The mesh stays; the constants of the material are the brush's of now.
    void CopyBrushData(const Brush& brush) {
        const uint32_t count = source.GetArraysCountInChunk();
        const uint32_t at = count >= PHYSICS_ARRAYS ? count - PHYSICS_ARRAYS : count;
        std::vector<uint8_t> physics = source.GetArrayAlloc(at);
        if (physics.size() != PHYSICS_RECORD_SIZE) {
            CopyArrays(0, count);
            return;
        }
        CopyArrays(0, at);
        const float constants[4] = {brush.static_friction, brush.dynamic_friction, brush.elasticity, brush.time_scale};
        PutAt(physics, FRICTION_AT, constants);
        file.WriteValues(physics);
        CopyArrays(at + 1, count);
    }

    void CopyCell(const CELL& cell) {
        std::vector<uint8_t> record = source.GetArrayAlloc(0);
        const uint32_t count = source.GetArraysCountInChunk();
        if (record.size() != CELL_RECORD_SIZE || count <= CELL_OCCLUDERS) {
            CopyArrays(0, count);
            return;
        }
        PutAt(record, CELL_ENTITY_COUNT, static_cast<int32_t>(cell.entities.size()));
        PutAt(record, CELL_OCCLUDER_COUNT, static_cast<int32_t>(cell.occluders.size()));
        file.WriteValues(record);
        CopyArrays(1, CELL_ENTITIES);
        file.WriteValues(cell.entities);
        CopyArrays(CELL_ENTITIES + 1, CELL_OCCLUDERS);
        file.WriteValues(cell.occluders);
        CopyArrays(CELL_OCCLUDERS + 1, count);
    }

    const WorldSubdivide& ws;
    const World& world;
    bool update_cells;
    UChunkFile &source, &file;
    CompileProgress& progress;
};

void Tell(CompileProgress& progress, const std::string& text, const std::string& title) {
    GetDesktop().MessageBox(text, title);
    progress.AddText(text + "\r\n");
}

EntityUpdateResult SaveFinalMapEntitiesUpdate(const WorldSubdivide& ws, const std::string& target,
                                              bool update_ent_visibility, CompileProgress& progress) {
    static const std::string title = "Compile entity error";
    const std::string copy = target.substr(0, target.size() - std::strlen(".few")) + ".bkp";
    std::string failure;
    if (FileExistsOnDisk(target) && !CopyWholeFile(RealPath(target), RealPath(copy), failure)) {
        progress.AddText(failure + "\r\n");
        ShowWriteError(failure);
        return EntityUpdateResult::WriteFailed;
    }
    UChunkFile old_file(copy, CFM_Open);
    if (!FileExistsOnDisk(target) || !old_file.IsValid()) {
        const std::string text = "!!!! Error !!!! Older map wasn't found so data cannot be copied from it.";
        Tell(progress, text, title);
        return EntityUpdateResult::NoOldWorld;
    }
    CellComparison comparison(ws, old_file);
    if (update_ent_visibility ? !comparison.CellsFit() : !comparison.EntitiesFit()) {
        Tell(progress,
             update_ent_visibility ? "The cells of the saved map are not those of this level.\nPlease, recompile whole "
                                     "project."
                                   : "The cells of the saved map list entities which were deleted.\nPlease, recompile "
                                     "whole project.",
             title);
        return EntityUpdateResult::CellsDiffer;
    }
    UChunkFile new_file(target, CFM_Create);
    if (!new_file.IsValid()) {
        GetDesktop().Notice(new_file.GetError());
        GetDesktop().MessageBox("Error ! Cannot open a target file name.", title);
        progress.AddText("!!!! Error !!!! Cannot open a target file name.\r\n");
        return EntityUpdateResult::WriteFailed;
    }
    const EntityUpdateResult result = EntityUpdate(ws, update_ent_visibility, old_file, new_file, progress).Run();
    if (result != EntityUpdateResult::Written)
        new_file.HardCloseFile();
    if (result == EntityUpdateResult::BrushesDeleted)
        GetDesktop().MessageBox(
            "Critical error! Some brushes which are in saved map were deleted.\nPlease, recompile whole project.",
            "Error");
    if (result == EntityUpdateResult::WriteFailed)
        ShowWriteError(new_file.GetError());
    return result;
}

// Cells of the entities of now. Problems and limits are told here.
EntityUpdateResult Subdivide(WorldSubdivide& ws, CompileProgress& progress) {
    std::string message;
    switch (ws.SubdivideEntities(progress, message)) {
    case SubdivideResult::Stopped:
        return EntityUpdateResult::Stopped;
    case SubdivideResult::LimitReached:
        GetDesktop().MessageBox(message, "Error");
        return EntityUpdateResult::LimitExceeded;
    case SubdivideResult::Done:
        break;
    }
    ws.FindWrongEntities();
    if (!ws.problem_solver.ShowProblems(ws.world))
        return EntityUpdateResult::Written;
    progress.AddText("\r\n!!!! Compilation problems found !!!!\r\n\r\n");
    return EntityUpdateResult::Problems;
}

} // namespace

EntityUpdateResult CompileEntities(World& world, const CompileOptions& options, const std::string& target,
                                   bool update_ent_visibility, CompileProgress& progress, ProblemSolver& problems) {
    problems.Reset();
    WorldSubdivide ws(world, options);
    ws.PrepareBrushes();
    std::string message;
    switch (BuildTreeStage(ws.tree, world, progress, message)) {
    case OctalTree::BuildResult::Stopped:
        return EntityUpdateResult::Stopped;
    case OctalTree::BuildResult::NotFinite:
        GetDesktop().MessageBox(message, "Error");
        return EntityUpdateResult::LimitExceeded;
    case OctalTree::BuildResult::LimitReached:
        return EntityUpdateResult::LimitExceeded;
    case OctalTree::BuildResult::Built:
        break;
    }
    progress.AddText("Copying old data and updateing entity data...\r\n");
    if (update_ent_visibility) {
        const EntityUpdateResult subdivided = Subdivide(ws, progress);
        problems = ws.problem_solver;
        if (subdivided != EntityUpdateResult::Written)
            return subdivided;
    }
    return SaveFinalMapEntitiesUpdate(ws, target, update_ent_visibility, progress);
}
