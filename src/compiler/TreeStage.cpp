#include "compiler/TreeStage.h"

#include "compiler/StageRunner.h"
#include "foundation/Desktop.h"
#include "foundation/Strings.h"

OctalTree::BuildResult BuildTreeStage(OctalTree& tree, const World& world, CompileProgress& progress,
                                      std::string& message) {
    progress.AddText("Building Octal Tree...\r\n");
    StopPoll poll(progress);
    const OctalTree::BuildResult result = tree.BuildOctalTree(world, [&] { return poll.Stopped(); });
    switch (result) {
    case OctalTree::BuildResult::Stopped:
        break;
    case OctalTree::BuildResult::LimitReached:
        GetDesktop().MessageBox("Octall tree size has exceeded!!!!", "Catastrophic failure");
        message = Format("The octal tree needs more than %d leaves: make the level smaller, or less dense.",
                         MAX_OCTAL_TREE_SIZE);
        break;
    case OctalTree::BuildResult::NotFinite:
        message = "A brush or an entity lies too far out: the extent of the level is no number.";
        break;
    case OctalTree::BuildResult::Built:
        progress.AddText(Format("%d Nodes\r\n%d Empty\r\n%d Terminal\r\n\r\n", tree.GetLeafCount(),
                                tree.CountType(OCTAL_EMPTY), tree.CountType(OCTAL_TERMINAL)));
        break;
    }
    return result;
}
