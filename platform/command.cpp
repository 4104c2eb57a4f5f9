#include "platform/command.h"

#include <QDebug>
#include <QProcess>

#include <csignal>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

constexpr auto EndingTime = 5000ms; // for a command that is asked to end, before it is killed

bool waitForEnd(QProcess &process, std::chrono::milliseconds limit)
{
    return process.state() == QProcess::NotRunning
        || process.waitForFinished(static_cast<int>(limit.count()));
}

} // namespace

int runCommand(const QString &program, const QStringList &arguments,
               std::chrono::milliseconds limit)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.setStandardInputFile(QProcess::nullDevice());
    // A group of its own, so that what a script has started ends with it.
    process.setChildProcessModifier([] { setpgid(0, 0); });
    process.start(program, arguments);
    if (!process.waitForStarted(static_cast<int>(limit.count()))) {
        return CommandNotStarted;
    }
    const auto nGroup = static_cast<pid_t>(process.processId());
    if (!waitForEnd(process, limit)) {
        qWarning() << "command does not end, stopped:" << program;
        kill(-nGroup, SIGTERM);
        waitForEnd(process, EndingTime);
        kill(-nGroup, SIGKILL); // whoever of the group is still there
        waitForEnd(process, EndingTime);
        return CommandCrashed;
    }
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : CommandCrashed;
}
