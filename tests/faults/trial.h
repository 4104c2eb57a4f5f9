#pragma once

#include "tests/faults/crashmodel.h"
#include "tests/support/boxwatcher.h"
#include "tests/support/deviceroot.h"

#include <QDataStream>
#include <QDirIterator>
#include <QPoint>
#include <QRegularExpression>

#include <csignal>
#include <fcntl.h>
#include <functional>
#include <optional>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

/// What the program has told, and what it does now.
struct Answer
{
    int nResult = 0;
    QStringList errors; ///< texts of the boxes that told of one
    QPoint landing; ///< of a touch
};

/// Something that the operator does, to be done again and again on a disk that fails.
class Trial
{
public:
    virtual ~Trial() = default;
    /// Fills a new device.
    virtual void prepare(const DeviceRoot &root) = 0;
    /// Files that are there only when the operator begins.
    virtual Files planted() const { return {}; }
    /// In a copy of the process: does it, between \a arm() and FileFaults::disarm().
    virtual Answer run(const std::function<void()> &arm) = 0;
    /// What is wrong with the program's \a answer and the device; empty when nothing is.
    virtual QStringList judge(const DeviceRoot &root, const Answer &answer) = 0;
    /// What is wrong with a new start on what is left: of a run that has given its answer, or was
    /// cut off.
    virtual QStringList judgeRestart(const DeviceRoot &root, const Answer *pAnswer,
                                     bool bMarked) = 0;
};

inline Files filesOf(const DeviceRoot &root)
{
    Files files;
    for (const char *pFolder : {"/etc", "/tmp"}) {
        QDirIterator it(root.path(pFolder), QDir::Files | QDir::Hidden | QDir::System,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next().mid(root.path(QString()).size());
            files[path] = root.read(path);
        }
    }
    return files;
}

inline void setFiles(const DeviceRoot &root, const Files &files)
{
    for (const QString &path : filesOf(root).keys()) {
        root.remove(path);
    }
    for (auto it = files.cbegin(); it != files.cend(); ++it) {
        root.write(it.key(), it.value());
    }
}

/// The boxes of \a eyes that told of an error or gave a warning.
inline QStringList errorsIn(const BoxWatcher &eyes)
{
    return eyes.texts().filter(QRegularExpression("^(Error|Warning)"));
}

/// What the copy of the process does with \a task, whose answer goes into the pipe.
[[noreturn]] inline void answer(const std::function<Answer()> &task, int nPipe)
{
    // What the task warns of is for its answer to tell, and a crash for the parent to see.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    for (const int nSignal : {SIGSEGV, SIGABRT, SIGFPE, SIGBUS, SIGILL, SIGTERM}) {
        std::signal(nSignal, SIG_DFL);
    }
    const Answer answer = task();
    QByteArray packed;
    QDataStream(&packed, QIODevice::WriteOnly) << answer.nResult << answer.errors << answer.landing;
    _exit(write(nPipe, packed.constData(), std::size_t(packed.size())) == packed.size() ? 0 : 1);
}

/// Runs \a task in a forked copy of this process, which is cheaper by far than starting the program
/// anew and ends without any clearing up. Adds to \a complaints when it gives no answer, unless it
/// \a bDies by SIGKILL.
inline std::optional<Answer> ask(const std::function<Answer()> &task, QStringList &complaints,
                                 bool bDies = false)
{
    constexpr int AnswerLimitMs = 3000; // in which the operator gets an answer
    int ends[2];
    const pid_t nCopy = pipe2(ends, O_CLOEXEC) == 0 ? fork() : -1;
    need(nCopy >= 0, "a copy of this process");
    if (nCopy == 0) {
        close(ends[0]);
        answer(task, ends[1]);
    }
    close(ends[1]);
    pollfd end = {ends[0], 0, 0}; // of the copy; until then the pipe holds the answer
    const bool bInTime = poll(&end, 1, AnswerLimitMs) > 0;
    if (!bInTime) {
        kill(nCopy, SIGKILL);
    }
    QByteArray packed(1 << 16, '\0');
    packed.truncate(std::max(read(ends[0], packed.data(), std::size_t(packed.size())), ssize_t{0}));
    close(ends[0]);
    int nStatus = 0;
    waitpid(nCopy, &nStatus, 0);
    const bool bKilled = WIFSIGNALED(nStatus) && WTERMSIG(nStatus) == SIGKILL;
    if (!bInTime) {
        complaints += QStringLiteral("no answer within %1 ms").arg(AnswerLimitMs);
    } else if (bKilled != bDies || (!bKilled && nStatus != 0)) {
        complaints += "ends unasked";
    } else if (!bKilled) {
        Answer answer;
        QDataStream(packed) >> answer.nResult >> answer.errors >> answer.landing;
        return answer;
    }
    return std::nullopt;
}
