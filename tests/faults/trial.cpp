#include "tests/faults/trial.h"

#include <QDataStream>
#include <QDirIterator>
#include <QRegularExpression>

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// The operator gets an answer within this.
constexpr int AnswerLimitMs = 3000;

[[noreturn]] void answer(const std::function<Answer()> &task, int nPipe)
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

} // namespace

Files filesOf(const DeviceRoot &root)
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

void setFiles(const DeviceRoot &root, const Files &files)
{
    for (const QString &path : filesOf(root).keys()) {
        root.remove(path);
    }
    for (auto it = files.cbegin(); it != files.cend(); ++it) {
        root.write(it.key(), it.value());
    }
}

QStringList errorsIn(const BoxWatcher &eyes)
{
    return eyes.texts().filter(QRegularExpression("^(Error|Warning)"));
}

std::optional<Answer> ask(const std::function<Answer()> &task, QStringList &complaints, bool bDies)
{
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
