#include "foundation/Parallel.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto REPORT_INTERVAL = std::chrono::milliseconds(50);

bool RunHere(int count, const std::function<void(int, int)>& body, const std::function<bool(int)>& on_done) {
    int reported = 0;
    Clock::time_point last_report{}; // long ago: the first index is reported at once
    for (int index = 0; index < count; ++index) {
        body(index, 0);
        if (!on_done)
            continue;
        const Clock::time_point now = Clock::now();
        if (index + 1 < count && now - last_report < REPORT_INTERVAL)
            continue;
        last_report = now;
        if (!on_done(index + 1 - reported))
            return false;
        reported = index + 1;
    }
    return true;
}

} // namespace

int ThreadCount(int wanted) {
    return wanted > 0 ? wanted : static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
}

bool ParallelFor(int count, int threads, const std::function<void(int index, int worker)>& body,
                 const std::function<bool(int n)>& on_done) {
    threads = std::min(ThreadCount(threads), count);
    if (threads <= 1)
        return RunHere(count, body, on_done);

    std::atomic<int> next_index{0}, finished{0};
    std::atomic<bool> stop{false};
    std::mutex mutex;
    std::condition_variable workers_ended;
    int active = 0; // guarded by mutex

    const auto work = [&](int worker) {
        for (;;) {
            const int index = stop ? count : next_index.fetch_add(1);
            if (index >= count)
                break;
            body(index, worker);
            finished.fetch_add(1);
        }
        const std::lock_guard lock(mutex);
        if (--active == 0)
            workers_ended.notify_one();
    };

    std::vector<std::jthread> workers;
    workers.reserve(static_cast<size_t>(threads));
    for (int worker = 0; worker < threads; ++worker) {
        {
            const std::lock_guard lock(mutex);
            ++active;
        }
        try {
            workers.emplace_back(work, worker);
        } catch (const std::system_error&) { // no more threads to be had: those that run do the work
            const std::lock_guard lock(mutex);
            --active;
            break;
        }
    }
    if (workers.empty())
        return RunHere(count, body, on_done);

    int reported = 0;
    bool go_on = true;
    const auto report = [&] {
        const int done = finished;
        if (on_done && go_on && done > reported)
            go_on = on_done(done - reported);
        reported = done;
        if (!go_on)
            stop = true;
    };
    std::unique_lock lock(mutex);
    while (!workers_ended.wait_for(lock, REPORT_INTERVAL, [&] { return active == 0; })) {
        lock.unlock();
        report();
        lock.lock();
    }
    lock.unlock();
    workers.clear();
    report();
    return go_on;
}
