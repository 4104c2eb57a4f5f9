#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>
#include <memory>

class Command;

/// Restarts the device by its command, and knows whether that happens: a command that fails or that
/// is not followed by the restart is to be given again. The command is never ended, because a
/// shutdown may take minutes; while one is within its time no other is given. Without widgets; GUI
/// thread.
class RestartSequence : public QObject
{
    Q_OBJECT

public:
    enum class State {
        Idle,
        Commanded, ///< the command runs
        Awaited, ///< it has succeeded: the device should go down
        Failed, ///< it has failed
        Overdue, ///< the time for it has passed, and the device is still up
        CommandedAgain ///< the command of a restart that is overdue runs
    };
    enum class Event { Asked, Succeeded, Failed, TimeUp };

    /// How long the command, and then the device's going down, may take.
    static constexpr std::chrono::seconds Limit{120};

    /// \a command: path of the program to run, on this machine.
    explicit RestartSequence(const QString &command, QObject *parent = nullptr);
    /// A command that runs goes on.
    ~RestartSequence() override;

    /// Gives the command at once, unless it is running. Returns when it has ended, its time is up
    /// or the program ends; events are processed meanwhile.
    void restart();

    State state() const { return current; }
    bool isCommandRunning() const;
    /// Whether the command is to be given again after a while.
    bool isRetryDue() const { return current == State::Failed || current == State::Overdue; }

    /// Takes a step. Events that mean nothing in the present state are dropped.
    void handle(Event event);

Q_SIGNALS:
    void stateChanged(RestartSequence::State state);

private:
    void enter(State next);
    void runCommand();

    QString sCommand;
    std::unique_ptr<Command> pCommand;
    QTimer timer; // of the command, then of the device's going down
    State current = State::Idle;
};
