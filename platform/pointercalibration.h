#pragma once

#include "platform/pointertransform.h"

#include <QString>

#include <vector>

/// The calibration in force and the pointer calibration file behind it.
///
/// tslib itself applies the file, so what is in force is either what the file says or nothing:
/// whoever changes the calibration here has tslib read fileInForce() next. GUI thread only.
class PointerCalibration
{
public:
    /// Takes the file's calibration, if there is a valid one. A broken file is ignored with one
    /// warning line.
    void load();

    /// Puts no calibration in force. The file stays.
    void clear() { inForce.reset(); }

    /// Computes the calibration from \a data and writes the file; or, when getCalibration() has
    /// handed out \a data, brings file and calibration back to what they were at that moment.
    /// When that fails (one warning line) the file stays as it is and is in force again.
    bool calibrate(const PointerCalibrationData &data);

    /// Fills data->devPoints for data->screenPoints and remembers the pairs for calibrate().
    void getCalibration(PointerCalibrationData *data);

    /// The checked file that tslib is to apply; empty when no calibration is in force.
    QString fileInForce() const;

private:
    struct HandedOut
    {
        PointerCalibrationData data;
        std::optional<QByteArray> content; ///< of the file; none: there was no file
        std::optional<PointerTransform> inForce;
    };

    bool reinstate(const HandedOut &record);

    std::optional<PointerTransform> inForce;
    std::vector<HandedOut> handedOut;
};
