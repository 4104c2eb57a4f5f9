#pragma once

#include <QByteArray>
#include <QString>

/// \file
/// Files at paths that somebody else may have filled: with a FIFO that nobody writes to, a link to
/// a file of the system, a directory, megabytes of rubbish. Nothing here blocks on any of them, and
/// nothing follows a link unless it is told to. GUI thread.

/// Whether a symbolic link at the path itself leads to its target. For names in folders that only
/// the system can write (/etc), links are the device's own; elsewhere they are a trap.
enum class Links { Refuse, Follow };

/// What stands at a path.
struct FileContent
{
    enum State {
        Absent, ///< certainly nothing
        Readable, ///< a regular file, \a content is the whole of it
        Unreadable ///< something else, or a file that cannot be read or is larger than the limit
    };

    State state = Absent;
    QByteArray content;
    QString sError; ///< why it is unreadable, for a warning line
    friend bool operator==(const FileContent &left, const FileContent &right)
    {
        return left.state == right.state && left.content == right.content;
    }
};

/// Larger files of configuration and calibration are broken, and not read. Bytes.
constexpr qint64 ConfigurationLimit = 1 << 20;

/// Reads the regular file at \a path, at most \a limit bytes long.
FileContent readRegularFile(const QString &path, Links links, qint64 limit = ConfigurationLimit);

/// Whether somebody has made the request file \a path: a regular file of any content that can be
/// opened. Anything else that stands there is no request: it is removed (a directory only when it
/// is empty) with one warning line, or, when it cannot be removed, left alone with one line per
/// process.
bool isRequested(const QString &path);

/// Takes what stands at \a path away, as a name: links are not followed, a directory goes only when
/// it is empty. True when nothing stands there afterwards.
bool removeName(const QString &path);

/// Whether this process may write to what stands at \a path; a link is judged itself.
bool isWritableName(const QString &path);

/// Writes \a content to \a path, synced, as a new file of this process alone: whatever had the name
/// is unlinked first, and the file is made exclusively, with the permissions 0600. On failure
/// nothing is left at \a path, and the result is false with the reason in errno.
bool writeNewFile(const QString &path, const QByteArray &content);

/// Puts \a content at \a path whole: there is the old file or the new one, also after a power cut.
/// It is made beside \a path, synced and renamed over it, never through a link; a file that stands
/// there keeps its permissions, a new one gets \a mode. On failure the old file is there, nothing
/// else is left, and the result is false with the reason in errno.
bool replaceFile(const QString &path, const QByteArray &content, int mode = 0644);

/// The same, and false, too, when the new file is there, but may be the old one again after a power
/// cut.
bool replaceFileForGood(const QString &path, const QByteArray &content, int mode = 0644);

/// Has the name \a path survive a power cut as it is now: there, gone, or renamed over. False, with
/// the reason in errno, when that is not sure.
bool syncFolderOf(const QString &path);

/// Whether a killed replaceFile() of \a path has left temporary files beside it.
bool hasStrayFiles(const QString &path);
/// Removes the temporary files that a killed replaceFile() of \a path has left beside it.
void removeStrayFiles(const QString &path);
