#pragma once

#include <QObject>

#include <array>
#include <csignal>

class QSocketNotifier;

/// Ends the program through its event loop, so that destructors run, when it is told to end by
/// SIGTERM, SIGINT or SIGHUP. Modal loops that are open end as well, and no new one begins.
///
/// The first signal also starts the EndingLimit, for a loop that does not come to see it; more of
/// them change nothing. SIGHUP stays ignored where it was at the start (nohup); SIGTERM and SIGINT
/// count even where a shell or a supervisor has left them ignored or blocked. One object per
/// process, made after the application object and destroyed last before it, as whatever ends
/// meanwhile must not be interrupted. GUI thread.
class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    explicit TerminationSignals(QObject *parent = nullptr);
    /// Gives the signals back to whom they belonged before.
    ~TerminationSignals() override;

    /// Has SIGTERM and SIGINT end the process at once until there is an object, however they were
    /// inherited: a start that hangs can be ended, too. To be called first of all.
    static void letThrough();

private:
    static sigset_t allSignals();

    static constexpr std::array<int, 3> Signals{SIGTERM, SIGINT, SIGHUP};

    QSocketNotifier *pNotifier = nullptr;
    std::array<struct sigaction, Signals.size()> previous{};
    sigset_t previousMask{};
};
