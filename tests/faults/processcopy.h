#pragma once

#include <QByteArray>

#include <chrono>
#include <functional>

/// How a copy of this process has ended.
struct CopyEnding
{
    QByteArray answer;
    bool bInTime = true; ///< else it has been killed by us
    bool bKilled = false; ///< by SIGKILL of its own
    bool bCrashed = false; ///< by any other signal
};

/// Runs \a task in a forked copy of this process, which is cheaper by far than starting the program
/// anew, and waits for what the task answers. The copy ends without any clearing up.
CopyEnding runInCopy(const std::function<QByteArray()> &task, std::chrono::milliseconds limit);
