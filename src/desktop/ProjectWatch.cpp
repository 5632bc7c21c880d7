#include "desktop/ProjectWatch.h"

#include <QFileInfo>

static constexpr int SETTLING_TIME = 300; // milliseconds

ProjectWatch::ProjectWatch(QObject* parent) : QObject(parent) {
    settling.setSingleShot(true);
    settling.setInterval(SETTLING_TIME);
    connect(&settling, &QTimer::timeout, this, &ProjectWatch::Look);
    // The folder too: most programs put a new file in the place of the old one.
    connect(&watcher, &QFileSystemWatcher::fileChanged, &settling, qOverload<>(&QTimer::start));
    connect(&watcher, &QFileSystemWatcher::directoryChanged, &settling, qOverload<>(&QTimer::start));
}

ProjectWatch::Stamp ProjectWatch::StampNow() const {
    const QFileInfo info(file);
    return info.isFile() ? Stamp{info.lastModified(), info.size()} : Stamp{};
}

void ProjectWatch::Know(const std::string& path) {
    const QString wanted = path.empty() ? QString() : QFileInfo(QString::fromStdString(path)).absoluteFilePath();
    if (wanted != file && !(watcher.files() + watcher.directories()).isEmpty())
        watcher.removePaths(watcher.files() + watcher.directories());
    file = wanted;
    known = StampNow();
    if (file.isEmpty())
        return;
    const QFileInfo info(file);
    for (const QString& watched : {info.absoluteFilePath(), info.absolutePath()})
        if (QFileInfo::exists(watched))
            watcher.addPath(watched); // a replaced file has to be watched anew
}

bool ProjectWatch::HasChanged() const {
    const Stamp now = StampNow();
    return !file.isEmpty() && now.size >= 0 && !(now == known);
}

void ProjectWatch::Look() {
    if (!HasChanged())
        return;
    Know(file.toStdString());
    emit Changed();
}
