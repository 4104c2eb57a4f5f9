#include "tests/faults/processcopy.h"

#include <QDeadlineTimer>
#include <QtGlobal>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

[[noreturn]] void runTask(const std::function<QByteArray()> &task, int nPipe)
{
    // What the task warns of is for its answer to tell, and a crash for the parent to see.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    for (const int nSignal : {SIGSEGV, SIGABRT, SIGFPE, SIGBUS, SIGILL, SIGTERM}) {
        std::signal(nSignal, SIG_DFL);
    }
    const QByteArray answer = task();
    const bool bWritten = write(nPipe, answer.constData(), std::size_t(answer.size()))
        == ssize_t(answer.size()); // less than a pipe holds
    _exit(bWritten ? 0 : 1);
}

/// Everything from \a nPipe until its other end is closed; false when that takes too long.
bool readToEnd(int nPipe, std::chrono::milliseconds limit, QByteArray &all)
{
    const QDeadlineTimer deadline(limit);
    for (;;) {
        pollfd waited = {nPipe, POLLIN, 0};
        if (poll(&waited, 1, int(deadline.remainingTime())) <= 0) {
            return false;
        }
        std::array<char, 4096> piece;
        const ssize_t nRead = read(nPipe, piece.data(), piece.size());
        if (nRead <= 0) {
            return true;
        }
        all.append(piece.data(), nRead);
    }
}

} // namespace

CopyEnding runInCopy(const std::function<QByteArray()> &task, std::chrono::milliseconds limit)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        qFatal("no pipe");
    }
    const pid_t nCopy = fork();
    if (nCopy < 0) {
        qFatal("no copy of this process");
    }
    if (nCopy == 0) {
        close(ends[0]);
        runTask(task, ends[1]);
    }
    close(ends[1]);
    CopyEnding ending;
    ending.bInTime = readToEnd(ends[0], limit, ending.answer);
    close(ends[0]);
    if (!ending.bInTime) {
        kill(nCopy, SIGKILL);
    }
    int nStatus = 0;
    waitpid(nCopy, &nStatus, 0);
    ending.bKilled = ending.bInTime && WIFSIGNALED(nStatus) && WTERMSIG(nStatus) == SIGKILL;
    ending.bCrashed = ending.bInTime && !ending.bKilled && nStatus != 0;
    return ending;
}
