#pragma once

#include <QtGlobal>

#include <functional>

/// Ends the program with one line, also for the service manager, and exit code 1 where there is no
/// display. Qt itself aborts, or goes on without a screen and crashes at the first question for it.
/// Made before the application object; one object per process. GUI thread.
class DisplayCheck
{
public:
    static constexpr int ExitCode = 1;

    /// \a clearUp: what has to be done before the program ends inside the making of the application
    /// object, which no destructor survives.
    explicit DisplayCheck(std::function<void()> clearUp);
    /// From here on a fatal message is a fault of the program and aborts.
    ~DisplayCheck();
    DisplayCheck(const DisplayCheck &) = delete;
    DisplayCheck &operator=(const DisplayCheck &) = delete;

    /// Whether the application object, now made, has a screen; when not, the line is written.
    static bool hasScreen();

private:
    static void handleMessage(QtMsgType type, const QMessageLogContext &context,
                              const QString &text);

    std::function<void()> clearUpBeforeEnd;
    QtMessageHandler previous;
};
