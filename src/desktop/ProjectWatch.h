// Notices when another program writes the open project.
#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>
#include <functional>
#include <string>

#include "foundation/WholeFile.h"

class ProjectWatch : public QObject {
    Q_OBJECT
public:
    explicit ProjectWatch(QObject* parent = nullptr);
    // The file as it is now is known: it was just opened or saved. Empty: none is watched.
    void Know(const std::string& path);
    bool HasChanged() const;       // since then, and is still there
    std::function<bool()> is_busy; // true: nothing can be told now, as during a compile; it is told later

signals:
    void Changed();

private:
    FileIdentity IdentityNow() const;
    void Look();

    QFileSystemWatcher watcher;
    QTimer settling; // a writer may take several steps
    QString file;
    FileIdentity known;
};
