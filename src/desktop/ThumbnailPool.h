// Makes small pictures in the background: those of files on the disk by worker threads, those of packed libraries one
// at a time on the window's thread when it has nothing else to do. What was asked for last comes first.
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

    // Ready tells of it later. Asked for again before that, it is made once. path: of the image, which tells where
    // it stands; empty: the window's thread makes it.
    void Request(const QString& key, const std::string& path, Maker make);
    void Forget(); // what is still to be made

signals:
    void Ready(const QString& key, const Thumbnail& thumbnail, bool made);

private:
    struct Job {
        QString key;
        Maker make;
    };
    void Work();
    void MakeNextOfLibrary();
    void Deliver(const QString& key, const Thumbnail& thumbnail, bool made);

    std::vector<std::thread> workers; // started by the first request
    std::mutex mutex;
    std::condition_variable wake;
    bool ending = false;
    std::vector<Job> jobs;         // under the mutex; the last is next
    std::vector<Job> library_jobs; // of the window's thread
    QSet<QString> asked;           // likewise
};
