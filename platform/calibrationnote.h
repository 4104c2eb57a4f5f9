#pragma once

#include "platform/regularfile.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

/// The note of a calibration that nobody has accepted yet, a file beside the pointer calibration
/// file: what that held before, and how to know what a run has written over it. It outlives a power
/// cut, after which the next start puts the old content back.
///
/// It is on the disk before the run's file is, and goes when the calibration has been accepted or
/// taken back. GUI thread.
class CalibrationNote
{
public:
    /// Of the calibration file \a calibrationFile, behind all links.
    explicit CalibrationNote(const QString &calibrationFile);

    QString path() const { return sPath; }
    /// Something stands at path(), or it cannot be told; it may be no note.
    bool exists() const;
    /// A note stands at path() that cannot be read, at least not now.
    bool isUnreadable() const;
    /// Notes, synced, that a run is about to replace \a before by \a written. What earlier runs
    /// have written over the same content is still known. False with the reason in errno.
    bool write(const FileContent &before, const QByteArray &written) const;
    /// The content that \a present, a calibration file as it is now, has replaced without being
    /// accepted. None when there is no note, or when somebody else has changed the file since.
    std::optional<FileContent> replacedBy(const FileContent &present) const;
    /// Has the note say nothing any more, synced, and removes it. False with the reason in errno
    /// when the next start may still find it.
    bool remove() const;

private:
    struct Content
    {
        FileContent before;
        QList<QByteArray> written; ///< digests
    };

    std::optional<Content> read() const;

    QString sPath;
};
