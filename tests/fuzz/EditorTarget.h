// The editor over a small data root, for targets that drive it.
#pragma once

#include "commands/MainFrame.h"
#include "commands/ScriptApplication.h"
#include "commands/ScriptDesktop.h"
#include "fuzz/FuzzTarget.h"
#include "persistence/ProjectData.h"
#include "render/Frame.h"

struct FuzzEditor {
    FuzzEditor() {
        setenv("MARROWSTEAD_CONFIG", (data.folder / "config").c_str(), 1);
        std::filesystem::create_directories("Maps");
        SetDesktop(&desktop);
        OpenRenderer(128, 128);
        interface = std::make_unique<CInterface>();
        interface->Init();
        interface->store_settings = false;
        interface->InitEditor();
        pages = std::make_unique<LibraryPages>(*interface);
        frame = std::make_unique<CMainFrame>(*interface, *pages);
    }
    // A new level, and nothing told of the last input.
    void Start() {
        SetDesktop(&desktop);
        ForgetNotices();
        desktop.messages.clear();
        interface->InitEditor();
    }
    ProjectData data;
    ScriptDesktop desktop;
    std::unique_ptr<CInterface> interface;
    std::unique_ptr<LibraryPages> pages;
    std::unique_ptr<CMainFrame> frame;
};
