#include "compiler/Compile.h"

#include <cmath>

#include "compiler/CompiledWorld.h"
#include "compiler/Lighting.h"
#include "compiler/LightingStage.h"
#include "compiler/SoundTrace.h"
#include "compiler/StageRunner.h"
#include "compiler/TreeStage.h"
#include "compiler/WorldSubdivide.h"
#include "foundation/Desktop.h"
#include "foundation/Strings.h"
#include "persistence/BrushReader.h"

namespace {

constexpr const char* NO_EYE = "No visibility eye: put an entity VISIBILITY_EYE into each room, or switch World "
                               "Subdivision off.";

class CompileRun {
public:
    CompileRun(World& compiled_world, const CompileOptions& compile_options, CompileProgress& compile_progress,
               std::string& run_message)
        : world(compiled_world), options(compile_options), progress(compile_progress), message(run_message),
          ws(compiled_world, options) {}

    CompileResult Run(const std::string& target);
    ProblemSolver TakeProblems() { return std::move(ws.problem_solver); }

private:
    CompileResult RunStages(const std::string& target);
    void StartCompilation();
    CompileResult CheckMappings();
    CompileResult BuildTree();
    CompileResult SubdivideWorld();
    CompileResult DivideIntoCells();
    CompileResult FindPortalVisibility();
    CompileResult FindProblems();
    CompileResult TraceSound();
    CompileResult GroupBrushes();
    CompileResult SaveMap(const std::string& target);
    CompileResult Limit(std::string sentence) {
        message = std::move(sentence);
        return CompileResult::LimitExceeded;
    }

