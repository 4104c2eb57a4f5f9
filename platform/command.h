#pragma once

#include <QString>
#include <QStringList>

#include <chrono>

/// Results of runCommand() that are not exit statuses.
constexpr int CommandCrashed = -1;
constexpr int CommandNotStarted = -2;

/// Runs \a program with \a arguments and waits for its end, without processing events.
///
/// Returns its exit status, CommandNotStarted when it could not be started, CommandCrashed when it
/// crashed or did not end within \a limit (it is then asked to end and, 5 s later, killed together
/// with what it has started: a command that hangs must not leave the operator without a way on). No
/// shell is involved, so paths with blanks work.
int runCommand(const QString &program, const QStringList &arguments,
               std::chrono::milliseconds limit);
