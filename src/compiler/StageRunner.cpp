#include "compiler/StageRunner.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

#include "compiler/Compile.h"
#include "foundation/Desktop.h"
#include "foundation/Parallel.h"
#include "foundation/Strings.h"

namespace {

constexpr auto POLL_INTERVAL = std::chrono::milliseconds(50);
constexpr uint32_t POLL_MILLISECONDS = 20;

void ShowSteps(CompileProgress& progress, StageState& state) {
    const int steps = state.steps.exchange(0);
    if (steps > 0)
        progress.IncrementProgress(steps);
}

} // namespace

bool RunStage(CompileProgress& progress, int count, int threads,
              const std::function<void(int, int, StageState&)>& body) {
    StageState state;
    if (progress.CompilationCancelled())
        return false;
    const auto guarded = [&](int index, int worker) {
        if (!state.Stopped())
            body(index, worker, state);
    };
    std::mutex mutex;
    std::condition_variable ended;
    bool is_over = false; // guarded by mutex
    std::jthread runner;
    try {
        runner = std::jthread([&] {
            ParallelFor(count, threads, guarded);
            const std::lock_guard lock(mutex);
            is_over = true;
            ended.notify_one();
        });
    } catch (const std::system_error&) { // no thread to be had: the work runs here, index by index
        for (int index = 0; index < count && !state.Stopped(); ++index) {
            guarded(index, 0);
            ShowSteps(progress, state);
            state.stopped = progress.CompilationCancelled();
        }
        return !state.Stopped();
    }
    std::unique_lock lock(mutex);
    while (!ended.wait_for(lock, POLL_INTERVAL, [&] { return is_over; })) {
        lock.unlock();
        ShowSteps(progress, state);
        if (!state.Stopped() && progress.CompilationCancelled())
            state.stopped = true;
        lock.lock();
    }
    lock.unlock();
    runner.join();
    ShowSteps(progress, state);
    return !state.Stopped() && !progress.CompilationCancelled();
}

bool StopPoll::Stopped() {
    if (stopped)
        return true;
    const uint32_t now = GetDesktop().GetTickCount();
    if (!asked || now - last_tick >= POLL_MILLISECONDS) {
        asked = true;
        last_tick = now;
        stopped = progress.CompilationCancelled();
    }
    return stopped;
}

void ConvertTime(uint32_t tickcount, int& hours, int& minutes, int& seconds) {
    const uint32_t whole = tickcount / 1000;
    hours = static_cast<int>(whole / 3600);
    minutes = static_cast<int>(whole % 3600 / 60);
    seconds = static_cast<int>(whole % 60);
}

std::string TimeSince(uint32_t start_tick) {
    int hours, minutes, seconds;
    ConvertTime(GetDesktop().GetTickCount() - start_tick, hours, minutes, seconds);
    return Format("[%02dh %02dm %02ds]", hours, minutes, seconds);
}
