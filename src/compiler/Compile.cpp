#include "compiler/Compile.h"

#include "compiler/CompiledWorld.h"
#include "compiler/Lighting.h"
#include "compiler/LightingStage.h"
#include "compiler/StageRunner.h"
#include "compiler/WorldSubdivide.h"
#include "foundation/Desktop.h"
#include "foundation/Strings.h"

namespace {

class CompileRun {
public:
    CompileRun(World& compiled_world, const CompileOptions& compile_options, CompileProgress& compile_progress,
               std::string& run_message)
        : world(compiled_world), options(compile_options), progress(compile_progress), message(run_message),
          ws(compiled_world, options) {}

    CompileResult Run(const std::string& target);

private:
    CompileResult RunStages(const std::string& target);
    void StartCompilation();
    CompileResult BuildTree();
    CompileResult SubdivideWorld();
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

CompileResult CompileRun::BuildTree() {
    progress.AddText("Building Octal Tree...\r\n");
    StopPoll poll(progress);
    switch (ws.tree.BuildOctalTree(world, [&] { return poll.Stopped(); })) {
    case OctalTree::BuildResult::Stopped:
        return CompileResult::Stopped;
    case OctalTree::BuildResult::LimitReached:
        GetDesktop().MessageBox("Octall tree size has exceeded!!!!", "Catastrophic failure");
        return Limit(Format("The octal tree needs more than %d leaves: make the level smaller, or less dense.",
                            MAX_OCTAL_TREE_SIZE));
    case OctalTree::BuildResult::NotFinite:
        return Limit("A brush or an entity lies too far out: the extent of the level is no number.");
    case OctalTree::BuildResult::Built:
        break;
    }
    progress.AddText(Format("%d Nodes\r\n%d Empty\r\n%d Terminal\r\n\r\n", ws.tree.GetLeafCount(),
                            ws.tree.CountType(OCTAL_EMPTY), ws.tree.CountType(OCTAL_TERMINAL)));
    return CompileResult::Written;
}

CompileResult CompileRun::SubdivideWorld() {
    ws.PrepareBrushes();
    progress.AddText("Creating Cells...");
    const uint32_t start = GetDesktop().GetTickCount();
    ws.CreateWorldCell();
    progress.AddText("\t\t-> " + TimeSince(start) + "\r\n\r\n");
    progress.AddText("1 Cell(s) created\r\n\r\n");
    progress.AddText("Creating Render Groups...\r\n");
    if (!ws.GroupBrushes())
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
    if (const CompileResult result = BuildTree(); result != CompileResult::Written)
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
    if (options.subdivide_world)
        return Limit("World Subdivision is not available yet: switch it off and compile again.");
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
                           CompileProgress& progress, std::string& message) {
    message.clear();
    return CompileRun(world, options, progress, message).Run(target);
}
