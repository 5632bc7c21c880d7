// An editor script. Names that lead out of the folder are not tried.
#include <sstream>

#include "commands/ScriptApplication.h"
#include "commands/ScriptRunner.h"
#include "fuzz/FuzzTarget.h"
#include "persistence/ProjectData.h"
#include "render/Frame.h"

namespace {

struct Editor {
    Editor() {
        setenv("MARROWSTEAD_CONFIG", (data.folder / "config").c_str(), 1);
        std::filesystem::create_directories("Maps");
        SetDesktop(&desktop);
        OpenRenderer(128, 128);
        interface = std::make_unique<CInterface>();
        interface->Init();
        interface->store_settings = false;
        pages = std::make_unique<LibraryPages>(*interface);
        frame = std::make_unique<CMainFrame>(*interface, *pages);
    }
    ProjectData data;
    ScriptDesktop desktop;
    std::unique_ptr<CInterface> interface;
    std::unique_ptr<LibraryPages> pages;
    std::unique_ptr<CMainFrame> frame;
};

} // namespace

FUZZ_TARGET(script, bytes) {
    static auto& editor = *new Editor; // the renderer outlives every static
    if (bytes.find_first_of("/\\~") != std::string_view::npos || bytes.find("..") != std::string_view::npos)
        return;
    SetDesktop(&editor.desktop);
    editor.desktop.messages.clear();
    editor.interface->InitEditor();
    ScriptRunner runner(*editor.frame, editor.desktop, editor.data.folder.Path());
    std::istringstream script{std::string(bytes)};
    std::string error;
    Require(runner.Run(script, error) || !error.empty(), "a refusal has a reason");
}
