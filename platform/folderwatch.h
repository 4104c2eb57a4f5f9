#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>
#include <QTimer>

/// Tells when something comes to a folder, goes or changes there: also in a folder that comes late,
/// or goes and comes back. It costs no wake-up while nothing happens, except where there is no
/// folder: then it looks every 2 s. GUI thread.
class FolderWatch : public QObject
{
    Q_OBJECT

public:
    explicit FolderWatch(const QString &watchedFolder, QObject *parent = nullptr);

    /// With \a on changed() is signalled every 2 s, too, whether or not something happens: for
    /// who waits for what a folder does not tell.
    void setPolled(bool on);

Q_SIGNALS:
    void changed(const QString &folder);

private:
    void lookAgain();
    bool watchFolder();
    void updateTimer();

    QString sFolder;
    QFileSystemWatcher watcher;
    QTimer timer;
    bool bPolled = false;
};
