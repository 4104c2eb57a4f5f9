#include "platform/pointercalibration.h"

#include "platform/touchscreenpaths.h"

#include <QFile>
#include <QSaveFile>

#include <algorithm>

namespace {

/// Far more than a calibration file has; a larger file is cut off, and broken anyway.
constexpr qint64 FileLimit = 1 << 20;
/// How many of the calibrations handed out can be reinstated. A run takes one.
constexpr std::size_t HandedOutLimit = 8;

std::optional<QByteArray> readCalibrationFile()
{
    QFile file(pointerCalibrationFile());
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    return file.read(FileLimit);
}

/// Replaces the file whole: after a power cut there is the old one or the new one.
bool writeCalibrationFile(const QByteArray &content)
{
    QSaveFile file(pointerCalibrationFile());
    // Without flush() a full disk shows only inside commit(), which (Qt 6.4) then puts an empty
    // file in place of the old one and reports success.
    if (file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush()
        && file.commit()) {
        return true;
    }
    qWarning("Cannot write the pointer calibration file %s: %s", qPrintable(file.fileName()),
             qPrintable(file.errorString()));
    return false;
}

bool removeCalibrationFile()
{
    QFile file(pointerCalibrationFile());
    if (file.remove() || !file.exists()) {
        return true;
    }
    qWarning("Cannot remove the pointer calibration file %s: %s", qPrintable(file.fileName()),
             qPrintable(file.errorString()));
    return false;
}

} // namespace

void PointerCalibration::load()
{
    const std::optional<QByteArray> content = readCalibrationFile();
    inForce = content ? PointerTransform::parse(*content) : std::nullopt;
    if (content && !inForce) {
        qWarning("The pointer calibration file %s is broken: touches are not calibrated",
                 qPrintable(pointerCalibrationFile()));
    }
}

QString PointerCalibration::fileInForce() const
{
    return inForce ? pointerCalibrationFile() : QString();
}

bool PointerCalibration::calibrate(const PointerCalibrationData &data)
{
    const auto known = std::ranges::find(handedOut, data, &HandedOut::data);
    if (known != handedOut.end()) {
        if (reinstate(*known)) {
            return true;
        }
    } else if (const auto transform = PointerTransform::fit(data)) {
        if (writeCalibrationFile(transform->toFile())) {
            inForce = transform;
            return true;
        }
    } else {
        qWarning("The calibration points lie on one line or do not fit: calibration refused");
    }
    // Nothing has been replaced; the calibration that clear() may have dropped counts again.
    const std::optional<QByteArray> content = readCalibrationFile();
    inForce = content ? PointerTransform::parse(*content) : std::nullopt;
    return false;
}

bool PointerCalibration::reinstate(const HandedOut &record)
{
    // A file that is right already is left alone: its directory may be read-only.
    if (readCalibrationFile() != record.content
        && !(record.content ? writeCalibrationFile(*record.content) : removeCalibrationFile())) {
        return false;
    }
    inForce = record.inForce;
    return true;
}

void PointerCalibration::getCalibration(PointerCalibrationData *data)
{
    std::ranges::transform(data->screenPoints, data->devPoints.begin(), [this](QPoint pixel) {
        return inForce ? inForce->inverse(pixel) : RawPoint{pixel.x(), pixel.y()};
    });
    // The same pairs stand for the newest moment at which they were handed out.
    std::erase_if(handedOut, [&](const HandedOut &record) { return record.data == *data; });
    if (handedOut.size() == HandedOutLimit) {
        handedOut.erase(handedOut.begin());
    }
    handedOut.push_back({*data, readCalibrationFile(), inForce});
}
