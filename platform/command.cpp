#include "platform/command.h"

#include <QDebug>
#include <QProcess>

int runCommand(const QString &program, const QStringList &arguments,
               std::chrono::milliseconds limit)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(program, arguments);
    if (!process.waitForStarted(static_cast<int>(limit.count()))) {
        return CommandNotStarted;
    }
    if (!process.waitForFinished(static_cast<int>(limit.count()))) {
        qWarning() << "command does not end, killed:" << program;
        process.kill();
        process.waitForFinished(1000);
        return CommandCrashed;
    }
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : CommandCrashed;
}
