// Follows news: calls a function soon, in the window's thread, once for any number of requests from any thread. While a
// compile works on the level all of them wait for its end.
#pragma once

#include <atomic>
#include <functional>

#include <QObject>

class LazyRefresh : public QObject {
public:
    explicit LazyRefresh(std::function<void()> action) : refresh(std::move(action)) {}
    void Request();

    // As long as one lives, nothing is refreshed.
    class Pause {
    public:
        Pause() { ++paused; }
        ~Pause() { --paused; }
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;
    };

private:
    void Run();

    static std::atomic<int> paused;
    std::function<void()> refresh;
    std::atomic<bool> requested = false;
};
