#include "platform/pointercalibration.h"

#include "platform/touchscreenpaths.h"

#include <QFile>
#include <QSaveFile>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace {

/// Far more than a calibration file has; a larger file is not read, as it is broken anyway.
constexpr qint64 FileLimit = 1 << 20;
/// How many of the calibrations handed out can be reinstated. A run takes one.
constexpr std::size_t HandedOutLimit = 8;

/// The longest chain of symbolic links that is followed, as by QSaveFile.
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
    // QSaveFile takes ".." away with the name before it, wrongly where that is a link itself.
    const std::filesystem::path resolved = weakly_canonical(file, error);
    return QFile::decodeName((error ? file : resolved).c_str());
}

} // namespace

PointerCalibration::File PointerCalibration::readFile()
{
    QFile file(pointerCalibrationFile());
    if (file.open(QIODevice::ReadOnly)) {
        const QByteArray content = file.read(FileLimit + 1);
        if (file.error() == QFileDevice::NoError && content.size() <= FileLimit) {
            return {File::Readable, content};
        }
        return {File::Unreadable, {}};
    }
    errno = 0;
    // Only a file that is certainly not there counts as absent: a restore removes it then.
    const bool bAbsent = access(QFile::encodeName(file.fileName()).constData(), F_OK) != 0
        && (errno == ENOENT || errno == ENOTDIR);
    return {bAbsent ? File::Absent : File::Unreadable, {}};
}

/// Replaces the file whole: after a power cut there is the old one or the new one.
bool PointerCalibration::writeFile(const QByteArray &content)
{
    QSaveFile file(resolvedFile());
    // Without flush() a full disk shows only inside commit(), which (Qt 6.4) then puts an empty
    // file in place of the old one and reports success.
    if (file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush()
        && file.commit()) {
        lastWritten = content;
        return true;
    }
    qWarning("Cannot write the pointer calibration file %s: %s", qPrintable(file.fileName()),
             qPrintable(file.errorString()));
    return false;
}

bool PointerCalibration::removeFile()
{
    QFile file(resolvedFile());
    if (file.remove() || !file.exists()) {
        return true;
    }
    qWarning("Cannot remove the pointer calibration file %s: %s", qPrintable(file.fileName()),
             qPrintable(file.errorString()));
    return false;
}

void PointerCalibration::load()
{
    const File file = readFile();
    inForce = file.state == File::Readable ? PointerTransform::parse(file.content) : std::nullopt;
    if (file.state != File::Absent && !inForce) {
        qWarning("The pointer calibration file %s is broken: touches are not calibrated",
                 qPrintable(pointerCalibrationFile()));
    }
}

void PointerCalibration::clear()
{
    if (inForce) {
        dropped = std::exchange(inForce, std::nullopt);
    }
}

bool PointerCalibration::calibrate(const PointerCalibrationData &data, bool bRestore)
{
    const auto before = std::exchange(dropped, std::nullopt);
    // Measured points are never looked up: on a panel that is right without a calibration they may
    // be the very pairs that were handed out, and still are to be stored.
    const auto known =
        bRestore ? std::ranges::find(handedOut, data, &HandedOut::data) : handedOut.end();
    if (known != handedOut.end()) {
        // In force even when the file cannot follow: the operator must be able to touch.
        inForce = known->inForce;
        return reinstateFile(known->file);
    }
    if (const auto transform = PointerTransform::fit(data)) {
        if (writeFile(transform->toFile())) {
            inForce = transform;
            return true;
        }
    } else {
        qWarning("The calibration points lie on one line or do not fit: calibration refused");
    }
    if (!inForce) {
        inForce = before;
    }
    return false;
}

bool PointerCalibration::reinstateFile(const File &file)
{
    const File present = readFile();
    // A file that is right already is left alone: its directory may be read-only.
    if (present == file) {
        return true;
    }
    switch (file.state) {
    case File::Readable:
        return writeFile(file.content);
    case File::Absent:
        return removeFile();
    case File::Unreadable:
        // What it held is unknown, and nothing was in force: only what was written over it goes.
        return present.state != File::Readable || present.content != lastWritten || removeFile();
    }
    Q_UNREACHABLE();
}

void PointerCalibration::getCalibration(PointerCalibrationData *data)
{
    std::ranges::transform(data->screenPoints, data->devPoints.begin(), [this](QPoint pixel) {
        return inForce ? inForce->inverse(pixel) : RawPoint{pixel.x(), pixel.y()};
    });
    File file = readFile();
    if (inForce
        && (file.state != File::Readable || PointerTransform::parse(file.content) != inForce)) {
        // It has changed since it was loaded: to go back is to go back to what is in force.
        file = {File::Readable, inForce->toFile()};
    }
    // The same pairs stand for the newest moment at which they were handed out.
    std::erase_if(handedOut, [&](const HandedOut &record) { return record.data == *data; });
    if (handedOut.size() == HandedOutLimit) {
        handedOut.erase(handedOut.begin());
    }
    handedOut.push_back({*data, file, inForce});
}
