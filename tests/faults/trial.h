#pragma once

#include "tests/faults/crashmodel.h"
#include "tests/support/boxwatcher.h"
#include "tests/support/deviceroot.h"

#include <QPoint>

#include <functional>
#include <optional>

Files filesOf(const DeviceRoot &root);
void setFiles(const DeviceRoot &root, const Files &files);

/// What the program has told, and what it does now.
struct Answer
{
    int nResult = 0;
    QStringList errors; ///< texts of the boxes that told of one
    QPoint landing; ///< of a touch
};

/// The boxes of \a eyes that told of an error or gave a warning.
QStringList errorsIn(const BoxWatcher &eyes);

/// Something that the operator does, to be done again and again on a disk that fails.
class Trial
{
public:
    virtual ~Trial() = default;
    /// Fills a new device.
    virtual void prepare(const DeviceRoot &root) = 0;
    /// Files that are there only when the operator begins.
    virtual Files planted() const { return {}; }
    /// In a copy of the process: does it, between \a arm() and FileFaults::disarm().
    virtual Answer run(const std::function<void()> &arm) = 0;
    /// What is wrong with the program's \a answer and the device; empty when nothing is.
    virtual QStringList judge(const DeviceRoot &root, const Answer &answer) = 0;
    /// What is wrong with a new start on what is left: of a run that has given its answer, or was
    /// cut off.
    virtual QStringList judgeRestart(const DeviceRoot &root, const Answer *pAnswer,
                                     bool bMarked) = 0;
};

/// Runs \a task in a forked copy of this process, which is cheaper by far than starting the program
/// anew and ends without any clearing up. Adds to \a complaints when it gives no answer, unless it
/// \a bDies by SIGKILL.
std::optional<Answer> ask(const std::function<Answer()> &task, QStringList &complaints,
                          bool bDies = false);
