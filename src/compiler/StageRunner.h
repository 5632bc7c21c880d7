// How the stages of a compile run: on all threads, with progress and a stop that takes effect within a fraction of a
// second.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

#include "compiler/CompileOptions.h"

// What the bodies of a stage share with the thread that shows its progress.
struct StageState {
    std::atomic<bool> stopped{false}; // bodies look at it between pieces of work and return early
    std::atomic<int> steps{0};        // of the progress bar, not yet shown

    bool Stopped() const { return stopped.load(std::memory_order_relaxed); }
    void Step(int n = 1) { steps.fetch_add(n, std::memory_order_relaxed); }
};

// body(index, worker, state) for every index, as ParallelFor. The calling thread only moves the bar and asks for a
// stop, so progress is called from no other thread. False after a stop.
bool RunStage(CompileProgress& progress, int count, int threads,
              const std::function<void(int index, int worker, StageState& state)>& body);

// Stop and progress of a loop on the calling thread: asks at most every few milliseconds.
class StopPoll {
public:
    explicit StopPoll(CompileProgress& compile_progress) : progress(compile_progress) {}
    bool Stopped();

private:
    CompileProgress& progress;
    uint32_t last_tick = 0;
    bool asked = false, stopped = false;
};

// "[%02dh %02dm %02ds]" of the time since a tick.
std::string TimeSince(uint32_t start_tick);
