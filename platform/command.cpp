#include "platform/command.h"

#include "platform/endinglimit.h"
#include "platform/servicenotifier.h"

#include <QDeadlineTimer>
#include <QDebug>
#include <QProcess>
#include <QSet>

#include <csignal>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

constexpr auto EndingTime = 5000ms; // for a command that is asked to end, before it is killed
constexpr auto LookInterval = 50ms; // how late the program's own end is noticed while waiting

/// Lets \a running go on after this program: the destructor of a QProcess would kill it.
void leaveRunning(QProcess *running)
{
    static auto &left = *new QSet<QProcess *>;
    left.insert(running);
    QObject::connect(running, &QProcess::finished, running, [running] {
        left.remove(running);
        running->deleteLater();
    });
}

} // namespace

Command::Command(QObject *parent) : QObject(parent), pProcess(std::make_unique<QProcess>())
{
    pProcess->setProcessChannelMode(QProcess::ForwardedChannels);
    pProcess->setStandardInputFile(QProcess::nullDevice());
    // A group of its own, so that what a script has started ends with it, and a signal to this
    // program's group does not reach it. The reader of its messages may be gone before it is done.
    pProcess->setChildProcessModifier([] {
        setpgid(0, 0);
        std::signal(SIGPIPE, SIG_IGN);
    });
    connect(pProcess.get(), &QProcess::finished, this, [this](int exitCode) {
        noteEnd(pProcess->exitStatus() == QProcess::NormalExit ? exitCode : CommandCrashed);
    });
    connect(pProcess.get(), &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            noteEnd(CommandNotStarted);
        }
    });
}

Command::~Command()
{
    pProcess->disconnect(this);
    if (isRunning()) {
        leaveRunning(pProcess.release());
    }
}

void Command::start(const QString &program, const QStringList &arguments)
{
    bForTheEnd = EndingLimit::hasStarted();
    pProcess->start(program, arguments);
}

bool Command::isRunning() const
{
    return pProcess->state() != QProcess::NotRunning;
}

void Command::noteEnd(int endResult)
{
    nResult = endResult;
    Q_EMIT ended(nResult);
}

bool Command::waitForEnd(std::chrono::milliseconds limit)
{
    const QDeadlineTimer deadline(bForTheEnd ? std::min(limit, EndingLimit::leftForCommands())
                                             : limit);
    while (isRunning()) {
        if (deadline.hasExpired() || EndingLimit::hasStarted() != bForTheEnd) {
            return false;
        }
        const auto wait =
            std::min<std::chrono::nanoseconds>(LookInterval, deadline.remainingTimeAsDuration());
        ServiceNotifier::feedWatchdog(); // the limit of the wait is the command's own
        pProcess->waitForFinished(
            static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(wait).count()));
    }
    return true;
}

void Command::stop()
{
    if (!isRunning()) {
        return;
    }
    const auto nGroup = static_cast<pid_t>(pProcess->processId());
    kill(-nGroup, SIGTERM);
    const bool bEnded = waitForEnd(EndingTime);
    if (!bEnded && EndingLimit::hasStarted()) {
        return; // it has been asked; this program's end is no reason to be rude
    }
    kill(-nGroup, SIGKILL); // whoever of the group is still there
    waitForEnd(EndingTime);
}

int runCommand(const QString &program, const QStringList &arguments,
               std::chrono::milliseconds limit)
{
    Command command;
    command.start(program, arguments);
    if (command.waitForEnd(limit)) {
        return command.result();
    }
    if (EndingLimit::hasStarted()) {
        qWarning() << "command does not end before the panel, left running:" << program;
    } else {
        qWarning() << "command does not end, stopped:" << program;
        command.stop();
    }
    return CommandCrashed;
}
