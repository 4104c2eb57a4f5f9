#include "platform/folderwatch.h"

#include <QFileInfo>

#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr auto Pace = 2000ms;

} // namespace

FolderWatch::FolderWatch(const QString &watchedFolder, QObject *parent)
    : QObject(parent), sFolder(watchedFolder), watcher(this), timer(this)
{
    timer.setInterval(Pace);
    connect(&timer, &QTimer::timeout, this, &FolderWatch::lookAgain);
    connect(&watcher, &QFileSystemWatcher::directoryChanged, this, [this] {
        // One that is gone is not watched any more, nor is the one that has its name by now.
        watchFolder();
        updateTimer();
        Q_EMIT changed(sFolder);
    });
    watchFolder();
    updateTimer();
}

void FolderWatch::setPolled(bool on)
{
    bPolled = on;
    updateTimer();
}

void FolderWatch::lookAgain()
{
    const bool bCame = watcher.directories().isEmpty() && watchFolder();
    updateTimer();
    if (bCame || bPolled) {
        Q_EMIT changed(sFolder);
    }
}

bool FolderWatch::watchFolder()
{
    return !watcher.directories().isEmpty()
        || (QFileInfo(sFolder).isDir() && watcher.addPath(sFolder));
}

void FolderWatch::updateTimer()
{
    const bool bNeeded = bPolled || watcher.directories().isEmpty();
    if (bNeeded != timer.isActive()) {
        bNeeded ? timer.start() : timer.stop();
    }
}
