// Notices when another program writes the open project.
#pragma once

#include <QDateTime>
#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>
#include <string>

class ProjectWatch : public QObject {
    Q_OBJECT
public:
    explicit ProjectWatch(QObject* parent = nullptr);
    // The file as it is now is known: it was just opened or saved. Empty: none is watched.
    void Know(const std::string& path);
    bool HasChanged() const; // since then, and is still there

signals:
    void Changed();

private:
    struct Stamp {
        QDateTime time;
        qint64 size = -1; // -1: no file
        bool operator==(const Stamp&) const = default;
    };
    Stamp StampNow() const;
    void Look();

    QFileSystemWatcher watcher;
    QTimer settling; // a writer may take several steps
    QString file;
    Stamp known;
};
