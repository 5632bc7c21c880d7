// Makes small pictures by worker threads. What was asked for last comes first.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include <QHash>
#include <QImage>
#include <QObject>
#include <QSet>
#include <QString>

#include "pages/Thumbnails.h"

class ThumbnailPool : public QObject {
    Q_OBJECT
public:
    using Maker = std::function<bool(Thumbnail&)>;

    explicit ThumbnailPool(QObject* parent = nullptr);
    ~ThumbnailPool() override;

    // Ready tells of it later. Asked for again before that, it is made once. make runs in a thread of its own.
    void Request(const QString& key, Maker make);
    void Forget(); // what is still to be made

signals:
    void Ready(const QString& key, const Thumbnail& thumbnail, bool made);

private:
    struct Job {
        QString key;
        Maker make;
    };
    void Work();
    void Deliver(const QString& key, const Thumbnail& thumbnail, bool made);

    std::vector<std::thread> workers; // started by the first request
    std::mutex mutex;
    std::condition_variable wake;
    bool ending = false;
    std::vector<Job> jobs; // under the mutex; the last is next
    QSet<QString> asked;   // of the window's thread
};
