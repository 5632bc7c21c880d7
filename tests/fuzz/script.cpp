// An editor script. Names that lead out of the folder are not tried.
#include <sstream>

#include "commands/ScriptRunner.h"
#include "fuzz/EditorTarget.h"

FUZZ_TARGET(script, bytes) {
    static auto& editor = *new FuzzEditor; // the renderer outlives every static
    if (bytes.find_first_of("/\\~") != std::string_view::npos || bytes.find("..") != std::string_view::npos)
        return;
    editor.Start();
    ScriptRunner runner(*editor.frame, editor.desktop, editor.data.folder.Path());
    std::istringstream script{std::string(bytes)};
    std::string error;
    Require(runner.Run(script, error) || !error.empty(), "a refusal has a reason");
}
