// The one seam around every parallel loop: it hands out indices, counts what is done and stops when asked.
#pragma once

#include <atomic>
#include <functional>

// The number of threads to use for a wish: 0 means all cores of the machine.
int ThreadCount(int wanted);

// Calls body(index, worker) once for each index from 0 to count - 1, on `threads` threads (0: all cores), worker being
// 0 to threads - 1. Indices are handed out in order. Results of index i belong into slot i, so that the number of
// threads never shows in them. on_done(n) runs on the calling thread now and then, and at the end, with the number n of
// indices finished since the last call; returning false stops the loop early. The result is false when it was stopped.
bool ParallelFor(int count, int threads, const std::function<void(int index, int worker)>& body,
                 const std::function<bool(int n)>& on_done = {});
