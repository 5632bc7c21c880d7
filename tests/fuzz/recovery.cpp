// The note that a run left beside its copy of the level: found, and the copy opened with what the note says.
#include "commands/Recovery.h"
#include "fuzz/EditorTarget.h"

FUZZ_TARGET(recovery, bytes) {
    static auto& editor = *new FuzzEditor; // the renderer outlives every static
    static const std::string level = [] {
        std::string error;
        Require(SaveProject("level.msp", *editor.interface->world, editor.interface->views, false, error),
                "a level can be saved");
        return ReadBytes("level.msp");
    }();
    editor.Start();
    const std::filesystem::path left = std::filesystem::path(editor.data.folder / "config") / "recovery";
    WriteBytes(left / "level-0.msp", level);
    WriteBytes(left / "level-0.json", bytes);
    const std::vector<RecoveredLevel> found = RecoveryFile::FindLeftOver();
    Require(found.size() == 1, "a copy is offered whatever its note says");
    {
        RecoveryFile own(*editor.interface);
        editor.desktop.answers = {"yes"};
        own.Offer(editor.frame->document);
        Require(editor.interface->project_file_has_name == found[0].has_name, "the level has the name of its note");
        Require(RecoveryFile::FindLeftOver().empty(), "the copy is this run's own");
    }
    editor.desktop.answers.clear();
}
