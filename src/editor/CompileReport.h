// What a compile did, for people and build servers: its stages with their times, and what the written world holds.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "compiler/CompileOptions.h"
#include "persistence/WorldFile.h"

struct StageTime {
    std::string name;
    uint32_t milliseconds = 0;
};

// The stage that a text of the compile announces by three dots; empty if none.
std::string AnnouncedStage(const std::string& text);

// Passes all on to another progress and takes the time of each stage.
class StageTimer : public CompileProgress {
public:
    explicit StageTimer(CompileProgress& shown) : progress(shown) {}

    void AddText(const std::string& text) override;
    void InitProgress(int n) override { progress.InitProgress(n); }
    void IncrementProgress(int n) override { progress.IncrementProgress(n); }
    bool CompilationCancelled() override { return progress.CompilationCancelled(); }
    // Ends the last stage.
    const std::vector<StageTime>& Finish();

private:
    void EndStage();

    CompileProgress& progress;
    std::vector<StageTime> stages;
    uint32_t stage_start = 0;
    bool stage_open = false;
};

// The report as JSON. world may be null, when nothing was written. outcome is a word such as "written".
std::string ReportJson(const std::string& outcome, const std::vector<StageTime>& stages, const WorldFile* world);
