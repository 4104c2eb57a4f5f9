#pragma once

#include "tests/faults/crashmodel.h"
#include "tests/faults/processcopy.h"
#include "tests/support/boxwatcher.h"
#include "tests/support/deviceroot.h"

#include <QDataStream>
#include <QDirIterator>
#include <QPoint>
#include <QRegularExpression>

#include <optional>

/// The operator gets an answer within this.
constexpr std::chrono::seconds AnswerLimit(3);
inline const QStringList WatchedFolders{"/etc", "/tmp"};

inline Files filesOf(const DeviceRoot &root)
{
    Files files;
    for (const QString &folder : WatchedFolders) {
        QDirIterator it(root.path(folder), QDir::Files | QDir::Hidden | QDir::System,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next().mid(root.path(QString()).size());
            files[path] = root.read(path);
        }
    }
    return files;
}

inline void setFiles(const DeviceRoot &root, const Files &files)
{
    const QStringList before = filesOf(root).keys();
    for (const QString &path : before) {
        root.remove(path);
    }
    for (auto it = files.cbegin(); it != files.cend(); ++it) {
        root.write(it.key(), it.value());
    }
}

/// What the program has told, and what it does now.
struct Answer
{
    int nResult = 0;
    QStringList errors; ///< texts of the boxes that told of one
    QPoint landing; ///< of a touch

    QByteArray pack() const
    {
        QByteArray packed;
        QDataStream(&packed, QIODevice::WriteOnly) << nResult << errors << landing;
        return packed;
    }
    static Answer unpack(const QByteArray &packed)
    {
        Answer answer;
        QDataStream(packed) >> answer.nResult >> answer.errors >> answer.landing;
        return answer;
    }
};

/// The boxes of \a eyes that told of an error or gave a warning.
inline QStringList errorsIn(const BoxWatcher &eyes)
{
    return eyes.texts().filter(QRegularExpression(QStringLiteral("^(Error|Warning)")));
}

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

/// Runs \a task on \a root in a copy of the process; adds to \a complaints when it gives no answer.
inline std::optional<Answer> ask(const std::function<Answer()> &task, QStringList &complaints,
                                 bool bDies = false)
{
    const CopyEnding ending = runInCopy([&] { return task().pack(); }, AnswerLimit);
    if (!ending.bInTime) {
        complaints += QStringLiteral("no answer within %1 s").arg(AnswerLimit.count());
    } else if (ending.bCrashed || ending.bKilled != bDies) {
        complaints += QStringLiteral("ends unasked");
    } else if (!ending.bKilled) {
        return Answer::unpack(ending.answer);
    }
    return std::nullopt;
}
