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

FileIdentity ProjectWatch::IdentityNow() const {
    return file.isEmpty() ? FileIdentity() : IdentityOf(std::filesystem::path(file.toStdString()));
}

void ProjectWatch::Know(const std::string& path) {
    file = path.empty() ? QString() : QFileInfo(QString::fromStdString(path)).absoluteFilePath();
    // A replaced file has to be watched anew: what is watched is the file of before, whose name is still listed.
    if (const QStringList watched = watcher.files() + watcher.directories(); !watched.isEmpty())
        watcher.removePaths(watched);
    known = IdentityNow();
    if (file.isEmpty())
        return;
    const QFileInfo info(file);
    for (const QString& watched : {info.absoluteFilePath(), info.absolutePath()})
        if (QFileInfo::exists(watched))
            watcher.addPath(watched);
}

bool ProjectWatch::HasChanged() const {
    const FileIdentity now = IdentityNow();
    return now.Exists() && !(now == known);
}

void ProjectWatch::Look() {
    if (!HasChanged())
        return;
    if (is_busy && is_busy()) {
        settling.start(); // asked again until it can be told
        return;
    }
    Know(file.toStdString());
    emit Changed();
}
