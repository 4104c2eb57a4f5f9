#include "platform/pointercalibration.h"

#include "platform/calibrationdirectory.h"
#include "platform/calibrationnote.h"
#include "platform/touchscreenpaths.h"

#include <QFile>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

namespace {

/// The longest chain of symbolic links that is followed.
constexpr int LinkLimit = 128;

/// The file itself behind symbolic links, also when it does not exist: the links are the device's
/// and stay, whether the file is written or removed.
QString resolvedFile()
{
    std::filesystem::path file(QFile::encodeName(pointerCalibrationFile()).constData());
    std::error_code error;
    for (int i = 0; i < LinkLimit && is_symlink(file, error); ++i) {
        file = file.parent_path() / read_symlink(file, error);
    }
    // ".." is not to be taken away with the name before it, which may be a link itself.
    const std::filesystem::path resolved = weakly_canonical(file, error);
    return QFile::decodeName((error ? file : resolved).c_str());
}

CalibrationNote note()
{
    return CalibrationNote(resolvedFile());
}

bool warnOf(const char *what, const QString &path)
{
    qWarning("Cannot %s %s: %s", what, qPrintable(path), qPrintable(qt_error_string(errno)));
    return false;
}

} // namespace

FileContent PointerCalibration::readFile()
{
    return readRegularFile(pointerCalibrationFile(), Links::Follow);
}

/// Replaces the file whole: after a power cut there is the old one or the new one, and after
/// success the new one.
bool PointerCalibration::writeFile(const QByteArray &content)
{
    const QString path = resolvedFile();
    return replaceFileForGood(path, content) || warnOf("write the pointer calibration file", path);
}

bool PointerCalibration::removeFile()
{
    const QString path = resolvedFile();
    return (removeName(path) && syncFolderOf(path))
        || warnOf("remove the pointer calibration file", path);
}

void PointerCalibration::load()
{
    const std::optional<FileContent> takenBack = takeBackUnaccepted();
    const FileContent file = takenBack ? *takenBack : readFile();
    inForce =
        file.state == FileContent::Readable ? PointerTransform::parse(file.content) : std::nullopt;
    if (file.state != FileContent::Absent && !inForce) {
        qWarning("The pointer calibration file %s is broken: touches are not calibrated",
                 qPrintable(pointerCalibrationFile()));
    }
}

/// The content that the file had before a run that nobody has accepted: back in the file, or at
/// least to be put in force.
std::optional<FileContent> PointerCalibration::takeBackUnaccepted()
{
    const QString path = resolvedFile();
    const CalibrationNote unaccepted(path);
    const bool bStray = hasStrayFiles(path) || hasStrayFiles(unaccepted.path());
    if (!unaccepted.exists() && !bStray) {
        return std::nullopt;
    }
    const CalibrationDirectory directory;
    removeStrayFiles(path);
    removeStrayFiles(unaccepted.path());
    if (!unaccepted.exists()) {
        return std::nullopt;
    }
    const FileContent present = readFile();
    if (present.state == FileContent::Unreadable || unaccepted.isUnreadable()) {
        qWarning("Cannot read %s or its note: nobody may have accepted the calibration",
                 qPrintable(path));
        return present; // and the next start tries again
    }
    std::optional<FileContent> before = unaccepted.replacedBy(present);
    if (before) {
        qWarning("Nobody has accepted the calibration in %s: back to the one before",
                 qPrintable(path));
        if (!reinstateFile(*before)) {
            return before; // and the next start tries again
        }
    }
    if (!unaccepted.remove()) {
        warnOf("remove", unaccepted.path());
    }
    return before;
}

void PointerCalibration::clear()
{
    if (inForce) {
        dropped = std::exchange(inForce, std::nullopt);
    }
}

SavedCalibration PointerCalibration::save() const
{
    SavedCalibration saved;
    saved.inForce = inForce;
    saved.file = readFile();
    if (inForce
        && (saved.file.state != FileContent::Readable
            || PointerTransform::parse(saved.file.content) != inForce)) {
        // It has changed since it was loaded: to go back is to go back to what is in force.
        saved.file = {FileContent::Readable, inForce->toFile(), {}};
    } else if (const auto before = note().replacedBy(saved.file); before && !inForce) {
        saved.file = *before; // which could not be put back at the start
    }
    return saved;
}

bool PointerCalibration::restore(const SavedCalibration &saved)
{
    dropped.reset();
    inForce = saved.inForce; // whatever becomes of the file: the operator must be able to touch
    if (!reinstateFile(saved.file)) {
        return false;
    }
    // One that cannot be removed does no harm where the file is not what the run has written; where
    // it is, because an earlier run was accepted, the caller tries again.
    if (isUnaccepted() && !note().remove()) {
        warnOf("remove", note().path());
    }
    return true;
}

CalibrationOutcome PointerCalibration::calibrate(const CalibrationPairs &pairs,
                                                 const SavedCalibration &before)
{
    const auto droppedBefore = std::exchange(dropped, std::nullopt);
    auto outcome = CalibrationOutcome::Degenerate;
    if (const auto transform = PointerTransform::fit(pairs)) {
        if (store(transform->toFile(), before.file)) {
            inForce = transform;
            return CalibrationOutcome::Stored;
        }
        outcome = CalibrationOutcome::NotWritten;
    } else {
        qWarning("The calibration points lie on one line or do not fit: calibration refused");
    }
    if (!inForce) {
        inForce = droppedBefore;
    }
    return outcome;
}

bool PointerCalibration::store(const QByteArray &content, const FileContent &before)
{
    const FileContent present = readFile();
    const CalibrationNote unaccepted = note();
    if (!unaccepted.write(before, content)) {
        return warnOf("write the pointer calibration file", unaccepted.path());
    }
    if (writeFile(content)) {
        return true;
    }
    // Where the new name is there, but maybe not for good, the old one is not gone for good either.
    if (reinstateFile(present) && !unaccepted.replacedBy(present)) {
        unaccepted.remove();
    }
    return false;
}

bool PointerCalibration::reinstateFile(const FileContent &file)
{
    const FileContent present = readFile();
    // A file that is right already is left alone: its directory may be read-only. While there is a
    // note, that it is right may be news to the disk.
    if (present == file) {
        const QString path = resolvedFile();
        return !isUnaccepted() || syncFolderOf(path)
            || warnOf("sync the pointer calibration file", path);
    }
    switch (file.state) {
    case FileContent::Readable:
        return writeFile(file.content);
    case FileContent::Absent:
        return removeFile();
    case FileContent::Unreadable:
        // What it held is unknown, and nothing was in force: only what a run has put in its place
        // goes.
        return !note().replacedBy(present) || removeFile();
    }
    Q_UNREACHABLE();
}

bool PointerCalibration::isUnaccepted()
{
    return note().exists();
}

bool PointerCalibration::accept()
{
    const CalibrationNote unaccepted = note();
    return unaccepted.remove() || warnOf("remove", unaccepted.path());
}
