#include "desktop/ThumbnailPool.h"

#include <algorithm>

#include "foundation/Parallel.h"

static constexpr int MOST_WORKERS = 4;
static constexpr size_t MOST_JOBS = 400; // a few screens full: what was scrolled past is dropped, oldest first

ThumbnailPool::ThumbnailPool(QObject* parent) : QObject(parent) {}

ThumbnailPool::~ThumbnailPool() {
    {
        const std::lock_guard lock(mutex);
        ending = true;
        jobs.clear();
    }
    wake.notify_all();
    for (std::thread& worker : workers)
        worker.join();
}

void ThumbnailPool::Request(const QString& key, Maker make) {
    if (asked.contains(key))
        return;
    asked.insert(key);
    if (workers.empty())
        for (int i = 0; i < std::min(ThreadCount(0), MOST_WORKERS); ++i)
            workers.emplace_back([this] { Work(); });
    QString dropped;
    {
        const std::lock_guard lock(mutex);
        jobs.push_back({key, std::move(make)});
        if (jobs.size() > MOST_JOBS) {
            dropped = jobs.front().key;
            jobs.erase(jobs.begin());
        }
    }
    if (!dropped.isEmpty())
        asked.remove(dropped);
    wake.notify_one();
}

void ThumbnailPool::Forget() {
    const std::lock_guard lock(mutex);
    jobs.clear();
    asked.clear();
}

void ThumbnailPool::Work() {
    std::unique_lock lock(mutex);
    while (true) {
        wake.wait(lock, [this] { return ending || !jobs.empty(); });
        if (ending)
            return;
        const Job job = std::move(jobs.back());
        jobs.pop_back();
        lock.unlock();
        Thumbnail thumbnail;
        const bool made = job.make(thumbnail);
        QMetaObject::invokeMethod(
            this, [this, key = job.key, thumbnail, made] { Deliver(key, thumbnail, made); }, Qt::QueuedConnection);
        lock.lock();
    }
}

void ThumbnailPool::Deliver(const QString& key, const Thumbnail& thumbnail, bool made) {
    asked.remove(key);
    emit Ready(key, thumbnail, made);
}