    World& world;
    const CompileOptions& options;
    CompileProgress& progress;
    std::string& message;
    WorldSubdivide ws;
};

void CompileRun::StartCompilation() {
    int brushes = 0, surfaces = 0, curved_surfaces = 0, portals = 0, occluders = 0;
    for (const auto& brush : world.brush) {
        portals += brush->type == BT_PORTAL;
        occluders += brush->type == BT_OCCLUDER;
        if (brush->IsPortalOrOccluder())
            continue;
        ++brushes;
        surfaces += static_cast<int>(brush->surfaces.size());
        curved_surfaces += static_cast<int>(brush->curved_surfaces.size());
    }
    progress.AddText("Map compilation started...\r\n\r\nEntry data:\r\n");
    progress.AddText(Format("%d Brushes\r\n", brushes));
    progress.AddText(Format("%d Surfaces\r\n", surfaces));
    progress.AddText(Format("%d Curved Surfaces\r\n", curved_surfaces));
    progress.AddText(Format("%d Portals\r\n", portals));
    progress.AddText(Format("%d Occluders\r\n", occluders));
    progress.AddText(Format("%d Entities\r\n", world.GetEntityCount()));
    progress.AddText(Format("%d Materials\r\n\r\n", world.GetMaterialCount()));
}

CompileResult CompileRun::CheckMappings() {
    for (const auto& brush : world.brush) {
        bool usable = true;
        std::as_const(*brush).ForEachSurface([&](const Surface& surface, int, bool) {
            for (const UVVector& uv : surface.uv)
                usable = usable && std::fabs(uv.u) <= MAX_COORDINATE && std::fabs(uv.v) <= MAX_COORDINATE;
        });
        if (!usable)
            return Limit(Format("The brush with the id %u has texture coordinates that are no numbers or too large: "
                                "reset the mapping of its surfaces.",
                                brush->GetObjectID()));
    }
    return CompileResult::Written;
}

CompileResult CompileRun::BuildTree() {
    switch (BuildTreeStage(ws.tree, world, progress, message)) {
    case OctalTree::BuildResult::Stopped:
        return CompileResult::Stopped;
    case OctalTree::BuildResult::LimitReached:
    case OctalTree::BuildResult::NotFinite:
        return CompileResult::LimitExceeded;
    case OctalTree::BuildResult::Built:
        break;
    }
    return CompileResult::Written;
}

CompileResult CompileRun::SubdivideWorld() {
    ws.PrepareBrushes();
    progress.AddText("Creating Cells...");
    if (options.subdivide_world)
        return DivideIntoCells();
    const uint32_t start = GetDesktop().GetTickCount();
    ws.CreateWorldCell();
    progress.AddText("\t\t-> " + TimeSince(start) + "\r\n\r\n");
    progress.AddText("1 Cell(s) created\r\n\r\n");
    return GroupBrushes();
}

CompileResult CompileRun::DivideIntoCells() {
    const uint32_t start = GetDesktop().GetTickCount();
    std::string sentence;
    if (ws.CreatePortalsAndEyes(sentence) == SubdivideResult::LimitReached)
        return Limit(std::move(sentence));
    if (ws.cell.empty())
        progress.AddText(std::string("\r\n") + NO_EYE + "\r\n");
    progress.InitProgress(static_cast<int>(ws.cell.size()));
    CellTimes times;
    if (ws.CreateCells(progress, times) == SubdivideResult::Stopped)
        return CompileResult::Stopped;
    progress.AddText("\t\t-> " + TimeSince(start) + "\r\n");
    const auto detection = [this](const char* of_what, uint32_t milliseconds) {
        int hours, minutes, seconds;
        ConvertTime(milliseconds, hours, minutes, seconds);
        progress.AddText(Format("....detection of %s took %02dh %02dm %02ds\r\n", of_what, hours, minutes, seconds));
    };
    detection("brushes", times.brushes);
    detection("entities", times.entities);
    for (const auto stage : {&CompileRun::FindPortalVisibility, &CompileRun::FindProblems, &CompileRun::TraceSound})
        if (const CompileResult result = (this->*stage)(); result != CompileResult::Written)
            return result;
    ws.MarkMultiCellBrushes();
    return GroupBrushes();
}

CompileResult CompileRun::FindPortalVisibility() {
    const int portals = static_cast<int>(ws.portal.size());
    progress.AddText("Portal Visibility...");
    progress.InitProgress(2 * portals);
    const uint32_t start = GetDesktop().GetTickCount();
    StopPoll poll(progress);
    for (int index = 0; index < portals; ++index)
        for (int side = 0; side < 2; ++side) {
            if (poll.Stopped())
                return CompileResult::Stopped;
            progress.IncrementProgress(1);
            ws.PortalVisibility(index, side);
        }
    progress.AddText("\t\t-> " + TimeSince(start) + "\r\n\r\n");
    progress.AddText(Format("%d Cell(s) created\r\n", static_cast<int>(ws.cell.size())));
    return CompileResult::Written;
}

// With a clip box there are no problems: what is missing is outside.
CompileResult CompileRun::FindProblems() {
    ws.FindWrongEntities();
    if (options.clip_box_compilation) {
        const auto empty_cell = static_cast<int32_t>(ws.cell.size()) + 1; // the last of those that AddRemovedCells adds
        for (PORTAL& portal : ws.portal)
            for (int32_t& cell : portal.cell)
                if (cell == -1)
                    cell = empty_cell;
        ws.problem_solver.Reset();
        return CompileResult::Written;
    }
    if (!ws.problem_solver.ShowProblems(world))
        return ws.cell.empty() ? Limit(NO_EYE) : CompileResult::Written;
    progress.AddText("\r\n!!!! Compilation problems found !!!!\r\n\r\n");
    return CompileResult::Problems;
}

CompileResult CompileRun::TraceSound() {
    if (options.clip_box_compilation)
        return CompileResult::Written;
    const int portals = static_cast<int>(ws.portal.size());
    if (portals > MAX_SOUND_PORTALS)
        GetDesktop().MessageBox("There are more portals than 255. Please, reduce them to have proper sound tracing\n",
                                "Error");
    progress.AddText("Sound tracing...");
    progress.InitProgress(SoundTraceCount(portals));
    const uint32_t start = GetDesktop().GetTickCount();
    if (!CountSoundData(ws, ws.snd_trace_data, progress))
        return CompileResult::Stopped;
    progress.AddText("\t\t-> " + TimeSince(start) + "\r\n");
    return CompileResult::Written;
}

CompileResult CompileRun::GroupBrushes() {
    progress.AddText("Creating Render Groups...\r\n");
    if (options.subdivide_world)
        progress.InitProgress(static_cast<int>(ws.cell.size()));
    if (!ws.GroupBrushes(options.subdivide_world ? &progress : nullptr))
        return Limit(Format("The level needs more than %d render groups: switch Render Groups on, or join brushes.",
                            MAX_RENDER_GROUPS));
    return progress.CompilationCancelled() ? CompileResult::Stopped : CompileResult::Written;
}

CompileResult CompileRun::SaveMap(const std::string& target) {
    if (options.clip_box_compilation)
        ws.AddRemovedCells();
    switch (SaveFinalMap(ws, target, progress, message)) {
    case SaveResult::Stopped:
        return CompileResult::Stopped;
    case SaveResult::Failed:
        return CompileResult::WriteFailed;
    case SaveResult::Written:
        break;
    }
    return CompileResult::Written;
}

CompileResult CompileRun::RunStages(const std::string& target) {
    StartCompilation();
    world.FlushUnusedMaterials();
    if (progress.CompilationCancelled())
        return CompileResult::Stopped;
    for (const auto stage : {&CompileRun::CheckMappings, &CompileRun::BuildTree})
        if (const CompileResult result = (this->*stage)(); result != CompileResult::Written)
            return result;
    if (!world.CalculatePhysicsData(options.save_finalmap, options.threads, progress))
        return CompileResult::Stopped;
    if (const CompileResult result = SubdivideWorld(); result != CompileResult::Written)
        return result;
    progress.AddText("Calculating Light Range...");
    progress.InitProgress(world.GetEntityCount());
    const uint32_t start = GetDesktop().GetTickCount();
    if (!ComputeLightRange(world, progress))
        return CompileResult::Stopped;
    progress.AddText("\t-> " + TimeSince(start) + "\r\n");
    if (const CompileResult result = CalculateLightmaps(ws, progress, message); result != CompileResult::Written)
        return result;
    return SaveMap(target);
}

CompileResult CompileRun::Run(const std::string& target) {
    const CompileResult result = RunStages(target);
    if (result != CompileResult::Written) { // a stage may have ended early: nothing half-made stays
        SetCurveDetail(world, world.curve_detail, options.threads);
        for (const auto& brush : world.brush)
            brush->physics_data.Clear();
    }
    return result;
}

} // namespace

CompileResult CompileWorld(World& world, const CompileOptions& options, const std::string& target,
                           CompileProgress& progress, std::string& message, ProblemSolver* problems) {
    message.clear();
    CompileRun run(world, options, progress, message);
    const CompileResult result = run.Run(target);
    if (problems)
        *problems = run.TakeProblems();
    return result;
}
