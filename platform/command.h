#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <chrono>
#include <memory>

class QProcess;

/// Results of commands that are not exit statuses.
constexpr int CommandCrashed = -1;
constexpr int CommandNotStarted = -2;

/// A command that runs beside the event loop. No shell is involved, so paths with blanks work. It
/// gets a process group of its own and is not ended by the end of this object or of the program: a
/// configuration that is half done or a shutdown that has begun goes on. GUI thread.
class Command : public QObject
{
    Q_OBJECT

public:
    explicit Command(QObject *parent = nullptr);
    /// Leaves alone what is still running.
    ~Command() override;

    /// Starts \a program with \a arguments; once for each object.
    void start(const QString &program, const QStringList &arguments);
    bool isRunning() const;
    /// The exit status after the end, CommandNotStarted when it could not be started,
    /// CommandCrashed when it crashed.
    int result() const { return nResult; }

    /// Waits for the end, without processing events; the service manager's watchdog is fed. False
    /// when it has not come within \a limit, or the program has been told to end meanwhile. What
    /// the program's end itself waits for gets no more than EndingLimit::ForCommands.
    bool waitForEnd(std::chrono::milliseconds limit);
    /// Asks the command to end and, 5 s later, kills it, both with all that it has started.
    void stop();

Q_SIGNALS:
    /// It has ended, or could not be started.
    void ended(int result);

private:
    void noteEnd(int endResult);

    std::unique_ptr<QProcess> pProcess;
    int nResult = CommandNotStarted;
    bool bForTheEnd = false; // begun when the program had been told to end
};

/// Runs \a program with \a arguments and waits for its end, without processing events.
///
/// Returns its Command::result(). One that does not end within \a limit is stopped, and the result
/// is CommandCrashed: a command that hangs must not leave the operator without a way on. When the
/// program is told to end meanwhile, the result is CommandCrashed too, but the command runs on.
int runCommand(const QString &program, const QStringList &arguments,
               std::chrono::milliseconds limit);
