// The editor over a small data root, driven by script lines, with four views of 512 by 512 pixels.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdlib.h>

#include "commands/ScriptApplication.h"
#include "commands/ScriptRunner.h"
#include "persistence/ProjectData.h"
#include "render/Frame.h"

inline const char* const TEST_COMMANDS = R"(#OpenDoor
{
!desc = "Opens a door"
Door = Object, "none", "the door"
Speed = Float, "1.0", "units a second"
}
#PlaySound
{
File = String, "none", "the file"
}
)";

inline constexpr int VIEW_SIDE = 512;

class ScriptData : public testing::Test {
protected:
    ScriptData() {
        setenv("MARROWSTEAD_CONFIG", (data.folder / "config").c_str(), 1);
        WriteBytes("Scripts/ScriptSyntax/commands.def", TEST_COMMANDS);
        WriteBytes("Scripts/ScriptSyntax/conditions.def", "");
        std::filesystem::create_directories("Maps");
        SetDesktop(&desktop);
        EXPECT_TRUE(OpenRenderer(2 * VIEW_SIDE, 2 * VIEW_SIDE));
        interface = std::make_unique<CInterface>();
        interface->Init();
        interface->InitEditor();
        const std::pair<int, int> places[VIEW_COUNT] = {{VIEW_SIDE, 0}, {VIEW_SIDE, VIEW_SIDE}, {0, VIEW_SIDE}, {0, 0}};
        for (int view = 0; view < VIEW_COUNT; ++view)
            interface->SetViewRect(view, {places[view].first, places[view].second, places[view].first + VIEW_SIDE,
                                          places[view].second + VIEW_SIDE});
        interface->CenterWorld(true);
        pages = std::make_unique<LibraryPages>(*interface);
        frame = std::make_unique<CMainFrame>(*interface, *pages);
        runner = std::make_unique<ScriptRunner>(*frame, desktop, data.folder.Path());
    }
    ~ScriptData() override {
        runner.reset();
        frame.reset();
        pages.reset();
        interface.reset();
        crRelease();
        SetDesktop(nullptr);
    }

    // Runs the lines; the sentence of the failure, empty if there was none.
    std::string Run(const std::string& lines) {
        std::istringstream script(lines);
        std::string error;
        return runner->Run(script, error) ? std::string() : error;
    }
    nlohmann::json Dump() {
        EXPECT_EQ(Run("dump state.json"), "");
        std::ifstream file("state.json");
        return nlohmann::json::parse(file);
    }
    World& Level() { return *interface->world; }
    Brush& LevelBrush(size_t i) { return *interface->world->brush.at(i); }

    ProjectData data;
    ScriptDesktop desktop;
    std::unique_ptr<CInterface> interface;
    std::unique_ptr<LibraryPages> pages;
    std::unique_ptr<CMainFrame> frame;
    std::unique_ptr<ScriptRunner> runner;
};
